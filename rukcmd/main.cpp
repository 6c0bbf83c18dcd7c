// ruklog: connect to the Agent, check that it runs the same version, run one command line.
#include <algorithm>
#include <cstring>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

#include "infra/utils/ktprint.h"
#include "infra/utils/kttext.h"
#include "ruk/agent.h"
#include "ruk/front_end.h"

namespace
{

constexpr size_t k_line_size = 16384;
[[gnu::section(".bss.large")]] char line[k_line_size];

constexpr int k_failed_start = -1;

bool versions_differ()
{
    constexpr uint8_t k_reply_only = 0x01;
    uint32_t version = 0;
    const uint32_t count = 1;
    // Any other failure lets the command run and speak for itself.
    return kt_dpa_call_indirect1(KT_OPC_VERSION, 0, k_reply_only, &version, sizeof version,
                                 &count) == AGENT_STATUS_VERSION_MISMATCH;
}

// With sockets that go nowhere: what is printed fails as it would with the descriptor closed.
void fill_standard_descriptors()
{
    int fd = -1;
    do {
        fd = socket(AF_UNIX, SOCK_STREAM, 0);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd >= 0) {
        close(fd);
    }
}

// Whoever starts the tool may have closed its standard descriptors.  The connection must not keep
// the number of one: what is printed would go to the Agent as a request.
bool connect_to_agent()
{
    if (kt_dpa_api_init() != 0) {
        return false;
    }
    if (kt_dpa_call_fd > STDERR_FILENO) {
        return true;
    }
    kt_dpa_api_exit();
    fill_standard_descriptors();
    return kt_dpa_api_init() == 0;
}

bool asks_for_help(int argc, char **argv)
{
    return argc <= 1 || kttext::is(argv[1], "help");
}

void print_help()
{
    ruk_log_help(line, sizeof line);
    kt_print("%s", line);
}

// Joins the arguments with single blanks, cut to fit.  Returns the length.
size_t join_arguments(int argc, char **argv)
{
    size_t length = 0;
    const auto append = [&length](std::string_view text) {
        const size_t copied = std::min(text.size(), sizeof line - 1 - length);
        memcpy(line + length, text.data(), copied);
        length += copied;
    };
    for (int i = 1; i < argc; ++i) {
        append(i > 1 ? " " : "");
        append({argv[i], strnlen(argv[i], sizeof line)});
    }
    line[length] = '\0';
    return length;
}

} // namespace

int main(int argc, char **argv)
{
    if (!connect_to_agent()) {
        kt_print("Error initializing kt_dpa_api_init()\n");
        return k_failed_start;
    }
    if (versions_differ()) {
        kt_print("Cannot execute ruklog: ruklog utility version does not match the running RUK "
                 "version.\n");
        return k_failed_start;
    }
    ruk_log_init();
    if (asks_for_help(argc, argv)) {
        print_help();
    } else {
        const size_t length = join_arguments(argc, argv);
        ruk_log_run(line, static_cast<int32_t>(length));
    }
    ruk_log_exit();
    return 0;
}

// The tool's main in a forked process.
#include "tests/faults/tool_process.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ruk/agent.h"
#include "tests/dpa/peer.h"

// rukcmd/main.cpp under another name.
int ruklog_main(int argc, char **argv);

namespace
{

std::function<void()> in_pause;

} // namespace

extern "C" unsigned __wrap_sleep(unsigned)
{
    in_pause();
    usleep(100);
    return 0;
}

namespace ruk_test
{
namespace
{

// After so many requests a follower has seen all that there is.
constexpr int k_enough_requests = 40;
constexpr std::chrono::seconds k_limit{20};

int call_main(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "ruklog");
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    return ruklog_main(static_cast<int>(arguments.size()), pointers.data());
}

int32_t probe()
{
    return kt_dpa_call_indirect1(63, 0, 0x01, nullptr, 0, nullptr);
}

int descriptors_in(pid_t pid)
{
    int count = 0;
    std::error_code error;
    for ([[maybe_unused]] const auto &entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd", error)) {
        ++count;
    }
    return count;
}

std::string text_of(int file)
{
    std::string text;
    char piece[4096];
    lseek(file, 0, SEEK_SET);
    for (ssize_t got; (got = read(file, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(got));
    }
    return text;
}

struct Shared {
    bool has_returned;
    Aftermath aftermath;
};

// Waits for the end of the process, which it brings about itself when the tool follows the log.
int await_end(pid_t pid, const FaultyAgent &agent, int descriptors)
{
    int status = 0;
    bool interrupted = false;
    bool ended = false;
    const auto deadline = std::chrono::steady_clock::now() + k_limit;
    while (!ended && std::chrono::steady_clock::now() < deadline) {
        if (!interrupted && agent.requests() >= k_enough_requests) {
            EXPECT_EQ(descriptors_in(pid), descriptors + 1);
            kill(pid, SIGINT);
            interrupted = true;
        }
        ended = waitpid(pid, &status, WNOHANG) == pid;
        usleep(ended ? 0 : 100);
    }
    if (!ended) {
        ADD_FAILURE() << "the tool hangs";
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
    }
    return status;
}

} // namespace

ToolEnd run_tool(const FaultyAgent &agent, const std::vector<std::string> &arguments,
                 const std::function<void()> &prepare,
                 const std::function<void(std::optional<Sabotage> &)> &arm,
                 bool leaves_shifted_stream)
{
    auto *const shared = static_cast<Shared *>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const int out = memfd_create("out", 0);
    fflush(stdout);
    const pid_t pid = fork();
    if (pid < 0 || out < 0 || shared == MAP_FAILED) {
        perror("run_tool");
        abort();
    }
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        signal(SIGINT, SIG_DFL);
        dup2(out, STDOUT_FILENO);
        prepare();
        const int descriptors = open_descriptors() - (kt_dpa_call_fd >= 0 ? 1 : 0);
        const Blocks blocks;
        std::optional<Sabotage> sabotage;
        arm(sabotage);
        // The process ends before what it refers to.
        // cppcheck-suppress danglingLifetime
        in_pause = [&] {
            sabotage.reset();
            agent.come_back();
        };
        Aftermath after;
        after.result = call_main(arguments);
        fflush(stdout);
        in_pause();
        after.descriptors = open_descriptors() - descriptors - (kt_dpa_call_fd >= 0 ? 1 : 0);
        after.blocks = blocks.held();
        dup2(STDERR_FILENO, STDOUT_FILENO);
        if (leaves_shifted_stream) {
            kt_dpa_api_exit();
            kt_dpa_api_init();
        }
        after.next_status = probe();
        after.second_status = probe();
        shared->aftermath = after;
        shared->has_returned = true;
        _exit(0);
    }
    // The connection is one more than what the process began with.
    const int descriptors = open_descriptors();
    const int status = await_end(pid, agent, descriptors);
    ToolEnd end{text_of(out), std::nullopt, WIFSIGNALED(status) ? WTERMSIG(status) : 0};
    if (shared->has_returned) {
        end.aftermath = shared->aftermath;
    }
    close(out);
    munmap(shared, sizeof(Shared));
    return end;
}

} // namespace ruk_test

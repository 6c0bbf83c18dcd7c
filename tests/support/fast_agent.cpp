// A log whose replies are ready before the requests come.
#include "tests/support/fast_agent.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/support/log_records.h"
#include "tests/support/scripted_agent.h"

namespace ruk_test
{
namespace
{

constexpr size_t k_header = 56;
constexpr size_t k_at_ident = 8;
constexpr size_t k_at_status = 12;
constexpr size_t k_at_bsize1 = 16;
constexpr size_t k_at_cursor = k_header + 8;

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    _exit(1);
}

// Events as a busy host logs them: a hundred a second, messages of some length.
std::vector<std::string> make_log(uint32_t entries)
{
    std::vector<std::string> log;
    for (uint32_t n = 0; n < entries; ++n) {
        Event event;
        event.seconds = 1'700'000'000 + n / 100;
        event.microseconds = n * 7919 % 1'000'000;
        event.entry = n;
        event.module = n % 40;
        event.level = static_cast<uint16_t>(1U << n % 8);
        event.cpu = static_cast<uint16_t>(n % 16);
        event.message = "port " + std::to_string(n % 64) +
                        " changed its state: " + std::string(n % 50, 'm') + "\n";
        log.push_back(entry_bytes(event));
    }
    return log;
}

class Server
{
public:
    Server(uint32_t entries, int releases) : log_(make_log(entries)), releases_(releases)
    {
        Info info;
        info.available = entries;
        info.total = entries;
        info.enabled = 1;
        info_ = info_bytes(info);
    }

    [[noreturn]] void run(int listener)
    {
        for (;;) {
            const int connection = accept(listener, nullptr, nullptr);
            while (answer_one(connection)) {
            }
            close(connection);
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    template <typename Number> Number at(size_t offset) const
    {
        Number number;
        memcpy(&number, &block_[offset], sizeof number);
        return number;
    }

    void set_status(int32_t status) { memcpy(&block_[k_at_status], &status, sizeof status); }

    // Requests are small: each comes whole.
    bool answer_one(int connection)
    {
        const ssize_t length = recv(connection, block_, sizeof block_, 0);
        if (length < static_cast<ssize_t>(k_header + at<uint32_t>(k_at_bsize1))) {
            return false;
        }
        set_status(0);
        answer();
        return send(connection, block_, static_cast<size_t>(length), MSG_NOSIGNAL) == length;
    }

    void answer()
    {
        switch (at<uint16_t>(0)) {
        case 234:
            next_entry();
            break;
        case 236:
            set_log(at<uint32_t>(k_at_ident));
            break;
        case 233:
            memcpy(&block_[k_header], info_.data(), info_.size());
            break;
        default:
            break;
        }
    }

    void next_entry()
    {
        const uint64_t number = at<uint64_t>(k_at_cursor) + 1;
        if (number >= log_.size()) {
            set_status(1);
            return;
        }
        memcpy(&block_[k_header], log_[number].data(), log_[number].size());
    }

    // Stop tells that the log ran; what follows it lets the log run again.
    void set_log(uint32_t operation)
    {
        constexpr uint32_t k_stop = 2;
        constexpr uint64_t k_was_on = 1;
        if (operation == k_stop) {
            memcpy(&block_[k_header], &k_was_on, sizeof k_was_on);
            stopped_ = Clock::now();
            return;
        }
        const std::chrono::nanoseconds held = Clock::now() - stopped_;
        (void)!write(releases_, &held, sizeof held);
    }

    char block_[4096]{};
    std::vector<std::string> log_;
    std::string info_;
    int releases_;
    Clock::time_point stopped_;
};

int listen_on_agent_path()
{
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, k_agent_path, sizeof address.sun_path - 1);
    unlink(k_agent_path);
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        listen(fd, 16) != 0) {
        give_up("fast agent");
    }
    return fd;
}

} // namespace

FastAgent::FastAgent(uint32_t entries)
{
    const int listener = listen_on_agent_path();
    int releases[2];
    if (pipe2(releases, O_NONBLOCK | O_CLOEXEC) != 0) {
        give_up("pipe");
    }
    pid_ = fork();
    if (pid_ < 0) {
        give_up("fork");
    }
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        Server(entries, releases[1]).run(listener);
    }
    close(listener);
    close(releases[1]);
    releases_ = releases[0];
}

FastAgent::~FastAgent()
{
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    close(releases_);
    unlink(k_agent_path);
}

std::chrono::nanoseconds FastAgent::wait_for_release() const
{
    std::chrono::nanoseconds held{};
    pollfd told{releases_, POLLIN, 0};
    if (poll(&told, 1, -1) != 1 || read(releases_, &held, sizeof held) != sizeof held) {
        give_up("release");
    }
    return held;
}

void FastAgent::forget_releases() const
{
    std::chrono::nanoseconds held{};
    while (read(releases_, &held, sizeof held) > 0) {
    }
}

} // namespace ruk_test

// Test code in a process of its own.
#include "tests/rukcmd/forked.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruk_test
{
namespace
{

constexpr std::chrono::seconds k_limit{20};

[[noreturn]] void run(const std::function<void()> &action, int out)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL); // what waits here must not outlive a test that failed
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        signal(number, SIG_DFL);
    }
    dup2(out, STDOUT_FILENO);
    action();
    fflush(stdout);
    _exit(0);
}

} // namespace

Forked::Forked(const std::function<void()> &action)
{
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) {
        perror("pipe");
        abort();
    }
    fflush(stdout); // or the new process would print what is pending once more
    pid_ = fork();
    if (pid_ < 0) {
        perror("fork");
        abort();
    }
    if (pid_ == 0) {
        close(out[0]);
        run(action, out[1]);
    }
    close(out[1]);
    out_fd_ = out[0];
}

Forked::~Forked()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close_output();
}

void Forked::send_signal(int number) const
{
    kill(pid_, number);
}

bool Forked::catches(int number) const
{
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigCgt:")) {
            const auto mask = std::stoull(line.substr(7), nullptr, 16);
            return (mask >> (number - 1) & 1) != 0;
        }
    }
    return false;
}

bool Forked::read_some(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd watched{out_fd_, POLLIN, 0};
    if (left.count() <= 0 || poll(&watched, 1, static_cast<int>(left.count())) <= 0) {
        return false;
    }
    char piece[65536];
    const ssize_t n = read(out_fd_, piece, sizeof piece);
    if (n > 0) {
        out_.append(piece, static_cast<size_t>(n));
    } else {
        close_output();
    }
    return true;
}

bool Forked::wait_for_output(const std::string &text)
{
    const auto deadline = std::chrono::steady_clock::now() + k_limit;
    while (out_.find(text) == std::string::npos) {
        if (out_fd_ < 0 || !read_some(deadline)) {
            return false;
        }
    }
    return true;
}

void Forked::close_output()
{
    if (out_fd_ >= 0) {
        close(out_fd_);
        out_fd_ = -1;
    }
}

Forked::End Forked::wait()
{
    const auto deadline = std::chrono::steady_clock::now() + k_limit;
    while (out_fd_ >= 0) {
        if (!read_some(deadline)) {
            kill(pid_, SIGKILL);
            break;
        }
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            WIFSIGNALED(status) ? WTERMSIG(status) : 0, out_};
}

} // namespace ruk_test

// Programs run to their end, with what they print.
#include "tests/support/child.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruk_test
{
namespace
{

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    abort();
}

int file_holding(const std::string &input)
{
    const int fd = memfd_create("input", MFD_CLOEXEC);
    if (fd < 0 || write(fd, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
        give_up("input");
    }
    lseek(fd, 0, SEEK_SET);
    return fd;
}

[[noreturn]] void execute(const std::vector<std::string> &arguments, int in, int out, int err)
{
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    std::vector<char *> pointers;
    for (const std::string &argument : arguments) {
        pointers.push_back(const_cast<char *>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    execv(pointers[0], pointers.data());
    perror(pointers[0]);
    _exit(127);
}

void take(int &fd, std::string &text)
{
    char piece[65536];
    const ssize_t n = read(fd, piece, sizeof piece);
    if (n > 0) {
        text.append(piece, static_cast<size_t>(n));
    } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
        close(fd);
        fd = -1;
    }
}

} // namespace

Child::Child(const std::vector<std::string> &arguments, const std::string &input)
{
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        give_up("pipe");
    }
    const int in = file_holding(input);
    pid_ = fork();
    if (pid_ < 0) {
        give_up("fork");
    }
    if (pid_ == 0) {
        execute(arguments, in, out[1], err[1]);
    }
    close(in);
    close(out[1]);
    close(err[1]);
    out_fd_ = out[0];
    err_fd_ = err[0];
}

Child::~Child()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close_output();
    if (err_fd_ >= 0) {
        close(err_fd_);
    }
}

void Child::send_signal(int number) const
{
    kill(pid_, number);
}

bool Child::read_some(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd watched[] = {{out_fd_, POLLIN, 0}, {err_fd_, POLLIN, 0}};
    if (left.count() <= 0 || poll(watched, 2, static_cast<int>(left.count())) <= 0) {
        return false;
    }
    if (watched[0].revents != 0) {
        take(out_fd_, out_);
    }
    if (watched[1].revents != 0) {
        take(err_fd_, err_);
    }
    return true;
}

bool Child::wait_for_output(const std::string &text, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (out_.find(text) == std::string::npos) {
        if (out_fd_ < 0 || !read_some(deadline)) {
            return false;
        }
    }
    return true;
}

void Child::close_output()
{
    if (out_fd_ >= 0) {
        close(out_fd_);
        out_fd_ = -1;
    }
}

Outcome Child::wait(std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (out_fd_ >= 0 || err_fd_ >= 0) {
        if (!read_some(deadline)) {
            kill(pid_, SIGKILL);
            break;
        }
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            WIFSIGNALED(status) ? WTERMSIG(status) : 0, out_, err_};
}

Outcome run(const std::vector<std::string> &arguments, const std::string &input)
{
    Child child(arguments, input);
    return child.wait();
}

} // namespace ruk_test

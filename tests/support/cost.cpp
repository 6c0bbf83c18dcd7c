// Programs run to their end under rusage and under ptrace.
#include "tests/support/cost.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/personality.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruk_test
{
namespace
{

constexpr int k_untraceable = 126;

// A zone that needs no file.
char time_zone[] = "TZ=UTC0";
char *environment[] = {time_zone, nullptr};

std::vector<char *> pointers_to(const Arguments &arguments)
{
    std::vector<char *> pointers;
    for (const std::string &argument : arguments) {
        pointers.push_back(const_cast<char *>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void give_up(const std::string &what)
{
    perror(what.c_str());
    abort();
}

void require_success(const Arguments &arguments, int status)
{
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        fprintf(stderr, "%s: ended with status %#x\n", arguments[0].c_str(),
                static_cast<unsigned>(status));
        abort();
    }
}

[[noreturn]] void execute_traced(char *const *arguments)
{
    personality(ADDR_NO_RANDOMIZE);
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        _exit(k_untraceable);
    }
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    execve(arguments[0], arguments, environment);
    _exit(127);
}

// How often a traced program stops when it is let go on by request, which reports its stops by the
// signal number of a trap.
std::optional<uint64_t> stops_of(const Arguments &arguments, __ptrace_request request)
{
    // A stop that wakes another processor takes thirty times as long.
    const OneProcessor tracer_and_traced;
    const std::vector<char *> pointers = pointers_to(arguments);
    const pid_t pid = fork();
    if (pid < 0) {
        give_up("fork");
    }
    if (pid == 0) {
        execute_traced(pointers.data());
    }
    uint64_t stops = 0;
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == k_untraceable) {
        return std::nullopt;
    }
    while (WIFSTOPPED(status)) {
        const int number = WSTOPSIG(status);
        ++stops;
        ptrace(request, pid, nullptr, number == SIGTRAP ? 0L : long{number});
        waitpid(pid, &status, 0);
    }
    require_success(arguments, status);
    return stops;
}

} // namespace

OneProcessor::OneProcessor()
{
    sched_getaffinity(0, sizeof former_, &former_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
    sched_setaffinity(0, sizeof one, &one);
}

OneProcessor::~OneProcessor()
{
    sched_setaffinity(0, sizeof former_, &former_);
}

pid_t start(const Arguments &arguments, int out)
{
    const std::vector<char *> pointers = pointers_to(arguments);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    pid_t pid = -1;
    errno = posix_spawn(&pid, pointers[0], &actions, nullptr, pointers.data(), environment);
    if (errno != 0) {
        give_up(arguments[0]);
    }
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

std::chrono::nanoseconds cpu_time_of(const Arguments &arguments, int out)
{
    const pid_t pid = start(arguments, out);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    require_success(arguments, status);
    const auto duration = [](const timeval &time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return duration(usage.ru_utime) + duration(usage.ru_stime);
}

// The stop at the program's first instruction stands for that instruction.
std::optional<uint64_t> instructions_of(const Arguments &arguments)
{
    return stops_of(arguments, PTRACE_SINGLESTEP);
}

// Each call stops twice, at its entry and at its return, but for the last, which does not return.
// The stop at the start stands for execve's entry.
std::optional<uint64_t> system_calls_of(const Arguments &arguments)
{
    const std::optional<uint64_t> stops = stops_of(arguments, PTRACE_SYSCALL);
    return stops ? std::optional((*stops + 1) / 2) : std::nullopt;
}

} // namespace ruk_test

// What a program costs: CPU time, instructions, system calls.  Each run has the same arguments,
// environment and addresses, so that counts are the same every time.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ruk_test
{

// While it lives, this process and those that it starts share one processor.
class OneProcessor
{
public:
    OneProcessor();
    ~OneProcessor();
    OneProcessor(const OneProcessor &) = delete;
    OneProcessor &operator=(const OneProcessor &) = delete;

private:
    cpu_set_t former_;
};

using Arguments = std::vector<std::string>;

// Starts a program with its output on descriptor out.
pid_t start(const Arguments &arguments, int out);

// Runs a program with its output on descriptor out and tells its user and system time.
std::chrono::nanoseconds cpu_time_of(const Arguments &arguments, int out);

// Instructions that it executes outside the kernel, and system calls, execve counted.  None where
// processes may not be traced.
std::optional<uint64_t> instructions_of(const Arguments &arguments);
std::optional<uint64_t> system_calls_of(const Arguments &arguments);

} // namespace ruk_test

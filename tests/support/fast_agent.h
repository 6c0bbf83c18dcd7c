// A peer that serves a log of so many entries, at the cost of one receive and one send a request,
// in a process of its own.
#pragma once

#include <chrono>
#include <cstdint>
#include <sys/types.h>

namespace ruk_test
{

class FastAgent
{
public:
    explicit FastAgent(uint32_t entries);
    ~FastAgent();
    FastAgent(const FastAgent &) = delete;
    FastAgent &operator=(const FastAgent &) = delete;

    // Waits until the log has been released, and tells how long it was stopped.  Each release is
    // told once, as long as those before it were asked for or forgotten.
    std::chrono::nanoseconds wait_for_release() const;
    void forget_releases() const;

private:
    pid_t pid_;
    int releases_; // durations come from here
};

} // namespace ruk_test

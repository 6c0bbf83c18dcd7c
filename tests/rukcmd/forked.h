// Runs a piece of the library in a process of its own, with its standard output on a pipe.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>

namespace ruk_test
{

class Forked
{
public:
    // Forks; the new process runs action and exits with 0.  The four signals that end a tool are
    // at their default there.
    explicit Forked(const std::function<void()> &action);
    ~Forked(); // kills what still runs
    Forked(const Forked &) = delete;
    Forked &operator=(const Forked &) = delete;

    pid_t pid() const { return pid_; }
    void send_signal(int number) const;

    // Whether the process has a handler for the signal.
    bool catches(int number) const;

    // Reads until the output holds text.  False at the deadline or at the output's end.
    bool wait_for_output(const std::string &text);

    // The reader goes away.
    void close_output();

    struct End {
        int exit_status; // -1 when a signal ended it
        int signal;      // 0 when it exited
        std::string out;
    };

    // Reads to the output's end and waits; kills at the deadline, which the result then shows.
    End wait();

private:
    bool read_some(std::chrono::steady_clock::time_point deadline);

    pid_t pid_ = -1;
    int out_fd_ = -1;
    std::string out_;
};

} // namespace ruk_test

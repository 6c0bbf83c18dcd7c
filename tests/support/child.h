// Runs a program and takes what it prints.
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ruk_test
{

using namespace std::chrono_literals;

// How a program ended, and what it printed until then.
struct Outcome {
    int exit_status; // -1 when a signal ended it
    int signal;      // 0 when it exited
    std::string out;
    std::string err;
};

class Child
{
public:
    // Starts arguments[0], with its standard output and error on pipes.
    explicit Child(const std::vector<std::string> &arguments, const std::string &input = "");
    ~Child(); // kills what still runs
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t pid() const { return pid_; }
    void send_signal(int number) const;

    // Reads until standard output holds text.  False at the deadline or at the output's end.
    bool wait_for_output(const std::string &text, std::chrono::milliseconds limit = 20s);

    const std::string &out() const { return out_; }

    // The reader goes away: the program's next write meets a closed pipe.
    void close_output();

    // Waits for the end; kills the program at the deadline, which the outcome then shows.
    Outcome wait(std::chrono::milliseconds limit = 60s);

private:
    bool read_some(std::chrono::steady_clock::time_point deadline);

    pid_t pid_ = -1;
    int out_fd_ = -1;
    int err_fd_ = -1;
    std::string out_;
    std::string err_;
};

// Runs a program to its end.
Outcome run(const std::vector<std::string> &arguments, const std::string &input = "");

} // namespace ruk_test

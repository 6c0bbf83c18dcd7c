// The tool's own main, run in a process of its own with a fault on its way.
#pragma once

#include "tests/faults/sabotage.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ruk_test
{

// What the process tells after main has returned.
struct Aftermath {
    int result = 0;
    int descriptors = 0; // more than before, the connection's own not counted
    int blocks = 0;      // still held; the lock is one
    int32_t next_status = -1;
    int32_t second_status = -1; // of two more exchanges, with the Agent back
};

struct ToolEnd {
    std::string out;
    std::optional<Aftermath> aftermath; // none when a signal ended it
    int signal = 0;
};

// Runs ruklog with the arguments; prepare is called first, in the new process.  A tool that follows
// the log is interrupted when the Agent has had so many requests that everything must have come; it
// must have one descriptor more then.  Its pauses are short and bring the Agent back.
ToolEnd run_tool(const FaultyAgent &agent, const std::vector<std::string> &arguments,
                 const std::function<void()> &prepare,
                 const std::function<void(std::optional<Sabotage> &)> &arm,
                 bool leaves_shifted_stream = false);

} // namespace ruk_test

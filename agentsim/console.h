// The embedded front end: command lines from standard input run inside this process.
// docs/embedding.md explains the contract with this host as its example.
#pragma once

#include <string>

#include "agentsim/event_source.h"

namespace agentsim
{

// Waits with the event sources, since it too is something that can be read.  Its end, the end of
// the lines, ends the process like SIGTERM.
class Console : public EventSource
{
public:
    // Switches the front end to paged mode over service.
    Console(int descriptor, LogService &service);

    // Prompts where a person types.
    void prompt() const;

    int descriptor() const override { return descriptor_; }
    bool collect(LogService &service, int64_t now) override;

private:
    void take(std::string_view piece);
    void end_line();

    int descriptor_;
    bool is_terminal_;
    std::string pending_;      // the beginning of a line
    bool is_too_long_ = false; // and so much of it that it is refused
};

// Runs each command of a line to its last page and prints what it says.
void run_console_line(std::string_view line);

} // namespace agentsim

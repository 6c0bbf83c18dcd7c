// Lines of text as events: each line of a file, a pipe or standard input is one.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "agentsim/event.h"
#include "agentsim/event_source.h"
#include "agentsim/unique_fd.h"

namespace agentsim
{

// What a line says of its event.  It may begin with a syslog priority ("<30>text") or with a
// level and a colon ("Warning: text", in any case); that is not part of the text.
struct ParsedLine {
    uint32_t priority; // of syslog; that of user-level messages when the line has none
    uint16_t level;    // Info when the line says nothing
    std::string_view text;
};

// text points into line.
ParsedLine parse_line(std::string_view line);

// Cuts what is read into lines of bounded length and logs each.
class LineFeeder : public EventSource
{
public:
    LineFeeder(UniqueFd file, Ending ending) : file_(std::move(file)), ending_(ending) {}

    int descriptor() const override { return file_.get(); }
    bool collect(LogService &service, int64_t now) override;

    // Takes the next piece of the text, which may begin and end anywhere.
    void take(std::string_view piece, LogService &service);

    // The text has ended; a last line without a line feed is a line.
    void finish(LogService &service);

private:
    void end_line(LogService &service);

    UniqueFd file_;
    Ending ending_;
    // The line so far.  It holds any prefix and more text than a message; what comes after is
    // dropped, as it would be from the message.
    std::array<char, 256> line_{};
    size_t length_ = 0;
    bool begun_ = false; // an empty line is a line, but the end of the text is none
};

} // namespace agentsim

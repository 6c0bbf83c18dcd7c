// Events as they happen: their time, their processor and their message.
#pragma once

#include <cstdint>
#include <string_view>

#include "ruk/log.h"

namespace agentsim
{

// How messages end.
enum class Ending {
    LINE_FEED, // and a terminator, whatever was cut for them
    AS_IT_IS,  // no line feed, and without a terminator when all 128 bytes are text
};

constexpr int64_t k_nanoseconds = 1'000'000'000;

// Nanoseconds of CLOCK_REALTIME or CLOCK_MONOTONIC.
int64_t wall_time();
int64_t monotonic_time();

// Sets seconds and microseconds from a wall time.
void set_time(LogEntry &event, int64_t wall_time);

// Sets the message to text, cut to what the field holds.
void set_message(LogEntry &event, std::string_view text, Ending ending);

// An event that happens now, on the processor that calls.
LogEntry event_now(uint32_t module, uint16_t level, std::string_view text, Ending ending);

} // namespace agentsim

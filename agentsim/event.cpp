// Events as they happen.
#include "agentsim/event.h"

#include <algorithm>
#include <ctime>
#include <sched.h>

namespace agentsim
{

namespace
{

int64_t clock_time(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return int64_t{now.tv_sec} * k_nanoseconds + now.tv_nsec;
}

} // namespace

int64_t wall_time()
{
    return clock_time(CLOCK_REALTIME);
}

int64_t monotonic_time()
{
    return clock_time(CLOCK_MONOTONIC);
}

void set_time(LogEntry &event, int64_t wall_time)
{
    event.seconds = static_cast<uint32_t>(wall_time / k_nanoseconds);
    event.microseconds = static_cast<uint32_t>(wall_time % k_nanoseconds / 1000);
}

void set_message(LogEntry &event, std::string_view text, Ending ending)
{
    std::fill(std::begin(event.message), std::end(event.message), '\0');
    if (ending == Ending::AS_IT_IS) {
        text.copy(event.message, sizeof event.message);
        return;
    }
    const size_t length = text.copy(event.message, sizeof event.message - 2);
    // A terminator inside the text would hide the line feed.
    std::replace(event.message, event.message + length, '\0', ' ');
    event.message[length] = '\n';
}

LogEntry event_now(uint32_t module, uint16_t level, std::string_view text, Ending ending)
{
    LogEntry event{};
    event.module = module;
    event.level = level;
    const int cpu = sched_getcpu();
    event.cpu = static_cast<uint16_t>(cpu >= 0 ? cpu : 0);
    set_time(event, wall_time());
    set_message(event, text, ending);
    return event;
}

} // namespace agentsim

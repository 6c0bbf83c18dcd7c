// Local time, converted once a minute.
#include "rukcmd/local_time.h"

#include <cstring>

namespace local_time
{
namespace
{

// What ctime_r writes: "Www Mmm dd hh:mm:ss yyyy\n", with more digits in far years.
constexpr size_t k_longest_date = 32;
constexpr size_t k_shown = 4;    // where the part that is shown begins
constexpr size_t k_seconds = 13; // where the second stands in it
constexpr time_t k_last_second = 59;

bool convert(time_t seconds, char (&text)[k_size])
{
    char date[k_longest_date] = {};
    if (ctime_r(&seconds, date) == nullptr || strnlen(date, sizeof date) < k_shown + k_size) {
        return false;
    }
    memcpy(text, date + k_shown, k_size);
    return true;
}

void put_seconds(char *text, time_t second_of_minute)
{
    const auto value = static_cast<unsigned char>(second_of_minute);
    text[k_seconds] = static_cast<char>('0' + value / 10);
    text[k_seconds + 1] = static_cast<char>('0' + value % 10);
}

time_t seconds_in(const char (&text)[k_size])
{
    return (text[k_seconds] - '0') * 10 + (text[k_seconds + 1] - '0');
}

// What tzset leaves behind of a zone.  The C library keeps names for good, so that equal names are
// equal pointers; they are compared and never followed.
struct Zone {
    const char *names[2] = {};
    long west_of_utc = 0;

    static Zone current() { return {{tzname[0], tzname[1]}, timezone}; }
    bool operator==(const Zone &) const = default;
};

// Seconds in a row within one minute of one zone.
struct Minute {
    Zone zone;
    time_t first = 1;
    time_t last = 0;         // before first: none is known
    time_t first_second = 0; // of the minute, 0 to 59 or a leap second's 60
    char text[k_size] = {};  // of first

    bool holds(time_t seconds) const
    {
        return seconds >= first && seconds <= last && zone == Zone::current();
    }
    bool reach(time_t seconds);

private:
    bool begin(time_t seconds);
    void extend_to_end();
};

// Entries that come once a minute cost one conversion each, not two: the minute's end is looked at
// for the second entry of a minute only.
bool Minute::reach(time_t seconds)
{
    const bool is_alone = first == last;
    if (is_alone && seconds > first && seconds - first <= k_last_second - first_second) {
        extend_to_end();
    }
    return holds(seconds) || begin(seconds);
}

bool Minute::begin(time_t seconds)
{
    last = first - 1;
    if (!convert(seconds, text)) {
        return false;
    }
    zone = Zone::current();
    first = last = seconds;
    first_second = seconds_in(text);
    return true;
}

// A zone may change, or skip a second, in the middle of a minute.  Where the last second is told as
// if nothing had happened, nothing has.
void Minute::extend_to_end()
{
    const time_t end = first + k_last_second - first_second;
    char told[k_size];
    char expected[k_size];
    memcpy(expected, text, sizeof expected);
    put_seconds(expected, k_last_second);
    if (convert(end, told) && memcmp(told, expected, sizeof told) == 0) {
        last = end;
    }
}

// In the part of thread storage that every thread has from its start: reached without a call.
[[gnu::tls_model("initial-exec")]] thread_local Minute minute;

} // namespace

bool put(char *out, time_t seconds)
{
    if (!minute.holds(seconds) && !minute.reach(seconds)) {
        return false;
    }
    memcpy(out, minute.text, k_size);
    put_seconds(out, minute.first_second + (seconds - minute.first));
    return true;
}

} // namespace local_time

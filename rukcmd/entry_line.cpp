// One entry as a line of text: the format that defines it, and the fast way.
#include "rukcmd/entry_line.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>

#include "infra/utils/ktprint.h"
#include "ruk/front_end.h"
#include "rukcmd/local_time.h"

namespace entry_line
{
namespace
{

constexpr uint32_t k_microseconds = 1'000'000; // in a second

// "00" to "99" in a row.
constexpr auto k_pairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i != pairs.size(); i += 2) {
        pairs[i] = static_cast<char>('0' + i / 20);
        pairs[i + 1] = static_cast<char>('0' + i / 2 % 10);
    }
    return pairs;
}();

void put_pair(char *out, uint32_t value)
{
    memcpy(out, &k_pairs[size_t{2} * value], 2);
}

// Fills the columns in front of what is put there right-aligned.
constexpr size_t k_widest = 8;

void put_blanks(char *out)
{
    memset(out, ' ', k_widest);
}

constexpr uint32_t power_of_ten(size_t exponent)
{
    return exponent == 0 ? 1 : 10 * power_of_ten(exponent - 1);
}

// Writes value right-aligned in Width columns, or as long as it is, and a blank.  Returns the end.
template <size_t Width, typename Number> char *put_number(char *out, Number value)
{
    put_blanks(out);
    char *end = out + Width;
    for (Number more = value / power_of_ten(Width); more != 0; more /= 10) {
        ++end;
    }
    char *next = end;
    for (; value >= 100; value /= 100) {
        put_pair(next -= 2, static_cast<uint32_t>(value % 100));
    }
    if (value >= 10) {
        put_pair(next - 2, static_cast<uint32_t>(value));
    } else {
        *--next = static_cast<char>('0' + value);
    }
    *end = ' ';
    return end + 1;
}

// The same for a word, which fits.
char *put_word(char *out, const char *word, size_t width)
{
    const size_t length = strnlen(word, width);
    put_blanks(out);
    memcpy(out + width - length, word, length);
    out[width] = ' ';
    return out + width + 1;
}

// ".123456 "
char *put_microseconds(char *out, uint32_t value)
{
    out[0] = '.';
    put_pair(out + 1, value / 10'000);
    put_pair(out + 3, value / 100 % 100);
    put_pair(out + 5, value % 100);
    out[7] = ' ';
    return out + 8;
}

} // namespace

size_t write_plainly(char *line, const LogEntry &entry)
{
    const time_t seconds = entry.seconds;
    char date[32] = {}; // "Www Mmm dd hh:mm:ss yyyy", of which month, day and time are shown
    ctime_r(&seconds, date);
    const int length = kt_print_to(line, k_size, "%.15s.%06d %8llu %2d %3d %3d %7s %.*s", date + 4,
                                   static_cast<int32_t>(entry.microseconds),
                                   static_cast<unsigned long long>(entry.entry), entry.cpu,
                                   static_cast<int32_t>(entry.module), entry.level,
                                   ruk_levelstring(entry.level), LOG_MESSAGE_SIZE, entry.message);
    return static_cast<size_t>(length);
}

size_t write(char *line, const LogEntry &entry, size_t message_length)
{
    const bool is_odd = entry.microseconds >= k_microseconds || entry.module > INT32_MAX;
    if (is_odd || !local_time::put(line, entry.seconds)) {
        return write_plainly(line, entry);
    }
    char *out = line + local_time::k_size;
    out = put_microseconds(out, entry.microseconds);
    const bool is_narrow = entry.entry <= UINT32_MAX; // half the work
    out = is_narrow ? put_number<8>(out, static_cast<uint32_t>(entry.entry))
                    : put_number<8>(out, entry.entry);
    out = put_number<2, uint32_t>(out, entry.cpu);
    out = put_number<3>(out, entry.module);
    out = put_number<3, uint32_t>(out, entry.level);
    out = put_word(out, ruk_levelstring(entry.level), 7);
    memcpy(out, entry.message, message_length);
    return static_cast<size_t>(out - line) + message_length;
}

} // namespace entry_line

// Writing names: the pieces that they are made of, and how they get into a caller's buffer.  No
// allocation, no locale, nothing of the printf family.
#ifndef IFINDEX_NAME_WRITER_H
#define IFINDEX_NAME_WRITER_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "ruk/if_index_name.h"

namespace ifindex
{

// The room for the longest of all names, terminated; a test holds all types against it.  The caller
// of the sprintf_ forms provides as much.
inline constexpr int32_t k_name_room = IF_INDEX_NAME_SIZE;

// What a number below 1000 looks like.
struct short_decimal {
    char first_two[2]; // of one digit: that digit and a terminator
    char last;
    uint8_t length;
};

inline constexpr std::array<short_decimal, 1000> k_short_decimals = [] {
    std::array<short_decimal, 1000> decimals{};
    for (size_t number = 0; number != decimals.size(); ++number) {
        const char last = static_cast<char>('0' + number % 10);
        const char middle = static_cast<char>('0' + number / 10 % 10);
        const char first = static_cast<char>('0' + number / 100);
        if (number < 10) {
            decimals[number] = {{last, '\0'}, last, 1};
        } else if (number < 100) {
            decimals[number] = {{middle, last}, last, 2};
        } else {
            decimals[number] = {{first, middle}, last, 3};
        }
    }
    return decimals;
}();

// The pieces of a name: each is written at a place and returns where it ends.  Of what lies behind
// it one byte may be written, since more of the name or its terminator always follows.

inline char *put_text(char *at, std::string_view s)
{
    memcpy(at, s.data(), s.size());
    return at + s.size();
}

char *put_long_decimal(char *at, uint32_t value);

// As "%u".
inline char *put_decimal(char *at, uint32_t value)
{
    if (value >= k_short_decimals.size()) {
        return put_long_decimal(at, value);
    }
    const short_decimal &decimal = k_short_decimals[value];
    memcpy(at, decimal.first_two, sizeof decimal.first_two);
    at[decimal.length - 1] = decimal.last;
    return at + decimal.length;
}

// As "%d".
inline char *put_signed_decimal(char *at, int32_t value)
{
    if (value >= 0) {
        return put_decimal(at, static_cast<uint32_t>(value));
    }
    // Without the sign it may not fit into the same type.
    return put_decimal(put_text(at, "-"), 0 - static_cast<uint32_t>(value));
}

// As "0x%08x".
inline char *put_hex(char *at, uint32_t value)
{
    at = put_text(at, "0x");
    for (int shift = 28; shift >= 0; shift -= 4) {
        *at++ = "0123456789abcdef"[(value >> shift) & 0xF];
    }
    return at;
}

// A number behind a separator.
inline char *put_next_decimal(char *at, char separator, uint32_t value)
{
    *at = separator;
    return put_decimal(at + 1, value);
}

// ".<number>" of a sub-interface; nothing for 0, which is the main interface.
inline char *put_sub_interface(char *at, uint32_t number)
{
    return number == 0 ? at : put_next_decimal(at, '.', number);
}

// Terminates the name that begins at start and ends at end, and returns its length.
inline int32_t finish_name(const char *start, char *end)
{
    *end = '\0';
    return static_cast<int32_t>(end - start);
}

// The end of a bounded formatter: what fits of a text of length characters, terminated.  A size
// below 1 or a null buffer takes nothing.  Returns the length.
inline int32_t put_cut(char *buffer, int32_t size, const char *text, int32_t length)
{
    if (buffer != nullptr && size > 0) {
        const int32_t kept = std::min(length, size - 1);
        memcpy(buffer, text, static_cast<size_t>(kept));
        buffer[kept] = '\0';
    }
    return length;
}

// The same with the name that write(char *at) puts down and returns the end of.
template <typename write_function>
int32_t put_name(char *buffer, int32_t size, write_function write)
{
    char name[k_name_room];
    const int32_t length = finish_name(name, write(name));
    return put_cut(buffer, size, name, length);
}

} // namespace ifindex

#endif // IFINDEX_NAME_WRITER_H

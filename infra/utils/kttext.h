// Characters and bounded output: what the units of ktstrings share.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kttext
{

inline bool is_space(char c)
{
    return isspace(static_cast<unsigned char>(c)) != 0;
}

inline const char *skip_space(const char *text)
{
    while (is_space(*text)) {
        ++text;
    }
    return text;
}

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// The value of a decimal digit.
constexpr uint32_t digit_value(char c)
{
    return static_cast<uint32_t>(c - '0');
}

// The value of a hexadecimal digit of either case, or -1 for any other character.
constexpr int32_t hex_value(char c)
{
    if (is_digit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// Writes the two lower-case hexadecimal digits of byte and returns where they end.
constexpr char *put_hex(char *at, uint8_t byte)
{
    constexpr char k_digits[] = "0123456789abcdef";
    *at++ = k_digits[byte >> 4];
    *at++ = k_digits[byte & 0xf];
    return at;
}

// The end of every bounded formatter: what fits of text, terminated, and the whole text's length.
inline int32_t put_text(char *buffer, uint32_t size, std::string_view text)
{
    if (size > 0) {
        const size_t kept = std::min<size_t>(text.size(), size - 1);
        memcpy(buffer, text.data(), kept);
        buffer[kept] = '\0';
    }
    return static_cast<int32_t>(text.size());
}

} // namespace kttext

// Characters and bounded output: what the units of ktstrings share.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kttext
{

// As in the C locale, whichever the host program has set: in a Turkish one tolower('I') is no 'i',
// and SHOW INFO would be no command.
constexpr char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool is_printable(char c)
{
    return c >= ' ' && c <= '~';
}

constexpr bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Whether text is expected, to the letter; no more of it is looked at than that takes.
inline bool is(const char *text, std::string_view expected)
{
    return std::string_view(text, strnlen(text, expected.size() + 1)) == expected;
}

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

inline const char *skip_space(const char *text)
{
    // No digit is white space in any locale, and most texts begin with one.
    while (!is_digit(*text) && is_space(*text)) {
        ++text;
    }
    return text;
}

// The value of a decimal digit.
constexpr uint32_t digit_value(char c)
{
    return static_cast<uint32_t>(c - '0');
}

// The value of a hexadecimal digit of either case, or -1 for any other character.
inline constexpr auto k_hex_values = [] {
    std::array<int8_t, 256> values{};
    values.fill(-1);
    for (int8_t digit = 0; digit < 16; ++digit) {
        values[static_cast<unsigned char>("0123456789abcdef"[digit])] = digit;
        values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = digit;
    }
    return values;
}();

constexpr int32_t hex_value(char c)
{
    return k_hex_values[static_cast<unsigned char>(c)];
}

// Characters held in a word: the first in the lowest byte, as they lie in memory.
static_assert(std::endian::native == std::endian::little);

template <typename word_type> inline void store_chars(char *at, uint64_t chars)
{
    const auto word = static_cast<word_type>(chars);
    memcpy(at, &word, sizeof word);
}

template <typename word_type> inline word_type load_word(const void *from)
{
    word_type word;
    memcpy(&word, from, sizeof word);
    return word;
}

// The two lower-case hexadecimal digits of every byte, as characters of a word.
inline constexpr auto k_hex_pairs = [] {
    std::array<uint16_t, 256> pairs{};
    constexpr char digits[] = "0123456789abcdef";
    for (size_t byte = 0; byte != pairs.size(); ++byte) {
        pairs[byte] = static_cast<uint16_t>(digits[byte & 0xf] << 8 | digits[byte >> 4]);
    }
    return pairs;
}();

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

// What a formatter does when its buffer doesn't hold the longest text: it formats again, into one
// that does, and hands out what fits.  Out of line, so that the usual way needs no stack.
template <size_t longest, typename value_type>
[[gnu::noinline, gnu::cold]] int32_t put_cut(char *buffer, uint32_t size, value_type value,
                                             int32_t (*format)(char *, uint32_t, value_type))
{
    char text[longest + 1];
    const int32_t length = format(text, sizeof text, value);
    return put_text(buffer, size, {text, static_cast<size_t>(length)});
}

} // namespace kttext

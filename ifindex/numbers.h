// Decimal numbers of interface names.
#ifndef IFINDEX_NUMBERS_H
#define IFINDEX_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace ifindex
{

struct number_read {
    int32_t value;
    const char *rest; // of the text, behind the number
};

// Reads the number at the start of text, after white space and a sign as strtoll does; 0 when
// there is none.  A number that is too large is first held to 64 bits, then cut to the low 32.  Out
// of line, since hardly any number of a name needs it and every keyword has a reader of its own.
[[gnu::noinline, gnu::cold]] inline number_read read_number(const char *text)
{
    char *rest = nullptr;
    const long long value = strtoll(text, &rest, 10);
    return {static_cast<int32_t>(value), rest};
}

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// The same where text begins with a digit, for the numbers that names have.  The second and the
// third digit are taken without a branch: whether they are there can't be predicted.
inline number_read read_digits(const char *text)
{
    // More digits than this may not fit into 64 bits.
    constexpr ptrdiff_t k_most = 18;
    auto value = static_cast<uint64_t>(*text - '0');
    const char *at = text + 1;
    for (int i = 0; i < 2; ++i) {
        // No digit leaves both as they are, and is no digit the next time either.
        const uint64_t digit = static_cast<uint8_t>(*at - '0');
        const uint64_t taken = (digit - 10) >> 63;
        value += (value * 9 + digit) & (0 - taken);
        at += taken;
    }
    for (; is_digit(*at); ++at) {
        if (at - text == k_most) {
            return read_number(text);
        }
        value = value * 10 + static_cast<uint64_t>(*at - '0');
    }
    return {static_cast<int32_t>(value), at};
}

} // namespace ifindex

#endif // IFINDEX_NUMBERS_H

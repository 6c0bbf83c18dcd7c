// Decimal numbers of interface names.
#ifndef IFINDEX_NUMBERS_H
#define IFINDEX_NUMBERS_H

#include <cstdint>
#include <cstdlib>

namespace ifindex
{

struct number_read {
    int32_t value;
    const char *rest; // of the text, behind the number
};

// Reads the number at the start of text, after white space and a sign as strtoll does; 0 when
// there is none.  A number that is too large is first held to 64 bits, then cut to the low 32.
inline number_read read_number(const char *text)
{
    char *rest = nullptr;
    const long long value = strtoll(text, &rest, 10);
    return {static_cast<int32_t>(value), rest};
}

} // namespace ifindex

#endif // IFINDEX_NUMBERS_H

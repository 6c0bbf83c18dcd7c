// Bit sets as text: set bits as a list of numbers and ranges, whole or in pieces that fit.
#include <charconv>

#include "infra/utils/ktlibbmp.h"

using namespace ktlibbmp;

int32_t bitset_snprintf_cursor = 0;

namespace
{

// Separator, two numbers of ten digits and the dash between them.
constexpr size_t k_longest_item = 22;

int32_t last_of_run(const bitset *b, int32_t first)
{
    const int32_t clear = bitset_find_next_free_bit(b, first);
    return clear < 0 ? static_cast<int32_t>(searched(b).size() * 8 - 1) : clear - 1;
}

// The first bit of the run after the one that ends with last, or -1.
int32_t next_run(const bitset *b, int32_t last)
{
    return last == INT32_MAX ? -1 : bitset_next_bit(b, last);
}

char *write_number(char *at, int32_t number)
{
    constexpr ptrdiff_t k_digits = 10;
    return std::to_chars(at, at + k_digits, number).ptr;
}

// Writes one item without a terminator and returns where it ends.
char *write_item(char *at, bool separated, int32_t first, int32_t last)
{
    if (separated) {
        *at++ = ',';
    }
    at = write_number(at, first);
    if (last != first) {
        *at++ = '-';
        at = write_number(at, last);
    }
    return at;
}

} // namespace

int32_t bitset_sprintf(char *text, const bitset *b)
{
    char *at = text;
    for (int32_t first = bitset_first_bit(b); first >= 0;) {
        const int32_t last = last_of_run(b, first);
        at = write_item(at, at != text, first, last);
        first = next_run(b, last);
    }
    *at = '\0';
    return static_cast<int32_t>(at - text);
}

int32_t bitset_snprintf(char *text, uint32_t capacity, const bitset *b, int32_t restart,
                        int32_t *done)
{
    *done = 0;
    if (capacity > 0) {
        *text = '\0';
    }
    if (restart != 0) {
        bitset_snprintf_cursor = 0;
    }
    // A cursor of 0 also stands for "nothing printed yet", so a list whose first item did not fit
    // goes on after bit 0 and loses that bit; kept, since callers rely on where a list goes on.
    int32_t first = restart != 0 ? bitset_first_bit(b) : bitset_next_bit(b, bitset_snprintf_cursor);
    size_t length = 0;
    while (first >= 0) {
        const int32_t last = last_of_run(b, first);
        char item[k_longest_item];
        const char *const end = write_item(item, length > 0, first, last);
        const size_t item_length = static_cast<size_t>(end - item);
        if (item_length >= capacity - length) {
            return static_cast<int32_t>(length);
        }
        memcpy(text + length, item, item_length);
        length += item_length;
        text[length] = '\0';
        bitset_snprintf_cursor = last;
        first = next_run(b, last);
    }
    *done = 1;
    bitset_snprintf_cursor = 0;
    return static_cast<int32_t>(length);
}

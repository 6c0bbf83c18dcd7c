// Prints a random set in pieces of random capacities and compares every piece, the done flag and
// the cursor with a list that is put together bit by bit.
//
// Input: the number of pieces, one byte of capacity for each, then the bits.
#include "ruk/bitset.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace
{

struct item {
    int32_t last;
    std::string text;
};

struct release {
    void operator()(void *block) const { free(block); }
};

// A record in a block of exactly its size.
using record = std::unique_ptr<bitset, release>;

void check(bool holds)
{
    if (!holds) {
        abort();
    }
}

record record_of(const uint8_t *bits, uint32_t size)
{
    record b(static_cast<bitset *>(malloc(4 + size)));
    check(b != nullptr);
    b->size = size;
    for (uint32_t i = 0; i < size; ++i) {
        b->bits[i] = bits[i];
    }
    return b;
}

bool is_set(const bitset &b, int32_t bit)
{
    return (b.bits[bit / 8] & (0x80 >> bit % 8)) != 0;
}

// The items of the list after bit `after`; the partial last word is not part of it.
std::vector<item> items_after(const bitset &b, int32_t after)
{
    const auto searched = static_cast<int32_t>(b.size / 4 * 32);
    std::vector<item> items;
    for (int32_t first = after + 1; first < searched; ++first) {
        if (!is_set(b, first)) {
            continue;
        }
        int32_t last = first;
        while (last + 1 < searched && is_set(b, last + 1)) {
            ++last;
        }
        std::string text = std::to_string(first);
        if (last > first) {
            text += '-';
            text += std::to_string(last);
        }
        items.push_back({last, text});
        first = last;
    }
    return items;
}

void check_whole(const bitset &b)
{
    std::string list;
    for (const item &next : items_after(b, -1)) {
        list += (list.empty() ? "" : ",") + next.text;
    }
    std::vector<char> text(list.size() + 1, '#');
    check(bitset_sprintf(text.data(), &b) == static_cast<int32_t>(list.size()));
    check(memcmp(text.data(), list.c_str(), text.size()) == 0);
}

// One piece; returns whether the list is complete.
bool check_piece(const bitset &b, uint32_t capacity, bool restart)
{
    const int32_t after = restart ? -1 : bitset_snprintf_cursor;
    std::string expected;
    int32_t cursor = restart ? 0 : bitset_snprintf_cursor;
    bool complete = true;
    for (const item &next : items_after(b, after)) {
        const std::string longer = expected + (expected.empty() ? "" : ",") + next.text;
        if (longer.size() >= capacity) {
            complete = false;
            break;
        }
        expected = longer;
        cursor = next.last;
    }

    std::unique_ptr<char, release> text(static_cast<char *>(malloc(capacity)));
    int32_t done = -1;
    const int32_t length = bitset_snprintf(text.get(), capacity, &b, restart ? 1 : 0, &done);
    check(length == static_cast<int32_t>(expected.size()));
    check(done == (complete ? 1 : 0));
    check(bitset_snprintf_cursor == (complete ? 0 : cursor));
    check(capacity == 0 || memcmp(text.get(), expected.c_str(), expected.size() + 1) == 0);
    return complete;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0 || size - 1 < data[0]) {
        return 0;
    }
    const size_t pieces = data[0];
    const uint8_t *capacities = data + 1;
    const record b = record_of(capacities + pieces, static_cast<uint32_t>(size - 1 - pieces));
    check_whole(*b);
    bool restart = true;
    for (size_t i = 0; i < pieces; ++i) {
        restart = check_piece(*b, capacities[i], restart);
    }
    return 0;
}

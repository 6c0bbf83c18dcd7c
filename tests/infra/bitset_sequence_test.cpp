// Long random sequences of every operation on two sets and a mask, each beside one element a bit:
// what an operation answers, and every bit after it, is what the elements say.
#include <algorithm>
#include <string>

#include "tests/infra/bitset_support.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/random.h"

using ruk_test::Random;
using ruk_test::with_each_variant;

namespace
{

constexpr int k_sequences = 40;
constexpr int k_operations = 200;
constexpr uint8_t k_mark = 0xa7;

// One set and what it should hold.  The record ends with a page where its size allows that; else a
// few marked bytes stand between.
class Pair
{
public:
    explicit Pair(uint32_t size)
        : bits(size * size_t{8}), memory_(size + 8), spare_(-size % 4),
          record_(memory_.last(4 + size + spare_))
    {
        memcpy(record_, &size, sizeof size);
        memset(record_ + 4, 0, size);
        memset(record_ + 4 + size, k_mark, spare_);
    }

    bitset *get() { return reinterpret_cast<bitset *>(record_); }
    operator bitset *() { return get(); }
    uint32_t size() const { return static_cast<uint32_t>(bits.size() / 8); }
    uint32_t numbits() const { return static_cast<uint32_t>(bits.size()); }

    bool is_as_expected()
    {
        uint32_t size_now = 0;
        memcpy(&size_now, record_, sizeof size_now);
        bool same = size_now == size();
        for (size_t i = 0; i < bits.size(); i += 8) {
            uint32_t byte = 0;
            for (size_t bit = 0; bit < 8; ++bit) {
                byte = byte << 1 | bits[i + bit];
            }
            same = same && record_[4 + i / 8] == byte;
        }
        for (size_t i = 0; i < spare_; ++i) {
            same = same && record_[4 + size() + i] == k_mark;
        }
        return same;
    }

    std::vector<uint8_t> bits; // one element a bit, 0 or 1

private:
    ruk_test::GuardedMemory memory_;
    size_t spare_;
    uint8_t *record_;
};

// --- the model of the searches ------------------------------------------------------------------

using Bits = std::vector<uint8_t>;

int32_t first_from(const Bits &bits, int64_t from, bool value)
{
    const auto searched = static_cast<int64_t>(bits.size() / 32 * 32);
    if (from >= searched) {
        return -1;
    }
    const auto begin = bits.begin();
    const auto met = std::find(begin + from, begin + searched, value ? 1 : 0);
    return met == begin + searched ? -1 : static_cast<int32_t>(met - begin);
}

int32_t last_until(const Bits &bits, int32_t until)
{
    int32_t bit = until;
    while (bit >= 0 && bits[static_cast<size_t>(bit)] == 0) {
        --bit;
    }
    return bit;
}

int32_t nth(const Bits &bits, int32_t n, bool value)
{
    int32_t bit = first_from(bits, 0, value);
    for (; n > 0 && bit >= 0; --n) {
        bit = first_from(bits, bit + 1, value);
    }
    return bit;
}

int32_t next_range(const Bits &bits, bitset_range &range, bool value)
{
    const auto numbits = static_cast<uint32_t>(bits.size());
    if (static_cast<uint32_t>(range.upper) >= numbits - 2) {
        return -1;
    }
    const bool start = range.lower == 1 && range.upper == 0;
    range.lower = first_from(bits, start ? 0 : int64_t{range.upper} + 2, value);
    if (range.lower < 0) {
        return -1;
    }
    const int32_t end = first_from(bits, range.lower + 1, !value);
    range.upper = end < 0 ? static_cast<int32_t>(numbits) - 1 : end - 1;
    return 0;
}

struct Item {
    std::string text;
    int32_t last;
};

std::vector<Item> items_after(const Bits &bits, int32_t after)
{
    std::vector<Item> items;
    const auto searched = static_cast<int32_t>(bits.size() / 32 * 32);
    int32_t i = first_from(bits, int64_t{after} + 1, true);
    while (i >= 0) {
        int32_t last = i;
        while (last + 1 < searched && bits[static_cast<size_t>(last) + 1] != 0) {
            ++last;
        }
        items.push_back(
            {std::to_string(i) + (last > i ? "-" + std::to_string(last) : std::string()), last});
        i = first_from(bits, last + 1, true);
    }
    return items;
}

// --- one sequence -------------------------------------------------------------------------------

class Sequence
{
public:
    Sequence(Random &random, uint32_t size) : random_(random), b_(size), b1_(size), mask_(size) {}

    void run()
    {
        for (int i = 0; i < k_operations && !testing::Test::HasFailure(); ++i) {
            operate();
            EXPECT_TRUE(b_.is_as_expected());
            EXPECT_TRUE(b1_.is_as_expected());
            EXPECT_TRUE(mask_.is_as_expected());
        }
    }

private:
    // The second set of an operation: at times it is the first one.
    Pair &other() { return random_.once_in(8) ? b_ : b1_; }
    Pair &some() { return random_.once_in(2) ? b_ : random_.once_in(2) ? b1_ : mask_; }

    void operate()
    {
        switch (random_.below(12)) {
        case 0:
        case 1:
        case 2:
            change_bits(some());
            break;
        case 3:
            change_whole(some());
            break;
        case 4:
        case 5:
            combine();
            break;
        case 6:
            compare();
            break;
        case 7:
        case 8:
            search(some());
            break;
        case 9:
            ranges(some());
            break;
        case 10:
            print(some());
            break;
        default:
            bit_arrays(some());
        }
    }

    void change_bits(Pair &p)
    {
        if (p.numbits() == 0) {
            return;
        }
        const uint32_t bit = random_.below(p.numbits());
        const auto at = static_cast<int32_t>(bit);
        // Zero and below change nothing.
        const uint32_t room = p.numbits() - bit;
        int32_t length = static_cast<int32_t>(
            random_.below(1 + std::min(room, uint32_t{1} << random_.below(16))));
        if (random_.once_in(16)) {
            length = -static_cast<int32_t>(random_.below(100));
        }
        bool value = random_.once_in(2);
        switch (random_.below(4)) {
        case 0:
            (value ? bitset_set_bit : bitset_clear_bit)(p, at);
            length = 1;
            break;
        case 1:
            bitset_set_range_value(p, at, length,
                                   value ? static_cast<int32_t>(random_.bits32() | 1) : 0);
            break;
        default:
            (value ? bitset_set_range : bitset_clear_range)(p, at, length);
        }
        for (int32_t i = 0; i < length; ++i) {
            p.bits[bit + static_cast<uint32_t>(i)] = value ? 1 : 0;
        }
        EXPECT_EQ(bitset_is_bit_set(p, at), p.bits[bit]);
    }

    void change_whole(Pair &p)
    {
        switch (random_.below(8)) {
        case 0:
            bitset_clear(p);
            p.bits.assign(p.bits.size(), 0);
            break;
        case 1:
            bitset_fill(p);
            p.bits.assign(p.bits.size(), 1);
            break;
        default: {
            Pair &from = some();
            bitset_copy(p, from);
            const Bits copied = from.bits; // from may be p itself
            p.bits = copied;
        }
        }
        EXPECT_EQ(bitset_size(p), p.size() + 4);
    }

    void combine()
    {
        Pair &q = other();
        const Bits second = q.bits;
        const uint32_t operation = random_.below(4);
        switch (operation) {
        case 0:
            bitset_union(b_, q);
            break;
        case 1:
            bitset_intersection(b_, q);
            break;
        case 2:
            bitset_subtract(b_, q);
            break;
        default:
            bitset_maskcopy(b_, q, mask_);
        }
        for (size_t i = 0; i < second.size(); ++i) {
            const bool v = b_.bits[i] != 0;
            const bool w = second[i] != 0;
            const bool masked = mask_.bits[i] != 0;
            const bool result = operation == 0   ? v || w
                                : operation == 1 ? v && w
                                : operation == 2 ? v && !w
                                                 : (masked ? w : v);
            b_.bits[i] = result ? 1 : 0;
        }
    }

    void compare()
    {
        Pair &q = other();
        bool equal = true;
        bool mask_equal = true;
        bool subset = true;
        uint32_t count = 0;
        for (size_t i = 0; i < q.bits.size(); ++i) {
            equal = equal && b_.bits[i] == q.bits[i];
            mask_equal = mask_equal && (mask_.bits[i] == 0 || b_.bits[i] == q.bits[i]);
            subset = subset && b_.bits[i] <= q.bits[i];
            count += b_.bits[i];
        }
        EXPECT_EQ(bitset_equal(b_, q), equal ? 1 : 0);
        EXPECT_EQ(bitset_maskequal(b_, q, mask_), mask_equal ? 1 : 0);
        EXPECT_EQ(bitset_subset(b_, q), subset ? 1 : 0);
        EXPECT_EQ(bitset_bitcount(b_), count);
    }

    void search(Pair &p)
    {
        const auto from = static_cast<int32_t>(random_.below(p.numbits() + 70));
        SCOPED_TRACE(from);
        EXPECT_EQ(bitset_first_bit(p), first_from(p.bits, 0, true));
        EXPECT_EQ(bitset_first_free_bit(p), first_from(p.bits, 0, false));
        EXPECT_EQ(bitset_find_next_bit(p, from), first_from(p.bits, from, true));
        EXPECT_EQ(bitset_find_next_free_bit(p, from), first_from(p.bits, from, false));
        EXPECT_EQ(bitset_next_bit(p, from), first_from(p.bits, from + 1, true));
        EXPECT_EQ(bitset_next_free_bit(p, from), first_from(p.bits, from + 1, false));
        EXPECT_EQ(bitset_nth_bit(p, from), nth(p.bits, from, true));
        EXPECT_EQ(bitset_nth_free_bit(p, from), nth(p.bits, from, false));
        if (static_cast<uint32_t>(from) < p.numbits()) {
            EXPECT_EQ(bitset_find_prev_bit(p, from), last_until(p.bits, from));
        }
    }

    // An end of a range: mostly inside, or anything.  (In an empty set nothing is behind the last
    // bit, and a search from a negative number would be fatal.)
    int32_t end(const Pair &p)
    {
        return p.numbits() > 0 && random_.once_in(16)
                   ? static_cast<int32_t>(random_.bits32())
                   : static_cast<int32_t>(random_.below(p.numbits() + 4));
    }

    void ranges(Pair &p)
    {
        bitset_range range = {1, 0};
        if (random_.once_in(2)) {
            range = {end(p), end(p)};
        }
        const bool value = random_.once_in(2);
        for (int i = 0; i < 20; ++i) {
            bitset_range expected = range;
            const int32_t result = next_range(p.bits, expected, value);
            EXPECT_EQ((value ? bitset_next_range : bitset_next_free_range)(p, &range), result);
            EXPECT_EQ(range.lower, expected.lower);
            EXPECT_EQ(range.upper, expected.upper);
            if (result != 0) {
                break;
            }
        }
        if (p.numbits() > 0) {
            const auto lower = static_cast<int32_t>(random_.below(p.numbits()));
            const auto room = p.numbits() - static_cast<uint32_t>(lower);
            const bitset_range asked = {lower, lower + static_cast<int32_t>(random_.below(room))};
            const int32_t met = first_from(p.bits, lower + 1, true);
            EXPECT_EQ(bitset_is_range_free(p, &asked), met < 0 || met > asked.upper ? 1 : 0);
        }
    }

    void print(Pair &p)
    {
        std::string list;
        for (const Item &item : items_after(p.bits, -1)) {
            list += (list.empty() ? "" : ",") + item.text;
        }
        std::vector<char> text(list.size() + 2, '#');
        EXPECT_EQ(bitset_sprintf(text.data(), p), static_cast<int32_t>(list.size()));
        EXPECT_EQ(std::string(text.data(), text.size()), list + '\0' + '#');
        bool restart = true;
        for (int i = 0; i < 6; ++i) {
            restart = print_piece(p, random_.below(uint64_t{2} << random_.below(12)), restart);
            if (random_.once_in(8)) { // a caller may start anywhere
                bitset_snprintf_cursor = static_cast<int32_t>(random_.below(p.numbits() + 40));
                restart = false;
            }
        }
    }

    // One piece; returns whether the list is complete.
    static bool print_piece(Pair &p, uint32_t capacity, bool restart)
    {
        std::string expected;
        int32_t cursor = restart ? 0 : bitset_snprintf_cursor;
        bool complete = true;
        for (const Item &item : items_after(p.bits, restart ? -1 : bitset_snprintf_cursor)) {
            const std::string longer = expected + (expected.empty() ? "" : ",") + item.text;
            if (longer.size() >= capacity) {
                complete = false;
                break;
            }
            expected = longer;
            cursor = item.last;
        }
        const ruk_test::GuardedMemory memory(capacity);
        char *text = reinterpret_cast<char *>(memory.last(capacity));
        int32_t done = -1;
        EXPECT_EQ(bitset_snprintf(text, capacity, p, restart ? 1 : 0, &done),
                  static_cast<int32_t>(expected.size()));
        EXPECT_EQ(done, complete ? 1 : 0);
        EXPECT_EQ(bitset_snprintf_cursor, complete ? 0 : cursor);
        if (capacity > 0) {
            EXPECT_EQ(std::string_view(text, expected.size() + 1), expected + '\0');
        }
        return complete;
    }

    void bit_arrays(Pair &p)
    {
        const auto length = static_cast<int32_t>(random_.below(p.size() + 12)) - 4;
        const size_t bytes = length > 0 ? static_cast<size_t>(length) : 0;
        const ruk_test::GuardedMemory memory(bytes);
        uint8_t *array = memory.last(bytes);
        memset(array, k_mark, bytes);
        bitset_to_bitarray(p, array, length);
        for (size_t i = 0; i < bytes * 8; ++i) {
            const bool expected = i < p.bits.size() && p.bits[i] != 0;
            ASSERT_EQ((array[i / 8] & 1 << i % 8) != 0, expected) << i;
        }
        if (random_.once_in(2)) {
            for (size_t i = 0; i < bytes; ++i) {
                array[i] = random_.byte();
            }
            bitset_from_bitarray(p, array, length);
            for (size_t i = 0; i < p.bits.size(); ++i) {
                p.bits[i] = i / 8 < bytes ? array[i / 8] >> i % 8 & 1 : 0;
            }
        }
    }

    Random &random_;
    Pair b_;
    Pair b1_;
    Pair mask_;
};

} // namespace

TEST(bitset_sequence, every_operation_agrees_with_one_element_a_bit)
{
    Random random;
    with_each_variant([&] {
        for (int i = 0; i < k_sequences && !testing::Test::HasFailure(); ++i) {
            const uint32_t size = random.below(uint64_t{4} << random.below(12));
            SCOPED_TRACE(size);
            Sequence(random, size).run();
        }
    });
}

// A set may be asked for in one that is larger.
TEST(bitset_sequence, a_subset_of_a_larger_set_is_judged_over_its_own_size)
{
    Random random;
    with_each_variant([&] {
        for (int i = 0; i < 2000; ++i) {
            Pair small(random.below(200));
            Pair large(small.size() + random.below(40));
            bitset_fill(large);
            if (random.once_in(2) && large.numbits() > 0) {
                bitset_clear_bit(large, static_cast<int32_t>(random.below(large.numbits())));
            }
            for (uint32_t n = random.below(4); n > 0 && small.numbits() > 0; --n) {
                bitset_set_bit(small, static_cast<int32_t>(random.below(small.numbits())));
            }
            bool subset = true;
            for (int32_t bit = 0; bit < static_cast<int32_t>(small.numbits()); ++bit) {
                subset = subset &&
                         (bitset_is_bit_set(small, bit) == 0 || bitset_is_bit_set(large, bit) == 1);
            }
            ASSERT_EQ(bitset_subset(small, large), subset ? 1 : 0);
        }
    });
}

// Lists of large random sets against a model that goes bit by bit, whole and in pieces of random
// size, with every variant of the loops.
#include <string>

#include "tests/infra/bitset_support.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/random.h"

using ruk_test::set_of;
using ruk_test::with_each_variant;

namespace
{

// Up to 104,000 bits: numbers of every length up to six digits, in stretches of every density.
constexpr uint32_t k_size = 13000;

// Stretches of bits, each with a mean length of run and of gap of its own.
std::vector<uint8_t> random_bits(ruk_test::Random &random, uint32_t size)
{
    std::vector<uint8_t> bits(size * 8);
    bool value = false;
    for (size_t i = 0; i < bits.size();) {
        const uint32_t run = 1u << random.below(11);
        const uint32_t gap = 1u << random.below(14);
        const size_t end = std::min(bits.size(), i + random.below(4000));
        for (; i < end; ++i) {
            bits[i] = value;
            value = value != (random.below(value ? run : gap) == 0);
        }
    }
    return bits;
}

struct item {
    std::string text;
    int32_t last;
};

std::vector<item> list_items(const std::vector<uint8_t> &bits)
{
    std::vector<item> items;
    const size_t searched = bits.size() / 32 * 32;
    for (size_t i = 0; i < searched; ++i) {
        if (!bits[i]) {
            continue;
        }
        size_t last = i;
        while (last + 1 < searched && bits[last + 1]) {
            ++last;
        }
        const std::string range = last > i ? "-" + std::to_string(last) : "";
        items.push_back({std::to_string(i) + range, static_cast<int32_t>(last)});
        i = last;
    }
    return items;
}

// A set with these bits.
set_of set_with(const std::vector<uint8_t> &bits)
{
    set_of b(static_cast<uint32_t>(bits.size() / 8));
    for (size_t bit = 0; bit < bits.size(); ++bit) {
        b.data()[bit / 8] =
            static_cast<uint8_t>(b.data()[bit / 8] | (bits[bit] ? 0x80u >> bit % 8 : 0u));
    }
    return b;
}

std::string text_of(const std::vector<item> &items)
{
    std::string list;
    for (const item &next : items) {
        list += list.empty() ? "" : ",";
        list += next.text;
    }
    return list;
}

void expect_list(bitset *b, const std::string &list)
{
    std::vector<char> text(list.size() + 1, '#');
    EXPECT_EQ(bitset_sprintf(text.data(), b), static_cast<int32_t>(list.size()));
    EXPECT_EQ(text.data(), list);
}

// What fits into a piece that begins with an item, and how many items that are.
std::pair<std::string, size_t> piece_of(const std::vector<item> &items, size_t from,
                                        size_t capacity)
{
    std::string text;
    size_t i = from;
    for (; i < items.size(); ++i) {
        const std::string next = (text.empty() ? "" : ",") + items[i].text;
        if (text.size() + next.size() >= capacity) {
            break;
        }
        text += next;
    }
    return {text, i - from};
}

void expect_pieces(bitset *b, const std::vector<item> &items, ruk_test::Random &random)
{
    size_t from = 0;
    for (int32_t done = 0; done == 0;) {
        // An item of its own always fits.
        const uint32_t capacity = 16 + random.below(1u << random.below(12));
        std::vector<char> text(capacity, '#');
        const auto [expected, taken] = piece_of(items, from, capacity);
        const int32_t length = bitset_snprintf(text.data(), capacity, b, from == 0 ? 1 : 0, &done);
        ASSERT_EQ(std::string(text.data()), expected);
        ASSERT_EQ(length, static_cast<int32_t>(expected.size()));
        ASSERT_EQ(std::count(text.begin() + length + 1, text.end(), '#'),
                  text.end() - text.begin() - length - 1);
        from += taken;
        ASSERT_EQ(done, from == items.size() ? 1 : 0);
        ASSERT_EQ(bitset_snprintf_cursor, done != 0 ? 0 : items[from - 1].last);
    }
}

// What one call for the beginning of a list does with a buffer of this capacity, behind which
// nobody may touch anything.
void expect_cut(const bitset *b, const std::vector<item> &items, uint32_t capacity)
{
    static const ruk_test::GuardedMemory memory(70'000);
    auto *const text = reinterpret_cast<char *>(memory.last(capacity));
    memset(text, '#', capacity);
    std::string expected = piece_of(items, 0, capacity).first;
    const size_t taken = piece_of(items, 0, capacity).second;
    int32_t done = -77;
    ASSERT_EQ(bitset_snprintf(text, capacity, b, 1, &done), static_cast<int32_t>(expected.size()));
    ASSERT_EQ(done, taken == items.size() ? 1 : 0);
    ASSERT_EQ(bitset_snprintf_cursor, done != 0 || taken == 0 ? 0 : items[taken - 1].last);
    if (capacity > 0) {
        expected += '\0';
        expected.resize(capacity, '#');
    }
    ASSERT_EQ(std::string_view(text, capacity), expected);
}

} // namespace

TEST(bitset_random_list, lists_of_large_sets_agree_with_the_model)
{
    ruk_test::Random random;
    with_each_variant([&] {
        for (uint32_t i = 0; i < 12; ++i) {
            const uint32_t size = k_size - random.below(i % 2 == 0 ? 12 : k_size);
            SCOPED_TRACE(size);
            const std::vector<uint8_t> bits = random_bits(random, size);
            set_of b = set_with(bits);
            const std::vector<item> items = list_items(bits);
            expect_list(b, text_of(items));
            ASSERT_NO_FATAL_FAILURE(expect_pieces(b, items, random));
        }
    });
}

// Words in which each number of bits from 0 to 64 differs from the one before, at random places.
TEST(bitset_random_list, words_with_any_number_of_edges)
{
    ruk_test::Random random;
    std::vector<uint8_t> bits;
    bool value = false;
    for (uint32_t word = 0; word < 65 * 65; ++word) {
        uint32_t edges = word * 8 % 65;
        for (uint32_t left = 64; left > 0; --left) {
            const bool is_edge = random.below(left) < edges;
            edges -= is_edge ? 1 : 0;
            value = value != is_edge;
            bits.push_back(value);
        }
    }
    with_each_variant([&] {
        set_of b = set_with(bits);
        const std::vector<item> items = list_items(bits);
        expect_list(b, text_of(items));
        ASSERT_NO_FATAL_FAILURE(expect_pieces(b, items, random));
    });
}

// As many edges as there can be, with and without one at the very beginning, up to more words than
// are read at once.
TEST(bitset_random_list, every_other_bit)
{
    for (uint32_t size = 0; size < 1200; size += 4) {
        SCOPED_TRACE(size);
        for (const uint32_t first : {0u, 1u}) {
            std::vector<uint8_t> bits(size * 8);
            for (size_t bit = first; bit < bits.size(); bit += 2) {
                bits[bit] = true;
            }
            set_of b = set_with(bits);
            const std::string list = text_of(list_items(bits));
            with_each_variant([&] { expect_list(b, list); });
        }
    }
}

// Items of every length up to that of two numbers of five digits, cut after every character, with
// everything behind the terminator as it was.
TEST(bitset_random_list, cut_at_every_capacity)
{
    ruk_test::Random random;
    std::vector<uint8_t> bits(100'096);
    for (const size_t from : {0u, 80u, 960u, 9960u, 99960u}) {
        for (size_t bit = from; bit < from + 80; ++bit) {
            bits[bit] = random.once_in(2);
        }
    }
    with_each_variant([&] {
        const set_of b = set_with(bits);
        const std::vector<item> items = list_items(bits);
        const auto length = static_cast<uint32_t>(piece_of(items, 0, SIZE_MAX).first.size());
        for (uint32_t capacity = 0; capacity < length + 70; ++capacity) {
            SCOPED_TRACE(capacity);
            ASSERT_NO_FATAL_FAILURE(expect_cut(b, items, capacity));
        }
        ASSERT_NO_FATAL_FAILURE(expect_cut(b, items, 70'000));
    });
}

// All values of the last four digits, single and as the ends of ranges, and of those before them,
// where the number of digits no longer fits the quick way.
TEST(bitset_random_list, numbers_of_every_value)
{
    constexpr size_t k_all = 20'000;
    constexpr size_t k_numbits = 10'100'000;
    std::vector<uint8_t> bits(k_numbits);
    for (size_t bit = 0; bit < k_all; ++bit) {
        bits[bit] = bit < k_all / 2 ? bit % 2 : bit % 3 != 0;
    }
    for (size_t bit = k_all; bit < k_numbits; bit += 10'000) {
        bits[bit - 1] = true;
        bits[bit] = true;
        bits[bit + 2] = true;
    }
    set_of b = set_with(bits);
    const std::string list = text_of(list_items(bits));
    with_each_variant([&] { expect_list(b, list); });
}

// Dense items on both sides of every change in the number of digits that a small set has.
TEST(bitset_random_list, numbers_get_another_digit_within_dense_items)
{
    with_each_variant([] {
        for (const int32_t power : {10, 100, 1000, 10000, 100000}) {
            SCOPED_TRACE(power);
            set_of b(13000);
            std::string list;
            for (int32_t bit = std::max(0, power - 250); bit < power + 250; bit += 5) {
                bitset_set_range(b, bit, bit % 2 + 1);
                list += (list.empty() ? "" : ",") + std::to_string(bit);
                list += bit % 2 != 0 ? "-" + std::to_string(bit + 1) : "";
            }
            std::vector<char> text(list.size() + 1, '#');
            EXPECT_EQ(bitset_sprintf(text.data(), b), static_cast<int32_t>(list.size()));
            EXPECT_EQ(text.data(), list);
        }
    });
}

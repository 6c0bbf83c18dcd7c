// Bit sets: searches and runs, at every word edge and in the partial last word.
#include <limits>
#include <string>
#include <sys/mman.h>

#include "tests/infra/bitset_support.h"

using ruk_test::set_of;
using ruk_test::with_each_variant;
using bytes = std::vector<uint8_t>;

namespace
{

constexpr int32_t k_edges[] = {0,  1,  2,   7,   8,   9,   30,  31,  32,  33,  34,  62,  63,
                               64, 65, 126, 127, 128, 129, 254, 255, 256, 257, 511, 512, 543};
constexpr uint32_t k_size = 68; // 544 bits

} // namespace

TEST(bitset, searches_meet_a_single_bit_at_every_edge)
{
    with_each_variant([] {
        for (const int32_t bit : k_edges) {
            SCOPED_TRACE(bit);
            set_of b(k_size, {bit});
            EXPECT_EQ(bitset_first_bit(b), bit);
            EXPECT_EQ(bitset_next_bit(b, -1), bit);
            EXPECT_EQ(bitset_next_bit(b, bit - 1), bit);
            EXPECT_EQ(bitset_next_bit(b, bit), -1);
            EXPECT_EQ(bitset_find_next_bit(b, bit), bit);
            EXPECT_EQ(bitset_find_next_bit(b, 0), bit);
            EXPECT_EQ(bitset_find_next_bit(b, bit + 1), -1);
            EXPECT_EQ(bitset_nth_bit(b, 0), bit);
            EXPECT_EQ(bitset_nth_bit(b, 1), -1);
            EXPECT_EQ(bitset_find_prev_bit(b, bit), bit);
            EXPECT_EQ(bitset_find_prev_bit(b, 543), bit);
            EXPECT_EQ(bit == 0 ? -1 : bitset_find_prev_bit(b, bit - 1), -1);
        }
    });
}

TEST(bitset, free_searches_meet_a_single_hole_at_every_edge)
{
    with_each_variant([] {
        for (const int32_t bit : k_edges) {
            SCOPED_TRACE(bit);
            set_of b(k_size);
            bitset_fill(b);
            bitset_clear_bit(b, bit);
            EXPECT_EQ(bitset_first_free_bit(b), bit);
            EXPECT_EQ(bitset_next_free_bit(b, -1), bit);
            EXPECT_EQ(bitset_next_free_bit(b, bit - 1), bit);
            EXPECT_EQ(bitset_next_free_bit(b, bit), -1);
            EXPECT_EQ(bitset_find_next_free_bit(b, bit), bit);
            EXPECT_EQ(bitset_find_next_free_bit(b, 0), bit);
            EXPECT_EQ(bitset_find_next_free_bit(b, bit + 1), -1);
            EXPECT_EQ(bitset_nth_free_bit(b, 0), bit);
            EXPECT_EQ(bitset_nth_free_bit(b, 1), -1);
        }
    });
}

TEST(bitset, searches_beyond_the_set_find_nothing)
{
    set_of b(8);
    bitset_fill(b);
    constexpr int32_t k_max = std::numeric_limits<int32_t>::max();
    for (const int32_t bit : {64, 65, 1000, k_max}) {
        EXPECT_EQ(bitset_find_next_bit(b, bit), -1);
        EXPECT_EQ(bitset_find_next_free_bit(b, bit), -1);
        EXPECT_EQ(bitset_next_bit(b, bit - 1), -1);
        EXPECT_EQ(bitset_next_free_bit(b, bit - 1), -1);
    }
    EXPECT_EQ(bitset_nth_bit(b, 63), 63);
    EXPECT_EQ(bitset_nth_bit(b, 64), -1);
    EXPECT_EQ(bitset_nth_bit(b, k_max), -1);
    EXPECT_EQ(bitset_nth_free_bit(b, 0), -1);
    EXPECT_EQ(bitset_nth_free_bit(b, k_max), -1);
}

TEST(bitset_nth_bit, counts_from_zero)
{
    with_each_variant([] {
        set_of b(1028, {3, 4, 31, 32, 77, 4095, 4096, 8223});
        const int32_t expected[] = {3, 4, 31, 32, 77, 4095, 4096, 8223, -1, -1};
        for (int32_t n = 0; n < 10; ++n) {
            EXPECT_EQ(bitset_nth_bit(b, n), expected[n]);
        }
        const std::pair<int32_t, int32_t> holes[] = {
            {0, 0},   {2, 2},   {3, 5},       {28, 30},   {29, 33},
            {72, 76}, {73, 78}, {8215, 8222}, {8216, -1},
        };
        for (const auto &[n, hole] : holes) {
            EXPECT_EQ(bitset_nth_free_bit(b, n), hole) << n;
        }
        set_of large(40000);
        bitset_fill(large);
        for (const int32_t n : {0, 4095 * 8, 32767, 32768, 32769, 319999}) {
            EXPECT_EQ(bitset_nth_bit(large, n), n);
        }
        EXPECT_EQ(bitset_nth_bit(large, 320000), -1);
    });
}

// With all bits set, respectively clear, the searches end with the last whole word.
TEST(bitset, partial_last_word_is_never_found_going_forward)
{
    const struct {
        uint32_t size;
        int32_t searched; // bits
    } rows[] = {
        {0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 32}, {5, 32}, {6, 32}, {7, 32}, {8, 64}, {9, 64},
    };
    with_each_variant([&] {
        for (const auto &[size, searched] : rows) {
            SCOPED_TRACE(size);
            const auto numbits = static_cast<int32_t>(size * 8);
            set_of full(size);
            bitset_fill(full);
            set_of none(size);
            EXPECT_EQ(bitset_bitcount(full), size * 8);
            EXPECT_EQ(bitset_first_bit(full), searched > 0 ? 0 : -1);
            EXPECT_EQ(bitset_first_free_bit(none), searched > 0 ? 0 : -1);
            EXPECT_EQ(bitset_nth_bit(full, searched), -1);
            EXPECT_EQ(bitset_nth_free_bit(none, searched), -1);
            EXPECT_EQ(bitset_first_bit(none), -1);
            EXPECT_EQ(bitset_first_free_bit(full), -1);
            for (int32_t bit = 0; bit < numbits + 40; ++bit) {
                SCOPED_TRACE(bit);
                const int32_t expected = bit < searched ? bit : -1;
                EXPECT_EQ(bitset_find_next_bit(full, bit), expected);
                EXPECT_EQ(bitset_find_next_free_bit(none, bit), expected);
                EXPECT_EQ(bitset_next_bit(full, bit - 1), expected);
                EXPECT_EQ(bitset_next_free_bit(none, bit - 1), expected);
                EXPECT_EQ(bitset_nth_bit(full, bit), expected);
                EXPECT_EQ(bitset_nth_free_bit(none, bit), expected);
            }
            for (int32_t upper = 0; upper < numbits; ++upper) {
                // Bit 0 is not examined, and a bit beyond the whole words counts as free.
                const bitset_range range = {0, upper};
                EXPECT_EQ(bitset_is_range_free(full, &range), upper == 0 || searched == 0 ? 1 : 0);
            }
        }
    });
}

// The backward search starts in the word of bNo, whole or not.
TEST(bitset_find_prev_bit, finds_bits_of_the_partial_last_word)
{
    with_each_variant([] {
        for (uint32_t size = 1; size <= 9; ++size) {
            SCOPED_TRACE(size);
            const auto numbits = static_cast<int32_t>(size * 8);
            for (int32_t bit = 0; bit < numbits; ++bit) {
                SCOPED_TRACE(bit);
                set_of b(size, {bit});
                for (int32_t from = 0; from < numbits; ++from) {
                    EXPECT_EQ(bitset_find_prev_bit(b, from), from < bit ? -1 : bit) << from;
                }
                set_of full(size);
                bitset_fill(full);
                EXPECT_EQ(bitset_find_prev_bit(full, bit), bit);
            }
        }
    });
}

TEST(bitset, forty_eight_bits_with_one_in_the_partial_word)
{
    set_of b(6, {40});
    EXPECT_EQ(bitset_first_bit(b), -1);
    EXPECT_EQ(bitset_is_bit_set(b, 40), 1);
    EXPECT_EQ(bitset_bitcount(b), 1u);
    EXPECT_EQ(bitset_find_prev_bit(b, 47), 40);
    EXPECT_EQ(bitset_find_prev_bit(b, 39), -1);
    const bitset_range range = {3, 47};
    EXPECT_EQ(bitset_is_range_free(b, &range), 1);
    bitset_range run = {1, 0};
    EXPECT_EQ(bitset_next_range(b, &run), -1);
}

TEST(bitset_is_range_free, leaves_the_lower_bound_out)
{
    const struct {
        int32_t set;
        int32_t lower;
        int32_t upper;
        int32_t expected;
    } rows[] = {
        {3, 3, 5, 1}, {3, 2, 5, 0},   {3, 2, 3, 0},   {3, 2, 2, 1},    {3, 3, 3, 1},  {5, 3, 5, 0},
        {6, 3, 5, 1}, {63, 0, 63, 0}, {63, 0, 62, 1}, {63, 63, 63, 1}, {0, 0, 63, 1}, {1, 0, 63, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.set) + " in " + std::to_string(row.lower) + "-" +
                     std::to_string(row.upper));
        set_of b(8, {row.set});
        const bitset_range range = {row.lower, row.upper};
        EXPECT_EQ(bitset_is_range_free(b, &range), row.expected);
    }
}

namespace
{

using enumeration = int32_t (*)(const bitset *, bitset_range *);

// All runs as text, "[4,9][11,63]".
std::string all_runs(enumeration next, const bitset *b)
{
    std::string text;
    bitset_range range = {1, 0};
    while (next(b, &range) == 0) {
        text += "[" + std::to_string(range.lower) + "," + std::to_string(range.upper) + "]";
    }
    return text;
}

} // namespace

TEST(bitset, runs_are_enumerated_in_order)
{
    const struct {
        bytes content;
        const char *set;
        const char *clear;
    } rows[] = {
        {{0xf0, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, "[0,3][10,10]", "[4,9][11,63]"},
        {{0x00, 0x00, 0x00, 0x00}, "", "[0,31]"},
        {{0xff, 0xff, 0xff, 0xff}, "[0,31]", ""},
        {{0xaa, 0x00, 0x00, 0x00}, "[0,0][2,2][4,4][6,6]", "[1,1][3,3][5,5][7,31]"},
        {{0x00, 0x00, 0x00, 0x01}, "[31,31]", "[0,30]"},
        {{0x00, 0x00, 0x00, 0x05}, "[29,29][31,31]", "[0,28][30,30]"},
        // A run that ends with the last bit but one hides what follows: nothing can, for sets
        // whose last run is closed, except the very last bit itself.
        {{0x00, 0x00, 0x00, 0x02}, "[30,30]", "[0,29][31,31]"},
        {{0xff, 0xff, 0xff, 0xff, 0x80, 0x00, 0x00, 0x00}, "[0,32]", "[33,63]"},
        {{0x00, 0x00, 0x00, 0x01, 0x80, 0x00, 0x00, 0x00}, "[31,32]", "[0,30][33,63]"},
        {{0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfe}, "[1,62]", "[0,0][63,63]"},
        // Within the partial last word nothing ends a run: it reaches to the end of the set.
        {{0xff, 0xff, 0xff, 0xff, 0x00, 0x00}, "[0,47]", ""},
        {{0x00, 0x00, 0x00, 0x00, 0xff, 0xff}, "", "[0,47]"},
        {{0xf0, 0x00, 0x00, 0x0f, 0x00}, "[0,3][28,39]", "[4,27]"},
        {{0xff}, "", ""},
        {{0x00}, "", ""},
        {{}, "", ""},
    };
    with_each_variant([&] {
        for (const auto &row : rows) {
            set_of b(row.content, 0);
            EXPECT_EQ(all_runs(bitset_next_range, b), row.set);
            EXPECT_EQ(all_runs(bitset_next_free_range, b), row.clear);
        }
    });
}

TEST(bitset_next_range, says_what_it_leaves_in_the_range)
{
    const struct {
        bitset_range before;
        int32_t result;
        bitset_range after;
    } rows[] = {
        {{1, 0}, 0, {4, 5}}, // the start value
        {{0, 0}, 0, {4, 5}}, // not the start value: the search starts at bit 2
        {{2, 3}, 0, {5, 5}}, // starts at bit 5, within the run
        {{4, 5}, 0, {20, 20}},    {{0, 18}, 0, {20, 20}},
        {{0, 19}, -1, {-1, 19}},                           // starts at bit 21
        {{20, 20}, -1, {-1, 20}}, {{7, 29}, -1, {-1, 29}}, // starts at bit 31
        {{7, 30}, -1, {7, 30}}, // nothing can follow: not even lower is written
        {{7, 31}, -1, {7, 31}},   {{7, -1}, -1, {7, -1}},
        {{1, 99}, -1, {1, 99}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.before.lower) + "," + std::to_string(row.before.upper));
        set_of b(4, {4, 5, 20});
        bitset_range range = row.before;
        EXPECT_EQ(bitset_next_range(b, &range), row.result);
        EXPECT_EQ(range.lower, row.after.lower);
        EXPECT_EQ(range.upper, row.after.upper);

        // The same for clear bits of the complement.
        set_of inverse(4);
        bitset_fill(inverse);
        bitset_subtract(inverse, b);
        range = row.before;
        EXPECT_EQ(bitset_next_free_range(inverse, &range), row.result);
        EXPECT_EQ(range.lower, row.after.lower);
        EXPECT_EQ(range.upper, row.after.upper);
    }
}

TEST(bitset_next_range, overwrites_lower_of_an_empty_set)
{
    // Two bits fewer than none are many, unsigned: the search is tried and finds nothing.
    set_of b(0);
    bitset_range range = {1, 0};
    EXPECT_EQ(bitset_next_range(b, &range), -1);
    EXPECT_EQ(range.lower, -1);
    EXPECT_EQ(range.upper, 0);
    range = {1, 0};
    EXPECT_EQ(bitset_next_free_range(b, &range), -1);
    EXPECT_EQ(range.lower, -1);
    EXPECT_EQ(range.upper, 0);
}

// The largest set whose number of bits fits into 32 bits.  Its memory is never touched whole.
TEST(bitset, bits_beyond_the_greatest_number_are_never_found)
{
    constexpr uint32_t k_bytes = 0x1fffffff;
    constexpr int32_t k_max = std::numeric_limits<int32_t>::max();
    void *memory = mmap(nullptr, size_t{k_bytes} + 4, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *b = static_cast<bitset *>(memory);
    b->size = k_bytes;
    EXPECT_EQ(bitset_size(b), 0x20000003u);

    // Nine bits: the one with the greatest number and eight that have none.
    bitset_set_range(b, k_max, 9);
    EXPECT_EQ(b->bits[0x0ffffffe], 0x00);
    EXPECT_EQ(b->bits[0x0fffffff], 0x01);
    EXPECT_EQ(b->bits[0x10000000], 0xff);
    EXPECT_EQ(b->bits[0x10000001], 0x00);
    EXPECT_EQ(bitset_is_bit_set(b, k_max), 1);
    EXPECT_EQ(bitset_find_next_bit(b, k_max - 100), k_max);
    EXPECT_EQ(bitset_find_next_bit(b, k_max), k_max);
    EXPECT_EQ(bitset_find_next_free_bit(b, k_max), -1);
    EXPECT_EQ(bitset_find_prev_bit(b, k_max), k_max);
    bitset_clear_bit(b, k_max);
    EXPECT_EQ(bitset_find_next_bit(b, k_max - 100), -1);

    // A run that reaches beyond them ends with the last bit of the set, 0xfffffff7.
    bitset_set_range(b, k_max - 3, 4);
    bitset_range range = {0, k_max - 50};
    EXPECT_EQ(bitset_next_range(b, &range), 0);
    EXPECT_EQ(range.lower, k_max - 3);
    EXPECT_EQ(static_cast<uint32_t>(range.upper), 0xfffffff7u);
    EXPECT_EQ(bitset_next_range(b, &range), -1);

    bitset_snprintf_cursor = k_max - 50;
    char text[32];
    int32_t done = 0;
    EXPECT_EQ(bitset_snprintf(text, sizeof text, b, 0, &done), 21);
    EXPECT_STREQ(text, "2147483644-2147483647");
    EXPECT_EQ(done, 1);
    munmap(memory, size_t{k_bytes} + 4);
}

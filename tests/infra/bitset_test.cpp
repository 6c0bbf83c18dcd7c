// Bit sets: whole sets, single bits, ranges, algebra and bit arrays.
#include "ruk/bitset.h"

#include <limits>
#include <string>

#include "tests/infra/bitset_support.h"

using ruk_test::set_of;
using ruk_test::with_each_variant;
using bytes = std::vector<uint8_t>;

namespace
{

constexpr int32_t k_max = std::numeric_limits<int32_t>::max();
constexpr int32_t k_min = std::numeric_limits<int32_t>::min();

constexpr size_t k_misalignments[] = {0, 1, 2, 3};

// Both sides of every byte, word and vector edge.
constexpr int32_t k_edges[] = {0,  1,  7,  8,   9,   15,  16,  23,  24,  31,  32,  33,
                               63, 64, 65, 127, 128, 129, 255, 256, 257, 511, 512, 513};

} // namespace

TEST(bitset, record_is_a_size_and_the_bits)
{
    EXPECT_EQ(sizeof(bitset), 4u);
    EXPECT_EQ(offsetof(bitset, size), 0u);
    EXPECT_EQ(offsetof(bitset, bits), 4u);
    EXPECT_EQ(offsetof(bitset_range, lower), 0u);
    EXPECT_EQ(offsetof(bitset_range, upper), 4u);
}

TEST(bitset, swaparray_holds_the_reversed_nibbles)
{
    const uint32_t expected[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
    EXPECT_EQ(memcmp(swaparray, expected, sizeof expected), 0);
    EXPECT_EQ(sizeof swaparray, sizeof expected);
}

TEST(bitset, whole_sets_are_cleared_filled_and_copied_at_any_address)
{
    for (const size_t misalign : k_misalignments) {
        set_of b(bytes{0x12, 0x34, 0x56}, misalign);
        EXPECT_EQ(bitset_size(b), 7u);
        bitset_fill(b);
        EXPECT_EQ(b.bytes(), (bytes{0xff, 0xff, 0xff}));
        set_of source(bytes{0x80, 0x01, 0x42}, misalign);
        bitset_copy(b, source);
        EXPECT_EQ(b.bytes(), (bytes{0x80, 0x01, 0x42}));
        bitset_copy(b, b);
        EXPECT_EQ(b.bytes(), (bytes{0x80, 0x01, 0x42}));
        bitset_clear(b);
        EXPECT_EQ(b.bytes(), (bytes{0x00, 0x00, 0x00}));
    }
}

TEST(bitset, empty_sets_are_taken_by_everything_that_names_no_bit)
{
    set_of b(0);
    set_of other(0);
    bitset_clear(b);
    bitset_fill(b);
    bitset_copy(b, other);
    bitset_union(b, other);
    bitset_intersection(b, other);
    bitset_subtract(b, other);
    bitset_maskcopy(b, other, other);
    bitset_set_range(b, 0, 0);
    EXPECT_EQ(bitset_size(b), 4u);
    EXPECT_EQ(bitset_equal(b, other), 1);
    EXPECT_EQ(bitset_maskequal(b, other, other), 1);
    EXPECT_EQ(bitset_subset(b, other), 1);
    EXPECT_EQ(bitset_bitcount(b), 0u);
}

TEST(bitset, single_bits_count_from_the_top_of_the_first_byte)
{
    const struct {
        int32_t bit;
        size_t byte;
        uint8_t mask;
    } rows[] = {
        {0, 0, 0x80},    {1, 0, 0x40},    {2, 0, 0x20},    {3, 0, 0x10},    {4, 0, 0x08},
        {5, 0, 0x04},    {6, 0, 0x02},    {7, 0, 0x01},    {8, 1, 0x80},    {31, 3, 0x01},
        {32, 4, 0x80},   {33, 4, 0x40},   {63, 7, 0x01},   {64, 8, 0x80},   {127, 15, 0x01},
        {128, 16, 0x80}, {255, 31, 0x01}, {256, 32, 0x80}, {263, 32, 0x01},
    };
    for (const size_t misalign : k_misalignments) {
        for (const auto &row : rows) {
            SCOPED_TRACE(row.bit);
            set_of b(bytes(33, 0x00), misalign);
            EXPECT_EQ(bitset_is_bit_set(b, row.bit), 0);
            bitset_set_bit(b, row.bit);
            bytes expected(33, 0x00);
            expected[row.byte] = row.mask;
            EXPECT_EQ(b.bytes(), expected);
            EXPECT_EQ(bitset_is_bit_set(b, row.bit), 1);

            bitset_fill(b);
            bitset_clear_bit(b, row.bit);
            expected.assign(33, 0xff);
            expected[row.byte] = static_cast<uint8_t>(~row.mask);
            EXPECT_EQ(b.bytes(), expected);
        }
    }
}

TEST(bitset_set_range_value, changes_the_bits_of_the_range_only)
{
    const struct {
        int32_t bit;
        int32_t length;
        bytes expected;
    } rows[] = {
        {0, 1, {0x80, 0x00, 0x00, 0x00, 0x00}},  {7, 1, {0x01, 0x00, 0x00, 0x00, 0x00}},
        {7, 2, {0x01, 0x80, 0x00, 0x00, 0x00}},  {2, 3, {0x38, 0x00, 0x00, 0x00, 0x00}},
        {0, 8, {0xff, 0x00, 0x00, 0x00, 0x00}},  {1, 7, {0x7f, 0x00, 0x00, 0x00, 0x00}},
        {0, 9, {0xff, 0x80, 0x00, 0x00, 0x00}},  {4, 16, {0x0f, 0xff, 0xf0, 0x00, 0x00}},
        {31, 2, {0x00, 0x00, 0x00, 0x01, 0x80}}, {39, 1, {0x00, 0x00, 0x00, 0x00, 0x01}},
        {0, 40, {0xff, 0xff, 0xff, 0xff, 0xff}}, {8, 32, {0x00, 0xff, 0xff, 0xff, 0xff}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.bit) + "+" + std::to_string(row.length));
        bytes complement = row.expected;
        for (uint8_t &byte : complement) {
            byte = static_cast<uint8_t>(~byte);
        }
        for (const size_t misalign : k_misalignments) {
            set_of b(bytes(5, 0x00), misalign);
            bitset_set_range_value(b, row.bit, row.length, -7);
            EXPECT_EQ(b.bytes(), row.expected);
            bitset_clear(b);
            bitset_set_range(b, row.bit, row.length);
            EXPECT_EQ(b.bytes(), row.expected);
            bitset_fill(b);
            bitset_set_range_value(b, row.bit, row.length, 0);
            EXPECT_EQ(b.bytes(), complement);
            bitset_fill(b);
            bitset_clear_range(b, row.bit, row.length);
            EXPECT_EQ(b.bytes(), complement);
        }
    }
}

TEST(bitset_set_range_value, changes_nothing_for_a_length_of_zero_or_less)
{
    const std::pair<int32_t, int32_t> rows[] = {
        {0, 0},  {40, 0}, // just beyond the last bit
        {0, -1}, {5, -9}, {k_max, k_min}, {k_max, -k_max}, {0, k_min}, {41, -1},
    };
    for (const auto &[bit, length] : rows) {
        SCOPED_TRACE(std::to_string(bit) + "+" + std::to_string(length));
        set_of b(bytes{0xa5, 0x5a, 0x00, 0xff, 0x81}, 0);
        bitset_set_range(b, bit, length);
        bitset_clear_range(b, bit, length);
        EXPECT_EQ(b.bytes(), (bytes{0xa5, 0x5a, 0x00, 0xff, 0x81}));
    }
}

TEST(bitset, algebra_follows_the_truth_tables)
{
    // Every combination of the bits of b and b1 stands in each pair of bytes.
    const bytes left = {0x0f, 0xcc, 0x00, 0xff, 0x36};
    const bytes right = {0x33, 0xaa, 0xff, 0xff, 0x00};
    with_each_variant([&] {
        for (const size_t misalign : k_misalignments) {
            set_of b(left, misalign);
            set_of b1(right, 3 - misalign);
            bitset_union(b, b1);
            EXPECT_EQ(b.bytes(), (bytes{0x3f, 0xee, 0xff, 0xff, 0x36}));
            b.assign(left);
            bitset_intersection(b, b1);
            EXPECT_EQ(b.bytes(), (bytes{0x03, 0x88, 0x00, 0xff, 0x00}));
            b.assign(left);
            bitset_subtract(b, b1);
            EXPECT_EQ(b.bytes(), (bytes{0x0c, 0x44, 0x00, 0x00, 0x36}));
            EXPECT_EQ(b1.bytes(), right);

            b.assign(left);
            bitset_union(b, b);
            EXPECT_EQ(b.bytes(), left);
            bitset_intersection(b, b);
            EXPECT_EQ(b.bytes(), left);
            bitset_subtract(b, b);
            EXPECT_EQ(b.bytes(), bytes(5, 0x00));
        }
    });
}

TEST(bitset_maskcopy, takes_the_bits_of_the_mask_only)
{
    with_each_variant([] {
        set_of b(bytes{0x0f, 0x55, 0xff}, 1);
        set_of b1(bytes{0x33, 0xaa, 0x00}, 2);
        set_of mask(bytes{0xf0, 0xff, 0x81}, 3);
        bitset_maskcopy(b, b1, mask);
        EXPECT_EQ(b.bytes(), (bytes{0x3f, 0xaa, 0x7e}));
        EXPECT_EQ(b1.bytes(), (bytes{0x33, 0xaa, 0x00}));
        EXPECT_EQ(mask.bytes(), (bytes{0xf0, 0xff, 0x81}));
    });
}

TEST(bitset, comparisons_see_a_single_bit_at_every_edge)
{
    with_each_variant([] {
        for (const int32_t bit : k_edges) {
            SCOPED_TRACE(bit);
            const auto size = static_cast<uint32_t>(bit / 8 + 1);
            set_of b(bytes(size, 0x00), 1);
            set_of b1(bytes(size, 0x00), 2);
            set_of mask(bytes(size, 0xff), 3);
            EXPECT_EQ(bitset_equal(b, b1), 1);
            EXPECT_EQ(bitset_maskequal(b, b1, mask), 1);
            EXPECT_EQ(bitset_subset(b, b1), 1);

            bitset_set_bit(b, bit);
            EXPECT_EQ(bitset_equal(b, b1), 0);
            EXPECT_EQ(bitset_maskequal(b, b1, mask), 0);
            EXPECT_EQ(bitset_subset(b, b1), 0);
            EXPECT_EQ(bitset_subset(b1, b), 1);
            EXPECT_EQ(bitset_bitcount(b), 1u);

            bitset_clear_bit(mask, bit);
            EXPECT_EQ(bitset_maskequal(b, b1, mask), 1);
            bitset_set_bit(b1, bit);
            EXPECT_EQ(bitset_equal(b, b1), 1);
            EXPECT_EQ(bitset_subset(b, b1), 1);
        }
    });
}

TEST(bitset_subset, goes_by_the_size_of_b)
{
    set_of small(bytes{0x81}, 0);
    set_of large(bytes{0x81, 0x40}, 0);
    EXPECT_EQ(bitset_subset(small, large), 1);
    EXPECT_EQ(bitset_subset(large, small), 0);
    bitset_clear_bit(large, 9);
    EXPECT_EQ(bitset_subset(large, small), 1);
    bitset_clear_bit(large, 7);
    EXPECT_EQ(bitset_subset(small, large), 0);
    set_of empty(0);
    EXPECT_EQ(bitset_subset(empty, small), 1);
    EXPECT_EQ(bitset_subset(small, empty), 0);
}

TEST(bitset_bitcount, counts_all_bytes)
{
    const std::pair<bytes, uint32_t> rows[] = {
        {{}, 0},
        {{0x00}, 0},
        {{0x80}, 1},
        {{0xff}, 8},
        {{0x00, 0x00, 0x00, 0x00, 0x00, 0x80}, 1},
        {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, 56},
        {{0x01, 0x03, 0x07, 0x0f, 0x1f, 0x3f, 0x7f, 0xff, 0x55}, 40},
    };
    with_each_variant([&] {
        for (const auto &[content, expected] : rows) {
            for (const size_t misalign : k_misalignments) {
                set_of b(content, misalign);
                EXPECT_EQ(bitset_bitcount(b), expected);
            }
        }
        set_of large(bytes(100003, 0xff), 0);
        EXPECT_EQ(bitset_bitcount(large), 800024u);
    });
}

TEST(bitset_to_bitarray, reverses_each_byte_and_zeroes_the_rest)
{
    const struct {
        bytes set;
        int32_t length;
        bytes expected; // of an array of six bytes that held 0xcc
    } rows[] = {
        {{0x80}, 6, {0x01, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {{0x80, 0x40, 0x13, 0xf0}, 2, {0x01, 0x02, 0xcc, 0xcc, 0xcc, 0xcc}},
        {{0x20, 0x10, 0x13, 0xf0, 0x01, 0xe8}, 6, {0x04, 0x08, 0xc8, 0x0f, 0x80, 0x17}},
        {{0x80}, 0, {0xcc, 0xcc, 0xcc, 0xcc, 0xcc, 0xcc}},
        {{0x80}, -1, {0xcc, 0xcc, 0xcc, 0xcc, 0xcc, 0xcc}},
        {{0x80}, k_min, {0xcc, 0xcc, 0xcc, 0xcc, 0xcc, 0xcc}},
        {{}, 3, {0x00, 0x00, 0x00, 0xcc, 0xcc, 0xcc}},
    };
    with_each_variant([&] {
        for (const auto &row : rows) {
            for (const size_t misalign : k_misalignments) {
                set_of b(row.set, misalign);
                bytes array(6, 0xcc);
                bitset_to_bitarray(b, array.data(), row.length);
                EXPECT_EQ(array, row.expected);
                EXPECT_EQ(b.bytes(), row.set);
            }
        }
    });
}

TEST(bitset_from_bitarray, clears_the_set_and_reverses_each_byte)
{
    const struct {
        int32_t length;
        bytes expected; // of a set of four bytes that held 0xcc
    } rows[] = {
        {6, {0x80, 0x40, 0xc8, 0x0f}},     {4, {0x80, 0x40, 0xc8, 0x0f}},
        {3, {0x80, 0x40, 0xc8, 0x00}},     {1, {0x80, 0x00, 0x00, 0x00}},
        {0, {0x00, 0x00, 0x00, 0x00}},     {-1, {0x00, 0x00, 0x00, 0x00}},
        {k_min, {0x00, 0x00, 0x00, 0x00}},
    };
    with_each_variant([&] {
        for (const auto &row : rows) {
            for (const size_t misalign : k_misalignments) {
                const bytes array = {0x01, 0x02, 0x13, 0xf0, 0xff, 0xff};
                set_of b(bytes(4, 0xcc), misalign);
                bitset_from_bitarray(b, array.data(), row.length);
                EXPECT_EQ(b.bytes(), row.expected);
            }
        }
    });
}

TEST(bitset, bit_arrays_hold_every_bit_from_the_other_end)
{
    with_each_variant([] {
        for (const int32_t bit : k_edges) {
            SCOPED_TRACE(bit);
            set_of b(70, {bit});
            bytes array(70, 0xcc);
            bitset_to_bitarray(b, array.data(), 70);
            bytes expected(70, 0x00);
            expected[static_cast<size_t>(bit / 8)] = static_cast<uint8_t>(1 << bit % 8);
            EXPECT_EQ(array, expected);
            set_of back(bytes(70, 0xcc), 0);
            bitset_from_bitarray(back, array.data(), 70);
            EXPECT_EQ(bitset_equal(back, b), 1);
        }
    });
}

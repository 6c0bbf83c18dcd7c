// Bit sets as text, whole and in pieces.
#include <algorithm>
#include <string>

#include "tests/infra/bitset_support.h"

using ruk_test::set_of;
using ruk_test::with_each_variant;
using bytes = std::vector<uint8_t>;

namespace
{

struct piece {
    std::string text;
    int32_t length;
    int32_t done;
    int32_t cursor;
};

// One call with a buffer of exactly capacity bytes that held '#'.
piece print_piece(const bitset *b, uint32_t capacity, int32_t restart)
{
    std::vector<char> buffer(capacity, '#');
    piece result = {"", 0, -77, 0};
    result.length = bitset_snprintf(buffer.data(), capacity, b, restart, &result.done);
    result.cursor = bitset_snprintf_cursor;
    if (capacity > 0) {
        const size_t end =
            static_cast<size_t>(std::find(buffer.begin(), buffer.end(), '\0') - buffer.begin());
        EXPECT_LT(end, capacity) << "no terminator";
        result.text.assign(buffer.data(), end);
    }
    EXPECT_EQ(result.length, static_cast<int32_t>(result.text.size()));
    return result;
}

void expect_piece(const piece &got, const std::string &text, int32_t done, int32_t cursor)
{
    EXPECT_EQ(got.text, text);
    EXPECT_EQ(got.done, done);
    EXPECT_EQ(got.cursor, cursor);
}

} // namespace

TEST(bitset_sprintf, lists_bits_and_ranges)
{
    const struct {
        bytes content;
        const char *expected;
    } rows[] = {
        {{}, ""},
        {{0x00, 0x00, 0x00, 0x00}, ""},
        {{0xe5, 0x80, 0x00, 0x00}, "0-2,5,7-8"},
        {{0x80, 0x00, 0x00, 0x00}, "0"},
        {{0xc0, 0x00, 0x00, 0x00}, "0-1"},
        {{0x00, 0x00, 0x00, 0x01}, "31"},
        {{0x00, 0x00, 0x00, 0x03}, "30-31"},
        {{0x00, 0x00, 0x00, 0x01, 0x80, 0x00, 0x00, 0x01}, "31-32,63"},
        {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "0-63"},
        {{0xaa, 0xaa, 0x00, 0x00}, "0,2,4,6,8,10,12,14"},
        // The partial last word is never found; a run ends with the last whole word.
        {{0xff}, ""},
        {{0xff, 0xff, 0xff}, ""},
        {{0xff, 0xff, 0xff, 0xff, 0xff}, "0-31"},
        {{0x00, 0x00, 0x00, 0x01, 0xff, 0xff}, "31"},
        {{0x40, 0x00, 0x00, 0x00, 0xff, 0xff, 0xff}, "1"},
        {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "0-63"},
    };
    with_each_variant([&] {
        for (const auto &row : rows) {
            const std::string expected = row.expected;
            set_of b(row.content, 0);
            std::vector<char> text(expected.size() + 1, '#');
            EXPECT_EQ(bitset_sprintf(text.data(), b), static_cast<int32_t>(expected.size()));
            EXPECT_EQ(std::string(text.data(), text.size()), expected + '\0');
        }
    });
}

TEST(bitset_sprintf, writes_numbers_of_every_length)
{
    set_of b(131072, {9, 10, 99, 100, 999, 1000, 9999, 10000, 99999, 100000, 999999, 1048575});
    char text[128];
    const char *expected = "9-10,99-100,999-1000,9999-10000,99999-100000,999999,1048575";
    EXPECT_EQ(bitset_sprintf(text, b), 59);
    EXPECT_STREQ(text, expected);
    const piece whole = print_piece(b, 128, 1);
    expect_piece(whole, expected, 1, 0);
}

// Around every power of ten that a bit number can have behind 1,000,000, close together and far
// apart.
TEST(bitset_sprintf, writes_numbers_of_up_to_ten_digits)
{
    const struct {
        std::vector<int32_t> bits;
        const char *expected;
    } rows[] = {
        {{9999990, 9999992, 9999993, 9999999}, "9999990,9999992-9999993,9999999"},
        {{9999990, 10000000}, "9999990,10000000"},
        {{9999990, 9999999, 10000000}, "9999990,9999999-10000000"},
        {{9999900, 9999999, 10000000, 10000002}, "9999900,9999999-10000000,10000002"},
        {{12345678, 12345680, 12345681}, "12345678,12345680-12345681"},
        {{99999900, 99999999, 100000000, 100000002}, "99999900,99999999-100000000,100000002"},
        {{99999998, 100000001, 100000099}, "99999998,100000001,100000099"},
        {{123456789, 123456791, 123456792, 123456809}, "123456789,123456791-123456792,123456809"},
        {{900000000, 900000099, 900000100}, "900000000,900000099-900000100"},
        {{999999900, 999999999, 1000000000, 1000000002},
         "999999900,999999999-1000000000,1000000002"},
        {{1000000000, 1000000002, 1000000003, 1000000031},
         "1000000000,1000000002-1000000003,1000000031"},
        {{7, 8, 99999999, 100000000, 1000000031}, "7-8,99999999-100000000,1000000031"},
    };
    // Memory that is clear from the start: what is only read takes up no room.
    constexpr uint32_t k_size = 125'000'004;
    const std::unique_ptr<void, void (*)(void *)> block(calloc(1, k_size + 4), free);
    ASSERT_NE(block, nullptr);
    auto *const b = static_cast<bitset *>(block.get());
    b->size = k_size;
    for (const auto &row : rows) {
        for (const int32_t bit : row.bits) {
            bitset_set_bit(b, bit);
        }
        char text[128];
        EXPECT_EQ(bitset_sprintf(text, b), static_cast<int32_t>(strlen(row.expected)));
        EXPECT_STREQ(text, row.expected);
        for (const int32_t bit : row.bits) {
            bitset_clear_bit(b, bit);
        }
    }
}

TEST(bitset_snprintf, goes_on_where_it_stopped)
{
    set_of b(4, {0, 1, 2, 5, 7, 8});
    expect_piece(print_piece(b, 6, 1), "0-2,5", 0, 5);
    expect_piece(print_piece(b, 6, 0), "7-8", 1, 0);
}

// The pieces of 0-2,5,7-8,31 for every capacity: what the first call yields and what the second
// one, without restart, goes on with in a large buffer.
TEST(bitset_snprintf, cuts_between_items_at_every_capacity)
{
    const struct {
        uint32_t capacity;
        const char *first;
        int32_t done;
        int32_t cursor;
        const char *second;
    } rows[] = {
        // Nothing fits: the list goes on after bit 0, which is lost.
        {0, "", 0, 0, "1-2,5,7-8,31"},
        {1, "", 0, 0, "1-2,5,7-8,31"},
        {2, "", 0, 0, "1-2,5,7-8,31"},
        {3, "", 0, 0, "1-2,5,7-8,31"},
        {4, "0-2", 0, 2, "5,7-8,31"},
        {5, "0-2", 0, 2, "5,7-8,31"},
        {6, "0-2,5", 0, 5, "7-8,31"},
        {7, "0-2,5", 0, 5, "7-8,31"},
        {8, "0-2,5", 0, 5, "7-8,31"},
        {9, "0-2,5", 0, 5, "7-8,31"},
        {10, "0-2,5,7-8", 0, 8, "31"},
        {11, "0-2,5,7-8", 0, 8, "31"},
        {12, "0-2,5,7-8", 0, 8, "31"},
        {13, "0-2,5,7-8,31", 1, 0, "1-2,5,7-8,31"},
        {14, "0-2,5,7-8,31", 1, 0, "1-2,5,7-8,31"},
        {100, "0-2,5,7-8,31", 1, 0, "1-2,5,7-8,31"},
    };
    with_each_variant([&] {
        set_of b(4, {0, 1, 2, 5, 7, 8, 31});
        for (const auto &row : rows) {
            SCOPED_TRACE(row.capacity);
            expect_piece(print_piece(b, row.capacity, 1), row.first, row.done, row.cursor);
            expect_piece(print_piece(b, 100, 0), row.second, 1, 0);
        }
    });
}

TEST(bitset_snprintf, leaves_what_lies_behind_the_terminator_alone)
{
    set_of b(4, {0, 1, 2, 5});
    char text[8];
    memset(text, '#', sizeof text);
    int32_t done = -77;
    EXPECT_EQ(bitset_snprintf(text, 5, b, 1, &done), 3);
    EXPECT_EQ(std::string(text, sizeof text), std::string("0-2\0####", 8));
    EXPECT_EQ(done, 0);
}

TEST(bitset_snprintf, writes_no_text_without_capacity)
{
    char text = '#';
    int32_t done = -77;
    set_of b(4, {0});
    bitset_snprintf_cursor = 7;
    EXPECT_EQ(bitset_snprintf(&text, 0, b, 1, &done), 0);
    EXPECT_EQ(text, '#');
    EXPECT_EQ(done, 0);
    EXPECT_EQ(bitset_snprintf_cursor, 0);
    set_of none(4);
    bitset_snprintf_cursor = 7;
    done = -77;
    EXPECT_EQ(bitset_snprintf(&text, 0, none, 0, &done), 0);
    EXPECT_EQ(text, '#');
    EXPECT_EQ(done, 1);
    EXPECT_EQ(bitset_snprintf_cursor, 0);
}

TEST(bitset_snprintf, is_done_at_once_without_bits)
{
    set_of none(8);
    for (const int32_t restart : {0, 1, -1}) {
        bitset_snprintf_cursor = 5;
        expect_piece(print_piece(none, 10, restart), "", 1, 0);
    }
    set_of partial(3);
    bitset_fill(partial);
    expect_piece(print_piece(partial, 10, 1), "", 1, 0);
}

TEST(bitset_snprintf, starts_after_the_cursor_unless_told_to_restart)
{
    set_of b(4, {0, 1, 2, 5, 7, 8});
    const struct {
        int32_t cursor;
        int32_t restart;
        const char *expected;
    } rows[] = {
        {-1, 0, "0-2,5,7-8"}, {0, 0, "1-2,5,7-8"},  {1, 0, "2,5,7-8"}, {2, 0, "5,7-8"},
        {7, 0, "8"},          {8, 0, ""},           {99, 0, ""},       {7, 1, "0-2,5,7-8"},
        {7, -1, "0-2,5,7-8"}, {-9, 1, "0-2,5,7-8"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.cursor);
        bitset_snprintf_cursor = row.cursor;
        expect_piece(print_piece(b, 64, row.restart), row.expected, 1, 0);
    }
}

TEST(bitset_snprintf, keeps_the_cursor_when_nothing_more_fits)
{
    set_of b(4, {3, 10, 11});
    expect_piece(print_piece(b, 2, 1), "3", 0, 3);
    expect_piece(print_piece(b, 5, 0), "", 0, 3);
    expect_piece(print_piece(b, 0, 0), "", 0, 3);
    expect_piece(print_piece(b, 6, 0), "10-11", 1, 0);
}

TEST(bitset_snprintf, pieces_make_up_the_list_for_every_capacity)
{
    // Bit 0 is clear, so that no capacity can lose it.
    set_of b(64, {1, 3, 4, 31, 32, 33, 63, 64, 99, 100, 101, 127, 128, 300, 302, 511});
    const std::string list = "1,3-4,31-33,63-64,99-101,127-128,300,302,511";
    with_each_variant([&] {
        for (uint32_t capacity = 8; capacity < 60; ++capacity) {
            SCOPED_TRACE(capacity);
            std::string joined;
            piece next = print_piece(b, capacity, 1);
            joined = next.text;
            for (int calls = 0; next.done == 0 && calls < 20; ++calls) {
                next = print_piece(b, capacity, 0);
                joined += "," + next.text;
            }
            EXPECT_EQ(joined, list);
        }
    });
}

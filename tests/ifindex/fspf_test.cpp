// FSPF numbers both ways, and byte order.  The words are written here as they are handed over: in
// network byte order, so 0x05110000 is the number 0x1105 on a little-endian host.
#include <cstdint>
#include <iterator>

#include "ruk/if_index_fspf.h"

namespace
{

struct forward_row {
    const char *what;
    IfIndex value;
    uint32_t fspf; // in network order
};

// Both ways of the 16-bit form, without loss.
const forward_row k_rows16[] = {
    {"fc3/6", 0x01105000, 0x05110000},        {"fc1/1", 0x01000000, 0x00100000},
    {"last fc", 0x01FFF000, 0xFF1F0000},      {"first channel", 0x04000000, 0x00400000},
    {"last channel", 0x040000FF, 0xFF400000}, {"first tunnel", 0x0A000000, 0x00A00000},
    {"tunnel 255", 0x0A0000FF, 0xFFA00000},
};

// The same of the 32-bit form.
const forward_row k_rows32[] = {
    {"fc3/6", 0x01105000, 0x05020100},
    {"last fc", 0x01FFF000, 0x7F1F0100},
    {"first channel", 0x04000000, 0x00000400},
    {"last channel", 0x040000FF, 0xFF000400},
    {"tunnel 255", 0x0A0000FF, 0xFF000A00},
    {"nalp", 0x10001234, 0x34121000},
    {"last nalp", 0x1000FFFF, 0xFFFF1000},
    {"zeff", 0x1300ABCD, 0xCDAB1300},
    {"first vfc", 0x1E000000, 0x00001E00},
    {"last vfc", 0x1E00FFFF, 0xFFFF1E00},
    {"vfc port-channel", 0x1E100007, 0x0700FB00},
    {"last vfc channel", 0x1E100FFF, 0xFF0FFB00},
    {"vfc3/6", 0x1E210500, 0x0502FA00},
    {"last vfc port", 0x1E2FFF00, 0x7F1FFA00},
};

using to_fspf = uint32_t (*)(IfIndex, uint32_t *);
using from_fspf = uint32_t (*)(uint32_t, IfIndex *);

void expect_forward(to_fspf convert, const forward_row &row)
{
    SCOPED_TRACE(row.what);
    for (const uint32_t before : {0U, 0xA1B2C3D4U}) {
        uint32_t fspf = before;
        EXPECT_EQ(convert(row.value, &fspf), 0U);
        EXPECT_EQ(fspf, row.fspf) << std::hex << fspf;
    }
}

struct backward_row {
    const char *what;
    uint32_t fspf; // in network order
    uint32_t error;
    IfIndex value; // 0: nothing is written
};

void expect_backward(from_fspf convert, const backward_row &row)
{
    SCOPED_TRACE(row.what);
    for (const uint32_t before : {0x13572468U, 0xA1B2C3D4U}) {
        IfIndex value = before;
        EXPECT_EQ(convert(row.fspf, &value), row.error);
        EXPECT_EQ(value, row.value == 0 ? before : row.value) << std::hex << value;
    }
}

} // namespace

TEST(convert_fspf16, goes_both_ways)
{
    for (const forward_row &row : k_rows16) {
        expect_forward(convert_if_index_to_fspf16_if_index, row);
        expect_backward(convert_fspf16_if_index_to_if_index, {row.what, row.fspf, 0, row.value});
    }
}

TEST(convert_fspf32, goes_both_ways)
{
    for (const forward_row &row : k_rows32) {
        expect_forward(convert_if_index_to_fspf_if_index, row);
        expect_backward(convert_fspf_if_index_to_if_index, {row.what, row.fspf, 0, row.value});
    }
}

TEST(convert_if_index_to_fspf16_if_index, drops_and_keeps)
{
    const forward_row rows[] = {
        {"a sub-interface is dropped", 0x01105FFF, 0x05110000},
        {"a wildcard", 0x81FFFFFF, 0xFF1F0000},
        {"a subtype is dropped", 0x042ABC07, 0x07400000},
        {"tunnel 256 is written whole", 0x0A000100, 0x00A10000},
        {"tunnel 4095 is written whole", 0x0AFFFFFF, 0xFFAF0000},
    };
    for (const forward_row &row : rows) {
        expect_forward(convert_if_index_to_fspf16_if_index, row);
    }
}

TEST(convert_if_index_to_fspf_if_index, drops_and_keeps)
{
    const forward_row rows[] = {
        {"a sub-interface is dropped", 0x01105FFF, 0x05020100},
        {"a subtype is dropped", 0x042ABC07, 0x07000400},
        {"tunnel 4095 is written whole", 0x0AFFFFFF, 0xFF0F0A00},
        {"only the low half of nalp", 0x10FF1234, 0x34121000},
        {"only the low half of zeff", 0x93FF1234, 0x34121300},
        {"only the low half of a vfc", 0x1E0FABCD, 0xCDAB1E00},
        {"only the channel of a vfc", 0x1E1FFFFF, 0xFF0FFB00},
        {"only slot and port of a vfc", 0x1E2FFFFF, 0x7F1FFA00},
    };
    for (const forward_row &row : rows) {
        expect_forward(convert_if_index_to_fspf_if_index, row);
    }
}

// The word is byte-swapped although nothing was put there, and the code is a success.
TEST(convert_if_index_to_fspf, reverses_the_callers_word_for_types_without_a_number)
{
    const auto expect = [](to_fspf convert, IfIndex value, uint32_t error) {
        SCOPED_TRACE(value);
        uint32_t fspf = 0xA1B2C3D4;
        EXPECT_EQ(convert(value, &fspf), error);
        EXPECT_EQ(fspf, error == 0 ? 0xD4C3B2A1 : 0xA1B2C3D4);
    };
    for (uint32_t top = 0; top < 256; ++top) {
        const uint32_t type = top & 0x7F;
        const uint32_t error = type == 0 || type == 3 || type > 74 ? 11 : 0;
        const bool in16 = type == 1 || type == 4 || type == 10;
        if (!in16) {
            expect(convert_if_index_to_fspf16_if_index, top << 24 | 0x123456, error);
        }
        if (!in16 && type != 16 && type != 19 && type != 30) {
            expect(convert_if_index_to_fspf_if_index, top << 24 | 0x123456, error);
        }
    }
    for (uint32_t subtype = 3; subtype < 16; ++subtype) {
        expect(convert_if_index_to_fspf_if_index, 0x1E000005 | subtype << 20, 0);
    }
}

TEST(convert_fspf16_if_index_to_if_index, judges_and_cuts)
{
    const backward_row rows[] = {
        {"a channel is cut to 8 bits", 0xFF4F0000, 0, 0x040000FF},
        {"a tunnel is cut to 8 bits", 0x05A10000, 0, 0x0A000005},
        {"the upper half is ignored", 0x0511FFFF, 0, 0x01105000},
        {"the largest fc number", 0xFF1F0000, 0, 0x01FFF000},
    };
    for (const backward_row &row : rows) {
        expect_backward(convert_fspf16_if_index_to_if_index, row);
    }
}

TEST(convert_fspf16_if_index_to_if_index, says_nothing_about_unknown_kinds)
{
    for (uint32_t kind = 0; kind < 16; ++kind) {
        if (kind != 1 && kind != 4 && kind != 10) {
            // The kind is in the upper half of the second byte, counted from the low end.
            expect_backward(convert_fspf16_if_index_to_if_index,
                            {"kind", 0x05000000 | kind << 20, 0, 0});
        }
    }
}

TEST(convert_fspf_if_index_to_if_index, judges_and_cuts)
{
    const backward_row rows[] = {
        {"slot 32", 0x00200100, 14, 0},
        {"slot 255", 0x00FF0100, 14, 0},
        {"port 128", 0x80000100, 14, 0},
        {"a channel is cut to 8 bits", 0x07010400, 0, 0x04000007},
        {"a tunnel is cut to 8 bits", 0xFF0F0A00, 0, 0x0A0000FF},
        {"vfc slot 32", 0x0020FA00, 14, 0},
        {"vfc port 128", 0x8000FA00, 14, 0},
        {"vfc channel 4096", 0x0010FB00, 14, 0},
        {"vfc channel 0xfffe", 0xFEFFFB00, 14, 0},
        {"vfc channel 0xffff wraps to 0", 0xFFFFFB00, 14, 0},
        {"the top byte is ignored", 0x050201FF, 0, 0x01105000},
    };
    for (const backward_row &row : rows) {
        expect_backward(convert_fspf_if_index_to_if_index, row);
    }
}

TEST(convert_fspf_if_index_to_if_index, reports_unknown_kinds)
{
    for (uint32_t kind = 0; kind < 256; ++kind) {
        switch (kind) {
        case 0x01:
        case 0x04:
        case 0x0A:
        case 0x10:
        case 0x13:
        case 0x1E:
        case 0xFA:
        case 0xFB:
            continue;
        default:
            // The kind is the third byte from the low end, in network order the second.
            expect_backward(convert_fspf_if_index_to_if_index,
                            {"kind", 0x05000000 | kind << 8, 11, 0});
        }
    }
}

TEST(convert_fspf, refuses_a_null_output_where_a_constructor_is_asked)
{
    EXPECT_EQ(convert_fspf16_if_index_to_if_index(0x05110000, nullptr), 14U);
    EXPECT_EQ(convert_fspf_if_index_to_if_index(0x05020100, nullptr), 14U);
}

TEST(ntoh_if_index, reverses_the_bytes)
{
    const std::pair<uint32_t, uint32_t> rows[] = {
        {0x01020304, 0x04030201}, {0, 0},
        {0xFFFFFFFF, 0xFFFFFFFF}, {0x000000FF, 0xFF000000},
        {0xFF000000, 0xFF},       {0x00FF0000, 0x0000FF00},
    };
    for (const auto &[word, reversed] : rows) {
        EXPECT_EQ(ntoh_if_index(word), reversed);
        EXPECT_EQ(hton_if_index(word), reversed);
    }
}

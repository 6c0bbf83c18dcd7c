// The dispatchers over every type code, and the ways between sub-interfaces and main interfaces.
#include "tests/ifindex/reading.h"

#include <map>

namespace
{

using reading::bits;
using reading::check_reader;
using reading::field;
using reading::need;
using reading::patterns;

// Runs a conversion over all 256 top bytes with all patterns; a type without a row gives 0.
template <typename Convert, typename Expected>
void check_conversion(Convert convert, const std::map<uint32_t, Expected> &rows)
{
    for (uint32_t top = 0; top < 256; ++top) {
        const auto row = rows.find(top & 0x7F);
        for (const uint32_t pattern : patterns()) {
            const IfIndex value = top << 24 | pattern;
            const IfIndex expected = row == rows.end() ? 0 : row->second(value);
            ASSERT_EQ(convert(value), expected) << std::hex << value;
        }
    }
}

// Keeps what a mask has.
struct keep {
    uint32_t mask;
    IfIndex operator()(IfIndex value) const { return value & mask; }
};

// Sets bits.
struct set {
    uint32_t added;
    IfIndex operator()(IfIndex value) const { return value | added; }
};

} // namespace

TEST(if_index_get_slot, by_type)
{
    check_reader({"if_index_get_slot",
                  if_index_get_slot,
                  {
                      {{1, 2, 5, 7, 8, 11, 12, 13, 14, 18, 20, 26, 33}, {bits(19, 23)}},
                      {{6}, {bits(4, 11)}, need{19, 23, 4, true}},
                      {{6}, {bits(19, 23)}},
                      {{4, 36}, {bits(16, 19)}, need{20, 21, 1, true}},
                      {{27}, {field{{{16, 23, 0}, {0, 1, 8}}}}},
                      {{31}, {field{{{16, 23, 0}, {12, 15, 0}}, -67, 16}}},
                      {{35}, {bits(17, 21)}},
                      {{37}, {bits(14, 23)}},
                      {{21, 25}, {}, {}, false},
                  }});
}

TEST(if_index_get_slot, succeeds_without_a_slot_for_eth_inband)
{
    uint16_t slot = 0xbeef;
    EXPECT_EQ(if_index_get_slot(0x15050000, &slot), 0U);
    EXPECT_EQ(if_index_get_slot(0x19200000, &slot), 0U);
    EXPECT_EQ(slot, 0xbeef);
}

TEST(if_index_get_port, by_type)
{
    check_reader({"if_index_get_port",
                  if_index_get_port,
                  {
                      {{1, 2, 5, 6, 8, 11, 12, 13, 18, 26, 33}, {bits(12, 18)}},
                      {{4, 22}, {bits(12, 15)}, need{20, 21, 1, true}},
                      {{7}, {field{}}},
                      {{14, 24, 34, 38}, {bits(0, 7)}},
                      {{20}, {bits(0, 5)}},
                      {{31}, {bits(6, 11)}},
                      {{37}, {bits(6, 13)}},
                      {{35}, {bits(10, 16)}},
                      {{21, 25}, {bits(16, 23)}},
                      {{30}, {bits(8, 14)}, need{20, 23, 2, true}},
                      {{30}, {field{{{12, 17, 0}}, 1, 8}}, need{20, 23, 4, true}},
                  }});
}

TEST(if_index_get_port, cuts_wide_ports_to_their_low_byte)
{
    uint8_t port = 0;
    EXPECT_EQ(if_index_get_port(0x0E00012C, &port), 0U); // tk, port 300
    EXPECT_EQ(port, 44);
}

TEST(if_index_get_sub_intf, by_type)
{
    check_reader({"if_index_get_sub_intf",
                  if_index_get_sub_intf,
                  {
                      {{1, 2, 26}, {bits(0, 11)}},
                      {{4}, {bits(8, 19)}},
                      {{22}, {bits(12, 23)}},
                      {{27}, {field{{{2, 3, 2}}}}},
                      {{28}, {bits(0, 3)}},
                      {{31, 37}, {bits(0, 5)}},
                      {{36}, {field{}}},
                  }});
}

TEST(if_index_is_sub_intf, tells_sub_interfaces)
{
    const std::pair<IfIndex, int32_t> rows[] = {
        {0x01000001, 1}, {0x01FFF000, 0}, {0x02000800, 1}, {0x04000100, 1}, {0x040000FF, 0},
        {0x16001000, 1}, {0x16000FFF, 0}, {0x1A000001, 1}, {0x1B000004, 1}, {0x1B000003, 0},
        {0x1C000001, 1}, {0x1C000010, 0}, {0x1F000020, 1}, {0x1F000040, 0}, {0x25000001, 1},
        {0x25000040, 0}, {0x24FFFFFF, 0}, {0x09000001, 0}, {0x00000001, 0}, {0x03000001, 0},
        {0x81000001, 1}, {0xFE000001, 0},
    };
    for (const auto &[value, expected] : rows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(if_index_is_sub_intf(value), expected);
    }
}

TEST(if_index_get_mainintf_from_subintf, clears_the_sub_interface)
{
    check_conversion(if_index_get_mainintf_from_subintf,
                     std::map<uint32_t, keep>{{1, {0xFFFFF000}},
                                              {2, {0xFFFFF000}},
                                              {26, {0xFFFFF000}},
                                              {4, {0xFFF000FF}},
                                              {22, {0xFF000FFF}},
                                              {27, {0xFFFFFFF3}},
                                              {28, {0xFFFFFFF0}},
                                              {31, {0xFFFFFFC0}},
                                              {37, {0xFFFFFFC0}}});
    check_conversion(if_index_phy_eth_get_mainintf_from_subintf,
                     std::map<uint32_t, keep>{{2, {0xFFFFF000}}, {26, {0xFFFFF000}}});
    check_conversion(if_index_sat_phy_eth_get_mainintf_from_subintf,
                     std::map<uint32_t, keep>{{31, {0xFFFFFFC0}}});
    check_conversion(if_index_port_channel_mainintf_from_subintf,
                     std::map<uint32_t, keep>{{4, {0xFFF000FF}}, {22, {0xFF000FFF}}});
}

TEST(if_index_get_subintf_from_mainintf, adds_the_sub_interface)
{
    struct {
        uint32_t sub;
        uint32_t physical, channel, eth_channel, satellite;
    } const rows[] = {
        {0, 0x000, 0x00000, 0x000000, 0x00},      {1, 0x001, 0x00100, 0x001000, 0x01},
        {0x123, 0x123, 0x12300, 0x123000, 0x23},  {0xFFF, 0xFFF, 0xFFF00, 0xFFF000, 0x3F},
        {0x1000, 0x000, 0x00000, 0x000000, 0x00}, {0xFFFFFFFF, 0xFFF, 0xFFF00, 0xFFF000, 0x3F},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.sub);
        // Not 27, 28 and 37, which the opposite direction handles.
        check_conversion(
            [&](IfIndex value) { return if_index_get_subintf_from_mainintf(value, row.sub); },
            std::map<uint32_t, set>{{1, {row.physical}},
                                    {2, {row.physical}},
                                    {26, {row.physical}},
                                    {4, {row.channel}},
                                    {22, {row.eth_channel}},
                                    {31, {row.satellite}}});
    }
}

TEST(if_index_get_subintf_from_mainintf, handles_fewer_types_than_the_opposite)
{
    EXPECT_EQ(if_index_get_subintf_from_mainintf(0x1C000010, 1), 0U);
    EXPECT_EQ(if_index_get_mainintf_from_subintf(0x1C000011), 0x1C000010U);
    EXPECT_EQ(if_index_get_subintf_from_mainintf(0x25008040, 1), 0U);
    EXPECT_EQ(if_index_get_mainintf_from_subintf(0x25008041), 0x25008040U);
    EXPECT_EQ(if_index_get_subintf_from_mainintf(0x1B010010, 4), 0U);
    EXPECT_EQ(if_index_get_mainintf_from_subintf(0x1B010014), 0x1B010010U);
}

TEST(if_index_port_channel_subintf_from_mainintf, does_not_cut_the_sub_interface)
{
    struct {
        uint32_t sub;
        uint32_t channel, eth_channel;
    } const rows[] = {
        {0, 0x00000000, 0x00000000},
        {0xFFF, 0x000FFF00, 0x00FFF000},
        {0x1000, 0x00100000, 0x01000000},
        {0xFFFFFFFF, 0xFFFFFF00, 0xFFFFF000},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.sub);
        check_conversion(
            [&](IfIndex value) {
                return if_index_port_channel_subintf_from_mainintf(value, row.sub);
            },
            std::map<uint32_t, set>{{4, {row.channel}}, {22, {row.eth_channel}}});
    }
}

TEST(if_index_port_channel_get_vlan_id, reads_any_other_type_as_a_port_channel)
{
    for (uint32_t top = 0; top < 256; ++top) {
        for (const uint32_t pattern : patterns()) {
            const IfIndex value = top << 24 | pattern;
            const uint32_t expected = (top & 0x7F) == 22 ? pattern >> 12 : pattern >> 8 & 0xFFF;
            ASSERT_EQ(if_index_port_channel_get_vlan_id(value), expected) << std::hex << value;
        }
    }
}

TEST(if_index_is_port_channel_sub_interface, needs_subtype_0_of_a_port_channel_only)
{
    const std::pair<IfIndex, int32_t> rows[] = {
        {0x04000100, 1}, {0x040FFF00, 1}, {0x040000FF, 0}, {0x04100100, 0}, {0x04200100, 0},
        {0x04300100, 0}, {0x04C00100, 1}, {0x04C000FF, 0}, {0x16001000, 1}, {0x16800000, 1},
        {0x16FFF000, 1}, {0x16300000, 1}, {0x16000FFF, 0}, {0x84000100, 1}, {0x96001000, 1},
        {0x01FFFFFF, 0}, {0x24FFFFFF, 0}, {0x00FFFFFF, 0}, {0xFEFFFFFF, 0},
    };
    for (const auto &[value, expected] : rows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(if_index_is_port_channel_sub_interface(value), expected);
    }
}

TEST(if_index_get_max_channel_id_for_ifindex, is_4095_for_both_types)
{
    check_reader({"if_index_get_max_channel_id_for_ifindex",
                  if_index_get_max_channel_id_for_ifindex,
                  {{{4, 22}, {field{{}, 4095}}}}});
}

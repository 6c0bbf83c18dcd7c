// Type check, wildcards, validity, the walk over types, predicates, and the platform word.
#include <algorithm>
#include <vector>

#include "ruk/if_index_types.h"

namespace
{

// All 256 top bytes with the coordinates clear and set.
std::vector<IfIndex> all_types()
{
    std::vector<IfIndex> values;
    for (uint32_t top = 0; top < 256; ++top) {
        values.push_back(top << 24);
        values.push_back(top << 24 | 0xFFFFFF);
    }
    return values;
}

} // namespace

TEST(if_index_error, has_the_codes_callers_know)
{
    EXPECT_EQ(IF_INDEX_OK, 0);
    EXPECT_EQ(IF_INDEX_UNKNOWN_TYPE, 11);
    EXPECT_EQ(IF_INDEX_WRONG_TYPE, 12);
    EXPECT_EQ(IF_INDEX_NO_NEXT_TYPE, 13);
    EXPECT_EQ(IF_INDEX_BAD_ARGUMENT, 14);
}

TEST(if_index_type, has_the_codes_of_the_values)
{
    const std::pair<int, int> rows[] = {
        {IF_INDEX_TYPE_PHY_FC, 1},
        {IF_INDEX_TYPE_PHY_ETH, 2},
        {IF_INDEX_TYPE_PORT_CHANNEL, 4},
        {IF_INDEX_TYPE_MGMT_SUP, 5},
        {IF_INDEX_TYPE_INBAND, 6},
        {IF_INDEX_TYPE_EOBC, 7},
        {IF_INDEX_TYPE_VSAN, 8},
        {IF_INDEX_TYPE_VLAN, 9},
        {IF_INDEX_TYPE_FCIP, 10},
        {IF_INDEX_TYPE_ISCSI, 11},
        {IF_INDEX_TYPE_UMBRA, 12},
        {IF_INDEX_TYPE_XLPORT, 13},
        {IF_INDEX_TYPE_TK, 14},
        {IF_INDEX_TYPE_FCMPLS_TNNL, 15},
        {IF_INDEX_TYPE_NALP_VXE, 16},
        {IF_INDEX_TYPE_XGFC_IFC, 17},
        {IF_INDEX_TYPE_KIRO, 18},
        {IF_INDEX_TYPE_ZEFF_VXE, 19},
        {IF_INDEX_TYPE_DORSA, 20},
        {IF_INDEX_TYPE_ETH_INBAND, 21},
        {IF_INDEX_TYPE_ETH_PORT_CHANNEL, 22},
        {IF_INDEX_TYPE_NULL_INTERFACE, 23},
        {IF_INDEX_TYPE_TUNNEL, 24},
        {IF_INDEX_TYPE_ETH_INBAND_DIAG, 25},
        {IF_INDEX_TYPE_PHY_ETHERNET, 26},
        {IF_INDEX_TYPE_LVETH, 27},
        {IF_INDEX_TYPE_VETH, 28},
        {IF_INDEX_TYPE_VIF, 29},
        {IF_INDEX_TYPE_VFC, 30},
        {IF_INDEX_TYPE_SAT_PHY_ETH, 31},
        {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, 32},
        {IF_INDEX_TYPE_PEMU, 33},
        {IF_INDEX_TYPE_OVERLAY, 34},
        {IF_INDEX_TYPE_VL3, 35},
        {IF_INDEX_TYPE_MARN, 36},
        {IF_INDEX_TYPE_RUK_ETH, 37},
        {IF_INDEX_TYPE_MPLS_SUBLAYER, 38},
        {IF_INDEX_TYPE_LAST_RESERVED, 74},
        {IF_INDEX_TYPE_LOOPBACK, 254},
    };
    for (const auto &[name, code] : rows) {
        EXPECT_EQ(name, code);
    }
}

TEST(if_index_get_type, stores_the_code_and_tells_whether_it_is_known)
{
    for (const IfIndex value : all_types()) {
        SCOPED_TRACE(value);
        const uint32_t code = value >> 24 & 0x7F;
        const bool known = (code >= 1 && code <= 2) || (code >= 4 && code <= 74);
        uint8_t type = 0xff;
        EXPECT_EQ(if_index_get_type(value, &type), known ? 0U : 11U);
        EXPECT_EQ(type, code);
    }
}

TEST(if_index_get_type, edges)
{
    struct {
        IfIndex value;
        uint32_t error;
        uint8_t type;
    } const rows[] = {
        {0x00000000, 11, 0},   {0x00FFFFFF, 11, 0},   {0x01000000, 0, 1},    {0x02FFFFFF, 0, 2},
        {0x03000000, 11, 3},   {0x04000000, 0, 4},    {0x4A000000, 0, 74},   {0x4B000000, 11, 75},
        {0x81000000, 0, 1},    {0x83000000, 11, 3},   {0xCA000000, 0, 74},   {0xCB000000, 11, 75},
        {0x7F000000, 11, 127}, {0xFE000000, 11, 126}, {0xFFFFFFFF, 11, 127},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value);
        uint8_t type = 0xff;
        EXPECT_EQ(if_index_get_type(row.value, &type), row.error);
        EXPECT_EQ(type, row.type);
    }
}

TEST(if_index_get_if_index_all_for_type, gives_a_wildcard_or_0)
{
    for (uint32_t code = 0; code < 256; ++code) {
        SCOPED_TRACE(code);
        const bool has_one = code == 1 || code == 2 || (code >= 4 && code <= 38) || code == 254;
        const IfIndex expected = has_one ? 0x80FFFFFF | code << 24 : 0;
        EXPECT_EQ(if_index_get_if_index_all_for_type(code), expected);
        // Only the low byte counts.
        EXPECT_EQ(if_index_get_if_index_all_for_type(code | 0xABCDEF00), expected);
    }
    EXPECT_EQ(if_index_get_if_index_all_for_type(1), 0x81FFFFFFU);
    EXPECT_EQ(if_index_get_if_index_all_for_type(38), 0xA6FFFFFFU);
    EXPECT_EQ(if_index_get_if_index_all_for_type(254), 0xFEFFFFFFU);
    EXPECT_EQ(if_index_get_if_index_all_for_type(3), 0U);
    EXPECT_EQ(if_index_get_if_index_all_for_type(39), 0U);
}

TEST(if_index_is_type_valid_in_current_release, knows_0_to_38_but_3_and_27)
{
    for (uint32_t code = 0; code < 256; ++code) {
        SCOPED_TRACE(code);
        const int32_t expected = code <= 38 && code != 3 && code != 27;
        EXPECT_EQ(if_index_is_type_valid_in_current_release(code), expected);
        EXPECT_EQ(if_index_is_type_valid_in_current_release(code | 0xFFFFFF00), expected);
    }
}

TEST(if_index_get_next_type, walks_the_valid_types)
{
    const std::vector<int> walk{1,  2,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                                14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
                                26, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38};
    std::vector<int> walked;
    uint8_t type = 0;
    while (if_index_get_next_type(&type) == IF_INDEX_OK) {
        walked.push_back(type);
    }
    EXPECT_EQ(walked, walk);
    EXPECT_EQ(type, 74);
}

TEST(if_index_get_next_type, ends_at_74_and_leaves_higher_types)
{
    struct {
        uint8_t from;
        uint32_t error;
        uint8_t to;
    } const rows[] = {
        {2, 0, 4},    {3, 0, 4},    {26, 0, 28},  {27, 0, 28},  {37, 0, 38},    {38, 13, 74},
        {39, 13, 74}, {73, 13, 74}, {74, 13, 74}, {75, 13, 75}, {255, 13, 255},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.from);
        uint8_t type = row.from;
        EXPECT_EQ(if_index_get_next_type(&type), row.error);
        EXPECT_EQ(type, row.to);
    }
}

TEST(if_index_predicates, compare_bits_24_to_30)
{
    struct {
        const char *name;
        int32_t (*predicate)(IfIndex);
        uint32_t code;
    } const rows[] = {
        {"satellite", if_index_is_satellite_interface, 31},
        {"tunnel", if_index_is_tunnel_intf, 24},
        {"port_channel", if_index_is_port_channel_intf, 4},
        {"eth_port_channel", if_index_is_eth_port_channel_intf, 22},
        {"overlay", if_index_is_overlay_intf, 34},
        {"eth_sup_inband", if_index_is_eth_sup_inband, 21},
        {"eth_sup_diag", if_index_is_eth_sup_inband_diag, 25},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        for (const IfIndex value : all_types()) {
            EXPECT_EQ(row.predicate(value), (value >> 24 & 0x7F) == row.code) << value;
        }
    }
}

TEST(if_index_is_linecard_inband, is_supervisor_4)
{
    for (uint32_t top = 0; top < 256; ++top) {
        for (uint32_t sup = 0; sup < 32; ++sup) {
            for (const uint32_t rest : {0U, 0x7FFFFU}) {
                const IfIndex value = top << 24 | sup << 19 | rest;
                EXPECT_EQ(if_index_is_linecard_inband(value), (top & 0x7F) == 6 && sup == 4);
            }
        }
    }
}

TEST(if_index_is_valid_vlan_id, is_1_to_4094)
{
    const std::pair<int32_t, int32_t> rows[] = {
        {INT32_MIN, 0}, {-1, 0}, {0, 0}, {1, 1}, {4094, 1}, {4095, 0}, {4096, 0}, {INT32_MAX, 0},
    };
    for (const auto &[vlan, expected] : rows) {
        EXPECT_EQ(if_index_is_valid_vlan_id(vlan), expected) << vlan;
    }
}

TEST(if_index_is_virtual_type, is_16_and_19)
{
    for (int type = 0; type < 256; ++type) {
        EXPECT_EQ(if_index_is_virtual_type(static_cast<uint8_t>(type)), type == 16 || type == 19);
    }
}

TEST(if_index_is_virtual_interface, leaves_the_answer_alone_for_an_unknown_type)
{
    for (const IfIndex value : all_types()) {
        SCOPED_TRACE(value);
        const uint32_t code = value >> 24 & 0x7F;
        const bool known = code != 0 && code != 3 && code <= 74;
        uint32_t is_virtual = 0xdeadbeef;
        EXPECT_EQ(if_index_is_virtual_interface(value, &is_virtual), 0U);
        EXPECT_EQ(is_virtual, !known ? 0xdeadbeef : code == 16 || code == 19 ? 1U : 0U);
    }
}

TEST(if_index_compare, is_the_wrapped_difference)
{
    EXPECT_EQ(if_index_compare(0x01000000, 0x02000000), static_cast<int32_t>(0xFF000000));
    EXPECT_EQ(if_index_compare(0x02000000, 0x01000000), 0x01000000);
    EXPECT_EQ(if_index_compare(5, 5), 0);
    EXPECT_EQ(if_index_compare(0, 0xFFFFFFFF), 1);
    EXPECT_EQ(if_index_compare(0x80000000, 0), INT32_MIN);
}

TEST(if_index_vlan_port_convert_to_vdc, replaces_bits_16_to_23_and_cuts_nothing)
{
    struct {
        IfIndex value;
        uint32_t vdc;
        IfIndex expected;
    } const rows[] = {
        {0x09010064, 2, 0x09020064},   {0x09FF0064, 0, 0x09000064},
        {0x09000FFF, 255, 0x09FF0FFF}, {0x09010064, 256, 0x09000064 | 0x01000000},
        {0x08010064, 256, 0x09000064}, {0x00000000, 0xFFFFFFFF, 0xFFFF0000},
        {0xFFFFFFFF, 0, 0xFF00FFFF},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(if_index_vlan_port_convert_to_vdc(row.value, row.vdc), row.expected);
    }
}

TEST(cli_platform, is_pinned_to_cedar_whatever_was_set)
{
    for (const auto &[alder, birch] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 1}, {-1, -1}}) {
        cli_set_platform_alder(alder, birch);
        EXPECT_EQ(cli_is_platform_birch(), 0);
        cli_set_platform_alder(alder, birch);
        EXPECT_EQ(cli_is_platform_cedar(), 1);
        cli_set_platform_alder(alder, birch);
        EXPECT_EQ(cli_platform_uses_san_pc(), 1);
        cli_set_platform_alder(alder, birch);
        EXPECT_EQ(cli_is_platform_alder(), 0);
        EXPECT_EQ(cli_is_platform_larch(), 0);
        EXPECT_EQ(cli_validate_param(), 1);
    }
}

// Every reader over every type code, with the layout of its fields typed out.
#include "tests/ifindex/reading.h"

#include "ruk/if_index_read.h"

namespace
{

using reading::bits;
using reading::check_reader;
using reading::field;
using reading::need;
using reading::reader_row;

const field k_slot = bits(19, 23);
const field k_port = bits(12, 18);

void check_all(const std::vector<reader_row> &rows)
{
    for (const reader_row &row : rows) {
        check_reader(row);
    }
}

} // namespace

TEST(if_index_readers, of_physical_types)
{
    const field sub = bits(0, 11);
    check_all({
        {"phy_fc_get_slot", if_index_phy_fc_get_slot, {{{1}, {k_slot}}}},
        {"phy_fc_get_port", if_index_phy_fc_get_port, {{{1}, {k_port}}}},
        {"phy_fc_get_sub_intf", if_index_phy_fc_get_sub_intf, {{{1}, {sub}}}},
        {"phy_fc_get_fields", if_index_phy_fc_get_fields, {{{1}, {k_slot, k_port, sub}}}},
        {"phy_eth_get_slot", if_index_phy_eth_get_slot, {{{2, 26}, {k_slot}}}},
        {"phy_eth_get_port", if_index_phy_eth_get_port, {{{2, 26}, {k_port}}}},
        {"phy_eth_get_sub_intf", if_index_phy_eth_get_sub_intf, {{{2, 26}, {sub}}}},
        {"phy_eth_get_fields", if_index_phy_eth_get_fields, {{{2, 26}, {k_slot, k_port, sub}}}},
        {"mgmt_sup_get_slot", if_index_mgmt_sup_get_slot, {{{5}, {k_slot}}}},
        {"mgmt_sup_get_port", if_index_mgmt_sup_get_port, {{{5}, {k_port}}}},
        {"mgmt_sup_get_fields", if_index_mgmt_sup_get_fields, {{{5}, {k_slot, k_port}}}},
        {"eobc_get_slot", if_index_eobc_get_slot, {{{7}, {k_slot}}}},
        {"eobc_get_fields", if_index_eobc_get_fields, {{{7}, {k_slot, k_port}}}},
        {"iscsi_get_fields", if_index_iscsi_get_fields, {{{11}, {k_slot, k_port}}}},
        {"umbra_get_fields", if_index_umbra_get_fields, {{{12}, {k_slot, k_port}}}},
        {"umbra_get_slot", if_index_umbra_get_slot, {{{12}, {k_slot}}}},
        {"umbra_get_port", if_index_umbra_get_port, {{{12}, {k_port}}}},
        {"xlport_get_fields", if_index_xlport_get_fields, {{{13}, {k_slot, k_port}}}},
        {"xlport_get_slot", if_index_xlport_get_slot, {{{13}, {k_slot}}}},
        {"xlport_get_port", if_index_xlport_get_port, {{{13}, {k_port}}}},
        {"tk_get_dpp_num", if_index_tk_get_dpp_num, {{{14}, {bits(14, 18)}}}},
        {"tk_get_port", if_index_tk_get_port, {{{14}, {bits(0, 13)}}}},
        {"kiro_get_fields", if_index_kiro_get_fields, {{{18}, {k_slot, k_port}}}},
        {"kiro_get_slot", if_index_kiro_get_slot, {{{18}, {k_slot}}}},
        {"kiro_get_port", if_index_kiro_get_port, {{{18}, {k_port}}}},
        {"dorsa_get_fields",
         if_index_dorsa_get_fields,
         {{{20}, {k_slot, bits(13, 18), bits(0, 5)}}}},
        {"dorsa_get_slot", if_index_dorsa_get_slot, {{{20}, {k_slot}}}},
        {"dorsa_get_node", if_index_dorsa_get_node, {{{20}, {bits(13, 18)}}}},
        {"dorsa_get_port", if_index_dorsa_get_port, {{{20}, {bits(0, 5)}}}},
        {"pemu_get_fields", if_index_pemu_get_fields, {{{33}, {k_slot, k_port}}}},
        {"pemu_get_slot", if_index_pemu_get_slot, {{{33}, {k_slot}}}},
        {"pemu_get_port", if_index_pemu_get_port, {{{33}, {k_port}}}},
        {"ruk_eth_get_slot", if_index_ruk_eth_get_slot, {{{37}, {bits(14, 23)}}}},
        {"ruk_eth_get_port", if_index_ruk_eth_get_port, {{{37}, {bits(6, 13)}}}},
        {"ruk_eth_get_sub_intf", if_index_ruk_eth_get_sub_intf, {{{37}, {bits(0, 5)}}}},
        {"ruk_eth_get_fields",
         if_index_ruk_eth_get_fields,
         {{{37}, {bits(14, 23), bits(6, 13), bits(0, 5)}}}},
    });
}

TEST(if_index_readers, of_port_channels)
{
    const field channel = bits(0, 7);
    const field eth_channel = bits(0, 11);
    const field subtype = bits(20, 21);
    const field arg = bits(8, 19);
    const field eth_arg = bits(12, 23);
    check_all({
        {"port_channel_get_channel_num",
         if_index_port_channel_get_channel_num,
         {{{4}, {channel}}, {{22}, {eth_channel}}}},
        {"port_channel_get_subtype", if_index_port_channel_get_subtype, {{{4, 22}, {subtype}}}},
        {"port_channel_get_subtype_arg",
         if_index_port_channel_get_subtype_arg,
         {{{4}, {arg}}, {{22}, {eth_arg}}}},
        {"port_channel_get_fields",
         if_index_port_channel_get_fields,
         {{{4}, {channel, subtype, arg}}, {{22}, {eth_channel, subtype, eth_arg}}}},
        {"eth_port_channel_get_channel_num",
         if_index_eth_port_channel_get_channel_num,
         {{{22}, {eth_channel}}}},
        {"eth_port_channel_get_subtype",
         if_index_eth_port_channel_get_subtype,
         {{{22}, {subtype}}}},
        {"eth_port_channel_get_subtype_arg",
         if_index_eth_port_channel_get_subtype_arg,
         {{{22}, {eth_arg}}}},
        {"eth_port_channel_get_fields",
         if_index_eth_port_channel_get_fields,
         {{{22}, {eth_channel, eth_arg}}}},
    });
}

TEST(if_index_readers, of_inband_types)
{
    const need linecard{19, 23, 4, true};
    check_all({
        {"inband_get_sup", if_index_inband_get_sup, {{{6}, {bits(19, 23)}}}},
        {"inband_get_queue", if_index_inband_get_queue, {{{6}, {bits(12, 18)}}}},
        {"inband_get_fields", if_index_inband_get_fields, {{{6}, {bits(19, 23), bits(12, 18)}}}},
        {"inband_linecard_get_slot",
         if_index_inband_linecard_get_slot,
         {{{6}, {bits(4, 11)}, linecard}}},
        {"inband_linecard_get_fields",
         if_index_inband_linecard_get_fields,
         {{{6}, {bits(12, 18), bits(4, 11)}, linecard}}},
        {"eth_inband_get_fields", if_index_eth_inband_get_fields, {{{21, 25}, {bits(16, 23)}}}},
    });
}

TEST(if_index_readers, of_numbered_types)
{
    const field vsan = bits(0, 11);
    check_all({
        {"vsan_get_slot", if_index_vsan_get_slot, {{{8}, {k_slot}}}},
        {"vsan_get_port", if_index_vsan_get_port, {{{8}, {k_port}}}},
        {"vsan_get_vsan", if_index_vsan_get_vsan, {{{8}, {vsan}}}},
        {"vsan_get_fields", if_index_vsan_get_fields, {{{8}, {k_slot, k_port, vsan}}}},
        {"vlan_get_fields", if_index_vlan_get_fields, {{{9}, {bits(16, 23), bits(0, 11)}}}},
        {"vlan_get_vd", if_index_vlan_get_vd, {{{9}, {bits(16, 23)}}}},
        {"vlan_get_vlan", if_index_vlan_get_vlan, {{{9}, {bits(0, 11)}}}},
        {"fcip_get_tunnel", if_index_fcip_get_tunnel, {{{10}, {bits(0, 11)}}}},
        {"fcmpls_tnnl_get_tunnel", if_index_fcmpls_tnnl_get_tunnel, {{{15}, {bits(0, 11)}}}},
        {"tunnel_get_tunnel_num", if_index_tunnel_get_tunnel_num, {{{24}, {bits(0, 15)}}}},
        {"tunnel_get_tunnel_type", if_index_tunnel_get_tunnel_type, {{{24}, {bits(15, 15)}}}},
        {"tunnel_get_tunnel_fields",
         if_index_tunnel_get_tunnel_fields,
         {{{24}, {bits(16, 23), bits(15, 15), bits(0, 15)}}}},
        {"veth_get_vport", if_index_veth_get_vport, {{{28}, {bits(4, 23)}}}},
        {"veth_get_sub_intf", if_index_veth_get_sub_intf, {{{28}, {bits(0, 3)}}}},
        {"veth_get_fields", if_index_veth_get_fields, {{{28}, {bits(4, 23), bits(0, 3)}}}},
        {"vif_get_vifindex", if_index_vif_get_vifindex, {{{29}, {bits(0, 19)}}}},
        {"overlay_get_port", if_index_overlay_get_port, {{{34}, {bits(0, 15)}}}},
        {"overlay_get_port_type", if_index_overlay_get_port_type, {{{34}, {bits(19, 23)}}}},
        {"overlay_get_overlay_fields",
         if_index_overlay_get_overlay_fields,
         {{{34}, {bits(0, 15), bits(19, 23)}}}},
        {"vl3_get_fields",
         if_index_vl3_get_fields,
         {{{35}, {bits(22, 23), bits(17, 21), bits(10, 16), bits(0, 9)}}}},
        {"vl3_get_subtype", if_index_vl3_get_subtype, {{{35}, {bits(22, 23)}}}},
        {"vl3_get_slot", if_index_vl3_get_slot, {{{35}, {bits(17, 21)}}}},
        {"vl3_get_port", if_index_vl3_get_port, {{{35}, {bits(10, 16)}}}},
        {"vl3_get_intf_num", if_index_vl3_get_intf_num, {{{35}, {bits(0, 9)}}}},
        {"marn_get_fields", if_index_marn_get_fields, {{{36}, {bits(12, 23), bits(0, 11)}}}},
        {"marn_get_ftag", if_index_marn_get_ftag, {{{36}, {bits(12, 23)}}}},
        {"marn_get_switch_id", if_index_marn_get_switch_id, {{{36}, {bits(0, 11)}}}},
    });
}

TEST(if_index_readers, of_lveth_split_the_slot_and_keep_the_sub_interface_in_place)
{
    const field slot{{{16, 23, 0}, {0, 1, 8}}};
    const field port = bits(4, 15);
    const field sub{{{2, 3, 2}}};
    check_all({
        {"lveth_get_slot", if_index_lveth_get_slot, {{{27}, {slot}}}},
        {"lveth_get_port", if_index_lveth_get_port, {{{27}, {port}}}},
        {"lveth_get_sub_intf", if_index_lveth_get_sub_intf, {{{27}, {sub}}}},
        {"lveth_get_fields", if_index_lveth_get_fields, {{{27}, {slot, port, sub}}}},
    });
}

TEST(if_index_readers, of_server_interfaces_differ_about_veth)
{
    check_all({
        {"server_interface_get_sif_num",
         if_index_server_interface_get_sif_num,
         {{{28}, {bits(4, 23)}}, {{29}, {bits(0, 19)}}, {{30}, {bits(0, 15)}}}},
        {"server_interface_get_fields",
         if_index_server_interface_get_fields,
         {{{29}, {bits(0, 19)}}, {{30}, {bits(0, 15)}}}},
    });
}

TEST(if_index_readers, of_satellites)
{
    const field slot{{{16, 23, 0}, {12, 15, 0}}, -67, 16};
    check_all({
        {"sat_get_sat_num", if_index_sat_get_sat_num, {{{31}, {bits(16, 23)}}}},
        {"sat_get_fields",
         if_index_sat_get_fields,
         {{{31}, {bits(16, 23), bits(12, 15), bits(6, 11), bits(0, 5)}}}},
        {"sat_phy_eth_get_sub_intf", if_index_sat_phy_eth_get_sub_intf, {{{31}, {bits(0, 5)}}}},
        {"sat_get_slot", if_index_sat_get_slot, {{{31}, {slot}}}, 14, 14},
        {"sat_get_port", if_index_sat_get_port, {{{31}, {bits(6, 11)}}}, 14, 14},
        {"sat_get_fif_fields",
         if_index_sat_get_fif_fields,
         {{{32}, {bits(12, 15), bits(6, 11), bits(21, 23)}}}},
    });
}

TEST(if_index_sat_get_fields, skips_a_null_sub_interface)
{
    uint8_t sat = 0;
    uint8_t module = 0;
    uint8_t port = 0;
    EXPECT_EQ(if_index_sat_get_fields(0x1F642085, &sat, &module, &port, nullptr), 0U);
    EXPECT_EQ(sat, 100);
    EXPECT_EQ(module, 2);
    EXPECT_EQ(port, 2);
    EXPECT_EQ(if_index_sat_get_fields(0x1E642085, &sat, &module, &port, nullptr), 12U);
}

TEST(if_index_sat_numbering, follows_the_offset_of_67)
{
    struct {
        uint16_t slot;
        uint8_t sat;
        uint8_t module;
    } const from_slot[] = {
        {0, 0, 0},   {1, 0, 1},   {31, 0, 31},  {32, 99, 0},    {33, 100, 0},   {188, 255, 0},
        {189, 0, 0}, {190, 1, 0}, {255, 66, 0}, {65535, 66, 0}, {65280, 67, 0},
    };
    for (const auto &row : from_slot) {
        SCOPED_TRACE(row.slot);
        uint8_t sat = 0xaa;
        uint8_t module = 0xaa;
        EXPECT_EQ(if_index_sat_get_sat_from_slot(row.slot, &sat), 0U);
        EXPECT_EQ(if_index_sat_get_sat_mod_from_slot(row.slot, &module), 0U);
        EXPECT_EQ(sat, row.sat);
        EXPECT_EQ(module, row.module);
    }
    struct {
        uint8_t sat;
        uint8_t module;
        uint16_t slot;
    } const to_slot[] = {
        {100, 0, 33}, {100, 1, 34}, {67, 0, 0}, {0, 0, 65469}, {66, 0, 65535}, {255, 255, 443},
    };
    for (const auto &row : to_slot) {
        SCOPED_TRACE(row.sat);
        uint16_t slot = 0xbeef;
        EXPECT_EQ(if_index_sat_get_slot_from_sat_mod(row.sat, row.module, &slot), 0U);
        EXPECT_EQ(slot, row.slot);
    }
}

TEST(if_index_readers, of_loopbacks_never_succeed)
{
    // No variants: 12 for every known type, 11 for the rest, and 0xFE is among the rest.
    check_all({
        {"loopback_get_port", if_index_loopback_get_port, {}},
        {"loopback_get_fields", if_index_loopback_get_fields, {}},
    });
    uint16_t number = 0xbeef;
    EXPECT_EQ(if_index_loopback_get_port(0xFE000005, &number), 11U);
    EXPECT_EQ(if_index_loopback_get_fields(0xFE000005, &number), 11U);
    EXPECT_EQ(number, 0xbeef);
}

TEST(if_index_readers, of_vfc_look_at_the_subtype)
{
    const field subtype = bits(20, 23);
    const need plain{20, 23, 0, true};
    const need channel{20, 23, 1, true};
    const need slot_port{20, 23, 2, true};
    const need veth{20, 23, 3, true};
    const need hobb{20, 23, 4, true};
    check_all({
        {"vfc_get_vfc_subtype", if_index_vfc_get_vfc_subtype, {{{30}, {subtype}}}},
        {"vfc_get_fields",
         if_index_vfc_get_fields,
         {{{30}, {subtype, bits(0, 15)}, plain},
          {{30}, {subtype, bits(0, 11)}, channel},
          {{30}, {subtype, bits(8, 19)}, slot_port}}},
        {"vfc_get_vfc_num",
         if_index_vfc_get_vfc_num,
         {{{30}, {bits(0, 15)}, plain},
          {{30}, {bits(0, 11)}, channel},
          {{30}, {bits(8, 19)}, slot_port}}},
        {"vfc_port_channel_get_fields",
         if_index_vfc_port_channel_get_fields,
         {{{30}, {subtype, bits(0, 11)}, channel}}},
        {"vfc_veth_get_fields",
         if_index_vfc_veth_get_fields,
         {{{30}, {subtype, bits(0, 15)}, veth}}},
        {"vfc_slot_port_get_fields",
         if_index_vfc_slot_port_get_fields,
         {{{30}, {subtype, bits(15, 19), bits(8, 14)}, slot_port}}},
        {"vfc_slot_port_get_slot",
         if_index_vfc_slot_port_get_slot,
         {{{30}, {bits(15, 19)}, slot_port}}},
        {"vfc_slot_port_get_port",
         if_index_vfc_slot_port_get_port,
         {{{30}, {bits(8, 14)}, slot_port}}},
        {"vfc_slot_port_get_sub_intf",
         if_index_vfc_slot_port_get_sub_intf,
         {{{30}, {}, slot_port}}},
        {"vfc_hobb_get_fields",
         if_index_vfc_hobb_get_fields,
         {{{30}, {subtype, bits(0, 7), bits(8, 11), bits(12, 17)}, hobb}}},
    });
}

TEST(if_index_readers, of_vfc_refuse_null_outputs_before_anything_else)
{
    uint8_t a = 0xaa;
    uint8_t b = 0xbb;
    uint16_t n = 0xcccc;
    // The right value, another type, and no type at all.
    for (const IfIndex value : {0x1E000000U, 0x1E100000U, 0x1E200000U, 0x1E300000U, 0x1E400000U,
                                0x01000000U, 0x00000000U}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(if_index_vfc_get_vfc_subtype(value, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_get_fields(value, nullptr, &n), 14U);
        EXPECT_EQ(if_index_vfc_get_fields(value, &a, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_get_vfc_num(value, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_port_channel_get_fields(value, nullptr, &n), 14U);
        EXPECT_EQ(if_index_vfc_port_channel_get_fields(value, &a, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_veth_get_fields(value, nullptr, &n), 14U);
        EXPECT_EQ(if_index_vfc_veth_get_fields(value, &a, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_slot_port_get_fields(value, nullptr, &n, &b), 14U);
        EXPECT_EQ(if_index_vfc_slot_port_get_fields(value, &a, nullptr, &b), 14U);
        EXPECT_EQ(if_index_vfc_slot_port_get_fields(value, &a, &n, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_slot_port_get_slot(value, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_slot_port_get_port(value, nullptr), 14U);
        EXPECT_EQ(if_index_vfc_hobb_get_fields(value, nullptr, &a, &n, &b), 14U);
        EXPECT_EQ(if_index_vfc_hobb_get_fields(value, &a, nullptr, &n, &b), 14U);
        EXPECT_EQ(if_index_vfc_hobb_get_fields(value, &a, &b, nullptr, &b), 14U);
        EXPECT_EQ(if_index_vfc_hobb_get_fields(value, &a, &b, &n, nullptr), 14U);
    }
    EXPECT_EQ(a, 0xaa);
    EXPECT_EQ(b, 0xbb);
    EXPECT_EQ(n, 0xcccc);
}

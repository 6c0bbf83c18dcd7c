// docs/interface-index.md says what the code does: types, fields, and the tests of kept oddities.
#include "ifindex/layout.h"

#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace ifindex;

namespace
{

using row = std::vector<std::string>;

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

row cells_of(const std::string &line)
{
    row cells;
    size_t start = 1;
    for (size_t bar; (bar = line.find('|', start)) != std::string::npos; start = bar + 1) {
        cells.push_back(trimmed(line.substr(start, bar - start)));
    }
    return cells;
}

// The rows of the table below a heading, without its head.
std::vector<row> table_of(const std::string &heading)
{
    std::ifstream doc(RUK_INTERFACE_INDEX_DOC);
    std::string line;
    while (std::getline(doc, line) && line != "## " + heading) {
    }
    std::vector<row> rows;
    while (std::getline(doc, line) && line.rfind("## ", 0) != 0) {
        if (!line.empty() && line[0] == '|') {
            rows.push_back(cells_of(line));
        }
    }
    if (rows.size() > 2) {
        rows.erase(rows.begin(), rows.begin() + 2);
    }
    return rows;
}

std::string bits_of(bit_field field)
{
    const unsigned last = field.shift + field.width - 1U;
    return field.width == 1 ? std::to_string(last)
                            : std::to_string(field.shift) + '-' + std::to_string(last);
}

std::string bits_of(split_field field)
{
    return bits_of(field.low) + ", " + bits_of(field.high);
}

std::string bits_of(unshifted_field field)
{
    return bits_of(field.bits);
}

} // namespace

TEST(interface_index_doc, has_the_fields_of_the_layout)
{
    const char *physical = "`phy_fc`, `phy_eth`, `phy_ethernet`";
    const char *slot_port = "`mgmt_sup`, `iscsi`, `umbra`, `xlport`, `kiro`, `pemu`";
    const char *vfc_port = "`vfc` of subtype 2 (on a slot and port)";
    const char *hobb_read = "`vfc` of subtype 4 (on a satellite), as read";
    const char *hobb_built = "`vfc` of subtype 4 (on a satellite), as built";
    using key = std::pair<std::string, std::string>;
    const std::map<key, std::string> fields{
        {{physical, "slot"}, bits_of(k_phy_slot)},
        {{physical, "port"}, bits_of(k_phy_port)},
        {{physical, "sub-interface"}, bits_of(k_phy_sub)},
        {{"`port_channel`", "subtype"}, bits_of(k_pc_subtype)},
        {{"`port_channel`", "argument (the sub-interface)"}, bits_of(k_pc_arg)},
        {{"`port_channel`", "channel"}, bits_of(k_pc_channel)},
        {{"`port_channel` of subtype 1", "slot"}, bits_of(k_pc_member_slot)},
        {{"`port_channel` of subtype 1", "port"}, bits_of(k_pc_member_port)},
        {{slot_port, "slot"}, bits_of(k_phy_slot)},
        {{slot_port, "port"}, bits_of(k_phy_port)},
        {{"`inband`", "supervisor"}, bits_of(k_inband_sup)},
        {{"`inband`", "queue"}, bits_of(k_inband_queue)},
        {{"`inband` of supervisor 4 (a linecard)", "slot"}, bits_of(k_inband_linecard_slot)},
        {{"`eobc`", "slot"}, bits_of(k_phy_slot)},
        {{"`vsan`", "slot"}, bits_of(k_phy_slot)},
        {{"`vsan`", "port"}, bits_of(k_phy_port)},
        {{"`vsan`", "VSAN"}, bits_of(k_vsan)},
        {{"`vlan`", "device context"}, bits_of(k_vlan_vdc)},
        {{"`vlan`", "VLAN"}, bits_of(k_vlan)},
        {{"`fcip`, `fcmpls_tnnl`", "tunnel"}, bits_of(k_fc_tunnel)},
        {{"`tk`", "slot"}, bits_of(k_phy_slot)},
        {{"`tk`", "DPP"}, bits_of(k_tk_dpp)},
        {{"`tk`", "port"}, bits_of(k_tk_port)},
        {{"`nalp_vxe`, `zeff_vxe`", "first"}, bits_of(k_vxe_first)},
        {{"`nalp_vxe`, `zeff_vxe`", "second"}, bits_of(k_vxe_second)},
        {{"`xgfc_ifc`", "slot"}, bits_of(k_ifc_slot)},
        {{"`xgfc_ifc`", "port"}, bits_of(k_ifc_port)},
        {{"`xgfc_ifc`", "index"}, bits_of(k_ifc_index)},
        {{"`dorsa`", "slot"}, bits_of(k_phy_slot)},
        {{"`dorsa`", "node"}, bits_of(k_dorsa_node)},
        {{"`dorsa`", "port"}, bits_of(k_dorsa_port)},
        {{"`eth_inband`, `eth_inband_diag`", "channel"}, bits_of(k_inband_channel)},
        {{"`eth_port_channel`", "sub-interface"}, bits_of(k_epc_sub)},
        {{"`eth_port_channel`", "channel"}, bits_of(k_epc_channel)},
        {{"`eth_port_channel`", "subtype (inside the sub-interface)"}, bits_of(k_pc_subtype)},
        {{"`tunnel`", "device context"}, bits_of(k_tunnel_vdc)},
        {{"`tunnel`", "number"}, bits_of(k_tunnel_number)},
        {{"`tunnel`", "tunnel type (inside the number)"}, bits_of(k_tunnel_type)},
        {{"`lveth`", "slot"}, bits_of(k_lveth_slot)},
        {{"`lveth`", "port"}, bits_of(k_lveth_port)},
        {{"`lveth`", "sub-interface (handled unshifted: 0, 4, 8, 12)"}, bits_of(k_lveth_sub)},
        {{"`veth`", "virtual port"}, bits_of(k_veth_vport)},
        {{"`veth`", "sub-interface"}, bits_of(k_veth_sub)},
        {{"`vif`", "index"}, bits_of(k_vif_index)},
        {{"`vfc`", "subtype"}, bits_of(k_vfc_subtype)},
        {{"`vfc` of subtype 0 or 3 (plain, on a veth)", "number"}, bits_of(k_vfc_number)},
        {{"`vfc` of subtype 1 (on a port-channel)", "channel"}, bits_of(k_vfc_channel)},
        {{vfc_port, "slot"}, bits_of(k_vfc_slot)},
        {{vfc_port, "port"}, bits_of(k_vfc_port)},
        {{vfc_port, "slot and port as one number"}, bits_of(k_vfc_slot_and_port)},
        {{hobb_read, "satellite"}, bits_of(k_hobb_sat)},
        {{hobb_read, "slot"}, bits_of(k_hobb_slot)},
        {{hobb_read, "port"}, bits_of(k_hobb_port)},
        {{hobb_built, "satellite"}, bits_of(k_hobb_built_sat)},
        {{hobb_built, "slot"}, bits_of(k_hobb_built_slot)},
        {{hobb_built, "port"}, bits_of(k_hobb_built_port)},
        {{"`sat_phy_eth`", "satellite"}, bits_of(k_sat)},
        {{"`sat_phy_eth`", "module"}, bits_of(k_sat_module)},
        {{"`sat_phy_eth`", "port"}, bits_of(k_sat_port)},
        {{"`sat_phy_eth`", "sub-interface"}, bits_of(k_sat_sub)},
        {{"`sat_phy_eth_fif`", "index"}, bits_of(k_fif_index)},
        {{"`sat_phy_eth_fif`", "module"}, bits_of(k_sat_module)},
        {{"`sat_phy_eth_fif`", "port"}, bits_of(k_sat_port)},
        {{"`overlay`", "port type"}, bits_of(k_overlay_type)},
        {{"`overlay`", "port"}, bits_of(k_overlay_port)},
        {{"`vl3`", "subtype"}, bits_of(k_vl3_subtype)},
        {{"`vl3`", "slot"}, bits_of(k_vl3_slot)},
        {{"`vl3`", "port"}, bits_of(k_vl3_port)},
        {{"`vl3`", "interface number"}, bits_of(k_vl3_interface)},
        {{"`marn`", "FTAG"}, bits_of(k_marn_ftag)},
        {{"`marn`", "switch id"}, bits_of(k_marn_switch_id)},
        {{"`ruk_eth`", "slot"}, bits_of(k_ruk_eth_slot)},
        {{"`ruk_eth`", "port"}, bits_of(k_ruk_eth_port)},
        {{"`ruk_eth`", "sub-interface"}, bits_of(k_ruk_eth_sub)},
        {{"`mpls_sublayer`", "label"}, bits_of(k_mpls_label)},
        {{"`loopback`", "number"}, bits_of(k_loopback_number)},
    };
    std::map<key, std::string> documented;
    for (const row &cells : table_of("Fields")) {
        ASSERT_EQ(cells.size(), 3U);
        EXPECT_TRUE(documented.emplace(key{cells[0], cells[1]}, cells[2]).second)
            << cells[0] << " has " << cells[1] << " twice";
    }
    EXPECT_EQ(documented, fields);
}

TEST(interface_index_doc, has_the_types_and_their_validity)
{
    const std::vector<std::pair<int, std::string>> types{
        {IF_INDEX_TYPE_PHY_FC, "phy_fc"},
        {IF_INDEX_TYPE_PHY_ETH, "phy_eth"},
        {IF_INDEX_TYPE_PORT_CHANNEL, "port_channel"},
        {IF_INDEX_TYPE_MGMT_SUP, "mgmt_sup"},
        {IF_INDEX_TYPE_INBAND, "inband"},
        {IF_INDEX_TYPE_EOBC, "eobc"},
        {IF_INDEX_TYPE_VSAN, "vsan"},
        {IF_INDEX_TYPE_VLAN, "vlan"},
        {IF_INDEX_TYPE_FCIP, "fcip"},
        {IF_INDEX_TYPE_ISCSI, "iscsi"},
        {IF_INDEX_TYPE_UMBRA, "umbra"},
        {IF_INDEX_TYPE_XLPORT, "xlport"},
        {IF_INDEX_TYPE_TK, "tk"},
        {IF_INDEX_TYPE_FCMPLS_TNNL, "fcmpls_tnnl"},
        {IF_INDEX_TYPE_NALP_VXE, "nalp_vxe"},
        {IF_INDEX_TYPE_XGFC_IFC, "xgfc_ifc"},
        {IF_INDEX_TYPE_KIRO, "kiro"},
        {IF_INDEX_TYPE_ZEFF_VXE, "zeff_vxe"},
        {IF_INDEX_TYPE_DORSA, "dorsa"},
        {IF_INDEX_TYPE_ETH_INBAND, "eth_inband"},
        {IF_INDEX_TYPE_ETH_PORT_CHANNEL, "eth_port_channel"},
        {IF_INDEX_TYPE_NULL_INTERFACE, "null_interface"},
        {IF_INDEX_TYPE_TUNNEL, "tunnel"},
        {IF_INDEX_TYPE_ETH_INBAND_DIAG, "eth_inband_diag"},
        {IF_INDEX_TYPE_PHY_ETHERNET, "phy_ethernet"},
        {IF_INDEX_TYPE_LVETH, "lveth"},
        {IF_INDEX_TYPE_VETH, "veth"},
        {IF_INDEX_TYPE_VIF, "vif"},
        {IF_INDEX_TYPE_VFC, "vfc"},
        {IF_INDEX_TYPE_SAT_PHY_ETH, "sat_phy_eth"},
        {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, "sat_phy_eth_fif"},
        {IF_INDEX_TYPE_PEMU, "pemu"},
        {IF_INDEX_TYPE_OVERLAY, "overlay"},
        {IF_INDEX_TYPE_VL3, "vl3"},
        {IF_INDEX_TYPE_MARN, "marn"},
        {IF_INDEX_TYPE_RUK_ETH, "ruk_eth"},
        {IF_INDEX_TYPE_MPLS_SUBLAYER, "mpls_sublayer"},
        {IF_INDEX_TYPE_LOOPBACK, "loopback"},
    };
    const std::vector<row> rows = table_of("Types");
    ASSERT_EQ(rows.size(), types.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(types[i].second);
        ASSERT_EQ(rows[i].size(), 4U);
        EXPECT_EQ(rows[i][0], std::to_string(types[i].first));
        EXPECT_EQ(rows[i][1], '`' + types[i].second + '`');
        const auto code = static_cast<uint32_t>(types[i].first);
        EXPECT_EQ(rows[i][2], if_index_is_type_valid_in_current_release(code) != 0 ? "yes" : "no");
    }
}

TEST(interface_index_doc, names_tests_that_exist)
{
    std::set<std::string> tests;
    const testing::UnitTest &program = *testing::UnitTest::GetInstance();
    for (int s = 0; s < program.total_test_suite_count(); ++s) {
        const testing::TestSuite &suite = *program.GetTestSuite(s);
        for (int t = 0; t < suite.total_test_count(); ++t) {
            tests.insert(std::string(suite.name()) + '.' + suite.GetTestInfo(t)->name());
        }
    }
    const std::vector<row> rows = table_of("Kept oddities");
    EXPECT_GT(rows.size(), 30U);
    for (const row &cells : rows) {
        ASSERT_EQ(cells.size(), 2U);
        size_t named = 0;
        for (size_t start = 0; (start = cells[1].find('`', start)) != std::string::npos; ++named) {
            const size_t end = cells[1].find('`', start + 1);
            const std::string name = cells[1].substr(start + 1, end - start - 1);
            EXPECT_EQ(tests.count(name), 1U) << name;
            start = end + 1;
        }
        EXPECT_GT(named, 0U) << cells[0];
    }
}

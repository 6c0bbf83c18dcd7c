// Every value of every field on its own, with the other fields at their least and greatest, through
// the constructor and back through the reader; and the list of what does not come back.
#include <array>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>

#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"
#include "ruk/if_index_read.h"
#include "ruk/if_index_types.h"

namespace
{

// Builds of the numbers, reads back, compares.  Constructor and reader name the fields in the same
// order; a constructor may take a field at another width than the reader gives it.
template <typename... In, typename... Out, size_t... I>
bool comes_back(uint32_t (*init)(IfIndex *, In...), uint32_t (*reader)(IfIndex, Out *...),
                const std::array<uint32_t, sizeof...(In)> &numbers, std::index_sequence<I...>)
{
    static_assert(sizeof...(In) == sizeof...(Out));
    IfIndex value = 0;
    std::tuple<Out...> read;
    return init(&value, static_cast<In>(numbers[I])...) == 0 &&
           reader(value, &std::get<I>(read)...) == 0 && ((std::get<I>(read) == numbers[I]) && ...);
}

struct range {
    uint32_t first;
    uint32_t last;
};

template <typename... In, typename... Out>
void sweep(const char *what, uint32_t (*init)(IfIndex *, In...),
           uint32_t (*reader)(IfIndex, Out *...), std::array<range, sizeof...(In)> fields)
{
    constexpr size_t count = sizeof...(In);
    for (size_t swept = 0; swept < count; ++swept) {
        for (unsigned greatest = 0; greatest < 1U << count; ++greatest) {
            if ((greatest >> swept & 1) != 0) {
                continue; // the same as without this bit: the swept field has no say in it
            }
            std::array<uint32_t, count> numbers{};
            for (size_t i = 0; i < count; ++i) {
                numbers[i] = (greatest >> i & 1) != 0 ? fields[i].last : fields[i].first;
            }
            for (uint64_t n = fields[swept].first; n <= fields[swept].last; ++n) {
                numbers[swept] = static_cast<uint32_t>(n);
                ASSERT_TRUE(comes_back(init, reader, numbers, std::index_sequence_for<In...>{}))
                    << what << ", field " << swept << " = " << n << ", others " << greatest;
            }
        }
    }
}

constexpr range k_slot{0, 31};
constexpr range k_port{0, 127};
constexpr range k_sub{0, 4095};

// Readers in the order of their constructors, and as many fields as those.
uint32_t read_tk(IfIndex value, uint16_t *slot, uint8_t *dpp, uint16_t *port)
{
    const uint32_t error = if_index_get_slot(value, slot);
    return error | if_index_tk_get_dpp_num(value, dpp) | if_index_tk_get_port(value, port);
}

uint32_t read_sat_slot_port(IfIndex value, uint16_t *slot, uint8_t *port)
{
    const uint32_t error = if_index_sat_get_slot(value, slot);
    return error | if_index_sat_get_port(value, port);
}

uint32_t read_overlay(IfIndex value, uint8_t *port_type, uint32_t *port)
{
    return if_index_overlay_get_overlay_fields(value, port, port_type);
}

uint32_t read_tunnel(IfIndex value, uint8_t *vdc, uint32_t *number)
{
    uint8_t tunnel_type = 0;
    const uint32_t error = if_index_tunnel_get_tunnel_fields(value, vdc, &tunnel_type, number);
    return error | static_cast<uint32_t>(tunnel_type != *number >> 15);
}

uint32_t read_sub_of_port_channel(IfIndex value, uint16_t *channel, uint8_t *subtype, uint16_t *sub)
{
    const uint32_t error = if_index_port_channel_get_channel_num(value, channel);
    return error | if_index_port_channel_get_subtype(value, subtype) |
           if_index_get_sub_intf(value, sub);
}

uint32_t read_vfc_number(IfIndex value, uint16_t *number)
{
    uint8_t subtype = 0;
    return if_index_vfc_get_fields(value, &subtype, number) | subtype;
}

uint32_t read_vfc_veth(IfIndex value, uint16_t *number)
{
    uint8_t subtype = 0;
    return if_index_vfc_veth_get_fields(value, &subtype, number);
}

uint32_t read_vfc_slot_port(IfIndex value, uint16_t *slot, uint8_t *port)
{
    uint8_t subtype = 0;
    return if_index_vfc_slot_port_get_fields(value, &subtype, slot, port);
}

// A channel counts from one in its constructor and from zero in its reader.
uint32_t init_vfc_channel(IfIndex *out, uint16_t channel)
{
    return if_index_vfc_port_channel_init(out, static_cast<uint16_t>(channel + 1));
}

uint32_t read_vfc_channel(IfIndex value, uint16_t *channel)
{
    uint8_t subtype = 0;
    return if_index_vfc_port_channel_get_fields(value, &subtype, channel);
}

} // namespace

TEST(if_index_sweep, ports_come_back)
{
    sweep("phy_fc", if_index_phy_fc_port_init, if_index_phy_fc_get_fields,
          {{k_slot, k_port, k_sub}});
    sweep("phy_eth", if_index_phy_eth_port_init, if_index_phy_eth_get_fields,
          {{k_slot, k_port, k_sub}});
    sweep("phy_ethernet", if_index_phy_ethernet_init, if_index_phy_eth_get_fields,
          {{k_slot, k_port, k_sub}});
    sweep("mgmt_sup", if_index_mgmt_sup_port_init, if_index_mgmt_sup_get_fields,
          {{k_slot, k_port}});
    sweep("mgmt_sup as stored", if_index_mgmt_sup_port_cli_init, if_index_mgmt_sup_get_fields,
          {{k_slot, k_port}});
    sweep("eobc", if_index_eobc_port_init, if_index_eobc_get_slot, {{k_slot}});
    sweep("iscsi", if_index_iscsi_port_init, if_index_iscsi_get_fields, {{k_slot, k_port}});
    sweep("umbra", if_index_umbra_port_init, if_index_umbra_get_fields, {{k_slot, k_port}});
    sweep("xlport", if_index_xlport_init, if_index_xlport_get_fields, {{k_slot, k_port}});
    sweep("tk", if_index_tk_port_init, read_tk, {{k_slot, {0, 31}, {0, 16382}}});
    sweep("kiro", if_index_kiro_port_init, if_index_kiro_get_fields, {{k_slot, k_port}});
    sweep("dorsa", if_index_dorsa_port_init, if_index_dorsa_get_fields,
          {{k_slot, {0, 63}, {0, 16}}});
    sweep("pemu", if_index_pemu_port_init, if_index_pemu_get_fields, {{k_slot, k_port}});
    sweep("vsan", if_index_vsan_port_init, if_index_vsan_get_fields, {{k_slot, k_port, {0, 4095}}});
    sweep("sat_phy_eth", if_index_sat_phy_eth_port_init, if_index_sat_get_fields,
          {{{0, 255}, {0, 15}, {0, 63}, {0, 63}}});
    sweep("sat_phy_eth_fif", if_index_sat_phy_eth_fif_port_init, if_index_sat_get_fif_fields,
          {{{0, 15}, {0, 63}, {0, 7}}});
    sweep("sat_phy_eth by slot", if_index_sat_phy_eth_port_init_from_slot_port, read_sat_slot_port,
          {{{0, 188}, {0, 63}}});
    sweep("vl3", if_index_vl3_interface_init, if_index_vl3_get_fields,
          {{{0, 3}, k_slot, k_port, {0, 1023}}});
    sweep("ruk_eth", if_index_ruk_eth_init, if_index_ruk_eth_get_fields,
          {{{0, 514}, {0, 255}, {0, 63}}});
    sweep("ruk_eth by module", if_index_ruk_eth_init_from_mod, if_index_ruk_eth_get_fields,
          {{{3, 515}, {0, 255}, {0, 63}}});
    sweep("lveth", if_index_lveth_init, if_index_lveth_get_fields,
          {{{0, 1023}, {0, 4095}, {0, 0}}});
}

TEST(if_index_sweep, numbered_interfaces_come_back)
{
    sweep("port_channel", if_index_port_channel_init_internal, if_index_port_channel_get_fields,
          {{{0, 255}, {0, 3}, k_sub}});
    sweep("port_channel sub", if_index_port_channel_init_internal, read_sub_of_port_channel,
          {{{0, 255}, {0, 3}, k_sub}});
    sweep("port_channel plain", if_index_port_channel_init, if_index_port_channel_get_channel_num,
          {{{0, 255}}});
    sweep("eth_port_channel", if_index_eth_port_channel_init_subintf,
          if_index_eth_port_channel_get_fields, {{{0, 4095}, k_sub}});
    sweep("eth_port_channel plain", if_index_eth_port_channel_init,
          if_index_eth_port_channel_get_channel_num, {{{0, 4095}}});
    sweep("inband", if_index_inband_port_init, if_index_inband_get_fields, {{{0, 4}, {0, 3}}});
    sweep("inband as stored", if_index_inband_port_cli_init, if_index_inband_get_fields,
          {{{0, 4}, {0, 3}}});
    sweep("inband linecard", if_index_inband_linecard_port_init,
          if_index_inband_linecard_get_fields, {{{0, 3}, {0, 255}}});
    sweep("eth_inband", if_index_eth_inband_port_init, if_index_eth_inband_get_fields, {{{0, 32}}});
    sweep("vlan", if_index_vlan_port_init, if_index_vlan_get_fields, {{{0, 255}, {1, 4094}}});
    sweep("fcip", if_index_fcip_port_init, if_index_fcip_get_tunnel, {{{0, 255}}});
    sweep("fcmpls_tnnl", if_index_fcmpls_tnnl_init, if_index_fcmpls_tnnl_get_tunnel, {{{0, 255}}});
    sweep("tunnel", if_index_tunnel_init, read_tunnel, {{{0, 255}, {0, 65535}}});
    sweep("veth", if_index_veth_init, if_index_veth_get_fields, {{{0, 1048575}, {0, 15}}});
    sweep("vif", if_index_vif_init, if_index_vif_get_vifindex, {{{0, 1048575}}});
    sweep("vfc", if_index_vfc_init, read_vfc_number, {{{0, 61440}}});
    sweep("vfc of a server", if_index_fc_server_interface_init, read_vfc_number, {{{0, 65535}}});
    sweep("vfc_veth", if_index_vfc_veth_init, read_vfc_veth, {{{0, 61440}}});
    sweep("vfc_port_channel", init_vfc_channel, read_vfc_channel, {{{0, 4095}}});
    sweep("vfc_slot_port", if_index_vfc_slot_port_init, read_vfc_slot_port, {{k_slot, k_port}});
    sweep("overlay", if_index_overlay_init, read_overlay, {{{0, 31}, {0, 65503}}});
    sweep("marn", if_index_marn_interface_init, if_index_marn_get_fields, {{{0, 1023}, {0, 4095}}});
}

// What does not come back, all of it: arguments that are cut or run into other fields, and the one
// type whose reader looks elsewhere.  Types without a reader (nalp_vxe, zeff_vxe, xgfc_ifc, the
// members of a port_channel, mpls_sublayer, loopback) have nothing to come back from.
TEST(if_index_sweep, what_does_not_come_back)
{
    IfIndex value = 0;
    uint16_t a = 0;
    uint16_t b = 0;
    uint16_t sub = 0;
    uint8_t c = 0;
    uint8_t d = 0;
    uint8_t e = 0;
    uint32_t n = 0;
    uint32_t m = 0;

    // A channel above 255 is cut.
    EXPECT_EQ(if_index_port_channel_init_internal(&value, 300, 1, 5), 0U);
    EXPECT_EQ(if_index_port_channel_get_fields(value, &a, &c, &b), 0U);
    EXPECT_EQ(std::tuple(a, c, b), std::tuple(44, 1, 5));
    // An eth_port_channel in the layout of a port_channel: the channel gets the argument's low
    // bits.
    EXPECT_EQ(if_index_eth_port_channel_init_internal(&value, 7, 2, 0x345), 0U);
    EXPECT_EQ(if_index_port_channel_get_fields(value, &a, &c, &b), 0U);
    EXPECT_EQ(std::tuple(a, c, b), std::tuple(0x507, 2, 0x234));
    // A linecard's slot above 255 runs into the queue.
    EXPECT_EQ(if_index_inband_linecard_port_init(&value, 0, 256 + 9), 0U);
    EXPECT_EQ(if_index_inband_linecard_get_fields(value, &c, &a), 0U);
    EXPECT_EQ(std::tuple(c, a), std::tuple(1, 9));
    // A negative VSAN is every field there is, the type too.
    EXPECT_EQ(if_index_vsan_port_init(&value, 1, 2, -1), 0U);
    EXPECT_EQ(if_index_vsan_get_fields(value, &a, &c, &n), 11U);
    // A node above 63 runs into the slot.
    EXPECT_EQ(if_index_dorsa_port_init(&value, 4, 64 + 3, 5), 0U);
    EXPECT_EQ(if_index_dorsa_get_fields(value, &a, &c, &d), 0U);
    EXPECT_EQ(std::tuple(a, c, d), std::tuple(5, 3, 5));
    // A user's port above 64 uses a bit that no field has.
    EXPECT_EQ(if_index_dorsa_port_cli_init(&value, 1, 1, 128), 0U);
    EXPECT_EQ(if_index_dorsa_get_fields(value, &a, &c, &d), 0U);
    EXPECT_EQ(std::tuple(a, c, d), std::tuple(0, 0, 63));
    // A device context above 255 is cut.
    EXPECT_EQ(if_index_tunnel_init(&value, 256 + 3, 9), 0U);
    EXPECT_EQ(if_index_tunnel_get_tunnel_fields(value, &c, &d, &n), 0U);
    EXPECT_EQ(std::tuple(c, d, n), std::tuple(3, 0, 9U));
    // An unchecked tunnel number runs into the device context.
    if_index_tunnel_create(&value, 0, 0x20009);
    EXPECT_EQ(if_index_tunnel_get_tunnel_fields(value, &c, &d, &n), 0U);
    EXPECT_EQ(std::tuple(c, d, n), std::tuple(2, 0, 9U));
    // The low bits of an lveth's sub-interface are dropped, and the slot is cut to 10 bits.
    EXPECT_EQ(if_index_lveth_init(&value, 1024 + 5, 6, 15), 0U);
    EXPECT_EQ(if_index_lveth_get_fields(value, &a, &b, &sub), 0U);
    EXPECT_EQ(std::tuple(a, b, sub), std::tuple(5, 6, 12));
    // An index above 20 bits and a number above 16 are cut.
    EXPECT_EQ(if_index_vif_init(&value, 0x100007), 0U);
    EXPECT_EQ(if_index_vif_get_vifindex(value, &n), 0U);
    EXPECT_EQ(n, 7U);
    EXPECT_EQ(if_index_fc_server_interface_init(&value, 0x10008), 0U);
    EXPECT_EQ(if_index_server_interface_get_fields(value, &n), 0U);
    EXPECT_EQ(n, 8U);
    // A vfc on a satellite is read from other places than it was built at.
    EXPECT_EQ(if_index_vfc_hobb_init(&value, 3, 2, 1), 0U);
    EXPECT_EQ(value, 0x1E400E04U);
    EXPECT_EQ(if_index_vfc_hobb_get_fields(value, &c, &d, &a, &e), 0U);
    EXPECT_EQ(std::tuple(c, d, a, e), std::tuple(4, 4, 14, 0));
    // Unchecked satellite fields run into each other.
    EXPECT_EQ(if_index_sat_phy_eth_port_init(&value, 4, 16 + 2, 64 + 8, 64 + 4), 0U);
    EXPECT_EQ(if_index_sat_get_fields(value, &c, &d, &e, &sub), 0U);
    EXPECT_EQ(std::tuple(c, d, e, sub), std::tuple(5, 3, 9, 4));
    EXPECT_EQ(if_index_sat_phy_eth_port_cli_init(&value, 1, 1, 1, 64), 0U);
    EXPECT_EQ(if_index_sat_get_fields(value, &c, &d, &e, &sub), 0U);
    EXPECT_EQ(std::tuple(c, d, e, sub), std::tuple(0, 0, 1, 0));
    EXPECT_EQ(if_index_sat_phy_eth_fif_port_init(&value, 0, 0, 8), 0U);
    EXPECT_EQ(value, 0x21000000U); // pemu, by its type
    // The slot of a satellite above 255 - 67 wraps.
    EXPECT_EQ(if_index_sat_phy_eth_port_init_from_slot_port(&value, 189, 0), 0U);
    EXPECT_EQ(if_index_sat_get_slot(value, &a), 0U);
    EXPECT_EQ(a, 65469);
    // An overlay port type above 31 changes the type.
    EXPECT_EQ(if_index_overlay_init(&value, 32, 1), 0U);
    EXPECT_EQ(if_index_overlay_get_overlay_fields(value, &m, &c), 12U);
    // The port of an eobc is dropped; the diagnostic channel gets another type but is read alike.
    EXPECT_EQ(if_index_eobc_port_cli_init(&value, 3, 9), 0U);
    EXPECT_EQ(if_index_eobc_get_fields(value, &a, &c), 0U);
    EXPECT_EQ(std::tuple(a, c), std::tuple(3, 0));
}

// A user's numbers come back one lower.
TEST(if_index_sweep, user_numbers_come_back_less_one)
{
    for (int32_t slot = 1; slot <= 32; ++slot) {
        for (int32_t port = 1; port <= 128; ++port) {
            IfIndex value = 0;
            uint16_t s = 0xbeef;
            uint8_t p = 0xee;
            ASSERT_EQ(if_index_phy_fc_port_cli_init(&value, slot, port), 0U);
            ASSERT_EQ(if_index_phy_fc_get_slot(value, &s) | if_index_phy_fc_get_port(value, &p),
                      0U);
            ASSERT_EQ(std::pair(s + 1, p + 1), std::pair(slot, port));
            ASSERT_EQ(if_index_phy_ethernet_cli_init(&value, slot, port, 0, 0), 0U);
            ASSERT_EQ(if_index_phy_eth_get_slot(value, &s) | if_index_phy_eth_get_port(value, &p),
                      0U);
            ASSERT_EQ(std::pair(s + 1, p + 1), std::pair(slot, port));
        }
    }
    for (int32_t vport = 1; vport <= 1048576; ++vport) {
        IfIndex value = 0;
        uint32_t v = 0;
        ASSERT_EQ(if_index_veth_cli_init(&value, vport, 3), 0U);
        ASSERT_EQ(if_index_veth_get_vport(value, &v), 0U);
        ASSERT_EQ(v + 1, static_cast<uint32_t>(vport));
        ASSERT_EQ(if_index_ether_sif_cli_init(&value, vport), 0U);
        ASSERT_EQ(if_index_vif_get_vifindex(value, &v), 0U);
        ASSERT_EQ(v + 1, static_cast<uint32_t>(vport));
    }
}

// Constructors that take the numbers a user types: slots, ports and most other numbers from one.
#include "ruk/if_index_cli.h"

#include "ifindex/build.h"
#include "ruk/if_index_build.h"

using namespace ifindex;

namespace
{

constexpr int32_t k_max_sub = 4095;
constexpr int32_t k_max_channel = 256;
constexpr int32_t k_max_eth_channel = 4096;

part counted_slot(int32_t slot)
{
    return counted(k_phy_slot, slot, 1, 32);
}

part counted_port(int32_t port)
{
    return counted(k_phy_port, port, 1, 128);
}

uint32_t build_slot_port(IfIndex *out, if_index_type type, int32_t slot, int32_t port)
{
    return build(out, type, counted_slot(slot), counted_port(port));
}

// The layout of a port_channel under either type; max_channel is the higher for the other one,
// whose channels above 256 are cut to 8 bits all the same.
uint32_t build_port_channel(IfIndex *out, if_index_type type, int32_t channel, int32_t max_channel,
                            int32_t subtype, int32_t arg)
{
    return build(out, type, counted(k_pc_channel, channel, 1, max_channel),
                 counted(k_pc_subtype, subtype, 0, 3), counted(k_pc_arg, arg, 0, k_max_sub));
}

// The low 8 bits of an unchecked number, which is the width that the constructors behind it take.
uint8_t cut(uint32_t number)
{
    return static_cast<uint8_t>(number);
}

} // namespace

uint32_t if_index_phy_fc_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_PHY_FC, slot, port);
}

uint32_t if_index_iscsi_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_ISCSI, slot, port);
}

uint32_t if_index_umbra_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_UMBRA, slot, port);
}

uint32_t if_index_xlport_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_XLPORT, slot, port);
}

uint32_t if_index_kiro_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_KIRO, slot, port);
}

uint32_t if_index_pemu_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_PEMU, slot, port);
}

uint32_t if_index_phy_eth_port_cli_init(IfIndex *out, int32_t slot, int32_t port, int32_t sat_port,
                                        int32_t sub)
{
    if (sat_port == 0) {
        return build(out, IF_INDEX_TYPE_PHY_ETH, counted_slot(slot), counted_port(port),
                     counted(k_phy_sub, sub, 0, k_max_sub));
    }
    // The ranges are those of the physical port still: module and sub-interface may be larger than
    // their fields on a satellite and then run into their neighbours.
    if (!is_between(slot, 1, 32) || !is_between(port, 1, 128) || !is_between(sub, 0, k_max_sub)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return if_index_sat_phy_eth_port_init(out, cut(less_one(slot)), cut(less_one(port)),
                                          cut(static_cast<uint32_t>(sat_port)),
                                          static_cast<uint16_t>(sub));
}

uint32_t if_index_phy_ethernet_cli_init(IfIndex *out, int32_t first, int32_t second, int32_t sub,
                                        int32_t third)
{
    // The answer doesn't matter, the question does: it pins the platform word.
    static_cast<void>(cli_is_platform_birch());
    if (is_between(first, 1, 32)) {
        return build(out, IF_INDEX_TYPE_PHY_ETHERNET, counted_slot(first), counted_port(second),
                     counted(k_phy_sub, sub, 0, k_max_sub));
    }
    // A satellite: only the port is judged, and there are no sub-interfaces on this road.
    if (!is_between(third, 1, 128)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return if_index_sat_phy_eth_port_init(out, cut(less_one(first)), cut(less_one(second)),
                                          cut(less_one(third)), 0);
}

uint32_t if_index_port_channel_cli_init(IfIndex *out, int32_t channel, int32_t sub)
{
    return build(out, IF_INDEX_TYPE_PORT_CHANNEL, counted(k_pc_channel, channel, 1, k_max_channel),
                 counted(k_pc_arg, sub, 0, k_max_sub));
}

uint32_t if_index_port_channel_cli_init_internal(IfIndex *out, int32_t channel, int32_t subtype,
                                                 int32_t arg)
{
    return build_port_channel(out, IF_INDEX_TYPE_PORT_CHANNEL, channel, k_max_channel, subtype,
                              arg);
}

uint32_t if_index_eth_port_channel_cli_init(IfIndex *out, int32_t channel, int32_t sub)
{
    return build(out, IF_INDEX_TYPE_ETH_PORT_CHANNEL,
                 counted(k_epc_channel, channel, 1, k_max_eth_channel),
                 counted(k_epc_sub, sub, 0, k_max_sub));
}

uint32_t if_index_eth_port_channel_cli_init_internal(IfIndex *out, int32_t channel, int32_t subtype,
                                                     int32_t arg)
{
    return build_port_channel(out, IF_INDEX_TYPE_ETH_PORT_CHANNEL, channel, k_max_eth_channel,
                              subtype, arg);
}

uint32_t if_index_mgmt_sup_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    return build(out, IF_INDEX_TYPE_MGMT_SUP, counted(k_phy_slot, slot, 0, 31),
                 counted(k_phy_port, port, 0, 127));
}

uint32_t if_index_eobc_port_cli_init(IfIndex *out, int32_t slot, int32_t port)
{
    // The port is judged like any other and dropped: there is one EOBC port on a slot.
    const part judged_port{is_between(port, 0, 127), 0};
    return build(out, IF_INDEX_TYPE_EOBC, counted(k_phy_slot, slot, 0, 31), judged_port);
}

uint32_t if_index_inband_port_cli_init(IfIndex *out, int32_t sup, int32_t queue)
{
    return build(out, IF_INDEX_TYPE_INBAND, counted(k_inband_sup, sup, 0, 4),
                 counted(k_inband_queue, queue, 0, 3));
}

uint32_t if_index_loopback_port_cli_init(IfIndex *out, int32_t number)
{
    return build(out, IF_INDEX_TYPE_LOOPBACK,
                 counted(k_loopback_number, number, 0, k_loopback_max));
}

uint32_t if_index_vsan_port_cli_init(IfIndex *out, int32_t slot, int32_t port, int32_t vsan)
{
    // Slot 31 is the VSAN interface itself, which has no slot that a user could count: it comes as
    // it is stored.  So the user's slot 31 can't be typed, while 32 stores that same 31.
    constexpr int32_t vsan_interface = 31;
    const part judged_vsan = counted(k_vsan, vsan, 0, k_max_sub);
    if (slot == vsan_interface) {
        return build(out, IF_INDEX_TYPE_VSAN, kept(k_phy_slot, vsan_interface),
                     counted(k_phy_port, port, 0, 127), judged_vsan);
    }
    return build(out, IF_INDEX_TYPE_VSAN, counted_slot(slot), counted_port(port), judged_vsan);
}

uint32_t if_index_vlan_port_cli_init(IfIndex *out, int32_t vdc, int32_t vlan)
{
    return if_index_vlan_port_init(out, static_cast<uint32_t>(vdc), static_cast<uint32_t>(vlan));
}

uint32_t if_index_fcip_port_cli_init(IfIndex *out, int32_t tunnel)
{
    return build(out, IF_INDEX_TYPE_FCIP, counted(k_fc_tunnel, tunnel, 1, 255));
}

uint32_t if_index_fcmpls_tnnl_cli_init(IfIndex *out, int32_t tunnel)
{
    return build(out, IF_INDEX_TYPE_FCMPLS_TNNL, counted(k_fc_tunnel, tunnel, 1, 255));
}

uint32_t if_index_tk_port_cli_init(IfIndex *out, int32_t slot, int32_t dpp, int32_t port)
{
    return build(out, IF_INDEX_TYPE_TK, counted_slot(slot), counted(k_tk_dpp, dpp, 1, 32),
                 counted(k_tk_port, port, 1, 16383));
}

uint32_t if_index_tunnel_cli_init(IfIndex *out, int32_t vdc, int32_t number)
{
    return build(out, IF_INDEX_TYPE_TUNNEL, counted(k_tunnel_vdc, vdc, 0, 255),
                 counted(k_tunnel_number, number, 0, 65535));
}

uint32_t if_index_lveth_cli_init(IfIndex *out, int32_t slot, int32_t port, int32_t sub)
{
    return build(out, IF_INDEX_TYPE_LVETH, counted(k_lveth_slot, slot, 1, 32),
                 counted(k_lveth_port, port, 1, 4096), counted(k_lveth_sub, sub, 0, 15));
}

uint32_t if_index_veth_cli_init(IfIndex *out, int32_t vport, int32_t sub)
{
    return build(out, IF_INDEX_TYPE_VETH, counted(k_veth_vport, vport, 1, 1048576),
                 counted(k_veth_sub, sub, 0, 15));
}

uint32_t if_index_ether_sif_cli_init(IfIndex *out, int32_t number)
{
    return build(out, IF_INDEX_TYPE_VIF, counted(k_vif_index, number, 1, 1048576));
}

uint32_t if_index_fc_sif_cli_init(IfIndex *out, int32_t number)
{
    return build(out, IF_INDEX_TYPE_VFC, counted(k_vfc_number, number, 1, 61440));
}

uint32_t if_index_dorsa_port_cli_init(IfIndex *out, int32_t slot, int32_t node, int32_t port)
{
    // Ports are taken up to 128 although the other constructor stops at 16 and the field at 63.
    return build(out, IF_INDEX_TYPE_DORSA, counted_slot(slot),
                 uncut(k_dorsa_node, cut(less_one(node))),
                 counted_uncut(k_dorsa_port, port, 1, 128));
}

uint32_t if_index_sat_phy_eth_port_cli_init(IfIndex *out, int32_t sat, int32_t module, int32_t port,
                                            int32_t sub)
{
    // A sub-interface of 64 is one too many for its field and turns up in the port.
    return build(out, IF_INDEX_TYPE_SAT_PHY_ETH, counted(k_sat, sat, 1, 256),
                 counted(k_sat_module, module, 1, 2), counted(k_sat_port, port, 1, 64),
                 counted_uncut(k_sat_sub, sub, 0, 64));
}

uint32_t if_index_overlay_cli_init(IfIndex *out, int32_t port_type, int32_t port)
{
    return build(out, IF_INDEX_TYPE_OVERLAY, counted(k_overlay_type, port_type, 0, 4),
                 counted(k_overlay_port, port, 0, k_overlay_port_max));
}

uint32_t if_index_ruk_eth_cli_init(IfIndex *out, int32_t module, int32_t port, int32_t sub)
{
    const int32_t first_module = cli_is_platform_birch() != 0 ? 128 : 1;
    return build(
        out, IF_INDEX_TYPE_RUK_ETH,
        counted(k_ruk_eth_slot, module, first_module, first_module + int32_t{k_ruk_eth_slot_max}),
        kept(k_ruk_eth_port, less_one(port)), counted(k_ruk_eth_sub, sub, 0, 63));
}

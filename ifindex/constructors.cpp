// Constructors that take the fields as they are stored.
#include "ruk/if_index_build.h"

#include "ifindex/build.h"

using namespace ifindex;

namespace
{

uint32_t build_slot_port(IfIndex *out, if_index_type type, uint16_t slot, uint8_t port)
{
    return build(out, type, whole(k_phy_slot, slot), whole(k_phy_port, port));
}

uint32_t build_slot_port_sub(IfIndex *out, if_index_type type, uint16_t slot, uint8_t port,
                             uint16_t sub)
{
    return build(out, type, whole(k_phy_slot, slot), whole(k_phy_port, port),
                 whole(k_phy_sub, sub));
}

// The constructors of port-channels judge a channel by the 12 bits of eth_port_channel, whatever
// the field holds that it goes to: channel 300 of a port_channel has always been channel 44.
part judged_channel(bit_field field, uint16_t channel)
{
    return limited(field, channel, k_epc_channel.max());
}

// The layout of a port_channel under either type.
uint32_t build_port_channel(IfIndex *out, if_index_type type, uint16_t channel, uint8_t subtype,
                            uint16_t arg)
{
    return build(out, type, judged_channel(k_pc_channel, channel), whole(k_pc_subtype, subtype),
                 whole(k_pc_arg, arg));
}

uint32_t build_ruk_eth(IfIndex *out, part slot, uint8_t port, uint16_t sub)
{
    return build(out, IF_INDEX_TYPE_RUK_ETH, slot, whole(k_ruk_eth_port, port),
                 whole(k_ruk_eth_sub, sub));
}

} // namespace

uint32_t if_index_phy_fc_port_init(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub)
{
    return build_slot_port_sub(out, IF_INDEX_TYPE_PHY_FC, slot, port, sub);
}

uint32_t if_index_phy_eth_port_init(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub)
{
    return build_slot_port_sub(out, IF_INDEX_TYPE_PHY_ETH, slot, port, sub);
}

uint32_t if_index_phy_ethernet_init(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub)
{
    return build_slot_port_sub(out, IF_INDEX_TYPE_PHY_ETHERNET, slot, port, sub);
}

uint32_t if_index_port_channel_init(IfIndex *out, uint16_t channel)
{
    return build(out, IF_INDEX_TYPE_PORT_CHANNEL, judged_channel(k_pc_channel, channel));
}

uint32_t if_index_port_channel_init_internal(IfIndex *out, uint16_t channel, uint8_t subtype,
                                             uint16_t arg)
{
    return build_port_channel(out, IF_INDEX_TYPE_PORT_CHANNEL, channel, subtype, arg);
}

uint32_t if_index_xgfc_port_init(IfIndex *out, uint16_t channel, uint16_t slot, uint8_t port)
{
    return build(out, IF_INDEX_TYPE_PORT_CHANNEL, kept(k_pc_channel, channel),
                 kept(k_pc_subtype, k_pc_member), kept(k_pc_member_slot, slot),
                 kept(k_pc_member_port, port));
}

uint32_t if_index_eth_port_channel_init(IfIndex *out, uint16_t channel)
{
    return build(out, IF_INDEX_TYPE_ETH_PORT_CHANNEL, judged_channel(k_epc_channel, channel));
}

uint32_t if_index_eth_port_channel_init_subintf(IfIndex *out, uint16_t channel, uint16_t sub)
{
    return build(out, IF_INDEX_TYPE_ETH_PORT_CHANNEL, judged_channel(k_epc_channel, channel),
                 whole(k_epc_sub, sub));
}

uint32_t if_index_eth_port_channel_init_internal(IfIndex *out, uint16_t channel, uint8_t subtype,
                                                 uint16_t arg)
{
    return build_port_channel(out, IF_INDEX_TYPE_ETH_PORT_CHANNEL, channel, subtype, arg);
}

uint32_t if_index_mgmt_sup_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_MGMT_SUP, slot, port);
}

uint32_t if_index_eobc_port_init(IfIndex *out, uint16_t slot)
{
    return build(out, IF_INDEX_TYPE_EOBC, whole(k_phy_slot, slot));
}

uint32_t if_index_vsan_port_init(IfIndex *out, uint16_t slot, uint8_t port, int32_t vsan)
{
    // Judged from above only: a negative VSAN passes, and its sign bits cover the rest of the
    // value. Kept, as callers may know the values that come of it.
    const part judged_vsan{vsan <= static_cast<int32_t>(k_vsan.max()),
                           k_vsan.put_uncut(static_cast<uint32_t>(vsan))};
    return build(out, IF_INDEX_TYPE_VSAN, whole(k_phy_slot, slot), whole(k_phy_port, port),
                 judged_vsan);
}

uint32_t if_index_vlan_port_init(IfIndex *out, uint32_t vdc, uint32_t vlan)
{
    const part judged_vlan{vlan >= k_vlan_min && vlan <= k_vlan_max, k_vlan.put(vlan)};
    return build(out, IF_INDEX_TYPE_VLAN, whole(k_vlan_vdc, vdc), judged_vlan);
}

uint32_t if_index_fcip_port_init(IfIndex *out, uint16_t tunnel)
{
    return build(out, IF_INDEX_TYPE_FCIP, limited(k_fc_tunnel, tunnel, 255));
}

uint32_t if_index_fcmpls_tnnl_init(IfIndex *out, uint16_t tunnel)
{
    return build(out, IF_INDEX_TYPE_FCMPLS_TNNL, limited(k_fc_tunnel, tunnel, 255));
}

uint32_t if_index_iscsi_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_ISCSI, slot, port);
}

uint32_t if_index_umbra_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_UMBRA, slot, port);
}

uint32_t if_index_xlport_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_XLPORT, slot, port);
}

uint32_t if_index_kiro_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_KIRO, slot, port);
}

uint32_t if_index_pemu_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_slot_port(out, IF_INDEX_TYPE_PEMU, slot, port);
}

uint32_t if_index_tk_port_init(IfIndex *out, uint16_t slot, uint8_t dpp, uint16_t port)
{
    return build(out, IF_INDEX_TYPE_TK, whole(k_phy_slot, slot), whole(k_tk_dpp, dpp),
                 limited(k_tk_port, port, k_tk_port.max() - 1));
}

uint32_t if_index_nalp_vxe_init(IfIndex *out, uint8_t first, uint8_t second)
{
    return build(out, IF_INDEX_TYPE_NALP_VXE, kept(k_vxe_first, first), kept(k_vxe_second, second));
}

uint32_t if_index_zeff_vxe_init(IfIndex *out, uint8_t first, uint8_t second)
{
    return build(out, IF_INDEX_TYPE_ZEFF_VXE, kept(k_vxe_first, first), kept(k_vxe_second, second));
}

uint32_t if_index_xgfc_ifc_init(IfIndex *out, uint16_t slot, uint8_t port, uint8_t index)
{
    return build(out, IF_INDEX_TYPE_XGFC_IFC, whole(k_ifc_slot, slot), whole(k_ifc_port, port),
                 kept(k_ifc_index, index));
}

uint32_t if_index_dorsa_port_init(IfIndex *out, uint16_t slot, uint8_t node, uint8_t port)
{
    return build(out, IF_INDEX_TYPE_DORSA, whole(k_phy_slot, slot), uncut(k_dorsa_node, node),
                 limited(k_dorsa_port, port, 16));
}

uint32_t if_index_tunnel_init(IfIndex *out, uint32_t vdc, uint32_t number)
{
    return build(out, IF_INDEX_TYPE_TUNNEL, kept(k_tunnel_vdc, vdc),
                 whole(k_tunnel_number, number));
}

void if_index_tunnel_create(IfIndex *out, uint32_t vdc, uint32_t number)
{
    build(out, IF_INDEX_TYPE_TUNNEL, kept(k_tunnel_vdc, vdc), uncut(k_tunnel_number, number));
}

uint32_t if_index_lveth_init(IfIndex *out, uint16_t slot, uint16_t port, uint16_t sub)
{
    return build(out, IF_INDEX_TYPE_LVETH, kept(k_lveth_slot, slot), whole(k_lveth_port, port),
                 limited(k_lveth_sub, sub, 15));
}

uint32_t if_index_veth_init(IfIndex *out, uint32_t vport, uint16_t sub)
{
    return build(out, IF_INDEX_TYPE_VETH, whole(k_veth_vport, vport), whole(k_veth_sub, sub));
}

uint32_t if_index_ether_server_interface_init(IfIndex *out, uint32_t index)
{
    return if_index_vif_init(out, index);
}

uint32_t if_index_vif_init(IfIndex *out, uint32_t index)
{
    return build(out, IF_INDEX_TYPE_VIF, kept(k_vif_index, index));
}

uint32_t if_index_sat_phy_eth_port_init(IfIndex *out, uint8_t sat, uint8_t module, uint8_t port,
                                        uint16_t sub)
{
    return build(out, IF_INDEX_TYPE_SAT_PHY_ETH, uncut(k_sat, sat), uncut(k_sat_module, module),
                 uncut(k_sat_port, port), uncut(k_sat_sub, sub));
}

uint32_t if_index_sat_phy_eth_port_init_from_slot_port_subintf(IfIndex *out, uint16_t slot,
                                                               uint8_t port, uint16_t sub)
{
    const uint32_t sat = k_low_byte.get(slot + k_sat_slot_offset);
    return if_index_sat_phy_eth_port_init(out, static_cast<uint8_t>(sat), 0, port, sub);
}

uint32_t if_index_sat_phy_eth_port_init_from_slot_port(IfIndex *out, uint16_t slot, uint8_t port)
{
    return if_index_sat_phy_eth_port_init_from_slot_port_subintf(out, slot, port, 0);
}

uint32_t if_index_sat_phy_eth_fif_port_init(IfIndex *out, uint8_t module, uint8_t port,
                                            uint8_t index)
{
    return build(out, IF_INDEX_TYPE_SAT_PHY_ETH_FIF, uncut(k_sat_module, module),
                 uncut(k_sat_port, port), uncut(k_fif_index, index));
}

uint32_t if_index_overlay_init(IfIndex *out, uint8_t port_type, uint32_t port)
{
    return build(out, IF_INDEX_TYPE_OVERLAY, uncut(k_overlay_type, port_type),
                 limited(k_overlay_port, port, k_overlay_port_max));
}

uint32_t if_index_vl3_interface_init(IfIndex *out, uint8_t subtype, uint16_t slot, uint8_t port,
                                     uint16_t number)
{
    return build(out, IF_INDEX_TYPE_VL3, whole(k_vl3_subtype, subtype), whole(k_vl3_slot, slot),
                 whole(k_vl3_port, port), whole(k_vl3_interface, number));
}

uint32_t if_index_marn_interface_init(IfIndex *out, uint16_t ftag, uint16_t switch_id)
{
    return build(out, IF_INDEX_TYPE_MARN, limited(k_marn_ftag, ftag, 1023),
                 whole(k_marn_switch_id, switch_id));
}

uint32_t if_index_ruk_eth_init(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub)
{
    return build_ruk_eth(out, limited(k_ruk_eth_slot, slot, k_ruk_eth_slot_max), port, sub);
}

uint32_t if_index_ruk_eth_init_from_mod(IfIndex *out, uint16_t module, uint8_t port, uint16_t sub)
{
    // A module's highest number is one above the highest slot that the other constructors take.
    const part slot{module >= 3 && module <= 515, k_ruk_eth_slot.put(module)};
    return build_ruk_eth(out, slot, port, sub);
}

uint32_t if_index_ruk_eth_init_from_slot(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub)
{
    const part stored{slot >= 2 && slot <= k_ruk_eth_slot_max, k_ruk_eth_slot.put(slot + 1U)};
    return build_ruk_eth(out, stored, port, sub);
}

uint32_t if_index_mpls_sublayer_port_init(IfIndex *out, uint32_t label)
{
    // Judged before it is cut: 0x01000000 passes and builds label 0.
    return build(out, IF_INDEX_TYPE_MPLS_SUBLAYER, part{label != 0, k_mpls_label.put(label)});
}

uint32_t if_index_loopback_port_init(IfIndex *out, uint16_t number)
{
    return build(out, IF_INDEX_TYPE_LOOPBACK, limited(k_loopback_number, number, k_loopback_max));
}

IfIndex if_index_get_loopback_port(uint32_t number)
{
    return base_of(IF_INDEX_TYPE_LOOPBACK) | k_loopback_number.put(number);
}

IfIndex if_index_get_tunnel_range(uint32_t vdc, IfIndex *first, IfIndex *last)
{
    *first = base_of(IF_INDEX_TYPE_TUNNEL) | k_tunnel_vdc.put(vdc);
    *last = *first | k_tunnel_number.mask();
    return *first;
}

IfIndex if_index_get_overlay_range(uint32_t port_type, IfIndex *first, IfIndex *last)
{
    // 8 bits of the port type over a field of 5: a port type above 31 shows up in the type.
    *first = base_of(IF_INDEX_TYPE_OVERLAY) | k_overlay_type.put_uncut(k_low_byte.get(port_type));
    *last = *first | k_overlay_port.put(k_overlay_port_max);
    return *first;
}

// Readers of the types that have no slot: channels, tunnels and numbered interfaces.  The vfc and
// the satellite families have rules of their own and are in readers_vfc.cpp and readers_sat.cpp.
#include "ruk/if_index_read.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

constexpr type_set k_port_channel = accepts(IF_INDEX_TYPE_PORT_CHANNEL);
constexpr type_set k_eth_port_channel = accepts(IF_INDEX_TYPE_ETH_PORT_CHANNEL);
constexpr type_set k_vlan_type = accepts(IF_INDEX_TYPE_VLAN);
constexpr type_set k_tunnel = accepts(IF_INDEX_TYPE_TUNNEL);
constexpr type_set k_veth = accepts(IF_INDEX_TYPE_VETH);
constexpr type_set k_vif = accepts(IF_INDEX_TYPE_VIF);
constexpr type_set k_overlay = accepts(IF_INDEX_TYPE_OVERLAY);
constexpr type_set k_marn = accepts(IF_INDEX_TYPE_MARN);
// The type check never passes code 254, so there is no type that the loopback readers could accept.
constexpr type_set k_loopback = accepts();

bool is_eth_port_channel(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_ETH_PORT_CHANNEL);
}

} // namespace

uint32_t if_index_port_channel_get_channel_num(IfIndex value, uint16_t *channel)
{
    return is_eth_port_channel(value) ? if_index_eth_port_channel_get_channel_num(value, channel)
                                      : read(value, k_port_channel, to<k_pc_channel>(channel));
}

uint32_t if_index_port_channel_get_subtype(IfIndex value, uint8_t *subtype)
{
    return is_eth_port_channel(value) ? if_index_eth_port_channel_get_subtype(value, subtype)
                                      : read(value, k_port_channel, to<k_pc_subtype>(subtype));
}

uint32_t if_index_port_channel_get_subtype_arg(IfIndex value, uint16_t *arg)
{
    return is_eth_port_channel(value) ? if_index_eth_port_channel_get_subtype_arg(value, arg)
                                      : read(value, k_port_channel, to<k_pc_arg>(arg));
}

uint32_t if_index_port_channel_get_fields(IfIndex value, uint16_t *channel, uint8_t *subtype,
                                          uint16_t *arg)
{
    return is_eth_port_channel(value) ? read(value, k_eth_port_channel, to<k_epc_channel>(channel),
                                             to<k_pc_subtype>(subtype), to<k_epc_sub>(arg))
                                      : read(value, k_port_channel, to<k_pc_channel>(channel),
                                             to<k_pc_subtype>(subtype), to<k_pc_arg>(arg));
}

uint32_t if_index_eth_port_channel_get_channel_num(IfIndex value, uint16_t *channel)
{
    return read(value, k_eth_port_channel, to<k_epc_channel>(channel));
}

uint32_t if_index_eth_port_channel_get_subtype(IfIndex value, uint8_t *subtype)
{
    // Two bits out of the middle of the sub-interface.  They are the subtype of what
    // if_index_eth_port_channel_init_internal builds, so they stay readable.
    return read(value, k_eth_port_channel, to<k_pc_subtype>(subtype));
}

uint32_t if_index_eth_port_channel_get_subtype_arg(IfIndex value, uint16_t *arg)
{
    return read(value, k_eth_port_channel, to<k_epc_sub>(arg));
}

uint32_t if_index_eth_port_channel_get_fields(IfIndex value, uint16_t *channel, uint16_t *arg)
{
    return read(value, k_eth_port_channel, to<k_epc_channel>(channel), to<k_epc_sub>(arg));
}

uint32_t if_index_vlan_get_fields(IfIndex value, uint32_t *vdc, uint32_t *vlan)
{
    return read(value, k_vlan_type, to<k_vlan_vdc>(vdc), to<k_vlan>(vlan));
}

uint32_t if_index_vlan_get_vd(IfIndex value, uint32_t *vdc)
{
    return read(value, k_vlan_type, to<k_vlan_vdc>(vdc));
}

uint32_t if_index_vlan_get_vlan(IfIndex value, uint32_t *vlan)
{
    return read(value, k_vlan_type, to<k_vlan>(vlan));
}

uint32_t if_index_fcip_get_tunnel(IfIndex value, uint16_t *tunnel)
{
    return read(value, accepts(IF_INDEX_TYPE_FCIP), to<k_fc_tunnel>(tunnel));
}

uint32_t if_index_fcmpls_tnnl_get_tunnel(IfIndex value, uint16_t *tunnel)
{
    return read(value, accepts(IF_INDEX_TYPE_FCMPLS_TNNL), to<k_fc_tunnel>(tunnel));
}

uint32_t if_index_eth_inband_get_fields(IfIndex value, uint8_t *channel)
{
    return read(value, accepts(IF_INDEX_TYPE_ETH_INBAND, IF_INDEX_TYPE_ETH_INBAND_DIAG),
                to<k_inband_channel>(channel));
}

uint32_t if_index_tunnel_get_tunnel_num(IfIndex value, uint32_t *number)
{
    return read(value, k_tunnel, to<k_tunnel_number>(number));
}

uint32_t if_index_tunnel_get_tunnel_type(IfIndex value, uint8_t *tunnel_type)
{
    return read(value, k_tunnel, to<k_tunnel_type>(tunnel_type));
}

uint32_t if_index_tunnel_get_tunnel_fields(IfIndex value, uint8_t *vdc, uint8_t *tunnel_type,
                                           uint32_t *number)
{
    return read(value, k_tunnel, to<k_tunnel_vdc>(vdc), to<k_tunnel_type>(tunnel_type),
                to<k_tunnel_number>(number));
}

uint32_t if_index_veth_get_vport(IfIndex value, uint32_t *vport)
{
    return read(value, k_veth, to<k_veth_vport>(vport));
}

uint32_t if_index_veth_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_veth, to<k_veth_sub>(sub));
}

uint32_t if_index_veth_get_fields(IfIndex value, uint32_t *vport, uint16_t *sub)
{
    return read(value, k_veth, to<k_veth_vport>(vport), to<k_veth_sub>(sub));
}

uint32_t if_index_vif_get_vifindex(IfIndex value, uint32_t *index)
{
    return read(value, k_vif, to<k_vif_index>(index));
}

uint32_t if_index_server_interface_get_sif_num(IfIndex value, uint32_t *number)
{
    return is_of_type(value, IF_INDEX_TYPE_VETH)
               ? if_index_veth_get_vport(value, number)
               : if_index_server_interface_get_fields(value, number);
}

uint32_t if_index_server_interface_get_fields(IfIndex value, uint32_t *number)
{
    // No veth here, unlike in the function above.  Callers rely on both answers.
    return is_of_type(value, IF_INDEX_TYPE_VFC)
               ? read(value, accepts(IF_INDEX_TYPE_VFC), to<k_vfc_number>(number))
               : read(value, k_vif, to<k_vif_index>(number));
}

uint32_t if_index_overlay_get_port(IfIndex value, uint32_t *port)
{
    return read(value, k_overlay, to<k_overlay_port>(port));
}

uint32_t if_index_overlay_get_port_type(IfIndex value, uint8_t *port_type)
{
    return read(value, k_overlay, to<k_overlay_type>(port_type));
}

uint32_t if_index_overlay_get_overlay_fields(IfIndex value, uint32_t *port, uint8_t *port_type)
{
    return read(value, k_overlay, to<k_overlay_port>(port), to<k_overlay_type>(port_type));
}

uint32_t if_index_marn_get_fields(IfIndex value, uint16_t *ftag, uint16_t *switch_id)
{
    return read(value, k_marn, to<k_marn_ftag>(ftag), to<k_marn_switch_id>(switch_id));
}

uint32_t if_index_marn_get_ftag(IfIndex value, uint16_t *ftag)
{
    return read(value, k_marn, to<k_marn_ftag>(ftag));
}

uint32_t if_index_marn_get_switch_id(IfIndex value, uint16_t *switch_id)
{
    return read(value, k_marn, to<k_marn_switch_id>(switch_id));
}

uint32_t if_index_loopback_get_port(IfIndex value, uint16_t *number)
{
    return read(value, k_loopback, to<k_loopback_number>(number));
}

uint32_t if_index_loopback_get_fields(IfIndex value, uint16_t *number)
{
    return read(value, k_loopback, to<k_loopback_number>(number));
}

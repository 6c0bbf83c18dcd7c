// Operations that the two types of port-channel share.
#include "ruk/if_index_types.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

constexpr uint32_t k_max_channel_id = 4095;

// Where a port-channel has its sub-interface; anything that isn't an eth_port_channel counts as a
// port_channel.
bit_field sub_field(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_ETH_PORT_CHANNEL) ? k_epc_sub : k_pc_arg;
}

bool is_port_channel(IfIndex value)
{
    return accepts(IF_INDEX_TYPE_PORT_CHANNEL, IF_INDEX_TYPE_ETH_PORT_CHANNEL).has(type_of(value));
}

} // namespace

IfIndex if_index_port_channel_mainintf_from_subintf(IfIndex value)
{
    return is_port_channel(value) ? sub_field(value).clear(value) : 0;
}

IfIndex if_index_port_channel_subintf_from_mainintf(IfIndex value, uint32_t sub)
{
    return is_port_channel(value) ? value | sub_field(value).put_uncut(sub) : 0;
}

uint32_t if_index_port_channel_get_vlan_id(IfIndex value)
{
    return sub_field(value).get(value);
}

int32_t if_index_is_port_channel_sub_interface(IfIndex value)
{
    // The subtype is no condition for an eth_port_channel: its bits belong to the sub-interface.
    const bool is_plain =
        is_of_type(value, IF_INDEX_TYPE_ETH_PORT_CHANNEL) || k_pc_subtype.get(value) == k_pc_plain;
    return is_port_channel(value) && is_plain && sub_field(value).get(value) != 0;
}

uint32_t if_index_get_max_channel_id_for_ifindex(IfIndex value, uint16_t *max)
{
    const uint32_t error =
        check_type(value, accepts(IF_INDEX_TYPE_PORT_CHANNEL, IF_INDEX_TYPE_ETH_PORT_CHANNEL));
    if (error == IF_INDEX_OK) {
        // Also for a port_channel, whose field ends at 255.
        *max = k_max_channel_id;
    }
    return error;
}

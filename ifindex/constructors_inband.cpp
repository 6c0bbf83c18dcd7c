// Constructors and named values of the inband types and of the null interface.
#include "ruk/if_index_build.h"

#include "ifindex/build.h"
#include "ruk/if_index_types.h"

using namespace ifindex;

namespace
{

constexpr uint32_t k_sup_max = k_inband_linecard;
constexpr uint32_t k_queue_max = 3;
constexpr uint32_t k_queue_hi = 1;
constexpr uint32_t k_queue_lo = 2;
constexpr uint32_t k_queue_drop = 3;

constexpr IfIndex inband(uint32_t sup, uint32_t queue)
{
    return base_of(IF_INDEX_TYPE_INBAND) | k_inband_sup.put(sup) | k_inband_queue.put(queue);
}

constexpr IfIndex eth_inband(uint32_t channel)
{
    return base_of(IF_INDEX_TYPE_ETH_INBAND) | k_inband_channel.put(channel);
}

// The queue that a platform has for low priority.
uint32_t low_priority_queue()
{
    const bool has_one_queue = cli_is_platform_alder() != 0 || cli_is_platform_larch() != 0;
    return has_one_queue ? k_queue_hi : k_queue_lo;
}

} // namespace

uint32_t if_index_inband_port_init(IfIndex *out, uint8_t sup, uint8_t queue)
{
    const uint32_t stored = queue == k_queue_lo ? low_priority_queue() : queue;
    return build(out, IF_INDEX_TYPE_INBAND, limited(k_inband_sup, sup, k_sup_max),
                 limited(k_inband_queue, stored, k_queue_max));
}

uint32_t if_index_inband_linecard_port_init(IfIndex *out, uint8_t queue, uint16_t slot)
{
    return build(out, IF_INDEX_TYPE_INBAND, kept(k_inband_sup, k_inband_linecard),
                 limited(k_inband_queue, queue, k_queue_max), uncut(k_inband_linecard_slot, slot));
}

uint32_t if_index_eth_inband_port_init(IfIndex *out, uint8_t channel)
{
    if (channel == k_inband_channel_diag) {
        return if_index_eth_inband_diag_port_init(out);
    }
    return build(out, IF_INDEX_TYPE_ETH_INBAND,
                 limited(k_inband_channel, channel, k_inband_channel_diag));
}

uint32_t if_index_eth_inband_diag_port_init(IfIndex *out)
{
    return build(out, IF_INDEX_TYPE_ETH_INBAND_DIAG, kept(k_inband_channel, k_inband_channel_diag));
}

uint32_t if_index_null_interface_init(IfIndex *out)
{
    return build(out, IF_INDEX_TYPE_NULL_INTERFACE);
}

IfIndex if_index_get_null_interface(void)
{
    return k_null_interface;
}

IfIndex if_index_inband_get_remote_sup(void)
{
    return inband(3, 0);
}

IfIndex if_index_inband_get_local_sup(void)
{
    return inband(2, 0);
}

IfIndex if_index_inband_get_active_sup_bit_bucket(void)
{
    return inband(1, k_queue_drop);
}

IfIndex if_index_inband_get_active_sup_priority_hi(void)
{
    return inband(1, k_queue_hi);
}

IfIndex if_index_inband_get_active_sup_priority_lo(void)
{
    return inband(1, low_priority_queue());
}

IfIndex if_index_inband_linecard_get_priority_hi(uint16_t slot)
{
    IfIndex value = 0;
    if_index_inband_linecard_port_init(&value, k_queue_hi, slot);
    return value;
}

IfIndex if_index_eth_inband_get_priority_hi(void)
{
    return eth_inband(1);
}

IfIndex if_index_eth_inband_get_priority_lo(void)
{
    return eth_inband(2);
}

IfIndex if_index_eth_inband_get_port_security(void)
{
    return eth_inband(3);
}

IfIndex if_index_eth_inband_get_mcast(void)
{
    return eth_inband(5);
}

IfIndex if_index_eth_inband_get_quill(void)
{
    return eth_inband(6);
}

IfIndex if_index_eth_inband_get_pong(void)
{
    return eth_inband(7);
}

IfIndex if_index_eth_inband_get_qinq(void)
{
    return eth_inband(8);
}

IfIndex if_index_eth_inband_get_hobb(void)
{
    return eth_inband(9);
}

IfIndex if_index_eth_inband_get_peer_link_gateway(void)
{
    return eth_inband(10);
}

IfIndex if_index_eth_inband_get_glean_fast_path(void)
{
    return eth_inband(11);
}

IfIndex if_index_eth_inband_get_lisp_copy(void)
{
    return eth_inband(12);
}

IfIndex if_index_eth_inband_get_sup_non_trusted(void)
{
    return eth_inband(31);
}

// The registry of types: type check, wildcards, validity, the walk from type to type, and what can
// be asked or done without looking at coordinates.
#include "ruk/if_index_types.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

// One bit for each code from 0 on: all up to 38 but 3, which is no kind, and lveth.  Code 0 counts
// as valid although the type check rejects it; the walk over all types starts there.
constexpr uint64_t k_valid_types = 0x7FF7FFFFF7;

} // namespace

uint32_t if_index_get_type(IfIndex value, uint8_t *type)
{
    *type = static_cast<uint8_t>(type_of(value));
    return is_known_type(*type) ? IF_INDEX_OK : IF_INDEX_UNKNOWN_TYPE;
}

IfIndex if_index_get_if_index_all_for_type(uint32_t type)
{
    const uint32_t code = k_low_byte.get(type);
    const bool has_wildcard = is_known_type(code) && code <= IF_INDEX_TYPE_MPLS_SUBLAYER;
    return has_wildcard || code == IF_INDEX_TYPE_LOOPBACK ? wildcard_of(code) : 0;
}

int32_t if_index_is_type_valid_in_current_release(uint32_t type)
{
    return type_set{k_valid_types}.has(k_low_byte.get(type)) ? 1 : 0;
}

uint32_t if_index_get_next_type(uint8_t *type)
{
    while (*type < IF_INDEX_TYPE_LAST_RESERVED) {
        ++*type;
        if (if_index_is_type_valid_in_current_release(*type) != 0) {
            return IF_INDEX_OK;
        }
    }
    return IF_INDEX_NO_NEXT_TYPE;
}

int32_t if_index_is_satellite_interface(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_SAT_PHY_ETH);
}

int32_t if_index_is_tunnel_intf(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_TUNNEL);
}

int32_t if_index_is_port_channel_intf(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_PORT_CHANNEL);
}

int32_t if_index_is_eth_port_channel_intf(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_ETH_PORT_CHANNEL);
}

int32_t if_index_is_overlay_intf(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_OVERLAY);
}

int32_t if_index_is_eth_sup_inband(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_ETH_INBAND);
}

int32_t if_index_is_eth_sup_inband_diag(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_ETH_INBAND_DIAG);
}

int32_t if_index_is_linecard_inband(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_INBAND) && k_inband_sup.get(value) == k_inband_linecard;
}

int32_t if_index_is_valid_vlan_id(int32_t vlan)
{
    return vlan >= k_vlan_min && vlan <= k_vlan_max;
}

int32_t if_index_is_virtual_type(uint8_t type)
{
    return accepts(IF_INDEX_TYPE_NALP_VXE, IF_INDEX_TYPE_ZEFF_VXE).has(type);
}

uint32_t if_index_is_virtual_interface(IfIndex value, uint32_t *is_virtual)
{
    uint8_t type = 0;
    // Success for an unknown type too: callers preset the answer, the code tells them nothing.
    if (if_index_get_type(value, &type) == IF_INDEX_OK) {
        *is_virtual = static_cast<uint32_t>(if_index_is_virtual_type(type));
    }
    return IF_INDEX_OK;
}

int32_t if_index_compare(IfIndex a, IfIndex b)
{
    return static_cast<int32_t>(a - b);
}

IfIndex if_index_vlan_port_convert_to_vdc(IfIndex value, uint32_t vdc)
{
    // Not cut to the field: a context above 255 has always shown up in the type.
    return k_vlan_vdc.clear(value) | k_vlan_vdc.put_uncut(vdc);
}

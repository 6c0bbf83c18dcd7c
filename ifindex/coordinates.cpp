// Slot, port and sub-interface of a value of any type, and the way from a sub-interface to its main
// interface and back.  Where these disagree with a type's own readers, both answers are relied on.
#include "ruk/if_index_types.h"

#include <array>

#include "ifindex/access.h"
#include "ruk/if_index_read.h"

using namespace ifindex;

namespace
{

constexpr bit_field k_none{0, 0};

// Where a type has its slot, port and sub-interface.  A type that isn't here, or has k_none, lacks
// them, or is odd and handled in the functions below.
struct coordinates_row {
    if_index_type type;
    bit_field slot;
    bit_field port; // cut to 8 bits where the field is wider
    bit_field sub;
};

constexpr coordinates_row k_coordinates_of[] = {
    {IF_INDEX_TYPE_PHY_FC, k_phy_slot, k_phy_port, k_phy_sub},
    {IF_INDEX_TYPE_PHY_ETH, k_phy_slot, k_phy_port, k_phy_sub},
    {IF_INDEX_TYPE_PORT_CHANNEL, k_none, k_none, k_pc_arg},
    {IF_INDEX_TYPE_MGMT_SUP, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_INBAND, k_inband_sup, k_inband_queue, k_none},
    {IF_INDEX_TYPE_EOBC, k_phy_slot, k_none, k_none},
    {IF_INDEX_TYPE_VSAN, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_ISCSI, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_UMBRA, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_XLPORT, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_TK, k_phy_slot, k_low_byte, k_none},
    {IF_INDEX_TYPE_KIRO, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_DORSA, k_phy_slot, k_dorsa_port, k_none},
    {IF_INDEX_TYPE_ETH_INBAND, k_none, k_inband_channel, k_none},
    {IF_INDEX_TYPE_ETH_PORT_CHANNEL, k_none, k_none, k_epc_sub},
    {IF_INDEX_TYPE_TUNNEL, k_none, k_low_byte, k_none},
    {IF_INDEX_TYPE_ETH_INBAND_DIAG, k_none, k_inband_channel, k_none},
    {IF_INDEX_TYPE_PHY_ETHERNET, k_phy_slot, k_phy_port, k_phy_sub},
    {IF_INDEX_TYPE_LVETH, k_none, k_none, k_lveth_sub.bits},
    {IF_INDEX_TYPE_VETH, k_none, k_none, k_veth_sub},
    {IF_INDEX_TYPE_SAT_PHY_ETH, k_none, k_sat_port, k_sat_sub},
    {IF_INDEX_TYPE_PEMU, k_phy_slot, k_phy_port, k_none},
    {IF_INDEX_TYPE_OVERLAY, k_none, k_low_byte, k_none},
    {IF_INDEX_TYPE_VL3, k_vl3_slot, k_vl3_port, k_none},
    {IF_INDEX_TYPE_RUK_ETH, k_ruk_eth_slot, k_ruk_eth_port, k_ruk_eth_sub},
    {IF_INDEX_TYPE_MPLS_SUBLAYER, k_none, k_low_byte, k_none},
};

using coordinate = bit_field coordinates_row::*;

// The same rows, each at its type code; the codes in between lack everything.
constexpr auto k_rows_by_type = [] {
    std::array<coordinates_row, 64> rows{};
    for (const coordinates_row &row : k_coordinates_of) {
        rows[row.type] = row;
    }
    return rows;
}();

bit_field field_of(uint32_t type, coordinate which)
{
    return type < k_rows_by_type.size() ? k_rows_by_type[type].*which : k_none;
}

template <typename Number> uint32_t store(Number *out, uint32_t number)
{
    *out = static_cast<Number>(number);
    return IF_INDEX_OK;
}

// The rule of all types that are not odd.
template <typename Number>
uint32_t store_coordinate(IfIndex value, uint32_t type, coordinate which, Number *out)
{
    const bit_field field = field_of(type, which);
    return field.width == 0 ? uint32_t{IF_INDEX_WRONG_TYPE} : store(out, field.get(value));
}

// Of the port-channels only a member has a slot and a port.
uint32_t store_of_member(IfIndex value, bit_field field, auto *out)
{
    return k_pc_subtype.get(value) == k_pc_member ? store(out, field.get(value))
                                                  : uint32_t{IF_INDEX_WRONG_TYPE};
}

uint32_t store_vfc_port(IfIndex value, uint8_t *port)
{
    switch (k_vfc_subtype.get(value)) {
    case k_vfc_on_slot_port:
        return store(port, k_vfc_port.get(value));
    case k_vfc_on_satellite:
        // One more than the reader of this subtype gives: counted from one in this place only.
        return store(port, k_hobb_port.get(value) + 1);
    default:
        return IF_INDEX_WRONG_TYPE;
    }
}

} // namespace

uint32_t if_index_get_slot(IfIndex value, uint16_t *slot)
{
    uint8_t type = 0;
    if (const uint32_t error = if_index_get_type(value, &type); error != IF_INDEX_OK) {
        return error;
    }
    switch (type) {
    case IF_INDEX_TYPE_INBAND:
        if (if_index_is_linecard_inband(value) != 0) {
            return store(slot, k_inband_linecard_slot.get(value));
        }
        return store_coordinate(value, type, &coordinates_row::slot, slot);
    case IF_INDEX_TYPE_PORT_CHANNEL:
    case IF_INDEX_TYPE_MARN: // has no such subtype, but was always read by the port-channel's rule
        return store_of_member(value, k_pc_member_slot, slot);
    case IF_INDEX_TYPE_ETH_INBAND:
    case IF_INDEX_TYPE_ETH_INBAND_DIAG:
        // Success without a slot: an inband channel is no error here, callers preset their slot.
        return IF_INDEX_OK;
    case IF_INDEX_TYPE_LVETH:
        return store(slot, k_lveth_slot.get(value));
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return if_index_sat_get_slot(value, slot);
    default:
        return store_coordinate(value, type, &coordinates_row::slot, slot);
    }
}

uint32_t if_index_get_port(IfIndex value, uint8_t *port)
{
    uint8_t type = 0;
    if (const uint32_t error = if_index_get_type(value, &type); error != IF_INDEX_OK) {
        return error;
    }
    switch (type) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return store_of_member(value, k_pc_member_port, port);
    case IF_INDEX_TYPE_EOBC:
        return store(port, 0); // whatever the port bits say; if_index_eobc_get_fields gives those
    case IF_INDEX_TYPE_VFC:
        return store_vfc_port(value, port);
    default:
        return store_coordinate(value, type, &coordinates_row::port, port);
    }
}

uint32_t if_index_get_sub_intf(IfIndex value, uint16_t *sub)
{
    uint8_t type = 0;
    if (const uint32_t error = if_index_get_type(value, &type); error != IF_INDEX_OK) {
        return error;
    }
    switch (type) {
    case IF_INDEX_TYPE_LVETH:
        return store(sub, k_lveth_sub.get(value));
    case IF_INDEX_TYPE_MARN:
        return store(sub, 0);
    default:
        return store_coordinate(value, type, &coordinates_row::sub, sub);
    }
}

int32_t if_index_is_sub_intf(IfIndex value)
{
    uint16_t sub = 0;
    return if_index_get_sub_intf(value, &sub) == IF_INDEX_OK && sub != 0;
}

IfIndex if_index_get_mainintf_from_subintf(IfIndex value)
{
    const bit_field sub = field_of(type_of(value), &coordinates_row::sub);
    return sub.width == 0 ? 0 : sub.clear(value);
}

IfIndex if_index_get_subintf_from_mainintf(IfIndex main, uint32_t sub)
{
    // Not lveth, veth and ruk_eth, which the opposite direction handles: callers rely on the 0.
    constexpr type_set handled = accepts(IF_INDEX_TYPE_PHY_FC, IF_INDEX_TYPE_PHY_ETH,
                                         IF_INDEX_TYPE_PHY_ETHERNET, IF_INDEX_TYPE_PORT_CHANNEL,
                                         IF_INDEX_TYPE_ETH_PORT_CHANNEL, IF_INDEX_TYPE_SAT_PHY_ETH);
    const uint32_t type = type_of(main);
    return handled.has(type) ? main | field_of(type, &coordinates_row::sub).put(sub) : 0;
}

IfIndex if_index_phy_eth_get_mainintf_from_subintf(IfIndex value)
{
    constexpr type_set handled = accepts(IF_INDEX_TYPE_PHY_ETH, IF_INDEX_TYPE_PHY_ETHERNET);
    return handled.has(type_of(value)) ? k_phy_sub.clear(value) : 0;
}

IfIndex if_index_sat_phy_eth_get_mainintf_from_subintf(IfIndex value)
{
    return is_of_type(value, IF_INDEX_TYPE_SAT_PHY_ETH) ? k_sat_sub.clear(value) : 0;
}

// Ranges of the types with two stepping fields, or with other rules of their own: port-channels,
// veth, vfc and satellite ports.  As in the table of ranges.cpp, what a constructor says to a
// number that is within the range is not passed on.
#include <cstdint>

#include "ifindex/access.h"
#include "ifindex/ranges.h"
#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"
#include "ruk/if_index_read.h"

namespace ifindex
{

namespace
{

// Numbers of 16 and of 8 bits wrap before they are compared with the last one.
uint16_t step16(uint32_t number, uint32_t by)
{
    return static_cast<uint16_t>(number + by);
}

uint8_t step8(uint32_t number, uint32_t by)
{
    return static_cast<uint8_t>(number + by);
}

// A port-channel of either type taken apart.  The subtype of an eth_port_channel, which would be a
// part of its sub-interface, plays no role here and is 0.
struct channel_fields {
    uint16_t channel = 0;
    uint8_t subtype = 0;
    uint16_t sub = 0;

    explicit channel_fields(IfIndex value)
    {
        if_index_port_channel_get_fields(value, &channel, &subtype, &sub);
        if (is_of_type(value, IF_INDEX_TYPE_ETH_PORT_CHANNEL)) {
            subtype = k_pc_plain;
        }
    }

    // Whether a step from here goes to the next sub-interface instead of to the next channel.
    bool steps_sub() const { return subtype == k_pc_plain && sub != 0; }
};

bool is_channel_range(const channel_fields &first, const channel_fields &last,
                      const channel_fields &from)
{
    if (first.subtype != last.subtype || first.sub > last.sub || first.channel > last.channel) {
        return false;
    }
    return from.steps_sub() ? first.channel == last.channel && first.channel == from.channel
                            : last.sub == 0;
}

void build_channel(IfIndex *out, uint32_t type, const channel_fields &fields)
{
    if (type == IF_INDEX_TYPE_ETH_PORT_CHANNEL) {
        if_index_eth_port_channel_init_subintf(out, fields.channel, fields.sub);
    } else {
        if_index_port_channel_init_internal(out, fields.channel, fields.subtype, fields.sub);
    }
}

// The highest number that a vfc range may have.
constexpr uint32_t k_vfc_range_max = 61439;

bool is_vfc_range(uint32_t first, uint32_t last)
{
    return first <= last && last <= k_vfc_range_max;
}

uint32_t step_vfc_number(const range_step &step, IfIndex *out)
{
    const uint32_t last = k_vfc_number.get(step.last);
    const uint16_t number = step16(k_vfc_number.get(step.from), step.by);
    if (!is_vfc_range(k_vfc_number.get(step.first), last) || number > last) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    if_index_fc_server_interface_init(out, number);
    return IF_INDEX_OK;
}

uint32_t step_vfc_channel(const range_step &step, IfIndex *out)
{
    uint8_t subtype = 0;
    uint16_t first = 0;
    uint16_t last = 0;
    uint16_t from = 0;
    if (if_index_vfc_port_channel_get_fields(step.first, &subtype, &first) != IF_INDEX_OK ||
        if_index_vfc_port_channel_get_fields(step.last, &subtype, &last) != IF_INDEX_OK ||
        if_index_vfc_port_channel_get_fields(step.from, &subtype, &from) != IF_INDEX_OK) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    const uint16_t channel = step16(from, step.by);
    if (channel > last) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    if_index_vfc_port_channel_cli_init(out, step16(channel, 1));
    return IF_INDEX_OK;
}

uint32_t lookup_vfc_port(const range_step &step, IfIndex *out)
{
    uint8_t subtype = 0;
    uint16_t slot = 0;
    uint16_t last_slot = 0;
    uint8_t port = 0;
    uint8_t last_port = 0;
    if (if_index_vfc_slot_port_get_fields(step.first, &subtype, &slot, &port) != IF_INDEX_OK ||
        if_index_vfc_slot_port_get_fields(step.last, &subtype, &last_slot, &last_port) !=
            IF_INDEX_OK) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    const uint8_t new_port = step8(port, step.by);
    if (slot != last_slot || new_port > last_port) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    if_index_vfc_slot_port_init(out, slot, new_port);
    return IF_INDEX_OK;
}

// Satellite 255 has no ranges, and neither have ports of a module other than 0.
bool is_sat_range(IfIndex first, IfIndex last, IfIndex from)
{
    constexpr uint32_t no_ranges = 255;
    const uint32_t sat = k_sat.get(first);
    return sat == k_sat.get(last) && sat == k_sat.get(from) && sat != no_ranges &&
           k_sat_module.get(first) == 0 && k_sat_module.get(last) == 0 &&
           k_sat_port.get(first) <= k_sat_port.get(last);
}

void build_sat_port(IfIndex *out, IfIndex first, uint32_t port, uint32_t sub)
{
    if_index_sat_phy_eth_port_init(out, static_cast<uint8_t>(k_sat.get(first)), 0,
                                   static_cast<uint8_t>(port), static_cast<uint16_t>(sub));
}

} // namespace

uint32_t step_port_channel(const range_step &step, IfIndex *out)
{
    const channel_fields last(step.last);
    channel_fields member(step.from);
    if (!is_channel_range(channel_fields(step.first), last, member)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    uint16_t &number = member.steps_sub() ? member.sub : member.channel;
    const uint16_t last_number = member.steps_sub() ? last.sub : last.channel;
    number = step16(number, step.by);
    if (number > last_number) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    build_channel(out, type_of(step.from), member);
    return IF_INDEX_OK;
}

uint32_t count_port_channel(IfIndex first, IfIndex last, uint32_t *count)
{
    const channel_fields from(first);
    const channel_fields to(last);
    if (!is_channel_range(from, to, from)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return from.steps_sub() ? count_numbers(from.sub, to.sub, count)
                            : count_numbers(from.channel, to.channel, count);
}

uint32_t lookup_veth(const range_step &step, IfIndex *out)
{
    // Not compared with the last member, and success even for a port that can't be built: callers
    // rely on it.
    const uint32_t one_based = k_veth_vport.get(step.first) + step.by + 1;
    if_index_veth_cli_init(out, static_cast<int32_t>(one_based), 0);
    return IF_INDEX_OK;
}

uint32_t next_veth(const range_step &step, IfIndex *out)
{
    constexpr uint32_t last_stepping_sub = 14; // 15 goes on with the next port, as 0 does
    const uint32_t vport = k_veth_vport.get(step.from);
    const uint32_t sub = k_veth_sub.get(step.from);
    if (sub == 0 || sub > last_stepping_sub) {
        if (vport + step.by > k_veth_vport.get(step.last)) {
            return IF_INDEX_BAD_ARGUMENT;
        }
        if_index_veth_init(out, vport + step.by, 0);
        return IF_INDEX_OK;
    }
    if (sub + step.by > k_veth_sub.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    if_index_veth_init(out, vport, static_cast<uint16_t>(sub + step.by));
    return IF_INDEX_OK;
}

uint32_t count_veth(IfIndex first, IfIndex last, uint32_t *count)
{
    return count_numbers(k_veth_vport.get(first), k_veth_vport.get(last), count);
}

uint32_t lookup_vfc(const range_step &step, IfIndex *out)
{
    switch (k_vfc_subtype.get(step.first)) {
    case k_vfc_plain:
        return step_vfc_number(step, out);
    case k_vfc_on_port_channel:
        return step_vfc_channel(step, out);
    case k_vfc_on_slot_port:
        return lookup_vfc_port(step, out);
    default:
        return IF_INDEX_OK; // without a member: callers rely on the code
    }
}

uint32_t next_vfc(const range_step &step, IfIndex *out)
{
    switch (k_vfc_subtype.get(step.first)) {
    case k_vfc_plain:
    case k_vfc_on_slot_port: // stepped as a number, unlike in a lookup, and comes out as a plain
                             // vfc
        return step_vfc_number(step, out);
    case k_vfc_on_port_channel:
        return step_vfc_channel(step, out);
    default:
        return IF_INDEX_OK; // as in a lookup
    }
}

uint32_t count_vfc(IfIndex first, IfIndex last, uint32_t *count)
{
    // By the low 16 bits whatever the subtypes: one port of a vfc on a slot and port counts as 256.
    const uint32_t from = k_vfc_number.get(first);
    const uint32_t to = k_vfc_number.get(last);
    return is_vfc_range(from, to) ? count_numbers(from, to, count)
                                  : uint32_t{IF_INDEX_BAD_ARGUMENT};
}

uint32_t lookup_sat_phy_eth(const range_step &step, IfIndex *out)
{
    const uint8_t port = step8(k_sat_port.get(step.from), step.by);
    if (!is_sat_range(step.first, step.last, step.from) || port > k_sat_port.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    build_sat_port(out, step.first, port, 0);
    return IF_INDEX_OK;
}

uint32_t next_sat_phy_eth(const range_step &step, IfIndex *out)
{
    if (!is_sat_range(step.first, step.last, step.from) ||
        k_sat_sub.get(step.first) > k_sat_sub.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    const uint32_t port = k_sat_port.get(step.from);
    const uint32_t sub = k_sat_sub.get(step.from);
    if (sub == 0) {
        return lookup_sat_phy_eth(step, out);
    }
    if (sub + step.by > k_sat_sub.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    build_sat_port(out, step.first, port, sub + step.by);
    return IF_INDEX_OK;
}

uint32_t count_sat_phy_eth(IfIndex first, IfIndex last, uint32_t *count)
{
    return is_sat_range(first, last, first)
               ? count_numbers(k_sat_port.get(first), k_sat_port.get(last), count)
               : uint32_t{IF_INDEX_BAD_ARGUMENT};
}

} // namespace ifindex

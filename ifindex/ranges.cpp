// Ranges: counting their members, the member at an offset, the member after another one.
//
// A range steps through one field of its type.  Where that is all there is to it the type is a row
// of k_rules; the types with two stepping fields or other rules of their own are in ranges_odd.cpp.
#include "ruk/if_index_range.h"

#include <algorithm>
#include <iterator>

#include "ifindex/access.h"
#include "ifindex/ranges.h"
#include "ruk/if_index_build.h"

using namespace ifindex;

namespace
{

enum range_use : bool { ALL_USES, NEXT_ONLY };

// What the members of a range have in common.
struct range_scope {
    bit_field same; // equal in all members
    uint32_t same_max;
    bool ordered; // whether first must not be above last where only a step is judged, too
};

// The field that is stepped through.
struct range_steps {
    bit_field number;
    uint32_t width_mask; // numbers wrap at this width before they are compared with the last one
};

// How a type with one stepping field steps.
struct range_rule {
    if_index_type type;
    range_use use; // next-only types have neither a count nor offsets
    range_scope scope;
    range_steps steps;
    // Builds the member with the new number, taking what else it needs from the step.
    uint32_t (*build)(IfIndex *out, const range_step &step, uint32_t number);
};

constexpr bit_field k_nothing{0, 0}; // 0 in all values
constexpr range_scope k_slot{k_phy_slot, 31, false};
// One slot less, for two types only: kept, callers rely on the refusal of slot 31.
constexpr range_scope k_slot_to_30{k_phy_slot, 30, false};
constexpr range_scope k_module{k_ruk_eth_slot, k_ruk_eth_slot_max, false};
constexpr range_scope k_whole_type{k_nothing, 0, true};

constexpr uint32_t k_width_8 = 0xFF;
constexpr uint32_t k_width_16 = 0xFFFF;
constexpr uint32_t k_width_32 = 0xFFFFFFFF;

constexpr range_steps k_ports{k_phy_port, k_width_8};
constexpr range_steps k_tk_ports{k_tk_port, k_width_16};
constexpr range_steps k_ruk_ports{k_ruk_eth_port, k_width_8};
constexpr range_steps k_fc_tunnels{k_fc_tunnel, k_width_16};
constexpr range_steps k_tunnels{k_tunnel_number, k_width_16};
constexpr range_steps k_vlans{k_vlan, k_width_32};
constexpr range_steps k_overlays{k_overlay_port, k_width_16};
constexpr range_steps k_vifs{k_vif_index, k_width_32};

uint16_t slot_of(const range_step &step)
{
    return static_cast<uint16_t>(k_phy_slot.get(step.first));
}

// Builds a port of the first member's slot with a constructor that takes no sub-interface.
template <uint32_t (*Init)(IfIndex *, uint16_t, uint8_t)>
uint32_t build_port(IfIndex *out, const range_step &step, uint32_t number)
{
    return Init(out, slot_of(step), static_cast<uint8_t>(number));
}

// The same with one that takes a sub-interface, which is 0.
template <uint32_t (*Init)(IfIndex *, uint16_t, uint8_t, uint16_t)>
uint32_t build_main_port(IfIndex *out, const range_step &step, uint32_t number)
{
    return Init(out, slot_of(step), static_cast<uint8_t>(number), 0);
}

template <uint32_t (*Init)(IfIndex *, uint16_t)>
uint32_t build_fc_tunnel(IfIndex *out, const range_step &, uint32_t number)
{
    return Init(out, static_cast<uint16_t>(number));
}

uint32_t build_ruk_eth(IfIndex *out, const range_step &step, uint32_t number)
{
    const auto slot = static_cast<uint16_t>(k_ruk_eth_slot.get(step.first));
    return if_index_ruk_eth_init(out, slot, static_cast<uint8_t>(number), 0);
}

uint32_t build_tk(IfIndex *out, const range_step &step, uint32_t number)
{
    const auto dpp = static_cast<uint8_t>(k_tk_dpp.get(step.first));
    return if_index_tk_port_init(out, slot_of(step), dpp, static_cast<uint16_t>(number));
}

uint32_t build_tunnel(IfIndex *out, const range_step &step, uint32_t number)
{
    return if_index_tunnel_init(out, k_tunnel_vdc.get(step.from), number);
}

uint32_t build_vlan(IfIndex *out, const range_step &step, uint32_t number)
{
    return if_index_vlan_port_init(out, k_vlan_vdc.get(step.first), number);
}

uint32_t build_overlay(IfIndex *out, const range_step &step, uint32_t number)
{
    const auto port_type = static_cast<uint8_t>(k_overlay_type.get(step.first));
    return if_index_overlay_init(out, port_type, number);
}

uint32_t build_vif(IfIndex *out, const range_step &, uint32_t number)
{
    return if_index_vif_init(out, number);
}

constexpr auto build_phy_fc = build_main_port<if_index_phy_fc_port_init>;
constexpr auto build_phy_eth = build_main_port<if_index_phy_eth_port_init>;
constexpr auto build_phy_ethernet = build_main_port<if_index_phy_ethernet_init>;
constexpr auto build_iscsi = build_port<if_index_iscsi_port_init>;
constexpr auto build_kiro = build_port<if_index_kiro_port_init>;
constexpr auto build_pemu = build_port<if_index_pemu_port_init>;
constexpr auto build_umbra = build_port<if_index_umbra_port_init>;
constexpr auto build_fcip = build_fc_tunnel<if_index_fcip_port_init>;
constexpr auto build_fcmpls = build_fc_tunnel<if_index_fcmpls_tnnl_init>;

constexpr range_rule k_rules[] = {
    {IF_INDEX_TYPE_PHY_FC, ALL_USES, k_slot, k_ports, build_phy_fc},
    {IF_INDEX_TYPE_PHY_ETH, ALL_USES, k_slot, k_ports, build_phy_eth},
    {IF_INDEX_TYPE_VLAN, ALL_USES, k_whole_type, k_vlans, build_vlan},
    {IF_INDEX_TYPE_FCIP, ALL_USES, k_whole_type, k_fc_tunnels, build_fcip},
    {IF_INDEX_TYPE_ISCSI, ALL_USES, k_slot, k_ports, build_iscsi},
    {IF_INDEX_TYPE_UMBRA, NEXT_ONLY, k_slot_to_30, k_ports, build_umbra},
    {IF_INDEX_TYPE_TK, ALL_USES, k_slot_to_30, k_tk_ports, build_tk},
    {IF_INDEX_TYPE_FCMPLS_TNNL, ALL_USES, k_whole_type, k_fc_tunnels, build_fcmpls},
    {IF_INDEX_TYPE_KIRO, NEXT_ONLY, k_slot, k_ports, build_kiro},
    {IF_INDEX_TYPE_TUNNEL, NEXT_ONLY, k_whole_type, k_tunnels, build_tunnel},
    {IF_INDEX_TYPE_PHY_ETHERNET, ALL_USES, k_slot, k_ports, build_phy_ethernet},
    {IF_INDEX_TYPE_VIF, ALL_USES, k_whole_type, k_vifs, build_vif},
    {IF_INDEX_TYPE_PEMU, NEXT_ONLY, k_slot, k_ports, build_pemu},
    {IF_INDEX_TYPE_OVERLAY, ALL_USES, k_whole_type, k_overlays, build_overlay},
    {IF_INDEX_TYPE_RUK_ETH, ALL_USES, k_module, k_ruk_ports, build_ruk_eth},
};

// The rule of a type, or null.
const range_rule *rule_of(IfIndex value)
{
    const auto *rule =
        std::find_if(std::begin(k_rules), std::end(k_rules),
                     [value](const range_rule &r) { return is_of_type(value, r.type); });
    return rule == std::end(k_rules) ? nullptr : rule;
}

bool is_one_range(const range_rule &rule, const range_step &step)
{
    const range_scope &scope = rule.scope;
    const bit_field number = rule.steps.number;
    const uint32_t same = scope.same.get(step.first);
    return same == scope.same.get(step.last) && same == scope.same.get(step.from) &&
           same <= scope.same_max &&
           (!scope.ordered || number.get(step.first) <= number.get(step.last));
}

uint32_t step_by_rule(const range_rule &rule, const range_step &step, IfIndex *out)
{
    const range_steps &steps = rule.steps;
    const uint32_t number = (steps.number.get(step.from) + step.by) & steps.width_mask;
    if (!is_one_range(rule, step) || number > steps.number.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    // What the constructor says is not passed on: a number that is in the range but above the
    // constructor's limit is a success that stores nothing.  Callers rely on it.
    rule.build(out, step, number);
    return IF_INDEX_OK;
}

uint32_t count_by_rule(const range_rule &rule, IfIndex first, IfIndex last, uint32_t *count)
{
    if (!is_one_range(rule, {first, last, first, 0})) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    const bit_field number = rule.steps.number;
    return count_numbers(number.get(first), number.get(last), count);
}

// What all operations begin with: every value of a known type, and of the same one.
uint32_t check_types(IfIndex first, IfIndex last, IfIndex from)
{
    if (!is_known_type(type_of(first)) || !is_known_type(type_of(last)) ||
        !is_known_type(type_of(from))) {
        return IF_INDEX_UNKNOWN_TYPE;
    }
    const bool same = type_of(first) == type_of(last) && type_of(first) == type_of(from);
    return same ? IF_INDEX_OK : IF_INDEX_BAD_ARGUMENT;
}

uint32_t lookup_regular(const range_step &step, IfIndex *out)
{
    const range_rule *rule = rule_of(step.first);
    return rule == nullptr || rule->use == NEXT_ONLY ? uint32_t{IF_INDEX_BAD_ARGUMENT}
                                                     : step_by_rule(*rule, step, out);
}

uint32_t next_regular(const range_step &step, IfIndex *out)
{
    const range_rule *rule = rule_of(step.first);
    return rule == nullptr ? uint32_t{IF_INDEX_BAD_ARGUMENT} : step_by_rule(*rule, step, out);
}

uint32_t count_regular(IfIndex first, IfIndex last, uint32_t *count)
{
    const range_rule *rule = rule_of(first);
    return rule == nullptr || rule->use == NEXT_ONLY ? uint32_t{IF_INDEX_BAD_ARGUMENT}
                                                     : count_by_rule(*rule, first, last, count);
}

// A phy_ethernet steps through its ports, but from a sub-interface through those of its port.  Its
// lookups and counts know ports only.
uint32_t next_phy_ethernet(const range_step &step, IfIndex *out)
{
    if (k_phy_sub.get(step.first) > k_phy_sub.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    const range_rule &rule = *rule_of(step.from);
    if (k_phy_sub.get(step.from) == 0) {
        return step_by_rule(rule, step, out);
    }
    const uint32_t sub = k_phy_sub.get(step.from) + step.by;
    if (!is_one_range(rule, step) || sub > k_phy_sub.get(step.last)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    if_index_phy_ethernet_init(out, slot_of(step), static_cast<uint8_t>(k_phy_port.get(step.from)),
                               static_cast<uint16_t>(sub));
    return IF_INDEX_OK;
}

} // namespace

uint32_t if_index_get_num_ports_in_if_index_range(IfIndex first, IfIndex last, uint32_t *count)
{
    *count = 0;
    if (const uint32_t error = check_types(first, last, first); error != IF_INDEX_OK) {
        return error;
    }
    if (first == last) {
        *count = 1;
        return IF_INDEX_OK;
    }
    switch (type_of(first)) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return count_port_channel(first, last, count);
    case IF_INDEX_TYPE_VETH:
        return count_veth(first, last, count);
    case IF_INDEX_TYPE_VFC:
        return count_vfc(first, last, count);
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return count_sat_phy_eth(first, last, count);
    default:
        return count_regular(first, last, count);
    }
}

uint32_t if_index_get_if_index_in_range(IfIndex first, IfIndex last, IfIndex *out, uint32_t offset)
{
    if (const uint32_t error = check_types(first, last, first); error != IF_INDEX_OK) {
        return error;
    }
    if (first == last && offset == 0) {
        *out = first;
        return IF_INDEX_OK;
    }
    const range_step step{first, last, first, offset};
    switch (type_of(first)) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return step_port_channel(step, out);
    case IF_INDEX_TYPE_VETH:
        return lookup_veth(step, out);
    case IF_INDEX_TYPE_VFC:
        return lookup_vfc(step, out);
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return lookup_sat_phy_eth(step, out);
    default:
        return lookup_regular(step, out);
    }
}

uint32_t if_index_get_next_if_index_in_range(IfIndex first, IfIndex last, IfIndex current,
                                             IfIndex *next)
{
    if (const uint32_t error = check_types(first, last, current); error != IF_INDEX_OK) {
        return error;
    }
    const range_step step{first, last, current, 1};
    switch (type_of(first)) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return step_port_channel(step, next);
    case IF_INDEX_TYPE_DORSA:
        // Success without a member: dorsa ranges were never written, and callers rely on the code.
        return IF_INDEX_OK;
    case IF_INDEX_TYPE_PHY_ETHERNET:
        return next_phy_ethernet(step, next);
    case IF_INDEX_TYPE_VETH:
        return next_veth(step, next);
    case IF_INDEX_TYPE_VFC:
        return next_vfc(step, next);
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return next_sat_phy_eth(step, next);
    default:
        return next_regular(step, next);
    }
}

// Names of ranges: the name of the first interface, "-" and a number of the last.  Which number
// that is stands in one table; the types that choose it by more than one bit field are code.
#include "ruk/if_index_name.h"

#include <iterator>
#include <optional>

#include "ifindex/name_number.h"
#include "ifindex/name_writer.h"
#include "ruk/if_index_types.h"

namespace
{

using namespace ifindex;

struct suffix_row {
    uint8_t type;
    bit_field sub;      // shown as stored when it is not 0; {} for none
    name_number number; // shown otherwise
    bool brief;         // in the short form as well
};

// Types without a row here or a case below have no suffix.
constexpr suffix_row k_rows[] = {
    {IF_INDEX_TYPE_PHY_FC, k_phy_sub, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_PHY_ETH, k_phy_sub, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_VSAN, {}, {k_vsan, 0}, true},
    {IF_INDEX_TYPE_VLAN, {}, {k_vlan, 0}, true},
    {IF_INDEX_TYPE_FCIP, {}, {k_fc_tunnel, 1}, true},
    {IF_INDEX_TYPE_ISCSI, {}, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_UMBRA, {}, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_XLPORT, {}, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_TK, {}, {k_tk_port, 1}, true},
    {IF_INDEX_TYPE_FCMPLS_TNNL, {}, {k_fc_tunnel, 1}, true},
    {IF_INDEX_TYPE_NALP_VXE, {}, {k_vxe_second, 0}, true},
    {IF_INDEX_TYPE_XGFC_IFC, {}, {k_ifc_index, 1}, true},
    {IF_INDEX_TYPE_KIRO, {}, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_ZEFF_VXE, {}, {k_vxe_second, 0}, true},
    {IF_INDEX_TYPE_ETH_PORT_CHANNEL, k_epc_sub, {k_epc_channel, 1}, true},
    {IF_INDEX_TYPE_TUNNEL, {}, {k_tunnel_number, 0}, true},
    {IF_INDEX_TYPE_PHY_ETHERNET, k_phy_sub, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_VETH, k_veth_sub, {k_veth_vport, 1}, false},
    // One more than the name of the same value shows: callers rely on it.
    {IF_INDEX_TYPE_VIF, {}, {k_vif_index, 1}, true},
    {IF_INDEX_TYPE_SAT_PHY_ETH, k_sat_sub, {k_sat_port, 1}, true},
    {IF_INDEX_TYPE_PEMU, {}, {k_phy_port, 1}, true},
    {IF_INDEX_TYPE_RUK_ETH, k_ruk_eth_sub, {k_ruk_eth_port, 1}, true},
};

using suffix = std::optional<uint32_t>;

// The sub-interface when there is one, else the number.
uint32_t sub_or(uint32_t sub, name_number number, IfIndex value)
{
    return sub != 0 ? sub : number.shown(value);
}

suffix table_suffix(uint32_t type, IfIndex value, name_form form)
{
    for (const suffix_row &row : k_rows) {
        if (row.type == type) {
            return row.brief || form == name_form::full
                       ? suffix(sub_or(row.sub.get(value), row.number, value))
                       : std::nullopt;
        }
    }
    return std::nullopt;
}

uint32_t port_channel_suffix(IfIndex value)
{
    switch (k_pc_subtype.get(value)) {
    case k_pc_plain:
        return sub_or(k_pc_arg.get(value), {k_pc_channel, 1}, value);
    case k_pc_member:
        return name_number{k_pc_member_port, 1}.shown(value);
    default:
        return name_number{k_pc_channel, 1}.shown(value);
    }
}

// Cedar's long names have no suffix; its short ones have the slot counted from one, although the
// name in front of it counts from zero there.  Callers rely on both.
suffix eobc_suffix(IfIndex value, name_form form)
{
    if (form == name_form::full && cli_is_platform_cedar() != 0) {
        return std::nullopt;
    }
    return name_number{k_phy_slot, 1}.shown(value);
}

suffix lveth_suffix(IfIndex value, name_form form)
{
    if (form == name_form::brief) {
        return std::nullopt;
    }
    return sub_or(k_lveth_sub.get(value), {k_lveth_port, 1}, value);
}

// The short form takes every vfc for a plain one; the long one has a 0 where it knows no better.
uint32_t vfc_suffix(IfIndex value, name_form form)
{
    const uint32_t subtype = form == name_form::brief ? k_vfc_plain : k_vfc_subtype.get(value);
    switch (subtype) {
    case k_vfc_plain:
        return name_number{k_vfc_number, 1}.shown(value);
    case k_vfc_on_port_channel:
        return name_number{k_vfc_channel, 1}.shown(value);
    case k_vfc_on_slot_port:
        return name_number{k_vfc_port, 1}.shown(value);
    default:
        return 0;
    }
}

// Of the four kinds that have a name the short form gives a suffix to the first and the last only:
// callers rely on it.
suffix overlay_suffix(IfIndex value, name_form form)
{
    const uint32_t kind = k_overlay_type.get(value);
    const bool shown = form == name_form::full ? kind >= 1 && kind <= 4 : kind == 1 || kind == 4;
    return shown ? suffix(name_number{k_overlay_port, 0}.shown(value)) : std::nullopt;
}

suffix suffix_of(uint32_t type, IfIndex last, name_form form)
{
    switch (type) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
        return port_channel_suffix(last);
    case IF_INDEX_TYPE_EOBC:
        return eobc_suffix(last, form);
    case IF_INDEX_TYPE_LVETH:
        return lveth_suffix(last, form);
    case IF_INDEX_TYPE_VFC:
        return vfc_suffix(last, form);
    case IF_INDEX_TYPE_OVERLAY:
        return overlay_suffix(last, form);
    default:
        return table_suffix(type, last, form);
    }
}

// Appends the suffix to the name of length characters and returns the result for the whole text.
int32_t append_suffix(char *buffer, int32_t size, int32_t length, uint32_t number)
{
    // Only the room behind the name is written, yet the suffix is held against the whole size: one
    // that is cut still counts in full.  Callers rely on these results.
    const int32_t suffix_length = put_name(buffer + length, size - length, [number](char *at) {
        return put_next_decimal(at, '-', number);
    });
    if (suffix_length >= size) {
        buffer[length] = '\0';
        return 0;
    }
    return length + suffix_length;
}

int32_t write_range(char *buffer, int32_t size, const IfIndex pair[2], name_form form)
{
    uint8_t first_type = 0;
    uint8_t last_type = 0;
    if (if_index_get_type(pair[0], &first_type) != IF_INDEX_OK ||
        if_index_get_type(pair[1], &last_type) != IF_INDEX_OK || first_type != last_type ||
        buffer == nullptr || size < 1) {
        return 0;
    }
    const int32_t length = form == name_form::full ? snprintf_if_index(buffer, size, pair[0])
                                                   : snprintf_if_index_short(buffer, size, pair[0]);
    if (length >= size) {
        buffer[0] = '\0';
        return 0;
    }
    if (pair[0] == pair[1]) {
        return length;
    }
    const suffix number = suffix_of(last_type, pair[1], form);
    if (!number) {
        // Where nothing follows, the name counts twice: callers rely on the result.
        return length + length;
    }
    return append_suffix(buffer, size, length, *number);
}

} // namespace

int32_t snprintf_if_index_range(char *buffer, int32_t size, const IfIndex pair[2])
{
    return write_range(buffer, size, pair, name_form::full);
}

int32_t snprintf_if_index_range_short(char *buffer, int32_t size, const IfIndex pair[2])
{
    return write_range(buffer, size, pair, name_form::brief);
}

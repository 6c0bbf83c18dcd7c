// Long and short names of single interfaces.  A name is a row of one table; the few types whose
// words depend on the platform, or whose numbers are no plain bit fields, are code behind it.
#include "ruk/if_index_name.h"

#include <array>
#include <cstring>

#include "ifindex/name_number.h"
#include "ifindex/name_writer.h"
#include "ruk/if_index_types.h"

namespace
{

using namespace ifindex;

// When a row is the one: while the field's number is from low to high.  Left out: always.
struct name_condition {
    bit_field field{};
    uint32_t low = 0;
    uint32_t high = 0;

    constexpr bool holds(IfIndex value) const
    {
        const uint32_t number = field.get(value);
        return number >= low && number <= high;
    }
};

// Ordered for its readers.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct name_row {
    uint8_t type;
    const char *full; // each % stands for the next number
    const char *brief;
    std::array<name_number, 3> numbers{};
    bit_field sub{}; // appended as ".%" when it is not 0; left out: none
    name_condition when{};
};

// What an operator counts from one.
constexpr name_number from_one(bit_field field)
{
    return {field, 1};
}

constexpr name_number as_stored(bit_field field)
{
    return {field, 0};
}

constexpr name_condition exactly(bit_field field, uint32_t number)
{
    return {field, number, number};
}

constexpr name_condition at_least(bit_field field, uint32_t number)
{
    return {field, number, field.max()};
}

constexpr name_number k_slot = from_one(k_phy_slot);
constexpr name_number k_port = from_one(k_phy_port);

// Below this slot a vsan value is a cpp port, from it on the VSAN interface.
constexpr uint32_t k_vsan_interface_slot = 31;

// Rows of one type stand together, and the first whose condition holds is the name's.  A type
// without rows is one of the odd ones below or has no name of its own.
// clang-format off
constexpr name_row k_rows[] = {
    {IF_INDEX_TYPE_PHY_FC, "fc%/%", "fc%/%", {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_PHY_ETH, "GigabitEthernet%/%", "GigE%/%", {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_MGMT_SUP, "mgmt%", "mgmt%", {as_stored(k_phy_port)}, {}, exactly(k_phy_slot, 0)},
    {IF_INDEX_TYPE_MGMT_SUP, "mgmt0 on slot %", "mgmt0/%", {k_slot}},
    {IF_INDEX_TYPE_INBAND, "lc-eth0/%", "lc-eth0/%", {from_one(k_inband_linecard_slot)}, {},
     exactly(k_inband_sup, k_inband_linecard)},
    {IF_INDEX_TYPE_INBAND, "sup-fc0", "sup-fc0"},
    {IF_INDEX_TYPE_VSAN, "vsan%", "vsan%", {as_stored(k_vsan)}, {},
     at_least(k_phy_slot, k_vsan_interface_slot)},
    {IF_INDEX_TYPE_VSAN, "cpp%/%/%", "cpp%/%/%", {k_slot, k_port, as_stored(k_vsan)}},
    {IF_INDEX_TYPE_VLAN, "Vlan%", "Vlan%", {as_stored(k_vlan)}},
    {IF_INDEX_TYPE_FCIP, "fcip%", "fcip%", {from_one(k_fc_tunnel)}},
    {IF_INDEX_TYPE_ISCSI, "iscsi%/%", "iscsi%/%", {k_slot, k_port}},
    {IF_INDEX_TYPE_UMBRA, "svc%/%", "svc%/%", {k_slot, k_port}},
    {IF_INDEX_TYPE_XLPORT, "xlport %/%", "xlport %/%", {k_slot, k_port}},
    {IF_INDEX_TYPE_TK, "tk%/%/%", "tk%/%/%", {k_slot, from_one(k_tk_dpp), from_one(k_tk_port)}},
    {IF_INDEX_TYPE_FCMPLS_TNNL, "fc-tunnel %", "fc-tunnel %", {from_one(k_fc_tunnel)}},
    {IF_INDEX_TYPE_NALP_VXE, "nalp %:%", "nalp %:%",
     {as_stored(k_vxe_first), as_stored(k_vxe_second)}},
    {IF_INDEX_TYPE_XGFC_IFC, "ifc %:%:%", "ifc %:%:%",
     {from_one(k_ifc_slot), from_one(k_ifc_port), from_one(k_ifc_index)}},
    {IF_INDEX_TYPE_KIRO, "kiro%/%", "kiro%/%", {k_slot, k_port}},
    // The two forms have different words, not one word and its abbreviation.
    {IF_INDEX_TYPE_ZEFF_VXE, "zeba %:%", "zeff %:%",
     {as_stored(k_vxe_first), as_stored(k_vxe_second)}},
    {IF_INDEX_TYPE_DORSA, "dorsa%/%/%", "dorsa%/%/%",
     {k_slot, from_one(k_dorsa_node), from_one(k_dorsa_port)}},
    {IF_INDEX_TYPE_ETH_INBAND, "sup-eth%", "sup-eth%", {as_stored(k_inband_channel)}},
    {IF_INDEX_TYPE_NULL_INTERFACE, "Null0", "Null0"},
    {IF_INDEX_TYPE_TUNNEL, "Tunnel%", "Tunnel%", {as_stored(k_tunnel_number)}},
    {IF_INDEX_TYPE_ETH_INBAND_DIAG, "sup-diag0", "sup-diag0"},
    {IF_INDEX_TYPE_PHY_ETHERNET, "Ethernet%/%", "Eth%/%", {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_VETH, "Vethernet%", "Veth%", {from_one(k_veth_vport)}, k_veth_sub},
    {IF_INDEX_TYPE_VIF, "vif%", "vif%", {as_stored(k_vif_index)}},
    {IF_INDEX_TYPE_VFC, "vfc%", "vfc%", {from_one(k_vfc_number)}, {},
     exactly(k_vfc_subtype, k_vfc_plain)},
    {IF_INDEX_TYPE_VFC, "vfc-po%", "vfc-po%", {from_one(k_vfc_channel)}, {},
     exactly(k_vfc_subtype, k_vfc_on_port_channel)},
    {IF_INDEX_TYPE_VFC, "vfc%/%", "vfc%/%", {from_one(k_vfc_slot), from_one(k_vfc_port)}, {},
     exactly(k_vfc_subtype, k_vfc_on_slot_port)},
    {IF_INDEX_TYPE_VFC, "vfc-veth%", "vfc-veth%", {from_one(k_vfc_number)}, {},
     exactly(k_vfc_subtype, k_vfc_on_veth)},
    {IF_INDEX_TYPE_SAT_PHY_ETH, "Ethernet%/%/%", "Eth%/%/%",
     {from_one(k_sat), from_one(k_sat_module), from_one(k_sat_port)}},
    {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, "fif%/%", "fif%/%",
     {from_one(k_sat_module), from_one(k_sat_port)}, {}, exactly(k_fif_index, 0)},
    {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, "fif_int%/%", "fif_int%/%",
     {from_one(k_sat_module), from_one(k_sat_port)}},
    {IF_INDEX_TYPE_PEMU, "pemu%/%", "pemu%/%", {k_slot, k_port}},
    {IF_INDEX_TYPE_OVERLAY, "Overlay%", "Overlay%", {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 1)},
    {IF_INDEX_TYPE_OVERLAY, "tunnel-te%", "tunnel-te%", {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 2)},
    {IF_INDEX_TYPE_OVERLAY, "mti%", "mti%", {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 3)},
    {IF_INDEX_TYPE_OVERLAY, "peer-id%", "peer-id%", {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 4)},
    {IF_INDEX_TYPE_VL3, "Virtual Layer-3", "vl3", {}, {}, exactly(k_vl3_subtype, 0)},
    // The interface number stands before the port, unlike in the index.
    {IF_INDEX_TYPE_VL3, "Replicator%/%/%", "repl%/%/%",
     {from_one(k_vl3_slot), as_stored(k_vl3_interface), from_one(k_vl3_port)}},
    {IF_INDEX_TYPE_MARN, "Gateway Port-Channel%:%", "marn%:%",
     {as_stored(k_marn_ftag), as_stored(k_marn_switch_id)}},
};
// clang-format on

// The member form of a port-channel; the other forms are below.
constexpr name_row k_member_row = {IF_INDEX_TYPE_PORT_CHANNEL,
                                   "fc%/%",
                                   "fc%/%",
                                   {from_one(k_pc_member_slot), from_one(k_pc_member_port)}};

using row_index = std::array<uint8_t, IF_INDEX_TYPE_LAST_RESERVED + 1>;

// The first row of every type that passes the type check; the number of rows where it has none.
consteval row_index make_row_index()
{
    row_index first{};
    first.fill(std::size(k_rows));
    for (size_t row = std::size(k_rows); row-- > 0;) {
        first[k_rows[row].type] = static_cast<uint8_t>(row);
    }
    return first;
}

constexpr row_index k_first_row = make_row_index();

bool has_rows(uint32_t type)
{
    return k_first_row[type] < std::size(k_rows);
}

// The row that names value as an interface of a type, or nullptr when none does.
const name_row *find_row(uint32_t type, IfIndex value)
{
    for (size_t row = k_first_row[type]; row < std::size(k_rows) && k_rows[row].type == type;
         ++row) {
        if (k_rows[row].when.holds(value)) {
            return &k_rows[row];
        }
    }
    return nullptr;
}

const char *pick(name_form form, const char *full, const char *brief)
{
    return form == name_form::full ? full : brief;
}

void write_row(name_writer &out, const name_row &row, IfIndex value, name_form form)
{
    const name_number *number = row.numbers.data();
    for (const char *c = pick(form, row.full, row.brief); *c != '\0'; ++c) {
        if (*c == '%') {
            out.decimal((number++)->shown(value));
        } else {
            out.put(*c);
        }
    }
    out.sub_interface(row.sub.get(value));
}

// SAN port-channels: the word depends on the platform, and long names have blanks.
void write_port_channel(name_writer &out, IfIndex value, name_form form)
{
    const uint32_t subtype = k_pc_subtype.get(value);
    if (subtype == k_pc_member) {
        write_row(out, k_member_row, value, form);
        return;
    }
    if (subtype != k_pc_plain) {
        out.text(pick(form, "internal ", "int "));
    }
    if (cli_platform_uses_san_pc() != 0) {
        out.text(pick(form, "san-port-channel ", "San-po"));
    } else {
        out.text(pick(form, "port-channel ", "Po"));
    }
    out.decimal(from_one(k_pc_channel).shown(value));
    if (subtype == k_pc_plain) {
        out.sub_interface(k_pc_arg.get(value));
    }
}

// Ethernet port-channels are the plain ones wherever the SAN ones have a word of their own.
void write_eth_port_channel(name_writer &out, IfIndex value, name_form form)
{
    const bool plain = cli_is_platform_alder() != 0 || cli_is_platform_larch() != 0 ||
                       cli_platform_uses_san_pc() != 0;
    out.text(plain ? pick(form, "port-channel", "Po") : pick(form, "ethernet-port-channel", "Epo"));
    out.decimal(from_one(k_epc_channel).shown(value));
    out.sub_interface(k_epc_sub.get(value));
}

void write_eobc(name_writer &out, IfIndex value)
{
    if (cli_is_platform_cedar() != 0) {
        out.text("control").decimal(as_stored(k_phy_slot).shown(value));
    } else {
        out.text("Eobc ").decimal(k_slot.shown(value));
    }
}

// The slot is in two places, and the sub-interface is shown as it stands: 4, 8 or 12.
void write_lveth(name_writer &out, IfIndex value)
{
    out.text("lveth").decimal(static_cast<int32_t>(k_lveth_slot.get(value) + 1));
    out.put('/').decimal(from_one(k_lveth_port).shown(value));
    out.sub_interface(k_lveth_sub.get(value));
}

// A vfc on a satellite, which is counted from one within eight bits: the last is shown as 0.
void write_hobb(name_writer &out, IfIndex value)
{
    out.text("vfc").decimal(static_cast<uint8_t>(from_one(k_hobb_sat).shown(value)));
    out.put('/').decimal(from_one(k_hobb_slot).shown(value));
    out.put('/').decimal(from_one(k_hobb_port).shown(value));
}

// Birch counts the modules of the data path from 128.
void write_ruk_eth(name_writer &out, IfIndex value, name_form form)
{
    const uint32_t base = cli_is_platform_birch() != 0 ? 128 : 1;
    out.text(pick(form, "Ethernet", "Eth"));
    out.decimal(static_cast<int32_t>(base + k_ruk_eth_slot.get(value)));
    out.put('/').decimal(from_one(k_ruk_eth_port).shown(value));
    out.sub_interface(k_ruk_eth_sub.get(value));
}

void write_from_rows(name_writer &out, uint32_t type, IfIndex value, name_form form)
{
    if (!has_rows(type)) {
        out.hex(value);
    } else if (const name_row *row = find_row(type, value)) {
        write_row(out, *row, value, form);
    }
}

void write_vfc(name_writer &out, IfIndex value, name_form form)
{
    // The short form, and only that, takes a vfc for an overlay wherever the bits allow it.  This
    // looks like a case that falls through, but callers rely on the names.
    const name_row *overlay = find_row(IF_INDEX_TYPE_OVERLAY, value);
    if (form == name_form::brief && overlay != nullptr) {
        write_row(out, *overlay, value, form);
    } else if (k_vfc_subtype.get(value) == k_vfc_on_satellite) {
        write_hobb(out, value);
    } else {
        write_from_rows(out, IF_INDEX_TYPE_VFC, value, form);
    }
}

int32_t write_name(char *buffer, int32_t size, IfIndex value, name_form form)
{
    name_writer out(buffer, size);
    uint8_t type = 0;
    if (if_index_get_type(value, &type) != IF_INDEX_OK) {
        return 0;
    }
    switch (type) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
        write_port_channel(out, value, form);
        break;
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        write_eth_port_channel(out, value, form);
        break;
    case IF_INDEX_TYPE_EOBC:
        write_eobc(out, value);
        break;
    case IF_INDEX_TYPE_LVETH:
        write_lveth(out, value);
        break;
    case IF_INDEX_TYPE_VFC:
        write_vfc(out, value, form);
        break;
    case IF_INDEX_TYPE_RUK_ETH:
        write_ruk_eth(out, value, form);
        break;
    default:
        write_from_rows(out, type, value, form);
    }
    return out.finish();
}

} // namespace

int32_t snprintf_if_index(char *buffer, int32_t size, IfIndex value)
{
    const int32_t length = snprintf_if_index_from_if_db(buffer, size, value);
    return length != 0 ? length : snprintf_if_index_native(buffer, size, value);
}

int32_t snprintf_if_index_native(char *buffer, int32_t size, IfIndex value)
{
    return write_name(buffer, size, value, name_form::full);
}

int32_t snprintf_if_index_short(char *buffer, int32_t size, IfIndex value)
{
    const int32_t length = snprintf_if_index_from_if_db(buffer, size, value);
    return length != 0 ? length : snprintf_if_index_short_native(buffer, size, value);
}

int32_t snprintf_if_index_short_native(char *buffer, int32_t size, IfIndex value)
{
    return write_name(buffer, size, value, name_form::brief);
}

int32_t snprintf_if_index_from_if_db(char *buffer, int32_t size, IfIndex value)
{
    if (buffer == nullptr || size < 1) {
        return 0;
    }
    buffer[0] = '\0';
    if (type_of(value) != IF_INDEX_TYPE_PHY_FC ||
        if_db_ifindex2str_wrapper(buffer, size, value) != IF_DB_OK) {
        return 0;
    }
    // A database may have filled the buffer without terminating it.
    return static_cast<int32_t>(strnlen(buffer, static_cast<size_t>(size)));
}

int32_t sprintf_if_index(char *buffer, IfIndex value)
{
    return snprintf_if_index(buffer, IF_INDEX_NAME_SIZE, value);
}

int32_t sprintf_if_index_short(char *buffer, IfIndex value)
{
    return snprintf_if_index_short(buffer, IF_INDEX_NAME_SIZE, value);
}

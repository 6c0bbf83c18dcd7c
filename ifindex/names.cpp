// Long and short names of single interfaces.  A name is a row of one table; the few types whose
// words depend on the platform, or whose numbers are no plain bit fields, are code behind it.
#include "ruk/if_index_name.h"

#include <array>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "ifindex/access.h"
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

struct name_words {
    std::string_view full;
    std::string_view brief;
};

// Up to three numbers and what stands between them.
struct name_numbers {
    std::array<name_number, 3> numbers{};
    uint8_t count = 0;
    char separator = '/';

    template <typename... Numbers>
    constexpr name_numbers(Numbers... each) : numbers{each...}, count(sizeof...(each))
    {
    }
};

// Ordered for its readers.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct name_row {
    uint8_t type;
    name_words words; // in front of the numbers
    name_numbers numbers{};
    bit_field sub{}; // appended as ".<number>" when it is not 0; left out: none
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

template <typename... Numbers> constexpr name_numbers with_colons(Numbers... each)
{
    name_numbers numbers(each...);
    numbers.separator = ':';
    return numbers;
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
    {IF_INDEX_TYPE_PHY_FC, {"fc", "fc"}, {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_PHY_ETH, {"GigabitEthernet", "GigE"}, {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_MGMT_SUP, {"mgmt", "mgmt"}, {as_stored(k_phy_port)}, {}, exactly(k_phy_slot, 0)},
    {IF_INDEX_TYPE_MGMT_SUP, {"mgmt0 on slot ", "mgmt0/"}, {k_slot}},
    {IF_INDEX_TYPE_INBAND, {"lc-eth0/", "lc-eth0/"}, {from_one(k_inband_linecard_slot)}, {},
     exactly(k_inband_sup, k_inband_linecard)},
    {IF_INDEX_TYPE_INBAND, {"sup-fc0", "sup-fc0"}},
    {IF_INDEX_TYPE_VSAN, {"vsan", "vsan"}, {as_stored(k_vsan)}, {},
     at_least(k_phy_slot, k_vsan_interface_slot)},
    {IF_INDEX_TYPE_VSAN, {"cpp", "cpp"}, {k_slot, k_port, as_stored(k_vsan)}},
    {IF_INDEX_TYPE_VLAN, {"Vlan", "Vlan"}, {as_stored(k_vlan)}},
    {IF_INDEX_TYPE_FCIP, {"fcip", "fcip"}, {from_one(k_fc_tunnel)}},
    {IF_INDEX_TYPE_ISCSI, {"iscsi", "iscsi"}, {k_slot, k_port}},
    {IF_INDEX_TYPE_UMBRA, {"svc", "svc"}, {k_slot, k_port}},
    {IF_INDEX_TYPE_XLPORT, {"xlport ", "xlport "}, {k_slot, k_port}},
    {IF_INDEX_TYPE_TK, {"tk", "tk"}, {k_slot, from_one(k_tk_dpp), from_one(k_tk_port)}},
    {IF_INDEX_TYPE_FCMPLS_TNNL, {"fc-tunnel ", "fc-tunnel "}, {from_one(k_fc_tunnel)}},
    {IF_INDEX_TYPE_NALP_VXE, {"nalp ", "nalp "},
     with_colons(as_stored(k_vxe_first), as_stored(k_vxe_second))},
    {IF_INDEX_TYPE_XGFC_IFC, {"ifc ", "ifc "},
     with_colons(from_one(k_ifc_slot), from_one(k_ifc_port), from_one(k_ifc_index))},
    {IF_INDEX_TYPE_KIRO, {"kiro", "kiro"}, {k_slot, k_port}},
    // The two forms have different words, not one word and its abbreviation.
    {IF_INDEX_TYPE_ZEFF_VXE, {"zeba ", "zeff "},
     with_colons(as_stored(k_vxe_first), as_stored(k_vxe_second))},
    {IF_INDEX_TYPE_DORSA, {"dorsa", "dorsa"},
     {k_slot, from_one(k_dorsa_node), from_one(k_dorsa_port)}},
    {IF_INDEX_TYPE_ETH_INBAND, {"sup-eth", "sup-eth"}, {as_stored(k_inband_channel)}},
    {IF_INDEX_TYPE_NULL_INTERFACE, {"Null0", "Null0"}},
    {IF_INDEX_TYPE_TUNNEL, {"Tunnel", "Tunnel"}, {as_stored(k_tunnel_number)}},
    {IF_INDEX_TYPE_ETH_INBAND_DIAG, {"sup-diag0", "sup-diag0"}},
    {IF_INDEX_TYPE_PHY_ETHERNET, {"Ethernet", "Eth"}, {k_slot, k_port}, k_phy_sub},
    {IF_INDEX_TYPE_VETH, {"Vethernet", "Veth"}, {from_one(k_veth_vport)}, k_veth_sub},
    {IF_INDEX_TYPE_VIF, {"vif", "vif"}, {as_stored(k_vif_index)}},
    {IF_INDEX_TYPE_VFC, {"vfc", "vfc"}, {from_one(k_vfc_number)}, {},
     exactly(k_vfc_subtype, k_vfc_plain)},
    {IF_INDEX_TYPE_VFC, {"vfc-po", "vfc-po"}, {from_one(k_vfc_channel)}, {},
     exactly(k_vfc_subtype, k_vfc_on_port_channel)},
    {IF_INDEX_TYPE_VFC, {"vfc", "vfc"}, {from_one(k_vfc_slot), from_one(k_vfc_port)}, {},
     exactly(k_vfc_subtype, k_vfc_on_slot_port)},
    {IF_INDEX_TYPE_VFC, {"vfc-veth", "vfc-veth"}, {from_one(k_vfc_number)}, {},
     exactly(k_vfc_subtype, k_vfc_on_veth)},
    {IF_INDEX_TYPE_SAT_PHY_ETH, {"Ethernet", "Eth"},
     {from_one(k_sat), from_one(k_sat_module), from_one(k_sat_port)}},
    {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, {"fif", "fif"},
     {from_one(k_sat_module), from_one(k_sat_port)}, {}, exactly(k_fif_index, 0)},
    {IF_INDEX_TYPE_SAT_PHY_ETH_FIF, {"fif_int", "fif_int"},
     {from_one(k_sat_module), from_one(k_sat_port)}},
    {IF_INDEX_TYPE_PEMU, {"pemu", "pemu"}, {k_slot, k_port}},
    {IF_INDEX_TYPE_OVERLAY, {"Overlay", "Overlay"}, {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 1)},
    {IF_INDEX_TYPE_OVERLAY, {"tunnel-te", "tunnel-te"}, {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 2)},
    {IF_INDEX_TYPE_OVERLAY, {"mti", "mti"}, {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 3)},
    {IF_INDEX_TYPE_OVERLAY, {"peer-id", "peer-id"}, {as_stored(k_overlay_port)}, {},
     exactly(k_overlay_type, 4)},
    {IF_INDEX_TYPE_VL3, {"Virtual Layer-3", "vl3"}, {}, {}, exactly(k_vl3_subtype, 0)},
    // The interface number stands before the port, unlike in the index.
    {IF_INDEX_TYPE_VL3, {"Replicator", "repl"},
     {from_one(k_vl3_slot), as_stored(k_vl3_interface), from_one(k_vl3_port)}},
    {IF_INDEX_TYPE_MARN, {"Gateway Port-Channel", "marn"},
     with_colons(as_stored(k_marn_ftag), as_stored(k_marn_switch_id))},
};
// clang-format on

// Rows that code chooses by more than the value.
// clang-format off
constexpr name_row k_member_row =
    {IF_INDEX_TYPE_PORT_CHANNEL, {"fc", "fc"},
     {from_one(k_pc_member_slot), from_one(k_pc_member_port)}};
constexpr name_row k_channel_row =
    {IF_INDEX_TYPE_PORT_CHANNEL, {"port-channel ", "Po"}, {from_one(k_pc_channel)}, k_pc_arg};
constexpr name_row k_san_channel_row =
    {IF_INDEX_TYPE_PORT_CHANNEL, {"san-port-channel ", "San-po"}, {from_one(k_pc_channel)},
     k_pc_arg};
constexpr name_row k_internal_channel_row =
    {IF_INDEX_TYPE_PORT_CHANNEL, {"internal port-channel ", "int Po"}, {from_one(k_pc_channel)}};
constexpr name_row k_internal_san_channel_row =
    {IF_INDEX_TYPE_PORT_CHANNEL, {"internal san-port-channel ", "int San-po"},
     {from_one(k_pc_channel)}};
constexpr name_row k_plain_eth_channel_row =
    {IF_INDEX_TYPE_ETH_PORT_CHANNEL, {"port-channel", "Po"}, {from_one(k_epc_channel)}, k_epc_sub};
constexpr name_row k_eth_channel_row =
    {IF_INDEX_TYPE_ETH_PORT_CHANNEL, {"ethernet-port-channel", "Epo"}, {from_one(k_epc_channel)},
     k_epc_sub};
constexpr name_row k_eobc_row = {IF_INDEX_TYPE_EOBC, {"Eobc ", "Eobc "}, {k_slot}};
constexpr name_row k_control_row =
    {IF_INDEX_TYPE_EOBC, {"control", "control"}, {as_stored(k_phy_slot)}};
constexpr name_row k_ruk_eth_row =
    {IF_INDEX_TYPE_RUK_ETH, {"Ethernet", "Eth"},
     {from_one(k_ruk_eth_slot), from_one(k_ruk_eth_port)}, k_ruk_eth_sub};
// Birch counts the modules of the data path from 128.
constexpr name_row k_birch_ruk_eth_row =
    {IF_INDEX_TYPE_RUK_ETH, {"Ethernet", "Eth"},
     {name_number{k_ruk_eth_slot, 128}, from_one(k_ruk_eth_port)}, k_ruk_eth_sub};
// clang-format on

// Writes the name that a row tells.  Always part of its caller, which knows the row when it is
// compiled: what is left of the row's fields are constants.
[[gnu::always_inline]] inline char *write_row(char *at, const name_row &row, IfIndex value,
                                              name_form form)
{
    at = form == name_form::full ? put_text(at, row.words.full) : put_text(at, row.words.brief);
    const auto &[numbers, count, separator] = row.numbers;
    if (count > 0) {
        at = put_decimal(at, numbers[0].shown(value));
    }
    if (count > 1) {
        at = put_next_decimal(at, separator, numbers[1].shown(value));
    }
    if (count > 2) {
        at = put_next_decimal(at, separator, numbers[2].shown(value));
    }
    return put_sub_interface(at, row.sub.get(value));
}

// The first row of a type; the number of rows when it has none.
consteval size_t first_row(uint32_t type)
{
    size_t row = 0;
    while (row < std::size(k_rows) && k_rows[row].type != type) {
        ++row;
    }
    return row;
}

// Writes the name of value as an interface of a type: that of the first row from index on whose
// condition holds, and nothing when none does.
template <uint32_t type, size_t index = first_row(type)>
char *write_type(char *at, IfIndex value, name_form form)
{
    if constexpr (index == std::size(k_rows) || k_rows[index].type != type) {
        return at;
    } else if (k_rows[index].when.holds(value)) {
        return write_row(at, k_rows[index], value, form);
    } else {
        return write_type<type, index + 1>(at, value, form);
    }
}

// SAN port-channels: the word depends on the platform, and long names have blanks.
char *write_port_channel(char *at, IfIndex value, name_form form)
{
    const uint32_t subtype = k_pc_subtype.get(value);
    if (subtype == k_pc_member) {
        return write_row(at, k_member_row, value, form);
    }
    const bool san = cli_platform_uses_san_pc() != 0;
    if (subtype != k_pc_plain) {
        return san ? write_row(at, k_internal_san_channel_row, value, form)
                   : write_row(at, k_internal_channel_row, value, form);
    }
    return san ? write_row(at, k_san_channel_row, value, form)
               : write_row(at, k_channel_row, value, form);
}

// Ethernet port-channels are the plain ones wherever the SAN ones have a word of their own.
char *write_eth_port_channel(char *at, IfIndex value, name_form form)
{
    const bool plain = cli_is_platform_alder() != 0 || cli_is_platform_larch() != 0 ||
                       cli_platform_uses_san_pc() != 0;
    return plain ? write_row(at, k_plain_eth_channel_row, value, form)
                 : write_row(at, k_eth_channel_row, value, form);
}

char *write_eobc(char *at, IfIndex value, name_form form)
{
    return cli_is_platform_cedar() != 0 ? write_row(at, k_control_row, value, form)
                                        : write_row(at, k_eobc_row, value, form);
}

// The slot is in two places, and the sub-interface is shown as it stands: 4, 8 or 12.
char *write_lveth(char *at, IfIndex value, name_form)
{
    at = put_decimal(put_text(at, "lveth"), k_lveth_slot.get(value) + 1);
    at = put_next_decimal(at, '/', from_one(k_lveth_port).shown(value));
    return put_sub_interface(at, k_lveth_sub.get(value));
}

// A vfc on a satellite, which is counted from one within eight bits: the last is shown as 0.
char *write_hobb(char *at, IfIndex value)
{
    at = put_decimal(put_text(at, "vfc"), static_cast<uint8_t>(from_one(k_hobb_sat).shown(value)));
    at = put_next_decimal(at, '/', from_one(k_hobb_slot).shown(value));
    return put_next_decimal(at, '/', from_one(k_hobb_port).shown(value));
}

char *write_vfc(char *at, IfIndex value, name_form form)
{
    // The short form, and only that, takes a vfc for an overlay wherever the bits allow it.  This
    // looks like a case that falls through, but callers rely on the names.
    if (form == name_form::brief) {
        char *const end = write_type<IF_INDEX_TYPE_OVERLAY>(at, value, form);
        if (end != at) {
            return end;
        }
    }
    return k_vfc_subtype.get(value) == k_vfc_on_satellite
               ? write_hobb(at, value)
               : write_type<IF_INDEX_TYPE_VFC>(at, value, form);
}

char *write_ruk_eth(char *at, IfIndex value, name_form form)
{
    return cli_is_platform_birch() != 0 ? write_row(at, k_birch_ruk_eth_row, value, form)
                                        : write_row(at, k_ruk_eth_row, value, form);
}

using type_writer = int32_t (*)(char *buffer, IfIndex value, name_form form);

// Writes the whole name, terminated, and returns its length: nothing is left to do behind the jump
// to it, which is guessed wrong wherever types come in no order.
template <auto write> int32_t write_whole(char *buffer, IfIndex value, name_form form)
{
    return finish_name(buffer, write(buffer, value, form));
}

constexpr size_t k_named_types = IF_INDEX_TYPE_RUK_ETH + 1;

// How a type is written: by its rows, or by the code that stands for them.
template <uint32_t type> constexpr type_writer writer_of()
{
    switch (type) {
    case IF_INDEX_TYPE_PORT_CHANNEL:
        return write_whole<write_port_channel>;
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return write_whole<write_eth_port_channel>;
    case IF_INDEX_TYPE_EOBC:
        return write_whole<write_eobc>;
    case IF_INDEX_TYPE_LVETH:
        return write_whole<write_lveth>;
    case IF_INDEX_TYPE_VFC:
        return write_whole<write_vfc>;
    case IF_INDEX_TYPE_RUK_ETH:
        return write_whole<write_ruk_eth>;
    default:
        // Nothing, where the type check refuses the type.
        return write_whole<write_type<type>>;
    }
}

template <size_t... types>
constexpr std::array<type_writer, k_named_types> make_writers(std::index_sequence<types...>)
{
    return {writer_of<types>()...};
}

constexpr auto k_writers = make_writers(std::make_index_sequence<k_named_types>());

// Writes the name, which is empty where the type check refuses the type, and returns its length.
int32_t write_of_type(char *buffer, IfIndex value, name_form form)
{
    const uint32_t type = type_of(value);
    if (type < k_named_types) {
        return k_writers[type](buffer, value, form);
    }
    return finish_name(buffer, is_known_type(type) ? put_hex(buffer, value) : buffer);
}

int32_t write_name(char *buffer, int32_t size, IfIndex value, name_form form);

// The name in a buffer that may be too small for it.  Out of line, so that the usual way needs no
// stack.
[[gnu::noinline, gnu::cold]] int32_t write_cut_name(char *buffer, int32_t size, IfIndex value,
                                                    name_form form)
{
    char name[k_name_room];
    const int32_t length = write_name(name, sizeof name, value, form);
    return put_cut(buffer, size, name, length);
}

int32_t write_name(char *buffer, int32_t size, IfIndex value, name_form form)
{
    if (buffer == nullptr || size < k_name_room) {
        return write_cut_name(buffer, size, value, form);
    }
    return write_of_type(buffer, value, form);
}

// Databases are asked for the ports of one type only.
constexpr bool is_known_to_databases(IfIndex value)
{
    return type_of(value) == IF_INDEX_TYPE_PHY_FC;
}

// The name that an interface database has; 0 when it has none.
int32_t write_from_database(char *buffer, int32_t size, IfIndex value)
{
    if (buffer == nullptr || size < 1) {
        return 0;
    }
    buffer[0] = '\0';
    if (!is_known_to_databases(value) ||
        if_db_ifindex2str_wrapper(buffer, size, value) != IF_DB_OK) {
        return 0;
    }
    // A database may have filled the buffer without terminating it.
    return static_cast<int32_t>(strnlen(buffer, static_cast<size_t>(size)));
}

int32_t write_known_name(char *buffer, int32_t size, IfIndex value, name_form form)
{
    const int32_t length =
        is_known_to_databases(value) ? write_from_database(buffer, size, value) : 0;
    return length != 0 ? length : write_name(buffer, size, value, form);
}

} // namespace

int32_t snprintf_if_index(char *buffer, int32_t size, IfIndex value)
{
    return write_known_name(buffer, size, value, name_form::full);
}

int32_t snprintf_if_index_native(char *buffer, int32_t size, IfIndex value)
{
    return write_name(buffer, size, value, name_form::full);
}

int32_t snprintf_if_index_short(char *buffer, int32_t size, IfIndex value)
{
    return write_known_name(buffer, size, value, name_form::brief);
}

int32_t snprintf_if_index_short_native(char *buffer, int32_t size, IfIndex value)
{
    return write_name(buffer, size, value, name_form::brief);
}

int32_t snprintf_if_index_from_if_db(char *buffer, int32_t size, IfIndex value)
{
    return write_from_database(buffer, size, value);
}

int32_t sprintf_if_index(char *buffer, IfIndex value)
{
    return snprintf_if_index(buffer, IF_INDEX_NAME_SIZE, value);
}

int32_t sprintf_if_index_short(char *buffer, IfIndex value)
{
    return snprintf_if_index_short(buffer, IF_INDEX_NAME_SIZE, value);
}

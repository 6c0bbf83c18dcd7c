// The interface kinds: which counts of numbers a kind takes and which constructor builds it.
#ifndef IFINDEX_KINDS_H
#define IFINDEX_KINDS_H

#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>

#include "ifindex/keywords.h"
#include "ifindex/name_writer.h"
#include "ifindex/numbers.h"
#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"
#include "ruk/if_index_name.h"
#include "ruk/if_index_types.h"

namespace ifindex
{

// The numbers of a name.  Those beyond the count are 0.
struct coordinates {
    int32_t count;
    std::array<int32_t, IF_INDEX_NAME_COORDINATES> c; // no kind looks at more than four

    // The number at an index where a kind takes it only as the last of exactly so many.
    int32_t only_as_last(size_t index) const
    {
        return count == static_cast<int32_t>(index) + 1 ? c[index] : 0;
    }
};

using builder = uint32_t (*)(IfIndex *out, const coordinates &from);

// What a kind does unlike the others, for which the constructor's result doesn't matter and a
// wrong count gives 0.
enum class oddity {
    none,
    heeds_result, // numbers that the constructor refuses give 0
    any_count     // a wrong count builds nothing, yet gives 1
};

// Ordered for its readers.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct kind_row {
    int32_t kind;
    int32_t least; // fewest and most numbers
    int32_t most;
    builder build;
    oddity odd = oddity::none;
};

inline constexpr int32_t k_more = INT32_MAX;
inline constexpr int32_t k_any = INT32_MIN; // a negative count, too

// The virtual device context: what the environment says, read as the numbers of a name are.
inline int32_t device_context()
{
    const char *text = getenv("SYSMGR_VDC_ID");
    return text == nullptr ? 1 : read_number(text).value;
}

inline uint32_t build_port_channel(IfIndex *out, const coordinates &from)
{
    return cli_is_platform_alder() != 0 || cli_is_platform_larch() != 0
               ? if_index_eth_port_channel_cli_init(out, from.c[0], from.c[1])
               : if_index_port_channel_cli_init(out, from.c[0], from.c[1]);
}

// Off cedar: a first number of 32 or more is a satellite chassis, whose port is the third.
inline uint32_t build_phy_ethernet(IfIndex *out, const coordinates &from)
{
    const auto &c = from.c;
    return c[0] < 32 ? if_index_phy_ethernet_cli_init(out, c[0], c[1], from.only_as_last(2), 0)
                     : if_index_phy_ethernet_cli_init(out, c[0], c[1], from.only_as_last(3), c[2]);
}

inline uint32_t build_vfc(IfIndex *out, const coordinates &from)
{
    const auto &c = from.c;
    switch (from.count) {
    case 1:
        return if_index_vfc_cli_init(out, c[0]);
    case 2:
        return if_index_vfc_slot_port_cli_init(out, static_cast<uint16_t>(c[0]),
                                               static_cast<uint8_t>(c[1]));
    default:
        return if_index_vfc_hobb_cli_init(out, static_cast<uint8_t>(c[0]),
                                          static_cast<uint16_t>(c[1]), static_cast<uint8_t>(c[2]));
    }
}

// Ports that only the interface database knows.
inline uint32_t look_up(std::string_view word, int32_t number, IfIndex *out)
{
    char name[k_name_room];
    finish_name(name, put_signed_decimal(put_text(name, word), number));
    return static_cast<uint32_t>(if_db_str2ifindex_wrapper(name, out));
}

// Constructors that take one, two or three numbers as they were read.
template <auto init> uint32_t build1(IfIndex *out, const coordinates &from)
{
    return init(out, from.c[0]);
}

template <auto init> uint32_t build2(IfIndex *out, const coordinates &from)
{
    return init(out, from.c[0], from.c[1]);
}

template <auto init> uint32_t build3(IfIndex *out, const coordinates &from)
{
    return init(out, from.c[0], from.c[1], from.c[2]);
}

// Overlay ports: the kind of port is the keyword's.
template <int32_t port_type> uint32_t build_overlay(IfIndex *out, const coordinates &from)
{
    return if_index_overlay_cli_init(out, port_type, from.c[0]);
}

// clang-format off
inline constexpr kind_row k_kind_rows[] = {
    {kind_of("fc"), 2, 2, build2<if_index_phy_fc_port_cli_init>},
    {kind_of("gigabitethernet"), 2, k_more, [](IfIndex *out, const coordinates &from) {
         // A third number is the satellite port and the sub-interface at once.
         const int32_t third = from.only_as_last(2);
         return if_index_phy_eth_port_cli_init(out, from.c[0], from.c[1], third, third);
     }},
    {kind_of("vsan"), 1, 1, [](IfIndex *out, const coordinates &from) {
         return if_index_vsan_port_cli_init(out, 31, 0, from.c[0]);
     }},
    {kind_of("iscsi"), 2, 2, build2<if_index_iscsi_port_cli_init>},
    {kind_of("port-channel"), 1, 2, build_port_channel},
    {kind_of("cpp"), 3, 3, build3<if_index_vsan_port_cli_init>},
    {kind_of("fcip"), 1, 1, build1<if_index_fcip_port_cli_init>},
    {kind_of("mgmt"), 1, 2, build2<if_index_mgmt_sup_port_cli_init>, oddity::any_count},
    {kind_of("tk"), 3, 3, build3<if_index_tk_port_cli_init>},
    {kind_of("xl"), 2, 2, build2<if_index_xlport_cli_init>},
    {kind_of("svc"), 2, 2, build2<if_index_umbra_port_cli_init>},
    {kind_of("sup-fc"), 0, 0, [](IfIndex *out, const coordinates &) {
         *out = if_index_inband_get_active_sup_priority_hi();
         return uint32_t{IF_INDEX_OK};
     }},
    {kind_of("fc-tunnel"), 1, 1, build1<if_index_fcmpls_tnnl_cli_init>},
    {kind_of("ipc"), 3, 3, build3<if_index_port_channel_cli_init_internal>},
    {kind_of("loopback"), 1, 1, build1<if_index_loopback_port_cli_init>},
    {kind_of("vlan"), 1, 1, [](IfIndex *out, const coordinates &from) {
         return if_index_vlan_port_cli_init(out, device_context(), from.c[0]);
     }},
    {kind_of("kiro"), 2, 2, build2<if_index_kiro_port_cli_init>},
    {kind_of("bay"), k_any, k_more, [](IfIndex *out, const coordinates &from) {
         return look_up("bay", from.c[0], out);
     }},
    {kind_of("ext"), k_any, k_more, [](IfIndex *out, const coordinates &from) {
         return look_up("ext", from.c[0], out);
     }},
    {kind_of("san-port-channel"), 1, 2, build2<if_index_port_channel_cli_init>},
    {kind_of("ethernet-port-channel"), 1, 2, build2<if_index_eth_port_channel_cli_init>},
    {kind_of("tunnel"), 1, 1, [](IfIndex *out, const coordinates &from) {
         // Unlike for a VLAN the context is cut to 16 bits before it is judged.
         return if_index_tunnel_cli_init(out, device_context() & 0xFFFF, from.c[0]);
     }},
    {kind_of("ethernet"), 2, k_more, build_phy_ethernet},
    {kind_of("vethernet"), 1, 1, build1<if_index_ether_sif_cli_init>},
    {kind_of("vfc"), 1, 3, build_vfc},
    {kind_of("remote-ethernet"), 3, k_more, [](IfIndex *out, const coordinates &from) {
         return if_index_sat_phy_eth_port_cli_init(out, from.c[0], from.c[1], from.c[2],
                                                   from.only_as_last(3));
     }},
    {kind_of("pemu"), 2, 2, build2<if_index_pemu_port_cli_init>},
    {kind_of("overlay"), 1, 1, build_overlay<1>},
    {kind_of("lveth"), 2, k_more, [](IfIndex *out, const coordinates &from) {
         return if_index_lveth_cli_init(out, from.c[0], from.c[1], from.only_as_last(2));
     }},
    {kind_of("veth"), 1, k_more, [](IfIndex *out, const coordinates &from) {
         return if_index_veth_cli_init(out, from.c[0], from.only_as_last(1));
     }, oddity::heeds_result},
    {kind_of("ruk-ethernet"), 2, k_more, [](IfIndex *out, const coordinates &from) {
         return if_index_ruk_eth_cli_init(out, from.c[0], from.c[1], from.only_as_last(2));
     }, oddity::heeds_result},
    {kind_of("tunnel-te"), 1, 1, build_overlay<2>},
    {kind_of("mti"), 1, 1, build_overlay<3>},
    {kind_of("control"), 1, 2, build2<if_index_eobc_port_cli_init>, oddity::any_count},
    {kind_of("vfc-veth"), 1, 1, build1<if_index_vfc_veth_cli_init>},
    {kind_of("vfc-port-channel"), 1, 1, [](IfIndex *out, const coordinates &from) {
         return if_index_vfc_port_channel_cli_init(out, static_cast<uint16_t>(from.c[0]));
     }},
};
// clang-format on

// The row of every kind; -1 for those that are not supported.
consteval std::array<int8_t, k_keyword_count> make_row_of_kind()
{
    std::array<int8_t, k_keyword_count> row_of{};
    row_of.fill(-1);
    for (size_t row = 0; row < std::size(k_kind_rows); ++row) {
        row_of[static_cast<size_t>(k_kind_rows[row].kind)] = static_cast<int8_t>(row);
    }
    return row_of;
}

inline constexpr std::array<int8_t, k_keyword_count> k_row_of_kind = make_row_of_kind();

// The row of a kind; null when it is not supported.
constexpr const kind_row *find_row(int32_t kind)
{
    if (kind < 0 || static_cast<size_t>(kind) >= k_keyword_count) {
        return nullptr;
    }
    const int8_t row = k_row_of_kind[static_cast<size_t>(kind)];
    return row < 0 ? nullptr : &k_kind_rows[row];
}

// Whether a kind is built as "ruk-ethernet": the ports of cedar are those of its data-path modules.
inline bool is_on_the_data_path(int32_t kind)
{
    return kind == kind_of("ethernet") && cli_is_platform_cedar() != 0;
}

// Builds the interface that a row and the numbers tell, with the results of
// ulx_interface_coordinates_to_ifindex.  Always part of its caller, which may know the row.
[[gnu::always_inline]] inline int32_t build_by(const kind_row &row, const coordinates &from,
                                               IfIndex *out)
{
    if (from.count < row.least || from.count > row.most) {
        return row.odd == oddity::any_count ? 1 : 0;
    }
    const uint32_t error = row.build(out, from);
    return row.odd == oddity::heeds_result && error != IF_INDEX_OK ? 0 : 1;
}

} // namespace ifindex

#endif // IFINDEX_KINDS_H

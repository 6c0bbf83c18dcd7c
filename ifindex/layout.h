// Where everything stands in an IfIndex: the fields of every interface type, the base values and
// the named values of single fields.  The type codes are in ruk/if_index_types.h, since callers
// need them too.  Nothing else in the project shifts or masks an IfIndex by hand.
#ifndef IFINDEX_LAYOUT_H
#define IFINDEX_LAYOUT_H

#include "ruk/if_index_types.h"

namespace ifindex
{

// A run of bits: `width` bits whose lowest is bit `shift`.
struct bit_field {
    uint8_t shift;
    uint8_t width;

    // The largest number that fits.
    constexpr uint32_t max() const { return (uint32_t{1} << width) - 1; }

    constexpr uint32_t mask() const { return max() << shift; }
    constexpr uint32_t get(IfIndex value) const { return (value >> shift) & max(); }

    // The number at its place, cut to the width.
    constexpr IfIndex put(uint32_t number) const { return (number & max()) << shift; }

    // The number at its place, whole: what doesn't fit runs into the fields above.  For the
    // constructors that don't judge their arguments and have always let them overlap.
    constexpr IfIndex put_uncut(uint32_t number) const { return number << shift; }

    constexpr IfIndex clear(IfIndex value) const { return value & ~mask(); }
};

// A number in two places: its low bits in one field, its high bits in another.
struct split_field {
    bit_field low;
    bit_field high;

    constexpr uint32_t max() const { return high.max() << low.width | low.max(); }

    constexpr uint32_t get(IfIndex value) const
    {
        return high.get(value) << low.width | low.get(value);
    }

    constexpr IfIndex put(uint32_t number) const
    {
        return low.put(number) | high.put(number >> low.width);
    }
};

// A field whose number is handled without moving it: the bits keep their weight in the IfIndex.
struct unshifted_field {
    bit_field bits;

    constexpr uint32_t max() const { return bits.mask(); }
    constexpr uint32_t get(IfIndex value) const { return value & bits.mask(); }
    constexpr IfIndex put(uint32_t number) const { return number & bits.mask(); }
};

// Every type.
inline constexpr bit_field k_type{24, 7};
inline constexpr bit_field k_all_of_type{31, 1}; // set in wildcards, ignored by the type check
inline constexpr bit_field k_top_byte{24, 8};
inline constexpr bit_field k_coordinates{0, 24};
inline constexpr bit_field k_low_byte{0, 8};
inline constexpr bit_field k_low_half{0, 16};

// phy_fc, phy_eth, phy_ethernet; without the sub-interface also mgmt_sup, iscsi, umbra, xlport,
// kiro and pemu.  eobc and dorsa have the slot only, tk too; the vsan type has a VSAN as its
// sub-interface.
inline constexpr bit_field k_phy_slot{19, 5};
inline constexpr bit_field k_phy_port{12, 7};
inline constexpr bit_field k_phy_sub{0, 12};

// port_channel.  A member (subtype 1) has a slot and a port where the others have the argument.
inline constexpr bit_field k_pc_subtype{20, 2};
inline constexpr bit_field k_pc_arg{8, 12};
inline constexpr bit_field k_pc_channel{0, 8};
inline constexpr bit_field k_pc_member_slot{16, 4};
inline constexpr bit_field k_pc_member_port{12, 4};
inline constexpr uint32_t k_pc_plain = 0;
inline constexpr uint32_t k_pc_member = 1;

// eth_port_channel.  Its subtype is read at the place of port_channel's (k_pc_subtype), which is in
// the middle of the sub-interface.
inline constexpr bit_field k_epc_sub{12, 12};
inline constexpr bit_field k_epc_channel{0, 12};

// inband.  The supervisor number 4 marks a port of a linecard, which has a slot besides.
inline constexpr bit_field k_inband_sup{19, 5};
inline constexpr bit_field k_inband_queue{12, 7};
inline constexpr bit_field k_inband_linecard_slot{4, 8};
inline constexpr uint32_t k_inband_linecard = 4;

// vsan: slot and port as the physical types.
inline constexpr bit_field k_vsan{0, 12};

// vlan.
inline constexpr bit_field k_vlan_vdc{16, 8};
inline constexpr bit_field k_vlan{0, 12};
inline constexpr uint16_t k_vlan_min = 1;
inline constexpr uint16_t k_vlan_max = 4094;

// fcip, fcmpls_tnnl.
inline constexpr bit_field k_fc_tunnel{0, 12};

// tk: slot as the physical types.
inline constexpr bit_field k_tk_dpp{14, 5};
inline constexpr bit_field k_tk_port{0, 14};

// nalp_vxe, zeff_vxe.
inline constexpr bit_field k_vxe_first{8, 8};
inline constexpr bit_field k_vxe_second{0, 8};

// xgfc_ifc.
inline constexpr bit_field k_ifc_slot{11, 5};
inline constexpr bit_field k_ifc_port{4, 7};
inline constexpr bit_field k_ifc_index{0, 4};

// dorsa: slot as the physical types.
inline constexpr bit_field k_dorsa_node{13, 6};
inline constexpr bit_field k_dorsa_port{0, 6};

// eth_inband, eth_inband_diag.
inline constexpr bit_field k_inband_channel{16, 8};
inline constexpr uint32_t k_inband_channel_diag = 32;

// tunnel.  The type is the top bit of the number.
inline constexpr bit_field k_tunnel_vdc{16, 8};
inline constexpr bit_field k_tunnel_number{0, 16};
inline constexpr bit_field k_tunnel_type{15, 1};

// lveth.
inline constexpr split_field k_lveth_slot{.low = {16, 8}, .high = {0, 2}};
inline constexpr bit_field k_lveth_port{4, 12};
inline constexpr unshifted_field k_lveth_sub{{2, 2}};

// veth.
inline constexpr bit_field k_veth_vport{4, 20};
inline constexpr bit_field k_veth_sub{0, 4};

// vif.
inline constexpr bit_field k_vif_index{0, 20};

// vfc: the subtype tells what the rest is.
inline constexpr bit_field k_vfc_subtype{20, 4};
inline constexpr bit_field k_vfc_number{0, 16};        // plain, on a veth
inline constexpr bit_field k_vfc_channel{0, 12};       // on a port-channel
inline constexpr bit_field k_vfc_slot{15, 5};          // on a slot and port
inline constexpr bit_field k_vfc_port{8, 7};           // on a slot and port
inline constexpr bit_field k_vfc_slot_and_port{8, 12}; // the two together as one number
inline constexpr uint32_t k_vfc_plain = 0;
inline constexpr uint32_t k_vfc_on_port_channel = 1;
inline constexpr uint32_t k_vfc_on_slot_port = 2;
inline constexpr uint32_t k_vfc_on_veth = 3;
inline constexpr uint32_t k_vfc_on_satellite = 4;

// vfc on a satellite, as it is read.
inline constexpr bit_field k_hobb_sat{0, 8};
inline constexpr bit_field k_hobb_slot{8, 4};
inline constexpr bit_field k_hobb_port{12, 6};

// vfc on a satellite, as it is built: at other places than it is read from, and over each other.
// Both sides are kept, since stored values and their readers each rely on one of them.
inline constexpr bit_field k_hobb_built_sat{10, 8};
inline constexpr bit_field k_hobb_built_slot{8, 5};
inline constexpr bit_field k_hobb_built_port{2, 7};

// sat_phy_eth, and the module and port of sat_phy_eth_fif.
inline constexpr bit_field k_sat{16, 8};
inline constexpr bit_field k_sat_module{12, 4};
inline constexpr bit_field k_sat_port{6, 6};
inline constexpr bit_field k_sat_sub{0, 6};
inline constexpr bit_field k_fif_index{21, 3};
// Satellite 100 with module 0 is slot 33 (slots count from zero here as everywhere).
inline constexpr uint32_t k_sat_slot_offset = 67;

// overlay.
inline constexpr bit_field k_overlay_type{19, 5};
inline constexpr bit_field k_overlay_port{0, 16};
inline constexpr uint16_t k_overlay_port_max = 65503;

// vl3.
inline constexpr bit_field k_vl3_subtype{22, 2};
inline constexpr bit_field k_vl3_slot{17, 5};
inline constexpr bit_field k_vl3_port{10, 7};
inline constexpr bit_field k_vl3_interface{0, 10};

// marn.
inline constexpr bit_field k_marn_ftag{12, 12};
inline constexpr bit_field k_marn_switch_id{0, 12};

// ruk_eth.
inline constexpr bit_field k_ruk_eth_slot{14, 10};
inline constexpr bit_field k_ruk_eth_port{6, 8};
inline constexpr bit_field k_ruk_eth_sub{0, 6};
inline constexpr uint16_t k_ruk_eth_slot_max = 514;

// mpls_sublayer.
inline constexpr bit_field k_mpls_label{0, 24};

// loopback.
inline constexpr bit_field k_loopback_number{0, 16};
inline constexpr uint16_t k_loopback_max = 1023;

// The value of a type with all fields zero.  The loopback code fills the whole top byte, so bit 31
// is set in its base and the type check sees 126 in its place.
constexpr IfIndex base_of(uint32_t type)
{
    return k_top_byte.put(type);
}

// The code in bits 24-30, known type or not.
constexpr uint32_t type_of(IfIndex value)
{
    return k_type.get(value);
}

inline constexpr IfIndex k_null_interface = base_of(IF_INDEX_TYPE_NULL_INTERFACE);
inline constexpr IfIndex k_eth_inband_diag =
    base_of(IF_INDEX_TYPE_ETH_INBAND_DIAG) | k_inband_channel.put(k_inband_channel_diag);

// The value that stands for all interfaces of a type.
constexpr IfIndex wildcard_of(uint32_t type)
{
    return k_all_of_type.mask() | base_of(type) | k_coordinates.mask();
}

} // namespace ifindex

#endif // IFINDEX_LAYOUT_H

/*
 * 32-bit interface index: types, error codes, and what can be asked of a value of any type.
 *
 * Conventions of the whole interface index library:
 *   - Values are in host byte order (ruk/if_index_fspf.h tells the exceptions).
 *   - A function that returns uint32_t and has an output returns an error code, and leaves its
 *     outputs untouched unless that is IF_INDEX_OK or its comment says otherwise.  A predicate
 *     returns int32_t: 1 or 0.
 *   - Slots, ports and all other numbers count from zero, as they are stored; only the _cli_init
 *     functions of ruk/if_index_cli.h take the numbers that a user types.
 *   - Outputs must not be null unless the comment says otherwise.
 *   - "The type check" is if_index_get_type.  Whatever takes a typed value runs it first and gives
 *     back its IF_INDEX_UNKNOWN_TYPE; a known type that a function does not handle is
 *     IF_INDEX_WRONG_TYPE.
 *   - All are pure functions but those that touch the platform word below, and the few that say
 *     that they look at it.  All are safe from any thread.
 */
#ifndef RUK_IF_INDEX_TYPES_H
#define RUK_IF_INDEX_TYPES_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the functions that return an error code return. */
enum if_index_error {
    IF_INDEX_OK = 0,
    IF_INDEX_UNKNOWN_TYPE = 11, /* the type code is not a known one */
    IF_INDEX_WRONG_TYPE = 12,   /* a known type, or subtype, that the function does not handle */
    IF_INDEX_NO_NEXT_TYPE = 13, /* there is no further type */
    IF_INDEX_BAD_ARGUMENT = 14  /* out of range, or a null output where that is looked at */
};

/*
 * The type codes: bits 24-30 of an IfIndex.  3 is no type.  39-74 are reserved: they pass the type
 * check, but nothing builds them.
 */
enum if_index_type {
    IF_INDEX_TYPE_PHY_FC = 1,            /* physical Fibre Channel port */
    IF_INDEX_TYPE_PHY_ETH = 2,           /* physical Ethernet port */
    IF_INDEX_TYPE_PORT_CHANNEL = 4,      /* SAN port-channel, with subtypes */
    IF_INDEX_TYPE_MGMT_SUP = 5,          /* supervisor management port */
    IF_INDEX_TYPE_INBAND = 6,            /* inband port of a supervisor or a linecard */
    IF_INDEX_TYPE_EOBC = 7,              /* Ethernet out-of-band channel port */
    IF_INDEX_TYPE_VSAN = 8,              /* VSAN interface */
    IF_INDEX_TYPE_VLAN = 9,              /* VLAN interface */
    IF_INDEX_TYPE_FCIP = 10,             /* FCIP tunnel interface */
    IF_INDEX_TYPE_ISCSI = 11,            /* iSCSI interface */
    IF_INDEX_TYPE_UMBRA = 12,            /* service (svc) port */
    IF_INDEX_TYPE_XLPORT = 13,           /* slot and port interface */
    IF_INDEX_TYPE_TK = 14,               /* slot, DPP and port interface */
    IF_INDEX_TYPE_FCMPLS_TNNL = 15,      /* FC over MPLS tunnel */
    IF_INDEX_TYPE_NALP_VXE = 16,         /* virtual interface (virtual type) */
    IF_INDEX_TYPE_XGFC_IFC = 17,         /* ifc interface: slot, port, index */
    IF_INDEX_TYPE_KIRO = 18,             /* slot and port interface */
    IF_INDEX_TYPE_ZEFF_VXE = 19,         /* virtual interface (virtual type) */
    IF_INDEX_TYPE_DORSA = 20,            /* slot, node and port interface */
    IF_INDEX_TYPE_ETH_INBAND = 21,       /* Ethernet inband channel */
    IF_INDEX_TYPE_ETH_PORT_CHANNEL = 22, /* Ethernet port-channel */
    IF_INDEX_TYPE_NULL_INTERFACE = 23,   /* the null interface */
    IF_INDEX_TYPE_TUNNEL = 24,           /* IP tunnel */
    IF_INDEX_TYPE_ETH_INBAND_DIAG = 25,  /* Ethernet inband diagnostic channel */
    IF_INDEX_TYPE_PHY_ETHERNET = 26,     /* physical Ethernet port, second form */
    IF_INDEX_TYPE_LVETH = 27,            /* logical virtual Ethernet; not valid in this release */
    IF_INDEX_TYPE_VETH = 28,             /* virtual Ethernet */
    IF_INDEX_TYPE_VIF = 29,              /* Ethernet server interface: virtual interface index */
    IF_INDEX_TYPE_VFC = 30,              /* virtual FC, FC server interface; with subtypes */
    IF_INDEX_TYPE_SAT_PHY_ETH = 31,      /* host port of a satellite (fabric extender) */
    IF_INDEX_TYPE_SAT_PHY_ETH_FIF = 32,  /* satellite fabric interface (fif) */
    IF_INDEX_TYPE_PEMU = 33,             /* slot and port interface */
    IF_INDEX_TYPE_OVERLAY = 34,          /* overlay interface */
    IF_INDEX_TYPE_VL3 = 35,              /* virtual layer-3 interface, or a replicator */
    IF_INDEX_TYPE_MARN = 36,             /* gateway port-channel: FTAG, switch id */
    IF_INDEX_TYPE_RUK_ETH = 37,          /* Ethernet port of a host data-path module */
    IF_INDEX_TYPE_MPLS_SUBLAYER = 38,    /* MPLS sub-layer interface */
    IF_INDEX_TYPE_LAST_RESERVED = 74,    /* the highest code that passes the type check */
    IF_INDEX_TYPE_LOOPBACK = 254 /* loopback; fills the whole top byte, never passes the check */
};

/* --- The registry of types --- */

/*
 * The type check: stores bits 24-30 of value in *type, on failure too, and returns
 * IF_INDEX_UNKNOWN_TYPE for 0, 3 and all above 74.  Bit 31 is ignored, so a loopback reads as 126.
 */
RUK_EXPORT uint32_t if_index_get_type(IfIndex value, uint8_t *type);

/*
 * Returns the value that stands for all interfaces of a type: bit 31, the type and all coordinate
 * bits set (0x81ffffff for type 1).  Looks at the low byte of type only.  0 for a code that is none
 * of 1, 2, 4-38 and 254.
 */
RUK_EXPORT IfIndex if_index_get_if_index_all_for_type(uint32_t type);

/*
 * Whether the type exists in this release: 1 for 0-38 but 3 and 27, else 0.  Looks at the low byte
 * of type only.
 */
RUK_EXPORT int32_t if_index_is_type_valid_in_current_release(uint32_t type);

/*
 * Steps *type to the next type that is valid in this release.  When there is none, *type has
 * climbed to 74 (or stays as it is, if above 73) and the result is IF_INDEX_NO_NEXT_TYPE.
 */
RUK_EXPORT uint32_t if_index_get_next_type(uint8_t *type);

/* --- Coordinates of a value of any type --- */

/*
 * Stores the slot.  Types without one are IF_INDEX_WRONG_TYPE, but eth_inband and eth_inband_diag
 * give IF_INDEX_OK with *slot left untouched.  Of the port-channels (port_channel, marn) only
 * subtype 1 has a slot.  For a satellite port it is satellite + module - 67.
 */
RUK_EXPORT uint32_t if_index_get_slot(IfIndex value, uint16_t *slot);

/*
 * Stores the port.  Wider ports and numbers (tk, tunnel, overlay, mpls_sublayer) are cut to their
 * low byte; an eobc port is 0; for a vfc on a satellite it is one more than the port that its
 * reader gives.
 */
RUK_EXPORT uint32_t if_index_get_port(IfIndex value, uint8_t *port);

/*
 * Stores the sub-interface, 0 for the main interface and for marn.  That of lveth keeps its place:
 * 0, 4, 8 or 12.
 */
RUK_EXPORT uint32_t if_index_get_sub_intf(IfIndex value, uint16_t *sub);

/* Whether if_index_get_sub_intf succeeds and gives a sub-interface other than 0. */
RUK_EXPORT int32_t if_index_is_sub_intf(IfIndex value);

/*
 * Returns value with its sub-interface cleared, or 0 when its type has none.  Handles phy_fc,
 * phy_eth, phy_ethernet, port_channel, eth_port_channel, lveth, veth, sat_phy_eth and ruk_eth.
 */
RUK_EXPORT IfIndex if_index_get_mainintf_from_subintf(IfIndex value);

/*
 * Returns main with the sub-interface sub OR-ed in: its low 12 bits, for sat_phy_eth its low 6.  0
 * for all types but phy_fc, phy_eth, phy_ethernet, port_channel, eth_port_channel and sat_phy_eth:
 * fewer than the opposite direction handles.  A sub-interface that main already has is not cleared
 * first.
 */
RUK_EXPORT IfIndex if_index_get_subintf_from_mainintf(IfIndex main, uint32_t sub);

/* As if_index_get_mainintf_from_subintf, for phy_eth and phy_ethernet only (else 0). */
RUK_EXPORT IfIndex if_index_phy_eth_get_mainintf_from_subintf(IfIndex value);

/* As if_index_get_mainintf_from_subintf, for sat_phy_eth only (else 0). */
RUK_EXPORT IfIndex if_index_sat_phy_eth_get_mainintf_from_subintf(IfIndex value);

/* --- Port-channels: port_channel and eth_port_channel --- */

/* As if_index_get_mainintf_from_subintf, for the two port-channel types only (else 0). */
RUK_EXPORT IfIndex if_index_port_channel_mainintf_from_subintf(IfIndex value);

/*
 * Returns value with sub OR-ed in at the place of the sub-interface, not cut to its width; 0 when
 * it is no port-channel.
 */
RUK_EXPORT IfIndex if_index_port_channel_subintf_from_mainintf(IfIndex value, uint32_t sub);

/*
 * Returns the sub-interface, which is the VLAN id.  Any value that is no eth_port_channel is read
 * as a port_channel: there is no type check.
 */
RUK_EXPORT uint32_t if_index_port_channel_get_vlan_id(IfIndex value);

/* Whether value is a port_channel of subtype 0, or an eth_port_channel, with a sub-interface. */
RUK_EXPORT int32_t if_index_is_port_channel_sub_interface(IfIndex value);

/* Stores the highest channel number, 4095 for both types of port-channel. */
RUK_EXPORT uint32_t if_index_get_max_channel_id_for_ifindex(IfIndex value, uint16_t *max);

/*
 * --- Predicates.  Those that take a value, but for the last, compare bits 24-30 and need no known
 * type. ---
 */

RUK_EXPORT int32_t if_index_is_satellite_interface(IfIndex value);
RUK_EXPORT int32_t if_index_is_tunnel_intf(IfIndex value);
RUK_EXPORT int32_t if_index_is_port_channel_intf(IfIndex value);
RUK_EXPORT int32_t if_index_is_eth_port_channel_intf(IfIndex value);
RUK_EXPORT int32_t if_index_is_overlay_intf(IfIndex value);
RUK_EXPORT int32_t if_index_is_eth_sup_inband(IfIndex value);
RUK_EXPORT int32_t if_index_is_eth_sup_inband_diag(IfIndex value);

/* Whether value is an inband port with the supervisor number 4, which marks a linecard. */
RUK_EXPORT int32_t if_index_is_linecard_inband(IfIndex value);

/* Whether vlan is in 1-4094. */
RUK_EXPORT int32_t if_index_is_valid_vlan_id(int32_t vlan);

/* Whether the type code is that of a virtual type: nalp_vxe or zeff_vxe. */
RUK_EXPORT int32_t if_index_is_virtual_type(uint8_t type);

/*
 * Stores if_index_is_virtual_type of value's type.  Always IF_INDEX_OK: when the type check fails,
 * *is_virtual is left untouched.
 */
RUK_EXPORT uint32_t if_index_is_virtual_interface(IfIndex value, uint32_t *is_virtual);

/* --- Whole values --- */

/* Returns a - b, wrapped to 32 bits: an order for sorting values that are less than 2^31 apart. */
RUK_EXPORT int32_t if_index_compare(IfIndex a, IfIndex b);

/*
 * Returns value with the device context in bits 16-23 replaced by vdc.  The type is not looked at
 * and vdc is not cut to 8 bits: what is above them is OR-ed into the type.
 */
RUK_EXPORT IfIndex if_index_vlan_port_convert_to_vdc(IfIndex value, uint32_t vdc);

/* --- Platform: one word for the process --- */

/* Stores the platform: alder if is_alder, else birch if is_birch, else neither. */
RUK_EXPORT void cli_set_platform_alder(int32_t is_alder, int32_t is_birch);

/*
 * Returns 0 and makes the platform cedar, whatever it was set to.  The next three ask this one
 * first, so in this build they always see cedar.
 */
RUK_EXPORT int32_t cli_is_platform_alder(void);

RUK_EXPORT int32_t cli_is_platform_birch(void);    /* always 0 */
RUK_EXPORT int32_t cli_is_platform_cedar(void);    /* always 1 */
RUK_EXPORT int32_t cli_platform_uses_san_pc(void); /* always 1 */

/* These two look at nothing. */
RUK_EXPORT int32_t cli_is_platform_larch(void); /* always 0 */
RUK_EXPORT int32_t cli_validate_param(void);    /* always 1 */

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_TYPES_H */

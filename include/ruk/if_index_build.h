/*
 * 32-bit interface index: constructors that take the fields as they are stored, and named values.
 *
 * A constructor judges each argument, at its declared width, against the range in its comment; one
 * out of range, or a null out, is IF_INDEX_BAD_ARGUMENT and leaves *out untouched.  Else it stores
 * the value and returns IF_INDEX_OK.  Arguments marked "unchecked" take any value of their width:
 * "kept" tells how many of their bits get into the value, and without that word they are OR-ed in
 * whole and may run into the fields above.
 */
#ifndef RUK_IF_INDEX_BUILD_H
#define RUK_IF_INDEX_BUILD_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* slot 0-31, port 0-127, sub 0-4095.  if_index_phy_ethernet_init builds the type phy_ethernet. */
RUK_EXPORT uint32_t if_index_phy_fc_port_init(IfIndex *out, uint16_t slot, uint8_t port,
                                              uint16_t sub);
RUK_EXPORT uint32_t if_index_phy_eth_port_init(IfIndex *out, uint16_t slot, uint8_t port,
                                               uint16_t sub);
RUK_EXPORT uint32_t if_index_phy_ethernet_init(IfIndex *out, uint16_t slot, uint8_t port,
                                               uint16_t sub);

/*
 * channel 0-4095 of which 8 bits are kept, so 300 builds channel 44; subtype 0-3, arg 0-4095 (the
 * sub-interface in subtype 0).
 */
RUK_EXPORT uint32_t if_index_port_channel_init(IfIndex *out, uint16_t channel);
RUK_EXPORT uint32_t if_index_port_channel_init_internal(IfIndex *out, uint16_t channel,
                                                        uint8_t subtype, uint16_t arg);

/*
 * The 10G FC member form (subtype 1) of a port_channel.  All unchecked: 8 bits of channel, 4 of
 * slot and 4 of port are kept.
 */
RUK_EXPORT uint32_t if_index_xgfc_port_init(IfIndex *out, uint16_t channel, uint16_t slot,
                                            uint8_t port);

/* channel 0-4095, sub 0-4095. */
RUK_EXPORT uint32_t if_index_eth_port_channel_init(IfIndex *out, uint16_t channel);
RUK_EXPORT uint32_t if_index_eth_port_channel_init_subintf(IfIndex *out, uint16_t channel,
                                                           uint16_t sub);

/*
 * channel 0-4095, subtype 0-3, arg 0-4095, put where a port_channel has them (8 bits of channel
 * kept), though the readers of an eth_port_channel look elsewhere.
 */
RUK_EXPORT uint32_t if_index_eth_port_channel_init_internal(IfIndex *out, uint16_t channel,
                                                            uint8_t subtype, uint16_t arg);

/* slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_mgmt_sup_port_init(IfIndex *out, uint16_t slot, uint8_t port);

/*
 * sup 0-4, queue 0-3.  On the alder and larch platforms a queue of 2 is stored as 1; for a queue
 * of 2 the platform word is looked at, and so pinned.
 */
RUK_EXPORT uint32_t if_index_inband_port_init(IfIndex *out, uint8_t sup, uint8_t queue);

/* Inband port of a linecard (supervisor 4): queue 0-3, slot unchecked (its field has 8 bits). */
RUK_EXPORT uint32_t if_index_inband_linecard_port_init(IfIndex *out, uint8_t queue, uint16_t slot);

/* slot 0-31. */
RUK_EXPORT uint32_t if_index_eobc_port_init(IfIndex *out, uint16_t slot);

/*
 * slot 0-31, port 0-127, vsan up to 4095.  A negative vsan passes, and its sign bits overwrite all
 * the rest of the value.
 */
RUK_EXPORT uint32_t if_index_vsan_port_init(IfIndex *out, uint16_t slot, uint8_t port,
                                            int32_t vsan);

/* vdc (device context) 0-255, vlan 1-4094. */
RUK_EXPORT uint32_t if_index_vlan_port_init(IfIndex *out, uint32_t vdc, uint32_t vlan);

/* tunnel 0-255. */
RUK_EXPORT uint32_t if_index_fcip_port_init(IfIndex *out, uint16_t tunnel);
RUK_EXPORT uint32_t if_index_fcmpls_tnnl_init(IfIndex *out, uint16_t tunnel);

/* slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_iscsi_port_init(IfIndex *out, uint16_t slot, uint8_t port);
RUK_EXPORT uint32_t if_index_umbra_port_init(IfIndex *out, uint16_t slot, uint8_t port);
RUK_EXPORT uint32_t if_index_xlport_init(IfIndex *out, uint16_t slot, uint8_t port);
RUK_EXPORT uint32_t if_index_kiro_port_init(IfIndex *out, uint16_t slot, uint8_t port);
RUK_EXPORT uint32_t if_index_pemu_port_init(IfIndex *out, uint16_t slot, uint8_t port);

/* slot 0-31, dpp 0-31, port 0-16382 (one less than its field holds). */
RUK_EXPORT uint32_t if_index_tk_port_init(IfIndex *out, uint16_t slot, uint8_t dpp, uint16_t port);

/* Two fields of 8 bits each, unchecked. */
RUK_EXPORT uint32_t if_index_nalp_vxe_init(IfIndex *out, uint8_t first, uint8_t second);
RUK_EXPORT uint32_t if_index_zeff_vxe_init(IfIndex *out, uint8_t first, uint8_t second);

/* slot 0-31, port 0-127, index unchecked with 4 bits kept. */
RUK_EXPORT uint32_t if_index_xgfc_ifc_init(IfIndex *out, uint16_t slot, uint8_t port,
                                           uint8_t index);

/* slot 0-31, node unchecked (its field has 6 bits), port 0-16. */
RUK_EXPORT uint32_t if_index_dorsa_port_init(IfIndex *out, uint16_t slot, uint8_t node,
                                             uint8_t port);

/* channel 0-32; 32 builds the diagnostic channel, which has a type of its own. */
RUK_EXPORT uint32_t if_index_eth_inband_port_init(IfIndex *out, uint8_t channel);

/* The diagnostic channel, 0x19200000. */
RUK_EXPORT uint32_t if_index_eth_inband_diag_port_init(IfIndex *out);

/* The null interface, 0x17000000. */
RUK_EXPORT uint32_t if_index_null_interface_init(IfIndex *out);

/* vdc (device context) unchecked with 8 bits kept, number 0-65535. */
RUK_EXPORT uint32_t if_index_tunnel_init(IfIndex *out, uint32_t vdc, uint32_t number);

/* As if_index_tunnel_init, with number unchecked.  A null out is ignored. */
RUK_EXPORT void if_index_tunnel_create(IfIndex *out, uint32_t vdc, uint32_t number);

/* slot unchecked with 10 bits kept, port 0-4095, sub 0-15 of which bits 2 and 3 are kept. */
RUK_EXPORT uint32_t if_index_lveth_init(IfIndex *out, uint16_t slot, uint16_t port, uint16_t sub);

/* vport 0-1048575, sub 0-15. */
RUK_EXPORT uint32_t if_index_veth_init(IfIndex *out, uint32_t vport, uint16_t sub);

/* The type vif under both names: index unchecked with 20 bits kept. */
RUK_EXPORT uint32_t if_index_ether_server_interface_init(IfIndex *out, uint32_t index);
RUK_EXPORT uint32_t if_index_vif_init(IfIndex *out, uint32_t index);

/* A plain vfc: number unchecked with 16 bits kept. */
RUK_EXPORT uint32_t if_index_fc_server_interface_init(IfIndex *out, uint32_t number);

/* number 0-61440: a plain vfc, a vfc on a veth. */
RUK_EXPORT uint32_t if_index_vfc_init(IfIndex *out, uint32_t number);
RUK_EXPORT uint32_t if_index_vfc_veth_init(IfIndex *out, uint32_t number);

/* A vfc on a port-channel: channel 1-4096, counted from one even here. */
RUK_EXPORT uint32_t if_index_vfc_port_channel_init(IfIndex *out, uint16_t channel);

/* A vfc on a slot and port: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_vfc_slot_port_init(IfIndex *out, uint16_t slot, uint8_t port);

/*
 * A vfc on a satellite: sat 0-255, slot 0-31, port 0-127.  The value has them at overlapping places
 * (sat from bit 10, slot from bit 8, port from bit 2), which are not those that
 * if_index_vfc_hobb_get_fields reads.
 */
RUK_EXPORT uint32_t if_index_vfc_hobb_init(IfIndex *out, uint8_t sat, uint16_t slot, uint8_t port);

/* All unchecked; the fields have 8, 4, 6 and 6 bits. */
RUK_EXPORT uint32_t if_index_sat_phy_eth_port_init(IfIndex *out, uint8_t sat, uint8_t module,
                                                   uint8_t port, uint16_t sub);

/* The same from a slot: satellite slot + 67 cut to 8 bits, module 0; without sub, sub-interface 0.
 */
RUK_EXPORT uint32_t if_index_sat_phy_eth_port_init_from_slot_port_subintf(IfIndex *out,
                                                                          uint16_t slot,
                                                                          uint8_t port,
                                                                          uint16_t sub);
RUK_EXPORT uint32_t if_index_sat_phy_eth_port_init_from_slot_port(IfIndex *out, uint16_t slot,
                                                                  uint8_t port);

/* All unchecked; the fields have 4, 6 and 3 bits. */
RUK_EXPORT uint32_t if_index_sat_phy_eth_fif_port_init(IfIndex *out, uint8_t module, uint8_t port,
                                                       uint8_t index);

/* port_type unchecked (its field has 5 bits), port 0-65503. */
RUK_EXPORT uint32_t if_index_overlay_init(IfIndex *out, uint8_t port_type, uint32_t port);

/* subtype 0-3, slot 0-31, port 0-127, number 0-1023. */
RUK_EXPORT uint32_t if_index_vl3_interface_init(IfIndex *out, uint8_t subtype, uint16_t slot,
                                                uint8_t port, uint16_t number);

/* ftag 0-1023 (its field has 12 bits), switch_id 0-4095. */
RUK_EXPORT uint32_t if_index_marn_interface_init(IfIndex *out, uint16_t ftag, uint16_t switch_id);

/*
 * slot 0-514, port 0-255, sub 0-63.  From a module: module 3-515, stored as the slot; from a slot:
 * slot 2-514, stored plus one.
 */
RUK_EXPORT uint32_t if_index_ruk_eth_init(IfIndex *out, uint16_t slot, uint8_t port, uint16_t sub);
RUK_EXPORT uint32_t if_index_ruk_eth_init_from_mod(IfIndex *out, uint16_t module, uint8_t port,
                                                   uint16_t sub);
RUK_EXPORT uint32_t if_index_ruk_eth_init_from_slot(IfIndex *out, uint16_t slot, uint8_t port,
                                                    uint16_t sub);

/* label not 0, of which 24 bits are kept. */
RUK_EXPORT uint32_t if_index_mpls_sublayer_port_init(IfIndex *out, uint32_t label);

/* number 0-1023.  No reader takes the value apart again: the type check does not know it. */
RUK_EXPORT uint32_t if_index_loopback_port_init(IfIndex *out, uint16_t number);

/* --- Values returned --- */

/* The null interface, 0x17000000. */
RUK_EXPORT IfIndex if_index_get_null_interface(void);

/* The loopback of the low 16 bits of number. */
RUK_EXPORT IfIndex if_index_get_loopback_port(uint32_t number);

/* Inband: supervisor 3 queue 0, 2 queue 0, 1 queue 3, 1 queue 1. */
RUK_EXPORT IfIndex if_index_inband_get_remote_sup(void);
RUK_EXPORT IfIndex if_index_inband_get_local_sup(void);
RUK_EXPORT IfIndex if_index_inband_get_active_sup_bit_bucket(void);
RUK_EXPORT IfIndex if_index_inband_get_active_sup_priority_hi(void);

/* Inband supervisor 1 queue 2; queue 1 on alder and larch.  Looks at the platform word, so it pins
 * it. */
RUK_EXPORT IfIndex if_index_inband_get_active_sup_priority_lo(void);

/* Inband port of a linecard: queue 1, slot unchecked as in if_index_inband_linecard_port_init. */
RUK_EXPORT IfIndex if_index_inband_linecard_get_priority_hi(uint16_t slot);

/* Channels of eth_inband: 1, 2, 3, 5, 6, 7, 8, 9, 10, 11, 12, 31. */
RUK_EXPORT IfIndex if_index_eth_inband_get_priority_hi(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_priority_lo(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_port_security(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_mcast(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_quill(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_pong(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_qinq(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_hobb(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_peer_link_gateway(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_glean_fast_path(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_lisp_copy(void);
RUK_EXPORT IfIndex if_index_eth_inband_get_sup_non_trusted(void);

/*
 * Store the first and the last tunnel of a device context, or overlay port of a port type, and
 * return the first.  8 bits of vdc and port_type are kept; the last ones are number 65535 and port
 * 65503.
 */
RUK_EXPORT IfIndex if_index_get_tunnel_range(uint32_t vdc, IfIndex *first, IfIndex *last);
RUK_EXPORT IfIndex if_index_get_overlay_range(uint32_t port_type, IfIndex *first, IfIndex *last);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_BUILD_H */

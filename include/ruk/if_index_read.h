/*
 * 32-bit interface index: readers, which take a value of a known type apart.
 *
 * A reader runs the type check (IF_INDEX_UNKNOWN_TYPE), refuses the types that it does not read
 * (IF_INDEX_WRONG_TYPE), then stores its fields.  On failure no output is written.  The types are
 * named at the head of each family.
 *
 * Widths: slots and sub-interfaces are 16 bits, ports 8.  VSANs, VLANs with their device context,
 * IP tunnel, overlay port, virtual port, vif and server interface numbers are 32 bits.  Anything
 * else has the smallest width that holds the field.
 */
#ifndef RUK_IF_INDEX_READ_H
#define RUK_IF_INDEX_READ_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* phy_fc: slot 0-31, port 0-127, sub-interface 0-4095. */
RUK_EXPORT uint32_t if_index_phy_fc_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_phy_fc_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_phy_fc_get_sub_intf(IfIndex value, uint16_t *sub);
RUK_EXPORT uint32_t if_index_phy_fc_get_fields(IfIndex value, uint16_t *slot, uint8_t *port,
                                               uint16_t *sub);

/* phy_eth and phy_ethernet: slot 0-31, port 0-127, sub-interface 0-4095. */
RUK_EXPORT uint32_t if_index_phy_eth_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_phy_eth_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_phy_eth_get_sub_intf(IfIndex value, uint16_t *sub);
RUK_EXPORT uint32_t if_index_phy_eth_get_fields(IfIndex value, uint16_t *slot, uint8_t *port,
                                                uint16_t *sub);

/*
 * port_channel and eth_port_channel: channel 0-255 (eth_port_channel 0-4095), subtype 0-3 and the
 * subtype's argument 0-4095, which is the sub-interface.  In an eth_port_channel the subtype is
 * read from the middle of the argument.
 */
RUK_EXPORT uint32_t if_index_port_channel_get_channel_num(IfIndex value, uint16_t *channel);
RUK_EXPORT uint32_t if_index_port_channel_get_subtype(IfIndex value, uint8_t *subtype);
RUK_EXPORT uint32_t if_index_port_channel_get_subtype_arg(IfIndex value, uint16_t *arg);
RUK_EXPORT uint32_t if_index_port_channel_get_fields(IfIndex value, uint16_t *channel,
                                                     uint8_t *subtype, uint16_t *arg);

/* eth_port_channel only: as above. */
RUK_EXPORT uint32_t if_index_eth_port_channel_get_channel_num(IfIndex value, uint16_t *channel);
RUK_EXPORT uint32_t if_index_eth_port_channel_get_subtype(IfIndex value, uint8_t *subtype);
RUK_EXPORT uint32_t if_index_eth_port_channel_get_subtype_arg(IfIndex value, uint16_t *arg);
RUK_EXPORT uint32_t if_index_eth_port_channel_get_fields(IfIndex value, uint16_t *channel,
                                                         uint16_t *arg);

/* mgmt_sup: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_mgmt_sup_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_mgmt_sup_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_mgmt_sup_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);

/* eobc: slot 0-31, and the port bits, which no constructor sets. */
RUK_EXPORT uint32_t if_index_eobc_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_eobc_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);

/* inband: supervisor 0-31 (4 is a linecard), queue 0-127. */
RUK_EXPORT uint32_t if_index_inband_get_sup(IfIndex value, uint8_t *sup);
RUK_EXPORT uint32_t if_index_inband_get_queue(IfIndex value, uint8_t *queue);
RUK_EXPORT uint32_t if_index_inband_get_fields(IfIndex value, uint8_t *sup, uint8_t *queue);

/* inband with supervisor 4 (another is IF_INDEX_WRONG_TYPE): queue 0-127, slot 0-255. */
RUK_EXPORT uint32_t if_index_inband_linecard_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_inband_linecard_get_fields(IfIndex value, uint8_t *queue,
                                                        uint16_t *slot);

/* vsan: slot 0-31, port 0-127, VSAN 0-4095. */
RUK_EXPORT uint32_t if_index_vsan_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_vsan_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_vsan_get_vsan(IfIndex value, uint32_t *vsan);
RUK_EXPORT uint32_t if_index_vsan_get_fields(IfIndex value, uint16_t *slot, uint8_t *port,
                                             uint32_t *vsan);

/* vlan: device context (VDC) 0-255, VLAN 0-4095. */
RUK_EXPORT uint32_t if_index_vlan_get_fields(IfIndex value, uint32_t *vdc, uint32_t *vlan);
RUK_EXPORT uint32_t if_index_vlan_get_vd(IfIndex value, uint32_t *vdc);
RUK_EXPORT uint32_t if_index_vlan_get_vlan(IfIndex value, uint32_t *vlan);

/* fcip: tunnel 0-4095. */
RUK_EXPORT uint32_t if_index_fcip_get_tunnel(IfIndex value, uint16_t *tunnel);

/* iscsi: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_iscsi_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);

/* umbra: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_umbra_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);
RUK_EXPORT uint32_t if_index_umbra_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_umbra_get_port(IfIndex value, uint8_t *port);

/* xlport: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_xlport_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);
RUK_EXPORT uint32_t if_index_xlport_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_xlport_get_port(IfIndex value, uint8_t *port);

/* tk: DPP number 0-31, port 0-16383. */
RUK_EXPORT uint32_t if_index_tk_get_dpp_num(IfIndex value, uint8_t *dpp);
RUK_EXPORT uint32_t if_index_tk_get_port(IfIndex value, uint16_t *port);

/* fcmpls_tnnl: tunnel 0-4095. */
RUK_EXPORT uint32_t if_index_fcmpls_tnnl_get_tunnel(IfIndex value, uint16_t *tunnel);

/* kiro: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_kiro_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);
RUK_EXPORT uint32_t if_index_kiro_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_kiro_get_port(IfIndex value, uint8_t *port);

/* dorsa: slot 0-31, node 0-63, port 0-63. */
RUK_EXPORT uint32_t if_index_dorsa_get_fields(IfIndex value, uint16_t *slot, uint8_t *node,
                                              uint8_t *port);
RUK_EXPORT uint32_t if_index_dorsa_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_dorsa_get_node(IfIndex value, uint8_t *node);
RUK_EXPORT uint32_t if_index_dorsa_get_port(IfIndex value, uint8_t *port);

/* eth_inband and eth_inband_diag: channel 0-255 (32 is the diagnostic one). */
RUK_EXPORT uint32_t if_index_eth_inband_get_fields(IfIndex value, uint8_t *channel);

/* tunnel: number 0-65535, type 0-1 (the top bit of the number), device context 0-255. */
RUK_EXPORT uint32_t if_index_tunnel_get_tunnel_num(IfIndex value, uint32_t *number);
RUK_EXPORT uint32_t if_index_tunnel_get_tunnel_type(IfIndex value, uint8_t *tunnel_type);
RUK_EXPORT uint32_t if_index_tunnel_get_tunnel_fields(IfIndex value, uint8_t *vdc,
                                                      uint8_t *tunnel_type, uint32_t *number);

/* lveth: slot 0-1023, port 0-4095, sub-interface at its place in the value: 0, 4, 8 or 12. */
RUK_EXPORT uint32_t if_index_lveth_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_lveth_get_port(IfIndex value, uint16_t *port);
RUK_EXPORT uint32_t if_index_lveth_get_sub_intf(IfIndex value, uint16_t *sub);
RUK_EXPORT uint32_t if_index_lveth_get_fields(IfIndex value, uint16_t *slot, uint16_t *port,
                                              uint16_t *sub);

/* veth: virtual port 0-1048575, sub-interface 0-15. */
RUK_EXPORT uint32_t if_index_veth_get_vport(IfIndex value, uint32_t *vport);
RUK_EXPORT uint32_t if_index_veth_get_sub_intf(IfIndex value, uint16_t *sub);
RUK_EXPORT uint32_t if_index_veth_get_fields(IfIndex value, uint32_t *vport, uint16_t *sub);

/* vif: virtual interface index 0-1048575. */
RUK_EXPORT uint32_t if_index_vif_get_vifindex(IfIndex value, uint32_t *index);

/*
 * Server interface number: the virtual port of a veth, the index of a vif, the low 16 bits of a
 * vfc. The second reader does not take a veth (IF_INDEX_WRONG_TYPE).
 */
RUK_EXPORT uint32_t if_index_server_interface_get_sif_num(IfIndex value, uint32_t *number);
RUK_EXPORT uint32_t if_index_server_interface_get_fields(IfIndex value, uint32_t *number);

/*
 * sat_phy_eth: satellite 0-255, module 0-15, port 0-63, sub-interface 0-63.  sub of
 * if_index_sat_get_fields may be null and is then skipped.
 */
RUK_EXPORT uint32_t if_index_sat_get_sat_num(IfIndex value, uint8_t *sat);
RUK_EXPORT uint32_t if_index_sat_get_fields(IfIndex value, uint8_t *sat, uint8_t *module,
                                            uint8_t *port, uint16_t *sub);
RUK_EXPORT uint32_t if_index_sat_phy_eth_get_sub_intf(IfIndex value, uint16_t *sub);

/*
 * sat_phy_eth: the slot is satellite + module - 67, wrapped to 16 bits.  Every failure of these two
 * is IF_INDEX_BAD_ARGUMENT.
 */
RUK_EXPORT uint32_t if_index_sat_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_sat_get_port(IfIndex value, uint8_t *port);

/* sat_phy_eth_fif: module 0-15, fabric port 0-63, index 0-7. */
RUK_EXPORT uint32_t if_index_sat_get_fif_fields(IfIndex value, uint8_t *module, uint8_t *port,
                                                uint8_t *index);

/*
 * Satellite numbering, without an IfIndex; always IF_INDEX_OK.  A slot above 31 is that of
 * satellite slot + 67 (cut to 8 bits), else there is none and *sat is 0; a slot below 32 is its own
 * module, else *module is 0; the slot of a satellite's module is sat + module - 67, wrapped to 16
 * bits.
 */
RUK_EXPORT uint32_t if_index_sat_get_sat_from_slot(uint16_t slot, uint8_t *sat);
RUK_EXPORT uint32_t if_index_sat_get_sat_mod_from_slot(uint16_t slot, uint8_t *module);
RUK_EXPORT uint32_t if_index_sat_get_slot_from_sat_mod(uint8_t sat, uint8_t module, uint16_t *slot);

/* pemu: slot 0-31, port 0-127. */
RUK_EXPORT uint32_t if_index_pemu_get_fields(IfIndex value, uint16_t *slot, uint8_t *port);
RUK_EXPORT uint32_t if_index_pemu_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_pemu_get_port(IfIndex value, uint8_t *port);

/* overlay: port number 0-65535, port type 0-31. */
RUK_EXPORT uint32_t if_index_overlay_get_port(IfIndex value, uint32_t *port);
RUK_EXPORT uint32_t if_index_overlay_get_port_type(IfIndex value, uint8_t *port_type);
RUK_EXPORT uint32_t if_index_overlay_get_overlay_fields(IfIndex value, uint32_t *port,
                                                        uint8_t *port_type);

/* vl3: subtype 0-3, slot 0-31, port 0-127, interface number 0-1023. */
RUK_EXPORT uint32_t if_index_vl3_get_fields(IfIndex value, uint8_t *subtype, uint16_t *slot,
                                            uint8_t *port, uint16_t *number);
RUK_EXPORT uint32_t if_index_vl3_get_subtype(IfIndex value, uint8_t *subtype);
RUK_EXPORT uint32_t if_index_vl3_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_vl3_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_vl3_get_intf_num(IfIndex value, uint16_t *number);

/* marn: FTAG 0-4095, switch id 0-4095. */
RUK_EXPORT uint32_t if_index_marn_get_fields(IfIndex value, uint16_t *ftag, uint16_t *switch_id);
RUK_EXPORT uint32_t if_index_marn_get_ftag(IfIndex value, uint16_t *ftag);
RUK_EXPORT uint32_t if_index_marn_get_switch_id(IfIndex value, uint16_t *switch_id);

/* ruk_eth: slot 0-1023, port 0-255, sub-interface 0-63. */
RUK_EXPORT uint32_t if_index_ruk_eth_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_ruk_eth_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_ruk_eth_get_sub_intf(IfIndex value, uint16_t *sub);
RUK_EXPORT uint32_t if_index_ruk_eth_get_fields(IfIndex value, uint16_t *slot, uint8_t *port,
                                                uint16_t *sub);

/*
 * loopback: nothing passes these.  The type check does not know a loopback (IF_INDEX_UNKNOWN_TYPE),
 * and every other known type is IF_INDEX_WRONG_TYPE.
 */
RUK_EXPORT uint32_t if_index_loopback_get_port(IfIndex value, uint16_t *number);
RUK_EXPORT uint32_t if_index_loopback_get_fields(IfIndex value, uint16_t *number);

/*
 * vfc.  These look at their outputs first: a null one is IF_INDEX_BAD_ARGUMENT before anything
 * else. A subtype that a reader does not handle is IF_INDEX_WRONG_TYPE.
 *
 * if_index_vfc_get_fields and if_index_vfc_get_vfc_num take subtype 0 (number 0-65535), subtype 1
 * (the channel, 0-4095) and subtype 2 (slot and port as one number of 12 bits).
 */
RUK_EXPORT uint32_t if_index_vfc_get_vfc_subtype(IfIndex value, uint8_t *subtype);
RUK_EXPORT uint32_t if_index_vfc_get_fields(IfIndex value, uint8_t *subtype, uint16_t *number);
RUK_EXPORT uint32_t if_index_vfc_get_vfc_num(IfIndex value, uint16_t *number);

/* vfc of subtype 1: subtype (1), channel 0-4095. */
RUK_EXPORT uint32_t if_index_vfc_port_channel_get_fields(IfIndex value, uint8_t *subtype,
                                                         uint16_t *channel);

/* vfc of subtype 3: subtype (3), number 0-65535. */
RUK_EXPORT uint32_t if_index_vfc_veth_get_fields(IfIndex value, uint8_t *subtype, uint16_t *number);

/* vfc of subtype 2: subtype (2), slot 0-31, port 0-127.  The last one only checks value. */
RUK_EXPORT uint32_t if_index_vfc_slot_port_get_fields(IfIndex value, uint8_t *subtype,
                                                      uint16_t *slot, uint8_t *port);
RUK_EXPORT uint32_t if_index_vfc_slot_port_get_slot(IfIndex value, uint16_t *slot);
RUK_EXPORT uint32_t if_index_vfc_slot_port_get_port(IfIndex value, uint8_t *port);
RUK_EXPORT uint32_t if_index_vfc_slot_port_get_sub_intf(IfIndex value);

/*
 * vfc of subtype 4: subtype (4), satellite 0-255, slot 0-15, port 0-63.  Not the numbers that
 * if_index_vfc_hobb_init was given: it puts them at other places.
 */
RUK_EXPORT uint32_t if_index_vfc_hobb_get_fields(IfIndex value, uint8_t *subtype, uint8_t *sat,
                                                 uint16_t *slot, uint8_t *port);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_READ_H */

/*
 * 32-bit interface index: constructors that take the numbers a user types.
 *
 * Slots, ports and most other numbers count from one here and are stored less one; sub-interfaces,
 * subtypes and arguments are taken as they are, and so is everything marked "as stored".  A number
 * out of the range in the comment, or a null out, is IF_INDEX_BAD_ARGUMENT and leaves *out
 * untouched.  "Unchecked" numbers take any value, of which the low 8 bits count.
 */
#ifndef RUK_IF_INDEX_CLI_H
#define RUK_IF_INDEX_CLI_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* slot 1-32, port 1-128. */
RUK_EXPORT uint32_t if_index_phy_fc_port_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_iscsi_port_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_umbra_port_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_xlport_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_kiro_port_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_pemu_port_cli_init(IfIndex *out, int32_t slot, int32_t port);

/*
 * slot 1-32, port 1-128, sub 0-4095.  With sat_port 0 a phy_eth; else a sat_phy_eth of satellite
 * slot - 1, module port - 1 and port sat_port (unchecked, as stored).
 */
RUK_EXPORT uint32_t if_index_phy_eth_port_cli_init(IfIndex *out, int32_t slot, int32_t port,
                                                   int32_t sat_port, int32_t sub);

/*
 * first 1-32: a phy_ethernet of slot first and port second (1-128) with sub 0-4095; third is
 * ignored. Any other first: a sat_phy_eth of satellite first and module second (both unchecked) and
 * port third (1-128); sub is ignored.  Looks at the platform word, so it pins it.
 */
RUK_EXPORT uint32_t if_index_phy_ethernet_cli_init(IfIndex *out, int32_t first, int32_t second,
                                                   int32_t sub, int32_t third);

/* channel 1-256, sub 0-4095; subtype 0-3, arg 0-4095. */
RUK_EXPORT uint32_t if_index_port_channel_cli_init(IfIndex *out, int32_t channel, int32_t sub);
RUK_EXPORT uint32_t if_index_port_channel_cli_init_internal(IfIndex *out, int32_t channel,
                                                            int32_t subtype, int32_t arg);

/* channel 1-4096, sub 0-4095. */
RUK_EXPORT uint32_t if_index_eth_port_channel_cli_init(IfIndex *out, int32_t channel, int32_t sub);

/*
 * channel 1-4096, subtype 0-3, arg 0-4095, put where a port_channel has them: 8 bits of channel - 1
 * are kept.
 */
RUK_EXPORT uint32_t if_index_eth_port_channel_cli_init_internal(IfIndex *out, int32_t channel,
                                                                int32_t subtype, int32_t arg);

/* slot 0-31 and port 0-127, both as stored.  eobc has no port: it is judged and dropped. */
RUK_EXPORT uint32_t if_index_mgmt_sup_port_cli_init(IfIndex *out, int32_t slot, int32_t port);
RUK_EXPORT uint32_t if_index_eobc_port_cli_init(IfIndex *out, int32_t slot, int32_t port);

/* sup 0-4 and queue 0-3, both as stored, on every platform. */
RUK_EXPORT uint32_t if_index_inband_port_cli_init(IfIndex *out, int32_t sup, int32_t queue);

/* number 0-1023, as stored. */
RUK_EXPORT uint32_t if_index_loopback_port_cli_init(IfIndex *out, int32_t number);

/*
 * slot 1-32, port 1-128, vsan 0-4095 as stored; but slot 31 is the VSAN interface itself, and is
 * taken as stored with port 0-127 as stored.
 */
RUK_EXPORT uint32_t if_index_vsan_port_cli_init(IfIndex *out, int32_t slot, int32_t port,
                                                int32_t vsan);

/* vdc (device context) 0-255, vlan 1-4094, both as stored. */
RUK_EXPORT uint32_t if_index_vlan_port_cli_init(IfIndex *out, int32_t vdc, int32_t vlan);

/* tunnel 1-255. */
RUK_EXPORT uint32_t if_index_fcip_port_cli_init(IfIndex *out, int32_t tunnel);
RUK_EXPORT uint32_t if_index_fcmpls_tnnl_cli_init(IfIndex *out, int32_t tunnel);

/* slot 1-32, dpp 1-32, port 1-16383. */
RUK_EXPORT uint32_t if_index_tk_port_cli_init(IfIndex *out, int32_t slot, int32_t dpp,
                                              int32_t port);

/* vdc (device context) 0-255, number 0-65535, both as stored. */
RUK_EXPORT uint32_t if_index_tunnel_cli_init(IfIndex *out, int32_t vdc, int32_t number);

/* slot 1-32, port 1-4096, sub 0-15 of which bits 2 and 3 are kept. */
RUK_EXPORT uint32_t if_index_lveth_cli_init(IfIndex *out, int32_t slot, int32_t port, int32_t sub);

/* vport 1-1048576, sub 0-15. */
RUK_EXPORT uint32_t if_index_veth_cli_init(IfIndex *out, int32_t vport, int32_t sub);

/* A vif: number 1-1048576.  A plain vfc: number 1-61440. */
RUK_EXPORT uint32_t if_index_ether_sif_cli_init(IfIndex *out, int32_t number);
RUK_EXPORT uint32_t if_index_fc_sif_cli_init(IfIndex *out, int32_t number);

/* slot 1-32, node unchecked, port 1-128 (its field holds 64). */
RUK_EXPORT uint32_t if_index_dorsa_port_cli_init(IfIndex *out, int32_t slot, int32_t node,
                                                 int32_t port);

/* sat 1-256, module 1-2, port 1-64, sub 0-64: a sub of 64 is OR-ed into the port. */
RUK_EXPORT uint32_t if_index_sat_phy_eth_port_cli_init(IfIndex *out, int32_t sat, int32_t module,
                                                       int32_t port, int32_t sub);

/* port_type 0-4, port 0-65503, both as stored. */
RUK_EXPORT uint32_t if_index_overlay_cli_init(IfIndex *out, int32_t port_type, int32_t port);

/*
 * module 1-515 (128-642 on the birch platform), port unchecked, sub 0-63.  Looks at the platform
 * word, so it pins it.
 */
RUK_EXPORT uint32_t if_index_ruk_eth_cli_init(IfIndex *out, int32_t module, int32_t port,
                                              int32_t sub);

/* number 1-61441: a plain vfc, a vfc on a veth. */
RUK_EXPORT uint32_t if_index_vfc_cli_init(IfIndex *out, int32_t number);
RUK_EXPORT uint32_t if_index_vfc_veth_cli_init(IfIndex *out, int32_t number);

/* A vfc on a port-channel: channel 1-4096. */
RUK_EXPORT uint32_t if_index_vfc_port_channel_cli_init(IfIndex *out, uint16_t channel);

/* A vfc on a slot and port: slot 1-32, port 1-128. */
RUK_EXPORT uint32_t if_index_vfc_slot_port_cli_init(IfIndex *out, uint16_t slot, uint8_t port);

/* A vfc on a satellite: sat 1-255, slot 1-32, port 1-128.  See if_index_vfc_hobb_init. */
RUK_EXPORT uint32_t if_index_vfc_hobb_cli_init(IfIndex *out, uint8_t sat, uint16_t slot,
                                               uint8_t port);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_CLI_H */

/*
 * OpenFlow diagnostics: prints a controller connection's message counters and a switch's features
 * to standard output.
 *
 * Messages are those of OpenFlow 1.0.0 (wire protocol 0x01), as received: multi-byte fields in
 * network byte order, at any address, aligned or not.  Section numbers below are those of
 * its text.
 *
 * Every function returns 0.  No state: safe from any thread, though lines of two threads may mix.
 */
#ifndef RUK_OPENFLOW_H
#define RUK_OPENFLOW_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum brel_ofp_constants {
    /* Message types 0 (HELLO) to 21 (QUEUE_GET_CONFIG_REPLY), section 5.1. */
    BREL_OFP_MESSAGE_TYPES = 22
};

/* Messages of a connection, by message type. */
typedef struct brel_ofp_stats {
    int32_t sent[BREL_OFP_MESSAGE_TYPES];
    int32_t received[BREL_OFP_MESSAGE_TYPES];
} brel_ofp_stats;

static_assert(sizeof(brel_ofp_stats) == 176, "44 counters of 32 bits");
static_assert(offsetof(brel_ofp_stats, sent) == 0, "sent counters come first");
static_assert(offsetof(brel_ofp_stats, received) == 88, "received counters follow");

/*
 * Prints the total of the messages sent and a line per message type, then the same for the
 * messages received.  The totals are 32-bit sums and wrap around.
 */
RUK_EXPORT int32_t brel_ofp_dump_stats(const brel_ofp_stats *stats);

/*
 * Prints a features reply (ofp_switch_features, section 5.3.1) and each of its ports.  message
 * points to at least the 8 bytes of the header, whose length says how many bytes there are; none
 * behind those is read.  A port record that is not there whole is not printed.  A message shorter
 * than 32 bytes has no ports, and the bytes that its fields lack count as zeros.  The datapath id
 * is printed as the host reads it, without conversion.
 */
RUK_EXPORT int32_t brel_dump_feat_reply(const void *message);

/*
 * Prints a physical port (ofp_phy_port, section 5.2.1): the 48 bytes at port.  The port number is
 * printed as the host reads it, without conversion.  The name ends at its terminator or after 16
 * characters.
 */
RUK_EXPORT int32_t brel_dump_phy_port(const void *port);

/*
 * Prints one line: label, ": " and the names of the port features (ofp_port_features, section
 * 5.2.1) set in features, which is in host byte order.  A line of more than 1023 characters is
 * cut.
 */
RUK_EXPORT int32_t brel_dump_phy_port_features(uint32_t features, const char *label);

/*
 * Prints one line with the names of the actions in actions, which is in host byte order.  An
 * action counts as supported when actions shares any bit with the action's type number (not with
 * the bit of that number).
 */
RUK_EXPORT int32_t brel_dump_ofp_actions(uint32_t actions);

/*
 * Prints one line with the names of the capabilities (ofp_capabilities, section 5.3.1) set in
 * capabilities, which is in host byte order.
 */
RUK_EXPORT int32_t brel_dump_ofp_cap(uint32_t capabilities);

#ifdef __cplusplus
}
#endif

#endif /* RUK_OPENFLOW_H */

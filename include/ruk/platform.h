/*
 * Queries of the host that the data path runs on.
 *
 * No state of their own: safe from any thread.
 */
#ifndef RUK_PLATFORM_H
#define RUK_PLATFORM_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Does nothing.  Returns 0. */
RUK_EXPORT int32_t dpa_platform_init(void);

/*
 * Asks the Agent for the host's management address and stores it in *value, whose four bytes in
 * memory are the octets in text order (snprintf_ip_address formats it).  Returns the status of the
 * call (see ruk/agent.h), 0 on success; *value is left untouched when the exchange failed (1) and
 * holds whatever the Agent sent with any other status.
 */
RUK_EXPORT int32_t kt_dpa_platform_get_management_ip(uint32_t *value);

/*
 * Asks the kernel for the duplex mode (a DUPLEX_* value of <linux/ethtool.h>), the low 16 bits of
 * the speed in Mbit/s and the MTU in bytes of the data interface, "eth1".  Returns 0, or -1 with
 * all three outputs left untouched.
 */
RUK_EXPORT int32_t kt_platform_get_ethtool_info(uint32_t *duplex, uint32_t *speed, uint32_t *mtu);

#ifdef __cplusplus
}
#endif

#endif /* RUK_PLATFORM_H */

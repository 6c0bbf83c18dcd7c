/*
 * 32-bit interface index: FSPF interface numbers and byte order.
 *
 * FSPF, the Fibre Channel routing protocol, has interface numbers of its own, in a form of 16 bits
 * (phy_fc, port_channel, fcip) and one of 32 (also nalp_vxe, zeff_vxe and vfc).  Both travel in a
 * 32-bit word in network byte order; the 16-bit form is in its low half.  docs/interface-index.md
 * has the layouts.
 */
#ifndef RUK_IF_INDEX_FSPF_H
#define RUK_IF_INDEX_FSPF_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Store the FSPF number of value in *fspf, in network byte order.  A value that fails the type
 * check is IF_INDEX_UNKNOWN_TYPE and leaves *fspf untouched.  A known type that has no FSPF number
 * gives IF_INDEX_OK, and *fspf, which must therefore hold something, comes back with its bytes
 * reversed.
 */
RUK_EXPORT uint32_t convert_if_index_to_fspf16_if_index(IfIndex value, uint32_t *fspf);
RUK_EXPORT uint32_t convert_if_index_to_fspf_if_index(IfIndex value, uint32_t *fspf);

/*
 * Store the IfIndex of an FSPF number in network byte order.  Numbers out of their range are
 * IF_INDEX_BAD_ARGUMENT; port_channel and fcip numbers are cut to 8 bits first, a
 * vfc's channel is not.  *value is left
 * untouched on failure, and for an unknown kind: in the 16-bit form that is IF_INDEX_OK, in the
 * 32-bit form IF_INDEX_UNKNOWN_TYPE.
 */
RUK_EXPORT uint32_t convert_fspf16_if_index_to_if_index(uint32_t fspf, IfIndex *value);
RUK_EXPORT uint32_t convert_fspf_if_index_to_if_index(uint32_t fspf, IfIndex *value);

/* Return value with its four bytes reversed; the hosts of this library are little-endian. */
RUK_EXPORT uint32_t ntoh_if_index(uint32_t value);
RUK_EXPORT uint32_t hton_if_index(uint32_t value);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_FSPF_H */

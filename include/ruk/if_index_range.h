/*
 * 32-bit interface index: ranges.
 *
 * A range is its first and its last member, two values of one type that differ in the field that
 * the type steps through (the port of a slot, the sub-interface of a port-channel, a tunnel
 * number...). docs/interface-index.md has the field and the rules of every type.
 *
 * All three return IF_INDEX_UNKNOWN_TYPE when an argument fails the type check, and
 * IF_INDEX_BAD_ARGUMENT for arguments of different types, a type without ranges, members that are
 * not of one range, and a step past the last member.  The output is then left untouched (a count is
 * 0).
 *
 * A number within the range that the type's constructor refuses (fcip and fcmpls_tnnl above 255, tk
 * 16383, vlan 0 and 4095, overlay above 65503, a veth port above 1048575) is IF_INDEX_OK with the
 * output left untouched: give it a value beforehand.
 */
#ifndef RUK_IF_INDEX_RANGE_H
#define RUK_IF_INDEX_RANGE_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Stores the number of members in *count, which is set to 0 before anything else.  A value of any
 * known type is a range of one member.
 */
RUK_EXPORT uint32_t if_index_get_num_ports_in_if_index_range(IfIndex first, IfIndex last,
                                                             uint32_t *count);

/*
 * Stores the member at offset; offset 0 is first.  For a vfc of a subtype without ranges the result
 * is IF_INDEX_OK with *out left untouched.  A veth is not checked against last.
 */
RUK_EXPORT uint32_t if_index_get_if_index_in_range(IfIndex first, IfIndex last, IfIndex *out,
                                                   uint32_t offset);

/*
 * Stores the member after current.  For a dorsa, and for a vfc of a subtype without ranges, the
 * result is IF_INDEX_OK with *next left untouched.
 */
RUK_EXPORT uint32_t if_index_get_next_if_index_in_range(IfIndex first, IfIndex last,
                                                        IfIndex current, IfIndex *next);

#ifdef __cplusplus
}
#endif

#endif /* RUK_IF_INDEX_RANGE_H */

// Between the two halves of the ranges: what a step is, and the types with rules of their own.
#ifndef IFINDEX_RANGES_H
#define IFINDEX_RANGES_H

#include "ruk/if_index_types.h"

namespace ifindex
{

// A step within a range.  A lookup steps from the first member by the offset, the next-member
// operation from the current one by 1.
struct range_step {
    IfIndex first;
    IfIndex last;
    IfIndex from;
    uint32_t by;
};

// How many numbers there are from first to last; IF_INDEX_BAD_ARGUMENT when they are the wrong way
// round.
constexpr uint32_t count_numbers(uint32_t first, uint32_t last, uint32_t *count)
{
    if (first > last) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    *count = last - first + 1;
    return IF_INDEX_OK;
}

// The operations of the types that are no rows of the table.  "step" serves lookups and the
// next-member operation alike.
uint32_t step_port_channel(const range_step &step, IfIndex *out);
uint32_t count_port_channel(IfIndex first, IfIndex last, uint32_t *count);

uint32_t lookup_veth(const range_step &step, IfIndex *out);
uint32_t next_veth(const range_step &step, IfIndex *out);
uint32_t count_veth(IfIndex first, IfIndex last, uint32_t *count);

uint32_t lookup_vfc(const range_step &step, IfIndex *out);
uint32_t next_vfc(const range_step &step, IfIndex *out);
uint32_t count_vfc(IfIndex first, IfIndex last, uint32_t *count);

uint32_t lookup_sat_phy_eth(const range_step &step, IfIndex *out);
uint32_t next_sat_phy_eth(const range_step &step, IfIndex *out);
uint32_t count_sat_phy_eth(IfIndex first, IfIndex last, uint32_t *count);

} // namespace ifindex

#endif // IFINDEX_RANGES_H

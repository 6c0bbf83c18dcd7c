// The numbers of an interface name, and what is built from them.
#ifndef IFINDEX_KINDS_H
#define IFINDEX_KINDS_H

#include <array>
#include <cstddef>

#include "ruk/if_index_name.h"

namespace ifindex
{

// The numbers of a name.  Those beyond the count are 0.
struct coordinates {
    int32_t count;
    std::array<int32_t, IF_INDEX_NAME_COORDINATES> c; // no kind looks at more than four

    // The number at an index where a kind takes it only as the last of exactly so many.
    int32_t only_as_last(size_t index) const
    {
        return count == static_cast<int32_t>(index) + 1 ? c[index] : 0;
    }
};

// Builds the interface of a kind (ifindex/keywords.h), with the results of
// ulx_interface_coordinates_to_ifindex.
int32_t build_interface(int32_t kind, const coordinates &from, IfIndex *out);

} // namespace ifindex

#endif // IFINDEX_KINDS_H

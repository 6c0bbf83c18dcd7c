// From an interface kind and its numbers to an IfIndex.
#include "ruk/if_index_name.h"

#include <algorithm>

#include "ifindex/kinds.h"

namespace
{

using namespace ifindex;

coordinates take(const int32_t *numbers, int32_t count)
{
    constexpr int32_t k_looked_at = 4;
    coordinates taken{count, {}};
    std::copy_n(numbers, std::clamp(count, 0, k_looked_at), taken.c.begin());
    return taken;
}

} // namespace

int32_t ulx_interface_coordinates_to_ifindex(int32_t kind, const int32_t *coordinates,
                                             int32_t count, IfIndex *out)
{
    if (out == nullptr || (coordinates == nullptr && count > 0)) {
        return 0;
    }
    const kind_row *row = find_row(is_on_the_data_path(kind) ? kind_of("ruk-ethernet") : kind);
    return row == nullptr ? 0 : build_by(*row, take(coordinates, count), out);
}

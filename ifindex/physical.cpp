// Which interfaces are physical ports.
#include "ruk/if_index_name.h"
#include "ruk/if_index_types.h"

int32_t if_index_is_physical_interface(IfIndex value)
{
    uint8_t type = 0;
    if (if_index_get_type(value, &type) != IF_INDEX_OK) {
        return 0;
    }
    switch (type) {
    case IF_INDEX_TYPE_MGMT_SUP:
        return 1;
    case IF_INDEX_TYPE_PHY_FC:
    case IF_INDEX_TYPE_PHY_ETH:
    case IF_INDEX_TYPE_PHY_ETHERNET:
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return if_index_is_sub_intf(value) == 0 ? 1 : 0;
    default:
        return 0;
    }
}

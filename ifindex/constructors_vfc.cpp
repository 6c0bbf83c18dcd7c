// Constructors of virtual FC interfaces, for the fields as they are stored and as a user types
// them.
#include "ifindex/build.h"
#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"

using namespace ifindex;

namespace
{

constexpr uint32_t k_vfc_number_max = 61440;

template <typename... Parts> uint32_t build_vfc(IfIndex *out, uint32_t subtype, Parts... parts)
{
    return build(out, IF_INDEX_TYPE_VFC, kept(k_vfc_subtype, subtype), parts...);
}

} // namespace

uint32_t if_index_fc_server_interface_init(IfIndex *out, uint32_t number)
{
    return build_vfc(out, k_vfc_plain, kept(k_vfc_number, number));
}

uint32_t if_index_vfc_init(IfIndex *out, uint32_t number)
{
    return build_vfc(out, k_vfc_plain, limited(k_vfc_number, number, k_vfc_number_max));
}

uint32_t if_index_vfc_veth_init(IfIndex *out, uint32_t number)
{
    return build_vfc(out, k_vfc_on_veth, limited(k_vfc_number, number, k_vfc_number_max));
}

uint32_t if_index_vfc_port_channel_init(IfIndex *out, uint16_t channel)
{
    // Counts from one, alone among the constructors of its kind: the one-based constructor below
    // relies on that and takes nothing off.
    return build_vfc(out, k_vfc_on_port_channel, counted(k_vfc_channel, channel, 1, 4096));
}

uint32_t if_index_vfc_slot_port_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    return build_vfc(out, k_vfc_on_slot_port, whole(k_vfc_slot, slot), whole(k_vfc_port, port));
}

uint32_t if_index_vfc_hobb_init(IfIndex *out, uint8_t sat, uint16_t slot, uint8_t port)
{
    return build_vfc(out, k_vfc_on_satellite, whole(k_hobb_built_sat, sat),
                     whole(k_hobb_built_slot, slot), whole(k_hobb_built_port, port));
}

// The one-based ones refuse 0 and leave the rest to those above.  A negative number is huge there.

uint32_t if_index_vfc_cli_init(IfIndex *out, int32_t number)
{
    return number == 0 ? uint32_t{IF_INDEX_BAD_ARGUMENT} : if_index_vfc_init(out, less_one(number));
}

uint32_t if_index_vfc_veth_cli_init(IfIndex *out, int32_t number)
{
    return number == 0 ? uint32_t{IF_INDEX_BAD_ARGUMENT}
                       : if_index_vfc_veth_init(out, less_one(number));
}

uint32_t if_index_vfc_port_channel_cli_init(IfIndex *out, uint16_t channel)
{
    return if_index_vfc_port_channel_init(out, channel);
}

uint32_t if_index_vfc_slot_port_cli_init(IfIndex *out, uint16_t slot, uint8_t port)
{
    if (slot == 0 || port == 0) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return if_index_vfc_slot_port_init(out, static_cast<uint16_t>(less_one(slot)),
                                       static_cast<uint8_t>(less_one(port)));
}

uint32_t if_index_vfc_hobb_cli_init(IfIndex *out, uint8_t sat, uint16_t slot, uint8_t port)
{
    if (sat == 0 || slot == 0 || port == 0) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return if_index_vfc_hobb_init(out, static_cast<uint8_t>(less_one(sat)),
                                  static_cast<uint16_t>(less_one(slot)),
                                  static_cast<uint8_t>(less_one(port)));
}

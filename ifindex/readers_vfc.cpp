// Readers of virtual FC interfaces.  Alone among the readers these look at their outputs, before
// anything else, and at the subtype.
#include "ruk/if_index_read.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

constexpr type_set k_vfc = accepts(IF_INDEX_TYPE_VFC);

// A whole reader of one subtype.
template <typename... Outputs>
uint32_t read_subtype(IfIndex value, uint32_t subtype, Outputs... outputs)
{
    if ((false || ... || outputs.is_null())) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    uint32_t error = check_type(value, k_vfc);
    if (error == IF_INDEX_OK && k_vfc_subtype.get(value) != subtype) {
        error = IF_INDEX_WRONG_TYPE;
    }
    return store_unless(error, value, outputs...);
}

} // namespace

uint32_t if_index_vfc_get_vfc_subtype(IfIndex value, uint8_t *subtype)
{
    if (subtype == nullptr) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return read(value, k_vfc, to<k_vfc_subtype>(subtype));
}

uint32_t if_index_vfc_get_fields(IfIndex value, uint8_t *subtype, uint16_t *number)
{
    const auto subtype_out = to<k_vfc_subtype>(subtype);
    switch (k_vfc_subtype.get(value)) {
    case k_vfc_on_port_channel:
        return read_subtype(value, k_vfc_on_port_channel, subtype_out, to<k_vfc_channel>(number));
    case k_vfc_on_slot_port:
        return read_subtype(value, k_vfc_on_slot_port, subtype_out,
                            to<k_vfc_slot_and_port>(number));
    default:
        return read_subtype(value, k_vfc_plain, subtype_out, to<k_vfc_number>(number));
    }
}

uint32_t if_index_vfc_get_vfc_num(IfIndex value, uint16_t *number)
{
    uint8_t subtype = 0;
    return if_index_vfc_get_fields(value, &subtype, number);
}

uint32_t if_index_vfc_port_channel_get_fields(IfIndex value, uint8_t *subtype, uint16_t *channel)
{
    return read_subtype(value, k_vfc_on_port_channel, to<k_vfc_subtype>(subtype),
                        to<k_vfc_channel>(channel));
}

uint32_t if_index_vfc_veth_get_fields(IfIndex value, uint8_t *subtype, uint16_t *number)
{
    return read_subtype(value, k_vfc_on_veth, to<k_vfc_subtype>(subtype), to<k_vfc_number>(number));
}

uint32_t if_index_vfc_slot_port_get_fields(IfIndex value, uint8_t *subtype, uint16_t *slot,
                                           uint8_t *port)
{
    return read_subtype(value, k_vfc_on_slot_port, to<k_vfc_subtype>(subtype), to<k_vfc_slot>(slot),
                        to<k_vfc_port>(port));
}

uint32_t if_index_vfc_slot_port_get_slot(IfIndex value, uint16_t *slot)
{
    return read_subtype(value, k_vfc_on_slot_port, to<k_vfc_slot>(slot));
}

uint32_t if_index_vfc_slot_port_get_port(IfIndex value, uint8_t *port)
{
    return read_subtype(value, k_vfc_on_slot_port, to<k_vfc_port>(port));
}

uint32_t if_index_vfc_slot_port_get_sub_intf(IfIndex value)
{
    // There is no sub-interface to yield; the status alone is what callers ask for.
    return read_subtype(value, k_vfc_on_slot_port);
}

uint32_t if_index_vfc_hobb_get_fields(IfIndex value, uint8_t *subtype, uint8_t *sat, uint16_t *slot,
                                      uint8_t *port)
{
    return read_subtype(value, k_vfc_on_satellite, to<k_vfc_subtype>(subtype), to<k_hobb_sat>(sat),
                        to<k_hobb_slot>(slot), to<k_hobb_port>(port));
}

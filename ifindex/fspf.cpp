// Conversion between interface indexes and the interface numbers of FSPF, and byte order.
//
// An FSPF number has a kind, which is the type code of the interface or one of two codes of its
// own, and numbers at places that depend on the kind.  The words handed out and taken in are in
// network byte order; here they are in host order until the last step.
#include "ruk/if_index_fspf.h"

#include "ifindex/access.h"
#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"
#include "ruk/if_index_read.h"

using namespace ifindex;

namespace
{

// The 16-bit form.
constexpr bit_field k_kind16{12, 4};
constexpr bit_field k_slot16{7, 5};
constexpr bit_field k_port16{0, 7};

// The 32-bit form.
constexpr bit_field k_kind32{16, 8};
constexpr bit_field k_slot32{8, 8};
constexpr bit_field k_port32{0, 8};
constexpr bit_field k_number32{0, 16};
constexpr uint32_t k_kind_vfc_slot_port = 0xFA;
constexpr uint32_t k_kind_vfc_channel = 0xFB;

// What both forms read of a channel or tunnel number.  Both write 12 bits, so a tunnel above 255
// comes back cut.  Kept: both ends of a link must agree on it.
constexpr bit_field k_read_number{0, 8};

// The three kinds that both forms have.  A form says where it puts and finds their numbers.
struct fspf_form {
    bit_field kind;
    bit_field slot;
    bit_field port;
};

constexpr fspf_form k_form16{k_kind16, k_slot16, k_port16};
constexpr fspf_form k_form32{k_kind32, k_slot32, k_port32};

uint32_t put_phy_fc(IfIndex value, const fspf_form &form, uint32_t *fspf)
{
    uint16_t slot = 0;
    uint8_t port = 0;
    if (const uint32_t error = if_index_phy_fc_get_slot(value, &slot); error != IF_INDEX_OK) {
        return error;
    }
    if (const uint32_t error = if_index_phy_fc_get_port(value, &port); error != IF_INDEX_OK) {
        return error;
    }
    *fspf = form.kind.put(IF_INDEX_TYPE_PHY_FC) | form.slot.put(slot) | form.port.put(port);
    return IF_INDEX_OK;
}

// A channel or a tunnel number, whichever the reader gives.
uint32_t put_number(IfIndex value, const fspf_form &form, uint32_t kind,
                    uint32_t (*reader)(IfIndex, uint16_t *), uint32_t *fspf)
{
    uint16_t number = 0;
    const uint32_t error = reader(value, &number);
    if (error == IF_INDEX_OK) {
        *fspf = form.kind.put(kind) | number;
    }
    return error;
}

// Stores the number of a kind that both forms have, in host order.  Any other type is a success
// that leaves the word alone.
uint32_t put_common(IfIndex value, const fspf_form &form, uint32_t *fspf)
{
    switch (type_of(value)) {
    case IF_INDEX_TYPE_PHY_FC:
        return put_phy_fc(value, form, fspf);
    case IF_INDEX_TYPE_PORT_CHANNEL:
        return put_number(value, form, IF_INDEX_TYPE_PORT_CHANNEL,
                          if_index_port_channel_get_channel_num, fspf);
    case IF_INDEX_TYPE_FCIP:
        return put_number(value, form, IF_INDEX_TYPE_FCIP, if_index_fcip_get_tunnel, fspf);
    default:
        return IF_INDEX_OK;
    }
}

uint32_t put_vfc_slot_port(IfIndex value, uint32_t *fspf)
{
    uint8_t subtype = 0;
    uint16_t slot = 0;
    uint8_t port = 0;
    const uint32_t error = if_index_vfc_slot_port_get_fields(value, &subtype, &slot, &port);
    if (error == IF_INDEX_OK) {
        *fspf = k_kind32.put(k_kind_vfc_slot_port) | k_slot32.put(slot) | k_port32.put(port);
    }
    return error;
}

uint32_t put_vfc_channel(IfIndex value, uint32_t *fspf)
{
    uint8_t subtype = 0;
    uint16_t channel = 0;
    const uint32_t error = if_index_vfc_port_channel_get_fields(value, &subtype, &channel);
    if (error == IF_INDEX_OK) {
        *fspf = k_kind32.put(k_kind_vfc_channel) | channel;
    }
    return error;
}

// The low half of the value itself is what these kinds carry.
uint32_t put_low_half(IfIndex value, uint32_t *fspf)
{
    *fspf = k_kind32.put(type_of(value)) | k_low_half.get(value);
    return IF_INDEX_OK;
}

uint32_t put_vfc(IfIndex value, uint32_t *fspf)
{
    switch (k_vfc_subtype.get(value)) {
    case k_vfc_plain:
        return put_low_half(value, fspf);
    case k_vfc_on_port_channel:
        return put_vfc_channel(value, fspf);
    case k_vfc_on_slot_port:
        return put_vfc_slot_port(value, fspf);
    default:
        return IF_INDEX_OK;
    }
}

uint32_t put_fspf32(IfIndex value, uint32_t *fspf)
{
    switch (type_of(value)) {
    case IF_INDEX_TYPE_NALP_VXE:
    case IF_INDEX_TYPE_ZEFF_VXE:
        return put_low_half(value, fspf);
    case IF_INDEX_TYPE_VFC:
        return put_vfc(value, fspf);
    default:
        return put_common(value, k_form32, fspf);
    }
}

// The last step of both forward conversions.  The word is reversed even when nothing was put there,
// so for a type without an FSPF number callers get their own word back, reversed, with success.
uint32_t to_network_order(uint32_t error, uint32_t *fspf)
{
    if (error == IF_INDEX_OK) {
        *fspf = __builtin_bswap32(*fspf);
    }
    return error;
}

// Builds the interface of a kind that both forms have; any other kind gives unknown_kind.
uint32_t take_common(uint32_t host, const fspf_form &form, uint32_t unknown_kind, IfIndex *value)
{
    const auto number = static_cast<uint16_t>(k_read_number.get(host));
    switch (form.kind.get(host)) {
    case IF_INDEX_TYPE_PHY_FC:
        return if_index_phy_fc_port_init(value, static_cast<uint16_t>(form.slot.get(host)),
                                         static_cast<uint8_t>(form.port.get(host)), 0);
    case IF_INDEX_TYPE_PORT_CHANNEL:
        return if_index_port_channel_init(value, number);
    case IF_INDEX_TYPE_FCIP:
        return if_index_fcip_port_init(value, number);
    default:
        return unknown_kind;
    }
}

// The opposite of put_low_half.  All 16 bits are taken, whatever the type makes of them.
uint32_t take_low_half(uint32_t host, IfIndex *value)
{
    *value = base_of(k_kind32.get(host)) | k_number32.get(host);
    return IF_INDEX_OK;
}

} // namespace

uint32_t convert_if_index_to_fspf16_if_index(IfIndex value, uint32_t *fspf)
{
    if (!is_known_type(type_of(value))) {
        return IF_INDEX_UNKNOWN_TYPE;
    }
    return to_network_order(put_common(value, k_form16, fspf), fspf);
}

uint32_t convert_if_index_to_fspf_if_index(IfIndex value, uint32_t *fspf)
{
    if (!is_known_type(type_of(value))) {
        return IF_INDEX_UNKNOWN_TYPE;
    }
    return to_network_order(put_fspf32(value, fspf), fspf);
}

uint32_t convert_fspf16_if_index_to_if_index(uint32_t fspf, IfIndex *value)
{
    // An unknown kind is no error in this form, unlike in the other: callers rely on both.
    return take_common(__builtin_bswap32(fspf), k_form16, IF_INDEX_OK, value);
}

uint32_t convert_fspf_if_index_to_if_index(uint32_t fspf, IfIndex *value)
{
    const uint32_t host = __builtin_bswap32(fspf);
    const uint32_t number = k_number32.get(host);
    switch (k_kind32.get(host)) {
    case IF_INDEX_TYPE_NALP_VXE:
    case IF_INDEX_TYPE_ZEFF_VXE:
    case IF_INDEX_TYPE_VFC:
        return take_low_half(host, value);
    case k_kind_vfc_slot_port:
        return if_index_vfc_slot_port_init(value, static_cast<uint16_t>(k_slot32.get(host)),
                                           static_cast<uint8_t>(k_port32.get(host)));
    case k_kind_vfc_channel:
        // 0xffff wraps to 0, which the constructor refuses.
        return if_index_vfc_port_channel_cli_init(value, static_cast<uint16_t>(number + 1));
    default:
        return take_common(host, k_form32, IF_INDEX_UNKNOWN_TYPE, value);
    }
}

uint32_t ntoh_if_index(uint32_t value)
{
    return __builtin_bswap32(value);
}

uint32_t hton_if_index(uint32_t value)
{
    return __builtin_bswap32(value);
}

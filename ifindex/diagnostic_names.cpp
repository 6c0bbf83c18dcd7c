// Diagnostic names: they tell apart what the names for operators don't, the internal forms of SAN
// port-channels and the sides and priorities of inband ports.
#include "ruk/if_index_name.h"

#include "ifindex/name_number.h"
#include "ifindex/name_writer.h"
#include "ruk/if_index_types.h"

namespace
{

using namespace ifindex;

char *write_three(char *at, std::string_view word, uint32_t a, uint32_t b, uint32_t c)
{
    at = put_decimal(put_text(at, word), a);
    return put_next_decimal(put_next_decimal(at, '/', b), '/', c);
}

char *write_port_channel(char *at, IfIndex value)
{
    const uint32_t channel = name_number{k_pc_channel, 1}.shown(value);
    const uint32_t subtype = k_pc_subtype.get(value);
    if (subtype != k_pc_member) {
        return write_three(at, "ipc ", channel, subtype, k_pc_arg.get(value));
    }
    uint16_t slot = 0;
    uint8_t port = 0;
    if_index_get_slot(value, &slot);
    if_index_get_port(value, &port);
    return write_three(at, "xgfc ", channel, slot + 1u, port + 1u);
}

// The left and the right supervisor; no other number has a side.
const char *side_label(uint32_t sup)
{
    switch (sup) {
    case 2:
        return "(L)";
    case 3:
        return "(R)";
    default:
        return "";
    }
}

const char *priority_label(uint32_t queue)
{
    switch (queue) {
    case 1:
        return "(high)";
    case 2:
        return "(low)";
    case 3:
        return "(drop)";
    default:
        return "";
    }
}

// The blank stays when there is no priority behind it: callers rely on the text as it is.
char *write_inband(char *at, IfIndex value)
{
    const uint32_t sup = k_inband_sup.get(value);
    if (sup == k_inband_linecard) {
        const uint32_t slot = name_number{k_inband_linecard_slot, 1}.shown(value);
        at = put_text(put_decimal(put_text(at, "lc-eth("), slot), ")");
    } else {
        at = put_text(put_text(at, "sup-fc"), side_label(sup));
    }
    return put_text(put_text(at, " "), priority_label(k_inband_queue.get(value)));
}

} // namespace

int32_t snprintf_if_index_internal(char *buffer, int32_t size, IfIndex value)
{
    const uint32_t type = type_of(value);
    const bool inner_port_channel =
        type == IF_INDEX_TYPE_PORT_CHANNEL && k_pc_subtype.get(value) != k_pc_plain;
    if (!inner_port_channel && type != IF_INDEX_TYPE_INBAND) {
        return snprintf_if_index(buffer, size, value);
    }
    return put_name(buffer, size, [=](char *at) {
        return inner_port_channel ? write_port_channel(at, value) : write_inband(at, value);
    });
}

int32_t sprintf_if_index_internal(char *buffer, IfIndex value)
{
    return snprintf_if_index_internal(buffer, IF_INDEX_NAME_SIZE, value);
}

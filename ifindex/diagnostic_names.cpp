// Diagnostic names: they tell apart what the names for operators don't, the internal forms of SAN
// port-channels and the sides and priorities of inband ports.
#include "ruk/if_index_name.h"

#include "ifindex/name_number.h"
#include "ifindex/name_writer.h"
#include "ruk/if_index_types.h"

namespace
{

using namespace ifindex;

void write_three(name_writer &out, const char *word, int32_t a, int32_t b, int32_t c)
{
    out.text(word).decimal(a).put('/').decimal(b).put('/').decimal(c);
}

void write_port_channel(name_writer &out, IfIndex value)
{
    const int32_t channel = name_number{k_pc_channel, 1}.shown(value);
    const uint32_t subtype = k_pc_subtype.get(value);
    if (subtype == k_pc_member) {
        uint16_t slot = 0;
        uint8_t port = 0;
        if_index_get_slot(value, &slot);
        if_index_get_port(value, &port);
        write_three(out, "xgfc ", channel, slot + 1, port + 1);
    } else {
        write_three(out, "ipc ", channel, static_cast<int32_t>(subtype),
                    static_cast<int32_t>(k_pc_arg.get(value)));
    }
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
void write_inband(name_writer &out, IfIndex value)
{
    const uint32_t sup = k_inband_sup.get(value);
    if (sup == k_inband_linecard) {
        out.text("lc-eth(").decimal(name_number{k_inband_linecard_slot, 1}.shown(value)).put(')');
    } else {
        out.text("sup-fc").text(side_label(sup));
    }
    out.put(' ').text(priority_label(k_inband_queue.get(value)));
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
    name_writer out(buffer, size);
    if (inner_port_channel) {
        write_port_channel(out, value);
    } else {
        write_inband(out, value);
    }
    return out.finish();
}

int32_t sprintf_if_index_internal(char *buffer, IfIndex value)
{
    return snprintf_if_index_internal(buffer, IF_INDEX_NAME_SIZE, value);
}

// OpenFlow diagnostics: message counters, features replies and ports as lines of text.
#include "ruk/openflow.h"

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <span>
#include <string_view>

#include "ofp/layout.h"

namespace
{

// One way to the C library's family of functions, since each name costs a look-up at every start.
[[gnu::format(printf, 1, 2)]] void print_text(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

// What is printed when a word shares any bit with the mask.  Texts lie in their rows, here and
// below: each pointer to one would be relocated at every start.
struct BitText {
    uint32_t mask;
    char text[44];
};

constexpr char k_message_labels[][32] = {
    "OFPT_HELLO:",
    "OFPT_ERROR:",
    "OFPT_ECHO_REQUEST:",
    "OFPT_ECHO_REPLY:",
    "OFPT_VENDOR:",
    "OFPT_FEATURES_REQUEST:",
    "OFPT_FEATURES_REPLY:",
    "OFPT_GET_CONFIG_REQUEST:",
    "OFPT_GET_CONFIG_REPLY:",
    "OFPT_SET_CONFIG:",
    "OFPT_PACKET_IN:",
    "OFPT_FLOW_REMOVED:",
    "OFPT_PORT_STATUS:",
    "OFPT_PACKET_OUT:",
    "OFPT_FLOW_MOD:",
    "OFPT_PORT_MOD:",
    "OFPT_STATS_REQUEST:",
    "OFPT_STATS_REPLY:",
    "OFPT_BARRIER_REQUEST:",
    "OFPT_BARRIER_REPLY:",
    "OFPT_QUEUE_GET_CONFIG_REQUEST:",
    "OFPT_QUEUE_GET_CONFIG_REPLY:",
};
static_assert(std::size(k_message_labels) == BREL_OFP_MESSAGE_TYPES);

constexpr BitText k_config_lines[] = {
    {0x01, "Port is admin down"},
    {0x02, "STP (802.1d) not supported"},
    {0x04, "Port drops all packets except STP"},
    {0x08, "Port drops all packets"},
    {0x10, "No flooding to this port"},
    {0x20, "Drop all packets forwarded to this port"},
    {0x40, "Do not send packet in messages"},
};

// Bit tests, not a decoding of the two-bit spanning tree field: a forwarding port (0x200) also
// counts as "not part", and readers of the dump are used to that.
constexpr BitText k_state_lines[] = {
    {0x001, "Link is down"},
    {0x100, "Learning but not relaying frames"},
    {0x200, "Learning and relaying frames"},
    {0x300, "Not part of spanning tree"},
};

constexpr BitText k_feature_words[] = {
    {0x001, "10MB_HD "}, {0x002, "10MB_FD "}, {0x004, "100MB_HD "}, {0x008, "100MB_FD "},
    {0x010, "1GB_HD "},  {0x020, "1GB_FD "},  {0x040, "10GB_FD "},  {0x080, "Copper "},
    {0x100, "Fiber "},   {0x200, "Autoneg "}, {0x400, "Pause "},    {0x800, "Pause_asym "},
};

// The masks are the action type numbers themselves, not a bit per action: kept, since readers of
// the dump know the names that a given word prints.
constexpr BitText k_action_words[] = {
    {1, "OFPAT_SET_VLAN_VID "}, {2, "OFPAT_SET_VLAN_PCP "}, {3, "OFPAT_STRIP_VLAN "},
    {4, "OFPAT_SET_DL_SRC "},   {5, "OFPAT_SET_DL_DST "},   {6, "OFPAT_SET_NW_SRC "},
    {7, "OFPAT_SET_NW_DST "},   {8, "OFPAT_SET_NW_TOS "},   {9, "OFPAT_SET_TP_SRC "},
    {10, "OFPAT_SET_TP_DST "},  {11, "OFPAT_ENQUEUE "},     {0xffff, "OFPAT_VENDOR "},
};

constexpr BitText k_capability_words[] = {
    {0x01, "OFPC_FLOW_STATS "},   {0x02, "OFPC_TABLE_STATS "}, {0x04, "OFPC_PORT_STATS "},
    {0x08, "OFPC_STP "},          {0x20, "OFPC_IP_REASM "},    {0x40, "OFPC_QUEUE_STATS "},
    {0x80, "OFPC_ARP_MATCH_IP "},
};

// One line under construction; what does not fit is dropped.
class TextLine
{
public:
    void append(const char *text) { append({text, strnlen(text, sizeof text_)}); }

    void append(std::string_view text)
    {
        const size_t kept = std::min(text.size(), sizeof text_ - 1 - length_);
        memcpy(text_ + length_, text.data(), kept);
        length_ += kept;
    }

    void append_set(uint32_t word, std::span<const BitText> names)
    {
        for (const BitText &name : names) {
            if ((word & name.mask) != 0) {
                append(name.text);
            }
        }
    }

    void print()
    {
        text_[length_] = '\0';
        print_text("%s\n", text_);
    }

private:
    char text_[1024];
    size_t length_ = 0;
};

void print_set(const char *routine, uint32_t word, std::span<const BitText> lines)
{
    for (const BitText &line : lines) {
        if ((word & line.mask) != 0) {
            print_text("%s: %s\n", routine, line.text);
        }
    }
}

// Summed without a sign, where wrapping around is defined.
int32_t total(std::span<const int32_t> counters)
{
    uint32_t sum = 0;
    for (const int32_t counter : counters) {
        sum += static_cast<uint32_t>(counter);
    }
    return static_cast<int32_t>(sum);
}

void print_counters(const char *title, std::span<const int32_t> counters)
{
    const auto print = [](const char *label, int32_t value) {
        print_text("%s: %-30s %d\n", "brel_ofp_dump_stats", label, value);
    };
    print(title, total(counters));
    for (size_t type = 0; type < counters.size(); ++type) {
        print(k_message_labels[type], counters[type]);
    }
}

void print_port_config(uint32_t config)
{
    const char *routine = "brel_dump_port_config";
    print_text("%s: Port config %d\n", routine, static_cast<int32_t>(config));
    print_set(routine, config, k_config_lines);
}

void print_port_state(uint32_t state)
{
    const char *routine = "brel_dump_port_state";
    print_text("%s: Port state %d\n", routine, static_cast<int32_t>(state));
    print_set(routine, state, k_state_lines);
}

} // namespace

int32_t brel_ofp_dump_stats(const brel_ofp_stats *stats)
{
    print_counters("Total messages sent:", stats->sent);
    print_counters("Total messages received:", stats->received);
    return 0;
}

int32_t brel_dump_feat_reply(const void *message)
{
    using namespace ofp::features;
    const char *routine = "brel_dump_feat_reply";
    const auto *bytes = static_cast<const uint8_t *>(message);
    const size_t length = ofp::load_be16(bytes + k_length);

    // The fields as far as the message goes, zeros behind its end.
    uint8_t fixed[k_ports] = {};
    memcpy(fixed, bytes, std::min(length, k_ports));
    const uint32_t capabilities = ofp::load_be32(fixed + k_capabilities);
    print_text("%s: datapath_id:             %" PRIu64 "\n", routine,
               ofp::load_stored<uint64_t>(fixed + k_datapath_id));
    print_text("%s: n_buffers:               %u\n", routine, ofp::load_be32(fixed + k_n_buffers));
    print_text("%s: n_tables:                %d\n", routine, fixed[k_n_tables]);
    print_text("%s: capabilities:            %u\n", routine, capabilities);
    brel_dump_ofp_cap(capabilities);
    brel_dump_ofp_actions(ofp::load_be32(fixed + k_actions));

    const size_t ports = length < k_ports ? 0 : (length - k_ports) / ofp::phy_port::k_size;
    print_text("%s: Found (%d) ports\n", routine, static_cast<int32_t>(ports));
    for (size_t i = 0; i < ports; ++i) {
        brel_dump_phy_port(bytes + k_ports + i * ofp::phy_port::k_size);
    }
    return 0;
}

int32_t brel_dump_phy_port(const void *port)
{
    using namespace ofp::phy_port;
    const char *routine = "brel_dump_phy_port";
    const auto *bytes = static_cast<const uint8_t *>(port);
    const uint8_t *mac = bytes + k_hw_addr;
    print_text("%s: Port number:             %d\n", routine,
               ofp::load_stored<uint16_t>(bytes + k_port_no));
    print_text("%s: hw_address:              %x:%x:%x:%x:%x:%x\n", routine, mac[0], mac[1], mac[2],
               mac[3], mac[4], mac[5]);
    // The name fills its 16 bytes without a terminator when it is that long.
    print_text("%s: name:                    %.16s\n", routine,
               reinterpret_cast<const char *>(bytes + k_name));
    print_port_config(ofp::load_be32(bytes + k_config));
    print_port_state(ofp::load_be32(bytes + k_state));
    brel_dump_phy_port_features(ofp::load_be32(bytes + k_curr), ": Enabled feature");
    brel_dump_phy_port_features(ofp::load_be32(bytes + k_advertised), ": Advertised feature");
    brel_dump_phy_port_features(ofp::load_be32(bytes + k_supported), ": Supported feature");
    brel_dump_phy_port_features(ofp::load_be32(bytes + k_peer), ": Peer feature");
    return 0;
}

// The label stands where every other line has the routine's name; the ports' labels therefore
// begin with a colon of their own.
int32_t brel_dump_phy_port_features(uint32_t features, const char *label)
{
    TextLine line;
    line.append(label);
    line.append(": ");
    line.append_set(features, k_feature_words);
    line.print();
    return 0;
}

int32_t brel_dump_ofp_actions(uint32_t actions)
{
    TextLine line;
    line.append("brel_dump_ofp_actions: Supported actions: ");
    line.append_set(actions, k_action_words);
    line.print();
    return 0;
}

int32_t brel_dump_ofp_cap(uint32_t capabilities)
{
    TextLine line;
    line.append("brel_dump_ofp_cap: Supported features: ");
    line.append_set(capabilities, k_capability_words);
    line.print();
    return 0;
}

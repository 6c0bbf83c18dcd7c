// OpenFlow dump: any bytes may be a features reply, a port, a word with a label or counters.  What
// is printed is compared with lines that are put together field by field.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/openflow.h"

using fuzz::require;

namespace
{

using Bytes = std::vector<uint8_t>;
using Names = std::vector<std::pair<uint32_t, const char *>>;

// What print prints.
template <typename Print> std::string printed(Print print)
{
    char *text = nullptr;
    size_t size = 0;
    FILE *const real = stdout;
    stdout = open_memstream(&text, &size);
    require(stdout != nullptr);
    print();
    fclose(stdout);
    stdout = real;
    const std::unique_ptr<char, decltype(&free)> release(text, free);
    return {text, size};
}

[[gnu::format(printf, 1, 2)]] std::string line(const char *format, ...)
{
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return std::string(text) + "\n";
}

// Fields of a message; those that it does not reach are zeros.
uint32_t in_network_order(const Bytes &bytes, size_t at, size_t width)
{
    uint32_t value = 0;
    for (size_t i = at; i < at + width; ++i) {
        value = value << 8 | (i < bytes.size() ? bytes[i] : 0U);
    }
    return value;
}

std::string names_of(uint32_t word, const Names &names)
{
    std::string text;
    for (const auto &[mask, name] : names) {
        text += (word & mask) != 0 ? name : "";
    }
    return text;
}

std::string lines_of(const char *routine, uint32_t word, const Names &names)
{
    std::string text;
    for (const auto &[mask, name] : names) {
        text += (word & mask) != 0 ? line("%s: %s", routine, name) : "";
    }
    return text;
}

std::string features_line(uint32_t word, const std::string &label)
{
    static const Names k_names = {
        {0x001, "10MB_HD "}, {0x002, "10MB_FD "}, {0x004, "100MB_HD "}, {0x008, "100MB_FD "},
        {0x010, "1GB_HD "},  {0x020, "1GB_FD "},  {0x040, "10GB_FD "},  {0x080, "Copper "},
        {0x100, "Fiber "},   {0x200, "Autoneg "}, {0x400, "Pause "},    {0x800, "Pause_asym "},
    };
    return (label + ": " + names_of(word, k_names)).substr(0, 1023) + "\n";
}

std::string actions_line(uint32_t word)
{
    static const Names k_names = {
        {1, "OFPAT_SET_VLAN_VID "}, {2, "OFPAT_SET_VLAN_PCP "}, {3, "OFPAT_STRIP_VLAN "},
        {4, "OFPAT_SET_DL_SRC "},   {5, "OFPAT_SET_DL_DST "},   {6, "OFPAT_SET_NW_SRC "},
        {7, "OFPAT_SET_NW_DST "},   {8, "OFPAT_SET_NW_TOS "},   {9, "OFPAT_SET_TP_SRC "},
        {10, "OFPAT_SET_TP_DST "},  {11, "OFPAT_ENQUEUE "},     {0xffff, "OFPAT_VENDOR "},
    };
    return "brel_dump_ofp_actions: Supported actions: " + names_of(word, k_names) + "\n";
}

std::string capabilities_line(uint32_t word)
{
    static const Names k_names = {{0x01, "OFPC_FLOW_STATS "},  {0x02, "OFPC_TABLE_STATS "},
                                  {0x04, "OFPC_PORT_STATS "},  {0x08, "OFPC_STP "},
                                  {0x20, "OFPC_IP_REASM "},    {0x40, "OFPC_QUEUE_STATS "},
                                  {0x80, "OFPC_ARP_MATCH_IP "}};
    return "brel_dump_ofp_cap: Supported features: " + names_of(word, k_names) + "\n";
}

std::string port_lines(const Bytes &port)
{
    static const Names k_config = {
        {0x01, "Port is admin down"},
        {0x02, "STP (802.1d) not supported"},
        {0x04, "Port drops all packets except STP"},
        {0x08, "Port drops all packets"},
        {0x10, "No flooding to this port"},
        {0x20, "Drop all packets forwarded to this port"},
        {0x40, "Do not send packet in messages"},
    };
    static const Names k_state = {
        {0x001, "Link is down"},
        {0x100, "Learning but not relaying frames"},
        {0x200, "Learning and relaying frames"},
        {0x300, "Not part of spanning tree"},
    };
    uint16_t number; // as stored
    memcpy(&number, port.data(), sizeof number);
    const std::string name(port.begin() + 8, port.begin() + 24);
    const uint32_t config = in_network_order(port, 24, 4);
    const uint32_t state = in_network_order(port, 28, 4);
    return line("brel_dump_phy_port: Port number:             %d", number) +
           line("brel_dump_phy_port: hw_address:              %x:%x:%x:%x:%x:%x", port[2], port[3],
                port[4], port[5], port[6], port[7]) +
           line("brel_dump_phy_port: name:                    %s", name.c_str()) +
           line("brel_dump_port_config: Port config %d", static_cast<int>(config)) +
           lines_of("brel_dump_port_config", config, k_config) +
           line("brel_dump_port_state: Port state %d", static_cast<int>(state)) +
           lines_of("brel_dump_port_state", state, k_state) +
           features_line(in_network_order(port, 32, 4), ": Enabled feature") +
           features_line(in_network_order(port, 36, 4), ": Advertised feature") +
           features_line(in_network_order(port, 40, 4), ": Supported feature") +
           features_line(in_network_order(port, 44, 4), ": Peer feature");
}

std::string reply_lines(const Bytes &message, size_t length)
{
    uint64_t datapath_id = 0; // as stored
    memcpy(&datapath_id, message.data() + 8,
           std::min<size_t>(sizeof datapath_id, length - std::min<size_t>(length, 8)));
    const Bytes told(message.begin(), message.begin() + static_cast<long>(length));
    const uint32_t capabilities = in_network_order(told, 24, 4);
    const size_t ports = length < 32 ? 0 : (length - 32) / 48;
    std::string text =
        line("brel_dump_feat_reply: datapath_id:             %lu", datapath_id) +
        line("brel_dump_feat_reply: n_buffers:               %u", in_network_order(told, 16, 4)) +
        line("brel_dump_feat_reply: n_tables:                %u", in_network_order(told, 20, 1)) +
        line("brel_dump_feat_reply: capabilities:            %u", capabilities) +
        capabilities_line(capabilities) + actions_line(in_network_order(told, 28, 4)) +
        line("brel_dump_feat_reply: Found (%zu) ports", ports);
    for (size_t i = 0; i < ports; ++i) {
        const auto start = message.begin() + 32 + static_cast<long>(i * 48);
        text += port_lines(Bytes(start, start + 48));
    }
    return text;
}

// A message that says it is longer than the input is made to say the truth; a shorter one ends
// where it says, but not before its header does.
void check_reply(const uint8_t *data, size_t size)
{
    if (size < 8) {
        return;
    }
    const size_t length = std::min<size_t>(static_cast<size_t>(data[2]) << 8 | data[3], size);
    Bytes message(data, data + std::max<size_t>(length, 8)); // of the exact size
    message.shrink_to_fit();
    message[2] = static_cast<uint8_t>(length >> 8);
    message[3] = static_cast<uint8_t>(length);
    require(printed([&] { brel_dump_feat_reply(message.data()); }) == reply_lines(message, length));
}

void check_words(const uint8_t *data, size_t size)
{
    uint32_t word = 0;
    if (size < sizeof word) {
        return;
    }
    memcpy(&word, data, sizeof word);
    const std::string text(data + sizeof word, data + size);
    const std::string label = text.c_str(); // up to its first zero
    require(printed([&] { brel_dump_phy_port_features(word, label.c_str()); }) ==
            features_line(word, label));
    require(printed([&] { brel_dump_ofp_actions(word); }) == actions_line(word));
    require(printed([&] { brel_dump_ofp_cap(word); }) == capabilities_line(word));
}

void check_port(const uint8_t *data, size_t size)
{
    if (size >= 48) {
        const Bytes port(data, data + 48);
        require(printed([&] { brel_dump_phy_port(port.data()); }) == port_lines(port));
    }
}

// The totals wrap; each line ends in its counter.
void check_counters(const uint8_t *data, size_t size)
{
    brel_ofp_stats stats;
    if (size < sizeof stats) {
        return;
    }
    memcpy(&stats, data, sizeof stats);
    std::vector<int32_t> numbers;
    for (const auto &counters : {stats.sent, stats.received}) {
        uint32_t total = 0;
        for (size_t i = 0; i < 22; ++i) {
            total += static_cast<uint32_t>(counters[i]);
        }
        numbers.push_back(static_cast<int32_t>(total));
        numbers.insert(numbers.end(), counters, counters + 22);
    }
    const std::string text = printed([&] { brel_ofp_dump_stats(&stats); });
    size_t at = 0;
    for (const int32_t number : numbers) {
        const size_t end = text.find('\n', at);
        require(end != std::string::npos && text.compare(at, 21, "brel_ofp_dump_stats: ") == 0);
        require(text.substr(at, end - at).ends_with(" " + std::to_string(number)));
        at = end + 1;
    }
    require(at == text.size());
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    check_reply(data, size);
    check_words(data, size);
    check_port(data, size);
    check_counters(data, size);
    return 0;
}

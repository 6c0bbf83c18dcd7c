// Interface names beside what a user of the C library would write: a switch of snprintf calls, and
// a walk of all keywords by strncasecmp with strtol behind it.
#include "ruk/if_index_name.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <strings.h>

#include "bench/inputs.h"
#include "ifindex/keywords.h"
#include "ruk/if_index_types.h"

namespace
{

using bench::random_numbers;
using bench::texts;

uint32_t type_of(IfIndex value)
{
    return value >> 24 & 0x7f;
}

uint32_t bits(IfIndex value, int high, int low)
{
    return value >> low & ((1u << (high - low + 1)) - 1);
}

// --- formatting ------------------------------------------------------------------------------

IfIndex draw_ethernet(random_numbers &random)
{
    return IfIndex{IF_INDEX_TYPE_PHY_ETHERNET} << 24 | random.between(0, 31) << 19 |
           random.between(0, 127) << 12;
}

// One in four has a sub-interface where its type can have one.
IfIndex draw_mixed(random_numbers &random)
{
    const uint32_t low12 = random.between(0, 3) == 0 ? random.between(1, 4095) : 0;
    const uint32_t slot_port = random.between(0, 31) << 19 | random.between(0, 127) << 12;
    const auto of_type = [](uint32_t type, uint32_t rest) { return type << 24 | rest; };
    switch (random.between(0, 13)) {
    case 0:
        return of_type(IF_INDEX_TYPE_PHY_FC, slot_port | low12);
    case 1:
        return of_type(IF_INDEX_TYPE_PHY_ETH, slot_port | low12);
    case 2:
        return of_type(IF_INDEX_TYPE_PORT_CHANNEL, low12 << 8 | random.between(0, 255));
    case 3:
        return of_type(IF_INDEX_TYPE_MGMT_SUP, random.between(0, 1) << 12);
    case 4:
        return of_type(IF_INDEX_TYPE_VSAN, 31u << 19 | random.between(1, 4093));
    case 5:
        return of_type(IF_INDEX_TYPE_VLAN, random.between(1, 4094));
    case 6:
        return of_type(IF_INDEX_TYPE_ISCSI, slot_port);
    case 7:
        return of_type(IF_INDEX_TYPE_ETH_PORT_CHANNEL, low12 << 12 | random.between(0, 4095));
    case 8:
        return of_type(IF_INDEX_TYPE_TUNNEL, random.between(0, 65535));
    case 9:
        return of_type(IF_INDEX_TYPE_PHY_ETHERNET, slot_port | low12);
    case 10:
        return of_type(IF_INDEX_TYPE_VETH, random.between(0, 0xfffff) << 4 | (low12 & 15));
    case 11:
        return of_type(IF_INDEX_TYPE_VFC, random.between(0, 8191));
    case 12:
        return of_type(IF_INDEX_TYPE_SAT_PHY_ETH,
                       random.between(100, 199) << 16 | random.between(0, 47) << 6);
    default:
        return of_type(IF_INDEX_TYPE_OVERLAY,
                       random.between(1, 4) << 19 | random.between(0, 65535));
    }
}

int print_ethernet(char *buffer, size_t size, IfIndex value)
{
    return snprintf(buffer, size, "Ethernet%d/%d", bits(value, 23, 19) + 1,
                    bits(value, 18, 12) + 1);
}

// "<word><slot>/<port>" with ".<sub-interface>" where there is one.
int print_physical(char *buffer, size_t size, const char *word, IfIndex value)
{
    const uint32_t slot = bits(value, 23, 19) + 1;
    const uint32_t port = bits(value, 18, 12) + 1;
    const uint32_t sub = bits(value, 11, 0);
    return sub != 0 ? snprintf(buffer, size, "%s%d/%d.%d", word, slot, port, sub)
                    : snprintf(buffer, size, "%s%d/%d", word, slot, port);
}

int print_channel(char *buffer, size_t size, const char *word, uint32_t channel, uint32_t sub)
{
    return sub != 0 ? snprintf(buffer, size, "%s%d.%d", word, channel, sub)
                    : snprintf(buffer, size, "%s%d", word, channel);
}

int print_mixed(char *buffer, size_t size, IfIndex value)
{
    static constexpr const char *k_overlays[] = {"", "Overlay", "tunnel-te", "mti", "peer-id"};
    switch (type_of(value)) {
    case IF_INDEX_TYPE_PHY_FC:
        return print_physical(buffer, size, "fc", value);
    case IF_INDEX_TYPE_PHY_ETH:
        return print_physical(buffer, size, "GigabitEthernet", value);
    case IF_INDEX_TYPE_PORT_CHANNEL:
        return print_channel(buffer, size, "san-port-channel ", bits(value, 7, 0) + 1,
                             bits(value, 19, 8));
    case IF_INDEX_TYPE_MGMT_SUP:
        return snprintf(buffer, size, "mgmt%d", bits(value, 18, 12));
    case IF_INDEX_TYPE_VSAN:
        return snprintf(buffer, size, "vsan%d", bits(value, 11, 0));
    case IF_INDEX_TYPE_VLAN:
        return snprintf(buffer, size, "Vlan%d", bits(value, 11, 0));
    case IF_INDEX_TYPE_ISCSI:
        return snprintf(buffer, size, "iscsi%d/%d", bits(value, 23, 19) + 1,
                        bits(value, 18, 12) + 1);
    case IF_INDEX_TYPE_ETH_PORT_CHANNEL:
        return print_channel(buffer, size, "port-channel", bits(value, 11, 0) + 1,
                             bits(value, 23, 12));
    case IF_INDEX_TYPE_TUNNEL:
        return snprintf(buffer, size, "Tunnel%d", bits(value, 15, 0));
    case IF_INDEX_TYPE_PHY_ETHERNET:
        return print_physical(buffer, size, "Ethernet", value);
    case IF_INDEX_TYPE_VETH:
        return print_channel(buffer, size, "Vethernet", bits(value, 23, 4) + 1, bits(value, 3, 0));
    case IF_INDEX_TYPE_VFC:
        return snprintf(buffer, size, "vfc%d", bits(value, 15, 0) + 1);
    case IF_INDEX_TYPE_SAT_PHY_ETH:
        return snprintf(buffer, size, "Ethernet%d/%d/%d", bits(value, 23, 16) + 1,
                        bits(value, 15, 12) + 1, bits(value, 11, 6) + 1);
    default:
        return snprintf(buffer, size, "%s%d", k_overlays[bits(value, 23, 19)], bits(value, 15, 0));
    }
}

int put_ethernet(char *buffer, size_t size, IfIndex value)
{
    char *const end = buffer + size;
    memcpy(buffer, "Ethernet", 8);
    char *at = std::to_chars(buffer + 8, end, bits(value, 23, 19) + 1).ptr;
    *at++ = '/';
    at = std::to_chars(at, end, bits(value, 18, 12) + 1).ptr;
    *at = '\0';
    return static_cast<int>(at - buffer);
}

int fmt_ethernet(char *buffer, size_t size, IfIndex value)
{
    const auto end = fmt::format_to_n(buffer, size - 1, "Ethernet{}/{}", bits(value, 23, 19) + 1,
                                      bits(value, 18, 12) + 1);
    *end.out = '\0';
    return static_cast<int>(end.size);
}

int ruk_name(char *buffer, size_t size, IfIndex value)
{
    return snprintf_if_index(buffer, static_cast<int32_t>(size), value);
}

using formatter = int (*)(char *buffer, size_t size, IfIndex value);

template <IfIndex (*draw)(random_numbers &)> const std::vector<IfIndex> &values()
{
    static const std::vector<IfIndex> drawn = [] {
        random_numbers random;
        std::vector<IfIndex> all(bench::k_inputs);
        std::generate(all.begin(), all.end(), [&random] { return draw(random); });
        return all;
    }();
    return drawn;
}

// A peer that prints something else is not one.
template <IfIndex (*draw)(random_numbers &), formatter format>
void format_names(benchmark::State &state)
{
    for (const IfIndex value : values<draw>()) {
        char ours[64], theirs[64];
        if (ruk_name(ours, sizeof ours, value) != format(theirs, sizeof theirs, value) ||
            strcmp(ours, theirs) != 0) {
            state.SkipWithError(theirs);
            return;
        }
    }
    bench::time_formatter(state, values<draw>(), format);
}

// --- parsing ---------------------------------------------------------------------------------

std::string draw_ethernet_name(random_numbers &random)
{
    return fmt::format("ethernet{}/{}", random.of_random_length(10, 31) + 1,
                       random.of_random_length(10, 127) + 1);
}

std::string draw_mixed_name(random_numbers &random)
{
    static constexpr const char *k_one_number[] = {
        "vsan", "port-channel", "mgmt",    "loopback", "san-port-channel", "ethernet-port-channel",
        "vfc",  "veth",         "overlay", "mti",      "control",
    };
    static constexpr const char *k_two_numbers[] = {
        "fc",   "gigabitethernet", "iscsi",        "ethernet", "Ethernet", "vfc",
        "pemu", "lveth",           "ruk-ethernet",
    };
    static constexpr const char *k_three_numbers[] = {"ethernet", "gigabitethernet",
                                                      "remote-ethernet"};
    const auto one_of = [&random](const auto &words) {
        return words[random.between(0, static_cast<uint32_t>(std::size(words)) - 1)];
    };
    const uint32_t a = random.of_random_length(10, 31) + 1;
    const uint32_t b = random.of_random_length(10, 127) + 1;
    switch (random.between(0, 4)) {
    case 0:
    case 1:
        return fmt::format("{}{}{}", one_of(k_one_number), random.between(0, 3) == 0 ? " " : "", b);
    case 2:
    case 3:
        return fmt::format("{}{}/{}", one_of(k_two_numbers), a, b);
    default:
        return fmt::format("{}{}/{}.{}", one_of(k_three_numbers), a, b,
                           random.of_random_length(10, 63) + 1);
    }
}

// The first stage as it is told: every keyword in turn, then a number at a time.
int32_t walk(const char *name, IfIndex *out)
{
    while (*name == ' ') {
        ++name;
    }
    if (strcasecmp(name, "null0") == 0) {
        *out = IfIndex{IF_INDEX_TYPE_NULL_INTERFACE} << 24;
        return 1;
    }
    constexpr size_t passed_over = 27;
    for (size_t kind = 0; kind < ifindex::k_keyword_count; ++kind) {
        const auto word = ifindex::k_keywords[kind];
        if (kind == passed_over || strncasecmp(name, word.data(), word.size()) != 0) {
            continue;
        }
        int32_t numbers[IF_INDEX_NAME_COORDINATES];
        int32_t count = 0;
        const char *at = name + word.size();
        at += strcspn(at, "0123456789");
        while (*at != '\0') {
            if (count == IF_INDEX_NAME_COORDINATES) {
                return 0;
            }
            char *rest = nullptr;
            numbers[count++] = static_cast<int32_t>(strtol(at, &rest, 10));
            at = rest + strcspn(rest, "0123456789");
            if (at[-1] == ',' || at[-1] == '-') {
                break;
            }
        }
        return ulx_interface_coordinates_to_ifindex(static_cast<int32_t>(kind), numbers, count,
                                                    out);
    }
    return 0;
}

using parser = int32_t (*)(const char *name, IfIndex *out);

template <std::string (*draw)(random_numbers &), parser parse>
void parse_names(benchmark::State &state)
{
    static const texts inputs(draw);
    bool agree = true;
    inputs.for_each([&agree](const char *name) {
        IfIndex ours = 0, theirs = 0;
        agree = agree && ulx_interface_name_to_ifindex(name, &ours) == parse(name, &theirs) &&
                ours == theirs;
    });
    if (!agree) {
        state.SkipWithError("the results differ");
        return;
    }
    bench::time_parser(state, inputs, [](const char *name) {
        IfIndex value = 0;
        parse(name, &value);
        return value;
    });
}

struct row {
    const char *name;
    void (*run)(benchmark::State &);
};

constexpr row k_rows[] = {
    {"format_name/ethernet/ruk", format_names<draw_ethernet, ruk_name>},
    {"format_name/ethernet/snprintf", format_names<draw_ethernet, print_ethernet>},
    {"format_name/ethernet/to_chars", format_names<draw_ethernet, put_ethernet>},
    {"format_name/ethernet/fmt", format_names<draw_ethernet, fmt_ethernet>},
    {"format_name/mixed/ruk", format_names<draw_mixed, ruk_name>},
    {"format_name/mixed/snprintf", format_names<draw_mixed, print_mixed>},
    {"parse_name/ethernet/ruk", parse_names<draw_ethernet_name, ulx_interface_name_to_ifindex>},
    {"parse_name/ethernet/walk", parse_names<draw_ethernet_name, walk>},
    {"parse_name/mixed/ruk", parse_names<draw_mixed_name, ulx_interface_name_to_ifindex>},
    {"parse_name/mixed/walk", parse_names<draw_mixed_name, walk>},
};

} // namespace

int main(int argc, char **argv)
{
    for (const row &one : k_rows) {
        benchmark::RegisterBenchmark(one.name, one.run)->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

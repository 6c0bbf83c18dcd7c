// The parser of interface names as plainly as can be: a walk of the keywords in their order, on a
// copy of the name that gets shorter.  What the library parses is compared with this.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "ruk/if_index_cli.h"

namespace name_model
{

inline constexpr const char *k_keywords[69] = {
    "Unknown",
    "fc",
    "gigabitethernet",
    "vsan",
    "iscsi",
    "port-channel",
    "cpp",
    "fcip",
    "mgmt",
    "tk",
    "xl",
    "svc",
    "sup-fc",
    "fc-tunnel",
    "ipc",
    "loopback",
    "vlan",
    "null",
    "kiro",
    "bay",
    "ext",
    "san-port-channel",
    "ethernet-port-channel",
    "tunnel",
    "ethernet",
    "sup-eth",
    "dorsa",
    "vethernet",
    "vfc",
    "remote-ethernet",
    "pemu",
    "overlay",
    "lveth",
    "veth",
    "ruk-ethernet",
    "tunnel-te",
    "mti",
    "control",
    "data",
    "vfc-veth",
    "vfc-port-channel",
    "plc",
    "serial",
    "cellular",
    "dialer",
    "pseudowire",
    "wimax",
    "efp-ethernet",
    "efp-ethernet-port-channel",
    "vfi",
    "shadow-pc",
    "shadow-fabpc",
    "wpan",
    "wifi",
    "glt",
    "vni",
    "vsi-ethernet",
    "vsi-ethernet-port-channel",
    "vtep",
    "bdi",
    "IPStorage",
    "nve",
    "ii",
    "Super",
    "10GigEther",
    "POS",
    "RP-to-RP",
    "Autotunnel",
    "eth-port-channel",
};

inline std::string lower(std::string text)
{
    for (char &c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

inline bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// A number of any length: held to the largest of signed 64 bits, then cut to the low 32.
inline int32_t decimal(const std::string &digits)
{
    uint64_t value = 0;
    for (const char c : digits) {
        const auto digit = static_cast<uint64_t>(c - '0');
        value = value > (INT64_MAX - digit) / 10 ? INT64_MAX : value * 10 + digit;
        if (value == INT64_MAX) {
            break;
        }
    }
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

inline int32_t context()
{
    const char *text = getenv("SYSMGR_VDC_ID");
    return text == nullptr ? 1 : decimal(text);
}

// What a constructor answers decides for two kinds only.
inline int32_t build(int32_t kind, const std::vector<int32_t> &numbers, IfIndex *out)
{
    std::array<int32_t, 9> c{};
    for (size_t i = 0; i < numbers.size() && i < c.size(); ++i) {
        c[i] = numbers[i];
    }
    const size_t count = numbers.size();
    const int32_t third = count == 3 ? c[2] : 0;
    const auto built = [&](bool right_count, auto init, auto... arguments) {
        if (right_count) {
            init(out, arguments...);
        }
        return right_count ? 1 : 0;
    };
    const auto heeded = [&](bool right_count, auto init, auto... arguments) {
        return right_count && init(out, arguments...) == 0 ? 1 : 0;
    };
    const bool one = count == 1;
    const bool two = count == 2;
    const bool three = count == 3;
    switch (kind) {
    case 1:
        return built(two, if_index_phy_fc_port_cli_init, c[0], c[1]);
    case 2:
        return built(count >= 2, if_index_phy_eth_port_cli_init, c[0], c[1], third, third);
    case 3:
        return built(one, if_index_vsan_port_cli_init, 31, 0, c[0]);
    case 4:
        return built(two, if_index_iscsi_port_cli_init, c[0], c[1]);
    case 5: // the platform is cedar, so this is 21
    case 21:
        return built(one || two, if_index_port_channel_cli_init, c[0], c[1]);
    case 6:
        return built(three, if_index_vsan_port_cli_init, c[0], c[1], c[2]);
    case 7:
        return built(one, if_index_fcip_port_cli_init, c[0]);
    case 8:
        built(one || two, if_index_mgmt_sup_port_cli_init, c[0], c[1]);
        return 1;
    case 9:
        return built(three, if_index_tk_port_cli_init, c[0], c[1], c[2]);
    case 10:
        return built(two, if_index_xlport_cli_init, c[0], c[1]);
    case 11:
        return built(two, if_index_umbra_port_cli_init, c[0], c[1]);
    case 12:
        return built(count == 0, [](IfIndex *value) { *value = 0x06081000; });
    case 13:
        return built(one, if_index_fcmpls_tnnl_cli_init, c[0]);
    case 14:
        return built(three, if_index_port_channel_cli_init_internal, c[0], c[1], c[2]);
    case 15:
        return built(one, if_index_loopback_port_cli_init, c[0]);
    case 16:
        return built(one, if_index_vlan_port_cli_init, context(), c[0]);
    case 18:
        return built(two, if_index_kiro_port_cli_init, c[0], c[1]);
    case 19:
    case 20:
        return 1;
    case 22:
        return built(one || two, if_index_eth_port_channel_cli_init, c[0], c[1]);
    case 23:
        return built(one, if_index_tunnel_cli_init, context() & 0xffff, c[0]);
    case 24: // the platform is cedar, so this is 34
    case 34:
        return heeded(count >= 2, if_index_ruk_eth_cli_init, c[0], c[1], third);
    case 27:
        return built(one, if_index_ether_sif_cli_init, c[0]);
    case 28:
        return built(one, if_index_vfc_cli_init, c[0]) |
               built(two, if_index_vfc_slot_port_cli_init, static_cast<uint16_t>(c[0]),
                     static_cast<uint8_t>(c[1])) |
               built(three, if_index_vfc_hobb_cli_init, static_cast<uint8_t>(c[0]),
                     static_cast<uint16_t>(c[1]), static_cast<uint8_t>(c[2]));
    case 29:
        return built(count >= 3, if_index_sat_phy_eth_port_cli_init, c[0], c[1], c[2],
                     count == 4 ? c[3] : 0);
    case 30:
        return built(two, if_index_pemu_port_cli_init, c[0], c[1]);
    case 31:
        return built(one, if_index_overlay_cli_init, 1, c[0]);
    case 32:
        return built(count >= 2, if_index_lveth_cli_init, c[0], c[1], third);
    case 33:
        return heeded(count >= 1, if_index_veth_cli_init, c[0], two ? c[1] : 0);
    case 35:
        return built(one, if_index_overlay_cli_init, 2, c[0]);
    case 36:
        return built(one, if_index_overlay_cli_init, 3, c[0]);
    case 37:
        built(one || two, if_index_eobc_port_cli_init, c[0], c[1]);
        return 1;
    case 39:
        return built(one, if_index_vfc_veth_cli_init, c[0]);
    case 40:
        return built(one, if_index_vfc_port_channel_cli_init, static_cast<uint16_t>(c[0]));
    default:
        return 0;
    }
}

inline int32_t parse(std::string text, IfIndex *out)
{
    while (!text.empty() && text[0] == ' ') {
        text.erase(0, 1);
    }
    text = lower(text);
    if (text == "null0") {
        *out = 0x17000000;
        return 1;
    }
    int32_t kind = 0;
    for (; kind < 69; ++kind) {
        const std::string keyword = lower(k_keywords[kind]);
        if (kind != 27 && text.substr(0, keyword.size()) == keyword) {
            text.erase(0, keyword.size());
            break;
        }
    }
    if (kind == 69) {
        return 0;
    }
    std::vector<int32_t> numbers;
    for (;;) {
        char skipped = '\0';
        while (!text.empty() && !is_digit(text[0])) {
            skipped = text[0];
            text.erase(0, 1);
        }
        const bool another_interface = !numbers.empty() && (skipped == ',' || skipped == '-');
        if (text.empty() || another_interface) {
            break;
        }
        if (numbers.size() == 9) {
            return 0;
        }
        std::string digits;
        while (!text.empty() && is_digit(text[0])) {
            digits += text[0];
            text.erase(0, 1);
        }
        numbers.push_back(decimal(digits));
    }
    return build(kind, numbers, out);
}

} // namespace name_model

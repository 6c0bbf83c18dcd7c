// Interface names as plainly as can be: formats with every field cut out where it is printed, and a
// parser that walks the keywords in their order.  What the library does is compared with this.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "ruk/if_index.h"

namespace name_model
{

// --- formatting ---------------------------------------------------------------------------------

enum class Form { long_name, short_name };

inline uint32_t type_of(IfIndex value)
{
    return value >> 24 & 0x7f;
}

inline bool has_type(IfIndex value)
{
    const uint32_t type = type_of(value);
    return type != 0 && type != 3 && type <= 74;
}

// The fields of one value, as text.
struct Bits {
    IfIndex value;

    uint32_t number(int high, int low) const
    {
        uint32_t result = 0;
        for (int bit = high; bit >= low; --bit) {
            result = result * 2 + (value >> bit & 1);
        }
        return result;
    }

    std::string text(int high, int low, uint32_t plus = 0) const
    {
        return std::to_string(number(high, low) + plus);
    }
};

// ".5", or nothing for no sub-interface.
inline std::string sub(uint32_t number)
{
    return number == 0 ? "" : "." + std::to_string(number);
}

inline std::string vfc(const Bits &b)
{
    switch (b.number(23, 20)) {
    case 0:
        return "vfc" + b.text(15, 0, 1);
    case 1:
        return "vfc-po" + b.text(11, 0, 1);
    case 2:
        return "vfc" + b.text(19, 15, 1) + "/" + b.text(14, 8, 1);
    case 3:
        return "vfc-veth" + b.text(15, 0, 1);
    case 4:
        return "vfc" + std::to_string((b.number(7, 0) + 1) % 256) + "/" + b.text(11, 8, 1) + "/" +
               b.text(17, 12, 1);
    default:
        return "";
    }
}

inline std::string overlay(const Bits &b)
{
    switch (b.number(23, 19)) {
    case 1:
        return "Overlay" + b.text(15, 0);
    case 2:
        return "tunnel-te" + b.text(15, 0);
    case 3:
        return "mti" + b.text(15, 0);
    case 4:
        return "peer-id" + b.text(15, 0);
    default:
        return "";
    }
}

inline std::string hex(IfIndex value)
{
    char text[16];
    snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

inline std::string name(IfIndex value, Form form)
{
    if (!has_type(value)) {
        return "";
    }
    const Bits b{value};
    const bool is_long = form == Form::long_name;
    const std::string slot = b.text(23, 19, 1);
    const std::string slot_port = slot + "/" + b.text(18, 12, 1);
    const std::string eth = is_long ? "Ethernet" : "Eth";
    switch (type_of(value)) {
    case 1:
        return "fc" + slot_port + sub(b.number(11, 0));
    case 2:
        return (is_long ? "GigabitEthernet" : "GigE") + slot_port + sub(b.number(11, 0));
    case 4:
        if (b.number(21, 20) == 0) {
            return (is_long ? "san-port-channel " : "San-po") + b.text(7, 0, 1) +
                   sub(b.number(19, 8));
        }
        if (b.number(21, 20) == 1) {
            return "fc" + b.text(19, 16, 1) + "/" + b.text(15, 12, 1);
        }
        return (is_long ? "internal san-port-channel " : "int San-po") + b.text(7, 0, 1);
    case 5:
        if (b.number(23, 19) != 0) {
            return (is_long ? "mgmt0 on slot " : "mgmt0/") + slot;
        }
        return "mgmt" + b.text(18, 12);
    case 6:
        return b.number(23, 19) != 4 ? "sup-fc0" : "lc-eth0/" + b.text(11, 4, 1);
    case 7:
        return "control" + b.text(23, 19);
    case 8:
        return b.number(23, 19) < 31 ? "cpp" + slot_port + "/" + b.text(11, 0)
                                     : "vsan" + b.text(11, 0);
    case 9:
        return "Vlan" + b.text(11, 0);
    case 10:
        return "fcip" + b.text(11, 0, 1);
    case 11:
        return "iscsi" + slot_port;
    case 12:
        return "svc" + slot_port;
    case 13:
        return "xlport " + slot_port;
    case 14:
        return "tk" + slot + "/" + b.text(18, 14, 1) + "/" + b.text(13, 0, 1);
    case 15:
        return "fc-tunnel " + b.text(11, 0, 1);
    case 16:
        return "nalp " + b.text(15, 8) + ":" + b.text(7, 0);
    case 17:
        return "ifc " + b.text(15, 11, 1) + ":" + b.text(10, 4, 1) + ":" + b.text(3, 0, 1);
    case 18:
        return "kiro" + slot_port;
    case 19:
        return (is_long ? "zeba " : "zeff ") + b.text(15, 8) + ":" + b.text(7, 0);
    case 20:
        return "dorsa" + slot + "/" + b.text(18, 13, 1) + "/" + b.text(5, 0, 1);
    case 21:
        return "sup-eth" + b.text(23, 16);
    case 22:
        return (is_long ? "port-channel" : "Po") + b.text(11, 0, 1) + sub(b.number(23, 12));
    case 23:
        return "Null0";
    case 24:
        return "Tunnel" + b.text(15, 0);
    case 25:
        return "sup-diag0";
    case 26:
        return eth + slot_port + sub(b.number(11, 0));
    case 27:
        return "lveth" + std::to_string(b.number(1, 0) * 256 + b.number(23, 16) + 1) + "/" +
               b.text(15, 4, 1) + sub(b.number(3, 2) * 4);
    case 28:
        return (is_long ? "Vethernet" : "Veth") + b.text(23, 4, 1) + sub(b.number(3, 0));
    case 29:
        return "vif" + b.text(19, 0);
    case 30:
        // The short form looks at the bits of an overlay port, too.
        return is_long || overlay(b).empty() ? vfc(b) : overlay(b);
    case 31:
        return eth + b.text(23, 16, 1) + "/" + b.text(15, 12, 1) + "/" + b.text(11, 6, 1);
    case 32:
        return (b.number(23, 21) != 0 ? "fif_int" : "fif") + b.text(15, 12, 1) + "/" +
               b.text(11, 6, 1);
    case 33:
        return "pemu" + slot_port;
    case 34:
        return overlay(b);
    case 35:
        if (b.number(23, 22) == 0) {
            return is_long ? "Virtual Layer-3" : "vl3";
        }
        return (is_long ? "Replicator" : "repl") + b.text(21, 17, 1) + "/" + b.text(9, 0) + "/" +
               b.text(16, 10, 1);
    case 36:
        return (is_long ? "Gateway Port-Channel" : "marn") + b.text(23, 12) + ":" + b.text(11, 0);
    case 37:
        return eth + b.text(23, 14, 1) + "/" + b.text(13, 6, 1) + sub(b.number(5, 0));
    default:
        return hex(value);
    }
}

inline std::string internal_name(IfIndex value)
{
    const Bits b{value};
    if (type_of(value) == 4 && b.number(21, 20) == 1) {
        return "xgfc " + b.text(7, 0, 1) + "/" + b.text(19, 16, 1) + "/" + b.text(15, 12, 1);
    }
    if (type_of(value) == 4 && b.number(21, 20) != 0) {
        return "ipc " + b.text(7, 0, 1) + "/" + b.text(21, 20) + "/" + b.text(19, 8);
    }
    if (type_of(value) == 6) {
        const uint32_t side = b.number(23, 19);
        const uint32_t queue = b.number(18, 12);
        const std::string priority = queue == 1   ? "(high)"
                                     : queue == 2 ? "(low)"
                                     : queue == 3 ? "(drop)"
                                                  : "";
        if (side == 4) {
            return "lc-eth(" + b.text(11, 4, 1) + ") " + priority;
        }
        return std::string("sup-fc") +
               (side == 2   ? "(L)"
                : side == 3 ? "(R)"
                            : "") +
               " " + priority;
    }
    return name(value, Form::long_name);
}

// The number behind "-", of the last value; none for types without.
inline std::optional<uint32_t> range_end(IfIndex last, Form form)
{
    const Bits b{last};
    const bool is_long = form == Form::long_name;
    const auto first_not_0 = [](uint32_t number, uint32_t otherwise) {
        return number != 0 ? number : otherwise;
    };
    switch (type_of(last)) {
    case 1:
    case 2:
    case 26:
        return first_not_0(b.number(11, 0), b.number(18, 12) + 1);
    case 4:
        switch (b.number(21, 20)) {
        case 0:
            return first_not_0(b.number(19, 8), b.number(7, 0) + 1);
        case 1:
            return b.number(15, 12) + 1;
        default:
            return b.number(7, 0) + 1;
        }
    case 7:
        return is_long ? std::nullopt : std::optional(b.number(23, 19) + 1);
    case 8:
    case 9:
        return b.number(11, 0);
    case 10:
    case 15:
        return b.number(11, 0) + 1;
    case 11:
    case 12:
    case 13:
    case 18:
    case 33:
        return b.number(18, 12) + 1;
    case 14:
        return b.number(13, 0) + 1;
    case 16:
    case 19:
        return b.number(7, 0);
    case 17:
        return b.number(3, 0) + 1;
    case 22:
        return first_not_0(b.number(23, 12), b.number(11, 0) + 1);
    case 24:
        return b.number(15, 0);
    case 27:
        return is_long ? std::optional(first_not_0(b.number(3, 2) * 4, b.number(15, 4) + 1))
                       : std::nullopt;
    case 28:
        return is_long ? std::optional(first_not_0(b.number(3, 0), b.number(23, 4) + 1))
                       : std::nullopt;
    case 29:
        return b.number(19, 0) + 1;
    case 30:
        if (!is_long) {
            return b.number(15, 0) + 1;
        }
        switch (b.number(23, 20)) {
        case 0:
            return b.number(15, 0) + 1;
        case 1:
            return b.number(11, 0) + 1;
        case 2:
            return b.number(14, 8) + 1;
        default:
            return 0;
        }
    case 31:
        return first_not_0(b.number(5, 0), b.number(11, 6) + 1);
    case 34: {
        const uint32_t kind = b.number(23, 19);
        const bool shown = is_long ? kind >= 1 && kind <= 4 : kind == 1 || kind == 4;
        return shown ? std::optional(b.number(15, 0)) : std::nullopt;
    }
    case 37:
        return first_not_0(b.number(5, 0), b.number(13, 6) + 1);
    default:
        return std::nullopt;
    }
}

// What a formatter does: its result, and the text that stands in the buffer, cut to its size.
// Without a text the buffer is not touched.
struct Written {
    int32_t result;
    std::optional<std::string> text;
};

inline Written range(const IfIndex pair[2], int32_t size, Form form)
{
    if (!has_type(pair[0]) || !has_type(pair[1]) || type_of(pair[0]) != type_of(pair[1])) {
        return {0, std::nullopt};
    }
    const std::string first = name(pair[0], form);
    const auto length = static_cast<int32_t>(first.size());
    if (length >= size) {
        return {0, ""};
    }
    if (pair[0] == pair[1]) {
        return {length, first};
    }
    const auto end = range_end(pair[1], form);
    if (!end) {
        return {2 * length, first};
    }
    const std::string suffix = "-" + std::to_string(*end);
    if (static_cast<int32_t>(suffix.size()) >= size) {
        return {0, first};
    }
    return {length + static_cast<int32_t>(suffix.size()), first + suffix};
}

// --- parsing ------------------------------------------------------------------------------------

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

// Interface names as plainly as can be: every field is cut out where it is printed.  What the
// library formats is compared with this.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "ruk/if_index_name.h"

namespace name_model
{

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

} // namespace name_model

// Ranges and FSPF numbers as plainly as can be: every type's rule spelt out with its bits.  What
// the library does is compared with this.
#pragma once

#include <cstdint>
#include <optional>

#include "ruk/if_index.h"

namespace range_model
{

// What a call does: its result, and the output when it stores one.
struct Outcome {
    uint32_t result;
    std::optional<uint32_t> out = std::nullopt;

    bool operator==(const Outcome &) const = default;
};

inline constexpr Outcome k_refused{14};

inline uint32_t cut(IfIndex value, int high, int low)
{
    return static_cast<uint32_t>((uint64_t{value} >> low) &
                                 ((uint64_t{1} << (high - low + 1)) - 1));
}

inline uint32_t type_of(IfIndex value)
{
    return cut(value, 30, 24);
}

inline bool has_type(IfIndex value)
{
    return type_of(value) != 0 && type_of(value) != 3 && type_of(value) <= 74;
}

struct Step {
    IfIndex first;
    IfIndex last;
    IfIndex from;
    uint32_t by;
    bool is_lookup;
};

// --- types that step one field ------------------------------------------------------------------

// Whether the slot, or module, is the same in all and not above the most.
inline bool same_slot(const Step &s, int high, int low, uint32_t most)
{
    const uint32_t slot = cut(s.first, high, low);
    return slot == cut(s.last, high, low) && slot == cut(s.from, high, low) && slot <= most;
}

// Ports of a physical slot, in bits 12-18.
inline Outcome step_port(const Step &s, uint32_t most_slot)
{
    const uint32_t port = (cut(s.from, 18, 12) + s.by) & 0xff;
    if (!same_slot(s, 23, 19, most_slot) || port > cut(s.last, 18, 12)) {
        return k_refused;
    }
    return {0, type_of(s.first) << 24 | cut(s.first, 23, 19) << 19 | port << 12};
}

// Numbers that start at bit 0, ordered from first to last.  One outside least to most can't be
// built, which is no failure.
inline Outcome step_number(const Step &s, int high, uint32_t width_mask, uint32_t base,
                           uint32_t least, uint32_t most)
{
    const uint32_t last = cut(s.last, high, 0);
    const uint32_t number = (cut(s.from, high, 0) + s.by) & width_mask;
    if (cut(s.first, high, 0) > last || number > last) {
        return k_refused;
    }
    if (number < least || number > most) {
        return {0};
    }
    return {0, base | number};
}

// --- types of their own -------------------------------------------------------------------------

inline Outcome step_channel(const Step &s)
{
    const bool is_eth = type_of(s.first) == 22;
    const auto channel = [&](IfIndex v) { return cut(v, is_eth ? 11 : 7, 0); };
    const auto sub = [&](IfIndex v) { return is_eth ? cut(v, 23, 12) : cut(v, 19, 8); };
    const auto subtype = [&](IfIndex v) { return is_eth ? 0 : cut(v, 21, 20); };
    if (subtype(s.first) != subtype(s.last) || sub(s.first) > sub(s.last) ||
        channel(s.first) > channel(s.last)) {
        return k_refused;
    }
    uint32_t new_channel = channel(s.from);
    uint32_t new_sub = sub(s.from);
    if (subtype(s.from) == 0 && new_sub != 0) {
        if (channel(s.first) != channel(s.last) || channel(s.first) != new_channel) {
            return k_refused;
        }
        new_sub = (new_sub + s.by) & 0xffff;
        if (new_sub > sub(s.last)) {
            return k_refused;
        }
    } else {
        new_channel = (new_channel + s.by) & 0xffff;
        if (sub(s.last) != 0 || new_channel > channel(s.last)) {
            return k_refused;
        }
    }
    return {0, is_eth ? 0x16000000 | new_sub << 12 | new_channel
                      : 0x04000000 | subtype(s.from) << 20 | new_sub << 8 | new_channel};
}

inline Outcome step_phy_ethernet(const Step &s)
{
    if (s.is_lookup) {
        return step_port(s, 31);
    }
    if (cut(s.first, 11, 0) > cut(s.last, 11, 0)) {
        return k_refused;
    }
    const uint32_t sub = cut(s.from, 11, 0);
    if (sub == 0) {
        return step_port(s, 31);
    }
    if (!same_slot(s, 23, 19, 31) || sub + 1 > cut(s.last, 11, 0)) {
        return k_refused;
    }
    return {0, (s.from & 0x00fff000) | 0x1A000000 | (sub + 1)};
}

inline Outcome step_veth(const Step &s)
{
    if (s.is_lookup) {
        const uint32_t vport = cut(s.first, 23, 4) + s.by;
        return vport <= 0xfffff ? Outcome{0, 0x1C000000 | vport << 4} : Outcome{0};
    }
    const uint32_t vport = cut(s.from, 23, 4);
    const uint32_t sub = cut(s.from, 3, 0);
    if (sub == 0 || sub == 15) {
        return vport + 1 <= cut(s.last, 23, 4) ? Outcome{0, 0x1C000000 | (vport + 1) << 4}
                                               : k_refused;
    }
    return sub + 1 <= cut(s.last, 3, 0) ? Outcome{0, 0x1C000000 | vport << 4 | (sub + 1)}
                                        : k_refused;
}

inline Outcome step_vfc(const Step &s)
{
    const auto subtype = [](IfIndex v) { return cut(v, 23, 20); };
    const auto all_are = [&](uint32_t wanted) {
        return subtype(s.first) == wanted && subtype(s.last) == wanted && subtype(s.from) == wanted;
    };
    const uint32_t kind = subtype(s.first);
    if (kind == 1) {
        const uint32_t channel = (cut(s.from, 11, 0) + s.by) & 0xffff;
        return all_are(1) && channel <= cut(s.last, 11, 0) ? Outcome{0, 0x1E100000 | channel}
                                                           : k_refused;
    }
    if (kind == 2 && s.is_lookup) {
        const uint32_t port = (cut(s.first, 14, 8) + s.by) & 0xff;
        return all_are(2) && cut(s.first, 19, 15) == cut(s.last, 19, 15) &&
                       port <= cut(s.last, 14, 8)
                   ? Outcome{0, 0x1E200000 | cut(s.first, 19, 15) << 15 | port << 8}
                   : k_refused;
    }
    if (kind == 0 || kind == 2) {
        const uint32_t last = cut(s.last, 15, 0);
        const uint32_t number = (cut(s.from, 15, 0) + s.by) & 0xffff;
        return cut(s.first, 15, 0) <= last && last <= 61439 && number <= last
                   ? Outcome{0, 0x1E000000 | number}
                   : k_refused;
    }
    return {0};
}

inline Outcome step_satellite(const Step &s)
{
    if (!same_slot(s, 23, 16, 254) || cut(s.first, 15, 12) != 0 || cut(s.last, 15, 12) != 0 ||
        cut(s.first, 11, 6) > cut(s.last, 11, 6)) {
        return k_refused;
    }
    const uint32_t satellite = 0x1F000000 | cut(s.first, 23, 16) << 16;
    const uint32_t sub = cut(s.from, 5, 0);
    if (!s.is_lookup && cut(s.first, 5, 0) > cut(s.last, 5, 0)) {
        return k_refused;
    }
    if (!s.is_lookup && sub != 0) {
        return sub + 1 <= cut(s.last, 5, 0)
                   ? Outcome{0, satellite | cut(s.from, 11, 6) << 6 | (sub + 1)}
                   : k_refused;
    }
    const uint32_t port = (cut(s.from, 11, 6) + s.by) & 0xff;
    return port <= cut(s.last, 11, 6) ? Outcome{0, satellite | port << 6} : k_refused;
}

// --- the three operations -----------------------------------------------------------------------

inline Outcome step(const Step &s)
{
    switch (type_of(s.first)) {
    case 1:
    case 2:
    case 11:
        return step_port(s, 31);
    case 18:
    case 33:
        return s.is_lookup ? k_refused : step_port(s, 31);
    case 12:
        return s.is_lookup ? k_refused : step_port(s, 30);
    case 26:
        return step_phy_ethernet(s);
    case 37: {
        const uint32_t port = (cut(s.from, 13, 6) + s.by) & 0xff;
        return same_slot(s, 23, 14, 514) && port <= cut(s.last, 13, 6)
                   ? Outcome{0, 0x25000000 | cut(s.first, 23, 14) << 14 | port << 6}
                   : k_refused;
    }
    case 14: {
        const uint32_t port = (cut(s.from, 13, 0) + s.by) & 0xffff;
        if (!same_slot(s, 23, 19, 30) || port > cut(s.last, 13, 0)) {
            return k_refused;
        }
        return port <= 16382 ? Outcome{0, (s.first & 0x00ffc000) | 0x0E000000 | port} : Outcome{0};
    }
    case 4:
    case 22:
        return step_channel(s);
    case 10:
    case 15:
        return step_number(s, 11, 0xffff, type_of(s.first) << 24, 0, 255);
    case 24:
        return s.is_lookup
                   ? k_refused
                   : step_number(s, 15, 0xffff, 0x18000000 | (s.from & 0x00ff0000), 0, 0xffff);
    case 9:
        return step_number(s, 11, 0xffffffff, 0x09000000 | (s.first & 0x00ff0000), 1, 4094);
    case 34:
        return step_number(s, 15, 0xffff, 0x22000000 | (s.first & 0x00f80000), 0, 65503);
    case 29:
        return step_number(s, 19, 0xffffffff, 0x1D000000, 0, 0xfffff);
    case 28:
        return step_veth(s);
    case 30:
        return step_vfc(s);
    case 31:
        return step_satellite(s);
    case 20:
        return s.is_lookup ? k_refused : Outcome{0};
    default:
        return k_refused;
    }
}

inline Outcome check_types(IfIndex first, IfIndex last, IfIndex from)
{
    if (!has_type(first) || !has_type(last) || !has_type(from)) {
        return {11};
    }
    const bool same = type_of(first) == type_of(last) && type_of(first) == type_of(from);
    return same ? Outcome{0} : k_refused;
}

inline Outcome lookup(IfIndex first, IfIndex last, uint32_t offset)
{
    const Outcome types = check_types(first, last, first);
    if (types.result != 0) {
        return types;
    }
    if (first == last && offset == 0) {
        return {0, first};
    }
    return step({first, last, first, offset, true});
}

inline Outcome next(IfIndex first, IfIndex last, IfIndex current)
{
    const Outcome types = check_types(first, last, current);
    return types.result != 0 ? types : step({first, last, current, 1, false});
}

// The count is in the output in every case.
inline Outcome count(IfIndex first, IfIndex last)
{
    const Outcome types = check_types(first, last, first);
    if (types.result != 0) {
        return {types.result, 0};
    }
    if (first == last) {
        return {0, 1};
    }
    const auto of = [&](int high, int low, bool is_range) -> Outcome {
        const uint32_t from = cut(first, high, low);
        const uint32_t to = cut(last, high, low);
        return is_range && from <= to ? Outcome{0, to - from + 1} : Outcome{14, 0};
    };
    const auto slot = [&](int high, int low, uint32_t most) {
        return cut(first, high, low) == cut(last, high, low) && cut(first, high, low) <= most;
    };
    switch (type_of(first)) {
    case 1:
    case 2:
    case 11:
    case 26:
        return of(18, 12, slot(23, 19, 31));
    case 37:
        return of(13, 6, slot(23, 14, 514));
    case 14:
        return of(13, 0, slot(23, 19, 30));
    case 4:
    case 22: {
        const bool is_eth = type_of(first) == 22;
        const uint32_t sub = is_eth ? cut(first, 23, 12) : cut(first, 19, 8);
        const bool steps_sub = (is_eth || cut(first, 21, 20) == 0) && sub != 0;
        // A step of nothing is refused just when there is no range.
        const bool is_range = step({first, last, first, 0, true}).result == 0;
        return steps_sub ? of(is_eth ? 23 : 19, is_eth ? 12 : 8, is_range)
                         : of(is_eth ? 11 : 7, 0, is_range);
    }
    case 10:
    case 15:
    case 9:
        return of(11, 0, true);
    case 34:
        return of(15, 0, true);
    case 28:
        return of(23, 4, true);
    case 29:
        return of(19, 0, true);
    case 30:
        return of(15, 0, cut(last, 15, 0) < 61440);
    case 31:
        return of(11, 6, slot(23, 16, 254) && cut(first, 15, 12) == 0 && cut(last, 15, 12) == 0);
    default:
        return {14, 0};
    }
}

// --- FSPF ---------------------------------------------------------------------------------------

inline uint32_t reversed(uint32_t word)
{
    return word << 24 | (word & 0xff00) << 8 | (word >> 8 & 0xff00) | word >> 24;
}

// The word before is what the caller had in it: types without a number give it back reversed.
inline Outcome to_fspf16(IfIndex value, uint32_t before)
{
    if (!has_type(value)) {
        return {11};
    }
    switch (type_of(value)) {
    case 1:
        return {0, reversed(1 << 12 | cut(value, 23, 19) << 7 | cut(value, 18, 12))};
    case 4:
        return {0, reversed(4 << 12 | cut(value, 7, 0))};
    case 10:
        return {0, reversed(10 << 12 | cut(value, 11, 0))};
    default:
        return {0, reversed(before)};
    }
}

inline Outcome to_fspf(IfIndex value, uint32_t before)
{
    if (!has_type(value)) {
        return {11};
    }
    switch (type_of(value)) {
    case 1:
        return {0, reversed(0x010000 | cut(value, 23, 19) << 8 | cut(value, 18, 12))};
    case 4:
        return {0, reversed(0x040000 | cut(value, 7, 0))};
    case 10:
        return {0, reversed(0x0A0000 | cut(value, 11, 0))};
    case 16:
    case 19:
        return {0, reversed(type_of(value) << 16 | cut(value, 15, 0))};
    case 30:
        switch (cut(value, 23, 20)) {
        case 0:
            return {0, reversed(0x1E0000 | cut(value, 15, 0))};
        case 1:
            return {0, reversed(0xFB0000 | cut(value, 11, 0))};
        case 2:
            return {0, reversed(0xFA0000 | cut(value, 19, 15) << 8 | cut(value, 14, 8))};
        default:
            return {0, reversed(before)};
        }
    default:
        return {0, reversed(before)};
    }
}

inline Outcome built(bool in_range, uint32_t value)
{
    return in_range ? Outcome{0, value} : k_refused;
}

inline Outcome from_fspf16(uint32_t word)
{
    const uint32_t fspf = reversed(word);
    switch (cut(fspf, 15, 12)) {
    case 1:
        return {0, 0x01000000 | cut(fspf, 11, 7) << 19 | cut(fspf, 6, 0) << 12};
    case 4:
        return {0, 0x04000000 | cut(fspf, 7, 0)};
    case 10:
        return {0, 0x0A000000 | cut(fspf, 7, 0)};
    default:
        return {0};
    }
}

inline Outcome from_fspf(uint32_t word)
{
    const uint32_t fspf = reversed(word);
    const uint32_t high = cut(fspf, 15, 8);
    const uint32_t low = cut(fspf, 7, 0);
    const uint32_t number = cut(fspf, 15, 0);
    switch (cut(fspf, 23, 16)) {
    case 0x01:
        return built(high <= 31 && low <= 127, 0x01000000 | high << 19 | low << 12);
    case 0x04:
        return {0, 0x04000000 | low};
    case 0x0A:
        return {0, 0x0A000000 | low};
    case 0x10:
        return {0, 0x10000000 | number};
    case 0x13:
        return {0, 0x13000000 | number};
    case 0x1E:
        return {0, 0x1E000000 | number};
    case 0xFA:
        return built(high <= 31 && low <= 127, 0x1E200000 | high << 15 | low << 8);
    case 0xFB:
        return built(number <= 4095, 0x1E100000 | number);
    default:
        return {11};
    }
}

// --- the library's calls, in the same form ------------------------------------------------------

// Calls twice with different words in the output, which shows what is stored.
template <typename Call> Outcome call(Call operation)
{
    uint32_t a = 0x5a5a5a5a;
    uint32_t b = 0xa5a5a5a5;
    const uint32_t result = operation(&a);
    operation(&b);
    return a == b ? Outcome{result, a} : Outcome{result};
}

inline bool ranges_agree(IfIndex first, IfIndex last, IfIndex current, uint32_t offset)
{
    return call([&](uint32_t *out) {
               return if_index_get_num_ports_in_if_index_range(first, last, out);
           }) == count(first, last) &&
           call([&](uint32_t *out) {
               return if_index_get_if_index_in_range(first, last, out, offset);
           }) == lookup(first, last, offset) &&
           call([&](uint32_t *out) {
               return if_index_get_next_if_index_in_range(first, last, current, out);
           }) == next(first, last, current);
}

inline bool fspf_agrees(IfIndex value, uint32_t word)
{
    uint32_t word16 = word;
    uint32_t word32 = word;
    const Outcome there16 = to_fspf16(value, word);
    const Outcome there = to_fspf(value, word);
    return convert_if_index_to_fspf16_if_index(value, &word16) == there16.result &&
           word16 == there16.out.value_or(word) &&
           convert_if_index_to_fspf_if_index(value, &word32) == there.result &&
           word32 == there.out.value_or(word) &&
           call([&](uint32_t *out) { return convert_fspf16_if_index_to_if_index(word, out); }) ==
               from_fspf16(word) &&
           call([&](uint32_t *out) { return convert_fspf_if_index_to_if_index(word, out); }) ==
               from_fspf(word) &&
           ntoh_if_index(word) == reversed(word) && hton_if_index(word) == reversed(word);
}

} // namespace range_model

// MAC addresses: text to bytes and back.
#include "ruk/address.h"

#include "infra/utils/kttext.h"
#include "infra/utils/kttrace.h"

uint32_t kt_debug_print_ktstrings = KT_TRACE_DEFAULT;

namespace
{

using kttext::hex_value;
using kttext::is_space;

// A text is parsed in a working copy: the longest form, two spare characters and a terminator.
constexpr size_t k_copy_size = 20;
// The length of the longest form: a copy that goes on here is refused.
constexpr size_t k_longest = 17;
constexpr size_t k_shortest = 5;

struct MacForm {
    size_t groups;
    size_t digits;  // of each group
    char separator; // "-" separates the groups of either form as well
};

constexpr MacForm k_pairs{.groups = 6, .digits = 2, .separator = ':'};
constexpr MacForm k_quads{.groups = 3, .digits = 4, .separator = '.'};

bool separates(const MacForm &form, char c)
{
    return c == form.separator || c == '-';
}

// Fills the working copy, its unused end with zeros.  False when the text is too long.
bool copy_adjusted(const char *text, char (&copy)[k_copy_size])
{
    const size_t padding = hex_value(text[0]) >= 0 && text[1] == ':' ? 1 : 0;
    memset(copy, 0, sizeof copy);
    copy[0] = '0';
    memcpy(copy + padding, text, strnlen(text, k_copy_size - 1 - padding));
    if (padding > 0) {
        kt_trace(kt_debug_print_ktstrings, KT_LEVEL_INFO, "Adjusted MAC String from %s to %s\n",
                 text, copy);
    } else {
        kt_trace(kt_debug_print_ktstrings, KT_LEVEL_DEBUG,
                 "No adjustment in MAC String needed %s\n", copy);
    }

    if (copy[k_longest] != '\0' && !is_space(copy[k_longest])) {
        kt_trace(kt_debug_print_ktstrings, KT_LEVEL_WARNING,
                 "%s: Mac[%s] parsed has extra characters\n", "kt_get_adjusted_mac_string", text);
        return false;
    }
    return true;
}

const MacForm *form_of(const char *copy)
{
    for (const MacForm *form : {&k_pairs, &k_quads}) {
        if (separates(*form, copy[form->digits])) {
            return form;
        }
    }
    kt_trace(kt_debug_print_ktstrings, KT_LEVEL_WARNING, "Couldn't parse MAC address %s\n", copy);
    return nullptr;
}

bool all_hex(const char *group, size_t digits)
{
    return std::all_of(group, group + digits, [](char c) { return hex_value(c) >= 0; });
}

// Every digit that follows counts, also those behind the group: callers rely on the low 16 bits of
// a last group that is too long.
uint32_t group_value(const char *group)
{
    uint32_t value = 0;
    for (; hex_value(*group) >= 0; ++group) {
        value = value << 4 | static_cast<uint32_t>(hex_value(*group));
    }
    return value;
}

// Each group is stored before the next one is looked at: callers may see the bytes before a
// failure, and that is promised.
bool parse_groups(const char *copy, const MacForm &form, uint8_t *mac)
{
    for (size_t i = 0; i < form.groups; ++i) {
        const char *group = copy + i * (form.digits + 1);
        const bool last = i + 1 == form.groups;
        if (!all_hex(group, form.digits) || (!last && !separates(form, group[form.digits]))) {
            return false;
        }
        const uint32_t value = group_value(group);
        if (form.digits == 4) {
            *mac++ = static_cast<uint8_t>(value >> 8);
        }
        *mac++ = static_cast<uint8_t>(value);
    }
    return true;
}

// The whole text, in any form.
[[gnu::noinline]] int32_t parse_copy(uint8_t *mac, const char *text)
{
    text = kttext::skip_space(text);
    if (strnlen(text, k_shortest) < k_shortest) {
        return -1;
    }
    char copy[k_copy_size];
    if (!copy_adjusted(text, copy)) {
        return -1;
    }
    const MacForm *form = form_of(copy);
    return form != nullptr && parse_groups(copy, *form, mac) ? 0 : -1;
}

// The way below while it reads pairs: the bytes so far, and where it is.
struct PairReader {
    uint64_t bytes;
    const char *at;

    // Reads a separator and a pair.  No character is read before the one in front of it has been
    // accepted.
    bool next()
    {
        if (!separates(k_pairs, at[0]) || hex_value(at[1]) < 0) {
            return false;
        }
        const int32_t value = hex_value(at[1]) << 4 | hex_value(at[2]);
        bytes = bytes << 8 | static_cast<uint32_t>(value);
        at += 3;
        return value >= 0;
    }
};

// The text as most are: six pairs and nothing else, the first perhaps without its zero.  Gives what
// the working copy would give, without one.  False, with nothing written, for texts that are to be
// read the other way.
bool parse_plain_pairs(uint8_t *mac, const char *text)
{
    int32_t first = hex_value(*text++);
    if (first >= 0 && *text != k_pairs.separator) {
        first = first << 4 | hex_value(*text++);
    }
    if (first < 0) {
        return false;
    }
    PairReader pairs{static_cast<uint32_t>(first), text};
    if (!(pairs.next() && pairs.next() && pairs.next() && pairs.next() && pairs.next()) ||
        *pairs.at != '\0') {
        return false;
    }
    const uint64_t in_order = __builtin_bswap64(pairs.bytes << 16);
    memcpy(mac, &in_order, KT_MAC_ADDRESS_SIZE);
    return true;
}

// Two bytes with a ":" behind each.
uint64_t two_pairs(uint32_t bytes)
{
    return kttext::k_hex_pairs[bytes & 0xff] | uint64_t{':'} << 16 |
           uint64_t{kttext::k_hex_pairs[bytes >> 8 & 0xff]} << 24 | uint64_t{':'} << 40;
}

// Writes the six pairs and returns the length.  The first two stores have two bytes more than
// their pairs, which the next one overwrites.
int32_t write_pairs(char *at, const uint8_t *mac)
{
    // Read before anything is written, for callers whose buffer holds the address.
    const auto first = kttext::load_word<uint32_t>(mac);
    const uint64_t last = two_pairs(kttext::load_word<uint16_t>(mac + 4));
    kttext::store_chars<uint64_t>(at, two_pairs(first));
    kttext::store_chars<uint64_t>(at + 6, two_pairs(first >> 16));
    kttext::store_chars<uint32_t>(at + 12, last);
    // The last ":" gives way to the terminator.
    kttext::store_chars<uint16_t>(at + 16, last >> 32 & 0xff);
    return int32_t{k_longest};
}

} // namespace

int32_t kt_parse_mac_address(uint8_t *mac, const char *text)
{
    // What is traced of every text is told in terms of the working copy.
    constexpr uint32_t k_of_every_text = KT_LEVEL_INFO | KT_LEVEL_DEBUG;
    if ((kt_debug_print_ktstrings & k_of_every_text) == 0 && parse_plain_pairs(mac, text)) {
        return 0;
    }
    return parse_copy(mac, text);
}

int32_t snprintf_mac_address(char *buffer, uint32_t size, const uint8_t *mac)
{
    return size > k_longest ? write_pairs(buffer, mac)
                            : kttext::put_cut<k_longest>(buffer, size, mac, snprintf_mac_address);
}

void kt_format_mac_address(void) {}

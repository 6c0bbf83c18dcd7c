// The keywords that interface names start with.  A keyword's place in the list is the interface
// kind, a number of its own that has nothing to do with the type of an IfIndex.
#ifndef IFINDEX_KEYWORDS_H
#define IFINDEX_KEYWORDS_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace ifindex
{

// In order: the first keyword that a name begins with decides, so the shorter ones that stand
// earlier ("fc", "vfc", "tunnel") hide the longer ones behind them ("fcip", "vfc-veth",
// "tunnel-te").  Callers rely on it.
inline constexpr std::string_view k_keywords[] = {
    // 0
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
    // 10
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
    // 20
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
    // 30
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
    // 40
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
    // 50
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
    // 60
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

inline constexpr size_t k_keyword_count = std::size(k_keywords);
static_assert(k_keyword_count == 69);

// The kind of a keyword as it is spelt in the list; a word that isn't there doesn't compile.
consteval int32_t kind_of(std::string_view keyword)
{
    size_t kind = 0;
    while (k_keywords[kind] != keyword) {
        ++kind;
    }
    return static_cast<int32_t>(kind);
}

// Lower case of an ASCII letter, whatever the locale.
constexpr char lower_ascii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Returns what follows prefix in text, ignoring case, or nullptr when text doesn't begin with it.
constexpr const char *skip_prefix(const char *text, std::string_view prefix)
{
    for (const char c : prefix) {
        // The terminator of a shorter text differs from every character of a prefix.
        if (lower_ascii(*text) != lower_ascii(c)) {
            return nullptr;
        }
        ++text;
    }
    return text;
}

} // namespace ifindex

#endif // IFINDEX_KEYWORDS_H

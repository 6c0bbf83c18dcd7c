// Finding the keyword that a name begins with.  Only keywords with the name's first letter are
// compared; they are chained in list order, which decides between them.
#include "ifindex/keywords.h"

#include <array>

namespace ifindex
{

namespace
{

// In a chain: no further keyword.
constexpr uint8_t k_none = k_keyword_count;

struct keyword_chains {
    std::array<uint8_t, 128> first;            // by the lower-case first character
    std::array<uint8_t, k_keyword_count> next; // with the same first character, or k_none
};

consteval keyword_chains make_chains()
{
    keyword_chains chains{};
    chains.first.fill(k_none);
    for (size_t kind = k_keyword_count; kind-- > 0;) {
        // "vethernet" is never matched: such names are taken by "veth".  Callers rely on it.
        if (k_keywords[kind] == "vethernet") {
            continue;
        }
        const auto letter = static_cast<unsigned char>(lower_ascii(k_keywords[kind][0]));
        uint8_t &first = chains.first[letter];
        chains.next[kind] = first;
        first = static_cast<uint8_t>(kind);
    }
    return chains;
}

constexpr keyword_chains k_chains = make_chains();

} // namespace

keyword_match find_keyword(const char *name)
{
    const auto letter = static_cast<unsigned char>(lower_ascii(*name));
    uint8_t kind = letter < k_chains.first.size() ? k_chains.first[letter] : k_none;
    while (kind != k_none) {
        if (const char *rest = skip_prefix(name, k_keywords[kind])) {
            return {kind, rest};
        }
        kind = k_chains.next[kind];
    }
    return {-1, name};
}

} // namespace ifindex

// Finding the keyword that a name begins with.  The first two characters choose the keywords that
// are compared at all, one mostly, and every comparison is compiled for its keyword, together with
// what is done about it: one jump leads there, and whatever its target says needs no further one.
#ifndef IFINDEX_KEYWORD_SEARCH_H
#define IFINDEX_KEYWORD_SEARCH_H

#include <array>
#include <utility>

#include "ifindex/keywords.h"

namespace ifindex
{

inline constexpr size_t k_none = k_keyword_count;

constexpr bool begins_with(size_t kind, size_t shorter)
{
    return kind != shorter && skip_prefix(k_keywords[kind].data(), k_keywords[shorter]) != nullptr;
}

// "vethernet" is never matched: such names are taken by "veth".  Callers rely on it.
constexpr bool is_passed_over(size_t kind)
{
    return k_keywords[kind] == "vethernet";
}

// What the order of the list comes to.  It decides only between a keyword and a longer one that
// begins with it: the shorter one hides the longer one unless that stands earlier; then it is asked
// about once the shorter one has been found.  This is the one to ask about, or none.
constexpr size_t preferred_to(size_t shorter)
{
    for (size_t kind = 0; kind < shorter; ++kind) {
        if (begins_with(kind, shorter) && !is_passed_over(kind)) {
            return kind;
        }
    }
    return k_none;
}

// Whether a keyword is to be found only behind a shorter one, or not at all.
constexpr bool is_behind_another(size_t kind)
{
    for (size_t shorter = 0; shorter < k_keyword_count; ++shorter) {
        if (begins_with(kind, shorter)) {
            return true;
        }
    }
    return is_passed_over(kind);
}

// Characters of either case share a slot, and some that are no letters do, which is no harm.
constexpr size_t slot_of(char first, char second)
{
    return (static_cast<size_t>(first) & 31) << 5 | (static_cast<size_t>(second) & 31);
}

constexpr size_t slot_of(size_t kind)
{
    return slot_of(k_keywords[kind][0], k_keywords[kind][1]);
}

// The first keyword from a kind on that is to be compared with the names of a slot, or none.
constexpr size_t next_in_slot(size_t slot, size_t kind)
{
    while (kind < k_keyword_count && (slot_of(kind) != slot || is_behind_another(kind))) {
        ++kind;
    }
    return kind;
}

// Whether c is a character of a keyword, in either case.
template <char expected> bool matches(char c)
{
    constexpr char lower = lower_ascii(expected);
    if constexpr (lower >= 'a' && lower <= 'z') {
        return (c | 0x20) == lower;
    } else {
        return c == expected;
    }
}

// Whether name has the characters of a keyword from a place on.  The terminator of a shorter name
// differs from every character of a keyword, so nothing behind it is read.
template <size_t kind, size_t from, size_t... each>
bool goes_on(const char *name, std::index_sequence<each...>)
{
    return (... && matches<k_keywords[kind][from + each]>(name[from + each]));
}

template <size_t kind, size_t from = 0> bool goes_on(const char *name)
{
    return goes_on<kind, from>(name, std::make_index_sequence<k_keywords[kind].size() - from>());
}

// Compares the keywords of one slot, from a kind on.
template <class Use, size_t kind, typename Output> int32_t find_from(const char *name, Output *out)
{
    if constexpr (kind == k_none) {
        return 0;
    } else {
        if (goes_on<kind>(name)) {
            if constexpr (constexpr size_t longer = preferred_to(kind); longer != k_none) {
                if (goes_on<longer, k_keywords[kind].size()>(name)) {
                    return Use::template found<longer>(name + k_keywords[longer].size(), out);
                }
            }
            return Use::template found<kind>(name + k_keywords[kind].size(), out);
        }
        return find_from<Use, next_in_slot(slot_of(kind), kind + 1)>(name, out);
    }
}

template <typename Output> using finder = int32_t (*)(const char *name, Output *out);

// The comparison that begins with each kind; the one behind the last finds nothing.
template <class Use, typename Output, size_t... kinds>
constexpr std::array<finder<Output>, sizeof...(kinds)> make_finders(std::index_sequence<kinds...>)
{
    return {find_from<Use, kinds, Output>...};
}

// Where the comparison of a slot's names begins.
inline constexpr auto k_first_in_slot = [] {
    std::array<uint8_t, 1024> first{};
    first.fill(k_none);
    for (size_t kind = k_keyword_count; kind-- > 0;) {
        if (!is_behind_another(kind)) {
            first[slot_of(kind)] = static_cast<uint8_t>(kind);
        }
    }
    return first;
}();

// Finds the keyword that name begins with and returns Use::found<kind>(rest, out), rest being what
// follows the keyword; 0 when there is none.
template <class Use, typename Output> int32_t with_keyword(const char *name, Output *out)
{
    static constexpr auto finders =
        make_finders<Use, Output>(std::make_index_sequence<k_keyword_count + 1>());
    const size_t slot = *name == '\0' ? 0 : slot_of(name[0], name[1]);
    return finders[k_first_in_slot[slot]](name, out);
}

} // namespace ifindex

#endif // IFINDEX_KEYWORD_SEARCH_H

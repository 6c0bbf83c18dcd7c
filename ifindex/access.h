// The type check, and reading fields behind it: what the readers and the dispatchers share.
#ifndef IFINDEX_ACCESS_H
#define IFINDEX_ACCESS_H

#include <limits>

#include "ifindex/layout.h"

namespace ifindex
{

// Whether the type check passes a code.  The reserved codes pass too: values of a later release are
// told apart from garbage here, and refused type by type behind it.
constexpr bool is_known_type(uint32_t type)
{
    constexpr uint32_t no_kind = 3;
    return type != 0 && type != no_kind && type <= IF_INDEX_TYPE_LAST_RESERVED;
}

constexpr bool is_of_type(IfIndex value, if_index_type type)
{
    return type_of(value) == static_cast<uint32_t>(type);
}

// A set of type codes; all that have an interface kind are below 64.
struct type_set {
    uint64_t codes;

    constexpr bool has(uint32_t type) const { return type < 64 && (codes >> type & 1) != 0; }
};

template <typename... Types> constexpr type_set accepts(Types... types)
{
    return {(uint64_t{0} | ... | (uint64_t{1} << types))};
}

constexpr uint32_t check_type(IfIndex value, type_set accepted)
{
    const uint32_t type = type_of(value);
    if (!is_known_type(type)) {
        return IF_INDEX_UNKNOWN_TYPE;
    }
    return accepted.has(type) ? IF_INDEX_OK : IF_INDEX_WRONG_TYPE;
}

// An output and the field that goes there.
template <auto Field, typename Number> struct field_output {
    Number *out;

    constexpr bool is_null() const { return out == nullptr; }
    constexpr void store(IfIndex value) const { *out = static_cast<Number>(Field.get(value)); }
};

template <auto Field, typename Number> constexpr field_output<Field, Number> to(Number *out)
{
    static_assert(Field.max() <= std::numeric_limits<Number>::max(), "the output holds the field");
    return {out};
}

// The end of a reader: the fields, all or none.
template <typename... Outputs>
constexpr uint32_t store_unless(uint32_t error, IfIndex value, Outputs... outputs)
{
    if (error == IF_INDEX_OK) {
        (outputs.store(value), ...);
    }
    return error;
}

// A whole reader: the type check, then the fields.
template <typename... Outputs>
constexpr uint32_t read(IfIndex value, type_set accepted, Outputs... outputs)
{
    return store_unless(check_type(value, accepted), value, outputs...);
}

} // namespace ifindex

#endif // IFINDEX_ACCESS_H

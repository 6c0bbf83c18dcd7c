// Building an IfIndex out of judged parts: what both kinds of constructor share.
#ifndef IFINDEX_BUILD_H
#define IFINDEX_BUILD_H

#include "ifindex/layout.h"

namespace ifindex
{

// One argument of a constructor at its place in the value, and whether it was in its range.
struct part {
    bool in_range;
    IfIndex bits;
};

// Up to max.  The field cuts what it can't hold when max allows more.
constexpr part limited(const auto &field, uint32_t number, uint32_t max)
{
    return {number <= max, field.put(number)};
}

// Whatever the field holds.
constexpr part whole(const auto &field, uint32_t number)
{
    return limited(field, number, field.max());
}

// Not judged, cut to the field.
constexpr part kept(const auto &field, uint32_t number)
{
    return {true, field.put(number)};
}

// Not judged and not cut: runs into the fields above.
constexpr part uncut(bit_field field, uint32_t number)
{
    return {true, field.put_uncut(number)};
}

constexpr bool is_between(int32_t number, int32_t first, int32_t last)
{
    return number >= first && number <= last;
}

// A number less one, for any number.
constexpr uint32_t less_one(int32_t number)
{
    return static_cast<uint32_t>(number) - 1;
}

// A number as a user types it, first to last, stored counting from zero: first is 1, or 0 for
// numbers that are typed as they are stored.  The field cuts what it can't hold.
constexpr part counted(const auto &field, int32_t number, int32_t first, int32_t last)
{
    const uint32_t stored = static_cast<uint32_t>(number) - static_cast<uint32_t>(first);
    return {is_between(number, first, last), field.put(stored)};
}

// The same, where the range is wider than the field and the rest has always run into the one above.
constexpr part counted_uncut(bit_field field, int32_t number, int32_t first, int32_t last)
{
    const uint32_t stored = static_cast<uint32_t>(number) - static_cast<uint32_t>(first);
    return {is_between(number, first, last), field.put_uncut(stored)};
}

// Stores the value if every part is in its range.
template <typename... Parts>
constexpr uint32_t build(IfIndex *out, if_index_type type, Parts... parts)
{
    if (out == nullptr || !(true && ... && parts.in_range)) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    *out = (base_of(type) | ... | parts.bits);
    return IF_INDEX_OK;
}

} // namespace ifindex

#endif // IFINDEX_BUILD_H

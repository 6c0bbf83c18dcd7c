// The loops over bytes, written once for every width of register.
//
// The file of a variant includes this between the pragmas that choose its kind of processor, so
// that everything here compiles for that processor; other headers come before them.  All stands
// in an unnamed namespace and calls no template of another header: a linker must find nothing
// here to mistake for the code of another variant.
//
// A width is a set of static functions over its `block`.  What is left after the last whole block
// is done by the same loop over blocks of the `narrower` width; a byte leaves nothing.
#pragma once

#include <bit>
#include <cstring>

#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

namespace
{

// A word whose most significant bits are the bytes of v as they lie in memory, the first on top.
inline uint64_t in_bit_order(uint8_t v)
{
    return static_cast<uint64_t>(v) << 56;
}

inline uint64_t in_bit_order(uint64_t v)
{
    return std::endian::native == std::endian::little ? __builtin_bswap64(v) : v;
}

template <class Unsigned, class Narrower> struct integer_ops {
    using block = Unsigned;
    using narrower = Narrower;
    using counts = uint64_t;

    static block load(const uint8_t *p)
    {
        block v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(uint8_t *p, block v) { memcpy(p, &v, sizeof v); }
    static block spread(uint8_t byte)
    {
        return static_cast<block>(byte * uint64_t{0x0101010101010101});
    }
    static block both(block v, block w) { return static_cast<block>(v & w); }
    static block either(block v, block w) { return static_cast<block>(v | w); }
    static block differ(block v, block w) { return static_cast<block>(v ^ w); }
    static block without(block v, block w) { return static_cast<block>(v & ~w); }
    static bool is_zero(block v) { return v == 0; }

    // Where in a block that is not zero its first and its last bit stand.
    static constexpr bool k_places_bits = true;
    static int first_bit(block v) { return __builtin_clzll(in_bit_order(v)); }
    static int last_bit(block v) { return 63 - __builtin_ctzll(in_bit_order(v)); }

    // Adds up each byte's bits, then the bytes.  Compilers know the pattern and use the
    // processor's own count where the variant has one.
    static counts add_counts(counts so_far, block v)
    {
        uint64_t bits = v;
        bits = bits - ((bits >> 1) & 0x5555555555555555);
        bits = (bits & 0x3333333333333333) + ((bits >> 2) & 0x3333333333333333);
        bits = (bits + (bits >> 4)) & 0x0f0f0f0f0f0f0f0f;
        return so_far + ((bits * 0x0101010101010101) >> 56);
    }
    static counts no_counts() { return 0; }
    static uint64_t total(counts so_far) { return so_far; }

    static block reverse(block v)
    {
        v = exchange<1>(v, spread(0x55));
        v = exchange<2>(v, spread(0x33));
        return exchange<4>(v, spread(0x0f));
    }

private:
    // Exchanges neighbouring groups of Width bits; lower is the mask of the lower groups.
    template <int Width> static block exchange(block v, block lower)
    {
        return static_cast<block>(((v >> Width) & lower) | ((v & lower) << Width));
    }
};

using byte_ops = integer_ops<uint8_t, void>;
using word_ops = integer_ops<uint64_t, byte_ops>;

enum class algebra { unite, intersect, subtract };

template <class Ops> struct loops {
    using block = typename Ops::block;
    using rest = loops<typename Ops::narrower>;
    static constexpr size_t k_step = sizeof(block);
    static constexpr bool k_leaves_rest = k_step > 1;

    static size_t whole_blocks(size_t n) { return n - n % k_step; }

    static uint64_t count(const uint8_t *p, size_t n)
    {
        typename Ops::counts counts = Ops::no_counts();
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            counts = Ops::add_counts(counts, Ops::load(p + at));
        }
        if constexpr (k_leaves_rest) {
            return Ops::total(counts) + rest::count(p + at, n - at);
        } else {
            return Ops::total(counts);
        }
    }

    // Where the width cannot place a bit within its block, the narrower one finds it as it would
    // find one in the rest.
    static int64_t find_first(const uint8_t *p, size_t n, uint8_t fill)
    {
        const block filled = Ops::spread(fill);
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            const block found = Ops::differ(Ops::load(p + at), filled);
            if (!Ops::is_zero(found)) {
                if constexpr (Ops::k_places_bits) {
                    return position(at, Ops::first_bit(found));
                } else {
                    break;
                }
            }
        }
        if constexpr (k_leaves_rest) {
            const int64_t found = rest::find_first(p + at, n - at, fill);
            return found < 0 ? found : position(at, found);
        } else {
            return -1;
        }
    }

    static int64_t find_last(const uint8_t *p, size_t n, uint8_t fill)
    {
        const block filled = Ops::spread(fill);
        size_t end = n;
        for (; end >= k_step; end -= k_step) {
            const block found = Ops::differ(Ops::load(p + end - k_step), filled);
            if (!Ops::is_zero(found)) {
                if constexpr (Ops::k_places_bits) {
                    return position(end - k_step, Ops::last_bit(found));
                } else {
                    break;
                }
            }
        }
        if constexpr (k_leaves_rest) {
            return rest::find_last(p, end, fill);
        } else {
            return -1;
        }
    }

    template <algebra Operation> static void combine(uint8_t *p, const uint8_t *q, size_t n)
    {
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            const block v = Ops::load(p + at);
            const block w = Ops::load(q + at);
            if constexpr (Operation == algebra::unite) {
                Ops::store(p + at, Ops::either(v, w));
            } else if constexpr (Operation == algebra::intersect) {
                Ops::store(p + at, Ops::both(v, w));
            } else {
                Ops::store(p + at, Ops::without(v, w));
            }
        }
        if constexpr (k_leaves_rest) {
            rest::template combine<Operation>(p + at, q + at, n - at);
        }
    }

    static void mask_copy(uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n)
    {
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            const block m = Ops::load(mask + at);
            const block kept = Ops::without(Ops::load(p + at), m);
            Ops::store(p + at, Ops::either(kept, Ops::both(Ops::load(q + at), m)));
        }
        if constexpr (k_leaves_rest) {
            rest::mask_copy(p + at, q + at, mask + at, n - at);
        }
    }

    static bool mask_equal(const uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n)
    {
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            const block differing = Ops::differ(Ops::load(p + at), Ops::load(q + at));
            if (!Ops::is_zero(Ops::both(differing, Ops::load(mask + at)))) {
                return false;
            }
        }
        if constexpr (k_leaves_rest) {
            return rest::mask_equal(p + at, q + at, mask + at, n - at);
        } else {
            return true;
        }
    }

    static bool is_subset(const uint8_t *p, const uint8_t *q, size_t n)
    {
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            if (!Ops::is_zero(Ops::without(Ops::load(p + at), Ops::load(q + at)))) {
                return false;
            }
        }
        if constexpr (k_leaves_rest) {
            return rest::is_subset(p + at, q + at, n - at);
        } else {
            return true;
        }
    }

    static void reverse(uint8_t *to, const uint8_t *p, size_t n)
    {
        size_t at = 0;
        for (; at != whole_blocks(n); at += k_step) {
            Ops::store(to + at, Ops::reverse(Ops::load(p + at)));
        }
        if constexpr (k_leaves_rest) {
            rest::reverse(to + at, p + at, n - at);
        }
    }

private:
    static int64_t position(size_t byte, int64_t bit)
    {
        return static_cast<int64_t>(byte) * 8 + bit;
    }
};

template <class Ops> constexpr kernels kernels_of(const char *name, bool (*runs_here)())
{
    return {
        .name = name,
        .runs_here = runs_here,
        .count = loops<Ops>::count,
        .find_first = loops<Ops>::find_first,
        .find_last = loops<Ops>::find_last,
        .unite = loops<Ops>::template combine<algebra::unite>,
        .intersect = loops<Ops>::template combine<algebra::intersect>,
        .subtract = loops<Ops>::template combine<algebra::subtract>,
        .mask_copy = loops<Ops>::mask_copy,
        .mask_equal = loops<Ops>::mask_equal,
        .is_subset = loops<Ops>::is_subset,
        .reverse = loops<Ops>::reverse,
    };
}

} // namespace

} // namespace ktlibbmp

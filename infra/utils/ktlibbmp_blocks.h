// The bytes that the loops of the bit set library do at once, as integers.  Included as
// ktlibbmp_loops.h is: between the pragmas of a variant.
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

// All of them where there is no other bit.
inline size_t zeros_above(uint64_t word)
{
    return word == 0 ? 64 : static_cast<size_t>(__builtin_clzll(word));
}

// A word whose least significant bits are the bytes of v as they lie in memory, the first one
// below.
inline uint64_t first_byte_lowest(uint64_t v)
{
    return std::endian::native == std::endian::little ? v : __builtin_bswap64(v);
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

    // Where two blocks differ, other than 0 where they do, and the first and the last byte of that.
    static block differing(block v, block w) { return differ(v, w); }
    static size_t first_byte(block found) { return zeros_above(in_bit_order(found)) / 8; }
    static size_t last_byte(block found)
    {
        return 7 - static_cast<size_t>(__builtin_ctzll(in_bit_order(found))) / 8;
    }

    // A bit for each word of v that has a bit which differs from the one before; the words of
    // before stand before those of v.
    static uint64_t words_with_edges(uint64_t v, uint64_t before)
    {
        const uint64_t on_top = before << (std::endian::native == std::endian::little ? 7 : 63);
        return v != 0 - (on_top >> 63) ? 1 : 0;
    }

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
    static counts add(counts a, counts b) { return a + b; }
    static uint32_t total(counts sum) { return static_cast<uint32_t>(sum); }

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

} // namespace

} // namespace ktlibbmp

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

#include "infra/utils/ktlibbmp_blocks.h"
#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

namespace
{

// What the algebra and the comparisons do with one block.  It makes no difference if they do a byte
// twice.
struct united {
    template <class Ops> static bool run(uint8_t *p, const uint8_t *q)
    {
        Ops::store(p, Ops::either(Ops::load(p), Ops::load(q)));
        return true;
    }
};

struct intersected {
    template <class Ops> static bool run(uint8_t *p, const uint8_t *q)
    {
        Ops::store(p, Ops::both(Ops::load(p), Ops::load(q)));
        return true;
    }
};

struct subtracted {
    template <class Ops> static bool run(uint8_t *p, const uint8_t *q)
    {
        Ops::store(p, Ops::without(Ops::load(p), Ops::load(q)));
        return true;
    }
};

struct copied {
    template <class Ops> static bool run(uint8_t *p, const uint8_t *q, const uint8_t *mask)
    {
        const auto m = Ops::load(mask);
        const auto kept = Ops::without(Ops::load(p), m);
        Ops::store(p, Ops::either(kept, Ops::both(Ops::load(q), m)));
        return true;
    }
};

struct equality {
    template <class Ops> static bool run(const uint8_t *p, const uint8_t *q)
    {
        return Ops::is_zero(Ops::differ(Ops::load(p), Ops::load(q)));
    }
    template <class Ops> static bool run(const uint8_t *p, const uint8_t *q, const uint8_t *mask)
    {
        return Ops::is_zero(Ops::both(Ops::differ(Ops::load(p), Ops::load(q)), Ops::load(mask)));
    }
};

struct emptiness {
    template <class Ops> static bool run(const uint8_t *p) { return Ops::is_zero(Ops::load(p)); }
};

struct inclusion {
    template <class Ops> static bool run(const uint8_t *p, const uint8_t *q)
    {
        return Ops::is_zero(Ops::without(Ops::load(p), Ops::load(q)));
    }
};

template <class Ops> struct loops {
    using block = typename Ops::block;
    using rest = loops<typename Ops::narrower>;
    static constexpr size_t k_step = sizeof(block);
    static constexpr bool k_leaves_rest = k_step > 1;

    static size_t whole_blocks(size_t n) { return n - n % k_step; }

    static uint32_t count(const uint8_t *p, size_t n)
    {
        typename Ops::counts sum = Ops::no_counts();
        size_t at = 0;
        if (n >= 4 * k_step) {
            // In four sums, so that no addition waits for the one before.
            typename Ops::counts second = sum;
            typename Ops::counts third = sum;
            typename Ops::counts fourth = sum;
            for (; at + 4 * k_step <= n; at += 4 * k_step) {
                sum = Ops::add_counts(sum, Ops::load(p + at));
                second = Ops::add_counts(second, Ops::load(p + at + k_step));
                third = Ops::add_counts(third, Ops::load(p + at + 2 * k_step));
                fourth = Ops::add_counts(fourth, Ops::load(p + at + 3 * k_step));
            }
            sum = Ops::add(Ops::add(sum, second), Ops::add(third, fourth));
        }
        for (; at + k_step <= n; at += k_step) {
            sum = Ops::add_counts(sum, Ops::load(p + at));
        }
        if constexpr (k_leaves_rest) {
            return at == n ? Ops::total(sum) : Ops::total(sum) + rest::count(p + at, n - at);
        } else {
            return Ops::total(sum);
        }
    }

    // Has Step do n bytes at p, and at the same places of the others, block by block, until it
    // returns false; false if it did.  The second block begins at the next address that suits its
    // width and the last one ends with the bytes, so Step does some bytes twice, which must make no
    // difference.
    template <class Step, class Byte, class... Bytes>
    static bool each_block(size_t n, Byte *p, Bytes *...others)
    {
        if (n < k_step) {
            if constexpr (k_leaves_rest) {
                return rest::template each_block<Step>(n, p, others...);
            } else {
                return true;
            }
        }
        const auto step = [=](size_t at) {
            return Step::template run<Ops>(p + at, others + at...);
        };
        if (!step(0)) {
            return false;
        }
        size_t at = k_step - reinterpret_cast<uintptr_t>(p) % k_step;
        for (; at + k_step <= n; at += k_step) {
            if (!step(at)) {
                return false;
            }
        }
        return at == n || step(n - k_step);
    }

    // The first byte from one on that differs from Fill; n if none does.
    template <uint8_t Fill> static size_t find_byte(const uint8_t *p, size_t n, size_t from)
    {
        const block filled = Ops::spread(Fill);
        size_t at = from;
        for (; at + k_step <= n; at += k_step) {
            const auto found = Ops::differing(Ops::load(p + at), filled);
            if (found != 0) {
                return at + Ops::first_byte(found);
            }
        }
        if constexpr (k_leaves_rest) {
            return rest::template find_byte<Fill>(p, n, at);
        } else {
            return n;
        }
    }

    static int32_t find_last_set(const uint8_t *p, size_t n)
    {
        size_t end = n;
        for (; end >= k_step; end -= k_step) {
            const auto found = Ops::differing(Ops::load(p + end - k_step), Ops::spread(0x00));
            if (found != 0) {
                const size_t byte = end - k_step + Ops::last_byte(found);
                return static_cast<int32_t>(byte * 8) + 7 - __builtin_ctz(p[byte]);
            }
        }
        if constexpr (k_leaves_rest) {
            return rest::find_last_set(p, end);
        } else {
            return -1;
        }
    }

    static void unite(uint8_t *p, const uint8_t *q, size_t n) { each_block<united>(n, p, q); }
    static void intersect(uint8_t *p, const uint8_t *q, size_t n)
    {
        each_block<intersected>(n, p, q);
    }
    static void subtract(uint8_t *p, const uint8_t *q, size_t n)
    {
        each_block<subtracted>(n, p, q);
    }
    static void mask_copy(uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n)
    {
        each_block<copied>(n, p, q, mask);
    }
    // The C library's own comparison is as good as any but the widest.
    static bool equal(const uint8_t *p, const uint8_t *q, size_t n)
    {
        constexpr size_t k_widest = 64;
        if constexpr (k_step < k_widest) {
            return memcmp(p, q, n) == 0;
        } else {
            return each_block<equality>(n, p, q);
        }
    }
    static bool mask_equal(const uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n)
    {
        return each_block<equality>(n, p, q, mask);
    }
    static bool is_empty(const uint8_t *p, size_t n) { return each_block<emptiness>(n, p); }
    static bool is_subset(const uint8_t *p, const uint8_t *q, size_t n)
    {
        return each_block<inclusion>(n, p, q);
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

    // The first bit from one on that differs from those of Fill.
    template <uint8_t Fill> static int32_t find_bit(const uint8_t *p, size_t n, size_t from)
    {
        size_t byte = from / 8;
        if (byte + 8 <= n) [[likely]] {
            // Mostly it is near: this holds at least 57 of the bits that may be it.
            const uint64_t word = differing_from<Fill>(p, from);
            if (word != 0) {
                return static_cast<int32_t>(from + zeros_above(word));
            }
            byte += 8;
        } else {
            const int32_t in_byte = byte < n ? find_in_byte<Fill>(p, from) : -1;
            if (byte >= n || in_byte >= 0) {
                return in_byte;
            }
            ++byte;
        }
        byte = find_byte<Fill>(p, n, byte);
        return byte == n ? -1 : find_in_byte<Fill>(p, byte * 8);
    }

    // The next run is a search for its first bit and one for the bit that ends it.  Mostly one word
    // holds both: the word of from, or the one that begins with the next byte that differs.
    template <uint8_t Fill> static bit_run next_run(const uint8_t *p, size_t n, size_t from)
    {
        constexpr uint8_t k_other = Fill ^ 0xff;
        while (from / 8 + 8 <= n) {
            const uint64_t word = differing_from<Fill>(p, from);
            const size_t before = zeros_above(word);
            const size_t length = zeros_above(~(word << before % 64));
            const auto first = static_cast<int64_t>(from + before);
            if (from % 8 + before + length < 64) {
                return {first, first + static_cast<int64_t>(length)};
            }
            if (word != 0) {
                return {first, find_bit<k_other>(p, n, from + before + 1)};
            }
            from = find_byte<Fill>(p, n, from / 8 + 8) * 8;
        }
        const int32_t first = find_bit<Fill>(p, n, from);
        return {first, first < 0 ? -1 : find_bit<k_other>(p, n, static_cast<size_t>(first) + 1)};
    }

    static size_t find_edges(const uint8_t *p, size_t words, uint32_t number, uint32_t *edges)
    {
        size_t count = 0;
        uint64_t with_edges = words_with_edges(p, words);
        for (; with_edges != 0; with_edges &= with_edges - 1) {
            const auto i = static_cast<uint32_t>(__builtin_ctzll(with_edges));
            const uint8_t *const at = p + i * sizeof(uint64_t);
            // The first bit lowest, where the processor finds and removes bits at little cost.
            const uint64_t word = first_byte_lowest(word_ops::reverse(word_ops::load(at)));
            const uint64_t found = word ^ (word << 1 | (at[-1] & 1u));
            count += list_bits(found, number + i * 64, edges + count);
        }
        return count;
    }

    static constexpr decltype(kernels::list_items) list_items = nullptr;

private:
    static uint64_t words_with_edges(const uint8_t *p, size_t words)
    {
        constexpr size_t k_words = k_step / sizeof(uint64_t);
        uint64_t found = 0;
        size_t i = 0;
        for (; i + k_words <= words; i += k_words) {
            const uint8_t *const at = p + i * sizeof(uint64_t);
            found |= Ops::words_with_edges(Ops::load(at), Ops::load(at - sizeof(uint64_t))) << i;
        }
        if constexpr (k_words > 1) {
            for (; i < words; ++i) {
                const uint8_t *const at = p + i * sizeof(uint64_t);
                found |= word_ops::words_with_edges(word_ops::load(at),
                                                    word_ops::load(at - sizeof(uint64_t)))
                         << i;
            }
        }
        return found;
    }

    // Lists the bits of a word, the first four without a branch on whether they are there: how many
    // there are no processor foresees.
    static size_t list_bits(uint64_t bits, uint32_t number, uint32_t *list)
    {
        const size_t count = word_ops::add_counts(0, bits);
        list[0] = take_lowest(bits, number);
        list[1] = take_lowest(bits, number);
        list[2] = take_lowest(bits, number);
        list[3] = take_lowest(bits, number);
        for (size_t i = 4; i < count; ++i) {
            list[i] = take_lowest(bits, number);
        }
        return count;
    }

    // Removes the lowest bit and returns what it stands for; any number does where there is none.
    static uint32_t take_lowest(uint64_t &bits, uint32_t number)
    {
        const int bit = __builtin_ctzll(bits | uint64_t{1} << 63);
        bits &= bits - 1;
        return number + static_cast<uint32_t>(bit);
    }

    // What differs from Fill in the 8 bytes that begin with that of from; from itself on top.
    template <uint8_t Fill> static uint64_t differing_from(const uint8_t *p, size_t from)
    {
        const uint64_t word = word_ops::load(p + from / 8);
        return in_bit_order(word_ops::differ(word, word_ops::spread(Fill))) << from % 8;
    }

    template <uint8_t Fill> static int32_t find_in_byte(const uint8_t *p, size_t from)
    {
        const uint8_t byte = byte_ops::differ(p[from / 8], Fill);
        const uint64_t found = in_bit_order(byte) << from % 8;
        return found == 0 ? -1 : static_cast<int32_t>(from + zeros_above(found));
    }
};

// Runs is what finds and lists runs.
template <class Ops, class Runs = loops<Ops>>
constexpr kernels kernels_of(const char *name, bool (*runs_here)())
{
    return {
        .name = name,
        .runs_here = runs_here,
        .count = loops<Ops>::count,
        .find_set = loops<Ops>::template find_bit<0x00>,
        .find_clear = loops<Ops>::template find_bit<0xff>,
        .next_run = loops<Ops>::template next_run<0x00>,
        .next_clear_run = loops<Ops>::template next_run<0xff>,
        .find_edges = Runs::find_edges,
        .list_items = Runs::list_items,
        .find_last_set = loops<Ops>::find_last_set,
        .unite = loops<Ops>::unite,
        .intersect = loops<Ops>::intersect,
        .subtract = loops<Ops>::subtract,
        .mask_copy = loops<Ops>::mask_copy,
        .equal = loops<Ops>::equal,
        .mask_equal = loops<Ops>::mask_equal,
        .is_empty = loops<Ops>::is_empty,
        .is_subset = loops<Ops>::is_subset,
        .reverse = loops<Ops>::reverse,
    };
}

} // namespace

} // namespace ktlibbmp

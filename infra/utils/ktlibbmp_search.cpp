// Bit sets: searches for set and for clear bits, and the runs of bits built on them.
//
// Both kinds of search are one: a set bit is one that differs from a byte of zeros, a clear bit
// is one that differs from a byte of ones.
#include <bit>

#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_kernels.h"

using namespace ktlibbmp;

namespace
{

// What a forward search looks for: a bit that differs from those of fill.  The line numbers are
// those of its assertions.
struct target {
    uint8_t fill;
    int32_t aligned_line;
    int32_t number_line;
};
constexpr target k_set = {.fill = 0x00, .aligned_line = 154, .number_line = 172};
constexpr target k_clear = {.fill = 0xff, .aligned_line = 311, .number_line = 321};

void require_aligned(const bitset *b, int32_t line)
{
    require((reinterpret_cast<uintptr_t>(b) & 0x3) == 0, "!((uint64_t)bp & 0x3)", line);
}

// The bit number after bNo.  The greatest one wraps round, to be refused as negative.
int32_t successor(int32_t bNo)
{
    return static_cast<int32_t>(static_cast<uint32_t>(bNo) + 1);
}

// The first bytes as a number whose top bit is the first one; bytes that are missing are 0.
template <class Unsigned> Unsigned load_ordered(std::span<const uint8_t> bytes)
{
    Unsigned word = 0;
    if (bytes.size() >= sizeof word) [[likely]] {
        memcpy(&word, bytes.data(), sizeof word);
    } else {
        memcpy(&word, bytes.data(), bytes.size());
    }
    if constexpr (std::endian::native == std::endian::big) {
        return word;
    } else if constexpr (sizeof word == 8) {
        return __builtin_bswap64(word);
    } else {
        return __builtin_bswap32(word);
    }
}

// One or two 32-bit words with a bit set for each that differs from fill; the first one on top.
uint64_t differing(std::span<const uint8_t> words, uint8_t fill)
{
    const uint64_t filled = fill * uint64_t{0x0101010101010101};
    if (words.size() >= 8) [[likely]] {
        return load_ordered<uint64_t>(words) ^ filled;
    }
    const uint64_t word = load_ordered<uint32_t>(words);
    return (word ^ (filled >> 32)) << 32;
}

// The first bit at or after bNo that is looked for, or -1.
inline int32_t find_next(const bitset *b, int32_t bNo, const target &wanted)
{
    require_aligned(b, wanted.aligned_line);
    require(bNo >= 0, "bNo >= 0", wanted.number_line);
    const std::span bytes = searched(b);
    const size_t byte = static_cast<size_t>(bNo) / 32 * 4;
    if (byte >= bytes.size()) {
        return -1;
    }
    const std::span words = bytes.subspan(byte);
    const uint64_t from_bNo = differing(words, wanted.fill) << (bNo % 32);
    if (from_bNo != 0) {
        return bNo + std::countl_zero(from_bNo);
    }
    if (words.size() <= 8) {
        return -1;
    }
    const int64_t found =
        active_kernels().find_first(words.data() + 8, words.size() - 8, wanted.fill);
    return found < 0 ? -1 : static_cast<int32_t>(static_cast<int64_t>(byte + 8) * 8 + found);
}

// The n-th bit that is looked for, counted from 0, or -1.  Stretches that end before it are only
// counted, in ever smaller steps.
int32_t find_nth(const bitset *b, uint32_t n, const target &wanted)
{
    require_aligned(b, wanted.aligned_line);
    constexpr size_t k_steps[] = {4096, 256, 16, 1};
    const std::span bytes = searched(b);
    size_t at = 0;
    for (const size_t step : k_steps) {
        for (; bytes.size() - at >= step; at += step) {
            const uint64_t set = active_kernels().count(bytes.data() + at, step);
            const uint64_t matches = wanted.fill == 0x00 ? set : step * 8 - set;
            if (matches > n) {
                break;
            }
            n -= static_cast<uint32_t>(matches);
        }
    }
    if (at == bytes.size()) {
        return -1;
    }
    int32_t bit = find_next(b, static_cast<int32_t>(at * 8), wanted);
    for (; n > 0; --n) {
        bit = find_next(b, bit + 1, wanted);
    }
    return bit;
}

// The next run of bits that are looked for; one of the others ends it.
inline int32_t next_run(const bitset *b, bitset_range *range, const target &wanted,
                        const target &other)
{
    const uint32_t numbits = bitset_numbits(b);
    // Unsigned, so that a negative upper ends the enumeration as well (but in an empty set, where
    // numbits - 2 wraps).
    if (static_cast<uint32_t>(range->upper) >= numbits - 2) {
        return -1;
    }
    // The bit after upper is known to end the run before: the search starts behind it.
    const bool is_start = range->lower == 1 && range->upper == 0;
    range->lower = find_next(b, is_start ? 0 : successor(successor(range->upper)), wanted);
    if (range->lower < 0 || static_cast<uint32_t>(range->lower) > numbits - 1) {
        return -1;
    }
    const int32_t end = find_next(b, successor(range->lower), other);
    range->upper = end < 0 ? static_cast<int32_t>(numbits - 1) : end - 1;
    return 0;
}

} // namespace

int32_t bitset_find_next_bit(const bitset *b, int32_t bNo)
{
    return find_next(b, bNo, k_set);
}

int32_t bitset_find_next_free_bit(const bitset *b, int32_t bNo)
{
    return find_next(b, bNo, k_clear);
}

int32_t bitset_find_prev_bit(const bitset *b, int32_t bNo)
{
    require_aligned(b, 214);
    require(bNo >= 0, "bNo >= 0", 224);
    require(static_cast<uint32_t>(bNo) < bitset_numbits(b), "bNo < (b->size * 8)", 227);
    // The word of bNo may reach beyond the record, but never its bits up to bNo.
    const std::span bytes = bits_of(b);
    const size_t byte = static_cast<size_t>(bNo) / 32 * 4;
    const uint32_t up_to_bNo = ~uint32_t{0} << (31 - (bNo & 31));
    const uint32_t word = load_ordered<uint32_t>(bytes.subspan(byte)) & up_to_bNo;
    if (word != 0) {
        return (bNo | 31) - std::countr_zero(word);
    }
    return static_cast<int32_t>(active_kernels().find_last(bytes.data(), byte, 0x00));
}

int32_t bitset_first_bit(const bitset *b)
{
    return find_next(b, 0, k_set);
}

int32_t bitset_next_bit(const bitset *b, int32_t bNo)
{
    return find_next(b, successor(bNo), k_set);
}

int32_t bitset_nth_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 276);
    return find_nth(b, static_cast<uint32_t>(n), k_set);
}

int32_t bitset_first_free_bit(const bitset *b)
{
    return find_next(b, 0, k_clear);
}

int32_t bitset_next_free_bit(const bitset *b, int32_t bNo)
{
    return find_next(b, successor(bNo), k_clear);
}

int32_t bitset_nth_free_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 369);
    return find_nth(b, static_cast<uint32_t>(n), k_clear);
}

int32_t bitset_next_range(const bitset *b, bitset_range *range)
{
    return next_run(b, range, k_set, k_clear);
}

int32_t bitset_next_free_range(const bitset *b, bitset_range *range)
{
    return next_run(b, range, k_clear, k_set);
}

int32_t bitset_is_range_free(const bitset *b, const bitset_range *range)
{
    require(range->lower <= range->upper, "range->lower <= range->upper", 124);
    require(b != nullptr, "b", 127);
    require(range->lower >= 0 && static_cast<uint32_t>(range->upper) < bitset_numbits(b),
            "range->lower >= 0 && range->upper < bitset_numbits( b )", 130);
    // The search begins after lower, which callers know to be free.
    const int32_t set = find_next(b, successor(range->lower), k_set);
    return set < 0 || set > range->upper ? 1 : 0;
}

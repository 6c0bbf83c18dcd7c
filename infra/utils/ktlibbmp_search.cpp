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

constexpr uint8_t k_zeros = 0x00;
constexpr uint8_t k_ones = 0xff;
constexpr size_t k_word_size = 4;

void require_aligned(const bitset *b, int32_t line)
{
    require((reinterpret_cast<uintptr_t>(b) & 0x3) == 0, "!((uint64_t)bp & 0x3)", line);
}

// The bit number after bNo.  The greatest one wraps round, to be refused as negative.
int32_t successor(int32_t bNo)
{
    return static_cast<int32_t>(static_cast<uint32_t>(bNo) + 1);
}

// The first four bytes, or as many as there are, as a number whose top bit is the first one.
uint32_t load_ordered(std::span<const uint8_t> bytes)
{
    uint32_t word = 0;
    memcpy(&word, bytes.data(), bytes.size() < sizeof word ? bytes.size() : sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
}

// The first bit at or after bNo that differs from those of fill, or -1.
int32_t find_next(const bitset *b, int32_t bNo, uint8_t fill)
{
    const std::span bytes = searched(b);
    const size_t byte = static_cast<size_t>(bNo >> 5) * k_word_size;
    if (byte >= bytes.size()) {
        return -1;
    }
    const uint32_t filled = fill * uint32_t{0x01010101};
    const uint32_t from_bNo = ~uint32_t{0} >> (bNo & 31);
    const uint32_t word = (load_ordered(bytes.subspan(byte, k_word_size)) ^ filled) & from_bNo;
    if (word != 0) {
        return (bNo & ~31) + std::countl_zero(word);
    }
    const std::span rest = bytes.subspan(byte + k_word_size);
    const int64_t found = active_kernels().find_first(rest.data(), rest.size(), fill);
    return found < 0 ? -1 : static_cast<int32_t>((bNo | 31) + 1 + found);
}

// The n-th bit, counted from 0, that differs from those of fill, or -1.  Stretches that end before
// it are only counted, in ever smaller steps.
int32_t find_nth(const bitset *b, uint32_t n, uint8_t fill)
{
    constexpr size_t k_steps[] = {4096, 256, 16, 1};
    const std::span bytes = searched(b);
    size_t at = 0;
    for (const size_t step : k_steps) {
        for (; bytes.size() - at >= step; at += step) {
            const uint64_t set = active_kernels().count(bytes.data() + at, step);
            const uint64_t matches = fill == k_zeros ? set : step * 8 - set;
            if (matches > n) {
                break;
            }
            n -= static_cast<uint32_t>(matches);
        }
    }
    if (at == bytes.size()) {
        return -1;
    }
    int32_t bit = find_next(b, static_cast<int32_t>(at * 8), fill);
    for (; n > 0; --n) {
        bit = find_next(b, bit + 1, fill);
    }
    return bit;
}

// The enumeration of runs, for set bits or for clear ones.
struct run_kind {
    int32_t (*first)(const bitset *b);
    int32_t (*next)(const bitset *b, int32_t bNo);
    int32_t (*next_other)(const bitset *b, int32_t bNo);
};

int32_t next_run(const bitset *b, bitset_range *range, const run_kind &kind)
{
    const uint32_t numbits = bitset_numbits(b);
    // Unsigned, so that a negative upper ends the enumeration as well.
    if (static_cast<uint32_t>(range->upper) >= numbits - 2) {
        return -1;
    }
    if (range->lower == 1 && range->upper == 0) {
        range->lower = kind.first(b);
    } else {
        // The bit after upper is known to end the run before: the search starts behind it.
        range->lower = kind.next(b, successor(range->upper));
    }
    if (range->lower < 0 || static_cast<uint32_t>(range->lower) > numbits - 1) {
        return -1;
    }
    const int32_t end = kind.next_other(b, range->lower);
    range->upper = end < 0 ? static_cast<int32_t>(numbits - 1) : end - 1;
    return 0;
}

} // namespace

int32_t bitset_find_next_bit(const bitset *b, int32_t bNo)
{
    require_aligned(b, 154);
    require(bNo >= 0, "bNo >= 0", 172);
    return find_next(b, bNo, k_zeros);
}

int32_t bitset_find_next_free_bit(const bitset *b, int32_t bNo)
{
    require_aligned(b, 311);
    require(bNo >= 0, "bNo >= 0", 321);
    return find_next(b, bNo, k_ones);
}

int32_t bitset_find_prev_bit(const bitset *b, int32_t bNo)
{
    require_aligned(b, 214);
    require(bNo >= 0, "bNo >= 0", 224);
    require(static_cast<uint32_t>(bNo) < bitset_numbits(b), "bNo < (b->size * 8)", 227);
    // The word of bNo may reach beyond the record, but never its bits up to bNo.
    const std::span bytes = bits_of(b);
    const size_t byte = static_cast<size_t>(bNo >> 5) * k_word_size;
    const uint32_t up_to_bNo = ~uint32_t{0} << (31 - (bNo & 31));
    const uint32_t word = load_ordered(bytes.subspan(byte)) & up_to_bNo;
    if (word != 0) {
        return (bNo | 31) - std::countr_zero(word);
    }
    return static_cast<int32_t>(active_kernels().find_last(bytes.data(), byte, k_zeros));
}

int32_t bitset_first_bit(const bitset *b)
{
    return bitset_find_next_bit(b, 0);
}

int32_t bitset_next_bit(const bitset *b, int32_t bNo)
{
    return bitset_find_next_bit(b, successor(bNo));
}

int32_t bitset_nth_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 276);
    require_aligned(b, 154);
    return find_nth(b, static_cast<uint32_t>(n), k_zeros);
}

int32_t bitset_first_free_bit(const bitset *b)
{
    return bitset_find_next_free_bit(b, 0);
}

int32_t bitset_next_free_bit(const bitset *b, int32_t bNo)
{
    return bitset_find_next_free_bit(b, successor(bNo));
}

int32_t bitset_nth_free_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 369);
    require_aligned(b, 311);
    return find_nth(b, static_cast<uint32_t>(n), k_ones);
}

int32_t bitset_next_range(const bitset *b, bitset_range *range)
{
    return next_run(b, range, {bitset_first_bit, bitset_next_bit, bitset_next_free_bit});
}

int32_t bitset_next_free_range(const bitset *b, bitset_range *range)
{
    return next_run(b, range, {bitset_first_free_bit, bitset_next_free_bit, bitset_next_bit});
}

int32_t bitset_is_range_free(const bitset *b, const bitset_range *range)
{
    require(range->lower <= range->upper, "range->lower <= range->upper", 124);
    require(b != nullptr, "b", 127);
    require(range->lower >= 0 && static_cast<uint32_t>(range->upper) < bitset_numbits(b),
            "range->lower >= 0 && range->upper < bitset_numbits( b )", 130);
    // The search begins after lower, which callers know to be free.
    const int32_t set = bitset_next_bit(b, range->lower);
    return set < 0 || set > range->upper ? 1 : 0;
}

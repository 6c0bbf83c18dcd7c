// Bit sets: searches for set and for clear bits, and the runs of bits built on them.
#include <bit>

#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_kernels.h"

using namespace ktlibbmp;

namespace
{

// What a forward search looks for, the loops that find it and the line numbers of its assertions.
struct target {
    bool value;
    int32_t (*kernels::*find)(const uint8_t *p, size_t n, size_t from);
    bit_run (*kernels::*next_run)(const uint8_t *p, size_t n, size_t from);
    int32_t aligned_line;
    int32_t number_line;
};
constexpr target k_set = {.value = true,
                          .find = &kernels::find_set,
                          .next_run = &kernels::next_run,
                          .aligned_line = 154,
                          .number_line = 172};
constexpr target k_clear = {.value = false,
                            .find = &kernels::find_clear,
                            .next_run = &kernels::next_clear_run,
                            .aligned_line = 311,
                            .number_line = 321};

void require_aligned(const bitset *b, int32_t line)
{
    require((reinterpret_cast<uintptr_t>(b) & 0x3) == 0, "!((uint64_t)bp & 0x3)", line);
}

// The bit number after bNo.  The greatest one wraps round, to be refused as negative.
int32_t successor(int32_t bNo)
{
    return static_cast<int32_t>(static_cast<uint32_t>(bNo) + 1);
}

// The first 4 bytes as a number whose top bit is the first one; bytes that are missing are 0.
uint32_t load_ordered(std::span<const uint8_t> bytes)
{
    uint32_t word = 0;
    memcpy(&word, bytes.data(), bytes.size() < sizeof word ? bytes.size() : sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
}

// The first bit at or after bNo that is looked for, or -1.
template <const target &Wanted>
[[gnu::always_inline]] inline int32_t find_next(const bitset *b, int32_t bNo)
{
    require_aligned(b, Wanted.aligned_line);
    require(bNo >= 0, "bNo >= 0", Wanted.number_line);
    const std::span bytes = searched(b);
    return (active_kernels().*Wanted.find)(bytes.data(), bytes.size(), static_cast<size_t>(bNo));
}

// The n-th bit that is looked for, counted from 0, or -1.  Stretches that end before it are only
// counted, in ever smaller steps.
template <const target &Wanted> int32_t find_nth(const bitset *b, uint32_t n)
{
    require_aligned(b, Wanted.aligned_line);
    constexpr size_t k_steps[] = {4096, 256, 16, 1};
    const std::span bytes = searched(b);
    size_t at = 0;
    for (const size_t step : k_steps) {
        for (; bytes.size() - at >= step; at += step) {
            const uint32_t set = active_kernels().count(bytes.data() + at, step);
            const size_t matches = Wanted.value ? set : step * 8 - set;
            if (matches > n) {
                break;
            }
            n -= static_cast<uint32_t>(matches);
        }
    }
    if (at == bytes.size()) {
        return -1;
    }
    int32_t bit = find_next<Wanted>(b, static_cast<int32_t>(at * 8));
    for (; n > 0; --n) {
        bit = find_next<Wanted>(b, bit + 1);
    }
    return bit;
}

// The next run of bits that are looked for; one of the others ends it.
template <const target &Wanted, const target &Other>
int32_t next_run(const bitset *b, bitset_range *range)
{
    const uint32_t numbits = bitset_numbits(b);
    // Unsigned, so that a negative upper ends the enumeration as well (but in an empty set, where
    // numbits - 2 wraps).
    if (static_cast<uint32_t>(range->upper) >= numbits - 2) {
        return -1;
    }
    // The bit after upper is known to end the run before: the search starts behind it.
    const bool is_start = range->lower == 1 && range->upper == 0;
    const int32_t from = is_start ? 0 : successor(successor(range->upper));
    require_aligned(b, Wanted.aligned_line);
    require(from >= 0, "bNo >= 0", Wanted.number_line);
    const std::span bytes = searched(b);
    const bit_run run =
        (active_kernels().*Wanted.next_run)(bytes.data(), bytes.size(), static_cast<size_t>(from));
    range->lower = static_cast<int32_t>(run.first);
    if (range->lower < 0 || static_cast<uint32_t>(range->lower) > numbits - 1) {
        return -1;
    }
    // A run that begins with the greatest number has no next bit to ask for.
    require(range->lower != INT32_MAX, "bNo >= 0", Other.number_line);
    range->upper =
        run.end < 0 ? static_cast<int32_t>(numbits - 1) : static_cast<int32_t>(run.end) - 1;
    return 0;
}

} // namespace

int32_t bitset_find_next_bit(const bitset *b, int32_t bNo)
{
    return find_next<k_set>(b, bNo);
}

int32_t bitset_find_next_free_bit(const bitset *b, int32_t bNo)
{
    return find_next<k_clear>(b, bNo);
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
    const uint32_t word = load_ordered(bytes.subspan(byte)) & up_to_bNo;
    if (word != 0) {
        return (bNo | 31) - std::countr_zero(word);
    }
    return active_kernels().find_last_set(bytes.data(), byte);
}

int32_t bitset_first_bit(const bitset *b)
{
    return find_next<k_set>(b, 0);
}

int32_t bitset_next_bit(const bitset *b, int32_t bNo)
{
    return find_next<k_set>(b, successor(bNo));
}

int32_t bitset_nth_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 276);
    return find_nth<k_set>(b, static_cast<uint32_t>(n));
}

int32_t bitset_first_free_bit(const bitset *b)
{
    return find_next<k_clear>(b, 0);
}

int32_t bitset_next_free_bit(const bitset *b, int32_t bNo)
{
    return find_next<k_clear>(b, successor(bNo));
}

int32_t bitset_nth_free_bit(const bitset *b, int32_t n)
{
    require(n >= 0, "0", 369);
    return find_nth<k_clear>(b, static_cast<uint32_t>(n));
}

int32_t bitset_next_range(const bitset *b, bitset_range *range)
{
    return next_run<k_set, k_clear>(b, range);
}

int32_t bitset_next_free_range(const bitset *b, bitset_range *range)
{
    return next_run<k_clear, k_set>(b, range);
}

int32_t bitset_is_range_free(const bitset *b, const bitset_range *range)
{
    require(range->lower <= range->upper, "range->lower <= range->upper", 124);
    require(b != nullptr, "b", 127);
    require(range->lower >= 0 && static_cast<uint32_t>(range->upper) < bitset_numbits(b),
            "range->lower >= 0 && range->upper < bitset_numbits( b )", 130);
    // The search begins after lower, which callers know to be free.
    const int32_t set = find_next<k_set>(b, successor(range->lower));
    return set < 0 || set > range->upper ? 1 : 0;
}

// Bit sets against a model that goes bit by bit, for every size up to 520 bytes and every variant
// of the loops.
#include <functional>
#include <string>

#include "tests/infra/bitset_support.h"
#include "tests/support/random.h"

using ruk_test::set_of;
using ruk_test::with_each_variant;

namespace
{

constexpr uint32_t k_largest = 520;

// One element a bit, 0 or 1.
using model = std::vector<uint8_t>;

uint32_t below(uint32_t limit)
{
    static ruk_test::Random random;
    return random.below(limit);
}

// Bits in runs whose mean length varies, so that there are dense, sparse, empty and full sets.
model random_model(uint32_t size)
{
    const uint32_t change = 1u << below(12);
    model bits(size * 8);
    bool value = below(2) != 0;
    for (size_t i = 0; i < bits.size(); ++i) {
        bits[i] = value;
        value = value != (below(change) == 0);
    }
    return bits;
}

std::vector<uint8_t> bytes_of(const model &bits)
{
    std::vector<uint8_t> bytes(bits.size() / 8);
    for (size_t i = 0; i < bits.size(); ++i) {
        bytes[i / 8] = static_cast<uint8_t>(bytes[i / 8] | (bits[i] ? 0x80u >> i % 8 : 0));
    }
    return bytes;
}

int32_t find_model(const model &bits, int32_t from, bool value)
{
    const size_t searched = bits.size() / 32 * 32;
    for (size_t i = static_cast<size_t>(from); i < searched; ++i) {
        if (bits[i] == value) {
            return static_cast<int32_t>(i);
        }
    }
    return -1;
}

int32_t find_last_model(const model &bits, int32_t from)
{
    int32_t bit = from;
    while (bit >= 0 && !bits[static_cast<size_t>(bit)]) {
        --bit;
    }
    return bit;
}

std::string list_model(const model &bits)
{
    std::string text;
    const size_t searched = bits.size() / 32 * 32;
    for (size_t i = 0; i < searched; ++i) {
        if (!bits[i]) {
            continue;
        }
        size_t last = i;
        while (last + 1 < searched && bits[last + 1]) {
            ++last;
        }
        text += (text.empty() ? "" : ",") + std::to_string(i);
        if (last > i) {
            text += "-" + std::to_string(last);
        }
        i = last;
    }
    return text;
}

void expect_searches(bitset *b, const model &bits)
{
    EXPECT_EQ(bitset_first_bit(b), find_model(bits, 0, true));
    EXPECT_EQ(bitset_first_free_bit(b), find_model(bits, 0, false));
    for (int i = 0; i < 10; ++i) {
        const auto from = static_cast<int32_t>(below(static_cast<uint32_t>(bits.size()) + 40));
        SCOPED_TRACE(from);
        EXPECT_EQ(bitset_find_next_bit(b, from), find_model(bits, from, true));
        EXPECT_EQ(bitset_next_bit(b, from), find_model(bits, from + 1, true));
        EXPECT_EQ(bitset_find_next_free_bit(b, from), find_model(bits, from, false));
        EXPECT_EQ(bitset_next_free_bit(b, from), find_model(bits, from + 1, false));
        if (static_cast<size_t>(from) < bits.size()) {
            EXPECT_EQ(bitset_find_prev_bit(b, from), find_last_model(bits, from));
        }
    }
}

// The n-th bits must be the ones that a walk from bit to bit meets.
void expect_nth(bitset *b, const model &bits)
{
    for (const bool value : {true, false}) {
        const auto nth = value ? bitset_nth_bit : bitset_nth_free_bit;
        int32_t bit = find_model(bits, 0, value);
        int32_t n = 0;
        for (; bit >= 0; ++n) {
            if (n < 4 || below(64) == 0) {
                EXPECT_EQ(nth(b, n), bit) << n;
            }
            bit = find_model(bits, bit + 1, value);
        }
        EXPECT_EQ(nth(b, n), -1);
    }
}

void expect_runs(bitset *b, const model &bits)
{
    const auto numbits = static_cast<int32_t>(bits.size());
    for (const bool value : {true, false}) {
        bitset_range range = {1, 0};
        int32_t from = 0;
        while ((value ? bitset_next_range : bitset_next_free_range)(b, &range) == 0) {
            const int32_t lower = find_model(bits, from, value);
            const int32_t other = find_model(bits, lower + 1, !value);
            ASSERT_EQ(range.lower, lower);
            ASSERT_EQ(range.upper, other < 0 ? numbits - 1 : other - 1);
            from = range.upper + 2;
        }
        EXPECT_EQ(find_model(bits, from, value), -1);
    }
}

// Applies change to the bytes and rule to each bit; both must agree.
template <class Change, class Rule>
void expect_algebra(const model &p, const model &q, const model &m, size_t misalign, Change change,
                    Rule rule)
{
    set_of b(bytes_of(p), misalign);
    set_of b1(bytes_of(q), 3 - misalign);
    set_of mask(bytes_of(m), (misalign + 2) % 4);
    change(b.get(), b1.get(), mask.get());
    model expected(p.size());
    for (size_t i = 0; i < p.size(); ++i) {
        expected[i] = rule(p[i] != 0, q[i] != 0, m[i] != 0) ? 1 : 0;
    }
    EXPECT_EQ(b.bytes(), bytes_of(expected));
    EXPECT_EQ(b1.bytes(), bytes_of(q));
    EXPECT_EQ(mask.bytes(), bytes_of(m));
}

void expect_comparisons(const model &p, const model &q, const model &m, size_t misalign)
{
    set_of b(bytes_of(p), misalign);
    set_of b1(bytes_of(q), 3 - misalign);
    set_of mask(bytes_of(m), (misalign + 2) % 4);
    bool equal = true;
    bool mask_equal = true;
    bool subset = true;
    uint32_t count = 0;
    for (size_t i = 0; i < p.size(); ++i) {
        equal = equal && p[i] == q[i];
        mask_equal = mask_equal && (!m[i] || p[i] == q[i]);
        subset = subset && (!p[i] || q[i]);
        count += p[i] ? 1u : 0u;
    }
    EXPECT_EQ(bitset_equal(b, b1), equal ? 1 : 0);
    EXPECT_EQ(bitset_maskequal(b, b1, mask), mask_equal ? 1 : 0);
    EXPECT_EQ(bitset_subset(b, b1), subset ? 1 : 0);
    EXPECT_EQ(bitset_bitcount(b), count);
}

void expect_range_value(const model &bits, size_t misalign)
{
    set_of b(bytes_of(bits), misalign);
    const uint32_t numbits = static_cast<uint32_t>(bits.size());
    const uint32_t first = below(numbits + 1);
    const uint32_t length = below(numbits - first + 1);
    const bool value = below(2) != 0;
    bitset_set_range_value(b, static_cast<int32_t>(first), static_cast<int32_t>(length),
                           value ? 1 : 0);
    model expected = bits;
    for (uint32_t i = first; i < first + length; ++i) {
        expected[i] = value;
    }
    EXPECT_EQ(b.bytes(), bytes_of(expected)) << first << "+" << length;
}

void expect_bit_array(const model &bits, size_t misalign)
{
    set_of b(bytes_of(bits), misalign);
    const uint32_t length = below(k_largest);
    std::vector<uint8_t> expected(length);
    model kept = bits;
    for (size_t i = 0; i < bits.size(); ++i) {
        if (i / 8 < length) {
            expected[i / 8] = static_cast<uint8_t>(expected[i / 8] | (bits[i] ? 1u << i % 8 : 0u));
        } else {
            kept[i] = false;
        }
    }
    std::vector<uint8_t> array(length, 0xcc);
    bitset_to_bitarray(b, array.data(), static_cast<int32_t>(length));
    EXPECT_EQ(array, expected);
    bitset_fill(b);
    bitset_from_bitarray(b, array.data(), static_cast<int32_t>(length));
    EXPECT_EQ(b.bytes(), bytes_of(kept));
}

} // namespace

TEST(bitset_random, searches_and_runs_agree_with_the_model)
{
    with_each_variant([] {
        for (uint32_t size = 0; size <= k_largest; ++size) {
            SCOPED_TRACE(size);
            const model bits = random_model(size);
            set_of b(bytes_of(bits), 0);
            expect_searches(b, bits);
            expect_nth(b, bits);
            expect_runs(b, bits);
            const std::string expected = list_model(bits);
            std::vector<char> text(expected.size() + 1);
            EXPECT_EQ(bitset_sprintf(text.data(), b), static_cast<int32_t>(expected.size()));
            EXPECT_EQ(text.data(), expected);
        }
    });
}

TEST(bitset_random, algebra_and_comparison_agree_with_the_model)
{
    with_each_variant([] {
        for (uint32_t size = 0; size <= k_largest; ++size) {
            SCOPED_TRACE(size);
            const size_t misalign = below(4);
            const model p = random_model(size);
            const model q = random_model(size);
            const model m = random_model(size);
            expect_algebra(
                p, q, m, misalign, [](bitset *b, bitset *b1, bitset *) { bitset_union(b, b1); },
                [](bool v, bool w, bool) { return v || w; });
            expect_algebra(
                p, q, m, misalign,
                [](bitset *b, bitset *b1, bitset *) { bitset_intersection(b, b1); },
                [](bool v, bool w, bool) { return v && w; });
            expect_algebra(
                p, q, m, misalign, [](bitset *b, bitset *b1, bitset *) { bitset_subtract(b, b1); },
                [](bool v, bool w, bool) { return v && !w; });
            expect_algebra(
                p, q, m, misalign,
                [](bitset *b, bitset *b1, bitset *mask) { bitset_maskcopy(b, b1, mask); },
                [](bool v, bool w, bool masked) { return masked ? w : v; });
            expect_comparisons(p, q, m, misalign);
            expect_comparisons(p, p, m, misalign);
            // Differing in one bit only.
            model near = p;
            if (size > 0) {
                const uint32_t bit = below(size * 8);
                near[bit] = !near[bit];
            }
            expect_comparisons(p, near, m, misalign);
            expect_comparisons(near, p, m, misalign);
        }
    });
}

TEST(bitset_random, ranges_and_bit_arrays_agree_with_the_model)
{
    with_each_variant([] {
        for (uint32_t size = 0; size <= k_largest; ++size) {
            SCOPED_TRACE(size);
            const model bits = random_model(size);
            expect_range_value(bits, below(4));
            expect_bit_array(bits, below(4));
        }
    });
}

TEST(bitset_kernels, the_first_use_of_any_loop_picks_the_best_that_runs_here)
{
    const ktlibbmp::kernels *best = nullptr;
    for (const ktlibbmp::kernels *variant : ktlibbmp::all_kernels()) {
        best = best == nullptr && variant->runs_here() ? variant : best;
    }
    set_of b(8, {3, 4, 5, 40});
    set_of b1(8, {3, 5, 6, 40});
    set_of mask(8, {3, 5, 40});
    set_of none(4);
    bitset_range range = {1, 0};
    bitset_range free = {1, 0};
    uint8_t array[8];
    // One row for each loop: what its first use has to give.
    const struct {
        const char *name;
        std::function<int64_t()> use;
        int64_t expected;
    } rows[] = {
        {"count", [&] { return bitset_bitcount(b); }, 4},
        {"find set", [&] { return bitset_next_bit(b, 5); }, 40},
        {"find clear", [&] { return bitset_next_free_bit(b, 2); }, 6},
        {"run", [&] { return bitset_next_range(b, &range), range.upper; }, 5},
        {"clear run", [&] { return bitset_next_free_range(b, &free), free.upper; }, 2},
        {"find last set", [&] { return bitset_find_prev_bit(b, 39); }, 5},
        {"equal", [&] { return bitset_equal(b, b1); }, 0},
        {"mask equal", [&] { return bitset_maskequal(b, b1, mask); }, 1},
        {"subset", [&] { return bitset_subset(mask, b); }, 1},
        {"empty", [&] { return bitset_subset(b, none); }, 0},
        {"reverse", [&] { return bitset_to_bitarray(b, array, 8), array[0]; }, 0x38},
        {"mask copy", [&] { return bitset_maskcopy(b, b1, mask), b.data()[0]; }, 0x1c},
        {"union", [&] { return bitset_union(b, b1), b.data()[0]; }, 0x1e},
        {"subtract", [&] { return bitset_subtract(b, mask), b.data()[0]; }, 0x0a},
        {"intersection", [&] { return bitset_intersection(b, b1), b.data()[0]; }, 0x02},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ktlibbmp::force_kernels(nullptr);
        EXPECT_NE(&ktlibbmp::active_kernels(), best);
        EXPECT_TRUE(ktlibbmp::active_kernels().runs_here());
        EXPECT_EQ(row.use(), row.expected);
        EXPECT_EQ(&ktlibbmp::active_kernels(), best);
    }
}

TEST(bitset_kernels, the_last_variant_runs_everywhere)
{
    EXPECT_STREQ(ktlibbmp::all_kernels().back()->name, "word");
    EXPECT_TRUE(ktlibbmp::all_kernels().back()->runs_here());
}

#if defined(__x86_64__)

// A variant runs where the processor has its instructions, unless the user has turned them off for
// the C library: GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2.
TEST(bitset_kernels, each_runs_where_its_instructions_are_and_are_not_turned_off)
{
    const char *const tunables = getenv("GLIBC_TUNABLES");
    const std::string_view off = tunables != nullptr ? tunables : "";
    const bool popcnt = __builtin_cpu_supports("popcnt") != 0 && !off.ends_with("-POPCNT");
    const bool avx2 = popcnt && __builtin_cpu_supports("avx2") != 0 &&
                      __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
                      !off.ends_with("-AVX2");
    const bool avx512 = avx2 && __builtin_cpu_supports("avx512bw") != 0 &&
                        __builtin_cpu_supports("avx512vpopcntdq") != 0 &&
                        !off.ends_with("-AVX512F");
    const std::pair<const char *, bool> expected[] = {
        {"avx512", avx512}, {"avx2", avx2}, {"popcnt", popcnt}, {"word", true}};
    const auto variants = ktlibbmp::all_kernels();
    ASSERT_EQ(variants.size(), std::size(expected));
    for (size_t i = 0; i < variants.size(); ++i) {
        EXPECT_STREQ(variants[i]->name, expected[i].first);
        EXPECT_EQ(variants[i]->runs_here(), expected[i].second) << variants[i]->name;
    }
}

#endif

// The loops for x86-64 processors with AVX-512: 64 bytes at a time.
#if defined(__x86_64__)

#if !defined(__clang__)
// The compiler's own header has registers whose content does not matter start undefined.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <bit>
#include <cstring>
#include <immintrin.h>

#include "infra/utils/ktlibbmp_kernels.h"
#include "infra/utils/ktlibbmp_processor.h"

#if defined(__clang__)
#pragma clang attribute push(                                                                      \
    __attribute__((                                                                                \
        target("avx512f,avx512bw,avx512vbmi2,avx512vpopcntdq,avx2,bmi,bmi2,lzcnt,popcnt"))),       \
    apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512vbmi2,avx512vpopcntdq,avx2,bmi,bmi2,lzcnt,popcnt")
#endif

#include "infra/utils/ktlibbmp_avx512_text.h"
#include "infra/utils/ktlibbmp_loops.h"

namespace ktlibbmp
{

namespace
{

struct avx512_ops {
    using block = __m512i;
    using narrower = word_ops;
    using counts = __m512i; // eight sums

    static block load(const uint8_t *p)
    {
        block v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(uint8_t *p, block v) { memcpy(p, &v, sizeof v); }
    static block spread(uint8_t byte) { return _mm512_set1_epi8(static_cast<char>(byte)); }
    static block both(block v, block w) { return _mm512_and_si512(v, w); }
    static block either(block v, block w) { return _mm512_or_si512(v, w); }
    static block differ(block v, block w) { return _mm512_xor_si512(v, w); }
    static block without(block v, block w) { return _mm512_andnot_si512(w, v); }
    static bool is_zero(block v) { return _mm512_test_epi64_mask(v, v) == 0; }

    static __mmask64 differing(block v, block w) { return _mm512_cmpneq_epi8_mask(v, w); }
    static size_t first_byte(__mmask64 found)
    {
        return static_cast<size_t>(__builtin_ctzll(found));
    }
    static size_t last_byte(__mmask64 found)
    {
        return 63 - static_cast<size_t>(__builtin_clzll(found));
    }

    static counts add_counts(counts so_far, block v) { return add(so_far, _mm512_popcnt_epi64(v)); }
    static counts no_counts() { return _mm512_setzero_si512(); }
    static counts add(counts a, counts b) { return _mm512_add_epi64(a, b); }
    static uint32_t total(counts sum)
    {
        return static_cast<uint32_t>(_mm512_reduce_add_epi64(sum));
    }

    // Looks up each nibble's reversal; the lower one becomes the upper one.
    static block reverse(block v)
    {
        const block reversed = _mm512_broadcast_i32x4(
            _mm_setr_epi8(0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15));
        const block upper = _mm512_shuffle_epi8(reversed, lower_nibbles(v));
        const block lower = _mm512_shuffle_epi8(reversed, upper_nibbles(v));
        return either(_mm512_slli_epi16(upper, 4), lower);
    }

private:
    static block lower_nibbles(block v) { return both(v, spread(0x0f)); }
    static block upper_nibbles(block v) { return lower_nibbles(_mm512_srli_epi16(v, 4)); }
};

// Runs, found for eight words at once.
struct avx512_runs {
    // All words first, then the list: where its loop ends no processor foresees, so it ends once.
    static size_t find_edges(const uint8_t *p, size_t words, uint32_t number, uint32_t *edges)
    {
        constexpr size_t k_most = 64;
        uint64_t found[k_most];
        uint64_t with_edges = 0;
        for (size_t i = 0; i < words; i += k_words) {
            const size_t left = words - i;
            const auto lanes = static_cast<__mmask8>(left < k_words ? (1u << left) - 1 : 0xff);
            const uint8_t *const at = p + i * sizeof(uint64_t);
            const __m512i bits = edges_of(_mm512_maskz_loadu_epi64(lanes, at),
                                          _mm512_maskz_loadu_epi64(lanes, at - sizeof(uint64_t)));
            memcpy(found + i, &bits, sizeof bits);
            with_edges |= uint64_t{_mm512_test_epi64_mask(bits, bits)} << i;
        }
        size_t count = 0;
        for (; with_edges != 0; with_edges &= with_edges - 1) {
            const auto i = static_cast<uint32_t>(__builtin_ctzll(with_edges));
            count += list_bits(found[i], number + i * 64, edges + count);
        }
        return count;
    }

    static constexpr auto list_items = avx512_text::list_items;

private:
    static constexpr size_t k_words = sizeof(__m512i) / sizeof(uint64_t);

    // The bits of each word that differ from the one before, the first bit lowest; the words of
    // before stand before those of v.
    static __m512i edges_of(__m512i v, __m512i before)
    {
        const __m512i bits = avx512_ops::reverse(v);
        // The last one is the lowest of a byte.
        const __m512i last_before = _mm512_srli_epi64(_mm512_slli_epi64(before, 7), 63);
        return _mm512_xor_si512(bits, _mm512_or_si512(_mm512_slli_epi64(bits, 1), last_before));
    }

    // Moves the positions of the bits together, then makes numbers of 16 at once.  The branches are
    // foreseen where sets are alike all over.
    static size_t list_bits(uint64_t bits, uint32_t number, uint32_t *list)
    {
        const __m512i positions = _mm512_setr_epi64(
            0x0706050403020100, 0x0f0e0d0c0b0a0908, 0x1716151413121110, 0x1f1e1d1c1b1a1918,
            0x2726252423222120, 0x2f2e2d2c2b2a2928, 0x3736353433323130, 0x3f3e3d3c3b3a3938);
        const __m512i found = _mm512_maskz_compress_epi8(bits, positions);
        const auto count = static_cast<size_t>(__builtin_popcountll(bits));
        store_numbers(list, _mm512_castsi512_si128(found), number);
        if (count > 16) {
            store_numbers(list + 16, _mm512_extracti32x4_epi32(found, 1), number);
        }
        if (count > 32) {
            store_numbers(list + 32, _mm512_extracti32x4_epi32(found, 2), number);
            store_numbers(list + 48, _mm512_extracti32x4_epi32(found, 3), number);
        }
        return count;
    }

    static void store_numbers(uint32_t *list, __m128i above, uint32_t number)
    {
        const __m512i base = _mm512_set1_epi32(static_cast<int32_t>(number));
        const __m512i numbers = _mm512_add_epi32(_mm512_cvtepu8_epi32(above), base);
        memcpy(list, &numbers, sizeof numbers);
    }
};

} // namespace

} // namespace ktlibbmp

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace ktlibbmp
{

constinit const kernels k_avx512_kernels =
    kernels_of<avx512_ops, avx512_runs>("avx512", has_avx512);

} // namespace ktlibbmp

#endif

// The loops for x86-64 processors with AVX2: 32 bytes at a time.
#if defined(__x86_64__)

#include <bit>
#include <cstring>
#include <immintrin.h>

#include "infra/utils/ktlibbmp_kernels.h"
#include "infra/utils/ktlibbmp_processor.h"

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2,bmi,bmi2,lzcnt,popcnt"))),                \
                             apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")
#endif

#include "infra/utils/ktlibbmp_loops.h"

namespace ktlibbmp
{

namespace
{

struct avx2_ops {
    using block = __m256i;
    using narrower = word_ops;
    using counts = __m256i; // four sums

    static block load(const uint8_t *p)
    {
        block v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(uint8_t *p, block v) { memcpy(p, &v, sizeof v); }
    static block spread(uint8_t byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
    static block both(block v, block w) { return _mm256_and_si256(v, w); }
    static block either(block v, block w) { return _mm256_or_si256(v, w); }
    static block differ(block v, block w) { return _mm256_xor_si256(v, w); }
    static block without(block v, block w) { return _mm256_andnot_si256(w, v); }
    static bool is_zero(block v) { return _mm256_testz_si256(v, v) != 0; }

    static uint32_t differing(block v, block w)
    {
        return ~static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(v, w)));
    }
    static size_t first_byte(uint32_t found) { return static_cast<size_t>(__builtin_ctz(found)); }
    static size_t last_byte(uint32_t found)
    {
        return 31 - static_cast<size_t>(__builtin_clz(found));
    }

    static uint64_t words_with_edges(block v, block before)
    {
        // All bits of a word like the last one of the word before, which is the lowest of a byte.
        const block like_last =
            _mm256_cmpgt_epi64(_mm256_setzero_si256(), _mm256_slli_epi64(before, 7));
        const __m256d same = _mm256_castsi256_pd(_mm256_cmpeq_epi64(v, like_last));
        return static_cast<uint64_t>(_mm256_movemask_pd(same)) ^ 0xf;
    }

    // Looks up the count of each nibble, then adds the bytes of each eighth.
    static counts add_counts(counts so_far, block v)
    {
        const block of_nibble =
            both_halves(_mm_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4));
        const block of_byte = _mm256_add_epi8(_mm256_shuffle_epi8(of_nibble, lower_nibbles(v)),
                                              _mm256_shuffle_epi8(of_nibble, upper_nibbles(v)));
        return add(so_far, _mm256_sad_epu8(of_byte, _mm256_setzero_si256()));
    }
    static counts no_counts() { return _mm256_setzero_si256(); }
    static counts add(counts a, counts b) { return _mm256_add_epi64(a, b); }
    static uint32_t total(counts sum)
    {
        uint64_t sums[4];
        memcpy(sums, &sum, sizeof sums);
        return static_cast<uint32_t>(sums[0] + sums[1] + sums[2] + sums[3]);
    }

    // Looks up each nibble's reversal; the lower one becomes the upper one.
    static block reverse(block v)
    {
        const block reversed =
            both_halves(_mm_setr_epi8(0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15));
        const block upper = _mm256_shuffle_epi8(reversed, lower_nibbles(v));
        const block lower = _mm256_shuffle_epi8(reversed, upper_nibbles(v));
        return either(_mm256_slli_epi16(upper, 4), lower);
    }

private:
    static block both_halves(__m128i table) { return _mm256_broadcastsi128_si256(table); }
    static block lower_nibbles(block v) { return both(v, spread(0x0f)); }
    static block upper_nibbles(block v) { return lower_nibbles(_mm256_srli_epi16(v, 4)); }
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

constinit const kernels k_avx2_kernels = kernels_of<avx2_ops>("avx2", has_avx2);

} // namespace ktlibbmp

#endif

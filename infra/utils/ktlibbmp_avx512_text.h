// Runs as text for x86-64 processors with AVX-512: four items at a time, without a branch on how
// long they are.  Included as ktlibbmp_loops.h is: between the pragmas of the variant.
//
// Each number and the separator before it take one lane of 8 bytes, which holds leading zeros as
// well.  What is not wanted, those zeros and the second numbers of single bits, is squeezed out of
// all lanes at once.
#pragma once

#include <immintrin.h>

#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

namespace
{

class avx512_text
{
    // The last bit of a run is the one before its second edge.
    static_assert(kernels::k_listed_edge - 1 == 9'999'999,
                  "seven digits and a separator fill a lane");

public:
    static listed list_items(const uint32_t *edges, size_t count, char *to, size_t room)
    {
        listed done = {0, 0};
        size_t most = k_lanes;
        while (done.edges < count) {
            const size_t left = count - done.edges;
            const size_t taken = left < most ? left : most;
            const auto lanes = static_cast<__mmask8>((1u << taken) - 1);
            const __m512i numbers = ends_of_runs(edges + done.edges, lanes);
            const __m512i digits = digits_of(numbers);
            const __mmask64 wanted = wanted_bytes(digits, wanted_numbers(numbers, lanes));
            const auto length = static_cast<size_t>(__builtin_popcountll(wanted));
            if (length >= room - done.chars) {
                if (taken == 2) {
                    break;
                }
                // Of four items that do not fit, those that do.
                most = 2;
                continue;
            }
            const __m512i text = _mm512_maskz_compress_epi8(wanted, characters(digits));
            _mm512_mask_storeu_epi8(to + done.chars, ~uint64_t{0} >> (64 - length), text);
            done = {done.edges + taken, done.chars + length};
        }
        return done;
    }

private:
    static constexpr size_t k_lanes = 8;

    // The first and the last bit of each run.
    static __m512i ends_of_runs(const uint32_t *edges, __mmask8 lanes)
    {
        const __m512i narrow = _mm512_maskz_loadu_epi32(lanes, edges);
        const __m512i wide = _mm512_cvtepu32_epi64(_mm512_castsi512_si256(narrow));
        return _mm512_sub_epi64(wide, _mm512_setr_epi64(0, 1, 0, 1, 0, 1, 0, 1));
    }

    // All but the last bits of runs of one bit.
    static __mmask8 wanted_numbers(__m512i numbers, __mmask8 lanes)
    {
        const __m512i other_ends = _mm512_shuffle_epi32(numbers, _MM_PERM_BADC);
        const __mmask8 of_ranges = _mm512_cmpneq_epi64_mask(numbers, other_ends);
        return static_cast<__mmask8>((of_ranges | 0x55) & lanes);
    }

    // The values of eight digits, the first one in the lowest byte.  Each step halves what holds
    // several digits: the quotient moves into the lower half and the remainder into the upper one.
    // Quotients are products with 2^40 / 10000, 2^19 / 100 and 2^16 / 10, rounded up.
    static __m512i digits_of(__m512i eights)
    {
        const __m512i upper_fours =
            _mm512_srli_epi64(_mm512_mul_epu32(eights, _mm512_set1_epi64(109951163)), 40);
        const __m512i lower_fours =
            _mm512_sub_epi64(eights, _mm512_mul_epu32(upper_fours, _mm512_set1_epi64(10000)));
        const __m512i fours = _mm512_or_si512(upper_fours, _mm512_slli_epi64(lower_fours, 32));

        // These two products could be of 16 bits, but compilers make shifts and additions of those.
        const __m512i upper_twos =
            _mm512_srli_epi16(_mm512_mulhi_epu16(fours, _mm512_set1_epi16(5243)), 3);
        const __m512i lower_twos =
            _mm512_sub_epi16(fours, _mm512_madd_epi16(upper_twos, _mm512_set1_epi32(100)));
        const __m512i twos = _mm512_or_si512(upper_twos, _mm512_slli_epi32(lower_twos, 16));

        const __m512i upper = _mm512_mulhi_epu16(twos, _mm512_set1_epi16(6554));
        const __m512i lower =
            _mm512_sub_epi16(twos, _mm512_maddubs_epi16(upper, _mm512_set1_epi16(10)));
        return _mm512_or_si512(upper, _mm512_slli_epi16(lower, 8));
    }

    // With a separator instead of the first of eight digits.
    static __m512i characters(__m512i digits)
    {
        constexpr int64_t k_after_comma = 0x303030303030302c;
        constexpr int64_t k_after_dash = 0x303030303030302d;
        return _mm512_or_si512(
            digits, _mm512_set4_epi64(k_after_dash, k_after_comma, k_after_dash, k_after_comma));
    }

    // The separator, and from the first digit that is not 0, or the last one, on.
    static __mmask64 wanted_bytes(__m512i digits, __mmask8 wanted_numbers)
    {
        constexpr int k_any_of_three = 0xfe;
        const __m512i separator = _mm512_set1_epi64(0x01);
        const __m512i ended = _mm512_or_si512(digits, _mm512_set1_epi64(0x01'00000000000000));
        // Has all bits above the lowest one that is set.
        const __m512i negated = _mm512_sub_epi64(_mm512_setzero_si512(), ended);
        const __m512i wanted = _mm512_maskz_ternarylogic_epi64(wanted_numbers, ended, negated,
                                                               separator, k_any_of_three);
        return _mm512_test_epi8_mask(wanted, wanted);
    }
};

} // namespace

} // namespace ktlibbmp

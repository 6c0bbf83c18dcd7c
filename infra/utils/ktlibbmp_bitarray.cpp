// Bit sets from and to plain bit arrays, which count the bits of a byte from the other end.
#include <algorithm>

#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_kernels.h"

using namespace ktlibbmp;

// For callers; the library itself reverses whole blocks (ktlibbmp_loops.h).
const uint32_t swaparray[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};

void bitset_to_bitarray(const bitset *b, uint8_t *array, int32_t length)
{
    if (length <= 0) {
        return;
    }
    const std::span bits = bits_of(b);
    const size_t wanted = static_cast<size_t>(length);
    const size_t shared = std::min(bits.size(), wanted);
    active_kernels().reverse(array, bits.data(), shared);
    memset(array + shared, 0x00, wanted - shared);
}

void bitset_from_bitarray(bitset *b, const uint8_t *array, int32_t length)
{
    const std::span bits = bits_of(b);
    const size_t shared = length <= 0 ? 0 : std::min(bits.size(), static_cast<size_t>(length));
    active_kernels().reverse(bits.data(), array, shared);
    memset(bits.data() + shared, 0x00, bits.size() - shared);
}

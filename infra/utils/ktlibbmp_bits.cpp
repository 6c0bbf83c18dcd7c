// Bit sets: whole sets, single bits and ranges of bits.
#include <bit>

#include "infra/utils/ktlibbmp.h"

using namespace ktlibbmp;

namespace
{

constexpr const char *k_bit_in_set = "bNo >= 0 && bNo < bitset_numbits( b )";

bool is_in_set(const bitset *b, int32_t bNo)
{
    return bNo >= 0 && static_cast<uint32_t>(bNo) < bitset_numbits(b);
}

size_t byte_of(int32_t bNo)
{
    return static_cast<size_t>(bNo) / 8;
}

uint8_t mask_of(int32_t bNo)
{
    return static_cast<uint8_t>(0x80 >> (bNo % 8));
}

// The bits of a byte from the one with this number on: all for 0, none for 8.
uint8_t mask_from(size_t bit)
{
    return static_cast<uint8_t>(0xff >> bit);
}

void put(uint8_t &byte, uint8_t mask, bool value)
{
    byte = static_cast<uint8_t>(value ? byte | mask : byte & ~mask);
}

} // namespace

void bitset_clear(bitset *b)
{
    require(b != nullptr, "b", 76);
    const std::span bits = bits_of(b);
    memset(bits.data(), 0x00, bits.size());
}

void bitset_fill(bitset *b)
{
    require(b != nullptr, "b", 85);
    const std::span bits = bits_of(b);
    memset(bits.data(), 0xff, bits.size());
}

void bitset_copy(bitset *dst, const bitset *src)
{
    require(size_of(dst) == size_of(src), "dst->size == src->size", 67);
    const std::span bits = bits_of(src);
    memmove(bits_of(dst).data(), bits.data(), bits.size());
}

uint32_t bitset_size(const bitset *b)
{
    require(b != nullptr, "b", 1023);
    return size_of(b) + 4;
}

void bitset_set_bit(bitset *b, int32_t bNo)
{
    require(is_in_set(b, bNo), k_bit_in_set, 94);
    put(bits_of(b)[byte_of(bNo)], mask_of(bNo), true);
}

void bitset_clear_bit(bitset *b, int32_t bNo)
{
    require(is_in_set(b, bNo), k_bit_in_set, 102);
    put(bits_of(b)[byte_of(bNo)], mask_of(bNo), false);
}

int32_t bitset_is_bit_set(const bitset *b, int32_t bNo)
{
    require(b != nullptr, "b", 111);
    require(is_in_set(b, bNo), k_bit_in_set, 114);
    // Rotated by its place, the bit is the top one of its byte.
    return std::rotl(bits_of(b)[byte_of(bNo)], bNo % 8) >> 7;
}

void bitset_set_range_value(bitset *b, int32_t bNo, int32_t len, int32_t value)
{
    require(b != nullptr, "b", 395);
    const int64_t end = int64_t{bNo} + len;
    require(bNo >= 0 && end <= int64_t{bitset_numbits(b)},
            "bNo >= 0 && bNo+len <= bitset_numbits( b )", 398);
    if (len <= 0) {
        return;
    }
    uint8_t *const bits = bits_of(b).data();
    const size_t first = byte_of(bNo);
    const size_t last = static_cast<size_t>(end - 1) / 8;
    const uint8_t in_first = mask_from(static_cast<size_t>(bNo % 8));
    const uint8_t in_last =
        static_cast<uint8_t>(~mask_from(static_cast<size_t>((end - 1) % 8 + 1)));
    if (first == last) {
        put(bits[first], in_first & in_last, value != 0);
        return;
    }
    put(bits[first], in_first, value != 0);
    memset(bits + first + 1, value != 0 ? 0xff : 0x00, last - first - 1);
    put(bits[last], in_last, value != 0);
}

void bitset_set_range(bitset *b, int32_t bNo, int32_t len)
{
    bitset_set_range_value(b, bNo, len, 1);
}

void bitset_clear_range(bitset *b, int32_t bNo, int32_t len)
{
    bitset_set_range_value(b, bNo, len, 0);
}

// What the files of the bit set library share: the assertion and the way to a record's bytes.
#pragma once

#include <cstring>
#include <span>

#include "ruk/assert.h"
#include "ruk/bitset.h"

namespace ktlibbmp
{

// The texts and line numbers that callers of the library know are literals at the checks.
inline void require(bool holds, const char *expression, int32_t line)
{
    if (!holds) [[unlikely]] {
        kt_assert_bad(expression, "infra/utils/ktlibbmp", line);
    }
}

// Records may stand at any address, so their fields are never read through the record's type.
inline uint32_t size_of(const bitset *b)
{
    const auto *record = reinterpret_cast<const uint8_t *>(b);
    uint32_t size;
    memcpy(&size, record, sizeof size);
    return size;
}

inline std::span<uint8_t> bits_of(bitset *b)
{
    return {reinterpret_cast<uint8_t *>(b) + offsetof(bitset, bits), size_of(b)};
}

inline std::span<const uint8_t> bits_of(const bitset *b)
{
    return {reinterpret_cast<const uint8_t *>(b) + offsetof(bitset, bits), size_of(b)};
}

inline uint32_t bitset_numbits(const bitset *b)
{
    return size_of(b) * 8;
}

// What the searches look at: the whole 32-bit words, as far as their bits have numbers.
inline std::span<const uint8_t> searched(const bitset *b)
{
    constexpr uint32_t k_numbered = uint32_t{1} << 28;
    const uint32_t whole = size_of(b) & ~uint32_t{3};
    return bits_of(b).first(whole < k_numbered ? whole : k_numbered);
}

} // namespace ktlibbmp

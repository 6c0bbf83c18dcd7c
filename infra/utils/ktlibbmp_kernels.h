// The loops over bytes that the bit set library is built on, in one variant for each kind of
// processor.  The first use picks the best variant that the processor can run.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ktlibbmp
{

// One variant.  All take plain bytes at any address and touch no byte beyond n.  Bit positions
// count from the top bit of the first byte; -1 is none.
struct kernels {
    const char *name;
    bool (*runs_here)();
    uint64_t (*count)(const uint8_t *p, size_t n);
    // The first, respectively last, bit of n bytes that differs from those of fill (0x00 or 0xff).
    int64_t (*find_first)(const uint8_t *p, size_t n, uint8_t fill);
    int64_t (*find_last)(const uint8_t *p, size_t n, uint8_t fill);
    void (*unite)(uint8_t *p, const uint8_t *q, size_t n);
    void (*intersect)(uint8_t *p, const uint8_t *q, size_t n);
    void (*subtract)(uint8_t *p, const uint8_t *q, size_t n);
    void (*mask_copy)(uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n);
    bool (*mask_equal)(const uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n);
    bool (*is_subset)(const uint8_t *p, const uint8_t *q, size_t n);
    // Stores each byte of p, its bits reversed, at the same place of to.
    void (*reverse)(uint8_t *to, const uint8_t *p, size_t n);
};

extern const kernels k_word_kernels;
#if defined(__x86_64__)
extern const kernels k_popcnt_kernels;
extern const kernels k_avx2_kernels;
#endif

// All variants, the best one first; the last one runs everywhere.
std::span<const kernels *const> all_kernels();

// Takes this variant from now on; null picks the best one again.  For tests and measurements.
void force_kernels(const kernels *variant);

// Threads that get here at the same time pick the same variant, so nothing has to be ordered.
extern std::atomic<const kernels *> g_kernels;
const kernels &pick_kernels();

inline const kernels &active_kernels()
{
    const kernels *picked = g_kernels.load(std::memory_order_relaxed);
    return picked != nullptr ? *picked : pick_kernels();
}

} // namespace ktlibbmp

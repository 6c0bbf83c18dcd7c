// The loops over bytes that the bit set library is built on, in one variant for each kind of
// processor.  The first use picks the best variant that the processor can run.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ktlibbmp
{

// The first bit of a run and the bit that ends it; each is -1 when there is none.  Wide, since two
// numbers of this width come back in a register each.
struct bit_run {
    int64_t first;
    int64_t end;
};

// How many edges of runs were listed, and in how many characters.
struct listed {
    size_t edges;
    size_t chars;
};

// One variant.  All take plain bytes at any address and touch no byte beyond n.  Bit positions
// count from the top bit of the first byte and must fit, so searches take at most 2^28 bytes; -1 is
// none.
struct kernels {
    const char *name;
    bool (*runs_here)();
    uint32_t (*count)(const uint8_t *p, size_t n);
    // The first set, respectively clear, bit of n bytes that is not before the one given.
    int32_t (*find_set)(const uint8_t *p, size_t n, size_t from);
    int32_t (*find_clear)(const uint8_t *p, size_t n, size_t from);
    // The run of set, respectively clear, bits that begins with the bit that the search finds.
    bit_run (*next_run)(const uint8_t *p, size_t n, size_t from);
    bit_run (*next_clear_run)(const uint8_t *p, size_t n, size_t from);
    // Stores the bits that differ from the one before, of at most 64 words of 8 bytes at p, whose
    // first bit has the number given; returns how many there are.  Reads the 8 bytes before p too
    // and may write k_edges_beyond values behind the last one.
    static constexpr size_t k_edges_beyond = 31;
    size_t (*find_edges)(const uint8_t *p, size_t words, uint32_t number, uint32_t *edges);
    // Writes the runs between pairs of ascending edges as text, ",first" or ",first-last", as long
    // as they fit in less than room characters.  No edge may be above k_listed_edge.  Null where
    // the variant has no way of its own.
    static constexpr uint32_t k_listed_edge = 10'000'000;
    listed (*list_items)(const uint32_t *edges, size_t count, char *to, size_t room);
    // The last set bit of n bytes.
    int32_t (*find_last_set)(const uint8_t *p, size_t n);
    void (*unite)(uint8_t *p, const uint8_t *q, size_t n);
    void (*intersect)(uint8_t *p, const uint8_t *q, size_t n);
    void (*subtract)(uint8_t *p, const uint8_t *q, size_t n);
    void (*mask_copy)(uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n);
    bool (*equal)(const uint8_t *p, const uint8_t *q, size_t n);
    bool (*mask_equal)(const uint8_t *p, const uint8_t *q, const uint8_t *mask, size_t n);
    bool (*is_empty)(const uint8_t *p, size_t n);
    bool (*is_subset)(const uint8_t *p, const uint8_t *q, size_t n);
    // Stores each byte of p, its bits reversed, at the same place of to.
    void (*reverse)(uint8_t *to, const uint8_t *p, size_t n);
};

extern const kernels k_word_kernels;
#if defined(__x86_64__)
extern const kernels k_popcnt_kernels;
extern const kernels k_avx2_kernels;
extern const kernels k_avx512_kernels;
#endif

// All variants, the best one first; the last one runs everywhere.
std::span<const kernels *const> all_kernels();

// Takes this variant from now on; null picks the best one again.  For tests and measurements.
void force_kernels(const kernels *variant);

// What is in use; at first a variant each of whose loops picks the best one and goes on with that.
// Threads that get there at the same time pick the same one, so nothing has to be ordered.
extern std::atomic<const kernels *> g_kernels;

inline const kernels &active_kernels()
{
    return *g_kernels.load(std::memory_order_relaxed);
}

} // namespace ktlibbmp

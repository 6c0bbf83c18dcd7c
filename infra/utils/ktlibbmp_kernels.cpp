// Picks the variant of the bit set library's loops that suits the processor.
#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

namespace
{

constexpr const kernels *k_variants[] = {
#if defined(__x86_64__)
    &k_avx512_kernels,
    &k_avx2_kernels,
    &k_popcnt_kernels,
#endif
    &k_word_kernels,
};

const kernels &pick_kernels()
{
    const kernels *picked = &k_word_kernels;
    for (const kernels *variant : k_variants) {
        if (variant->runs_here()) {
            picked = variant;
            break;
        }
    }
    g_kernels.store(picked, std::memory_order_relaxed);
    return *picked;
}

// Stands for a loop until the first use: picks the variant, then runs its loop.
template <auto Loop> struct first_use;
template <class Result, class... Arguments, Result (*kernels::*Loop)(Arguments...)>
struct first_use<Loop> {
    static Result run(Arguments... arguments) { return (pick_kernels().*Loop)(arguments...); }
};

constexpr kernels k_first_use = {
    .name = "first use",
    .runs_here = [] { return true; },
    .count = first_use<&kernels::count>::run,
    .find_set = first_use<&kernels::find_set>::run,
    .find_clear = first_use<&kernels::find_clear>::run,
    .next_run = first_use<&kernels::next_run>::run,
    .next_clear_run = first_use<&kernels::next_clear_run>::run,
    .find_edges = first_use<&kernels::find_edges>::run,
    .list_items = nullptr,
    .find_last_set = first_use<&kernels::find_last_set>::run,
    .unite = first_use<&kernels::unite>::run,
    .intersect = first_use<&kernels::intersect>::run,
    .subtract = first_use<&kernels::subtract>::run,
    .mask_copy = first_use<&kernels::mask_copy>::run,
    .equal = first_use<&kernels::equal>::run,
    .mask_equal = first_use<&kernels::mask_equal>::run,
    .is_empty = first_use<&kernels::is_empty>::run,
    .is_subset = first_use<&kernels::is_subset>::run,
    .reverse = first_use<&kernels::reverse>::run,
};

} // namespace

constinit std::atomic<const kernels *> g_kernels = &k_first_use;

std::span<const kernels *const> all_kernels()
{
    return k_variants;
}

void force_kernels(const kernels *variant)
{
    g_kernels.store(variant != nullptr ? variant : &k_first_use, std::memory_order_relaxed);
}

} // namespace ktlibbmp

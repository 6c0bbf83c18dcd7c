// Picks the variant of the bit set library's loops that suits the processor.
#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

namespace
{

constexpr const kernels *k_variants[] = {
#if defined(__x86_64__)
    &k_avx2_kernels,
    &k_popcnt_kernels,
#endif
    &k_word_kernels,
};

} // namespace

constinit std::atomic<const kernels *> g_kernels = nullptr;

std::span<const kernels *const> all_kernels()
{
    return k_variants;
}

void force_kernels(const kernels *variant)
{
    g_kernels.store(variant, std::memory_order_relaxed);
}

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

} // namespace ktlibbmp

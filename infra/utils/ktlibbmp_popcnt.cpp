// The loops for x86-64 processors with a population count: words, counted by the processor.
#if defined(__x86_64__)

#include <bit>
#include <cstring>

#include "infra/utils/ktlibbmp_kernels.h"
#include "infra/utils/ktlibbmp_processor.h"

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("popcnt"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("popcnt")
#endif

#include "infra/utils/ktlibbmp_loops.h"

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace ktlibbmp
{

constinit const kernels k_popcnt_kernels = kernels_of<word_ops>("popcnt", has_popcnt);

} // namespace ktlibbmp

#endif

// The loops for any processor: a 64-bit word at a time in plain C++.
#include "infra/utils/ktlibbmp_loops.h"

namespace ktlibbmp
{

constinit const kernels k_word_kernels = kernels_of<word_ops>("word", [] { return true; });

} // namespace ktlibbmp

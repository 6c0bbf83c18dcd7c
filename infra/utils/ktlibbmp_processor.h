// Whether the processor, and the operating system with it, can run a kind of instruction.
//
// The C library is asked, which has asked the processor already: to do so again traps in a virtual
// machine.  It also knows what the user has turned off (GLIBC_TUNABLES).  Where it cannot be
// asked, the loops for any processor have to do.
#pragma once

#if defined(__x86_64__) && __has_include(<sys/platform/x86.h>)
#define KTLIBBMP_ASKS 1
// Clang does not know C's name of the type in C++.
#define _Bool bool
#include <sys/platform/x86.h>
#undef _Bool
#endif

namespace ktlibbmp
{

#if defined(KTLIBBMP_ASKS)

inline bool has_popcnt()
{
    return CPU_FEATURE_ACTIVE(POPCNT);
}

inline bool has_avx2()
{
    return has_popcnt() && CPU_FEATURE_ACTIVE(AVX2) && CPU_FEATURE_ACTIVE(BMI1) &&
           CPU_FEATURE_ACTIVE(BMI2) && CPU_FEATURE_ACTIVE(LZCNT);
}

inline bool has_avx512()
{
    return has_avx2() && CPU_FEATURE_ACTIVE(AVX512F) && CPU_FEATURE_ACTIVE(AVX512BW) &&
           CPU_FEATURE_ACTIVE(AVX512_VBMI2) && CPU_FEATURE_ACTIVE(AVX512_VPOPCNTDQ);
}

#else

inline bool has_popcnt()
{
    return false;
}

inline bool has_avx2()
{
    return false;
}

inline bool has_avx512()
{
    return false;
}

#endif

} // namespace ktlibbmp

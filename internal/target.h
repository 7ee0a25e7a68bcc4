// Kernels that exist in a baseline and an AVX2 build.  TARGET_AVX2 marks the second one, and has_avx2() chooses at run
// time, without initialisation.  Where the compiler or processor cannot, MENSURA_AVX2 is 0 and the baseline is alone.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__) && !defined(MENSURA_BASELINE_ONLY)
#define MENSURA_AVX2 1
#define TARGET_AVX2 [[gnu::target("avx2")]]
#else
#define MENSURA_AVX2 0
#define TARGET_AVX2
#endif

namespace mensura {

inline bool has_avx2() {
#if MENSURA_AVX2
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

}  // namespace mensura

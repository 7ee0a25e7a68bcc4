// Kernels exist twice where the processor may have AVX2.  The build compiles a kernel's file once as it is, with
// MENSURA_TARGET `baseline`, and once with -mavx2 and MENSURA_TARGET `avx2`, the namespace of its functions;
// MENSURA_DISPATCH(f) is the one to call, chosen at run time without initialisation.  Elsewhere the baseline is alone.
//
// Where the two differ in their code, as in iir/bank.cpp, TARGET_AVX2 marks the one function.
//
// A kernel's file calls nothing inline from other headers that is not always inlined: the linker keeps one copy of such
// a function, and it may be the one that only AVX2 can run.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__) && !defined(MENSURA_BASELINE_ONLY)
#define MENSURA_AVX2 1
#define TARGET_AVX2 [[gnu::target("avx2")]]
#define MENSURA_DISPATCH(f) (mensura::has_avx2() ? avx2::f : baseline::f)
#else
#define MENSURA_AVX2 0
#define TARGET_AVX2
#define MENSURA_DISPATCH(f) baseline::f
#endif

#ifndef MENSURA_TARGET
#define MENSURA_TARGET baseline
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

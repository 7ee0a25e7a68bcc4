// Kernels: the functions that are compiled twice where the processor may have AVX2.
//
// The build compiles a *_kernel.cpp once as it is and once with -mavx2.  MENSURA_TARGET is the namespace of its
// functions: `baseline`, or `avx2`.  The kernel's header declares both with
//
//     MENSURA_KERNEL(Type, name);     // Type: the kernel's type, as in `using Type = void(const double *x, ...)`
//
// and callers write name(x, ...).  The processor is asked at each call, so nothing has to be initialised.  Where there
// is no AVX2 at all, the baseline is the only build.
//
// A kernel's file calls no inline function of another header unless that is always inlined: the linker keeps one copy
// of an inline function, which may be the copy that only a processor with AVX2 can run.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__) && !defined(MENSURA_BASELINE_ONLY)
#define MENSURA_AVX2 1
#else
#define MENSURA_AVX2 0
#endif

#ifndef MENSURA_TARGET
#define MENSURA_TARGET baseline
#endif

namespace mensura {

// The builds of one kernel, called like a function.
template <typename Type>
struct Kernel;

template <typename Result, typename... Arguments>
struct Kernel<Result(Arguments...)> {
    Result (*baseline)(Arguments...);
    Result (*avx2)(Arguments...);

    [[gnu::always_inline]] Result operator()(Arguments... arguments) const {
#if MENSURA_AVX2
        if (__builtin_cpu_supports("avx2")) return avx2(arguments...);
#endif
        return baseline(arguments...);
    }
};

}  // namespace mensura

#if MENSURA_AVX2
#define MENSURA_BUILDS_OF(name) \
    { baseline::name, avx2::name }
#else
#define MENSURA_BUILDS_OF(name) \
    { baseline::name, nullptr }
#endif

#define MENSURA_KERNEL(Type, name) \
    namespace baseline {           \
    Type name;                     \
    }                              \
    namespace avx2 {               \
    Type name;                     \
    }                              \
    inline constexpr mensura::Kernel<Type> name MENSURA_BUILDS_OF(name)

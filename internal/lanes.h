// Four doubles side by side, each rounded as if alone.  Lanes run over independent results, so a kernel written with
// them has the same bits on every target; the compiler splits them where the processor's registers are shorter.
#pragma once

#include <cstddef>
#include <cstring>

#ifdef __AVX__
#include <immintrin.h>
#endif

// What takes or returns lanes is always inlined, lambdas too: see target.h.
#define LANES_INLINE [[gnu::always_inline]] inline
#define LANES_LAMBDA __attribute__((always_inline))

namespace mensura {

using Lanes = double __attribute__((vector_size(32)));
inline constexpr std::size_t kLanes = 4;

LANES_INLINE Lanes load(const double *p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

LANES_INLINE void store(double *p, Lanes v) { std::memcpy(p, &v, sizeof v); }

// The same past the caches, for what outgrows them before it is read again; p is aligned to its 32 bytes.
LANES_INLINE void stream(double *p, Lanes v) {
#ifdef __AVX__
    _mm256_stream_pd(p, v);
#else
    store(p, v);
#endif
}

LANES_INLINE Lanes all(double x) { return Lanes{x, x, x, x}; }

// Four complex numbers: a cache line.
struct alignas(64) ComplexLanes {
    Lanes re, im;
};

LANES_INLINE ComplexLanes operator+(const ComplexLanes &a, const ComplexLanes &b) { return {a.re + b.re, a.im + b.im}; }
LANES_INLINE ComplexLanes operator-(const ComplexLanes &a, const ComplexLanes &b) { return {a.re - b.re, a.im - b.im}; }
LANES_INLINE ComplexLanes operator*(const ComplexLanes &a, const ComplexLanes &b) {
    return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}

}  // namespace mensura

// Vector code, written once for every processor: four doubles side by side (Lanes) or two (Pair), each rounded as if it
// were alone.  A kernel puts independent results side by side, so its bits are the same on every processor; where the
// processor's registers are shorter than Lanes, the compiler splits them, and g++ 12 keeps Lanes that live from one
// iteration to the next in memory: a recurrence takes Pair there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __AVX__
#include <immintrin.h>
#endif

// Every function and lambda that takes or returns lanes is inlined: target.h says why.
#define LANES_INLINE [[gnu::always_inline]] inline
#define LANES_LAMBDA __attribute__((always_inline))

namespace mensura {

// ---- Two doubles ----

using Pair = double __attribute__((vector_size(16)));

LANES_INLINE Pair load_pair(const double *p) {
    Pair v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

LANES_INLINE void store(double *p, Pair v) { std::memcpy(p, &v, sizeof v); }

// The first doubles of two pairs, and the second ones: together, the transposition of a 2 x 2 matrix.
LANES_INLINE Pair firsts(Pair a, Pair b) { return __builtin_shufflevector(a, b, 0, 2); }
LANES_INLINE Pair seconds(Pair a, Pair b) { return __builtin_shufflevector(a, b, 1, 3); }

LANES_INLINE Pair magnitude(Pair v) {
    using Bits = std::int64_t __attribute__((vector_size(16)));
    return reinterpret_cast<Pair>(reinterpret_cast<Bits>(v) & INT64_MAX);  // without the sign bit
}

// Double by double, a where it is larger than b; b also where either is NaN.
LANES_INLINE Pair larger(Pair a, Pair b) { return a > b ? a : b; }

// ---- Four doubles ----

using Lanes = double __attribute__((vector_size(32)));
using LaneBits = std::int64_t __attribute__((vector_size(32)));  // as comparisons give them: -1 where true, 0 elsewhere
inline constexpr std::size_t kLanes = 4;

LANES_INLINE Lanes load(const double *p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

LANES_INLINE void store(double *p, Lanes v) { std::memcpy(p, &v, sizeof v); }

// A store that bypasses the caches, for data that outgrow them before they are read again; p is aligned to 32 bytes.
LANES_INLINE void stream(double *p, Lanes v) {
#ifdef __AVX__
    _mm256_stream_pd(p, v);
#else
    store(p, v);
#endif
}

LANES_INLINE Lanes all(double x) { return Lanes{x, x, x, x}; }

LANES_INLINE Pair lower_half(Lanes v) { return __builtin_shufflevector(v, v, 0, 1); }
LANES_INLINE Pair upper_half(Lanes v) { return __builtin_shufflevector(v, v, 2, 3); }
LANES_INLINE Lanes joined(Pair lower, Pair upper) { return __builtin_shufflevector(lower, upper, 0, 1, 2, 3); }

// The transpose of the matrix whose rows are given.
LANES_INLINE void transpose(Lanes &a, Lanes &b, Lanes &c, Lanes &d) {
    const Lanes ab = __builtin_shufflevector(a, b, 0, 4, 2, 6), ba = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Lanes cd = __builtin_shufflevector(c, d, 0, 4, 2, 6), dc = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(ab, cd, 0, 1, 4, 5);
    b = __builtin_shufflevector(ba, dc, 0, 1, 4, 5);
    c = __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
    d = __builtin_shufflevector(ba, dc, 2, 3, 6, 7);
}
LANES_INLINE void transpose(Lanes (&rows)[kLanes]) { transpose(rows[0], rows[1], rows[2], rows[3]); }

LANES_INLINE Lanes magnitude(Lanes v) {
    return reinterpret_cast<Lanes>(reinterpret_cast<LaneBits>(v) & INT64_MAX);  // without the sign bit
}

// Lane by lane, as for pairs.
LANES_INLINE Lanes larger(Lanes a, Lanes b) {
#ifdef __AVX__
    return a > b ? a : b;
#else  // g++ 12 would choose double by double
    return joined(larger(lower_half(a), lower_half(b)), larger(upper_half(a), upper_half(b)));
#endif
}

LANES_INLINE double largest_of(Lanes v) {
    const double a = v[0] > v[1] ? v[0] : v[1], b = v[2] > v[3] ? v[2] : v[3];
    return a > b ? a : b;
}

// ---- Four complex numbers: a cache line ----

struct alignas(64) ComplexLanes {
    Lanes re, im;
};

LANES_INLINE ComplexLanes operator+(const ComplexLanes &a, const ComplexLanes &b) { return {a.re + b.re, a.im + b.im}; }
LANES_INLINE ComplexLanes operator-(const ComplexLanes &a, const ComplexLanes &b) { return {a.re - b.re, a.im - b.im}; }
LANES_INLINE ComplexLanes operator*(const ComplexLanes &a, const ComplexLanes &b) {
    return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}

}  // namespace mensura

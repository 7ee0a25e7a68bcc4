// Channels side by side in vectors: two samples of each channel are loaded together and transposed.

#include "average_kernel.h"

#include <type_traits>

#include "../internal/lanes.h"
#include "../internal/target.h"

#ifdef __AVX__
#include <immintrin.h>
#endif

namespace mensura::online::MENSURA_TARGET {
namespace {

// The sums of one channel, two or four, to which samples i and i + 1 are added, or sample i alone.

struct One {
    double sum = 0.0;

    LANES_INLINE void add(const MovingAverageOnline *s, std::size_t i) { sum += s->Buffer[i]; }
    LANES_INLINE void add_two(const MovingAverageOnline *s, std::size_t i) {
        add(s, i);
        add(s, i + 1);
    }
    LANES_INLINE void put(double *p) const { *p = sum; }
};

struct Two {
    Pair sum = {};

    LANES_INLINE void add(const MovingAverageOnline *s, std::size_t i) { sum += Pair{s[0].Buffer[i], s[1].Buffer[i]}; }
    LANES_INLINE void add_two(const MovingAverageOnline *s, std::size_t i) {
        const Pair a = load_pair(s[0].Buffer + i), b = load_pair(s[1].Buffer + i);
        sum += firsts(a, b);
        sum += seconds(a, b);
    }
    LANES_INLINE void put(double *p) const { store(p, sum); }
};

#ifdef __AVX__

// Two pairs side by side.  From joined(), g++ 12 makes an instruction more, for a busy port.
LANES_INLINE Lanes load_joined(const double *lower, const double *upper) {
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(lower)), _mm_loadu_pd(upper), 1);
}

struct Four {
    Lanes sum = {};

    LANES_INLINE void add(const MovingAverageOnline *s, std::size_t i) {
        sum += Lanes{s[0].Buffer[i], s[1].Buffer[i], s[2].Buffer[i], s[3].Buffer[i]};
    }
    LANES_INLINE void add_two(const MovingAverageOnline *s, std::size_t i) {
        const Lanes even = load_joined(s[0].Buffer + i, s[2].Buffer + i),
                    odd = load_joined(s[1].Buffer + i, s[3].Buffer + i);
        sum += __builtin_shufflevector(even, odd, 0, 4, 2, 6);
        sum += __builtin_shufflevector(even, odd, 1, 5, 3, 7);
    }
    LANES_INLINE void put(double *p) const { store(p, sum); }
};

template <std::size_t kCount>
using Widest = std::conditional_t<kCount >= 4, Four, std::conditional_t<kCount >= 2, Two, One>>;
#else

template <std::size_t kCount>
using Widest = std::conditional_t<kCount >= 2, Two, One>;

#endif

// The sums of kCount channels: of the first few in the widest vector, then of the rest.
template <std::size_t kCount>
struct Sums {
    static constexpr std::size_t width = sizeof(Widest<kCount>) / sizeof(double);
    Widest<kCount> first;
    Sums<kCount - width> rest;

    LANES_INLINE void add(const MovingAverageOnline *s, std::size_t i) {
        first.add(s, i);
        rest.add(s + width, i);
    }
    LANES_INLINE void add_two(const MovingAverageOnline *s, std::size_t i) {
        first.add_two(s, i);
        rest.add_two(s + width, i);
    }
    LANES_INLINE void put(double *p) const {
        first.put(p);
        rest.put(p + width);
    }
};

template <>
struct Sums<0> {
    LANES_INLINE void add(const MovingAverageOnline *, std::size_t) {}
    LANES_INLINE void add_two(const MovingAverageOnline *, std::size_t) {}
    LANES_INLINE void put(double *) const {}
};

template <std::size_t kMost = kMostTogether>
LANES_INLINE void sum_together(const MovingAverageOnline *s, std::size_t count, std::size_t length, double *sums) {
    if constexpr (kMost > 1)
        if (count < kMost) return sum_together<kMost - 1>(s, count, length, sums);
    Sums<kMost> all;
    std::size_t i = 0;
    for (; i + 2 <= length; i += 2) all.add_two(s, i);
    if (i < length) all.add(s, i);
    all.put(sums);
}

}  // namespace

void sum_windows(const MovingAverageOnline *s, std::size_t count, std::size_t length, double *sums) {
    sum_together(s, count, length, sums);
}

}  // namespace mensura::online::MENSURA_TARGET

// The passes of the fast transform; fft.cpp has the overview.

#include "fft_kernel.h"

#include <cstdint>

#include "../internal/target.h"

namespace mensura::spectral::MENSURA_TARGET {
namespace {

// Member by member, which the compilers keep in registers.
LANES_INLINE Bins copy_of(const Bins &x) { return {x.re, x.im}; }

// ---- Butterflies ----

LANES_INLINE void butterfly(Bins &a, Bins &b, const Bins &w) {
    const Bins t = b * w;
    b = a - t;
    a = a + t;
}

// The same with -i w, a quarter of the circle further on.
LANES_INLINE void turned_butterfly(Bins &a, Bins &b, const Bins &w) {
    const Bins t{b.re * w.im + b.im * w.re, b.im * w.im - b.re * w.re};
    b = a - t;
    a = a + t;
}

struct FourBins {
    Bins a, b, c, d;
};

// Two stages at bins k: from bin k of four transforms of m bins, in bit-reversed order, to bins k, k + m, k + 2m, k + 3m
// of one transform of 4m.  `turned` is w4 again, but where w4 is 1 its imaginary part is +0 in both directions.
LANES_INLINE void two_stages(FourBins &x, const Bins &w2, const Bins &w4, const Bins &turned) {
    butterfly(x.a, x.b, w2);
    butterfly(x.c, x.d, w2);
    butterfly(x.a, x.c, w4);
    turned_butterfly(x.b, x.d, turned);
}

// The factors of a pass begin with 1: gives it the imaginary part of this direction.
LANES_INLINE Bins from_one(const Plan &plan, const Bins &w) {
    return {w.re, __builtin_shufflevector(w.im, all(plan.zero), 4, 1, 2, 3)};
}

// ---- Gathering ----

// Stages 1 and 2, whose factors are 1: x has points i .. i + 3 of each quarter of the input, in the order of the first,
// third, second and fourth, and receives the four bins of point i, those of i + 1, and so on.
LANES_INLINE void first_stages(const Plan &plan, FourBins &x) {
    const Bins one{all(1.0), all(plan.zero)};
    two_stages(x, one, one, {all(1.0), all(0.0)});
    transpose(x.a.re, x.b.re, x.c.re, x.d.re);
    transpose(x.a.im, x.b.im, x.c.im, x.d.im);
}

// The 32 bits of v in reverse order: neighbouring bits, pairs and groups of four are exchanged, then bytes.
constexpr std::uint32_t bit_reversed(std::uint32_t v) {
    v = (v >> 1 & 0x55555555U) | (v & 0x55555555U) << 1;
    v = (v >> 2 & 0x33333333U) | (v & 0x33333333U) << 2;
    v = (v >> 4 & 0x0f0f0f0fU) | (v & 0x0f0f0f0fU) << 4;
    return __builtin_bswap32(v);
}

// The gather goes through i = 0 .. n/4 - 1 as through a matrix, row by row, in tiles of some columns: the neighbours in a
// column, which are far apart in the input, become neighbours in bit-reversed order while both are in the cache.
constexpr std::size_t kTileRows = 8;
constexpr std::size_t kTiledVectors = 1024;  // smaller transforms fit the cache without tiles
constexpr std::size_t kNarrow = 8;           // columns of a tile, in doubles: one cache line
constexpr std::size_t kWide = 32;            // columns of a tile where rows are long: four cache lines
constexpr std::size_t kLongRow = 2048;       // from this length of a row on, wide tiles are faster

constexpr std::size_t kStreamedVectors = 131072;  // 8 MB: from here on the gather bypasses the caches

// The transforms of x[i], x[i + n/4], x[i + n/2], x[i + 3n/4] for i .. i + 3, a vector each.  The first goes to `place`;
// in bit-reversed order that of i + 1 lies half of all vectors further on, that of i + 2 a quarter.
template <bool bypass_caches>
LANES_INLINE void gather_four(const Plan &plan, const double *re, const double *im, std::size_t i, std::size_t place) {
    const std::size_t quarter = plan.n / 4, next = plan.vectors() / 4;
    const auto input = [&](std::size_t at) LANES_LAMBDA { return Bins{load(re + at), load(im + at)}; };
    FourBins x{input(i), input(i + 2 * quarter), input(i + quarter), input(i + 3 * quarter)};
    first_stages(plan, x);
    const auto output = [&](std::size_t at, const Bins &bins) LANES_LAMBDA {
        if constexpr (bypass_caches) {
            stream(reinterpret_cast<double *>(&plan.bins[at].re), bins.re);
            stream(reinterpret_cast<double *>(&plan.bins[at].im), bins.im);
        } else {
            plan.bins[at] = bins;
        }
    };
    output(place, x.a);
    output(place + 2 * next, x.b);
    output(place + next, x.c);
    output(place + 3 * next, x.d);
}

template <bool bypass_caches>
LANES_INLINE void gather(const Plan &plan, const double *re, const double *im) {
    const std::size_t count = plan.vectors(), row = count >= kTiledVectors ? count / kTileRows : count;
    const std::size_t columns = row < kNarrow ? row : row < kLongRow ? kNarrow : kWide;
    const int unused_bits = __builtin_clz(static_cast<std::uint32_t>(count)) + 1;
    for (std::size_t first = 0; first < row; first += columns)
        for (std::size_t i = first; i < count; i += row)
            for (std::size_t j = i; j < i + columns; j += kLanes)
                gather_four<bypass_caches>(plan, re, im, j, bit_reversed(static_cast<std::uint32_t>(j)) >> unused_bits);
}

// ---- Joining ----

// Joins vectors begin .. end - 1 of four transforms, with the factors w: get(m, i) is vector i of transform m, put(m, i,
// bins) takes vector i of quarter m of the result.
template <typename Get, typename Put>
LANES_INLINE void join(const Plan &plan, std::size_t begin, std::size_t end, const Twiddles *w, Get get, Put put) {
    const auto join_at = [&](std::size_t i, const Bins &w2, const Bins &w4, const Bins &turned) LANES_LAMBDA {
        FourBins x{get(0, i), get(1, i), get(2, i), get(3, i)};
        two_stages(x, w2, w4, turned);
        put(0, i, x.a);
        put(1, i, x.b);
        put(2, i, x.c);
        put(3, i, x.d);
    };
    std::size_t i = begin;
    if (i == 0) {
        join_at(0, from_one(plan, w->w2), from_one(plan, w->w4), copy_of(w->w4));
        ++i;
        ++w;
    }
    for (; i < end; ++i, ++w) {
        const Bins w2 = copy_of(w->w2), w4 = copy_of(w->w4);
        join_at(i, w2, w4, w4);
    }
}

// Joins transforms of q vectors, one after the other at x, in place.
LANES_INLINE void join_in_place(const Plan &plan, Bins *x, std::size_t q, std::size_t begin, std::size_t end,
                                const Twiddles *w) {
    join(
        plan, begin, end, w, [=](std::size_t m, std::size_t i) LANES_LAMBDA { return copy_of(x[m * q + i]); },
        [=](std::size_t m, std::size_t i, const Bins &bins) LANES_LAMBDA { x[m * q + i] = bins; });
}

// The stage on its own before the pass of q = 2: joins neighbouring vectors.
LANES_INLINE void join_pairs(const Plan &plan, Bins *x, std::size_t count) {
    const Bins w = from_one(plan, kReady.even[0].w2);
    for (std::size_t i = 0; i < count; i += 2) butterfly(x[i], x[i + 1], w);
}

// The pass of q = 1: joins four neighbouring vectors.
LANES_INLINE void join_fours(const Plan &plan, Bins *x, std::size_t count) {
    const Bins &w = kReady.even[0].w4;
    const Bins w2 = from_one(plan, kReady.even[0].w2), w4 = from_one(plan, w), turned = copy_of(w);
    for (std::size_t i = 0; i < count; i += 4) {
        FourBins four{copy_of(x[i]), copy_of(x[i + 1]), copy_of(x[i + 2]), copy_of(x[i + 3])};
        two_stages(four, w2, w4, turned);
        x[i] = four.a;
        x[i + 1] = four.b;
        x[i + 2] = four.c;
        x[i + 3] = four.d;
    }
}

// ---- Factors of passes of more than 4096 points ----

// The first eighth of a circle, every stride-th entry.
struct Circle {
    const CosSin *eighth;
    std::size_t points, stride;
};

LANES_INLINE Circle circle_of(const Plan &plan, std::size_t points) {
    if (points <= kCirclePoints) return {plan.table, points, kCirclePoints / points};
    return {plan.eighths[__builtin_ctzll(plan.n / points) / 2], points, 1};
}

struct TwoFactors {
    Pair re, im;
};

// exp(-2 pi i k / points) at k and k + 1, which lie in the first, second, third or fourth eighth of the circle.
template <int eighth>
LANES_INLINE TwoFactors two_on_circle(const Circle &circle, std::size_t k) {
    const std::size_t quarter = circle.points / 4, from = eighth < 2 ? k : k - quarter;
    constexpr bool kMirrored = eighth % 2 != 0;
    const CosSin *const at = circle.eighth + (kMirrored ? quarter - from : from) * circle.stride;
    const Pair a = load_pair(&at->cos), b = load_pair(&(kMirrored ? at - circle.stride : at + circle.stride)->cos);
    const Pair cos = firsts(a, b), sin = seconds(a, b);
    const TwoFactors w = kMirrored ? TwoFactors{sin, -cos} : TwoFactors{cos, -sin};
    return eighth < 2 ? w : TwoFactors{w.im, -w.re};
}

// The same at k .. k + 3.  They are stored in pairs, because the baseline is slow at putting pairs together.
template <int eighth>
LANES_INLINE void put_on_circle(const Circle &circle, std::size_t k, Bins *out) {
    auto *const re = reinterpret_cast<double *>(&out->re), *const im = reinterpret_cast<double *>(&out->im);
    for (std::size_t i = 0; i < kLanes; i += 2) {
        const TwoFactors w = two_on_circle<eighth>(circle, k + i);
        store(re + i, w.re);
        store(im + i, w.im);
    }
}

template <int quarter>
LANES_INLINE void fill_in_quarter(const Circle &circle, std::size_t begin, std::size_t end, Twiddles *w) {
    const Circle half{circle.eighth, circle.points / 2, 2 * circle.stride};
    for (std::size_t i = begin; i < end; ++i, ++w) {
        put_on_circle<quarter>(half, kLanes * i, &w->w2);
        put_on_circle<quarter / 2>(circle, kLanes * i, &w->w4);
    }
}

// The factors of vectors begin .. end - 1 of a pass, which lie in one quarter of its q vectors.
LANES_INLINE void fill_factors(const Plan &plan, std::size_t q, std::size_t begin, std::size_t end, Twiddles *w) {
    const Circle circle = circle_of(plan, 4 * kLanes * q);
    switch (4 * begin / q) {
        case 0: return fill_in_quarter<0>(circle, begin, end, w);
        case 1: return fill_in_quarter<1>(circle, begin, end, w);
        case 2: return fill_in_quarter<2>(circle, begin, end, w);
        default: return fill_in_quarter<3>(circle, begin, end, w);
    }
}

// ---- Passes ----

constexpr std::size_t kCachedVectors = 256;  // 16 KB, which stay in the first cache through all passes

// Calls join_part(begin, end, w) for parts of the q vectors of a pass, with their factors.
template <typename JoinPart>
LANES_INLINE void run_pass(const Plan &plan, std::size_t q, JoinPart join_part) {
    if (q <= kReadyVectors) {
        const Twiddles *const ready = __builtin_ctzll(q) % 2 == 0 ? kReady.even : kReady.odd;
        join_part(0, q, ready + ready_before(q));
        return;
    }
    constexpr std::size_t kPart = 16;  // of factors that are made and used while they are in the first cache
    Twiddles w[kPart];
    for (std::size_t begin = 0; begin < q; begin += kPart) {
        fill_factors(plan, q, begin, begin + kPart, w);
        join_part(begin, begin + kPart, w);
    }
}

LANES_INLINE void run_pass_in_place(const Plan &plan, Bins *x, std::size_t q) {
    run_pass(plan, q, [&plan, x, q](std::size_t begin, std::size_t end, const Twiddles *w) LANES_LAMBDA {
        join_in_place(plan, x, q, begin, end, w);
    });
}

// All passes of a transform of `count` gathered vectors, which fit the first cache.
LANES_INLINE void transform_block(const Plan &plan, Bins *x, std::size_t count) {
    std::size_t q = 4;
    if (__builtin_ctzll(count) % 2 != 0) {
        join_pairs(plan, x, count);
        q = 2;
    } else if (count > 1) {
        join_fours(plan, x, count);
    }
    for (; q < count; q *= 4)
        for (std::size_t i = 0; i < count; i += 4 * q) run_pass_in_place(plan, x + i, q);
}

// All passes but the last, on the gathered vectors.
LANES_INLINE void transform_quarters(const Plan &plan) {
    const std::size_t quarter = plan.vectors() / 4;
    std::size_t cached = quarter;
    while (cached > kCachedVectors) cached /= 4;
    for (std::size_t done = cached; done <= plan.vectors(); done += cached) {
        transform_block(plan, plan.bins + done - cached, cached);
        // Then the larger transforms whose last part this was.
        for (std::size_t q = cached; q < quarter && done % (4 * q) == 0; q *= 4)
            run_pass_in_place(plan, plan.bins + done - 4 * q, q);
    }
}

// ---- Results ----

LANES_INLINE void put_scaled(double *out, std::size_t i, Lanes values, double scale) {
    constexpr std::size_t kAhead = 16;  // doubles: without asking ahead, stores that miss the first cache wait for it
    __builtin_prefetch(out + i * kLanes + kAhead, 1);
    store(out + i * kLanes, values * all(scale));
}

LANES_INLINE void run_last_pass(const Plan &plan, double *re, double *im, double scale) {
    const std::size_t q = plan.vectors() / 4;
    const Bins *const x = plan.bins;
    run_pass(plan, q, [&, x, q](std::size_t begin, std::size_t end, const Twiddles *w) LANES_LAMBDA {
        join(
            plan, begin, end, w, [=](std::size_t m, std::size_t i) LANES_LAMBDA { return copy_of(x[m * q + i]); },
            [=](std::size_t m, std::size_t i, const Bins &bins) LANES_LAMBDA {
                put_scaled(re, m * q + i, bins.re, scale);
                put_scaled(im, m * q + i, bins.im, scale);
            });
    });
}

// Eight points: two vectors, and three stages without passes.  The upper half of each input is there to fill the lanes.
LANES_INLINE void transform_eight(const Plan &plan, double *re, double *im, double scale) {
    const auto twice = [](const double *at) LANES_LAMBDA { return joined(load_pair(at), load_pair(at)); };
    const auto input = [&](std::size_t at) LANES_LAMBDA { return Bins{twice(re + at), twice(im + at)}; };
    FourBins x{input(0), input(4), input(2), input(6)};
    first_stages(plan, x);
    butterfly(x.a, x.b, from_one(plan, kReady.even[0].w2));
    store(re, x.a.re * all(scale));
    store(im, x.a.im * all(scale));
    store(re + kLanes, x.b.re * all(scale));
    store(im + kLanes, x.b.im * all(scale));
}

}  // namespace

void transform(const Plan &plan, double *re, double *im, double scale) {
    if (plan.n == 8) return transform_eight(plan, re, im, scale);
    if (plan.vectors() < kStreamedVectors)
        gather<false>(plan, re, im);
    else
        gather<true>(plan, re, im);
    transform_quarters(plan);
    run_last_pass(plan, re, im, scale);
}

}  // namespace mensura::spectral::MENSURA_TARGET

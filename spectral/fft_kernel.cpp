// The passes of the fast transform; fft.cpp has the overview.

#include "fft_kernel.h"

#include <cstdint>

#include "../internal/target.h"

namespace mensura::spectral::MENSURA_TARGET {
namespace {

// -i w: twiddle factors a quarter of the circle further on.  Of w = 1 it makes 0 - i, with +0 also where the inverse has
// an imaginary part of -0, because -0 + 0.0 is +0.
LANES_INLINE Bins turned(const Bins &w) { return {w.im + 0.0, -w.re}; }

// Every other element of two vectors.
LANES_INLINE Bins even(const Bins &a, const Bins &b) {
    return {__builtin_shufflevector(a.re, b.re, 0, 2, 4, 6), __builtin_shufflevector(a.im, b.im, 0, 2, 4, 6)};
}

LANES_INLINE void butterfly(Bins &a, Bins &b, const Bins &w) {
    const Bins t = b * w;
    b = a - t;
    a = a + t;
}

struct FourBins {
    Bins a, b, c, d;
};

// Two stages at bins k: from bin k of four transforms of m bins, in bit-reversed order, to bins k, k + m, k + 2m, k + 3m
// of one transform of 4m.
LANES_INLINE void two_stages(FourBins &x, const Twiddles &w) {
    butterfly(x.a, x.b, w.w2);
    butterfly(x.c, x.d, w.w2);
    butterfly(x.a, x.c, w.w4);
    butterfly(x.b, x.d, turned(w.w4));
}

LANES_INLINE void transpose(Lanes &a, Lanes &b, Lanes &c, Lanes &d) {
    const Lanes ab = __builtin_shufflevector(a, b, 0, 4, 2, 6), ba = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Lanes cd = __builtin_shufflevector(c, d, 0, 4, 2, 6), dc = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(ab, cd, 0, 1, 4, 5);
    b = __builtin_shufflevector(ba, dc, 0, 1, 4, 5);
    c = __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
    d = __builtin_shufflevector(ba, dc, 2, 3, 6, 7);
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

constexpr std::size_t kCachedVectors = 256;       // 16 KB, which stay in the first cache through all passes
constexpr std::size_t kStreamedVectors = 131072;  // 8 MB: from here on the gather bypasses the caches

// Fills the tables from the w4 of the last pass.  Every other point of a circle belongs to one twice as coarse, so the
// w4 of a pass give its w2, those give the w4 of the pass before, and so on.
LANES_INLINE void fill_twiddles(const Plan &plan) {
    std::size_t q = plan.vectors() / 4;
    for (; q > 1; q /= 4) {
        Twiddles *const w = plan.twiddles_of(q);
        for (std::size_t i = 0; i < q / 2; ++i) {
            w[i].w2 = even(w[2 * i].w4, w[2 * i + 1].w4);
            w[i + q / 2].w2 = turned(w[i].w2);
        }
        for (std::size_t i = 0; i < q / 4; ++i) plan.twiddles_of(q / 4)[i].w4 = even(w[2 * i].w2, w[2 * i + 1].w2);
    }
    if (q == 1) plan.twiddles->w2 = even(plan.twiddles->w4, turned(plan.twiddles->w4));
}

// The transforms of x[i], x[i + n/4], x[i + n/2], x[i + 3n/4] for i .. i + 3, a vector each.  The first goes to `place`;
// in bit-reversed order that of i + 1 lies half of all vectors further on, that of i + 2 a quarter.
template <bool bypass_caches>
LANES_INLINE void gather_four(const Plan &plan, const double *re, const double *im, std::size_t i, std::size_t place) {
    const std::size_t quarter = plan.n / 4;
    const auto input = [&](std::size_t at) LANES_LAMBDA { return Bins{load(re + at), load(im + at)}; };
    FourBins x{input(i), input(i + 2 * quarter), input(i + quarter), input(i + 3 * quarter)};
    const Bins one{all(1.0), all(plan.zero)};
    two_stages(x, {one, one});
    transpose(x.a.re, x.b.re, x.c.re, x.d.re);
    transpose(x.a.im, x.b.im, x.c.im, x.d.im);
    const std::size_t next = plan.vectors() / 4;
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

// The stage on its own before the pass of q = 2: joins neighbouring vectors.
LANES_INLINE void join_pairs(const Plan &plan, Bins *x, std::size_t count) {
    const Bins w = even(plan.twiddles_of(2)[0].w2, plan.twiddles_of(2)[1].w2);
    for (std::size_t i = 0; i < count; i += 2) butterfly(x[i], x[i + 1], w);
}

// Joins four transforms of q vectors, one after the other at x; put(i, bins) takes vector i of the result.
template <typename Put>
LANES_INLINE void join_quarters(const Plan &plan, const Bins *x, std::size_t q, Put put) {
    const Twiddles *const w = plan.twiddles_of(q);
    const auto vector = [x](std::size_t i) LANES_LAMBDA { return Bins{x[i].re, x[i].im}; };
    for (std::size_t i = 0; i < q; ++i) {
        FourBins four{vector(i), vector(i + q), vector(i + 2 * q), vector(i + 3 * q)};
        two_stages(four, w[i]);
        put(i, four.a);
        put(i + q, four.b);
        put(i + 2 * q, four.c);
        put(i + 3 * q, four.d);
    }
}

LANES_INLINE void join_in_place(const Plan &plan, Bins *x, std::size_t q) {
    join_quarters(plan, x, q, [x](std::size_t i, const Bins &bins) LANES_LAMBDA { x[i] = bins; });
}

// All passes but the last, on the gathered vectors.
LANES_INLINE void transform_quarters(const Plan &plan) {
    const std::size_t quarter = plan.vectors() / 4;
    std::size_t cached = quarter;
    while (cached > kCachedVectors) cached /= 4;
    for (std::size_t done = 0; done < plan.vectors(); done += cached) {
        Bins *const x = plan.bins + done;
        const bool pairs = __builtin_ctzll(cached) % 2 != 0;
        if (pairs) join_pairs(plan, x, cached);
        for (std::size_t q = pairs ? 2 : 1; q < cached; q *= 4)
            for (std::size_t i = 0; i < cached; i += 4 * q) join_in_place(plan, x + i, q);
        // Then the larger transforms whose last part this was.
        for (std::size_t q = cached; q < quarter && (done + cached) % (4 * q) == 0; q *= 4)
            join_in_place(plan, x + cached - 4 * q, q);
    }
}

}  // namespace

void transform(const Plan &plan, double *re, double *im, double scale) {
    if (plan.vectors() < kStreamedVectors)
        gather<false>(plan, re, im);
    else
        gather<true>(plan, re, im);
    fill_twiddles(plan);  // not earlier: the stores of the last pass must have reached the cache
    transform_quarters(plan);
    join_quarters(plan, plan.bins, plan.vectors() / 4, [&](std::size_t i, const Bins &bins) LANES_LAMBDA {
        store(re + i * kLanes, bins.re * all(scale));
        store(im + i * kLanes, bins.im * all(scale));
    });
}

}  // namespace mensura::spectral::MENSURA_TARGET

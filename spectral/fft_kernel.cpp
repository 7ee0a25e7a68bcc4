// The passes of the fast transform.

#include "fft_kernel.h"

#include <cstdint>

#include "../internal/target.h"

namespace mensura::spectral::MENSURA_TARGET {
namespace {

using Size = std::size_t;

// Factors a quarter of the circle further on: -i w.  The sum keeps the zero of -i positive, also where the inverse has
// a negative one in 1.
LANES_INLINE Bins turned(const Bins &w) { return {w.im + 0.0, -w.re}; }

// Every other one of eight neighbours.
LANES_INLINE Bins even(const Bins &a, const Bins &b) {
    return {__builtin_shufflevector(a.re, b.re, 0, 2, 4, 6), __builtin_shufflevector(a.im, b.im, 0, 2, 4, 6)};
}

LANES_INLINE void butterfly(Bins &a, Bins &c, const Bins &w) {
    const Bins t = c * w;
    c = a - t;
    a = a + t;
}

struct FourBins {
    Bins a, b, c, d;
};

// Two stages: bin k of four sub-transforms of m bins, in bit-reversed order, to bins k, k + m, k + 2m, k + 3m of one.
LANES_INLINE void two_stages(FourBins &x, const Factors &w) {
    butterfly(x.a, x.b, w.once);
    butterfly(x.c, x.d, w.once);
    butterfly(x.a, x.c, w.twice);
    butterfly(x.b, x.d, turned(w.twice));
}

LANES_INLINE void transpose(Lanes &a, Lanes &b, Lanes &c, Lanes &d) {
    const Lanes ab = __builtin_shufflevector(a, b, 0, 4, 2, 6), ba = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Lanes cd = __builtin_shufflevector(c, d, 0, 4, 2, 6), dc = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(ab, cd, 0, 1, 4, 5);
    b = __builtin_shufflevector(ba, dc, 0, 1, 4, 5);
    c = __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
    d = __builtin_shufflevector(ba, dc, 2, 3, 6, 7);
}

constexpr std::uint32_t reversed(std::uint32_t v) {
    v = (v >> 1 & 0x55555555U) | (v & 0x55555555U) << 1;
    v = (v >> 2 & 0x33333333U) | (v & 0x33333333U) << 2;
    v = (v >> 4 & 0x0f0f0f0fU) | (v & 0x0f0f0f0fU) << 4;
    return __builtin_bswap32(v);
}

// A tile of the input is some columns of several distant rows: the rows' blocks become neighbours.
constexpr Size kTileRows = 8, kNarrow = 8, kWide = 32;  // columns: one cache line, four
constexpr Size kTiledBlocks = 1024, kLongRow = 2048;    // from which tiles, and wide ones, pay
constexpr Size kCachedBlocks = 256;                     // a quarter of this size is finished before the next
constexpr Size kFarBlocks = 131072;                     // 8 MB, from which the blocks go straight to memory

// Every other point of a circle belongs to one twice as coarse: `twice` of the last pass gives its `once`, that gives
// `twice` of the pass before, and so on.
LANES_INLINE void fill_factors(const Plan &plan) {
    Size q = plan.count() / 4;
    for (; q > 1; q /= 4) {
        Factors *const w = plan.factors_of(q);
        for (Size i = 0; i < q / 2; ++i) {
            w[i].once = even(w[2 * i].twice, w[2 * i + 1].twice);
            w[i + q / 2].once = turned(w[i].once);
        }
        for (Size i = 0; i < q / 4; ++i) plan.factors_of(q / 4)[i].twice = even(w[2 * i].once, w[2 * i + 1].once);
    }
    if (q == 1) plan.factors->once = even(plan.factors->twice, turned(plan.factors->twice));
}

// The transforms of x[i], x[i + n/4], x[i + n/2], x[i + 3n/4] for four neighbouring i, each into its block.
template <bool far>
LANES_INLINE void gather_four(const Plan &plan, const double *re, const double *im, Size i, Size place) {
    const Size quarter = plan.n / 4;
    const auto input = [&](Size at) LANES_LAMBDA { return Bins{load(re + at), load(im + at)}; };
    FourBins x{input(i), input(i + 2 * quarter), input(i + quarter), input(i + 3 * quarter)};
    const Bins one{all(1.0), all(plan.zero)};
    two_stages(x, {one, one});
    transpose(x.a.re, x.b.re, x.c.re, x.d.re);
    transpose(x.a.im, x.b.im, x.c.im, x.d.im);
    const Size next = plan.count() / 4;
    const auto output = [&](Size at, const Bins &bins) LANES_LAMBDA {
        if constexpr (far) {
            stream(reinterpret_cast<double *>(&plan.blocks[at].re), bins.re);
            stream(reinterpret_cast<double *>(&plan.blocks[at].im), bins.im);
        } else {
            plan.blocks[at] = bins;
        }
    };
    output(place, x.a);
    output(place + 2 * next, x.b);
    output(place + next, x.c);
    output(place + 3 * next, x.d);
}

template <bool far>
LANES_INLINE void gather(const Plan &plan, const double *re, const double *im) {
    const Size count = plan.count(), rows = count >= kTiledBlocks ? kTileRows : 1, row = count / rows;
    const Size column = row < kNarrow ? row : row < kLongRow ? kNarrow : kWide;
    const int unused_bits = __builtin_clz(static_cast<std::uint32_t>(count)) + 1;
    for (Size first = 0; first < row; first += column)
        for (Size i = first; i < count; i += row)
            for (Size j = i; j < i + column; j += kLanes)
                gather_four<far>(plan, re, im, j, reversed(static_cast<std::uint32_t>(j)) >> unused_bits);
}

// Joins pairs of neighbouring blocks, before the pass of q = 2.
LANES_INLINE void join_pairs(const Plan &plan, Bins *x, Size count) {
    const Bins w = even(plan.factors_of(2)[0].once, plan.factors_of(2)[1].once);
    for (Size i = 0; i < count; i += 2) butterfly(x[i], x[i + 1], w);
}

// Joins blocks i, i + q, i + 2q, i + 3q for i < q; put(i, x) takes each result.
template <typename Put>
LANES_INLINE void join_quarters(const Plan &plan, const Bins *x, Size q, Put put) {
    const Factors *const w = plan.factors_of(q);
    const auto block = [x](Size i) LANES_LAMBDA { return Bins{x[i].re, x[i].im}; };
    for (Size i = 0; i < q; ++i) {
        FourBins four{block(i), block(i + q), block(i + 2 * q), block(i + 3 * q)};
        two_stages(four, w[i]);
        put(i, four.a);
        put(i + q, four.b);
        put(i + 2 * q, four.c);
        put(i + 3 * q, four.d);
    }
}

LANES_INLINE void join_in_place(const Plan &plan, Bins *x, Size q) {
    join_quarters(plan, x, q, [x](Size i, const Bins &bins) LANES_LAMBDA { x[i] = bins; });
}

// Completes the four quarters of the gathered blocks.
LANES_INLINE void transform_quarters(const Plan &plan) {
    const Size quarter = plan.count() / 4;
    Size cached = quarter;
    while (cached > kCachedBlocks) cached /= 4;
    for (Size done = 0; done < plan.count(); done += cached) {
        Bins *const x = plan.blocks + done;
        const bool pairs = __builtin_ctzll(cached) % 2 != 0;
        if (pairs) join_pairs(plan, x, cached);
        for (Size q = pairs ? 2 : 1; q < cached; q *= 4)
            for (Size i = 0; i < cached; i += 4 * q) join_in_place(plan, x + i, q);
        // Then the larger groups that these blocks have just completed.
        for (Size q = cached; q < quarter && (done + cached) % (4 * q) == 0; q *= 4)
            join_in_place(plan, x + cached - 4 * q, q);
    }
}

}  // namespace

void transform(const Plan &plan, double *re, double *im, double scale) {
    if (plan.count() < kFarBlocks)
        gather<false>(plan, re, im);
    else
        gather<true>(plan, re, im);
    fill_factors(plan);  // not earlier: the circle is still on its way to memory
    transform_quarters(plan);
    join_quarters(plan, plan.blocks, plan.count() / 4, [&](Size i, const Bins &bins) LANES_LAMBDA {
        store(re + i * kLanes, bins.re * all(scale));
        store(im + i * kLanes, bins.im * all(scale));
    });
}

}  // namespace mensura::spectral::MENSURA_TARGET

// The fast transform.
//
// Its butterflies are those of Transform, with the same operands and so the same bits; what differs is their order and
// where their results lie.  Four neighbouring bins make a block.
//
//   1. gather: stages 1 and 2, from the caller's arrays into bit-reversed blocks, in tiles that suit the caches
//   2. two stages at a time in registers; a large transform finishes one quarter after the other, so that each stays in
//      the cache while it is worked on
//   3. the last two stages, scaled, into the caller's arrays
//
// The inverse is the forward transform with re and im exchanged: swapped, the butterflies of one are those of the other.

#include <mensura/spectral.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "../internal/lanes.h"
#include "../internal/scratch.h"
#include "../internal/target.h"
#include "twiddles.h"

using mensura::all, mensura::kLanes, mensura::Lanes, mensura::load, mensura::store;

namespace {

using Size = std::size_t;

using Bins = mensura::ComplexLanes;  // four neighbouring bins, or twiddle factors

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

// Two stages: x[0 .. 3] are bin k of four sub-transforms of m bins, then bins k, k + m, k + 2m, k + 3m of one.
// once is exp(-2 pi i k / 2m) and twice exp(-2 pi i k / 4m).
LANES_INLINE void two_stages(Bins (&x)[4], const Bins &once, const Bins &twice) {
    butterfly(x[0], x[1], once);
    butterfly(x[2], x[3], once);
    butterfly(x[0], x[2], twice);
    butterfly(x[1], x[3], turned(twice));
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

// ---- Memory --------------------------------------------------------------------------------------------------------

// One transform: its blocks, and for each pass that joins 4 q blocks the first quarter of that circle's factors, q
// blocks: q = 1, 4, 16, ... or 2, 8, 32, ..., the smallest first.
struct Plan {
    Size n;
    Bins *blocks;
    Bins *factors;
    double zero;  // imaginary part of the factor 1: -0 in the inverse

    [[nodiscard]] Size count() const { return n / kLanes; }
    [[nodiscard]] Bins *factors_of(Size q) const { return factors + (q - 1) / 3; }
};

Size factor_blocks(Size n) { return n / 16 + n / 48 + 1; }

double &re_of(Bins *table, Size i) { return reinterpret_cast<double *>(table)[i / kLanes * 2 * kLanes + i % kLanes]; }
double &im_of(Bins *table, Size i) { return (&re_of(table, i))[kLanes]; }

void fill_factors(const Plan &plan) {
    const Size quarter = plan.n / 4;
    Size q = quarter / kLanes;
    Bins *table = plan.factors_of(q);
    const auto put = [&](Size i, double cos, double sin) {
        re_of(table, i) = cos;
        im_of(table, i) = -sin;
    };
    mensura::spectral::for_first_eighth(plan.n, [&](Size i, double cos, double sin) {
        put(quarter - i, sin, cos);
        put(i, cos, sin);
    });
    re_of(table, 0) = 1.0;
    im_of(table, 0) = plan.zero;
    for (q /= 4; q > 0; q /= 4) {  // every fourth factor of a circle is that of one four times coarser
        Bins *const coarser = plan.factors_of(q);
        for (Size i = 0; i < q * kLanes; ++i) {
            re_of(coarser, i) = re_of(table, 4 * i);
            im_of(coarser, i) = im_of(table, 4 * i);
        }
        table = coarser;
    }
}

// ---- Passes --------------------------------------------------------------------------------------------------------

constexpr Size kTileRows = 8;         // distant parts of the input whose blocks become neighbours
constexpr Size kLargeEnough = 1024;   // blocks from which tiles pay
constexpr Size kCachedBlocks = 1024;  // a quarter of this size is finished before the next

// Four neighbouring first indices: the transforms of x[i], x[i + n/4], x[i + n/2], x[i + 3n/4].
LANES_INLINE void gather_four(const Plan &plan, const double *re, const double *im, Size i, Size place) {
    const Size quarter = plan.n / 4, count = plan.count();
    const Bins one{all(1.0), all(plan.zero)};
    Bins x[4];
    constexpr Size kOrder[] = {0, 2, 1, 3};  // the pairs that are n/2 apart meet first
    for (Size leg = 0; leg < 4; ++leg)
        x[leg] = {load(re + i + kOrder[leg] * quarter), load(im + i + kOrder[leg] * quarter)};
    two_stages(x, one, one);
    transpose(x[0].re, x[1].re, x[2].re, x[3].re);
    transpose(x[0].im, x[1].im, x[2].im, x[3].im);
    for (Size lane = 0; lane < kLanes; ++lane) plan.blocks[place + kOrder[lane] * (count / 4)] = x[lane];
}

LANES_INLINE void gather(const Plan &plan, const double *re, const double *im) {
    const Size count = plan.count(), rows = count >= kLargeEnough ? kTileRows : 1, row = count / rows;
    const int unused_bits = __builtin_clz(static_cast<std::uint32_t>(count)) + 1;
    const Size line = std::min<Size>(row, 2 * kLanes);
    for (Size column = 0; column < row; column += line)
        for (Size i = column; i < count; i += row)
            for (Size j = i; j < i + line; j += kLanes)
                gather_four(plan, re, im, j, reversed(static_cast<std::uint32_t>(j)) >> unused_bits);
}

// Joins pairs of neighbouring blocks.
LANES_INLINE void join_pairs(const Plan &plan, Bins *x, Size count) {
    const Bins *const circle32 = plan.factors_of(2);
    const Bins circle16 = even(circle32[0], circle32[1]), w = even(circle16, turned(circle16));
    for (Size i = 0; i < count; i += 2) butterfly(x[i], x[i + 1], w);
}

// Joins blocks i, i + q, i + 2q, i + 3q for i < q; put(i, x) takes the four results.
template <typename Put>
LANES_INLINE void join_quarters(const Bins *x, Size q, const Bins *factors, Put put) {
    const auto join = [&](Size i, const Bins &once, const Bins &twice) LANES_LAMBDA {
        Bins legs[4] = {x[i], x[i + q], x[i + 2 * q], x[i + 3 * q]};
        two_stages(legs, once, twice);
        put(i, legs);
    };
    if (q == 1) return join(0, even(factors[0], turned(factors[0])), factors[0]);
    for (Size i = 0; i < q / 2; ++i) {
        const Bins once = even(factors[2 * i], factors[2 * i + 1]);
        join(i, once, factors[i]);
        join(i + q / 2, turned(once), factors[i + q / 2]);
    }
}

LANES_INLINE void join_in_place(const Plan &plan, Bins *x, Size q) {
    join_quarters(x, q, plan.factors_of(q), [&](Size i, const Bins(&legs)[4]) LANES_LAMBDA {
        for (Size leg = 0; leg < 4; ++leg) x[i + leg * q] = legs[leg];
    });
}

// Completes the four quarters of the gathered blocks.
LANES_INLINE void transform_quarters(const Plan &plan) {
    const Size quarter = plan.count() / 4;
    Size cached = quarter;
    while (cached > kCachedBlocks) cached /= 4;
    for (Size done = 0; done < plan.count(); done += cached) {
        Bins *const x = plan.blocks + done;
        const bool pairs = std::countr_zero(cached) % 2 != 0;
        if (pairs) join_pairs(plan, x, cached);
        for (Size q = pairs ? 2 : 1; q < cached; q *= 4)
            for (Size i = 0; i < cached; i += 4 * q) join_in_place(plan, x + i, q);
        for (Size q = cached; q < quarter && (done + cached) % (4 * q) == 0; q *= 4)
            join_in_place(plan, x + cached - 4 * q, q);
    }
}

LANES_INLINE void transform(const Plan &plan, double *re, double *im, double scale) {
    gather(plan, re, im);
    transform_quarters(plan);
    const Size quarter = plan.count() / 4;
    join_quarters(plan.blocks, quarter, plan.factors_of(quarter), [&](Size i, const Bins(&legs)[4]) LANES_LAMBDA {
        for (Size leg = 0; leg < 4; ++leg) {
            store(re + (i + leg * quarter) * kLanes, legs[leg].re * all(scale));
            store(im + (i + leg * quarter) * kLanes, legs[leg].im * all(scale));
        }
    });
}

void transform_base(const Plan &plan, double *re, double *im, double scale) { transform(plan, re, im, scale); }
TARGET_AVX2 void transform_avx2(const Plan &plan, double *re, double *im, double scale) {
    transform(plan, re, im, scale);
}

// Eight points do not fill the blocks.
void transform_eight(double *re, double *im, int dir, double scale) {
    constexpr int kPoints = 8;
    double scratch_re[kPoints], scratch_im[kPoints], twiddle_re[kPoints / 2], twiddle_im[kPoints / 2];
    int index[kPoints];
    ReArrangeInput(re, im, scratch_re, scratch_im, index, kPoints);
    FillTwiddleArray(twiddle_re, twiddle_im, kPoints, dir);
    Transform(re, im, scratch_re, scratch_im, twiddle_re, twiddle_im, kPoints);
    for (int i = 0; i < kPoints; ++i) {
        re[i] *= scale;
        im[i] *= scale;
    }
}

}  // namespace

void FFT(double *re, double *im, int n, int dir) {
    if (IsValidFFTSize(n) == 0 || dir < 0 || dir > 1) return;
    const double scale = dir == 0 ? 1.0 / n : 1.0;
    if (n == 8) return transform_eight(re, im, dir, scale);

    const auto points = static_cast<Size>(n), blocks = points / kLanes;
    const auto memory = mensura::scratch<Bins>(blocks + factor_blocks(points));
    if (!memory) return;
    const Plan plan{points, memory.get(), memory.get() + blocks, dir == 0 ? 0.0 : -0.0};
    fill_factors(plan);
    if (dir == 1) std::swap(re, im);
    (mensura::has_avx2() ? transform_avx2 : transform_base)(plan, re, im, scale);
}

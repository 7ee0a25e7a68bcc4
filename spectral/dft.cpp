// Transforms of any length, term by term.  Several bins go side by side through the samples; each adds its terms in order.

#include <mensura/spectral.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "../internal/lanes.h"
#include "../internal/scratch.h"
#include "../internal/sincos.h"
#include "../internal/target.h"

using mensura::all, mensura::Lanes;

namespace {

using Size = std::size_t;

struct Complex {
    double re, im;
};

constexpr Size kBins = 8;                                       // side by side
using Indices = std::uint32_t __attribute__((vector_size(32)));  // one per bin
using PairOfBins = Lanes;                                       // re, im of one bin, re, im of the next

// exp(2 pi i k / n), or its conjugate for a sign of -1, at k = 0 .. n - 1; null when there is no memory.
mensura::Scratch<Complex> unit_circle(Size n, double sign) {
    auto circle = mensura::scratch<Complex>(n);
    if (!circle) return circle;
    for (Size k = 0; k < n; ++k) {
        const double angle = static_cast<double>(k) * 6.283185307179586 / static_cast<double>(n);
        const auto [sin, cos] = mensura::sincos_of(angle);
        circle[k] = {cos, sign * sin};
    }
    return circle;
}

struct RealSamples {
    const double *x;
};
LANES_INLINE PairOfBins term(const PairOfBins &w, RealSamples samples, Size t) { return w * all(samples.x[t]); }

struct ComplexSamples {
    const double *re, *im;
};
LANES_INLINE PairOfBins term(const PairOfBins &w, ComplexSamples samples, Size t) {
    const double im = samples.im[t];
    const Lanes swapped = __builtin_shufflevector(w, w, 1, 0, 3, 2);
    return w * all(samples.re[t]) + swapped * Lanes{-im, im, -im, im};
}

// sums[k] = sum of samples[t] circle[(k t) mod n] for k = 0 .. count - 1.
template <typename Samples>
LANES_INLINE void sum_bins(Samples samples, Size n, const Complex *circle, Complex *sums, Size count) {
    for (Size first = 0; first < count; first += kBins) {
        Indices step, index{};
        for (Size i = 0; i < kBins; ++i) step[i] = first + i < count ? static_cast<std::uint32_t>(first + i) : 0;
        PairOfBins sum[kBins / 2] = {};
        for (Size t = 0; t < n; ++t) {
            std::uint32_t at[kBins];
            std::memcpy(at, &index, sizeof at);
            for (Size pair = 0; pair < kBins / 2; ++pair) {
                const Complex &w = circle[at[2 * pair]], &v = circle[at[2 * pair + 1]];
                sum[pair] += term(PairOfBins{w.re, w.im, v.re, v.im}, samples, t);
            }
            const Indices next = index + step, wrapped = next - static_cast<std::uint32_t>(n);
            index = wrapped < next ? wrapped : next;  // below n, next - n is a huge number
        }
        std::memcpy(sums + first, sum, std::min(kBins, count - first) * sizeof(Complex));
    }
}

template <typename Samples>
void sum_bins_base(Samples samples, Size n, const Complex *circle, Complex *sums, Size count) {
    sum_bins(samples, n, circle, sums, count);
}
template <typename Samples>
TARGET_AVX2 void sum_bins_avx2(Samples samples, Size n, const Complex *circle, Complex *sums, Size count) {
    sum_bins(samples, n, circle, sums, count);
}

template <typename Samples>
void sum_of(Samples samples, Size n, const Complex *circle, Complex *sums, Size count) {
    (mensura::has_avx2() ? sum_bins_avx2<Samples> : sum_bins_base<Samples>)(samples, n, circle, sums, count);
}

}  // namespace

void DFT(double *re, double *im, int n, int dir) {
    if (n < 1 || dir < 0 || dir > 1) return;
    const auto size = static_cast<Size>(n);
    const auto circle = unit_circle(size, dir == 0 ? -1.0 : 1.0);
    const auto sums = mensura::scratch<Complex>(size);
    if (!circle || !sums) return;

    sum_of(ComplexSamples{re, im}, size, circle.get(), sums.get(), size);
    const double divisor = dir == 0 ? n : 1.0;
    for (Size k = 0; k < size; ++k) {
        re[k] = sums[k].re / divisor;
        im[k] = sums[k].im / divisor;
    }
}

void RealSigDFT(const double *x, double *outRe, double *outIm, int n) {
    if (n < 1) return;
    const auto size = static_cast<Size>(n), half = size / 2;
    const auto circle = unit_circle(size, -1.0);
    const auto sums = mensura::scratch<Complex>(half + 1);
    if (!circle || !sums) return;

    sum_of(RealSamples{x}, size, circle.get(), sums.get(), half + 1);
    for (Size k = 0; k <= half; ++k) {
        outRe[k] = sums[k].re / n;
        outIm[k] = sums[k].im / n;
    }
    for (Size k = 1; k < half; ++k) {
        outRe[size - k] = outRe[k];
        outIm[size - k] = -outIm[k];
    }
}

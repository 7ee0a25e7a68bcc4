// Several bins side by side through the samples; each adds its terms in order.

#include <cstdint>
#include <cstring>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "dft_kernel.h"

namespace mensura::spectral::MENSURA_TARGET {
namespace {

using Size = std::size_t;

constexpr Size kBins = 8;                                        // side by side
using Indices = std::uint32_t __attribute__((vector_size(32)));  // one per bin
using PairOfBins = Lanes;                                        // re, im of one bin, re, im of the next

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

template <typename Samples>
LANES_INLINE void sum_over(Samples samples, Size n, const Complex *circle, Complex *sums, Size count) {
    for (Size first = 0; first < count; first += kBins) {
        Indices step, index{};
        for (Size i = 0; i < kBins; ++i) step[i] = first + i < count ? static_cast<std::uint32_t>(first + i) : 0;
        PairOfBins sum[kBins / 2] = {};
        for (Size t = 0; t < n; ++t) {
            std::uint32_t at[kBins];
            std::memcpy(at, &index, sizeof at);
            for (Size pair = 0; pair < kBins / 2; ++pair) {
                const Complex w = circle[at[2 * pair]], v = circle[at[2 * pair + 1]];
                sum[pair] += term(__builtin_shufflevector(w, v, 0, 1, 2, 3), samples, t);
            }
            const Indices next = index + step, wrapped = next - static_cast<std::uint32_t>(n);
            index = wrapped < next ? wrapped : next;  // below n, next - n is a huge number
        }
        std::memcpy(sums + first, sum, (count - first < kBins ? count - first : kBins) * sizeof(Complex));
    }
}

}  // namespace

void sum_bins(const double *re, const double *im, Size n, const Complex *circle, Complex *sums, Size count) {
    if (im != nullptr)
        sum_over(ComplexSamples{re, im}, n, circle, sums, count);
    else
        sum_over(RealSamples{re}, n, circle, sums, count);
}

}  // namespace mensura::spectral::MENSURA_TARGET

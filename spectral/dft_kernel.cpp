// Several bins side by side run through the samples.  Each adds its own terms, in order.

#include <cstdint>
#include <cstring>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "dft_kernel.h"

namespace mensura::spectral::MENSURA_TARGET {
namespace {

constexpr std::size_t kBins = 8;                                 // bins side by side
using Indices = std::uint32_t __attribute__((vector_size(32)));  // of the circle, one for each bin
using PairOfBins = Lanes;                                        // re, im of one bin; re, im of the next

// Term t of two bins whose factors are w: w x[t].
struct RealSamples {
    const double *x;
};
LANES_INLINE PairOfBins term(const PairOfBins &w, RealSamples samples, std::size_t t) { return w * all(samples.x[t]); }

struct ComplexSamples {
    const double *re, *im;
};
LANES_INLINE PairOfBins term(const PairOfBins &w, ComplexSamples samples, std::size_t t) {
    const double im = samples.im[t];
    const Lanes swapped = __builtin_shufflevector(w, w, 1, 0, 3, 2);
    return w * all(samples.re[t]) + swapped * Lanes{-im, im, -im, im};
}

// The index of bin k grows by k from sample to sample, modulo n.  Where the last bins do not fill a group of kBins, bins
// of index 0 run along and are not stored.
template <typename Samples>
LANES_INLINE void sum_over(Samples samples, std::size_t n, const Complex *circle, Complex *sums, std::size_t count) {
    for (std::size_t first = 0; first < count; first += kBins) {
        Indices increment, index{};
        for (std::size_t i = 0; i < kBins; ++i)
            increment[i] = first + i < count ? static_cast<std::uint32_t>(first + i) : 0;
        PairOfBins sum[kBins / 2] = {};
        for (std::size_t t = 0; t < n; ++t) {
            std::uint32_t at[kBins];
            std::memcpy(at, &index, sizeof at);
            for (std::size_t pair = 0; pair < kBins / 2; ++pair) {
                const Complex w = circle[at[2 * pair]], v = circle[at[2 * pair + 1]];
                sum[pair] += term(joined(w, v), samples, t);
            }
            const Indices next = index + increment, wrapped = next - static_cast<std::uint32_t>(n);
            index = wrapped < next ? wrapped : next;  // where next < n, the unsigned next - n is larger than next
        }
        std::memcpy(sums + first, sum, (count - first < kBins ? count - first : kBins) * sizeof(Complex));
    }
}

}  // namespace

void sum_bins(const double *re, const double *im, std::size_t n, const Complex *circle, Complex *sums,
              std::size_t count) {
    if (im != nullptr)
        sum_over(ComplexSamples{re, im}, n, circle, sums, count);
    else
        sum_over(RealSamples{re}, n, circle, sums, count);
}

}  // namespace mensura::spectral::MENSURA_TARGET

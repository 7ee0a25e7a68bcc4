// Transforms of any length, by the definition: every bin is a sum over all samples.

#include "dft.h"

#include <mensura/spectral.h>

#include <cstddef>

#include "../internal/constants.h"
#include "../internal/scratch.h"
#include "../internal/sincos.h"
#include "dft_kernel.h"

using namespace mensura::spectral;

namespace {

// exp(sign 2 pi i k / n) at k = 0 .. n - 1; null when there is no memory.
mensura::Scratch<Complex> unit_circle(std::size_t n, double sign) {
    auto circle = mensura::scratch<Complex>(n);
    if (!circle) return circle;
    for (std::size_t k = 0; k < n; ++k) {
        const double angle = static_cast<double>(k) * mensura::kTwoPi / static_cast<double>(n);
        const auto [sin, cos] = mensura::sincos_of(angle);
        circle[k] = Complex{cos, sign * sin};
    }
    return circle;
}

}  // namespace

bool mensura::spectral::dft(double *re, double *im, int n, int dir) {
    if (dir < 0 || dir > 1) return false;
    if (n < 1) return true;
    const auto size = static_cast<std::size_t>(n);
    const auto circle = unit_circle(size, dir == 0 ? -1.0 : 1.0);
    const auto sums = mensura::scratch<Complex>(size);
    if (!circle || !sums) return false;

    sum_bins(re, im, size, circle.get(), sums.get(), size);
    const double divisor = dir == 0 ? n : 1.0;
    for (std::size_t k = 0; k < size; ++k) {
        re[k] = sums[k][0] / divisor;
        im[k] = sums[k][1] / divisor;
    }
    return true;
}

void DFT(double *re, double *im, int n, int dir) { static_cast<void>(dft(re, im, n, dir)); }

void RealSigDFT(const double *x, double *outRe, double *outIm, int n) {
    if (n < 1) return;
    const auto size = static_cast<std::size_t>(n), half = size / 2;
    const auto circle = unit_circle(size, -1.0);
    const auto sums = mensura::scratch<Complex>(half + 1);
    if (!circle || !sums) return;

    sum_bins(x, nullptr, size, circle.get(), sums.get(), half + 1);
    for (std::size_t k = 0; k <= half; ++k) {
        outRe[k] = sums[k][0] / n;
        outIm[k] = sums[k][1] / n;
    }
    // Bins n - k are the conjugates of bins k.  k stops below floor(n / 2), so an odd n leaves bin (n + 1) / 2 out.
    for (std::size_t k = 1; k < half; ++k) {
        outRe[size - k] = outRe[k];
        outIm[size - k] = -outIm[k];
    }
}

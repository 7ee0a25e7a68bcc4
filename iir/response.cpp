// The frequency response of a cascade, four frequencies at a time.

#include <mensura/iir.h>

#include <algorithm>
#include <cstddef>

#include "../internal/constants.h"
#include "../internal/lanes.h"
#include "../internal/sincos.h"
#include "../internal/target.h"

using mensura::all, mensura::ComplexLanes, mensura::kLanes, mensura::Lanes;

namespace {

constexpr double kLeast = 1e-12;        // magnitude of a denominator
constexpr double kLeastSquare = 1e-24;  // the least double whose square root is not below that: spares the root

// (c0 + c1 z^-1) + c2 z^-2
LANES_INLINE ComplexLanes quadratic(double c0, double c1, double c2, const ComplexLanes &z1, const ComplexLanes &z2) {
    const ComplexLanes linear{all(c0) + z1.re * c1, 0.0 + z1.im * c1};
    return linear + ComplexLanes{z2.re * c2, z2.im * c2};
}

LANES_INLINE ComplexLanes quotient(const ComplexLanes &a, ComplexLanes b) {
    Lanes square = b.re * b.re + b.im * b.im;
    const auto tiny = square < kLeastSquare;
    b = {tiny ? all(kLeast) : b.re, tiny ? all(0.0) : b.im};
    square = tiny ? all(kLeast * kLeast) : square;
    return {(a.re * b.re + a.im * b.im) / square, (a.im * b.re - a.re * b.im) / square};
}

// At the frequencies w = (first + 0, 1, 2, 3) pi / points.
LANES_INLINE ComplexLanes response(const IIRCoeffs &c, std::size_t sections, std::size_t first, double points) {
    ComplexLanes z1{};
    for (std::size_t i = 0; i < kLanes; ++i) {
        const auto [sin, cos] = mensura::sincos_of(static_cast<double>(first + i) * mensura::kPi / points);
        z1.re[i] = cos;
        z1.im[i] = -sin;
    }
    const ComplexLanes z2 = z1 * z1;
    ComplexLanes h{all(1.0), all(0.0)};
    for (std::size_t k = 0; k < sections; ++k) {
        const ComplexLanes scaled{h.re * c.a0[k], h.im * c.a0[k]};
        h = quotient(scaled * quadratic(c.b0[k], c.b1[k], c.b2[k], z1, z2), quadratic(1.0, c.a1[k], c.a2[k], z1, z2));
    }
    return h;
}

LANES_INLINE void fill_grid(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points) {
    for (std::size_t i = 0; i < points; i += kLanes) {
        const ComplexLanes h = response(c, sections, i, static_cast<double>(points));
        const std::size_t bytes = std::min(kLanes, points - i) * sizeof(double);
        std::memcpy(re + i, &h.re, bytes);
        std::memcpy(im + i, &h.im, bytes);
    }
}

void fill_grid_base(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points) {
    fill_grid(c, sections, re, im, points);
}
TARGET_AVX2 void fill_grid_avx2(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points) {
    fill_grid(c, sections, re, im, points);
}

}  // namespace

void IIRFreqResponse(IIRCoeffs coeffs, int numSections, double *re, double *im, int numPoints) {
    const auto sections = static_cast<std::size_t>(std::clamp(numSections, 0, static_cast<int>(MAX_IIR_SECTIONS)));
    const auto points = static_cast<std::size_t>(std::max(numPoints, 0));
    (mensura::has_avx2() ? fill_grid_avx2 : fill_grid_base)(coeffs, sections, re, im, points);
}

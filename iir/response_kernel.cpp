// The response of a cascade at four values of z^-1 side by side.

#include <cstddef>
#include <cstring>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "response_kernel.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

constexpr double kSmallest = 1e-12;        // magnitude of a denominator; below it, the denominator is 1e-12
constexpr double kSmallestSquare = 1e-24;  // the smallest double whose square root reaches kSmallest: spares the root

// (c0 + c1 z^-1) + c2 z^-2
LANES_INLINE ComplexLanes quadratic(double c0, double c1, double c2, const ComplexLanes &z1, const ComplexLanes &z2) {
    const ComplexLanes linear{all(c0) + z1.re * c1, 0.0 + z1.im * c1};
    return linear + ComplexLanes{z2.re * c2, z2.im * c2};
}

LANES_INLINE ComplexLanes quotient(const ComplexLanes &a, ComplexLanes b) {
    Lanes square = b.re * b.re + b.im * b.im;
    const auto tiny = square < kSmallestSquare;
    b = {tiny ? all(kSmallest) : b.re, tiny ? all(0.0) : b.im};
    square = tiny ? all(kSmallest * kSmallest) : square;
    return {(a.re * b.re + a.im * b.im) / square, (a.im * b.re - a.re * b.im) / square};
}

LANES_INLINE ComplexLanes response(const IIRCoeffs &c, std::size_t sections, const ComplexLanes &z1) {
    const ComplexLanes z2 = z1 * z1;
    ComplexLanes h{all(1.0), all(0.0)};
    for (std::size_t k = 0; k < sections; ++k) {
        const ComplexLanes scaled{h.re * c.a0[k], h.im * c.a0[k]};
        h = quotient(scaled * quadratic(c.b0[k], c.b1[k], c.b2[k], z1, z2), quadratic(1.0, c.a1[k], c.a2[k], z1, z2));
    }
    return h;
}

}  // namespace

void respond(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points) {
    const auto respond_to = [&](std::size_t i, std::size_t count) LANES_LAMBDA {
        ComplexLanes z1{};
        std::memcpy(&z1.re, re + i, count * sizeof(double));
        std::memcpy(&z1.im, im + i, count * sizeof(double));
        const ComplexLanes h = response(c, sections, z1);
        std::memcpy(re + i, &h.re, count * sizeof(double));
        std::memcpy(im + i, &h.im, count * sizeof(double));
    };
    std::size_t i = 0;
    for (; i + kLanes <= points; i += kLanes) respond_to(i, kLanes);
    if (i < points) respond_to(i, points - i);
}

}  // namespace mensura::iir::MENSURA_TARGET

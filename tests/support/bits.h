// Comparison to the last bit, for tests and fuzz targets.
#pragma once

#include <mensura/complex.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <concepts>
#include <ranges>

namespace support {

// The same bits, so that 0 and -0 differ; any NaN is like any other, because its sign and payload are not promised.
template <std::floating_point Real>
bool same_bits(Real a, std::type_identity_t<Real> b) {
    return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

template <std::floating_point Real>
bool same_bits(std::complex<Real> a, std::complex<Real> b) {
    return same_bits(a.real(), b.real()) && same_bits(a.imag(), b.imag());
}

inline bool same_bits(CplxD a, CplxD b) { return same_bits(a.re, b.re) && same_bits(a.im, b.im); }

// The same number of elements, and the same bits in each.
bool same_bits(const std::ranges::sized_range auto &a, const std::ranges::sized_range auto &b) {
    return std::ranges::equal(a, b, [](const auto &x, const auto &y) { return same_bits(x, y); });
}

}  // namespace support

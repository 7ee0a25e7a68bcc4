// The twiddle factors exp(2 pi i k / n): the eighth that comes from libm, the other entries being its mirror images.
#pragma once

#include <cstddef>

#include "../internal/constants.h"
#include "../internal/sincos.h"

namespace mensura::spectral {

// Calls entry(i, cos, sin) for i = 1 .. n/8, of the angles 2 pi i / n; at an eighth of the circle the values are exact.
template <typename Entry>
void for_first_eighth(std::size_t n, Entry entry) {
    constexpr double kSqrtHalf = 0.7071067811865476;
    const double step = kTwoPi / static_cast<double>(n);
    for (std::size_t i = 1; i < n / 8; ++i) {
        const auto [sin, cos] = sincos_of(static_cast<double>(i) * step);
        entry(i, cos, sin);
    }
    entry(n / 8, kSqrtHalf, kSqrtHalf);
}

}  // namespace mensura::spectral

// The twiddle factors exp(2 pi i k / n): the eighth that is computed, the other entries being its mirror images.
#pragma once

#include <cstddef>

#include "../internal/constants.h"
#include "../internal/sincos.h"
#include "circle_table.h"

namespace mensura::spectral {

// Calls entry(i, cos, sin) for i = 1 .. n/8, of the angles 2 pi i / n.  Angles of the table have the same bits in all
// circles, and so their values come from it; libm computes those between them.
template <typename Entry>
void for_first_eighth(std::size_t n, Entry entry) {
    const std::size_t between = n > kCirclePoints ? n / kCirclePoints : 1;
    const std::size_t stride = n < kCirclePoints ? kCirclePoints / n : 1;
    const double step = kTwoPi / static_cast<double>(n);
    const CosSin *in_table = kCircle;
    for (std::size_t i = 1; i <= n / 8; ++i) {
        if ((i & (between - 1)) == 0) {  // n is a power of two
            in_table += stride;
            entry(i, in_table->cos, in_table->sin);
        } else {
            const auto [sin, cos] = sincos_of(static_cast<double>(i) * step);
            entry(i, cos, sin);
        }
    }
}

}  // namespace mensura::spectral

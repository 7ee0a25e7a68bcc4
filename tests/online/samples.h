// Samples for the tests of streaming filters.
#pragma once

#include <cmath>

#include "support/noise.h"

namespace samples {

// Up to 8 in size, a product so that sums are rounded; rarely one that spreads, overflows or vanishes.
inline double sample(support::Noise &noise) {
    constexpr double kSpecial[] = {-0.0, 0.0, 5e-324, 1.7e308, -1.7e308, HUGE_VAL, -HUGE_VAL, NAN};
    return noise.one_in(512) ? noise.pick(kSpecial) : 8 * noise() * noise();
}

constexpr int kLengths[] = {1, 2, 3, 4, 5, 8, 31, 2000};  // of averages

}  // namespace samples

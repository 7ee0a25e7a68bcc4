// The fast transform on blocks of four bins.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::spectral {

using Bins = ComplexLanes;  // four neighbouring bins, or twiddle factors

// What two stages need at four neighbouring bins k of sub-transforms of m: exp(-2 pi i k / 2m) and exp(-2 pi i k / 4m).
struct Factors {
    Bins once, twice;
};

// One transform of n >= 16 points.
struct Plan {
    std::size_t n;
    Bins *blocks;      // n / 4
    Factors *factors;  // a table for every pass that joins four groups of q blocks, of q entries: q = 1, 4, 16, ... or
                       // 2, 8, 32, ..., up to n / 16; the caller fills `twice` of the last one
    double zero;       // imaginary part of the factor 1; -0 in the inverse, whose +0 the exchange of re and im turns

    [[nodiscard]] LANES_INLINE std::size_t count() const { return n / kLanes; }
    [[nodiscard]] LANES_INLINE Factors *factors_of(std::size_t q) const { return factors + (q - 1) / 3; }
};

// The forward transform of re and im, times scale, in place.
using TransformPlan = void(const Plan &plan, double *re, double *im, double scale);
MENSURA_KERNEL(TransformPlan, transform);

}  // namespace mensura::spectral

// The fast transform on vectors of four bins.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::spectral {

using Bins = ComplexLanes;  // a vector: four neighbouring bins, or the twiddle factors of four bins

// The twiddle factors of two stages at four neighbouring bins k.  The first stage joins transforms of m bins to
// transforms of 2 m, the second those to transforms of 4 m:
//     w2 = exp(-2 pi i k / 2m)        w4 = exp(-2 pi i k / 4m)
struct Twiddles {
    Bins w2, w4;
};

// One transform of n >= 16 points, in n / 4 vectors.
//
// A pass runs two stages: it joins four transforms of q vectors to one of 4 q.  Passes have q = 1, 4, 16, ..., n / 16;
// where n / 16 is no power of four, one stage runs on its own first, and they have q = 2, 8, 32, ..., n / 16.  The
// table of a pass has q entries; the tables lie one after the other.
struct Plan {
    std::size_t n;
    Bins *bins;
    Twiddles *twiddles;  // the caller fills w4 of the last pass
    double zero;  // imaginary part of the twiddle factor 1: +0, and -0 in the inverse, whose exchange of re and im
                  // changes its sign

    [[nodiscard]] LANES_INLINE std::size_t vectors() const { return n / kLanes; }
    [[nodiscard]] LANES_INLINE Twiddles *twiddles_of(std::size_t q) const { return twiddles + (q - 1) / 3; }
};

// The forward transform of re and im, multiplied by scale, in place.
using TransformPlan = void(const Plan &plan, double *re, double *im, double scale);
MENSURA_KERNEL(TransformPlan, transform);

}  // namespace mensura::spectral

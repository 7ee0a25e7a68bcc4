// The fast transform on vectors of four bins.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "circle_table.h"

namespace mensura::spectral {

using Bins = ComplexLanes;  // a vector: four neighbouring bins, or the twiddle factors of four bins

// The twiddle factors of two stages at four neighbouring bins k.  The first stage joins transforms of m bins to
// transforms of 2 m, the second those to transforms of 4 m:
//     w2 = exp(-2 pi i k / 2m)        w4 = exp(-2 pi i k / 4m)
struct Twiddles {
    Bins w2, w4;
};

// A pass runs two stages: it joins four transforms of q vectors to one of 4 q.  Its factors are q entries, which depend
// on q alone.  Those of the passes up to 4096 points are data, one pass after the other: 64 KB.
inline constexpr std::size_t kReadyVectors = 256;
LANES_INLINE constexpr std::size_t ready_before(std::size_t q) { return (q - 1) / 3; }
struct ReadyFactors {
    Twiddles even[ready_before(4 * 256)];  // q = 1, 4, 16, 64, 256
    Twiddles odd[ready_before(4 * 128)];   // q = 2, 8, 32, 128
};
extern const ReadyFactors kReady;

// One transform of n points, in n / 4 vectors.  From n = 16 on passes have q = 1, 4, 16, ..., n / 16; where n / 16 is no
// power of four, one stage runs on its own first, and they have q = 2, 8, 32, ..., n / 16.
struct Plan {
    std::size_t n;
    Bins *bins;
    const CosSin *eighths[3];  // of the circles of n, n / 4 and n / 16 points, where they are finer than the table
    double zero;  // imaginary part of the twiddle factor 1: +0, and -0 in the inverse, whose exchange of re and im
                  // changes its sign
    const CosSin *table = kCircle;  // kernels do not name it, because the object of one must not define what others use

    [[nodiscard]] LANES_INLINE std::size_t vectors() const { return n / kLanes; }
};

// The forward transform of re and im, multiplied by scale, in place.
using TransformPlan = void(const Plan &plan, double *re, double *im, double scale);
MENSURA_KERNEL(TransformPlan, transform);

}  // namespace mensura::spectral

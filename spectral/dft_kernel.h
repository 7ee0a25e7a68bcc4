// Sums over a circle of n points.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::spectral {

using Complex = double __attribute__((vector_size(16)));  // re, im

// sums[k] = sum of x[t] circle[(k t) mod n], t = 0 .. n - 1, for k = 0 .. count - 1, count <= n; im null: real samples.
using SumBins = void(const double *re, const double *im, std::size_t n, const Complex *circle, Complex *sums,
                     std::size_t count);
MENSURA_KERNEL(SumBins, sum_bins);

}  // namespace mensura::spectral

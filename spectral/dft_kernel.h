// The sums of a discrete Fourier transform.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::spectral {

using Complex = Pair;  // re, im

// sums[k] = x[0] circle[0] + x[1] circle[k mod n] + ... + x[n-1] circle[(n-1) k mod n], added in this order, for
// k = 0 .. count - 1.  x[t] is re[t] + i im[t], or re[t] where im is null; circle has n entries, and count <= n < 2^31.
using SumBins = void(const double *re, const double *im, std::size_t n, const Complex *circle, Complex *sums,
                     std::size_t count);
MENSURA_KERNEL(SumBins, sum_bins);

}  // namespace mensura::spectral

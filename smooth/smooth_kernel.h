// The inside of a smoothed record.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::smooth {

// y[i] from the window of 2 h + 1 samples that is centred on x[i], for h <= i < n - h; n is at least 2 h + 1.  The
// smoothers of degree 2 have the weights of degree 3 there, so they share the kernel.
using Inside = void(const double *x, double *y, std::size_t n);
MENSURA_KERNEL(Inside, mean3);
MENSURA_KERNEL(Inside, mean5);
MENSURA_KERNEL(Inside, mean7);
MENSURA_KERNEL(Inside, mean9);
MENSURA_KERNEL(Inside, mean11);
MENSURA_KERNEL(Inside, cubic5);
MENSURA_KERNEL(Inside, cubic7);

}  // namespace mensura::smooth

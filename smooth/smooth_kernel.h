// The inside of a smoothed record.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::smooth {

// y[i], h <= i < n - h, from the windows that are centred on i; n is not less than the window.  Quadratics and cubics
// of one window have the same weights there.
using Inside = void(const double *x, double *y, std::size_t n);
MENSURA_KERNEL(Inside, mean3);
MENSURA_KERNEL(Inside, mean5);
MENSURA_KERNEL(Inside, mean7);
MENSURA_KERNEL(Inside, mean9);
MENSURA_KERNEL(Inside, mean11);
MENSURA_KERNEL(Inside, cubic5);
MENSURA_KERNEL(Inside, cubic7);

}  // namespace mensura::smooth

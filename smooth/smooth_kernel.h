// The inside of a smoothed record.
#pragma once

#include <cstddef>

namespace mensura::smooth {

// y[i], h <= i < n - h, from the windows that are centred on i; n is not less than the window.  Quadratics and cubics
// of one window have the same weights there.
using Inside = void(const double *x, double *y, std::size_t n);
namespace baseline {
Inside mean3, mean5, mean7, mean9, mean11, cubic5, cubic7;
}
namespace avx2 {
Inside mean3, mean5, mean7, mean9, mean11, cubic5, cubic7;
}

}  // namespace mensura::smooth

// The derivative inside a record.
#pragma once

#include <cstddef>

namespace mensura::online {

// dx[i] = (x[i+1] - x[i-1]) / span for 0 < i < n - 1.
using DifferenceInside = void(const double *x, double *dx, std::size_t n, double span);
namespace baseline {
DifferenceInside difference_inside;
}
namespace avx2 {
DifferenceInside difference_inside;
}

}  // namespace mensura::online

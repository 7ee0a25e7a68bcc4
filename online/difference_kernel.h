// The derivative inside a record.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::online {

// dx[i] = (x[i+1] - x[i-1]) / span for 0 < i < n - 1.
using DifferenceInside = void(const double *x, double *dx, std::size_t n, double span);
MENSURA_KERNEL(DifferenceInside, difference_inside);

}  // namespace mensura::online

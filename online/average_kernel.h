// The sums of moving averages, several channels at once.
#pragma once

#include <mensura/online.h>

#include <cstddef>

#include "../internal/target.h"

namespace mensura::online {

constexpr std::size_t kMostTogether = MOVING_AVERAGE_CHANNELS;

// sums[c] = 0 + s[c].Buffer[0] + s[c].Buffer[1] + ..., in this order, for `count` channels, 1 to kMostTogether, whose
// windows have the same length.
using SumWindows = void(const MovingAverageOnline *s, std::size_t count, std::size_t length, double *sums);
MENSURA_KERNEL(SumWindows, sum_windows);

}  // namespace mensura::online

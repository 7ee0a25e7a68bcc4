// How far the settings of a request go.  The orders of the families are in iir/proto/limits.h.
#pragma once

#include "../iir/proto/limits.h"

namespace mensura::sos {

using iir::Range;

// In dB, of all passes together.
inline constexpr Range kLevelRange = {-200.0, 0.0};  // both excluded
inline constexpr Range kRippleRange = {0.0001, 10.0};
inline constexpr Range kStopRange = {10.0, 200.0};
inline constexpr Range kGainRange = {-200.0, 200.0};
using iir::kGammaRange;

// False for NaN.
constexpr bool lies_in(Range range, double x) { return x >= range.least && x <= range.most; }
constexpr bool lies_inside(Range range, double x) { return x > range.least && x < range.most; }

}  // namespace mensura::sos

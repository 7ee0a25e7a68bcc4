// Multiples of pi, as the doubles nearest to them.  They are written out, so that results do not depend on the M_PI of a
// platform.
#pragma once

namespace mensura {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;
inline constexpr double kQuarterPi = 0.7853981633974483;

}  // namespace mensura

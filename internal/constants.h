// The circle constants of the library: doubles, so that results hang on their rounding and not on a platform's M_PI.
#pragma once

namespace mensura {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;
inline constexpr double kQuarterPi = 0.7853981633974483;

}  // namespace mensura

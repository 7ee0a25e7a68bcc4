// The screen of the search for a corner: see corner.cpp.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::iir {

// H(s) = product of (num2 s^2 + num1 s + num0) / (den2 s^2 + den1 s + den0) over the sections.
struct AnalogCascade {
    std::size_t sections;
    double *num2, *num1, *num0, *den2, *den1, *den0;
};

inline constexpr double kCornerLevel = 0.7071;      // of the magnitude at DC
inline constexpr double kGridStep = 0.001953125;    // 1/512 rad/s
inline constexpr int kLastPoint = 5999;             // of the grid
inline constexpr int kStretchesAtOnce = 8;          // of the grid, that the screen takes; some may lie beyond its end
inline constexpr int kLongestStretch = 64;          // points
inline constexpr double kSmallestProduct = 1e-100;  // smaller ones are left to the exact evaluation

// The first point from `point` on at which |g H(jw)| is not certain to be above the corner level, or one beyond the last;
// and whether it is certain to be below the level there.
struct ScreenedPoint {
    int point;
    bool below;
};
using ScreenPoints = ScreenedPoint(const AnalogCascade &c, double g, int point);
MENSURA_KERNEL(ScreenPoints, screen_points);

}  // namespace mensura::iir

// The screen of the search for a corner: |H|^2 in real arithmetic, eight points of the grid at a time.

#include "corner_kernel.h"

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

constexpr std::size_t kVectors = kPointsAtOnce / kLanes;
constexpr double kMargin = 1e-9;  // corner.cpp has the reason
constexpr double kLevelSquared = kCornerLevel * kCornerLevel * (1 + kMargin);

struct Points {
    Lanes v[kVectors];
};

// products *= |c2 s^2 + c1 s + c0|^2 at s = jw, over the sections.  The two sections of a conjugate pair are equal
// and neighbours: the square is then squared.
LANES_INLINE void multiply_by_squares(Points &products, const Points &w, std::size_t sections, const double *c2,
                                      const double *c1, const double *c0) {
    for (std::size_t k = 0; k < sections; ++k) {
        const bool twice = k + 1 < sections && c2[k] == c2[k + 1] && c1[k] == c1[k + 1] && c0[k] == c0[k + 1];
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Lanes re = c0[k] - c2[k] * (w.v[i] * w.v[i]), im = c1[k] * w.v[i];
            const Lanes square = re * re + im * im;
            products.v[i] *= twice ? square * square : square;
        }
        if (twice) ++k;
    }
}

// How many points from `point` on are certain to be above the corner level.
LANES_INLINE int points_above(const AnalogCascade &c, double g, int point) {
    Points w, num, den;
    for (std::size_t i = 0; i < kVectors; ++i) {
        const double first = point + static_cast<int>(i * kLanes);
        w.v[i] = Lanes{first, first + 1, first + 2, first + 3} * kGridStep;
        num.v[i] = all(g * g);
        den.v[i] = all(1.0);
    }
    multiply_by_squares(num, w, c.sections, c.num2, c.num1, c.num0);
    multiply_by_squares(den, w, c.sections, c.den2, c.den1, c.den0);
    int above = 0;
    for (std::size_t i = 0; i < kVectors; ++i) {
        const LaneBits certain =
            (num.v[i] > kLevelSquared * den.v[i]) & (num.v[i] >= kSmallestProduct) & (den.v[i] >= kSmallestProduct);
        for (std::size_t lane = 0; lane < kLanes; ++lane, ++above)
            if (certain[lane] == 0) return above;
    }
    return above;
}

}  // namespace

int first_doubtful_point(const AnalogCascade &c, double g, int point) {
    while (point <= kLastPoint) {
        const int above = points_above(c, g, point);
        point += above;
        if (above < kPointsAtOnce) break;
    }
    return point;
}

}  // namespace mensura::iir::MENSURA_TARGET

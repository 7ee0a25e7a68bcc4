// The screen of the search for a corner: bounds of |H|^2 on eight stretches of the grid at a time.

#include "corner_kernel.h"

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

constexpr std::size_t kVectors = kStretchesAtOnce / kLanes;
constexpr int kShortening = 4;    // of the stretches where one may reach the level; the shortest ones are single points
constexpr double kMargin = 1e-9;  // corner.cpp has the reason
constexpr double kLevelSquared = kCornerLevel * kCornerLevel;
constexpr double kAbove = kLevelSquared * (1 + kMargin), kBelow = kLevelSquared * (1 - kMargin);

// The frequencies of the first and the last point of each stretch.
struct Stretches {
    Lanes first[kVectors], last[kVectors];
};

// Of a product, on each stretch.
struct Bounds {
    Lanes lower[kVectors], upper[kVectors];
};

enum class Length { kOnePoint, kLong };

LANES_INLINE Stretches stretches_from(int point, int length) {
    Stretches w;
    for (std::size_t i = 0; i < kVectors; ++i) {
        const double start = point + static_cast<int>(i * kLanes) * length;
        const Lanes first = Lanes{0, 1, 2, 3} * static_cast<double>(length) + start;
        w.first[i] = first * kGridStep;
        w.last[i] = (first + static_cast<double>(length - 1)) * kGridStep;
    }
    return w;
}

// products *= |c2 s^2 + c1 s + c0|^2 at s = jw, over the sections.  On a stretch the real part is between its values at
// both ends, the imaginary part grows, and the square, which is convex in w^2, is at most the larger one at the ends.
// The two sections of a conjugate pair are equal and neighbours: the bounds are then squared.
template <Length length>
LANES_INLINE void multiply_by_squares(Bounds &products, const Stretches &w, std::size_t sections, const double *c2,
                                      const double *c1, const double *c0) {
    for (std::size_t k = 0; k < sections; ++k) {
        if (c2[k] == 0 && c1[k] == 0 && c0[k] == 1) continue;
        const bool twice = k + 1 < sections && c2[k] == c2[k + 1] && c1[k] == c1[k + 1] && c0[k] == c0[k + 1];
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Lanes re = c0[k] - c2[k] * (w.first[i] * w.first[i]), im = c1[k] * w.first[i];
            const Lanes re2 = re * re, im2 = im * im;
            Lanes lower = re2 + im2, upper = lower;
            if (length == Length::kLong) {
                const Lanes last_re = c0[k] - c2[k] * (w.last[i] * w.last[i]), last_im = c1[k] * w.last[i];
                const Lanes last_re2 = last_re * last_re, smaller = re2 < last_re2 ? re2 : last_re2;
                lower = ((re < 0.0) == (last_re < 0.0) ? smaller : all(0.0)) + im2;
                upper = larger(upper, last_re2 + last_im * last_im);
            }
            products.lower[i] *= twice ? lower * lower : lower;
            products.upper[i] *= twice ? upper * upper : upper;
        }
        if (twice) ++k;
    }
}

// How many of the stretches from one point on are certain to be above the corner level, and whether the next one, which
// is not, is certain to be below it.
struct Verdict {
    int above;
    bool then_below;
};

template <Length length>
LANES_INLINE Verdict judge(const AnalogCascade &c, double g, int point, int points) {
    const Stretches w = stretches_from(point, points);
    Bounds num, den;
    for (std::size_t i = 0; i < kVectors; ++i) {
        num.lower[i] = num.upper[i] = all(g * g);
        den.lower[i] = den.upper[i] = all(1.0);
    }
    multiply_by_squares<length>(num, w, c.sections, c.num2, c.num1, c.num0);
    multiply_by_squares<length>(den, w, c.sections, c.den2, c.den1, c.den0);
    int above = 0;
    for (std::size_t i = 0; i < kVectors; ++i) {
        const LaneBits in_range = (num.lower[i] >= kSmallestProduct) & (den.lower[i] >= kSmallestProduct);
        const LaneBits is_above = in_range & (num.lower[i] > kAbove * den.upper[i]);
        const LaneBits is_below = in_range & (num.upper[i] < kBelow * den.lower[i]);
        for (std::size_t lane = 0; lane < kLanes; ++lane, ++above)
            if (is_above[lane] == 0) return {above, is_below[lane] != 0};
    }
    return {above, false};
}

}  // namespace

ScreenedPoint screen_points(const AnalogCascade &c, double g, int point) {
    Verdict v{};
    for (int length = kLongestStretch; length >= 1; length /= kShortening) {
        v.above = kStretchesAtOnce;
        for (; v.above == kStretchesAtOnce && point <= kLastPoint; point += v.above * length)
            v = length == 1 ? judge<Length::kOnePoint>(c, g, point, 1) : judge<Length::kLong>(c, g, point, length);
    }
    return {point, v.then_below};
}

}  // namespace mensura::iir::MENSURA_TARGET

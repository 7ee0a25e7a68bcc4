// The gain of a filter along the unit circle, at points so close together that no peak, notch or ripple falls between
// two of them.  Frequencies are in cycles a sample, 0 .. 1/2.
#pragma once

#include <mensura/sos.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "arguments.h"
#include "quadratic.h"

namespace mensura::sos {

// |H|.
class Gain {
  public:
    Gain(const double *sos, int sections) : begin_(sos), end_(end_of(sos, sections)) {}

    double operator()(double cycles) const {
        const Angle theta(cycles);
        double gain = 1;
        for (const double *s = begin_; s != end_; s += kNumbers)
            gain *= std::sqrt(Turned(numerator(s), theta).norm() / Turned(denominator(s), theta).norm());
        return gain;
    }

  private:
    const double *begin_, *end_;
};

// Calls f(root, is_pole) for the poles and zeros of a filter, one of each conjugate pair.
template <typename Function>
void visit_roots(const double *sos, int sections, Function f) {
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers)
        for (const bool is_pole : {false, true}) {
            const Roots found = roots(is_pole ? denominator(s) : numerator(s));
            for (std::size_t i = 0; i < found.count; ++i)
                if (found.z[i].im >= 0) f(found.z[i], is_pole);
        }
}

// Where the poles and zeros lie, seen from the unit circle.
class Landmarks {
  public:
    struct Landmark {
        double at, height;  // the frequency of its angle, and its distance from the circle in the same unit
        bool is_pole;

        double squared_distance(double x, double y = 0) const {
            return (at - x) * (at - x) + (height - y) * (height - y);
        }
    };

    Landmarks(const double *sos, int sections)
        : sos_(sos), sections_(sections), stored_(sections <= MENSURA_SOS_MAX_SECTIONS) {
        if (stored_) compute([this](const Landmark &mark) { marks_[count_++] = mark; });
    }

    template <typename Function>
    void visit(Function f) const {
        if (!stored_) return compute(f);
        for (std::size_t i = 0; i < count_; ++i) f(marks_[i]);
    }

  private:
    template <typename Function>
    void compute(Function f) const {
        visit_roots(sos_, sections_, [f](const Root &z, bool is_pole) {
            const double modulus = z.modulus();
            if (std::isfinite(modulus)) f({std::atan2(z.im, z.re) / kTwoPi, std::abs(1 - modulus) / kTwoPi, is_pole});
        });
    }

    const double *sos_;
    int sections_;
    bool stored_;  // of longer filters they are computed at each visit
    std::size_t count_ = 0;
    std::array<Landmark, 4 * MENSURA_SOS_MAX_SECTIONS> marks_;
};

// The steps from one frequency to the next.  The gain changes at the scale of the distance to the nearest pole; for a
// zero by itself, however near, it falls on one side and rises on the other, so zeros count from the second one on.
// Zeros that lie closer together than the nearest of them is count as one.  No step passes a pole or zero: the walk
// comes by at its own frequency.
class Steps {
  public:
    explicit Steps(const Landmarks &marks) : marks_(marks) {}

    double size(double x) const {
        constexpr double kFraction = 0.1, kSmallest = 1e-12 / kTwoPi;
        constexpr double kOrigin = 1 / (kTwoPi * kTwoPi);  // the square of the distance to z = 0
        constexpr double kFar = std::numeric_limits<double>::infinity();
        double pole = kOrigin, zero = kFar;
        Landmarks::Landmark nearest{};
        marks_.visit([&](const Landmarks::Landmark &mark) {
            const double squared = mark.squared_distance(x);
            if (mark.is_pole) pole = std::min(pole, squared);
            if (mark.is_pole || squared >= zero) return;
            zero = squared;
            nearest = mark;
        });
        if (zero < pole)
            marks_.visit([&](const Landmarks::Landmark &mark) {
                if (!mark.is_pole && mark.squared_distance(nearest.at, nearest.height) > zero)
                    pole = std::min(pole, mark.squared_distance(x));
            });
        return kFraction * std::max(std::sqrt(pole), kSmallest);
    }

    double next(double x, double last) const {
        double to = std::min(x + size(x), last);
        marks_.visit([&](const Landmarks::Landmark &mark) {
            if (mark.at > x) to = std::min(to, mark.at);
        });
        return to;
    }

  private:
    const Landmarks &marks_;
};

struct Point {
    double at, value;
};

// Calls f(before, point, after) for the points from `first` to `last` with their neighbours on both sides.
template <typename Function>
void walk(const Gain &gain, const Landmarks &marks, double first, double last, Function f) {
    const Steps steps(marks);
    const auto point_at = [&gain](double x) { return Point{x, gain(x)}; };
    Point before = point_at(first - steps.size(first)), point = point_at(first);
    while (point.at < last) {
        const Point after = point_at(steps.next(point.at, last));
        f(before, point, after);
        before = point;
        point = after;
    }
    f(before, point, point_at(last + steps.size(last)));
}

// A parabola through three points, the middle one the highest, is nowhere between them higher than that one by more
// than an eighth of this; the gain is close to a parabola there.
inline double room_above(double before, double value, double after) { return (value - before) + (value - after); }

// The largest value of a function between two points, by golden-section search.
template <typename Function>
Point maximum(Function f, double from, double to) {
    constexpr double kRatio = 0.61803398874989485;  // (sqrt(5) - 1) / 2
    constexpr int kSteps = 30;  // down to 5e-7 of the interval; the maximum errs by about the square
    const auto point_at = [f](double x) { return Point{x, f(x)}; };
    Point left = point_at(to - kRatio * (to - from)), right = point_at(from + kRatio * (to - from));
    for (int i = 0; i < kSteps; ++i) {
        if (left.value > right.value) {
            to = right.at;
            right = left;
            left = point_at(to - kRatio * (to - from));
        } else {
            from = left.at;
            left = right;
            right = point_at(from + kRatio * (to - from));
        }
    }
    return left.value > right.value ? left : right;
}

}  // namespace mensura::sos

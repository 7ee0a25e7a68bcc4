#include "measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

#include "../internal/constants.h"

namespace mensura::sos {

namespace {

using Complex = std::complex<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kOnTheCircle = 1e-9;  // zeros this close to the unit circle count as on it

struct Quadratic {  // Q = c0 + c1 z^-1 + c2 z^-2
    double c0, c1, c2;
};

Quadratic numerator(const Section &s) { return {s.b0, s.b1, s.b2}; }
Quadratic denominator(const Section &s) { return {s.a0, s.a1, s.a2}; }

// Near z = 1 and z = -1, where the poles of low and high cut-offs lie, the terms of Q nearly cancel.  There these two
// sums are exact in this order, because each subtraction is of numbers within a factor of two of each other.
double at_plus_one(const Quadratic &q) { return q.c0 + q.c1 + q.c2; }
double at_minus_one(const Quadratic &q) { return q.c0 - q.c1 + q.c2; }

// ---- On the unit circle --------------------------------------------------------------------------------------------

// The angle theta = 2 pi f / rate by the sine and cosine of its half; exact at 0 and rate / 2.
struct Angle {
    double sin_half, cos_half;

    Angle(double frequency, double rate)
        : sin_half(std::sin(kPi * frequency / rate)), cos_half(std::sin(kPi * (0.5 * rate - frequency) / rate)) {}

    bool nearer_to_zero() const { return sin_half <= cos_half; }
    double sine() const { return 2 * sin_half * cos_half; }
    double one_minus_cosine() const { return 2 * sin_half * sin_half; }
    double one_plus_cosine() const { return 2 * cos_half * cos_half; }
};

// exp(i theta) Q = c1 + (c0 + c2) cos(theta) + i (c0 - c2) sin(theta).  The cosine is written as its difference from
// 1 or -1, whichever is nearer, so that only small terms are added where Q is small.  The factor exp(i theta) cancels
// in a quotient.
Complex turned_value(const Quadratic &q, const Angle &theta) {
    const double even = q.c0 + q.c2;
    const double real = theta.nearer_to_zero() ? at_plus_one(q) - even * theta.one_minus_cosine()
                                               : even * theta.one_plus_cosine() - at_minus_one(q);
    return {real, (q.c0 - q.c2) * theta.sine()};
}

Complex response(Cascade cascade, const Angle &theta) {
    Complex h = 1;
    for (const Section &s : cascade) h *= turned_value(numerator(s), theta) / turned_value(denominator(s), theta);
    return h;
}

// ---- Delay ---------------------------------------------------------------------------------------------------------

// The delay of c0 + c1 z^-1 in samples: 1/2 + (c1^2 - c0^2) / (2 |Q|^2).
double first_order_delay(double c0, double c1, const Angle &theta) {
    const double difference = (c1 - c0) * (c1 + c0), size = c0 * c0 + c1 * c1;
    if (std::abs(difference) <= kOnTheCircle * size) return size == 0 ? kNaN : 0.5;
    return 0.5 + 0.5 * difference / std::norm(turned_value({0, c0, c1}, theta));
}

// The delay of a quadratic in samples: 1 + (c2 - c0) (c0 + c2 + c1 cos(theta)) / |Q|^2.
double second_order_delay(const Quadratic &q, const Angle &theta) {
    const double sum = theta.nearer_to_zero() ? at_plus_one(q) - q.c1 * theta.one_minus_cosine()
                                              : at_minus_one(q) + q.c1 * theta.one_plus_cosine();
    return 1 + (q.c2 - q.c0) * sum / std::norm(turned_value(q, theta));
}

// For zeros on the circle the formulas give 0 / 0 at their own frequency, so their delay of half a sample each is split
// off first.
double zeros_delay(const Quadratic &q, const Angle &theta) {
    const double size = std::max({std::abs(q.c0), std::abs(q.c1), std::abs(q.c2)});
    if (size == 0) return kNaN;
    if (std::abs(q.c2 - q.c0) <= kOnTheCircle * size) return 1;  // two on the circle, or a pair r, 1/r: linear phase
    const auto has_root = [](double value, double slope) { return std::abs(value) <= kOnTheCircle * std::abs(slope); };
    if (has_root(at_plus_one(q), q.c1 + 2 * q.c2)) return 0.5 + first_order_delay(q.c0, -q.c2, theta);
    if (has_root(at_minus_one(q), q.c1 - 2 * q.c2)) return 0.5 + first_order_delay(q.c0, q.c2, theta);
    return second_order_delay(q, theta);
}

// ---- Roots ---------------------------------------------------------------------------------------------------------

struct Roots {
    std::array<Complex, 2> z;
    std::size_t count;
};

// The roots of c0 z^2 + c1 z + c2, except those at the origin or at infinity.
Roots roots(const Quadratic &q) {
    if (q.c0 == 0) return q.c1 == 0 || q.c2 == 0 ? Roots{{}, 0} : Roots{{-q.c2 / q.c1}, 1};
    const double half = -0.5 * q.c1 / q.c0, product = q.c2 / q.c0;
    const double discriminant = std::fma(half, half, -product);  // rounded once: it is small for roots close together
    if (!(discriminant >= 0)) {
        const double imag = std::sqrt(-discriminant);
        return {{Complex(half, imag), Complex(half, -imag)}, 2};
    }
    const double larger = half + std::copysign(std::sqrt(discriminant), half);
    if (larger == 0) return {{}, 0};
    return {{larger, product / larger}, product == 0 ? 1U : 2U};
}

// Adds angles on both sides of a pole or zero, at growing distances, until these grow by an even step.
void add_around(Complex root, double even_step, std::vector<double> &angles) {
    constexpr double kNearest = 1e-9, kFirst = 0.01, kGrowth = 1.05;
    if (root.imag() < 0 || !std::isfinite(std::abs(root))) return;  // its conjugate has the same angle
    const double centre = std::arg(root);
    angles.push_back(centre);
    double distance = kFirst * std::max(std::abs(1 - std::abs(root)), kNearest);
    while ((kGrowth - 1) * distance < even_step) {
        for (const double angle : {centre - distance, centre + distance})
            if (angle > 0 && angle < kPi) angles.push_back(angle);
        distance *= kGrowth;
    }
}

// The largest value of a function between two points, by golden-section search.
template <typename Function>
double maximum(Function f, double from, double to) {
    constexpr double kRatio = 0.61803398874989485;  // (sqrt(5) - 1) / 2
    constexpr int kSteps = 40;  // down to 4e-9 of the interval; the maximum errs by about the square
    double left = to - kRatio * (to - from), right = from + kRatio * (to - from);
    double at_left = f(left), at_right = f(right);
    for (int i = 0; i < kSteps; ++i) {
        if (at_left > at_right) {
            to = right;
            right = left;
            at_right = at_left;
            left = to - kRatio * (to - from);
            at_left = f(left);
        } else {
            from = left;
            left = right;
            at_left = at_right;
            right = from + kRatio * (to - from);
            at_right = f(right);
        }
    }
    return std::max(at_left, at_right);
}

// The largest value at the points and between the best of them and its neighbours.
template <typename Function>
double maximum_near(Function f, std::span<const double> points) {
    std::vector<double> values(points.size());
    std::ranges::transform(points, values.begin(), f);
    const auto best = static_cast<std::size_t>(std::ranges::max_element(values) - values.begin());
    const std::size_t before = best > 0 ? best - 1 : best, after = std::min(best + 1, points.size() - 1);
    return std::max(values[best], maximum(f, points[before], points[after]));
}

}  // namespace

double decibels(double magnitude) { return 20 * std::log10(magnitude); }

Complex response(Cascade cascade, double frequency, double rate) { return response(cascade, Angle(frequency, rate)); }

double magnitude(Cascade cascade, double frequency, double rate) {
    return std::abs(response(cascade, frequency, rate));
}

double group_delay(Cascade cascade, double frequency, double rate) {
    const Angle theta(frequency, rate);
    double delay = 0;
    for (const Section &s : cascade)
        delay += zeros_delay(numerator(s), theta) - second_order_delay(denominator(s), theta);
    return delay;
}

double pole_radius(Cascade cascade) {
    double radius = 0;
    for (const Section &s : cascade) {
        if (!std::isfinite(s.a0 + s.a1 + s.a2)) return kNaN;
        const Roots poles = roots(denominator(s));
        for (std::size_t i = 0; i < poles.count; ++i) radius = std::max(radius, std::abs(poles.z[i]));
    }
    return radius;
}

std::vector<double> frequency_grid(Cascade cascade, double rate) {
    constexpr int kSteps = 4000;
    std::vector<double> grid;
    for (const Section &s : cascade)
        for (const Quadratic &q : {numerator(s), denominator(s)}) {
            const Roots found = roots(q);
            for (std::size_t i = 0; i < found.count; ++i) add_around(found.z[i], kPi / kSteps, grid);
        }
    for (double &angle : grid) angle = angle / kTwoPi * rate;
    for (int i = 0; i <= kSteps; ++i) grid.push_back(0.5 * rate * i / kSteps);
    std::ranges::sort(grid);
    grid.erase(std::unique(grid.begin(), grid.end()), grid.end());
    return grid;
}

double crossing(Cascade cascade, double rate, double threshold, double from, double to) {
    constexpr int kHalvings = 60;
    const bool above = magnitude(cascade, from, rate) >= threshold;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = 0.5 * (from + to);
        ((magnitude(cascade, middle, rate) >= threshold) == above ? from : to) = middle;
    }
    return 0.5 * (from + to);
}

std::vector<double> crossings(Cascade cascade, double rate, double threshold, std::span<const double> grid) {
    std::vector<double> found;
    bool was_above = false;
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const bool above = magnitude(cascade, grid[i], rate) >= threshold;
        if (i > 0 && above != was_above) found.push_back(crossing(cascade, rate, threshold, grid[i - 1], grid[i]));
        was_above = above;
    }
    return found;
}

double nearest_crossing(Cascade cascade, double rate, double threshold, double frequency,
                        std::span<const double> grid) {
    double nearest = kNaN;
    for (const double f : crossings(cascade, rate, threshold, grid))
        if (!(std::abs(f - frequency) >= std::abs(nearest - frequency))) nearest = f;
    return nearest;
}

Band band_around(Cascade cascade, double rate, double threshold, double frequency, std::span<const double> grid) {
    Band band{0, 0.5 * rate};
    for (const double f : crossings(cascade, rate, threshold, grid)) {
        if (f <= frequency) band.from = f;
        if (f > frequency) band.to = std::min(band.to, f);
    }
    return band;
}

Extremes extremes(Cascade cascade, double rate, double from, double to, std::span<const double> grid) {
    std::vector<double> points{from};
    std::ranges::copy_if(grid, std::back_inserter(points), [from, to](double f) { return f > from && f < to; });
    points.push_back(to);
    const auto size = [=](double f) { return magnitude(cascade, f, rate); };
    return {-maximum_near([size](double f) { return -size(f); }, points), maximum_near(size, points)};
}

}  // namespace mensura::sos

#include "measure.h"

#include <cmath>

#include "../internal/constants.h"

namespace mensura::sos {

namespace {

using Complex = std::complex<double>;

// exp(-2 pi i f / rate): z^-1 on the unit circle.  0 and half the rate give exactly 1 and -1.
Complex delay_at(double frequency, double rate) {
    if (frequency == 0.5 * rate) return -1.0;
    return std::polar(1.0, -kTwoPi * frequency / rate);
}

struct Quadratic {  // c0 + c1 x + c2 x^2
    double c0, c1, c2;
};

Quadratic numerator(const Section &s) { return {s.b0, s.b1, s.b2}; }
Quadratic denominator(const Section &s) { return {s.a0, s.a1, s.a2}; }

Complex value(const Quadratic &q, Complex x) { return q.c0 + x * (q.c1 + x * q.c2); }

// Whether x counts as a root: what is left of the terms is rounding.
bool is_root(const Quadratic &q, Complex x) {
    constexpr double kRounding = 1e-9;
    return std::abs(value(q, x)) <= kRounding * (std::abs(q.c0) + std::abs(q.c1) + std::abs(q.c2));
}

// The delay of a polynomial in x = z^-1 on the unit circle: Re(x Q'(x) / Q(x)).
double polynomial_delay(const Quadratic &q, Complex x) {
    constexpr double kOfARootOnTheCircle = 0.5;
    if (!is_root(q, x)) return (x * (q.c1 + 2.0 * q.c2 * x) / value(q, x)).real();
    if (q.c1 == 0 && q.c2 == 0) return 0;                            // of a section of zeros
    if (x.imag() != 0 && q.c2 != 0) return 2 * kOfARootOnTheCircle;  // and its conjugate
    // Q = (1 - x / root) (c0 + d x) with a real root of 1 or -1
    const double root = x.real();
    return kOfARootOnTheCircle + polynomial_delay({q.c0, q.c1 + q.c0 / root, 0}, x);
}

// Roots of c0 z^2 + c1 z + c2 that are not at the origin or infinity: their number.
int roots(const Quadratic &q, std::array<Complex, 2> &z) {
    if (q.c0 == 0 || !std::isfinite(q.c0 + q.c1 + q.c2)) return 0;
    const double half = -0.5 * q.c1 / q.c0;
    const Complex offset = std::sqrt(Complex(half * half - q.c2 / q.c0));
    z = {half + offset, half - offset};
    return 2;
}

// Angles at growing distance to either side of a pole or zero.
void add_around(Complex root, std::vector<double> &angles) {
    constexpr int kSteps = 240;
    constexpr double kNearest = 1e-9, kFirst = 0.01;
    const double centre = std::abs(std::arg(root));
    if (!std::isfinite(std::abs(root))) return;
    const double width = std::max(std::abs(1 - std::abs(root)), kNearest) * kFirst;
    const double growth = std::pow(kPi / width, 1.0 / kSteps);
    angles.push_back(centre);
    double distance = width;
    for (int i = 0; i < kSteps; ++i, distance *= growth)
        for (const double angle : {centre - distance, centre + distance})
            if (angle > 0 && angle < kPi) angles.push_back(angle);
}

}  // namespace

double decibels(double magnitude) { return 20 * std::log10(magnitude); }

Complex response(Cascade cascade, double frequency, double rate) {
    const Complex x = delay_at(frequency, rate);
    Complex h = 1;
    for (const Section &s : cascade) h *= value(numerator(s), x) / value(denominator(s), x);
    return h;
}

double magnitude(Cascade cascade, double frequency, double rate) {
    return std::abs(response(cascade, frequency, rate));
}

double group_delay(Cascade cascade, double frequency, double rate) {
    const Complex x = delay_at(frequency, rate);
    double delay = 0;
    for (const Section &s : cascade) delay += polynomial_delay(numerator(s), x) - polynomial_delay(denominator(s), x);
    return delay;
}

double pole_radius(Cascade cascade) {
    double radius = 0;
    std::array<Complex, 2> poles;
    for (const Section &s : cascade)
        for (int i = 0; i < roots(denominator(s), poles); ++i)
            radius = std::max(radius, std::abs(poles[static_cast<std::size_t>(i)]));
    return radius;
}

std::vector<double> frequency_grid(Cascade cascade, double rate) {
    constexpr int kSteps = 4000;
    std::vector<double> grid;
    std::array<Complex, 2> z;
    for (const Section &s : cascade)
        for (const Quadratic &q : {numerator(s), denominator(s)})
            for (int i = 0; i < roots(q, z); ++i) add_around(z[static_cast<std::size_t>(i)], grid);
    for (double &angle : grid) angle = angle / kTwoPi * rate;
    for (int i = 0; i <= kSteps; ++i) grid.push_back(0.5 * rate * i / kSteps);
    std::ranges::sort(grid);
    const auto repeated = std::ranges::unique(grid);
    grid.erase(repeated.begin(), repeated.end());
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

Extremes extremes(Cascade cascade, double rate, double from, double to, std::span<const double> grid) {
    const double first = magnitude(cascade, from, rate);
    Extremes found{first, first};
    const auto include = [&](double frequency) {
        const double size = magnitude(cascade, frequency, rate);
        found.lowest = std::min(found.lowest, size);
        found.highest = std::max(found.highest, size);
    };
    include(to);
    for (const double frequency : grid)
        if (frequency > from && frequency < to) include(frequency);
    return found;
}

}  // namespace mensura::sos

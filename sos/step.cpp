// The responses to a step and to an impulse.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "arguments.h"

using namespace mensura::sos;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Sections that run at once; their states are on the stack.
constexpr int kMostSections = 64;

// Filters a record in place, starting from rest.
void run_from_rest(const double *sos, int sections, double *y, ptrdiff_t n) {
    for (int k = 0; k < sections; k += kMostSections, sos += kMostSections * kNumbers) {
        std::array<double, kMostSections * kRegisters> state{};
        mensura_sos_filter(sos, std::min(kMostSections, sections - k), state.data(), y, 1, y, 1, n);
    }
}

int check(const double *sos, int sections, const double *y, ptrdiff_t n) {
    if (const int code = check_sections(sos, sections)) return code;
    return check_values(y, n);
}

// ---- How long a step response lasts --------------------------------------------------------------------------------
//
// A section's poles have the magnitudes r1 and r2.  Its impulse response is at most the one with poles at r1 and r2
// themselves and with all numerators positive, so with R the largest magnitude of all p poles of a cascade
//
//     |h[t]| <= B C(t + p - 1, p - 1) R^t,      B = product of (|b0| + |b1| / R + |b2| / R^2)
//
// Here C is the binomial coefficient.  Poles with an angle theta between them and the real axis count once instead of
// twice, and then bring the factor 1 / sin(theta).

struct Bound {
    double log_scale = 0;   // log B
    double log_radius = 0;  // log R
    int poles = 0;
};

struct Poles {
    double radius, sine;  // of the angle; 0 for real poles
};

Poles poles_of(double a1, double a2) {
    const double half = -0.5 * a1, discriminant = half * half - a2;
    if (discriminant < 0) return {std::sqrt(a2), std::sqrt(-discriminant / a2)};
    return {std::abs(half) + std::sqrt(discriminant), 0};
}

bool is_stable(const double *section) {
    const double a1 = section[4], a2 = section[5];
    return std::abs(a2) < 1 && std::abs(a1) < 1 + a2;
}

Bound bound_of(const double *sos, int sections) {
    constexpr double kSmallest = 0.5;  // of R: a larger one does no harm
    double radius = kSmallest;
    for (int k = 0; k < sections; ++k) radius = std::max(radius, poles_of(sos[6 * k + 4], sos[6 * k + 5]).radius);
    Bound bound;
    bound.log_radius = std::log(radius);
    for (int k = 0; k < sections; ++k) {
        const double *c = sos + 6 * k;
        const Poles poles = poles_of(c[4], c[5]);
        const bool apart = poles.sine > 1 - radius;
        bound.poles += apart ? 1 : 2;
        if (apart) bound.log_scale -= std::log(poles.sine);
        bound.log_scale += std::log(std::abs(c[0]) + (std::abs(c[1]) + std::abs(c[2]) / radius) / radius);
    }
    return bound;
}

// log of a bound on the sum of |h| after sample t.  From one sample to the next the terms shrink by `ratio` or less.
double log_tail(const Bound &b, double t) {
    const double ratio = std::exp(b.log_radius) * (t + b.poles) / (t + 1);
    if (!(ratio < 1)) return kInfinity;
    double log_binomial = 0;
    for (int i = 1; i < b.poles; ++i) log_binomial += std::log1p(t / i);
    return b.log_scale + log_binomial + t * b.log_radius - std::log(1 - ratio);
}

// The samples after which the step response stays within `tolerance` of its final value for certain; infinity where
// rounding hides the distance of a pole from the circle.
double duration(const Bound &b, double tolerance) {
    const auto enough = [&](double t) { return log_tail(b, t) <= std::log(tolerance); };
    double t = 16;
    while (!enough(t)) {
        if (t > 1e18) return kInfinity;
        t *= 2;
    }
    double too_few = t / 2;
    while (t - too_few > 0.05 * t) {
        const double middle = 0.5 * (too_few + t);
        (enough(middle) ? t : too_few) = middle;
    }
    return std::ceil(t);
}

// ---- What it does before -------------------------------------------------------------------------------------------

struct Figures {
    double lowest = 0, highest = 0;
    ptrdiff_t settling = 0;
};

double final_value(const double *sos, int sections) {
    double h = 1;
    for (int k = 0; k < sections; ++k, sos += kNumbers) h *= (sos[0] + sos[1] + sos[2]) / (1 + sos[4] + sos[5]);
    return h;
}

Figures run(const double *sos, int sections, double final, double tolerance, ptrdiff_t n) {
    constexpr ptrdiff_t kBlock = 256;
    std::array<double, kBlock> y;
    std::array<double, kMostSections * kRegisters> state{};
    Figures figures;
    for (ptrdiff_t start = 0; start < n; start += kBlock) {
        const ptrdiff_t size = std::min(kBlock, n - start);
        std::fill_n(y.begin(), size, 1.0);
        mensura_sos_filter(sos, sections, state.data(), y.data(), 1, y.data(), 1, size);
        for (ptrdiff_t i = 0; i < size; ++i) {
            const double value = y[static_cast<std::size_t>(i)];
            figures.lowest = std::min(figures.lowest, value);
            figures.highest = std::max(figures.highest, value);
            if (!(std::abs(value - final) <= tolerance)) figures.settling = start + i + 1;
        }
    }
    return figures;
}

// A response that ends below a tenth of its largest value swings around that end, as a high-pass does around 0.
double overshoot_of(const Figures &f, double final) {
    constexpr double kTenth = 0.1;
    const double above = f.highest - final, below = final - f.lowest;
    const bool swings = std::abs(final) < kTenth * std::max(f.highest, -f.lowest);
    const double beyond = swings ? std::min(above, below) : final > 0 ? above : below;
    return std::max(0.0, beyond);
}

}  // namespace

int mensura_sos_step_response(const double *sos, int sections, double *y, ptrdiff_t n) {
    if (const int code = check(sos, sections, y, n)) return code;
    std::fill_n(y, n, 1.0);
    run_from_rest(sos, sections, y, n);
    return 0;
}

int mensura_sos_impulse_response(const double *sos, int sections, double *y, ptrdiff_t n) {
    if (const int code = check(sos, sections, y, n)) return code;
    std::fill_n(y, n, 0.0);
    if (n > 0) y[0] = 1;
    run_from_rest(sos, sections, y, n);
    return 0;
}

int mensura_sos_step_figures(const double *sos, int sections, double tolerance, ptrdiff_t most, double *overshoot,
                             ptrdiff_t *settling) {
    if (const int code = check_sections(sos, sections)) return code;
    if (sections > kMostSections || most < 1) return MENSURA_SOS_COUNT;
    if (!(tolerance > 0)) return MENSURA_SOS_LEVEL;
    for (int k = 0; k < sections; ++k)
        if (!is_stable(sos + 6 * k)) return MENSURA_SOS_UNSTABLE;

    constexpr double kRest = 1e-6;  // an overshoot after that is smaller
    const double needed = duration(bound_of(sos, sections), std::min(tolerance, kRest));
    if (!(needed <= static_cast<double>(most))) return MENSURA_SOS_UNSETTLED;
    const double final = final_value(sos, sections);
    const Figures figures = run(sos, sections, final, tolerance, static_cast<ptrdiff_t>(needed));
    if (overshoot != nullptr) *overshoot = overshoot_of(figures, final);
    if (settling != nullptr) *settling = figures.settling;
    return 0;
}

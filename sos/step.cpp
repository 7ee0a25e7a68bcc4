// The responses to a step and to an impulse.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "arguments.h"
#include "quadratic.h"

using namespace mensura::sos;

namespace {

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

// ---- What may still come -------------------------------------------------------------------------------------------
//
// Each signal between the sections is seen as its distance from its final value.  A section whose input stays within g
// of its final value has an output within
//
//     max |f| + g sum |h|      f: what its registers give while the input is at its final value; h: its impulse response
//
// Both f and h from its second sample on are responses (e0 + e1 z^-1) / (1 + a1 z^-1 + a2 z^-2).

// The poles p1 and p2 of a section, and how its responses fade.
struct Fading {
    double re, im;                 // of p1, the larger one
    double second;                 // p2, where the poles are real
    double first_gap, second_gap;  // 1 - |p1|, 1 - |p2|: quotients of sums that are exact near the unit circle

    explicit Fading(const Quadratic &q) {
        const double half = -0.5 * q.c1, discriminant = half * half - q.c2;
        if (discriminant < 0) {
            re = half;
            im = std::sqrt(-discriminant);
            second = 0;
            first_gap = second_gap = (1 - q.c2) / (1 + std::sqrt(q.c2));
            return;
        }
        re = half + std::copysign(std::sqrt(discriminant), half);
        im = 0;
        second = re == 0 ? 0 : q.c2 / re;
        second_gap = 1 - std::abs(second);
        first_gap = re < 0 ? at_minus_one(q) / (1 + second) : at_plus_one(q) / (1 - second);
    }

    // Bounds on the largest value and on the sum of a response.  It is e0 p1^n and |e1 + e0 p2| times the convolution of
    // p1^n with p2^n; poles off the real axis also bound it by |e1 + e0 p| |p|^n / im.
    struct Bounds {
        double largest, sum;
    };
    Bounds response(double e0, double e1) const {
        const double rest = im > 0 ? std::hypot(e1 + e0 * re, e0 * im) : std::abs(e1 + e0 * second);
        const Bounds close{std::abs(e0) + rest / second_gap, (std::abs(e0) + rest / second_gap) / first_gap};
        if (!(im > 0)) return close;
        return {std::min(close.largest, rest / im), std::min(close.sum, rest / im / first_gap)};
    }
};

// How far a register is from its final value.  Rounding keeps it from getting there, and would, times the sums of many
// sections, never seem over.
double apart(double value, double final) {
    constexpr double kRounding = 1e-9;
    const double distance = value - final;
    return std::abs(distance) <= kRounding * std::max(1.0, std::abs(final)) ? 0 : distance;
}

// A bound on the distance from the final value at all samples to come of a step response.
double distance_to_come(const double *sos, int sections, const double *state) {
    double input = 1, distance = 0;  // final value of the section's input, bound on its distance
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers, state += kRegisters) {
        const Quadratic n = numerator(s), d = denominator(s);
        const Fading fading(d);
        const double output = input * gain_at_dc(s);
        const double x1 = apart(state[0], input), x2 = apart(state[1], input);
        const double y1 = apart(state[2], output), y2 = apart(state[3], output);
        const auto free = fading.response(n.c1 * x1 + n.c2 * x2 - d.c1 * y1 - d.c2 * y2, n.c2 * x1 - d.c2 * y1);
        const auto tail = fading.response(n.c1 - n.c0 * d.c1, n.c2 - n.c0 * d.c2);  // of h, from its second sample on
        distance = free.largest + distance * (std::abs(n.c0) + tail.sum);
        input = output;
    }
    return distance;
}

// ---- What has come -------------------------------------------------------------------------------------------------

struct Figures {
    double final = 1, lowest = 0, highest = 0;
    ptrdiff_t settling = 0;

    void add(double value, ptrdiff_t sample, double tolerance) {
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
        if (!(std::abs(value - final) <= tolerance)) settling = sample + 1;
    }

    // Whether samples within this distance of the final value leave the extremes as they are, or nearly so.
    bool are_final(double distance) const {
        constexpr double kNearly = 1e-6;
        return distance <= kNearly || (distance <= highest - final && distance <= final - lowest);
    }

    // A response that ends below a tenth of its largest value swings around that end, as a high-pass does around 0.
    double overshoot() const {
        constexpr double kTenth = 0.1;
        const double above = highest - final, below = final - lowest;
        if (std::abs(final) < kTenth * std::max(highest, -lowest)) return std::max(0.0, std::min(above, below));
        return std::max(0.0, final > 0 ? above : below);
    }
};

// Runs until what may still come cannot change the figures; false if that takes more than `most` samples.
bool run(const double *sos, int sections, double tolerance, ptrdiff_t most, Figures &figures) {
    constexpr ptrdiff_t kBlock = 64;
    std::array<double, kBlock> y;
    std::array<double, kMostSections * kRegisters> state{};
    for (ptrdiff_t start = 0; start < most; start += kBlock) {
        const ptrdiff_t size = std::min(kBlock, most - start);
        std::fill_n(y.begin(), size, 1.0);
        mensura_sos_filter(sos, sections, state.data(), y.data(), 1, y.data(), 1, size);
        for (ptrdiff_t i = 0; i < size; ++i) figures.add(y[static_cast<std::size_t>(i)], start + i, tolerance);
        const double distance = distance_to_come(sos, sections, state.data());
        if (distance <= tolerance && figures.are_final(distance)) return true;
    }
    return false;
}

bool is_stable(const Quadratic &q) { return std::abs(q.c2) < 1 && at_plus_one(q) > 0 && at_minus_one(q) > 0; }

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
    Figures figures;
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers) {
        if (!is_stable(denominator(s))) return MENSURA_SOS_UNSTABLE;
        figures.final *= gain_at_dc(s);
    }
    if (!run(sos, sections, tolerance, most, figures)) return MENSURA_SOS_UNSETTLED;
    if (overshoot != nullptr) *overshoot = figures.overshoot();
    if (settling != nullptr) *settling = figures.settling;
    return 0;
}

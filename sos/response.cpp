// The frequency response and the delay of a filter at given frequencies.
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "arguments.h"
#include "quadratic.h"

namespace mensura::sos {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kOnTheCircle = 1e-9;  // zeros this close to the unit circle count as on it

int check(const double *sos, int sections, double rate, const double *frequency, const double *out, ptrdiff_t n) {
    if (const int code = check_sections(sos, sections)) return code;
    if (const int code = check_rate(rate)) return code;
    if (n < 0) return MENSURA_SOS_COUNT;
    if (n > 0 && (!frequency || !out)) return MENSURA_SOS_NULL;
    const auto in_range = [rate](double f) { return f >= 0 && f <= 0.5 * rate; };
    return std::all_of(frequency, frequency + n, in_range) ? 0 : MENSURA_SOS_FREQUENCY;
}

struct Complex {
    double re, im;
};

// H, one section after the other, each as N conj(D) / |D|^2.
Complex response(const double *sos, int sections, const Angle &theta) {
    Complex h{1, 0};
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers) {
        const Turned n(numerator(s), theta), d(denominator(s), theta);
        const double re = (n.re * d.re + n.im * d.im) / d.norm(), im = (n.im * d.re - n.re * d.im) / d.norm();
        h = {h.re * re - h.im * im, h.re * im + h.im * re};
    }
    return h;
}

// The delay of c0 + c1 z^-1 in samples: 1/2 + (c1^2 - c0^2) / (2 |Q|^2).
double first_order_delay(double c0, double c1, const Angle &theta) {
    const double difference = (c1 - c0) * (c1 + c0), size = c0 * c0 + c1 * c1;
    if (std::abs(difference) <= kOnTheCircle * size) return size == 0 ? kNaN : 0.5;
    return 0.5 + 0.5 * difference / Turned({0, c0, c1}, theta).norm();
}

// The delay of a quadratic in samples: 1 + (c2 - c0) (c0 + c2 + c1 cos(theta)) / |Q|^2.
double second_order_delay(const Quadratic &q, const Angle &theta) {
    const double rest = q.c1 * theta.one_minus_larger_cosine();
    const double sum = theta.nearer_to_zero() ? at_plus_one(q) - rest : at_minus_one(q) + rest;
    return 1 + (q.c2 - q.c0) * sum / Turned(q, theta).norm();
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

double group_delay(const double *sos, int sections, const Angle &theta) {
    double delay = 0;
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers)
        delay += zeros_delay(numerator(s), theta) - second_order_delay(denominator(s), theta);
    return delay;
}

}  // namespace

}  // namespace mensura::sos

int mensura_sos_response(const double *sos, int sections, double rate, const double *frequency, double *re, double *im,
                         ptrdiff_t n) {
    if (const int code = mensura::sos::check(sos, sections, rate, frequency, re, n)) return code;
    if (n > 0 && !im) return MENSURA_SOS_NULL;
    for (ptrdiff_t i = 0; i < n; ++i) {
        const auto h = mensura::sos::response(sos, sections, mensura::sos::Angle(frequency[i] / rate));
        re[i] = h.re;
        im[i] = h.im;
    }
    return 0;
}

int mensura_sos_group_delay(const double *sos, int sections, double rate, const double *frequency, double *delay,
                            ptrdiff_t n) {
    if (const int code = mensura::sos::check(sos, sections, rate, frequency, delay, n)) return code;
    for (ptrdiff_t i = 0; i < n; ++i)
        delay[i] = mensura::sos::group_delay(sos, sections, mensura::sos::Angle(frequency[i] / rate));
    return 0;
}

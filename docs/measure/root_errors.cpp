// Errors of roots against higher precision, for docs/measure/roots.py, which counts in doubles.
#include <mensura/roots.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <vector>

#include "../snippets/find_scaled.h"
#include "../snippets/roots_hold.h"

namespace {

#if defined(__SIZEOF_FLOAT128__)
__extension__ typedef __float128 Quad;  // 113 bits
#else
using Quad = long double;  // has 113 bits itself where there is no __float128, as on aarch64
#endif

using Point = std::complex<long double>;
using Roots = std::span<const CplxD>;

Point to_point(double re, double im = 0) { return {static_cast<long double>(re), static_cast<long double>(im)}; }
Point to_point(CplxD z) { return to_point(z.re, z.im); }

long double relative_error(Point z, Point reference) {
    const long double size = std::abs(reference);
    return std::abs(z - reference) / (size > 0 ? size : 1);
}

// The root that Newton's iteration in 113 bits reaches from z.
Point polished(std::span<const double> coefficients, Point z) {
    constexpr int kSteps = 60;
    constexpr double kSmallSquare = 1e-50;
    auto re = static_cast<Quad>(z.real()), im = static_cast<Quad>(z.imag());
    for (int step = 0; step < kSteps; ++step) {
        Quad vr = 0, vi = 0, dr = 0, di = 0;  // value and derivative by Horner's rule
        for (const double c : coefficients) {
            const Quad d = dr * re - di * im + vr;
            di = dr * im + di * re + vi;
            dr = d;
            const Quad v = vr * re - vi * im + static_cast<Quad>(c);
            vi = vr * im + vi * re;
            vr = v;
        }
        const Quad norm = dr * dr + di * di;
        if (!(norm > 0)) break;
        const Quad sr = (vr * dr + vi * di) / norm, si = (vi * dr - vr * di) / norm;
        re -= sr;
        im -= si;
        if (sr * sr + si * si <= (re * re + im * im) * static_cast<Quad>(kSmallSquare)) break;
    }
    return {static_cast<long double>(re), static_cast<long double>(im)};
}

// The largest relative distance from known roots, each of which is used once: the nearest that is left.
double error_against(std::vector<Point> known, Roots roots) {
    long double worst = 0;
    for (const CplxD z : roots) {
        const auto distance = [z](Point p) { return std::abs(to_point(z) - p); };
        const auto nearest = std::ranges::min_element(known, {}, distance);
        worst = std::max(worst, relative_error(to_point(z), *nearest));
        known.erase(nearest);
    }
    return static_cast<double>(worst);
}

Roots span_of(const CplxD *roots, int count) { return {roots, static_cast<std::size_t>(count)}; }

}  // namespace

extern "C" {

// The largest relative distance of a root from the exact one next to it; infinite when two roots lead to the same exact
// one, so that a finite result means that no root is missing.
double forward_error(int degree, const double *coefficients, const CplxD *roots) {
    constexpr long double kSame = 1e-15L;
    std::vector<Point> exact;
    long double worst = 0;
    for (const CplxD z : span_of(roots, degree)) {
        const Point e = polished({coefficients, static_cast<std::size_t>(degree) + 1}, to_point(z));
        if (std::ranges::any_of(exact, [e](Point f) { return relative_error(e, f) < kSame; })) return HUGE_VAL;
        exact.push_back(e);
        const long double error = relative_error(to_point(z), e);
        if (!(error <= worst)) worst = error;
    }
    return static_cast<double>(worst);
}

double error_against_known(int count, const CplxD *known, const CplxD *roots) {
    std::vector<Point> points;
    for (const CplxD z : span_of(known, count)) points.push_back(to_point(z));
    return error_against(points, span_of(roots, count));
}

// Against the roots of the Chebyshev polynomial, cos((2k - 1) pi / 2n).
double error_against_cosines(int degree, const CplxD *roots) {
    std::vector<Point> cosines;
    for (int k = 1; k <= degree; ++k) {
        const bool middle = 2 * k - 1 == degree;  // its root is 0, which a rounded pi misses
        cosines.emplace_back(middle ? 0 : std::cos((2 * k - 1) * std::numbers::pi_v<long double> / (2 * degree)));
    }
    return error_against(cosines, span_of(roots, degree));
}

// Against the roots of (x^2 + b x + c)^exponent.
double error_against_powers(double b, double c, int exponent, const CplxD *roots) {
    const Point half_width = std::sqrt(to_point(b * b - 4 * c)) * 0.5L, middle = to_point(-0.5 * b);
    std::vector<Point> known(static_cast<std::size_t>(exponent), middle + half_width);
    known.insert(known.end(), static_cast<std::size_t>(exponent), middle - half_width);
    return error_against(known, span_of(roots, 2 * exponent));
}

int shown_roots_hold(int degree, const double *coefficients, const CplxD *roots, double tolerance) {
    return roots_hold(degree, coefficients, roots, tolerance);
}

int shown_find_scaled(int degree, const double *coefficients, CplxD *roots) {
    return find_scaled(degree, coefficients, roots);
}
}

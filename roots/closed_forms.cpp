// Closed-form roots of real polynomials of degree 1 to 4.
//
// Cardano and Ferrari as in Abramowitz and Stegun, Handbook of Mathematical Functions, 3.8.1 to 3.8.3, with a scaling
// that gives the constant term a modulus of 1 and, where it helps, a reversal that solves for the reciprocal roots.

#include <mensura/roots.h>

#include <algorithm>
#include <cmath>

#include "roots_internal.h"

using namespace mensura::roots;

namespace {

// Rounded to double: the last bits of the roots depend on it.
constexpr double kThird = 0.3333333333333333;
constexpr double kSin60 = 0.8660254037844386;
constexpr double kSin30 = 0.49999999999999994, kCos30 = 0.8660254037844387;

constexpr real kTwoToMinus50 = 0x1p-50L;
constexpr real kSmallA1 = 1e-5;            // of the resolvent cubic
constexpr real kManyTimes = 1e20;          // a coefficient this many times smaller than another counts as 0
constexpr real kSmallConstantTerm = 1e-8;  // of a factor of the quartic: all four roots are then the same
constexpr real kAboveAllRoots = 1e100;

// Scales the variable by the degree-th root of |constant term| and returns that scale.
real scale_constant_term_to_one(real *p, int degree, double exponent) {
    if (std::fabs(p[degree]) == 1) return 1;  // any power of 1 is 1, and a power takes 0.3 us
    const real s = std::pow(std::fabs(p[degree]), static_cast<real>(exponent));
    p[1] /= s;
    for (int i = 2; i <= degree; ++i) p[i] /= std::pow(s, static_cast<real>(i));
    return s;
}

void reverse_monic(real *p, int degree) {
    p[0] = 1;
    ReversePoly(p, degree);
}

void undo_reversal_and_scale(int degree, bool reversed, real s, real *re, real *im) {
    if (reversed) InvertRoots(degree, re, im);
    for (int i = 0; i < degree; ++i) {
        re[i] *= s;
        im[i] *= s;
    }
}

// ---- cubic ----

// D > 0: one real root and a conjugate pair.
void cardano(real R, real Q, real D, real b3, real *re, real *im) {
    const real A0 = std::pow(std::fabs(R) + std::sqrt(D), static_cast<real>(kThird));
    const real A = R > 0 ? -A0 : A0;
    const real B = Q / A;
    re[0] = (A + B) - b3;
    re[1] = re[2] = -(A + B) * 0.5L - b3;
    im[0] = 0;
    im[1] = (A - B) * kSin60;
    im[2] = -im[1];
}

// D <= 0: three real roots.
void three_real_roots(real R, real Q, real D, real b3, real *re, real *im) {
    real sin_phi = kSin30, cos_phi = kCos30;  // the limit for R = 0
    if (R != 0) {
        const real phi = std::atan(std::sqrt(std::fabs(D)) / std::fabs(R)) / 3.0L;
        sin_phi = std::sin(phi);
        cos_phi = std::cos(phi);
    }
    const real t = std::sqrt(std::fabs(Q));
    const real k = R >= 0 ? -2 * t : 2 * t;
    const real u = k * cos_phi;
    const real v = k * -kSin60 * sin_phi - 0.5L * u;
    re[0] = v - b3;
    re[1] = -(v + u + b3);
    re[2] = u - b3;
    im[0] = im[1] = im[2] = 0;
}

// ---- quartic ----

// The scaled quartic x^4 + b x^3 + c x^2 + d x + e, its depressed form z^4 + p z^2 + q z + r with x = z - b/4, and the
// resolvent cubic y^3 + A2 y^2 + A1 y + A0 = 0.
struct Quartic {
    real b, d, p, q, r, A2, A1, A0;
};

Quartic depress(real b, real c, real d, real e) {
    const real b2 = b * b, b3 = b2 * b, b4 = b3 * b;
    Quartic f{};
    f.b = b;
    f.d = d;
    f.p = c - 0.375L * b2;
    f.q = 0.125L * b3 + d - 0.5L * b * c;
    f.r = e + 0.0625L * b2 * c - 0.01171875L * b4 - 0.25L * b * d;
    f.A2 = 0.5L * c - 0.1875L * b2;
    f.A1 = 0.0625L * (0.1875L * b4 + c * c - b2 * c - 4 * e + b * d);
    f.A0 = -0.015625L * (f.q * f.q);
    return f;
}

// The depressed quartic splits into (z^2 + n z + r/g) (z^2 - n z + g).
struct Factors {
    real n, g;
};

// Whether q counts as 0, so that the quartic is one in z^2.  A0 = -(q/8)^2 is compared instead of q, which counts as 0
// where A0 is tiny or far smaller than A1.  Where |b| and |d| differ and A1 is tiny too, A0 has to be 0.
bool is_biquadratic(const Quartic &f) {
    const bool only_zero_counts = std::fabs(std::fabs(f.b) - std::fabs(f.d)) >= kTwoToMinus50 &&
                                  f.A0 > -kTwoToMinus50 && std::fabs(f.A1) < kSmallA1;
    const real least = only_zero_counts ? 0.0L : -kTwoToMinus50;
    return f.A0 >= least || std::fabs(f.A0) * kManyTimes <= std::fabs(f.A1);
}

Factors split_biquadratic(const Quartic &f) {
    if (f.A1 < 0) {
        const real g = std::sqrt(std::fabs(f.r));
        const real m = 2 * g - f.p;
        return {m > 0 ? std::sqrt(std::fabs(m)) : 0, g};
    }
    const real t = std::sqrt(std::fabs(f.A1));
    return {0, f.A2 <= 0 ? f.A2 - 2 * t : f.A2 + 2 * t};
}

// Ferrari's method, with the smallest positive real root y of the resolvent.  re and im are scratch memory.
Factors split_by_resolvent(const Quartic &f, real *re, real *im) {
    real resolvent[] = {1, f.A2, f.A1, f.A0};
    CubicRoots(resolvent, re, im);
    real y = kAboveAllRoots;
    for (int i = 0; i < 3; ++i)
        if (im[i] == 0 && re[i] > 0 && re[i] < y) y = re[i];
    const real m = f.p + 4 * y;
    real n = std::sqrt(4 * y);
    if (m * f.q < 0) n = -n;
    return {n, (f.q / n + m) * 0.5L};
}

}  // namespace

namespace mensura::roots {

void solve_closed_form(real *p, int degree, real *re, real *im) {
    switch (degree) {
        case 4: BiQuadRoots(p, re, im); break;
        case 3: CubicRoots(p, re, im); break;
        case 2: QuadRoots(p, re, im); break;
        default: re[0] = -p[1] / p[0]; im[0] = 0;
    }
}

}  // namespace mensura::roots

void InvertRoots(int N, long double *RealRoot, long double *ImagRoot) {
    for (int i = 0; i < N; ++i) {
        const real m = RealRoot[i] * RealRoot[i] + ImagRoot[i] * ImagRoot[i];
        if (m == 0) continue;
        RealRoot[i] = RealRoot[i] / m;
        ImagRoot[i] = ImagRoot[i] / -m;
    }
}

void QuadRoots(long double *P, long double *RealRoot, long double *ImagRoot) {
    const real b = P[1], c = P[2];
    const real D = b * b - 4 * c;
    if (D < 0) {
        const real half_width = std::sqrt(-D) * 0.5L;
        RealRoot[0] = RealRoot[1] = -b * 0.5L;
        ImagRoot[0] = half_width;
        ImagRoot[1] = -half_width;
    } else {
        const real width = std::sqrt(D);
        RealRoot[0] = (-b - width) * 0.5L;
        RealRoot[1] = (width - b) * 0.5L;
        ImagRoot[0] = ImagRoot[1] = 0;
    }
}

void CubicRoots(long double *P, long double *RealRoot, long double *ImagRoot) {
    const real s = scale_constant_term_to_one(P, 3, kThird);
    const bool reversed = std::fabs(P[2]) > std::fabs(P[3]) && P[2] > 0;
    if (reversed) reverse_monic(P, 3);

    const real b = P[1], c = P[2], d = P[3];
    const real b3 = b / 3;
    const real R = (81 * d + 6 * b * b * b - 27 * b * c) / 162;
    const real Q = (b * b - 3 * c) / 9;
    const real h = 27 * d + 2 * b * b * b - 9 * b * c;
    const real D = h * h / 2916 - Q * Q * Q;  // R^2 - Q^3
    if (D > kTwoToMinus63)
        cardano(R, Q, D, b3, RealRoot, ImagRoot);
    else
        three_real_roots(R, Q, D, b3, RealRoot, ImagRoot);
    undo_reversal_and_scale(3, reversed, s, RealRoot, ImagRoot);
}

void BiQuadRoots(long double *P, long double *RealRoot, long double *ImagRoot) {
    const real s = scale_constant_term_to_one(P, 4, 0.25);
    const bool reversed = std::fabs(P[3]) < std::fabs(P[1]);
    if (reversed) reverse_monic(P, 4);

    const Quartic f = depress(P[1], P[2], P[3], P[4]);
    const real h4 = 0.25L * f.b;
    const auto [n, g] = is_biquadratic(f) ? split_biquadratic(f) : split_by_resolvent(f, RealRoot, ImagRoot);
    if (std::fabs(g) <= kSmallConstantTerm) {  // one root of multiplicity 4; a NaN goes on to the factors
        std::fill_n(RealRoot, 4, -h4);
        std::fill_n(ImagRoot, 4, 0.0L);
    } else {
        real lower[] = {1, n, f.r / g}, upper[] = {1, -n, g};
        QuadRoots(lower, RealRoot, ImagRoot);
        QuadRoots(upper, RealRoot + 2, ImagRoot + 2);
        for (int i = 0; i < 4; ++i) RealRoot[i] -= h4;
    }
    undo_reversal_and_scale(4, reversed, s, RealRoot, ImagRoot);
}

int QuadCubicRoots(long double *P, int N, long double *RealRoot, long double *ImagRoot) {
    if (N < 1 || N > 4) return 0;
    std::fill_n(RealRoot, N, 0.0L);
    std::fill_n(ImagRoot, N, 0.0L);
    real p[5] = {};
    std::copy_n(P, N + 1, p);

    int degree = N;
    while (degree > 0 && has_root_at_zero(p, degree)) --degree;
    degree = drop_leading_zeros(p, degree);
    if (degree == 0) return 0;
    make_monic(p, degree);
    solve_closed_form(p, degree, RealRoot, ImagRoot);
    return degree;
}

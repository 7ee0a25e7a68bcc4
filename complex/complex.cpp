// Complex numbers in double precision.

#include <mensura/complex.h>

#include <cmath>

#include "../internal/sincos.h"

using mensura::sincos_of;

namespace {

constexpr double kTiny = 1e-50;  // powers and moduli below this count as zero

}  // namespace

CplxD getCplxD(double re, double im) { return {re, im}; }

CplxD CplxDAdd(CplxD a, CplxD b) { return {a.re + b.re, a.im + b.im}; }

CplxD CplxDSub(CplxD a, CplxD b) { return {a.re - b.re, a.im - b.im}; }

CplxD CplxDMult(CplxD a, CplxD b) { return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im}; }

CplxD CplxDMult_coef(CplxD a, double c) { return {a.re * c, a.im * c}; }

CplxD CplxDDivision(CplxD a, CplxD b) {
    const double d = b.re * b.re + b.im * b.im;
    return {(a.re * b.re + a.im * b.im) / d, (a.im * b.re - a.re * b.im) / d};
}

double CplxDCabs(CplxD a) { return std::sqrt(a.re * a.re + a.im * a.im); }

CplxD CplxDPow(CplxD a, double p) {
    if (std::fabs(p) < kTiny) return {1.0, 0.0};
    const double modulus = CplxDCabs(a);
    if (modulus < kTiny) return {0.0, 0.0};
    const auto [sin, cos] = sincos_of(std::atan2(a.im, a.re) * p);
    const double m = std::pow(modulus, p);
    return {m * cos, m * sin};
}

CplxD CplxDCos(CplxD a) {
    const auto [sin, cos] = sincos_of(a.re);
    return {cos * std::cosh(a.im), -(sin * std::sinh(a.im))};
}

CplxD CplxDSin(CplxD a) {
    const auto [sin, cos] = sincos_of(a.re);
    return {sin * std::cosh(a.im), cos * std::sinh(a.im)};
}

CplxD CplxDTan(CplxD a) {
    const auto [sin, cos] = sincos_of(a.re);
    const double sinh = std::sinh(a.im), cosh = std::cosh(a.im);
    const double d = cosh * cosh - sin * sin;  // cos^2 x + sinh^2 y
    if (std::fabs(d) < kTiny) return {std::tan(a.re), 0.0};
    return {sin * cos / d, sinh * cosh / d};
}

CplxD CplxDConj(CplxD a) { return {a.re, -a.im}; }

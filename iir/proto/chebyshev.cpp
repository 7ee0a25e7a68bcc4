// Chebyshev: poles on an ellipse with the half-axes sinh(a) and cosh(a), a = asinh(1/eps) / n, which a ripple of
// 10 log10(1 + eps^2) dB makes.

#include <cmath>

#include "../../internal/constants.h"
#include "family.h"
#include "limits.h"

using namespace mensura::iir;

int ChebyshevPoly(double ripple, int n, CplxD *roots) {
    if (!order_fits(n, 1)) return 0;
    const double eps = clamped_to(kChebyshevEpsilon, std::sqrt(std::pow(10.0, ripple / 10) - 1));
    const double x = 1 / eps;
    const double a = std::log(std::sqrt(x * x + 1) + x) / n;  // asinh(1/eps) / n
    const double sinh_a = std::sinh(a), cosh_a = std::cosh(a);
    const int pairs = n / 2;
    for (int i = 0; i < pairs; ++i) {
        const double theta = (2 * i + 1) * mensura::kHalfPi / n;
        const double re = -sinh_a * std::sin(theta), im = cosh_a * std::cos(theta);
        roots[2 * i] = {re, im};
        roots[2 * i + 1] = {re, -im};
    }
    if (n % 2 != 0) roots[2 * pairs] = {-sinh_a, 0.0};
    return n;
}

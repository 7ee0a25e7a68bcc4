// Chebyshev: poles on an ellipse whose width the pass-band ripple sets.

#include <cmath>

#include "../../internal/constants.h"
#include "family.h"

namespace {

// x = 1/eps and y = x^2 + 1 for eps held within 1e-5 .. 0.996, a ripple of about 3 dB.
struct InverseEpsilon {
    double x, y;
};

InverseEpsilon inverse_epsilon(double ripple) {
    const double eps = std::sqrt(std::pow(10.0, ripple / 10) - 1);
    if (eps < 1e-05) return {99999.99999999999, 10000000000.999996};
    if (eps > 0.996) return {1.0040160642570282, 2.008048257286173};
    const double x = 1 / eps;
    return {x, x * x + 1};
}

}  // namespace

int ChebyshevPoly(double ripple, int n, CplxD *roots) {
    if (!mensura::iir::order_fits(n, 1)) return 0;
    const auto [x, y] = inverse_epsilon(ripple);
    const double a = std::log(std::sqrt(y) + x) / n;  // asinh(1/eps) / n
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

// Adjustable: the poles of |H|^2 = 1 / sum of (m!)^g w^2m, m = 0 .. n, moved away from the real axis by a tenth.
//
// With g = -1 the sum is that of the Gaussian family; a larger g gives high powers more weight and a steeper slope.

#include <cmath>

#include "family.h"

using namespace mensura::iir;

int AdjustablePoly(double gamma, int n, CplxD *roots) {
    constexpr double kStretch = 1.1;
    if (!order_fits(n, 2)) return 0;
    const double g = gamma > 0 ? 2 * gamma : gamma;
    Polynomial p{};
    p[0] = 1.0;
    for (int m = 1; m <= n; ++m) p[static_cast<std::size_t>(2 * m)] = alternating(m) * std::pow(Factorial(m), g);
    const int count = roots_of_ascending(p, 2 * n, roots);
    for (int i = 0; i < 2 * n; ++i) roots[i].im *= kStretch;  // all of them, found or not
    return count;
}

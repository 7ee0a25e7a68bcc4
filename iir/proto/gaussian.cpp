// Gaussian: |H|^2 = 1 / exp(w^2) with w^2 = -s^2, the exponential cut off after its term w^2n / n!.

#include "family.h"

using namespace mensura::iir;

int GaussianPoly(int n, CplxD *roots) {
    if (!order_fits(n, 2)) return 0;
    Polynomial p{};
    p[0] = 1.0;
    for (int m = 1; m <= n; ++m) p[static_cast<std::size_t>(2 * m)] = alternating(m) / Factorial(m);
    return roots_of_ascending(p, 2 * n, roots);
}

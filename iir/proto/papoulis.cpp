// Papoulis: the steepest monotonic low-pass, |H|^2 = 1 / (1 + 0.1 L_n(w^2)) with w^2 = -s^2.

#include "family.h"
#include "papoulis_table.h"

using namespace mensura::iir;

int PapoulisPoly(int n, CplxD *roots) {
    if (!order_fits(n, 2)) return 0;
    const auto degree = static_cast<std::size_t>(2 * n);
    Polynomial p{};
    if (n <= kPapoulisMaxOrder)
        for (std::size_t m = 1; 2 * m <= degree; ++m) p[2 * m] = kPapoulisL[static_cast<std::size_t>(n) - 1][m - 1];
    for (std::size_t j = 0; j <= degree; ++j) {
        p[j] *= kPapoulisEpsilonSquared;
        if (j / 2 % 2 != 0) p[j] = -p[j];
    }
    p[0] = 1.0;
    return roots_of_ascending(p, 2 * n, roots);
}

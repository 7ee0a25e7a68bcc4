// Bessel: poles at the roots of the reverse Bessel polynomial, whose coefficient of s^k is
// (2n-k)! / (k! (n-k)! 2^(n-k)) (Thomson WE, Proc IEE 96(III):487, 1949).

#include <cmath>

#include "family.h"

using namespace mensura::iir;

int BesselPoly(int n, CplxD *roots) {
    if (!order_fits(n, 1)) return 0;
    Polynomial p{};
    for (int k = n - 1; k >= 0; --k)
        p[static_cast<std::size_t>(k)] = Factorial(2 * n - k) / Factorial(k) / Factorial(n - k) / std::pow(2.0, n - k);
    p[static_cast<std::size_t>(n)] = 1.0;
    return roots_of_ascending(p, n, roots);
}

// Inverse Chebyshev: |H|^2 = eps^2 T_n(1/w)^2 / (1 + eps^2 T_n(1/w)^2), T_n being the Chebyshev polynomial of degree n.

#include <cmath>

#include "family.h"

using namespace mensura::iir;

namespace {

// T_n by ascending power: c[n-2k] = (-1)^k 2^(n-2k) (n/2) (n-k-1)! / (k! (n-2k)!)
Polynomial chebyshev_polynomial(int n) {
    Polynomial c{};
    for (int k = 0; k <= n / 2; ++k)
        c[static_cast<std::size_t>(n - 2 * k)] = alternating(k) * std::pow(2.0, n - 2 * k) * (n / 2.0) *
                                                 Factorial(n - k - 1) / (Factorial(k) * Factorial(n - 2 * k));
    return c;
}

// T_n(js)^2 by ascending power; its imaginary parts are rounding and dropped.
Polynomial squared_on_imaginary_axis(int n) {
    const Polynomial c = chebyshev_polynomial(n);
    const auto terms = static_cast<std::size_t>(n) + 1;
    std::array<CplxD, MAX_IIR_SECTIONS + 1> t{}, q{};
    for (std::size_t i = 0; i < terms; ++i) t[i] = CplxDMult_coef(CplxDPow({0.0, 1.0}, static_cast<double>(i)), c[i]);
    for (std::size_t i = 0; i < terms; ++i)
        for (std::size_t l = 0; l < terms; ++l) q[i + l] = CplxDAdd(q[i + l], CplxDMult(t[i], t[l]));
    Polynomial real_parts{};
    for (std::size_t k = 0; k < q.size(); ++k) real_parts[k] = q[k].re;
    return real_parts;
}

}  // namespace

// FindRoots takes polynomials by descending power.  Those here are by ascending power, so it returns the reciprocals of
// their roots: the transformation w -> 1/w that makes an inverse Chebyshev filter.
int InvChebyPoly(double stopBandDb, int n, CplxD *poles, CplxD *zeros, int *zeroCount) {
    constexpr double kNegligible = 0.01;  // the coefficients are integers up to rounding
    if (!order_fits(n, 2)) return 0;
    const double eps2 = 1 / (std::pow(10.0, stopBandDb / 10) - 1);
    Polynomial numerator = squared_on_imaginary_axis(n);
    Polynomial denominator{};
    for (std::size_t k = 0; k < denominator.size(); ++k) denominator[k] = eps2 * numerator[k];
    denominator[0] += 1.0;

    const int degree = 2 * n;
    int first = 0;  // T_n of odd n has no constant term
    while (first <= degree && std::fabs(numerator[static_cast<std::size_t>(first)]) <= kNegligible) ++first;
    *zeroCount = FindRoots(degree - first, numerator.data() + first, zeros);
    return FindRoots(degree, denominator.data(), poles);
}

// Bessel, Gaussian, Adjustable and Papoulis: poles from the roots of a polynomial.  All of them fall monotonically,
// Adjustable as seen at all orders and 81 values of gamma: d ln |H| / d ln w stays below 0 by a wide margin.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>

#include "../../iir/proto/limits.h"
#include "../../iir/proto/papoulis_table.h"
#include "conjugate_roots.h"
#include "family.h"

namespace mensura::sos {

namespace {

constexpr std::size_t kMostCoefficients = iir::kMaxPoles + 1;

using Coefficients = std::array<Real, kMostCoefficients>;  // of up to order 20

// Points on an ellipse, half-axes a and b, for all roots with im >= 0 of a polynomial of degree n.
std::span<Complex> start_on_ellipse(int n, Real centre, Real a, Real b, Prototype &prototype) {
    prototype.pole_count = static_cast<std::size_t>((n + 1) / 2);
    for (std::size_t i = 0; i < prototype.pole_count; ++i) {
        const Real angle = static_cast<Real>(2 * i + 1) * kPi / static_cast<Real>(n);
        const bool is_real = 2 * i + 1 == static_cast<std::size_t>(n);
        prototype.poles[i] = {centre + a * std::cos(angle), is_real ? 0 : b * std::sin(angle)};
    }
    return {prototype.poles.data(), prototype.pole_count};
}

// s = sqrt(-u) in the left half plane, above the real axis where u is.
Complex pole_of_square(Complex u) {
    const Real greater = std::sqrt((std::sqrt(norm(u)) + std::fabs(u.re)) / 2);
    const Real lesser = u.im / (2 * greater);
    return u.re < 0 ? Complex{-greater, lesser} : Complex{-lesser, greater};
}

// 1 / |H|^2 at w^2 = u and its logarithmic slope d ln / d ln u.
struct Loss {
    Real value, slope;
};

Loss loss_at(const Prototype &prototype, Real u) {
    Loss loss = {1, 0};
    for (std::size_t i = 0; i < prototype.pole_count; ++i) {
        const Complex p = prototype.poles[i];
        const Real square = norm(p), distance = square - u, damping = 4 * p.re * p.re;
        const Real factor = p.im > 0 ? distance * distance + damping * u : square + u;
        const Real slope = p.im > 0 ? damping - 2 * distance : 1;
        loss.value *= factor / (p.im > 0 ? square * square : square);
        loss.slope += u * slope / factor;
    }
    return loss;
}

// The frequency at which a monotonic filter has a gain of `level`: Newton's method on ln(loss) over ln(u) from a u that
// is too large, since beyond R = max |pole|^2 the loss is above (u / R - 1)^n.
Real monotonic_edge(int n, Real level, const Prototype &prototype) {
    constexpr int kMostSteps = 100;
    constexpr Real kSmall = 1e-12L;  // the next step would be its square
    const Real target = 1 / (level * level);
    Real largest = 0;
    for (std::size_t i = 0; i < prototype.pole_count; ++i) largest = std::max(largest, norm(prototype.poles[i]));
    Real low = 0, high = largest * (1 + std::pow(target, 1 / static_cast<Real>(n)));
    Real u = high;
    for (int i = 0; i < kMostSteps; ++i) {
        const Loss loss = loss_at(prototype, u);
        const Real excess = std::log(loss.value / target), step = -excess / loss.slope;
        Real &end = excess > 0 ? high : low;
        end = u;
        u *= std::exp(step);
        if (std::fabs(step) < kSmall) break;
        if (!(u > low && u < high)) u = (low + high) / 2;
    }
    return std::sqrt(u);
}

// |H|^2 = 1 / sum of (m!)^g w^2m, m = 0 .. n; then the poles move away from the real axis.
Real factorial_sum(const Settings &settings, Real g, Real stretch, Prototype &prototype) {
    const int n = settings.order;
    Coefficients c{};
    Real factorial = 1;
    c[0] = 1;
    for (int m = 1; m <= n; ++m) {
        factorial *= static_cast<Real>(m);
        c[static_cast<std::size_t>(m)] = std::pow(factorial, g);
    }
    const auto terms = std::span<const Real>(c).first(static_cast<std::size_t>(n) + 1);
    const Real radius = std::pow(terms.back(), -1 / static_cast<Real>(n));
    const auto roots = start_on_ellipse(n, 0, radius, radius, prototype);
    if (!improve_roots([&](Complex u) { return evaluate_powers(terms, u); }, roots)) return 0;
    for (Complex &p : roots) {
        p = pole_of_square(p);
        p.im *= stretch;
    }
    return monotonic_edge(n, settings.level, prototype);
}

constexpr std::size_t kPapoulisOrders = iir::kPapoulisMaxOrder;

// Row n-1: 2^(2n-1) times the coefficients of T_0, T_1, ... in L_n(u), T_j being those of Chebyshev in x = 2u - 1.
// Powers of u would lose 11 digits near the roots.  With
//
//     u^m = 2^(1-2m) (C(2m, m) / 2 + sum of C(2m, m-j) T_j(x))
//
// all of them are integers below 2^39, so that a sum modulo 2^64 is exact.
constexpr auto kPapoulisChebyshev = [] {
    std::array<std::array<std::uint64_t, 2 * kPapoulisOrders + 1>, 2 * kPapoulisOrders + 1> binomial{};
    for (std::size_t i = 0; i < binomial.size(); ++i) {
        binomial[i][0] = 1;
        for (std::size_t j = 1; j <= i; ++j) binomial[i][j] = binomial[i - 1][j - 1] + binomial[i - 1][j];
    }
    std::array<std::array<double, kPapoulisOrders + 1>, kPapoulisOrders> table{};
    for (std::size_t n = 1; n <= kPapoulisOrders; ++n)
        for (std::size_t j = 0; j <= n; ++j) {
            std::uint64_t sum = 0;
            for (std::size_t m = std::max<std::size_t>(j, 1); m <= n; ++m) {
                const auto c = static_cast<std::uint64_t>(static_cast<std::int64_t>(iir::kPapoulisL[n - 1][m - 1]));
                const std::uint64_t share = j == 0 ? binomial[2 * m][m] / 2 : binomial[2 * m][m - j];
                sum += (c * share) << (2 * (n - m));
            }
            table[n - 1][j] = static_cast<double>(static_cast<std::int64_t>(sum));
        }
    return table;
}();

}  // namespace

// H = c[0] / sum of c[k] s^k, c[k] = (2n-k)! / (k! (n-k)! 2^(n-k)): the reverse Bessel polynomial (Thomson WE, Proc IEE
// 96(III):487, 1949).  The roots lie around -n/2; taken about an integer there, the polynomial keeps integer coefficients
// and loses one digit at its roots instead of five.
Real bessel(const Settings &settings, Prototype &prototype) {
    const int n = settings.order;
    const auto order = static_cast<std::size_t>(n);
    Coefficients c{};
    c[order] = 1;
    for (int k = n; k > 0; --k) {
        const auto i = static_cast<std::size_t>(k);
        c[i - 1] = c[i] * static_cast<Real>((2 * n - k + 1) * k) / static_cast<Real>(2 * (n - k + 1));
    }
    const int near_centre = -((n + 1) / 2 + 1);
    const Real size = static_cast<Real>(n), centre = static_cast<Real>(near_centre);
    for (std::size_t k = 0; k < order; ++k)
        for (std::size_t i = order; i > k; --i) c[i - 1] += centre * c[i];
    const auto terms = std::span<const Real>(c).first(order + 1);
    const auto roots = start_on_ellipse(n, -size / 2 - centre, size / 2, size, prototype);
    if (!improve_roots([&](Complex s) { return evaluate_powers(terms, s); }, roots)) return 0;
    for (Complex &p : roots) p.re += centre;
    return monotonic_edge(n, settings.level, prototype);
}

// |H|^2 = 1 / exp(w^2), the exponential cut off after its term w^2n / n!
Real gaussian(const Settings &settings, Prototype &prototype) { return factorial_sum(settings, -1, 1, prototype); }

Real adjustable(const Settings &settings, Prototype &prototype) {
    constexpr Real kStretch = 1.1L;
    return factorial_sum(settings, settings.gamma > 0 ? 2 * settings.gamma : settings.gamma, kStretch, prototype);
}

// |H|^2 = 1 / (1 + 0.1 L_n(w^2))
Real papoulis(const Settings &settings, Prototype &prototype) {
    const int n = settings.order;
    const auto order = static_cast<std::size_t>(n);
    const Real scale = std::ldexp(Real{1} / 10, 1 - 2 * n);
    Coefficients c{};
    for (std::size_t j = 0; j <= order; ++j) c[j] = scale * static_cast<Real>(kPapoulisChebyshev[order - 1][j]);
    c[0] += 1;
    const auto terms = std::span<const Real>(c).first(order + 1);
    const Real size = (4 + std::log(static_cast<Real>(n)) * 3 / 2) / static_cast<Real>(n);  // of ln |x + sqrt(x^2 - 1)|
    const auto roots = start_on_ellipse(n, 0, std::cosh(size), std::sinh(size), prototype);
    if (!improve_roots([&](Complex x) { return evaluate_chebyshev(terms, x); }, roots)) return 0;
    for (Complex &p : roots) p = pole_of_square({(p.re + 1) / 2, p.im / 2});
    return monotonic_edge(n, settings.level, prototype);
}

}  // namespace mensura::sos

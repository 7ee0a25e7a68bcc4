// Elliptic: equal ripple in both bands (Orfanidis SJ, Lecture Notes on Elliptic Filter Design, 2006).
//
// The modulus k is the ratio of the band edges, the modulus k1 that of the ripples: with a pass-band ripple of
// 10 log10(1 + eps^2) dB the stop band is 10 log10(1 + (eps / k1)^2) dB deep.  K and K1 are the complete elliptic
// integrals, K' and K1' those of the complementary moduli, and the degree equation n K' / K = K1' / K1 ties k1 to k.
// With u = (2p + 1) / n zeros lie at j / (k cd(u K, k)) and poles at j cd((u - jv) K, k), where
// sn(j n v K1, k1) = j / eps; an odd order has a real pole at j sn(j v K, k).
//
// Elliptic functions come from Landen's transformation, k[i] = (k[i-1] / (1 + sqrt(1 - k[i-1]^2)))^2, which takes a
// modulus close to 0 in a few steps.  There cd and sn are cosine and sine, and
//     w[i-1] = (1 + k[i]) w[i] / (1 + k[i] w[i]^2)
// takes their values back up to the modulus that was asked for.

#include <cmath>

#include "../../internal/constants.h"
#include "family.h"
#include "limits.h"

using namespace mensura::iir;

namespace {

constexpr std::size_t kMaxSteps = 10;

using Sequence = std::array<double, kMaxSteps + 1>;

// Both moduli and what the transformation makes of them.
struct Moduli {
    Sequence k{}, k1{};
    std::size_t steps = 0;
};

// Landen's sequence of k[0], and the k1 that the degree equation gives it.  For small moduli the equation reads
// k1 / 4 = (k / 4)^n, so k1 is taken at the end of the sequence and brought back up by the inverse transformation,
// k1[i-1] = 2 sqrt(k1[i]) / (1 + k1[i]).  A sequence that is not small after nine steps ends in k[10] = 0.
void solve_degree_equation(Moduli &m, int n) {
    constexpr double kSmall = 1e-06;
    constexpr double kSmallestK1 = 1e-10;  // taken where the power underflows
    auto &[k, k1, steps] = m;
    steps = kMaxSteps;
    for (std::size_t i = 1; i < kMaxSteps; ++i) {
        const double ratio = k[i - 1] / (std::sqrt(1 - k[i - 1] * k[i - 1]) + 1);
        k[i] = ratio * ratio;
        if (k[i] <= kSmall) {
            steps = i;
            break;
        }
    }
    k1[steps] = 4 * std::pow(k[steps] * 0.25, n);
    for (std::size_t i = steps; i >= 1; --i) k1[i - 1] = 2 * std::sqrt(k1[i]) / (k1[i] + 1);
    if (k1[0] <= 0) k1[0] = kSmallestK1;
}

// The moduli of a stop band as deep as requested, by a secant search over k.  A search that ends because it has used up
// its evaluations leaves k[0] one step ahead of the other numbers, and the zeros are scaled by that k[0].
Moduli find_moduli(double eps, double stop_band_db, int n) {
    constexpr int kMaxEvaluations = 15;
    constexpr double kTolerance = 0.1;                            // dB
    constexpr double kStartSlope = 0.1605, kStartOffset = 0.016;  // moduli grow with the order
    constexpr Range kStart = {0.01, 0.7}, kStep = {-0.1, 0.1}, kModulus = {0.001, 0.99};
    constexpr double kFirstStep = 0.005;
    Moduli m;
    double &modulus = m.k[0];
    modulus = clamped_to(kStart, (n - 2) * kStartSlope + kStartOffset);
    double previous_error = 0, step = 0;
    for (int t = 0; t < kMaxEvaluations; ++t) {
        solve_degree_equation(m, n);
        const double depth = eps / m.k1[0];
        const double error = stop_band_db - 10 * std::log10(depth * depth + 1);
        if (std::fabs(error) < kTolerance) break;
        if (t == 0) {
            step = error > 0 ? kFirstStep : -kFirstStep;
        } else {
            const double slope = (previous_error - error) / step;
            if (slope == 0) break;
            step = clamped_to(kStep, error / slope);
        }
        modulus = clamped_to(kModulus, modulus - step);
        previous_error = error;
    }
    return m;
}

// v K where the modulus is 0 and K is pi/2.  For w = j / x Landen's transformation of the modulus k1 is
// x[i] = h + sqrt(h^2 + k1[i]) with h = (1 + k1[i]) x[i-1] / 2, and in the end sin(j n v K) = j / x.
double pole_shift(const Moduli &m, double eps, int n) {
    double x = eps;
    for (std::size_t i = 1; i <= m.steps; ++i) {
        const double h = (m.k1[i] + 1) * x * 0.5;
        x = h + std::sqrt(h * h + m.k1[i]);
    }
    return std::log((std::sqrt(x * x + 1) + 1) / x) / n;  // asinh(1 / x) / n
}

// The way back up for cd, with x = 1 / w: (x + k / x) / (1 + k).
double ascend_zero(const Moduli &m, double x) {
    for (std::size_t i = m.steps; i >= 1; --i) x = (x + m.k[i] / x) / (m.k[i] + 1);
    return x;
}

// The way back up for a pole j w, with z = 1 / (j w): the square of j turns the plus into a minus.
CplxD ascend_pole(const Moduli &m, CplxD z) {
    for (std::size_t i = m.steps; i >= 1; --i) {
        const CplxD reciprocal = CplxDDivision({m.k[i], 0.0}, z);
        z = CplxDDivision(CplxDSub(z, reciprocal), {1 + m.k[i], 0.0});
    }
    return z;
}

double ascend_real_pole(const Moduli &m, double x) {
    for (std::size_t i = m.steps; i >= 1; --i) x = (x - m.k[i] / x) / (m.k[i] + 1);
    return x;
}

}  // namespace

int EllipticPoly(double ripple, double stopBandDb, int n, CplxD *poles, CplxD *zeros, int *zeroCount) {
    if (!order_fits(n, 1)) return 0;
    const double r = clamped_to(kEllipticRipple, ripple);
    const double eps = std::sqrt(std::pow(10.0, r / 10) - 1);
    const Moduli m = find_moduli(eps, stopBandDb, n);
    const double shift = pole_shift(m, eps, n);

    const int pairs = n / 2;
    for (int p = 0; p < pairs; ++p) {
        const double theta = (2 * p + 1) * mensura::kHalfPi / n;  // u K where the modulus is 0
        const CplxD w = CplxDCos({-theta, shift});
        const CplxD z = ascend_pole(m, CplxDDivision({0.0, -1.0}, w));
        poles[2 * p] = CplxDDivision({1.0, 0.0}, z);
        poles[2 * p + 1] = CplxDConj(poles[2 * p]);

        const double x = ascend_zero(m, 1 / std::cos(theta)) / m.k[0];
        zeros[2 * p] = {0.0, x};
        zeros[2 * p + 1] = {0.0, -x};
    }
    *zeroCount = 2 * pairs;
    if (n % 2 != 0) poles[2 * pairs] = {-1 / ascend_real_pole(m, 1 / std::sinh(shift)), 0.0};
    return n;
}

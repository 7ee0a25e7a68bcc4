// Elliptic: equal ripple in both bands, by descending Landen sequences.
//
// Orfanidis SJ: Lecture Notes on Elliptic Filter Design (2006) derives the recursions.  M is the sequence of the
// modulus k, K that of the discrimination modulus k1, which together must meet the degree equation.

#include <cmath>

#include "../../internal/clamp.h"
#include "../../internal/constants.h"
#include "family.h"
#include "limits.h"

using namespace mensura::iir;

namespace {

using Size = std::size_t;
using Sequence = std::array<double, 20>;

constexpr int kMaxLandenSteps = 10;
constexpr int kMaxEvaluations = 15;

struct Landen {
    Sequence M{}, K{};
    Size L = 0;  // steps taken
};

// M[i] = (M[i-1] / (sqrt(1 - M[i-1]^2) + 1))^2 down to 1e-6, then K back up from the bottom of the degree equation.
// A sequence that does not get there in nine steps ends in M[10] = 0.
void descend(Landen &s, int n) {
    auto &[M, K, L] = s;
    L = kMaxLandenSteps;
    for (Size i = 1; i < kMaxLandenSteps; ++i) {
        const double ratio = M[i - 1] / (std::sqrt(1 - M[i - 1] * M[i - 1]) + 1);
        M[i] = ratio * ratio;
        if (M[i] <= 1e-06) {
            L = i;
            break;
        }
    }
    K[L] = 4 * std::pow(M[L] * 0.25, n);
    for (Size i = L; i >= 1; --i) K[i - 1] = 2 * std::sqrt(K[i]) / (K[i] + 1);
    if (K[0] <= 0) K[0] = 1e-10;
}

// The modulus whose stop band is stopBandDb deep, by a secant search.  After the fifteenth evaluation M[0] has moved
// once more while the rest still belongs to the modulus before; the zeros of such a design lie by the moved one.
Landen find_modulus(double eps, double stopBandDb, int n) {
    Landen s;
    double &modulus = s.M[0];
    modulus = mensura::clamp_or_nan((n - 2) * 0.1605 + 0.016, 0.01, 0.7);
    double previous_error = 0, step = 0;
    for (int t = 0; t < kMaxEvaluations; ++t) {
        descend(s, n);
        const double depth = eps / s.K[0];
        const double error = stopBandDb - 10 * std::log10(depth * depth + 1);
        if (std::fabs(error) < 0.1) break;
        if (t == 0) {
            step = error > 0 ? 0.005 : -0.005;
        } else {
            const double slope = (previous_error - error) / step;
            if (slope == 0) break;
            step = mensura::clamp_or_nan(error / slope, -0.1, 0.1);
        }
        modulus = mensura::clamp_or_nan(modulus - step, 0.001, 0.99);
        previous_error = error;
    }
    return s;
}

// u with sn(ju) at the ripple: the poles lie on the line shifted by it.
double pole_shift(const Landen &s, double eps, int n) {
    double v = eps;
    for (Size i = 0; i < s.L; ++i) {
        const double h = (s.K[i + 1] + 1) * v * 0.5;
        v = h + std::sqrt(h * h + s.K[i + 1]);
    }
    return std::log((std::sqrt(v * v + 1) + 1) / v) / n;
}

// Ascends the Landen sequence: z = (z -+ M/z) / (1 + M), minus for poles, plus for zeros.
CplxD ascend_pole(const Landen &s, CplxD z) {
    for (Size i = s.L; i >= 1; --i) {
        const CplxD reciprocal = CplxDDivision({s.M[i], 0.0}, z);
        z = CplxDDivision(CplxDSub(z, reciprocal), {1 + s.M[i], 0.0});
    }
    return z;
}

double ascend_real_pole(const Landen &s, double x) {
    for (Size i = s.L; i >= 1; --i) x = (x - s.M[i] / x) / (s.M[i] + 1);
    return x;
}

double ascend_zero(const Landen &s, double x) {
    for (Size i = s.L; i >= 1; --i) x = (x + s.M[i] / x) / (s.M[i] + 1);
    return x;
}

}  // namespace

int EllipticPoly(double ripple, double stopBandDb, int n, CplxD *poles, CplxD *zeros, int *zeroCount) {
    if (!order_fits(n, 1)) return 0;
    const double r = clamped_to(kEllipticRipple, ripple);
    const double eps = std::sqrt(std::pow(10.0, r / 10) - 1);
    const Landen s = find_modulus(eps, stopBandDb, n);
    const double u = pole_shift(s, eps, n);

    const int pairs = n / 2;
    for (int p = 0; p < pairs; ++p) {
        const double theta = (2 * p + 1) * mensura::kHalfPi / n;
        const CplxD w = CplxDCos({-theta, u});
        const CplxD z = ascend_pole(s, CplxDDivision({0.0, -1.0}, w));
        poles[2 * p] = CplxDDivision({1.0, 0.0}, z);
        poles[2 * p + 1] = CplxDConj(poles[2 * p]);

        const double x = ascend_zero(s, 1 / std::cos(theta)) / s.M[0];
        zeros[2 * p] = {0.0, x};
        zeros[2 * p + 1] = {0.0, -x};
    }
    *zeroCount = 2 * pairs;
    if (n % 2 != 0) poles[2 * pairs] = {-1 / ascend_real_pole(s, 1 / std::sinh(u)), 0.0};
    return n;
}

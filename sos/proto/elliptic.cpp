// Elliptic: equal ripple in both bands (Orfanidis SJ, Lecture Notes on Elliptic Filter Design, 2006).
//
//     |H|^2 = 1 / (1 + eps^2 F(w)^2) of the peak,    F = cd(n u K1, k1) where w = cd(u K, k)
//
// The pass band ends at w = 1 and the stop band begins at w = 1/k, where F = 1/k1.  The modulus k1 is the ratio of the
// epsilons of both bands; the degree equation K'/K = K1'/K1 / n then gives k.  With u = (2 i + 1) / n zeros lie at
// w = 1 / (k cd(u K, k)) and poles at s = j cd((u - j v) K, k), where sn(j n v K1, k1) = j / eps.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "family.h"

namespace mensura::sos {

namespace {

constexpr Real kEpsilon = std::numeric_limits<Real>::epsilon();

// A modulus k and k' = sqrt(1 - k^2), each with all its digits however small it is.
struct Modulus {
    Real k, complement;
};

// The arithmetic-geometric mean of 1 and x: pi / (2 K) for x = k', pi / (2 K') for x = k.
Real mean_with_one(Real x) {
    constexpr int kMostSteps = 30;
    Real a = 1, b = x;
    for (int i = 0; i < kMostSteps && a - b > kEpsilon * a; ++i) {
        const Real mean = (a + b) / 2;
        b = std::sqrt(a * b);
        a = mean;
    }
    return a;
}

Real period_ratio(Modulus m) { return mean_with_one(m.complement) / mean_with_one(m.k); }  // K'/K

// The modulus of the nome q = root^2, k = (theta2(q) / theta3(q))^2; q is at most exp(-pi), so few terms count.
Real modulus_of_nome(Real root) {
    constexpr int kTerms = 6;
    const Real q = root * root;
    Real theta2 = 1, theta3 = 1;  // sums of q^(m (m + 1)) and q^(m^2)
    Real power = 1, square = 1;   // q^m and q^(m^2)
    for (int m = 1; m < kTerms; ++m) {
        square *= power * power * q;
        power *= q;
        theta2 += square * power;
        theta3 += 2 * square;
    }
    const Real ratio = theta2 / theta3;
    return 4 * root * ratio * ratio;
}

// The modulus with K'/K = ratio.  Exchanging k and k' exchanges K and K'; the smaller of the two is calculated.
Modulus modulus_of_ratio(Real ratio) {
    const Real least = modulus_of_nome(std::exp(-kPi / 2 * std::max(ratio, 1 / ratio)));
    const Real other = std::sqrt((1 - least) * (1 + least));
    return ratio >= 1 ? Modulus{least, other} : Modulus{other, least};
}

// Landen's transformation takes a modulus to 0, where cd and sn are cosine and sine of u pi/2 for u K.
class Landen {
  public:
    explicit Landen(Modulus m) {
        moduli_[0] = m.k;
        while (steps_ + 1 < moduli_.size() && (steps_ == 0 || moduli_[steps_] > kEpsilon / 4)) {
            const Real ratio = m.k / (1 + m.complement);
            m = {ratio * ratio, 2 * std::sqrt(m.complement) / (1 + m.complement)};
            moduli_[++steps_] = m.k;
        }
    }

    // The cosine that belongs to cd = x, from 0 to 1/k.
    Real cosine_of(Real x) const { return descend(x, -1); }

    // y of the sine j y that belongs to sn = j x.
    Real imaginary_sine_of(Real x) const { return descend(x, 1); }

    // w = cd or sn of the sine or cosine w: (1 + v) w / (1 + v w^2) for each modulus v on the way back.
    Complex ascend(Complex w) const {
        for (std::size_t i = steps_; i > 0; --i) {
            const Real v = moduli_[i], square = v * norm(w);
            const Complex d = Complex{1, 0} + v * (w * w);
            const Real factor = (1 + v) / norm(d);
            w = {factor * w.re * (1 + square), factor * w.im * (1 - square)};  // times the conjugate of d
        }
        return w;
    }
    Real ascend(Real w) const {
        for (std::size_t i = steps_; i > 0; --i) w = (1 + moduli_[i]) * w / (1 + moduli_[i] * w * w);
        return w;
    }

  private:
    // 2 x / ((1 + v) (1 + sqrt(1 + sign (k x)^2))) from each modulus k to the next one, v
    Real descend(Real x, Real sign) const {
        for (std::size_t i = 0; i < steps_; ++i) {
            const Real kx = moduli_[i] * x;
            x = 2 * x / ((1 + moduli_[i + 1]) * (1 + std::sqrt(std::max(Real{0}, 1 + sign * kx * kx))));
        }
        return x;
    }

    std::array<Real, 32> moduli_{};
    std::size_t steps_ = 0;
};

// The poles and zeros above the real axis, where the shift is v pi/2.
void place_poles_and_zeros(int n, Modulus bands, const Landen &of_bands, Real shift, Prototype &prototype) {
    const Real cosh = std::cosh(shift), sinh = std::sinh(shift);
    prototype.pole_count = static_cast<std::size_t>((n + 1) / 2);
    for (std::size_t i = 0; i < prototype.pole_count; ++i) {
        const SineAndCosine u = ellipse_angle(n, static_cast<int>(i));
        const Complex cd = of_bands.ascend({u.cosine * cosh, u.sine * sinh});
        prototype.poles[i] = {-cd.im, cd.re};
        if (u.cosine > 0) prototype.zeros[prototype.zero_count++] = 1 / (bands.k * of_bands.ascend(u.cosine));
    }
}

}  // namespace

Real elliptic(const Settings &settings, Prototype &prototype) {
    const int n = settings.order;
    const auto order = static_cast<Real>(n);
    const Real eps2 = epsilon_squared(settings.ripple_db), stop2 = epsilon_squared(settings.stop_db);
    const Real level2 = epsilon_squared_of(settings.level);
    if (is_below_stop_band(level2, stop2)) return 0;

    const Real difference = (1 + eps2) * epsilon_squared(settings.stop_db - settings.ripple_db);  // stop2 - eps2
    const Modulus ripples = {std::sqrt(eps2 / stop2), std::sqrt(difference / stop2)};
    const Modulus bands = modulus_of_ratio(period_ratio(ripples) / order);
    const Landen of_ripples(ripples), of_bands(bands);
    const Real shift = std::asinh(of_ripples.imaginary_sine_of(1 / std::sqrt(eps2))) / order;
    place_poles_and_zeros(n, bands, of_bands, shift, prototype);
    prototype.peak = ripple_peak(n, eps2);
    return of_bands.ascend(inverse_chebyshev_polynomial(n, of_ripples.cosine_of(std::sqrt(level2 / eps2))));
}

}  // namespace mensura::sos

// Shared by the prototype families.  Each fills in poles, zeros and peak, and returns the edge in rad/s: the outermost
// frequency of the pass band at which the gain is `level` times the peak, or 0 where there is none.
#pragma once

#include <cmath>

#include "prototype.h"

namespace mensura::sos {

// What a family is told, as figures of one pass.
struct Settings {
    int order;
    Real level;               // a ratio below 1
    Real ripple_db, stop_db;  // above 0
    Real gamma;
};

// 10^(db / 10) - 1, the square of a Chebyshev polynomial's factor epsilon.
inline Real epsilon_squared(Real db) { return std::expm1(db / 10 * 2.30258509299404568401799145468436421L); }

// The same of a level given as a ratio: 1 / level^2 - 1.
inline Real epsilon_squared_of(Real level) { return (1 - level) * (1 + level) / (level * level); }

// Of theta = (2 i + 1) pi / (2 n): both as sines of an angle below pi/2, so that a small one keeps its digits.
struct SineAndCosine {
    Real sine, cosine;
};

inline SineAndCosine ellipse_angle(int n, int i) {
    const Real unit = kPi / static_cast<Real>(2 * n);
    return {std::sin(static_cast<Real>(2 * i + 1) * unit), std::sin(static_cast<Real>(n - 1 - 2 * i) * unit)};
}

// T_n(w) = x, the largest such w for x below 1.
inline Real inverse_chebyshev_polynomial(int n, Real x) {
    return x < 1 ? std::cos(std::acos(x) / static_cast<Real>(n)) : std::cosh(std::acosh(x) / static_cast<Real>(n));
}

// The ripple of an even order starts at its lowest point.
inline Real ripple_peak(int n, Real eps2) { return n % 2 == 0 ? std::sqrt(1 + eps2) : 1; }

// Whether a level lies below the stop band by more than rounding; both as epsilon_squared.
inline bool is_below_stop_band(Real level, Real stop_band) { return level > stop_band * (1 + Real{1e-12}); }

Real butterworth(const Settings &settings, Prototype &prototype);
Real chebyshev(const Settings &settings, Prototype &prototype);
Real inverse_chebyshev(const Settings &settings, Prototype &prototype);
Real elliptic(const Settings &settings, Prototype &prototype);
Real bessel(const Settings &settings, Prototype &prototype);
Real gaussian(const Settings &settings, Prototype &prototype);
Real adjustable(const Settings &settings, Prototype &prototype);
Real papoulis(const Settings &settings, Prototype &prototype);

}  // namespace mensura::sos

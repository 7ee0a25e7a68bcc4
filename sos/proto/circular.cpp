// Butterworth, Chebyshev and inverse Chebyshev: poles from the angles theta = (2 i + 1) pi / (2 n) of a circle.

#include <algorithm>
#include <cmath>

#include "family.h"

namespace mensura::sos {

namespace {

// Poles on an ellipse: -a sin(theta) + j b cos(theta); of an odd order the last one is real.
void place_on_ellipse(int n, Real a, Real b, Prototype &prototype) {
    const auto pairs = static_cast<std::size_t>((n + 1) / 2);
    for (std::size_t i = 0; i < pairs; ++i) {
        const SineAndCosine angle = ellipse_angle(n, static_cast<int>(i));
        prototype.poles[i] = {-a * angle.sine, b * angle.cosine};
    }
    prototype.pole_count = pairs;
}

}  // namespace

// |H|^2 = 1 / (1 + w^2n)
Real butterworth(const Settings &settings, Prototype &prototype) {
    place_on_ellipse(settings.order, 1, 1, prototype);
    return std::pow(epsilon_squared_of(settings.level), 1 / static_cast<Real>(2 * settings.order));
}

// |H|^2 = 1 / (1 + eps^2 T_n(w)^2) of the peak
Real chebyshev(const Settings &settings, Prototype &prototype) {
    const Real eps2 = epsilon_squared(settings.ripple_db);
    const Real a = std::asinh(1 / std::sqrt(eps2)) / static_cast<Real>(settings.order);
    place_on_ellipse(settings.order, std::sinh(a), std::cosh(a), prototype);
    prototype.peak = ripple_peak(settings.order, eps2);
    return inverse_chebyshev_polynomial(settings.order, std::sqrt(epsilon_squared_of(settings.level) / eps2));
}

// |H|^2 = 1 / (1 + 1 / (eps^2 T_n(1/w)^2)), with the stop band from w = 1 on, where eps^2 is 1 / (10^(stop_db/10) - 1)
Real inverse_chebyshev(const Settings &settings, Prototype &prototype) {
    const Real depth2 = epsilon_squared(settings.stop_db);
    const Real a = std::asinh(std::sqrt(depth2)) / static_cast<Real>(settings.order);
    place_on_ellipse(settings.order, std::sinh(a), std::cosh(a), prototype);
    for (std::size_t i = 0; i < prototype.pole_count; ++i) {
        // The reciprocal of the conjugate: above the real axis, too.
        prototype.poles[i] = reciprocal(conjugate(prototype.poles[i]));
        const SineAndCosine angle = ellipse_angle(settings.order, static_cast<int>(i));
        if (angle.cosine > 0) prototype.zeros[prototype.zero_count++] = 1 / angle.cosine;
    }
    const Real level2 = epsilon_squared_of(settings.level);
    if (is_below_stop_band(level2, depth2)) return 0;
    return 1 / inverse_chebyshev_polynomial(settings.order, std::max(std::sqrt(depth2 / level2), Real{1}));
}

}  // namespace mensura::sos

// The families by name, and their edge moved to 1 rad/s.

#include "prototype.h"

#include <algorithm>
#include <cmath>

#include "family.h"

namespace mensura::sos {

namespace {

// Ripple and stop band are requested for all passes together.
Settings of_one_pass(const mensura_sos_request &request, Real level) {
    const Real passes = static_cast<Real>(request.passes);
    return {request.poles, level, request.ripple_db / passes, request.stop_db / passes, request.gamma};
}

Real family_edge(int family, const Settings &settings, Prototype &prototype) {
    switch (family) {
        case pfButterworth: return butterworth(settings, prototype);
        case pfGaussian: return gaussian(settings, prototype);
        case pfBessel: return bessel(settings, prototype);
        case pfAdjustable: return adjustable(settings, prototype);
        case pfChebyshev: return chebyshev(settings, prototype);
        case pfInverseChebyshev: return inverse_chebyshev(settings, prototype);
        case pfPapoulis: return papoulis(settings, prototype);
        case pfElliptic: return elliptic(settings, prototype);
        default: return 0;
    }
}

// False for NaN as well, and where a transition is so narrow that rounding has moved a pole.
bool is_stable(const Prototype &prototype) {
    const auto end = prototype.poles.begin() + static_cast<std::ptrdiff_t>(prototype.pole_count);
    return std::all_of(prototype.poles.begin(), end, [](Complex pole) { return pole.re < 0; });
}

void move_edge_to_one(Prototype &prototype, Real edge) {
    const Real scale = 1 / edge;
    for (std::size_t i = 0; i < prototype.pole_count; ++i) prototype.poles[i] = scale * prototype.poles[i];
    for (std::size_t i = 0; i < prototype.zero_count; ++i) prototype.zeros[i] *= scale;
}

}  // namespace

bool make_prototype(const mensura_sos_request &request, Real level, Prototype &prototype) {
    prototype = {};
    if (!(level < 1)) return false;
    const Real edge = family_edge(request.family, of_one_pass(request, level), prototype);
    if (!std::isfinite(edge) || edge <= 0 || !is_stable(prototype)) return false;
    move_edge_to_one(prototype, edge);
    return true;
}

}  // namespace mensura::sos

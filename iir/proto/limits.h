// The prototype families: their names, the settings that each depends on, and how far each setting goes.
//
// CalcLowPassProtoCoeff designs with clamped(request); what reports a design calls the same function.
#pragma once

#include <mensura/iir.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "../../internal/clamp.h"

namespace mensura::iir {

struct Range {
    double least, most;
};

// The settings of a request besides family and order.
enum Setting : unsigned { kNoSetting = 0, kRipple = 1, kStopBand = 2, kGamma = 4 };

struct Family {
    int code;           // ProtoFamily
    const char *name;   // in tables and sentences
    const char *word;   // on a command line and in JSON
    int max_poles;      // larger orders are clamped
    unsigned settings;  // that the design depends on
};

inline constexpr std::array<Family, 8> kFamilies = {{
    {pfButterworth, "Butterworth", "butterworth", 20, kNoSetting},
    {pfGaussian, "Gaussian", "gaussian", 12, kNoSetting},
    {pfBessel, "Bessel", "bessel", 12, kNoSetting},
    {pfAdjustable, "Adjustable", "adjustable", 20, kGamma},
    {pfChebyshev, "Chebyshev", "chebyshev", 20, kRipple},
    {pfInverseChebyshev, "Inverse Chebyshev", "inverse-chebyshev", 15, kStopBand},
    {pfPapoulis, "Papoulis", "papoulis", 20, kNoSetting},
    {pfElliptic, "Elliptic", "elliptic", 15, kRipple | kStopBand},
}};
static_assert([] {
    for (std::size_t i = 0; i < kFamilies.size(); ++i)
        if (kFamilies[i].code != static_cast<int>(i)) return false;
    return true;
}());  // a code is the index of its row

inline constexpr int kMaxPoles = 20;                    // of any family
inline constexpr Range kRippleRange = {0.0001, 1.0};    // dB
inline constexpr Range kEllipticRipple = {0.001, 1.0};  // dB
inline constexpr Range kStopBandRange = {20.0, 120.0};  // dB
inline constexpr Range kGammaRange = {-1.0, 1.0};
inline constexpr Range kChebyshevEpsilon = {1e-5, 0.996};  // sqrt(10^(ripple/10) - 1): ripples of 4e-10 and 2.99 dB

// The largest ripple in dB of Chebyshev designs of order 16 to 20.  Their poles come close to the imaginary axis as
// order and ripple grow.
inline constexpr int kFirstCappedOrder = 16;
inline constexpr std::array<double, 5> kChebyshevMaxRipple = {0.5, 0.4, 0.25, 0.125, 0.1};

// Null for a code that is no family.
constexpr const Family *find_family(int code) {
    return code < 0 || code >= static_cast<int>(kFamilies.size()) ? nullptr
                                                                  : &kFamilies[static_cast<std::size_t>(code)];
}

constexpr bool depends_on(int family, Setting setting) {
    const Family *const f = find_family(family);
    return f != nullptr && (f->settings & setting) != 0;
}

constexpr int max_poles(int family) {
    const Family *const f = find_family(family);
    return f != nullptr ? f->max_poles : kMaxPoles;
}

constexpr Range ripple_range(int family, int poles) {
    if (family == pfElliptic) return kEllipticRipple;
    if (family == pfChebyshev && poles >= kFirstCappedOrder)
        return {kRippleRange.least,
                kChebyshevMaxRipple[static_cast<std::size_t>(std::min(poles, kMaxPoles) - kFirstCappedOrder)]};
    return kRippleRange;
}

constexpr double clamped_to(Range range, double x) { return clamp_or_nan(x, range.least, range.most); }

// The request that is designed in the place of `spec`.
constexpr ProtoSpec clamped(ProtoSpec spec) {
    spec.NumPoles = std::clamp(spec.NumPoles, 1, max_poles(spec.Family));
    spec.Ripple = clamped_to(ripple_range(spec.Family, spec.NumPoles), spec.Ripple);
    spec.StopBandDb = clamped_to(kStopBandRange, spec.StopBandDb);
    spec.Gamma = clamped_to(kGammaRange, spec.Gamma);
    return spec;
}

}  // namespace mensura::iir

// Assembly of the analog low-pass prototype: clamped request -> roots of a family -> sections -> corner at 1 rad/s.

#include <mensura/iir.h>

#include <algorithm>
#include <array>

#include "../internal/clamp.h"
#include "proto/family.h"

using namespace mensura::iir;

namespace {

using Roots = std::array<CplxD, MAX_IIR_SECTIONS>;

bool has_stop_band_zeros(int family) { return family == pfInverseChebyshev || family == pfElliptic; }

int max_poles(int family) {
    switch (family) {
        case pfInverseChebyshev:
        case pfElliptic: return 15;
        case pfGaussian:
        case pfBessel: return 12;
        default: return 20;
    }
}

// The ripple up to which a Chebyshev design of high order stays numerically sane.
double max_chebyshev_ripple(int poles) {
    constexpr double kFromSixteen[] = {0.5, 0.4, 0.25, 0.125, 0.1};
    return poles > 15 ? kFromSixteen[poles - 16] : 1.0;
}

ProtoSpec clamped(ProtoSpec spec) {
    spec.NumPoles = std::clamp(spec.NumPoles, 1, max_poles(spec.Family));
    spec.Gamma = mensura::clamp_or_nan(spec.Gamma, -1.0, 1.0);
    spec.Ripple = mensura::clamp_or_nan(spec.Ripple, 0.0001, 1.0);
    if (spec.Family == pfChebyshev) {
        const double limit = max_chebyshev_ripple(spec.NumPoles);
        if (spec.Ripple > limit) spec.Ripple = limit;
    }
    spec.StopBandDb = mensura::clamp_or_nan(spec.StopBandDb, 20.0, 120.0);
    return spec;
}

LowPassProto empty_prototype() {
    LowPassProto proto{};
    std::ranges::fill(proto.Num0, 1.0);
    std::ranges::fill(proto.Den0, 1.0);
    return proto;
}

// The poles of a family, and its zeros where it has some.  Returns the number of poles.
int family_roots(const ProtoSpec &spec, Roots &poles, Roots &zeros, int &zero_count) {
    const int n = spec.NumPoles;
    CplxD *const p = poles.data();
    switch (spec.Family) {
        case pfButterworth: return ButterworthPoly(n, p);
        case pfGaussian: return GaussianPoly(n, p);
        case pfBessel: return BesselPoly(n, p);
        case pfAdjustable: return AdjustablePoly(spec.Gamma, n, p);
        case pfChebyshev: return ChebyshevPoly(spec.Ripple, n, p);
        case pfInverseChebyshev: return InvChebyPoly(spec.StopBandDb, n, p, zeros.data(), &zero_count);
        case pfPapoulis: return PapoulisPoly(n, p);
        case pfElliptic: return EllipticPoly(spec.Ripple, spec.StopBandDb, n, p, zeros.data(), &zero_count);
        default: return 0;
    }
}

// An odd order has its real pole, the most damped, in section 0 and one zero section less: the zeros move up by one.
// Num1 is 0 in every section and stays.
void give_real_pole_no_zeros(LowPassProto &proto, int zero_sections) {
    const int moved = std::min(zero_sections + 1, MAX_IIR_SECTIONS - 1);
    std::copy_backward(proto.Num2, proto.Num2 + moved, proto.Num2 + moved + 1);
    std::copy_backward(proto.Num0, proto.Num0 + moved, proto.Num0 + moved + 1);
    proto.Num2[0] = 0.0;
    proto.Num0[0] = 1.0;
}

}  // namespace

LowPassProto CalcLowPassProtoCoeff(ProtoSpec request) {
    const ProtoSpec spec = clamped(request);
    LowPassProto proto = empty_prototype();
    if (spec.NumPoles == 1) {  // 1 / (s + 1), whatever the family
        proto.Den1[0] = 1.0;
        proto.SectionCount = 1;
        return proto;
    }
    Roots poles{}, zeros{};
    int zero_count = 0;
    const int pole_count = family_roots(spec, poles, zeros, zero_count);
    proto.SectionCount = GetFilterCoeff(pole_count, poles.data(), proto.Den2, proto.Den1, proto.Den0);
    const int zero_sections = GetFilterCoeff(zero_count, zeros.data(), proto.Num2, proto.Num1, proto.Num0);
    if (spec.Family != pfButterworth)  // whose corner is at 1 rad/s by construction
        SetCornerFreq(proto.SectionCount, proto.Den2, proto.Den1, proto.Den0, proto.Num2, proto.Num1, proto.Num0);
    if (has_stop_band_zeros(spec.Family) && zero_sections != 0 && spec.NumPoles % 2 != 0)
        give_real_pole_no_zeros(proto, zero_sections);
    return proto;
}

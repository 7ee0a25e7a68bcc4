// Assembly of the analog low-pass prototype: clamped request -> roots of a family -> sections -> corner at 1 rad/s.

#include <mensura/iir.h>

#include <algorithm>
#include <array>

#include "proto/limits.h"

using namespace mensura::iir;

namespace {

using Roots = std::array<CplxD, MAX_IIR_SECTIONS>;

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
    Roots poles, zeros;
    int zero_count = 0;
    const int pole_count = family_roots(spec, poles, zeros, zero_count);
    proto.SectionCount = GetFilterCoeff(pole_count, poles.data(), proto.Den2, proto.Den1, proto.Den0);
    const int zero_sections = GetFilterCoeff(zero_count, zeros.data(), proto.Num2, proto.Num1, proto.Num0);
    if (spec.Family != pfButterworth)  // whose corner is at 1 rad/s by construction
        SetCornerFreq(proto.SectionCount, proto.Den2, proto.Den1, proto.Den0, proto.Num2, proto.Num1, proto.Num0);
    if (depends_on(spec.Family, kStopBand) && zero_sections != 0 && spec.NumPoles % 2 != 0)
        give_real_pole_no_zeros(proto, zero_sections);
    return proto;
}

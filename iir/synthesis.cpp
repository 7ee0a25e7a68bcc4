// Digital filter synthesis: prototype -> pass type and bilinear transform -> split -> gain -> record.
//
// All formulas expand one scheme.  With u = (2/T) (1 - z^-1) / (1 + z^-1) the prototype's s becomes u (low-pass,
// all-pass), 1/u (high-pass), Q (u + 1/u) (band-pass) or 1 / (Q (u + 1/u)) (notch); fractions are cleared, and the
// section is scaled by D0/N0, which makes its pass-band gain 1.  The last bits of a design depend on the order of the
// terms, so the expansions are not simplified.

#include <mensura/iir.h>
#include <mensura/roots.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "../internal/constants.h"
#include "default_request.h"
#include "pass_types.h"
#include "proto/limits.h"

using namespace mensura::iir;

namespace {

// (N2 s^2 + N1 s + N0) / (D2 s^2 + D1 s + D0)
struct AnalogSection {
    double N2, N1, N0, D2, D1, D0;

    bool first_order() const { return N2 == 0.0 && D2 == 0.0; }
};

// Bit for bit, as the two sections of a conjugate pair are: the design of one serves for the other.
bool identical(const AnalogSection &s, const AnalogSection &t) {
    using Bits = std::array<std::uint64_t, 6>;
    return std::bit_cast<Bits>(s) == std::bit_cast<Bits>(t);
}

// a0 (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2).
// Until a split section is normalised, a0 belongs to the denominator.
struct DigitalSection {
    double a0, a1, a2, b0, b1, b2;
};

// Coefficients of z^0 .. z^-4.
using Quartic = std::array<double, 5>;
using QuarticRoots = std::array<CplxD, 4>;

struct Warp {
    double T, Q;
};

AnalogSection analog_section(const LowPassProto &p, std::size_t k) {
    return {p.Num2[k], p.Num1[k], p.Num0[k], p.Den2[k], p.Den1[k], p.Den0[k]};
}

// Zeros at the mirror images of the poles.
AnalogSection all_pass(const AnalogSection &s) { return {s.D2, -s.D1, s.D0, s.D2, s.D1, s.D0}; }

// (NumPoles + 1) / 2, band types NumPoles: of the request before it is clamped.
int requested_sections(const IIRDesignSpec &spec) {
    if (is_band_type(spec.PassType)) return spec.Proto.NumPoles;
    return static_cast<int>((std::int64_t{spec.Proto.NumPoles} + 1) / 2);
}

std::size_t within_record(int sections) {
    return static_cast<std::size_t>(std::clamp(sections, 0, static_cast<int>(MAX_IIR_SECTIONS)));
}

// Q is centre over bandwidth, divided by a tuned factor for the warping of the frequency axis, 0.8 tan(w pi / 4) with
// w = centre + 1, constant from w = 1.95 on.
Warp prewarp(const IIRDesignSpec &spec) {
    constexpr double kLimit = 1.95, kFactor = 0.8, kFactorAtLimit = 20.361359663485633;
    const double w = spec.NormCutoff + 1.0;
    const double f = w > kLimit ? kFactorAtLimit : kFactor * std::tan(w * mensura::kQuarterPi);
    return {2 * std::tan(spec.NormCutoff * mensura::kHalfPi), spec.NormCutoff / spec.NormBandwidth / f};
}

// ---- second-order digital sections from one analog section ----

DigitalSection low_pass(const AnalogSection &s, double T) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    if (s.first_order()) {
        const double den = 2 * D1 + D0 * T;
        return {1.0, (D0 * T - 2 * D1) / den, 0.0, (N0 * T + 2 * N1) / den * D0 / N0, (N0 * T - 2 * N1) / den * D0 / N0,
                0.0};
    }
    const double T2 = T * T;
    const double den = 4 * D2 + 2 * D1 * T + D0 * T2;
    return {1.0,
            (2 * D0 * T2 - 8 * D2) / den,
            (4 * D2 - 2 * D1 * T + D0 * T2) / den,
            (4 * N2 + N0 * T2 + 2 * N1 * T) / den * D0 / N0,
            (2 * N0 * T2 - 8 * N2) / den * D0 / N0,
            (4 * N2 - 2 * N1 * T + N0 * T2) / den * D0 / N0};
}

DigitalSection high_pass(const AnalogSection &s, double T) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    if (s.first_order()) {
        const double den = 2 * D0 + D1 * T;
        return {1.0, (D1 * T - 2 * D0) / den, 0.0, (N1 * T + 2 * N0) / den * D0 / N0, (N1 * T - 2 * N0) / den * D0 / N0,
                0.0};
    }
    const double T2 = T * T;
    const double den = D2 * T2 + 4 * D0 + 2 * D1 * T;
    return {1.0,
            (2 * D2 * T2 - 8 * D0) / den,
            (D2 * T2 + 4 * D0 - 2 * D1 * T) / den,
            (N2 * T2 + 4 * N0 + 2 * N1 * T) / den * D0 / N0,
            (2 * N2 * T2 - 8 * N0) / den * D0 / N0,
            (N2 * T2 - 2 * N1 * T + 4 * N0) / den * D0 / N0};
}

DigitalSection band_pass_first_order(const AnalogSection &s, Warp warp) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    const auto [T, Q] = warp;
    const double T2 = T * T;
    const double den = 4 * D1 * Q + 2 * D0 * T + D1 * Q * T2;
    return {1.0,
            (2 * D1 * Q * T2 - 8 * D1 * Q) / den,
            (D1 * Q * T2 + 4 * D1 * Q - 2 * D0 * T) / den,
            (4 * N1 * Q + 2 * N0 * T + N1 * Q * T2) / den * D0 / N0,
            (2 * N1 * Q * T2 - 8 * N1 * Q) / den * D0 / N0,
            (N1 * Q * T2 + 4 * N1 * Q - 2 * N0 * T) / den * D0 / N0};
}

DigitalSection notch_first_order(const AnalogSection &s, Warp warp) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    const auto [T, Q] = warp;
    const double T2 = T * T;
    const double den = 2 * D1 * T + D0 * Q * T2 + 4 * D0 * Q;
    return {1.0,
            (2 * D0 * Q * T2 - 8 * D0 * Q) / den,
            (4 * D0 * Q - 2 * D1 * T + D0 * Q * T2) / den,
            (2 * N1 * T + N0 * Q * T2 + 4 * N0 * Q) / den * D0 / N0,
            (2 * N0 * Q * T2 - 8 * N0 * Q) / den * D0 / N0,
            (4 * N0 * Q - 2 * N1 * T + N0 * Q * T2) / den * D0 / N0};
}

// ---- fourth-order forms of the band types ----

struct Powers {
    double T, T2, T3, T4, Q, Q2;

    explicit Powers(Warp w) : T(w.T), T2(T * T), T3(T2 * T), T4(T3 * T), Q(w.Q), Q2(Q * Q) {}
};

// p2 s^2 + p1 s + p0, numerator or denominator, times `factor`.
Quartic band_pass_quartic(double p2, double p1, double p0, double factor, const Powers &w) {
    const auto [T, T2, T3, T4, Q, Q2] = w;
    return {(p2 * Q2 * T4 + 8 * p2 * Q2 * T2 + 16 * p2 * Q2 + 2 * p1 * Q * T3 + 8 * p1 * Q * T + 4 * p0 * T2) * factor,
            (4 * p2 * Q2 * T4 + 4 * p1 * Q * T3 - 16 * p1 * Q * T - 64 * p2 * Q2) * factor,
            (6 * p2 * Q2 * T4 - 16 * p2 * Q2 * T2 + 96 * p2 * Q2 - 8 * p0 * T2) * factor,
            (4 * p2 * Q2 * T4 - 4 * p1 * Q * T3 + 16 * p1 * Q * T - 64 * p2 * Q2) * factor,
            (p2 * Q2 * T4 + 8 * p2 * Q2 * T2 + 16 * p2 * Q2 - 2 * p1 * Q * T3 - 8 * p1 * Q * T + 4 * p0 * T2) * factor};
}

// Both notch polynomials carry a common factor of -1, which cancels.
Quartic notch_denominator(const AnalogSection &s, const Powers &w) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    const auto [T, T2, T3, T4, Q, Q2] = w;
    return {(4 * D2 * T2 + 2 * D1 * Q * T3 + 8 * D0 * Q2 * T2 + 8 * D1 * Q * T + D0 * Q2 * T4 + 16 * D0 * Q2) * -N0,
            (4 * D1 * Q * T3 - 16 * D1 * Q * T - 64 * D0 * Q2 + 4 * D0 * Q2 * T4) * -N0,
            (96 * D0 * Q2 - 8 * D2 * T2 - 16 * D0 * Q2 * T2 + 6 * D0 * Q2 * T4) * -N0,
            (16 * D1 * Q * T + 4 * D0 * Q2 * T4 - 64 * D0 * Q2 - 4 * D1 * Q * T3) * -N0,
            (4 * D2 * T2 - 2 * D1 * Q * T3 + 8 * D0 * Q2 * T2 - 8 * D1 * Q * T + D0 * Q2 * T4 + 16 * D0 * Q2) * -N0};
}

Quartic notch_numerator(const AnalogSection &s, const Powers &w) {
    const auto [N2, N1, N0, D2, D1, D0] = s;
    const auto [T, T2, T3, T4, Q, Q2] = w;
    return {(-4 * N2 * T2 - 2 * N1 * Q * T3 - 8 * N1 * Q * T - 8 * N0 * Q2 * T2 - N0 * Q2 * T4 - 16 * N0 * Q2) * D0,
            (64 * N0 * Q2 + 16 * N1 * Q * T - 4 * N1 * Q * T3 - 4 * N0 * Q2 * T4) * D0,
            (8 * N2 * T2 - 96 * N0 * Q2 + 16 * N0 * Q2 * T2 - 6 * N0 * Q2 * T4) * D0,
            (64 * N0 * Q2 + 4 * N1 * Q * T3 - 16 * N1 * Q * T - 4 * N0 * Q2 * T4) * D0,
            (2 * N1 * Q * T3 - 4 * N2 * T2 - 8 * N0 * Q2 * T2 + 8 * N1 * Q * T - 16 * N0 * Q2 - N0 * Q2 * T4) * D0};
}

struct FourthOrder {
    Quartic denominator, numerator;
};

FourthOrder fourth_order(const AnalogSection &s, Warp warp, int pass_type) {
    const Powers w(warp);
    FourthOrder f = pass_type == ptBandPass ? FourthOrder{band_pass_quartic(s.D2, s.D1, s.D0, s.N0, w),
                                                          band_pass_quartic(s.N2, s.N1, s.N0, s.D0, w)}
                                            : FourthOrder{notch_denominator(s, w), notch_numerator(s, w)};
    constexpr double kNearQuarter = 0.0005;
    if (std::fabs(warp.T - 2.0) < kNearQuarter)  // centre at a quarter of the sampling rate: symmetric about it
        for (Quartic *q : {&f.denominator, &f.numerator}) (*q)[1] = (*q)[3] = 0.0;
    return f;
}

// ---- splitting a fourth-order form into two second-order ones ----

struct Quadratic {
    double c0, c1, c2;
};

// The quadratic in z^-1 with a pair of roots and the leading coefficient m; only real parts are kept.
Quadratic from_roots(CplxD first, CplxD second, double m) {
    return {CplxDMult(first, second).re * m, -CplxDAdd(first, second).re * m, m};
}

// The first two roots are a pair, and the last two.  A failed search leaves the roots of an earlier one in `roots`, but
// the search only fails where the coefficients are all 0, and then m is 0 too.
std::array<Quadratic, 2> split(const Quartic &q, QuarticRoots &roots) {
    Quartic descending;
    std::ranges::reverse_copy(q, descending.begin());
    FindRoots(4, descending.data(), roots.data());
    const double m = std::sqrt(std::fabs(q[4]));
    return {from_roots(roots[0], roots[1], m), from_roots(roots[2], roots[3], m)};
}

// Zeros at z = 1 and z = -1 in each half.
std::array<Quadratic, 2> split_fixed_zeros(const Quartic &q) {
    const double m = std::sqrt(std::fabs(q[4]));
    return {Quadratic{-m, 0.0, m}, Quadratic{-m, 0.0, m}};
}

bool zeros_are_fixed(const IIRDesignSpec &spec) {
    return spec.PassType == ptBandPass && !depends_on(spec.Proto.Family, kStopBand);
}

DigitalSection combined(const Quadratic &denominator, const Quadratic &numerator) {
    return {denominator.c0, denominator.c1, denominator.c2, numerator.c0, numerator.c1, numerator.c2};
}

DigitalSection normalised(const DigitalSection &s) {
    return {1.0, s.a1 / s.a0, s.a2 / s.a0, s.b0 / s.a0, s.b1 / s.a0, s.b2 / s.a0};
}

// ---- the record ----

void put(IIRCoeffs &record, std::size_t k, const DigitalSection &s) {
    record.a0[k] = s.a0;
    record.a1[k] = s.a1;
    record.a2[k] = s.a2;
    record.b0[k] = s.b0;
    record.b1[k] = s.b1;
    record.b2[k] = s.b2;
}

void put(IIRCoeffs &record, std::size_t k, const FourthOrder &f) {
    const auto &[a, b] = f;
    put(record, k, DigitalSection{a[0], a[1], a[2], b[0], b[1], b[2]});
    record.a3[k] = a[3];
    record.a4[k] = a[4];
    record.b3[k] = b[3];
    record.b4[k] = b[4];
}

DigitalSection single_section(const AnalogSection &s, int pass_type, double T) {
    switch (pass_type) {
        case ptLowPass: return low_pass(s, T);
        case ptHighPass: return high_pass(s, T);
        case ptAllPass: return low_pass(all_pass(s), T);
        default: return {};
    }
}

void design_single_sections(IIRCoeffs &record, const LowPassProto &proto, int pass_type, double T) {
    AnalogSection previous{};
    DigitalSection digital{};
    for (std::size_t k = 0; k < within_record(proto.SectionCount); ++k) {
        const AnalogSection s = analog_section(proto, k);
        if (k == 0 || !identical(s, previous)) digital = single_section(s, pass_type, T);
        put(record, k, digital);
        previous = s;
    }
}

// One fourth-order form and its two halves.
struct BandSection {
    FourthOrder whole;
    DigitalSection halves[2];
};

BandSection band_section(const AnalogSection &s, const IIRDesignSpec &spec, Warp warp, QuarticRoots &roots) {
    const FourthOrder f = fourth_order(s, warp, spec.PassType);
    const auto a = split(f.denominator, roots);
    const auto b = zeros_are_fixed(spec) ? split_fixed_zeros(f.numerator) : split(f.numerator, roots);
    return {f, {combined(a[0], b[0]), combined(a[1], b[1])}};
}

void design_band_sections(IIRCoeffs &record, const LowPassProto &proto, const IIRDesignSpec &spec, Warp warp) {
    std::array<DigitalSection, MAX_IIR_SECTIONS> sections{};
    std::size_t filled = 0;
    const auto append = [&](const DigitalSection &s) {
        if (filled < sections.size()) sections[filled++] = s;
    };
    QuarticRoots roots{};
    AnalogSection previous{};
    BandSection band{};
    for (std::size_t k = 0; k < within_record(proto.SectionCount); ++k) {
        const AnalogSection s = analog_section(proto, k);
        if (s.first_order()) {
            append(spec.PassType == ptBandPass ? band_pass_first_order(s, warp) : notch_first_order(s, warp));
            continue;
        }
        if (!identical(s, previous)) band = band_section(s, spec, warp, roots);
        put(record, k, band.whole);
        for (const DigitalSection &half : band.halves) append(half);
        previous = s;
    }
    for (std::size_t j = 0; j < within_record(spec.Proto.NumPoles); ++j) put(record, j, normalised(sections[j]));
}

// GainDb over n sections, the n-th root to each.
void spread_gain(IIRCoeffs &record, int n, double gain_db) {
    if (n < 1 || gain_db == 0) return;
    const double g = std::pow(std::pow(10.0, gain_db / 20.0), 1.0 / n);
    for (std::size_t k = 0; k < within_record(n); ++k)
        for (double *b : {record.b0, record.b1, record.b2}) b[k] *= g;
}

void synthesise(const IIRDesignSpec &spec, IIRCoeffs &record) {
    const LowPassProto proto = CalcLowPassProtoCoeff(spec.Proto);
    const Warp warp = prewarp(spec);
    const int n = requested_sections(spec);
    record = {};
    if (is_band_type(spec.PassType))
        design_band_sections(record, proto, spec, warp);
    else
        design_single_sections(record, proto, spec.PassType, warp.T);
    spread_gain(record, n, spec.GainDb);
    record.NumSections = std::min(n, static_cast<int>(MAX_IIR_SECTIONS));
}

}  // namespace

IIRCoeffs CalcIIRFilterCoeff(IIRDesignSpec spec) {
    IIRCoeffs record;
    synthesise(spec, record);
    return record;
}

void initTIIRFilter(TIIRFilter *filter, int passType, double fc, double fs) {
    filter->Spec = default_request(passType, (fc + fc) / fs);
    synthesise(filter->Spec, filter->Coeffs);
    filter->Primed = 0;
}

void initTIIRFilters(TIIRFilterBank *bank, int passType, int count, double fc, double fs) {
    bank->Count = count;
    TIIRFilter *const filters = bank->Filters;
    if (count > 0) initTIIRFilter(filters, passType, fc, fs);
    for (int i = 1; i < count; ++i) {  // without the registers, which are set when the filter is primed
        filters[i].Spec = filters[0].Spec;
        filters[i].Coeffs = filters[0].Coeffs;
        filters[i].Primed = 0;
    }
}

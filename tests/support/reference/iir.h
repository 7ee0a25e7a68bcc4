// Running and measuring cascades by their definition, one sample and one section after the other.
#pragma once

#include <mensura/iir.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <span>

namespace reference {

struct Sums {
    double feed_forward, output;
};

// One section of direct form I, with registers of its own.
inline Sums run_section(const IIRCoeffs &c, TIIRFilter &r, int k, double x) {
    const double s = c.b0[k] * x + c.b1[k] * r.RegX1[k] + c.b2[k] * r.RegX2[k];
    const double y = c.a0[k] * s - c.a1[k] * r.RegY1[k] - c.a2[k] * r.RegY2[k];
    r.RegX2[k] = r.RegX1[k];
    r.RegX1[k] = x;
    r.RegY2[k] = r.RegY1[k];
    r.RegY1[k] = y;
    return {s, y};
}

inline int sections_to_run(const IIRCoeffs &c) { return std::clamp(c.NumSections, 1, int{MAX_IIR_SECTIONS}); }

// IIRFilter
inline double filter(TIIRFilter &f, double x) {
    if (f.Primed == 0)
        for (auto *registers : {&f.RegX1, &f.RegX2, &f.RegY1, &f.RegY2}) std::ranges::fill(*registers, x);
    f.Primed = 1;
    for (int k = 0; k < sections_to_run(f.Coeffs); ++k) x = run_section(f.Coeffs, f, k, x).output;
    return x;
}

// IIRFilters
inline void filter_channels(TIIRFilterBank &bank, const double *x, double *out) {
    for (int i = 0; i < bank.Count; ++i) out[i] = filter(bank.Filters[i], x[i]);
}

// IIRFilterZeroPhase, in place
inline void filter_zero_phase(TIIRFilter &f, std::span<double> x) {
    for (double &value : x) value = filter(f, value);
    f.Primed = 0;
    for (std::size_t i = x.size(); i-- > 0;) x[i] = filter(f, x[i]);
}

// FilterWithIIR and SectCalc: after a sum beyond 1e20 the next section finds all registers at rest.
class BlockFilter {
  public:
    explicit BlockFilter(const IIRCoeffs &c) : c_(c) {}

    double run_section(int k, double x) {
        if (std::fabs(last_.feed_forward) > 1e20 || std::fabs(last_.output) > 1e20) registers_ = {};
        last_ = reference::run_section(c_, registers_, k, x);
        return last_.output;
    }

    double run(double x) {
        for (int k = 0; k < sections_to_run(c_); ++k) x = run_section(k, x);
        return x;
    }

  private:
    const IIRCoeffs &c_;
    TIIRFilter registers_{};
    Sums last_{};
};

// The response of the first sections at w radians a sample.
inline std::complex<long double> response(const IIRCoeffs &c, int sections, double w) {
    using Complex = std::complex<long double>;
    const Complex z = std::polar(1.0L, -static_cast<long double>(w));
    const auto quadratic = [z](long double c0, long double c1, long double c2) { return c0 + z * (c1 + z * c2); };
    Complex h = 1;
    for (int k = 0; k < sections; ++k)
        h *= static_cast<long double>(c.a0[k]) * quadratic(c.b0[k], c.b1[k], c.b2[k]) / quadratic(1, c.a1[k], c.a2[k]);
    return h;
}

// The magnitude of a prototype at w rad/s.
inline double magnitude(const LowPassProto &p, double w) {
    const std::complex<double> s{0, w};
    std::complex<double> h = 1;
    for (int k = 0; k < p.SectionCount; ++k)
        h *= (p.Num0[k] + s * (p.Num1[k] + s * p.Num2[k])) / (p.Den0[k] + s * (p.Den1[k] + s * p.Den2[k]));
    return std::abs(h);
}

// The corner that SetCornerFreq moves to 1 rad/s: every point of the grid in turn.
inline double corner(const LowPassProto &p, int sections) {
    const auto quadratic = [](double c2, double c1, double c0, CplxD s) {
        return CplxDAdd(CplxDAdd(CplxDMult_coef(CplxDMult(s, s), c2), CplxDMult_coef(s, c1)), {c0, 0.0});
    };
    double dc = 1.0;
    for (int k = 0; k < sections; ++k) dc *= p.Den0[k] / p.Num0[k];
    for (int i = 1; i < 5999; ++i) {
        const CplxD s{0.0, i / 512.0};
        CplxD h{1.0, 0.0};
        for (int k = 0; k < sections; ++k) {
            h = CplxDMult(h, quadratic(p.Num2[k], p.Num1[k], p.Num0[k], s));
            h = CplxDDivision(h, quadratic(p.Den2[k], p.Den1[k], p.Den0[k], s));
        }
        if (CplxDCabs(CplxDMult_coef(h, dc)) < 0.7071) return s.im;
    }
    return 5999 / 512.0;
}

}  // namespace reference

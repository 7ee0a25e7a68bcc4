// Direct form I: the one place that knows how a second-order section runs.
//
//     s = b0 u + b1 x1 + b2 x2        y = a0 s - a1 y1 - a2 y2
//
// u is the section's input and y its output; x1, x2 are its inputs and y1, y2 its outputs one and two samples ago.  The
// sums are added from left to right.
#pragma once

#include <mensura/iir.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace mensura::iir {

// Sections that run: the first always does, and no more than the arrays hold.
[[gnu::always_inline]] inline std::size_t sections_to_run(const IIRCoeffs &c) {
    constexpr int kMost = MAX_IIR_SECTIONS;
    return static_cast<std::size_t>(c.NumSections < 1 ? 1 : c.NumSections > kMost ? kMost : c.NumSections);
}

// Whether a scale is exactly 1, as in every designed section: a0 s is then s, and the multiplication stays out of the
// chain of operations.  The comparison of the bits leaves the floating-point units free.
[[gnu::always_inline]] inline bool is_one(double a0) {
    constexpr auto kBitsOfOne = __builtin_bit_cast(std::uint64_t, 1.0);
    return __builtin_bit_cast(std::uint64_t, a0) == kBitsOfOne;
}

// The two sums from their products, for one value or for several side by side.
template <typename V>
[[gnu::always_inline]] inline V fed_forward(const V &b0_u, const V &b1_x1, const V &b2_x2) {
    return b0_u + b1_x1 + b2_x2;
}
template <typename V>
[[gnu::always_inline]] inline V fed_back(const V &a0_s, const V &a1_y1, const V &a2_y2) {
    return a0_s - a1_y1 - a2_y2;
}

struct SectionSums {
    double s, y;
};

// One sample u through section k; Registers is any record with the four register arrays.  With kScaleIsOne the caller
// knows that a0 is 1.
template <bool kScaleIsOne = false, typename Registers>
[[gnu::always_inline]] inline SectionSums run_section(const IIRCoeffs &c, Registers &r, std::size_t k, double u) {
    const double b0_u = c.b0[k] * u, b1_x1 = c.b1[k] * r.RegX1[k], b2_x2 = c.b2[k] * r.RegX2[k];
    const double s = fed_forward(b0_u, b1_x1, b2_x2);
    double scaled = s;
    if (!kScaleIsOne && !is_one(c.a0[k])) [[unlikely]]
        scaled *= c.a0[k];
    const double a1_y1 = c.a1[k] * r.RegY1[k], a2_y2 = c.a2[k] * r.RegY2[k];
    const double y = fed_back(scaled, a1_y1, a2_y2);
    r.RegX2[k] = r.RegX1[k];
    r.RegX1[k] = u;
    r.RegY2[k] = r.RegY1[k];
    r.RegY1[k] = y;
    return {s, y};
}

// One sample u through sections k .. n - 1, one after the other.
template <typename Registers>
[[gnu::always_inline]] inline double run_sections(const IIRCoeffs &c, Registers &r, std::size_t k, std::size_t n,
                                                  double u) {
    for (; k < n; ++k) u = run_section(c, r, k, u).y;
    return u;
}

// Registers as if x had always been the input and every section had passed it unchanged.  Static, so that the compiler
// knows which processor registers survive the call.
[[gnu::noinline, gnu::cold]] static inline void prime(TIIRFilter &f, double x) {
    for (double *registers : {f.RegX1, f.RegX2, f.RegY1, f.RegY2}) std::fill_n(registers, MAX_IIR_SECTIONS, x);
    f.Primed = 1;
}

// One sample through a filter.
[[gnu::always_inline]] inline double run_filter(TIIRFilter &f, double x) {
    if (f.Primed == 0) [[unlikely]]
        prime(f, x);
    return run_sections(f.Coeffs, f, 0, sections_to_run(f.Coeffs), x);
}

}  // namespace mensura::iir

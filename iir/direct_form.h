// Direct form I: the one place that knows how a second-order section runs.
#pragma once

#include <mensura/iir.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace mensura::iir {

// Sections that run: the first always does, and no more than the arrays hold.
inline std::size_t sections_to_run(const IIRCoeffs &c) {
    return static_cast<std::size_t>(std::clamp(c.NumSections, 1, static_cast<int>(MAX_IIR_SECTIONS)));
}

// Whether a scale is exactly 1, as in every designed section: the product is then known and stays out of the chain. The
// bits are compared because that keeps the floating-point units free.
inline constexpr auto kBitsOfOne = std::bit_cast<std::uint64_t>(1.0);
inline bool is_one(double a0) { return std::bit_cast<std::uint64_t>(a0) == kBitsOfOne; }

// The recurrence, for one value or for several side by side:
//     s = b0 u + b1 x' + b2 x''      y = a0 s - a1 y' - a2 y''
template <typename V>
[[gnu::always_inline]] inline V fed_forward(const V &b0, const V &b1, const V &b2, const V &u, const V &x1,
                                            const V &x2) {
    return b0 * u + b1 * x1 + b2 * x2;
}
template <typename V>
[[gnu::always_inline]] inline V fed_back(const V &scaled, const V &a1, const V &a2, const V &y1, const V &y2) {
    return scaled - a1 * y1 - a2 * y2;
}

struct SectionSums {
    double s, y;
};

// One sample u through section k; Registers is any record with the four register arrays.
template <typename Registers>
[[gnu::always_inline]] inline SectionSums run_section(const IIRCoeffs &c, Registers &r, std::size_t k, double u) {
    const double s = fed_forward(c.b0[k], c.b1[k], c.b2[k], u, r.RegX1[k], r.RegX2[k]);
    double scaled = s;
    if (!is_one(c.a0[k])) [[unlikely]]
        scaled *= c.a0[k];
    const double y = fed_back(scaled, c.a1[k], c.a2[k], r.RegY1[k], r.RegY2[k]);
    r.RegX2[k] = r.RegX1[k];
    r.RegX1[k] = u;
    r.RegY2[k] = r.RegY1[k];
    r.RegY1[k] = y;
    return {s, y};
}

// Registers as if x had been the input for ever and every section had passed it unchanged.  Static, so that a caller
// knows which processor registers survive the call.
[[gnu::noinline, gnu::cold]] static inline void prime(TIIRFilter &f, double x) {
    for (double *registers : {f.RegX1, f.RegX2, f.RegY1, f.RegY2}) std::fill_n(registers, MAX_IIR_SECTIONS, x);
    f.Primed = 1;
}

// Sections k .. n - 1, one after the other.
template <typename Registers>
inline double run_sections(const IIRCoeffs &c, Registers &r, std::size_t k, std::size_t n, double u) {
    for (; k < n; ++k) u = run_section(c, r, k, u).y;
    return u;
}

}  // namespace mensura::iir

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

// One sample u through section k; Registers is any record with the four register arrays.
//     s = b0 u + b1 x' + b2 x''      y = a0 s - a1 y' - a2 y''
template <typename Registers>
[[gnu::always_inline]] inline double run_section(const IIRCoeffs &c, Registers &r, std::size_t k, double u) {
    double s = c.b0[k] * u + c.b1[k] * r.RegX1[k] + c.b2[k] * r.RegX2[k];
    if (!is_one(c.a0[k])) [[unlikely]]
        s *= c.a0[k];
    const double y = s - c.a1[k] * r.RegY1[k] - c.a2[k] * r.RegY2[k];
    r.RegX2[k] = r.RegX1[k];
    r.RegX1[k] = u;
    r.RegY2[k] = r.RegY1[k];
    r.RegY1[k] = y;
    return y;
}

// Sections k .. n - 1, one after the other.
template <typename Registers>
inline double run_sections(const IIRCoeffs &c, Registers &r, std::size_t k, std::size_t n, double u) {
    for (; k < n; ++k) u = run_section(c, r, k, u);
    return u;
}

}  // namespace mensura::iir

// Two channels of a bank side by side.
//
// A section waits for the output of the section before it, but two channels do not wait for each other.  In memory the
// values of one channel's sections are neighbours, so two sections of two channels run as follows:
//
//   1. the products that do not depend on the input (b1 x1, b2 x2, a1 y1, a2 y2), both sections of one channel at once
//   2. transposition: each section of the first channel beside the same section of the second
//   3. the sums, section after section, of both channels at once
//   4. transposition back, and the new registers into memory

#include "bank_kernel.h"

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

using Sections = Pair;  // one value of each of two neighbouring sections of one channel
using Channels = Pair;  // one value of each of the two channels

// The terms of a section's sums: products, except for b0, which still has to be multiplied by the input.
struct Terms {
    Pair b0, b1_x1, b2_x2, a1_y1, a2_y2;
};

// The terms of the first section of two channels, and those of the second section.
LANES_INLINE Terms first_section(const Terms &f, const Terms &g) {
    return {firsts(f.b0, g.b0), firsts(f.b1_x1, g.b1_x1), firsts(f.b2_x2, g.b2_x2), firsts(f.a1_y1, g.a1_y1),
            firsts(f.a2_y2, g.a2_y2)};
}
LANES_INLINE Terms second_section(const Terms &f, const Terms &g) {
    return {seconds(f.b0, g.b0), seconds(f.b1_x1, g.b1_x1), seconds(f.b2_x2, g.b2_x2), seconds(f.a1_y1, g.a1_y1),
            seconds(f.a2_y2, g.a2_y2)};
}

// The terms of sections k and k + 1 of one channel, whose registers move on by a sample.
LANES_INLINE Terms terms_of(TIIRFilter &f, std::size_t k) {
    const IIRCoeffs &c = f.Coeffs;
    const Sections x1 = load_pair(f.RegX1 + k), x2 = load_pair(f.RegX2 + k);
    const Sections y1 = load_pair(f.RegY1 + k), y2 = load_pair(f.RegY2 + k);
    store(f.RegX2 + k, x1);
    store(f.RegY2 + k, y1);
    return {load_pair(c.b0 + k), load_pair(c.b1 + k) * x1, load_pair(c.b2 + k) * x2, load_pair(c.a1 + k) * y1,
            load_pair(c.a2 + k) * y2};
}

// The output of one section with the input u, where a0 is 1.
LANES_INLINE Channels output(const Terms &t, Channels u) {
    return fed_back(fed_forward(t.b0 * u, t.b1_x1, t.b2_x2), t.a1_y1, t.a2_y2);
}

// Runs sections k and k + 1 of two channels with the inputs u; returns their outputs.
LANES_INLINE Channels run_two_sections(TIIRFilter &f, TIIRFilter &g, std::size_t k, Channels u) {
    const Terms of_f = terms_of(f, k), of_g = terms_of(g, k);
    const Channels v = output(first_section(of_f, of_g), u), y = output(second_section(of_f, of_g), v);
    store(f.RegX1 + k, firsts(u, v));
    store(g.RegX1 + k, seconds(u, v));
    store(f.RegY1 + k, firsts(v, y));
    store(g.RegY1 + k, seconds(v, y));
    return y;
}

// Whether sections k .. k + count - 1 have a scale of 1.
template <std::size_t count>
LANES_INLINE bool are_unscaled(const TIIRFilter &f, std::size_t k) {
    bool ones = true;
    for (std::size_t i = k; i < k + count; ++i) ones = ones && is_one(f.Coeffs.a0[i]);
    return ones;
}

// Runs the leading pairs of primed channels that have `sections` sections each, none with a scale.  The compiler knows
// the number of sections and unrolls the loops over them.  Inlined, all of these would share a frame of many KB.
template <std::size_t sections>
[[gnu::noinline]] int run_alike(TIIRFilter *filters, int count, const double *in, double *out) {
    const auto fits = [](const TIIRFilter &f) LANES_LAMBDA {
        return f.Primed != 0 && f.Coeffs.NumSections == sections && are_unscaled<sections>(f, 0);
    };
    int i = 0;
    for (; i + 1 < count && fits(filters[i]) && fits(filters[i + 1]); i += 2) {
        TIIRFilter &f = filters[i], &g = filters[i + 1];
        Channels u = load_pair(in + i);
        std::size_t k = 0;
        for (; k + 2 <= sections; k += 2) u = run_two_sections(f, g, k, u);
        if constexpr (sections % 2 != 0)
            u = Channels{run_section<true>(f.Coeffs, f, k, u[0]).y, run_section<true>(g.Coeffs, g, k, u[1]).y};
        store(out + i, u);
    }
    return i;
}

// Runs the leading pairs of primed channels: two sections at a time as long as both channels have them without a scale,
// then one section after the other.
LANES_INLINE int run_any(TIIRFilter *filters, int count, const double *in, double *out) {
    int i = 0;
    for (; i + 1 < count && filters[i].Primed != 0 && filters[i + 1].Primed != 0; i += 2) {
        TIIRFilter &f = filters[i], &g = filters[i + 1];
        const std::size_t nf = sections_to_run(f.Coeffs), ng = sections_to_run(g.Coeffs), shared = nf < ng ? nf : ng;
        Channels u = load_pair(in + i);
        std::size_t k = 0;
        for (; k + 2 <= shared && are_unscaled<2>(f, k) && are_unscaled<2>(g, k); k += 2)
            u = run_two_sections(f, g, k, u);
        out[i] = run_sections(f.Coeffs, f, k, nf, u[0]);
        out[i + 1] = run_sections(g.Coeffs, g, k, ng, u[1]);
    }
    return i;
}

}  // namespace

int run_pairs(TIIRFilter *filters, int count, const double *in, double *out) {
    switch (filters[0].Coeffs.NumSections) {
        case 2: return run_alike<2>(filters, count, in, out);
        case 3: return run_alike<3>(filters, count, in, out);
        case 4: return run_alike<4>(filters, count, in, out);
        case 5: return run_alike<5>(filters, count, in, out);
        case 6: return run_alike<6>(filters, count, in, out);
        default: return run_any(filters, count, in, out);
    }
}

}  // namespace mensura::iir::MENSURA_TARGET

// Four sections side by side.  A section waits for its own last output, so sections that run one after the other leave
// the processor idle.  Here a group of four sections runs in one step, each on an earlier sample than the section that
// feeds it:
//
//     section 0: sample t,  section 1: sample t - kLag,  section 2: sample t - 2 kLag,  section 3: sample t - 3 kLag
//
// Each still meets its own samples in order.
//
// For kernels alone: every function is inlined into its build.  A Cascade gives the coefficients and registers of
// section k, b0(k) .. a2(k) and x1(k) .. y2(k).  It says whether there is a scale a0(k) that may differ from 1, and
// whether the peak of sums and outputs is asked for.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

// Samples between neighbouring sections: an output has the time of three steps to become the next section's input.
inline constexpr std::size_t kLag = 3;

// `count` neighbouring sections, a lane each.
template <std::size_t count, typename Cascade>
struct Group {
    Lanes a0, a1, a2, b0, b1, b2;
    Lanes x1, x2, y1, y2;
    Lanes peak{};
    Lanes outputs[kLag] = {};  // of the last steps, the newest first

    LANES_INLINE Group(const Cascade &c, std::size_t first) {
        const auto gathered = [first](auto number_of) LANES_LAMBDA {
            Lanes v{};
            for (std::size_t i = 0; i < count; ++i) v[i] = number_of(first + i);
            return v;
        };
        if constexpr (Cascade::kHasScale) a0 = gathered([c](std::size_t k) LANES_LAMBDA { return c.a0(k); });
        a1 = gathered([c](std::size_t k) LANES_LAMBDA { return c.a1(k); });
        a2 = gathered([c](std::size_t k) LANES_LAMBDA { return c.a2(k); });
        b0 = gathered([c](std::size_t k) LANES_LAMBDA { return c.b0(k); });
        b1 = gathered([c](std::size_t k) LANES_LAMBDA { return c.b1(k); });
        b2 = gathered([c](std::size_t k) LANES_LAMBDA { return c.b2(k); });
        x1 = gathered([c](std::size_t k) LANES_LAMBDA { return c.x1(k); });
        x2 = gathered([c](std::size_t k) LANES_LAMBDA { return c.x2(k); });
        y1 = gathered([c](std::size_t k) LANES_LAMBDA { return c.y1(k); });
        y2 = gathered([c](std::size_t k) LANES_LAMBDA { return c.y2(k); });
    }

    LANES_INLINE void write_registers(const Cascade &c, std::size_t first) const {
        for (std::size_t i = 0; i < count; ++i) {
            c.x1(first + i) = x1[i];
            c.x2(first + i) = x2[i];
            c.y1(first + i) = y1[i];
            c.y2(first + i) = y2[i];
        }
    }

    // One step with the input of the first section; returns the output of the last.  The registers and the peak become
    // choose(new, old).
    template <typename Choose>
    LANES_INLINE double step(double input, Choose choose) {
        const Lanes u = __builtin_shufflevector(all(input), outputs[kLag - 1], 0, 4, 5, 6);
        const Lanes b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2;
        const Lanes s = fed_forward(b0_u, b1_x1, b2_x2);
        Lanes a0_s = s;
        if constexpr (Cascade::kHasScale) a0_s *= a0;
        const Lanes a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const Lanes y = fed_back(a0_s, a1_y1, a2_y2);
        x2 = choose(x1, x2);
        x1 = choose(u, x1);
        y2 = choose(y1, y2);
        y1 = choose(y, y1);
        if constexpr (Cascade::kKeepsPeak) peak = choose(larger(magnitude(y), larger(magnitude(s), peak)), peak);
        for (std::size_t i = kLag - 1; i > 0; --i) outputs[i] = outputs[i - 1];
        outputs[0] = y;
        return y[count - 1];
    }
};

// Samples a stride apart.
template <typename Double>
struct Samples {
    Double *first;
    std::ptrdiff_t stride;

    LANES_INLINE Double &operator[](std::size_t i) const { return first[static_cast<std::ptrdiff_t>(i) * stride]; }
};

// Sections first .. first + count - 1 over n samples; returns the peak of each.
template <std::size_t count, typename Cascade>
LANES_INLINE Lanes run_group(const Cascade &c, std::size_t first, Samples<const double> in, Samples<double> out,
                             std::size_t n) {
    Group<count, Cascade> group(c, first);
    constexpr std::size_t kLead = kLag * (count - 1);  // steps from a sample's input to its output

    // A step at either end, where some sections have no sample yet, or no sample any more: their registers stay.
    const auto step_at_end = [&](std::size_t t) LANES_LAMBDA {
        LaneBits active{};
        for (std::size_t i = 0; i < count; ++i) active[i] = t >= i * kLag && t < n + i * kLag ? -1 : 0;
        const auto if_active = [active](Lanes now, Lanes before) LANES_LAMBDA { return active ? now : before; };
        const double y = group.step(t < n ? in[t] : 0.0, if_active);
        if (t >= kLead) out[t - kLead] = y;
    };
    const auto always = [](Lanes now, Lanes) LANES_LAMBDA { return now; };
    std::size_t t = 0;
    for (; t < kLead; ++t) step_at_end(t);
    for (; t < n; ++t) out[t - kLead] = group.step(in[t], always);
    for (; t < n + kLead; ++t) step_at_end(t);

    group.write_registers(c, first);
    return group.peak;
}

// All sections over n samples, four at a time; returns the peak of each lane.
template <typename Cascade>
LANES_INLINE Lanes run_groups(const Cascade &c, std::size_t sections, Samples<const double> in, Samples<double> out,
                              std::size_t n) {
    Lanes peak{};
    for (std::size_t first = 0; first < sections; first += kLanes) {
        Lanes of_group{};
        switch (sections - first) {
            case 1: of_group = run_group<1>(c, first, in, out, n); break;
            case 2: of_group = run_group<2>(c, first, in, out, n); break;
            case 3: of_group = run_group<3>(c, first, in, out, n); break;
            default: of_group = run_group<4>(c, first, in, out, n);
        }
        if constexpr (Cascade::kKeepsPeak) peak = larger(of_group, peak);
        in = {out.first, out.stride};
    }
    return peak;
}

}  // namespace
}  // namespace mensura::iir::MENSURA_TARGET

// Four sections side by side.  A section waits for its own last output, so sections that run one after the other leave
// the processor idle.  Here a group of four sections runs in one step, each on an earlier sample than the section that
// feeds it:
//
//     section 0: sample t,  section 1: sample t - kLag,  section 2: sample t - 2 kLag,  section 3: sample t - 3 kLag
//
// Each still meets its own samples in order.

#include "pipeline_kernel.h"

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

// Samples between neighbouring sections: an output has the time of three steps to become the next section's input.
constexpr std::size_t kLag = 3;

// `count` neighbouring sections, a lane each.
template <std::size_t count>
struct Group {
    Lanes a0, a1, a2, b0, b1, b2;
    Lanes x1, x2, y1, y2;
    Lanes peak{};
    Lanes outputs[kLag] = {};  // of the last steps, the newest first

    LANES_INLINE Group(const IIRCoeffs &c, const RegisterArrays &r, std::size_t first) {
        const auto gathered = [first](const double *values) LANES_LAMBDA {
            Lanes v{};
            for (std::size_t i = 0; i < count; ++i) v[i] = values[first + i];
            return v;
        };
        a0 = gathered(c.a0), a1 = gathered(c.a1), a2 = gathered(c.a2);
        b0 = gathered(c.b0), b1 = gathered(c.b1), b2 = gathered(c.b2);
        x1 = gathered(r.RegX1), x2 = gathered(r.RegX2), y1 = gathered(r.RegY1), y2 = gathered(r.RegY2);
    }

    LANES_INLINE void write_registers(const RegisterArrays &r, std::size_t first) const {
        const auto scatter = [first](Lanes v, double *values) LANES_LAMBDA {
            for (std::size_t i = 0; i < count; ++i) values[first + i] = v[i];
        };
        scatter(x1, r.RegX1);
        scatter(x2, r.RegX2);
        scatter(y1, r.RegY1);
        scatter(y2, r.RegY2);
    }

    // One step with the input of the first section; returns the output of the last.  The registers and the peak become
    // choose(new, old).
    template <typename Choose>
    LANES_INLINE double step(double input, Choose choose) {
        const Lanes u = __builtin_shufflevector(all(input), outputs[kLag - 1], 0, 4, 5, 6);
        const Lanes b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2;
        const Lanes s = fed_forward(b0_u, b1_x1, b2_x2);
        const Lanes a0_s = a0 * s, a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const Lanes y = fed_back(a0_s, a1_y1, a2_y2);
        x2 = choose(x1, x2);
        x1 = choose(u, x1);
        y2 = choose(y1, y2);
        y1 = choose(y, y1);
        peak = choose(larger(magnitude(y), larger(magnitude(s), peak)), peak);
        for (std::size_t i = kLag - 1; i > 0; --i) outputs[i] = outputs[i - 1];
        outputs[0] = y;
        return y[count - 1];
    }
};

// Sections first .. first + count - 1 over n samples; returns the peak of each.
template <std::size_t count>
LANES_INLINE Lanes run_group(const IIRCoeffs &c, const RegisterArrays &r, std::size_t first, const double *in,
                             double *out, std::size_t n, std::ptrdiff_t stride) {
    Group<count> group(c, r, first);
    constexpr std::size_t kLead = kLag * (count - 1);  // steps from a sample's input to its output
    const auto at = [stride](std::size_t i) { return static_cast<std::ptrdiff_t>(i) * stride; };

    // A step at either end, where some sections have no sample yet, or no sample any more: their registers stay.
    const auto step_at_end = [&](std::size_t t) LANES_LAMBDA {
        LaneBits active{};
        for (std::size_t i = 0; i < count; ++i) active[i] = t >= i * kLag && t < n + i * kLag ? -1 : 0;
        const auto if_active = [active](Lanes now, Lanes before) LANES_LAMBDA { return active ? now : before; };
        const double y = group.step(t < n ? in[at(t)] : 0.0, if_active);
        if (t >= kLead) out[at(t - kLead)] = y;
    };
    const auto always = [](Lanes now, Lanes) LANES_LAMBDA { return now; };
    std::size_t t = 0;
    for (; t < kLead; ++t) step_at_end(t);
    for (; t < n; ++t) out[at(t - kLead)] = group.step(in[at(t)], always);
    for (; t < n + kLead; ++t) step_at_end(t);

    group.write_registers(r, first);
    return group.peak;
}

}  // namespace

double run_samples(const IIRCoeffs &c, std::size_t sections, const RegisterArrays &r, const double *in, double *out,
                   std::size_t n, std::ptrdiff_t stride) {
    Lanes peak{};
    for (std::size_t first = 0; first < sections; first += kLanes) {
        Lanes of_group{};
        switch (sections - first) {
            case 1: of_group = run_group<1>(c, r, first, in, out, n, stride); break;
            case 2: of_group = run_group<2>(c, r, first, in, out, n, stride); break;
            case 3: of_group = run_group<3>(c, r, first, in, out, n, stride); break;
            default: of_group = run_group<4>(c, r, first, in, out, n, stride);
        }
        peak = larger(of_group, peak);
        in = out;
    }
    return largest_of(peak);
}

}  // namespace mensura::iir::MENSURA_TARGET

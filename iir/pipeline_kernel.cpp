// Sections in lanes.  A section waits for its own last output, so one after the other they leave the processor idle.
// Here four sections run in one step, each on an earlier sample than the section that feeds it:
//
//     section 0: sample t,  section 1: sample t - kLag,  section 2: sample t - 2 kLag,  section 3: sample t - 3 kLag
//
// Each still sees its own samples in order.

#include "pipeline_kernel.h"

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

// Samples between neighbouring sections: an output then has the time of three feedback loops to become the next input.
constexpr std::size_t kLag = 3;

// Sections first .. first + count - 1 over n samples; returns their peak.
template <std::size_t count>
LANES_INLINE Lanes run_group(const IIRCoeffs &c, const RegisterArrays &r, std::size_t first, const double *in,
                             double *out, std::size_t n, std::ptrdiff_t step) {
    const auto gathered = [first](const double *values) LANES_LAMBDA {
        Lanes v{};
        for (std::size_t i = 0; i < count; ++i) v[i] = values[first + i];
        return v;
    };
    const auto scatter = [first](Lanes v, double *values) LANES_LAMBDA {
        for (std::size_t i = 0; i < count; ++i) values[first + i] = v[i];
    };
    const Lanes a0 = gathered(c.a0), a1 = gathered(c.a1), a2 = gathered(c.a2);
    const Lanes b0 = gathered(c.b0), b1 = gathered(c.b1), b2 = gathered(c.b2);
    Lanes x1 = gathered(r.RegX1), x2 = gathered(r.RegX2), y1 = gathered(r.RegY1), y2 = gathered(r.RegY2);
    Lanes peak{}, outputs[kLag] = {};  // of the last steps

    // One step; keep(now, before) chooses what the lanes go on with.
    const auto advance = [&](double input, auto keep) LANES_LAMBDA {
        const Lanes u = __builtin_shufflevector(all(input), outputs[kLag - 1], 0, 4, 5, 6);
        const Lanes b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2;
        const Lanes s = fed_forward(b0_u, b1_x1, b2_x2);
        const Lanes a0_s = a0 * s, a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const Lanes y = fed_back(a0_s, a1_y1, a2_y2);
        x2 = keep(x1, x2);
        x1 = keep(u, x1);
        y2 = keep(y1, y2);
        y1 = keep(y, y1);
        peak = keep(larger(magnitude(y), larger(magnitude(s), peak)), peak);
        for (std::size_t i = kLag - 1; i > 0; --i) outputs[i] = outputs[i - 1];
        outputs[0] = y;
        return y[count - 1];
    };

    // Before every section has its first sample, and after the first had its last, the registers of the others stay.
    constexpr std::size_t lead = kLag * (count - 1);
    const auto at = [step](std::size_t i) { return static_cast<std::ptrdiff_t>(i) * step; };
    const auto advance_some = [&](std::size_t t) LANES_LAMBDA {
        LaneBits active{};
        for (std::size_t i = 0; i < count; ++i) active[i] = t >= i * kLag && t < n + i * kLag ? -1 : 0;
        const double y = advance(t < n ? in[at(t)] : 0.0,
                                 [&](Lanes now, Lanes before) LANES_LAMBDA { return active ? now : before; });
        if (t >= lead) out[at(t - lead)] = y;
    };
    std::size_t t = 0;
    for (; t < lead; ++t) advance_some(t);
    for (; t < n; ++t) out[at(t - lead)] = advance(in[at(t)], [](Lanes now, Lanes) LANES_LAMBDA { return now; });
    for (; t < n + lead; ++t) advance_some(t);

    scatter(x1, r.RegX1);
    scatter(x2, r.RegX2);
    scatter(y1, r.RegY1);
    scatter(y2, r.RegY2);
    return peak;
}

}  // namespace

double run_samples(const IIRCoeffs &c, std::size_t sections, const RegisterArrays &r, const double *in, double *out,
                   std::size_t n, std::ptrdiff_t step) {
    Lanes peak{};
    for (std::size_t first = 0; first < sections; first += kLanes) {
        Lanes group{};
        switch (sections - first) {
            case 1: group = run_group<1>(c, r, first, in, out, n, step); break;
            case 2: group = run_group<2>(c, r, first, in, out, n, step); break;
            case 3: group = run_group<3>(c, r, first, in, out, n, step); break;
            default: group = run_group<4>(c, r, first, in, out, n, step);
        }
        peak = larger(group, peak);
        in = out;
    }
    double largest = 0.0;
    for (std::size_t i = 0; i < kLanes; ++i) largest = peak[i] > largest ? peak[i] : largest;
    return largest;
}

}  // namespace mensura::iir::MENSURA_TARGET

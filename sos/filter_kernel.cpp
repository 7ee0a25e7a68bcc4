#include "filter_kernel.h"

#include "../iir/direct_form.h"
#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::sos::MENSURA_TARGET {
namespace {

// One section over all samples.
LANES_INLINE void run_section(const double *c, double *state, const Signal &s) {
    const double b0 = c[0], b1 = c[1], b2 = c[2], a1 = c[4], a2 = c[5];
    double x1 = state[0], x2 = state[1], y1 = state[2], y2 = state[3];
    const double *in = s.x;
    double *out = s.y;
    for (std::size_t i = 0; i < s.n; ++i, in += s.x_stride, out += s.y_stride) {
        const double u = *in, b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2, a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const double y = iir::fed_back(iir::fed_forward(b0_u, b1_x1, b2_x2), a1_y1, a2_y2);
        x2 = x1;
        x1 = u;
        y2 = y1;
        y1 = y;
        *out = y;
    }
    state[0] = x1;
    state[1] = x2;
    state[2] = y1;
    state[3] = y2;
}

}  // namespace

void run_sections(const double *sos, std::size_t sections, double *state, const Signal &signal) {
    Signal s = signal;
    for (std::size_t k = 0; k < sections; ++k) {
        run_section(sos + 6 * k, state + 4 * k, s);
        s.x = s.y;
        s.x_stride = s.y_stride;
    }
}

}  // namespace mensura::sos::MENSURA_TARGET

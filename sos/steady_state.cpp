// The state that a constant input leads to.

#include <span>

#include "arguments.h"

using namespace mensura::sos;

namespace {

// c0 + c1 z^-1 + c2 z^-2 at z = 1.  Near there the terms nearly cancel; in this order the sum is exact.
double at_dc(double c0, double c1, double c2) { return c0 + c1 + c2; }

}  // namespace

int mensura_sos_steady_state(const double *sos, int sections, double x, double *state) {
    if (const int code = check_sections(sos, sections)) return code;
    if (state == nullptr) return MENSURA_SOS_NULL;
    const std::span numbers(sos, kNumbers * static_cast<std::size_t>(sections));
    for (std::size_t i = 0; i < numbers.size(); i += kNumbers)
        if (at_dc(1, numbers[i + 4], numbers[i + 5]) == 0) return MENSURA_SOS_STEADY_STATE;

    for (std::size_t i = 0; i < numbers.size(); i += kNumbers, state += kRegisters) {
        const double gain =
            at_dc(numbers[i], numbers[i + 1], numbers[i + 2]) / at_dc(1, numbers[i + 4], numbers[i + 5]);
        const double y = gain * x;
        state[0] = state[1] = x;
        state[2] = state[3] = y;
        x = y;
    }
    return 0;
}

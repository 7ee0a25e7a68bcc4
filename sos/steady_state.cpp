// The state that a constant input leads to.

#include "arguments.h"
#include "quadratic.h"

using namespace mensura::sos;

int mensura_sos_steady_state(const double *sos, int sections, double x, double *state) {
    if (const int code = check_sections(sos, sections)) return code;
    if (state == nullptr) return MENSURA_SOS_NULL;
    if (has_pole_at_one(sos, sections)) return MENSURA_SOS_STEADY_STATE;
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers, state += kRegisters) {
        const double y = gain_at_dc(s) * x;
        state[0] = state[1] = x;
        state[2] = state[3] = y;
        x = y;
    }
    return 0;
}

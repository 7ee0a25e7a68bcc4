// docs/filters.md: sections from SciPy or MATLAB, and sections for them.
#include <math.h>
#include <mensura/sos.h>

#include "check.h"

enum { SECTIONS = 2 };

/* SciPy 1.10.1: signal.butter(4, 40, fs=360, output='sos') */
static double sos[SECTIONS][6] = {
    {0.006890401067214042, 0.013780802134428083, 0.006890401067214042, 1, -0.9612453444136211, 0.2548166794342574},
    {1, 2, 1, 1, -1.2296214708465132, 0.605156831162516}};

int main(void) {
    double x[3] = {1, 1, 1};
    // [shown]
    /* sos[k] holds b0 b1 b2 a0 a1 a2 of section k; a0 must be exactly 1. */
    for (int k = 0; k < SECTIONS; ++k) {
        const double a0 = sos[k][3];
        for (int i = 0; i < 6; ++i) sos[k][i] /= a0;
    }
    double state[4 * SECTIONS];
    mensura_sos_steady_state(sos[0], SECTIONS, x[0], state); /* sosfilt_zi(sos) * x[0] */
    mensura_sos_filter(sos[0], SECTIONS, state, x, 1, x, 1, 3);
    // [end]
    for (int i = 0; i < 3; ++i) CHECK(fabs(x[i] - 1) < 1e-12);
    // [write]
    for (int k = 0; k < SECTIONS; ++k) /* 17 digits read back as the same doubles */
        for (int i = 0; i < 6; ++i) printf("%.17g%c", sos[k][i], i < 5 ? ',' : '\n');
    // [end]
    return 0;
}

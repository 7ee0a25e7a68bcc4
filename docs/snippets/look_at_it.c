// docs/filters.md: what a filter does, measured.
#include <math.h>
#include <mensura/sos.h>

#include "check.h"
#include "low_pass_40.h"

int main(void) {
    double sos[6 * MENSURA_SOS_MAX_SECTIONS];
    const int sections = design_low_pass_40(sos);
    CHECK(sections == 3);
    // [shown]
    double lowest, highest, radius, overshoot, edge[2];
    ptrdiff_t settling;
    /* dB: the worst of the pass band, the worst of the stop band; Hz: where the gain is -3.0103 dB */
    mensura_sos_extremes(sos, sections, 360, 0, 40, &lowest, NULL);
    mensura_sos_extremes(sos, sections, 360, 80, 180, NULL, &highest);
    mensura_sos_crossings(sos, sections, 360, -3.0103, edge, 2);
    /* stable below 1; overshoot in parts of the step, settling to 2 % in samples */
    mensura_sos_pole_radius(sos, sections, &radius);
    mensura_sos_step_figures(sos, sections, 0.02, 100000, &overshoot, &settling);
    // [end]
    CHECK(fabs(lowest + 3.0103) < 1e-4 && highest < -43 && fabs(edge[0] - 40) < 1e-4);
    CHECK(radius < 1 && overshoot > 0.1 && overshoot < 0.2 && settling > 10 && settling < 100);
    return 0;
}

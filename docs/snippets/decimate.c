// docs/filters.md: a record at a lower rate.
#include <math.h>
#include <mensura/sos.h>
#include <string.h>

#include "check.h"

enum { SAMPLES = 20000, FACTOR = 4 };

static double x[SAMPLES];

static int decimate(double rate) {
    // [shown]
    const double nyquist = rate / FACTOR / 2; /* the new one */
    mensura_sos_requirement wanted;
    memset(&wanted, 0, sizeof wanted);
    wanted.size = sizeof wanted;
    wanted.pass_type = ptLowPass;
    wanted.passes = 1;
    wanted.rate = rate;
    wanted.pass_edge[0] = 0.8 * nyquist;
    wanted.loss_db = 0.1;
    wanted.stop_edge[0] = nyquist;
    wanted.attenuation_db = 80;

    mensura_sos_request request;
    double sos[6 * MENSURA_SOS_MAX_SECTIONS], state[4 * MENSURA_SOS_MAX_SECTIONS];
    const int poles = mensura_sos_order(&wanted, -1, 0, &request, sizeof request);
    if (poles < 0) return poles;
    const int sections = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    if (sections < 0) return sections;
    mensura_sos_steady_state(sos, sections, x[0], state);
    mensura_sos_filter(sos, sections, state, x, 1, x, 1, SAMPLES);
    for (int i = 0; i * FACTOR < SAMPLES; ++i) x[i] = x[i * FACTOR];
    // [end]
    return 0;
}

int main(void) {
    const double pi = 3.141592653589793;
    for (int i = 0; i < SAMPLES; ++i) x[i] = 3 + sin(2 * pi * 130 * i / 1000.0); /* would come back as 120 Hz */
    CHECK(decimate(1000) == 0);
    for (int i = 1000; i < SAMPLES / FACTOR; ++i) CHECK(fabs(x[i] - 3) < 1.1e-4);
    return 0;
}

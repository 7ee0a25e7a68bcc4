// docs/filters.md: one request for each wish.
#include <math.h>
#include <mensura/sos.h>
#include <string.h>

#include "check.h"

static double sos[6 * MENSURA_SOS_MAX_SECTIONS];
static int sections;

/* Low-pass, Butterworth, 6 poles, half power; 360 samples a second. */
static mensura_sos_request defaults(void) {
    mensura_sos_request request;
    CHECK(mensura_sos_default_request(&request, sizeof request) == 0);
    request.rate = 360;
    return request;
}

static void design(const mensura_sos_request *request) {
    sections = mensura_sos_design(request, sos, MENSURA_SOS_MAX_SECTIONS);
    CHECK(sections > 0);
}

static double gain(double frequency) {
    double re, im;
    CHECK(mensura_sos_response(sos, sections, 360, &frequency, &re, &im, 1) == 0);
    return 20 * log10(hypot(re, im));
}

static int has(double level, double frequency) { return fabs(gain(frequency) - level) < 1e-6; }

static const double half_power = -3.0102999566398120;

static void another_level(void) {
    mensura_sos_request request = defaults();
    // [level]
    request.edge[0] = 40;
    request.level_db = -0.1;
    // [end]
    design(&request);
    CHECK(has(-0.1, 40));
}

static void band(void) {
    mensura_sos_request request = defaults();
    // [band]
    request.pass_type = ptBandPass;
    request.edge[0] = 0.5; /* both edges have -3.01 dB */
    request.edge[1] = 40;
    request.poles = 2; /* of each edge: the filter has 4 */
    // [end]
    design(&request);
    CHECK(has(half_power, 0.5) && has(half_power, 40) && sections == 2);
}

static void notch(void) {
    mensura_sos_request request = defaults();
    // [notch]
    request.pass_type = ptNotch;
    request.band = MENSURA_SOS_CENTRE;
    request.edge[0] = 60; /* Hz, the centre */
    request.edge[1] = 4;  /* Hz from edge to edge */
    request.poles = 2;
    // [end]
    design(&request);
    CHECK(gain(60) < -150 && sections == 2);
    double edges[2];
    CHECK(mensura_sos_crossings(sos, sections, 360, half_power, edges, 2) == 2);
    CHECK(fabs(edges[1] - edges[0] - 4) < 1e-9);
}

static void smooth(void) {
    mensura_sos_request request = defaults();
    // [smooth]
    request.edge[0] = 40;
    request.family = pfBessel; /* or pfGaussian */
    request.poles = 4;
    // [end]
    design(&request);
    double overshoot;
    CHECK(has(half_power, 40));
    CHECK(mensura_sos_step_figures(sos, sections, 0.02, 1000, &overshoot, NULL) == 0 && overshoot < 0.03);
}

static void steep(void) {
    mensura_sos_request request = defaults();
    // [steep]
    request.edge[0] = 40;
    request.family = pfElliptic;
    request.ripple_db = 0.5;
    request.stop_db = 60;
    // [end]
    design(&request);
    double largest;
    CHECK(mensura_sos_extremes(sos, sections, 360, 0, 180, NULL, &largest) == 0);
    CHECK(has(largest + half_power, 40) && gain(60) < largest - 59);
}

static void all_pass(void) {
    mensura_sos_request request = defaults();
    // [all_pass]
    request.pass_type = ptAllPass;
    request.edge[0] = 10;
    request.family = pfBessel;
    request.poles = 2;
    // [end]
    design(&request);
    CHECK(has(0, 1) && has(0, 10) && has(0, 100));
}

int main(void) {
    another_level();
    band();
    notch();
    smooth();
    steep();
    all_pass();
    return 0;
}

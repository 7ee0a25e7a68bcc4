// docs/filters.md: the order from a requirement.
#include <mensura/sos.h>
#include <string.h>

#include "check.h"

int main(void) {
    double sos[6 * MENSURA_SOS_MAX_SECTIONS];
    // [shown]
    mensura_sos_requirement wanted;
    memset(&wanted, 0, sizeof wanted);
    wanted.size = sizeof wanted;
    wanted.pass_type = ptLowPass;
    wanted.passes = 1;
    wanted.rate = 360;
    wanted.pass_edge[0] = 40; /* at most 1 dB less up to 40 Hz */
    wanted.loss_db = 1;
    wanted.stop_edge[0] = 60; /* at least 60 dB less from 60 Hz on */
    wanted.attenuation_db = 60;

    mensura_sos_request request; /* becomes the one to design; -1 instead of pfButterworth takes any family */
    const int poles = mensura_sos_order(&wanted, pfButterworth, 0, &request, sizeof request);
    if (poles < 0) puts(mensura_sos_message(poles));
    // [end]
    CHECK(poles > 0 && poles == request.poles);
    const int sections = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    CHECK(sections == (poles + 1) / 2);
    double lowest, highest;
    CHECK(mensura_sos_extremes(sos, sections, 360, 0, 40, &lowest, NULL) == 0 && lowest > -1.000001);
    CHECK(mensura_sos_extremes(sos, sections, 360, 60, 180, NULL, &highest) == 0 && highest < -59.999999);

    CHECK(mensura_sos_order(&wanted, -1, 0, &request, sizeof request) < poles && request.family == pfElliptic);
    return 0;
}

// The filter that several snippets run: -3 dB at 40 Hz of 360 Hz, 3 sections.
#ifndef MENSURA_SNIPPETS_LOW_PASS_40_H
#define MENSURA_SNIPPETS_LOW_PASS_40_H

#include <mensura/sos.h>

static int design_low_pass_40(double *sos) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.rate = 360;
    request.edge[0] = 40;
    return mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
}

#endif

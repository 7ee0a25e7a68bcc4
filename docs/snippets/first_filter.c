// docs/filters.md: the first program.
#include "check.h"

#define main first_filter
// [shown]
#include <mensura/sos.h>
#include <stdio.h>

int main(void) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request); /* low-pass, Butterworth, 6 poles */
    request.rate = 360;                                    /* samples a second */
    request.edge[0] = 40;                                  /* Hz */

    double sos[6 * MENSURA_SOS_MAX_SECTIONS], state[4 * MENSURA_SOS_MAX_SECTIONS];
    const int sections = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    if (sections < 0) {
        fprintf(stderr, "%s\n", mensura_sos_message(sections));
        return 1;
    }

    double x[8] = {5, 5, 5, 6, 6, 6, 6, 6};               /* samples, as many as there are */
    mensura_sos_steady_state(sos, sections, x[0], state); /* no step at the start */
    mensura_sos_filter(sos, sections, state, x, 1, x, 1, 8);
    for (int i = 0; i < 8; ++i) printf("%.3f\n", x[i]);

    double edge;
    mensura_sos_extremes(sos, sections, 360, 0, 40, &edge, NULL);
    printf("%.2f dB at the edge\n", edge);
    return 0;
}
// [end]
#undef main

int main(void) {
    CHECK(first_filter() == 0);
    return 0;
}

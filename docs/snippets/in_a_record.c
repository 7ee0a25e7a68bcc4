// docs/iir.md: a filter of the layer in the record of the older functions.
#include <math.h>
#include <mensura/mensura.h>

#include "check.h"

// [shown]
/* Sections of mensura_sos_design, to be run by IIRFilter, FilterWithIIR or IIRFilterZeroPhase. */
static TIIRFilter filter_of(const double *sos, int sections) {
    static const TIIRFilter nothing;
    TIIRFilter filter = nothing;
    filter.Coeffs.NumSections = sections;
    for (int k = 0; k < sections; ++k) {
        const double *const s = sos + 6 * k;
        filter.Coeffs.a0[k] = 1;
        filter.Coeffs.b0[k] = s[0];
        filter.Coeffs.b1[k] = s[1];
        filter.Coeffs.b2[k] = s[2];
        filter.Coeffs.a1[k] = s[4];
        filter.Coeffs.a2[k] = s[5];
    }
    return filter; /* Primed is 0: the first sample fills the registers */
}
// [end]

int main(void) {
    mensura_sos_request request;
    CHECK(mensura_sos_default_request(&request, sizeof request) == 0);
    request.rate = 360;
    request.edge[0] = 40;
    double sos[6 * MENSURA_SOS_MAX_SECTIONS], state[4 * MENSURA_SOS_MAX_SECTIONS] = {0};
    const int sections = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    CHECK(sections == 3);

    TIIRFilter filter = filter_of(sos, sections);
    CHECK(fabs(IIRFilter(&filter, 1.5) - 1.5) < 1e-12);

    filter = filter_of(sos, sections);
    filter.Primed = 1; /* from rest, as the state is */
    for (int i = 0; i < 500; ++i) {
        const double x = sin(0.7 * i);
        double y;
        CHECK(mensura_sos_filter(sos, sections, state, &x, 1, &y, 1, 1) == 0);
        CHECK(IIRFilter(&filter, x) == y); /* the same bits */
    }
    return 0;
}

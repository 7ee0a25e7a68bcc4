// docs/filters.md, docs/state.md: a running filter gets another design.
#include <mensura/iir.h>

#include "check.h"

int main(void) {
    const double x = 1.5;
    double y;
    // [shown]
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0); /* Butterworth, 6 poles */

    filter.Spec.Proto.Family = pfBessel; /* anything else: change the request, design again, start again */
    filter.Spec.Proto.NumPoles = 4;
    filter.Coeffs = CalcIIRFilterCoeff(filter.Spec);
    filter.Primed = 0;

    y = IIRFilter(&filter, x); /* once per sample */
    // [end]
    CHECK(filter.Coeffs.NumSections == 2);
    CHECK(y > 1.5 - 1e-12 && y < 1.5 + 1e-12); /* primed with the first sample: no step */
    return 0;
}

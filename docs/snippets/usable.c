// docs/filters.md: whether a design can be used.
#include "check.h"
#include "gain.h"

// [shown]
/* 1 if the design is stable, loses at most 1 dB at the frequency `pass` (low-pass: 0) and amplifies nothing by more
 * than 1 dB. */
static int usable(const IIRCoeffs *c, double pass) {
    for (int k = 0; k < c->NumSections; ++k) /* both poles inside the unit circle; NaN fails too */
        if (!(fabs(c->a2[k]) < 1 && fabs(c->a1[k]) < 1 + c->a2[k])) return 0;
    for (int i = 0; i < 1000; ++i)
        if (!(gain(c, i / 1000.0) < 1.12)) return 0;
    return c->NumSections > 0 && gain(c, pass) > 0.89;
}
// [end]

int main(void) {
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0);
    CHECK(usable(&filter.Coeffs, 0.0));
    initTIIRFilter(&filter, ptBandPass, 40.0, 360.0);
    CHECK(usable(&filter.Coeffs, 80.0 / 360.0));
    CHECK(!usable(&filter.Coeffs, 0.0)); /* that is stopped */

    for (int i = 0; i < 3; ++i) { /* cut-offs of 0, below 0, above Nyquist */
        initTIIRFilter(&filter, ptLowPass, (const double[]){0.0, -0.1, 0.75}[i], 1.0);
        CHECK(!usable(&filter.Coeffs, 0.0));
    }
    initTIIRFilter(&filter, 9, 40.0, 360.0); /* no such type */
    CHECK(!usable(&filter.Coeffs, 0.0));
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0);
    filter.Spec.Proto.Family = pfInverseChebyshev;
    filter.Spec.Proto.NumPoles = 12; /* amplifies its stop band */
    filter.Coeffs = CalcIIRFilterCoeff(filter.Spec);
    CHECK(!usable(&filter.Coeffs, 0.0));
    return 0;
}

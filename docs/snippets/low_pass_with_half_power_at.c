// docs/iir.md: a low-pass design with a wanted -3 dB point.
#include "check.h"
#include "gain.h"

// [shown]
IIRCoeffs low_pass_with_half_power_at(double f, IIRDesignSpec spec) {
    double lo = 0, hi = 1, t = tan(f * pi / 2);
    spec.NormCutoff = f;
    const IIRCoeffs c = CalcIIRFilterCoeff(spec);
    for (int i = 0; i < 50; ++i) { /* the -3 dB point of that design */
        const double middle = (lo + hi) / 2;
        *(gain(&c, middle) > sqrt(0.5) ? &lo : &hi) = middle;
    }
    spec.NormCutoff = 2 / pi * atan(t * t / tan(lo * pi / 2));
    return CalcIIRFilterCoeff(spec);
}
// [end]

int main(void) {
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0);
    for (int family = pfButterworth; family <= pfElliptic; ++family) {
        filter.Spec.Proto.Family = family;
        for (int i = 0; i < 7; ++i) {
            const double f = 0.01 + 0.07 * i;
            const IIRCoeffs c = low_pass_with_half_power_at(f, filter.Spec);
            CHECK(fabs(gain(&c, f) - sqrt(0.5)) < 1e-9);
        }
    }
    return 0;
}

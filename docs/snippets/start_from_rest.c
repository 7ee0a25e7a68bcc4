// docs/state.md: a filter that starts from rest gives the bits of FilterWithIIR.
#include <math.h>
#include <mensura/iir.h>

#include "check.h"

enum { SAMPLES = 500 };

int main(void) {
    static double x[SAMPLES], y[SAMPLES], block[SAMPLES];
    for (int type = ptLowPass; type <= ptAllPass; ++type) {
        TIIRFilter filter;
        initTIIRFilter(&filter, type, 40.0, 360.0);
        // [shown]
        for (int k = 0; k < MAX_IIR_SECTIONS; ++k)
            filter.RegX1[k] = filter.RegX2[k] = filter.RegY1[k] = filter.RegY2[k] = 0;
        filter.Primed = 1; /* the next sample finds the registers as they are */
        // [end]
        for (int i = 0; i < SAMPLES; ++i) {
            x[i] = sin(0.7 * i) + 1;
            y[i] = IIRFilter(&filter, x[i]);
        }
        FilterWithIIR(x, block, SAMPLES, filter.Coeffs);
        for (int i = 0; i < SAMPLES; ++i) CHECK(y[i] == block[i]);
    }
    return 0;
}

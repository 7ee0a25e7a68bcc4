// docs/state.md: a short gap in a stream.
#include <math.h>
#include <mensura/iir.h>

#include "check.h"

int main(void) {
    const double samples[] = {1.0, 1.0, NAN, NAN, 1.0};
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0);
    double last = 0, y;
    for (int i = 0; i < 5; ++i) {
        const double x = samples[i];
        // [shown]
        if (isfinite(x)) last = x;
        y = IIRFilter(&filter, last);
        // [end]
        CHECK(fabs(y - 1) < 1e-12);
    }
    return 0;
}

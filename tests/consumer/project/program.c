/* Compiled as C and as C++. */
#undef NDEBUG
#include <assert.h>
#include <mensura/mensura.h>

static int is_near(double a, double b) {
    return a - b < 1e-9 && b - a < 1e-9; /* rounding stays well below it, a wrong result well above */
}

int main(void) {
    double poly[] = {1, -6, 11, -6}; /* (x - 1)(x - 2)(x - 3) */
    CplxD roots[3];
    assert(FindRoots(3, poly, roots) == 3);
    for (int x = 1; x <= 3; x++) {
        int hits = 0;
        for (int i = 0; i < 3; i++) hits += is_near(roots[i].re, x) && is_near(roots[i].im, 0);
        assert(hits == 1);
    }

    assert(is_near(CplxDMult(roots[0], CplxDMult(roots[1], roots[2])).re, 6));

    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40.0, 360.0);
    assert(is_near(IIRFilter(&filter, 5.0), 5.0)); /* a low-pass starts at its first sample */
    double y = 1;
    for (int i = 0; i < 1000; i++) y = IIRFilter(&filter, i % 2 ? 1.0 : -1.0);
    assert(is_near(y, 0.0)); /* and lets nothing pass at the Nyquist frequency */
    return 0;
}

// Whether roots can be trusted; docs/roots.md shows it, and its measurements use it.
#ifndef MENSURA_SNIPPETS_ROOTS_HOLD_H
#define MENSURA_SNIPPETS_ROOTS_HOLD_H

#include <math.h>
#include <mensura/complex.h>

// [shown]
/* 1 if each z is a root within rounding and the sum of all is -P[1] / P[0]; P[0] is not 0. */
static int roots_hold(int N, const double *P, const CplxD *z, double tol) {
    CplxD sum = {0, 0};
    double size = 0;
    for (int k = 0; k < N; ++k) {
        const int inside = hypot(z[k].re, z[k].im) <= 1; /* outside the unit circle: P reversed, at 1 / z */
        const CplxD x = inside ? z[k] : CplxDDivision(getCplxD(1, 0), z[k]);
        CplxD value = {0, 0};
        double bound = 0; /* sum of |P[i]| |x|^i */
        for (int i = 0; i <= N; ++i) {
            const double c = P[inside ? i : N - i];
            value = CplxDAdd(CplxDMult(value, x), getCplxD(c, 0));
            bound = bound * hypot(x.re, x.im) + fabs(c);
        }
        if (!(hypot(value.re, value.im) <= tol * bound)) return 0;
        sum = CplxDAdd(sum, z[k]);
        size += hypot(z[k].re, z[k].im);
    }
    return hypot(sum.re + P[1] / P[0], sum.im) <= tol * (size + fabs(P[1] / P[0]));
}
// [end]

#endif

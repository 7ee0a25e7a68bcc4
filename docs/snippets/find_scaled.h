// FindRoots for roots of any size; docs/roots.md shows it, and its measurements use it.
#ifndef MENSURA_SNIPPETS_FIND_SCALED_H
#define MENSURA_SNIPPETS_FIND_SCALED_H

#include <math.h>
#include <mensura/roots.h>

// [shown]
/* x = s t, where s is the power of two nearest to the geometric mean of the roots, so that the scaling rounds nothing. */
static int find_scaled(int N, const double *P, CplxD *z) {
    double Q[101], f = 1;
    const double s = exp2(round(log2(fabs(P[N] / P[0])) / N));
    for (int i = 0; i <= N; ++i, f *= s) Q[i] = P[i] / f;
    const int count = FindRoots(N, Q, z);
    for (int k = 0; k < count; ++k) z[k] = CplxDMult_coef(z[k], s);
    return count;
}
// [end]

#endif

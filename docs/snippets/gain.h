// The gain of a cascade, for the snippets that measure a design; docs/iir.md shows it.
#ifndef MENSURA_SNIPPETS_GAIN_H
#define MENSURA_SNIPPETS_GAIN_H

// [shown]
#include <complex.h>
#include <math.h>
#include <mensura/iir.h>

static const double pi = 3.141592653589793;

/* |H| at f, a fraction of the Nyquist frequency. */
static double gain(const IIRCoeffs *c, double f) {
    const double complex z1 = cexp(-I * pi * f);
    double complex h = 1;
    for (int k = 0; k < c->NumSections; ++k)
        h *= c->a0[k] * (c->b0[k] + z1 * (c->b1[k] + z1 * c->b2[k])) / (1 + z1 * (c->a1[k] + z1 * c->a2[k]));
    return cabs(h);
}
// [end]

#endif

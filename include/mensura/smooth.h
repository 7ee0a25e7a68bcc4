/** @file
 * @defgroup smooth Smoothing
 *
 * Least-squares smoothing of records: each sample becomes the value of the polynomial of degree d that fits w samples
 * best (Savitzky and Golay, Anal Chem 36:1627, 1964).
 *
 *     cubicSmooth7(x, y, n);                             degree 3, window 7
 *
 * All functions take
 *   x  n samples, read only        y  n values; must not overlap x
 * Inside a record the window is centred on the sample and its polynomial taken there.  The first w/2 samples take the
 * polynomial of the first w samples, the last w/2 that of the last w: no sample is lost, and a polynomial of degree d
 * comes back, to rounding, everywhere.  n < w copies x; n < 1 writes nothing.
 * Each value is the sum of the samples times whole numbers, from left to right, over a whole number (towards the end of
 * a record from right to left, its edge being the mirror image); only at the edges of linearSmooth11 the weights are
 * decimal fractions.  NaN and infinity reach the values whose window holds them.
 *
 * The names give d (linear 1, quadratic 2, cubic 3) and w.  Inside a record quadratic and cubic are the same; at its
 * edges the quadratic is calmer.
 *
 * Nothing allocates.  All functions are safe in several threads at once. */
#ifndef MENSURA_SMOOTH_H
#define MENSURA_SMOOTH_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Smooths x into y, as described above; the name gives d and w. */
MENSURA_EXPORT void linearSmooth3(const double *x, double *y, int n);
MENSURA_EXPORT void linearSmooth5(const double *x, double *y, int n);
MENSURA_EXPORT void linearSmooth7(const double *x, double *y, int n);
MENSURA_EXPORT void linearSmooth9(const double *x, double *y, int n);
MENSURA_EXPORT void linearSmooth11(const double *x, double *y, int n);
MENSURA_EXPORT void quadraticSmooth5(const double *x, double *y, int n);
MENSURA_EXPORT void quadraticSmooth7(const double *x, double *y, int n);
MENSURA_EXPORT void cubicSmooth5(const double *x, double *y, int n);
MENSURA_EXPORT void cubicSmooth7(const double *x, double *y, int n);

#ifdef __cplusplus
}
#endif

#endif

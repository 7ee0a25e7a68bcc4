/** @defgroup smooth Smoothing
 *
 * `mensura/smooth.h`: least-squares smoothing of records.  Each sample becomes the value of the polynomial of degree d
 * that fits w samples best (Savitzky and Golay, Anal Chem 36:1627, 1964).
 *
 * @code
 * cubicSmooth7(x, y, n);     // degree 3, window of 7 samples
 * @endcode
 *
 * All functions take
 * - x: n samples, read only;
 * - y: room for n values, in the unit of x; must not overlap x.
 *
 * Inside a record the window is centred on the sample, and the sample becomes the polynomial's value there.  The first
 * w/2 samples take their values from the polynomial of the first w samples, the last w/2 from that of the last w: no
 * sample is lost, and samples of a polynomial of degree d come back unchanged, to rounding, up to both edges.  n < w
 * copies x; n < 1 writes nothing.
 *
 * Each value is a sum of samples times whole numbers, added from left to right, then divided by a whole number (near
 * the end of a record from right to left, because that edge mirrors the other one).  Only linearSmooth11 has decimal
 * fractions for weights at its edges.  NaN and infinity reach the values whose window holds them.
 *
 * The names give d (linear 1, quadratic 2, cubic 3) and w.  Inside a record quadratic and cubic are the same; at its
 * edges the quadratic is calmer.  The guide smooth.md shows what each takes away.
 *
 * Nothing allocates.  All functions are safe in several threads at once.
 * @{ */
#ifndef MENSURA_SMOOTH_H
#define MENSURA_SMOOTH_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Degree 1, window of 3 samples: inside a record the mean of 3 samples. */
MENSURA_EXPORT void linearSmooth3(const double *x, double *y, int n);

/** Degree 1, window of 5 samples: inside a record the mean of 5 samples. */
MENSURA_EXPORT void linearSmooth5(const double *x, double *y, int n);

/** Degree 1, window of 7 samples: inside a record the mean of 7 samples. */
MENSURA_EXPORT void linearSmooth7(const double *x, double *y, int n);

/** Degree 1, window of 9 samples: inside a record the mean of 9 samples. */
MENSURA_EXPORT void linearSmooth9(const double *x, double *y, int n);

/** Degree 1, window of 11 samples: inside a record the mean of 11 samples. */
MENSURA_EXPORT void linearSmooth11(const double *x, double *y, int n);

/** Degree 2, window of 5 samples. */
MENSURA_EXPORT void quadraticSmooth5(const double *x, double *y, int n);

/** Degree 2, window of 7 samples. */
MENSURA_EXPORT void quadraticSmooth7(const double *x, double *y, int n);

/** Degree 3, window of 5 samples. */
MENSURA_EXPORT void cubicSmooth5(const double *x, double *y, int n);

/** Degree 3, window of 7 samples. */
MENSURA_EXPORT void cubicSmooth7(const double *x, double *y, int n);

#ifdef __cplusplus
}
#endif

/** @} */

#endif

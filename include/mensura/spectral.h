/** @file
 * @defgroup spectral Spectra
 *
 * Spectra of sampled signals: transforms, single frequencies, data windows.
 *
 *     WindowData(re, n, wkHanning, 0.0, 0.0, 1);         mean gain 1
 *     FFT(re, im, n, 0);                                 n = 8, 16, ..., 1048576; re and im now hold the bins
 *     amplitude = 2 sqrt(re[k] re[k] + im[k] im[k])      of a sine in bin k, at k fs / n, 0 < k < n / 2
 *
 * Scaling.  Forward transforms divide by n, inverse ones do not, so that a constant signal c has c in bin 0 and an
 * inverse after a forward transform gives the signal back.  SingleFreqDFT and Goertzel do not divide.
 *     forward:  X[k] = (1/n) sum_t x[t] exp(-2 pi i k t / n)        inverse:  x[t] = sum_k X[k] exp(2 pi i k t / n)
 *
 * Memory.  Complex data lie in two arrays, re and im, that must not overlap.  FFT, DFT, RealSigDFT and WindowData take
 * scratch memory from the heap and release it before they return; if there is none they leave the data as they were.
 * Nothing else here allocates.
 *
 * Threads.  All functions are safe in several threads at once, each on its own data.
 *
 * Errors.  None are reported: sizes, directions and codes that are not valid leave the data as they were.  NaN and
 * infinity flow through the arithmetic. */
#ifndef MENSURA_SPECTRAL_H
#define MENSURA_SPECTRAL_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Fast transform ---------------------------------------------------------------------------------------------- */

/** The transform of n points, in place.  Radix 2, decimation in time; each butterfly is a + cW and a - cW with
 *     cW = (c.re W.re - c.im W.im, c.re W.im + c.im W.re).
 *   re, im  n values each
 *   n       a power of two from 8 to 1048576; any other leaves the data as they were
 *   dir     0 forward, 1 inverse; any other leaves the data as they were
 * Allocates about 27 n bytes, up to n = 256 about 11 n, with 5 KB on the stack (19 KB if compiled without
 * optimisation). */
MENSURA_EXPORT void FFT(double *re, double *im, int n, int dir);

/** The size to pad n samples to: the smallest valid one that holds them, at most 1048576 even if n is larger. */
MENSURA_EXPORT int RequiredFFTSize(int n);

/** log2(n), 3 to 20, when FFT accepts n, else 0. */
MENSURA_EXPORT int IsValidFFTSize(int n);

/* ---- The three steps of a plain FFT ---------------------------------------------------------------------------------
 * For arrays of the caller.  n is any power of two, for the twiddle table from 8 on;
 * with any other n they do nothing. */

/** Step 1: out[i] = in[index[i]], and index[0 .. n-1] becomes the bit-reversed order of 0 .. n-1.
 * in and out must not overlap. */
MENSURA_EXPORT void ReArrangeInput(const double *inRe, const double *inIm, double *outRe, double *outIm, int *index,
                                   int n);

/** Step 2: cos(2 pi i / n) and -sin (dir = 0) or +sin (any other dir) for i = 0 .. n/2 - 1.  The first eighth comes
 * from libm, the rest by symmetry; entries at n/8, n/4 and 3n/8 are exact. */
MENSURA_EXPORT void FillTwiddleArray(double *twRe, double *twIm, int n, int dir);

/** Step 3: log2(n) stages of butterflies between tmp, which holds the rearranged input, and buf.  The result, not
 * scaled, is in buf when log2(n) is odd and in tmp when it is even; the other pair holds the stage before. */
MENSURA_EXPORT void Transform(double *bufRe, double *bufIm, double *tmpRe, double *tmpIm, const double *twRe,
                              const double *twIm, int n);

/* ---- Transforms of any length ------------------------------------------------------------------------------------ */

/** The transform of n points, in place, summed term by term: time proportional to n squared, any n.
 *   re, im  n values each; n < 1 touches nothing
 *   dir     0 forward, 1 inverse; any other leaves the data as they were
 * Angles are 2 pi ((k t) mod n) / n.  Allocates 32 n bytes. */
MENSURA_EXPORT void DFT(double *re, double *im, int n, int dir);

/** The forward transform of n real samples; time proportional to n squared, any n.
 *   x              n samples, read only
 *   outRe, outIm   n bins each; must not overlap x
 * Bins 0 .. n/2 are summed, and bins n-1 downwards mirror bins 1 .. n/2 - 1.
 * AN ODD n = 2h + 1 LEAVES BIN h + 1 AS IT WAS: it is the conjugate of bin h.  (h = 1: only bins 0 and 1 are written.)
 * n < 1 writes nothing.  Allocates 24 n bytes. */
MENSURA_EXPORT void RealSigDFT(const double *x, double *outRe, double *outIm, int n);

/* ---- One frequency ----------------------------------------------------------------------------------------------- */

/** |sum_t x[t] exp(-i pi f t)|, t = 0 .. n-1, not divided by n.
 *   x  n samples, read only          f  1.0 is the Nyquist frequency: f = 2 F / fs
 * The phasor is turned from sample to sample, so its error grows with n.  n < 1 gives 0. */
MENSURA_EXPORT double SingleFreqDFT(const double *x, int n, double f);

/** The same magnitude by Goertzel's recursion, one multiplication a sample (Amer Math Monthly 65:34, 1958):
 *     s = x[t] + 2 cos(pi f) s' - s''        power = s'^2 + s''^2 - 2 cos(pi f) s' s''
 * A power of 0 or less gives 1e-12, so that its logarithm is finite; so does n < 1.  Near f = 0 and f = 1 the power is
 * a small difference of large numbers. */
MENSURA_EXPORT double Goertzel(const double *x, int n, double f);

/* ---- Data windows ------------------------------------------------------------------------------------------------ */

/** Windows by code.  j = 1 .. L counts the points of the taper, D = L + 1, t = 2 pi j / D.  Constants of more than
 * seven digits are rounded here.  docs/spectral.md has the mean, noise bandwidth, side lobes and width of each. */
enum WindowKind {
    wkNone = 0,            /**< data as they were, and for every code not listed */
    wkRectangle = 1,       /**< data as they were */
    wkKaiser = 2,          /**< I0(beta sqrt(1 - x^2)) / I0(beta), x = (2j - D) / D; alpha counts as 0 */
    wkSinc = 3,            /**< (sin(v) / v)^beta, v = pi (2j - D) / D */
    wkHanning = 4,         /**< 0.5 - 0.5 cos t */
    wkHamming = 5,         /**< 0.54 - 0.46 cos t */
    wkBlackman = 6,        /**< 0.42 - 0.5 cos t + 0.08 cos 2t */
    wkFlatTop = 7,         /**< 1 - 1.93293 cos t + 1.28350 cos 2t - 0.38131 cos 3t + 0.02930 cos 4t; alpha counts
                                as 0 */
    wkBlackmanHarris = 8,  /**< 0.35875 - 0.48829 cos t + 0.14128 cos 2t - 0.01168 cos 3t */
    wkBlackmanNuttall = 9, /**< 0.3535819 - 0.4891775 cos t + 0.1365995 cos 2t - 0.0106411 cos 3t; the first constant is
                                0.01 lower than usual, so that the ends lie at -0.01 */
    wkNuttall = 10,        /**< 0.355768 - 0.487396 cos t + 0.144232 cos 2t - 0.012604 cos 3t */
    wkKaiserBessel = 11,   /**< 0.402 - 0.498 cos t + 0.098 cos 2t + 0.001 cos 3t */
    wkTriangle = 12,       /**< j / ceil(L / 2) up to the middle */
    wkGauss = 13,          /**< exp(-(2.7183 (j - D/2) / (D/2))^2) */
    wkSine = 14            /**< sin(pi j / D)^beta */
};

/** Multiplies n samples by a window, in place.
 *   data       n samples; n < 1 touches nothing
 *   kind       a WindowKind code
 *   alpha      fraction of the block left flat in its middle, held within 0 .. 1 (NaN: 0): F = alpha n points, rounded
 *              down, one more when that is odd, at most n.  The taper has L = n - F points, half at either end
 *   beta       shape: of Kaiser, the exponent of the sinc and sine windows; held within 0 .. 10
 *   unityGain  not 0: the factors are divided by their mean, so that a constant keeps its mean
 * The window is symmetric and leaves out the two zeros that the textbook forms have at j = 0 and j = D: Hanning of 5
 * points is 0.25, 0.75, 1, 0.75, 0.25.  The centre of an odd n is 1, in the flat top 4.627.
 * Allocates 4 n bytes. */
MENSURA_EXPORT void WindowData(double *data, int n, int kind, double alpha, double beta, int unityGain);

/** I0, the modified Bessel function of order 0, by its series up to the ninth term:
 *     1 + sum ((x/2)^k / k!)^2, k = 1 .. 9
 * Relative error below 1e-8 up to |x| = 4, 3e-4 up to 8, 4e-3 up to 10, where wkKaiser stops. */
MENSURA_EXPORT double Bessel(double x);

/** sin(x) / x, and 1 for |x| < 1e-5. */
MENSURA_EXPORT double Sinc(double x);

#ifdef __cplusplus
}
#endif

#endif

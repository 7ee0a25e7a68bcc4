/** @defgroup spectral Spectra
 *
 * `mensura/spectral.h`: spectra of sampled signals: transforms, single frequencies, data windows.
 *
 * @code
 * WindowData(re, n, wkHanning, 0.0, 0.0, 1);             // mean gain 1
 * FFT(re, im, n, 0);                                     // n = 8, 16, ..., 1048576; re and im now hold the bins
 * amplitude = 2 * sqrt(re[k] * re[k] + im[k] * im[k]);   // of a sine in bin k, at k fs / n, 0 < k < n / 2
 * @endcode
 *
 * **Scaling.**  Forward transforms divide by n, inverse ones do not.  A constant signal c therefore has c in bin 0, and
 * an inverse after a forward transform gives the signal back.  SingleFreqDFT and Goertzel do not divide.
 *
 *     X[k] = (1 / n) sum_t x[t] exp(-2 pi i k t / n)          forward
 *     x[t] = sum_k X[k] exp(2 pi i k t / n)                   inverse
 *
 * **Memory.**  Complex data lie in two arrays, re and im, that must not overlap.  FFT of more than 1024 points, DFT,
 * RealSigDFT and WindowData take scratch memory from the heap and release it before they return; if there is none they
 * leave the data as they were.  Nothing else here allocates.
 *
 * **Threads.**  All functions are safe in several threads at once, each on its own data.
 *
 * **Errors.**  None are reported: sizes, directions and codes that are not valid leave the data as they were.  NaN and
 * infinity flow through the arithmetic.
 * @{ */
#ifndef MENSURA_SPECTRAL_H
#define MENSURA_SPECTRAL_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Fast transform
 * @{ */

/** The fast Fourier transform of n points, in place.
 * Radix 2, decimation in time; each butterfly is a + c W and a - c W with
 *
 *     c W = (c.re W.re - c.im W.im, c.re W.im + c.im W.re)
 *
 * Up to n = 16384 its twiddle factors are data of the library, and the results have the same bits on every machine;
 * above, libm computes the factors in between.
 *
 * Up to n = 1024 it takes 20 KB of stack (80 KB if compiled without optimisation) and allocates nothing.  Above, it
 * allocates about 16 n bytes, from n = 32768 on about 19 n.
 * @param re   n real parts
 * @param im   n imaginary parts
 * @param n    a power of two from 8 to 1048576; any other leaves the data as they were
 * @param dir  0 forward, 1 inverse; any other leaves the data as they were */
MENSURA_EXPORT void FFT(double *re, double *im, int n, int dir);

/** The size to pad n samples to: the smallest valid one that holds them, at most 1048576 even if n is larger. */
MENSURA_EXPORT int RequiredFFTSize(int n);

/** The exponent log2(n), 3 to 20, when FFT accepts n, else 0. */
MENSURA_EXPORT int IsValidFFTSize(int n);

/** @} */

/** @name The three steps of a plain FFT
 * For arrays of the caller.  n is any power of two, for the twiddle factors from 8 on; with any other n the functions
 * do nothing.
 * @{ */

/** Step 1: the input in bit-reversed order, out[i] = in[index[i]].
 * index[0 .. n-1] receives the bit-reversed order of 0 .. n-1.  The inputs and outputs must not overlap. */
MENSURA_EXPORT void ReArrangeInput(const double *inRe, const double *inIm, double *outRe, double *outIm, int *index,
                                   int n);

/** Step 2: the twiddle factors cos(2 pi i / n) and -sin(2 pi i / n), or +sin for a dir other than 0.
 * They are written for i = 0 .. n/2 - 1.  The first eighth comes from a table of n = 16384, and between its angles from
 * libm, the rest by symmetry; the entries at n/8, n/4 and 3n/8 are exact. */
MENSURA_EXPORT void FillTwiddleArray(double *twRe, double *twIm, int n, int dir);

/** Step 3: log2(n) stages of butterflies between tmp, which holds the rearranged input, and buf.
 * The result, which is not scaled, is in buf when log2(n) is odd and in tmp when it is even; the other pair holds the
 * output of the stage before the last. */
MENSURA_EXPORT void Transform(double *bufRe, double *bufIm, double *tmpRe, double *tmpIm, const double *twRe,
                              const double *twIm, int n);

/** @} */

/** @name Transforms of any length
 * @{ */

/** The discrete Fourier transform of n points, in place, summed term by term.
 * It takes any n, and a time proportional to n squared.  Angles are 2 pi ((k t) mod n) / n.  Allocates 32 n bytes.
 * @param re   n real parts
 * @param im   n imaginary parts
 * @param n    number of points; n < 1 touches nothing
 * @param dir  0 forward, 1 inverse; any other leaves the data as they were */
MENSURA_EXPORT void DFT(double *re, double *im, int n, int dir);

/** The forward transform of n real samples; any n, in a time proportional to n squared.
 * Bins 0 .. n/2 are summed, and bins n-1 downwards mirror bins 1 .. n/2 - 1.
 *
 * AN ODD n = 2h + 1 LEAVES BIN h + 1 AS IT WAS: it would be the conjugate of bin h.  (h = 1: only bins 0 and 1 are
 * written.)  n < 1 writes nothing.  Allocates 24 n bytes.
 * @param x      n samples, read only
 * @param outRe  n real parts; must not overlap x
 * @param outIm  n imaginary parts; must not overlap x
 * @param n      number of samples */
MENSURA_EXPORT void RealSigDFT(const double *x, double *outRe, double *outIm, int n);

/** @} */

/** @name One frequency
 * @{ */

/** The magnitude of the transform at one frequency, not divided by n.
 * The sum runs over the n samples:
 *
 *     |sum_t x[t] exp(-i pi f t)|,  t = 0 .. n-1
 *
 * The phasor is turned from sample to sample, so its error grows with n.
 * @param x  n samples, read only
 * @param n  number of samples; n < 1 gives 0
 * @param f  the frequency as a fraction of the Nyquist frequency, 2 F / fs */
MENSURA_EXPORT double SingleFreqDFT(const double *x, int n, double f);

/** The same magnitude by Goertzel's recursion, one multiplication a sample (Amer Math Monthly 65:34, 1958).
 * With s' and s'' for the two values before:
 *
 *     s = x[t] + 2 cos(pi f) s' - s''
 *     power = s'^2 + s''^2 - 2 cos(pi f) s' s''
 *
 * A power of 0 or less gives 1e-12, so that its logarithm is finite; so does n < 1.  Near f = 0 and f = 1 the power is
 * a small difference of large numbers.
 * @param x  n samples, read only
 * @param n  number of samples
 * @param f  the frequency as a fraction of the Nyquist frequency, 2 F / fs */
MENSURA_EXPORT double Goertzel(const double *x, int n, double f);

/** @} */

/** @name Data windows
 * @{ */

/** Windows by code.
 * j = 1 .. L counts the points of the taper, D = L + 1, t = 2 pi j / D.  Constants of more than seven digits are
 * rounded here.  The guide spectral.md has the mean, noise bandwidth, side lobes and width of each. */
enum WindowKind {
    wkNone = 0,            /**< no window: data as they were, also for every code not listed */
    wkRectangle = 1,       /**< rectangle: data as they were */
    wkKaiser = 2,          /**< Kaiser: I0(beta sqrt(1 - x^2)) / I0(beta), x = (2j - D) / D; alpha counts as 0 */
    wkSinc = 3,            /**< sinc (Lanczos): (sin(v) / v)^beta, v = pi (2j - D) / D */
    wkHanning = 4,         /**< Hanning (Hann): 0.5 - 0.5 cos t */
    wkHamming = 5,         /**< Hamming: 0.54 - 0.46 cos t */
    wkBlackman = 6,        /**< Blackman: 0.42 - 0.5 cos t + 0.08 cos 2t */
    wkFlatTop = 7,         /**< flat top: 1 - 1.93293 cos t + 1.28350 cos 2t - 0.38131 cos 3t + 0.02930 cos 4t; alpha
                                counts as 0 */
    wkBlackmanHarris = 8,  /**< Blackman-Harris: 0.35875 - 0.48829 cos t + 0.14128 cos 2t - 0.01168 cos 3t */
    wkBlackmanNuttall = 9, /**< Blackman-Nuttall: 0.3535819 - 0.4891775 cos t + 0.1365995 cos 2t - 0.0106411 cos 3t; the
                                first constant is 0.01 lower than usual, so that the ends lie at -0.01 */
    wkNuttall = 10,        /**< Nuttall: 0.355768 - 0.487396 cos t + 0.144232 cos 2t - 0.012604 cos 3t */
    wkKaiserBessel = 11,   /**< Kaiser-Bessel, four terms: 0.402 - 0.498 cos t + 0.098 cos 2t + 0.001 cos 3t */
    wkTriangle = 12,       /**< triangle: j / ceil(L / 2) up to the middle */
    wkGauss = 13,          /**< Gauss: exp(-(2.7183 (j - D/2) / (D/2))^2) */
    wkSine = 14            /**< sine (cosine): sin(pi j / D)^beta */
};

/** Multiplies n samples by a window, in place.
 * The window is symmetric and leaves out the two zeros that the textbook forms have at j = 0 and j = D: Hanning of 5
 * points is 0.25, 0.75, 1, 0.75, 0.25.  The centre of an odd n is 1, in the flat top 4.627.  Allocates 4 n bytes.
 * @param data       n samples
 * @param n          number of samples; n < 1 touches nothing
 * @param kind       a WindowKind code
 * @param alpha      fraction of the block left flat in its middle, clamped to 0 .. 1 (NaN: 0): F = alpha n points,
 *                   rounded down, one more when that is odd, at most n.  The taper has L = n - F points, half at either
 *                   end
 * @param beta       shape of Kaiser, and the exponent of the sinc and sine windows; clamped to 0 .. 10
 * @param unityGain  not 0: the factors are divided by their mean, so that a constant keeps its mean */
MENSURA_EXPORT void WindowData(double *data, int n, int kind, double alpha, double beta, int unityGain);

/** The modified Bessel function I0 of order 0, by its series up to the ninth term.
 * The series is
 *
 *     I0(x) = 1 + sum_k ((x / 2)^k / k!)^2,  k = 1 .. 9
 *
 * Relative error below 1e-8 up to |x| = 4, 3e-4 up to 8, 4e-3 up to 10, where wkKaiser stops. */
MENSURA_EXPORT double Bessel(double x);

/** The quotient sin(x) / x, and 1 for |x| < 1e-5. */
MENSURA_EXPORT double Sinc(double x);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif

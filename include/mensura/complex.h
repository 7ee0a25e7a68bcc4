/** @defgroup complex Complex numbers
 *
 * `mensura/complex.h`: complex numbers in double precision, a value type of two fields and twelve functions.
 *
 * Every function takes and returns its values by value, allocates nothing, keeps no state and may run in any number of
 * threads at once.  Nothing is checked: infinities and NaNs pass through as IEEE 754 arithmetic gives them.  Squares
 * are not rescaled, so moduli and divisors overflow above about 1e154 and lose digits or underflow below about 1e-154
 * (to 0 below about 1e-162).
 *
 * In the formulas x = a.re and y = a.im; each operation is rounded on its own, in the order written.
 * @{ */
#ifndef MENSURA_COMPLEX_H
#define MENSURA_COMPLEX_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The number re + i im. */
typedef struct CplxD {
    double re; /**< real part */
    double im; /**< imaginary part */
} CplxD;

/** The number {re, im}. */
MENSURA_EXPORT CplxD getCplxD(double re, double im);

/** The sum a + b. */
MENSURA_EXPORT CplxD CplxDAdd(CplxD a, CplxD b);

/** The difference a - b. */
MENSURA_EXPORT CplxD CplxDSub(CplxD a, CplxD b);

/** The product a b = {a.re b.re - a.im b.im, a.im b.re + a.re b.im}. */
MENSURA_EXPORT CplxD CplxDMult(CplxD a, CplxD b);

/** The product a c with a real factor c: {x c, y c}. */
MENSURA_EXPORT CplxD CplxDMult_coef(CplxD a, double c);

/** The quotient a / b.
 * With d for the squared modulus of b:
 *
 *     a / b = {(a.re b.re + a.im b.im) / d, (a.im b.re - a.re b.im) / d},  d = b.re^2 + b.im^2
 *
 * A divisor of 0 gives NaN in both parts for every finite a. */
MENSURA_EXPORT CplxD CplxDDivision(CplxD a, CplxD b);

/** The modulus sqrt(x^2 + y^2). */
MENSURA_EXPORT double CplxDCabs(CplxD a);

/** The principal value of a to the real power p.
 * With the argument of a from -pi to pi:
 *
 *     a^p = |a|^p {cos(p arg a), sin(p arg a)}
 *
 * |p| < 1e-50 gives {1, 0}, whatever a is; otherwise |a| < 1e-50 gives {0, 0}, also for a negative p. */
MENSURA_EXPORT CplxD CplxDPow(CplxD a, double p);

/** The cosine {cos x cosh y, -(sin x sinh y)}. */
MENSURA_EXPORT CplxD CplxDCos(CplxD a);

/** The sine {sin x cosh y, cos x sinh y}. */
MENSURA_EXPORT CplxD CplxDSin(CplxD a);

/** The tangent.
 * With d for the common denominator:
 *
 *     tan a = {sin x cos x / d, sinh y cosh y / d},  d = cosh^2 y - sin^2 x
 *
 * |d| < 1e-50, which happens next to the real poles, gives {tan x, 0}.  Beyond |y| of about 355, where cosh^2 y
 * overflows, the real part is 0 and the imaginary part NaN. */
MENSURA_EXPORT CplxD CplxDTan(CplxD a);

/** The conjugate {x, -y}; a y of +0 becomes -0. */
MENSURA_EXPORT CplxD CplxDConj(CplxD a);

#ifdef __cplusplus
}
#endif

/** @} */

#endif

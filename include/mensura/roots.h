/** @defgroup roots Polynomial roots
 *
 * `mensura/roots.h`: roots of real polynomials, by closed forms up to degree 4 and an iterative finder up to degree
 * 100.
 *
 * @code
 * double polynomial[] = {1, -6, 11, -6};                 // x^3 - 6 x^2 + 11 x - 6
 * CplxD roots[3];
 * count = FindRoots(3, polynomial, roots);               // 3: the roots 3, 2, 1
 * @endcode
 *
 * **Coefficients.**  P[0 .. N], highest power first: P[0] belongs to x^N, P[N] is the constant term.
 *
 * **Roots.**  FindRoots writes an array of CplxD, the others two parallel arrays of N entries: real and imaginary
 * parts.  Real roots have an imaginary part of 0; complex roots stand as conjugate pairs in adjacent slots.  The
 * member with the positive imaginary part usually comes first, but after an inversion of the roots it may come second,
 * and the 0 of a real root may be a -0: do not rely on the sign.
 *
 * **Precision.**  Everything is computed in long double as the platform has it (80 bits on x86-64).  FindRoots takes
 * double, and rounds the roots to double at the end.
 *
 * **Bad input.**  Up to N = 4 a NaN coefficient gives NaN roots, and an infinite one what the closed forms make of it;
 * from N = 5 on either gives a count of 0.  Every call returns in bounded time.  Pointers and array lengths are the
 * caller's duty.
 *
 * **Memory and threads.**  Nothing here allocates.  On x86-64 FindRoots takes up to 21 KB of stack, 24 KB if compiled
 * without optimisation.  Every function may run in several threads at once: the two variables that the iteration keeps
 * between its steps belong to the thread and are cleared at every start, so that each thread sees exactly the results
 * of a program with one thread.
 *
 * **How far to trust FindRoots** (measured; the guide roots.md has the tables):
 * - Random coefficients are its strength: for 95 polynomials of 100 every root is within 2e-15 of its true value,
 *   relative to its modulus, at degree 20 and within 6e-13 at degree 100.
 * - A root of multiplicity m is found to about the m-th root of the precision.
 * - Coefficients of very different size cost digits, up to wrong roots.  Roots that are all much smaller than 1 end in
 *   a count of 0, or in zeros where trailing coefficients fall below 1e-30 of their neighbour.  Scale the variable
 *   first: x = s t with s near the roots' geometric mean |P[N] / P[0]|^(1/N).
 * - A few polynomials, cubes of quadratics such as (x^2 + 1.25)^3 among them, come back as a success with huge wrong
 *   roots.  To be sure, evaluate the polynomial at the roots, or multiply the factors out again and compare.
 * @{ */
#ifndef MENSURA_ROOTS_H
#define MENSURA_ROOTS_H

#include <mensura/complex.h>
#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name The two calls that most programs need
 * @{ */

/** All N roots of a polynomial of degree N, 1 <= N <= 100.
 * They solve
 *
 *     Coeff[0] x^N + Coeff[1] x^(N-1) + ... + Coeff[N] = 0
 *
 * Returns N and writes Roots[0 .. N-1], in the order found: zeros first, the roots of the last factor of degree 4 or
 * less last.  A leading coefficient of 0 lowers the degree; the count is still N and slot 0 then holds {0, 0}.
 * Coeff is not modified.
 *
 * Returns 0 and writes nothing when N is outside 1 .. 100, when no root other than 0 is left (c x^N), or when no start
 * value converges. */
MENSURA_EXPORT int FindRoots(int N, double *Coeff, CplxD *Roots);

/** Roots of a polynomial of degree 1 to 4 by closed forms; P is not modified.
 * Returns the number of roots solved for, which come first.  Trailing coefficients not above 1e-30 of their neighbour
 * count as 0: their roots, at 0, come last.  Leading zeros lower the degree.
 *
 * Returns 0 and writes nothing when N is outside 1 .. 4, and 0 with N zeros written when nothing is left to solve. */
MENSURA_EXPORT int QuadCubicRoots(long double *P, int N, long double *RealRoot, long double *ImagRoot);

/** @} */

/** @name Closed forms of monic polynomials
 * P[0] is taken as 1.  CubicRoots and BiQuadRoots scale, and may reverse, P in place; they need a constant term other
 * than 0, which would make the scale 0 and the results not finite.
 * @{ */

/** The two roots of x^2 + P[1] x + P[2]. */
MENSURA_EXPORT void QuadRoots(long double *P, long double *RealRoot, long double *ImagRoot);

/** The three roots of x^3 + P[1] x^2 + P[2] x + P[3], by Cardano's formula or its trigonometric form. */
MENSURA_EXPORT void CubicRoots(long double *P, long double *RealRoot, long double *ImagRoot);

/** The four roots of x^4 + P[1] x^3 + P[2] x^2 + P[3] x + P[4], by Ferrari's method. */
MENSURA_EXPORT void BiQuadRoots(long double *P, long double *RealRoot, long double *ImagRoot);

/** Reverses a polynomial and divides it by its new P[0], unless that is 0; the roots become their reciprocals.
 * Its coefficients are P[0 .. N].  N < 0 does nothing. */
MENSURA_EXPORT void ReversePoly(long double *P, int N);

/** Replaces each of N roots z by 1/z = conj(z) / |z|^2; a root at 0 stays.  N < 1 does nothing. */
MENSURA_EXPORT void InvertRoots(int N, long double *RealRoot, long double *ImagRoot);

/** @} */

/** @name The stages of the iterative finder
 * For study and tests; FindRoots calls them.  Work arrays have N + 2 entries, because a synthetic division by a
 * quadratic leaves an extra remainder term at N + 1.  TUV = {1, u, v} stands for the trial quadratic x^2 + u x + v.
 * Flag points to the state of the search: 0 running, 1 abandon this start, 2 step negligible, 3 no progress, 4
 * improved.  The iteration is of the kind of Jenkins MA, Traub JF: A three-stage algorithm for real polynomials using
 * quadratic iteration, SIAM J Numer Anal 7(4):545-566 (1970).
 * @{ */

/** FindRoots in long double.
 * Coeff[0 .. N] is not modified; the roots go to RealRoot[0 .. N-1] and ImagRoot[0 .. N-1].  Returns N, or 0 as
 * FindRoots does; after a failed search the arrays hold the roots found until then, and zeros. */
MENSURA_EXPORT int PFiftyOne(long double *Coeff, int N, long double *RealRoot, long double *ImagRoot);

/** The start values of a search.
 * N < 1 or an AngleIndex outside the table touches nothing.
 * @param P           the polynomial, P[0 .. N]
 * @param N           its degree
 * @param TUV         receives the trial quadratic of the angle and the radius
 * @param KR          receives the derivative of P
 * @param KQ          receives the K polynomial that Mode chooses, divided by its KQ[0]; a KQ[0] of 0 becomes 1
 * @param AngleIndex  0 .. 179: which angle of a fixed table
 * @param Radius      modulus of the roots of the trial quadratic
 * @param Mode        0 the second derivative, 1 the quotient P / TUV, 2 the derivative without its leading term, any
 *                    other 1
 * @param QP          not used
 * @param Flag        not used */
MENSURA_EXPORT void SetTUVandK(long double *P, int N, long double *TUV, long double *KR, long double *KQ,
                               int AngleIndex, long double Radius, int Mode, long double *QP, int *Flag);

/** Up to 20 steps of the quadratic stage; Pass counts the calls since the start values, from 0.
 * Returns 2 when TUV is a factor of P (QP[0 .. N-2] is then the quotient), else 0.  N < 2 touches nothing and returns
 * 0. */
MENSURA_EXPORT int QuadIterate(int Pass, long double *P, long double *QP, long double *KQ, long double *QK, int N,
                               long double *TUV, int *Flag);

/** Up to 20 steps of the real stage from *S; Pass counts the calls since the start values, from 0.
 * Returns 1 when *S is a root of P (QPR[0 .. N-1] is then the quotient), else 0.  QK is scratch.  N < 1 touches nothing
 * and returns 0. */
MENSURA_EXPORT int RealIterate(int Pass, long double *P, long double *QPR, long double *KR, long double *QK, int N,
                               long double *S);

/** One step of the quadratic stage: new KQ and QK, a damped Newton step of TUV, and QP = P / TUV.
 * Step counts from 0 since the start values.  N < 2 touches nothing. */
MENSURA_EXPORT void UpdateTUV(int Step, long double *P, int N, long double *QP, long double *KQ, long double *QK,
                              long double *TUV, int *Flag);

/** Synthetic division by x^2 + u x + v.
 * The recurrence is
 *
 *     R[j] = P[j] - u R[j-1] - v R[j-2],  j = 0 .. N
 *
 * R[0 .. N-2] is the quotient, R[N-1] and R[N] are the last two terms of the recurrence, and R[N+1] = R[N-1] u + R[N].
 * R may be P.  N < 1 touches nothing. */
MENSURA_EXPORT void QuadSynDiv(long double *P, int N, long double *TUV, long double *R);

/** The derivative of a polynomial: D[i] = (N - i) P[i] for i < N, and D[N] = 0.
 * D may be P.  N < 0 touches nothing. */
MENSURA_EXPORT void DerivOfP(long double *P, int N, long double *D);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif

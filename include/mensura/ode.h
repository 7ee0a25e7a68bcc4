/** @file
 * @defgroup ode Differential equations
 *
 * Ordinary differential equations y' = f(t, y) of up to 20 components.
 *
 *     int swing(double t, const double *y, void *length, double *dydt) {
 *         dydt[0] = y[1];
 *         dydt[1] = -9.81 / *(double *)length * sin(y[0]);
 *         return 0;
 *     }
 *     rkf45(0.0, 10.0, 100.0, 1e-6, swing, y0, 2, &length, y);
 *
 * Failures print a line on standard output and return a negative number.  y0 and y have n numbers each, and y may be
 * y0.  Nothing here allocates, but for the file of test_rkf45.  All functions are safe in several threads at once, each
 * on its own data, as far as the callback is; test_rkf45 writes one file: one call at a time. */
#ifndef MENSURA_ODE_H
#define MENSURA_ODE_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Writes the n derivatives of y at time t to dydt; param is what the caller of the integrator handed over.  The result
 * is ignored.  It must not throw. */
typedef int (*OdeFunction)(double t, const double *y, void *param, double *dydt);

/** From t0 to t1 with a step of its own choice: Runge-Kutta-Fehlberg 4(5), the solution of order 4 carried on
 * (Fehlberg, NASA TR R-315, 1969).  The first step is h = (t1 - t0) / divisions; steps stay between h / 32 and 32 h,
 * and the last one, shorter or longer by up to 1e-5 |t1|, lands on t1.  Six calls of f an attempt.
 *   divisions  above 0 (0: one step; below: backwards until -3; infinite: -3)
 *   tol        above 0; an attempt is accepted when its largest error estimate over all components is below it, in the
 *              unit of y, per step.  ONE SHORTER THAN h / 32, which is a last one or half of a last one that was
 *              rejected, is accepted whatever its error; divisions below 1 invite that
 * THE STEP MOSTLY SHRINKS: its factor min 0.84 (tol h / |error|)^(1/4) is the smallest of the whole call, and 0 after
 * an error below 1e-8.  Below 0.75 it halves the step after every attempt, and only above 1.5 it doubles it.  So choose
 * divisions for the accuracy you need, at most 620 of them, for which steps of h / 32 suffice, and go a long way in
 * several calls, each with a fresh step.  docs/ode.md shows what that gives.
 * Returns
 *     0  y is the state at t1 (y0 when t1 = t0, when a time is NaN or when n < 1)
 *    -1  t1 < t0, "rkf45: time set error!", y untouched; n > 20, nothing printed or touched
 *    -2  a component of a stage exceeded 1e15, "solve failure, data over big!"
 *    -3  20000 accepted steps, 20000 rejected attempts in a row, or an attempt that would be rejected for ever,
 *        "forcefully terminate!"
 * After -2 and -3 y is the last accepted state.  NaN from f is no failure.  A call ends after at most 4e8 attempts,
 * mostly after a few thousand. */
MENSURA_EXPORT int rkf45(double t0, double t1, double divisions, double tol, OdeFunction f, const double *y0, int n,
                         void *param, double *y);

/** From t0 in floor((t1 - t0) / h) steps of h = 1 / rate by the classical Runge-Kutta method of order 4; in two steps
 * of (t1 - t0) / 2 when that is less than one, also for a rate of 0 or below.  THE LAST STEP LANDS ON t1 ONLY if rate
 * makes it, and rounding may lose one: add half a step to t1 to be safe.
 * Returns
 *     0  y is the state after the last step (n < 1: at once)
 *    -1  t1 < t0, or more than 2147483647 steps, or a number of steps that is not finite: "rkf45: time set error!", y
 *        untouched; n > 20, nothing printed or touched
 *    -2  a component exceeded 1e30, "solve failure, data over big!"; y is the state after that step */
MENSURA_EXPORT int rkf452(double t0, double t1, double rate, OdeFunction f, const double *y0, int n, void *param,
                          double *y);

/** Integrates y' = (y1 y2, y2 - y0, -0.51 y0 y1) from (1, 1, 3) to t = 15 by calls of rkf45 over 0.001 each, and writes
 * "test_rkf45.txt" in the current directory: the state after each call, 15001 lines "%f,%f,%f,0".  Prints
 * "test_rkf45 end"; if a call fails "Fdynamics: rkf45 failure!" instead.  A file that cannot be opened is a failure
 * too, without a line; a full disk goes unnoticed. */
MENSURA_EXPORT void test_rkf45(void);

/** A 5 x 3 matrix of sample data, which no function reads. */
extern MENSURA_EXPORT double in[5][3];

#ifdef __cplusplus
}
#endif

#endif

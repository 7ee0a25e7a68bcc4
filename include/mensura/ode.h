/** @defgroup ode Differential equations
 *
 * `mensura/ode.h`: ordinary differential equations y' = f(t, y) of up to 20 components.
 *
 * @code
 * int swing(double t, const double *y, void *length, double *dydt) {
 *     dydt[0] = y[1];
 *     dydt[1] = -9.81 / *(double *)length * sin(y[0]);
 *     return 0;
 * }
 * rkf45(0.0, 10.0, 100.0, 1e-6, swing, y0, 2, &length, y);
 * @endcode
 *
 * Times and states have the units of the caller.  y0 and y have n numbers each, and y may be y0.
 *
 * **Errors.**  A failure prints a line on standard output and returns a negative number.
 *
 * **Memory.**  Nothing here allocates, except that test_rkf45 opens a file.
 *
 * **Threads.**  All functions are safe in several threads at once, each on its own data, as far as the callback is.
 * test_rkf45 writes one file: one call at a time.
 * @{ */
#ifndef MENSURA_ODE_H
#define MENSURA_ODE_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The right-hand side f(t, y) of a system: writes the n derivatives of y at time t to dydt.
 * param is the pointer that the integrator was called with.  The returned value is ignored.  The function must not
 * throw an exception. */
typedef int (*OdeFunction)(double t, const double *y, void *param, double *dydt);

/** Integrates from t0 to t1 and chooses the step itself: Runge-Kutta-Fehlberg 4(5).
 * The solution of order 4 is carried on (Fehlberg, NASA TR R-315, 1969).  An attempt at a step calls f six times.
 *
 * **The step.**  The first one is h = (t1 - t0) / divisions.  Steps stay between h / 32 and 32 h, except the last one,
 * which is made shorter, or longer by up to 1e-5 |t1|, so that it ends at t1.  An attempt is accepted when the largest
 * error estimate of all components is below tol.  A step shorter than h / 32 is accepted WHATEVER ITS ERROR.  Only the
 * last step, which has to end at t1, can be that short, or half of it after it was rejected; with divisions below 1
 * that is frequent.
 *
 * **THE STEP MOSTLY SHRINKS.**  After every attempt the step is halved when s < 0.75 and doubled when s > 1.5, with
 *
 *     s = min 0.84 (tol h / |error|)^(1/4)
 *
 * over all components of all attempts of the call; an error below 1e-8 makes s = 0.  Therefore choose divisions for the
 * accuracy that you need, but at most 620, so that 20000 steps of h / 32 are enough, and divide a long time into
 * several calls, each of which begins with a new step.  The guide ode.md shows what that gives.
 *
 * @param t0         start
 * @param t1         end, not before t0
 * @param divisions  above 0 (0: one step; below 0: steps backwards until it returns -3; infinite: -3)
 * @param tol        above 0: the largest error of a step, in the unit of y
 * @param f          the right-hand side
 * @param y0         n numbers: the state at t0
 * @param n          number of components, at most 20; n < 1 returns 0 at once
 * @param param      handed to f
 * @param y          room for n numbers: the result; after -2 and -3 the last accepted state
 * @retval 0   y is the state at t1 (it is y0 when t1 = t0 or when a time is NaN)
 * @retval -1  t1 < t0: prints "rkf45: time set error!"; or n > 20: prints nothing.  y is untouched
 * @retval -2  a component exceeded 1e15 within a step: prints "solve failure, data over big!"
 * @retval -3  20000 accepted steps, or 20000 rejected attempts in a row, or an attempt that would be rejected for ever:
 *             prints "forcefully terminate!"
 *
 * NaN from f is not a failure.  A call ends after at most 4e8 attempts, mostly after a few thousand. */
MENSURA_EXPORT int rkf45(double t0, double t1, double divisions, double tol, OdeFunction f, const double *y0, int n,
                         void *param, double *y);

/** Integrates from t0 in steps of 1 / rate: the classical Runge-Kutta method of order 4.
 * With h = 1 / rate it takes floor((t1 - t0) / h) steps.  Where that is less than one, also for a rate of 0 or below,
 * it takes two steps of (t1 - t0) / 2.
 *
 * THE LAST STEP ENDS AT t1 ONLY IF THE STEP DIVIDES t1 - t0, and rounding may lose one step: add half a step to t1 to
 * be safe.
 *
 * @param t0     start
 * @param t1     end, not before t0
 * @param rate   steps per unit of time
 * @param f      the right-hand side
 * @param y0     n numbers: the state at t0
 * @param n      number of components, at most 20; n < 1 returns 0 at once
 * @param param  handed to f
 * @param y      room for n numbers: the result
 * @retval 0   y is the state after the last step
 * @retval -1  t1 < t0, or more than 2147483647 steps, or a number of steps that is not finite: prints
 *             "rkf45: time set error!"; or n > 20: prints nothing.  y is untouched
 * @retval -2  a component exceeded 1e30: prints "solve failure, data over big!"; y is the state after that step */
MENSURA_EXPORT int rkf452(double t0, double t1, double rate, OdeFunction f, const double *y0, int n, void *param,
                          double *y);

/** Integrates a known system with rkf45 and writes the result to a file.
 * The system
 *
 *     y' = (y1 y2, y2 - y0, -0.51 y0 y1)
 *
 * runs from (1, 1, 3) to t = 15 in calls over 0.001 each.  "test_rkf45.txt" in the current directory gets the state
 * after each call, 15001 lines "%f,%f,%f,0".  Prints "test_rkf45 end"; if a call fails, "Fdynamics: rkf45 failure!"
 * instead.  When the file cannot be opened nothing is integrated or printed; a full disk goes unnoticed. */
MENSURA_EXPORT void test_rkf45(void);

/** A 5 x 3 matrix of sample data, which no function reads. */
extern MENSURA_EXPORT double in[5][3];

#ifdef __cplusplus
}
#endif

/** @} */

#endif

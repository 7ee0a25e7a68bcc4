/** @file
 * @defgroup kalman Kalman filter
 *
 * A linear Kalman filter of up to 100 states and 100 measurements, on fixed-capacity matrices.
 *
 *     static KalmanFilter kf;                            1.3 MB: static or heap storage, not the stack
 *     getKalmanFilterA(A, 9, dt); getKalmanFilterC(C, 3); getKalmanFilterQ(Q, 9, 1e-4, 0, 0, 1e-2, 0, 1);
 *     getKalmanFilterR(R, 3, 0.25); getKalmanFilterP(P, 9, 1.0);
 *     initKalmanFilter_d(&kf, A, C, Q, R, P, NULL, 3, 9);      3 measurements, 9 states
 *     KalmanFilter_update_d(&kf, z, x);                        once per sample: z has 3 numbers, x gets 9
 *
 * With n states and m measurements: state x(k+1) = A x(k) + noise of covariance Q; measurement z = C x + noise of
 * covariance R.  Units are the caller's: Q and R are variances in squared units of x and z.
 *
 * Memory.  Nothing here allocates.  Only the corners in use of the matrices are touched.  An update takes up to
 * 101 KB of stack on x86-64, 110 KB if the library is compiled without optimisation.
 *
 * Threads.  Separate filters may run in separate threads at once; one filter belongs to one thread at a time.
 *
 * Errors.  None are reported: sizes that do not fit and a singular C P C^T + R (see rmatrix_inverse_ptr: compared with
 * 1) empty the matrices that depend on them, the state at last; isEmptyRMATRIX(getKalmanFilter_state(kf)) tells.  Every
 * later call stays defined, and a reset makes the filter whole again if the sizes were right; a wrong A of an update
 * stays until a right one comes.  Pointers must not be null except where said. */
#ifndef MENSURA_KALMAN_H
#define MENSURA_KALMAN_H

#include <mensura/export.h>
#include <mensura/matrix.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A filter: its model, its state and its scratch. */
typedef struct KalmanFilter {
    RMATRIX A;      /**< n x n  state transition */
    RMATRIX C;      /**< m x n  measurement */
    RMATRIX Q;      /**< n x n  process noise covariance */
    RMATRIX R;      /**< m x m  measurement noise covariance */
    RMATRIX P;      /**< n x n  error covariance of x */
    RMATRIX K;      /**< n x m  gain of the last update */
    RMATRIX Ident;  /**< n x n  identity */
    RMATRIX PInit;  /**< n x n  P after a reset */
    RMATRIX xInit;  /**< n x 1  x after a reset */
    int MeasCount;  /**< m */
    int StateCount; /**< n */
    RMATRIX x;      /**< n x 1  state estimate */
    RMATRIX xPred;  /**< n x 1  predicted, then corrected state */
    RMATRIX ATrans; /**< n x n  transpose of A, kept in step with it */
    RMATRIX CTrans; /**< n x m  transpose of C */
    RMATRIX y;      /**< m x 1  output C x; measurement of the _d forms */
    RMATRIX Work1;  /**< scratch of the update */
    RMATRIX Work2;
} KalmanFilter;

/* ---- The filter ------------------------------------------------------------------------------------------------- */

/** Loads a filter; the sizes are those of C (m rows) and A (n rows).
 *   x0  n x 1, or null for a zero state
 * The matrices are copied; each may be the filter's own field of that name. */
MENSURA_EXPORT void initKalmanFilter(KalmanFilter *kf, const RMATRIX *A, const RMATRIX *C, const RMATRIX *Q,
                                     const RMATRIX *R, const RMATRIX *P, const RMATRIX *x0);

/** P and x as they were after initialisation; A and y stay. */
MENSURA_EXPORT void resetKalmanFilter(KalmanFilter *kf);

/** One step with the measurement z, m x 1; returns the state, &kf->x.  z may be &kf->y, no other field.
 *     x = A x,  P = A P A^T + Q                                            predict
 *     K = P C^T (C P C^T + R)^-1,  x = x + K (z - C x),  P = (I - K C) P   correct */
MENSURA_EXPORT RMATRIX *KalmanFilter_update(KalmanFilter *kf, const RMATRIX *z);

/** The same with a new state transition, which stays; Anew may be &kf->A. */
MENSURA_EXPORT RMATRIX *KalmanFilter_update1(KalmanFilter *kf, const RMATRIX *z, const RMATRIX *Anew);

/** The state, &kf->x. */
MENSURA_EXPORT RMATRIX *getKalmanFilter_state(KalmanFilter *kf);

/** The output C x, computed into &kf->y, which is returned. */
MENSURA_EXPORT RMATRIX *getKalmanFilter_out(KalmanFilter *kf);

/* ---- On plain arrays --------------------------------------------------------------------------------------------
 * Matrices packed row by row; in the _d1 forms as arrays of row pointers.  Vectors are plain arrays.  The forms that
 * return xOut or yOut return it after a failure too, and have then written nothing. */

/** NOTE THE ORDER OF THE COUNTS: m measurements, then n states; above 100 of either the state is empty.
 *   A, Q, P  n x n       C  m x n       R  m x m       x0  n numbers, or null for a zero state */
MENSURA_EXPORT void initKalmanFilter_d(KalmanFilter *kf, const double *A, const double *C, const double *Q,
                                       const double *R, const double *P, const double *x0, int m, int n);
MENSURA_EXPORT void initKalmanFilter_d1(KalmanFilter *kf, double **A, double **C, double **Q, double **R, double **P,
                                        const double *x0, int m, int n);

/** A reset; x0, unless null, has n numbers and replaces the initial state for good. */
MENSURA_EXPORT void resetKalmanFilter_d(KalmanFilter *kf, const double *x0);

/** One step with the m numbers z, which go through kf->y; the n states go to xOut, which is returned. */
MENSURA_EXPORT double *KalmanFilter_update_d(KalmanFilter *kf, const double *z, double *xOut);
MENSURA_EXPORT double *KalmanFilter_update1_d(KalmanFilter *kf, const double *z, const double *Anew, double *xOut);
MENSURA_EXPORT double *KalmanFilter_update1_d1(KalmanFilter *kf, const double *z, double **Anew, double *xOut);

/** The n states, and the m outputs C x. */
MENSURA_EXPORT double *getKalmanFilter_state_d(KalmanFilter *kf, double *xOut);
MENSURA_EXPORT double *getKalmanFilter_out_d(KalmanFilter *kf, double *yOut);

/* ---- A tracking model -------------------------------------------------------------------------------------------
 * Position, velocity and acceleration of k = n / 3 axes: the state has k positions, k velocities, k accelerations, and
 * the positions are measured.  Each writes a packed array and returns it.  A size below 1 writes nothing, an n of 1 or
 * 2 gives zeros. */

/** n x n.  Over dt, positions grow by velocity times dt and velocities by acceleration times dt; positions have no
 * dt^2 / 2 term. */
MENSURA_EXPORT double *getKalmanFilterA(double *A, int n, double dt);

/** m x 3m, with C(i, i) = 1. */
MENSURA_EXPORT double *getKalmanFilterC(double *C, int m);

/** n x n.  Variances and covariances of each axis: p position, v velocity, a acceleration. */
MENSURA_EXPORT double *getKalmanFilterQ(double *Q, int n, double qpp, double qpv, double qpa, double qvv, double qva,
                                        double qaa);

/** m x m: r on the diagonal, 0 elsewhere. */
MENSURA_EXPORT double *getKalmanFilterR(double *R, int m, double r);

/** n x n.  Of each axis: p between position and everything, 100 p between velocity and acceleration, and the variances
 * p, 100000 p of the velocity and 1000 p of the acceleration. */
MENSURA_EXPORT double *getKalmanFilterP(double *P, int n, double p);

#ifdef __cplusplus
}
#endif

#endif

/** @defgroup kalman Kalman filter
 *
 * `mensura/kalman.h`: a linear Kalman filter of up to 100 states and 100 measurements, on fixed-capacity matrices.
 *
 * @code
 * static KalmanFilter kf;                                  // 1.3 MB: static or heap storage, not the stack
 * getKalmanFilterA(A, 9, dt);
 * getKalmanFilterC(C, 3);
 * getKalmanFilterQ(Q, 9, 1e-4, 0, 0, 1e-2, 0, 1);
 * getKalmanFilterR(R, 3, 0.25);
 * getKalmanFilterP(P, 9, 1.0);
 * initKalmanFilter_d(&kf, A, C, Q, R, P, NULL, 3, 9);      // 3 measurements, 9 states
 * KalmanFilter_update_d(&kf, z, x);                        // once per sample: z has 3 numbers, x gets 9
 * @endcode
 *
 * **Model.**  With n states and m measurements:
 *
 *     x(k + 1) = A x(k) + noise of covariance Q          state
 *     z(k) = C x(k) + noise of covariance R              measurement
 *
 * **Units** are the caller's: Q and R are variances in squared units of x and z.
 *
 * **Memory.**  Nothing here allocates.  Only the corners in use of the matrices are touched.  An update takes up to
 * 101 KB of stack on x86-64, 110 KB if the library is compiled without optimisation.
 *
 * **Threads.**  Separate filters may run in separate threads at once; one filter belongs to one thread at a time.
 *
 * **Errors.**  None are reported.  Sizes that do not fit and a singular C P C^T + R (rmatrix_inverse_ptr tells what
 * counts as singular) empty the matrices that depend on them, in the end the state: look at
 * isEmptyRMATRIX(getKalmanFilter_state(kf)).  Every later call stays defined, and a reset makes the filter whole again
 * if the sizes were right; a wrong A of an update stays until a right one comes.  Pointers must not be null except
 * where said.
 * @{ */
#ifndef MENSURA_KALMAN_H
#define MENSURA_KALMAN_H

#include <mensura/export.h>
#include <mensura/matrix.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A filter of n states and m measurements. */
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
    RMATRIX ATrans; /**< n x n  transpose of A, updated with it */
    RMATRIX CTrans; /**< n x m  transpose of C */
    RMATRIX y;      /**< m x 1  output C x; measurement of the _d forms */
    RMATRIX Work1;  /**< scratch of the update */
    RMATRIX Work2;  /**< scratch of the update */
} KalmanFilter;

/** @name The filter
 * @{ */

/** Loads a filter; the sizes are those of C (m rows) and A (n rows).
 * x0 is n x 1, or null for a zero state.  The matrices are copied; each may be the filter's own field of that name. */
MENSURA_EXPORT void initKalmanFilter(KalmanFilter *kf, const RMATRIX *A, const RMATRIX *C, const RMATRIX *Q,
                                     const RMATRIX *R, const RMATRIX *P, const RMATRIX *x0);

/** Sets P and x to what they were after initialisation; A and y stay. */
MENSURA_EXPORT void resetKalmanFilter(KalmanFilter *kf);

/** One step with the measurement z, m x 1; returns the state, &kf->x.
 * With I for the identity:
 *
 *     x = A x,  P = A P A^T + Q                                            predict
 *     K = P C^T (C P C^T + R)^-1,  x = x + K (z - C x),  P = (I - K C) P   correct
 *
 * z may be &kf->y, no other field. */
MENSURA_EXPORT RMATRIX *KalmanFilter_update(KalmanFilter *kf, const RMATRIX *z);

/** KalmanFilter_update with a new state transition, which stays; Anew may be &kf->A. */
MENSURA_EXPORT RMATRIX *KalmanFilter_update1(KalmanFilter *kf, const RMATRIX *z, const RMATRIX *Anew);

/** The state, &kf->x. */
MENSURA_EXPORT RMATRIX *getKalmanFilter_state(KalmanFilter *kf);

/** The output C x, computed into &kf->y, which is returned. */
MENSURA_EXPORT RMATRIX *getKalmanFilter_out(KalmanFilter *kf);

/** @} */

/** @name On plain arrays
 * Matrices are packed row by row; in the `_d1` forms they are arrays of row pointers.  Vectors are plain arrays.  The
 * forms that return xOut or yOut return it after a failure too, and have then written nothing.
 * @{ */

/** Loads a filter from packed matrices.  NOTE THE ORDER OF THE COUNTS: m measurements, then n states.
 * More than 100 of either leave an empty state.
 * @param kf  the filter
 * @param A   n x n numbers
 * @param C   m x n numbers
 * @param Q   n x n numbers
 * @param R   m x m numbers
 * @param P   n x n numbers
 * @param x0  n numbers, or null for a zero state
 * @param m   number of measurements
 * @param n   number of states */
MENSURA_EXPORT void initKalmanFilter_d(KalmanFilter *kf, const double *A, const double *C, const double *Q,
                                       const double *R, const double *P, const double *x0, int m, int n);

/** initKalmanFilter_d with matrices as arrays of row pointers. */
MENSURA_EXPORT void initKalmanFilter_d1(KalmanFilter *kf, double **A, double **C, double **Q, double **R, double **P,
                                        const double *x0, int m, int n);

/** Resets as resetKalmanFilter does; x0, unless null, has n numbers and replaces the initial state for good. */
MENSURA_EXPORT void resetKalmanFilter_d(KalmanFilter *kf, const double *x0);

/** One step with the m numbers z, which are stored in kf->y; the n states go to xOut, which is returned. */
MENSURA_EXPORT double *KalmanFilter_update_d(KalmanFilter *kf, const double *z, double *xOut);

/** KalmanFilter_update_d with a new state transition of n x n packed numbers, which stays. */
MENSURA_EXPORT double *KalmanFilter_update1_d(KalmanFilter *kf, const double *z, const double *Anew, double *xOut);

/** KalmanFilter_update_d with a new state transition of n row pointers, which stays. */
MENSURA_EXPORT double *KalmanFilter_update1_d1(KalmanFilter *kf, const double *z, double **Anew, double *xOut);

/** Copies the n states to xOut, which is returned. */
MENSURA_EXPORT double *getKalmanFilter_state_d(KalmanFilter *kf, double *xOut);

/** Copies the m outputs C x to yOut, which is returned. */
MENSURA_EXPORT double *getKalmanFilter_out_d(KalmanFilter *kf, double *yOut);

/** @} */

/** @name A tracking model
 * Position, velocity and acceleration of k = n / 3 axes: the state has k positions, then k velocities, then k
 * accelerations, and the positions are measured.  Each function writes a packed array and returns it.  A size below 1
 * writes nothing, an n of 1 or 2 gives zeros.
 * @{ */

/** The state transition A, n x n, over the interval dt.
 * Positions grow by velocity times dt and velocities by acceleration times dt; positions have no dt^2 / 2 term. */
MENSURA_EXPORT double *getKalmanFilterA(double *A, int n, double dt);

/** The measurement C, m x 3m, with C(i, i) = 1 and 0 elsewhere. */
MENSURA_EXPORT double *getKalmanFilterC(double *C, int m);

/** The process noise Q, n x n, from the variances and covariances of each axis: p position, v velocity, a acceleration.
 * qpv, for instance, is the covariance of position and velocity. */
MENSURA_EXPORT double *getKalmanFilterQ(double *Q, int n, double qpp, double qpv, double qpa, double qvv, double qva,
                                        double qaa);

/** The measurement noise R, m x m: r on the diagonal, 0 elsewhere. */
MENSURA_EXPORT double *getKalmanFilterR(double *R, int m, double r);

/** The initial error covariance P, n x n.
 * Of each axis: p between position and everything, 100 p between velocity and acceleration, and the variances p of the
 * position, 100000 p of the velocity and 1000 p of the acceleration. */
MENSURA_EXPORT double *getKalmanFilterP(double *P, int n, double p);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif

// docs/kalman.md: a tracking model whose estimate has a wanted -3 dB point.
#include <math.h>
#include <mensura/kalman.h>
#include <mensura/spectral.h>

#include "check.h"

enum { AXES = 2, STATES = 3 * AXES, UPDATES = 2000 };

static KalmanFilter kf;

static void track(double fs, double s, double f, const double *first_position) {
    double A[STATES * STATES], C[AXES * STATES], Q[STATES * STATES], R[AXES * AXES], P[STATES * STATES], x0[STATES];
    // [shown]
    /* Positions on AXES axes at fs Hz with an rms noise of s; the estimate shall have -3 dB at f Hz, up to fs / 25. */
    const double dt = 1 / fs, r = s * s, q = pow(f / (0.44 * fs), 6);
    getKalmanFilterA(A, STATES, dt);
    getKalmanFilterC(C, AXES);
    getKalmanFilterQ(Q, STATES, 0, 0, 0, 0, 0, q * r / pow(dt, 4));
    getKalmanFilterR(R, AXES, r);
    getKalmanFilterP(P, STATES, 1e4 * r);
    for (int i = 0; i < STATES; ++i)
        x0[i] = i < AXES ? first_position[i] : 0; /* positions, velocities, accelerations */
    initKalmanFilter_d(&kf, A, C, Q, R, P, x0, AXES, STATES);
    // [end]
}

int main(void) {
    const double fs = 100, f = 3, first_position[AXES] = {5, -2};
    double x[STATES], response[UPDATES];
    track(fs, 0.1, f, first_position);
    for (int i = 0; i < UPDATES; ++i) KalmanFilter_update_d(&kf, first_position, x);
    for (int i = 0; i < AXES; ++i) CHECK(x[i] == first_position[i]); /* at rest */
    for (int i = 0; i < UPDATES; ++i) {                              /* its response to an impulse on the first axis */
        const double z[AXES] = {first_position[0] + (i == 0), first_position[1]};
        KalmanFilter_update_d(&kf, z, x);
        response[i] = x[0] - first_position[0];
    }
    const double gain = SingleFreqDFT(response, UPDATES, 2 * f / fs);
    CHECK(fabs(20 * log10(gain) + 3.01) < 0.5);
    return 0;
}

"""The filter against the same recursion in mpmath."""

import mpmath as mp
import numpy as np
from binding import KalmanFilter

from .report import exact

in_mpmath = np.vectorize(exact, otypes=[object])


def tracking_model(lib, axes, dt, qaa, r, p):
    n, m = 3 * axes, axes
    A, C, Q, R, P = np.zeros((n, n)), np.zeros((m, n)), np.zeros((n, n)), np.zeros((m, m)), np.zeros((n, n))
    lib.getKalmanFilterA(A, n, dt)
    lib.getKalmanFilterC(C, m)
    lib.getKalmanFilterQ(Q, n, 0, 0, 0, 0, 0, qaa)
    lib.getKalmanFilterR(R, m, r)
    lib.getKalmanFilterP(P, n, p)
    return A, C, Q, R, P


def general_model():
    rng = np.random.default_rng(2)
    A, C, factor = rng.standard_normal((4, 4)), rng.standard_normal((2, 4)), rng.standard_normal((4, 4))
    A *= 0.98 / max(abs(np.linalg.eigvals(A)))
    return A, C, factor @ factor.T * 0.01, np.array([[0.5, 0.1], [0.1, 0.3]]), np.eye(4) * 10


def compare(lib, model, updates):
    """Worst errors of x and P over their largest element, and when; the same at the last update; asymmetry of P."""
    A, C, Q, R, P = model
    m, n = C.shape
    kf, x, rng = KalmanFilter(), np.zeros(n), np.random.default_rng(3)
    lib.initKalmanFilter_d(kf, A, C, Q, R, P, np.zeros(n), m, n)
    A, C, Q, R, P, xs = *map(in_mpmath, model), in_mpmath(np.zeros((n, 1)))
    largest = lambda v: float(max(abs(v).flat))
    errors = []
    for k in range(updates):
        z = np.sin(0.01 * k + np.arange(m)) * 10 + rng.standard_normal(m)
        lib.KalmanFilter_update_d(kf, z, x)
        xs, P = A @ xs, A @ P @ A.T + Q
        S = mp.matrix((C @ P @ C.T + R).tolist())
        K = P @ C.T @ np.array((S**-1).tolist(), dtype=object)
        xs, P = xs + K @ (in_mpmath(z[:, None]) - C @ xs), P - K @ C @ P
        errors.append((largest(x[:, None] - xs) / largest(xs), largest(np.array(kf.P.to_rows()) - P) / largest(P)))
    ours = np.array(kf.P.to_rows())
    worst = np.argmax(errors, axis=0) + 1
    asymmetry = np.max(abs(ours - ours.T)) / np.max(abs(ours))
    return [*np.max(errors, axis=0), f"{worst[0]}, {worst[1]}", *errors[-1], asymmetry]


def models(lib):
    cases = (
        ("tracking, 9 states, dt 0.01, qaa 1e-2, r 0.25, p 1", tracking_model(lib, 3, 0.01, 1e-2, 0.25, 1.0), 1000),
        ("tracking, 3 states, dt 0.01, qaa 1e-6, r 1, p 1", tracking_model(lib, 1, 0.01, 1e-6, 1.0, 1.0), 3000),
        ("3 states, r 1e-8: exact measurements", tracking_model(lib, 1, 0.01, 1e-6, 1e-8, 1.0), 3000),
        ("3 states, r 1, p 1e6: little known at first", tracking_model(lib, 1, 0.01, 1e-6, 1.0, 1e6), 3000),
        ("general, 4 states, 2 measurements, full matrices", general_model(), 3000),
    )
    for name, model, updates in cases:
        yield [name, updates, *compare(lib, model, updates)]

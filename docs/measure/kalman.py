"""What the tracking model does for a given Q, R and P."""

import math

from binding import KalmanFilter, doubles

UPDATES = 4000  # at q = 1e-12, the slowest, what is left of the start falls by a factor e every 200 updates
RATIOS = (1e-12, 1e-10, 1e-8, 1e-6, 1e-4, 1e-2, 1.0)  # q = qaa dt^4 / r


class Tracker:
    """One axis: a filter of position, velocity and acceleration."""

    def __init__(self, library, q, dt=1.0, r=1.0, p=1e4, half=0.0):
        """half: A(0, 2) / dt^2, by which an acceleration moves the position in one update."""
        self._update, self._is_empty = library.KalmanFilter_update_d, library.isEmptyRMATRIX
        A, C, Q, R, P = doubles(9), doubles(3), doubles(9), doubles(1), doubles(9)
        library.getKalmanFilterA(A, 3, dt)
        A[2] = half * dt * dt
        library.getKalmanFilterC(C, 1)
        library.getKalmanFilterQ(Q, 3, 0, 0, 0, 0, 0, q * r / dt**4)
        library.getKalmanFilterR(R, 1, r)
        library.getKalmanFilterP(P, 3, p)
        self._filter, self._state = KalmanFilter(), doubles(3)
        library.initKalmanFilter_d(self._filter, A, C, Q, R, P, doubles(3), 1, 3)

    def update(self, z):
        """The estimates of position, velocity and acceleration."""
        self._update(self._filter, doubles([z]), self._state)
        return tuple(self._state)

    def is_empty(self):
        return self._is_empty(self._filter.x) != 0


def follow(library, q, path, half=0.0):
    """The estimates along path(t), t = 0, 1, ... updates, that begins when the filter has settled."""
    tracker = Tracker(library, q, half=half)
    for _ in range(UPDATES):
        tracker.update(0.0)
    return [tracker.update(path(t)) for t in range(UPDATES)]


def accelerated(t):
    return t * t / 2


def response(library, q):
    """A row of the table of q."""
    impulse = follow(library, q, lambda t: float(t == 0))
    positions = doubles([x[0] for x in impulse])
    frequencies = [0.001 * 1.001**i for i in range(6200)]  # up to 0.49 fs
    gains = [library.SingleFreqDFT(positions, UPDATES, 2 * f) for f in frequencies]
    errors = [abs(x[0] - accelerated(t)) for t, x in enumerate(follow(library, q, accelerated))]
    largest = max(errors)
    return {
        "q": q,
        "gain": impulse[0],
        "half_power": max(f for f, gain in zip(frequencies, gains) if gain > math.sqrt(0.5)),
        "peak": 20 * math.log10(max(gains)),
        "noise": [math.hypot(*(x[i] for x in impulse)) for i in range(3)],
        "step": largest,
        "updates": max(t for t, error in enumerate(errors) if error >= largest / 100) + 1,
    }


def velocities(library, p):
    """Estimated velocities at 100 Hz of what rests at 1 m, after chosen updates."""
    tracker = Tracker(library, 1e-8, 0.01, 1.0, p)
    estimates = [tracker.update(1.0)[1] for _ in range(100)]
    return [estimates[i - 1] for i in (1, 2, 3, 10, 30, 100)]


def updates_done(library, r):
    tracker = Tracker(library, 1e-6, 0.01, r, r)
    for done in range(1000):
        tracker.update(0.0)
        if tracker.is_empty():
            return done
    return 1000


def names(library):
    end = UPDATES - 1
    steady, turn = follow(library, 1e-4, float)[-1], follow(library, 1e-4, accelerated)[-1]
    with_term = follow(library, 1e-4, accelerated, 0.5)[-1]
    return {
        "responses": [response(library, q) for q in RATIOS],
        "lag_of_velocity": abs(steady[0] - end),
        "lag_of_acceleration": abs(turn[0] - accelerated(end)),
        "velocity_error": turn[1] - end,
        "velocity_error_with_term": abs(with_term[1] - end),
        "starts": [(p, velocities(library, p)) for p in (1e-4, 1.0, 1e4)],
        "done": [updates_done(library, r) for r in (1e-16, 5e-17, 1e-17)],
    }

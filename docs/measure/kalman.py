"""What the tracking model does for a given Q, R and P."""

import math
import random
import statistics
import subprocess

from binding import KalmanFilter, companion, doubles
from figures import require

UPDATES = 4000  # at q = 1e-12, the slowest, what is left of the start falls by a factor e every 200 updates
RATIOS = (1e-12, 1e-10, 1e-8, 1e-6, 1e-4, 1e-2, 1.0)  # q = qaa dt^4 / r
DRIVE_RATE, DRIVE_NOISE, DRIVE_BANDWIDTHS = 10.0, 2.0, (0.1, 0.2, 0.4, 0.8, 1.6)  # Hz, m, Hz


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


def tracked(program, positions, *options, rate=1.0):
    """Rows of position, velocity and acceleration by `mensura track`."""
    table = "x\n" + "".join(f"{x!r}\n" for x in positions)
    command = [program, "track", "--rate", f"{rate:g}", *options]
    rows = subprocess.run(command, input=table, capture_output=True, text=True, check=True).stdout.splitlines()
    return [tuple(map(float, row.split()[1:])) for row in rows[1:]]


def smoothed_response(program, q):
    """A row of the table of smoothed estimates: an impulse in the middle of a record."""
    impulse = [float(t == UPDATES) for t in range(2 * UPDATES)]
    impulse = tracked(program, impulse, "--smooth", "--q", repr(q), "--r", "1")
    half_power = math.asin(((math.sqrt(2) - 1) * q) ** (1 / 6) / 2) / math.pi
    gain = sum(x[0] * math.cos(2 * math.pi * half_power * (t - UPDATES)) for t, x in enumerate(impulse))
    require(abs(gain - math.sqrt(0.5)) < 1e-6, f"a smoothed position has -3 dB at {half_power} fs, q = {q}")
    return {"q": q, "half_power": half_power, "noise": [math.hypot(*(x[i] for x in impulse)) for i in range(3)]}


def drive():
    """A car that starts, brakes, goes on and stops: true (position, velocity) in m and m/s, and measured positions."""
    dt, noise = 1 / DRIVE_RATE, random.Random(1)
    truth, x, v = [], 0.0, 0.0
    for seconds, a in ((5, 0.0), (10, 2.0), (10, 0.0), (5, -2.0), (15, 0.0), (4, -2.5), (6, 0.0)):  # m/s^2
        for _ in range(round(seconds * DRIVE_RATE)):
            truth.append((x, v))
            x, v = x + v * dt + a * dt * dt / 2, v + a * dt
    return truth, [round(x + noise.gauss(0, DRIVE_NOISE), 3) for x, _ in truth]


def driven(program, bandwidth):
    """A row of the table of the drive: rms errors of position and velocity from 5 s on, filtered and smoothed."""
    truth, measured = drive()
    model = ("--bandwidth", f"{bandwidth:g}", "--r", f"{DRIVE_NOISE**2:g}")
    errors = []
    for options in ((), ("--smooth",)):
        estimates = tracked(program, measured, *model, *options, rate=DRIVE_RATE)
        pairs = list(zip(estimates, truth))[round(5 * DRIVE_RATE) :]
        errors += [math.sqrt(statistics.fmean((x[i] - true[i]) ** 2 for x, true in pairs)) for i in range(2)]
    return bandwidth, errors


def drives(program):
    table = [driven(program, bandwidth) for bandwidth in DRIVE_BANDWIDTHS]
    best = [min(errors[i] for _, errors in table) for i in range(4)]
    claim = "smoothed, the position is twice as good, the velocity five times"
    require(best[0] > 2 * best[2] and best[1] > 5 * best[3], claim)
    return table


def names(library):
    end = UPDATES - 1
    steady, turn = follow(library, 1e-4, float)[-1], follow(library, 1e-4, accelerated)[-1]
    with_term = follow(library, 1e-4, accelerated, 0.5)[-1]
    program = companion(library)
    return {
        "smoothed": [smoothed_response(program, q) for q in RATIOS],
        "drives": drives(program),
        "responses": [response(library, q) for q in RATIOS],
        "lag_of_velocity": abs(steady[0] - end),
        "lag_of_acceleration": abs(turn[0] - accelerated(end)),
        "velocity_error": turn[1] - end,
        "velocity_error_with_term": abs(with_term[1] - end),
        "starts": [(p, velocities(library, p)) for p in (1e-4, 1.0, 1e4)],
        "done": [updates_done(library, r) for r in (1e-16, 5e-17, 1e-17)],
    }

"""Smoothers, derivatives and moving averages against long double."""

import mpmath as mp
import numpy as np
from binding import SMOOTHERS, MovingAverageOnline

from .report import LD, noise, worst_rms

DEGREE = {"linear": 1, "quadratic": 2, "cubic": 3}


def smoothed(x, window, degree):
    """Row i of the weights gives the fitted polynomial at sample i of a window."""
    powers = mp.matrix([[mp.mpf(t) ** k for k in range(degree + 1)] for t in range(window)])
    hat = (powers * (powers.T * powers) ** -1 * powers.T).tolist()
    weights, half, x = np.array([[LD(mp.nstr(w, 25)) for w in row] for row in hat]), window // 2, x.astype(LD)
    inner = np.lib.stride_tricks.sliding_window_view(x, window) @ weights[half]
    return np.concatenate([weights[:half] @ x[:window], inner, weights[half + 1 :] @ x[-window:]])


def smoothers(lib, samples=10_000):
    for name in SMOOTHERS:
        window, degree = int(name.split("Smooth")[1]), DEGREE[name.split("Smooth")[0]]
        row, half = [f"`{name}`"], window // 2
        for x in (noise(8, samples), noise(8, samples) + 1000):
            y = np.zeros(samples)
            getattr(lib, name)(x, y, samples)
            error = (y - smoothed(x, window, degree)) / np.max(abs(x))
            edges = np.concatenate([error[:half], error[-half:]])
            row += [*worst_rms(error[half:-half]), worst_rms(edges)[0]]
        yield row


def derivatives(lib, samples=100_000, h=1 / 360):
    x, dx = noise(9, samples), np.zeros(samples)
    lib.central_difference(x, dx, samples, h)
    wide = x.astype(LD)
    truth = np.concatenate([[(wide[1] - wide[0]) / LD(h)], (wide[2:] - wide[:-2]) / (2 * LD(h)),
                            [(wide[-1] - wide[-2]) / LD(h)]])
    yield ["`central_difference`", *worst_rms((dx - truth) * h)]


def averages(lib, samples=1_000_000):
    for length, offset, spike in ((16, 0.0, 0.0), (1000, 1e6, 0.0), (16, 0.0, 1e9)):
        x, s = noise(10, samples) + offset, MovingAverageOnline()
        x[5000] += spike
        lib.init_move_average_filter_online(s, length)
        y = np.fromiter((lib.move_average_filter_online(s, v) for v in x), float, samples)
        running = np.cumsum(x - np.concatenate([np.zeros(length), x[:-length]])) / length
        windows = np.lib.stride_tricks.sliding_window_view(x, length)
        row = [f"length {length}, offset {offset:g}" + (f", once {spike:g} more" if spike else "")]
        for start in (0, samples - length - 2000):
            truth = windows[start : start + 2000].astype(LD).sum(axis=1) / length
            at = slice(start + length - 1, start + length + 1999)
            row += [worst_rms(v[at] - truth)[0] for v in (y, running)]
        yield row

"""What the modules share: cells of a table, long double and mpmath, errors."""

import mpmath as mp
import numpy as np

EPS = 2.0**-52
LD, CLD = np.longdouble, np.clongdouble
PI = LD("3.14159265358979323846264338327950288")


def cell(x):
    """Two digits of a float: enough to judge an error, and the page stays the same where a last bit differs."""
    if isinstance(x, (float, np.floating, mp.mpf)):
        return "0" if x == 0 else f"{float(x):.1e}"
    return str(x)


def rms(x):
    return float(np.sqrt(np.mean(np.abs(x) ** 2)))


def worst_rms(errors):
    return float(np.max(np.abs(errors))), rms(errors)


def exact(x):
    """A double or long double as it is, in mpmath."""
    return mp.mpf(float(x)) + mp.mpf(float(x - type(x)(float(x))))


def noise(seed, n):
    return np.random.default_rng(seed).uniform(-1.0, 1.0, n)

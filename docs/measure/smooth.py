"""What smoothers and streaming filters do to noise, sines, peaks, spikes and steps."""

import ctypes
import math
from typing import Callable, NamedTuple

from binding import (
    SMOOTHERS,
    AmplitudeLimitOnline,
    CentralDiffOnline,
    LimitAverageOnline,
    MovingAverageOnline,
    doubles,
)

SAMPLES, MIDDLE, AVERAGE = 201, 100, 16


class Filter(NamedTuple):
    """A filter of records of SAMPLES, or of a stream of as many, with its name in the page."""

    name: str
    run: Callable

    def on(self, value):
        """The output for the input value(t), t = 0, 1, ..."""
        return self.run([value(t) for t in range(SAMPLES)])


def of_records(name, call, *settings):
    def run(x):
        out = doubles(SAMPLES)
        call(doubles(x), out, SAMPLES, *settings)
        return out

    return Filter(f"`{name}`", run)


def of_streams(name, state, start, call, *settings):
    def run(x):
        s = state()
        start(ctypes.byref(s), *settings)
        return [call(s, value) for value in x]

    return Filter(name, run)


def zero_of(falling, low, high):
    """Where a falling function reaches 0."""
    for _ in range(50):
        middle = (low + high) / 2
        low, high = (middle, high) if falling(middle) > 0 else (low, middle)
    return low


def noise_left(filter, at):
    """The rms of white noise after the filter / before: the root of the sum of squares of its impulse responses."""
    return math.hypot(*(filter.on(lambda t: float(t == i))[at] for i in range(SAMPLES)))


def peak_left(filter, width):
    """The height left of a Gaussian peak that is so wide at half its height."""
    return max(filter.on(lambda t: 2 ** -(((t - MIDDLE) / (width / 2)) ** 2)))


def low_pass(filter):
    """A row of the table of smoothers."""
    delay = MIDDLE - filter.on(float)[MIDDLE]  # of a ramp

    def gain(f):
        return filter.on(lambda t: math.cos(2 * math.pi * f * (t - MIDDLE + delay)))[MIDDLE]

    gains = [gain(k / 4096) for k in range(2049)]
    first = next(k for k, g in enumerate(gains) if g <= 0)
    zero = zero_of(gain, (first - 1) / 4096, first / 4096)
    return {
        "name": filter.name,
        "noise": noise_left(filter, MIDDLE),
        "noise_at_first": noise_left(filter, 0),
        "half_power": zero_of(lambda f: gain(f) - math.sqrt(0.5), 0, zero),
        "zero": zero,
        "beyond": max(map(abs, gains[first:])),
        "peak_of_5": peak_left(filter, 5),
        "peak_of_10": peak_left(filter, 10),
        "delay": delay,
    }


def derivative(filter, late):
    """A row of the table of derivatives; the output is `late` samples late."""

    def error(f):
        w = 2 * math.pi * f

        def part(phase):
            dx = filter.on(lambda t: math.sin(w * (t - MIDDLE) + phase))
            return dx[MIDDLE + late] / w - math.cos(phase)

        return math.hypot(part(0), part(math.pi / 2))

    return {
        "name": filter.name,
        "limits": [zero_of(lambda f: share - error(f), 0, 0.5) for share in (0.001, 0.01, 0.1, 0.5)],
        "noise": noise_left(filter, MIDDLE),
        "noise_at_last": noise_left(filter, SAMPLES - 1),
    }


def largest_difference(x, y):
    return max(abs(a - b) for a, b in zip(x, y))


def names(library):
    def average(length):
        return of_streams(
            f"moving average, L = {length}",
            MovingAverageOnline,
            library.init_move_average_filter_online,
            library.move_average_filter_online,
            length,
        )

    def difference(taken):
        start, call = library.init_central_difference_online, library.central_difference_online
        return of_streams(f"`central_difference_online`, taken for the sample {taken}", CentralDiffOnline, start, call, 1)

    limiter = of_streams(
        "limiter",
        AmplitudeLimitOnline,
        library.init_amlitude_limit_filer_online,
        library.amlitude_limit_filer_online,
        1,
    )
    both = of_streams(
        "limiter, average",
        LimitAverageOnline,
        library.init_amlitude_limit_move_average_filter_online,
        library.amlitude_limit_move_average_filter_online,
        AVERAGE,
        1,
    )

    def pulse(name, value, start=0, length=0):
        """A signal with a pulse of 5 on some samples, through a limiter with a limit of 1."""
        x = [float(value(t)) for t in range(SAMPLES)]
        pulsed = [value + 5 * (start <= t < start + length) for t, value in enumerate(x)]
        limited, averaged = limiter.run(pulsed), average(AVERAGE).run(x)
        return {
            "name": name,
            "wrong": sum(a != b for a, b in zip(x, limited)),
            "error": largest_difference(x, limited),
            "error_of_average": largest_difference(averaged, average(AVERAGE).run(pulsed)),
            "error_of_both": largest_difference(averaged, both.run(pulsed)),
        }

    def ramp(slope):
        return lambda t: slope * min(max(t - MIDDLE, 0), 40)

    smoothers = [of_records(name, getattr(library, name)) for name in SMOOTHERS]
    low_passes = [low_pass(filter) for filter in (*smoothers, *map(average, (4, 16, 64)))]
    return {
        "low_passes": low_passes,
        "beyond": max(row["beyond"] for row in low_passes),
        "average": AVERAGE,
        "derivatives": [
            derivative(of_records("central_difference", library.central_difference, 1), 0),
            derivative(difference("before"), 1),
            derivative(difference("just fed"), 0),
        ],
        "pulses": [
            pulse("0, and a spike of 5", lambda t: 0, MIDDLE, 1),
            pulse("0, 18 samples of 5 in a row", lambda t: 0, MIDDLE, 18),
            pulse("0, 19 samples of 5 in a row", lambda t: 0, MIDDLE, 19),
            pulse("0, the sixth sample of all a spike of 5", lambda t: 0, 5, 1),
            pulse("a real step from 0 to 5", lambda t: 5 * (t >= MIDDLE)),
            pulse("40 samples rising by 1.1", ramp(1.1)),
            pulse("40 samples rising by 0.9, a spike of 5 among them", ramp(0.9), MIDDLE + 10, 1),
            pulse("40 samples rising by 0.4, a spike of 5 among them", ramp(0.4), MIDDLE + 10, 1),
            pulse("+0.6 and -0.6 in turn", lambda t: 0.6 if t % 2 == 0 else -0.6),
        ],
    }

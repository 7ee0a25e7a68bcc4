"""Filters of the exported design functions; cascades of sections, run and measured by mensura/sos.h.

Designs have a rate of 2: their frequencies are fractions of the Nyquist frequency.
"""

import ctypes
import math
from typing import NamedTuple

from binding import (Double, IIRDesignSpec, Int, Pointer, ProtoSpec, Size, checked, declare, doubles, measuring,
                     sections_of)

LOW_PASS, HIGH_PASS, BAND_PASS, NOTCH, ALL_PASS = range(5)
BUTTERWORTH, GAUSSIAN, BESSEL, ADJUSTABLE, CHEBYSHEV, INVERSE_CHEBYSHEV, PAPOULIS, ELLIPTIC = range(8)
HALF_POWER, HALF_POWER_DB = math.sqrt(0.5), -10 * math.log10(2)
ENDS_NONE, ENDS_ODD, ENDS_EVEN, ENDS_CONSTANT = range(4)
SETTLING_SAMPLES = 100_000_000  # a step response runs at most so long

_CALLS = ((ctypes.c_char_p, "measure_family", Int, Pointer(Int)),)


class Family(NamedTuple):
    code: int
    name: str
    max_poles: int


def decibels(magnitude):
    return 20 * math.log10(magnitude) if magnitude > 0 else -math.inf


class Cascade:
    """Second-order sections, a row of six numbers after the other; made by Designer and by Requests.

    Frequencies are in the unit of the rate; times are in seconds where that is Hz."""

    def __init__(self, library, rows, rate, coeffs=None):
        self._library, self.rows, self.rate, self.coeffs = library, rows, rate, coeffs
        self.count = len(rows) // 6

    def _call(self, name, *arguments):
        return checked(self._library, getattr(self._library, name)(self.rows, self.count, *arguments))

    # ---- Run ----

    def run(self, x, state=None):
        y = doubles(len(x))
        state = doubles(4 * self.count) if state is None else state
        self._call("mensura_sos_filter", state, doubles(x), 1, y, 1, len(x))
        return y

    def steady_state(self, x):
        state = doubles(4 * self.count)
        self._call("mensura_sos_steady_state", x, state)
        return state

    def both_ways(self, x, ends=ENDS_ODD, extension=-1):
        y = doubles(len(x))
        self._call("mensura_sos_filtfilt", ends, extension, doubles(x), 1, y, 1, len(x), None)
        return y

    # ---- Measure ----

    def response(self, frequencies):
        """H, complex."""
        n = len(frequencies)
        re, im = doubles(n), doubles(n)
        self._call("mensura_sos_response", self.rate, doubles(frequencies), re, im, n)
        return [complex(*h) for h in zip(re, im)]

    def magnitudes(self, frequencies):
        return doubles([abs(h) for h in self.response(frequencies)])

    def gain(self, frequency):
        """The gain in dB."""
        return decibels(self.magnitudes([frequency])[0])

    def loss(self, frequency):
        """The gain in dB relative to the largest one."""
        return self.gain(frequency) - self.highest(0.0)

    def delay(self, frequency=0.0):
        """The group delay in seconds."""
        delay = doubles(1)
        self._call("mensura_sos_group_delay", self.rate, doubles([frequency]), delay, 1)
        return delay[0] / self.rate

    def step(self, tolerance=0.02):
        """Overshoot as a fraction of the step, and settling time in seconds."""
        overshoot, settling = Double(), Size()
        self._call("mensura_sos_step_figures", tolerance, SETTLING_SAMPLES, overshoot, settling)
        return overshoot.value, settling.value / self.rate

    def pole_radius(self):
        radius = Double()
        self._call("mensura_sos_pole_radius", radius)
        return radius.value

    def grid(self):
        """Frequencies from 0 to half the rate, close together."""
        return doubles([0.5 * self.rate * i / 8000 for i in range(8001)])

    def extremes(self, start, end):
        """The lowest and the highest gain in dB from one frequency to another."""
        lowest, highest = Double(), Double()
        self._call("mensura_sos_extremes", self.rate, start, end, lowest, highest)
        return lowest.value, highest.value

    def highest(self, start, end=None):
        """To half the rate without an end."""
        return self.extremes(start, self.rate / 2 if end is None else end)[1]

    def crossings(self, level=HALF_POWER_DB):
        """The frequencies at which the gain passes a level in dB."""
        found = doubles(100)
        return list(found[: self._call("mensura_sos_crossings", self.rate, level, found, len(found))])

    def band(self, frequency, threshold=HALF_POWER):
        """Where the magnitude passes the threshold below and above a frequency; 0 and rate / 2 where it does not."""
        crossings = self.crossings(decibels(threshold))
        low = max((f for f in crossings if f <= frequency), default=0.0)
        return low, min((f for f in crossings if f > frequency), default=self.rate / 2)

    def half_power(self, start, end, threshold=HALF_POWER):
        """The crossing nearest to `start` on the way to `end`, which is 0 or rate / 2; `end` where there is none."""
        return self.band(start, threshold)[end > start]

    def width(self, centre):
        """Between the two half-power points around the centre."""
        low, high = self.band(centre)
        return high - low


class Designer:
    """Designs by the library."""

    def __init__(self, library):
        self._library, self._table = library, declare(measuring(library), _CALLS)

    @property
    def families(self):
        return list(self._families())

    def _families(self):
        code, max_poles = 0, Int()
        while name := self._table.measure_family(code, max_poles):
            yield Family(code, name.decode(), max_poles.value)
            code += 1

    def measured(self, coeffs):
        return Cascade(self._library, doubles([number for row in sections_of(coeffs) for number in row]), 2.0, coeffs)

    def design(self, kind=LOW_PASS, cutoff=0.2, family=BUTTERWORTH, poles=6, bandwidth=0.1, gain=0.0, ripple=0.1,
               stop=60.0, gamma=0.0):
        """What CalcIIRFilterCoeff makes of a request; cut-off and bandwidth are fractions of Nyquist.

        The defaults are those of initTIIRFilter."""
        proto = ProtoSpec(family, poles, ripple, stop, gamma)
        return self.measured(self._library.CalcIIRFilterCoeff(IIRDesignSpec(kind, cutoff, bandwidth, gain, proto)))

"""Filters of the exported design functions, measured by mensura/sos.h.

Frequencies are in the unit of `rate`; with its default of 2 they are fractions of the Nyquist frequency.
"""

import ctypes
import math
from typing import NamedTuple

from binding import Double, IIRDesignSpec, Int, Pointer, ProtoSpec, checked, declare, doubles, measuring, sections_of

LOW_PASS, HIGH_PASS, BAND_PASS, NOTCH, ALL_PASS = range(5)
BUTTERWORTH, GAUSSIAN, BESSEL, ADJUSTABLE, CHEBYSHEV, INVERSE_CHEBYSHEV, PAPOULIS, ELLIPTIC = range(8)
HALF_POWER = math.sqrt(0.5)

_CALLS = ((ctypes.c_char_p, "measure_family", Int, Pointer(Int)),)


class Family(NamedTuple):
    code: int
    name: str
    max_poles: int


def decibels(magnitude):
    return 20 * math.log10(magnitude) if magnitude > 0 else -math.inf


class Cascade:
    """Second-order sections, a row of six numbers after the other; made by Designer and by Requests."""

    def __init__(self, library, rows, coeffs=None):
        self._library, self.rows, self.coeffs = library, rows, coeffs
        self.count = len(rows) // 6

    def _call(self, name, *arguments):
        return checked(self._library, getattr(self._library, name)(self.rows, self.count, *arguments))

    def response(self, frequencies, rate=2.0):
        """H, complex."""
        n = len(frequencies)
        re, im = doubles(n), doubles(n)
        self._call("mensura_sos_response", rate, doubles(frequencies), re, im, n)
        return [complex(*h) for h in zip(re, im)]

    def magnitudes(self, frequencies, rate=2.0):
        return doubles([abs(h) for h in Cascade.response(self, frequencies, rate)])

    def gain(self, frequency, rate=2.0):
        """The gain in dB."""
        return decibels(self.magnitudes([frequency], rate)[0])

    def delay(self, frequency, rate=2.0):
        """The group delay in samples."""
        delay = doubles(1)
        self._call("mensura_sos_group_delay", rate, doubles([frequency]), delay, 1)
        return delay[0]

    def pole_radius(self):
        radius = Double()
        self._call("mensura_sos_pole_radius", radius)
        return radius.value

    def grid(self, rate=2.0):
        """Frequencies from 0 to rate / 2, close together."""
        return doubles([0.5 * rate * i / 8000 for i in range(8001)])

    def extremes(self, start, end, rate=2.0):
        """The lowest and the highest gain in dB from one frequency to another."""
        lowest, highest = Double(), Double()
        self._call("mensura_sos_extremes", rate, start, end, lowest, highest)
        return lowest.value, highest.value

    def highest(self, start, end, rate=2.0):
        return self.extremes(start, end, rate)[1]

    def crossings(self, level, rate=2.0):
        """The frequencies at which the gain passes a level in dB."""
        found = doubles(100)
        return list(found[: self._call("mensura_sos_crossings", rate, level, found, len(found))])

    def band(self, frequency, rate=2.0, threshold=HALF_POWER):
        """Where the magnitude passes the threshold below and above a frequency; 0 and rate / 2 where it does not."""
        crossings = self.crossings(decibels(threshold), rate)
        low = max((f for f in crossings if f <= frequency), default=0.0)
        return low, min((f for f in crossings if f > frequency), default=rate / 2)

    def half_power(self, start, end, rate=2.0, threshold=HALF_POWER):
        """The crossing nearest to `start` on the way to `end`, which is 0 or rate / 2; `end` where there is none."""
        return self.band(start, rate, threshold)[end > start]

    def width(self, centre, rate=2.0):
        """Between the two half-power points around the centre."""
        low, high = self.band(centre, rate)
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
        return Cascade(self._library, doubles([number for row in sections_of(coeffs) for number in row]), coeffs)

    def design(self, kind=LOW_PASS, cutoff=0.2, family=BUTTERWORTH, poles=6, bandwidth=0.1, gain=0.0, ripple=0.1,
               stop=60.0, gamma=0.0):
        """What CalcIIRFilterCoeff makes of a request; cut-off and bandwidth are fractions of Nyquist.

        The defaults are those of initTIIRFilter."""
        proto = ProtoSpec(family, poles, ripple, stop, gamma)
        return self.measured(self._library.CalcIIRFilterCoeff(IIRDesignSpec(kind, cutoff, bandwidth, gain, proto)))

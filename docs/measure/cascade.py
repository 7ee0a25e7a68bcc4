"""Filters designed by the library and measured by the C++ of sos/measure.h (through sos_binding.cpp).

Frequencies are in the unit of `rate`; with its default of 2 they are fractions of the Nyquist frequency.
"""

import ctypes
import math
from typing import NamedTuple

from binding import Double, Doubles, IIRCoeffs, IIRDesignSpec, Int, Pointer, ProtoSpec, declare, doubles, measuring

LOW_PASS, HIGH_PASS, BAND_PASS, NOTCH, ALL_PASS = range(5)
BUTTERWORTH, GAUSSIAN, BESSEL, ADJUSTABLE, CHEBYSHEV, INVERSE_CHEBYSHEV, PAPOULIS, ELLIPTIC = range(8)
HALF_POWER = math.sqrt(0.5)

_ROWS = (Doubles, Int)  # 6 values a section, sections
_CALLS = (
    (Int, "measure_sections", Pointer(IIRCoeffs), Doubles),
    (None, "measure_magnitudes", *_ROWS, Double, Doubles, Int, Doubles),
    (Double, "measure_group_delay", *_ROWS, Double, Double),
    (Double, "measure_pole_radius", *_ROWS),
    (Int, "measure_grid", *_ROWS, Double, Doubles, Int),
    (None, "measure_band_around", *_ROWS, Double, Double, Double, Pointer(Double), Pointer(Double)),
    (None, "measure_extremes", *_ROWS, Double, Double, Double, Pointer(Double), Pointer(Double)),
    (ctypes.c_char_p, "measure_family", Int, Pointer(Int)),
)


class Family(NamedTuple):
    code: int
    name: str
    max_poles: int


def decibels(magnitude):
    return 20 * math.log10(magnitude) if magnitude > 0 else -math.inf


class Cascade:
    """Second-order sections; made by Designer, or from the coefficients of a record."""

    def __init__(self, sos, coeffs):
        self._sos, self.coeffs, self._rows = sos, coeffs, doubles(6 * 50)
        self.count = sos.measure_sections(coeffs, self._rows)

    def magnitudes(self, frequencies, rate=2.0):
        out = doubles(len(frequencies))
        self._sos.measure_magnitudes(self._rows, self.count, rate, doubles(frequencies), len(out), out)
        return out

    def gain(self, frequency, rate=2.0):
        """The gain in dB."""
        return decibels(self.magnitudes([frequency], rate)[0])

    def delay(self, frequency, rate=2.0):
        """The group delay in samples."""
        return self._sos.measure_group_delay(self._rows, self.count, rate, frequency)

    def pole_radius(self):
        return self._sos.measure_pole_radius(self._rows, self.count)

    def grid(self, rate=2.0):
        """Frequencies close enough that no peak or notch falls between two of them."""
        count = self._sos.measure_grid(self._rows, self.count, rate, doubles(0), 0)
        out = doubles(count)
        self._sos.measure_grid(self._rows, self.count, rate, out, count)
        return out

    def highest(self, start, end, rate=2.0):
        """The highest gain in dB from one frequency to another."""
        lowest, highest = Double(), Double()
        self._sos.measure_extremes(self._rows, self.count, rate, start, end, lowest, highest)
        return decibels(highest.value)

    def band(self, frequency, rate=2.0, threshold=HALF_POWER):
        """Where the magnitude passes the threshold below and above a frequency; 0 and rate / 2 where it does not."""
        low, high = Double(), Double()
        self._sos.measure_band_around(self._rows, self.count, rate, threshold, frequency, low, high)
        return low.value, high.value

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
        self._library, self._sos = library, declare(measuring(library), _CALLS)

    @property
    def families(self):
        return list(self._families())

    def _families(self):
        code, max_poles = 0, Int()
        while name := self._sos.measure_family(code, max_poles):
            yield Family(code, name.decode(), max_poles.value)
            code += 1

    def measured(self, coeffs):
        return Cascade(self._sos, coeffs)

    def design(self, kind=LOW_PASS, cutoff=0.2, family=BUTTERWORTH, poles=6, bandwidth=0.1, gain=0.0, ripple=0.1,
               stop=60.0, gamma=0.0):
        """What CalcIIRFilterCoeff makes of a request; cut-off and bandwidth are fractions of Nyquist.

        The defaults are those of initTIIRFilter."""
        proto = ProtoSpec(family, poles, ripple, stop, gamma)
        return self.measured(self._library.CalcIIRFilterCoeff(IIRDesignSpec(kind, cutoff, bandwidth, gain, proto)))

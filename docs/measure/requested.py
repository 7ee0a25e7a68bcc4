"""Filters as requested, run and measured: the calls of mensura/sos.h.

Frequencies are in Hz, as the rate is; levels in dB, delays in seconds.
"""

import math
from ctypes import sizeof

from binding import Double, Size, SosRequest, SosRequirement, checked, doubles
from cascade import BUTTERWORTH, LOW_PASS, Cascade, decibels

MAX_SECTIONS = 20
HALF_POWER_DB = -10 * math.log10(2)
ENDS_NONE, ENDS_ODD, ENDS_EVEN, ENDS_CONSTANT = range(4)
SETTLING_SAMPLES = 100_000_000  # a step response runs at most so long


class Filter(Cascade):
    """A filter at its rate; made by Requests."""

    def __init__(self, library, rows, rate, request=None):
        super().__init__(library, rows)
        self.rate, self.request = rate, request

    def gain(self, frequency):
        """The gain in dB, of one pass."""
        return decibels(self.magnitudes([frequency])[0])

    def response(self, frequencies):
        return super().response(frequencies, self.rate)

    def magnitudes(self, frequencies):
        return super().magnitudes(frequencies, self.rate)

    def loss(self, frequency):
        """The gain in dB relative to the largest one."""
        return self.gain(frequency) - self.highest(0.0)

    def delay(self, frequency=0.0):
        return super().delay(frequency, self.rate) / self.rate

    def crossings(self, level=HALF_POWER_DB):
        return super().crossings(level, self.rate)

    def extremes(self, start, end):
        return super().extremes(start, end, self.rate)

    def highest(self, start, end=None):
        return self.extremes(start, self.rate / 2 if end is None else end)[1]

    def step(self, tolerance=0.02):
        """Overshoot as a fraction of the step, and settling time in seconds."""
        overshoot, settling = Double(), Size()
        self._call("mensura_sos_step_figures", tolerance, SETTLING_SAMPLES, overshoot, settling)
        return overshoot.value, settling.value / self.rate

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


class Requests:
    """Filters by the library."""

    def __init__(self, library):
        self._library = library

    def filter(self, rows, rate, request=None):
        return Filter(self._library, doubles(rows), rate, request)

    def request(self, kind=LOW_PASS, *edges, rate, family=BUTTERWORTH, poles=6, **settings):
        """A request; edges: one, or the lower and the upper one; settings: fields of the record, such as passes=2."""
        request = SosRequest()
        checked(self._library, self._library.mensura_sos_default_request(request, sizeof(SosRequest)))
        request.pass_type, request.family, request.poles, request.rate = kind, family, poles, rate
        request.edge[: len(edges)] = edges
        for name, value in settings.items():
            if not hasattr(request, name):
                raise AttributeError(name)
            setattr(request, name, value)
        return request

    def made(self, request):
        rows = doubles(6 * MAX_SECTIONS)
        count = checked(self._library, self._library.mensura_sos_design(request, rows, MAX_SECTIONS))
        return self.filter(rows[: 6 * count], request.rate, request)

    def design(self, *arguments, **settings):
        return self.made(self.request(*arguments, **settings))

    def order(self, kind, passed, stopped, loss, attenuation, rate, family=-1, passes=1, gamma=0.0):
        """The request of the least order that loses at most `loss` dB in the pass band and takes `attenuation` dB off the
        stop band; passed, stopped: an edge, or the lower and the upper one."""
        requirement, request = SosRequirement(), SosRequest()
        requirement.size, requirement.pass_type, requirement.passes = sizeof(SosRequirement), kind, passes
        requirement.rate, requirement.loss_db, requirement.attenuation_db = rate, loss, attenuation
        for field, edges in ((requirement.pass_edge, passed), (requirement.stop_edge, stopped)):
            edges = edges if isinstance(edges, tuple) else (edges,)
            field[: len(edges)] = edges
        checked(self._library,
                self._library.mensura_sos_order(requirement, family, gamma, request, sizeof(SosRequest)))
        return request

"""Filters as requested, run and measured: the calls of mensura/sos.h.

Frequencies are in Hz, as the rate is; levels in dB, delays in seconds.
"""

import math
from ctypes import sizeof

from binding import Double, Size, SosRequest, SosRequirement, doubles
from cascade import BUTTERWORTH, LOW_PASS

MAX_SECTIONS = 20
HALF_POWER_DB = -10 * math.log10(2)
ENDS_NONE, ENDS_ODD, ENDS_EVEN, ENDS_CONSTANT = range(4)
SETTLING_SAMPLES = 100_000_000  # a step response runs at most so long


class Refused(Exception):
    """A call that returned a negative code."""

    def __init__(self, code, message):
        super().__init__(message)
        self.code = code


class Filter:
    """Sections, made by Requests."""

    def __init__(self, library, rows, rate, request=None):
        self._library, self.rows, self.rate, self.request = library, rows, rate, request
        self.count = len(rows) // 6
        self._sos = rows, self.count

    def _call(self, name, *arguments):
        return checked(self._library, getattr(self._library, name)(*self._sos, *arguments))

    def gain(self, frequency):
        """The gain in dB, of one pass."""
        re, im = doubles(1), doubles(1)
        self._call("mensura_sos_response", self.rate, doubles([frequency]), re, im, 1)
        magnitude = math.hypot(re[0], im[0])
        return 20 * math.log10(magnitude) if magnitude else -math.inf

    def delay(self, frequency=0.0):
        """The group delay in seconds."""
        out = doubles(1)
        self._call("mensura_sos_group_delay", self.rate, doubles([frequency]), out, 1)
        return out[0] / self.rate

    def crossings(self, level=HALF_POWER_DB):
        out = doubles(100)
        return list(out[: self._call("mensura_sos_crossings", self.rate, level, out, len(out))])

    def extremes(self, start, end):
        """The lowest and the highest gain in dB."""
        lowest, highest = Double(), Double()
        self._call("mensura_sos_extremes", self.rate, start, end, lowest, highest)
        return lowest.value, highest.value

    def highest(self, start, end=None):
        return self.extremes(start, self.rate / 2 if end is None else end)[1]

    def pole_radius(self):
        radius = Double()
        self._call("mensura_sos_pole_radius", radius)
        return radius.value

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


def checked(library, code):
    if code < 0:
        raise Refused(code, library.mensura_sos_message(code).decode())
    return code


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

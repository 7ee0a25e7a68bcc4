"""Filters as requested from mensura/sos.h.  Frequencies are in Hz, as the rate is; levels in dB."""

from ctypes import sizeof

from binding import SosRequest, SosRequirement, checked, doubles
from cascade import BUTTERWORTH, LOW_PASS, Cascade

MAX_SECTIONS = 20


class Requests:
    """Filters by the library."""

    def __init__(self, library):
        self._library = library

    def filter(self, rows, rate):
        return Cascade(self._library, doubles(rows), rate)

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
        return self.filter(rows[: 6 * count], request.rate)

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

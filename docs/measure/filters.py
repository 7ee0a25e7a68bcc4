"""docs/filters.md: what the filters of the layer do, each as its page asks for it."""

import itertools
import math

from binding import Refused
from cascade import (ALL_PASS, BAND_PASS, BESSEL, BUTTERWORTH, ELLIPTIC, ENDS_CONSTANT, ENDS_EVEN, ENDS_NONE, ENDS_ODD,
                     GAUSSIAN, HALF_POWER_DB, LOW_PASS, NOTCH, Designer)
from figures import below, fixed, require, scientific
from requested import Requests

RATE, EDGE, BEYOND, STOP = 360.0, 40.0, 60.0, 80.0  # Hz
KNEE_RATE, KNEE_EDGE = 200.0, 6.0  # Hz
CENTRE = 1  # mensura_sos_band
PRECISION = -19  # mensura_sos_code
LOW_EDGES, LOW_ORDERS = (1e-3, 1e-4, 1e-5, 1e-6, 1e-7, 1e-8), (2, 4, 6, 8, 12)
NARROW_RATES, NARROW_WIDTHS, NARROW_POLES = (1000, 8000, 48000, 192000), (10.0, 1.0, 0.1, 0.01), (1, 2, 3, 4, 6)
FLAT = 1e-9  # dB
CODES = ("NULL SIZE TYPE FAMILY POLES PASSES RATE FREQUENCY EDGES LEVEL RIPPLE STOP_BAND GAMMA GAIN CAPACITY COUNT "
         "SECTION UNREACHABLE PRECISION STEADY_STATE ENDS MEMORY UNSTABLE UNSETTLED").split()


class Examples:
    def __init__(self, library):
        self._library, self._requests = library, Requests(library)
        self.families = Designer(library).families
        self.design, self.order = self._requests.design, self._requests.order

    def low_pass(self, family=BUTTERWORTH, poles=6, **settings):
        return self.design(LOW_PASS, EDGE, rate=RATE, family=family, poles=poles, **settings)

    def notch(self, centre, width, poles=2, rate=RATE):
        return self.design(NOTCH, centre, width, rate=rate, poles=poles, band=CENTRE)

    # ---- Order ----

    def orders(self):
        """A row a family: the poles that three requirements take."""
        wishes = ((LOW_PASS, EDGE, BEYOND, 1), (LOW_PASS, EDGE, BEYOND, 2), (BAND_PASS, (8.0, 12.0), (6.0, 16.0), 1))
        for family in self.families:
            yield [family.name, *(self._least(family.code, *wish) for wish in wishes)]

    def _least(self, family, kind, passed, stopped, passes):
        try:
            request = self.order(kind, passed, stopped, 1.0, 60.0, RATE, family, passes)
        except Refused:
            return "none"
        made = self._requests.made(request)
        edge, first = (passed, stopped) if kind == BAND_PASS else ((0.0, passed), (None, stopped))
        lowest, largest = made.extremes(*edge)
        highest = max(made.highest(first[1]), made.highest(0.0, first[0]) if first[0] else -math.inf)
        met = passes * (lowest - largest) > -1 - 1e-6 and passes * (highest - largest) < -60 + 1e-6
        require(met, f"family {family} meets the requirement")
        return request.poles

    # ---- Both ways ----

    def both_ways(self):
        return self.design(LOW_PASS, KNEE_EDGE, rate=KNEE_RATE, poles=2, passes=2)

    def ends(self):
        """A row a kind of ends: the error of the first or last sample, the larger one, as a fraction of the amplitude."""
        n, filter = 1000, self.both_ways()
        turn = 2 * math.pi / KNEE_RATE
        signals = ([2 * i / (n - 1) - 1 for i in range(n)],
                   [math.sin(turn * i) for i in range(n)], [math.cos(turn * i) for i in range(n)], [1.0] * n)
        kept = 10 ** (2 * filter.gain(1.0) / 20)  # of the amplitude of a sine of 1 Hz
        for name, ends in (("odd", ENDS_ODD), ("even", ENDS_EVEN), ("constant", ENDS_CONSTANT), ("none", ENDS_NONE)):
            errors = []
            for x, factor in zip(signals, (1, kept, kept, 1)):
                y = filter.both_ways(x, ends)
                errors.append(max(abs(y[i] - factor * x[i]) for i in (0, n - 1)))
            yield [name, *(fixed(error, 4) if error > 1e-9 else "0" for error in errors)]

    # ---- Families ----

    def comparison(self):
        for family in self.families:
            made = self.low_pass(family.code)
            require(abs(made.loss(EDGE) - HALF_POWER_DB) < 1e-6, f"{family.name}: -3 dB at the edge")
            overshoot, settling = made.step()
            delays = [made.delay(EDGE * i / 1000) for i in range(1001)]
            yield [family.name, f"{fixed(made.gain(BEYOND), 1)} dB", f"{fixed(made.highest(STOP), 1)} dB",
                   f"{fixed(1000 * delays[0], 1)} ms", f"{fixed(1000 * max(delays), 1)} ms",
                   f"{fixed(100 * overshoot, 1)} %", f"{fixed(1000 * settling)} ms"]

    # ---- Single figures ----

    def depth(self, filter, centre, around):
        return filter.highest(centre - around, centre + around)

    def until_gone(self, notch):
        """Seconds until less than a hundredth of a hum of 60 Hz is left that begins at rest."""
        y = notch.run([math.sin(2 * math.pi * 60 * i / RATE) for i in range(10 * int(RATE))])
        return max(i for i, value in enumerate(y) if abs(value) > 0.01) / RATE

    def overshoots(self):
        for family in (f for f in self.families if f.code in (GAUSSIAN, BESSEL, BUTTERWORTH)):
            low, high = (self.design(LOW_PASS, edge, rate=RATE, family=family.code, poles=4) for edge in (10.0, EDGE))
            overshoots = (f"{fixed(100 * made.step()[0], 1)} %" for made in (low, high))
            yield [family.name, *overshoots, f"{fixed(high.gain(STOP), 1)} dB"]

    def all_pass(self):
        made, low = (self.design(kind, 10.0, rate=RATE, family=BESSEL, poles=2) for kind in (ALL_PASS, LOW_PASS))
        require(max(map(abs, made.extremes(0.0, RATE / 2))) < FLAT, "an all-pass is flat")
        twice = all(abs(made.delay(f) - 2 * low.delay(f)) < 1e-9 for f in (0.0, 10.0, 100.0))
        require(twice, "its delay is twice the low-pass's")
        return made

    def decimation(self):
        request = self.order(LOW_PASS, 100.0, 125.0, 0.1, 80.0, 1000.0)
        made = self._requests.made(request)
        name = next(family.name for family in self.families if family.code == request.family)
        return {"name": f"the {name.lower()} family", "poles": request.poles,
                "kept": made.extremes(0.0, 100.0)[0] - made.highest(0.0, 100.0), "left": made.highest(125.0)}

    # ---- Limits ----

    def low_edges(self):
        """A row an edge: by poles the largest error of |H| from a tenth of the edge to ten times it; then that of the level
        at the edge."""
        for edge in LOW_EDGES:
            found = [self._errors(edge, poles) for poles in LOW_ORDERS]
            yield [scientific(edge), *(below(e[0]) if e else "refused" for e in found),
                   below(max(e[1] for e in found if e)) if any(found) else ""]

    def _errors(self, edge, poles):
        """Of |H|, and of the level at the edge in dB; None where the filter is refused."""
        try:
            made = self.design(LOW_PASS, edge, rate=2.0, poles=poles)
        except Refused as refused:
            require(refused.code == PRECISION, f"{poles} poles at {edge}: {refused}")
            return None
        require(made.pole_radius() < 1, f"{poles} poles at {edge} are stable")
        frequencies = [edge * 10 ** (i / 100) for i in range(-100, 101)]
        ratios = (math.tan(math.pi * f / 2) / math.tan(math.pi * edge / 2) for f in frequencies)
        butterworth = (1 / math.sqrt(1 + ratio ** (2 * poles)) for ratio in ratios)
        error = max(abs(m - b) for m, b in zip(made.magnitudes(frequencies), butterworth))
        return error, abs(made.gain(edge) - HALF_POWER_DB)

    def narrow(self):
        """Bands around 50 Hz: the largest error of the distance between the half-power points, as a fraction of it; the
        highest gain in dB at the centre of the notches; the largest error of that of the band-passes."""
        widths, depths, gains = [], [], []
        for kind, rate, width, poles in itertools.product((NOTCH, BAND_PASS), NARROW_RATES, NARROW_WIDTHS, NARROW_POLES):
            made = self.design(kind, 50.0, width, rate=float(rate), poles=poles, band=CENTRE)
            low, high = made.crossings()
            widths.append(abs((high - low) / width - 1))
            (depths if kind == NOTCH else gains).append(made.gain(50.0))
        return {"width": max(widths), "depth": max(depths), "gain": max(map(abs, gains))}

    def codes(self):
        for i, name in enumerate(CODES):
            yield [f"`MENSURA_SOS_{name}`", -1 - i, self._library.mensura_sos_message(-1 - i).decode()]


def names(library):
    m = Examples(library)
    elliptic = m.low_pass(ELLIPTIC, ripple_db=0.5)
    extension = library.mensura_sos_extension(m.both_ways().rows, 1)
    return {
        "m": m,
        "low_pass": m.low_pass(),
        "level": m.low_pass(level_db=-0.1),
        "both_ways": m.both_ways(),
        "extension": extension,
        "band": m.design(BAND_PASS, 0.5, 40.0, rate=RATE, poles=2),
        "notch": m.notch(60.0, 4.0),
        "narrow_notch": m.notch(60.0, 1.0),
        "elliptic": elliptic,
        "stop_begins": elliptic.crossings(elliptic.highest(0.0) - 60.0 + 1e-6)[0],
        "all_pass": m.all_pass(), "flat": FLAT,
        "decimation": m.decimation(),
        "low_orders": LOW_ORDERS,
        "narrow": m.narrow(),
        "narrow_rates": NARROW_RATES, "narrow_widths": NARROW_WIDTHS, "narrow_poles": NARROW_POLES,
    }

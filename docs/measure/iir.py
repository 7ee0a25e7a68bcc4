"""docs/iir.md: what the filter designs really give, measured from their coefficients."""

import math
import statistics

from cascade import (BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, ELLIPTIC, HIGH_PASS, INVERSE_CHEBYSHEV, LOW_PASS,
                     NOTCH, PAPOULIS, Designer, decibels)
from figures import fixed

ORDERS, FEW_ORDERS = (1, 2, 3, 4, 5, 6, 7, 8, 10, 12, 15, 20), (1, 2, 3, 4, 6, 8, 12)
CUTOFF, CENTRE, BANDWIDTH = 0.2, 0.4, 0.1  # fractions of the Nyquist frequency
SMALLEST_RIPPLE = 0.01  # dB that count as ripple
CENTRES, WIDTHS = (0.001, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9), (0.02, 0.1, 0.5)
DEEP = -150.0  # dB, below which the depth of a notch is rounding alone


def sections_vanish(cascade):
    """Whether a section is zero or NaN."""
    found = cascade.magnitudes((0.1, 0.5, 0.9))
    return not all(math.isfinite(m) and m > 0 for m in found)


class Pages:
    """What the template calls; orders and frequencies as above."""

    def __init__(self, library):
        self._designer = Designer(library)
        self.families = self._designer.families

    def low_pass(self, family, order, cutoff=CUTOFF):
        return self._designer.design(LOW_PASS, cutoff, family, order)

    def high_pass(self, family, order):
        return self._designer.design(HIGH_PASS, CUTOFF, family, order)

    def band(self, kind, family, order, centre=CENTRE, width=BANDWIDTH):
        return self._designer.design(kind, centre, family, order, width)

    def table(self, orders, cell):
        """A row a family, a column an order."""
        lines = ["| order |" + "".join(f" {order} |" for order in orders), "|---|" + "---:|" * len(orders)]
        for family in self.families:
            cells = (cell(family.code, order) if order <= family.max_poles else "" for order in orders)
            lines.append(f"| {family.name} |" + "".join(f" {text} |" for text in cells))
        return "\n".join(lines)

    # ---- Cells ----

    def at_cutoff(self, family, order):
        c = self.low_pass(family, order)
        return f"{fixed(c.gain(CUTOFF), 1)} / {fixed(c.half_power(0, 1) / CUTOFF, 2)}"

    def stop_band(self, family, order):
        return self.low_pass(family, order).highest(2 * CUTOFF, 1)

    def stop_band_and_radius(self, family, order):
        return f"{fixed(self.stop_band(family, order), 1)} / {fixed(self.low_pass(family, order).pole_radius(), 3)}"

    def high_pass_cell(self, family, order):
        c = self.high_pass(family, order)
        reached, stop = c.half_power(1, 0) / CUTOFF, c.highest(0, CUTOFF / 2)
        return f"{fixed(c.gain(CUTOFF), 1)} / {fixed(reached, 2)} / {fixed(stop)}"

    def band_pass_cell(self, family, order):
        c = self.band(BAND_PASS, family, order)
        stop = max(c.highest(0, CENTRE - 2 * BANDWIDTH), c.highest(CENTRE + 2 * BANDWIDTH, 1))
        return f"{fixed(c.width(CENTRE) / BANDWIDTH, 2)} / {fixed(stop)}"

    def notch_cell(self, family, order):
        c = self.band(NOTCH, family, order)
        width = c.half_power(1, 0) - c.half_power(0, 1)
        depth = c.highest(CENTRE - BANDWIDTH / 40, CENTRE + BANDWIDTH / 40)
        return f"{fixed(width / BANDWIDTH, 2)} / {fixed(depth)}"

    # ---- Lists and sentences ----

    def ripple(self, family, order):
        """The largest rise of the gain in dB on the way up from DC to the -3 dB point."""
        c = self.low_pass(family, order)
        edge = c.half_power(0, 1)
        lowest, rise = math.inf, 0.0
        for magnitude in c.magnitudes([f for f in c.grid() if f <= edge]):
            lowest = min(lowest, magnitude)
            rise = max(rise, decibels(magnitude / lowest))
        return rise

    def rippling(self):
        """Family by family the orders that ripple, with their ripple."""
        for family in self.families:
            found = ((order, self.ripple(family.code, order)) for order in range(1, family.max_poles + 1))
            text = ", ".join(f"{order} ({fixed(ripple, 2)})" for order, ripple in found if ripple >= SMALLEST_RIPPLE)
            if text:
                yield f"- {family.name}: {text}"

    def widths(self):
        """Rows by centre: the width of a Butterworth band-pass of 1 pole as a multiple of the bandwidth requested."""
        for centre in CENTRES:
            found = (self.band(BAND_PASS, BUTTERWORTH, 1, centre, w * centre).width(centre) / w / centre for w in WIDTHS)
            yield [f"{centre:g}", *(fixed(width, 2) for width in found)]

    def depths(self, poles, rate, width=1.0):
        """Gains in dB at the centre of notches at 49 to 51 Hz."""
        for i in range(1001):
            centre = 49 + i / 500
            c = self.band(NOTCH, BUTTERWORTH, poles, 2 * centre / rate, 2 * width / rate)
            yield max(c.gain(centre, rate), 2 * DEEP)

    def notch_depths(self, rates, orders):
        """Rows by sampling rate: the median depth to 5 dB; depths below DEEP are all shown alike."""
        for rate in rates:
            found = [statistics.median(self.depths(poles, rate)) for poles in orders]
            yield [rate, *(f"below {DEEP:.0f}" if depth < DEEP else fixed(5 * round(depth / 5)) for depth in found)]

    def order_without_sections(self, family):
        """The smallest order at which a section is zero or NaN, as a low-pass and as a band-pass."""
        orders = range(family.max_poles, 50)
        return (next(n for n in orders if sections_vanish(self.low_pass(family.code, n))),
                next(n for n in orders if sections_vanish(self.band(BAND_PASS, family.code, n))))

    def cutoff_for(self, wanted, **request):
        """The cut-off to request for a -3 dB point: the bilinear transform keeps the ratio of the tangents."""
        measured = self._designer.design(LOW_PASS, wanted, **request).half_power(0, 1)
        return 2 / math.pi * math.atan(math.tan(wanted * math.pi / 2) ** 2 / math.tan(measured * math.pi / 2))


def names(library):
    pages = Pages(library)
    default = pages.low_pass(BUTTERWORTH, 6)
    requested = pages.cutoff_for(CUTOFF)
    return {
        "m": pages,
        "orders": ORDERS, "few_orders": FEW_ORDERS,
        "cutoff": CUTOFF, "centre": CENTRE, "bandwidth": BANDWIDTH, "smallest_ripple": SMALLEST_RIPPLE,
        "butterworth": BUTTERWORTH, "bessel": BESSEL, "chebyshev": CHEBYSHEV, "inverse_chebyshev": INVERSE_CHEBYSHEV,
        "papoulis": PAPOULIS, "elliptic": ELLIPTIC,
        "default_at_cutoff": default.gain(CUTOFF),
        "default_half_power": default.half_power(0, 1) / CUTOFF,
        "textbook_at_cutoff": pages.low_pass(BUTTERWORTH, 3).gain(CUTOFF),
        "widths_requested": WIDTHS,
        "two_poles_gain": max(pages.depths(2, 192000)) > 0,
        "vanishing": [(f, *pages.order_without_sections(f)) for f in pages.families],
        "requested": requested,
        "reached": pages.low_pass(BUTTERWORTH, 6, requested).half_power(0, 1),
    }

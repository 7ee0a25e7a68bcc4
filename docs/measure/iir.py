"""docs/iir.md: what the filter designs really give, measured from their coefficients."""

import math
import statistics

from cascade import (BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, ELLIPTIC, HIGH_PASS, INVERSE_CHEBYSHEV, LOW_PASS,
                     NOTCH, PAPOULIS, Designer, decibels)
from figures import fixed, require
from requested import Requests

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
        self._designer, self._requests = Designer(library), Requests(library)
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
            yield max(c.gain(2 * centre / rate), 2 * DEEP)

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

    # ---- Beside the layer ----

    def layer_notch(self, rate, centre=50.0, width=1.0):
        return self._requests.design(NOTCH, centre, width, rate=rate, poles=2, band=1)

    def layer_depths(self, rates):
        """The highest gain in dB at the centre of the layer's notches of 2 poles at 49 to 51 Hz: deep."""
        found = max(self.layer_notch(float(rate), f).gain(f) for rate in rates for f in (49 + i / 50 for i in range(101)))
        require(found < DEEP, "notches of mensura/sos.h are deep")
        return f"below {DEEP:.0f} dB"

    def beside_the_layer(self):
        """Rows: what is asked for, what the exported designs give, and what the layer gives."""
        ours = self._requests.design(LOW_PASS, CUTOFF, rate=2.0)
        yield ("gain at the cut-off, default low-pass", f"{fixed(self.low_pass(BUTTERWORTH, 6).gain(CUTOFF), 2)} dB",
               f"{fixed(ours.gain(CUTOFF), 2)} dB")
        yield ("sections of 6 poles", "the most damped pair twice, the least damped not at all", "each pair once")
        band = 24000 * self.band(BAND_PASS, BUTTERWORTH, 1, 50 / 24000, 4 / 24000).width(50 / 24000)
        edges = self._requests.design(BAND_PASS, 50.0, 4.0, rate=48000.0, poles=1, band=1).crossings()
        yield ("width of a band of 4 Hz around 50 Hz, 48000 samples a second", f"{fixed(band, 2)} Hz",
               f"{fixed(edges[1] - edges[0], 2)} Hz")
        depth = statistics.median(self.depths(2, 192000))
        yield ("depth of a notch of 2 poles, 1 Hz around 50 Hz, 192000 samples a second", f"{fixed(depth)} dB",
               self.layer_depths((192000,)))
        stop = self._requests.design(LOW_PASS, CUTOFF, rate=2.0, family=INVERSE_CHEBYSHEV, poles=12)
        yield ("stop band of an inverse Chebyshev of 12 poles, 60 dB wanted",
               f"{fixed(self.stop_band(INVERSE_CHEBYSHEV, 12), 1)} dB", f"{fixed(stop.highest(2 * CUTOFF), 1)} dB")


class Edges:
    """Requests at the edge, and the widths of bands around 50 Hz."""

    def __init__(self, library):
        self._designer = Designer(library)

    def band_widths(self, rates, widths, centre=50.0):
        """A row for each width in Hz: the -3 dB width in Hz by sampling rate, alike for 1 to 3 poles of both types."""
        for width in widths:
            found = [{fixed(self._band(poles, centre, width, rate, kind).width(2 * centre / rate) * rate / 2, 2)
                      for poles in (1, 2, 3) for kind in (BAND_PASS, NOTCH)} for rate in rates]
            require(all(len(texts) == 1 for texts in found), "band types of order 1 to 3 have one width")
            yield [f"{width:g} Hz", *(f"{text} Hz" for texts in found for text in texts)]

    def _band(self, poles, centre, width, rate, kind):
        return self._designer.design(kind, 2 * centre / rate, BUTTERWORTH, poles, 2 * width / rate)

    def radius(self, cutoff):
        return self._designer.design(LOW_PASS, cutoff).pole_radius()

    def error_at_dc(self, cutoff):
        """Typical error of the gain of the default low-pass, which should be 1; cut-offs near a fraction of fs."""
        designs = (self._designer.design(LOW_PASS, 2 * f) for f in around(cutoff))
        return statistics.median(abs(c.magnitudes([0.0])[0] - 1) for c in designs)

    def error_at_centre(self, centre):
        """Typical error of the gain, which should be 1, of band-passes of 6 poles; centres near a fraction of Nyquist."""
        return statistics.median(abs(c.magnitudes([f])[0] - 1) for f, c in self._narrow(centre))

    def unstable(self, centre):
        return any(c.pole_radius() > 1 for _, c in self._narrow(centre))

    def _narrow(self, centre):
        return ((f, self._designer.design(BAND_PASS, f, bandwidth=f / 5)) for f in around(centre))


def around(frequency):
    """Frequencies within 5 %: where rounding decides, one design says little."""
    return (frequency * (0.95 + i / 10000) for i in range(1001))


def require_words(designer):
    """Checks what the page says without a number."""
    everywhere = (0.1, 0.5, 0.9)
    gains = lambda **request: designer.design(**request).magnitudes(everywhere)
    require(math.isnan(designer.design(cutoff=0.0).magnitudes([0.0])[0]), "cut-off 0: NaN at DC")
    require(all(abs(g - 1) < 1e-9 for g in gains(cutoff=1.0)), "cut-off of Nyquist: passes everything")
    require(all(map(math.isnan, gains(kind=BAND_PASS, bandwidth=0.0))), "bandwidth 0: NaN")
    require(not any(gains(kind=9)) and not any(gains(family=9)), "unknown type or family: zeros")


def names(library):
    pages = Pages(library)
    default = pages.low_pass(BUTTERWORTH, 6)
    require_words(Designer(library))
    return {
        "m": pages, "e": Edges(library), "rates": (200, 360, 1000, 48000),
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
    }

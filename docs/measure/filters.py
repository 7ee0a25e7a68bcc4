"""docs/filters.md: from a requirement to a filter, by the example of 40 Hz at 360 samples a second."""

import math
import statistics

from binding import doubles
from cascade import BAND_PASS, BUTTERWORTH, HALF_POWER, INVERSE_CHEBYSHEV, LOW_PASS, NOTCH, Designer
from figures import fixed, require

RATE, CUTOFF, BEYOND, STOP = 360.0, 40.0, 60.0, 80.0  # Hz
HALF_POWER_BOTH_WAYS = math.sqrt(HALF_POWER)  # each way takes half of the 3 dB
SETTLED = 1000  # samples after which a step response no longer changes


class Examples:
    def __init__(self, library):
        self._library, self._designer = library, Designer(library)
        self.families = self._designer.families

    def low_pass(self, cutoff, family=BUTTERWORTH):
        """6 poles, all else as initTIIRFilter sets it; the cut-off in Hz."""
        return self._designer.design(LOW_PASS, 2 * cutoff / RATE, family)

    def edge(self, design, threshold=HALF_POWER):
        return design.half_power(0, RATE / 2, RATE, threshold)

    def request_for(self, wanted, family=BUTTERWORTH, threshold=HALF_POWER):
        """The cut-off to request for a wanted -3 dB point."""
        measured = self.edge(self.low_pass(wanted, family), threshold)
        warped = [math.tan(math.pi * f / RATE) for f in (wanted, measured)]
        return RATE / math.pi * math.atan(warped[0] ** 2 / warped[1])

    def overshoot(self, design):
        """The overshoot of the step response from rest, as a fraction of the step."""
        step, out = doubles([1.0] * SETTLED), doubles(SETTLED)
        self._library.FilterWithIIR(step, out, SETTLED, design.coeffs)
        return max(out) / out[-1] - 1

    def comparison(self):
        for family in self.families:
            asked = self.low_pass(CUTOFF, family.code)
            request = self.request_for(CUTOFF, family.code)
            corrected = self.low_pass(request, family.code)
            yield [family.name, fixed(asked.gain(CUTOFF, RATE), 1), fixed(self.edge(asked), 1),
                   fixed(self.edge(asked, HALF_POWER_BOTH_WAYS), 1), fixed(request, 1),
                   f"{fixed(corrected.gain(BEYOND, RATE), 1)} dB", f"{fixed(corrected.highest(STOP, RATE / 2, RATE), 1)} dB",
                   f"{fixed(1000 * corrected.delay(0, RATE) / RATE, 1)} ms", f"{fixed(100 * self.overshoot(corrected), 1)} %"]

    def band(self, poles, centre=50.0, width=4.0, rate=RATE, kind=BAND_PASS):
        return self._designer.design(kind, 2 * centre / rate, BUTTERWORTH, poles, 2 * width / rate)

    def band_widths(self, rates, widths, centre=50.0):
        """A row for each width in Hz: the -3 dB width in Hz by sampling rate."""
        for width in widths:
            found = [{fixed(self.band(poles, centre, width, rate, kind).width(centre, rate), 2)
                      for poles in (1, 2, 3) for kind in (BAND_PASS, NOTCH)} for rate in rates]
            if any(len(texts) > 1 for texts in found):
                raise ValueError(f"band types of order 1 to 3 differ in width: {found}")
            yield [f"{width:g} Hz", *(f"{text} Hz" for texts in found for text in texts)]

    # ---- Requests at the edge ----

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

    def inverse_chebyshev_stop(self, poles):
        return self._designer.design(LOW_PASS, 0.2, INVERSE_CHEBYSHEV, poles).highest(0.4, 1.0)


def around(frequency):
    """Frequencies within 5 %: where rounding decides, one design says little."""
    return (frequency * (0.95 + i / 10000) for i in range(1001))


def require_words(designer):
    """Checks what the table of requests says without a number."""
    everywhere = (0.1, 0.5, 0.9)
    gains = lambda **request: designer.design(**request).magnitudes(everywhere)
    require(math.isnan(designer.design(cutoff=0.0).magnitudes([0.0])[0]), "cut-off 0: NaN at DC")
    require(all(abs(g - 1) < 1e-9 for g in gains(cutoff=1.0)), "cut-off of Nyquist: passes everything")
    require(all(map(math.isnan, gains(kind=BAND_PASS, bandwidth=0.0))), "bandwidth 0: NaN")
    require(not any(gains(kind=9)) and not any(gains(family=9)), "unknown type or family: zeros")


def names(library):
    require_words(Designer(library))
    m = Examples(library)
    both_ways = m.request_for(CUTOFF, threshold=HALF_POWER_BOTH_WAYS)
    high = m.request_for(120.0)
    band = m.band(1)
    below, above = band.half_power(50.0, 0.0, RATE), band.half_power(50.0, RATE / 2, RATE)
    return {
        "m": m,
        "rates": (200, 360, 1000, 48000),
        "measured": m.edge(m.low_pass(CUTOFF)),
        "request": m.request_for(CUTOFF),
        "high_request": high,
        "high_reached": m.edge(m.low_pass(high)),
        "both_ways_request": both_ways,
        "both_ways_stop": 2 * m.low_pass(both_ways).gain(STOP, RATE),
        "band_edges": (below, above),
    }

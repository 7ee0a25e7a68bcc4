"""Designs of mensura/sos.h against their definitions, rounded sections and SciPy; runs and orders against SciPy.

By hand, more and random designs, for some minutes:
    cd docs/measure && /usr/bin/python3 -m accuracy.sos ../../build/release/libmensura.so [designs [seed]]
"""

import collections
import ctypes
import functools
import math
import sys
import warnings

import mpmath as mp
import numpy as np
from binding import SosRequest, SosRequirement, load
from cascade import (ADJUSTABLE, ALL_PASS, BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, ELLIPTIC, GAUSSIAN, HIGH_PASS,
                     INVERSE_CHEBYSHEV, LOW_PASS, NOTCH, PAPOULIS)
from scipy import signal

from .ideal import CENTRE, Ideal, response
from .report import LD, noise

MAX_SECTIONS, UNREACHABLE, PRECISION = 20, -18, -19
HALF_POWER = 10 * math.log10(0.5)
PASS_TYPES = {LOW_PASS: "low-pass", HIGH_PASS: "high-pass", BAND_PASS: "band-pass", NOTCH: "notch",
              ALL_PASS: "all-pass"}
FAMILIES = {BUTTERWORTH: "Butterworth", GAUSSIAN: "Gaussian", BESSEL: "Bessel", ADJUSTABLE: "Adjustable",
            CHEBYSHEV: "Chebyshev", INVERSE_CHEBYSHEV: "Inverse Chebyshev", PAPOULIS: "Papoulis", ELLIPTIC: "Elliptic"}
MOST_POLES = {GAUSSIAN: 12, BESSEL: 12, INVERSE_CHEBYSHEV: 15, ELLIPTIC: 15}  # the others: 20
PEERS = {BUTTERWORTH: "butter", CHEBYSHEV: "cheby1", INVERSE_CHEBYSHEV: "cheby2", ELLIPTIC: "ellip", BESSEL: "bessel"}
BAND_NAMES = {LOW_PASS: "low", HIGH_PASS: "high", BAND_PASS: "bandpass", NOTCH: "bandstop"}


def request_of(lib, family, kind, poles, edges, **changes):
    """A request of rate 2: its frequencies are fractions of Nyquist."""
    request = SosRequest()
    if lib.mensura_sos_default_request(request, ctypes.sizeof(request)) < 0:
        raise LookupError("no defaults")
    request.family, request.pass_type, request.poles, request.rate = family, kind, poles, 2.0
    request.edge[: len(edges)] = edges
    for name, value in changes.items():
        setattr(request, name, value)
    return request


def told(r):
    """A request in words."""
    edges = r.edge[: 2 if r.pass_type in (BAND_PASS, NOTCH) else 1]
    extra = ", centre and width" if r.band == CENTRE and len(edges) == 2 else ""
    for names, text in (((CHEBYSHEV, ELLIPTIC), f", ripple {r.ripple_db:g}"),
                        ((INVERSE_CHEBYSHEV, ELLIPTIC), f", stop {r.stop_db:g}"),
                        ((ADJUSTABLE,), f", gamma {r.gamma:g}")):
        extra += text if r.family in names else ""
    extra += ", 2 passes" if r.passes == 2 else ""
    return (f"{FAMILIES[r.family]} {PASS_TYPES[r.pass_type]}, poles {r.poles}, level {r.level_db:.6g}, "
            f"edges {', '.join(f'{e:.6g}' for e in edges)}{extra}")


def designed(lib, request):
    """The sections, or the code of the refusal."""
    out = np.zeros((MAX_SECTIONS, 6))
    count = lib.mensura_sos_design(request, out, MAX_SECTIONS)
    return out[:count] if count >= 0 else count


def peer_design(r):
    """SciPy's sections of a request whose level is that of SciPy's edge; None where it fails."""
    edges = list(r.edge) if r.pass_type in (BAND_PASS, NOTCH) else r.edge[0]
    settings = {"btype": BAND_NAMES[r.pass_type], "output": "zpk"}
    with warnings.catch_warnings(), np.errstate(all="ignore"):
        warnings.simplefilter("ignore")
        try:
            if r.family == BESSEL:
                z, p, k = signal.bessel(r.poles, edges, norm="mag", **settings)
            else:
                z, p, k = signal.iirfilter(r.poles, edges, r.ripple_db, r.stop_db, ftype=PEERS[r.family], **settings)
            return (z, p, k), signal.zpk2sos(z, p, k)
        except (ValueError, ArithmeticError):
            return None


def zpk_magnitude(zpk, f):
    """|H| of SciPy's zeros, poles and gain, in long double."""
    z, p, k = zpk
    at = np.exp(1j * np.pi * f.astype(LD))[:, None]
    return abs(k) * np.prod(np.abs(at - z), axis=1) / np.prod(np.abs(at - p), axis=1)


class Errors:
    """Of one design; relative to the largest |H|.  All-pass: of H itself, whose magnitude is 1."""

    def __init__(self, lib, request):
        self.request, ideal = request, Ideal(request)
        f = ideal.frequencies()
        truth, edges = ideal.response(f), np.array(ideal.edges)
        measure = (lambda h: h) if request.pass_type == ALL_PASS else np.abs
        worst = lambda h: float(np.max(np.abs(measure(h) - measure(truth))) / np.max(np.abs(truth)))
        at_edges = np.abs(ideal.response(edges))
        level = lambda rows: float(np.max(np.abs(20 * np.log10(np.abs(response(rows, edges)) / at_edges))))

        exact = ideal.rounded_sections()
        self.rounded, self.rounded_level = worst(response(exact, f)), level(exact)
        self.zpk = self.peer = math.nan
        if self.comparable(request) and (found := peer_design(request)):
            zpk, sections = found
            self.zpk = worst(zpk_magnitude(zpk, f) * ideal.peak)
            self.peer = worst(response(sections, f) * ideal.peak)
        sections = designed(lib, request)
        self.code = sections if isinstance(sections, int) else 0
        self.ours = self.level = math.nan
        if not self.code:
            self.ours, self.level = worst(response(sections, f)), level(sections)

    @staticmethod
    def comparable(r):
        """Whether SciPy has this filter with its edge at this level."""
        edge = {BUTTERWORTH: HALF_POWER, BESSEL: HALF_POWER, CHEBYSHEV: -r.ripple_db, ELLIPTIC: -r.ripple_db,
                INVERSE_CHEBYSHEV: -r.stop_db}
        return (r.pass_type != ALL_PASS and r.passes == 1 and r.band != CENTRE and r.gain_db == 0
                and edge.get(r.family) == r.level_db)


def largest(errors, name):
    return max((getattr(e, name) for e in errors if not math.isnan(getattr(e, name))), default=math.nan)


def cells(errors, *names):
    """The largest error of each kind; empty where there is none."""
    found = [largest(errors, name) for name in names]
    return ["" if math.isnan(x) else x for x in found]


def refused(errors):
    return sum(e.code == PRECISION for e in errors)


# ---- Designs ----

ORDERS = range(1, 13)
EDGES = (1e-6, 1e-5, 1e-4, 1e-3, 0.01, 0.1, 0.5, 0.9, 0.99)
CENTRES, WIDTHS = (1e-4, 0.01, 0.3), (0.001, 0.01, 0.1, 1.0)
BANDS = {f"{width:g} of {centre:g}": (centre * (1 - width / 2), centre * (1 + width / 2))
         for centre in CENTRES for width in WIDTHS}
BANDS |= {f"{low:g} to {high:g}": (low, high) for low, high in ((9e-4, 9e-3), (0.09, 0.9), (9e-4, 0.9))}


def peer_level(family):
    """The level that SciPy's edges have; half power where it has no such family."""
    return {CHEBYSHEV: -0.1, ELLIPTIC: -0.1, INVERSE_CHEBYSHEV: -60.0}.get(family, HALF_POWER)


@functools.lru_cache(None)
def edge_sweep(lib):
    """All families and orders by edge, each at SciPy's level."""
    return {(family, kind, edge): [Errors(lib, request_of(lib, family, kind, n, [edge], level_db=peer_level(family)))
                                   for n in ORDERS]
            for family in FAMILIES for kind in (LOW_PASS, HIGH_PASS, ALL_PASS) for edge in EDGES}


@functools.lru_cache(None)
def band_sweep(lib):
    """The same by band."""
    return {(family, kind, name): [Errors(lib, request_of(lib, family, kind, n, band, level_db=peer_level(family)))
                                   for n in ORDERS]
            for family in FAMILIES for kind in (BAND_PASS, NOTCH) for name, band in BANDS.items()}


def at_places(sweep, kinds, places, families=FAMILIES):
    return [e for family in families for kind in kinds for place in places for e in sweep[family, kind, place]]


def families(lib):
    for family, name in FAMILIES.items():
        middle = [edge for edge in EDGES if edge >= 0.01], [name for name in BANDS if "0.3" in name or "0.09" in name]
        single = [at_places(edge_sweep(lib), [kind], middle[0], [family]) for kind in (LOW_PASS, HIGH_PASS, ALL_PASS)]
        bands = [at_places(band_sweep(lib), [kind], middle[1], [family]) for kind in (BAND_PASS, NOTCH)]
        low, high, all_pass, band, notch = (cells(errors, "ours")[0] for errors in single + bands)
        every = [e for errors in single + bands for e in errors]
        yield [name, low, high, band, notch, all_pass, *cells(every, "rounded", "peer", "level")]


def by_place(sweep, kinds, places):
    for place in places:
        row = [place if isinstance(place, str) else f"{place:g}"]
        for kind in kinds:
            row += cells(at_places(sweep, [kind], [place]), "ours", "rounded", "peer")
        both = at_places(sweep, kinds, [place])
        yield [*row, *cells(both, "level"), refused(both)]


def by_edge(lib):
    return by_place(edge_sweep(lib), (LOW_PASS, HIGH_PASS), EDGES)


def by_band(lib):
    return by_place(band_sweep(lib), (BAND_PASS, NOTCH), BANDS)


def half_power(lib):
    """Low edges at half power: 6 Butterworth poles, and the worst of all families and orders."""
    for edge in (1e-6, 1e-5, 1e-4, 1e-3):
        for kind in (LOW_PASS, HIGH_PASS):
            usual = Errors(lib, request_of(lib, BUTTERWORTH, kind, 6, [edge]))
            every = [Errors(lib, request_of(lib, family, kind, n, [edge])) for family in FAMILIES for n in ORDERS]
            yield [f"{edge:g}", PASS_TYPES[kind], usual.ours, usual.rounded, usual.level,
                   *cells(every, "ours", "rounded", "level")]


def mean_ratio(errors, name):
    """The geometric mean of our errors over others, where these show."""
    ratios = [e.ours / getattr(e, name) for e in errors if not e.code and getattr(e, name) > 1e-13]
    return f"{np.exp(np.mean(np.log(ratios))):.2f}" if ratios else ""


def ratios(lib):
    for kind, name in PASS_TYPES.items():
        sweep = band_sweep(lib) if kind in (BAND_PASS, NOTCH) else edge_sweep(lib)
        errors = at_places(sweep, [kind], BANDS if kind in (BAND_PASS, NOTCH) else EDGES)
        yield [name, sum(e.rounded > 1e-13 for e in errors), mean_ratio(errors, "rounded"), mean_ratio(errors, "peer")]


def worst_cases(lib):
    every = [e for sweep in (edge_sweep(lib), band_sweep(lib)) for errors in sweep.values() for e in errors
             if not e.code]
    for title, errors in (("held to 1e-10", [e for e in every if e.rounded <= 1e-10]), ("all", every)):
        for what, ours, rounded in (("error", "ours", "rounded"), ("level, dB", "level", "rounded_level")):
            at = max(errors, key=lambda e: getattr(e, ours))
            yield [title, len(errors), what, getattr(at, ours), getattr(at, rounded), told(at.request)]


# ---- Runs ----


def run(lib, sections, x):
    y, state = np.zeros(len(x)), np.zeros(4 * len(sections))
    assert lib.mensura_sos_filter(sections, len(sections), state, x, 1, y, 1, len(x)) == 0
    return y


def run_both_ways(lib, sections, x, ends):
    y = np.zeros(len(x))
    assert lib.mensura_sos_filtfilt(sections, len(sections), ends, -1, x, 1, y, 1, len(x), None) == 0
    return y


def runs(lib, samples=20_000):
    x = noise(6, samples)
    over_peak = lambda y, peer: float(np.max(np.abs(y - peer)) / np.max(np.abs(peer)))
    for family, kind, poles, edges in (
        (BUTTERWORTH, LOW_PASS, 6, [0.2]),
        (BUTTERWORTH, LOW_PASS, 6, [0.001]),
        (ELLIPTIC, HIGH_PASS, 7, [0.01]),
        (CHEBYSHEV, BAND_PASS, 5, [0.0028, 0.22]),
        (BESSEL, BAND_PASS, 3, [0.299, 0.301]),
        (INVERSE_CHEBYSHEV, NOTCH, 4, [0.32, 0.35]),
    ):
        request = request_of(lib, family, kind, poles, edges)
        sections = designed(lib, request)
        differences = [over_peak(run(lib, sections, x), signal.sosfilt(sections, x))]
        for ends, padding in enumerate((None, "odd", "even", "constant")):
            both_ways = run_both_ways(lib, sections, x, ends)
            differences.append(over_peak(both_ways, signal.sosfiltfilt(sections, x, padtype=padding)))
        yield [told(request), *differences]


# ---- Orders ----

ORDER_PEERS = {BUTTERWORTH: signal.buttord, CHEBYSHEV: signal.cheb1ord, INVERSE_CHEBYSHEV: signal.cheb2ord,
               ELLIPTIC: signal.ellipord}


def requirement_of(kind, pass_edges, stop_edges, loss, attenuation):
    need = SosRequirement(size=ctypes.sizeof(SosRequirement), pass_type=kind, passes=1, rate=2.0, loss_db=loss,
                          attenuation_db=attenuation)
    need.pass_edge[: len(pass_edges)] = pass_edges
    need.stop_edge[: len(stop_edges)] = stop_edges
    return need


def random_requirement(random):
    kind = int(random.integers(4))
    edges = np.sort(random.uniform(0.02, 0.9, 2 if kind < BAND_PASS else 4))
    outer, inner = (edges[:1], edges[1:]) if kind < BAND_PASS else (edges[[0, 3]], edges[1:3])
    pass_edges, stop_edges = (outer, inner) if kind in (LOW_PASS, NOTCH) else (inner, outer)
    return requirement_of(kind, pass_edges, stop_edges, random.uniform(0.01, 3.0), random.uniform(20.0, 100.0))


def enough(lib, need, family, poles):
    """Whether the definition of the family meets a requirement with its pass edges at the loss allowed."""
    edges = need.pass_edge[: 2 if need.pass_type in (BAND_PASS, NOTCH) else 1]
    request = request_of(lib, family, need.pass_type, poles, edges, level_db=-need.loss_db, ripple_db=need.loss_db,
                         stop_db=need.attenuation_db)
    ideal = Ideal(request)
    levels = np.abs(ideal.response(np.array(need.stop_edge[: len(edges)]))) / ideal.peak
    return bool(np.all(20 * np.log10(levels) <= -need.attenuation_db + 1e-9))


def peer_order(need, family):
    edges = slice(2 if need.pass_type in (BAND_PASS, NOTCH) else 1)
    return int(ORDER_PEERS[family](need.pass_edge[edges], need.stop_edge[edges], need.loss_db, need.attenuation_db)[0])


def orders(lib, count=60):
    random = np.random.default_rng(7)
    needs = [random_requirement(random) for _ in range(count)]
    for family in ORDER_PEERS:
        tally = collections.Counter()
        for need in needs:
            ours, peer = lib.mensura_sos_order(need, family, 0.0, None, 0), peer_order(need, family)
            most = MOST_POLES.get(family, 20)
            least = next((n for n in range(1, most + 1) if enough(lib, need, family, n)), UNREACHABLE)
            tally["least"] += ours == least
            tally["none"] += ours == UNREACHABLE
            if ours > 0:
                tally["same" if ours == peer else "fewer" if ours < peer else "more"] += 1
        yield [FAMILIES[family], *(tally[name] for name in ("least", "none", "same", "fewer", "more"))]


# ---- By hand ----


def random_request(lib, random):
    family, kind = int(random.integers(8)), int(random.integers(5))
    poles = int(random.integers(1, MOST_POLES.get(family, 20) + 1))
    low = 10 ** random.uniform(-5, 0)
    edges = [low * 0.99]
    changes = {"passes": int(random.integers(1, 3)), "gamma": random.uniform(-1, 1),
               "ripple_db": 10 ** random.uniform(-3, 0.3), "stop_db": random.uniform(20, 120)}
    if kind in (BAND_PASS, NOTCH):
        width = low * 10 ** random.uniform(-3, 0.25)
        changes["band"] = int(random.integers(2))
        if changes["band"] == CENTRE:
            edges = [low * 0.99, min(width, 1.9 * min(low * 0.99, 1 - low * 0.99)) * 0.99]
        else:
            edges = [low * 0.99, low * 0.99 + min(width, (1 - low * 0.99) * 0.99)]
    floor = -changes["stop_db"] if family in (INVERSE_CHEBYSHEV, ELLIPTIC) else -60.0
    levels = [HALF_POWER, -0.1, floor, random.uniform(floor, -0.01)]
    changes["level_db"] = float(levels[int(random.integers(4))])
    return request_of(lib, family, kind, poles, edges, **changes)


def by_hand(path, count=20_000, seed=1):
    mp.mp.dps = 50
    lib, random = load(path), np.random.default_rng(seed)
    codes, faults = collections.Counter(), 0
    for _ in range(count):
        request = random_request(lib, random)
        e = Errors(lib, request)
        codes[e.code] += 1
        if e.code == PRECISION and e.rounded_level < 0.005:
            print("refused, but rounding moves the level by", e.rounded_level, "dB:", told(request), flush=True)
        elif e.code not in (0, PRECISION):
            print("code", e.code, told(request), flush=True)
        elif e.code == 0 and not e.ours <= 5 * max(e.rounded, 2e-13):
            print(f"error {e.ours:.1e}, rounded {e.rounded:.1e}, level {e.level:.1e} {e.rounded_level:.1e}:",
                  told(request), flush=True)
        else:
            continue
        faults += 1
    print(f"{count} designs, codes {dict(codes)}, {faults} to look at")


if __name__ == "__main__":
    by_hand(sys.argv[1], *map(int, sys.argv[2:]))

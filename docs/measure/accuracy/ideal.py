"""Filters as their definitions have them: prototypes by mpmath, moved to their edges in long double.

A request is one of mensura_sos_request with a rate of 2, so that frequencies are fractions of Nyquist.  Against the same
with 60 digits, the responses here are within 1e-14 of the largest |H| for bands as narrow as 1e-3 of a centre of 5e-5.
"""

import functools
from fractions import Fraction
from typing import NamedTuple

import mpmath as mp
import numpy as np
from cascade import (ADJUSTABLE, ALL_PASS, BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, ELLIPTIC, GAUSSIAN, HIGH_PASS,
                     INVERSE_CHEBYSHEV, LOW_PASS, NOTCH, PAPOULIS)

from .report import CLD, LD, PI

CENTRE = 1  # MENSURA_SOS_CENTRE


def power(db):
    """10^(db / 10): a ratio of squared magnitudes."""
    return mp.power(10, mp.mpf(db) / 10)


# ---- Prototypes: zeros and poles in the frequency unit of the definition ----


class Prototype(NamedTuple):
    zeros: list
    poles: list

    def gain(self, w):
        """|H(j w)|, 1 at w = 0."""
        h = mp.mpf(1)
        for z in self.zeros:
            h *= abs(mp.mpc(0, w) / z - 1)
        for p in self.poles:
            h /= abs(mp.mpc(0, w) / p - 1)
        return h


def left(roots):
    return [r for r in roots if r.real < 0]


def roots_of(ascending):
    """The roots of a polynomial in s^2 with these coefficients that lie in the left half-plane."""
    squares = mp.polyroots(ascending[::-1], maxsteps=500, extraprec=400)
    return left([sign * mp.sqrt(mp.mpc(u)) for u in squares for sign in (1, -1)])


def legendre(n):
    """P_n by ascending powers."""
    before, p = [Fraction(0)], [Fraction(1)]
    for k in range(n):
        up = [Fraction(0)] + [Fraction(2 * k + 1, k + 1) * c for c in p]
        before, p = p, [c - Fraction(k, k + 1) * (before[i] if i < len(before) else 0) for i, c in enumerate(up)]
    return p


def product(a, b):
    out = [Fraction(0)] * (len(a) + len(b) - 1)
    for i, x in enumerate(a):
        for j, y in enumerate(b):
            out[i + j] += x * y
    return out


def papoulis(n):
    """L_n(w^2) by ascending powers of w^2: the integral of a squared sum of Legendre polynomials to 2 w^2 - 1."""
    k = (n - 1) // 2
    weighted = [[(2 * i + 1) * c for c in legendre(i)] for i in range(k + 1) if n % 2 or (i - k) % 2 == 0]
    total = [sum(p[i] for p in weighted if i < len(p)) for i in range(k + 1)]
    integrand = product(product(total, total), [1] if n % 2 else [1, 1])
    integral = [Fraction(0)] + [c / (i + 1) for i, c in enumerate(integrand)]
    integral[0] = -sum(c * (-1) ** i for i, c in enumerate(integral))
    shifted, x_power = [Fraction(0)], [Fraction(1)]  # x = 2 w^2 - 1
    for c in integral:
        shifted = [(shifted[i] if i < len(shifted) else 0) + c * x_power[i] for i in range(len(x_power))]
        x_power = product(x_power, [Fraction(-1), Fraction(2)])
    return [mp.mpf(c.numerator) / c.denominator / mp.mpf(sum(shifted).numerator) * sum(shifted).denominator
            for c in shifted]


def butterworth_poles(n):
    return [mp.expjpi(mp.mpf(n + 1 + 2 * i) / (2 * n)) for i in range(n)]


def chebyshev_poles(eps, n):
    a, angles = mp.asinh(1 / eps) / n, [(2 * i + 1) * mp.pi / (2 * n) for i in range(n)]
    return [mp.mpc(-mp.sinh(a) * mp.sin(t), mp.cosh(a) * mp.cos(t)) for t in angles]


def elliptic(n, ripple, stop):
    """Zeros and poles with the edge of the ripple at 1, and the frequency at which the stop band begins."""
    eps = mp.sqrt(power(ripple) - 1)
    m1 = eps**2 / (power(stop) - 1)
    m = mp.mfrom(q=mp.qfrom(m=m1) ** (mp.mpf(1) / n))  # the degree equation: n K'(k) / K(k) = K'(k1) / K(k1)
    quarter, quarter1 = mp.ellipk(m), mp.ellipk(m1)
    shift = mp.ellipf(mp.atan(1 / eps), 1 - m1) * quarter / (n * quarter1)
    sn = lambda u: mp.ellipfun("sn", u, m=m)
    cd = lambda u: mp.ellipfun("cd", u, m=m)
    odd = [mp.mpf(2 * i - 1) / n * quarter for i in range(1, n // 2 + 1)]
    zeros = [sign * mp.mpc(0, 1 / (mp.sqrt(m) * cd(u))) for u in odd for sign in (1, -1)]
    above = [mp.mpc(0, 1) * cd(mp.mpc(u, -shift)) for u in odd]
    poles = [q for p in above for q in (mp.mpc(-abs(p.real), p.imag), mp.mpc(-abs(p.real), -p.imag))]
    if n % 2:
        poles.append(mp.mpc(-abs((mp.mpc(0, 1) * sn(mp.mpc(0, shift))).real), 0))
    return Prototype(zeros, poles), 1 / mp.sqrt(m)


def defined(family, n, ripple, stop, gamma):
    """Of the families that are not solved for their edge in closed form."""
    if family == GAUSSIAN:
        return Prototype([], roots_of([(-1) ** m / mp.factorial(m) for m in range(n + 1)]))
    if family == BESSEL:
        weights = [mp.factorial(2 * n - k) / (mp.factorial(k) * mp.factorial(n - k) * mp.mpf(2) ** (n - k))
                   for k in range(n + 1)]
        return Prototype([], mp.polyroots(weights[::-1], maxsteps=500, extraprec=400))
    if family == ADJUSTABLE:
        g = mp.mpf(gamma) * (2 if gamma > 0 else 1)
        poles = roots_of([(-1) ** m * mp.factorial(m) ** g for m in range(n + 1)])
        return Prototype([], [mp.mpc(p.real, p.imag * mp.mpf("1.1")) for p in poles])
    return Prototype([], roots_of([c * mp.mpf((-1) ** m) / 10 + (m == 0) for m, c in enumerate(papoulis(n))]))


def crossing(gain, target, low, high):
    """Where a falling gain passes the target."""
    for _ in range(60):
        middle = mp.sqrt(low * high)
        low, high = (middle, high) if gain(middle) >= target else (low, middle)
    return mp.findroot(lambda w: gain(w) - target, (low, high), solver="secant", tol=mp.mpf(10) ** -80, verify=False)


def peak_and_edge(prototype, level):
    """The largest gain, and the outermost frequency that lies `level` dB below it."""
    poles = np.array([complex(p) for p in prototype.poles])
    w = np.geomspace(1e-3, 1e3, 24001) * np.max(np.abs(poles))
    gains = 1 / np.abs(np.prod(1j * w[:, None] / poles - 1, axis=1))
    top = int(np.argmax(gains))
    peak = mp.mpf(1)
    if gains[top] > 1 + 1e-9:
        slope = lambda x: mp.diff(prototype.gain, x)
        peak = prototype.gain(mp.findroot(slope, (w[top - 1], w[top + 1]), solver="anderson", verify=False))
    target = peak / mp.sqrt(power(-level))
    last = np.flatnonzero(gains >= float(target))
    low = mp.mpf(w[last[-1]]) if len(last) else mp.mpf(w[0]) / 1000
    return peak, crossing(prototype.gain, target, low, mp.mpf(w[last[-1] + 1]) if len(last) else mp.mpf(w[0]))


@functools.lru_cache(None)
def prototype(family, n, level, ripple, stop, gamma):
    """Zeros and poles with the level at 1 rad/s, and the largest gain of the pass band over that at DC."""
    one, loss, peak = mp.mpf(1), power(-level) - 1, mp.mpf(1)  # loss: 1 / |H|^2 - 1 at the edge
    if family == BUTTERWORTH:
        edge, own = loss ** (one / (2 * n)), Prototype([], butterworth_poles(n))
    elif family == CHEBYSHEV:
        eps = mp.sqrt(power(ripple) - 1)
        edge, own = mp.re(mp.cosh(mp.acosh(mp.sqrt(loss) / eps) / n)), Prototype([], chebyshev_poles(eps, n))
        peak = one if n % 2 else mp.sqrt(1 + eps**2)
    elif family == INVERSE_CHEBYSHEV:
        floor = mp.sqrt(power(stop) - 1)
        edge = 1 / mp.re(mp.cosh(mp.acosh(floor / mp.sqrt(loss)) / n))
        zeros = [mp.mpc(0, 1 / mp.cos((2 * i + 1) * mp.pi / (2 * n))) for i in range(n) if 2 * i + 1 != n]
        own = Prototype(zeros, [1 / p for p in chebyshev_poles(1 / floor, n)])
    elif family == ELLIPTIC:
        own, stop_edge = elliptic(n, ripple, stop)
        peak = one if n % 2 else mp.sqrt(power(ripple))
        edge = elliptic_edge(own, n, peak, level, ripple, stop, stop_edge)
    else:
        own = defined(family, n, ripple, stop, gamma)
        peak, edge = peak_and_edge(own, level)
    return Prototype([z / edge for z in own.zeros], [p / edge for p in own.poles]), peak


def elliptic_edge(own, n, peak, level, ripple, stop, stop_edge):
    if level == -ripple:
        return mp.mpf(1)
    if level == -stop:
        return stop_edge
    target = peak / mp.sqrt(power(-level))
    if level < -ripple:
        return crossing(own.gain, target, mp.mpf(1), stop_edge)
    last_peak = stop_edge / min(abs(z) for z in own.zeros) if n > 1 else mp.mpf("1e-9")
    return crossing(own.gain, target, last_peak, mp.mpf(1))


# ---- Moved to the edges, in long double ----


def long(x):
    return LD(mp.nstr(x, 30))


def long_complex(values):
    return np.array([CLD(long(mp.re(v))) + CLD(1j) * long(mp.im(v)) for v in values], CLD)


def tangent(f):
    """tan(pi f / 2); near Nyquist from the distance to it, which is exact."""
    f = np.asarray(f, LD)
    tan = lambda x: np.sin(PI / 2 * x) / np.cos(PI / 2 * x)
    with np.errstate(divide="ignore"):
        return np.where(f < LD(0.5), tan(np.minimum(f, LD(0.5))), 1 / tan(np.minimum(1 - f, LD(0.5))))


@functools.lru_cache(None)
def long_prototype(*settings):
    own, peak = prototype(*settings)
    return long_complex(own.zeros), long_complex(own.poles), long(peak)


class Ideal:
    """What a request asks for."""

    def __init__(self, request):
        self.kind, self.n = request.pass_type, request.poles
        passes = request.passes
        gamma = request.gamma if request.family == ADJUSTABLE else 0
        ripple = request.ripple_db / passes if request.family in (CHEBYSHEV, ELLIPTIC) else 0
        stop = request.stop_db / passes if request.family in (INVERSE_CHEBYSHEV, ELLIPTIC) else 0
        self.zeros, self.poles, self.peak = long_prototype(request.family, self.n, request.level_db / passes, ripple,
                                                           stop, gamma)
        self.gain = LD(10) ** (LD(request.gain_db) / passes / 20)
        self.peak = self.peak * self.gain
        self.set_edges(request)

    def set_edges(self, request):
        if self.kind not in (BAND_PASS, NOTCH):
            self.edges = [LD(request.edge[0])]
        elif request.band == CENTRE:  # cos(pi (f1 + f2) / 2) = cos(pi f0) cos(pi width / 2)
            centre, width = map(mp.mpf, request.edge)
            middle = mp.acos(mp.cos(mp.pi * centre) * mp.cos(mp.pi * width / 2)) / mp.pi
            self.edges = [long(middle - width / 2), long(middle + width / 2)]
        else:
            self.edges = [LD(f) for f in request.edge]
        tangents = [tangent(f) for f in self.edges]
        self.low, self.high = tangents[0], tangents[-1]
        a, b = self.edges[0], self.edges[-1]
        cosines = np.cos(PI / 2 * self.edges[0]) * np.cos(PI / 2 * self.edges[-1])
        self.width = np.sin(PI / 2 * (b - a)) / cosines  # tan a - tan b

    def prototype_frequency(self, f):
        w = tangent(f)
        with np.errstate(divide="ignore"):
            if self.kind in (LOW_PASS, ALL_PASS):
                return w / self.low
            if self.kind == HIGH_PASS:
                return -self.low / w
            moved = (w - self.low * self.high / w) / self.width
            return moved if self.kind == BAND_PASS else -1 / moved

    def response(self, f):
        """H at fractions of Nyquist."""
        s = CLD(1j) * self.prototype_frequency(f)
        h = np.full(len(s), CLD(self.gain))
        for p in self.poles:
            h = h * ((s + p) / (p - s) if self.kind == ALL_PASS else p / (p - s))
        for z in self.zeros if self.kind != ALL_PASS else ():
            h = h * ((z - s) / z)
        return h

    def frequencies(self):
        """Where to look: below, in and above the pass band, at its edges and at the resonances; digital ones too."""
        resonances = np.abs(self.poles.imag)
        w = np.concatenate([[LD(x) for x in (0.01, 0.1, 0.3, 0.6, 0.8, 0.9, 0.97, 0.997, 1.003, 1.03, 1.1, 1.3, 2, 5)],
                            resonances[resonances > 0]])
        if self.kind == HIGH_PASS:
            tangents = self.low / w
        elif self.kind in (BAND_PASS, NOTCH):
            w = np.concatenate([w, -w])
            half = (w if self.kind == BAND_PASS else 1 / w) * self.width / 2
            root = np.sqrt(half * half + self.low * self.high)
            tangents = np.where(half > 0, half + root, self.low * self.high / (root + np.abs(half)))
        else:
            tangents = self.low * w
        f = np.concatenate([2 / PI * np.arctan(tangents), np.array(self.edges), np.linspace(0.03, 0.97, 9)])
        f = np.unique(f.astype(float))
        return f[(f > 0) & (f < 1)]

    # ---- The sections that rounding each number of the exact ones gives ----

    def moved(self, root):
        """The one or two analog roots that a root of the prototype becomes."""
        if self.kind in (LOW_PASS, ALL_PASS):
            return [root * self.low]
        if self.kind == HIGH_PASS:
            return [self.low / root]
        half = (root if self.kind == BAND_PASS else 1 / root) * self.width / 2
        root = np.sqrt(half * half - self.low * self.high + CLD(0j))
        larger = half + root if abs(half + root) >= abs(half - root) else half - root
        return [larger, self.low * self.high / larger]

    def rounded_sections(self):
        """Rows b0 b1 b2 1 a1 a2."""
        pole_pairs, zero_pairs = self.pairs(self.poles), self.pairs(self.zeros)
        if self.kind == ALL_PASS:
            zero_pairs = [[-p for p in pair] for pair in pole_pairs]
        missing = sum(map(len, pole_pairs)) - sum(map(len, zero_pairs))  # at infinity of the prototype
        if self.kind == NOTCH:
            mid = CLD(1j) * np.sqrt(self.low * self.high)
            zero_pairs += [[mid, -mid]] * (missing // 2)
        elif self.kind == BAND_PASS:
            zero_pairs += [[CLD(0), None]] * (missing // 2)
        elif self.kind != ALL_PASS:
            zero = CLD(0) if self.kind == HIGH_PASS else None
            zero_pairs += [[zero, zero]] * (missing // 2) + [[zero]] * (missing % 2)
        at = {HIGH_PASS: LD(1), BAND_PASS: 2 / PI * np.arctan(np.sqrt(self.low * self.high))}.get(self.kind, LD(0))
        by_size = lambda pairs: sorted(pairs, key=lambda r: (len(r), *(abs(x) if x is not None else np.inf for x in r)))
        rows = []
        for zeros, poles in zip(by_size(zero_pairs), by_size(pole_pairs)):
            row = [*self.polynomial(zeros), *self.polynomial(poles)]
            gain = 1 / abs(section_responses([row], [at])[0, 0])
            rows.append([gain * x for x in row[:3]] + row[3:])
        rows[0][:3] = [self.gain * x for x in rows[0][:3]]
        there = [LD(0.37)] if self.kind == NOTCH else [at]
        if np.real(np.prod(section_responses(rows, there)) / self.response(there)[0]) < 0:
            rows[0][:3] = [-x for x in rows[0][:3]]
        return np.array(rows, float)

    def pairs(self, roots):
        """Roots that belong to one section."""
        out = []
        for r in roots:
            moved = self.moved(r)
            if abs(r.imag) < 1e-25:
                real = [CLD(m.real) if abs(m.imag) < 1e-19 * abs(m) else m for m in moved]
                out.append(real)
            elif r.imag > 0:
                out += [[m, np.conj(m)] for m in moved]
        return out

    @staticmethod
    def polynomial(roots):
        """Coefficients of 1, z^-1 and z^-2 of the z-plane's roots (1 + s) / (1 - s), -1 for None."""
        z = [LD(-1) * CLD(1) if s is None else (1 + s) / (1 - s) for s in roots]
        if len(z) == 1:
            return [LD(1), -z[0].real, LD(0)]
        return [LD(1), -(z[0] + z[1]).real, (z[0] * z[1]).real]


def section_responses(rows, f):
    """The response of each section: by sums at z = 1 or -1, which are exact for doubles, so that nothing cancels."""
    f = np.asarray(f, LD)
    near = f <= LD(0.5)  # z = 1
    half = PI / 2 * np.where(near, f, 1 - f)
    versine, sine = 2 * np.sin(half) ** 2, np.sin(2 * half)

    def polynomial(c0, c1, c2):  # times z: (c0 + c2) cos w + c1 + j (c0 - c2) sin w
        c0, c1, c2 = LD(c0), LD(c1), LD(c2)
        at_dc, at_nyquist = c0 + c1 + c2, c1 - (c0 + c2)
        real = np.where(near, at_dc - (c0 + c2) * versine, at_nyquist + (c0 + c2) * versine)
        return real + CLD(1j) * (c0 - c2) * sine

    return np.array([polynomial(*row[:3]) / polynomial(*row[3:]) for row in rows])


def response(sections, f):
    """The response of rows b0 b1 b2 1 a1 a2 at fractions of Nyquist."""
    return np.prod(section_responses(sections, f), axis=0)

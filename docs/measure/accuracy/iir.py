"""Prototypes, designs, responses and running filters."""

import ctypes

import mpmath as mp
import numpy as np
from binding import IIRDesignSpec, ProtoSpec, sections_of
from cascade import (ALL_PASS, BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, GAUSSIAN, HIGH_PASS, INVERSE_CHEBYSHEV, LOW_PASS,
                     NOTCH, PAPOULIS, Designer)
from numpy.polynomial import Polynomial, legendre
from scipy import signal

from .report import LD, cell, noise, rms, worst_rms

RIPPLE, STOP = 0.1, 60.0


def spec(kind, cutoff, family=0, poles=6, bandwidth=0.1):
    return IIRDesignSpec(kind, cutoff, bandwidth, 0.0, ProtoSpec(family, poles, RIPPLE, STOP, 0.0))


# ---- Prototype poles ----


def papoulis(n):
    """L_n(w^2) by ascending powers of w^2, from Papoulis' integral of a Legendre sum: whole numbers.

    Good to order 18; beyond, rounding to whole numbers no longer mends the double precision of the integral."""
    k = (n - 1) // 2
    weights = [2 * i + 1 if n % 2 or (i - k) % 2 == 0 else 0 for i in range(k + 1)]
    integrand = Polynomial(legendre.leg2poly(weights)) ** 2 * Polynomial([1, 1 - n % 2])
    optimum = integrand.integ(lbnd=-1)(Polynomial([-1, 2]))
    return np.round(optimum.coef / optimum(1))


def chebyshev_poles(eps, n):
    a, angles = mp.asinh(1 / eps) / n, [(2 * i + 1) * mp.pi / (2 * n) for i in range(n)]
    return [mp.mpc(-mp.sinh(a) * mp.sin(t), mp.cosh(a) * mp.cos(t)) for t in angles]


def roots_of(ascending):
    return mp.polyroots([mp.mpf(c) for c in ascending[::-1]], maxsteps=500, extraprec=400)


def exact_poles(family, n):
    power = lambda db: mp.mpf(10) ** (mp.mpf(db) / 10)
    if family == "Butterworth":
        return [mp.expjpi(mp.mpf(n + 1 + 2 * i) / (2 * n)) for i in range(n)]
    if family == "Chebyshev":
        return chebyshev_poles(mp.sqrt(power(RIPPLE) - 1), n)
    if family == "InvCheby":
        return [1 / z for z in chebyshev_poles(1 / mp.sqrt(power(STOP) - 1), n)]
    if family == "Bessel":
        return roots_of([mp.factorial(2 * n - k) / (mp.factorial(k) * mp.factorial(n - k) * mp.mpf(2) ** (n - k))
                         for k in range(n + 1)])
    if family == "Gaussian":
        squares = [(-1) ** m / mp.factorial(m) for m in range(n + 1)]
    else:
        squares = [c * mp.mpf((-1) ** m) / 10 + (m == 0) for m, c in enumerate(papoulis(n))]
    return [-mp.sqrt(u) for u in roots_of(squares)]


def our_roots(lib, family, n):
    """Poles of the left half-plane, and zeros."""
    poles, zeros, count = np.zeros(50, complex), np.zeros(50, complex), ctypes.c_int()
    before = {"Chebyshev": (RIPPLE,), "InvCheby": (STOP,), "Elliptic": (RIPPLE, STOP)}.get(family, ())
    after = (zeros, count) if family in ("InvCheby", "Elliptic") else ()
    got = getattr(lib, family + "Poly")(*before, n, poles, *after)
    return poles[:got][poles[:got].real < 0], zeros[: count.value]


def poles(lib):
    peers = {
        "Butterworth": (BUTTERWORTH, signal.buttap),
        "Chebyshev": (CHEBYSHEV, lambda n: signal.cheb1ap(n, RIPPLE)),
        "InvCheby": (INVERSE_CHEBYSHEV, lambda n: signal.cheb2ap(n, STOP)),
        "Bessel": (BESSEL, lambda n: signal.besselap(n, norm="delay")),
        "Gaussian": (GAUSSIAN, None),
        "Papoulis": (PAPOULIS, None),
    }
    max_poles = {code: most for code, _, most in Designer(lib).families}
    for family, (code, peer) in peers.items():
        row = [f"`{family}Poly`"]
        for n in (n for n in (3, 6, 10, 12, 15, 18) if n <= max_poles[code]):
            truth, both = exact_poles(family, n), [our_roots(lib, family, n)[0]] + ([peer(n)[1]] if peer else [])
            worst = (max(min(abs(mp.mpc(p) - t) for p in found) / abs(t) for t in truth) for found in both)
            row.append(" / ".join(map(cell, worst)))
        yield row + [""] * (7 - len(row))


def elliptic(lib):
    for n in (3, 4, 5, 6, 8, 10, 12, 15):
        ps, zs = our_roots(lib, "Elliptic", n)
        level = 0 if n % 2 else RIPPLE  # even orders have the bottom of their ripple at DC
        gain = lambda w: 20 * np.log10(abs(np.prod(1j * w / zs - 1) / np.prod(1j * w / ps - 1))) - level
        first, (z, p, _) = np.min(abs(zs)), signal.ellipap(n, RIPPLE, STOP)
        stop = max(gain(w) for w in first * np.geomspace(1.0001, 100, 20001))
        moved = max(np.min(abs(ps - q)) / abs(q) for q in p)
        yield [n, f"{gain(1.0):.6f}", f"{stop:.2f}", moved, f"{first:.5f}", f"{np.min(abs(z)):.5f}"]


# ---- Digital designs ----


def in_mpmath(sections):
    return [[mp.mpf(float(x)) for x in row] for row in sections]


def response(sections, w):
    """The response of rows b0 b1 b2 1 a1 a2 at w radians per sample."""
    z1, h = mp.expj(-w), mp.mpf(1)
    for b0, b1, b2, _, a1, a2 in sections:
        h *= (b0 + z1 * (b1 + z1 * b2)) / (1 + z1 * (a1 + z1 * a2))
    return h


def designed(proto, request, w):
    """What the leading sections of the prototype become, by the formulas of the header."""
    fc, kind = mp.mpf(request.NormCutoff), request.PassType
    u = mp.mpc(0, mp.tan(w / 2) / mp.tan(fc * mp.pi / 2))  # the prewarped bilinear transform on the unit circle
    if kind in (BAND_PASS, NOTCH):  # Q is corrected for the warping by a fitted curve
        u = fc / mp.mpf(request.NormBandwidth) / (0.8 * mp.tan((fc + 1) * mp.pi / 4)) * (u + 1 / u)
    s, h = 1 / u if kind in (HIGH_PASS, NOTCH) else u, mp.mpf(1)
    for k in range((request.Proto.NumPoles + 1) // 2):
        n2, n1, n0, d2, d1, d0 = (mp.mpf(getattr(proto, name)[k]) for name, _ in proto._fields_[:6])
        if kind == ALL_PASS:
            n2, n1, n0 = d2, -d1, d0
        h *= (n2 * s * s + n1 * s + n0) / (d2 * s * s + d1 * s + d0) * d0 / n0
    return h


def design_error(lib, request, points):
    proto, fc = lib.CalcLowPassProtoCoeff(request.Proto), mp.mpf(request.NormCutoff)
    sections = in_mpmath(sections_of(lib.CalcIIRFilterCoeff(request)))
    fractions = [(i + mp.mpf("0.37")) / points for i in range(points)] + [fc * f for f in (0.5, 0.9, 1.01, 1.1)]
    return max(abs(response(sections, mp.pi * f) - designed(proto, request, mp.pi * f)) for f in fractions)


def designs(lib):
    for family, name, _ in Designer(lib).families:
        yield [name, *(max(design_error(lib, spec(kind, 0.4, family, poles), 40) for poles in (3, 5, 6))
                       for kind in range(5))]


def low_cutoffs(lib):
    for fc in (0.5, 0.1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6):
        band = 2 / np.pi * np.arctan(np.tan(np.pi * fc / 2) * np.array([0.9, 1 / 0.9]))  # with gain 1 at fc
        known = ((sections_of(lib.CalcIIRFilterCoeff(spec(LOW_PASS, fc))), 0),
                 (signal.butter(6, fc, output="sos"), 0), (signal.butter(3, band, "band", output="sos"), fc))
        yield [f"{fc:g}", *(design_error(lib, spec(kind, fc, bandwidth=fc / 5), 10) for kind in range(4)),
               *(abs(response(in_mpmath(sos), mp.pi * w) - 1) for sos, w in known)]


def running(lib, samples=200_000, points=512):
    cases = (
        ("default low-pass, 40 Hz at 360 Hz", spec(LOW_PASS, 80 / 360)),
        ("the same at 0.01 of Nyquist", spec(LOW_PASS, 0.01)),
        ("the same at 0.001", spec(LOW_PASS, 0.001)),
        ("high-pass, 0.2", spec(HIGH_PASS, 0.2)),
        ("band-pass, 0.4, bandwidth 0.01", spec(BAND_PASS, 0.4, bandwidth=0.01)),
        ("notch, 1/3, bandwidth 0.02", spec(NOTCH, 1 / 3, bandwidth=0.02)),
        ("elliptic low-pass, 5 poles, 0.2", spec(LOW_PASS, 0.2, family=7, poles=5)),
        ("Chebyshev low-pass, 15 poles, 0.2", spec(LOW_PASS, 0.2, family=4, poles=15)),
    )
    for name, request in cases:
        coeffs = lib.CalcIIRFilterCoeff(request)
        sos, x, y, re, im = np.array(sections_of(coeffs)), noise(5, samples), np.zeros(samples), *np.zeros((2, points))
        lib.IIRFreqResponse(coeffs, coeffs.NumSections, re, im, points)
        want = {i: response(in_mpmath(sos), mp.pi * i / points) for i in range(0, points, 8)}
        error = max(abs(mp.mpc(re[i], im[i]) - h) for i, h in want.items()) / max(map(abs, want.values()))
        lib.FilterWithIIR(x, y, samples, coeffs)
        truth = signal.sosfilt(sos.astype(LD), x.astype(LD))
        yield [name, error, *worst_rms((y - truth) / rms(truth)), rms(signal.sosfilt(sos, x) - truth) / rms(truth)]

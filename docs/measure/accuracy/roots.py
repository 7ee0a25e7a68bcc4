"""Roots of polynomials: how far the coefficients and the roots are off."""

import itertools

import mpmath as mp
import numpy as np
from binding import declare, measuring
from roots import CALLS, TOLERANCE

from .report import LD, exact, rms

WRONG = 1e-3  # a root further off, relative to its modulus, is not counted as found


def expanded(zs, lead):
    """The coefficients of lead (x - z1) (x - z2) ..., highest power first."""
    p = [mp.mpf(lead)]
    for z in zs:
        p = [a - b * z for a, b in zip(p + [mp.mpf(0)], [mp.mpf(0)] + p)]
    return p


def exact_roots(c):
    """The exact roots of the given coefficients: Weierstrass' simultaneous iteration from near NumPy's roots."""
    zs = [mp.mpc(z) * (1 + k * mp.mpc("1e-13", "1e-13")) for k, z in enumerate(np.roots(c.astype(float)), start=1)]
    c = [exact(x) for x in c]
    for _ in range(300):
        largest = mp.mpf(0)
        for k, z in enumerate(zs):
            step = mp.polyval(c, z) / c[0]
            for other in itertools.chain(zs[:k], zs[k + 1 :]):
                step /= z - other
            zs[k] = z - step
            largest = max(largest, abs(step / z))
        if largest < 1e-30:
            return zs
    raise ArithmeticError(f"no reference for {c}")


def condition(c, z):
    """The relative change of the root over the relative change of all coefficients that causes it."""
    c = [exact(x) for x in c]
    slope = mp.polyval(c, z, derivative=True)[1]
    return float(mp.polyval([abs(x) for x in c], abs(z)) / abs(z * slope)) if abs(slope) > 1e-30 else np.inf


def forward_errors(zs, truth):
    """The distance of each exact root from the nearest that is left of those found, relative."""
    left = list(zs)
    for w in truth:
        nearest = min(left, key=lambda z: abs(z - w))
        left.remove(nearest)
        yield float(abs(nearest - w) / abs(w))


def measured(lib, name, polynomials, truths=None, wrong=None):
    """A row: what FindRoots makes of the polynomials; those not found are appended to `wrong`."""
    checks = declare(measuring(lib), CALLS)
    wrong, none, rejected, forward, backward, conditions = [] if wrong is None else wrong, 0, 0, [], [], []
    for index, c in enumerate(polynomials):
        c, zs = np.array(c, float), np.zeros(len(c) - 1, complex)
        if lib.FindRoots(len(zs), c, zs) == 0:
            none += 1
            continue
        truth = truths[index] if truths else exact_roots(c)
        zs_mp = [mp.mpc(z) for z in zs]
        errors = list(forward_errors(zs_mp, truth))
        rejected += not checks.shown_roots_hold(len(zs), c, zs, TOLERANCE)
        if max(errors) > WRONG:
            wrong.append(index)
            continue
        forward += errors
        backward.append(max(abs(p - x) for p, x in zip(expanded(zs_mp, c[0]), c)) / max(abs(c)))
        conditions.append(max(condition(c, z) for z in truth))
    shown = ["-"] * 4 if not forward else [max(backward), max(forward), rms(forward), max(conditions)]
    return [name, len(polynomials), none, len(wrong), rejected, *shown]


def random(lib):
    for n, count in ((4, 200), (8, 200), (12, 100), (20, 100), (40, 20), (60, 10), (80, 6), (100, 6)):
        yield measured(lib, f"degree {n}", np.random.default_rng(n).uniform(-1, 1, (count, n + 1)))


def hard(lib):
    for n in (10, 15, 20, 24):
        yield measured(lib, f"Wilkinson, degree {n}", [expanded(range(1, n + 1), 1)])
    for n in (10, 20, 30, 40):
        yield measured(lib, f"Chebyshev, degree {n}", [np.polynomial.chebyshev.cheb2poly([0] * n + [1])[::-1]])
    for m, gap in ((3, "0.01"), (5, "0.01"), (3, "0.0001"), (5, "0.0001")):
        zs = [1 + k * mp.mpf(gap) for k in range(m)] + [-2, 3]
        yield measured(lib, f"{m} roots from 1 on, {gap} apart, and -2, 3", [expanded(zs, 1)])
    for k in (1, 5, 10):
        rng = np.random.default_rng(k)
        spread = [rng.uniform(-1, 1, 13) * 10 ** rng.uniform(-k, k, 13) for _ in range(40)]
        yield measured(lib, f"degree 12, coefficients times 1e-{k} .. 1e{k}", spread)


def powers(lib):
    pairs = list(itertools.product(np.arange(-4, 4.01, 0.25), np.arange(0.25, 5.01, 0.25)))
    roots = [[-b / 2 + sign * mp.sqrt(mp.mpc(b * b / 4 - c)) for sign in (1, -1)] for b, c in pairs]
    wrong = []
    for power, name in ((2, "squares"), (3, "cubes")):  # with coefficients that are exact
        polynomials = [(np.poly1d([1.0, b, c]) ** power).coeffs for b, c in pairs]
        yield measured(lib, name, polynomials, [zs * power for zs in roots], wrong)
    # Which of them are wrong depends on the processor, by its x87 powers.
    b, c = zip(*(pairs[i] for i in wrong))
    yield f"\nThe wrong cubes have b from {min(b):g} to {max(b):g} and c from {min(c):g} to {max(c):g}."


def closed_forms(lib):
    for n in (2, 3, 4):
        errors, conditions = [], []
        for c in np.random.default_rng(n).uniform(-1, 1, (300, n + 1)).astype(LD):
            re, im = np.zeros(n, LD), np.zeros(n, LD)
            lib.QuadCubicRoots(c.copy(), n, re, im)
            truth = exact_roots(c)
            errors += forward_errors([mp.mpc(exact(x), exact(y)) for x, y in zip(re, im)], truth)
            conditions += [condition(c, w) for w in truth]
        e = np.array(errors)
        yield [n, len(e), max(e), float(np.median(e)), np.max(e / conditions), max(conditions)]

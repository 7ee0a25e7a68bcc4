"""Complex arithmetic against mpmath."""

import mpmath as mp
import numpy as np
from binding import CplxD

from .report import EPS, rms


def box(width, height):
    return lambda rng: complex(rng.uniform(-width, width), rng.uniform(-height, height))


def ring(low, high):
    return lambda rng: 10 ** rng.uniform(low, high) * np.exp(1j * rng.uniform(-np.pi, np.pi))


PLAIN, STRIP = ("parts up to 10", box(10, 10)), ("re up to 10, im up to 5", box(10, 5))
WIDE, NARROW = ("moduli 1e-100 .. 1e100", ring(-100, 100)), ("moduli 1e-160 .. 1e-155", ring(-160, -155))
CASES = (  # the formula takes one number, two, or a number and a real one up to the last entry
    *((name, formula, PLAIN, None) for name, formula in (("Add", lambda a, b: a + b), ("Mult", lambda a, b: a * b))),
    *(("Division", lambda a, b: a / b, domain, None) for domain in (PLAIN, WIDE, NARROW)),
    *(("Cabs", lambda a: mp.mpc(abs(a)), domain, None) for domain in (WIDE, NARROW)),
    *(("Pow", lambda a, p: a**p, PLAIN, largest) for largest in (5, 100)),
    *((name, formula, STRIP, None) for name, formula in (("Cos", mp.cos), ("Sin", mp.sin), ("Tan", mp.tan))),
)


def functions(lib, samples=1000):
    for name, formula, (shown, domain), largest in CASES:
        rng, function, errors = np.random.default_rng(1), getattr(lib, "CplxD" + name), []
        for _ in range(samples):
            numbers = [domain(rng) for _ in range(2 if name in ("Add", "Mult", "Division") else 1)]
            power = [] if largest is None else [rng.uniform(-largest, largest)]
            got = function(*(CplxD(z.real, z.imag) for z in numbers), *power)
            got = mp.mpc(got.re, got.im) if isinstance(got, CplxD) else mp.mpc(got)
            want = formula(*map(mp.mpc, numbers), *map(mp.mpf, power))
            parts = [abs(g - w) / abs(w) for g, w in ((got.real, want.real), (got.imag, want.imag)) if w != 0]
            errors.append([float(e / EPS) for e in (abs(got - want) / abs(want), max(parts))])
        whole, parts = np.transpose(errors)
        label = f"`CplxD{name}`" + (f", power up to {largest}" if largest else "")
        yield [label, shown, *(f"{e:.2g}" for e in (max(whole), rms(whole), max(parts)))]

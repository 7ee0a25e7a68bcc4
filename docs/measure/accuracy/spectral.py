"""Transforms, single frequencies and data windows against long double."""

import mpmath as mp
import numpy as np
import scipy.fft

from .report import CLD, LD, PI, exact, noise, rms, worst_rms

COSINES = {  # code: the terms of a sum of cosines, of alternating sign as they are applied
    4: (0.5, -0.5),
    5: (0.54, -0.46),
    6: (0.42, -0.5, 0.08),
    7: (1.0, -1.93293488969227, 1.28349769674027, -0.38130801681619, 0.02929730258511),
    8: (0.35875, -0.48829, 0.14128, -0.01168),
    9: (0.3535819, -0.4891775, 0.1365995, -0.0106411),
    10: (0.355768, -0.487396, 0.144232, -0.012604),
    11: (0.402, -0.498, 0.098, 0.001),
}


def complex_noise(seed, n):
    return noise(seed, n) + 1j * noise(seed + 1000, n)


def transformed(call, x, direction):
    re, im = x.real.copy(), x.imag.copy()
    call(re, im, len(x), direction)
    return re + 1j * im


def reference(x):
    spectrum = scipy.fft.fft(x.astype(CLD)) / len(x)
    assert spectrum.dtype == CLD
    return spectrum


def reference_error(lib, n=1024, k=341):
    """The error of SciPy's transform in long double: one bin against its sum in mpmath."""
    x = complex_noise(7, n)
    got = reference(x)
    want = mp.fsum(mp.mpc(v) * mp.expjpi(mp.mpf(-2 * (k * t % n)) / n) for t, v in enumerate(x)) / n
    yield ["the reference", n, abs(mp.mpc(exact(got[k].real), exact(got[k].imag)) - want) / rms(got), "", "", ""]


def fast(lib):
    for n in (8, 16, 64, 256, 1024, 4096, 16384, 65536, 262144, 1048576):
        ours, peer, back = [], [], []
        count = max(1, 4096 // n)
        for seed in range(count):
            x = complex_noise(seed, n)
            want, got = reference(x), transformed(lib.FFT, x, 0)
            ours.append(abs(got - want) / rms(want))
            peer.append(abs(np.fft.fft(x) / n - want) / rms(want))
            back.append(abs(transformed(lib.FFT, got, 1) - x) / rms(x))
        yield [n, count * n, *worst_rms(np.concatenate(ours)), rms(np.concatenate(peer)), max(map(np.max, back))]


def any_length(lib):
    for n in (3, 5, 7, 30, 100, 101, 365, 1000, 1009, 2000):
        x = complex_noise(3, n)
        want, want_real = reference(x), reference(x.real + 0j)[: n // 2 + 1]
        re, im = np.zeros(n), np.zeros(n)
        lib.RealSigDFT(x.real.copy(), re, im, n)
        real = (re + 1j * im)[: n // 2 + 1]
        yield [n, *worst_rms(abs(transformed(lib.DFT, x, 0) - want) / rms(want)),
               *worst_rms(abs(real - want_real) / rms(want_real))]


def single_frequency(x, f):
    """The magnitude in long double.  f t is reduced modulo 2 before it is rounded, in two parts that are exact."""
    t, high = np.arange(len(x)).astype(LD), LD(np.float32(f))
    angle = PI * (np.fmod(high * t, 2) + np.fmod((LD(f) - high) * t, 2))
    return np.hypot(np.sum(x * np.cos(angle)), np.sum(x * np.sin(angle)))


def single(lib):
    records = {n: [noise(seed, n) for seed in range(10)] for n in (100, 1000, 100000)}
    for f in (0.0, 2e-5, 0.002, 0.1, 0.5, 0.9, 0.998, 1.0):
        row = [f"{f:g}"]
        for n, xs in records.items():
            want = np.array([single_frequency(x, f) for x in xs])
            for call in (lib.Goertzel, lib.SingleFreqDFT):
                row.append(float(np.max(abs(np.array([call(x, n, f) for x in xs]) - want)) / rms(want)))
        yield row


def bessel_i0(x, terms):
    total = term = np.ones_like(x)
    for k in range(1, terms + 1):
        term = term * (x / 2 / k) ** 2
        total = total + term
    return total


def window(code, n, alpha=0.0, beta=0.0, terms=60):
    """The formulas of the header in long double, for any alpha."""
    flat = 0 if code in (2, 7) else int(alpha * n)
    points = n - flat - flat % 2
    j, d = np.arange(1, points // 2 + 1).astype(LD), LD(points + 1)
    x, beta = (2 * j - d) / d, LD(beta)
    if code in COSINES:
        taper = sum(LD(a) * np.cos(2 * PI * m * j / d) for m, a in enumerate(COSINES[code]))
    elif code == 2:
        taper = bessel_i0(beta * np.sqrt(1 - x * x), terms) / bessel_i0(beta, terms)
    elif code == 3:
        taper = (np.sin(PI * x) / (PI * x)) ** beta
    elif code == 12:
        taper = j / ((points + 1) // 2)
    elif code == 13:
        taper = np.exp(-((LD(2.7183) * x) ** 2))
    else:
        taper = np.sin(PI * j / d) ** beta
    centre = sum(LD(a) * (-1) ** m for m, a in enumerate(COSINES[7])) if code == 7 else LD(1)
    return np.concatenate([taper, np.full(n - 2 * len(taper), centre), taper[::-1]])


def windows(lib):
    def error(code, n, alpha, beta, unity, terms):
        data, want = np.ones(n), window(code, n, alpha, beta, terms)
        lib.WindowData(data, n, code, alpha, beta, unity)
        want = want / np.mean(want) if unity else want
        return float(np.max(abs(data - want)) / np.max(want))

    cases = [(2, f"Kaiser, beta {b}, against nine terms of I0", b, 9) for b in (4, 8, 10)]
    cases += [(2, f"Kaiser, beta {b}, against I0", b, 60) for b in (4, 8, 10)]
    cases += [(3, "sinc, beta 1", 1, 0), (3, "sinc, beta 2.5", 2.5, 0)]
    names = "Hanning,Hamming,Blackman,flat top,Blackman-Harris,Blackman-Nuttall,Nuttall,Kaiser-Bessel,triangle,Gauss"
    cases += [(code, name, 0, 0) for code, name in enumerate(names.split(","), start=4)]
    cases += [(14, "sine, beta 1", 1, 0), (14, "sine, beta 2.5", 2.5, 0)]
    for code, name, beta, terms in cases:
        yield [f"{code} {name}", *(error(code, n, 0.0, beta, 0, terms) for n in (5, 64, 1001, 65536)),
               error(code, 1000, 0.3, beta, 0, terms), error(code, 1001, 0.0, beta, 1, terms)]

"""What the transforms, windows and record filters give.  Seeded random numbers, no clock."""

import contextlib
import ctypes
import os
import tempfile

import numpy as np
from binding import TIIRFilter, doubles, sections_of
from cascade import LOW_PASS, Designer
from requested import Requests

LD = np.longdouble
PI = LD("3.14159265358979323846264338327950288")
POINTS, PADDING = 1024, 256  # of the windows; their spectra have PADDING points a bin
RATE, REQUESTED = 360, 40  # Hz
RECORD, MARGIN = 1000, 2000  # samples
WINDOWS = (  # code, name, beta
    (1, "rectangle", 0), (2, "Kaiser, beta 8", 8), (3, "sinc, beta 1", 1), (3, "sinc, beta 2", 2), (4, "Hanning", 0),
    (5, "Hamming", 0), (6, "Blackman", 0), (7, "flat top", 0), (8, "Blackman-Harris", 0), (9, "Blackman-Nuttall", 0),
    (10, "Nuttall", 0), (11, "Kaiser-Bessel", 0), (12, "triangle", 0), (13, "Gauss", 0), (14, "sine, beta 1", 1),
    (14, "sine, beta 2", 2),
)  # fmt: skip
KAISER, HANNING, FLAT_TOP, BLACKMAN_NUTTALL, KAISER_BESSEL = 2, 4, 7, 9, 11


def sine(n, amplitude, f, phase=0.0):  # f = 1: Nyquist
    return amplitude * np.sin(np.pi * f * np.arange(n) + phase)


def noise(n, seed):
    return np.random.default_rng(seed).uniform(-1, 1, n)


def decibels(ratio):
    return 20 * np.log10(ratio)


def rms(x):
    return float(np.sqrt(np.mean(np.abs(x) ** 2)))


def transformed(call, x, n=None):
    """The n bins of x, padded with zeros to n samples."""
    re = np.zeros(n or len(x))
    re[: len(x)] = x
    im = np.zeros(len(re))
    call(re, im, len(re), 0)
    return re + 1j * im


def magnitudes(call, x, n=None):
    """The magnitudes of the bins 0 to n / 2."""
    return np.abs(transformed(call, x, n))[: (n or len(x)) // 2 + 1]


# ---- Scaling ----


def scaling(library):
    """The magnitude of a sine of amplitude 3 in bin 100, by call."""
    x, y, z = sine(1000, 3, 0.2), sine(POINTS, 3, 200 / POINTS), sine(768, 3, 200 / POINTS)
    re, im, windowed = np.zeros(1000), np.zeros(1000), y.copy()
    library.RealSigDFT(x, re, im, 1000)
    library.WindowData(windowed, POINTS, HANNING, 0, 0, 1)
    return {
        "fft": magnitudes(library.FFT, y)[100],
        "windowed": magnitudes(library.FFT, windowed)[100],
        "padded": magnitudes(library.FFT, z, POINTS)[100],
        "dft": magnitudes(library.DFT, x)[100],
        "real": np.hypot(re[100], im[100]),
        "single": library.SingleFreqDFT(x, 1000, 0.2),
        "goertzel": library.Goertzel(x, 1000, 0.2),
    }


# ---- Windows ----


def window(library, code, beta=0.0, alpha=0.0):
    w = np.ones(POINTS)
    library.WindowData(w, POINTS, code, alpha, beta, 0)
    return w


X = 2 * (np.arange(POINTS) + 1) / (POINTS + 1) - 1  # the points of WindowData: -1 < x < 1


def cosine_sum(a0, a1, a2, a3):
    """a0 + a1 cos t + a2 cos 2t + a3 cos 3t, t = pi (x + 1)"""
    return a0 - a1 * np.cos(np.pi * X) + a2 * np.cos(2 * np.pi * X) - a3 * np.cos(3 * np.pi * X)


def figures(library, code, name, w):
    """A row of the tables of windows."""
    v = magnitudes(library.FFT, w, POINTS * PADDING)
    half = np.argmax(v <= v[0] / 2)
    first_minimum = half + np.argmax(np.diff(v[half:]) > 0)
    return {
        "code": code,
        "name": name,
        "mean": w.mean(),
        "noise": POINTS * np.sum(w * w) / np.sum(w) ** 2,
        "side_lobe": decibels(v[first_minimum:].max() / v[0]),
        "far": decibels(v[20 * PADDING :].max() / v[0]),
        "scalloping": decibels(v[0] / v[PADDING // 2]),
        "width": 2 * half / PADDING,
    }


def compared_windows(library):
    curves = (
        (9, "textbook: first constant 0.3635819", cosine_sum(0.3635819, -0.4891775, 0.1365995, -0.0106411)),
        (11, "textbook: last term -0.00122", cosine_sum(0.40243, -0.49804, 0.09831, -0.00122)),
        (13, "often: exp(-(2.5 x)^2 / 2)", np.exp(-3.125 * X * X)),
        (2, "beta 10, nine terms of I0, as built in", window(library, KAISER, 10)),
        (2, "beta 10, all terms of I0", np.i0(10 * np.sqrt(1 - X * X)) / np.i0(10)),
        (4, "Hanning, alpha 0.5", window(library, HANNING, 0, 0.5)),
        (9, "Blackman-Nuttall, alpha 0.5", window(library, BLACKMAN_NUTTALL, 0, 0.5)),
    )
    return [figures(library, *curve) for curve in curves]


# ---- Accuracy, against sums in long double ----


def phasors(n, f):
    """exp(-i pi f t)"""
    angles = PI * np.fmod(LD(f) * np.arange(n), 2)
    return np.cos(angles) - 1j * np.sin(angles)


def transform_error(call, n):
    """The rms error of 64 bins over their rms."""
    x = noise(n, 1)
    bins = 617 * np.arange(64) % n  # a prime, so that they are of all kinds
    exact = np.array([x.astype(LD) @ phasors(n, 2 * LD(int(k)) / n) / n for k in bins])
    return rms(transformed(call, x)[bins] - exact) / rms(exact)


def single_errors(library, n, f, offset):
    """The rms errors of Goertzel and SingleFreqDFT over the rms magnitude, 30 records."""
    records, turning = [noise(n, seed) + offset for seed in range(1, 31)], phasors(n, f)
    exact = np.array([np.abs(x.astype(LD) @ turning) for x in records])
    calls = library.Goertzel, library.SingleFreqDFT
    return [rms(np.array([call(x, n, f) for x in records]) - exact) / rms(exact) for call in calls]


def single_frequencies(library):
    for f in (0, 2e-5, 2e-3, 0.1, 0.5, 0.998, 1 - 2e-5, 1):
        short = float(np.float32(f))  # so short that f t is exact
        kinds = ((1000, 0), (100_000, 0), (100_000, 10))
        yield f, [error for n, offset in kinds for error in single_errors(library, n, short, offset)]


# ---- Whole records ----


def low_pass(library):
    f = TIIRFilter()
    library.initTIIRFilter(f, LOW_PASS, REQUESTED, RATE)
    return f


def zero_phase(library, x):
    y = x.copy()
    library.IIRFilterZeroPhase(low_pass(library), y, y, len(y))
    return y


def continued(library, x):
    """The same sections by mensura_sos_filtfilt."""
    rows = [number for row in sections_of(low_pass(library).Coeffs) for number in row]
    return np.array(Requests(library).filter(rows, float(RATE)).both_ways(x))


def zero_phase_errors(library, run):
    """The errors of sines of 5 Hz, the largest at any phase, against the same in the middle of longer records.  The filter
    is linear, so that two phases determine all others."""
    errors = []
    for phase in (0, np.pi / 2):
        x = sine(RECORD + 2 * MARGIN, 1, 10 / RATE, phase)
        errors.append(run(library, x[MARGIN:-MARGIN]) - run(library, x)[MARGIN:-MARGIN])
    return np.hypot(*errors)


@contextlib.contextmanager
def standard_output(lines):
    """Appends to `lines` what the library prints."""
    flush = ctypes.CDLL(None).fflush
    with tempfile.TemporaryFile("w+") as file:
        flush(None)
        before = os.dup(1)
        os.dup2(file.fileno(), 1)
        yield
        flush(None)
        os.dup2(before, 1)
        os.close(before)
        file.seek(0)
        lines += file.read().splitlines()


def cleaning(library, hz, ratio, cutoff):
    """A sine in noise through dataZeroPhaseFilter."""
    clean, lines = sine(RECORD, 1, 2 * hz / RATE), []
    x = doubles(clean + noise(RECORD, 1) / 2)
    before = rms(x - clean)
    with standard_output(lines):
        library.dataZeroPhaseFilter(x, RECORD, 1 / RATE, ratio, cutoff)
    return {"hz": hz, "ratio": ratio, "cutoff": cutoff, "before": before, "printed": "".join(lines), "after": rms(x - clean)}


def names(library):
    designed = Designer(library).measured(low_pass(library).Coeffs)
    hanning = magnitudes(library.FFT, window(library, HANNING))
    return {
        "scaling": scaling(library),
        "points": POINTS,
        "padding": PADDING,
        "windows": [figures(library, code, name, window(library, code, beta)) for code, name, beta in WINDOWS],
        "compared": compared_windows(library),
        "beyond_neighbours": decibels(hanning[2:].max() / hanning[0]),
        "peaks": {code: window(library, code).max() for code in (BLACKMAN_NUTTALL, KAISER_BESSEL, FLAT_TOP)},
        "transform_errors": [transform_error(library.FFT, n) for n in (64, 1024, 65536)] + [transform_error(library.DFT, 1000)],
        "single": list(single_frequencies(library)),
        "requested": REQUESTED,
        "rate": RATE,
        "record": RECORD,
        "one_way": designed.half_power(0, 1) * RATE / 2,
        "both_ways": designed.half_power(0, 1, 0.5**0.25) * RATE / 2,
        "errors": zero_phase_errors(library, zero_phase),
        "continued": zero_phase_errors(library, continued),
        "cleanings": [cleaning(library, *c) for c in ((5, 0.1, 0), (5, 0.02, 0), (15, 0.1, 0), (5, 0.1, REQUESTED))],
    }

"""docs/units.md: the calls of SciPy and NumPy that do the same, and how far their results agree."""

import math
import subprocess

import numpy as np
from binding import OdeFunction, TIIRFilter, companion, sections_of
from cascade import (ALL_PASS, BAND_PASS, BESSEL, BUTTERWORTH, CHEBYSHEV, ELLIPTIC, HIGH_PASS, INVERSE_CHEBYSHEV, LOW_PASS,
                     NOTCH, Designer)
from figures import below, fixed, require
from requested import Requests
from scipy import signal
from scipy.integrate import solve_ivp
from scipy.signal import windows

N = 1000
ROUNDING = 1e-13
KAISER, SINC, HANNING, HAMMING, BLACKMAN, FLAT_TOP, BLACKMAN_HARRIS, BLACKMAN_NUTTALL, NUTTALL = range(2, 11)
TRIANGLE, GAUSS, SINE = 12, 13, 14
BLACKMAN_NUTTALL_TERMS = [0.3535819, 0.4891775, 0.1365995, 0.0106411]


def noise(seed, n=N):
    return np.random.default_rng(seed).uniform(-1.0, 1.0, n)


def difference(ours, theirs):
    """The largest difference over the largest value."""
    return float(np.max(np.abs(ours - theirs)) / np.max(np.abs(theirs)))


def agreement(ours, theirs):
    return in_words(difference(ours, theirs))


def in_words(error):
    """Rounding errors are shown without a number: it would depend on the machine and on the version of SciPy."""
    if error == 0:
        return "same bits"
    return "rounding" if error < ROUNDING else below(error)


class Peers:
    """A method for each row of the table; it returns our result and theirs."""

    def __init__(self, library):
        self.library = library

    def transform(self, call, n, direction=0):
        re, im = noise(1, n), noise(2, n)
        x = re + 1j * im
        getattr(self.library, call)(re, im, n, direction)
        return re + 1j * im, np.fft.ifft(x, norm="forward") if direction else np.fft.fft(x, norm="forward")

    def real_transform(self, n=N):
        x, re, im = noise(3, n), np.zeros(n), np.zeros(n)
        self.library.RealSigDFT(x, re, im, n)
        return (re + 1j * im)[: n // 2 + 1], np.fft.rfft(x, norm="forward")

    def one_frequency(self, call, frequencies):
        """Magnitudes, relative to each."""
        x = noise(4)
        ours = np.array([getattr(self.library, call)(x, N, f) for f in frequencies])
        theirs = np.array([abs(signal.freqz(x, worN=[np.pi * f])[1][0]) for f in frequencies])
        return ours / theirs, np.ones(len(frequencies))

    def default(self, kind=LOW_PASS):
        f = TIIRFilter()
        self.library.initTIIRFilter(f, kind, 40.0, 360.0)
        return f, np.array(sections_of(f.Coeffs))

    def butterworth(self):
        designer, ours, theirs = Designer(self.library), [], []
        at = np.linspace(0, 1, 200, endpoint=False)
        for poles in (1, 2, 3):
            for f in (0.05, 0.2, 0.6):
                ours.append(designer.design(LOW_PASS, f, BUTTERWORTH, poles).magnitudes(at))
                theirs.append(abs(signal.sosfreqz(signal.butter(poles, f, output="sos"), np.pi * at)[1]))
        return np.array(ours), np.array(theirs)

    # ---- mensura/sos.h ----

    def requested(self, family, theirs, level=None, **settings):
        """The responses of low-passes of 1 to 12 poles; theirs: a function of the poles and the edge."""
        requests, found, expected = Requests(self.library), [], []
        at = np.linspace(0, 1, 200, endpoint=False)
        for poles in range(1, 13):
            even = poles % 2 == 0 and level is not None and family != INVERSE_CHEBYSHEV
            for f in (0.05, 0.2, 0.6):
                more = {} if level is None else {"level_db": level, "gain_db": level if even else 0.0}
                made = requests.design(LOW_PASS, f, rate=2.0, family=family, poles=poles, **settings, **more)
                found.append(made.magnitudes(at))
                expected.append(abs(signal.sosfreqz(theirs(poles, f), np.pi * at)[1]))
        return np.array(found), np.array(expected)

    def layer_default(self):
        return Requests(self.library).design(LOW_PASS, 40.0, rate=360.0)

    def layer_run(self, which):
        made, x = self.layer_default(), noise(5)
        sos = np.array(made.rows).reshape(-1, 6)
        if which == "filter":
            return np.array(made.run(x)), signal.sosfilt(sos, x)
        if which == "steady":
            return np.array(made.run(x, made.steady_state(x[0]))), signal.sosfilt(sos, x, zi=signal.sosfilt_zi(sos) * x[0])[0]
        return np.array(made.both_ways(x)), signal.sosfiltfilt(sos, x)

    def layer_response(self, points=512):
        made = self.layer_default()
        frequencies, theirs = signal.sosfreqz(np.array(made.rows).reshape(-1, 6), points, fs=360.0)
        return np.array(made.response(frequencies)), theirs

    def layer_delay(self, points=512):
        made = Requests(self.library).design(LOW_PASS, 40.0, rate=360.0, poles=2)
        frequencies, theirs = signal.group_delay((made.rows[:3], made.rows[3:]), points, fs=360.0)
        return np.array([360 * made.delay(f) for f in frequencies]), theirs

    def block(self):
        f, sos = self.default()
        x, y = noise(5), np.zeros(N)
        self.library.FilterWithIIR(x, y, N, f.Coeffs)
        return y, signal.sosfilt(sos, x)

    def stream(self):
        f, sos = self.default()
        x = noise(5)
        y = np.array([self.library.IIRFilter(f, value) for value in x])
        return y, signal.sosfilt(sos, x, zi=signal.sosfilt_zi(sos) * x[0])[0]

    def zero_phase(self, n=N, **options):
        f, sos = self.default()
        x, y = noise(6, n), np.zeros(n)
        self.library.IIRFilterZeroPhase(f, x, y, n)
        return y, signal.sosfiltfilt(sos, x, **options)

    def response(self, points=512):
        f, sos = self.default()
        re, im = np.zeros(points), np.zeros(points)
        self.library.IIRFreqResponse(f.Coeffs, f.Coeffs.NumSections, re, im, points)
        return re + 1j * im, signal.sosfreqz(sos, points)[1]

    def smoothers(self):
        x, ours, theirs = noise(7), [], []
        for degree, name, sizes in ((1, "linear", (3, 5, 7, 9, 11)), (2, "quadratic", (5, 7)), (3, "cubic", (5, 7))):
            for window in sizes:
                y = np.zeros(N)
                getattr(self.library, f"{name}Smooth{window}")(x, y, N)
                ours.append(y)
                theirs.append(signal.savgol_filter(x, window, degree, mode="interp"))
        return np.array(ours), np.array(theirs)

    def spectra(self, arguments, theirs, n=N):
        """What the companion prints of a record; theirs: a function of the samples, the rate and the weights."""
        x, rate, segment = noise(11, n) + 1.0, 360.0, 256 if "--average" in arguments or arguments[0] == "spectrogram" else n
        settings = ["--rate", str(rate), "--window", "hanning"] + ([] if segment == n else ["--segment", "256", "--no-mean"])
        result = subprocess.run([companion(self.library), *arguments, *settings], input="\n".join(map(repr, x.tolist())),
                                capture_output=True, text=True, check=True)
        ours = [float(line.split(",")[-1]) for line in result.stdout.splitlines()[1:]]
        return np.array(ours), theirs(x, rate, self.window(HANNING, segment))

    def derivative(self, h=1 / 360):
        x, y = noise(8), np.zeros(N)
        self.library.central_difference(x, y, N, h)
        return y, np.gradient(x, h)

    def roots(self):
        """The distance of each of our roots from the nearest of theirs, of 20 polynomials of degree 20."""
        distances = []
        for seed in range(20):
            c, zs = noise(seed, 21), np.zeros(20, complex)
            require(self.library.FindRoots(20, c.copy(), zs) == 20, "FindRoots: 20 roots")
            theirs = np.roots(c)
            distances += [np.min(abs(theirs - z)) / abs(z) for z in zs]
        return 1 + np.array(distances), np.ones(len(distances))

    def classical(self, rate=100.0):
        y, callback, steps = np.array([1.0, 0.0]), OdeFunction(self._swing), 1000
        self.library.rkf452(0.0, (steps + 0.5) / rate, rate, callback, y, 2, None, y)
        f = lambda v: np.array([v[1], -v[0]])
        z, h = np.array([1.0, 0.0]), 1 / rate
        for _ in range(steps):
            k1 = f(z)
            k2 = f(z + h / 2 * k1)
            k3 = f(z + h / 2 * k2)
            k4 = f(z + h * k3)
            z = z + h / 6 * (k1 + 2 * k2 + 2 * k3 + k4)
        return y, z

    @staticmethod
    def _swing(_t, y, _parameter, dydt):
        dydt[0], dydt[1] = y[1], -y[0]
        return 0

    def window(self, code, n=N, beta=0.0):
        w = np.ones(n)
        self.library.WindowData(w, n, code, 0.0, beta, 0)
        return w

    # ---- Where they differ ----

    def first_sample(self):
        """The error of the types that a constant does not pass unchanged, against lfiltic of each section."""
        x, worst = noise(9) + 1.0, 0.0
        for kind in (HIGH_PASS, BAND_PASS, NOTCH):
            f, sos = self.default(kind)
            y = x
            for b, a in ((row[:3], row[3:]) for row in sos):
                y = signal.lfilter(b, a, y, zi=signal.lfiltic(b, a, [x[0]] * 2, [x[0]] * 2))[0]
            worst = max(worst, difference(np.array([self.library.IIRFilter(f, value) for value in x]), y))
        return worst

    def oscillator(self, pieces, divisions, tolerance=1e-6, end=10.0):
        """Calls of f and error of rkf45 for y'' = -y."""
        calls = 0

        def f(t, y, parameter, dydt):
            nonlocal calls
            calls += 1
            return self._swing(t, y, parameter, dydt)

        y, callback = np.array([1.0, 0.0]), OdeFunction(f)
        for i in range(pieces):
            self.library.rkf45(i * end / pieces, (i + 1) * end / pieces, divisions, tolerance, callback, y, 2, None, y)
        return {"calls": calls, "error": float(np.max(abs(y - (math.cos(end), -math.sin(end)))))}


def order_agreement(library):
    """Of SciPy's least Butterworth order with ours."""
    ours = Requests(library).order(LOW_PASS, 40.0, 60.0, 1.0, 60.0, 360.0, BUTTERWORTH).poles
    require(ours == signal.buttord(40, 60, 1, 60, fs=360)[0], "buttord finds the same order")
    return f"the same, {ours}"


def peer_oscillator(tolerance=1e-6, end=10.0):
    answer = solve_ivp(lambda t, y: (y[1], -y[0]), (0, end), (1.0, 0.0), rtol=tolerance, atol=tolerance)
    return {"calls": answer.nfev, "error": float(np.max(abs(answer.y[:, -1] - (math.cos(end), -math.sin(end)))))}


def require_scalings(peers, n=1024, k=100, fs=360.0):
    """The table of amplitude, power and density, for a sine of amplitude 3 in bin k and for noise."""
    call, amplitude, t = peers.library, 3.0, np.arange(n)
    x, near = amplitude * np.sin(2 * np.pi * k * t / n), lambda a, b: abs(a / b - 1) < 1e-9

    def bins(x):
        re, im = x.copy(), np.zeros(len(x))
        call.FFT(re, im, len(x), 0)
        return np.hypot(re, im)

    v = bins(x)[k]
    require(near(2 * v, amplitude) and near(math.sqrt(2) * v, np.std(x)), "amplitude and rms of a line of FFT")
    for single in (call.SingleFreqDFT, call.Goertzel):
        require(near(2 * single(x, n, 2 * k / n) / n, amplitude), "amplitude of a single frequency")
    padded = np.concatenate([x, np.zeros(n)])
    require(near(2 * bins(padded)[2 * k] * 2 * n / n, amplitude), "zeros appended up to m points: 2 v m / n")
    data = noise(10, n)
    require(near(np.sum(bins(data) ** 2), np.mean(data**2)), "the squares of all bins add up to the mean square")

    for gain in (None, 1, 0):
        weights = np.ones(n)
        if gain is not None:
            call.WindowData(weights, n, HANNING, 0.0, 0.0, gain)
        divisor = {None: 1.0, 1: n * np.sum(weights**2) / np.sum(weights) ** 2, 0: np.mean(weights**2)}[gain]
        powers = np.mean([bins(weights * noise(seed, n))[1 : n // 2] ** 2 for seed in range(200)])
        density = 2 * powers * n / (fs * divisor)
        require(abs(density * fs / 2 / (1 / 3) - 1) < 0.01, f"one-sided density of noise, unityGain {gain}")


def require_words(peers):
    f, sos = peers.default(ALL_PASS)
    x = noise(5)
    y = [peers.library.IIRFilter(f, value) for value in x]
    theirs = signal.sosfilt(sos, x, zi=signal.sosfilt_zi(sos) * x[0])[0]
    require(difference(np.array(y), theirs) < 1e-13, "the first sample of an all-pass is sosfilt_zi")
    zs = np.zeros(3, complex)
    count = peers.library.FindRoots(3, np.array([0.0, 1, -3, 2]), zs)
    require(np.allclose(sorted(zs[:count].real), [0, 1, 2]), "FindRoots counts leading zeros")
    require(np.allclose(np.roots([0, 1, -3, 2]), [2, 1]), "numpy.roots does not")


def names(library):
    peers = Peers(library)
    require_words(peers)
    require_scalings(peers)
    n, cosine_window = 1000, lambda terms, m: windows.general_cosine(m + 2, terms)[1:-1]
    odd, even = (abs(peers.window(BLACKMAN_NUTTALL, m) - cosine_window(BLACKMAN_NUTTALL_TERMS, m)) for m in (1001, 1000))
    require(np.argmax(odd) == 500, "wkBlackmanNuttall of an odd n differs at its centre")
    (ours, theirs), inner = peers.zero_phase(2000), slice(100, -100)
    return {
        "rounding": ROUNDING,
        "unpadded": 32768,
        "agree": {
            "fft": agreement(*max((peers.transform("FFT", m) for m in (1024, 65536)), key=lambda pair: difference(*pair))),
            "inverse_fft": agreement(*peers.transform("FFT", 1024, 1)),
            "dft": agreement(*peers.transform("DFT", n)),
            "real_dft": agreement(*peers.real_transform()),
            "single": agreement(*peers.one_frequency("SingleFreqDFT", np.linspace(0.01, 0.99, 99))),
            "goertzel": agreement(*peers.one_frequency("Goertzel", np.linspace(0.1, 0.9, 81))),
            "butterworth": agreement(*peers.butterworth()),
            "layer": agreement(*peers.requested(BUTTERWORTH, lambda n, f: signal.butter(n, f, output="sos"))),
            "layer_chebyshev": agreement(*peers.requested(
                CHEBYSHEV, lambda n, f: signal.cheby1(n, 0.5, f, output="sos"), -0.5, ripple_db=0.5)),
            "layer_inverse": agreement(*peers.requested(
                INVERSE_CHEBYSHEV, lambda n, f: signal.cheby2(n, 60, f, output="sos"), -60.0, stop_db=60.0)),
            "layer_elliptic": agreement(*peers.requested(
                ELLIPTIC, lambda n, f: signal.ellip(n, 0.5, 60, f, output="sos"), -0.5, ripple_db=0.5, stop_db=60.0)),
            "layer_bessel": agreement(*peers.requested(
                BESSEL, lambda n, f: signal.bessel(n, f, output="sos", norm="mag"))),
            "order": order_agreement(library),
            "layer_filter": agreement(*peers.layer_run("filter")),
            "layer_steady": agreement(*peers.layer_run("steady")),
            "layer_both_ways": agreement(*peers.layer_run("both ways")),
            "layer_response": agreement(*peers.layer_response()),
            "layer_delay": agreement(*peers.layer_delay()),
            "block": agreement(*peers.block()),
            "stream": agreement(*peers.stream()),
            "zero_phase": agreement(*peers.zero_phase(padtype=None)),
            "response": agreement(*peers.response()),
            "smoothers": agreement(*peers.smoothers()),
            "periodogram": agreement(*peers.spectra(
                ["spectrum", "--density"], lambda x, fs, w: signal.periodogram(x, fs, window=w, detrend=False)[1])),
            "welch": agreement(*peers.spectra(
                ["spectrum", "--average", "--density"], lambda x, fs, w: signal.welch(x, fs, window=w)[1])),
            "welch_median": agreement(*peers.spectra(
                ["spectrum", "--average", "--median", "--density"],
                lambda x, fs, w: signal.welch(x, fs, window=w, average="median")[1])),
            "spectrogram": agreement(*peers.spectra(
                ["spectrogram", "--density"],
                lambda x, fs, w: signal.spectrogram(x, fs, window=w, noverlap=128)[2].T.ravel())),
            "power": agreement(*peers.spectra(
                ["spectrum", "--average", "--power"],
                lambda x, fs, w: signal.welch(x, fs, window=w, scaling="spectrum")[1])),
            "derivative": agreement(*peers.derivative()),
            "roots": agreement(*peers.roots()),
            "classical": agreement(*peers.classical()),
            "cosines": in_words(max(
                difference(peers.window(HANNING), windows.hann(n + 2)[1:-1]),
                difference(peers.window(HAMMING), windows.hamming(n + 2)[1:-1]),
                difference(peers.window(BLACKMAN), windows.blackman(n + 2)[1:-1]))),
            "blackman_harris": agreement(peers.window(BLACKMAN_HARRIS), windows.blackmanharris(n + 2)[1:-1]),
            "nuttall": agreement(peers.window(NUTTALL), cosine_window([0.355768, 0.487396, 0.144232, 0.012604], n)),
            "sinc": agreement(peers.window(SINC, beta=1.0), windows.lanczos(n + 2)[1:-1]),
            "kaiser": [agreement(peers.window(KAISER, beta=b), windows.kaiser(n + 2, b)[1:-1]) for b in (4.0, 8.0, 10.0)],
            "flat_top": agreement(peers.window(FLAT_TOP), cosine_window([1, 1.93293, 1.2835, 0.38131, 0.0293], n)),
            "gauss": agreement(peers.window(GAUSS), windows.gaussian(n, (n + 1) / 5.4366 / math.sqrt(2))),
            "triangle": agreement(peers.window(TRIANGLE, 1001), windows.triang(1001)),
        },
        "default_at_cutoff": Designer(library).design(LOW_PASS, 0.2).gain(0.2),
        "first_sample": in_words(peers.first_sample()),
        "zero_phase_inside": agreement(ours[inner], theirs[inner]),
        "zero_phase_ends": difference(ours, theirs),
        "blackman_nuttall": {
            "lower": float(np.median(windows.nuttall(n + 2)[1:-1] - peers.window(BLACKMAN_NUTTALL))),
            "even": in_words(float(np.max(even))), "odd": float(np.max(odd)),
        },
        "triangle_even": difference(peers.window(TRIANGLE, 64), windows.triang(64)),
        "sine": difference(peers.window(SINE, 64, 1.0), windows.cosine(64)),
        "oscillator": {"once": peers.oscillator(1, 100), "pieces": peers.oscillator(200, 1), "peer": peer_oscillator()},
        "bins": fixed(2 * 40 / 360, 4),
    }

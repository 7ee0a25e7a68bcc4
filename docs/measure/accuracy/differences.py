"""What differs from SciPy, NumPy and MATLAB: our values, and theirs."""

import binding
import cascade
import numpy as np
from binding import CentralDiffOnline, CplxD, MovingAverageOnline, TIIRFilter
from scipy import signal

from .iir import spec
from .kalman import tracking_model
from .matrix import householder, inverse, random_matrix
from .ode import problems, run_rkf45, run_scipy
from .report import noise
from .spectral import transformed


def show(values, digits="{:.3f}"):
    return ", ".join(digits.format(abs(v) if v == 0 else v) for v in values)


def db(sections):
    return f"{20 * np.log10(abs(signal.sosfreqz(sections, [np.pi * 0.2])[1][0])):.2f} dB"


def pole_radii(sections):
    return show(np.sqrt(sections[:, 5]), "{:.4f}")


def width(sections):
    f = np.linspace(0, 1, 20001)[:-1]
    return f"{np.ptp(f[abs(signal.sosfreqz(sections, np.pi * f)[1]) >= np.sqrt(0.5)]):.3f}"


def sections_of(coeffs):
    return np.array(binding.sections_of(coeffs))


def names(lib):
    """What the expressions of the template may use: all names here, and calls of the library."""

    def design(family, poles, kind=cascade.LOW_PASS, fc=0.2):
        return sections_of(lib.CalcIIRFilterCoeff(spec(kind, fc, family, poles)))

    def pole_radius(kind, fc, bandwidth):
        sections = sections_of(lib.CalcIIRFilterCoeff(spec(kind, fc, bandwidth=bandwidth)))
        return f"{max(abs(np.roots(row[3:])).max() for row in sections):.6f}"

    def default(kind=cascade.LOW_PASS):
        f = TIIRFilter()
        lib.initTIIRFilter(f, kind, 40.0, 360.0)
        return f

    def first_outputs(kind):
        f = default(kind)
        return show([lib.IIRFilter(f, 1.0) for _ in range(2)])

    def zero_phase(inner=slice(None), **options):
        f, x, y = default(), noise(11, 2000), np.zeros(2000)
        lib.IIRFilterZeroPhase(f, x, y, len(x))
        theirs = signal.sosfiltfilt(sections_of(f.Coeffs), x, **options)
        return f"{np.max(abs(y - theirs)[inner]) / np.max(abs(y)):.1g}"

    def unwritten_bin():
        re, im = np.full(9, 77.0), np.zeros(9)
        lib.RealSigDFT(noise(12, 9), re, im, 9)
        return show(re[5:6], "{:g}")

    def window(code, n, beta=0.0):
        w = np.ones(n)
        lib.WindowData(w, n, code, 0.0, beta, 0)
        return w

    def derivative_stream(x):
        d = CentralDiffOnline()
        lib.init_central_difference_online(d, 1.0)
        return show([lib.central_difference_online(d, v) for v in x], "{:g}")

    def first_average(length):
        s = MovingAverageOnline()
        lib.init_move_average_filter_online(s, length)
        return show([lib.move_average_filter_online(s, 1.0)])

    def roots(c):
        zs = np.zeros(len(c) - 1, complex)
        return show(zs[: lib.FindRoots(len(zs), np.array(c, float), zs)].real, "{:g}")

    def position_from_acceleration(dt):
        return show(tracking_model(lib, 1, dt, 0, 1, 1)[0][0, 2:], "{:g}")

    def signs(matrix):
        return " ".join("+" if d > 0 else "-" for d in np.diag(matrix))

    turn, five = np.exp(2j * np.pi * np.arange(8) / 8), random_matrix(4, 5, 5, 10.0)
    return {**vars(cascade), **globals(), **locals(), "abs": abs, "slice": slice}

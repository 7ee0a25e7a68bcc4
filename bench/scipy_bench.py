#!/usr/bin/python3
"""Filtering and frequency response against SciPy (apt-get install python3-scipy), timed in turn in one run.

    python3 bench/scipy_bench.py [libmensura.so]        default: build/release/libmensura.so

Prints the best of many rounds, per sample or per point.  Both sides run the default low-pass (40 Hz at 360 Hz, three
sections), and their results are compared first.  Ours write to arrays that are kept; SciPy makes its own in every call.
"""

import ctypes
import pathlib
import sys
import time

try:
    import numpy as np
    from scipy import signal
except ImportError as missing:
    sys.exit(f"{missing}: apt-get install python3-scipy, and run this with Debian's /usr/bin/python3")

SAMPLES = 1_000_000
POINTS = 100_000
ROUNDS = 40
EDGE = 1000  # samples at either end that the start of a filter may reach: its poles, |z| < 0.62, fade to 1e-16 in 80
SECTIONS = 50  # MAX_IIR_SECTIONS
LOW_PASS = 0  # ptLowPass
TOLERANCE = 1e-10  # absolute, of values up to about 1 whose sums are rounded in another order

Double, Int = ctypes.c_double, ctypes.c_int
Array = Double * SECTIONS
Doubles = np.ctypeslib.ndpointer(np.float64, flags="C_CONTIGUOUS")


class ProtoSpec(ctypes.Structure):
    _fields_ = [("Family", Int), ("NumPoles", Int), ("Ripple", Double), ("StopBandDb", Double), ("Gamma", Double)]


class IIRDesignSpec(ctypes.Structure):
    _fields_ = [
        ("PassType", Int),
        ("NormCutoff", Double),
        ("NormBandwidth", Double),
        ("GainDb", Double),
        ("Proto", ProtoSpec),
    ]


class IIRCoeffs(ctypes.Structure):
    _fields_ = [(name, Array) for name in ("a0", "a1", "a2", "a3", "a4", "b0", "b1", "b2", "b3", "b4")]
    _fields_ += [("NumSections", Int)]


class TIIRFilter(ctypes.Structure):
    _fields_ = [("Spec", IIRDesignSpec), ("Coeffs", IIRCoeffs)]
    _fields_ += [(name, Array) for name in ("RegX1", "RegX2", "RegY1", "RegY2")]
    _fields_ += [("Primed", Int)]


def load(path):
    """The library with the argument types that ctypes has to know."""
    try:
        library = ctypes.CDLL(str(path))
    except OSError as error:
        sys.exit(f"{error}\nbuild it first: cmake --preset release && cmake --build --preset release")
    for name, *arguments in (
        ("initTIIRFilter", ctypes.POINTER(TIIRFilter), Int, Double, Double),
        ("FilterWithIIR", Doubles, Doubles, Int, IIRCoeffs),
        ("IIRFilterZeroPhase", ctypes.POINTER(TIIRFilter), Doubles, Doubles, Int),
        ("IIRFreqResponse", IIRCoeffs, Int, Doubles, Doubles, Int),
    ):
        getattr(library, name).argtypes = arguments
        getattr(library, name).restype = None
    return library


def sections_of(coeffs):
    """The cascade as SciPy has it: b0 b1 b2 1 a1 a2 a row."""
    c = {name: np.array(getattr(coeffs, name)[: coeffs.NumSections]) for name in ("a0", "a1", "a2", "b0", "b1", "b2")}
    return np.column_stack(
        [c["a0"] * c["b0"], c["a0"] * c["b1"], c["a0"] * c["b2"], np.ones_like(c["a0"]), c["a1"], c["a2"]]
    )


def check(what, ours, peer):
    worst = np.max(np.abs(ours - peer))
    if not worst <= TOLERANCE:  # a NaN fails too
        sys.exit(f"{what}: ours and SciPy's differ by {worst:.3g}, more than {TOLERANCE:g}")


def compare(what, items, ours, peer):
    """Times both in turn and prints a line of the table."""
    best = {ours: float("inf"), peer: float("inf")}
    for _ in range(ROUNDS):
        for run in best:
            start = time.perf_counter()
            run()
            best[run] = min(best[run], time.perf_counter() - start)
    ours_ns, peer_ns = (best[run] / items * 1e9 for run in (ours, peer))
    print(f"{what:<48} {ours_ns:9.2f} {peer_ns:9.2f} {ours_ns / peer_ns:7.3f}", flush=True)


def main():
    repository = pathlib.Path(__file__).resolve().parent.parent
    library = load(sys.argv[1] if len(sys.argv) > 1 else repository / "build/release/libmensura.so")
    low_pass = TIIRFilter()
    library.initTIIRFilter(low_pass, LOW_PASS, 40.0, 360.0)
    coeffs, sections = low_pass.Coeffs, sections_of(low_pass.Coeffs)
    noise = np.random.default_rng(1).uniform(-1.0, 1.0, SAMPLES)
    out = np.zeros(SAMPLES)
    re, im = np.zeros(POINTS), np.zeros(POINTS)

    def respond():
        library.IIRFreqResponse(coeffs, coeffs.NumSections, re, im, POINTS)

    def respond_scipy():
        return signal.sosfreqz(sections, worN=POINTS)[1]  # 0 .. pi, pi left out, as ours

    def run_block():
        library.FilterWithIIR(noise, out, SAMPLES, coeffs)

    def run_block_scipy():
        return signal.sosfilt(sections, noise)

    def run_zero_phase():
        low_pass.Primed = 0
        library.IIRFilterZeroPhase(low_pass, noise, out, SAMPLES)

    def run_zero_phase_scipy():
        return signal.sosfiltfilt(sections, noise)

    print(f"{'best of ' + str(ROUNDS) + ' rounds':<48} {'ours ns':>9} {'SciPy ns':>9} {'ratio':>7}")
    respond()
    check("IIRFreqResponse", re + 1j * im, respond_scipy())
    compare("IIRFreqResponse / sosfreqz, per point", POINTS, respond, respond_scipy)
    run_block()
    check("FilterWithIIR", out, run_block_scipy())
    compare("FilterWithIIR / sosfilt, per sample", SAMPLES, run_block, run_block_scipy)
    run_zero_phase()
    inner = slice(EDGE, -EDGE)  # SciPy extends the signal at its ends, ours start from its first value
    check("IIRFilterZeroPhase", out[inner], run_zero_phase_scipy()[inner])
    compare("IIRFilterZeroPhase / sosfiltfilt, per sample", SAMPLES, run_zero_phase, run_zero_phase_scipy)


if __name__ == "__main__":
    main()

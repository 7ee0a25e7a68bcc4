#!/usr/bin/python3
"""Filtering and frequency response against SciPy (apt-get install python3-scipy), timed in turn in one run.

    python3 bench/scipy_bench.py [--json] [libmensura.so]        default: build/release/libmensura.so

Prints the medians of the quiet rounds (quiet.py), per sample or per point, as a table or in the format of Google Benchmark.
Both sides run the default low-pass or band-pass (40 Hz at 360 Hz, three or six sections), and their results are compared first.
Ours write to arrays that are kept; SciPy makes its own in every call.
"""

import argparse
import json
import pathlib
import statistics
import sys
import time

try:
    import numpy as np
    from scipy import signal

    sys.dont_write_bytecode = True  # no cache beside the sources
    sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "docs/measure"))
    from binding import TIIRFilter, load, sections_of
    from quiet import measured
except ImportError as missing:
    sys.exit(f"{missing}: apt-get install python3-scipy, and run this with Debian's /usr/bin/python3")

SAMPLES = 1_000_000
POINTS = 100_000
ROUNDS = 20
EDGE = 1000  # samples not compared at either end, where the start of a filter shows: its poles, |z| < 0.62, fade to 1e-16 in 80
LOW_PASS, BAND_PASS = 0, 2  # ptLowPass, ptBandPass
ODD = 1  # MENSURA_SOS_ENDS_ODD
TOLERANCE = 1e-10  # absolute, of values up to about 1 whose sums are rounded in another order


def check(what, ours, peer):
    worst = np.max(np.abs(ours - peer))
    if not worst <= TOLERANCE:  # a NaN fails too
        sys.exit(f"{what}: ours and SciPy's differ by {worst:.3g}, more than {TOLERANCE:g}")


def seconds(run):
    start = time.thread_time()  # turns of other programs on this core do not count
    run()
    return time.thread_time() - start


def compare(what, items, ours, peer):
    """Times both in turn."""
    rounds = [measured([lambda: seconds(ours), lambda: seconds(peer)]) for _ in range(ROUNDS)]
    counted = [times for times, quiet in rounds if quiet] or [times for times, _ in rounds]
    ours_ns, peer_ns = (statistics.median(times) / items * 1e9 for times in zip(*counted))
    return {"name": what, "ours_ns": ours_ns, "peer_ns": peer_ns, "ratio": statistics.median(a / b for a, b in counted),
            "quiet": sum(quiet for _, quiet in rounds) / ROUNDS}


def main():
    repository = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser()
    parser.add_argument("--json", action="store_true")
    parser.add_argument("library", nargs="?", default=repository / "build/release/libmensura.so")
    arguments = parser.parse_args()
    library = load(arguments.library)
    low_pass = TIIRFilter()
    library.initTIIRFilter(low_pass, LOW_PASS, 40.0, 360.0)
    coeffs, sections = low_pass.Coeffs, np.array(sections_of(low_pass.Coeffs))
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

    sos, state = np.ascontiguousarray(sections), np.zeros(4 * len(sections))
    work = np.zeros(4 * len(sections) + 2 * library.mensura_sos_extension(sos, len(sections)))

    def run_sections():
        library.mensura_sos_filter(sos, len(sections), state, noise, 1, out, 1, SAMPLES)

    def run_both_ways():
        library.mensura_sos_filtfilt(sos, len(sections), ODD, -1, noise, 1, out, 1, SAMPLES, work)

    respond()
    check("IIRFreqResponse", re + 1j * im, respond_scipy())
    table = [compare("IIRFreqResponse_against_sosfreqz", POINTS, respond, respond_scipy)]
    run_block()
    check("FilterWithIIR", out, run_block_scipy())
    table.append(compare("FilterWithIIR_against_sosfilt", SAMPLES, run_block, run_block_scipy))
    run_zero_phase()
    inner = slice(EDGE, -EDGE)  # SciPy extends the signal at its ends, ours start from its first value
    check("IIRFilterZeroPhase", out[inner], run_zero_phase_scipy()[inner])
    table.append(compare("IIRFilterZeroPhase_against_sosfiltfilt", SAMPLES, run_zero_phase, run_zero_phase_scipy))

    band_pass = TIIRFilter()
    library.initTIIRFilter(band_pass, BAND_PASS, 40.0, 360.0)
    six = np.array(sections_of(band_pass.Coeffs))

    def run_six():
        library.FilterWithIIR(noise, out, SAMPLES, band_pass.Coeffs)

    def run_six_scipy():
        return signal.sosfilt(six, noise)

    def run_six_both_ways():
        band_pass.Primed = 0
        library.IIRFilterZeroPhase(band_pass, noise, out, SAMPLES)

    def run_six_both_ways_scipy():
        return signal.sosfiltfilt(six, noise)

    run_six()
    check("FilterWithIIR, six sections", out, run_six_scipy())
    table.append(compare("FilterWithIIR_six_sections_against_sosfilt", SAMPLES, run_six, run_six_scipy))
    run_six_both_ways()
    check("IIRFilterZeroPhase, six sections", out[inner], run_six_both_ways_scipy()[inner])
    table.append(compare("IIRFilterZeroPhase_six_sections_against_sosfiltfilt", SAMPLES, run_six_both_ways,
                         run_six_both_ways_scipy))

    run_sections()
    check("mensura_sos_filter", out, run_block_scipy())
    table.append(compare("sos_filter_against_sosfilt", SAMPLES, run_sections, run_block_scipy))
    run_both_ways()
    check("mensura_sos_filtfilt", out, run_zero_phase_scipy())
    table.append(compare("sos_filtfilt_against_sosfiltfilt", SAMPLES, run_both_ways, run_zero_phase_scipy))

    if arguments.json:
        print(json.dumps({"benchmarks": table}))
        return
    print(f"{'medians of ' + str(ROUNDS) + ' rounds':<48} {'ours ns':>9} {'SciPy ns':>9} {'ratio':>7}")
    for row in table:
        print(f"{row['name']:<48} {row['ours_ns']:9.2f} {row['peer_ns']:9.2f} {row['ratio']:7.3f}")


if __name__ == "__main__":
    main()

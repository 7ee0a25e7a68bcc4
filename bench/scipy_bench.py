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


def default_filter(library, pass_type):
    """The filter and its sections, as SciPy has them."""
    made = TIIRFilter()
    library.initTIIRFilter(made, pass_type, 40.0, 360.0)
    return made, np.array(sections_of(made.Coeffs))


def compare_responses(library):
    low_pass, sections = default_filter(library, LOW_PASS)
    coeffs = low_pass.Coeffs
    re, im = np.zeros(POINTS), np.zeros(POINTS)

    def respond():
        library.IIRFreqResponse(coeffs, coeffs.NumSections, re, im, POINTS)

    def respond_scipy():
        return signal.sosfreqz(sections, worN=POINTS)[1]  # 0 .. pi, pi left out, as ours

    respond()
    check("IIRFreqResponse", re + 1j * im, respond_scipy())
    yield compare("IIRFreqResponse_against_sosfreqz", POINTS, respond, respond_scipy)


def compare_records(library, noise, out, pass_type, suffix=""):
    made, sections = default_filter(library, pass_type)
    inner = slice(EDGE, -EDGE)  # SciPy extends the signal at its ends, ours start from its first value

    def run_block():
        library.FilterWithIIR(noise, out, SAMPLES, made.Coeffs)

    def run_block_scipy():
        return signal.sosfilt(sections, noise)

    def run_zero_phase():
        made.Primed = 0
        library.IIRFilterZeroPhase(made, noise, out, SAMPLES)

    def run_zero_phase_scipy():
        return signal.sosfiltfilt(sections, noise)

    run_block()
    check(f"FilterWithIIR{suffix}", out, run_block_scipy())
    yield compare(f"FilterWithIIR{suffix}_against_sosfilt", SAMPLES, run_block, run_block_scipy)
    run_zero_phase()
    check(f"IIRFilterZeroPhase{suffix}", out[inner], run_zero_phase_scipy()[inner])
    yield compare(f"IIRFilterZeroPhase{suffix}_against_sosfiltfilt", SAMPLES, run_zero_phase, run_zero_phase_scipy)


def compare_sections(library, noise, out):
    sections = np.ascontiguousarray(default_filter(library, LOW_PASS)[1])
    count = len(sections)
    state = np.zeros(4 * count)
    work = np.zeros(4 * count + 2 * library.mensura_sos_extension(sections, count))

    def run_sections():
        library.mensura_sos_filter(sections, count, state, noise, 1, out, 1, SAMPLES)

    def run_sections_scipy():
        return signal.sosfilt(sections, noise)

    def run_both_ways():
        library.mensura_sos_filtfilt(sections, count, ODD, -1, noise, 1, out, 1, SAMPLES, work)

    def run_both_ways_scipy():
        return signal.sosfiltfilt(sections, noise)

    run_sections()
    check("mensura_sos_filter", out, run_sections_scipy())
    yield compare("sos_filter_against_sosfilt", SAMPLES, run_sections, run_sections_scipy)
    run_both_ways()
    check("mensura_sos_filtfilt", out, run_both_ways_scipy())
    yield compare("sos_filtfilt_against_sosfiltfilt", SAMPLES, run_both_ways, run_both_ways_scipy)


def main():
    repository = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser()
    parser.add_argument("--json", action="store_true")
    parser.add_argument("library", nargs="?", default=repository / "build/release/libmensura.so")
    arguments = parser.parse_args()
    library = load(arguments.library)
    noise = np.random.default_rng(1).uniform(-1.0, 1.0, SAMPLES)
    out = np.zeros(SAMPLES)  # one for all, because the distance from its input in memory shows in the times
    table = [
        *compare_responses(library),
        *compare_records(library, noise, out, LOW_PASS),
        *compare_records(library, noise, out, BAND_PASS, "_six_sections"),
        *compare_sections(library, noise, out),
    ]

    if arguments.json:
        print(json.dumps({"benchmarks": table}))
        return
    print(f"{'medians of ' + str(ROUNDS) + ' rounds':<48} {'ours ns':>9} {'SciPy ns':>9} {'ratio':>7}")
    for row in table:
        print(f"{row['name']:<48} {row['ours_ns']:9.2f} {row['peer_ns']:9.2f} {row['ratio']:7.3f}")


if __name__ == "__main__":
    main()

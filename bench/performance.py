#!/usr/bin/python3
"""docs/performance.md: every benchmark of a build tree, ours and the peers' times.

    cmake --build --preset release --target performance          writes the page
    python3 bench/performance.py build/release [rounds] > page   the same by hand

A benchmark that TABLE does not name is an error, so that none is left out.
"""

import datetime
import json
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
PEERS = """libliquid-dev libgsl-dev libfftw3-dev libkissfft-dev libeigen3-dev libopenblas-dev python3-numpy
    python3-scipy libbenchmark-dev""".split()


class Row(NamedTuple):
    what: str
    peer: str
    bar: float | None = None  # the largest ratio asked for
    reason: str = ""  # why it is not always reached
    limit: float | None = None  # of ours, in ns or MiB


FEEDBACK = "A filter is bound by its own feedback: each section waits for its last output to come back from memory."
UNFUSED = FEEDBACK + " The loop may fuse products and sums, which would change our bits."
UNPLANNED = "The peer has planned beforehand; `FFT` keeps nothing, and makes its sines and cosines in every call."
PRODUCTS = "On top of the cosines come 65536 products and their way through memory."
DIVIDER = "It is bound by the divider."
TEXTBOOK = "Against loops that sum in registers, as these do, 28 to 40 times as fast has been seen."
LIQUID, LOOP, EIGEN = "liquid-dsp (single precision)", "a loop with a table of cosines", "Eigen (sizes at run time)"
FFTW, KISS, REPLANNED = "FFTW, planned", "KissFFT, planned", "KissFFT, planned in every call"
PIVOTS, COSINES, COPY = "Eigen (pivoting by columns)", "the cosines of one half alone", "a memory copy"
BLAS, BUTTERWORTH = "OpenBLAS `dgemm`, one thread", "our Butterworth design, 8 poles"


def sizes(name, what, peer, bars, reason=""):
    return {f"{name}/{n}": Row(what.format(n), peer, bar, reason) for n, bar in bars.items()}


FFT, FFT_SIZES = "`FFT`, {} points", (64, 1024, 4096, 65536, 1048576)
WINDOW = "`WindowData`, {}, {{}} points, per point"
PRODUCT, INVERSE = "`rmatrix_multi_ptr`, {0} x {0}", "`rmatrix_inverse_ptr`, {0} x {0}"
TABLE = {
    "IIR filters, three sections unless said": {
        "IIRFilter_against_loop_over_records": Row("`IIRFilter`, per sample", "a loop over records", 0.80, UNFUSED),
        "IIRFilter_against_loop_over_arrays": Row("`IIRFilter`, per sample", "a loop over arrays", 0.80, UNFUSED),
        "IIRFilters_ten_channels_against_IIRFilter":
            Row("`IIRFilters`, 10 channels, per channel and sample", "`IIRFilter` alone", 0.50, FEEDBACK),
        "FilterWithIIR_against_sosfilt": Row("`FilterWithIIR`, per sample", "SciPy `sosfilt`", 0.60),
        "IIRFilterZeroPhase_against_sosfiltfilt": Row("`IIRFilterZeroPhase`, per sample", "SciPy `sosfiltfilt`", 0.52),
        "IIRFreqResponse_against_sosfreqz": Row("`IIRFreqResponse`, per frequency", "SciPy `sosfreqz`", 0.25),
        "Default_design_against_liquid": Row("default low-pass design", LIQUID, 0.85),
        "Elliptic_band_pass_6_design_against_liquid": Row("elliptic band-pass design, 6 poles", LIQUID, 12),
        "Chebyshev_8_design_against_Butterworth_8": Row("Chebyshev design, 8 poles", BUTTERWORTH, 30),
    },
    "Spectra": {
        **sizes("FFT_against_FFTW", FFT, FFTW, dict(zip(FFT_SIZES, (1.25, 1.15, 1.10, 0.95, 0.65))), UNPLANNED),
        **sizes("FFT_against_KissFFT", FFT, KISS, dict.fromkeys(FFT_SIZES, 0.25), UNPLANNED),
        **sizes("FFT_against_KissFFT_planned_in_the_call", FFT, REPLANNED, dict.fromkeys(FFT_SIZES, 0.25)),
        **sizes("DFT_against_loop", "`DFT`, {} points", LOOP, {1000: 0.60}),
        **sizes("RealSigDFT_against_loop", "`RealSigDFT`, {} points", LOOP, {1000: 0.60}),
        **sizes("Hanning_window_against_cosines", WINDOW.format("Hanning"), COSINES, {65536: 1.06}, PRODUCTS),
        **sizes("Kaiser_window_against_cosines", WINDOW.format("Kaiser"), COSINES, {65536: None}),
    },
    "Polynomial roots": sizes(
        "FindRoots_against_gsl", "`FindRoots`, 32 random polynomials, degree {}", "GSL (QR in double)", {20: 1.65, 40: 1.65}
    ),
    "Matrices, Kalman filter": {
        **sizes("rmatrix_multi_ptr_against_Eigen", PRODUCT, EIGEN, {4: 1.05, 9: 0.62, 100: 0.80}),
        "rmatrix_multi_ptr_against_OpenBLAS": Row(PRODUCT.format(100), BLAS, 1.00),
        **sizes("rmatrix_inverse_ptr_against_Eigen", INVERSE, PIVOTS, {9: 0.72, 100: 0.95}),
        "householder_of_noise_against_textbook":  # 35 times as fast
            Row("`householder`, 168 x 84, noise", "plain loops", 0.0286, TEXTBOOK),
        "householder_of_i_plus_j_against_textbook": Row("`householder`, 168 x 84, rank 2", "plain loops", 0.0286),
        "KalmanFilter_update_against_Eigen":
            Row("`KalmanFilter_update`, 9 states, 3 measurements", "Eigen (sizes known to the compiler)", 0.80),
    },
    "Streams, smoothing": {
        "cubicSmooth7_against_memcpy": Row("`cubicSmooth7`, 1e6 points, per point", COPY, 1.8),
        "linearSmooth11_against_memcpy": Row("`linearSmooth11`, 1e6 points, per point", COPY, 1.7),
        "central_difference_against_memcpy": Row("`central_difference`, 1e6 points, per point", COPY, 1.2, DIVIDER),
        "move_average_filter_online_against_ordered_sum":
            Row("`move_average_filter_online`, length 1000", "one ordered sum"),
        "move_average_filter_onlines_ten_channels_against_one_by_one":
            Row("`move_average_filter_onlines`, 10 channels, length 1000, per channel", "one by one", 0.30),
    },
    "Differential equations": {
        "rkf45_quiet_against_gsl": Row("`rkf45`, 3 components, an attempt", "GSL (its step alone)", 1.10),
        "rkf45_step_control_at_work_against_gsl": Row("the same, step control at work", "GSL (its step alone)", 1.20),
    },
    "The companion": {
        "mensura_filter_time": Row("`mensura filter`, 1e6 rows of a CSV", "NumPy, SciPy", 1.00, limit=1.5e9),
        "mensura_filter_memory": Row("the same, peak of its memory", "NumPy, SciPy", limit=64),
    },
}


class Measured(NamedTuple):
    ours: float
    peer: float
    ratio: float
    unit: str


def run(command):
    """The benchmarks of a program by name."""
    print(" ".join(map(str, command)), file=sys.stderr, flush=True)
    found = {}
    for b in json.loads(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)["benchmarks"]:
        unit = "ns" if "ours_ns" in b else "MiB"
        name = re.sub("/(iterations|manual_time).*", "", b["name"])
        found[name] = Measured(b[f"ours_{unit}"], b[f"peer_{unit}"], b["ratio"], unit)
    if unknown := found.keys() - {name for rows in TABLE.values() for name in rows}:
        sys.exit(f"no row in TABLE for {', '.join(sorted(unknown))}")
    return found


def commands(build):
    yield from ([path, "--benchmark_format=json"] for path in sorted(build.glob("bench/*_bench")))
    yield [sys.executable, HERE / "scipy_bench.py", "--json", build / "libmensura.so"]
    if (tool := build / "cli/mensura").exists():
        yield [sys.executable, HERE / "cli_bench.py", "--json", tool]


def quantity(value, unit):
    for larger in ("µs", "ms", "s") if unit == "ns" else ():
        if value >= 1000:
            value, unit = value / 1000, larger
    return f"{float(f'{value:.3g}'):g} {unit}"


def line(row, runs, reasons):
    if not runs:
        return f"| {row.what} | | {row.peer} | | | {row.bar or ''} | **not measured**: the peer or ours was not there |"
    ours, peer = (statistics.median(r[i] for r in runs) for i in (0, 1))
    unit, ratios = runs[0].unit, [float(f"{r.ratio:.3g}") for r in runs]
    ratio = statistics.median(ratios)
    asked = [(ratio, row.bar, f"{ratio:g}", f"{row.bar:g}")] if row.bar else []
    if row.limit:
        asked.append((ours, row.limit, quantity(ours, unit), quantity(row.limit, unit)))
    over = [f"measured {value}, asked {bar}" for number, most, value, bar in asked if number > most]
    verdict = f"**over: {', '.join(over)}**" if over else "met" if asked else ""
    if over and row.reason:
        reasons.setdefault(row.reason, len(reasons) + 1)
        verdict += f" ({reasons[row.reason]})"
    elif over:
        verdict += ", no reason known"
    return (f"| {row.what} | {quantity(ours, unit)} | {quantity(peer, unit)}, {row.peer} | {ratio:g} | "
            f"{min(ratios):g} to {max(ratios):g} | {', '.join(bar for *_, bar in asked)} | {verdict} |")


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.strip()


def head(build, rounds):
    cache = dict(re.findall(r"^(\w+):\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.M))
    kind = cache["CMAKE_BUILD_TYPE"]
    flags = " ".join((cache["CMAKE_CXX_FLAGS"] + " " + cache.get(f"CMAKE_CXX_FLAGS_{kind.upper()}", "")).split())
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    system = re.search(r'PRETTY_NAME="(.*)"', pathlib.Path("/etc/os-release").read_text())
    packages = output_of("dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *PEERS).splitlines()
    return f"""# How fast it is

Made on {datetime.date.today()} by `cmake --build --preset release --target performance`.

- machine: {model[1] if model else platform.machine()}, {os.cpu_count()} cores; Linux {platform.release()}
- system: {system[1] if system else "unknown"}
- compiler: {output_of(cache["CMAKE_CXX_COMPILER"], "--version").splitlines()[0]}; {kind}, `{flags}`
- peers compiled here (Eigen, loops of filters): `-O3 -march={cache["MENSURA_PEER_ARCH"]} -ffp-contract=fast`
- packages: {", ".join(packages) or "unknown"}

Every program ran {rounds} times, in turn with the others, and in each run ours and the peer take turns. Times
are medians over the runs, and so is the ratio of ours to the peer's (below 1 is faster), taken run by run; it is compared
with what is asked, and the column beside it shows the least and the largest. See `bench/compare.h` for how a run measures.
"""


def main():
    build, rounds = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2]) if len(sys.argv) > 2 else 3
    runs = [{name: m for command in commands(build) for name, m in run(command).items()} for _ in range(rounds)]
    reasons, page = {}, [head(build, rounds)]
    for family, rows in TABLE.items():
        page += [f"## {family}\n", "| what | ours | peer | ratio | runs | asked | |", "|---|--:|--:|--:|---|--:|---|"]
        page += [line(row, [r[name] for r in runs if name in r], reasons) for name, row in rows.items()]
        page.append("")
    page += [f"({number}) {reason}\n" for reason, number in reasons.items()]
    print("\n".join(page).rstrip())


if __name__ == "__main__":
    main()

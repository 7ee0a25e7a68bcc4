"""Every benchmark: what it measures, against which peer, its bar; and what it measured last.

`results.json` beside this file is what `bench/performance.py` measured last, `targets.json` has the bars: the ratios that
were reached when they were set, plus 5 %.  Pages take their numbers from here:

    SECTIONS              {title: {name of a benchmark: Row}}
    ROWS                  {name of a benchmark: Row}
    load()                {"conditions": {...}, "benchmarks": {name: {"unit", "ours", "peer", "ratios", "quiet"}}}; a row
                          that was measured elsewhere than the others has its "machine"
    growth()              the table of growth.json, which `bench/growth.py` measured last
    tables(results)       all of it as Markdown: tables under headings, then the reasons as notes
    quantity(3880, "ns")  "3.88 µs"
    ratio(measured)       the median of its ratios
"""

import itertools
import json
import math
import pathlib
import statistics
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
RESULTS, TARGETS_FILE, GROWTH = HERE / "results.json", HERE / "targets.json", HERE / "growth.json"
TARGETS = json.loads(TARGETS_FILE.read_text()) if TARGETS_FILE.exists() else {}
LEAST_QUIET = 0.25  # of the rounds of a row; with fewer it is not to be trusted


class Row(NamedTuple):
    what: str
    peer: str
    reason: str = ""  # why it is not less
    goal: float | None = None  # the largest ratio that is good enough; without one, the bar is in TARGETS
    limit: float | None = None  # the most that ours may take, in ns or MiB
    items: int = 0  # of a job of the companion: numbers, or samples of sound


# Of an Intel Xeon at 3.6 GHz unless another processor is named.
FEEDBACK = ("A section's output waits for its last one to come back from memory, then for a product and two differences: "
            "18 cycles a sample on an AMD Zen 3 (9 to come back, 9 to compute), 17 on the Intel Xeon, where it takes 5 ns.")
UNFUSED = FEEDBACK + " The loop may fuse products and sums, which would change our bits. The aim was 0.80."
RECORDS = ("Channels in pairs are bound by their records in memory: 62 instructions a channel and sample, of which 24 load "
           "and 12 store. The aim was 0.50.")
RECURRENCE = ("In registers the recurrence is a product and two differences that wait for each other: 8 cycles or 2.25 ns a "
              "sample on the Intel Xeon, 3.3 ns on an AMD Zen 3. `mensura_sos_filter` takes 2.24 ns for up to four "
              "sections.")
GUARD = (RECURRENCE + " `FilterWithIIR` keeps the largest magnitude of every sum as well, to stop numbers that grow without "
         "bound.")
LANES = ("One filter alone already runs its sections side by side in lanes and is bound by its feedback; channels are "
         "bound by 27 products and sums of four lanes a sample. The aim was 0.35.")
SHORT = "Each call of 8 samples loads and stores the state, and fills and empties the sections."
POLES = "The poles are roots of a polynomial, found by `FindRoots`; those of Butterworth are given by a formula."
CORNER = "The corner is searched for on the response; Butterworth and the peer need no search."
EXTENDED = "Poles, zeros and edges are found in extended precision."
UNPLANNED = ("The peer has planned beforehand, and keeps its plan; `FFT` keeps nothing. Up to 16384 points its sines and "
             "cosines are data of the library; beyond, three of four come from libm, 13 % of the time at 65536 points. At "
             "2^20 points memory binds both: on an AMD EPYC the ratio has been 0.59.")
PRODUCTS = "In addition to the cosines it computes 65536 products and reads and writes the data. The aim was 1.06."
POWERS = "A point takes eight powers of libm, whose last bits the results hang on."
FUSED = "The peer fuses products and sums, on this processor in vectors of eight, which would change our bits."
PEAK = ("At 0.76 cycles for four products and four sums it reaches 96 % of what the Intel Xeon can multiply and then add "
        "(0.73 cycles), 86 % on an AMD Zen 3. " + FUSED + " The aims were 0.80 (Eigen) and 1.00 (OpenBLAS).")
DIVIDER = "The speed of division limits it."
MEMORY = "It is bound by memory as the copy is: both read and write the whole record."
WHOLE = ("Both ways filters twice, and holds the whole sound as doubles: it reads, keeps and passes 460 MB five times. "
         "Huge pages made it twice as slow. The aim was 1.5.")
DIGITS = "A third of the time goes into the shortest digits of each number, 44 ns each, a sixth into reading them."
TEXTBOOK = ("The plain loops sum in registers. 35 times as fast was the aim; 28 to 40 times has been measured on AMD EPYC, "
            "where the loops take 530 ms.")
UNROLLED = "The peer's compiler knows the sizes, unrolls all loops and may fuse products and sums; ours reads sizes in every call."
WINDOWS = ("Two additions start in a cycle; above 600 samples a channel the windows of ten channels come from the second "
           "cache.")
ORDERED = "Each addition of an ordered sum waits for the one before."
LIQUID, LOOP, EIGEN = "liquid-dsp (single precision)", "a loop with a table of cosines", "Eigen (sizes at run time)"
FIXED_EIGEN = "Eigen (sizes known to the compiler)"
FFTW, KISS, REPLANNED = "FFTW, planned", "KissFFT, planned", "KissFFT, planned in every call"
PIVOTS, COSINES, COPY = "Eigen (pivoting by columns)", "the cosines of one half alone", "a memory copy"
SCIPY, GSL = "NumPy, SciPy", "GSL (QR in double)"
X87 = ("A step is two recurrences in 80-bit arithmetic, each a product and two differences that wait for each other, 10 cycles a "
       "coefficient, and 2.5 to 3 ns with the store of 80 bits.")
ROUNDED = ("The iteration stays at the size of its rounding errors until a step happens to fall below the limit: 1178 passes "
           "of up to 40 steps from 62 starts for Wilkinson's polynomial, no two of which begin alike; for Papoulis 38 of 60 "
           "passes from one start, which fails. The results hang on each of these steps, so none can be left out. " + X87)
BLAS, BUTTERWORTH = "OpenBLAS `dgemm`, one thread", "our Butterworth design, 8 poles"


def sizes(name, what, peer, sizes, reason="", goals=()):
    """A row for each size; `goals` in the same order."""
    return {f"{name}/{n}": Row(what.format(n), peer, reason, goal)
            for n, goal in itertools.zip_longest(sizes, goals)}


FFT, FFT_SIZES = "`FFT`, {} points", (64, 1024, 4096, 65536, 1048576)
WINDOW = "`WindowData`, {}, {{}} points, per point"
PRODUCT, INVERSE = "`rmatrix_multi_ptr`, {0} x {0}", "`rmatrix_inverse_ptr`, {0} x {0}"
CELLS, SOUND = 1_000_000, 2 * 600 * 48_000  # numbers of a table, samples of a sound
SECTIONS = {
    "IIR filters, three sections unless stated otherwise": {
        "IIRFilter_against_loop_over_records": Row("`IIRFilter`, per sample", "a loop over records", UNFUSED),
        "IIRFilter_against_loop_over_arrays": Row("`IIRFilter`, per sample", "a loop over arrays", UNFUSED),
        "IIRFilters_two_channels_against_IIRFilter":
            Row("`IIRFilters`, 2 channels, per channel and sample", "`IIRFilter` alone", FEEDBACK),
        "IIRFilters_three_channels_against_IIRFilter":
            Row("`IIRFilters`, 3 channels, per channel and sample", "`IIRFilter` alone", FEEDBACK),
        "IIRFilters_ten_channels_against_IIRFilter":
            Row("`IIRFilters`, 10 channels, per channel and sample", "`IIRFilter` alone", RECORDS),
        "FilterWithIIR_against_sosfilt": Row("`FilterWithIIR`, per sample", "SciPy `sosfilt`", GUARD),
        "IIRFilterZeroPhase_against_sosfiltfilt": Row("`IIRFilterZeroPhase`, per sample", "SciPy `sosfiltfilt`"),
        "FilterWithIIR_six_sections_against_sosfilt":
            Row("`FilterWithIIR`, six sections, per sample", "SciPy `sosfilt`", GUARD),
        "IIRFilterZeroPhase_six_sections_against_sosfiltfilt":
            Row("`IIRFilterZeroPhase`, six sections, per sample", "SciPy `sosfiltfilt`"),
        "IIRFreqResponse_against_sosfreqz": Row("`IIRFreqResponse`, per frequency", "SciPy `sosfreqz`"),
        "initTIIRFilters_ten_against_initTIIRFilter":
            Row("`initTIIRFilters`, 10 low-pass filters, per filter", "`initTIIRFilter`"),
        "Default_design_against_liquid": Row("default low-pass design", LIQUID),
        "Elliptic_band_pass_6_design_against_liquid": Row("elliptic band-pass design, 6 poles", LIQUID, CORNER),
        "Chebyshev_8_design_against_Butterworth_8": Row("Chebyshev design, 8 poles", BUTTERWORTH, CORNER),
        "Bessel_8_design_against_Butterworth_8": Row("Bessel design, 8 poles", BUTTERWORTH, POLES),
        "Papoulis_20_design_against_Butterworth_8": Row("Papoulis design, 20 poles", BUTTERWORTH, ROUNDED),
    },
    "Filters as requested, three sections": {
        "sos_filter_against_FilterWithIIR": Row("`mensura_sos_filter`, a long block, per sample", "`FilterWithIIR`", RECURRENCE),
        "sos_filter_against_contracted_transposed_form":
            Row("the same", "a loop, transposed form II, products and sums fused"),
        "sos_filter_against_liquid": Row("the same", LIQUID),
        "sos_filter_against_sosfilt": Row("the same", "SciPy `sosfilt`"),
        "sos_filter_8_samples_a_call_against_long_block":
            Row("`mensura_sos_filter`, 8 samples a call, per sample", "one long block", SHORT, limit=15),
        "sos_filter_channels_8_interleaved_against_one_by_one":
            Row("`mensura_sos_filter_channels`, 8 interleaved channels, per channel and sample", "one by one", LANES),
        "sos_filter_channels_8_planar_against_one_by_one":
            Row("the same, 8 planar channels", "one by one"),
        "sos_filtfilt_against_sosfiltfilt": Row("`mensura_sos_filtfilt`, per sample", "SciPy `sosfiltfilt`"),
        "sos_design_Butterworth_6_against_CalcIIRFilterCoeff":
            Row("`mensura_sos_design`, Butterworth, 6 poles", "`CalcIIRFilterCoeff`", EXTENDED, limit=3000),
        "sos_design_elliptic_6_against_CalcIIRFilterCoeff":
            Row("`mensura_sos_design`, elliptic, 6 poles", "`CalcIIRFilterCoeff`", EXTENDED, limit=10000),
    },
    "Spectra": {
        **sizes("FFT_against_FFTW", FFT, FFTW, FFT_SIZES, UNPLANNED, (0.70, 0.72, 0.75, 0.82, 0.60)),
        **sizes("FFT_against_KissFFT", FFT, KISS, FFT_SIZES, UNPLANNED, [0.25] * 5),
        **sizes("FFT_against_KissFFT_planned_in_the_call", FFT, REPLANNED, FFT_SIZES),
        **sizes("DFT_against_loop", "`DFT`, {} points", LOOP, [1000]),
        **sizes("RealSigDFT_against_loop", "`RealSigDFT`, {} points", LOOP, [1000]),
        **sizes("Hanning_window_against_cosines", WINDOW.format("Hanning"), COSINES, [65536], PRODUCTS),
        **sizes("Kaiser_window_against_cosines", WINDOW.format("Kaiser"), COSINES, [65536], POWERS),
    },
    "Polynomial roots": {
        **sizes("FindRoots_against_gsl", "`FindRoots`, 32 random polynomials, degree {}", GSL, [20, 40], X87),
        **sizes("FindRoots_of_Wilkinson_against_gsl", "`FindRoots`, Wilkinson's polynomial, degree {}", GSL, [100], ROUNDED),
    },
    "Matrices, Kalman filter": {
        **sizes("rmatrix_multi_ptr_against_Eigen", PRODUCT, EIGEN, [4, 9]),
        **sizes("rmatrix_multi_ptr_against_Eigen", PRODUCT, EIGEN, [100], PEAK),
        "rmatrix_multi_ptr_against_OpenBLAS": Row(PRODUCT.format(100), BLAS, PEAK),
        **sizes("rmatrix_inverse_ptr_against_Eigen", INVERSE, PIVOTS, [9, 100], FUSED),
        "householder_of_noise_against_textbook":
            Row("`householder`, 168 x 84, noise", "plain loops", TEXTBOOK),
        **sizes("householder_square_against_textbook", "`householder`, {0} x {0}, noise", "plain loops", [4, 16]),
        "householder_of_i_plus_j_against_textbook": Row("`householder`, 168 x 84, rank 2", "plain loops"),
        "KalmanFilter_update_against_Eigen":
            Row("`KalmanFilter_update`, 9 states, 3 measurements", FIXED_EIGEN),
        **sizes("KalmanFilter_update_of_two_measurements_against_Eigen",
                "`KalmanFilter_update`, {} states, 2 measurements", FIXED_EIGEN, [4, 8], UNROLLED),
    },
    "Streams, smoothing": {
        "cubicSmooth7_against_memcpy": Row("`cubicSmooth7`, 1e6 points, per point", COPY, MEMORY),
        "linearSmooth11_against_memcpy": Row("`linearSmooth11`, 1e6 points, per point", COPY, MEMORY),
        "central_difference_against_memcpy": Row("`central_difference`, 1e6 points, per point", COPY, DIVIDER),
        "move_average_filter_online_against_ordered_sum":
            Row("`move_average_filter_online`, length 1000", "one ordered sum", ORDERED),
        "move_average_filter_online_of_100_against_ordered_sum": Row("the same, length 100", "one ordered sum", ORDERED),
        "move_average_filter_onlines_ten_channels_against_one_by_one":
            Row("`move_average_filter_onlines`, 10 channels, length 1000, per channel", "one by one",
                WINDOWS),
        "move_average_filter_onlines_ten_channels_of_100_against_one_by_one":
            Row("the same, length 100", "one by one", WINDOWS),
    },
    "Differential equations": {
        "rkf45_quiet_against_gsl": Row("`rkf45`, 3 components, an attempt", "GSL (its step alone)"),
        "rkf45_step_control_at_work_against_gsl": Row("the same, step control at work", "GSL (its step alone)"),
    },
    "The companion": {
        "mensura_filter_time": Row("`mensura filter`, 1e6 rows of a CSV", SCIPY, DIGITS, limit=0.2e9, items=CELLS),
        "mensura_filter_against_mawk": Row("the same", "`mawk`, the sections written out", items=CELLS),
        "mensura_filter_against_miller":
            Row("`mensura filter --sos`, one pole, 1e6 rows", "`mlr step -a ewma`", items=CELLS),
        "mensura_filter_memory": Row("`mensura filter`, 1e6 rows, peak of its memory", SCIPY, limit=16),
        "mensura_filter_64_columns": Row("`mensura filter`, 64 columns of 15625 rows", SCIPY, items=CELLS),
        "mensura_filter_64_columns_against_one": Row("the same", "ours, one column of as many numbers", items=CELLS),
        "mensura_filter_64_columns_memory": Row("the same, peak of its memory", SCIPY, limit=16),
        "mensura_average_against_miller": Row("`mensura average`, 1e6 rows", "`mlr step -a slwin`", items=CELLS),
        "mensura_average_against_miller_memory": Row("the same, peak of its memory", "`mlr step -a slwin`", limit=16),
        "mensura_stats_against_miller":
            Row("`mensura stats`, 1e6 rows", "`mlr stats1`, four of its numbers", items=CELLS),
        "mensura_stats_against_mawk": Row("the same", "`mawk`, four of its numbers", items=CELLS),
        "mensura_filter_short_sound_against_sox":
            Row("`mensura filter`, a sound of 1e6 samples", "`sox`, the same sections as `biquad`", items=CELLS),
        "mensura_filter_sound_against_sox":
            Row("`mensura filter`, 10 minutes of stereo sound", "`sox`, the same sections as `biquad`", items=SOUND),
        "mensura_filter_sound_against_ffmpeg":
            Row("the same", "`ffmpeg`, the same sections as `biquad`", items=SOUND),
        "mensura_zero_phase_sound_against_sox":
            Row("`mensura filter --zero-phase`, 10 minutes of stereo sound", "`sox`, with `reverse` twice", items=SOUND),
        "mensura_zero_phase_sound_against_one_way": Row("the same", "ours, one way", WHOLE, items=SOUND),
    },
}


ROWS = {name: row for rows in SECTIONS.values() for name, row in rows.items()}


def load():
    return json.loads(RESULTS.read_text())


def quantity(value, unit):
    for larger in {"ns": ("µs", "ms", "s"), "bytes": ("KB", "MB")}.get(unit, ()):
        if value >= 1000:
            value, unit = value / 1000, larger
    return f"{float(f'{value:.3g}'):g} {unit}"


def ratio(measured):
    return statistics.median(measured["ratios"])


def took(measured, side, items):
    """A quantity, and where there are items, the millions of them a second."""
    rate = f" ({float(f'{1000 * items / measured[side]:.3g}'):g} M/s)" if items and measured["unit"] == "ns" else ""
    return quantity(measured[side], measured["unit"]) + rate


def bar(name):
    return ROWS[name].goal or TARGETS.get(name)


def missed(name, measured):
    """What was measured and what the bar is, for each bar that was missed."""
    row, most = ROWS[name], bar(name)
    if most and ratio(measured) > most:
        yield f"{ratio(measured):g}, bar {most:g}"
    if row.limit and measured["ours"] > row.limit:
        yield f"{quantity(measured['ours'], measured['unit'])}, bar {quantity(row.limit, measured['unit'])}"


def line(name, measured, notes):
    """A row of a table; its reason is added to notes."""
    row, bars = ROWS[name], [f"{bar(name):g}"] if bar(name) else []
    if not measured:
        return f"| {row.what} | | {row.peer} | | | {', '.join(bars)} | **not measured**: the peer or ours was not there |"
    unit, least, most = measured["unit"], min(measured["ratios"]), max(measured["ratios"])
    if row.limit:
        bars.append(quantity(row.limit, unit))
    verdict = "met" if bars else ""
    if misses := list(missed(name, measured)):
        verdict = f"**missed: {'; '.join(misses)}**"
    if measured.get("quiet", 1) < LEAST_QUIET:
        verdict += ", on a busy machine"
    if row.reason:
        verdict += f" ({notes.setdefault(row.reason, len(notes) + 1)})"
    where = f" (on {measured['machine']})" if "machine" in measured else ""
    ours, peer = (took(measured, side, row.items) for side in ("ours", "peer"))
    return (f"| {row.what}{where} | {ours} | {peer}, {row.peer} | "
            f"{ratio(measured):g} | {least:g} to {most:g} | {', '.join(bars)} | {verdict} |")


def tables(results):
    notes, page = {}, []
    for title, rows in SECTIONS.items():
        page += [f"## {title}\n", "| what | ours | peer | ratio | runs | bar | |", "|---|--:|--:|--:|---|--:|---|"]
        page += [line(name, results["benchmarks"].get(name), notes) for name in rows]
        page.append("")
    page += [f"({number}) {reason}\n" for reason, number in notes.items()]
    return "\n".join(page).rstrip()


def exponents(sizes, values):
    """log(v2 / v1) / log(n2 / n1) from each size to the next: 1 where work grows with n, 2 where with n squared."""
    steps = zip(sizes, sizes[1:], values, values[1:])
    return ", ".join(f"{math.log(v2 / v1) / math.log(n2 / n1):.2f}" if v1 and v2 else "-" for n1, n2, v1, v2 in steps)


def growth():
    page = ["| what | sizes | time | exponents | expected | memory | exponents |", "|---|---|---|---|---|---|---|"]
    for row in json.loads(GROWTH.read_text()):
        sizes, times, memory = zip(*row["sizes"])
        used = [", ".join(quantity(m, "bytes") for m in memory), exponents(sizes, memory)] if any(memory) else ["none", ""]
        if 0 < max(memory) < 1.1 * min(memory):
            used = [quantity(max(memory), "bytes"), "constant"]
        cells = [row["what"], f"{row['by']}: {', '.join(map(str, sizes))}", ", ".join(quantity(t, "ns") for t in times),
                 exponents(sizes, times), row["expected"], *used]
        page.append("| " + " | ".join(cells) + " |")
    return "\n".join(page)

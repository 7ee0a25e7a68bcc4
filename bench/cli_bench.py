"""The companion against programs that do the same work: NumPy and SciPy, awk, miller, sox, ffmpeg.

    cmake --build --preset release --target mensura_cli
    /usr/bin/python3 bench/cli_bench.py [--json] [--only PREFIX] [--rounds N] [build/release/cli/mensura]

All run as programs of their own, ours and the peer in turn in one run; seconds are medians of the wall clock, MiB the
peak of the resident set, by GNU time.  The peers filter with the coefficients of `mensura design --json`, and what both
write is compared.  What is not installed is left out.
"""

import argparse
import array
import json
import os
import pathlib
import random
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import wave
from typing import Callable, NamedTuple

ROWS, WIDE_COLUMNS = 1_000_000, 64
SOUND_RATE, SOUND_SECONDS = 48_000, 600
TABLE_FILTER = ["lowpass", "--cutoff", "40Hz", "--rate", "360Hz"]
SOUND_FILTER = ["lowpass", "--cutoff", "1kHz", "--rate", str(SOUND_RATE)]
AVERAGE = 10
SMOOTHING = 0.1  # of y = SMOOTHING x + (1 - SMOOTHING) y', the only filter that miller has

# The fastest of NumPy's readers of text is loadtxt (NumPy 1.23 and later read in C).
SCIPY = """
import json, sys, numpy, scipy.signal
sections = json.load(open(sys.argv[1]))["sections"]
sos = [[s["b0"], s["b1"], s["b2"], 1.0, s["a1"], s["a2"]] for s in sections]
x = numpy.loadtxt(sys.argv[2], skiprows=1, delimiter=",", ndmin=2)
state = [numpy.outer([1 - s[0], s[2] - s[5]], x[0]) for s in sos]  # of a constant x[0] that passes unchanged
y, _ = scipy.signal.sosfilt(sos, x, axis=0, zi=state)
header = open(sys.argv[2]).readline().strip()
numpy.savetxt(sys.argv[3], y, delimiter=",", header=header, comments="")
"""


class Job(NamedTuple):
    """Two commands that do the same; each writes to the file that stands for "OUT", or to standard output."""

    name: str
    ours: list
    peer: list
    check: Callable  # of both files: whether they hold the same
    memory: str = ""  # the name of a row for the peaks, where they are compared too


def run(command, output):
    """Seconds and MiB of a program; GNU time, because a child of this program counts the memory of this program too."""
    peak = f"{output}.peak"
    command = ["time", "-f", "%M", "-o", peak, *(output if word == "OUT" else word for word in command)]
    start = time.perf_counter()
    with open(os.devnull if output in command else output, "wb") as file:
        subprocess.run(command, stdout=file, check=True)
    seconds = time.perf_counter() - start
    return seconds, int(pathlib.Path(peak).read_text()) / 1024


def rows_of(job, rounds, folder):
    """The results of a job, in the format of Google Benchmark."""
    sides = {"ours": job.ours, "peer": job.peer}
    suffix = ".wav" if "OUT" in job.ours else ".csv"
    files = {side: f"{folder}/{side}{suffix}" for side in sides}
    measured = {side: [] for side in sides}
    for _ in range(rounds):
        for side, command in sides.items():
            measured[side].append(run(command, files[side]))
    if not job.check(*files.values()):
        sys.exit(f"{job.name}: what both write differs")
    for name, unit, values in (
        (job.name, "ns", [1e9 * statistics.median(s for s, _ in runs) for runs in measured.values()]),
        (job.memory, "MiB", [max(m for _, m in runs) for runs in measured.values()]),
    ):
        if name:
            yield {"name": name, f"ours_{unit}": values[0], f"peer_{unit}": values[1], "ratio": values[0] / values[1]}


def same_numbers(ours, theirs, column=0):
    """Whether a column of two tables differs by less than 1e-12 in each row; column -1: each in its last."""
    with open(ours) as a, open(theirs) as b:
        next(a), next(b)
        return all(
            abs(float(x.split(",")[column]) - float(y.split(",")[column])) < 1e-12 for x, y in zip(a, b, strict=True)
        )


def same_statistics(ours, theirs):
    """Whether every number of theirs is among ours."""
    number = re.compile(r"(?<![\w.])-?\d[-+.e\d]*")
    mine, others = ([float(x) for x in number.findall(pathlib.Path(file).read_text())] for file in (ours, theirs))
    return len(others) == 4 and all(any(abs(x - y) < 1e-9 for x in mine) for y in others)


def same_sound(ours, theirs):
    """Whether two sounds of 16 bits differ by no more than 2 steps: the programs round in their own ways."""
    with wave.open(ours) as a, wave.open(theirs) as b:
        if a.getnframes() != b.getnframes():
            return False
        while block := a.readframes(SOUND_RATE):
            pairs = zip(array.array("h", block), array.array("h", b.readframes(SOUND_RATE)))
            if max(abs(x - y) for x, y in pairs) > 2:
                return False
    return True


def write_table(path, rows, columns):
    with open(path, "w") as file:
        file.write(",".join(f"x{i}" for i in range(columns)) + "\n")
        for _ in range(rows):
            file.write(",".join(f"{random.gauss(0, 1):.6f}" for _ in range(columns)) + "\n")


def write_short_sound(path):
    """Noise, as many samples as the table has rows, the first one silent: sox starts from rest."""
    noise = array.array("h", (random.randrange(-16384, 16384) if i > 0 else 0 for i in range(ROWS)))
    with wave.open(path, "wb") as sound:
        sound.setparams((1, 2, SOUND_RATE, 0, "NONE", ""))
        sound.writeframes(noise.tobytes())


def write_sound(path):
    """Stereo noise, the same second again and again, at half of full scale and silent at both ends."""
    noise = array.array("h", (random.randrange(-16384, 16384) for _ in range(2 * SOUND_RATE))).tobytes()
    with wave.open(path, "wb") as sound:
        sound.setparams((2, 2, SOUND_RATE, 0, "NONE", ""))
        for second in range(SOUND_SECONDS):
            sound.writeframes(noise if 0 < second < SOUND_SECONDS - 1 else bytes(len(noise)))


def sections_of(program, request, path):
    with open(path, "wb") as file:
        subprocess.run([program, "design", *request, "--json"], stdout=file, check=True)
    with open(path) as file:
        return json.load(file)["sections"]


def awk_filter(sections):
    """Transposed form II, without loops or arrays; the state begins as SCIPY's."""
    start = run = ""
    for i, s in enumerate(sections):
        start += f"u{i} = x * {1 - s['b0']!r}; v{i} = x * {s['b2'] - s['a2']!r}; "
        run += (f"y = {s['b0']!r} * x + u{i}; u{i} = {s['b1']!r} * x - {s['a1']!r} * y + v{i}; "
                f"v{i} = {s['b2']!r} * x - {s['a2']!r} * y; x = y; ")
    return f'NR == 1 {{ print; next }} {{ x = $1 }} NR == 2 {{ {start} }} {{ {run} printf "%.17g\\n", x }}'


AWK_STATISTICS = """NR > 1 { n++; s += $1; q += $1 * $1; if (n == 1 || $1 < a) a = $1; if (n == 1 || $1 > b) b = $1 }
END { printf "%.17g,%.17g,%.17g,%.17g\\n", s / n, sqrt((q - s * s / n) / (n - 1)), a, b }"""


def sox(sections, source, both_ways):
    filter = [str(w) for s in sections for w in ("biquad", s["b0"], s["b1"], s["b2"], 1, s["a1"], s["a2"])]
    return ["sox", "-D", source, "OUT", *filter, *(["reverse", *filter, "reverse"] if both_ways else [])]


def ffmpeg(sections, source):
    names = ("b0", "b1", "b2", "a1", "a2")
    filter = ",".join("biquad=precision=f64:a0=1:" + ":".join(f"{name}={s[name]!r}" for name in names) for s in sections)
    return ["ffmpeg", "-v", "error", "-y", "-i", source, "-af", filter, "-c:a", "pcm_s16le", "OUT"]


def table_jobs(program, folder):
    records, wide, design = (f"{folder}/{name}" for name in ("x.csv", "wide.csv", "table.json"))
    sections = sections_of(program, TABLE_FILTER, design)
    write_table(records, ROWS, 1)
    write_table(wide, ROWS // WIDE_COLUMNS, WIDE_COLUMNS)  # as many numbers
    ours = [program, "filter", *TABLE_FILTER, "--quiet"]
    scipy = [sys.executable, "-c", SCIPY, design]
    yield Job("mensura_filter_time", [*ours, records], [*scipy, records, "OUT"], same_numbers, "mensura_filter_memory")
    yield Job("mensura_filter_against_mawk", [*ours, records], ["mawk", awk_filter(sections), records], same_numbers)
    yield Job("mensura_filter_64_columns", [*ours, wide], [*scipy, wide, "OUT"],
              lambda a, b: same_numbers(a, b) and same_numbers(a, b, -1), "mensura_filter_64_columns_memory")
    yield Job("mensura_filter_64_columns_against_one", [*ours, wide], [*ours, records], lambda a, b: True)
    with open(f"{folder}/ewma.csv", "w") as file:
        file.write(f"{SMOOTHING},0,0,1,{SMOOTHING - 1},0\n")
    yield Job("mensura_filter_against_miller", [program, "filter", "--sos", f"{folder}/ewma.csv", "--quiet", records],
              ["mlr", "--csv", "step", "-a", "ewma", "-d", str(SMOOTHING), "-f", "x0", records],
              lambda a, b: same_numbers(a, b, -1))
    yield Job("mensura_average_against_miller", [program, "average", "--length", str(AVERAGE), records],
              ["mlr", "--csv", "step", "-a", f"slwin_{AVERAGE - 1}_0", "-f", "x0", records],
              lambda a, b: same_numbers(a, b, -1), "mensura_average_against_miller_memory")
    yield Job("mensura_stats_against_miller", [program, "stats", records],
              ["mlr", "--csv", "stats1", "-a", "mean,stddev,min,max", "-f", "x0", records], same_statistics)
    yield Job("mensura_stats_against_mawk", [program, "stats", records], ["mawk", AWK_STATISTICS, records],
              same_statistics)


def sound_jobs(program, folder):
    sound = f"{folder}/x.wav"
    sections = sections_of(program, SOUND_FILTER, f"{folder}/sound.json")
    both = sections_of(program, [*SOUND_FILTER, "--zero-phase"], f"{folder}/both.json")
    write_sound(sound)
    filter = [word for word in SOUND_FILTER if word != "--rate"][:-1]
    one_way = [program, "filter", *filter, "--quiet", sound, "-o", "OUT"]
    two_ways = [program, "filter", *filter, "--zero-phase", "--quiet", sound, "-o", "OUT"]
    short = f"{folder}/short.wav"
    write_short_sound(short)
    yield Job("mensura_filter_short_sound_against_sox", [program, "filter", *filter, "--quiet", short, "-o", "OUT"],
              sox(sections, short, False), same_sound)
    yield Job("mensura_filter_sound_against_sox", one_way, sox(sections, sound, False), same_sound)
    yield Job("mensura_filter_sound_against_ffmpeg", one_way, ffmpeg(sections, sound), same_sound)
    yield Job("mensura_zero_phase_sound_against_sox", two_ways, sox(both, sound, True), same_sound)
    yield Job("mensura_zero_phase_sound_against_one_way", two_ways, one_way, lambda a, b: True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--json", action="store_true", help="print in the format of Google Benchmark")
    parser.add_argument("--only", default="", metavar="PREFIX", help="the jobs whose names begin so")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("program", nargs="?", default="build/release/cli/mensura")
    arguments = parser.parse_args()
    table = []
    for jobs in (table_jobs, sound_jobs):
        with tempfile.TemporaryDirectory() as folder:
            random.seed(1)
            for job in jobs(arguments.program, folder):
                if not job.name.startswith(arguments.only):
                    continue
                if missing := [word for word in ("time", job.peer[0]) if not shutil.which(word)]:
                    print(f"{missing[0]} not found, {job.name} left out", file=sys.stderr)
                else:
                    table += rows_of(job, arguments.rounds, folder)
    if arguments.json:
        print(json.dumps({"benchmarks": table}))
        return
    for row in table:
        unit, scale, digits = ("s", 1e-9, 2) if "ours_ns" in row else ("MiB", 1, 1)
        ours, peer = (scale * value for name, value in row.items() if name[:5] in ("ours_", "peer_"))
        print(f"{row['name']:<42}{ours:9.{digits}f} {unit:<4}{peer:9.{digits}f} {unit:<4} ratio {row['ratio']:.3f}")


main()

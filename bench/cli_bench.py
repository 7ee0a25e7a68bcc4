"""`mensura filter` against the same work in NumPy and SciPy: a CSV of a million rows in, a CSV out.

    cmake --build --preset release --target mensura_cli
    /usr/bin/python3 bench/cli_bench.py [--json] [build/release/cli/mensura]

Both run as programs of their own, in turn in one run; seconds are medians of the wall clock, MiB the peak of the resident
set (at least that of this program, which therefore stays small).  The script filters with the coefficients of
`mensura design --json`, so both must give the same numbers.
"""

import argparse
import json
import os
import random
import statistics
import subprocess
import sys
import tempfile
import time

ROWS, ROUNDS = 1_000_000, 5
DESIGN = ["lowpass", "--cutoff", "40Hz", "--rate", "360Hz"]

# The fastest of NumPy's readers of text is loadtxt (NumPy 1.23 and later read in C).
SCRIPT = """
import json, sys, numpy, scipy.signal
sections = json.load(open(sys.argv[1]))["sections"]
sos = [[s["b0"], s["b1"], s["b2"], 1.0, s["a1"], s["a2"]] for s in sections]
x = numpy.loadtxt(sys.argv[2], skiprows=1)
state = x[0] * numpy.array([[1 - s[0], s[2] - s[5]] for s in sos])  # of a constant x[0] that passes unchanged
y, _ = scipy.signal.sosfilt(sos, x, zi=state)
numpy.savetxt(sys.argv[3], y, header="x", comments="")
"""


def run(command, output):
    """Seconds and MiB of a program."""
    start = time.perf_counter()
    with open(output, "wb") as file:
        child = subprocess.Popen(command, stdout=file)
        _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        sys.exit(f"{command[0]} failed")
    return time.perf_counter() - start, usage.ru_maxrss / 1024


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--json", action="store_true", help="print in the format of Google Benchmark")
    parser.add_argument("program", nargs="?", default="build/release/cli/mensura")
    arguments = parser.parse_args()
    program = arguments.program
    with tempfile.TemporaryDirectory() as folder:
        records, design, ours, theirs = (f"{folder}/{name}" for name in ("x.csv", "design.json", "ours.csv", "theirs.csv"))
        random.seed(1)
        with open(records, "w") as file:
            file.write("x\n")
            file.writelines(f"{random.gauss(0, 1):.6f}\n" for _ in range(ROWS))
        with open(design, "wb") as file:
            subprocess.run([program, "design", *DESIGN, "--json"], stdout=file, check=True)
        programs = {
            "mensura filter": ([program, "filter", *DESIGN, records], ours),
            "NumPy, SciPy": ([sys.executable, "-c", SCRIPT, design, records, theirs], os.devnull),
        }
        measured = {name: [] for name in programs}
        for _ in range(ROUNDS):
            for name, (command, output) in programs.items():
                measured[name].append(run(command, output))
        with open(ours) as a, open(theirs) as b:
            next(a), next(b)
            difference = max(abs(float(x) - float(y)) for x, y in zip(a, b, strict=True))
    assert difference < 1e-12, "the two outputs differ"
    seconds = [statistics.median(s for s, _ in runs) for runs in measured.values()]
    mib = [max(m for _, m in runs) for runs in measured.values()]
    if arguments.json:
        tables = (("mensura_filter_time", "ns", [s * 1e9 for s in seconds]), ("mensura_filter_memory", "MiB", mib))
        rows = [
            {"name": name, f"ours_{unit}": ours, f"peer_{unit}": peer, "ratio": ours / peer}
            for name, unit, (ours, peer) in tables
        ]
        print(json.dumps({"benchmarks": rows}))
        return
    for name, s, m in zip(measured, seconds, mib):
        print(f"{name:<16}{s:8.2f} s{m:8.1f} MiB")
    print(f"ratio           {seconds[0] / seconds[1]:8.2f}")
    print(f"difference      {difference:8.1e}")


main()

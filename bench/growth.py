#!/usr/bin/python3
"""How time and memory grow with the size of the work: bench/growth.json, for the table in docs/performance.md.

    bench/growth.py build/release

The library is measured by the program `growth`, the companion here: seconds of the wall clock, the least of three runs,
and the peak of the resident set, by GNU time.
"""

import json
import pathlib
import random
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # no cache beside the sources
from benchmarks import GROWTH

ROWS = [10**4, 10**5, 10**6, 10**7]
FILTER = ["filter", "lowpass", "--cutoff", "40Hz", "--rate", "360Hz", "--quiet"]
COMPANION = {
    "`mensura filter`": (FILTER, "n; memory constant"),
    "`mensura filter --zero-phase`": ([*FILTER, "--zero-phase"], "n"),
    "`mensura stats`": (["stats"], "n; memory constant"),
}


def write_tables(folder):
    block = "".join(f"{random.gauss(0, 1):.6f}\n" for _ in range(ROWS[0]))
    for rows in ROWS:
        with open(f"{folder}/{rows}.csv", "w") as file:
            file.write("x\n")
            for _ in range(rows // ROWS[0]):
                file.write(block)


def run(command, folder):
    """Nanoseconds and bytes of a program."""
    peak = f"{folder}/peak"
    start = time.perf_counter()
    subprocess.run(["time", "-f", "%M", "-o", peak, *command, "-o", f"{folder}/out.csv"], check=True)
    return 1e9 * (time.perf_counter() - start), 1024 * int(pathlib.Path(peak).read_text())


def companion(program):
    with tempfile.TemporaryDirectory() as folder:
        random.seed(1)
        write_tables(folder)
        for what, (command, expected) in COMPANION.items():
            runs = {rows: [run([program, *command, f"{folder}/{rows}.csv"], folder) for _ in range(3)] for rows in ROWS}
            sizes = [[rows, *(float(f"{min(f):.3g}") for f in zip(*found))] for rows, found in runs.items()]
            yield {"what": what, "by": "rows", "expected": expected, "sizes": sizes}


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    table = json.loads(subprocess.run([build / "bench/growth"], stdout=subprocess.PIPE, check=True).stdout)
    if (program := build / "cli/mensura").exists():
        table += companion(program)
    GROWTH.write_text("[\n" + ",\n".join(json.dumps(row, ensure_ascii=False) for row in table) + "\n]\n")


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Runs every benchmark of a build tree, writes bench/results.json, from which docs/performance.md is made.

    cmake --build --preset release --target performance    measures, and makes the page
    bench/performance.py build/release [rounds]            measures alone
    bench/performance.py build/release 3 sos_              replaces the rows whose names begin so; the others stay

A benchmark that benchmarks.SECTIONS does not name is an error, so that none is left out.
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

sys.dont_write_bytecode = True  # no cache beside the sources
from benchmarks import RESULTS, SECTIONS, load

HERE = pathlib.Path(__file__).resolve().parent
PEERS = """libliquid-dev libgsl-dev libfftw3-dev libkissfft-dev libeigen3-dev libopenblas-dev python3-numpy
    python3-scipy libbenchmark-dev mawk miller sox ffmpeg""".split()
ROUNDS = 3


def commands(build):
    yield from ([path, "--benchmark_format=json"] for path in sorted(build.glob("bench/*_bench")))
    yield [sys.executable, HERE / "scipy_bench.py", "--json", build / "libmensura.so"]
    if (program := build / "cli/mensura").exists():
        yield [sys.executable, HERE / "cli_bench.py", "--json", program]


def run(command):
    """The benchmarks of a program: by name, what ours and the peer took, in ns or MiB, and their ratio."""
    print(" ".join(map(str, command)), file=sys.stderr, flush=True)
    found = {}
    for b in json.loads(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)["benchmarks"]:
        unit = "ns" if "ours_ns" in b else "MiB"
        name = re.sub("/(iterations|manual_time).*", "", b["name"])
        found[name] = {"unit": unit, "ours": b[f"ours_{unit}"], "peer": b[f"peer_{unit}"], "ratio": b["ratio"]}
    if unknown := found.keys() - {name for rows in SECTIONS.values() for name in rows}:
        sys.exit(f"no row in benchmarks.SECTIONS for {', '.join(sorted(unknown))}")
    return found


def rounded(value):
    return float(f"{value:.3g}")


def together(runs):
    """Medians of the times over the runs; the ratio of each run, in which both took turns."""
    return {
        "unit": runs[0]["unit"],
        **{side: rounded(statistics.median(r[side] for r in runs)) for side in ("ours", "peer")},
        "ratios": [rounded(r["ratio"]) for r in runs],
    }


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.strip()


def conditions(build, rounds):
    cache = dict(re.findall(r"^(\w+):\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.M))
    kind = cache["CMAKE_BUILD_TYPE"]
    flags = " ".join((cache["CMAKE_CXX_FLAGS"] + " " + cache.get(f"CMAKE_CXX_FLAGS_{kind.upper()}", "")).split())
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    system = re.search(r'PRETTY_NAME="(.*)"', pathlib.Path("/etc/os-release").read_text())
    return {
        "date": str(datetime.date.today()),
        "rounds": rounds,
        "machine": f"{model[1] if model else platform.machine()}, {os.cpu_count()} cores; Linux {platform.release()}",
        "system": system[1] if system else "unknown",
        "compiler": output_of(cache["CMAKE_CXX_COMPILER"], "--version").splitlines()[0],
        "flags": f"{kind}, {flags}",
        "peer_flags": f"-O3 -march={cache['MENSURA_PEER_ARCH']} -ffp-contract=fast",
        "packages": output_of("dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *PEERS).splitlines(),
    }


def write(conditions, benchmarks):
    """A line for each benchmark, so that a difference can be read."""
    rows = (f"    {json.dumps(name)}: {json.dumps(row)}" for name, row in benchmarks.items())
    head = json.dumps(conditions, indent=2, ensure_ascii=False).replace("\n", "\n  ")
    RESULTS.write_text(f'{{\n  "conditions": {head},\n  "benchmarks": {{\n' + ",\n".join(rows) + "\n  }\n}\n")


def merged(before, now, measured):
    """Rows measured before and now; those measured now name their machine where it is another one."""
    other = now["machine"] != before["conditions"]["machine"]
    mark = {"machine": re.sub(r"\(R\)| Processor|,.*", "", now["machine"])} if other else {}
    return {**before["benchmarks"], **{name: {**row, **mark} for name, row in measured.items()}}


def main():
    build, rounds = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2]) if len(sys.argv) > 2 else ROUNDS
    prefix = sys.argv[3] if len(sys.argv) > 3 else ""
    runs = [{name: m for command in commands(build) for name, m in run(command).items()} for _ in range(rounds)]
    names = [name for rows in SECTIONS.values() for name in rows]
    measured = {}
    for name in names:
        if found := [r[name] for r in runs if name in r and name.startswith(prefix)]:
            measured[name] = together(found)
    now = conditions(build, rounds)
    if prefix:
        before = load()
        measured = merged(before, now, measured)
        now = before["conditions"]
    write(now, {name: measured[name] for name in names if name in measured})


if __name__ == "__main__":
    main()

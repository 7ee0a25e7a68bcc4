#!/usr/bin/python3
"""Runs every benchmark of a build tree, writes bench/results.json, from which docs/performance.md is made.

    cmake --build --preset release --target performance    measures, and makes the page
    bench/performance.py build/release [rounds]            measures alone
    bench/performance.py build/release 3 sos_              replaces the rows whose names begin so; the others stay
    bench/performance.py --bars                            measures nothing: bench/targets.json becomes what
                                                           bench/results.json has, plus 5 %

A benchmark that benchmarks.SECTIONS does not name is an error, so that none is left out; so is one whose two sides did
different work.  A row with few quiet rounds (bench/compare.h) is run again.  At the end it says which rows were not measured,
not quiet, or over their bars.
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
from benchmarks import LEAST_QUIET, RESULTS, ROWS, TARGETS, TARGETS_FILE, load, missed, ratio

HERE = pathlib.Path(__file__).resolve().parent
PEERS = """libliquid-dev libgsl-dev libfftw3-dev libkissfft-dev libeigen3-dev libopenblas-dev python3-numpy
    python3-scipy libbenchmark-dev mawk miller sox ffmpeg""".split()
ROUNDS = 3
LARGEST_DIFFERENCE = 1e-9  # between what both sides compute, relative or of values around 1
SLACK = 1.05  # of a bar over what was reached


def say(text):
    print(text, file=sys.stderr, flush=True)


def commands(build):
    yield from ([path, "--benchmark_format=json"] for path in sorted(build.glob("bench/*_bench")))
    yield [sys.executable, HERE / "scipy_bench.py", "--json", build / "libmensura.so"]
    if (program := build / "cli/mensura").exists():
        yield [sys.executable, HERE / "cli_bench.py", "--json", "--rounds", "2", program]


def measure(command):
    """The benchmarks of a program: by name, what ours and the peer took, in ns or MiB, their ratio, the quiet rounds."""
    say(" ".join(map(str, command)))
    found = {}
    for b in json.loads(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)["benchmarks"]:
        unit = "ns" if "ours_ns" in b else "MiB"
        name = re.sub("/(iterations|manual_time).*", "", b["name"])
        if not b.get("difference", 0) <= LARGEST_DIFFERENCE:
            sys.exit(f"{name}: ours and the peer's differ by {b['difference']:g}")
        found[name] = {"unit": unit, "ours": b[f"ours_{unit}"], "peer": b[f"peer_{unit}"], "ratio": b["ratio"],
                       "quiet": b.get("quiet", 1.0)}
    if unknown := found.keys() - ROWS.keys():
        sys.exit(f"no row in benchmarks.SECTIONS for {', '.join(sorted(unknown))}")
    return found


def run(command):
    """The same, with the quieter of up to three measurements of a row."""
    found = measure(command)
    for _ in range(2):
        restless = [name for name, row in found.items() if row["quiet"] < LEAST_QUIET]
        if not restless or "--benchmark_format=json" not in command:
            break
        again = measure([*command, f"--benchmark_filter=^({'|'.join(restless)})(/|$)"])
        found |= {name: row for name, row in again.items() if row["quiet"] > found[name]["quiet"]}
    return found


def rounded(value):
    return float(f"{value:.3g}")


def together(runs):
    """Medians of the times over the runs; the ratio of each run, in which both took turns; its quiet rounds."""
    return {
        "unit": runs[0]["unit"],
        **{side: rounded(statistics.median(r[side] for r in runs)) for side in ("ours", "peer")},
        "ratios": [rounded(r["ratio"]) for r in runs],
        "quiet": round(min(r["quiet"] for r in runs), 2),
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


def lines(benchmarks):
    """A line for each, so that a difference can be read."""
    return ",\n".join(f"    {json.dumps(name)}: {json.dumps(row)}" for name, row in benchmarks.items())


def write(conditions, benchmarks):
    head = json.dumps(conditions, indent=2, ensure_ascii=False).replace("\n", "\n  ")
    RESULTS.write_text(f'{{\n  "conditions": {head},\n  "benchmarks": {{\n{lines(benchmarks)}\n  }}\n}}\n')


def merged(before, now, measured):
    """Rows measured before and now; those measured now name their machine where it is another one."""
    other = now["machine"] != before["conditions"]["machine"]
    mark = {"machine": re.sub(r"\(R\)| Processor|,.*", "", now["machine"])} if other else {}
    return {**before["benchmarks"], **{name: {**row, **mark} for name, row in measured.items()}}


def set_bars():
    """What was reached, plus 5 %, for each row without a goal of its own."""
    results = load()["benchmarks"]
    bars = {name: rounded(SLACK * ratio(results[name])) for name, row in ROWS.items() if name in results and not row.goal}
    for name, bar in bars.items():
        if bar != (before := TARGETS.get(name)):
            print(f"{name}: {before} becomes {bar}")
    TARGETS_FILE.write_text(f"{{\n{lines(bars)}\n}}\n")


def report(measured):
    """Says which rows are not there, not quiet, or over their bars."""
    for name, row in ROWS.items():
        if name not in measured:
            say(f"{name}: NOT MEASURED")
            continue
        if measured[name].get("quiet", 1) < LEAST_QUIET:
            say(f"{name}: only {measured[name]['quiet']:.0%} of its rounds were quiet")
        for miss in missed(name, measured[name]):
            say(f"{name}: {miss}{'' if row.reason else ', no reason is known'}")


def main():
    if sys.argv[1] == "--bars":
        return set_bars()
    build, rounds = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2]) if len(sys.argv) > 2 else ROUNDS
    prefix = sys.argv[3] if len(sys.argv) > 3 else ""
    runs = [{name: m for command in commands(build) for name, m in run(command).items()} for _ in range(rounds)]
    measured = {}
    for name in ROWS:
        if found := [r[name] for r in runs if name in r and name.startswith(prefix)]:
            measured[name] = together(found)
    now = conditions(build, rounds)
    if prefix:
        before = load()
        measured = merged(before, now, measured)
        now = before["conditions"]
    write(now, {name: measured[name] for name in ROWS if name in measured})
    report(measured)


if __name__ == "__main__":
    main()

"""Whether this core is ours alone: a short piece of work of a known time, done before and after what is measured.

Two virtual cores may be one real core: when the other is busy, work takes up to twice as long, some more than other.  As
quiet.h does for C++; here a probe is a loop of the interpreter, which keeps a core full, and has the least time that it
took in this program to be compared with.
"""

import time

TOLERANCE = 1.2  # the clock steps by up to 16 % after work on wide vectors; a busy neighbour costs more
TRIES = 3  # of a measurement that was disturbed
_best = float("inf")


def probe():
    """Seconds of some 200 microseconds' work, the least of three."""
    global _best
    times = []
    for _ in range(3):
        start = time.perf_counter()
        sum(range(10_000))
        times.append(time.perf_counter() - start)
    _best = min(_best, *times)
    return min(times)


def measured(sides):
    """What each of `sides`, callables, returns, by turns, with a probe before, between and after: and whether all of these
    were quiet.  Up to TRIES attempts, the last counts."""
    for _ in range(TRIES):
        probes, results = [probe()], []
        for side in sides:
            results.append(side())
            probes.append(probe())
        quiet = max(probes) <= TOLERANCE * _best
        if quiet:
            break
    return results, quiet

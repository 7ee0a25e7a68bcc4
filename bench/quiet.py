"""Whether this core is ours alone: a short piece of work of a known time, done before and after what is measured.

Two virtual cores may be one real core: when the other is busy, work takes up to twice as long, some more than other.
This is quiet.h for Python: a probe is a loop of the interpreter, which keeps a core full, and is compared with the least
time that it took in this program.
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
        start = time.thread_time()
        sum(range(10_000))
        times.append(time.thread_time() - start)
    _best = min(_best, *times)
    return min(times)


def measured(sides):
    """What each of `sides`, callables, returns, in turn, with a probe before, between and after; and whether all of
    these were quiet.  Of up to TRIES attempts the last counts."""
    for _ in range(TRIES):
        probes, results = [probe()], []
        for side in sides:
            results.append(side())
            probes.append(probe())
        quiet = max(probes) <= TOLERANCE * _best
        if quiet:
            break
    return results, quiet

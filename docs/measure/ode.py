"""What the integrators cost and how exact they are."""

import ctypes
import math
from dataclasses import dataclass

from binding import OdeFunction, doubles, measuring

TOLERANCES = (1e-3, 1e-6, 1e-8, 1e-10, 1e-12)
PIECES = ((1, 10), (1, 100), (1, 600), (50, 1), (200, 1), (1000, 1))  # calls, divisions of each
END = 10.0


class Count(ctypes.Structure):  # as in ode_problems.cpp
    _fields_ = [("calls", ctypes.c_long), ("rejected", ctypes.c_long), ("begin", ctypes.c_double)]


@dataclass
class Problem:
    name: str
    f: OdeFunction
    start: tuple
    end: tuple  # at t = END


class Run:
    """The outcome of a problem: result of the last call, calls of f, error at t = END."""

    def __init__(self, problem):
        self.problem, self.y, self.result = problem, doubles(problem.start), 0
        self.count = Count(0, 0, math.nan)
        self.arguments = (problem.f, self.y, len(self.y), ctypes.addressof(self.count), self.y)

    @property
    def attempts(self):
        return (self.count.calls + 5) // 6

    @property
    def error(self):
        return max(abs(y - end) for y, end in zip(self.y, self.problem.end))


def adaptive(library, problem, pieces, divisions, tolerance, t0=0.0, t1=END):
    run, dt = Run(problem), (t1 - t0) / pieces
    for i in range(pieces):
        run.result = library.rkf45(t0 + i * dt, t0 + (i + 1) * dt, divisions, tolerance, *run.arguments)
        if run.result != 0:
            break
    return run


def fixed(library, problem, rate, t1=END):
    run = Run(problem)
    run.result = library.rkf452(0, t1, rate, *run.arguments)
    return run


def problems(library):
    def function(name):
        return OdeFunction((name, measuring(library)))

    cos, sin = math.cos(END), math.sin(END)
    stiff = Problem("van der Pol", function("van_der_pol"), (2, 0), ())
    stiff.end = tuple(fixed(library, stiff, 20000).y)
    return (
        Problem("oscillator", function("oscillator"), (1, 0), (cos, -sin)),
        stiff,
        # y = (2500 cos t + 50 sin t - 2500 exp(-50 t)) / 2501
        Problem("decay", function("decay"), (0,), ((2500 * cos + 50 * sin - 2500 * math.exp(-50 * END)) / 2501,)),
        Problem("clock", function("elapsed"), (0,), (END,)),
    )


def names(library):
    oscillator, stiff, decay, clock = problems(library)

    def failure(what, problem, t0, t1, divisions, tolerance):
        run = adaptive(library, problem, 1, divisions, tolerance, t0, t1)
        return {"what": what, "t0": t0, "t1": t1, "divisions": divisions, "tolerance": tolerance, "run": run}

    def order(rate):
        runs = [(fixed(library, problem, rate), fixed(library, problem, 2 * rate)) for problem in (oscillator, stiff, decay)]
        return {"rate": rate, "calls": runs[0][0].count.calls, "errors": [(run.error, run.error / finer.error) for run, finer in runs]}

    def ends_early(k, t1):
        return fixed(library, clock, k / END, t1).count.calls != 4 * k

    counts = range(1, 1001)
    return {
        "tolerances": TOLERANCES,
        "attempts": [
            (problem, pieces, divisions, [adaptive(library, problem, pieces, divisions, tol) for tol in TOLERANCES])
            for problem in (oscillator, stiff, decay)
            for pieces, divisions in PIECES
        ],
        "failures": [
            failure("more than 20000 steps", oscillator, 0, 10, 640, 1e-6),
            failure("too few divisions", decay, 0, 10, 10, 1e-6),
            failure("a step of 1", oscillator, 0, 10, 10, 1e-3),
            failure("near t = 0", oscillator, 0, 1, 10, 1e-6),
            failure("the same later", oscillator, 86400, 86401, 10, 1e-6),
            failure("a step of 10", stiff, 0, 10, 1, 1e-6),
        ],
        "orders": [order(rate) for rate in (20, 40, 80, 160, 320)],
        "slow": fixed(library, decay, 10).result,
        "clocks": [(t1, rate, fixed(library, clock, rate, t1)) for t1, rate in ((10, 2.5), (10, 0.35), (10, 0.09), (10, 91), (0.3, 10))],
        "plain_early": sum(ends_early(k, END) for k in counts),
        "longer_early": sum(ends_early(k, END + 0.5 * END / k) for k in counts),
    }

"""Integrators against closed solutions."""

import numpy as np
from binding import OdeFunction
from scipy.integrate import solve_ivp

END = 10.0


class Problem:
    """y' = slope(t, y) from 0 to END, and its exact solution; counts the calls of the slope."""

    def __init__(self, name, slope, solution):
        self.name, self.slope, self.solution, self.calls = name, slope, solution, 0
        self.callback = OdeFunction(self.run)

    def run(self, t, y, _, dydt):
        self.calls += 1
        for i, value in enumerate(self.slope(t, y)):
            dydt[i] = value
        return 0

    def error(self, t, y):
        return float(np.max(abs(np.array(y) - self.solution(t))))


def problems():
    growth = lambda t: 1 / (1 + 9 * np.exp(-t))  # logistic
    lag = lambda t: (2500 * np.cos(t) + 50 * np.sin(t) - 2500 * np.exp(-50 * t)) / 2501
    return (
        Problem("oscillator", lambda t, y: (y[1], -y[0]), lambda t: np.array([np.cos(t), -np.sin(t)])),
        Problem("logistic", lambda t, y: (y[0] * (1 - y[0]),), lambda t: np.array([growth(t)])),
        Problem("decay", lambda t, y: (-50 * (y[0] - np.cos(t)),), lambda t: np.array([lag(t)])),
    )


def run_rkf45(lib, problem, pieces, divisions, tol):
    y, problem.calls = problem.solution(0.0), 0
    edges = np.linspace(0, END, pieces + 1)
    for start, end in zip(edges, edges[1:]):
        if (code := lib.rkf45(start, end, divisions, tol, problem.callback, y, len(y), None, y)) < 0:
            return str(code)
    return f"{problem.error(END, y):.0e} ({problem.calls})"


def run_scipy(problem, tol):
    answer = solve_ivp(problem.slope, (0, END), problem.solution(0.0), rtol=max(tol, 3e-14), atol=tol)
    return f"{problem.error(END, answer.y[:, -1]):.0e} ({answer.nfev})"


def rkf45(lib):
    tolerances = [10.0**-k for k in (3, 5, 7, 9, 11, 13)]
    for problem in problems():
        for pieces, divisions in ((1, 100), (1, 600), (200, 1)):
            yield [f"{problem.name}, {pieces} call{'s' * (pieces > 1)}, divisions {divisions}",
                   *(run_rkf45(lib, problem, pieces, divisions, tol) for tol in tolerances)]
        yield [f"{problem.name}, SciPy's RK45", *(run_scipy(problem, tol) for tol in tolerances)]


def rkf452(lib):
    for rate in (20, 40, 80, 160, 320, 640, 1280):
        row = [rate]
        for problem in problems():
            y = problem.solution(0.0)
            lib.rkf452(0.0, END + 0.5 / rate, rate, problem.callback, y, len(y), None, y)
            row.append(problem.error(END, y))
        yield [*row, int(END * rate) * 4]

"""Where FindRoots is strong and where it is not.  Seeded random numbers, no clock."""

import itertools
import math
import random

from binding import Complexes, CplxD, Double, Doubles, Int, declare, doubles, measuring

WRONG = 1e-3  # a larger relative error is a wrong root, not an inexact one
TOLERANCE = 1e-9  # of roots_hold
CALLS = (
    (Double, "forward_error", Int, Doubles, Complexes),
    (Double, "error_against_known", Int, Complexes, Complexes),
    (Double, "error_against_cosines", Int, Complexes),
    (Double, "error_against_powers", Double, Double, Int, Complexes),
    (Int, "shown_roots_hold", Int, Doubles, Complexes, Double),
    (Int, "shown_find_scaled", Int, Doubles, Complexes),
)


# ---- Polynomials: coefficients, highest power first ----


def product(a, b):
    ab = [0.0] * (len(a) + len(b) - 1)
    for i, x in enumerate(a):
        for j, y in enumerate(b):
            ab[i + j] += x * y
    return ab


def power(a, exponent):
    p = [1.0]
    for _ in range(exponent):
        p = product(p, a)
    return p


def wilkinson(degree):
    p = [1.0]
    for k in range(1, degree + 1):
        p = product(p, [1.0, -float(k)])
    return p


def chebyshev(degree):  # T[n+1] = 2 x T[n] - T[n-1]
    before, last = [1.0], [1.0, 0.0]
    for _ in range(1, degree):
        following = product([2.0, 0.0], last)
        for i, c in enumerate(before):
            following[i + 2] -= c
        before, last = last, following
    return last


class Uniform(random.Random):
    """Numbers from [-1, 1)."""

    def __call__(self):
        return 2 * self.random() - 1

    def polynomial(self, degree):
        return [self() for _ in range(degree + 1)]


# ---- Results ----


class Roots:
    """What FindRoots made of a polynomial."""

    def __init__(self, degree):
        self.z, self.found = (CplxD * degree)(), False

    def __iter__(self):
        return iter(self.z)


class Tally:
    """Counts the results of many polynomials; `errors` are those of the results that are not wrong."""

    def __init__(self, finder):
        self.finder, self.errors = finder, []
        self.total = self.none = self.wrong = self.huge = self.wrong_accepted = self.right_rejected = 0

    def count(self, p, roots, error):
        self.total += 1
        if not roots.found:
            self.none += 1
            return
        accepted, right = self.finder.hold(p, roots), error < WRONG
        if right:
            self.errors.append(error)
        self.wrong += not right
        self.huge += any(math.hypot(z.re, z.im) > 1e10 for z in roots)
        self.wrong_accepted += not right and accepted
        self.right_rejected += right and not accepted

    def measure(self, p):
        roots = self.finder.find(p)
        self.count(p, roots, self.finder.forward_error(p, roots))

    def quantile(self, q):
        return sorted(self.errors)[int(q * (len(self.errors) - 1))]


class Finder:
    def __init__(self, library):
        self._library, self._errors = library, declare(measuring(library), CALLS)
        self.tallies = []

    def tally(self):
        self.tallies.append(Tally(self))
        return self.tallies[-1]

    def find(self, p):
        roots = Roots(len(p) - 1)
        roots.found = self._library.FindRoots(len(p) - 1, doubles(p), roots.z) == len(p) - 1
        return roots

    def find_scaled(self, p):
        roots = Roots(len(p) - 1)
        roots.found = self._errors.shown_find_scaled(len(p) - 1, doubles(p), roots.z) == len(p) - 1
        return roots

    def hold(self, p, roots):
        return self._errors.shown_roots_hold(len(p) - 1, doubles(p), roots.z, TOLERANCE) != 0

    def forward_error(self, p, roots):
        return self._errors.forward_error(len(p) - 1, doubles(p), roots.z) if roots.found else 0.0

    def against(self, known, roots):
        return self._errors.error_against_known(len(known), (CplxD * len(known))(*known), roots.z)

    def against_cosines(self, degree, roots):
        return self._errors.error_against_cosines(degree, roots.z)

    def against_powers(self, b, c, exponent, roots):
        return self._errors.error_against_powers(b, c, exponent, roots.z)


# ---- The tables ----


def random_coefficients(finder, degree):
    uniform, tally = Uniform(1), finder.tally()
    for _ in range(1000 if degree < 50 else 100):
        tally.measure(uniform.polynomial(degree))
    return degree, tally


def wide_coefficients(finder, k):
    uniform, tally = Uniform(2), finder.tally()
    for _ in range(300):
        tally.measure([c * 10 ** (k * uniform()) for c in uniform.polynomial(20)])
    return k, tally


def small_roots(finder, exponent):
    """The results of FindRoots alone, and of find_scaled."""
    uniform, plain, scaled = Uniform(3), finder.tally(), finder.tally()
    for _ in range(300):
        p = [c * 10.0 ** (exponent * i) for i, c in enumerate(uniform.polynomial(10))]
        plain.measure(p)
        roots = finder.find_scaled(p)
        scaled.count(p, roots, finder.forward_error(p, roots))
    return exponent, plain, scaled


def multiple_root(finder, m):
    others = product(product([1, 2], [1, -3]), [1, 0, 4])
    known = [(1, 0)] * m + [(-2, 0), (3, 0), (0, 2), (0, -2)]
    return m, finder.against(known, finder.find(product(power([1, -1], m), others))), 2 ** (-63 / m)


def ill_conditioned(finder, n):
    """The errors of Wilkinson's polynomial, also against the exact roots of its rounded coefficients, and Chebyshev's."""
    errors = [None, None]
    if n <= 24:
        roots = finder.find(wilkinson(n))
        errors = [finder.against([(k, 0) for k in range(1, n + 1)], roots), finder.forward_error(wilkinson(n), roots)]
    return n, *errors, finder.against_cosines(n, finder.find(chebyshev(n)))


def powers_of_quadratics(finder, exponent):
    tally = finder.tally()
    for b, c in itertools.product([i / 4 for i in range(-16, 17)], [j / 4 for j in range(1, 21)]):
        p = power([1.0, b, c], exponent)
        roots = finder.find(p)
        tally.count(p, roots, finder.against_powers(b, c, exponent, roots) if roots.found else 0.0)
    return exponent, tally


def names(library):
    finder = Finder(library)
    tables = {
        "random": [random_coefficients(finder, degree) for degree in (3, 4, 5, 10, 20, 50, 100)],
        "wide": [wide_coefficients(finder, k) for k in (1, 5, 10, 20, 50)],
        "small": [small_roots(finder, e) for e in (20, 0, -5, -7, -10, -15, -20, -30)],
        "multiple": [multiple_root(finder, m) for m in range(2, 9)],
        "ill_conditioned": [ill_conditioned(finder, n) for n in (10, 15, 20, 24, 30, 40, 50)],
        "powers": [powers_of_quadratics(finder, k) for k in (2, 3, 4)],
    }
    wrong = sum(tally.wrong for tally in finder.tallies)
    accepted = sum(tally.wrong_accepted for tally in finder.tallies)
    checked, uniform = finder.tally(), Uniform(4)
    for i in range(500):
        checked.measure(uniform.polynomial(5 + i % 46))
    return {
        **tables,
        "half_ulp": 2.0**-53,
        "wrong_from": WRONG,
        "tolerance": TOLERANCE,
        "wrong": wrong,
        "accepted": accepted,
        "checked": checked,
        "cube": finder.find(power([1, 0, 1.25], 3)),
        "order": [z.re for z in finder.find(product(wilkinson(7), [1, 0, 0]))],
    }

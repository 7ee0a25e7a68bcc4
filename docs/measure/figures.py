"""Numbers as the pages print them: filters of the templates.

Few digits, so that the last bits of a sine, which differ between processors, do not show.  A value that is not finite is
an error: no page means to print one.
"""

import math

from benchmarks import quantity


def fixed(x, digits=0):
    """With this number of decimals; no -0.0."""
    if not math.isfinite(x):
        raise ValueError(f"{x} in a page")
    return f"{round(x, digits) + 0.0:.{digits}f}"


def significant(x, digits=3):
    """With this number of significant digits, without zeros at the end: 6.88, 12.5, 660."""
    if not math.isfinite(x):
        raise ValueError(f"{x} in a page")
    return f"{float(f'{x:.{digits}g}') + 0.0:g}"


def scientific(x, digits=0):
    """As 3e-8, with this number of decimals in the mantissa."""
    if not math.isfinite(x):
        raise ValueError(f"{x} in a page")
    return f"{x:.{digits}e}".replace("e-0", "e-").replace("e+0", "e")


def below(x):
    """The next power of ten: an error of 3e-16 is `1e-15`, one of 0.04 is `0.1`.  0 stays 0."""
    if x == 0:
        return "0"
    power = math.ceil(math.log10(x))
    return scientific(10.0**power) if power < -3 else f"{10.0**power:g}"


def percent(x, digits=0):
    return f"{fixed(100 * x, digits)} %"


class Untrue(Exception):
    """A statement of a page that does not hold."""


def require(holds, claim):
    """Checks a statement that a page makes in words."""
    if not holds:
        raise Untrue(f"this does not hold: {claim}")


def joined(items, last=" and "):
    """a, b and c."""
    items = [str(item) for item in items]
    return last.join([", ".join(items[:-1]), items[-1]]) if len(items) > 1 else "".join(items)


FILTERS = {f.__name__: f for f in (fixed, significant, scientific, below, percent, quantity, joined)}

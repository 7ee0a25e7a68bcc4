"""The errors of the library against results of higher precision, module by module, and what differs from SciPy."""

import importlib
import pathlib
import platform
import re

import mpmath
import numpy as np
import scipy

from . import differences
from .report import cell


def versions(library):
    """What made the numbers; the compiler is what it left in the library's .comment section."""
    binary = pathlib.Path(library._name).read_bytes()
    compiler = re.search(rb"GCC: \(.*?\) [\d.]+|clang version [\d.]+", binary)
    return (
        f"{platform.machine()} with {' '.join(platform.libc_ver())}, Python {platform.python_version()}, "
        f"NumPy {np.__version__},\nSciPy {scipy.__version__}, mpmath {mpmath.__version__}; compiler "
        f"{compiler[0].decode() if compiler else 'not named in the library'}"
    )


def names(library):
    if np.finfo(np.longdouble).nmant < 63:
        raise SystemExit("long double is not wider than double here: no reference")
    mpmath.mp.dps = 50

    def table(name):
        """The rows that module.function yields."""
        module, function = name.split(".")
        rows = getattr(importlib.import_module(f".{module}", __package__), function)(library)
        return "\n".join(row if isinstance(row, str) else "| " + " | ".join(map(cell, row)) + " |" for row in rows)

    return {**differences.names(library), "table": table, "cell": cell, "versions": versions(library)}

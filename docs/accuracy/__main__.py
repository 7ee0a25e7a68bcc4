"""Prints docs/accuracy.md: the errors of the library against results of higher precision, family by family.

    /usr/bin/python3 docs/accuracy libmensura.so > accuracy.md

page.md beside this file is its text: a line `@module.function` becomes the rows of a table, {{expression}} its value.
"""

import importlib
import os
import pathlib
import platform
import re
import sys

os.environ["OPENBLAS_NUM_THREADS"] = "1"  # before NumPy: the test matrices shall be the same on each run
sys.dont_write_bytecode = True  # no cache beside the sources
HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / "measure"))
try:
    import differences
    import mpmath
    import numpy as np
    import scipy
    from binding import load
    from report import cell
except ImportError as missing:
    sys.exit(f"{missing}: apt-get install python3-scipy python3-mpmath, and run this with Debian's /usr/bin/python3")


def versions(path):
    """What made the numbers; the compiler is what it left in the library's .comment section."""
    compiler = re.search(rb"GCC: \(.*?\) [\d.]+|clang version [\d.]+", pathlib.Path(path).read_bytes())
    return (f"{platform.machine()} with {' '.join(platform.libc_ver())}, Python {platform.python_version()}, "
            f"NumPy {np.__version__},\nSciPy {scipy.__version__}, mpmath {mpmath.__version__}; compiler "
            f"{compiler[0].decode() if compiler else 'not named in the library'}")


def rows(name, library):
    print(name, file=sys.stderr, flush=True)
    module, function = name.split(".")
    for row in getattr(importlib.import_module(module), function)(library):
        yield row if isinstance(row, str) else "| " + " | ".join(map(cell, row)) + " |"


def main():
    if np.finfo(np.longdouble).nmant < 63:
        sys.exit("long double is not wider than double here: no reference")
    path = sys.argv[1] if len(sys.argv) > 1 else HERE.parent.parent / "build/release/libmensura.so"
    library = load(path)
    mpmath.mp.dps = 50
    page = os.fdopen(os.dup(1), "w")  # only the page goes there, not the lines that a failing rkf45 prints
    os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
    names = {**differences.names(library), "versions": versions(path)}
    for line in (HERE / "page.md").read_text().splitlines():
        if line.startswith("@"):
            print(*rows(line[1:], library), sep="\n", file=page)
        else:
            print(re.sub(r"\{\{(.+?)\}\}", lambda found: cell(eval(found[1], names)), line), file=page)


if __name__ == "__main__":
    main()

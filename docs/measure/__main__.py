#!/usr/bin/python3
"""Renders the pages of docs/ from docs/pages/*.md.in with what is measured of the library.

    /usr/bin/python3 docs/measure build/release/libmensura.so             all pages, written anew
    /usr/bin/python3 docs/measure build/release/libmensura.so iir state   these pages
    /usr/bin/python3 docs/measure --check build/release/libmensura.so     writes nothing, fails on a difference

A page NAME is the Jinja2 template docs/pages/NAME.md.in and the module docs/measure/NAME.py: its `names(library)` returns
what the template may use.  Every template also has the filters of figures.py, `rows(table)` for the rows of a table and
`snippet("file.c")` for C that docs/snippets/ compiles and runs.  A name that is missing is an error.
"""

import argparse
import difflib
import importlib
import os
import pathlib
import re
import sys
import textwrap

os.environ["OPENBLAS_NUM_THREADS"] = "1"  # set before NumPy is loaded, so that random matrices are the same in each run
sys.dont_write_bytecode = True  # no cache beside the sources
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
DOCS = ROOT / "docs"
sys.path.append(str(ROOT / "bench"))  # benchmarks.py
try:
    import jinja2
except ImportError as missing:
    sys.exit(f"{missing}: apt-get install python3-jinja2, and run this with Debian's /usr/bin/python3")

from binding import load
from figures import FILTERS, Untrue

OPTIONAL = {"numpy": "python3-numpy", "scipy": "python3-scipy", "mpmath": "python3-mpmath",
            "mensura": "the companion, -DMENSURA_BUILD_CLI=ON"}  # what some pages need
MODULES = {"numbers": "reproducibility"}  # Python has a module numbers of its own
# Pages whose numbers depend on the processor: by its matrices and references, by its x87 logarithms and powers.  Only
# their text is checked.
DEPEND_ON_PROCESSOR = {"accuracy", "roots"}
README_PART = re.compile(r"(?<=<!-- speed -->\n).*?(?=<!-- end of speed -->\n)", re.S)


def say(*lines, **how):
    print(*lines, file=sys.stderr, flush=True, **how)


def rows(table):
    """The rows of a Markdown table."""
    return "\n".join("| " + " | ".join(map(str, row)) + " |" for row in table)


def snippet(file, name="shown"):
    """The lines of docs/snippets/FILE between `// [NAME]` and `// [end]`, without their common indentation."""
    text = (DOCS / "snippets" / file).read_text()
    found = re.search(rf"^ *// \[{name}\]\n(.*?)^ *// \[end\]\n", text, re.M | re.S)
    if not found:
        raise LookupError(f"docs/snippets/{file} has no lines between // [{name}] and // [end]")
    return textwrap.dedent(found[1]).strip("\n")


def environment():
    templates = jinja2.Environment(
        loader=jinja2.FileSystemLoader(DOCS / "pages"),
        undefined=jinja2.StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
        keep_trailing_newline=True,
    )
    templates.filters.update(FILTERS)
    templates.globals.update(rows=rows, snippet=snippet)
    return templates


def pages():
    return sorted(path.name.removesuffix(".md.in") for path in (DOCS / "pages").glob("*.md.in"))


def target(name):
    return ROOT / "README.md" if name == "speed" else DOCS / f"{name}.md"


def render(templates, name, library):
    """The page.  In README.md, only the table of the speed is replaced."""
    module = importlib.import_module(MODULES.get(name, name))
    page = templates.get_template(f"{name}.md.in").render(module.names(library))
    if name != "speed":
        return f"{page}\n<!-- Rendered from docs/pages/{name}.md.in: change that, and build the target pages. -->\n"
    readme = target(name).read_text()
    if not README_PART.search(readme):
        sys.exit("README.md has no lines <!-- speed --> and <!-- end of speed -->")
    return README_PART.sub(lambda _: page, readme)


ERROR, NUMBER = re.compile(r"\d(\.\d+)?e-?\d+"), re.compile(r"\d+(\.\d+)?(e[-+]?\d+)?")


def alike(old, new, depends):
    """Whether two lines of equal text have the same numbers.  Rounding errors, which are in e-notation, may differ by a
    factor of 2, as libm and NumPy choose their code by the processor; where all depends on that, any number may differ."""
    if depends or old == new:
        return True
    pairs = zip(ERROR.finditer(old), ERROR.finditer(new))
    return ERROR.sub("", old) == ERROR.sub("", new) and all(
        float(a[0]) <= 2 * float(b[0]) and float(b[0]) <= 2 * float(a[0]) for a, b in pairs
    )


def differences(path, page, depends):
    """Path, line and both texts of each difference from the page that is there."""
    old = path.read_text().splitlines() if path.exists() else []
    new = page.splitlines()
    texts = ([(NUMBER if depends else ERROR).sub("", line) for line in lines] for lines in (old, new))
    for change, start, end, new_start, new_end in difflib.SequenceMatcher(None, *texts, False).get_opcodes():
        pairs = zip(old[start:end], new[new_start:new_end])
        if change == "equal" and all(alike(a, b, depends) for a, b in pairs):
            continue
        yield f"{path.relative_to(ROOT)}:{start + 1}: differs from what is measured"
        yield from (f"  - {line}" for line in old[start:end])
        yield from (f"  + {line}" for line in new[new_start:new_end])


def main():
    parser = argparse.ArgumentParser(description="Renders the pages of docs/.")
    parser.add_argument("--check", action="store_true", help="compare with the pages that are there, write nothing")
    parser.add_argument("library", help="libmensura.so, libmensura_pages.so beside it")
    parser.add_argument("pages", nargs="*", metavar="PAGE", help=f"of {', '.join(pages())}; all without")
    arguments = parser.parse_args()
    if unknown := set(arguments.pages) - set(pages()):
        parser.error(f"no page {', '.join(sorted(unknown))} in docs/pages")

    os.dup2(os.open(os.devnull, os.O_WRONLY), 1)  # for the lines that the library prints, as rkf45 does when it fails
    templates, library, failed = environment(), load(arguments.library), False
    for name in arguments.pages or pages():
        say(name)
        try:
            page = render(templates, name, library)
        except ModuleNotFoundError as missing:
            if missing.name not in OPTIONAL:
                raise
            say(f"{name}: NOT {'CHECKED' if arguments.check else 'MADE'}, it needs {OPTIONAL[missing.name]}")
            failed = failed or not arguments.check
            continue
        except Untrue as error:
            say(f"docs/pages/{name}.md.in: {error}")
            failed = True
            continue
        if not arguments.check:
            target(name).write_text(page)
        elif found := list(differences(target(name), page, name in DEPEND_ON_PROCESSOR)):
            say(*found, sep="\n")
            failed = True
    return failed


if __name__ == "__main__":
    sys.exit(main())

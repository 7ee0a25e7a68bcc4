"""docs/threads.md: a table of what the headers say, its figures taken from their comments."""

import ctypes
import functools
import pathlib
import re

import binding
from figures import require, significant

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
HEADERS = ROOT / "include/mensura"
TEMPLATE = ROOT / "docs/pages/threads.md.in"
FIGURE = r"(\d[\d.e]*(?: n)?(?: (?:[KM]B|bytes))?)"  # 32 KB, 24 n bytes, 1e20
RULES = {  # sentences of the headers that the columns of the table repeat
    "complex.h": ("allocates nothing, keeps no state and may run in any number of threads at once",),
    "roots.h": ("Nothing here allocates", "may run in several threads at once", "keeps between its steps belong to the thread"),
    "iir.h": (
        "Nothing here allocates except dataZeroPhaseFilter when it has to find its cut-off",
        "Separate records may be designed and run in separate threads at once; one record belongs to one thread at a time",
        "FilterWithIIR and SectCalc have registers that the whole process shares: one thread at a time",
        "Nothing is allocated when fc is given",
        "goes to standard output",
    ),
    "sos.h": (
        "Nothing allocates except mensura_sos_filtfilt, and that only when no work array is handed over",
        "There is no global state: any calls may run at once, as long as no two of them share a state or an output",
        "4 sections + 2 extension doubles, or null: allocated",
    ),
    "spectral.h": (
        "FFT of more than 1024 points, DFT, RealSigDFT and WindowData take scratch memory from the heap and release it "
        "before they return; if there is none they leave the data as they were. Nothing else here allocates",
        "safe in several threads at once, each on its own data",
    ),
    "matrix.h": (
        "The fixed-capacity functions never allocate",
        "safe in several threads at once, each on its own data; matrix_show and QRtest write one file in the current "
        "directory: one call at a time",
        "functions that return a Matrix hand it to the caller",
        "three matrices of the size of Q and two of that of R",
        "Prints to standard output",
    ),
    "kalman.h": ("Nothing here allocates", "Separate filters may run in separate threads at once"),
    "online.h": ("Nothing here allocates", "Separate records may run in separate threads at once"),
    "smooth.h": ("Nothing allocates", "safe in several threads at once"),
    "ode.h": (
        "A failure prints a line on standard output",
        "Nothing here allocates, except that test_rkf45 opens a file",
        "each on its own data, as far as the callback is. test_rkf45 writes one file: one call at a time",
    ),
}


@functools.cache
def comments(header):
    """The comments of a header as running text, without the marks of comments and of Doxygen."""
    text = " ".join(re.findall(r"/\*(.*?)\*/", (HEADERS / header).read_text(), re.S))
    text = re.sub(r"(?m)^ \*", " ", text)
    text = re.sub(r"@(?:ref|p|c|b|a) |[`*#]|\(\)|::", "", text)
    return " ".join(text.split())


def said(header, sentence, last=False):
    """The figure that the header has in the place of {} in this sentence."""
    found = re.findall(re.escape(sentence).replace(r"\{\}", FIGURE), comments(header))
    require(found and (last or len(set(found)) == 1), f"{header} says once: {sentence}")
    return found[-1]


def size(record):
    """The size of a record in memory."""
    kilobytes = ctypes.sizeof(getattr(binding, record)) / 1000
    return f"{significant(kilobytes, 2)} KB" if kilobytes < 1000 else f"{significant(kilobytes / 1000, 2)} MB"


def exported(header):
    """Every function and variable that a header exports."""
    return re.findall(r"^(?:extern )?MENSURA_EXPORT [^;]*?(\w+)(?:\(|\[)", (HEADERS / header).read_text(), re.M)


def check_rows():
    """Each function has a row under its header; dataZeroPhaseFilter has two, for it behaves in two ways."""
    for title, section in re.findall(r"^## ([^\n]*\.h)\n(.*?)(?=^## |\Z)", TEMPLATE.read_text(), re.M | re.S):
        rows = [line.split("|")[1] for line in section.splitlines() if line.startswith("| `")]
        named = [name for row in rows for name in re.findall(r"`(\w+)`", row)]
        declared = [name for header in title.split(", ") for name in exported(header)]
        missing, twice = set(declared) ^ set(named), {n for n in named if named.count(n) > 1} - {"dataZeroPhaseFilter"}
        require(declared and not missing and not twice, f"a row for each function of {title}: {missing | twice}")


def names(_library):
    check_rows()
    for header, sentences in RULES.items():
        for sentence in sentences:
            require(sentence in comments(header), f"{header} says: {sentence}")
    return {
        "said": said,
        "size": size,
        "design": said("iir.h", "a design takes up to {} of stack"),
        "by_value": said("matrix.h", "the by-value forms {} and") + " KB",
        "householder": said("matrix.h", "matrix_mul and householder {} and") + " KB",
    }

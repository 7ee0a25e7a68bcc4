"""docs/examples.md: the programs of examples/, and what they print."""

import pathlib
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXAMPLES = ROOT / "examples"
RECORD = EXAMPLES / "data/ecg_mitdb_208.csv"


def printed(library, name, channel, record=None):
    """What the example writes to `stdout` or `stderr`, linked with the library that is measured."""
    built = pathlib.Path(library._name).resolve().parent
    with tempfile.TemporaryDirectory() as folder:
        program = f"{folder}/{name}"
        subprocess.run(["cc", f"-I{ROOT}/include", EXAMPLES / f"{name}.c", "-o", program, f"-L{built}",
                        f"-Wl,-rpath,{built}", "-lmensura", "-lm"], check=True)
        run = subprocess.run([program], stdin=record and open(record), capture_output=True, text=True, check=True)
    return getattr(run, channel).rstrip("\n")


def names(library):
    return {
        "source": {name: (EXAMPLES / f"{name}.c").read_text().rstrip("\n") for name in ("clean_ecg", "track_position")},
        "cleaned": printed(library, "clean_ecg", "stderr", RECORD),
        "tracked": printed(library, "track_position", "stdout"),
    }

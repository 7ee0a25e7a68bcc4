"""The console sessions of a page: a shell runs each line that begins with $, and the lines below it are what it prints.

Usage: sessions.py PROGRAM RECORD PAGE...            fails where a page does not show what is printed
       sessions.py --write PROGRAM RECORD PAGE...    puts it into the pages
RECORD is known to the sessions as ecg.csv.
"""

import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SESSION = re.compile(r"(?<=^```console\n)(.*?)(?=^```$)", re.M | re.S)


def run(commands, folder, program):
    """What a terminal would show."""
    path = f"{Path(program).resolve().parent}:{os.environ['PATH']}"
    shown = ""
    for command in commands:
        result = subprocess.run(["sh", "-c", command], cwd=folder, timeout=60,
                                env={**os.environ, "PATH": path, "LC_ALL": "C.UTF-8"},
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        shown += f"$ {command}\n{result.stdout.decode()}"
    return shown


def main(arguments):
    write = arguments[0] == "--write"
    program, record, *pages = arguments[1:] if write else arguments
    failed = False
    for page in map(Path, pages):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(record, Path(folder) / "ecg.csv")
            old = page.read_text()
            if not SESSION.search(old):
                sys.exit(f"{page}: has no session")
            new = SESSION.sub(lambda m: run(re.findall(r"^\$ (.*)$", m.group(1), re.M), folder, program), old)
        if write:
            page.write_text(new)
        elif new != old:
            failed = True
            print(*difflib.unified_diff(old.splitlines(), new.splitlines(), f"{page}", "what is printed", lineterm=""),
                  sep="\n")
    sys.exit("Put it into the page with --write, if it is right." if failed else 0)


if __name__ == "__main__":
    main(sys.argv[1:])

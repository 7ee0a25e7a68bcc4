"""The sessions and commands of the pages, run in a shell.

In a block marked `console` each line that begins with $ is run, and the lines below it are what it prints.  In a block
marked `sh` each line that begins with `mensura`, and each that sets a variable, is run and must succeed.

Usage: sessions.py PROGRAM RECORD PAGE...            fails where a page does not show what is printed, or a command fails
       sessions.py --write PROGRAM RECORD PAGE...    puts it into the pages
RECORD is known to them as ecg.csv and as examples/data/ecg_mitdb_208.csv.
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
COMMANDS = re.compile(r"(?<=^```sh\n)(.*?)(?=^```$)", re.M | re.S)


def shell(text, folder, program):
    path = f"{Path(program).resolve().parent}:{os.environ['PATH']}"
    return subprocess.run(["sh", "-c", text], cwd=folder, timeout=60,
                          env={**os.environ, "PATH": path, "LC_ALL": "C.UTF-8"},
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def run(commands, folder, program):
    """What a terminal would show."""
    return "".join(f"$ {command}\n{shell(command, folder, program).stdout.decode()}" for command in commands)


def failures(text, folder, program):
    """The blocks of commands that fail, and what they print."""
    for block in COMMANDS.findall(text):
        commands = "\n".join(re.findall(r"^(?:mensura |\w+=).*", block, re.M))
        result = shell(f"exec > /dev/null; set -e\n{commands}", folder, program)
        if result.returncode:
            yield f"{commands}\n{result.stdout.decode()}"


def main(arguments):
    write = arguments[0] == "--write"
    program, record, *pages = arguments[1:] if write else arguments
    failed = False
    for page in map(Path, pages):
        with tempfile.TemporaryDirectory() as folder:
            for copy in ("ecg.csv", "examples/data/ecg_mitdb_208.csv"):
                (Path(folder) / copy).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(record, Path(folder) / copy)
            old = page.read_text()
            if not (SESSION.search(old) or COMMANDS.search(old)):
                sys.exit(f"{page}: has no session and no commands")
            for failure in failures(old, folder, program):
                failed = True
                print(f"{page}: {failure}")
            new = SESSION.sub(lambda m: run(re.findall(r"^\$ (.*)$", m.group(1), re.M), folder, program), old)
        if write:
            page.write_text(new)
        elif new != old:
            failed = True
            print(*difflib.unified_diff(old.splitlines(), new.splitlines(), f"{page}", "what is printed", lineterm=""),
                  sep="\n")
    sys.exit("What is printed is put into the page with --write, if it is right." if failed else 0)


if __name__ == "__main__":
    main(sys.argv[1:])

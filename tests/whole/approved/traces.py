# tests/whole/approved/traces.py HOSTRUN [--renew] - "hostrun trace" of ten programs, each compared with its approved file as
# a whole; or renews these, and prints what changes.
import pathlib
import re
import subprocess
import sys
import tempfile

from approved import SOURCE, compare

PROGRAMS = [
    "examples/exceptions",
    "examples/palette",
    "tests/hostrun/programs/arrays",
    "tests/hostrun/programs/exceptions",
    "tests/hostrun/programs/leaks",
    "tests/hostrun/programs/uncaught",
    "tests/hostrun/programs/hosts/no_arrays",
    "tests/hostrun/programs/hosts/no_messages",
    "tests/hostrun/programs/hosts/no_sibling",
    "tests/hostrun/programs/hosts/pasteboard",
]

# What is each run's own.
OWN = [(r", [0-9.]+ µs", ", TIME"), (r"/[^\"]*/hostrun-[A-Za-z0-9]{6}/", "FOLDER/"), (r"\b0x[0-9a-f]{6,}", "ADDRESS")]

hostrun = pathlib.Path(sys.argv[1]).resolve()


def trace_of(program):
    options = re.search(r"^' options (.*)$", (SOURCE / f"{program}.bas").read_text(), re.M)
    with tempfile.NamedTemporaryFile() as out:
        subprocess.run([hostrun, "trace", "--out", out.name, *(options[1].split() if options else []), f"{program}.bas"],
                       cwd=SOURCE, capture_output=True)
        text = pathlib.Path(out.name).read_text()
    for own, name in OWN:
        text = re.sub(own, name, text)
    return text


compare([(program.replace("/", "-") + ".trace", trace_of(program)) for program in PROGRAMS])

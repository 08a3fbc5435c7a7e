# tests/whole/approved/traces.py HOSTRUN [--renew] - "hostrun trace" of ten programs, each compared with its approved file as
# a whole; or renews these, and prints what changes.
import difflib
import pathlib
import re
import subprocess
import sys
import tempfile

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

here = pathlib.Path(__file__).resolve().parent
source = here.parents[2]
hostrun = pathlib.Path(sys.argv[1]).resolve()
renew = "--renew" in sys.argv


def trace_of(program):
    options = re.search(r"^' options (.*)$", (source / f"{program}.bas").read_text(), re.M)
    with tempfile.NamedTemporaryFile() as out:
        subprocess.run([hostrun, "trace", "--out", out.name, *(options[1].split() if options else []), f"{program}.bas"],
                       cwd=source, capture_output=True)
        text = pathlib.Path(out.name).read_text()
    for own, name in OWN:
        text = re.sub(own, name, text)
    return text


different = 0
for program in PROGRAMS:
    file = here / (program.replace("/", "-") + ".trace")
    approved = file.read_text() if file.exists() else ""
    found = trace_of(program)
    if found == approved:
        continue
    different += 1
    sys.stdout.writelines(difflib.unified_diff(approved.splitlines(True), found.splitlines(True), file.name, program))
    if renew:
        file.write_text(found)
if different and not renew:
    sys.exit(f"{different} of {len(PROGRAMS)} traces are others than the approved ones; where they should be, tools/approve")
print(f"{different} of {len(PROGRAMS)} traces renewed" if renew else f"{len(PROGRAMS)} traces are as approved")

# tests/whole/approved/answers.py HOSTRUN [--renew] - what hostrun's commands answer, to the letter: help, manual page,
# completions, classes, layouts, checks, traces, refusals, sessions; compared with the approved files, or renews these, and
# prints what changes.
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

from approved import FOLDER, SOURCE, compare

COMMANDS = ["classes", "check", "check-syntax", "debug", "trace", "repl", "docs", "swatches", "completion", "manual"]
SMALL = "--platform none --bundle BUILD/broken/Any.so"  # a bundle of one class
WRONG = SOURCE / "tests/hostrun/programs/errors"


def session(name):
    return (FOLDER / f"{name}.session").read_text()


def with_echo(name):
    """The lines of a session, each with itself as a text before it."""
    return "".join('"' + line.replace('"', '""') + f'"\n{line}\n' for line in session(name).splitlines())


# By the file that has them: what is typed, behind the variables that the environment has then. What is read follows a
# " < ".
ANSWERS = {
    "help": ["--help", *(f"help {command}" for command in COMMANDS)],
    "shells": [*(f"completion {shell}" for shell in ("bash", "zsh", "fish")), "manual"],
    "classes": [
        "classes", "classes --all --flags", "classes RuntimeException", "classes NSColorListQVX --host-version 2012.0",
        "classes NSColorQVX.getWhite", "classes setColor --flags", "classes Constructor", "classes --all Append",
        "classes NSColorSpaceQVX.NSCMYKColorSpaceModel", "classes NSColorQVX.getHSV --json", f"classes --json {SMALL}",
        "classes Nothing", "classes NSColorQVX.redColour", "classes NSColorQVX.zzz", "classes NSColorQVX NSColorListQVX"],
    "layouts": [
        "classes --layout", "classes NSColorSpaceQVX --layout --host-version 2013.0", "classes getWhite --layout",
        "classes NSColorSpaceQVX.NSUnknownColorSpaceModel --layout", f"classes --layout --json {SMALL}"],
    "checks": [
        "check --host-version 2015.0 --filter ColorList", "check --filter /records/",
        f"check --json --host-version 2015.0 {SMALL}", f"check --host-version 2011.0 {SMALL}",
        f"BROKEN_BUNDLE_FAULT=Crash check --host-version 2015.0 --only-failed {SMALL}",
        f"BROKEN_BUNDLE_FAULT=NotNeutral check --host-version 2015.0 --json --filter Sound.Number {SMALL}",
        "check --platform none --only-failed BUILD/broken/NoEntryPoint.so",
        "check --without REALLockObject --filter /order"],
    "traces": [
        *(f"trace {options} tests/whole/approved/traced.bas" for options in (
            "--json", "--all --filter NSColorQVX.getRGB", "--summary --filter NSColorQVX.redColor",
            "--summary --json --filter NSColorListQVX.setColor", "--leaks --filter NSColorListQVX"))],
    "errors": [
        "check-syntax " + " ".join(sorted(str(file.relative_to(SOURCE)) for file in WRONG.glob("*.bas"))),
        "check-syntax --json tests/whole/approved/lacking.bas", "check-syntax tests/whole/approved/lacking.bas"],
    "refused": ["repl < " + session("refused")],
    "values": [f"repl {SMALL} < {with_echo('values')}", f"repl {SMALL} < {with_echo('loops')}"],
    "repl": [
        "repl < :help\n:doc NSColorQVX.redColor\n:doc NSColorListQVX\n:doc NSExceptionQVX.message\n:doc Zzz\n"
        ":doc NSColorQVX.redColour\n:doc\n:hlep\n:quit\n1",
        "repl < " + session("platform"),
        "repl < 1 + 2\n\"text\"\nTrue\nNil\n&c102030\nArray(1, 2)\nNSColorQVX.orangeColor\n"
        "NSColorSpaceQVX.deviceRGBColorSpace\nNew NSColorListQVX\nNew Dictionary\nNew MemoryBlock(3)\n1.5\n1 / 0\nx"],
}

hostrun = pathlib.Path(sys.argv[1]).resolve()
BUILD = str(hostrun.parent)

# What is each build's own, or each run's.
OWN = [(r"code at 0x[0-9a-f]+(  )? *", r"code at ADDRESS\1"), (r'"ms": \d+', '"ms": TIME'),
       (r'"nanoseconds":\d+', '"nanoseconds":TIME'), (r", [0-9.]+ µs", ", TIME"),
       (r" +[0-9]+\.[0-9]+ +[0-9]+\.[0-9] ", " TIME ")]

# Ends what would write for ever.
resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))


def answer(line):
    arguments, _, read = line.partition(" < ")
    words = arguments.replace("BUILD", BUILD).split()
    variables = dict(word.split("=") for word in words if "=" in word)
    with tempfile.TemporaryFile("w+") as out:
        done = subprocess.run([hostrun, *(word for word in words if "=" not in word)], input=read + "\n" if read else "",
                              env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", **variables}, cwd=SOURCE, text=True,
                              stdout=out, stderr=subprocess.PIPE, check=False)
        out.seek(0)
        said = f"$ hostrun {arguments}\n{out.read()}{done.stderr}status {done.returncode}\n\n".replace(BUILD, "BUILD")
    for own, name in OWN:
        said = re.sub(own, name, said)
    return said.replace(str(SOURCE), "SOURCE")


with ThreadPoolExecutor(2) as workers:
    compare([(f"{name}.answers", "".join(workers.map(answer, lines))) for name, lines in ANSWERS.items()])

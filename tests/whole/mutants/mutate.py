"""tests/whole/mutants/mutate.py - draws the mutants, has them run, keeps the journal and reports; see tools/mutate."""

import argparse
import concurrent.futures
import datetime
import fnmatch
import hashlib
import json
import os
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

import operators

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[2]
WORK = ROOT / "build/mutate"
COPY = WORK / "tree"
HOUSES = ("bundle", "libcocoa", "hostrun")
SOURCES = (".cpp", ".h", ".c", ".m")
# Too large to copy, and no mutant changes them.
BOUND = ("build/sysroot", "build/icu", "build/libcxx")


RUNNING = set()  # the processes that each hold a mutant with all that it starts


def end_all(number, _):
    """What runs ends with this program; a next run goes on from the journal."""
    for process in list(RUNNING):
        process.kill()
    os._exit(128 + number)


def fingerprint(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:16]


@dataclass(frozen=True)
class Drawn:
    """A mutant with its place as the reader and the journal know it."""
    path: str
    kind: str
    line: int
    before: str    # the lines that change, without their indentation
    after: str
    text: str      # the whole source, changed
    identity: str  # stays while its lines do, wherever they move


def located(mutant, source, seen):
    begin = source.rfind("\n", 0, mutant.start) + 1
    end = source.find("\n", mutant.end)
    end = len(source) if end < 0 else end
    after = source[begin:mutant.start] + mutant.text + source[mutant.end:end]
    before = source[begin:end]
    place = (mutant.path, mutant.kind, " ".join(before.split()), " ".join(after.split()))
    seen[place] = seen.get(place, 0) + 1
    return Drawn(mutant.path, mutant.kind, source.count("\n", 0, mutant.start) + 1, before, after,
                 source[:mutant.start] + mutant.text + source[mutant.end:], fingerprint(*place, str(seen[place])))


def draw(rooms, count, seed, built):
    """The first `count` of the rooms' mutants in the seed's order."""
    found = {}
    for room in rooms:
        folder, _, line = room.partition(":")
        inside = [p for p in built if p == folder or p.startswith(folder.rstrip("/") + "/")]
        if not inside:
            sys.exit(f"mutate: wanted a folder or a file with sources that are built, found {room}")
        for path in inside:
            source = (ROOT / path).read_text(encoding="utf-8")
            seen = {}
            for mutant in operators.mutants_of(path, source):
                drawn = located(mutant, source, seen)
                if not line or drawn.line == int(line):
                    found[drawn.identity] = drawn
    return sorted(found.values(), key=lambda d: fingerprint(seed, d.identity))[:count]


def objects_of_sources():
    """Which objects of its own house each source is compiled into, as the last build tells."""
    objects = {}
    name = None
    told = subprocess.run(["ninja", "-C", "build", "-t", "deps"], capture_output=True, text=True, check=True, cwd=ROOT)
    for line in told.stdout.splitlines():
        if line and not line[0].isspace():
            name = line.split(":")[0]
        elif line and name.startswith("houses/"):
            path = os.path.relpath(ROOT / "build" / line.strip(), ROOT)
            if path.endswith(SOURCES) and name.startswith(f"houses/{path.split('/')[0]}/"):
                objects.setdefault(path, []).append(name)
    return objects


def read_rooms():
    """Each folder's steps, in order: the targets to build, the tests to run then, and which cases of theirs."""
    rooms = {}
    for line in (HERE / "rooms.txt").read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            folder, targets, tests, *cases = (part.strip() for part in line.split(" : "))
            if "desktop" not in targets.split() or (ROOT / "build/desktop/QVXColor.bundle").is_dir():
                rooms.setdefault(folder, []).append((targets.split(), tests, *(cases or ["*"])))
    return rooms


def steps_of(path, rooms):
    fitting = [f for f in rooms if fnmatch.fnmatch(path, f) or path.startswith(f + "/")]
    if not fitting:
        sys.exit(f"mutate: wanted a line for {path} in {HERE / 'rooms.txt'}, found none")
    return rooms[max(fitting, key=len)]


def read_equivalents():
    """What no test can notice: (path, line before, line after), each with its reason."""
    judged = {}
    path = before = after = None
    for number, line in enumerate((HERE / "equivalents.txt").read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("- "):
            before = " ".join(line[2:].split())
        elif line.startswith("+ "):
            after = " ".join(line[2:].split())
        elif line.startswith("  "):
            judged[path, before, after] = line.strip()
            if before not in " ".join((ROOT / path).read_text(encoding="utf-8").split()):
                sys.exit(f"mutate: equivalents.txt:{number}: {path} has no such line any more; judge it anew: {before}")
        elif line and not line.startswith("#"):
            path = line
    return judged


def take_copy():
    """Brings build/mutate/tree to the state of the tree; times stay, so that nothing is built again."""
    def left_out(folder, names):
        inside = os.path.relpath(folder, ROOT)
        return {n for n in names if n == ".git" or (inside == "build" and (n == "mutate" or (
            not os.path.islink(f"{folder}/{n}") and os.path.exists(f"{folder}/{n}/CMakeCache.txt"))))}

    def same(a, b):
        return (os.path.lexists(b) and os.lstat(a).st_mtime_ns == os.lstat(b).st_mtime_ns and
                os.lstat(a).st_size == os.lstat(b).st_size)

    bound = [b for b in BOUND if (ROOT / b).is_dir() and not (ROOT / b).is_symlink()]
    for folder, folders, files in os.walk(ROOT):
        inside = os.path.relpath(folder, ROOT)
        names = folders + files
        omit = left_out(folder, names)
        target = COPY / inside
        target.mkdir(parents=True, exist_ok=True)
        for gone in set(os.listdir(target)) - set(names):
            shutil.rmtree(target / gone) if (target / gone).is_dir() else (target / gone).unlink()
        for name in folders:
            if os.path.join(inside, name) in bound:
                (target / name).mkdir(exist_ok=True)
                omit.add(name)
        for name in names:
            source, to = f"{folder}/{name}", target / name
            if name in omit or (name in folders and not os.path.islink(source)) or same(source, to):
                continue
            if os.path.lexists(to):
                to.unlink()
            shutil.copy2(source, to, follow_symlinks=False)
        folders[:] = [n for n in folders if n not in omit]
    return bound


def run_mutant(steps, bound, limits, drawn=None, objects=()):
    """Builds and tests one mutant, or the tree as it stands. `limits` has the seconds of each step, None for any time."""
    task = {"root": str(ROOT), "copy": str(COPY), "bound": bound, "steps": steps, "limits": limits,
            "path": drawn and drawn.path, "text": drawn and drawn.text, "objects": list(objects)}
    begun = time.monotonic()
    command = ["unshare", "--user", "--map-root-user", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc",
               sys.executable, str(HERE / "mutant_run.py")]
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
        RUNNING.add(process)
        try:
            result = json.loads(process.communicate(json.dumps(task))[0])
        finally:
            RUNNING.remove(process)
    result["seconds"] = round(time.monotonic() - begun, 1)
    return result


class Journal:
    """What is known of each mutant. A survivor is tried again when the tests have changed."""

    def __init__(self, tests):
        self.path = WORK / "journal"
        self.tests = tests
        self.known = {}
        if self.path.exists():
            for line in self.path.read_text(encoding="utf-8").splitlines():
                try:
                    entry = json.loads(line)
                except ValueError:
                    continue  # the last line of a run that was ended
                self.known[entry["identity"]] = entry

    def find(self, identity):
        entry = self.known.get(identity)
        return entry if entry and (entry["verdict"] != "survived" or entry["tests"] == self.tests) else None

    def add(self, identity, result):
        self.known[identity] = {"identity": identity, "tests": self.tests, **result}
        with open(self.path, "a", encoding="utf-8") as file:
            file.write(json.dumps(self.known[identity]) + "\n")


def state_of_files(names):
    return fingerprint(*(name + hashlib.sha256((ROOT / name).read_bytes()).hexdigest() for name in sorted(names)))


def state_of_tests():
    files = (p for p in (ROOT / "tests").rglob("*") if p.is_file() and p.name != "equivalents.txt")
    return state_of_files(str(p.relative_to(ROOT)) for p in files)


def shown(drawn, result):
    by = f" by {result['by']}" if "by" in result else f": {result['reason']}" if "reason" in result else ""
    lines = [f"{result['verdict']}{by}: {drawn.path}:{drawn.line} ({drawn.kind}, {result.get('seconds', 0)} s)"]
    lines += ["- " + line.strip() for line in drawn.before.splitlines()]
    lines += ["+ " + line.strip() for line in drawn.after.splitlines()]
    return "\n".join(lines) + "\n"


def tally(pairs):
    counts = {v: 0 for v in ("noticed", "survived", "equivalent", "identical", "refused")}
    for _, result in pairs:
        counts[result["verdict"]] += 1
    told = counts["noticed"] + counts["survived"]
    share = f"{100 * counts['noticed'] / told:.1f} % noticed" if told else "nothing to notice"
    return ", ".join(f"{number} {verdict}" for verdict, number in counts.items()) + ": " + share


def main():
    parser = argparse.ArgumentParser(prog="mutate", description="Mutation test; see the head of tools/mutate.")
    parser.add_argument("room", nargs="?", default=",".join(HOUSES))
    parser.add_argument("count", nargs="?", type=int, default=30)
    parser.add_argument("seed", nargs="?", default=datetime.date.today().strftime("%Y%m%d"))
    parser.add_argument("--limit", type=float, help="seconds for each line of rooms.txt, after which a mutant counts as noticed")
    parser.add_argument("--again", action="store_true", help="forget what the journal knows of these mutants")
    options = parser.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, end_all)
    rooms, judged, objects = read_rooms(), read_equivalents(), objects_of_sources()
    chosen = draw(options.room.split(","), options.count, options.seed, objects)
    WORK.mkdir(parents=True, exist_ok=True)
    journal = Journal(state_of_tests())
    results = {}
    for d in chosen:
        reason = judged.get((d.path, " ".join(d.before.split()), " ".join(d.after.split())))
        if reason:
            results[d] = {"verdict": "equivalent", "reason": reason}
        elif journal.find(d.identity) and not options.again:
            results[d] = journal.find(d.identity)
    left = [d for d in chosen if d not in results]
    left.sort(key=lambda d: d.path.endswith(".h"))  # a header's mutants take the longest
    print(f"mutate: {len(chosen)} mutants drawn by seed {options.seed}, {len(left)} to run", flush=True)

    bound = take_copy() if left else []
    limits = {}
    sources = state_of_files(objects)
    with concurrent.futures.ThreadPoolExecutor(2) as workers:
        for step in {json.dumps(step) for d in left for step in steps_of(d.path, rooms)}:
            # Known from an earlier run where neither tests nor sources changed since.
            unchanged = fingerprint(step, journal.tests, sources)
            sound = journal.find(unchanged)
            if not sound:
                sound = run_mutant([json.loads(step)], bound, [None])
                if sound["verdict"] != "survived":
                    sys.exit(f"mutate: wanted tests that pass without a mutant, {sound['by']} fails:\n{sound['said']}")
                journal.add(unchanged, sound)
            limits[step] = options.limit or 120 + 10 * sound["steps"][0]
        running = {}
        for d in left:
            steps = steps_of(d.path, rooms)
            allowed = [limits[json.dumps(step)] for step in steps]
            running[workers.submit(run_mutant, steps, bound, allowed, d, objects[d.path])] = d
        for done in concurrent.futures.as_completed(running):
            d, result = running[done], done.result()
            results[d] = {k: v for k, v in result.items() if k != "said"}
            journal.add(d.identity, results[d])
            print(f"{len(results)}/{len(chosen)} {shown(d, result)}", flush=True)

    report = "".join(shown(d, results[d]) + "\n" for d in sorted(chosen, key=lambda d: (results[d]["verdict"], d.path, d.line)))
    lines = [f"{house}: {tally([(d, results[d]) for d in chosen if d.path.startswith(house)])}"
             for house in HOUSES if any(d.path.startswith(house) for d in chosen)]
    (WORK / "report.txt").write_text(report + "\n".join(lines) + "\n", encoding="utf-8")
    for d in chosen:
        if results[d]["verdict"] == "survived":
            print(shown(d, results[d]))
    print("\n".join(lines))
    print(f"mutate: each with its diff in {WORK.relative_to(ROOT)}/report.txt")
    return 1 if any(r["verdict"] == "survived" for r in results.values()) else 0


if __name__ == "__main__":
    sys.exit(main())

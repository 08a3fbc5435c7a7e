# tests/whole/tools/adding_a_method.py SOURCE [BUILD] - follows docs/adding-a-method.md in a copy of the tree: makes each
# change that the page shows. With a build folder it also builds what they touch, runs the tests of the houses concerned,
# and types what the page types; objects that nothing touches are taken from that folder.
import functools
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PAGE = "docs/adding-a-method.md"
TARGETS = ["hostrun", "cocoa", "QVXColor", "unit_tests", "fault_matrix", "watched_bundle", "hostrun_table_test",
           "command_tests"]
TESTS = r"^(unit|architecture\.includes|hostrun\.table\.2015\.0|commands\.(Check|Classes)|present\.(use|formats|examples))$"


def blocks(page):
    """Each block of the page: its kind, its lines without the list's indentation, and the text before it."""
    before = 0
    for match in re.finditer(r"^( *)```(\w*)\n(.*?)^ *```$", page, re.M | re.S):
        indent = len(match[1])
        yield match[2], [line[indent:] for line in match[3].splitlines()], page[before:match.start()]
        before = match.end()


def change(tree, path, lines):
    """Replaces what the lines show as old, which must stand there once, by what they show as new."""
    old = "".join(line[1:] + "\n" for line in lines if line[:1] in " -")
    new = "".join(line[1:] + "\n" for line in lines if line[:1] in " +")
    file = tree / path
    text = file.read_text()
    # A place is a line's start.
    found = [m.start() for m in re.finditer("^" + re.escape(old), text, re.M)]
    if len(found) != 1:
        sys.exit(f"{PAGE}: wanted these lines once in {path}, found them {len(found)} times:\n{old}")
    file.write_text(text[:found[0]] + new + text[found[0] + len(old):])


def make_changes(tree, page):
    """Answers the files that changed."""
    path, changed = None, []
    for kind, lines, before in blocks(page):
        named = [name for name in re.findall(r"`([\w./+-]+)`", before) if "/" in name and (tree / name).is_file()]
        path = named[-1] if named else path
        if kind == "diff":
            change(tree, path, lines)
            changed.append(path)
    return changed


def stale_objects(source, build, changed):
    """Those that depend on a changed file, or are older than something that they depend on."""
    dependencies = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    touched = {source / path for path in changed}

    @functools.cache
    def file_of(name):
        return pathlib.Path(os.path.normpath(build / name))

    @functools.cache
    def time_of(name):
        return file_of(name).stat().st_mtime if file_of(name).exists() else float("inf")

    stale, target = set(), ""
    for line in dependencies.splitlines():
        name = line.strip()
        if not line.startswith(" "):
            target = line.partition(":")[0]
        elif file_of(name) in touched or time_of(name) > time_of(target):
            stale.add(target)
    return stale


def run(command, **options):
    finished = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if finished.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with {finished.returncode}:\n{finished.stdout[-8000:]}")
    return finished.stdout


def type_what_is_typed(tree, page):
    """The lines that begin with "$ ", and below them what they print."""
    for kind, lines, _ in blocks(page):
        if kind or not lines[0].startswith("$ "):
            continue
        printed, wanted = [], [line for line in lines if not line.startswith("$ ")]
        for line in lines:
            if line.startswith("$ ") and line != "$ tools/build":  # done already
                typed = line[2:].replace("./run ", "build/hostrun ")
                printed += run(["sh", "-c", typed], cwd=tree).splitlines()
        if printed != wanted:
            sys.exit(f"{PAGE}: wanted {wanted} where it types {lines[0]}, found {printed}")


def build_and_test(source, build, tree, page, changed):
    stale = tree / "stale.txt"
    stale.write_text("".join(name + "\n" for name in stale_objects(source, build, changed)))
    launcher = ";".join(map(str, [source / "tests/whole/tools/take_object.sh", build, tree, stale]))
    options = [f"-DCMAKE_{language}_COMPILER_LAUNCHER={launcher}" for language in ("C", "CXX", "OBJC")]
    run(["cmake", "--preset", "default", f"-DQVX_SYSROOT={build / 'sysroot'}", *options], cwd=tree)
    run(["cmake", "--build", "build", "--target", *TARGETS], cwd=tree)
    type_what_is_typed(tree, page)
    run(["build/fault_matrix", "build/watched_bundle.so", "--only", "isEqual"], cwd=tree)
    print(run(["ctest", "--test-dir", "build", "--output-on-failure", "-j2", "-R", TESTS], cwd=tree))


def main():
    source = pathlib.Path(sys.argv[1]).resolve()
    page = (source / PAGE).read_text()
    with tempfile.TemporaryDirectory() as work:
        tree = pathlib.Path(work).resolve() / "tree"
        shutil.copytree(source, tree, symlinks=True, ignore=lambda folder, names: {".git", "build"} & set(names))
        changed = make_changes(tree, page)
        if not changed:
            sys.exit(f"{PAGE}: wanted blocks that show what changes, found none")
        if len(sys.argv) > 2:
            build_and_test(source, pathlib.Path(sys.argv[2]).resolve(), tree, page, changed)
    print("the page leads where it says:", ", ".join(dict.fromkeys(changed)))


main()

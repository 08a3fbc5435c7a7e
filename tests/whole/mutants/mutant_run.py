"""tests/whole/mutants/mutant_run.py - builds and tests one mutant where nothing else sees it.

Runs as the first process of namespaces of its own: what it mounts and starts is gone when it ends. Reads what to do as
JSON from its input, and writes a verdict as JSON.
"""

import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import time

# What a mutant makes a test say may be no text.
QUIET = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "stdin": subprocess.DEVNULL, "text": True,
         "errors": "backslashreplace"}


def run(*command, limit=None):
    return subprocess.run(command, check=False, timeout=limit, **QUIET)


def mount(*arguments):
    done = run("mount", *arguments)
    if done.returncode != 0:
        raise SystemExit(f"mutate: wanted to mount {arguments[-1]}, the system says: {done.stdout.strip()}")


def enter(root, copy, bound):
    """Puts the copy in the root's place, writable, and the bound folders of the root into it."""
    room = tempfile.mkdtemp()
    mount("-t", "tmpfs", "none", room)
    for name in ("upper", "work", "temporary"):
        os.mkdir(f"{room}/{name}")
    # Process numbers, by which tests name their files, are the same in each of the namespaces.
    os.environ["TMPDIR"] = f"{room}/temporary"
    os.environ["GTEST_FAIL_FAST"] = "1"
    for i, folder in enumerate(bound):
        os.mkdir(f"{room}/{i}")
        mount("--rbind", f"{root}/{folder}", f"{room}/{i}")
    mount("-t", "overlay", "none", "-o",
          f"userxattr,lowerdir={copy},upperdir={room}/upper,workdir={room}/work", root)
    for i, folder in enumerate(bound):
        mount("--rbind", f"{room}/{i}", f"{root}/{folder}")
    os.chdir(root)


def code_of(objects):
    """A fingerprint of each object but for what debuggers read."""
    prints = []
    with tempfile.TemporaryDirectory() as folder:
        for name in objects:
            stripped = f"{folder}/stripped"
            subprocess.run(["objcopy", "--strip-debug", f"build/{name}", stripped], check=True)
            with open(stripped, "rb") as file:
                prints.append(hashlib.sha256(file.read()).hexdigest())
    return prints


def verdict_of(task):
    enter(task["root"], task["copy"], task["bound"])
    if task["path"]:
        before = code_of(task["objects"])
        with open(task["path"], "w", encoding="utf-8") as file:
            file.write(task["text"])
        if run("ninja", "-C", "build", *task["objects"]).returncode != 0:
            return {"verdict": "refused"}
        if code_of(task["objects"]) == before:
            return {"verdict": "identical"}
    seconds = []
    for (targets, tests, cases), limit in zip(task["steps"], task["limits"]):
        built = run("ninja", "-C", "build", *targets)
        if built.returncode != 0:
            return {"verdict": "noticed", "by": "the build of " + " ".join(targets), "said": built.stdout[-3000:]}
        os.environ["GTEST_FILTER"] = cases
        begun = time.monotonic()
        try:
            # A test that passes the second time failed by chance.
            tested = run("ctest", "--test-dir", "build", "-R", tests, "--stop-on-failure", "--output-on-failure",
                         "--repeat", "until-pass:2", limit=limit)
        except subprocess.TimeoutExpired:
            return {"verdict": "noticed", "by": f"the time limit of {tests}"}
        seconds.append(round(time.monotonic() - begun, 1))
        failed = re.findall(r"^\s*\d+/\d+ Test +#\d+: (\S+) .*\*\*\*(?!Skipped)", tested.stdout, re.MULTILINE)
        if tested.returncode != 0:
            return {"verdict": "noticed", "by": failed[-1] if failed else "ctest", "said": tested.stdout[-3000:]}
        if not re.search(r"^\s*\d+/\d+ Test .* Passed ", tested.stdout, re.MULTILINE):
            return {"verdict": "noticed", "by": "nobody", "said": f"no test that fits {tests} ran"}
    return {"verdict": "survived", "steps": seconds}


if __name__ == "__main__":
    print(json.dumps(verdict_of(json.load(sys.stdin))))

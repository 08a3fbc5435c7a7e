#!/usr/bin/env python3
# tests/bundle/coverage/explain.py - the report of tools/coverage: figures by file, then every branch that no test takes, with
# its reason beside the line. Fails below the goals, for a branch without a reason, and for a reason without a branch.
#
#   explain.py COVERAGE.json UNREACHED.txt REPORT.txt     COVERAGE.json is gcovr's
import collections
import json
import sys

LINES_WANTED = 100.0
BRANCHES_WANTED = 95.0


def read_reasons(path):
    """{(file, line's text): (branches, reason)} from lines "file | text | branches | reason"."""
    reasons = {}
    with open(path, encoding="utf-8") as table:
        for number, row in enumerate(table, 1):
            if not row.strip() or row.startswith("#"):
                continue
            parts = [part.strip() for part in row.split(" | ")]
            if len(parts) != 4 or not parts[2].isdigit():
                sys.exit(f"{path}:{number}: wanted file | text of the line | branches | reason, found: {row.strip()}")
            reasons[parts[0], parts[1]] = (int(parts[2]), parts[3])
    return reasons


def percent(reached, all_of_them):
    return 100.0 * reached / all_of_them if all_of_them else 100.0


def main(coverage, table, report):
    with open(coverage, encoding="utf-8") as file:
        files = json.load(file)["files"]
    reasons = read_reasons(table)
    found = collections.Counter()  # a text may stand on several lines of a file
    figures = []
    missed = []
    problems = []
    for each in sorted(files, key=lambda one: one["file"]):
        name = each["file"]
        with open(name, encoding="utf-8") as source:
            texts = [line.strip() for line in source]
        lines = [line for line in each["lines"] if not line.get("gcovr/noncode")]
        branches = taken = 0
        for line in lines:
            here = [branch for branch in line["branches"] if not branch["throw"]]
            untaken = sum(branch["count"] == 0 for branch in here)
            branches += len(here)
            taken += len(here) - untaken
            place = f"{name}:{line['line_number']}"
            text = texts[line["line_number"] - 1]
            if line["count"] == 0:
                problems.append(f"{place}: no test reaches this line: {text}")
            if untaken == 0:
                continue
            _, reason = reasons.get((name, text), (0, "no reason is given"))
            missed.append(f"{place}: {untaken} of {len(here)} branches not taken\n    {text}\n    {reason}")
            found[name, text] += untaken
        figures.append((name, len(lines), sum(line["count"] > 0 for line in lines), branches, taken))
    for name, text in {**found, **reasons}:
        untaken, (count, _) = found[name, text], reasons.get((name, text), (0, ""))
        if untaken == 0:
            problems.append(f"{table}: every branch is taken where this reason stands, or the line is gone: {name} | {text}")
        elif count != untaken:
            problems.append(f"{name}: {untaken} branches not taken, {count} explained in {table}: {text}")

    total = ("all", *(sum(column) for column in list(zip(*figures))[1:]))
    rows = [f"{'file':28} {'lines':>12} {'':>8} {'branches':>12}"]
    for name, lines, reached, branches, taken in [*figures, total]:
        rows.append(f"{name:28} {f'{reached}/{lines}':>12} {percent(reached, lines):7.1f}% {f'{taken}/{branches}':>12} "
                    f"{percent(taken, branches):7.1f}%")
    text = "\n".join([*rows, "", "Branches that no test takes:", "", *missed, ""])
    with open(report, "w", encoding="utf-8") as file:
        file.write(text)
    print(text)

    if percent(total[2], total[1]) < LINES_WANTED:
        problems.append(f"wanted {LINES_WANTED} % of the lines, found {percent(total[2], total[1]):.2f} %")
    if percent(total[4], total[3]) < BRANCHES_WANTED:
        problems.append(f"wanted {BRANCHES_WANTED} % of the branches, found {percent(total[4], total[3]):.2f} %")
    for problem in problems:
        print(f"coverage: {problem}", file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit("wanted COVERAGE.json UNREACHED.txt REPORT.txt; see the head of this file")
    sys.exit(main(*sys.argv[1:]))

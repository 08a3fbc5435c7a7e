#!/usr/bin/env python3
"""tests/whole/present/approved.py HOSTRUN REFERENCE [--approve] - what the commands draw and write, against what was
looked at and approved in approved/: the cards of a program as SVG, letter by letter; the same cards as PNG, where each
corner, edge, swatch and label of the SVG must be found; members of the reference, letter by letter."""

import re
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

APPROVED = Path(__file__).resolve().parent / "approved"
CARD = (216, 136)  # width and height, with the edge
PAGE = (0xF4, 0xF5, 0xF7)
MEMBERS = ("NSColorQVX.colorWithDeviceRGB", "NSColorQVX.redColor", "NSColorQVX.getHSV-2", "NSColorQVX.colorValue",
           "NSColorSpaceQVX.NSCMYKColorSpaceModel", "NSColorSpaceQVX.Constructor")
failures = []


def check(holds, what):
    if not holds:
        failures.append(what)


def compare(found, name):
    if "--approve" in sys.argv:
        (APPROVED / name).write_text(found, encoding="utf-8")
    wanted = (APPROVED / name).read_text(encoding="utf-8").splitlines()
    lines = found.splitlines()
    for number, (a, b) in enumerate(zip(wanted, lines), 1):
        if a != b:
            failures.append(f"{name}:{number}: wanted {a}\nfound {b}")
            return
    check(len(wanted) == len(lines), f"{name}: wanted {len(wanted)} lines, found {len(lines)}")


def pixels_of(png):
    """Rows of (red, green, blue), of a PNG with eight bits a channel."""
    data, at, header = b"", 8, None
    while at < len(png):
        size, kind = struct.unpack(">I4s", png[at:at + 8])
        body = png[at + 8:at + 8 + size]
        header = struct.unpack(">IIBBBBB", body) if kind == b"IHDR" else header
        data += body if kind == b"IDAT" else b""
        at += size + 12
    width, height, _, colours = header[:4]
    step = {2: 3, 6: 4}[colours]
    raw, rows, above = zlib.decompress(data), [], bytes(width * step)
    for y in range(height):
        kind, line = raw[y * (width * step + 1)], bytearray(raw[y * (width * step + 1) + 1:(y + 1) * (width * step + 1)])
        for x in range(len(line)):
            left = line[x - step] if x >= step else 0
            corner = above[x - step] if x >= step else 0
            guess = left + above[x] - corner
            nearest = min((left, above[x], corner), key=lambda v: abs(guess - v))
            line[x] = (line[x] + (0, left, above[x], (left + above[x]) // 2, nearest)[kind]) & 0xFF
        above = bytes(line)
        rows.append([tuple(line[x * step:x * step + 3]) for x in range(width)])
    return rows


def near(a, b, tolerance=3):
    return all(abs(x - y) <= tolerance for x, y in zip(a, b))


def check_picture(rows, svg):
    """Whether the picture shows what the SVG says, where it says it."""
    width, height = map(int, re.search(r'width="(\d+)" height="(\d+)"', svg).groups())
    check((len(rows[0]), len(rows)) == (width, height), f"wanted a picture of {width} x {height}, found {len(rows[0])} x {len(rows)}")
    cards = re.findall(r'translate\((\d+) (\d+)\)"><title>(.*?)</title>(.*?)</g>', svg, re.DOTALL)
    check(len(cards) == 7, f"wanted 7 cards, found {len(cards)}")
    for x, y, name, inside in ((int(x), int(y), name, inside) for x, y, name, inside in cards):
        right, bottom = x + CARD[0] - 1, y + CARD[1] - 1
        for cx, cy in ((x, y), (right, y), (x, bottom), (right, bottom)):
            check(near(rows[cy][cx], PAGE), f"{name}: the corner at {cx}, {cy} is round")
        for cx, cy, outward in ((x + 108, y, (0, -1)), (x, y + 40, (-1, 0)), (right, y + 40, (1, 0)), (x + 108, bottom, (0, 1))):
            beside = [rows[cy + far * outward[1]][cx + far * outward[0]] for far in (3, -3)]
            check(near(beside[0], PAGE) and not near(beside[1], PAGE), f"{name}: an edge at {cx}, {cy}")
        for cx, cy in ((x + 8, y + 3), (right - 8, y + 3), (x + 8, bottom - 3), (right - 8, bottom - 3)):
            check(not near(rows[cy][cx], PAGE), f"{name}: the card reaches to {cx}, {cy}")
        fill = re.search(r'#swatch" fill="#(..)(..)(..)"/>', inside)
        if fill:
            for cy in (y + 4, y + 30, y + 68):
                check(near(rows[cy][x + 108], [int(part, 16) for part in fill.groups()]), f"{name}: its colour")
        check(near(rows[y + 75][x + 4], (0xFF, 0xFF, 0xFF)), f"{name}: white behind the labels")
    for at, left, line, size, text in texts_of(svg):
        drawn = any(not near(rows[py][px], rows[line - size][left - 2], 40)
                    for py in range(line - size // 2, line) for px in range(left, left + 6 * len(text)))
        check(drawn == bool(text), f"{at}: {text!r} from {left}, {line}")


def texts_of(svg):
    """Each label with its group and its place on the page."""
    x = y = 0
    for line in svg.splitlines():
        moved = re.search(r'translate\((\d+) (\d+)\)', line)
        x, y = map(int, moved.groups()) if moved else (x, y)
        text = re.match(r'<text x="(\d+)" y="(\d+)" font-size="([\d.]+)"[^>]*>(.*)</text>', line)
        if text:
            yield f"{x}, {y}", x + int(text[1]), y + int(text[2]), int(float(text[3])), text[4]


def main():
    hostrun, reference = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder:
        def run(*arguments):
            subprocess.run([hostrun, *arguments], check=True, cwd=APPROVED, capture_output=True)

        run("swatches", "--columns", "3", "--out", f"{folder}/cards.svg", "cards.bas")
        svg = Path(folder, "cards.svg").read_text(encoding="utf-8")
        compare(svg, "cards.svg")
        run("swatches", "--columns", "3", "--out", f"{folder}/cards.png", "cards.bas")
        check_picture(pixels_of(Path(folder, "cards.png").read_bytes()), svg)
        run("docs", "--descriptions", reference, "--out", f"{folder}/page.html")
        page = Path(folder, "page.html").read_text(encoding="utf-8")
        articles = [re.search(f'<article id="{re.escape(name)}".*?</article>\n', page, re.DOTALL) for name in MEMBERS]
        compare("".join(article[0] if article else "none\n" for article in articles), "members.html")
        kinds = re.findall(r'<span class="kind">([^<,]*)', page)
        wanted = {"constant": 18, "constructor": 5, "method": 61, "property": 33, "shared method": 77}
        check({kind: kinds.count(kind) for kind in sorted(set(kinds))} == wanted, f"each kind of member: {sorted(set(kinds))}")
    print("\n".join(failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

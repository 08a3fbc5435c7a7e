# tests/whole/approved/pictures.py HOSTRUN FONTS [--renew] - "hostrun swatches" as PNG and as SVG, with the fonts of one
# folder, compared with the approved pictures; or renews these, and says what changes. Ends with 77 without python3-pil.
#
# Another version of the drawing libraries may round another way: a point's colour may be off by a little anywhere and by
# more in a few points, a number of the SVG by less than what moves anything. That neither hides a moved corner or label is
# tried each time, on the approved pictures themselves.
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

try:
    from PIL import Image, ImageChops
except ImportError as error:
    print(f"skipped: wanted python3-pil, found {error}; tools/bootstrap --browser installs it")
    sys.exit(77)

OFF_ANYWHERE = 24  # of 255, in each channel
FEW_POINTS = 12
OFF_IN_SVG = 0.25  # pixels
NUMBER = r"(?<![\w#&])-?\d*\.?\d+"

here = pathlib.Path(__file__).resolve().parent
hostrun = pathlib.Path(sys.argv[1]).resolve()
fonts = pathlib.Path(sys.argv[2]).resolve()
renew = "--renew" in sys.argv


def points_off(one, other):
    """How many points differ by more than a little, and the box that they are in."""
    if one.size != other.size:
        return one.width * one.height, (0, 0, *one.size)
    difference = ImageChops.difference(one.convert("RGB"), other.convert("RGB"))
    off = Image.eval(difference, lambda value: 255 if value > OFF_ANYWHERE else 0).convert("L")
    off = off.point(lambda value: 255 if value else 0)
    return off.histogram()[255], off.getbbox()


def same_png(one, other):
    return points_off(one, other)[0] <= FEW_POINTS


def drawing_of(svg):
    """What is drawn: its numbers, and all the rest; what stands as text is compared to the letter."""
    marked = re.sub(r">[^<]*<|" + NUMBER, lambda found: found[0] if found[0][0] == ">" else "\0", svg)
    return [float(n) for n in re.findall(NUMBER, re.sub(r">[^<]*<", "><", svg))], marked


def same_svg(one, other):
    (numbers, rest), (other_numbers, other_rest) = drawing_of(one), drawing_of(other)
    return rest == other_rest and len(numbers) == len(other_numbers) and all(
        abs(a - b) <= OFF_IN_SVG for a, b in zip(numbers, other_numbers))


def moved(image, box):
    """The image with that part of it one point further to the right."""
    copy = image.copy()
    copy.paste(image.crop(box), (box[0] + 1, box[1]))
    return copy


def what_hides(png, svg):
    """Where a change that somebody would see passes for none."""
    x, y = map(int, re.search(r"translate\((\d+) (\d+)\)", svg).groups())
    for what, box in {"corner": (x - 1, y - 1, x + 9, y + 9), "label": (x + 9, y + 80, x + 60, y + 97)}.items():
        if same_png(png, moved(png, box)):
            yield f"a moved {what} of the PNG, at {box}"
    for match in re.finditer(r' (?:x|y|rx|width|height|font-size)="([\d.]+)"| d="[A-Z]([\d.]+)|translate\(([\d.]+)', svg):
        group = match.lastindex
        start, end = match.span(group)
        if same_svg(svg, svg[:start] + str(float(match[group]) + 1) + svg[end:]):
            yield f"a change of{match[0]} in the SVG"
    if same_svg(svg, svg.replace(">opaque<", ">opaqve<", 1)):
        yield "another label in the SVG"


def draw(folder):
    # No other font, and nothing that the machine has set.
    (folder / "fonts.conf").write_text(f"<fontconfig><dir>{fonts}</dir><cachedir>{folder}</cachedir></fontconfig>\n")
    for name in ("cards.png", "cards.svg"):
        subprocess.run([hostrun, "swatches", "--columns", "3", "--out", folder / name, "cards.bas"], cwd=here, check=True,
                       capture_output=True, env={**os.environ, "FONTCONFIG_FILE": str(folder / "fonts.conf")})
    return Image.open(folder / "cards.png").convert("RGBA"), (folder / "cards.svg").read_text()


def main():
    approved_png, approved_svg = here / "cards.png", here / "cards.svg"
    failures = []
    with tempfile.TemporaryDirectory() as work:
        png, svg = draw(pathlib.Path(work))
        before = Image.open(approved_png).convert("RGBA") if approved_png.exists() else Image.new("RGBA", (1, 1))
        if not same_png(before, png):
            failures.append("the PNG differs in {} points, within {}".format(*points_off(before, png)))
        drawn = approved_svg.read_text() if approved_svg.exists() else ""
        if not same_svg(drawn, svg):
            failures.append("the SVG differs:\n" + "\n".join(
                difflib.unified_diff(drawn.splitlines(), svg.splitlines(), "approved", "found", "", "", 0, "")))
        if renew:
            print("\n".join(failures) or "no picture changes")
            png.save(approved_png, optimize=True)
            approved_svg.write_text(svg)
            return
        failures += [f"{what} passes for the same" for what in what_hides(before, drawn)]
    if failures:
        sys.exit("\n".join(failures) + "\nwhere the pictures should be others, tools/approve")
    print("both pictures are as approved")


main()

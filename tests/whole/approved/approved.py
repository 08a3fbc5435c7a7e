# tests/whole/approved/approved.py - compares texts with the approved files beside it, or with --renew renews these; prints
# what differs either way.
import difflib
import pathlib
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
SOURCE = FOLDER.parents[2]
RENEW = "--renew" in sys.argv


def compare(texts):
    """Ends the program with what became of the texts, by the names of their files."""
    different = 0
    for name, found in texts:
        file = FOLDER / name
        approved = file.read_text() if file.exists() else ""
        if found == approved:
            continue
        different += 1
        sys.stdout.writelines(difflib.unified_diff(approved.splitlines(True), found.splitlines(True), "approved/" + name, name))
        if RENEW:
            file.write_text(found)
    if RENEW:
        print(f"{different} of {len(texts)} renewed")
    elif different:
        sys.exit(f"{different} of {len(texts)} are others than the approved ones; where they should be, tools/approve")
    else:
        print(f"all {len(texts)} are as approved")

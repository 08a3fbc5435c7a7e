# tests/whole/approved/members.py HOSTRUN REFERENCE [--renew] - what "hostrun docs" writes of a member of each kind, compared
# with the approved articles; or renews these, and prints what changes.
import difflib
import pathlib
import re
import subprocess
import sys
import tempfile

MEMBERS = ["NSColorQVX.colorWithDeviceRGB", "NSColorQVX.redColor", "NSColorQVX.getHSV-2", "NSColorQVX.colorValue",
           "NSColorSpaceQVX.NSCMYKColorSpaceModel", "NSColorSpaceQVX.Constructor"]

approved = pathlib.Path(__file__).resolve().parent / "members.html"
with tempfile.TemporaryDirectory() as work:
    page = pathlib.Path(work, "page.html")
    subprocess.run([sys.argv[1], "docs", "--descriptions", sys.argv[2], "--out", page], check=True, capture_output=True)
    text = page.read_text(encoding="utf-8")
found = ""
for name in MEMBERS:
    article = re.search(f'<article id="{re.escape(name)}".*?</article>\n', text, re.DOTALL)
    found += article[0] if article else f"no article of {name}\n"
wanted = approved.read_text(encoding="utf-8") if approved.exists() else ""
changes = "\n".join(difflib.unified_diff(wanted.splitlines(), found.splitlines(), "approved", "found", "", "", 0, ""))
if "--renew" in sys.argv:
    print(changes or "no member changes")
    approved.write_text(found, encoding="utf-8")
elif changes:
    sys.exit(changes + "\nwhere the articles should be others, tools/approve")
else:
    print(f"{len(MEMBERS)} members are as approved")

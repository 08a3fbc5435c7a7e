# tests/whole/approved/members.py HOSTRUN [--renew] - what the reference has about members of each kind, and the page around
# the members but for its style and its script, compared with the approved files; or renews these, and prints what changes.
import pathlib
import re
import subprocess
import sys
import tempfile

from approved import SOURCE, compare

MEMBERS = ["NSColorQVX.colorWithDeviceRGB", "NSColorQVX.redColor", "NSColorQVX.getHSV-2", "NSColorQVX.colorValue",
           "NSColorSpaceQVX.NSCMYKColorSpaceModel", "NSColorSpaceQVX.Constructor"]

hostrun = pathlib.Path(sys.argv[1]).resolve()
with tempfile.TemporaryDirectory() as folder:
    page = pathlib.Path(folder) / "page.html"
    subprocess.run([hostrun, "docs", "--descriptions", SOURCE / "docs/reference.txt", "--out", page], check=True,
                   capture_output=True)
    text = page.read_text()
articles = [re.search(f'<article id="{re.escape(name)}".*?</article>\n', text, re.S) for name in MEMBERS]
compare([("members.html", "".join(article[0] if article else "none\n" for article in articles)),
         ("page.html", re.sub("(?s)<article id=.*?</article>\n|<style>.*?</style>\n|<script>.*?</script>\n", "", text))])

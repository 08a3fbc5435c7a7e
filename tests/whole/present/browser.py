# tests/whole/present/browser.py PAGE FOLDER MEMBERS - drives chromium through chromedriver: types into the search box of the reference,
# looks at what is shown of that many members, in light and dark, at three widths and printed, and reads the page with the
# keyboard alone; leaves screenshots and the printed pages in FOLDER.
import base64
import json
import pathlib
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

KEY_ESCAPE = "\ue00c"
KEY_TAB = "\ue004"
KEY_ENTER = "\ue007"
KEY_SHIFT = "\ue008"
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--hide-scrollbars",
]


def request(method, url, body=None):
    data = None if body is None else json.dumps(body).encode()
    call = urllib.request.Request(url, data, {"Content-Type": "application/json"}, method=method)
    with urllib.request.urlopen(call, timeout=120) as answer:
        return json.load(answer)["value"]


class Browser:
    def __init__(self, driver, profile):
        options = {"args": FLAGS + ["--user-data-dir=" + profile, "--window-size=1280,1000"]}
        capabilities = {"capabilities": {"alwaysMatch": {"goog:chromeOptions": options,
                                                         "goog:loggingPrefs": {"browser": "ALL"}}}}
        session = request("POST", driver + "/session", capabilities)
        self.base = driver + "/session/" + session["sessionId"]

    def post(self, path, body):
        return request("POST", self.base + path, body)

    def open(self, url):
        self.post("/url", {"url": url})

    def script(self, text):
        return self.post("/execute/sync", {"script": text, "args": []})

    def find(self, css):
        return self.post("/element", {"using": "css selector", "value": css})[ELEMENT]

    def type(self, css, text):
        self.post("/element/" + self.find(css) + "/value", {"text": text})

    # Keys go to what has the focus.
    def press(self, *keys):
        actions = [{"type": "keyDown", "value": key} for key in keys]
        actions += [{"type": "keyUp", "value": key} for key in reversed(keys)]
        self.post("/actions", {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def focus(self):
        return self.script("const e = document.activeElement; return e.id || e.getAttribute('href') || e.tagName;")

    def print(self, file):
        file.write_bytes(base64.b64decode(self.post("/print", {"background": False})))

    def emulate(self, scheme):
        self.post("/goog/cdp/execute", {"cmd": "Emulation.setEmulatedMedia",
                                        "params": {"features": [{"name": "prefers-color-scheme", "value": scheme}]}})

    def size(self, width, height):
        self.post("/goog/cdp/execute", {"cmd": "Emulation.setDeviceMetricsOverride", "params": {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}})

    def screenshot(self, file):
        picture = base64.b64decode(request("GET", self.base + "/screenshot"))
        file.write_bytes(picture)

    def console(self):
        return self.post("/se/log", {"type": "browser"})

    def close(self):
        request("DELETE", self.base)


failures = []


def expect(what, wanted, found):
    if wanted != found:
        failures.append(what)
        print(f"FAILED: {what}: wanted {wanted!r}, found {found!r}")


SHOWN = "return [...document.querySelectorAll('article')].filter(a => a.offsetParent).map(a => a.id);"
LISTED = "return [...document.querySelectorAll('nav li')].filter(a => a.offsetParent).length;"
CONTRAST = """
const channel = v => { v /= 255; return v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4; };
const rgb = text => text.match(/[\\d.]+/g).slice(0, 3).map(Number);
const luminance = c => 0.2126 * channel(c[0]) + 0.7152 * channel(c[1]) + 0.0722 * channel(c[2]);
const ground = e => { for (; e; e = e.parentElement) {
  const c = getComputedStyle(e).backgroundColor; if (!/, 0\\)$|transparent/.test(c)) return c; } return 'rgb(255,255,255)'; };
let worst = 99, where = '';
for (const e of document.querySelectorAll('h1, h2, h3, h4, p, a, dt, dd, code, i, small, b, .kind, output')) {
  if (!e.offsetParent || !e.textContent.trim()) continue;
  const a = luminance(rgb(getComputedStyle(e).color)), b = luminance(rgb(ground(e)));
  const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  if (ratio < worst) { worst = ratio; where = e.tagName + ' ' + e.textContent.slice(0, 40); }
}
return [worst, where];
"""


def check(browser, page, folder, members):
    browser.open(page.as_uri())
    everything = browser.script(SHOWN)
    expect("all members are shown at first", members, len(everything))
    expect("all members are listed at first", members, browser.script(LISTED))
    expect("the tally says so", f"{members} members", browser.script("return document.getElementById('count').value;"))

    browser.type("#search", "getHSV brightness")
    expect("typed words leave what has them all", ["NSColorQVX.getHSV", "NSColorQVX.getHSV-2"], browser.script(SHOWN))
    expect("the list follows", 2, browser.script(LISTED))
    expect("the tally follows", f"2 of {members} members", browser.script("return document.getElementById('count').value;"))
    expect("classes without a member that fits are gone", False,
           browser.script("return !!document.getElementById('NSColorListQVX').offsetParent;"))
    browser.screenshot(folder / "search.png")
    browser.type("#search", " nothingofthesort")
    expect("words that nothing has leave nothing", [], browser.script(SHOWN))
    expect("and the page says so", True, browser.script("return !!document.getElementById('none').offsetParent;"))
    browser.type("#search", KEY_ESCAPE)
    expect("Escape brings everything back", everything, browser.script(SHOWN))

    browser.script("document.activeElement.blur();")
    browser.type("body", "/")
    expect("/ leads to the search box", "search", browser.script("return document.activeElement.id;"))
    expect("and is not typed", "", browser.script("return document.getElementById('search').value;"))
    browser.open("about:blank")
    browser.open(page.as_uri() + "#q=Load%20shared")
    expect("an address may hold a search", ["NSColorListQVX.Load"],
           [i for i in browser.script(SHOWN) if i.startswith("NSColorListQVX")])
    browser.open("about:blank")
    browser.open(page.as_uri() + "#NSColorQVX.orangeColor")
    expect("a swatch has its colour", "rgb(255, 128, 0)", browser.script(
        "const s = document.querySelector('[id=\"NSColorQVX.orangeColor\"] .swatch span');"
        "const p = document.createElement('p'); document.body.append(p);"
        "p.style.color = getComputedStyle(s).getPropertyValue('--c'); return getComputedStyle(p).color;"))

    grounds = {}
    for scheme in ("light", "dark"):
        browser.emulate(scheme)
        grounds[scheme] = browser.script("return getComputedStyle(document.body).backgroundColor;")
        ratio, where = browser.script(CONTRAST)
        print(f"{scheme}: smallest contrast {ratio:.2f} ({where})")
        expect(f"all text has a contrast of 4.5 in {scheme}", True, ratio >= 4.5)
        browser.open("about:blank")
        browser.open(page.as_uri())
        browser.screenshot(folder / f"top-{scheme}.png")
        browser.open(page.as_uri() + "#NSColorQVX.orangeColor")
        browser.screenshot(folder / f"colours-{scheme}.png")
    expect("light and dark differ", True, grounds["light"] != grounds["dark"])

    for width in (390, 768, 1280):
        browser.size(width, 900)
        browser.open("about:blank")
        browser.open(page.as_uri())
        for scheme in ("light", "dark"):
            browser.emulate(scheme)
            expect(f"nothing is wider than a window of {width} in {scheme}", True,
                   browser.script("return document.documentElement.scrollWidth <= window.innerWidth;"))
            expect(f"the contents are open at {width} where they stand beside the members", width > 832,
                   browser.script("return document.getElementById('contents').open;"))
            browser.screenshot(folder / f"width-{width}-{scheme}.png")
    browser.print(folder / "printed.pdf")
    expect("the page asks for nothing else", 0, browser.script("return performance.getEntriesByType('resource').length;"))
    expect("the console is silent", [], browser.console())


# Every step is a key.
def read_with_the_keyboard(browser, page, folder):
    browser.emulate("light")
    browser.size(1280, 900)
    browser.open("about:blank")
    browser.open(page.as_uri())
    browser.press(KEY_TAB)
    expect("the first Tab offers to skip", "#main", browser.focus())
    expect("and shows that", True, browser.script("return document.activeElement.getBoundingClientRect().top >= 0;"))
    browser.press(KEY_ENTER)
    expect("Enter skips to the members", "main", browser.focus())
    browser.press(KEY_TAB)
    expect("the next link is one of the members'", True,
           browser.script("return !!document.activeElement.closest('main') && document.activeElement.tagName === 'A';"))
    browser.press("/")
    expect("/ leads to the search box", "search", browser.focus())
    for letter in "getHSV brightness":
        browser.press(letter)
    expect("what is typed is searched for", 2, len(browser.script(SHOWN)))
    browser.press(KEY_TAB)
    browser.press(KEY_TAB)
    expect("the contents follow, with what is left", "#NSColorQVX.getHSV", browser.focus())
    expect("the focus can be seen", True,
           browser.script("return getComputedStyle(document.activeElement).outlineStyle !== 'none';"))
    browser.press(KEY_ENTER)
    expect("Enter leads to the member", "#NSColorQVX.getHSV", browser.script("return location.hash;"))
    expect("which is not below the heading", True, browser.script(
        "const a = document.getElementById('NSColorQVX.getHSV').getBoundingClientRect();"
        "return a.top >= document.querySelector('header').getBoundingClientRect().bottom - 1 && a.top < innerHeight;"))
    browser.press(KEY_SHIFT, KEY_TAB)

    browser.size(390, 800)
    browser.open("about:blank")
    browser.open(page.as_uri())
    for _ in range(3):
        browser.press(KEY_TAB)
    expect("at the width of a phone the third stop is the contents", "SUMMARY", browser.focus())
    browser.press(KEY_ENTER)
    expect("Enter opens them", True, browser.script("return document.getElementById('contents').open;"))
    browser.screenshot(folder / "contents-390.png")
    browser.press(KEY_TAB)
    expect("the first class comes first", "#NSColorQVX", browser.focus())
    browser.press(KEY_ENTER)
    expect("its link closes them again", False, browser.script("return document.getElementById('contents').open;"))


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until_ready(driver):
    for _ in range(600):
        try:
            if request("GET", driver + "/status")["ready"]:
                return
        except OSError:
            pass
        time.sleep(0.1)
    sys.exit("wanted chromedriver to answer within a minute, found it silent")


def main():
    page, folder, members = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]), int(sys.argv[3])
    port = free_port()
    driver = f"http://127.0.0.1:{port}"
    with tempfile.TemporaryDirectory() as profile:
        server = subprocess.Popen(["chromedriver", f"--port={port}"], stdout=subprocess.DEVNULL)
        try:
            wait_until_ready(driver)
            browser = Browser(driver, profile)
            try:
                check(browser, page, folder, members)
                read_with_the_keyboard(browser, page, folder)
            finally:
                browser.close()
        finally:
            server.terminate()
            server.wait()
    if failures:
        sys.exit(f"{len(failures)} of the checks failed")
    print("all of it holds; screenshots are in", folder)


main()

# tests/whole/present/formats.py HOSTRUN SOURCE BUILD - reads what hostrun writes as others do: JSON by the schemas of the
# documents, HTML and SVG by strict parsers. Ends with 77 where a parser is missing.
import copy
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.dom.minidom

try:
    import html5lib
    import jsonschema
except ImportError as error:
    print(f"skipped: wanted python3-html5lib and python3-jsonschema, found {error}; tools/bootstrap --browser installs them")
    sys.exit(77)

hostrun = pathlib.Path(sys.argv[1]).resolve()
source = pathlib.Path(sys.argv[2]).resolve()
broken = pathlib.Path(sys.argv[3]).resolve() / "broken"
examples = sorted(str(path.relative_to(source)) for path in source.glob("examples/*.bas"))
failures = []

# Each schema, what answers by it, and whether an answer is one line.
ANSWERS = {
    "check": [["check", "--json", "--host-version", "2011.0"],
              ["check", "--json", "--only-failed", str(broken / "NoEntryPoint.so")],
              ["check", "--json", "README.md"]],
    "check-syntax": [["check-syntax", "--json", *examples],
                     ["check-syntax", "--json", "tests/hostrun/programs/errors/unknown_variable.bas",
                      "tests/hostrun/programs/errors/unclosed_string.bas"],
                     ["check-syntax", "--json", "tests/hostrun/programs/errors/ampersand_letter.bas"]],
    "classes": [["classes", "--json"], ["classes", "--json", "--all"], ["classes", "--json", "--host-version", "2011.0"],
                ["classes", "--json", "NSColorQVX.colorWithDeviceRGB"], ["classes", "--json", "NSGrayColorSpaceModel"],
                ["classes", "--json", "hueComponent"]],
    "classes-layout": [["classes", "--layout", "--json"], ["classes", "--layout", "--json", "--host-version", "2012.0"]],
    "trace": [["trace", "--json", program] for program in examples],
    "trace-summary": [["trace", "--summary", "--json", program] for program in examples],
}
ONE_A_LINE = {"trace", "trace-summary"}
MAY_BE_LEFT_OUT = {"byref", "paramArray", "assigns", "default"}
NAMED_BY_THE_PROGRAM = {"arguments", "outputs", "records"}
SMALL = 4000  # characters: such an answer is also tried with each of its parts missing


def fail(what):
    failures.append(what)
    print("FAILED:", what)


def run(arguments):
    return subprocess.run([hostrun, *arguments], cwd=source, capture_output=True, text=True)


def answers_of(name, arguments):
    with tempfile.NamedTemporaryFile() as out:
        where = ["--out", out.name] if arguments[0] == "trace" else []
        finished = run([arguments[0], *where, *arguments[1:]])
        text = pathlib.Path(out.name).read_text() if where else finished.stdout
    if not text:
        fail(f"{' '.join(arguments)} answers: {finished.stderr}")
        return []
    return [json.loads(line) for line in text.splitlines()] if name in ONE_A_LINE else [json.loads(text)]


def without_each_part(value):
    """The value with one key of one of its objects missing, for each that must be there."""
    def places(part, path):
        if isinstance(part, dict):
            for key, inner in part.items():
                if (not path or path[-1] not in NAMED_BY_THE_PROGRAM) and key not in MAY_BE_LEFT_OUT:
                    yield path + [key]
                yield from places(inner, path + [key])
        elif isinstance(part, list):
            for index, inner in enumerate(part):
                yield from places(inner, path + [index])
    for path in places(value, []):
        poorer = copy.deepcopy(value)
        part = poorer
        for step in path[:-1]:
            part = part[step]
        del part[path[-1]]
        yield path, poorer


def check_answers(name, validator):
    for arguments in ANSWERS[name]:
        kinds = set()
        for answer in answers_of(name, arguments):
            error = jsonschema.exceptions.best_match(validator.iter_errors(answer))
            if error is not None:
                fail(f"{' '.join(arguments)} answers by {name}: {error.json_path}: {error.message}")
                return
            # Of many lines alike the first is enough.
            kind = answer.get("event") if name == "trace" else None
            if kind in kinds or (name in ONE_A_LINE and kinds and kind is None) or len(json.dumps(answer)) > SMALL:
                continue
            kinds.add(kind)
            for path, poorer in without_each_part(answer):
                if validator.is_valid(poorer):
                    fail(f"{name} refuses {' '.join(arguments)} without {path}")
            if isinstance(answer, dict) and validator.is_valid({**answer, "more": 1}):
                fail(f"{name} refuses {' '.join(arguments)} with more")


def check_json():
    for name in ANSWERS:
        schema = json.loads((source / f"docs/schemas/{name}.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        check_answers(name, jsonschema.Draft202012Validator(schema))
        if f"schemas/{name}.schema.json" not in (source / "docs/hostrun.md").read_text():
            fail(f"docs/hostrun.md names the schema {name}")
    known = {f"{name}.schema.json" for name in ANSWERS}
    for path in (source / "docs/schemas").iterdir():
        if path.name not in known:
            fail(f"the schema {path.name} is used")
    commands = re.findall(r"^  ([a-z][a-z-]*)  ", run(["--help"]).stdout, re.M)
    if "classes" not in commands:
        fail(f"hostrun --help lists its commands: {commands}")
    for command in commands:
        if "--json" in run([command, "--help"]).stdout and command not in ANSWERS:
            fail(f"the JSON of {command} has a schema")


def check_documents(folder):
    page = folder / "page.html"
    run(["docs", "--out", str(page)])
    try:
        html5lib.HTMLParser(strict=True).parse(page.read_text())
    except Exception as error:
        fail(f"the reference is well formed: {error!r}")
    for number, arguments in enumerate([[], ["--columns", "3", "examples/palette.bas"]]):
        picture = folder / f"{number}.svg"
        run(["swatches", "--out", str(picture), *arguments])
        try:
            xml.dom.minidom.parse(str(picture))
        except Exception as error:
            fail(f"the picture is well formed: {error!r}")


check_json()
with tempfile.TemporaryDirectory() as work:
    check_documents(pathlib.Path(work))
sys.exit(f"{len(failures)} failed" if failures else print("all of it holds"))

#!/usr/bin/python3
"""Holds what zentrix-report writes against golden files, and its data against the schema.

  tests/report/output_test.py TREE PROGRAM

The logs are those of the transcripts in tests/golden. With REWRITE_GOLDEN in the environment
the golden files are written anew instead; review what has changed like code.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import jsonschema

tree = pathlib.Path(sys.argv[1])
program = pathlib.Path(sys.argv[2]).resolve()
golden = tree / "tests/report/golden"
schema = json.loads((tree / "docs/zentrix-report.schema.json").read_text())
failures = 0


def expect(kept, what):
    global failures
    if not kept:
        failures += 1
        print("FAILED:", what)


def report(*arguments, log=b""):
    return subprocess.run([program, *arguments], input=log, capture_output=True, check=False)


def data_of(result, what):
    """The data as an object, judged by the schema."""
    try:
        data = json.loads(result.stdout.decode())
        jsonschema.Draft202012Validator(schema).validate(data)
        return data
    except (ValueError, jsonschema.ValidationError) as error:
        expect(False, f"{what}: {error}")
        return {"runs": []}


def log_of(transcript):
    text = transcript.read_bytes().replace(b"${version}", b"1.0.0")
    return text.split(b"--- /var/log/Marvek_Support/kvlnfwup.log\n", 1)[1]


def check_golden(name, written):
    path = golden / name
    if "REWRITE_GOLDEN" in os.environ:
        path.write_bytes(written)
    expect(path.read_bytes() == written, f"{name} differs from what is written now")


def check_transcripts():
    for transcript in sorted((tree / "tests/golden").glob("*.txt")):
        log = log_of(transcript)
        result = report("--json", "-", log=log)
        data = data_of(result, transcript.name)
        status = int(transcript.read_text().split("--- exit status ")[1].split("\n")[0])
        expect([run["exitStatus"] for run in data["runs"]] == [status], f"{transcript.name}: status")
        check_golden(transcript.stem + ".json", result.stdout)
        check_golden(transcript.stem + ".txt", report("-", log=log).stdout)


def check_cuts():
    """Wherever a log ends before the line that decides its run, the run was cut off."""
    log = log_of(tree / "tests/golden/update-driverless.txt")
    decided = log.index(b"One or more errors")
    for end in range(60, decided, 997):
        run = data_of(report("--json", "-", log=log[:end]), f"cut at {end}")["runs"][0]
        expect(run["outcome"] == "cut-off" and run["exitStatus"] is None, f"cut at {end}")
        expect(run["next"], f"cut at {end}: nothing to do")


def check_arguments(place):
    logs = place / "logs"
    logs.mkdir()
    good = log_of(tree / "tests/golden/update-one.txt")
    down = log_of(tree / "tests/golden/update-driverless.txt")
    odd = down.replace(b"2.1.6", b"\xff\x1b[2J\xc2\x9b")
    for at, (name, content) in enumerate([("kvlnfwup.log", good), ("kvlnfwup001.log", down),
                                          ("kvlnfwup002.log", odd), ("other.log", b"")]):
        (logs / name).write_bytes(content)
        os.utime(logs / name, (at, at))
    (place / "empty.log").write_bytes(b"")
    (place / "binary").write_bytes(bytes(range(256)) * 9000)
    (place / "none").mkdir()
    first = str(logs / "kvlnfwup.log")
    table = [
        ([first], 0, 1),
        ([str(logs)], 1, 3),
        (["--newest", str(logs)], 1, 1),
        ([first, str(place / "empty.log")], 2, 1),
        ([str(place / "binary"), first], 2, 1),
        ([str(place / "none"), first], 2, 1),
        ([str(place / "missing"), first], 2, 1),
    ]
    for arguments, status, runs in table:
        result = report("--json", *arguments)
        data = data_of(result, str(arguments))
        expect(result.returncode == status, f"{arguments}: status {result.returncode}")
        expect(len(data["runs"]) == runs, f"{arguments}: {len(data['runs'])} runs")
        lines = result.stderr.decode().splitlines()
        expect(len(lines) == (1 if status == 2 else 0), f"{arguments}: {lines}")
    for arguments in ([], ["--no-such-option", first], ["--output"]):
        expect(report(*arguments).returncode == 64, f"{arguments}: usage")
    expect(report("--help").returncode == 0, "--help")
    screen = report(str(logs / "kvlnfwup002.log")).stdout
    expect(b"\x1b" not in screen and b"\xc2\x9b" not in screen, "control characters on the screen")
    output = place / "out.json"
    result = report("--json", "--output", str(output), first)
    expect(result.stdout == b"" and result.returncode == 0, "--output")
    expect(json.loads(output.read_text())["runs"][0]["log"] == first, "--output: its content")


def check_page():
    page = tree / "docs/zentrix-report.1"
    options = set(re.findall(r"^\.It Fl -(\w+)", page.read_text(), re.M))
    shown = set(re.findall(r"--(\w+)", report("--help").stdout.decode()))
    expect(options == shown, f"options of the page {options} and of --help {shown}")
    keys = set(schema["$defs"]["run"]["required"]) | set(schema["$defs"]["adapter"]["required"])
    missing = {key for key in keys if f".It Va {key}\n" not in page.read_text()}
    expect(not missing, f"keys that the page lacks: {missing}")
    if shutil.which("mandoc"):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], check=False)
        expect(lint.returncode == 0, "the page's form")


check_transcripts()
check_cuts()
check_page()
directory = pathlib.Path(tempfile.mkdtemp())
try:
    check_arguments(directory)
finally:
    shutil.rmtree(directory)
sys.exit(1 if failures else 0)

#!/usr/bin/python3
"""Holds what zentrix-report writes against golden files, and its data against the schema.

  tests/report/output_test.py TREE PROGRAM

The logs are those of the transcripts in tests/golden. With REWRITE_GOLDEN in the environment
the golden files are written anew instead; review what has changed like code.
"""

import json
import os
import pathlib
import pprint
import re
import resource
import shutil
import subprocess
import sys
import tempfile

import jsonschema

tree = pathlib.Path(sys.argv[1])
program = pathlib.Path(sys.argv[2]).resolve()
golden = tree / "tests/report/golden"
schema = json.loads((tree / "docs/zentrix-report.schema.json").read_text())
# Users must bear further keys; here each one must be described.
for described in schema["$defs"].values():
    described.setdefault("additionalProperties", False)
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


def undisturbed(log):
    """The log as if its first port had a driver and its adapter were up to date."""
    lines = log.replace(b" is NA.", b" is 2.1.6.").splitlines(keepends=True)
    kept = b"".join(line for line in lines if b"adapter is down" not in line)
    return re.sub(rb"One or more errors .*", b"Update complete. The firmware update log has been saved in the log.", kept)


def check_golden(name, written):
    path = golden / name
    if "REWRITE_GOLDEN" in os.environ:
        path.write_bytes(written)
    expect(path.read_bytes() == written, f"{name} differs from what is written now")


def without_nulls(data):
    """The schema holds that the keys are there."""
    if isinstance(data, dict):
        return {key: without_nulls(value) for key, value in data.items() if value is not None}
    return [without_nulls(value) for value in data] if isinstance(data, list) else data


def check_transcripts():
    for transcript in sorted((tree / "tests/golden").glob("*.txt")):
        log = log_of(transcript)
        result = report("--json", "-", log=log)
        data = data_of(result, transcript.name)
        status = int(transcript.read_text().split("--- exit status ")[1].split("\n")[0])
        expect([run["exitStatus"] for run in data["runs"]] == [status], f"{transcript.name}: status")
        if transcript.stem in ("outcomes-corrupt", "update-driverless"):
            check_golden(transcript.name, report("-", log=log).stdout)
        if transcript.stem == "update-driverless":
            shown = pprint.pformat(without_nulls(data), width=120, sort_dicts=False) + "\n"
            check_golden(transcript.stem + ".data", shown.encode())


def check_cuts():
    """Wherever a log ends before the line that decides its run, the run was cut off."""
    log = log_of(tree / "tests/golden/update-driverless.txt")
    decided = log.index(b"One or more errors")
    for end in range(60, decided, 997):
        run = data_of(report("--json", "-", log=log[:end]), f"cut at {end}")["runs"][0]
        expect(run["outcome"] == "cut-off" and run["exitStatus"] is None, f"cut at {end}")
        expect(run["next"][0]["code"] == "check-nothing-runs", f"cut at {end}: first step")


def check_arguments(place):
    logs = place / "logs"
    logs.mkdir()
    down = log_of(tree / "tests/golden/update-driverless.txt")
    good = undisturbed(down)
    odd = down.replace(b"2.1.6", b"\xff\x1b[2J\xc2\x9b")
    for at, (name, content) in enumerate([("kvlnfwup.log", good), ("kvlnfwup001.log", down),
                                          ("kvlnfwup002.log", odd), ("other.log", b"")]):
        (logs / name).write_bytes(content)
        os.utime(logs / name, (at, at))
    (place / "empty.log").write_bytes(b"")
    (place / "two.log").write_bytes(good + good)
    (place / "in a quotation.log").write_bytes(down[: down.index(b"upgrade")] + b"...\"\n10 %" + good)
    (place / "heading.log").write_bytes(good[: good.index(b"\n") + 1])
    (place / "control\x1b[2J\xc2\x9b.log").write_bytes(odd)
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
        ([str(place / "missing\x1b[2J"), first], 2, 1),
        ([str(place / "two.log"), first], 2, 1),
        ([str(place / "in a quotation.log"), first], 2, 1),
        ([str(place / "heading.log"), first], 1, 2),
        ([str(place / "control\x1b[2J\xc2\x9b.log")], 1, 1),
    ]
    for arguments, status, runs in table:
        result = report("--json", *arguments)
        data = data_of(result, str(arguments))
        expect(result.returncode == status, f"{arguments}: status {result.returncode}")
        expect(len(data["runs"]) == runs, f"{arguments}: {len(data['runs'])} runs")
        shown = result.stdout + report(*arguments).stdout + result.stderr
        expect(all(byte in b"\n\t" or 32 <= byte < 127 for byte in shown), f"{arguments}: bytes")
        lines = result.stderr.decode().splitlines()
        expect(len(lines) == (1 if status == 2 else 0), f"{arguments}: {lines}")
    for arguments in ([], ["--no-such-option", first], ["--output"]):
        expect(report(*arguments).returncode == 64, f"{arguments}: usage")
    expect(report("--help").returncode == 0, "--help")
    second = "another log begins in line " + str(good.count(b"\n") + 1)
    expect(second in report(str(place / "two.log")).stderr.decode(), second)
    output = place / "out.json"
    result = report("--json", "--output", str(output), first)
    expect(result.stdout == b"" and result.returncode == 0, "--output")
    expect(json.loads(output.read_text())["runs"][0]["log"] == first, "--output: its content")


def check_page():
    page = tree / "docs/zentrix-report.1"
    options = set(re.findall(r"^\.It Fl -(\w+)", page.read_text(), re.M))
    shown = set(re.findall(r"--(\w+)", report("--help").stdout.decode()))
    expect(options == shown, f"options of the page {options} and of --help {shown}")
    if shutil.which("mandoc"):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], check=False)
        expect(lint.returncode == 0, "the page's form")


def check_sample():
    sample = (golden / "update-driverless.txt").read_text().replace("-", "/var/log/Marvek_Support/kvlnfwup.log", 1)
    shown = "".join(f"    {line}".rstrip() + "\n" for line in sample.splitlines())
    expect(shown in (tree / "README.md").read_text(), "the README's sample is another report")


def check_speed(place):
    """A thousand ordinary logs in two seconds, 100 MB in five, and no more memory for them, in builds that could ship."""
    if "slow" in sys.argv:
        return
    good = undisturbed(log_of(tree / "tests/golden/update-driverless.txt"))
    (place / "many").mkdir()
    for i in range(1000):
        (place / f"many/kvlnfwup{i}.log").write_bytes(good)
    quoted = b">>/var/log/Marvek_Support/kvlnfwup.log\"\n"
    cut = good.index(quoted, good.index(b"upgrade")) + len(quoted)
    (place / "long.log").write_bytes(good[:cut] + b"100 % of a line\n" * 6500000 + good[cut:])
    for path, seconds in ((place / "many", 2), (place / "long.log", 5)):
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        expect(report(str(path)).returncode == 0, f"{path}: status")
        took = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
        expect(took < seconds, f"{path}: {took} s")
    limit = f"ulimit -v 60000; exec {program} {place}/long.log"
    limited = subprocess.run(["sh", "-c", limit], capture_output=True, check=False)
    expect(limited.returncode == 0, f"memory: {limited.stderr.decode()}")


check_transcripts()
check_cuts()
check_page()
check_sample()
directory = pathlib.Path(tempfile.mkdtemp())
try:
    check_arguments(directory)
    check_speed(directory)
finally:
    shutil.rmtree(directory)
sys.exit(1 if failures else 0)

#!/usr/bin/python3
"""Holds what zentrix-report tells against tables and golden files, and its data against the schema.

  tests/report/output_test.py TREE PROGRAM

The logs are those of cases.py and of the transcripts in tests/golden. With REWRITE_GOLDEN in the
environment the golden files are written anew instead; review what has changed like code.
"""

import json
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile

import jsonschema

import cases

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


def tell(*logs):
    """What the last of these logs of one server comes to."""
    with tempfile.TemporaryDirectory() as place:
        paths = [pathlib.Path(place) / f"kvlnfwup{at}.log" for at in range(len(logs))]
        for path, log in zip(paths, logs):
            path.write_bytes(log.encode())
        return data_of(report("--json", *paths), log[-200:])["runs"][-1] | {"log": None}


def told_of(run):
    def places(problems):
        for one in problems:
            place = [(one["mac"] or "")[-1:], one["component"] or "", str(one["line"] or "")]
            yield f" {one['kind']}({' '.join(filter(None, place))})".replace("()", "")

    status = "-" if run["exitStatus"] is None else run["exitStatus"]
    told = f"{run['outcome']} {status} {run['operation']}:" + "".join(places(run["problems"]))
    told += "; remarks:" + "".join(places(run["remarks"])) if run["remarks"] else ""
    flashes = [flash for adapter in run["adapters"] for flash in adapter["flashes"]]
    told += "; flashes:" if flashes else ""
    told += ",".join(f" {flash['component']} {flash['outcome']}" for flash in flashes)
    told += "; next:" if run["next"] else ""
    for step in run["next"]:
        told += " " + step["code"] + (f"({step['command']})" if step["command"] else "")
    return told


def log_of(transcript):
    text = (tree / f"tests/golden/{transcript}.txt").read_text().replace("${version}", "1.0.0")
    return text.split("--- /var/log/Marvek_Support/kvlnfwup.log\n", 1)[1]


def letters(text):
    return "".join(re.findall(r"\w", text))


def check_cases():
    """The texts that are the reader's own, not the manual page's, are golden."""
    page = letters(re.sub(r"^\.[A-Z]\w", "", (tree / "docs/zentrix.8").read_text(), flags=re.M))
    texts = {}
    for name, *logs, told in cases.CASES + cases.HISTORIES:
        logs = [log_of(log) if "\n" not in log else log for log in logs]
        run = tell(*logs)
        expect(told_of(run) == told, f"{name}:\n  told     {told_of(run)}\n  expected {told}")
        for problem in run["problems"] + run["remarks"]:
            advice = [problem["cause"], problem["adapters"], problem["next"]]
            texts |= {f"{problem['kind']}: {text}": 1 for text in advice if letters(text) not in page}
        texts |= {f"{step['code']}: {step['text']}": 1 for step in run["next"]}
        if len(logs) == 1:
            texts[check_screen(name, logs[0], run)] = 1
    check_golden("texts.txt", "".join(text + "\n" for text in texts))


def parts_of_port(port):
    driver = f", driver {port['driver']}" if port["driver"] else ""
    states = ", DOWN" * port["down"] + ", FIRMWARE CORRUPTED" * port["corrupted"]
    place = "" if port["device"] is None else f" at {port['device']}.{port['function']}"
    yield f"port {port['mac']}{place}{driver}{states}"
    for column, before in port["before"].items():
        after = (port["after"] or port["before"])[column]
        if before:
            yield f" {column} {before}" + (f" -> {after}" if after not in (None, before) else "")


def check_screen(name, log, run):
    """All that the data holds is on the screen, which fits a terminal. Returns its heading."""
    screen = report("-", log=log.encode()).stdout.decode()
    words = " ".join(screen.split()).lower()
    parts = [f"{at}. {step['text']}" for at, step in enumerate(run["next"], 1)]
    for problem in run["problems"] + run["remarks"]:
        line = f"line {problem['line']}: " if problem["line"] else ""
        parts.append(line + problem["text"])
        parts += [f"{key}: {problem[key]}" for key in ("cause", "adapters", "next") if problem[key]]
    for switch in run["switches"]:
        parts.append(f"{switch['mac']} {switch['firmware']} {switch['outcome']}")
    for adapter in run["adapters"]:
        parts += [flash["outcome"] for flash in adapter["flashes"]]
        parts += [f"{check['mac']} {check['outcome']}" for check in adapter["crc"]]
        parts += [f"field YB: {adapter['yb']}"] if adapter["yb"] else []
        for port in adapter["ports"]:
            parts += parts_of_port(port) if port["before"] else [port["mac"]]
        if run["operation"] == "update" and adapter["ports"][0]["before"]:
            stamp = adapter["stamp"]
            parts.append(f"stamp: {stamp['before'] or 'unknown'} -> {stamp['written'] or 'not written'}")
    for part in parts:
        expect(" ".join(part.lower().split()) in words, f"{name}: {part} isn't on the screen")
    for line in screen.splitlines():
        expect(len(line) <= 80 or len(line.split()) < 3, f"{name}: a line of {len(line)}")
    return screen.split("\n")[0]


def check_facts():
    for log, place, fact in cases.FACTS:
        found = tell(log_of(log) if log == cases.DRIVERLESS else log)
        for key in place.split():
            found = found[int(key) if key.isdigit() else key]
        expect(found == fact, f"{place}:\n  told     {found}\n  expected {fact}")


def check_forged():
    for name, log in cases.FORGED:
        run = tell(log)
        expect(run["outcome"] != "clean" and not run["dryRun"], name)
        outcomes = [flash["outcome"] for flash in run["adapters"][0]["flashes"]]
        expect(outcomes[:1] in ([], ["failed"]), f"{name}: {outcomes}")


def check_bytes():
    """The same is told of mailed logs, and wherever the pieces end that a log is read in."""
    def padded(size):
        return cases.CUT_FLASH.replace("1 3C01", "-" * size + "\n1 3C01", 1)

    expected = tell(padded(1))
    expect(tell(padded(1).replace("\n", "\r\n")) == expected, "line ends of mail")
    for size in range(65536 - len(cases.CUT_FLASH), 65536, 97):
        expect(tell(padded(size)) == expected, f"{size} bytes before a line")


def check_golden(name, written):
    path = golden / name
    if "REWRITE_GOLDEN" in os.environ:
        path.write_text(written)
    expect(path.read_text() == written, f"{name} differs from what is written now")


def check_transcripts():
    for transcript in sorted((tree / "tests/golden").glob("*.txt")):
        status = int(transcript.read_text().split("--- exit status ")[1].split("\n")[0])
        expect(tell(log_of(transcript.stem))["exitStatus"] == status, f"{transcript.name}: status")


def check_readme():
    screen = report("-", log=log_of("update-driverless").encode()).stdout.decode()
    sample = screen.replace("-:", f"{cases.LOG}:", 1)
    shown = "".join(f"    {line}".rstrip() + "\n" for line in sample.splitlines())
    expect(shown in (tree / "README.md").read_text(), f"the README's sample is now\n{shown}")


def check_cuts():
    """Wherever a log ends before the line that decides its run, the run was cut off."""
    log = log_of("update-driverless")
    for end in range(60, log.index("One or more errors"), 997):
        run = tell(log[:end])
        expect(run["outcome"] == "cut-off" and run["exitStatus"] is None, f"cut at {end}")
        expect(run["next"][0]["code"] == "check-nothing-runs", f"cut at {end}: first step")


def check_arguments(place):
    logs = place / "logs"
    logs.mkdir()
    good = cases.CLEAN.encode()
    down = log_of("update-driverless").encode()
    odd = down.replace(b"2.1.6", b"\xff\x1b[2J\xc2\x9b")
    for at, (name, content) in enumerate([("kvlnfwup.log", good), ("kvlnfwup001.log", down),
                                          ("kvlnfwup002.log", odd), ("other.log", b"")]):
        (logs / name).write_bytes(content)
        os.utime(logs / name, (at, at))
    (place / "empty.log").write_bytes(b"")
    (place / "two.log").write_bytes(good + good)
    cut = down[: down.index(b"upgrade")] + b"...\"\n10 %"
    (place / "in a quotation.log").write_bytes(cut + good)
    (place / "heading.log").write_bytes(good[: good.index(b"\n") + 1])
    (place / "control\x1b[2J\xc2\x9b.log").write_bytes(odd)
    (place / "binary").write_bytes(bytes(range(256)) * 9000)
    (place / "none").mkdir()
    first = str(logs / "kvlnfwup.log")
    second, inner = (f"another log begins in line {len(text.splitlines())}: each needs a file of its own\n"
                     for text in (good, cut))
    table = [
        ([first], 0, 1, ""),
        ([str(logs)], 1, 3, ""),
        (["--newest", str(logs)], 1, 1, ""),
        ([first, str(place / "empty.log")], 2, 1, "is empty\n"),
        ([str(place / "binary"), first], 2, 1, "is not a log of zentrix\n"),
        ([str(place / "none"), first], 2, 1, "no kvlnfwup*.log in this directory\n"),
        ([str(place / "missing\x1b[2J"), first], 2, 1, "No such file or directory\n"),
        ([str(place / "two.log"), first], 2, 1, second),
        ([str(place / "in a quotation.log"), first], 2, 1, inner),
        ([str(place / "heading.log"), first], 1, 2, ""),
        ([str(place / "control\x1b[2J\xc2\x9b.log")], 1, 1, ""),
    ]
    for arguments, status, runs, trouble in table:
        result = report("--json", *arguments)
        data = data_of(result, str(arguments))
        expect(result.returncode == status, f"{arguments}: status {result.returncode}")
        expect(len(data["runs"]) == runs, f"{arguments}: {len(data['runs'])} runs")
        shown = result.stdout + report(*arguments).stdout + result.stderr
        expect(all(byte in b"\n\t" or 32 <= byte < 127 for byte in shown), f"{arguments}: bytes")
        told = result.stderr.decode()
        expect(f": {trouble}" in told if trouble else not told, f"{arguments}: {told}")
    for arguments in ([], ["--no-such-option", first], ["--output"]):
        expect(report(*arguments).returncode == 64, f"{arguments}: usage")
    expect(report("--help").returncode == 0, "--help")
    output = place / "out.json"
    result = report("--json", "--output", str(output), first)
    expect(result.stdout == b"" and result.returncode == 0, "--output")
    expect(json.loads(output.read_text())["runs"][0]["log"] == first, "--output: its content")


def texts_of(path):
    source = re.sub(r"\n *//[^\n]*", "\n", path.read_text())
    for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', source):
        yield literal.encode().decode("unicode_escape")


def check_lines():
    """The table of lines and the texts that the tool may write to a log are the same."""
    table = (tree / "report/lines.cpp").read_text().split(" lineTable[] = {")[1]
    rows = re.findall(r'^    (?:{|trouble\(\s*)"((?:[^"\\]|\\.)*)"', table, re.M)
    rows = [row.encode().decode("unicode_escape") for row in rows]
    unwritten = set(rows) - cases.COMPOSED
    for path in (tree / "src").rglob("*.cpp"):
        for text in texts_of(path):
            plain = re.sub("%[.0-9]*[sdu]", "7", text).strip()
            known = [row for row in rows if re.fullmatch(re.sub("<.*?>", ".+", re.escape(row)), plain)]
            unwritten -= set(known[:1])
            if text.endswith("\n") and " " in plain and not known and plain not in cases.NO_LINES:
                told = told_of(tell(cases.BEFORE + plain + "\n" + cases.END))
                expect(" other(" in told, f"{path}: no row for {plain}")
    expect(len(rows) > 40 and not unwritten, f"rows that nothing writes: {unwritten}")


def check_page():
    page = tree / "docs/zentrix-report.1"
    options = set(re.findall(r"^\.It Fl -(\w+)", page.read_text(), re.M))
    shown = set(re.findall(r"--(\w+)", report("--help").stdout.decode()))
    expect(options == shown, f"options of the page {options} and of --help {shown}")
    if shutil.which("mandoc"):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], check=False)
        expect(lint.returncode == 0, "the page's form")


def check_speed(place):
    """A thousand ordinary logs in two seconds, 100 MB in five, and no more memory for them, in builds that could ship."""
    if "slow" in sys.argv:
        return
    good = cases.CLEAN.encode()
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


check_cases()
check_facts()
check_forged()
check_bytes()
check_transcripts()
check_readme()
check_cuts()
check_lines()
check_page()
directory = pathlib.Path(tempfile.mkdtemp())
try:
    check_arguments(directory)
    check_speed(directory)
finally:
    shutil.rmtree(directory)
sys.exit(1 if failures else 0)

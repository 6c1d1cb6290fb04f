"""Makes report.json of rollouts that end in every way, with the logs that it names.

The logs are those of the transcripts in tests/golden and of runs on virtual adapters, read by
zentrix-report; some are cut off.
"""

import json
import shutil
import subprocess

HOSTILE = ("<script>document.title='owned'</script><img src=x onerror=alert(1)> \"'><b>bold</b> "
           "&lt;i&gt; {{ 7 * 191 }} \x1b[2J\x07\x9b\r \u202egnp.exe\u2066 \ufeff </style></title>")
# Their texts are words of the format.
FIXED = {"format", "sha256", "state", "started", "ended", "outcome", "operation", "yb", "kind", "code",
         "command"}


def log_of(tree, transcript):
    text = (tree / f"tests/golden/{transcript}.txt").read_bytes().replace(b"${version}", b"1.0.0")
    return text.split(b"--- /var/log/Marvek_Support/kvlnfwup.log\n", 1)[1]


def logs_of_runs(tree, build, place, runs, fleet="one"):
    """The logs of several runs of the program, one after another on the same virtual adapters."""
    package, logs = place / "package", place / "log"
    shutil.rmtree(place, ignore_errors=True)
    logs.mkdir(parents=True)
    subprocess.run([tree / "script/fleet", fleet, build, package], check=True)
    for options in runs:
        subprocess.run([tree / "script/sandbox", "--rw", f"{package}:/package", "--rw", f"{logs}:/var/log",
                        "--chdir", "/package", "env", "LD_LIBRARY_PATH=/package", "./zentrix", *options],
                       stdout=subprocess.DEVNULL, check=False)
    return [log.read_bytes() for log in sorted((logs / "Marvek_Support").iterdir())]


def row(build, place, name, state, reason="", logs=(), **more):
    """A server's row in report.json, and below `place` what came back from it."""
    (place / name).mkdir()
    (place / name / "console.txt").touch()
    names = [f"{name}/kvlnfwup{at}.log" for at in range(1, len(logs) + 1)]
    for path, log in zip(names, logs):
        (place / path).write_bytes(log)
    runs = []
    if names:
        told = subprocess.run([build / "zentrix-report", "--json", *names], cwd=place, capture_output=True, check=False)
        runs = json.loads(told.stdout)["runs"]
    last = runs[-1] if runs else {"exitStatus": None, "rebootNeeded": False, "outcome": "cut-off", "next": []}
    return {
        "host": name, "state": state, "reason": reason, "exitStatus": last["exitStatus"],
        "rebootNeeded": last["rebootNeeded"], "rebooted": False, "changed": bool(runs),
        "buildVersion": "7.12b.4.3a" if runs else None,
        "started": "2026-03-02T01:10:00Z" if runs else None,
        "ended": "2026-03-02T01:13:20Z" if last["outcome"] != "cut-off" else None,
        "logs": names, "console": f"{name}/console.txt" if runs else None,
        "next": [step["text"].replace("Run ./", "Roll out again, which runs ./") for step in last["next"]],
        "runs": runs, **more}


def one_of_each(tree, build, place):
    confirmed = logs_of_runs(tree, build, place / "runs", [[], ["-v"]])
    rack, corrupt = (logs_of_runs(tree, build, place / "runs", [[]], fleet) for fleet in ("rack", "corrupt"))
    one = confirmed[0]
    broken, down = (log_of(tree, name) for name in ("update-outcomes", "update-driverless"))
    marker = "/tmp/kvsupdbg-no-f-update.txt exists: a run would flash nothing"
    return [row(build, place, name, state, *reason, logs=logs, **more) for name, state, reason, logs, more in (
        ("web1", "updated", [], [one], {}),
        ("web2", "updated", [], confirmed, {"rebooted": True}),
        ("store1", "updated", [], rack, {}),
        ("db1", "failed", ["exit status 1: flashes failed, and a CRC check"], corrupt + [broken], {}),
        ("db2", "adapter-down", ["020000000001 has no driver"], [down], {}),
        ("db3", "cut-off", ["the run ended without an exit status"],
         [down[:down.index(b"Updating 020000000002 using file 3C01bc")]], {}),
        ("web3", "still-running", ["still running after 3600 s"],
         [down[:down.index(b"Updating 020000000002 using file 3C01ncsi")]], {"next": []}),
        ("web4", "reboot-needed", ["the adapters ask for a reboot, zentrix_reboot is never"], [one], {"rebootNeeded": True}),
        ("mail1", "unfit", [marker], [], {}),
        ("mail2", "unfit", [marker], [], {}),
        ("mail3", "unfit", [marker], [], {}),
        ("mail4", "unfit", ["no 32-bit loader: install libc6-i386"], [], {}),
        ("old1", "unreachable", ["ssh: connect to host old1 port 22: No route to host"], [], {}),
        ("old2", "no-adapters", [], [], {"exitStatus": 171}),
        ("web5", "unchanged", [], [], {"buildVersion": "7.12b.4.3a"}),
        ("web6", "not-reached", [], [], {}),
        ("web7", "would-update", [], [], {}))]


def changed(value, how, key=""):
    """`value` with each text changed that isn't one of a few words."""
    if isinstance(value, dict):
        return {name: changed(inner, how, name) for name, inner in value.items()}
    if isinstance(value, list):
        return [changed(inner, how, key) for inner in value]
    return how(value) if isinstance(value, str) and key not in FIXED else value


def racks(hosts):
    """29 racks that end alike, and 30 servers each for a reason of its own."""
    for number in range(29):
        for host in changed(hosts, lambda text: text.replace("0200000000", f"0200{number:02}0000")):
            yield {**host, "host": f"{host['host']}.rack{number}.example"}
    unfit = next(host for host in hosts if host["state"] == "unfit")
    for number in range(30):
        yield {**unfit, "host": f"spare{number}", "reason": f"a reason of its own: {number}"}


def make(tree, build, place):
    """What rollouts leave, but for the page: mixed; one, a check of one server; many; and hostile, with every text
    of the data hostile and very long."""
    mixed = place / "mixed"
    mixed.mkdir(parents=True)
    hosts = one_of_each(tree, build, mixed)
    document = {
        "format": "zentrix-rollout/1",
        "package": {"name": "zentrix-7.12b.4.3a.tar.gz", "buildVersion": "7.12b.4.3a",
                    "sha256": "5d41402abc4b2a76b9719d911017c592" * 2},
        "started": "2026-03-02T01:05:00Z", "ended": "2026-03-02T02:21:09Z", "check": False, "hosts": hosts}
    for kind, report in (
            ("mixed", document), ("one", {**document, "check": True, "hosts": hosts[-1:]}), ("many", {**document, "hosts": list(racks(hosts))}),
            ("hostile", changed({**document, "hosts": hosts[:12]}, lambda text: f"{HOSTILE} {text.replace('/', ' ')}" + "W" * 10000))):
        if kind != "mixed":
            shutil.copytree(mixed, place / kind)
        (place / kind / "report.json").write_text(json.dumps(report))

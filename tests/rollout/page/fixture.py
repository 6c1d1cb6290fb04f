#!/usr/bin/python3
"""Makes report.json of rollouts that end in every way, with the logs that it names.

  tests/rollout/page/fixture.py TREE BUILD_DIR DIR

DIR/mixed, few, one, many, hostile and long each hold what a rollout leaves, but for the page. The logs are
those of the transcripts in tests/golden and of runs on virtual adapters, read by zentrix-report; some
are cut off. In the last two every text of the data is hostile or very long.
"""

import json
import pathlib
import shutil
import subprocess
import sys

HOSTILE = ("<script>document.title='owned'</script><img src=x onerror=alert(1)> \"'><b>bold</b> "
           "&lt;i&gt; {{ 7 * 191 }} \x1b[2J\x07\x9b\r \u202egnp.exe\u2066 \ufeff </style></title>")
KINDS = ("mixed", "one", "few", "many", "hostile", "long")
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
                       stdout=subprocess.DEVNULL, check=True)
    return [log.read_bytes() for log in sorted((logs / "Marvek_Support").iterdir())]


class Rollout:
    def __init__(self, tree, build, directory):
        self.tree, self.build, self.directory = tree, build, directory
        self.hosts = []
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir(parents=True)

    def add(self, name, state, reason="", logs=(), **more):
        """A server and its logs: transcripts' names, or logs as they are."""
        place = self.directory / name
        place.mkdir()
        (place / "console.txt").write_text("")
        for at, log in enumerate(logs, 1):
            (place / f"kvlnfwup{at}.log").write_bytes(log if isinstance(log, bytes) else log_of(self.tree, log))
        names = [f"{name}/kvlnfwup{at}.log" for at in range(1, len(logs) + 1)]
        runs = self.read(names)
        self.hosts.append({
            "host": name, "state": state, "reason": reason,
            "exitStatus": runs[-1]["exitStatus"] if runs else None,
            "rebootNeeded": bool(runs and runs[-1]["rebootNeeded"]), "rebooted": False,
            "changed": bool(runs), "buildVersion": "7.12b.4.3a" if runs else None,
            "started": "2026-03-02T01:10:00Z" if runs else None,
            "ended": "2026-03-02T01:13:20Z" if runs and runs[-1]["outcome"] != "cut-off" else None,
            "logs": names, "console": f"{name}/console.txt" if runs else None,
            "next": [step["text"].replace("Run ./", "Roll out again, which runs ./") for step in runs[-1]["next"]] if runs else [],
            "runs": runs, **more})

    def read(self, names):
        if not names:
            return []
        result = subprocess.run([self.build / "zentrix-report", "--json", *names], cwd=self.directory,
                                capture_output=True, check=False)
        return json.loads(result.stdout)["runs"]

    def write(self, check=False, how=lambda text: text):
        document = {
            "format": "zentrix-rollout/1",
            "package": {"name": "zentrix-7.12b.4.3a.tar.gz", "buildVersion": "7.12b.4.3a",
                        "sha256": "5d41402abc4b2a76b9719d911017c592" * 2},
            "started": "2026-03-02T01:05:00Z", "ended": "2026-03-02T02:21:09Z", "check": check, "hosts": self.hosts}
        (self.directory / "report.json").write_text(json.dumps(changed(document, how)))


def add_one_of_each(rollout, confirmed, rack, suffix=""):
    driverless = log_of(rollout.tree, "update-driverless")
    rollout.add(f"web1{suffix}", "updated", logs=["update-one"])
    rollout.add(f"web2{suffix}", "updated", logs=confirmed, rebooted=True)
    rollout.add(f"store1{suffix}", "updated", logs=rack)
    rollout.add(f"db1{suffix}", "failed", "exit status 1: flashes failed, and a CRC check", logs=["outcomes-corrupt"])
    rollout.add(f"db2{suffix}", "adapter-down", "020000000001 has no driver", logs=[driverless])
    rollout.add(f"db3{suffix}", "cut-off", "the run ended without an exit status",
                logs=[driverless[:driverless.index(b"Updating 020000000002 using file 3C01bc")]])
    rollout.add(f"web3{suffix}", "still-running", "still running after 3600 s",
                logs=[driverless[:driverless.index(b"Updating 020000000002 using file 3C01ncsi")]],
                next=[])
    rollout.add(f"web4{suffix}", "reboot-needed", "the adapters ask for a reboot, zentrix_reboot is never",
                logs=["update-one"], rebootNeeded=True)
    for name in ("mail1", "mail2", "mail3"):
        rollout.add(f"{name}{suffix}", "unfit", "/tmp/kvsupdbg-no-f-update.txt exists: a run would flash nothing")
    rollout.add(f"mail4{suffix}", "unfit", "no 32-bit loader: install libc6-i386")
    rollout.add(f"old1{suffix}", "unreachable", "ssh: connect to host old1 port 22: No route to host")
    rollout.add(f"old2{suffix}", "no-adapters", exitStatus=171)
    rollout.add(f"web5{suffix}", "unchanged", buildVersion="7.12b.4.3a")
    rollout.add(f"web6{suffix}", "not-reached")
    rollout.add(f"web7{suffix}", "would-update")


def changed(value, how, key=""):
    """`value` with each text changed that isn't one of a few words."""
    if isinstance(value, dict):
        return {name: changed(inner, how, name) for name, inner in value.items()}
    if isinstance(value, list):
        return [changed(inner, how, key) for inner in value]
    return how(value) if isinstance(value, str) and key not in FIXED else value


def make(tree, build, place):
    confirmed = logs_of_runs(tree, build, place / "runs", [[], ["-v"]])
    rack = logs_of_runs(tree, build, place / "runs", [[]], "rack")
    mixed, one, few, many, hostile, long = (Rollout(tree, build, place / name) for name in KINDS)
    add_one_of_each(mixed, confirmed, rack)
    mixed.write()
    one.add("web1", "would-update")
    one.write(check=True)
    few.hosts = [host for host in mixed.hosts if host["host"] in ("web1", "web2", "web5", "db1", "db2", "mail1", "old1", "web6")]
    few.write()
    for number in range(29):
        add_one_of_each(many, confirmed, rack, f".rack{number}.example")
        many.hosts[-17:] = changed(many.hosts[-17:], lambda text: text.replace("0200000000", f"0200{number:02}0000"))
    for number in range(30):
        many.add(f"spare{number}", "unfit", f"a reason of its own: {number}")
    many.write()
    hostile.hosts = long.hosts = mixed.hosts[:12]
    hostile.write(how=lambda text: f"{HOSTILE} {text.replace('/', ' ')}")
    long.write(how=lambda text: text + "W" * 10000)


if __name__ == "__main__":
    make(*(pathlib.Path(argument).resolve() for argument in sys.argv[1:4]))

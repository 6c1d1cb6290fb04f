#!/usr/bin/python3
"""Makes report.json of rollouts that end in every way, with the logs that it names.

  tests/rollout/page/fixture.py TREE ZENTRIX_REPORT DIR

DIR/mixed, one, many and hostile each hold what a rollout leaves, but for the page. The logs are those
of the transcripts in tests/golden, read by zentrix-report; some are cut off or have hostile texts in
them.
"""

import json
import pathlib
import shutil
import subprocess
import sys

HOSTILE = ("<script>document.title='owned'</script><img src=x onerror=alert(1)> \"'><b>bold</b> "
           "&lt;i&gt; {{ 7 * 191 }} \x1b[2J\x07\x9b\r \u202egnp.exe\u2066 \ufeff \udc80 </style></title>")
LONG = "W" * 10000


def log_of(tree, transcript):
    text = (tree / f"tests/golden/{transcript}.txt").read_bytes().replace(b"${version}", b"1.0.0")
    return text.split(b"--- /var/log/Marvek_Support/kvlnfwup.log\n", 1)[1]


class Rollout:
    def __init__(self, tree, program, directory):
        self.tree, self.program, self.directory = tree, program, directory
        self.hosts = []
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir(parents=True)

    def add(self, name, state, reason="", logs=(), **more):
        """A server and its logs: transcripts' names, or logs as they are."""
        place = self.directory / name
        place.mkdir()
        (place / "console.txt").write_text("")
        for at, log in enumerate(logs, 1):
            (place / f"kvlnfwup{at}.log").write_bytes(
                log if isinstance(log, bytes) else log_of(self.tree, log))
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
            "next": runs[-1]["next"] if runs else [], "runs": runs, **more})

    def read(self, names):
        if not names:
            return []
        result = subprocess.run([self.program, "--json", *names], cwd=self.directory,
                                capture_output=True, check=False)
        return json.loads(result.stdout)["runs"]

    def write(self, check=False, package="zentrix-7.12b.4.3a.tar.gz"):
        document = {
            "format": "zentrix-rollout/1",
            "package": {"name": package, "sha256": "5d41402abc4b2a76b9719d911017c592" * 2,
                        "buildVersion": "7.12b.4.3a"},
            "started": "2026-03-02T01:05:00Z", "ended": "2026-03-02T02:21:09Z", "check": check,
            "hosts": self.hosts}
        (self.directory / "report.json").write_text(json.dumps(document))


def add_one_of_each(rollout, suffix=""):
    driverless = log_of(rollout.tree, "update-driverless")
    rollout.add(f"web1{suffix}", "updated", logs=["update-one"])
    rollout.add(f"web2{suffix}", "updated", logs=["update-one", "versions-rack"], rebooted=True)
    rollout.add(f"store1{suffix}", "updated", logs=["update-rack"])
    rollout.add(f"db1{suffix}", "failed", "exit status 1: flashes failed, and a CRC check",
                logs=["outcomes-corrupt"])
    rollout.add(f"db2{suffix}", "adapter-down", "020000000001 has no driver", logs=[driverless])
    rollout.add(f"db3{suffix}", "cut-off", "the run ended without an exit status",
                logs=[driverless[:driverless.index(b"Updating 020000000002 using file 3C01mba")]])
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


def add_hostile(rollout):
    encoded = HOSTILE.encode("utf-8", "surrogateescape")
    log = log_of(rollout.tree, "outcomes-corrupt")
    for text in (b"3C01bc.bin", b"2.1.6", b"7.10.12", b"7.10a.2.1b"):
        log = log.replace(text, encoded.replace(b"\r ", b""))
    rollout.add("<b>srv \"x\" #1?a=%2F&b;{{ 7 * 191 }}", "failed", HOSTILE, logs=[log],
                next=[HOSTILE, LONG])
    log = log_of(rollout.tree, "update-driverless").replace(b"3C01l2t.bin", LONG.encode())
    rollout.add("javascript:alert(1)", "adapter-down", LONG, logs=[log.replace(b"7.10.12", LONG.encode())])
    rollout.add("w" * 200, "unreachable", HOSTILE + "\r\nsecond line")
    rollout.add("x", "unfit", "\u202e" * 50)


def main():
    tree, program = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    place = pathlib.Path(sys.argv[3])
    mixed = Rollout(tree, program, place / "mixed")
    add_one_of_each(mixed)
    mixed.write()
    one = Rollout(tree, program, place / "one")
    one.add("web1", "updated", logs=["update-one"])
    one.write(check=True)
    many = Rollout(tree, program, place / "many")
    for number in range(29):
        add_one_of_each(many, f".rack{number}.example")
    for number in range(7):
        many.add(f"spare{number}", "unchanged")
    many.write()
    hostile = Rollout(tree, program, place / "hostile")
    add_hostile(hostile)
    hostile.write(package=HOSTILE)


if __name__ == "__main__":
    main()

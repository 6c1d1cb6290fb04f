#!/usr/bin/python3
"""Rolls out to virtual servers with the real playbook over real SSH, and looks at what came of it.

    tests/rollout/rollout_test.py BUILD_DIR WORK_DIR SCENARIO

A scenario is one of the functions below that are called scenario_*. After each rollout the exit status of
ansible-playbook, the rows of report.json, the state of every virtual adapter, and how often the tool ran
on each server are compared with what they should be. That no two runs ever met is witnessed by the
utility itself. The exit status is 77 where virtual servers or Ansible can't be had.
"""
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import time

import jsonschema

tree = pathlib.Path(__file__).resolve().parents[2]
build = pathlib.Path(sys.argv[1]).resolve()
work = pathlib.Path(sys.argv[2]).resolve() / sys.argv[3]
version = "7.12b.4.3a"
failures = []
processes = []

# The utility of the package. Two that work at the same time leave a mark.
WITNESS = """#!/bin/sh
exec 8>>/var/lib/witness
flock -n 8 || echo "$$" >>/var/lib/overlap
exec /etc/marvek/lnxfwvt2 "$@"
"""


def expect(what, seen, wanted):
    if seen != wanted:
        if isinstance(seen, dict):
            keys = [key for key in {**seen, **wanted} if seen.get(key) != wanted.get(key)]
            seen, wanted = ({key: each.get(key) for key in keys} for each in (seen, wanted))
        failures.append(f"{what}: {seen!r} instead of {wanted!r}")
        print("FAILED:", failures[-1])


def script(name, *arguments):
    subprocess.run([tree / "script" / name, *map(str, arguments)], check=True, stderr=subprocess.DEVNULL)


def until(what, condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.1)


class Server:
    """A virtual server. `adapters` changes the fleet's, before it boots."""

    def __init__(self, name, fleet="one", adapters=None, boot=None, loader=True, listening=True, **variables):
        self.name, self.dir, self.variables = name, work / "servers" / name, variables
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        script("server", "make", self.dir, self.port, fleet, build)
        shutil.copy(build / "lnxfwvt2", self.dir / "etc/marvek")
        if adapters:
            state = self.state()
            adapters(state)
            self.put_state(state)
        if boot:
            (self.dir / "boot").write_text(boot)
        if not loader:
            (self.dir / "loader").touch()
        if listening:
            self.boot()

    def boot(self):
        with open(self.dir / "console", "a") as console:
            self.process = subprocess.Popen([tree / "script/server", "run", self.dir], stdin=subprocess.DEVNULL,
                                            stdout=console, stderr=console, start_new_session=True)
        processes.append(self.process)

    def answers(self):
        with socket.socket() as door:
            return door.connect_ex(("127.0.0.1", self.port)) == 0

    def tell(self, word):
        script("server", "tell", self.dir, word)

    def state(self):
        return json.loads((self.dir / "var/lib/virtual-adapters/adapters.json").read_text())

    def put_state(self, state):
        (self.dir / "var/lib/virtual-adapters/adapters.json").write_text(json.dumps(state))

    def carries(self):
        """The stamp and the boot code of every adapter."""
        return [(adapter.get("vpd", {}).get("V0", ""), adapter["components"].get("bc")) for adapter in self.state()["adapters"]]

    def logs(self):
        return sorted((self.dir / "var/log/Marvek_Support").glob("kvlnfwup*.log"))

    def is_flashing(self):
        return any("upgrade" in log.read_text(errors="replace").rpartition("About to execute")[2].split("\n")[0] for log in self.logs())

    def files(self):
        """Everything on the server that a rollout could have changed."""
        kept = {}
        for top in ("etc", "var", "root"):
            for path in sorted((self.dir / top).rglob("*")):
                if path.is_file() and not path.is_symlink() and ".ansible" not in path.parts:
                    kept[str(path.relative_to(self.dir))] = (path.stat().st_mtime_ns, path.stat().st_size)
        return kept


class Rollout:
    """A package, servers, and the playbook."""

    def __init__(self, *servers):
        self.servers = servers
        self.results = work / "zentrix_results"
        self.package = make_package()
        hosts = {server.name: {"ansible_port": server.port, "ansible_ssh_private_key_file": str(server.dir / "key"),
                               **server.variables} for server in servers}
        known = work / "known_hosts"
        known.write_text("".join((server.dir / "known_host").read_text() for server in servers))
        (work / "inventory.json").write_text(json.dumps({"all": {"hosts": hosts, "vars": {
            "ansible_host": "127.0.0.1", "ansible_user": "root", "ansible_python_interpreter": "/usr/bin/python3",
            "ansible_ssh_common_args": f"-o UserKnownHostsFile={known} -o IdentitiesOnly=yes",
            "zentrix_package_room": 8, "zentrix_log_room": 8, "zentrix_progress_interval": 1, "zentrix_patience": 120,
            "zentrix_report_program": str(build / "zentrix-report"), "zentrix_results": str(self.results)}}}))
        until("the servers' sshd", lambda: all(server.answers() for server in servers if (server.dir / "console").exists()))

    def start(self, *options):
        environment = {**os.environ, "ANSIBLE_HOME": str(work / "ansible"), "ANSIBLE_NOCOLOR": "1",
                       # A lost connection is to be noticed within seconds.
                       "ANSIBLE_SSH_ARGS": "-o ControlMaster=auto -o ControlPersist=60s -o ServerAliveInterval=1 -o ServerAliveCountMax=2",
                       "ANSIBLE_TIMEOUT": "3"}
        self.output = work / f"output{len(list(work.glob('output*'))) + 1}"
        with open(self.output, "w") as output:
            return subprocess.Popen(["ansible-playbook", "-i", work / "inventory.json", "playbook.yml",
                                     "-e", f"zentrix_package={self.package}", *options], cwd=tree / "rollout",
                                    env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                    start_new_session=True)

    def finish(self, what, playbook, status, **states):
        """Waits for the playbook and compares its status and each server's state; the rows, by server."""
        seen = playbook.wait()
        before = len(failures)
        expect(f"{what}: exit status", seen, status)
        report = json.loads((self.results / "report.json").read_text())
        for error in schema().iter_errors(report):
            expect(f"{what}: report.json at {'/'.join(map(str, error.path))}", error.message, None)
        rows = {row["host"]: row for row in report["hosts"]}
        expect(f"{what}: states", {host: row["state"] for host, row in rows.items()}, states)
        page = (self.results / "report.html").read_text()
        for host, row in rows.items():
            expect(f"{what}: {host} on the page", host in page, True)
            for path in row["logs"]:
                expect(f"{what}: {path} came back", (self.results / path).is_file(), True)
        for server in self.servers:
            expect(f"{what}: two runs at once on {server.name}", (server.dir / "var/lib/overlap").exists(), False)
        if len(failures) > before:
            print(f"{self.output}:\n{self.output.read_text()[-5000:]}")
        return rows

    def run(self, what, status, *options, **states):
        return self.finish(what, self.start(*options), status, **states)


def schema():
    path = tree / "rollout/report.schema.json"
    content = json.loads(path.read_text())
    return jsonschema.Draft202012Validator(content, resolver=jsonschema.RefResolver(path.as_uri(), content))


def make_package():
    """As for real servers: with neither library nor adapters."""
    (work / "images").mkdir()
    lists = (tree / "emulator/fleets").glob("*/images.list")
    lines = {line for each in lists for line in each.read_text().splitlines() if line and line[0] != "#"}
    (work / "images.list").write_text("\n".join(sorted(lines)) + "\n")
    subprocess.run([build / "mkimage", "--list", work / "images.list"], cwd=work / "images", check=True)
    (work / "utility").write_text(WITNESS)
    (work / "utility").chmod(0o755)
    script("package", "--any-width", "--build", build, "--flash-tool", work / "utility", "--images", work / "images",
           "--build-version", version, "--out", work / "package")
    return work / "package.tar.gz"


def fault(**what):
    return lambda state: state.update(faults=[what])


def slow_flash(milliseconds):
    return fault(command={"verb": "upgrade", "component": "bc"}, delay=milliseconds, times=1)


NEW = [(version, "7.12.5")]
OLD = [("7.10a.2.1b", "7.10.4")]


def runs_on(*counts):
    for server, count in counts:
        expect(f"runs on {server.name}", len(server.logs()), count)


# ---- Scenarios.

def scenario_clean():
    """Every fleet that can be updated; a reboot before and one after; texts that want to be more than texts."""
    driver = "{{7*6}}<b>"
    nasty = "<script>alert(1)</script> {{ 7 * 6 }} \x1b[31m \u202e"

    def hostile(state):
        state["adapters"][0]["ports"][0]["driver"] = driver
        state["faults"] = [{"command": {"verb": "upgrade", "component": "mba"}, "text": nasty, "times": 1}]

    one = Server("one", adapters=hostile)
    (one.dir / "var/log/Marvek_Support").mkdir()
    (one.dir / "var/log/Marvek_Support/kvlnfwup<b>$(id)\x1b.log").write_text(nasty)
    # As if systemd ran there, which then fails.
    rack, none = Server("rack", "rack", boot="mkdir -p /run/systemd/system"), Server("none", "none")
    first = Server("first", "duplicate-macs", zentrix_reboot="when-needed")
    after = Server("after", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=95), zentrix_reboot="when-needed")
    later = Server("later", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=95))
    servers = (one, rack, none, first, after, later)
    rollout = Rollout(*servers)

    before = {server.name: server.files() for server in servers}
    rollout.run("check", 0, "--check", **{server.name: "would-update" for server in servers})
    expect("what a check changed", {server.name: server.files() for server in servers}, before)

    rows = rollout.run("clean", 0, one="updated", rack="updated", none="no-adapters", first="updated", after="updated", later="reboot-needed")
    for server in (one, first, after, later):
        expect(f"{server.name} carries", server.carries(), NEW)
    expect("rack's stamps", {stamp for stamp, _ in rack.carries() if stamp}, {version})
    expect("rebooted", [name for name, row in rows.items() if row["rebooted"]], ["first", "after"])
    runs_on((one, 2), (rack, 1), (none, 1), (first, 2), (after, 2), (later, 1))
    page = (rollout.results / "report.html").read_text()
    expect("scripts on the page", "<script" in page, False)
    expect("the driver of one", rows["one"]["runs"][0]["adapters"][0]["ports"][0]["driver"], driver)
    expect("logs of one", rows["one"]["logs"], ["one/kvlnfwup.log"])
    expect("the utility's words", nasty in (rollout.results / "one/kvlnfwup.log").read_text(), True)

    before = {server.name: server.files() for server in servers}
    rows = rollout.run("again", 0, one="unchanged", rack="unchanged", none="unchanged", first="unchanged", after="unchanged", later="reboot-needed")
    expect("what a second rollout changed", {server.name: server.files() for server in servers}, before)
    expect("runs of one", [run["log"] for run in rows["one"]["runs"]], ["one/kvlnfwup.log"])
    expect("its recap", sorted(set(word for word in rollout.output.read_text().split() if word.startswith("changed="))), ["changed=0"])

    rollout.run("reboot allowed", 0, "-e", "zentrix_reboot=when-needed", one="unchanged", rack="unchanged", none="unchanged",
                first="unchanged", after="unchanged", later="updated")
    runs_on((later, 2))
    rows = rollout.run("adapters expected", 2, "-e", "zentrix_expect_adapters=true", one="unchanged", rack="unchanged", none="failed",
                       first="unchanged", after="unchanged", later="unchanged")


def scenario_canary():
    """The first server fails, and nobody else is touched; mended, all are updated, the first one by force."""
    canary, rest = Server("canary", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=1)), Server("rest")
    rollout = Rollout(canary, rest)
    untouched = rest.files()
    rows = rollout.run("canary", 2, canary="failed", rest="not-reached")
    expect("what was touched", rest.files(), untouched)
    expect("the reason", "Error updating bc" in rows["canary"]["reason"], True)
    expect("canary carries", canary.carries(), [(version, "7.10.4")])
    canary.put_state({**canary.state(), "faults": []})
    rollout.run("mended", 0, canary="updated", rest="updated")
    expect("options", (canary.dir / "var/lib/zentrix-rollout/run/options").read_text(), "-f\n")
    expect("carry", canary.carries() + rest.carries(), NEW * 2)
    runs_on((canary, 2), (rest, 1))


def scenario_second_batch():
    """An adapter that is down in the second batch: the batch ends, the third is not reached."""
    servers = [Server("a"), Server("b", "driverless"), Server("c"), Server("d")]
    rollout = Rollout(*servers)
    rows = rollout.run("second batch", 2, "-e", '{"zentrix_batches": [1, 2, "100%"]}', a="updated", b="adapter-down", c="updated", d="not-reached")
    expect("b's exit status", rows["b"]["exitStatus"], 172)
    runs_on(*zip(servers, (1, 1, 1, 0)))


def scenario_unfit():
    """Servers that can't be updated are found before any is touched, or left out."""
    servers = [Server("fit"), Server("marker", boot="touch /tmp/kvsupdbg-no-f-update.txt"), Server("loader", loader=False),
               Server("full", boot="mount -t tmpfs -o size=1m tmpfs /var/log"), Server("away", listening=False)]
    rollout = Rollout(*servers)
    states = {"marker": "unfit", "loader": "unfit", "full": "unfit", "away": "unreachable"}
    untouched = servers[0].files()
    rows = rollout.run("unfit", 2, fit="not-reached", **states)
    expect("what was touched", servers[0].files(), untouched)
    for name, word in (("marker", "dry-run marker"), ("loader", "libc6-i386"), ("full", "free for logs"), ("away", "can be reached over ssh")):
        expect(f"the reason of {name}", word in rows[name]["reason"], True)
    rollout.run("left out", 2, "-e", "zentrix_skip_unfit=true", fit="updated", **states)
    runs_on(*zip(servers, (1, 0, 0, 0, 0)))

    keyring = work / "keyring"
    keyring.touch()
    expect("an unsigned package", rollout.start("-e", f"zentrix_keyring={keyring}").wait(), 2)
    with open(rollout.package, "r+b") as package:
        package.seek(1000)
        package.write(b"\0")
    expect("a damaged package", rollout.start("-e", "zentrix_force=true").wait(), 2)
    expect("servers looked at", "Look at all servers" in rollout.output.read_text(), False)
    runs_on(*zip(servers, (1, 0, 0, 0, 0)))


def scenario_interrupted():
    """Lost connections and power failures, all during a flash."""
    silent, cut, power = (Server(name, adapters=slow_flash(9000)) for name in ("silent", "cut", "power"))
    gone = Server("gone", adapters=slow_flash(9000), zentrix_patience=12)
    following = Server("next")
    rollout = Rollout(silent, cut, power, gone, following)
    playbook = rollout.start("-e", '{"zentrix_batches": [4]}')
    until("all flash", lambda: all(server.is_flashing() for server in (silent, cut, power, gone)))
    gone.process.terminate()
    silent.tell("silent")
    cut.tell("cut")
    power.tell("off")
    time.sleep(6)
    silent.tell("back")
    states = {"silent": "updated", "cut": "updated", "power": "cut-off", "gone": "unreachable"}
    rows = rollout.finish("interrupted", playbook, 2, **states, next="not-reached")
    expect("power's log", rows["power"]["logs"], ["power/kvlnfwup.log"])
    expect("power carries", power.carries(), [(version, "7.10.4")])
    gone.boot()
    until("gone is back", gone.answers)
    rows = rollout.run("taken up", 0, silent="unchanged", cut="unchanged", power="updated", gone="updated", next="updated")
    expect("gone's logs", rows["gone"]["logs"], ["gone/kvlnfwup.log", "gone/kvlnfwup001.log"])
    for server in rollout.servers:
        expect(f"{server.name} carries", server.carries(), NEW)
    runs_on((silent, 1), (cut, 1), (power, 2), (gone, 2), (following, 1))


def scenario_found_again():
    """A run outlives patience and the controller, and is found again."""
    server = Server("one", adapters=slow_flash(25000))
    rollout = Rollout(server)
    rollout.run("patience", 2, "-e", "zentrix_patience=2", one="still-running")
    playbook = rollout.start()
    until("it waits", lambda: "flashing bc through 020000000001" in rollout.output.read_text())
    os.killpg(playbook.pid, signal.SIGKILL)
    playbook.wait()
    expect("still flashing", server.is_flashing(), True)
    rollout.run("found again", 0, one="updated")
    expect("carries", server.carries(), NEW)
    runs_on((server, 1))

    # Two, as the counters of the faults are kept until their number changes.
    slow = {"command": {"verb": "upgrade", "component": "bc"}, "delay": 9000}
    server.put_state({**server.state(), "faults": [slow, slow]})
    both = [rollout.start("-e", "zentrix_force=true", "-e", f"zentrix_results={work}/{name}") for name in ("a", "b")]
    expect("two rollouts at once", [playbook.wait() for playbook in both], [0, 0])
    runs_on((server, 2))


def can_run():
    if os.geteuid() != 0:
        return "not root, and virtual servers take root"
    for program in ("ansible-playbook", "ssh", "/usr/sbin/sshd"):
        if not shutil.which(program):
            return f"{program} is missing (script/bootstrap rollout)"
    if subprocess.run([tree / "script/sandbox", "--whole", "true"], stderr=subprocess.DEVNULL).returncode:
        return "no namespaces here"
    # After the magic number: 1 for 32 bits.
    if (build / "zentrix").read_bytes()[4] != 1 or not pathlib.Path("/lib/ld-linux.so.2").exists():
        return "no 32-bit program, or no 32-bit loader for it"
    return None


reason = can_run()
if reason:
    print("skipped:", reason)
    sys.exit(77)
shutil.rmtree(work, ignore_errors=True)
(work / "servers").mkdir(parents=True)
try:
    globals()[f"scenario_{sys.argv[3]}"]()
finally:
    for process in processes:
        process.terminate()
    for process in processes:
        process.wait()
sys.exit(1 if failures else 0)

#!/usr/bin/python3
"""Rolls out to virtual servers with the real playbook over real SSH, and looks at what came of it.

    tests/rollout/rollout_test.py BUILD_DIR WORK_DIR SCENARIO

A scenario is one of the functions below that are called scenario_*. After each rollout the exit status of
ansible-playbook, the rows of report.json, the state of every virtual adapter, and how often the tool ran
on each server are compared with what they should be. That no two runs ever met is witnessed by the
utility itself. The exit status is 77 where virtual servers or Ansible can't be had.
"""
import gzip
import os
import re
import signal
import subprocess
import sys
import time

import servers
from servers import NEW, Rollout, Server, expect, fault, until, version
from systemd_server import scenario_systemd  # noqa: F401


def runs_on(*counts):
    for server, count in counts:
        expect(f"runs on {server.name}", len(server.logs()), count)


def take_collection(rollout):
    """Rolls out by the collection alone, by its name, from another directory."""
    servers.script("collection", "--build", servers.build, servers.work)
    os.environ["ANSIBLE_HOME"] = str(servers.work / "ansible")
    os.environ["ANSIBLE_COLLECTIONS_PATH"] = str(servers.work / "collections")
    subprocess.run(["ansible-galaxy", "collection", "install", "--offline", *servers.work.glob("marvek-zentrix-*.tar.gz")],
                   check=True, stdout=subprocess.DEVNULL)
    rollout.playbook, rollout.place, inventory = "marvek.zentrix.rollout", servers.work, servers.work / "inventory.json"
    inventory.write_text(inventory.read_text().replace('"zentrix_report_program"', '"not_set"'))


# ---- Scenarios.

def scenario_clean():
    """Every fleet that can be updated, by the collection; a reboot before and one after; texts that want to be more than texts."""
    driver = "{{7*6}}<b>"
    nasty = "<script>alert(1)</script> {{ 7 * 6 }} \x1b[31m \u202e"
    asks_for_reboot = {"command": {"verb": "upgrade", "component": "bc"}, "exit": 95}

    def hostile(state):
        state["adapters"][0]["ports"][0]["driver"] = driver
        state["faults"] = [asks_for_reboot, {"command": {"verb": "upgrade", "component": "mba"}, "text": nasty, "times": 1}]

    # The controller hasn't this one, so its own tasks can't become anybody.
    become = r"""printf '#!/bin/sh\nshift 5\nexec "$@"\n' >/run/become; chmod 755 /run/become"""
    rack = Server("rack", "rack", boot=become, ansible_become=True, ansible_become_exe="/run/become")
    none = Server("none", "none")
    first = Server("first", "duplicate-macs", zentrix_reboot="when-needed")
    after = Server("after", adapters=fault(**asks_for_reboot), zentrix_reboot="when-needed")
    later = Server("later", adapters=hostile)
    (later.dir / "var/log/Marvek_Support").mkdir()
    (later.dir / "var/log/Marvek_Support/kvlnfwup<b>$(id)\x1b.log").write_text(nasty)
    fleet = (rack, none, first, after, later)
    rollout = Rollout(*fleet)
    take_collection(rollout)

    rows = rollout.run("clean", 0, rack="updated", none="no-adapters", first="updated", after="updated", later="reboot-needed")
    for server in (first, after, later):
        expect(f"{server.name} carries", server.carries(), NEW)
    expect("rack's stamps", {stamp for stamp, _ in rack.carries() if stamp}, {version})
    expect("rebooted", [name for name, row in rows.items() if row["rebooted"]], ["first", "after"])
    runs_on((rack, 1), (none, 1), (first, 2), (after, 2), (later, 2))  # its odd file counts
    page = (rollout.results / "report.html").read_text()
    expect("scripts on the page", "<script" in page, False)
    expect("the driver of later", rows["later"]["runs"][0]["adapters"][0]["ports"][0]["driver"], driver)
    expect("logs of later", rows["later"]["logs"], ["later/kvlnfwup.log"])
    expect("the utility's words", nasty in (rollout.results / "later/kvlnfwup.log").read_text(), True)

    before = {server.name: server.files() for server in fleet}
    rows = rollout.run("again", 0, rack="unchanged", none="unchanged", first="unchanged", after="unchanged", later="reboot-needed")
    expect("what a second rollout changed", {server.name: server.files() for server in fleet}, before)
    expect("runs of later", [run["log"] for run in rows["later"]["runs"]], ["later/kvlnfwup.log"])
    expect("its recap", set(re.findall(r"^(?!localhost).*(changed=\d+)", rollout.output.read_text(), re.M)), {"changed=0"})

    rollout.run("reboot allowed, adapters expected", 2, "-e", '{"zentrix_batches": ["100%"], "zentrix_expect_adapters": true}',
                "-e", "zentrix_reboot=when-needed", rack="unchanged", none="failed", first="unchanged", after="unchanged", later="updated")
    runs_on((later, 3), (none, 2))


def scenario_failures():
    """The first server fails, and nobody else is touched; mended, it is updated by force. In the second batch an adapter is down and
    a systemd starts nothing: the third is not reached, unless it may be."""
    facts = "/etc/ansible/facts.d"
    unrecorded = Server("c", boot=f"mkdir -p {facts} && mount -t tmpfs -o ro,mode=755 tmpfs {facts}")
    canary = Server("a", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=1))
    fleet = [canary, Server("b", "driverless"), unrecorded, Server("d", boot="mkdir -p /run/systemd/system"), Server("e")]
    rollout = Rollout(*fleet)
    untouched = [server.files() for server in fleet[1:]]
    rows = rollout.run("canary", 2, a="failed", b="not-reached", c="not-reached", d="not-reached", e="not-reached")
    expect("what was touched", [server.files() for server in fleet[1:]], untouched)
    expect("the reason", "Error updating bc" in rows["a"]["reason"], True)
    expect("canary carries", canary.carries(), [(version, "7.10.4")])

    canary.put_state({**canary.state(), "faults": []})
    canary.hold()
    package = rollout.package.read_bytes()
    playbook = rollout.start("-e", '{"zentrix_batches": [1, 3, "100%"]}')
    until("the canary flashes", canary.is_flashing)
    rollout.package.write_bytes(b"Something else by the same name.")
    canary.hold(False)
    rows = rollout.finish("second batch", playbook, 2, a="updated", b="adapter-down", c="updated", d="failed", e="not-reached")
    expect("options", (canary.dir / "var/lib/zentrix-rollout/run/options").read_text(), "-f\n")
    expect("carry", canary.carries() + unrecorded.carries(), NEW * 2)
    expect("b's exit status", rows["b"]["exitStatus"], 172)
    expect("c's reason", "could not be recorded" in rows["c"]["reason"], True)
    expect("d's reason", "the run can't be started" in rows["d"]["reason"], True)
    runs_on(*zip(fleet, (2, 1, 1, 0, 0)))

    rollout.package.write_bytes(package)
    rollout.run("half may fail", 2, "-e", '{"zentrix_batches": [2], "zentrix_max_failures": 50}', a="unchanged", b="adapter-down", c="updated",
                d="failed", e="updated")
    runs_on(*zip(fleet, (2, 2, 1, 0, 1)))


def scenario_unfit():
    """Servers that can't be updated are found before any is touched, or left out; what can't work is refused."""
    record = "mkdir -p /etc/ansible/facts.d && cd /etc/ansible/facts.d && rm -f zentrix.fact && "
    lacking = "touch /tmp/kvsupdbg-no-f-update.txt; mount -t tmpfs -o size=1m tmpfs /var/log; mount -t tmpfs -o noexec tmpfs /var/lib"
    fleet = [Server("fit"), Server("lacking", loader="/dev/null", boot=lacking), Server("away", listening=False),
             Server("bare", ansible_python_interpreter="/nowhere/python3"),
             Server("odd", boot=record + """echo '{"started": {"a": 1}}' >zentrix.fact"""),
             Server("dated", boot=record + """echo '{"ended": "2026-02-31T00:00:00Z"}' >zentrix.fact"""),
             Server("newer", boot=record + """echo '{"carries": ["7.13a.1.1a"]}' >zentrix.fact"""),
             Server("endless", boot=record + "ln -s /dev/zero zentrix.fact"),
             Server("hanging", boot=record + "mkfifo zentrix.fact", zentrix_look_timeout=5)]
    rollout = Rollout(*fleet)
    states = {server.name: "unreachable" if server.name == "away" else "unfit" for server in fleet[1:]}
    untouched = fleet[0].files()
    rows = rollout.run("unfit", 2, fit="not-reached", **states)
    expect("what was touched", fleet[0].files(), untouched)
    for name, word in (("lacking", "dry-run marker"), ("lacking", "libc6-i386"), ("lacking", "free for logs"), ("lacking", "mounted noexec"),
                       ("away", "can be reached over ssh"), ("bare", "/nowhere/python3"), ("odd", "right: started"), ("dated", "times"),
                       ("newer", "7.13a.1.1a"), ("endless", "record"), ("hanging", "Ask what a run needs")):
        expect(f"the reason of {name}", word in rows[name]["reason"], True)
    states["newer"] = "updated"
    rollout.run("left out", 2, "-e", "zentrix_skip_unfit=true", "-e", "zentrix_allow_older=true", fit="updated", **states)
    runs_on(*((server, server.name in ("fit", "newer")) for server in fleet))
    expect("options", [(server.dir / "var/lib/zentrix-rollout/run/options").read_text() for server in fleet if server.logs()], ["\n", "-f\n"])

    rollout.run("check", 0, "--check", "-e", "zentrix_hosts=fit", "-e", "zentrix_force=true", fit="would-update")
    wrong = ("zentrix_batches=abc", "zentrix_patience=abc", "zentrix_reboot=yes", "zentrix_patiense=3")
    rows = rollout.run("wrong variables", 2, "-e", "zentrix_hosts=fit", *(word for each in wrong for word in ("-e", each)), fit="unfit")
    expect("refused", [each for each in wrong if each.split("=")[0] not in rows["fit"]["reason"]], [])
    runs_on((fleet[0], 1))
    for options, words in ((["--tags", "x"], "leave out --tags"), (["--limit", "fit"], "name localhost too"),
                           (["-e", "zentrix_hosts=nobody"], "No server is left")):
        expect(f"status of {options}", rollout.start(*options).wait(), 2)
        expect(f"what is said of {options}", words in rollout.output.read_text(), True)
    keyring = servers.work / "keyring"
    keyring.touch()
    expect("an unsigned package", rollout.start("-e", f"zentrix_keyring={keyring}").wait(), 2)
    with open(rollout.package, "r+b") as package:
        package.seek(1000)
        package.write(b"\0")
    expect("a damaged package", rollout.start("-e", "zentrix_force=true").wait(), 2)
    expect("servers looked at", "Look at all servers" in rollout.output.read_text(), False)
    expect("what is left", sorted(path.name for path in rollout.results.iterdir()), ["earlier-report.html", "earlier-report.json", "fit", "newer"])


def scenario_interrupted():
    """Lost connections and power failures: while the package comes, at the start, during a flash, at a reboot."""
    def when(path, words):
        return f"(until [ -e /var/lib/zentrix-rollout{path} ]; do sleep 0.1; done; for word in {words}; do echo $word >/server/door; sleep 5; done) &"

    held = [Server("silent"), Server("cut"), Server("power"), Server("gone", zentrix_lost_patience=4)]
    silent, cut, power, gone = held
    early = Server("early", boot=when("", "silent"), zentrix_lost_patience=0)
    begun = Server("begun", boot=when("/run/id", "silent back"))
    asleep = Server("asleep", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=95), zentrix_reboot="when-needed",
                    zentrix_reboot_timeout=5)
    shutdown = asleep.dir / "sbin/shutdown"
    shutdown.write_text(shutdown.read_text().replace("reboot", "silent"))
    for server in held:
        server.hold()
    rollout = Rollout(*held, early, begun, asleep)
    playbook = rollout.start("-e", '{"zentrix_batches": [7]}')
    until("all flash", lambda: all(server.is_flashing() for server in held))
    gone.process.terminate()
    silent.tell("silent")
    cut.tell("cut")
    power.tell("off")
    time.sleep(4)
    for server in held:
        server.hold(False)
    silent.tell("back")
    rows = rollout.finish("interrupted", playbook, 2, silent="updated", cut="updated", power="cut-off", gone="unreachable", early="unreachable",
                          begun="updated", asleep="unreachable")
    expect("power's log", rows["power"]["logs"], ["power/kvlnfwup.log"])
    expect("power carries", power.carries(), [(version, "7.10.4")])
    (early.dir / "boot").unlink()
    away = (gone, early, asleep)
    for server in away:
        server.process.terminate()
        server.process.wait()
        server.boot()
    until("all are back", lambda: all(server.answers() for server in away))
    rows = rollout.run("taken up", 0, silent="unchanged", cut="unchanged", power="updated", gone="updated", early="updated", begun="unchanged",
                       asleep="unchanged")
    expect("gone's logs", rows["gone"]["logs"], ["gone/kvlnfwup.log", "gone/kvlnfwup001.log"])
    for server in rollout.servers:
        expect(f"{server.name} carries", server.carries(), NEW)
    runs_on(*((server, 2 if server in (power, gone) else 1) for server in rollout.servers))


def scenario_found_again():
    """A run outlives the controller and patience, and is found again; three rollouts at once."""
    one, two, three = fleet = Server("one"), Server("two"), Server("three")
    for server in fleet:
        server.hold()
    rollout = Rollout(*fleet)
    playbook = rollout.start()
    until("it waits", lambda: one.waiting() == 1)
    os.killpg(playbook.pid, signal.SIGKILL)
    playbook.wait()
    expect("still flashing", one.is_flashing(), True)
    left, = rollout.results.glob("package.*")
    os.utime(left, (0, 0))
    rollout.run("patience", 2, "-e", "zentrix_patience=2", one="still-running", two="not-reached", three="not-reached")
    expect("what was left behind", list(rollout.results.glob("package.*")), [])

    # It has looked at all of them and waits for the first, when others update the second with another package and
    # the third with the same.
    other = servers.work / "other.tar.gz"
    other.write_bytes(gzip.compress(gzip.decompress(rollout.package.read_bytes())))
    playbook = rollout.start("-e", '{"zentrix_batches": [1, 2]}')
    # Over there the first of all waits still.
    until("it waits again", lambda: one.waiting() == 2)
    others = [rollout.start("-e", f"zentrix_package={package}", "-e", f"zentrix_hosts={server.name}", "-e",
                            f"zentrix_results={servers.work}/{server.name}") for server, package in ((two, other), (three, rollout.package))]
    until("two and three flash", lambda: two.is_flashing() and three.is_flashing())
    one.hold(False)
    until("it waits for them", lambda: two.waiting() == three.waiting() == 2)
    two.hold(False)
    three.hold(False)
    rows = rollout.finish("found again", playbook, 2, one="updated", two="failed", three="updated")
    expect("the reason", "Another rollout" in rows["two"]["reason"], True)
    expect("the others", [each.wait() for each in others], [0, 0])
    runs_on(*zip(fleet, (1, 1, 1)))


sys.exit(servers.main(sys.argv[1], os.path.join(sys.argv[2], sys.argv[3]), globals()[f"scenario_{sys.argv[3]}"]))

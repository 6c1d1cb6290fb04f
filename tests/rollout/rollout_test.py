#!/usr/bin/python3
"""Rolls out to virtual servers with the real playbook over real SSH, and looks at what came of it.

    tests/rollout/rollout_test.py BUILD_DIR WORK_DIR SCENARIO

A scenario is one of the functions below that are called scenario_*. After each rollout the exit status of
ansible-playbook, the rows of report.json, the state of every virtual adapter, and how often the tool ran
on each server are compared with what they should be. That no two runs ever met is witnessed by the
utility itself. The exit status is 77 where virtual servers or Ansible can't be had.
"""
import os
import re
import signal
import sys
import time

import servers
from servers import Rollout, Server, expect, fault, slow_flash, until, version

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
    rack, none = Server("rack", "rack"), Server("none", "none")
    first = Server("first", "duplicate-macs", zentrix_reboot="when-needed")
    after = Server("after", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=95), zentrix_reboot="when-needed")
    later = Server("later", adapters=fault(command={"verb": "upgrade", "component": "bc"}, exit=95))
    fleet = (one, rack, none, first, after, later)
    rollout = Rollout(*fleet)

    before = {server.name: server.files() for server in fleet}
    rollout.run("check", 0, "--check", **{server.name: "would-update" for server in fleet})
    expect("what a check changed", {server.name: server.files() for server in fleet}, before)

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

    before = {server.name: server.files() for server in fleet}
    rows = rollout.run("again", 0, one="unchanged", rack="unchanged", none="unchanged", first="unchanged", after="unchanged", later="reboot-needed")
    expect("what a second rollout changed", {server.name: server.files() for server in fleet}, before)
    expect("runs of one", [run["log"] for run in rows["one"]["runs"]], ["one/kvlnfwup.log"])
    expect("its recap", set(re.findall(r"^(?!localhost).*(changed=\d+)", rollout.output.read_text(), re.M)), {"changed=0"})

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
    facts = "/etc/ansible/facts.d"
    unrecorded = Server("c", boot=f"mkdir -p {facts} && mount -t tmpfs -o ro,mode=755 tmpfs {facts}")
    fleet = [Server("a"), Server("b", "driverless"), unrecorded, Server("d")]
    rollout = Rollout(*fleet)
    rows = rollout.run("second batch", 2, "-e", '{"zentrix_batches": [1, 2, "100%"]}', a="updated", b="adapter-down", c="updated", d="not-reached")
    expect("b's exit status", rows["b"]["exitStatus"], 172)
    expect("c's reason", "could not be recorded" in rows["c"]["reason"], True)
    runs_on(*zip(fleet, (1, 1, 1, 0)))


def scenario_unfit():
    """Servers that can't be updated are found before any is touched, or left out."""
    fleet = [Server("fit"), Server("marker", boot="touch /tmp/kvsupdbg-no-f-update.txt"), Server("loader", loader=False),
               Server("full", boot="mount -t tmpfs -o size=1m tmpfs /var/log"), Server("away", listening=False),
             Server("bare", ansible_python_interpreter="/nowhere/python3")]
    rollout = Rollout(*fleet)
    states = {"marker": "unfit", "loader": "unfit", "full": "unfit", "away": "unreachable", "bare": "unfit"}
    untouched = fleet[0].files()
    rows = rollout.run("unfit", 2, fit="not-reached", **states)
    expect("what was touched", fleet[0].files(), untouched)
    for name, word in (("marker", "dry-run marker"), ("loader", "libc6-i386"), ("full", "free for logs"), ("away", "can be reached over ssh"),
                       ("bare", "/nowhere/python3")):
        expect(f"the reason of {name}", word in rows[name]["reason"], True)
    rollout.run("left out", 2, "-e", "zentrix_skip_unfit=true", fit="updated", **states)
    runs_on(*zip(fleet, (1, 0, 0, 0, 0, 0)))

    keyring = servers.work / "keyring"
    keyring.touch()
    expect("an unsigned package", rollout.start("-e", f"zentrix_keyring={keyring}").wait(), 2)
    with open(rollout.package, "r+b") as package:
        package.seek(1000)
        package.write(b"\0")
    expect("a damaged package", rollout.start("-e", "zentrix_force=true").wait(), 2)
    expect("servers looked at", "Look at all servers" in rollout.output.read_text(), False)
    runs_on(*zip(fleet, (1, 0, 0, 0, 0, 0)))


def scenario_interrupted():
    """Lost connections and power failures, all during a flash."""
    silent, cut, power = (Server(name, adapters=slow_flash(9000)) for name in ("silent", "cut", "power"))
    gone = Server("gone", adapters=slow_flash(9000), zentrix_lost_patience=4)
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
    server = Server("one")
    server.hold()
    rollout = Rollout(server)
    rollout.run("patience", 2, "-e", "zentrix_patience=2", one="still-running")
    playbook = rollout.start()
    until("it waits", lambda: "RETRYING: [one]" in rollout.output.read_text())
    os.killpg(playbook.pid, signal.SIGKILL)
    playbook.wait()
    expect("still flashing", server.is_flashing(), True)
    server.hold(False)
    rollout.run("found again", 0, one="updated")
    expect("carries", server.carries(), NEW)
    runs_on((server, 1))

    # Two, as the counters of the faults are kept until their number changes.
    slow = {"command": {"verb": "upgrade", "component": "bc"}, "delay": 9000}
    server.put_state({**server.state(), "faults": [slow, slow]})
    both = [rollout.start("-e", "zentrix_force=true", "-e", f"zentrix_results={servers.work}/{name}") for name in ("a", "b")]
    expect("two rollouts at once", [playbook.wait() for playbook in both], [0, 0])
    runs_on((server, 2))


reason = servers.begin(sys.argv[1], os.path.join(sys.argv[2], sys.argv[3]))
if reason:
    print("skipped:", reason)
    sys.exit(77)
try:
    globals()[f"scenario_{sys.argv[3]}"]()
finally:
    servers.end()
sys.exit(1 if servers.failures else 0)

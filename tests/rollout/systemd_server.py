"""A server where a real systemd runs, and one with an old C library, in the trees of `script/server trees`."""
import shutil
import time

from servers import NEW, Rollout, Server, Skipped, expect, tree, until

HOME = "/var/lib/zentrix-rollout"
# Lines that old versions of systemd don't know.
LINES = ("KillSignal", "SendSIGKILL", "TimeoutStopSec", "OOMScoreAdjust", "ManagedOOMPreference")


def configure(server):
    """Whatever stays after a logout is killed, and so is in two seconds whatever may be killed at all. No login waits for a
    service manager of root's own."""
    (server.dir / "etc/systemd/system/user@0.service").symlink_to("/dev/null")
    for program, section, line in (("logind", "Login", "KillUserProcesses=yes"), ("system", "Manager", "DefaultTimeoutStopSec=2s")):
        (server.dir / f"etc/systemd/{program}.conf.d").mkdir()
        (server.dir / f"etc/systemd/{program}.conf.d/strict.conf").write_text(f"[{section}]\n{line}\n")
    server.boot()


def reboot(server, meanwhile):
    boot_id = "cat /proc/sys/kernel/random/boot_id"
    was = server.do(boot_id)
    server.do("systemctl reboot")
    until("the end of sshd", lambda: not server.answers(), 200)
    meanwhile()
    until("the reboot", lambda: server.do(boot_id) not in ("", was), 200)


def finish_flash(server):
    """Not before whatever may be killed would have been."""
    time.sleep(5)
    expect("it still flashes", server.is_flashing(), True)
    server.hold(False)


def boot():
    trees = tree / "build/trees"
    if not ((trees / "systemd").exists() and (trees / "old-loader").exists() and shutil.which("systemd-nspawn")):
        raise Skipped("no trees in which a real systemd could boot (script/server trees)")
    server = Server("systemd", tree=trees / "systemd", listening=False, zentrix_library_directory="/etc/marvek")
    configure(server)
    try:
        until("systemd", server.answers, 200)
    except TimeoutError:
        raise Skipped("systemd doesn't boot here: " + (server.dir / "console").read_text()[-200:]) from None
    return server, Server("old", loader=trees / "old-loader/lib/ld-linux.so.2")


def scenario_systemd():
    """The session ends, somebody stops the unit, or reboots; and systemds that know less, or start nothing."""
    server, old = boot()
    rollout = Rollout(server, old)
    rollout.run("check", 0, "--check", systemd="would-update", old="would-update")

    # The session ends, and somebody stops the unit.
    only = ("-e", "zentrix_hosts=systemd")
    server.hold()
    playbook = rollout.start(*only)
    until("it flashes", server.is_flashing, 200)
    server.do("systemctl stop --no-block 'zentrix-rollout-*'; systemctl daemon-reload;"
              "ssh=$(systemctl show -P MainPID ssh); kill -KILL $(cat /proc/$ssh/task/$ssh/children)")
    finish_flash(server)
    rollout.finish("stopped", playbook, 0, systemd="updated")
    expect("carries", server.carries(), NEW)
    expect("runs", len(server.logs()), 1)
    expect("its units", server.do("ls /run/systemd/system | grep zentrix; systemctl list-units --all --plain --no-legend 'zentrix*'"), "")
    journal = server.do("journalctl -b -o cat")
    expect("lines of zentrix-run in the journal", [line for line in journal.splitlines() if line.startswith("run ") or "flock" in line],
           [f"run {server.do(f'cat {HOME}/run/id').strip()}: zentrix in {server.do(f'echo {HOME}/package-*').strip()}"])

    # A reboot waits for the run.
    server.hold()
    playbook = rollout.start(*only, "-e", "zentrix_force=true")
    until("it flashes again", server.is_flashing, 200)
    reboot(server, lambda: finish_flash(server))
    rollout.finish("rebooted", playbook, 0, systemd="updated")
    expect("runs", len(server.logs()), 2)

    # A systemd that knows less, line by line; and one that starts nothing, since it shuts down.
    start = f"{HOME}/old start {HOME} %s $(cat {HOME}/run/sum) $(cat {HOME}/package-*/SHA256SUMS | sha256sum | cut -c -64) {HOME}/package-* {HOME}/none /etc/marvek"
    for line in LINES:
        server.do(f"sed s/^{line}=/New{line}=/ {HOME}/zentrix-run >{HOME}/old; sh {start % line} -v; sh {HOME}/old wait {HOME} 60")
        expect(f"a run without {line}", server.do(f"cat {HOME}/run/id {HOME}/run/status"), f"{line}\n0\n")
    expect("lines not known", server.do("journalctl -b -o cat | grep -o \"^[^ ]*: Unknown key[^,]*\" | grep -o 'New[A-Za-z]*'").split(),
           [f"New{line}" for line in LINES])
    said = server.do(f"mount -o bind,ro {HOME}/run {HOME}/run; sh {start % 'unwritten'} -v 2>&1; umount {HOME}/run")
    expect("a unit that fails", "Result=exit-code" in said, True)
    (server.dir / "root/late").write_text(f"sh {start % 'late'} -v >/root/said 2>&1\necho $? >>/root/said\n")
    server.do("systemd-run -p RemainAfterExit=yes -p ExecStop='/bin/sh /root/late' true")
    reboot(server, lambda: None)
    said = (server.dir / "root/said").read_text()
    expect("a start while the server shuts down", ("is destructive" in said, said.splitlines()[-1]), (True, "1"))
    expect("the last run", server.do(f"cat {HOME}/run/id"), f"{LINES[-1]}\n")

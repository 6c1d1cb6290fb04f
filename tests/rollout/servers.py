"""Virtual servers and rollouts to them, for tests and benches.

Set `build` (a build directory with 32-bit programs) and `work` (where everything is written) first.
"""
import json
import os
import pathlib
import shutil
import socket
import subprocess
import time

import jsonschema

tree = pathlib.Path(__file__).resolve().parents[2]
build = work = None
version = "7.12b.4.3a"
# What an adapter carries after an update: stamp and boot code.
NEW = [(version, "7.12.5")]
failures = []
processes = []

# The utility of the package. Two that work at the same time leave a mark; a flash takes as long as a test holds it.
WITNESS = """#!/bin/sh
exec 8>>/var/lib/witness
flock -n 8 || echo "$$" >>/var/lib/overlap
case $* in *" upgrade "*) while [ -e /var/lib/hold ]; do sleep 0.1; done ;; esac
exec /etc/marvek/lnxfwvt2 "$@"
"""


class Skipped(Exception):
    pass


def expect(what, seen, wanted):
    if seen != wanted:
        if isinstance(seen, dict):
            keys = [key for key in {**seen, **wanted} if seen.get(key) != wanted.get(key)]
            seen, wanted = ({key: each.get(key) for key in keys} for each in (seen, wanted))
        failures.append(f"{what}: {seen!r} instead of {wanted!r}")
        print("FAILED:", failures[-1])


def script(name, *arguments):
    subprocess.run([tree / "script" / name, *map(str, arguments)], check=True, stderr=subprocess.DEVNULL)


def until(what, condition, seconds=600):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.1)


class Server:
    """A virtual server. `adapters` changes the fleet's, before it boots."""

    def __init__(self, name, fleet="one", adapters=None, boot=None, loader=None, tree=None, listening=True, **variables):
        self.name, self.dir, self.variables = name, work / "servers" / name, variables
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        script("server", "make", self.dir, self.port, fleet, build, *filter(None, [tree]))
        shutil.copy(build / "lnxfwvt2", self.dir / "etc/marvek")
        if adapters:
            state = self.state()
            adapters(state)
            self.put_state(state)
        if boot:
            (self.dir / "boot").write_text(boot)
        if loader:
            shutil.copy(loader, self.dir / "loader")
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

    def do(self, command):
        """What a command prints there."""
        return subprocess.run(["ssh", "-nq", "-p", str(self.port), "-i", self.dir / "key", "-o", "IdentitiesOnly=yes",
                               "-o", f"UserKnownHostsFile={self.dir / 'known_host'}", "root@127.0.0.1", command],
                              stdout=subprocess.PIPE, text=True).stdout

    def waiting(self):
        """How many wait there for a run. /proc/locks hides them in a container whose own process took the lock and died."""
        home = "var/lib/zentrix-rollout"

        def waits(process):
            try:
                return ((process / "cmdline").read_bytes().startswith(b"flock\0-s\0-w\0")
                        and (process / "root" / home).samefile(self.dir / home))
            except OSError:
                return False

        return sum(waits(process) for process in pathlib.Path("/proc").glob("[0-9]*"))

    def tell(self, word):
        script("server", "tell", self.dir, word)

    def hold(self, held=True):
        (self.dir / "var/lib/hold").touch() if held else (self.dir / "var/lib/hold").unlink()

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
        self.playbook, self.place = "playbook.yml", tree / "rollout"
        self.results = work / "zentrix_results"
        self.package = make_package()
        hosts = {server.name: {"ansible_port": server.port, "ansible_ssh_private_key_file": str(server.dir / "key"),
                               **server.variables} for server in servers}
        # The controller's own tasks would leave their files in the home that its accounts name.
        hosts["localhost"] = {"ansible_remote_tmp": str(work / "ansible/remote")}
        known = work / "known_hosts"
        known.write_text("".join((server.dir / "known_host").read_text() for server in servers))
        (work / "inventory.json").write_text(json.dumps({"all": {"hosts": hosts, "vars": {
            "ansible_host": "127.0.0.1", "ansible_user": "root", "ansible_python_interpreter": "/usr/bin/python3",
            "ansible_ssh_common_args": f"-o UserKnownHostsFile={known} -o IdentitiesOnly=yes",
            "zentrix_package_room": 8, "zentrix_log_room": 8, "zentrix_patience": 1800,
            "zentrix_report_program": str(build / "zentrix-report"), "zentrix_results": str(self.results)}}}))
        until("the servers' sshd", lambda: all(server.answers() for server in servers if (server.dir / "console").exists()))

    def start(self, *options):
        environment = {**os.environ, "HOME": str(work), "ANSIBLE_HOME": str(work / "ansible"), "ANSIBLE_NOCOLOR": "1",
                       # A lost connection is to be noticed within seconds.
                       "ANSIBLE_SSH_ARGS": "-o ControlMaster=auto -o ControlPersist=60s -o ServerAliveInterval=1 -o ServerAliveCountMax=2",
                       "ANSIBLE_TIMEOUT": "3"}
        self.output = work / f"output{len(list(work.glob('output*'))) + 1}"
        with open(self.output, "w") as output:
            return subprocess.Popen(["ansible-playbook", "-i", work / "inventory.json", self.playbook,
                                     "-e", f"zentrix_package={self.package}", *options], cwd=self.place,
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
    # Without the reader, which is large, and not used there.
    (work / "programs").mkdir()
    for name in ("zentrix", "package_check"):
        (work / "programs" / name).symlink_to(build / name)
    script("package", "--any-width", "--build", work / "programs", "--flash-tool", work / "utility", "--images", work / "images",
           "--build-version", version, "--out", work / "package")
    return work / "package.tar.gz"


def fault(**what):
    return lambda state: state.update(faults=[what])


def begin(build_dir, work_dir):
    """Empties work_dir."""
    global build, work
    build, work = pathlib.Path(build_dir).resolve(), pathlib.Path(work_dir).resolve()
    shutil.rmtree(work, ignore_errors=True)
    (work / "servers").mkdir(parents=True)
    if os.geteuid() != 0:
        raise Skipped("not root, and virtual servers take root")
    for program in ("ansible-playbook", "ssh", "/usr/sbin/sshd"):
        if not shutil.which(program):
            raise Skipped(f"{program} is missing (script/bootstrap rollout)")
    if subprocess.run([tree / "script/sandbox", "--whole", "true"], stderr=subprocess.DEVNULL).returncode:
        raise Skipped("no namespaces here")
    # After the magic number: 1 for 32 bits.
    if (build / "zentrix").read_bytes()[4] != 1 or not pathlib.Path("/lib/ld-linux.so.2").exists():
        raise Skipped("no 32-bit program, or no 32-bit loader for it")


def end():
    for process in processes:
        process.terminate()
    for process in processes:
        process.wait()
    processes.clear()


def main(build_dir, work_dir, scenario):
    """The exit status of a test."""
    try:
        begin(build_dir, work_dir)
        scenario()
    except Skipped as skipped:
        print("skipped:", skipped)
        return 77
    finally:
        end()
    return 1 if failures else 0

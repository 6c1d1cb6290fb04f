#!/usr/bin/python3
"""Measures rollouts to virtual servers: script/bench rollout.

    bench/rollout.py BUILD_DIR WORK_DIR SERVERS...

For each number of servers, whose flash takes five seconds, one rollout and a second one that has nothing
to do. `limit` is what the flashes alone take in as many batches, one after the other. `cpu` and `memory`
are the controller's, Ansible's own processes and ssh: processor seconds for each server, and at most,
for each fork, what it has in memory (pages that processes share are counted once). The servers run on
the same machine, so `wall` holds their work, too.
"""
import os
import pathlib
import resource
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/rollout"))
import servers  # noqa: E402

FLASH = 5
BATCHES = 3
FORKS = 25


def memory_of(group):
    """Kibibytes of all processes of a process group."""
    total = 0
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and os.getpgid(int(entry.name)) == group:
                lines = (entry / "smaps_rollup").read_text().splitlines()
                total += sum(int(line.split()[1]) for line in lines if line.startswith("Pss:"))
        except OSError:
            pass
    return total


def measure(rollout):
    """Seconds, and the controller's processor seconds and peak kibibytes."""
    peak, start = 0, time.monotonic()
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    playbook = rollout.start()
    while playbook.poll() is None:
        peak = max(peak, memory_of(playbook.pid))
        time.sleep(0.5)
    if playbook.returncode != 0:
        sys.exit(f"bench: the rollout failed, see {rollout.output}")
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return time.monotonic() - start, cpu, peak


def bench(count, build, work):
    servers.begin(build, work)
    slow = servers.fault(command={"verb": "upgrade", "component": "bc"}, delay=1000 * FLASH, times=1)
    rollout = servers.Rollout(*(servers.Server(f"server{number:02}", adapters=slow) for number in range(count)))
    wall, cpu, memory = measure(rollout)
    wall2, cpu2, _ = measure(rollout)
    servers.end()
    print(f"{count:7} {BATCHES * FLASH:7} {wall:7.0f} {cpu / count:6.2f} {memory / 1024:9.0f}"
          f" {memory / 1024 / min(FORKS, count):8.1f} {wall2:10.0f} {cpu2 / count:9.2f}", flush=True)


print("servers limit_s  wall_s  cpu_s memory_MB  MB/fork 2nd_wall_s 2nd_cpu_s")
try:
    for argument in sys.argv[3:]:
        bench(int(argument), sys.argv[1], sys.argv[2])
except servers.Skipped as skipped:
    sys.exit(f"bench: {skipped}")
finally:
    servers.end()

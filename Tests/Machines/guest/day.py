#!/usr/bin/python3
"""Lives through a day in the machine: idle hours, and some work. day.py UNIT-FOLDER USER

UNIT-FOLDER is the control group of the service whose cost is told. Prints one JSON object on a line
for each hour and for the end of each work: the counters of the service and of the machine.
"""
import json
import os
import pathlib
import subprocess
import sys
import time

HOUR = 3600
HOURS = 24
#: In which hour which work is done, and for how many seconds. No work on the disk, whose answers do
#: not come by the machine's own clock.
WORK = {2: ("short", 60), 6: ("cpu", 180), 10: ("short", 60), 14: ("cpu", 180), 20: ("short", 60)}
LOCKS = pathlib.Path("/run/systemd/inhibit")


def fields(path):
    """The numbers of a file that gives each a name: "Rss: 12 kB", "usage_usec 12"."""
    pairs = (line.replace(":", " ").split() for line in path.open())
    return {pair[0]: int(pair[1]) for pair in pairs if len(pair) > 1 and pair[1].isdigit()}


def wakeups(process):
    """How often its threads have waited for something, and were woken."""
    return sum(fields(status).get("voluntary_ctxt_switches", 0)
               for status in process.glob("task/*/status"))


def machine_seconds():
    """For how long the machine's processor has worked since its start."""
    user, nice, system, _, _, interrupts, soft = map(
        int, pathlib.Path("/proc/stat").read_text().split()[1:8])
    return (user + nice + system + interrupts + soft) / os.sysconf("SC_CLK_TCK")


def is_held(locks=LOCKS):
    """Whether Staylit has a lock that keeps the idle machine awake."""
    wanted = {"WHO=Staylit", "WHAT=idle", "MODE=block"}
    return any(wanted <= {*path.read_text().splitlines()}
               for path in locks.iterdir() if path.is_file())


def counters(unit):
    process = pathlib.Path("/proc") / (unit / "cgroup.procs").read_text().split()[0]
    memory = fields(process / "smaps_rollup")
    return {"seconds": round(time.clock_gettime(time.CLOCK_MONOTONIC)),
            "process": process.name,
            "cpuSeconds": fields(unit / "cpu.stat")["usage_usec"] / 1e6,
            "wakeups": wakeups(process),
            "residentKiB": memory["Rss"],
            "privateKiB": memory["Private_Clean"] + memory["Private_Dirty"],
            "writtenKiB": fields(process / "io")["write_bytes"] // 1024,
            "processes": sum(path.name.isdigit() for path in pathlib.Path("/proc").iterdir()),
            "machineCpuSeconds": machine_seconds(),
            "held": is_held()}


def do_work(kind, seconds, user, number):
    name = f"day-{number}"
    subprocess.run(["systemd-run", "--quiet", "--collect", f"--unit={name}", f"--uid={user}",
                    "/usr/local/lib/machine/work", kind], check=True)
    time.sleep(seconds)
    held = is_held()
    subprocess.run(["systemctl", "stop", name], check=True)
    return held


def main():
    unit, user = pathlib.Path(sys.argv[1]), sys.argv[2]
    begin = time.monotonic()
    for hour in range(HOURS + 1):
        time.sleep(max(0, begin + hour * HOUR - time.monotonic()))
        print(json.dumps({"hour": hour, **counters(unit)}), flush=True)
        if hour in WORK:
            kind, seconds = WORK[hour]
            held = do_work(kind, seconds, user, hour)
            print(json.dumps({"work": kind, "held": held}), flush=True)


if __name__ == "__main__":
    main()

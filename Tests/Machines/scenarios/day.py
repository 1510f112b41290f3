"""A day of 24 hours on a machine without a desktop: idle hours and some work, and what they cost."""
import json
import time

import user_unit
from image import USER
from scenario import Machine

TITLE = "a day of idling and some work"
MACHINES = [Machine(release, own_time=True) for release in ("bookworm", "trixie")]
RECORD = "/var/tmp/day"
#: Longer than the day takes here on any machine.
MOST_SECONDS = 4 * 3600
LOOK_SECONDS = 10


def live(trial):
    """What the machine noted at each hour."""
    machine = trial.machine
    unit = machine.shell(f"{user_unit.MANAGER} show --property=ControlGroup --value staylit").strip()
    machine.run("systemd-run", "--quiet", "--unit=day", f"--property=StandardOutput=file:{RECORD}",
                "/usr/local/lib/machine/day.py", f"/sys/fs/cgroup{unit}", USER)
    end = time.monotonic() + MOST_SECONDS
    while "inactive" not in machine.run("systemctl", "show", "--property=ActiveState", "day"):
        if time.monotonic() > end:
            break
        time.sleep(LOOK_SECONDS)
    return [json.loads(line) for line in machine.run("cat", RECORD).splitlines()]


def tell(trial, first, last):
    """The whole day's cost."""
    def used(name):
        return last[name] - first[name]

    seconds = used("seconds")
    trial.say(f"{seconds} s: {used('cpuSeconds'):.1f} s of the processor "
              f"({used('cpuSeconds') / seconds:.3%}; the whole machine "
              f"{used('machineCpuSeconds'):.0f} s), {used('wakeups')} wake-ups, "
              f"{used('writtenKiB')} KiB written")
    for name in ("residentKiB", "privateKiB", "processes"):
        trial.say(f"{name}: {first[name]} at the beginning, {last[name]} at the end")


def run(trial):
    user_unit.start(trial)
    noted = live(trial)
    for note in noted:
        trial.say(json.dumps(note))
    hours = [note for note in noted if "hour" in note]
    works = [note for note in noted if "work" in note]
    trial.check(len(hours) == 25 and len(works) == 5, "the day comes to its end")
    trial.check(all(work["held"] for work in works), "each work is held for")
    # The first note is taken within the grace period, for which each start holds.
    trial.check(not any(hour["held"] for hour in hours[1:]), "there is no hold after an idle hour")
    trial.check(len({hour["process"] for hour in hours}) == 1, "the same process lives all day")
    tell(trial, hours[0], hours[-1])

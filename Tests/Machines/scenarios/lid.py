"""The lid, by a switch that the kernel takes for a real one: with "Work with the lid closed" on and
off. In the settings of the system unit, because nobody is logged in who could allow it."""
import time

import system_unit
from scenario import bare
from trial import PATIENCE_SECONDS, SETTINGS, WORK_SECONDS

TITLE = "lid, mode on and off"
MACHINES = bare("bookworm", "trixie")
#: For so long after its start, and after waking, logind ignores the lid.
HOLDOFF_SECONDS = 35


def set_lid(trial, closed):
    trial.machine.shell(f"echo {int(closed)} >/run/lid")
    trial.say("the lid is closed" if closed else "the lid is open")


def make_lid(trial):
    machine = trial.machine
    machine.shell("modprobe uinput && mkfifo /run/lid && systemd-run --quiet --unit=lid "
                  "/usr/local/lib/machine/lid.py /run/lid && udevadm settle")
    set_lid(trial, False)
    known = machine.shell("busctl get-property org.freedesktop.login1 /org/freedesktop/login1 "
                          "org.freedesktop.login1.Manager LidClosed")
    return trial.check(known.strip() == "b false", f"logind knows the lid: {known.strip()}")


def use(trial, mode):
    """From now on the mode is on or off."""
    trial.machine.shell(f"printf '{SETTINGS}allowLidClosed = {str(mode).lower()}\\n' "
                        ">/etc/staylit/settings.toml && systemctl restart staylit-system")


def locks_the_lid(trial):
    return any(lock["who"] == "Staylit" and "handle-lid-switch" in lock["what"]
               for lock in trial.machine.locks)


def run(trial):
    machine = trial.machine
    system_unit.start(trial)
    if not make_lid(trial):
        return
    time.sleep(HOLDOFF_SECONDS)
    trial.say("-- mode off: a closed lid is a wish to sleep, even during work")
    with trial.work("cpu"):
        trial.check(machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS),
                    "there is a hold for the work")
        begin = time.monotonic()
        set_lid(trial, True)
        trial.falls_asleep(begin, "by its lid")
        set_lid(trial, False)
    time.sleep(HOLDOFF_SECONDS)
    trial.say("-- mode on: it stays awake")
    use(trial, True)
    trial.check(machine.wait_until(lambda: locks_the_lid(trial), PATIENCE_SECONDS),
                "the system unit may lock the lid")
    with trial.work("cpu"):
        machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS)
        begin = time.monotonic()
        set_lid(trial, True)
        slept = machine.wait_until(lambda: machine.times("SUSPEND", begin), WORK_SECONDS)
        if not trial.check(not slept, "the machine stays awake with its lid closed"):
            machine.wake()
        set_lid(trial, False)
    trial.say("-- mode off again")
    use(trial, False)
    trial.check(machine.wait_until(lambda: not locks_the_lid(trial), PATIENCE_SECONDS),
                "the lock of the lid ends with the mode")
    begin = time.monotonic()
    set_lid(trial, True)
    trial.falls_asleep(begin, "by its lid")
    set_lid(trial, False)

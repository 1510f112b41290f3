"""The lid, by a switch that the kernel takes for a real one: with "Work with the lid closed" on and
off. In the settings of the system unit, because nobody is logged in who could allow it."""
import time

import lids
import system_unit
from scenario import bare
from trial import PATIENCE_SECONDS, SETTINGS, WORK_SECONDS

TITLE = "lid, mode on and off"
MACHINES = bare("bookworm", "trixie")


def use(trial, mode):
    """From now on the mode is on or off."""
    trial.machine.shell(f"printf '{SETTINGS}allowLidClosed = {str(mode).lower()}\\n' "
                        ">/etc/staylit/settings.toml && systemctl restart staylit-system")


def run(trial):
    machine = trial.machine
    system_unit.start(trial)
    if not lids.make_lid(trial):
        return
    time.sleep(lids.HOLDOFF_SECONDS)
    trial.say("-- mode off: a closed lid is a wish to sleep, even during work")
    with trial.work("cpu"):
        trial.check(machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS),
                    "there is a hold for the work")
        begin = time.monotonic()
        lids.set_lid(trial, True)
        trial.falls_asleep(begin, "by its lid")
        lids.set_lid(trial, False)
    time.sleep(lids.HOLDOFF_SECONDS)
    trial.say("-- mode on: it stays awake")
    use(trial, True)
    trial.check(machine.wait_until(lambda: lids.locks_the_lid(trial), PATIENCE_SECONDS),
                "the system unit may lock the lid")
    with trial.work("cpu"):
        machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS)
        begin = time.monotonic()
        lids.set_lid(trial, True)
        slept = machine.wait_until(lambda: machine.times("SUSPEND", begin), WORK_SECONDS)
        if not trial.check(not slept, "the machine stays awake with its lid closed"):
            machine.wake()
        lids.is_known(trial, True)
        lids.set_lid(trial, False)
    trial.say("-- mode off again")
    use(trial, False)
    trial.check(machine.wait_until(lambda: not lids.locks_the_lid(trial), PATIENCE_SECONDS),
                "the lock of the lid ends with the mode")
    begin = time.monotonic()
    lids.set_lid(trial, True)
    trial.falls_asleep(begin, "by its lid")
    lids.set_lid(trial, False)

"""What is tried with a lid in the session of a desktop: work with the lid closed, while "Work with the
lid closed" is off and while it is on."""
import time

import lids
import session
from image import USER
from trial import PATIENCE_SECONDS, WORK_SECONDS


def stop_staylit(here):
    here.machine.run("pkill", "-u", USER, "-x", "staylit")
    here.trial.check(here.wait_for(lambda: not here.machine.run("pgrep", "-u", USER, "-x", "staylit",
                                                                may_fail=True), PATIENCE_SECONDS),
                     "Staylit ends when it is asked to")


def closed_during_work(here):
    """Whether the machine sleeps when its lid is closed while it is held for work. Awake and open
    afterwards."""
    trial, machine = here.trial, here.machine
    machine.press("shift")
    with trial.work("cpu"):
        trial.check(machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS),
                    "there is a hold for the work")
        begin = time.monotonic()
        lids.set_lid(trial, True)
        slept = machine.wait_until(lambda: machine.times("SUSPEND", begin), WORK_SECONDS)
        if slept:
            trial.figure("asleep by its lid", machine.times("SUSPEND", begin)[0] - begin)
            time.sleep(2)
            machine.wake()
        lids.set_lid(trial, False)
    return slept


def mode_off(here):
    here.trial.say("-- mode off: a closed lid is a wish to sleep, even during work")
    here.trial.check(closed_during_work(here), "the machine sleeps when its lid is closed")
    time.sleep(lids.HOLDOFF_SECONDS)


def mode_on(here):
    """The mode counts where logind has the lid. It has none where the desktop acts on the lid."""
    trial, machine = here.trial, here.machine
    stop_staylit(here)
    here.set("allowLidClosed = true\n")
    here.start_staylit()
    if here.desktop.has_lid:
        trial.say("-- mode on: the desktop has the lid, and Staylit says so")
        time.sleep(lids.HOLDOFF_SECONDS)
        trial.check(not lids.locks_the_lid(trial), "Staylit does not claim the lid")
        journal = machine.run("journalctl", "--boot", "--no-pager", "--output=cat",
                              f"_UID={machine.run('id', '-u', USER).strip()}", "_COMM=staylit")
        said = [line for line in journal.splitlines() if "lid" in line.lower()]
        trial.check(said, "Staylit's log says why")
        trial.say("\n".join(said))
        trial.check(closed_during_work(here), "the machine sleeps, because the desktop wants it")
        return
    trial.say("-- mode on: the machine stays awake")
    trial.check(machine.wait_until(lambda: lids.locks_the_lid(trial), PATIENCE_SECONDS),
                "Staylit locks the lid")
    trial.check(not closed_during_work(here), "the machine stays awake with its lid closed")


def make(trial):
    """A lid, to be made before the session: some desktops look for one when they start."""
    # logind takes some of QEMU's screens for a second one, with which a lid means nothing to it.
    trial.machine.write("/etc/systemd/logind.conf.d/70-lid.conf",
                        "[Login]\nHandleLidSwitchDocked=suspend\n")
    trial.machine.run("systemctl", "restart", "systemd-logind")
    lids.make_lid(trial)
    trial.machine.run("systemctl", "try-restart", "upower", may_fail=True)


def run(trial, desktop):
    """In a session that begins now."""
    here = session.Session(trial, desktop)
    here.log_in()
    here.set()
    here.start_staylit()
    time.sleep(lids.HOLDOFF_SECONDS)
    mode_off(here)
    mode_on(here)

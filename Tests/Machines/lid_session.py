"""What is tried with a lid in the session of a desktop: the lid is closed during work, while "Work with
the lid closed" is off and while it is on."""
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


def closed_during_work(here, locked):
    """Whether the machine sleeps when its lid is closed while it is held for work, and Staylit locks
    the lid, or does not. Awake and open afterwards."""
    trial, machine = here.trial, here.machine
    machine.press("shift")
    with trial.work("cpu"):
        trial.check(machine.wait_until(trial.is_held_for_work, PATIENCE_SECONDS),
                    "there is a hold for the work")
        trial.check(lids.locks_the_lid(trial) == locked,
                    f"Staylit {'locks' if locked else 'does not lock'} the lid")
        begin = time.monotonic()
        lids.set_lid(trial, True)
        slept = machine.wait_until(lambda: machine.times("SUSPEND", begin), WORK_SECONDS)
        if slept:
            trial.figure("asleep by its lid", machine.times("SUSPEND", begin)[0] - begin)
            time.sleep(2)
            machine.wake()
        else:
            lids.is_known(trial, True)
            trial.check(trial.is_held_for_work(), "there is still a hold for the work")
        lids.set_lid(trial, False)
    return slept


def mode_off(here):
    here.trial.say("-- mode off: a closed lid is a wish to sleep, even during work")
    here.trial.check(closed_during_work(here, locked=False),
                     "the machine sleeps when its lid is closed")
    time.sleep(lids.HOLDOFF_SECONDS)


def said_of_the_lid(here):
    """What Staylit's log says of a desktop that has the lid."""
    user = here.machine.run("id", "-u", USER).strip()
    journal = here.machine.run("journalctl", "--boot", "--no-pager", "--output=cat",
                               f"_UID={user}", "_COMM=staylit")
    return [line for line in journal.splitlines() if "handles the lid itself" in line]


def mode_on(here):
    """The mode works where logind acts on the lid. Where the desktop does, Staylit leaves the lid
    alone and says so."""
    trial, machine = here.trial, here.machine
    stop_staylit(here)
    here.set("allowLidClosed = true\n")
    here.start_staylit()
    if not here.desktop.has_lid:
        trial.say("-- mode on: the machine stays awake")
        trial.check(machine.wait_until(lambda: lids.locks_the_lid(trial), PATIENCE_SECONDS),
                    "Staylit locks the lid")
        trial.check(not closed_during_work(here, locked=True),
                    "the machine stays awake with its lid closed")
        return
    trial.say("-- mode on: the desktop has the lid, and Staylit says so")
    if trial.check(here.wait_for(lambda: said_of_the_lid(here), PATIENCE_SECONDS),
                   "Staylit's log says who has the lid"):
        trial.say("\n".join(said_of_the_lid(here)))
    trial.check(closed_during_work(here, locked=False),
                "the machine sleeps, because the desktop wants it")


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

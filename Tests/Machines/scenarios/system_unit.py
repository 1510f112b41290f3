"""The unit of the whole machine, with work of three users and of a container, and a user's Staylit
beside it."""
import time

import user_unit
from image import USER
from scenario import bare
from trial import KINDS, PATIENCE_SECONDS, SETTINGS

TITLE = "system unit, work of three users"
MACHINES = bare("bookworm", "trixie")
OTHERS = ("staylit-second", "staylit-third")
UNIT = "staylit-system"


def start(trial, settings=SETTINGS):
    machine = trial.machine
    machine.shell(f"mkdir -p /etc/staylit && printf '{settings}' >/etc/staylit/settings.toml")
    for user in OTHERS:
        machine.run("useradd", "--create-home", user)
    trial.check(machine.run("systemctl", "is-enabled", UNIT, may_fail=True).strip() == "disabled",
                "the unit is off until the administrator enables it")
    machine.run("systemctl", "enable", "--now", UNIT)
    trial.holder = machine.run("id", "-u", "staylit").strip()
    machine.shell("for try in 1 2 3 4 5 6 7 8 9 10; do "
                  f"runuser -u {USER} -- staylit --status >/dev/null; "
                  "[ $? -lt 2 ] && exit 0; sleep 2; done", may_fail=True)


def tells_its_status(trial):
    for user in (USER, "nobody", "root"):
        status = trial.machine.run("runuser", "-u", user, "--", "staylit", "--status",
                                   may_fail=True)
        trial.check("Serves:     the whole machine" in status,
                    f"{user} may ask for the status: {status.strip()}")
    listed = trial.machine.run("runuser", "-u", USER, "--", "busctl", "call", "com.staylit.app",
                               "/com/staylit/Status", "org.freedesktop.DBus.Properties", "Set",
                               "ssv", "com.staylit.Status1", "State", "s", "paused",
                               may_fail=True)
    trial.check("denied" in listed.lower(), f"nobody may set anything: {listed.strip()}")
    figure = trial.machine.shell(f"systemd-analyze security --no-pager {UNIT} | tail -n 1")
    trial.say(figure.strip())


def names_the_work(trial):
    """What --diagnose of root says during another user's work."""
    with trial.work("cpu", OTHERS[0]):
        report = trial.machine.run("staylit", "--system", "--diagnose", seconds=180)
        trial.check("hardwork" in report and "WOULD HOLD sleep" in report,
                    f"the report of root names the work: {report}")
    trial.machine.wait_until(lambda: not trial.holds(), PATIENCE_SECONDS)


def is_not_kept_by_another(trial):
    """A user's Staylit beside it: neither counts the other's hold."""
    trial.say("-- a user's Staylit beside it")
    machine, machines_own = trial.machine, trial.holder
    user_unit.start(trial)
    users_own, trial.holder = trial.holder, None
    begin = time.monotonic()
    with trial.work("cpu"):
        both = machine.wait_until(
            lambda: {users_own, machines_own} <= {lock["uid"] for lock in trial.holds()},
            PATIENCE_SECONDS)
        trial.check(both, "both hold for the work")
        trial.check(not machine.times("SUSPEND", begin), "the machine stays awake for both")
    trial.falls_asleep(time.monotonic(), "after work")
    machine.shell(f"{user_unit.MANAGER} disable --now staylit")
    trial.holder = machines_own


def run(trial):
    start(trial)
    tells_its_status(trial)
    names_the_work(trial)
    trial.let_it_sleep()
    trial.falls_asleep(time.monotonic(), "without work")
    users = (USER, *OTHERS)
    for index in range(len(KINDS) if trial.quick else 4 * len(KINDS)):
        trial.cycle(KINDS[index % len(KINDS)], users[index % len(users)])
    trial.cycle("container", "root")
    is_not_kept_by_another(trial)
    trial.troubles(f"systemctl kill --signal=KILL {UNIT}")

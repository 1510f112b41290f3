"""The unit of a user who is not logged in, on a machine without a desktop."""
import time

from image import USER
from scenario import bare
from trial import SETTINGS

TITLE = "user unit with lingering"
MACHINES = bare("bookworm", "trixie")
MANAGER = f"systemctl --user --machine={USER}@.host"


def start(trial):
    machine = trial.machine
    home = f"/home/{USER}/.config/staylit"
    machine.shell(f"install -d -o {USER} -g {USER} /home/{USER}/.config {home} && "
                  f"printf '{SETTINGS}' >{home}/settings.toml")
    machine.run("loginctl", "enable-linger", USER)
    machine.shell(f"until {MANAGER} is-active --quiet default.target; do sleep 1; done")
    machine.shell(f"{MANAGER} enable --now staylit")
    trial.holder = machine.run("id", "-u", USER).strip()


def run(trial):
    start(trial)
    trial.let_it_sleep()
    trial.falls_asleep(time.monotonic(), "without work")
    trial.cycles()
    trial.troubles(f"{MANAGER} kill --signal=KILL staylit")

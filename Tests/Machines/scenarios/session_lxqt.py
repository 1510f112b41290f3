"""A whole session of LXQt, logged in by lightdm."""
import struct
import time

import lightdm
import session
from image import USER
from scenario import Machine

TITLE = "LXQt, a whole session"
PACKAGES = ("lightdm", "lightdm-gtk-greeter", "xserver-xorg-core", "xserver-xorg-input-libinput",
            "x11-xserver-utils", "lxqt-session", "lxqt-panel", "lxqt-powermanagement",
            "lxqt-globalkeys", "pcmanfm-qt", "openbox", "adwaita-icon-theme", "fonts-dejavu-core",
            "librsvg2-common", "qt6-svg-plugins", "dbus-x11", "upower")
MACHINES = [Machine("trixie", PACKAGES, ("staylit", "staylit-desktop"), "2G", screen="VGA")]
FOLDER = f"/home/{USER}/.config/lxqt"
#: What the power manager does when nobody is there, by its own numbers.
NOTHING, SUSPEND, DARKEN = -1, 4, 5
#: After how long. Its settings' window offers no less than the first.
SHORTEST_SECONDS, DARK_SECONDS = 30, 60

LOG_OUT = ("busctl", "--user", "call", "org.lxqt.session", "/LXQtSession", "org.lxqt.session",
           "logout")
#: No locker is installed, and the session says so where it cannot lock before a sleep.
SESSION = ("[General]\n__userfile__=true\nwindow_manager=openbox\n"
           "lock_screen_before_power_actions=false\n")
#: The icons are at the panel's left end, so that their place is known.
PANEL = """[General]
__userfile__=true
panels=panel1

[panel1]
alignment=-1
animation-duration=0
iconSize=22
panelSize=32
plugins=statusnotifier, taskbar, worldclock
position=Top
width=100
width-percent=true

[statusnotifier]
alignment=Left
type=statusnotifier

[taskbar]
alignment=Left
type=taskbar

[worldclock]
alignment=Right
type=worldclock
"""


def time_text(seconds):
    """As Qt writes a time of the day: the number of the kind, and milliseconds."""
    parts = "".join(f"\\x{byte:x}" for byte in struct.pack(">II", 15, seconds * 1000))
    return f"@Variant({parts})"


def power(action, seconds):
    lines = ["[General]", "__userfile__=true", "runCheckLevel=1", "enableBatteryWatcher=false",
             "enableLidWatcher=true", f"lidClosedAction={SUSPEND}", "enableIdlenessWatcher=true"]
    for source in ("AC", "Battery"):
        lines += [f"idleness{source}Action={action}",
                  f"idleness{source}Time={time_text(seconds)}"]
    return "\n".join(lines) + "\n"


def use(machine, action, seconds=SHORTEST_SECONDS):
    """From now on the power manager does that; it reads its file anew when that changes."""
    machine.write(f"{FOLDER}/lxqt-powermanagement.conf", power(action, seconds), USER)


def sleep(here, may):
    use(here.machine, SUSPEND if may else NOTHING)


def prepare(machine):
    for name, text in (("session", SESSION), ("panel", PANEL)):
        machine.write(f"{FOLDER}/{name}.conf", text, USER)
    use(machine, DARKEN, DARK_SECONDS)
    machine.shell(f"chown -R {USER}: /home/{USER}")
    lightdm.log_in(machine, "lxqt")


def displays(here):
    """The watcher does one thing only: here it is the display that is switched off."""
    use(here.machine, DARKEN)
    for lit, settings, when in ((False, "", "while only the machine is held"),
                                (True, "keepScreenOn = true\n", "while it is held itself")):
        here.trial.say(f"-- the display {when}")
        here.set(settings)
        here.machine.press("shift")
        begin = time.monotonic()
        with here.trial.work("cpu"):
            here.trial.wait_for_hold(begin)
            time.sleep(2 * SHORTEST_SECONDS)
            here.display_is(lit, when)
            here.trial.check(here.trial.is_held_for_work(), f"there is a hold {when}")


DESKTOP = session.Desktop("lxqt-panel", (14, 16), "right", SHORTEST_SECONDS, sleep, lightdm.is_dark,
                          lit=(True, True), log_out=LOG_OUT, has_lid=True)


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    displays(session.Session(trial, DESKTOP))
    trial.versions("lxqt-panel", "lxqt-powermanagement", "lxqt-session")

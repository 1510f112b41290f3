"""A whole session of KDE Plasma on Wayland, logged in by sddm."""
import json
import threading
import time

import session
from image import USER
from machine import Lost
from scenario import Machine

TITLE = "KDE Plasma on Wayland, a whole session"
PACKAGES = ("sddm", "plasma-workspace", "plasma-desktop", "kwin-wayland", "powerdevil", "kscreen",
            "breeze", "upower", "fonts-dejavu-core")
MACHINES = [Machine("trixie", PACKAGES, ("staylit", "staylit-desktop"), "3G", screen="VGA,xres=1024,yres=768")]
CONFIGURATION = f"/home/{USER}/.config"
#: The shortest that the settings' window offers. The display's shortest is half of it.
IDLE_SECONDS, DARK_SECONDS = 60, 30
#: What KDE's power management does then.
NOTHING, SLEEP = 0, 1
POWER = ("org.kde.Solid.PowerManagement", "/org/kde/Solid/PowerManagement",
         "org.kde.Solid.PowerManagement")
AGENT = ("org.kde.Solid.PowerManagement.PolicyAgent",
         "/org/kde/Solid/PowerManagement/PolicyAgent",
         "org.kde.Solid.PowerManagement.PolicyAgent")
LOG_OUT = ("busctl", "--user", "call", "org.kde.Shutdown", "/Shutdown", "org.kde.Shutdown",
           "logout")

FILES = {
    "kdeglobals": "[KDE]\nAnimationDurationFactor=0\n",
    "ksplashrc": "[KSplash]\nEngine=none\nTheme=None\n",
    "kscreenlockerrc": "[Daemon]\nAutolock=false\nLockOnResume=false\n",
    "powerdevilrc": f"""[AC][Display]
DimDisplayWhenIdle=false
TurnOffDisplayWhenIdle=true
TurnOffDisplayIdleTimeoutSec={DARK_SECONDS}

[AC][SuspendAndShutdown]
AutoSuspendAction={NOTHING}
AutoSuspendIdleTimeoutSec={IDLE_SECONDS}
LidAction={SLEEP}
""",
    # There is no driver for 3D.
    "plasma-workspace/env/software.sh": "export KWIN_COMPOSE=Q QT_QUICK_BACKEND=software\n",
}

#: The panel with the icons at its left end, so that their place is known.
TEMPLATE = (f"/home/{USER}/.local/share/plasma/layout-templates/"
            "org.kde.plasma.desktop.defaultPanel")
PANEL = {
    "metadata.json": json.dumps({
        "KPackageStructure": "Plasma/LayoutTemplate",
        "KPlugin": {"Id": "org.kde.plasma.desktop.defaultPanel", "Name": "Panel"},
        "X-Plasma-ContainmentCategories": ["panel"], "X-Plasma-Shell": "plasmashell"}),
    "contents/layout.js": """
var panel = new Panel;
panel.location = "bottom";
panel.height = 36;
panel.floating = false;
["systemtray", "panelspacer", "kickoff", "digitalclock"].forEach(function (name) {
  panel.addWidget("org.kde.plasma." + name);
});
"""}

#: Waits until the power management lists other holds than $1, and tells them.
WATCH = f"""
while read -r _; do
  now=$(busctl --user --json=short call {' '.join(AGENT)} ListInhibitions)
  [ "$now" = "$1" ] || break
done < <(exec dbus-monitor --session --profile \
         "type='signal',interface='{AGENT[2]}',member='InhibitionsChanged'")
kill $!
printf %s "$now"
"""


class Holds:
    """Tells the machine what KDE's power management lists, for it is not logind that has them."""

    def __init__(self, here):
        self._here, self._known = here, ""
        threading.Thread(target=self._watch, daemon=True).start()

    def _watch(self):
        while True:
            try:
                self._known = self._here.run("bash", "-c", WATCH, "watch", self._known,
                                             seconds=24 * 3600)
                holder = self._here.trial.holder
                self._here.machine.desktop_lists([
                    {"who": who, "what": "idle", "mode": "block", "uid": holder, "why": why}
                    for who, why in json.loads(self._known)["data"][0]])
            except Lost:
                return
            except (RuntimeError, ValueError, KeyError):
                time.sleep(5)  # There is no panel or no power management just now.


def sleep(here, may):
    here.run("kwriteconfig6", "--file", "powerdevilrc", "--group", "AC", "--group",
             "SuspendAndShutdown", "--key", "AutoSuspendAction", str(SLEEP if may else NOTHING))
    for method in ("reparseConfiguration", "refreshStatus"):
        here.run("busctl", "--user", "call", *POWER, method)


def is_dark(here):
    return here.machine.shell("cat /sys/class/drm/card*/dpms").split() == ["Off"]


def prepare(machine):
    for name, text in FILES.items():
        machine.write(f"{CONFIGURATION}/{name}", text, USER)
    for name, text in PANEL.items():
        machine.write(f"{TEMPLATE}/{name}", text, USER)
    machine.shell(f"chown -R {USER}: /home/{USER}")
    # Some of its services give up after 40 s, which are few seconds on a real machine.
    machine.write("/etc/systemd/user/service.d/60-slow.conf",
                  "[Service]\nTimeoutStartSec=infinity\n")
    machine.write("/etc/sddm.conf.d/60-login.conf",
                  f"[Autologin]\nUser={USER}\nSession=plasma\n")
    machine.run("systemctl", "restart", "display-manager", seconds=300)


DESKTOP = session.Desktop("plasmashell", (24, 750), "left", IDLE_SECONDS, sleep, is_dark,
                          lit=(False, True), log_out=LOG_OUT, has_lid=True)


def run(trial):
    prepare(trial.machine)
    Holds(session.Session(trial, DESKTOP))
    session.run(trial, DESKTOP)
    trial.versions("plasma-workspace", "kwin-wayland", "powerdevil")

"""A whole session of sway with waybar and swayidle, logged in on the first console."""
import json

import session
from image import USER
from scenario import Machine

TITLE = "sway with waybar and swayidle, a whole session"
PACKAGES = ("sway", "waybar", "swayidle", "foot", "fonts-dejavu-core", "adwaita-icon-theme",
            "librsvg2-common", "qt6-wayland", "dbus-x11")
MACHINES = [Machine("bookworm", PACKAGES, ("staylit", "staylit-desktop"), "2G", screen="cirrus-vga")]
CONFIGURATION = f"/home/{USER}/.config"
#: How long nobody is there before swayidle tells so, or switches the display off, and how long
#: logind waits then. A hold for work that begins at once comes before the first.
AWAY_SECONDS, IDLE_SECONDS = 40, 20

# sway does not start a bar anew that has crashed. A key right after waking does not always switch the
# display on, and then the next ones do not, so waking itself does, too.
SWAY = f"""
output * bg #32465a solid_color
exec sh -c 'while :; do waybar; sleep 1; done'
exec swayidle -w timeout {AWAY_SECONDS} 'swaymsg "output * dpms off"' \\
  resume 'swaymsg "output * dpms on"' after-resume 'swaymsg "output * dpms on"'
include /etc/sway/config.d/*
"""
WAYBAR = json.dumps({"position": "top", "height": 30, "modules-left": ["tray"],
                     "modules-right": ["clock"], "tray": {"icon-size": 18, "spacing": 8}})
# wlroots draws in software; there is no driver for 3D.
PROFILE = """
if [ "$(tty)" = /dev/tty1 ]; then
  export WLR_RENDERER=pixman WLR_NO_HARDWARE_CURSORS=1
  exec sway
fi
"""
LOGIN = f"""[Service]
ExecStart=
ExecStart=-/sbin/agetty --autologin {USER} --noclear %I linux
"""


def sleep(here, may):
    """logind sleeps only when swayidle tells it that nobody is there."""
    if may:
        here.run("swaymsg", "exec", f"swayidle -w idlehint {AWAY_SECONDS}")
    else:
        here.machine.run("pkill", "-f", "^swayidle -w idlehint")


def open_at_login(here):
    """sway starts nothing of the folder that "Open at login" writes to."""
    here.machine.write(f"{CONFIGURATION}/sway/config", SWAY + "exec staylit\n", USER)


def is_dark(here):
    outputs = json.loads(here.run("swaymsg", "--type", "get_outputs", "--raw"))
    return not any(output.get("power", output.get("dpms")) for output in outputs)


def prepare(machine):
    machine.write(f"{CONFIGURATION}/sway/config", SWAY)
    machine.write(f"{CONFIGURATION}/waybar/config", WAYBAR)
    machine.write(f"/home/{USER}/.bash_profile", PROFILE)
    machine.shell(f"chown -R {USER}: /home/{USER}")
    machine.write("/etc/systemd/logind.conf.d/60-idle.conf",
                  f"[Login]\nIdleAction=suspend\nIdleActionSec={IDLE_SECONDS}s\n")
    # Not later: a session does not survive it with the compositor's devices.
    machine.run("systemctl", "restart", "systemd-logind")
    machine.write("/etc/systemd/system/getty@tty1.service.d/60-login.conf", LOGIN)
    machine.shell("systemctl daemon-reload && systemctl restart getty@tty1")


DESKTOP = session.Desktop("waybar", (16, 15), "left", AWAY_SECONDS + IDLE_SECONDS, sleep, is_dark,
                          lit=(True, True), log_out=("swaymsg", "exit"), login_unit="getty@tty1",
                          open_at_login=open_at_login)


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    trial.versions("sway", "waybar", "swayidle")

"""A whole session of Cinnamon, logged in by lightdm."""
import lightdm
import session
from scenario import Machine

TITLE = "Cinnamon, a whole session"
PACKAGES = ("lightdm", "lightdm-gtk-greeter", "xserver-xorg-core", "xserver-xorg-input-libinput",
            "x11-xserver-utils", "cinnamon", "xapp-sn-watcher", "adwaita-icon-theme",
            "fonts-dejavu-core", "librsvg2-common", "dconf-cli", "libglib2.0-bin", "dbus-x11",
            "upower")
MACHINES = [Machine("trixie", PACKAGES, ("staylit", "staylit-desktop"), "3G", screen="VGA")]
POWER = "org.cinnamon.settings-daemon.plugins.power"
#: The settings' window offers 5 minutes and more. Nothing means never.
IDLE_SECONDS, NEVER = 60, 0
LOG_OUT = ("cinnamon-session-quit", "--logout", "--no-prompt")

#: What the system's administrator sets for all users: one panel with the icons at its left end, so
#: that their place is known; and neither a locker nor anything that moves.
DEFAULTS = f"""
[org/cinnamon]
panels-enabled=['1:0:top']
panels-height=['1:28']
enabled-applets=['panel1:left:0:xapp-status@cinnamon.org:0', \
'panel1:left:1:menu@cinnamon.org:1', 'panel1:left:2:window-list@cinnamon.org:2', \
'panel1:right:0:show-desktop@cinnamon.org:3']
desktop-effects=false
desktop-effects-workspace=false
startup-animation=false

[org/cinnamon/desktop/interface]
enable-animations=false

[org/cinnamon/desktop/session]
idle-delay=uint32 0

[org/cinnamon/desktop/screensaver]
lock-enabled=false

[org/cinnamon/settings-daemon/plugins/power]
sleep-inactive-ac-timeout={NEVER}
sleep-display-ac={IDLE_SECONDS // 2}
lock-on-suspend=false
"""


def sleep(here, may):
    here.run("gsettings", "set", POWER, "sleep-inactive-ac-timeout",
             str(IDLE_SECONDS if may else NEVER))


def prepare(machine):
    machine.write("/etc/dconf/profile/user", "user-db:user\nsystem-db:site\n")
    machine.write("/etc/dconf/db/site.d/session", DEFAULTS)
    machine.run("dconf", "update")
    # The session that Cinnamon has for machines whose graphics card cannot draw for it.
    lightdm.log_in(machine, "cinnamon2d")


# What draws all sessions of Cinnamon has the name of the file for the one on Wayland.
DESKTOP = session.Desktop("cinnamon", (22, 14), "right", IDLE_SECONDS, sleep, lightdm.is_dark,
                          log_out=LOG_OUT, ignored=("cinnamon-wayland",))


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    trial.versions("cinnamon", "cinnamon-session", "cinnamon-settings-daemon", "xapp-sn-watcher")

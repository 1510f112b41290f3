"""A whole session of MATE, logged in by lightdm."""
import lightdm
import session
from scenario import Machine

TITLE = "MATE, a whole session"
PACKAGES = ("lightdm", "lightdm-gtk-greeter", "xserver-xorg-core", "xserver-xorg-input-libinput",
            "x11-xserver-utils", "mate-session-manager", "mate-settings-daemon", "mate-panel",
            "mate-power-manager", "mate-notification-daemon", "mate-icon-theme", "mate-themes",
            "marco", "caja", "adwaita-icon-theme", "fonts-cantarell", "fonts-dejavu-core",
            "librsvg2-common", "dconf-cli", "libglib2.0-bin", "upower")
MACHINES = [Machine("trixie", PACKAGES, ("staylit", "staylit-desktop"), "2G", screen="VGA")]
LAYOUTS = "/usr/share/mate-panel/layouts"
POWER = "org.mate.power-manager"
#: The session manager takes nobody for there after whole minutes, and then the power manager counts
#: its own seconds. Its window offers 10 minutes and more. Nothing means never.
AWAY_MINUTES, IDLE_SECONDS, NEVER = 1, 30, 0
LOG_OUT = ("mate-session-save", "--force-logout")

#: One panel with the icons at its left end, so that their place is known, and nothing that moves.
LAYOUT = """
[Toplevel top]
expand=true
orientation=top
size=28
x=0
y=0

[Object notification-area]
object-type=applet
applet-iid=NotificationAreaAppletFactory::NotificationArea
toplevel-id=top
position=0
locked=true

[Object menu-bar]
object-type=menu-bar
toplevel-id=top
position=300
locked=true
"""
#: What the system's administrator sets for all users.
DEFAULTS = f"""
[org/mate/panel/general]
default-layout='staylit-test'

[org/mate/desktop/session]
idle-delay={AWAY_MINUTES}

[org/mate/marco/general]
compositing-manager=false

[org/mate/power-manager]
sleep-computer-ac={NEVER}
sleep-display-ac={IDLE_SECONDS}
button-lid-ac='suspend'
"""


def sleep(here, may):
    here.run("gsettings", "set", POWER, "sleep-computer-ac", str(IDLE_SECONDS if may else NEVER))


def prepare(machine):
    machine.write(f"{LAYOUTS}/staylit-test.layout", LAYOUT)
    machine.write("/etc/dconf/profile/user", "user-db:user\nsystem-db:site\n")
    machine.write("/etc/dconf/db/site.d/session", DEFAULTS)
    machine.run("dconf", "update")
    lightdm.log_in(machine, "mate")


DESKTOP = session.Desktop("mate-panel", (24, 14), "right", AWAY_MINUTES * 60 + IDLE_SECONDS, sleep,
                          lightdm.is_dark, log_out=LOG_OUT, has_lid=True)


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    trial.versions("mate-panel", "mate-power-manager", "mate-session-manager")

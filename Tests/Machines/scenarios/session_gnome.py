"""A whole session of GNOME on Wayland, logged in by gdm."""
import time

import session
from image import USER
from scenario import Machine

TITLE = "GNOME on Wayland, a whole session"
# gjs runs the service that tells the power management of a dark screen.
PACKAGES = ("gdm3", "gjs", "gnome-session", "gnome-shell", "gnome-settings-daemon",
            "gnome-shell-extension-appindicator", "adwaita-icon-theme", "fonts-dejavu-core",
            "librsvg2-common", "libgl1-mesa-dri", "libegl-mesa0", "dconf-cli", "qt6-wayland",
            "dbus-x11", "upower")
MACHINES = [Machine(release, PACKAGES, ("staylit", "staylit-desktop"), "3G",
                    screen="VGA,xres=1024,yres=768") for release in ("bookworm", "trixie")]
POWER = "org.gnome.settings-daemon.plugins.power"
EXTENSION = "ubuntu-appindicators@ubuntu.com"
#: How long nobody is there before the screen goes dark, and before the machine sleeps.
DARK_SECONDS, IDLE_SECONDS = 40, 60
NEVER = 0
LOG_OUT = ("gnome-session-quit", "--logout", "--no-prompt")

# Nothing here decides about sleep; it only spares a machine in software what it would draw.
SPARING = """
[org/gnome/desktop/interface]
enable-animations=false
toolkit-accessibility=false
[org/gnome/desktop/background]
picture-options='none'
primary-color='#32465a'
color-shading-type='solid'
[org/gnome/desktop/screensaver]
lock-enabled=false
"""
SETTINGS = f"""{SPARING}
[org/gnome/shell]
enabled-extensions=['{EXTENSION}']
welcome-dialog-last-shown-version='999'
[org/gnome/desktop/session]
idle-delay=uint32 {DARK_SECONDS}
[org/gnome/settings-daemon/plugins/power]
idle-dim=false
sleep-inactive-ac-type='suspend'
sleep-inactive-ac-timeout={NEVER}
"""
# gdm logs in at once a single time; after that by its login screen, which waits.
LOGIN = f"""[daemon]
AutomaticLoginEnable=true
AutomaticLogin={USER}
TimedLoginEnable=true
TimedLogin={USER}
TimedLoginDelay=10
"""
#: Services of the session for what this machine does not have, or nobody here looks at.
UNUSED = ("evolution-source-registry", "evolution-calendar-factory",
          "evolution-addressbook-factory", "localsearch-3", "localsearch-control-3",
          "filter-chain", "pipewire", "pipewire-pulse", "wireplumber",
          "gvfs-afc-volume-monitor", "gvfs-goa-volume-monitor", "gvfs-gphoto2-volume-monitor",
          "gvfs-mtp-volume-monitor",
          *(f"org.gnome.SettingsDaemon.{name}" for name in (
              "Color", "PrintNotifications", "Rfkill", "Sharing", "Smartcard", "Sound",
              "UsbProtection", "Wacom", "Wwan")))


def shows_overview(here):
    # Else the session goes dark while the trial waits.
    here.machine.press("shift")
    return here.run("busctl", "--user", "get-property", "org.gnome.Shell", "/org/gnome/Shell",
                    "org.gnome.Shell", "OverviewActive", may_fail=True).strip() == "b true"


def leaves_overview(here):
    here.machine.press("esc")
    return not shows_overview(here)


def begun(here):
    """A session begins with the overview, as soon as it draws something."""
    for shown in (lambda: shows_overview(here),
                  lambda: here.machine.picture("overview").brightness() > session.DARK,
                  lambda: leaves_overview(here)):
        here.trial.check(here.wait_for(shown, session.MOST_SETTLING_SECONDS),
                         "the session begins with the overview, and leaves it by a key")
    time.sleep(session.STILL_SECONDS)


def sleep(here, may):
    here.run("gsettings", "set", POWER, "sleep-inactive-ac-timeout",
             str(IDLE_SECONDS if may else NEVER), seconds=120)


def is_dark(here):
    name = "org.gnome.Mutter.DisplayConfig"
    mode = here.run("busctl", "--user", "get-property", name, f"/{name.replace('.', '/')}", name,
                    "PowerSaveMode", seconds=120)
    return mode.split()[1] != "0"


def prepare(machine):
    machine.run("systemctl", "stop", "gdm")
    machine.write("/etc/dconf/profile/user", "user-db:user\nsystem-db:local\n")
    machine.write("/etc/dconf/db/local.d/60-trial", SETTINGS)
    machine.run("dconf", "update")
    machine.write("/etc/gdm3/daemon.conf", LOGIN)
    # In software the session's services take longer than systemd gives them.
    machine.write("/etc/systemd/user.conf.d/60-slow.conf",
                  "[Manager]\nDefaultTimeoutStartSec=900\n")
    machine.run("systemctl", "--global", "mask", *(f"{name}.service" for name in UNUSED),
                "pipewire.socket", "pipewire-pulse.socket")
    machine.run("systemctl", "start", "gdm", seconds=300)


DESKTOP = session.Desktop("gnome-shell", (952, 16), "left", IDLE_SECONDS, sleep, is_dark,
                          ignored=("org.gnome.Shell",), begun=begun, ends_with_panel=True,
                          log_out=LOG_OUT)


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    trial.versions("gnome-shell", "gnome-settings-daemon", "gdm3",
                   "gnome-shell-extension-appindicator")

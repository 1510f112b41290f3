"""A whole session of XFCE, logged in by lightdm."""
import lightdm
import session
from image import USER
from scenario import Machine

TITLE = "XFCE, a whole session"
PACKAGES = ("lightdm", "lightdm-gtk-greeter", "xserver-xorg-core", "xserver-xorg-input-libinput",
            "x11-xserver-utils", "xfce4-session", "xfce4-panel", "xfce4-settings", "xfwm4",
            "xfdesktop4", "xfce4-power-manager", "xfconf", "adwaita-icon-theme", "fonts-dejavu-core",
            "librsvg2-common", "dbus-x11", "upower")
MACHINES = [Machine(release, PACKAGES, ("staylit", "staylit-desktop"), "2G", screen="VGA")
            for release in ("bookworm", "trixie")]
CHANNELS = f"/home/{USER}/.config/xfce4/xfconf/xfce-perchannel-xml"
POWER = "xfce4-power-manager"
#: The panel's usual parts, with the icons at its left end, so that their place is known.
PARTS = ("systray", "applicationsmenu", "tasklist", "separator", "clock")
#: The power manager counts in minutes; its window offers 15 and more. 14 means never.
NEVER, SHORTEST = 14, 1
LOG_OUT = ("xfce4-session-logout", "--logout", "--fast")


def property_xml(name, kind, value):
    return f'<property name="{name}" type="{kind}" value="{value}"/>'


def channel(name, inside):
    return f'<?xml version="1.0"?><channel name="{name}" version="1.0">{inside}</channel>'


def panel():
    numbers = "".join(f'<value type="int" value="{one}"/>' for one in range(1, len(PARTS) + 1))
    parts = "".join(property_xml(f"plugin-{number}", "string", part)
                    for number, part in enumerate(PARTS, 1))
    # The third is the one between the windows' names and the clock.
    parts = parts.replace('value="separator"/>', 'value="separator">' +
                          property_xml("expand", "bool", "true") + "</property>")
    return channel("xfce4-panel", property_xml("configver", "int", 2) + f"""
        <property name="panels" type="array"><value type="int" value="1"/>
        <property name="panel-1" type="empty">
        {property_xml("position", "string", "p=6;x=0;y=0")}{property_xml("length", "uint", 100)}
        {property_xml("position-locked", "bool", "true")}{property_xml("size", "uint", 28)}
        <property name="plugin-ids" type="array">{numbers}</property></property></property>
        <property name="plugins" type="empty">{parts}</property>""")


def power():
    values = {"inactivity-on-ac": NEVER, "inactivity-sleep-mode-on-ac": 1, "dpms-on-ac-sleep": 0,
              "dpms-on-ac-off": 1, "lid-action-on-ac": 1}
    inside = "".join(property_xml(name, "uint", value) for name, value in values.items())
    # No locker is installed, and the power manager asks what to do where there is none.
    inside += property_xml("lock-screen-suspend-hibernate", "bool", "false")
    return channel(POWER, f'<property name="{POWER}" type="empty">{inside}</property>')


def sleep(here, may):
    here.run("xfconf-query", "-c", POWER, "-p", f"/{POWER}/inactivity-on-ac", "-s",
             str(SHORTEST if may else NEVER))


def prepare(machine):
    for name, text in (("xfce4-panel", panel()), (POWER, power())):
        machine.write(f"{CHANNELS}/{name}.xml", text, USER)
    machine.shell(f"chown -R {USER}: /home/{USER}")
    lightdm.log_in(machine, "xfce")


DESKTOP = session.Desktop("xfce4-panel", (14, 14), "left", SHORTEST * 60, sleep, lightdm.is_dark,
                          lit=(True, True), log_out=LOG_OUT, has_lid=True)


def run(trial):
    prepare(trial.machine)
    session.run(trial, DESKTOP)
    trial.versions("xfce4-panel", "xfce4-power-manager", "xfce4-session")

"""A session on an X server, which lightdm logs in, and what its X server tells."""
from image import USER

# What draws in software is quicker without the detour by a graphics card's way.
SOFTWARE = """Section "Device"
Identifier "screen"
Driver "modesetting"
Option "AccelMethod" "none"
EndSection
"""


def log_in(machine, name):
    """From now on the user is logged in to the session of that name."""
    machine.write("/etc/lightdm/lightdm.conf",
                  f"[Seat:*]\nautologin-user={USER}\nautologin-session={name}\n")
    machine.write("/etc/X11/xorg.conf.d/10-software.conf", SOFTWARE)
    machine.run("systemctl", "restart", "display-manager", seconds=300)


def is_dark(here):
    """Whether the X server has switched the display off."""
    return "Monitor is Off" in here.run("xset", "q")

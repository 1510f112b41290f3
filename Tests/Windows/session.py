"""A session of its own for the real program: processes, display, bus, home folder, screen reader's bus.

Nothing here touches the session of whoever runs it. All processes end with the session.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

INSIDE = "STAYLIT_TEST_SESSION"
NEEDED = ("Xvfb", "dbus-daemon", "xdotool", "unshare")
SCREEN_READERS_BUS = "/usr/share/dbus-1/services/org.a11y.Bus.service"
BUS = """<busconfig><type>session</type><listen>unix:path={0}/bus</listen><auth>EXTERNAL</auth>
<servicedir>{0}/services</servicedir><policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
</policy></busconfig>"""


def own_processes():
    """The command that begins a namespace in which the machine's other work does not exist."""
    user = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
    return ["unshare", *user, "--pid", "--mount", "--net", "--fork", "--kill-child", "--mount-proc"]


def obstacle():
    """Why there can be no such session here; None when there can."""
    for tool in NEEDED:
        if not shutil.which(tool):
            return f"{tool} is not installed"
    if not os.path.exists(SCREEN_READERS_BUS):
        return "at-spi2-core is not installed"
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        return "python3-gi or gir1.2-atspi-2.0 is not installed"
    tried = subprocess.run([*own_processes(), "true"], capture_output=True)
    return None if tried.returncode == 0 else "no process namespace may be opened here"


def enter():
    """Starts this script again in a namespace of its own, unless it is there. Does not return."""
    if os.environ.get(INSIDE):
        return
    os.environ[INSIDE] = "yes"
    os.execvp("unshare", [*own_processes(), sys.executable, *sys.argv])


def eventually(condition, what, seconds=30):
    """Waits for an outside event, with a generous limit; returns what the condition gave."""
    end = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError(f"this did not happen: {what}")
        time.sleep(0.01)


class Session:
    """Call `enter` before the first one. One at a time, because libraries keep its bus."""

    def __init__(self, program, settings=""):
        self.program = program
        self.home = pathlib.Path(tempfile.mkdtemp())
        self.settings_file = self.home / "config/staylit/settings.toml"
        self.settings_file.parent.mkdir(parents=True)
        self.settings_file.write_text(settings)
        self.children = []
        self._set_environment()
        self._start_display()
        self._start_bus()

    def _set_environment(self):
        folder = str(self.home)
        for name in ("WAYLAND_DISPLAY", "NO_AT_BRIDGE", "LANGUAGE", "QT_QPA_PLATFORM",
                     "QT_STYLE_OVERRIDE", "AT_SPI_BUS_ADDRESS"):
            os.environ.pop(name, None)
        os.environ.update(
            HOME=folder, XDG_CONFIG_HOME=f"{folder}/config", XDG_STATE_HOME=f"{folder}/state",
            XDG_CACHE_HOME=f"{folder}/cache", XDG_RUNTIME_DIR=f"{folder}/run", LC_ALL="C.UTF-8",
            GSETTINGS_BACKEND="memory", QT_QPA_PLATFORMTHEME="none",
            # There are no system services, because the result must not depend on the machine.
            DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={folder}/none",
            DBUS_SESSION_BUS_ADDRESS=f"unix:path={folder}/bus")
        os.mkdir(f"{folder}/run", 0o700)

    def start(self, *command, **more):
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **more)
        self.children.append(child)
        return child

    def _start_display(self):
        readable, writable = os.pipe()
        self.start("Xvfb", "-displayfd", str(writable), "-screen", "0", "1000x760x24", "-nolisten",
                   "tcp", pass_fds=[writable])
        os.close(writable)
        with os.fdopen(readable) as answer:
            os.environ["DISPLAY"] = ":" + answer.readline().strip()

    def _start_bus(self):
        (self.home / "services").mkdir()
        shutil.copy(SCREEN_READERS_BUS, self.home / "services")
        (self.home / "bus.conf").write_text(BUS.format(self.home))
        self.start("dbus-daemon", "--nofork", "--nopidfile", f"--config-file={self.home}/bus.conf")
        eventually((self.home / "bus").exists, "the bus listens")

    def start_program(self):
        self.start(self.program)
        eventually(lambda: self.ask("--status") in (0, 1), "the program answers")

    def ask(self, option):
        return subprocess.run([self.program, option], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode

    @staticmethod
    def press(*keys):
        subprocess.run(["xdotool", "key", *keys], check=True)

    @staticmethod
    def type(text):
        subprocess.run(["xdotool", "type", text], check=True)

    @staticmethod
    def point_at(x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)

    def settings(self):
        return self.settings_file.read_text()

    def end(self):
        for child in reversed(self.children):
            child.terminate()
            child.wait()
        shutil.rmtree(self.home, ignore_errors=True)

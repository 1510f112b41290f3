"""What is tried in the session of a desktop, whichever it is: the icon, its menu and the windows, the
display, and the sleep that the desktop itself decides on.

A scenario says with a Desktop what differs. The user is logged in by the machine's own login screen.
"""
import dataclasses
import json
import time
import typing

import again
from image import USER
from trial import PATIENCE_SECONDS, SETTINGS

SETTINGS_FILE = f"/home/{USER}/.config/staylit/settings.toml"
#: Below it a screen shows nothing that one could see.
DARK = 2
#: A desktop that has just been started, and computes all in software, still draws for so long.
MOST_SETTLING_SECONDS = 300
STILL_SECONDS = 6
#: A screen with a panel is brighter, on which all else is black; one with a pointer alone is not.
BLACK = 0.5
#: A window that has not begun to appear after so long does not open.
MOST_OPENING_SECONDS = 60


@dataclasses.dataclass(frozen=True)
class Desktop:
    """What differs between desktops."""
    panel: str  #: The program that shows the icon.
    icon: tuple  #: Where it shows it: x and y.
    button: str  #: The button that opens the menu.
    idle_seconds: int  #: How long the desktop waits until it sends the idle machine to sleep.
    sleep: typing.Callable  #: sleep(session, may): from now on the desktop may do so, or never does.
    is_dark: typing.Callable  #: is_dark(session): whether the display is switched off.
    #: Whether the display stays on during a plain hold, and during one of keepScreenOn.
    lit: tuple = (False, True)
    log_out: tuple = ()  #: The command that ends the session; without it nobody logs out.
    login_unit: str = "display-manager"  #: What logs the user in when it starts.
    #: What never counts as work: a shell that computes all it draws works for many seconds.
    ignored: tuple = ()
    #: open_at_login(session): how the user chooses that Staylit starts at log-in.
    open_at_login: typing.Callable = again.choose_autostart
    #: begun(session): does what a session needs that has just been logged in.
    begun: typing.Callable = lambda session: None
    #: Whether the desktop acts on the lid, so that logind does not.
    has_lid: bool = False
    #: Whether the session ends with the panel, so that the login screen logs in once more.
    ends_with_panel: bool = False


def is_large(box):
    """Whether as much changed as a menu or a window that opens or shuts."""
    return bool(box) and box[2] - box[0] > 100 and box[3] - box[1] > 100


class Session:
    def __init__(self, trial, desktop):
        self.trial, self.desktop, self.machine = trial, desktop, trial.machine

    def run(self, *command, **more):
        """A command of the session's user, as the desktop would start it."""
        process = self.machine.run("pgrep", "-u", USER, "-o", "-x", self.desktop.panel).strip()
        return self.machine.run("runuser", "-u", USER, "--", "/usr/local/lib/machine/within", process,
                                *command, **more)

    def settled(self, name, after=None):
        """A picture of the screen when it has stopped changing; if there is a picture `after` which
        something is to come up, not before that has begun."""
        end, shown = time.monotonic() + MOST_SETTLING_SECONDS, None
        came_by = time.monotonic() + (MOST_OPENING_SECONDS if after else 0)
        while time.monotonic() < end:
            # Else the desktop may switch the display off, and nothing of all this would show.
            self.machine.press("shift")
            before, shown = shown, self.machine.picture(name)
            awaited = time.monotonic() < came_by and not is_large(shown.changed(after))
            if before and not awaited and not shown.changed(before):
                break
            time.sleep(STILL_SECONDS)
        return shown

    def log_in(self):
        """Waits for the session that the login screen starts."""
        begin = time.monotonic()
        self.machine.shell(f"until pgrep -u {USER} -x {self.desktop.panel}; do sleep 2; done",
                           seconds=MOST_SETTLING_SECONDS * 2)
        self.desktop.begun(self)
        drawn = self.wait_for(lambda: self.machine.picture("drawn").brightness() > BLACK,
                              MOST_SETTLING_SECONDS)
        self.trial.check(drawn, "the desktop is drawn")
        shown = self.settled("desktop")
        self.trial.say(f"the desktop is there after {time.monotonic() - begin:.0f} s")
        return shown

    def set(self, settings=""):
        """Staylit's settings; a change counts some seconds later."""
        ignored = f"ignoredApps = {json.dumps(self.desktop.ignored)}\n"
        self.machine.write(SETTINGS_FILE, SETTINGS + ignored + settings, USER)
        time.sleep(10)

    # The icon, its menu and the windows

    def start_staylit(self):
        """By the session bus, as other programs start it."""
        self.run("busctl", "--user", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                 "org.freedesktop.DBus", "StartServiceByName", "su", "com.staylit.app", "0",
                 seconds=120)
        self.trial.holder = self.machine.run("id", "-u", USER).strip()

    def look(self, before):
        """At the icon, the menu and both windows, from a desktop that looks like `before`."""
        self.machine.press("shift")
        time.sleep(MOST_OPENING_SECONDS / 3)
        icon = self.settled("icon")
        box = icon.changed(before)
        self.trial.check(box, "the panel shows the icon")
        self.trial.say(f"the start of Staylit changed the screen within {box}")
        self.machine.click(*self.desktop.icon, icon, self.desktop.button)
        self.opened("menu", icon, "the menu")
        self.shut_menu(icon)
        self.drive("choose-apps", self.settled("menu-shut"), ("tab",), "selected")
        self.drive("settings", self.settled("choose-apps-shut"), ("tab", "spc"), "switched")
        self.trial.check("keepScreenOn = true" in self.machine.run("cat", SETTINGS_FILE),
                         "a key in the settings switches what stands in the file")
        self.set()

    def shut_menu(self, shown):
        """By a click beside it: not every panel's menu gets the keys."""
        self.machine.click(shown.width // 2, shown.height - 20, shown)

    def drive(self, option, before, keys, name):
        """One of the windows, by its keys."""
        self.run("staylit", f"--{option}", seconds=120)
        window = self.opened(option, before, f"the window of --{option}")
        for key in keys:
            self.machine.press(key)
            time.sleep(3)
        driven = self.settled(f"{option}-{name}")
        self.trial.check(driven.changed(window), f"the window of --{option} follows the keys")
        self.machine.press("esc")
        self.trial.check(is_large(self.settled(f"{option}-shut", driven).changed(driven)),
                         f"the window of --{option} is shut by a key")

    def opened(self, name, before, what):
        """Whether something as large as a menu or a window comes up."""
        shown = self.settled(name, before)
        self.trial.check(is_large(shown.changed(before)), f"{what} opens")
        return shown

    def replace_panel(self):
        """The panel crashes, and comes anew: by its session, or with the next one."""
        self.trial.say("-- the panel crashes")
        before = self.settled("panel-before")
        process = self.machine.run("pgrep", "-u", USER, "-o", "-x", self.desktop.panel).strip()
        # Some catch the first one, to say where they were.
        self.machine.shell(f"while kill -SEGV {process}; do sleep 1; done 2>/dev/null; "
                           f"until pgrep -u {USER} -x {self.desktop.panel}; do sleep 2; done",
                           seconds=MOST_SETTLING_SECONDS * 2)
        if self.desktop.ends_with_panel:
            self.log_in()
            self.start_staylit()
            time.sleep(MOST_OPENING_SECONDS / 3)
        # A program that also draws the desktop leaves the screen black until it does so again.
        back = self.wait_for(lambda: self.looks_like(before), MOST_SETTLING_SECONDS)
        self.trial.check(back, "the desktop looks as before the crash")
        after = self.settled("panel-after")
        self.machine.click(*self.desktop.icon, after, self.desktop.button)
        self.opened("panel-menu", after, "the menu of the next panel")
        self.shut_menu(after)

    def looks_like(self, before):
        """But for a panel and a pointer."""
        self.machine.press("shift")
        return self.machine.picture("panel-next").same_rows(before) > 0.85

    # Display and sleep

    def darkens(self, why):
        dark = self.wait_for(lambda: self.desktop.is_dark(self), PATIENCE_SECONDS)
        self.trial.check(dark, f"the display goes dark {why}")
        self.trial.say(f"brightness {self.machine.picture('dark').brightness():.1f}")

    @staticmethod
    def wait_for(holds, seconds):
        end = time.monotonic() + seconds
        while not holds():
            if time.monotonic() > end:
                return False
            time.sleep(5)
        return True

    def display_is(self, lit, when):
        dark = self.desktop.is_dark(self)
        self.trial.check(dark != lit, f"the display is {'on' if lit else 'dark'} {when}")
        self.machine.picture(f"display {when}".replace(" ", "-"))

    def come_back(self):
        """Who wakes a machine is there, and presses keys until the display is on."""
        def is_lit():
            self.machine.press("shift")
            time.sleep(1)
            return not self.desktop.is_dark(self)
        self.trial.check(self.wait_for(is_lit, MOST_OPENING_SECONDS),
                         "the display is on after waking")

    def sleeps(self):
        """Without work, during work, and after it; with and without keepScreenOn."""
        trial = self.trial
        trial.work_seconds = 2 * self.desktop.idle_seconds + 10
        self.machine.press("shift")
        begin = time.monotonic()
        self.desktop.sleep(self, True)
        trial.falls_asleep(begin, "without work")
        for kind in ("cpu", "download"):
            self.come_back()
            trial.cycle(kind, late=lambda: self.display_is(
                self.desktop.lit[0], "during a plain hold"))
        self.set("keepScreenOn = true\n")
        self.come_back()
        trial.cycle("cpu", late=lambda: self.display_is(
            self.desktop.lit[1], "with keepScreenOn"))
        self.set()
        for _ in range(2):
            # Nobody comes back: the machine was woken by its clock, say.
            trial.cycle("cpu")
        trial.say(self.run("staylit", "--status", seconds=120, may_fail=True))


def run(trial, desktop):
    session = Session(trial, desktop)
    before = session.log_in()
    session.set()
    session.start_staylit()
    session.look(before)
    trial.say(session.run("staylit", "--holds", seconds=180, may_fail=True))
    session.darkens("without work")
    session.machine.press("shift")
    session.sleeps()
    session.desktop.sleep(session, False)
    session.replace_panel()
    if desktop.log_out:
        again.run(session)

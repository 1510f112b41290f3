"""The windows of the real program, used by keys, by the mouse and by a screen reader.

    test_windows.py PROGRAM [CLASS ...]

Runs in a session of its own. Ends with status 77, and says why, where there can be none.
"""
import os
import sys
import tomllib
import unittest

sys.dont_write_bytecode = True
import session as sessions  # noqa: E402

PROGRAM = ""
NO_READER = 75
#: How often a session is made for one test until a screen reader can read in it.
MOST_ATTEMPTS = 6
DOWN_LEADS_TO = "list item Adobe Media Encoder, watching"


class NoReader(Exception):
    """The bus for screen readers hung, or its registry ended, as happens on a busy machine."""


class WindowTest(unittest.TestCase):
    OPTION = ""
    TITLE = ""
    SETTINGS = ""

    def setUp(self):
        self.session = sessions.Session(PROGRAM, self.SETTINGS)
        self.addCleanup(self.session.end)
        global reader
        import reader  # connects to the buses of the first session
        if not reader.switch_on():
            raise NoReader
        self.ear = reader.Ear()
        self.session.start_program()
        self.open()

    def open(self):
        self.session.ask(self.OPTION)
        reader.wait_for(self.has_keyboard, f"{self.TITLE} opens and has the keyboard")

    @property
    def window(self):
        return reader.windows()[self.TITLE]

    def has_keyboard(self):
        window = reader.windows().get(self.TITLE)
        return window and reader.has(window, reader.Atspi.StateType.ACTIVE)

    def press(self, key, leads_to):
        """Presses a key and checks where the keyboard is afterwards."""
        self.assertEqual(self.ear.focus_after(lambda: self.session.press(key), leads_to), leads_to)

    def has_closed(self):
        return self.TITLE not in reader.windows()

    def stored(self):
        return tomllib.loads(self.session.settings())

    def wait_for_stored(self, key, value):
        reader.wait_for(lambda: self.stored().get(key) == value, f"{key} = {value} is stored")


class ChooseApps(WindowTest):
    OPTION, TITLE = "--choose-apps", "Choose Apps"
    SETTINGS = 'ignoredApps = ["rsync"]\n'

    def test_everything_is_read_once_and_in_order(self):
        lines = reader.everything(self.window)
        hint = "Click any app to move it between the two lists."
        self.assertEqual(lines[:6], [
            'window "Choose Apps"',
            'heading "Choose Apps"',
            f'label "{hint}"',
            f'text "Search" focused — {hint}',
            'list "Choose Apps"',
            'list item "Staying awake for, 37" — These can hold your Mac awake'])
        self.assertEqual(lines[6], 'list item "Adobe Media Encoder, watching" — Stop staying awake for this')
        self.assertEqual(lines[-4:], [
            'list item "Not watching, 1" — Ignored, however busy they get',
            'list item "rsync, not watching" — Stay awake for this again',
            'label "1 ignored"',
            'push button "Watch everything" — 1 ignored'])
        self.assertEqual(len(lines), 6 + 37 + 4)

    def test_the_keys_reach_everything_and_move_applications(self):
        self.press("Tab", DOWN_LEADS_TO)
        self.press("Tab", "push button Watch everything")
        self.press("Tab", "text Search")
        self.press("shift+Tab", "push button Watch everything")
        self.press("shift+Tab", DOWN_LEADS_TO)
        self.press("Down", "list item Adobe Premiere Pro, watching")
        heard = self.ear.after(lambda: self.session.press("Return"),
                               "list item After Effects, watching")
        self.assertEqual(heard[0], "says Adobe Premiere Pro, not watching")
        self.wait_for_stored("ignoredApps", ["com.adobe.premierepro", "rsync"])
        # The arrows pass the heading between the two lists.
        self.press("End", "list item rsync, not watching")
        self.press("Up", "list item Adobe Premiere Pro, not watching")
        self.press("Up", "list item Xcode, watching")
        self.press("Down", "list item Adobe Premiere Pro, not watching")
        heard = self.ear.after(lambda: self.session.press("space"), "list item rsync, not watching")
        self.assertEqual(heard[0], "says Adobe Premiere Pro, watching")
        self.wait_for_stored("ignoredApps", ["rsync"])
        self.press("Home", DOWN_LEADS_TO)
        self.ear.after(lambda: self.session.type("han"), "list item HandBrake, watching")
        self.press("Tab", "push button Watch everything")
        heard = self.ear.after(lambda: self.session.press("space"), "says Watching everything")
        self.wait_for_stored("ignoredApps", [])

    def test_the_search_is_used_and_left_by_keys(self):
        self.press("Down", DOWN_LEADS_TO)
        self.press("ctrl+f", "text Search")
        heard = self.ear.after(lambda: self.session.type("xco"),
                               "says Staying awake for, 1. Not watching, 0")
        # Whoever types must not be led into the list.
        self.assertEqual([text for text in heard if text.startswith("list")], [])
        self.press("Down", "list item Xcode, watching")
        self.ear.after(lambda: self.session.press("Escape"),
                       "says Staying awake for, 37. Not watching, 1")
        self.assertFalse(self.has_closed())
        self.session.press("Escape")
        reader.wait_for(self.has_closed, "the window closes")
        self.open()
        self.session.press("ctrl+w")
        reader.wait_for(self.has_closed, "the window closes")

    def test_a_tool_tip_appears_where_the_pointer_rests(self):
        row = reader.find(self.window, "Aider, watching")
        place = reader.Atspi.Component.get_extents(row, reader.Atspi.CoordType.SCREEN)
        self.assertEqual(self.tool_tips(), [])
        self.session.point_at(place.x + place.width // 2, place.y + place.height // 2)
        reader.wait_for(lambda: self.tool_tips() == ["Stop staying awake for this"],
                        "the row's tool tip appears")

    @staticmethod
    def tool_tips():
        return [name for name, window in reader.windows().items()
                if window.get_role() == reader.Atspi.Role.TOOL_TIP]


class Settings(WindowTest):
    OPTION, TITLE = "--settings", "Staylit Settings"
    GRACE = "slider Wait {} after work stops"
    BATTERY = "slider Stop holding below {}%"
    SCREEN, LID = "check box Keep the screen on too", "check box Work with the lid closed"
    LOW_POWER = "check box Respect Low Power Mode"
    TRUST = "check box Trust apps that ask to stay awake"
    LOGIN = "check box Open at login"

    def test_everything_is_read_once_and_in_order(self):
        self.assertEqual(reader.everything(self.window), [
            'window "Staylit Settings"',
            'heading "Sleep"',
            'panel "Sleep"',
            'slider "Wait 2 minutes after work stops" 120 focused — From 30 seconds to 10 minutes. '
            "A short pause between build steps won't drop the hold.",
            'check box "Keep the screen on too" not checked — Off by default — the display sleeps on '
            "its own while work continues.",
            'check box "Work with the lid closed" not checked — Needs your admin password once. '
            "Restored automatically if Staylit stops.",
            'heading "Battery"',
            'panel "Battery"',
            'slider "Stop holding below 20%" 20 — From 0% to 50%.',
            'check box "Respect Low Power Mode" checked',
            'label "Right now: plugged in"',
            'heading "Detection"',
            'panel "Detection"',
            'check box "Trust apps that ask to stay awake" checked — Browsers raise this during '
            "downloads; editors during exports.",
            'heading "Apps"',
            'panel "Apps"',
            'label "Watching: everything"',
            'label "Choose which apps may keep your Mac awake from the menu bar icon\u00a0→\u00a0Choose '
            'Apps."',
            'check box "Open at login" not checked'])

    def test_the_keys_reach_every_control_in_its_order(self):
        forth = [self.SCREEN, self.LID, self.BATTERY.format(20), self.LOW_POWER, self.TRUST, self.LOGIN,
                 self.GRACE.format("2 minutes")]
        for control in forth:
            self.press("Tab", control)
        for control in reversed(forth[:-1]):
            self.press("shift+Tab", control)
        self.session.press("Escape")
        reader.wait_for(self.has_closed, "the window closes")

    def test_the_keys_change_every_switch_and_the_file_follows(self):
        for control, key in ((self.SCREEN, "keepScreenOn"), (self.LID, None),
                             (self.BATTERY.format(20), None), (self.LOW_POWER, "respectLowPower"),
                             (self.TRUST, "honorAppAssertions"), (self.LOGIN, "launchAtLogin")):
            self.press("Tab", control)
            if not key:
                continue
            before = key in ("respectLowPower", "honorAppAssertions")
            said = ("not checked", "checked")
            self.ear.after(lambda: self.session.press("space"), said[not before])
            self.wait_for_stored(key, not before)
            self.ear.after(lambda: self.session.press("Return"), said[before])
            self.wait_for_stored(key, before)

    def test_the_keys_move_the_sliders_and_say_the_values_in_words(self):
        self.say_after("Right", "150 seconds")
        self.wait_for_stored("graceSeconds", 150)
        self.say_after("End", "10 minutes")
        self.wait_for_stored("graceSeconds", 600)
        self.say_after("Home", "30 seconds")
        self.wait_for_stored("graceSeconds", 30)
        for control in (self.SCREEN, self.LID, self.BATTERY.format(20)):
            self.press("Tab", control)
        self.say_after("Left", "15%")
        self.wait_for_stored("batteryThreshold", 15)
        self.say_after("Home", "0%")
        self.wait_for_stored("batteryThreshold", 0)

    def test_nothing_is_said_to_have_changed_that_has_not(self):
        self.press("Tab", self.SCREEN)
        renamed = []
        listener = reader.Atspi.EventListener.new(lambda event: renamed.append(event.type))
        listener.register("object:property-change:accessible-name")
        listener.register("object:property-change:accessible-description")
        self.session.press("space")
        self.wait_for_stored("keepScreenOn", True)
        self.press("Tab", self.LID)
        self.assertEqual(renamed, [])

    def test_a_refusal_of_the_lid_is_said_and_not_stored(self):
        self.press("Tab", self.SCREEN)
        self.press("Tab", self.LID)
        self.session.press("space")
        reader.wait_for(lambda: any("Administrator approval was declined." in heard
                                    for heard in self.ear.heard), "the refusal is said")
        self.assertFalse(self.stored().get("allowLidClosed", False))

    def say_after(self, key, words):
        self.ear.after(lambda: self.session.press(key), f"says {words}")


def main():
    global PROGRAM
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    why = sessions.obstacle()
    if why:
        # scripts/skipped-tests reads this.
        print(f"{sys.argv[0]}: Skipped\n{why}")
        sys.exit(77)
    sessions.enter()
    PROGRAM = sys.argv[1]
    names = [f"{__name__}.{name}" for name in sys.argv[2:]]
    loader = unittest.defaultTestLoader
    wanted = loader.loadTestsFromNames(names) if names else loader.loadTestsFromModule(sys.modules[__name__])
    sys.exit(0 if all([passes(test) for test in each_of(wanted)]) else 1)


def each_of(suite):
    return [test for part in suite for test in each_of(part)] if hasattr(suite, "__iter__") else [suite]


def passes(test):
    """Runs it in a process of its own: the screen reader's library connects once in a process."""
    for _ in range(MOST_ATTEMPTS):
        child = os.fork()
        if child == 0:
            result = unittest.TextTestRunner(verbosity=2).run(test)
            sys.stdout.flush()
            had_no_reader = any("NoReader" in text for _, text in result.errors)
            os._exit(NO_READER if had_no_reader else 0 if result.wasSuccessful() else 1)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        if status != NO_READER:
            break
    return status == 0


if __name__ == "__main__":
    main()

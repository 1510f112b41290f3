"""What is tried in the session of a desktop when all else is done: Staylit is started once more while
it runs, and its user logs out and in again."""
from image import USER

AUTOSTART = f"/home/{USER}/.config/autostart/com.staylit.app.desktop"
WATCHER = "org.kde.StatusNotifierWatcher"
ENDING_SECONDS = 60
STARTING_SECONDS = 300


def running(here):
    """The numbers of the user's Staylits."""
    return here.machine.run("pgrep", "-u", USER, "-x", "staylit", may_fail=True).split()


def items(here):
    """What the panels were told to show, as many as there are."""
    return here.run("busctl", "--user", "get-property", WATCHER, "/StatusNotifierWatcher", WATCHER,
                    "RegisteredStatusNotifierItems").strip()


def start_twice(here):
    here.trial.say("-- started once more")
    before, shown_before = running(here), items(here)
    here.trial.say(here.run("timeout", "60", "staylit", seconds=120, may_fail=True).strip())
    here.trial.check(len(before) == 1 and running(here) == before,
                     "a second start leaves the Staylit that runs alone")
    here.trial.check(items(here) == shown_before,
                     f"a second start makes no second icon: {items(here)}")


def choose_autostart(here):
    """By the last switch in the settings' window, which comes before the first one. A window that was
    open before has kept the focus on its second row, where the first look left it."""
    steps_back = 1 if here.desktop.ends_with_panel else 2
    before = here.settled("again-before")
    here.run("staylit", "--settings", seconds=120)
    here.opened("again-settings", before, "the window of --settings")
    for keys in (*steps_back * [("shift", "tab")], ("spc",)):
        here.machine.press(*keys)
        here.settled("again-chosen")
    here.machine.press("esc")
    here.trial.check(here.machine.run("cat", AUTOSTART, may_fail=True).startswith("[Desktop Entry]"),
                     "the user chooses that Staylit starts at log-in")


def log_out_and_in(here):
    here.trial.say("-- the user logs out and in")
    here.run(*here.desktop.log_out, may_fail=True)
    here.trial.check(here.wait_for(lambda: not running(here), ENDING_SECONDS),
                     "Staylit ends with the session")
    here.machine.run("systemctl", "restart", here.desktop.login_unit, seconds=300)
    here.log_in()
    here.trial.check(here.wait_for(lambda: len(running(here)) == 1, STARTING_SECONDS),
                     "Staylit starts with the next session")
    shown = here.settled("again")
    here.machine.click(*here.desktop.icon, shown, here.desktop.button)
    here.opened("again-menu", shown, "the menu in the next session")
    here.shut_menu(shown)


def run(here):
    start_twice(here)
    here.desktop.open_at_login(here)
    log_out_and_in(here)

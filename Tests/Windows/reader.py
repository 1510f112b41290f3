"""A screen reader's view of the program: what there is to read, and what is heard as it happens.

Import it when the session's buses run: the library connects to them at once.
"""
import time

import gi

gi.require_version("Atspi", "2.0")
gi.require_version("Gio", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

from session import eventually  # noqa: E402

# Other versions of the library and of Qt have other names for some of these.
ROLES = {"frame": "window", "entry": "text", "button": "push button"}
# What only groups, and has no name of its own to be said.
SILENT = {"filler", "application"}
REGISTRY = "org.a11y.atspi.Registry"
#: A registry that ends at once has ended by then.
REGISTRY_SECONDS = 0.5
PUSH_BUTTON = getattr(Atspi.Role, "PUSH_BUTTON", None) or Atspi.Role.BUTTON


def switch_on():
    """Says on the session's bus that there is a screen reader, as one does when it starts. Returns
    whether the bus for screen readers is there then, and its registry."""
    call("org.freedesktop.DBus.Properties", "Set",
         GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True))))
    try:
        address, = call("org.a11y.Bus", "GetAddress", None)
        lives = has_registry(address)
    except GLib.GError:
        return False
    if lives:
        Atspi.init()
    return lives


def call(interface, method, arguments):
    return Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
        "org.a11y.Bus", "/org/a11y/bus", interface, method, arguments, None, 0, 10_000, None)


def has_registry(address):
    """Whether the registry, which the bus starts, stays. On a busy machine it ends at once now and
    then, whenever the bus starts it; then no program is ever found on this bus."""
    kind = Gio.DBusConnectionFlags
    bus = Gio.DBusConnection.new_for_address_sync(
        address, kind.AUTHENTICATION_CLIENT | kind.MESSAGE_BUS_CONNECTION, None, None)

    def ask(method, kinds, *arguments):
        return bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", method,
                             GLib.Variant(kinds, arguments), None, 0, 10_000, None)[0]

    ask("StartServiceByName", "(su)", REGISTRY, 0)
    first = ask("GetNameOwner", "(s)", REGISTRY)
    time.sleep(REGISTRY_SECONDS)
    return ask("GetNameOwner", "(s)", REGISTRY) == first


def handle_events():
    while GLib.MainContext.default().iteration(False):
        pass


def wait_for(condition, what):
    def look():
        handle_events()
        return condition()
    return eventually(look, what)


def children(of):
    return [child for child in map(of.get_child_at_index, range(of.get_child_count())) if child]


def has(accessible, state):
    return accessible.get_state_set().contains(state)


def windows():
    """The program's windows in sight, by their titles."""
    found = {}
    for program in children(Atspi.get_desktop(0)):
        for window in children(program):
            if has(window, Atspi.StateType.SHOWING):
                found[window.get_name()] = window
    return found


def role(accessible):
    name = accessible.get_role_name()
    return ROLES.get(name, name)


def said(accessible):
    """Role, name, value and states of one thing, and its description after a dash."""
    words = [role(accessible), f'"{accessible.get_name()}"']
    if "Value" in accessible.get_interfaces():
        words.append(f"{Atspi.Value.get_current_value(accessible):g}")
    if accessible.get_role() == Atspi.Role.CHECK_BOX:
        words.append("checked" if has(accessible, Atspi.StateType.CHECKED) else "not checked")
    if has(accessible, Atspi.StateType.FOCUSED):
        words.append("focused")
    is_control = accessible.get_role() in (PUSH_BUTTON, Atspi.Role.CHECK_BOX, Atspi.Role.SLIDER)
    if is_control and not has(accessible, Atspi.StateType.SENSITIVE):
        words.append("disabled")
    description = accessible.get_description()
    return " ".join(words) + (f" \N{EM DASH} {description}" if description else "")


def is_read(accessible):
    if accessible.get_role_name() in SILENT:
        return False
    # A list has rows that are scrolled away; what else is not showing is not there for anybody.
    return accessible.get_role() == Atspi.Role.LIST_ITEM or has(accessible, Atspi.StateType.SHOWING)


def everything(accessible):
    """All that is read in it, from the top to the bottom."""
    lines = [said(accessible)] if is_read(accessible) else []
    for child in children(accessible):
        lines += everything(child)
    return lines


def find(accessible, name):
    """The first thing of this name in it; None when there is none."""
    if accessible.get_name() == name and is_read(accessible):
        return accessible
    return next((found for child in children(accessible) if (found := find(child, name))), None)


class Ear:
    """Hears where the keyboard is, and what is said in passing, from when it is made."""

    EVENTS = ("object:state-changed:focused", "object:state-changed:checked",
              "object:state-changed:showing", "object:announcement")

    def __init__(self):
        self.heard = []
        self._listener = Atspi.EventListener.new(self._hear)
        for event in self.EVENTS:
            self._listener.register(event)
        handle_events()

    def _hear(self, event):
        try:
            self._note(event, event.source)
        except GLib.GError:
            pass  # The thing is gone.

    def _note(self, event, source):
        if event.type.startswith("object:announcement"):
            self.heard.append(f"says {event.any_data}")
        elif event.type.endswith("checked"):
            self.heard.append("checked" if event.detail1 else "not checked")
        elif event.detail1 and event.type.endswith("focused"):
            self.heard.append(f"{role(source)} {source.get_name()}")
        elif event.detail1 and source.get_role() == Atspi.Role.NOTIFICATION:
            self.heard.append(f"says {source.get_name()}")

    def after(self, act, what):
        """Does something, waits until `what` is heard, and returns all that was heard meanwhile."""
        self.heard.clear()
        act()
        wait_for(lambda: what in self.heard, f'"{what}" is heard; heard was {self.heard}')
        return list(self.heard)

    def focus_after(self, act, what):
        return self.after(act, what)[-1]

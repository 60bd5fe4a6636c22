"""The accessibility tree, asked over the accessibility bus itself, so that one test process can look at
several desktops one after the other."""

import contextlib

from gi.repository import Gio, GLib

from bus import DBUS, call

STATE_ENABLED, STATE_SELECTED, STATE_SHOWING = 8, 23, 25
ACCESSIBLE = "org.a11y.atspi.Accessible"


class Accessible:
    """One element of the accessibility tree. One that has gone has no name, no role and no children."""

    def __init__(self, bus, name, path):
        self._bus, self.name_of_bus, self.path = bus, name, path

    def ask(self, method, *arguments):
        """The first value of a method's answer."""
        return call(self._bus, self.name_of_bus, self.path, method, *arguments, limit=2)[0]

    def _ask_unless_gone(self, otherwise, *question):
        with contextlib.suppress(GLib.Error):
            return self.ask(*question)
        return otherwise

    def children(self):
        return [Accessible(self._bus, *child) for child in self._ask_unless_gone([], ACCESSIBLE + ".GetChildren")]

    def _text(self, name):
        return self._ask_unless_gone("", DBUS + ".Properties.Get", "(ss)", ACCESSIBLE, name)

    name = property(lambda self: self._text("Name"))
    description = property(lambda self: self._text("Description"))
    role = property(lambda self: self._ask_unless_gone("", ACCESSIBLE + ".GetRoleName"))

    def has(self, state):
        low, high = self.ask(ACCESSIBLE + ".GetState")
        return bool((low | high << 32) >> state & 1)

    @property
    def frame(self):
        """x, y, width, height in screen coordinates."""
        return self.ask("org.a11y.atspi.Component.GetExtents", "(u)", 0)

    def walk(self, depth=30):
        yield self
        if depth:
            for child in self.children():
                yield from child.walk(depth - 1)

    def shown_from_now_on(self):
        """A list that grows by every element of this program that comes to show, as a screen reader hears of it."""
        shown = []

        def arrived(bus, sender, path, _interface, _name, parameters):
            if parameters.unpack()[:2] == ("showing", 1):
                shown.append(Accessible(bus, sender, path))
        call(self._bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry.RegisterEvent",
             "(s)", "object:state-changed:showing")
        self._bus.signal_subscribe(self.name_of_bus, "org.a11y.atspi.Event.Object", "StateChanged", None, None,
                                   Gio.DBusSignalFlags.NONE, arrived)
        return shown

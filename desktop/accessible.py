"""The accessibility tree, asked over the accessibility bus itself, so that one test process can look at
several desktops one after the other."""

from gi.repository import Gio, GLib

STATE_CHECKED, STATE_ENABLED, STATE_FOCUSED, STATE_SELECTED, STATE_SHOWING, STATE_VISIBLE = 4, 8, 12, 23, 25, 30


class Accessible:
    """One element of the accessibility tree, asked over the accessibility bus."""

    def __init__(self, bus, name, path):
        self._bus, self.name_of_bus, self.path = bus, name, path

    def _call(self, interface, method, arguments=None):
        return self._bus.call_sync(self.name_of_bus, self.path, interface, method, arguments, None,
                                   Gio.DBusCallFlags.NONE, 2000, None).unpack()

    def _property(self, name):
        return self._call("org.freedesktop.DBus.Properties", "Get",
                          GLib.Variant("(ss)", ("org.a11y.atspi.Accessible", name)))[0]

    def children(self):
        try:
            return [Accessible(self._bus, *child) for child in self._call("org.a11y.atspi.Accessible", "GetChildren")[0]]
        except GLib.Error:
            return []

    @property
    def name(self):
        try:
            return self._property("Name")
        except GLib.Error:
            return ""

    @property
    def role(self):
        try:
            return self._call("org.a11y.atspi.Accessible", "GetRoleName")[0]
        except GLib.Error:
            return ""

    @property
    def states(self):
        low, high = self._call("org.a11y.atspi.Accessible", "GetState")[0]
        return low | high << 32

    def has(self, state):
        return bool(self.states >> state & 1)

    @property
    def frame(self):
        """x, y, width, height in screen coordinates."""
        return self._call("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (0,)))[0]

    @property
    def text(self):
        return self._call("org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    def press(self):
        return self._call("org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (0,)))[0]

    def center(self):
        x, y, width, height = self.frame
        return x + width // 2, y + height // 2

    def walk(self, depth=30):
        yield self
        if depth:
            for child in self.children():
                yield from child.walk(depth - 1)

    def find(self, role=None, name=None):
        for element in self.walk():
            if (role is None or element.role == role) and (name is None or element.name == name):
                return element
        return None

    def __repr__(self):
        return f"<{self.role} {self.name!r}>"

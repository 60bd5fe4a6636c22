"""The guard on panels of every shape: wherever the panel puts its controls, and puts them while icons are hidden,
a click on one brings the icons back, opens that control, once, and clicks nothing else."""

import unittest

from case import DesktopCase
from accessible import STATE_SHOWING
from bus import DBUS, call, connect
from desktop import PLUGINS
from gi.repository import Gio, GLib
from picture import Picture
from session import ITEM
from waiting import Timeout, hold, settled, stays, wait

PLUGINS["clock"]["digital-time-format"] = STILL = "12:00"  # No picture of it changes by itself.
PLUGINS["clock:full"] = {}  # As Xfce sets it up.
PLUGINS["separator:gap"] = {"style": 0}
MARKED = ["pasystray", "diodon"]
LEFT = {"position": "p=5;x=0;y=0", "mode": 1}
BOTTOM = {"position": "p=8;x=0;y=0"}
STRETCH, GAP = "separator", "separator:gap"

# Name: panels, scale.
LAYOUTS = {
    "the tray first": ([({}, ("systray", "xkb", "tasklist", STRETCH, "clock"))], 1),
    "the tray in the middle": ([({}, (STRETCH, "clock", "systray", "xkb", STRETCH))], 1),
    "the clock before the tray, which is last": ([({}, ("tasklist", STRETCH, "clock", "xkb", "systray"))], 1),
    "everything packed to the left": ([({}, ("applicationsmenu", "systray", "xkb", "clock", GAP))], 1),
    "a panel as short as what is on it": ([({"length": 1, "position": "p=11;x=0;y=0"}, ("systray", "clock", "xkb"))], 1),
    "standing at the left": ([({**LEFT, "size": 32}, ("systray", "xkb", "clock:full"))], 1),
    "64 pixels": ([({"size": 64}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 1),
    "three rows": ([({"size": 28, "nrows": 3}, ("tasklist", STRETCH, "systray", "xkb", "clock"))], 1),
    "twice the scale": ([({"size": 32}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 2),
    "out of sight": ([({"autohide-behavior": 2}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 1),
    "out of sight while in the way": ([({"autohide-behavior": 1, **BOTTOM}, ("systray", "clock", "xkb"))], 1),
    "two panels": ([({}, ("tasklist", STRETCH, "systray")), (BOTTOM, ("clock", STRETCH, "xkb"))], 1),
}


# Done to the panel while icons are hidden, and undone: setting, then and before.
CHANGES = {
    "position": ("/panels/panel-1/position", BOTTOM["position"], "p=6;x=0;y=0"),
    "length": ("/panels/panel-1/length", 60, 100),
    "mode": ("/panels/panel-1/mode", 1, 0),
    "size": ("/panels/panel-1/size", 44, 28),
    "icon size": ("/panels/panel-1/icon-size", 24, 16),
    "clock format": ("/plugins/plugin-4/digital-time-format", "12:00 and more", STILL),
}


class GuardCase(DesktopCase):
    """A desktop with icons and a guard, and what a person does on it."""

    @classmethod
    def prepare(cls):
        desktop = cls.desktop
        cls.clicked = []
        cls.watch_clicks()
        for name in MARKED + ["qmidinet"]:
            desktop.spawn_item(name, [name], lambda name=name: wait(lambda: name in str(desktop.call_agent("Items")), 20, name))
        desktop.remember(MARKED)
        desktop.spawn("orvo", [desktop.program])
        wait(desktop.can_hide, 20, "hiding being offered")
        desktop.away()

    @classmethod
    def watch_clicks(cls):
        """Hears every click that the panel hands on to a program's icon."""
        monitor = connect(cls.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        rules = [f"type='method_call',interface='{ITEM}'"]
        call(monitor, DBUS, "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring.BecomeMonitor",
             "(asu)", rules, 0)

        def seen(_connection, message, incoming):
            if incoming:
                cls.clicked.append(message.get_member())
            return None
        monitor.add_filter(seen)

    def setUp(self):
        self.close_pop_ups()
        if self.desktop.is_hidden():
            self.press_shortcut()
            wait(self.shown, what="icons")

    # Where things are

    def controls(self):
        """Every control where the panel has it now: name, frame, and the dock's frame."""
        found, number = {}, 0
        docks = [window for window in self.desktop.accessibility("xfce4-panel").children() if window.children()]
        for dock, (settings, plugins) in zip(docks, self.desktop.panels):
            places = [plugin.frame for plugin in dock.children()[0].children()]
            places.sort(key=lambda place: (place[1], place[0]) if settings.get("mode") else (place[0], place[1]))
            for name, place in zip(plugins, places):
                if name.partition(":")[0] in ("clock", "xkb", "systray"):
                    found[name.partition(":")[0]] = tuple(value * self.desktop.scale for value in place)
        return found

    def at(self, name):
        """The control's frame on the screen, once the panel is in sight and has done moving things."""
        dock = self.desktop.panel_window

        def look():
            frame = self.controls()[name]
            x, y, width, height = frame
            seen = 0 <= x and 0 <= y and x + width <= self.desktop.size[0] and y + height <= self.desktop.size[1]
            return frame if seen else self.bring_into_sight()
        return settled(look, 0.15, 10, f"{name} in sight")

    def bring_into_sight(self):
        """Touches the panel's edge of the screen."""
        x = self.desktop.person.pointer()[0][0]
        self.desktop.person.move(400 + (x + 1) % 2, self.desktop.size[1] - 1 if BOTTOM["position"] in str(self.desktop.panels) else 0)

    def is_covered(self, point):
        """Whether a press there would be Orvo's: the guard follows the panel within milliseconds, more on a busy machine."""
        for window in self.desktop.input_only_windows():
            x, y, width, height = self.desktop.frame_of(window) or (0, 0, 0, 0)
            if width > 1 and contains((x, y, width, height), point):
                return True
        return False

    def border(self, name):
        """A strip of the control that nothing written on it reaches: lit when the pointer is over it, or was."""
        x, y, _, height = self.at(name)
        return Picture(self.desktop.root, x + 1, y + height // 4, 2, height // 2).data

    # What a person does

    def press_shortcut(self):
        self.desktop.person.key("Control_L", "Alt_L", "Super_L", "b")

    def hide(self):
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.choose("Hide selected icons")
        wait(self.hidden, what="hidden icons")

    def hidden(self):
        return self.desktop.is_hidden() and len(self.desktop.watcher_property("RegisteredStatusNotifierItems")) == 2

    def shown(self):
        return not self.desktop.is_hidden()

    def close_pop_ups(self):
        for _ in range(4):
            if not self.desktop.pop_ups():
                return
            self.desktop.person.key("Escape")
            try:
                wait(lambda: not self.desktop.pop_ups(), 0.5)
            except Timeout:
                self.desktop.person.click(*center(self.at("clock")))
                hold(0.3)

    def expect_opened(self, name, act):
        """Does something and checks that this control, and no other thing, has been clicked once."""
        before, clicks = self.desktop.person.keyboard_layout(), len(self.clicked)
        act()
        if name == "xkb":
            wait(lambda: self.desktop.person.keyboard_layout() != before, 3, "the other layout")
            stays(lambda: self.desktop.person.keyboard_layout() != before and not self.desktop.pop_ups(), 0.3, "one switch")
        else:
            wait(self.desktop.pop_ups, 3, "the calendar")
            stays(lambda: len(self.desktop.pop_ups()) == 1, 0.3, "open once")
            self.assertEqual(self.desktop.person.keyboard_layout(), before)
        self.assertEqual(self.clicked[clicks:], [], "clicks on icons")

    def click_guarded(self, name, button, held):
        self.desktop.away()
        unlit = settled(lambda: self.border(name), 0.3)
        self.hide()
        place = center(self.at(name))
        wait(lambda: self.is_covered(place), 3, f"{name} being guarded")

        def click():
            self.desktop.person.move(*place)
            hold(0.1)
            self.desktop.person.click(*place, button=button, held=held)
            wait(self.shown, 3, "icons coming back")
        if button == 1:
            self.expect_opened(name, click)
        else:
            click()
            wait(self.desktop.pop_ups, 3, "its menu")
        self.close_pop_ups()
        self.desktop.away()
        wait(lambda: self.border(name) == unlit, 3, f"{name} being no longer lit")


class Layout(GuardCase):
    """The tests; each layout makes a class of it below."""

    def lights_up(self, name, unlit):
        """Goes to the control, which a panel that hides may take out of sight in between."""
        x, y = center(self.at(name))
        self.desktop.person.move(x, y - 2)
        self.desktop.person.move(x, y)
        return self.border(name) != unlit

    def test_every_control_is_guarded_and_opens(self):
        for name in ("clock", "xkb"):
            for button, held in ((1, 0.0), (1, 0.4), (3, 0.05)):
                with self.subTest(control=name, button=button, held=held):
                    self.click_guarded(name, button, held)

    def test_a_pointer_that_only_passes_is_not_held_and_leaves_nothing_lit(self):
        for name in ("clock", "xkb"):
            self.desktop.away()
            unlit = settled(lambda: self.border(name), 0.3)
            self.hide()
            for out in ((self.desktop.size[0] // 2, self.desktop.size[1] // 2), None):
                with self.subTest(control=name, out=out):
                    wait(lambda: self.lights_up(name, unlit), 8, "the control being lit")
                    other = center(self.controls()["xkb" if name == "clock" else "clock"])
                    self.desktop.person.move(*(out or other))
                    wait(lambda: self.border(name) == unlit, 2, "the control being no longer lit")
            self.press_shortcut()
            wait(self.shown, what="icons")

    def test_icons_keep_their_order(self):
        x, y, width, height = self.at("systray")
        before = settled(lambda: Picture(self.desktop.root, *self.at("systray")).data, 0.5)
        for turn in range(10):
            with self.subTest(turn=turn):
                self.hide()
                self.press_shortcut()
                wait(self.shown, what="icons")
                wait(lambda: Picture(self.desktop.root, *self.at("systray")).data == before, 5, "the same picture")


class Changes(GuardCase):
    """The panel is changed while icons are hidden."""

    options = {"panels": [({}, ("tasklist", STRETCH, "systray", "clock", "xkb"))]}

    def expect_guarded(self, name):
        place = settled(lambda: center(self.at(name)), 0.5)
        wait(lambda: self.is_covered(place), 3, f"{name} being guarded")

        def click():
            self.desktop.person.move(*place)
            hold(0.1)
            self.desktop.person.click(*place, held=0.05)
            wait(self.shown, 3, "icons coming back")
        self.expect_opened(name, click)
        self.close_pop_ups()
        self.desktop.away()

    def test_controls_are_guarded_where_a_change_put_them_and_nothing_is_where_they_were(self):
        for name, (setting, then, before) in CHANGES.items():
            with self.subTest(change=name):
                self.hide()
                was = center(self.at("clock"))
                self.desktop.store("xfce4-panel", setting, {"": then})
                settled(lambda: self.at("clock"), 0.7)
                if not any(contains(frame, was) for frame in self.controls().values()):
                    wait(lambda: not self.is_covered(was), 3, "nothing being guarded there")
                    self.desktop.person.click(*was, button=3)
                    stays(self.hidden, 0.4, "a click beside every control")
                    self.close_pop_ups()
                self.expect_guarded("clock")
                self.hide()
                self.expect_guarded("xkb")
                self.desktop.store("xfce4-panel", setting, {"": before})
                settled(lambda: self.at("clock"), 0.7)


class Addition(GuardCase):
    """A panel with room for one more."""

    options = {"panels": [({}, ("systray", "xkb", "clock", GAP))]}

    def test_an_added_control_is_guarded(self):
        self.hide()
        docks = self.desktop.accessibility("xfce4-panel").children()
        count = len(docks[0].children()[0].children())
        self.desktop.run(["xfce4-panel", "--add=clock"])
        added = wait(lambda: docks[0].children()[0].children()[count:], 10, "another control")[0]
        place = settled(lambda: center(added.frame), 0.7)
        wait(lambda: self.is_covered(place), 3, "the control being guarded")
        self.desktop.person.click(*place, held=0.05)
        wait(self.shown, 3, "icons coming back")
        wait(self.desktop.pop_ups, 3, "what it opens")
        self.close_pop_ups()


def contains(frame, point):
    return all(start <= at < start + size for start, size, at in zip(frame, frame[2:], point))


def center(frame):
    x, y, width, height = frame
    return x + width // 2, y + height // 2


def load_tests(loader, _tests, _pattern):
    suite = unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in (Changes, Addition))
    for name, (panels, scale) in LAYOUTS.items():
        made = type(f"Layout: {name}", (Layout,), {"options": {"panels": panels, "scale": scale}})
        suite.addTests(loader.loadTestsFromTestCase(made))
    return suite


if __name__ == "__main__":
    unittest.main(verbosity=2)

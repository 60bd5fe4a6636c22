"""Clicks while icons are hidden, on panels of every shape: wherever the panel puts its controls, and puts them while
icons are hidden, a click on one brings the icons back, opens that control, once, and clicks nothing else."""

import time
import unittest

from case import PASYSTRAY, QMIDINET, DesktopCase, center
from bus import DBUS, call, connect
from desktop import PLUGINS
from session import ITEM, SHORTCUT
from waiting import hold, settled, stays, wait

PLUGINS["clock"]["digital-time-format"] = STILL = "12:00"  # No picture of it changes by itself.
PLUGINS["clock:full"] = {}  # As Xfce sets it up.
PLUGINS["separator:gap"] = {"style": 0}
BOTTOM = {"position": "p=8;x=0;y=0"}
STRETCH, GAP = "separator", "separator:gap"
ELSEWHERE = 640, 400

# Name: panels, scale.
LAYOUTS = {
    "the tray first": ([({}, ("systray", "xkb", "tasklist", STRETCH, "clock"))], 1),
    "the tray in the middle": ([({}, (STRETCH, "clock", "systray", "xkb", STRETCH))], 1),
    "the clock before the tray, which is last": ([({}, ("tasklist", STRETCH, "clock", "xkb", "systray"))], 1),
    "as short as what is on it": ([({"length": 1, "position": "p=11;x=0;y=0"}, ("systray", "clock", "xkb"))], 1),
    "standing, left": ([({"position": "p=5;x=0;y=0", "mode": 1, "size": 32}, ("systray", "xkb", "clock:full"))], 1),
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
    "mode": ("/panels/panel-1/mode", 1, 0),
    "size": ("/panels/panel-1/size", 44, 28),
    "clock format": ("/plugins/plugin-3/digital-time-format", "12:00 and more", STILL),
}

MARKED = [PASYSTRAY, "diodon"]


def contains(frame, point):
    return all(start <= at < start + size for start, size, at in zip(frame, frame[2:], point))


class GuardCase(DesktopCase):
    @classmethod
    def prepare(cls):
        desktop, cls.clicked = cls.desktop, []
        # Hears each call of an icon's method, which is what the panel makes of a click on it.
        cls.monitor = connect(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        call(cls.monitor, DBUS, "/org/freedesktop/DBus", f"{DBUS}.Monitoring.BecomeMonitor", "(asu)",
             [f"type='method_call',interface='{ITEM}'"], 0)
        cls.monitor.add_filter(lambda _, message, comes: cls.clicked.append(message.get_member()) if comes else None)
        for name in [*MARKED, QMIDINET]:
            desktop.start_known(name)
        desktop.remember(MARKED)
        desktop.spawn("orvo", [desktop.program])
        wait(desktop.can_hide, 20, "hiding being offered")
        desktop.away()

    def setUp(self):
        self.close_pop_ups()
        if self.desktop.is_hidden():
            self.desktop.person.key(*SHORTCUT)
            wait(lambda: not self.desktop.is_hidden(), what="icons")

    # Where things are

    def controls(self):
        """Frame of every control where the panel has it now, by name."""
        found = {}
        docks = [window for window in self.desktop.accessibility("xfce4-panel").children() if window.children()]
        for dock, (settings, plugins) in zip(docks, self.desktop.panels):
            places = [plugin.frame for plugin in dock.children()[0].children()]
            places.sort(key=lambda place: (place[1], place[0]) if settings.get("mode") else (place[0], place[1]))
            for name, place in zip(plugins, places):
                if name.startswith(("clock", "xkb", "systray")):
                    found[name.partition(":")[0]] = tuple(value * self.desktop.scale for value in place)
        return found

    def at(self, name):
        """The control's frame on the screen, once the panel is in sight and has done moving things."""
        def look():
            x, y, width, height = frame = self.controls()[name]
            if 0 <= x and 0 <= y and x + width <= self.desktop.size[0] and y + height <= self.desktop.size[1]:
                return frame
            # The person touches the panel's edge of the screen.
            is_below = BOTTOM["position"] in str(self.desktop.panels)
            beside = 400 + (self.desktop.person.pointer()[0][0] + 1) % 2
            return self.desktop.person.move(beside, self.desktop.size[1] - 1 if is_below else 0)
        return settled(look, 0.15, 10, f"{name} in sight")

    def is_covered(self, point):
        """Whether a press there would be Orvo's: the guard follows the panel within milliseconds, or more."""
        frames = [self.desktop.frame_of(window) or (0, 0, 0, 0) for window in self.desktop.input_only_windows()]
        return any(frame[2] > 1 and contains(frame, point) for frame in frames)

    # What a person does

    def hide(self):
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.choose("Hide selected icons")
        wait(self.hidden, what="hidden icons")

    def hidden(self):
        return self.desktop.is_hidden() and len(self.desktop.told_items()) == 2

    def close_pop_ups(self):
        self.desktop.dismiss(lambda: center(self.at("clock")))

    def expect_guarded(self, name, button=1, held=0.05, leave=None, place=None):
        """A click on this control while icons are hidden brings them back, then opens the control, once, and no other
        thing; the pointer stays where the person put it."""
        desktop, person = self.desktop, self.desktop.person
        if not desktop.is_hidden():
            self.hide()
        place = place or center(self.at(name))
        wait(lambda: self.is_covered(place), 3, f"{name} being guarded")
        layout, clicks, since = person.keyboard_layout(), len(self.clicked), len(desktop.signals)
        person.move(*place)
        hold(0.1)
        person.button(button, True)
        pressed = time.monotonic()
        if leave:
            hold(0.02)
            person.move(*leave)
        hold(held)
        person.button(button, False)
        pops = name != "xkb" or button == 3
        expected = (lambda: len(desktop.pop_ups()) == 1 and person.keyboard_layout() == layout) if pops else \
            (lambda: not desktop.pop_ups() and person.keyboard_layout() != layout)
        wait(expected, max(3, held + 1), f"what {name} does")
        hold(0.01)  # What has been said on the bus until now is heard.
        opened = time.monotonic() - pressed
        stays(expected, 0.3, "done once")
        back = [moment - pressed for moment, signal, _ in desktop.signals[since:] if signal.endswith("ItemRegistered")]
        self.assertEqual(len(back), len(MARKED))
        self.assertLess(max(back), opened)
        self.assertGreater(opened, 0.17, "seconds that a click is held")
        self.assertFalse(desktop.is_hidden())
        self.assertEqual(person.pointer(), (leave or place, 0))
        self.assertEqual(self.clicked[clicks:], [], "clicks on icons")
        self.close_pop_ups()
        desktop.away()

    def border(self, name):
        """A strip of the control that nothing written on it reaches: lit when the pointer is over it, or was."""
        x, y, _, height = self.at(name)
        return self.desktop.picture(x + 1, y + height // 4, 2, height // 2)

    def expect_guarded_and_unlit(self, name, *click):
        self.desktop.away()
        unlit = settled(lambda: self.border(name), 0.3)
        self.expect_guarded(name, *click)
        wait(lambda: self.border(name) == unlit, 3, f"{name} being no longer lit")


class Layout(GuardCase):
    """Each layout makes a class of it below."""

    def test_every_control_is_guarded_and_opens(self):
        for name in ("clock", "xkb"):
            for button, held, leave in ((1, 0.0, None), (1, 0.4, None), (1, 1.0, ELSEWHERE), (3, 0.05, ELSEWHERE)):
                with self.subTest(control=name, button=button, held=held, leave=leave):
                    self.expect_guarded_and_unlit(name, button, held, leave)

    def lights_up(self, name, unlit):
        """Goes to the control, which a panel that hides may take out of sight in between."""
        x, y = center(self.at(name))
        self.desktop.person.move(x, y - 2)
        self.desktop.person.move(x, y)
        return self.border(name) != unlit

    def test_a_pointer_that_only_passes_is_not_held_and_leaves_nothing_lit(self):
        for name, other in (("clock", "xkb"), ("xkb", "clock")):
            self.desktop.away()
            unlit = settled(lambda: self.border(name), 0.3)
            if not self.desktop.is_hidden():
                self.hide()
            for out in (ELSEWHERE, None):
                with self.subTest(control=name, out=out):
                    wait(lambda: self.lights_up(name, unlit), 8, "the control being lit")
                    self.desktop.person.move(*(out or center(self.controls()[other])))
                    wait(lambda: self.border(name) == unlit, 2, "the control being no longer lit")


class Changes(GuardCase):
    """The panel, which has room for one more, is changed while icons are hidden."""

    options = {"panels": [({}, ("systray", "xkb", "clock", GAP))]}

    def change(self, setting, value):
        self.desktop.store("xfce4-panel", setting, {"": value})
        settled(lambda: self.at("clock"), 0.7)

    def test_controls_are_guarded_where_a_change_put_them_and_nothing_is_where_they_were(self):
        for name, (setting, then, before) in CHANGES.items():
            with self.subTest(change=name):
                self.hide()
                was = center(self.at("clock"))
                self.change(setting, then)
                if not any(contains(frame, was) for frame in self.controls().values()):
                    wait(lambda: not self.is_covered(was), 3, "nothing being guarded there")
                    self.desktop.person.click(*was, button=3)
                    stays(self.hidden, 0.4, "a click beside every control")
                    self.close_pop_ups()
                self.expect_guarded("clock")
                self.expect_guarded("xkb")
                self.change(setting, before)

    def test_an_added_control_is_guarded(self):
        self.hide()
        box = self.desktop.accessibility("xfce4-panel").children()[0].children()[0]
        count = len(box.children())
        self.desktop.run(["xfce4-panel", "--add=clock"])
        added = wait(lambda: box.children()[count:], 10, "another control")[0]
        self.expect_guarded("another clock", place=center(settled(lambda: added.frame, 0.7)))


def load_tests(loader, _tests, _pattern):
    cases = [type(f"Layout: {name}", (Layout,), {"options": {"panels": panels, "scale": scale}})
             for name, (panels, scale) in LAYOUTS.items()] + [Changes]
    return unittest.TestSuite(map(loader.loadTestsFromTestCase, cases))

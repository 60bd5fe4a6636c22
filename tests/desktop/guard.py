"""A desktop with icons and a guard, and what a person does on it."""

import time

from case import DesktopCase, center, overheard
from desktop import PLUGINS
from picture import Picture
from session import ITEM
from waiting import hold, settled, stays, wait

PLUGINS["clock"]["digital-time-format"] = STILL = "12:00"  # No picture of it changes by itself.
MARKED = ["pasystray", "diodon"]
BOTTOM = {"position": "p=8;x=0;y=0"}
REPLAY_DELAY = 0.18


def contains(frame, point):
    return all(start <= at < start + size for start, size, at in zip(frame, frame[2:], point))


class GuardCase(DesktopCase):
    @classmethod
    def prepare(cls):
        desktop = cls.desktop
        cls.clicked = overheard(desktop.environment["DBUS_SESSION_BUS_ADDRESS"], f"interface='{ITEM}'")
        for name in MARKED + ["qmidinet"]:
            desktop.spawn_item(name, [name], lambda name=name: wait(
                lambda: name in str(desktop.call_agent("Items")), 20, name))
        desktop.remember(MARKED)
        desktop.spawn("orvo", [desktop.program])
        wait(desktop.can_hide, 20, "hiding being offered")
        desktop.away()

    def setUp(self):
        self.close_pop_ups()
        if self.desktop.is_hidden():
            self.press_shortcut()

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
            seen = 0 <= x and 0 <= y and x + width <= self.desktop.size[0] and y + height <= self.desktop.size[1]
            return frame if seen else self.bring_into_sight()
        return settled(look, 0.15, 10, f"{name} in sight")

    def bring_into_sight(self):
        """Touches the panel's edge of the screen."""
        x = self.desktop.person.pointer()[0][0]
        is_below = BOTTOM["position"] in str(self.desktop.panels)
        self.desktop.person.move(400 + (x + 1) % 2, self.desktop.size[1] - 1 if is_below else 0)

    def is_covered(self, point):
        """Whether a press there would be Orvo's: the guard follows the panel within milliseconds, or more."""
        frames = [self.desktop.frame_of(window) or (0, 0, 0, 0) for window in self.desktop.input_only_windows()]
        return any(frame[2] > 1 and contains(frame, point) for frame in frames)

    def border(self, name):
        """A strip of the control that nothing written on it reaches: lit when the pointer is over it, or was."""
        x, y, _, height = self.at(name)
        return Picture(self.desktop.root, x + 1, y + height // 4, 2, height // 2).data

    # What a person does

    def press_shortcut(self):
        self.desktop.person.key("Control_L", "Alt_L", "Super_L", "b")
        wait(self.shown, what="icons")

    def hide(self):
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.choose("Hide selected icons")
        wait(self.hidden, what="hidden icons")

    def hidden(self):
        return self.desktop.is_hidden() and len(self.desktop.told_items()) == 2

    def shown(self):
        return not self.desktop.is_hidden()

    def close_pop_ups(self):
        self.desktop.dismiss(lambda: center(self.at("clock")))

    def expect_guarded(self, name, button=1, held=0.05, leave=None, place=None):
        """A click on this control while icons are hidden brings them back, then opens the control, once, and no other
        thing; the pointer stays where the person put it."""
        desktop, person = self.desktop, self.desktop.person
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
        self.assertGreater(opened, REPLAY_DELAY - 0.01)
        self.assertTrue(self.shown())
        self.assertEqual(person.pointer(), (leave or place, 0))
        self.assertEqual(self.clicked[clicks:], [], "clicks on icons")
        self.close_pop_ups()
        desktop.away()

    def hide_and_expect_guarded(self, name, button=1, held=0.05, leave=None):
        self.desktop.away()
        unlit = settled(lambda: self.border(name), 0.3)
        self.hide()
        self.expect_guarded(name, button, held, leave)
        wait(lambda: self.border(name) == unlit, 3, f"{name} being no longer lit")

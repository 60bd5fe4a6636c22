"""The global shortcut with real key grabs."""

import unittest

from Xlib import X, XK, display

from case import HidingCase, center
from person import Person
from waiting import stays, wait

COMBINATION = ("Control_L", "Alt_L", "Super_L", "b")
MODIFIERS = X.ControlMask | X.Mod1Mask | X.Mod4Mask


class Shortcut(HidingCase):
    @classmethod
    def prepare(cls):
        cls.desktop.spawn("xterm", ["xterm", "-title", "terminal"])
        cls.desktop.spawn("mousepad", ["mousepad"])
        wait(lambda: len(cls.desktop.windows()) >= 3, 20, "two windows beside the panel")
        super().prepare()

    def expect_toggled(self, keys=COMBINATION, held=0.0):
        before = self.desktop.is_hidden()
        Person(self.desktop.display_name).key(*keys, held=held)  # One who knows the keyboard as it is now.
        wait(lambda: self.desktop.is_hidden() != before, 2, "the shortcut toggling")
        if not before:
            wait(lambda: len(self.desktop.cells()) == len(self.rest), 2, "icons leaving the panel")

    def test_the_shortcut_toggles_whatever_is_focused_and_locked(self):
        editor = next(w for w in self.desktop.windows() if "Mousepad" in self.desktop.title(w))
        for locks in ((), ("Caps_Lock",), ("Num_Lock",), ("Caps_Lock", "Num_Lock")):
            for window in (self.desktop.window_titled("terminal"), editor):
                with self.subTest(locks=locks, window=self.desktop.title(window)):
                    self.desktop.run(["wmctrl", "-i", "-a", hex(window)])
                    self.desktop.person.click(*center(self.desktop.frame_of(window)))
                    for lock in locks:
                        self.desktop.person.key(lock)
                    try:
                        self.expect_toggled()
                        self.expect_toggled()
                    finally:
                        for lock in locks:
                            self.desktop.person.key(lock)

    def test_a_press_that_is_held_counts_once_and_one_with_other_modifiers_never(self):
        self.desktop.person.key("Control_L", "Super_L", "b")
        self.desktop.person.key("Shift_L", *COMBINATION)
        stays(lambda: not self.desktop.is_hidden(), 0.3, "visible")
        self.expect_toggled(held=0.9)  # Longer than until the server repeats it (0.66 s) several times.
        stays(self.desktop.is_hidden, 0.3, "hidden")

    def open_behavior(self):
        self.desktop.choose("Settings…")
        self.desktop.click(self.desktop.control("Behavior").center())
        return self.desktop

    def test_without_the_shortcut_everything_else_works_and_another_layout_brings_it_back(self):
        desktop = self.desktop
        desktop.end("orvo")
        holder = display.Display(desktop.display_name)
        root, refused = holder.screen().root, []
        holder.set_error_handler(lambda error, _request: refused.append(error))
        b, q = (holder.keysym_to_keycode(XK.string_to_keysym(name)) for name in "bq")

        def grab(key, locks=0):
            root.grab_key(key, MODIFIERS | locks, True, X.GrabModeAsync, X.GrabModeAsync)
            holder.sync()
        try:
            grab(b, X.LockMask)
            desktop.start_orvo()
            desktop.hide()
            desktop.reveal()
            told = "This shortcut is in use. Orvo’s menu bar arrow is still available."
            self.open_behavior().control(told)
            grab(b)
            self.assertEqual(refused, [], "the rest stayed taken")
            root.ungrab_key(b, X.AnyModifier)
            holder.sync()
            desktop.end("orvo")
            desktop.start_orvo()
            self.open_behavior()
            grab(q)
            was = [holder.get_keyboard_mapping(key, 1)[0] for key in (b, q)]
            holder.change_keyboard_mapping(b, [was[1]])
            holder.change_keyboard_mapping(q, [was[0]])
            holder.sync()
            desktop.control(told)
            root.ungrab_key(q, X.AnyModifier)
            holder.sync()
            wait(lambda: not desktop.shown_control(told), 8, "the shortcut being had")
            self.expect_toggled()
        finally:
            holder.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)

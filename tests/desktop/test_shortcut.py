"""The global shortcut with real key grabs."""

import unittest

from Xlib import X, XK, display
from Xlib.protocol import event

from case import HidingCase
from person import Person
from waiting import stays, wait

COMBINATION = ("Control_L", "Alt_L", "Super_L", "b")
MODIFIERS = X.ControlMask | X.Mod1Mask | X.Mod4Mask
IN_USE = "This shortcut is in use. Orvo’s menu bar arrow is still available."


class Shortcut(HidingCase):
    def expect_toggled(self, held=0.0):
        before = self.desktop.is_hidden()
        Person(self.desktop.display_name).key(*COMBINATION, held=held)  # One who knows the keyboard as it is now.
        wait(lambda: self.desktop.is_hidden() != before, 2, "the shortcut toggling")
        if not before:
            wait(lambda: len(self.desktop.cells()) == len(self.rest), 2, "icons leaving the panel")

    def test_it_toggles_whatever_is_locked_once_a_press_and_with_other_modifiers_never(self):
        person = self.desktop.person
        for locks in ((), ("Caps_Lock",), ("Num_Lock",), ("Caps_Lock", "Num_Lock")):
            with self.subTest(locks=locks):
                for lock in locks:
                    person.key(lock)
                    self.addCleanup(person.key, lock)
                self.expect_toggled()
                self.expect_toggled()
                self.doCleanups()
        person.key("Control_L", "Super_L", "b")
        person.key("Shift_L", *COMBINATION)
        root, key = self.desktop.root, self.desktop.display.keysym_to_keycode(XK.XK_b)
        root.send_event(event.KeyPress(detail=key, time=1, root=root, window=root, same_screen=1, child=0, root_x=1,
                                       root_y=1, event_x=1, event_y=1, state=MODIFIERS), X.PropertyChangeMask)
        self.desktop.display.sync()
        stays(lambda: not self.desktop.is_hidden(), 0.3, "visible")
        self.expect_toggled(held=0.9)  # Longer than until the server repeats it (0.66 s) several times.
        stays(self.desktop.is_hidden, 0.3, "hidden")

    def test_a_layout_that_puts_it_on_a_key_of_another_program_is_told_until_that_lets_go(self):
        desktop, holder = self.desktop, display.Display(self.desktop.display_name)
        self.addCleanup(holder.close)
        root, refused = holder.screen().root, []
        holder.set_error_handler(lambda error, _request: refused.append(error))
        b, q = (holder.keysym_to_keycode(XK.string_to_keysym(name)) for name in "bq")

        def grab(locks=0):
            root.grab_key(q, MODIFIERS | locks, True, X.GrabModeAsync, X.GrabModeAsync)
            holder.sync()
        grab(X.LockMask)
        was = [holder.get_keyboard_mapping(key, 1)[0] for key in (b, q)]
        holder.change_keyboard_mapping(b, [was[1]])
        holder.change_keyboard_mapping(q, [was[0]])
        holder.sync()
        desktop.choose("Settings…")
        desktop.click(desktop.control("Behavior").center())
        desktop.control(IN_USE)
        self.hide()
        self.reveal()
        grab()
        self.assertEqual(refused, [], "the rest stayed taken")
        root.ungrab_key(q, X.AnyModifier)
        holder.sync()
        wait(lambda: not desktop.shown_control(IN_USE), 8, "the shortcut being had")
        self.expect_toggled()


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""The global shortcut with real key grabs."""

import unittest

from Xlib import X, XK, display

from case import DesktopCase
from waiting import wait

MARKED = ["com.github.hluk.copyq", "pasystray"]
COMBINATION = ("Control_L", "Alt_L", "Super_L", "b")


class Shortcut(DesktopCase):
    @classmethod
    def prepare(cls):
        cls.desktop.spawn("xterm", ["xterm", "-title", "terminal"])
        cls.desktop.spawn("mousepad", ["mousepad"])
        wait(lambda: len(cls.desktop.windows()) >= 3, 20, "two windows beside the panel")
        cls.desktop.start_all(hidden=MARKED)

    def toggled(self):
        before = self.desktop.is_hidden()
        self.desktop.person.key(*COMBINATION)
        wait(lambda: self.desktop.is_hidden() != before, 2, "the shortcut toggling")
        if self.desktop.is_hidden():
            wait(lambda: len(self.desktop.cells()) == 3, 2, "icons leaving the panel")

    def test_the_shortcut_toggles_whatever_is_focused_and_locked(self):
        terminal = self.desktop.window_titled("terminal")
        editor = next(w for w in self.desktop.windows() if "Mousepad" in self.desktop.title(w))
        for locks in ((), ("Caps_Lock",), ("Num_Lock",), ("Caps_Lock", "Num_Lock")):
            for window in (terminal, editor):
                with self.subTest(locks=locks, window=self.desktop.title(window)):
                    self.desktop.person.click(*self.center(window))
                    for lock in locks:
                        self.desktop.person.key(lock)
                    try:
                        self.toggled()
                        self.toggled()
                    finally:
                        for lock in locks:
                            self.desktop.person.key(lock)

    def center(self, window):
        self.desktop.run(["wmctrl", "-i", "-a", hex(window)])
        x, y, width, height = self.desktop.frame_of(window)
        return x + width // 2, y + height // 2

    def test_without_the_shortcut_everything_else_works(self):
        self.desktop.end("orvo")
        holder = display.Display(self.desktop.display_name)
        try:
            root = holder.screen().root
            key = holder.keysym_to_keycode(XK.XK_b)
            root.grab_key(key, X.ControlMask | X.Mod1Mask | X.Mod4Mask, True, X.GrabModeAsync, X.GrabModeAsync)
            holder.sync()
            self.desktop.start_orvo()
            self.desktop.hide()
            self.desktop.click_arrow()
            wait(lambda: not self.desktop.is_hidden(), 2, "the reveal")
            self.desktop.choose("Settings…")
            self.desktop.click(self.desktop.control("Behavior").center())
            self.desktop.control("This shortcut is in use. Orvo’s menu bar arrow is still available.")
        finally:
            holder.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""Hiding and revealing on the real panel with real tray programs."""

import time
import unittest

from case import DesktopCase
from desktop import PROGRAMS
from waiting import stays, wait

COPYQ, PASYSTRAY = "com.github.hluk.copyq", "pasystray"
MARKED = [COPYQ, PASYSTRAY]
CYCLES = 20


class Hiding(DesktopCase):
    @classmethod
    def prepare(cls):
        cls.desktop.start_all(hidden=MARKED)
        cls.all = cls.desktop.shown()
        cls.loads_early = cls.desktop.has_loaded("libQt6Quick")
        cls.rest = ["orvo-hidden" if name == "orvo" else name for name in cls.all if name not in MARKED]

    def setUp(self):
        if self.desktop.is_hidden():
            self.reveal()
        self.desktop.expect_shown(self.all)
        wait(self.desktop.can_hide, what="hiding being offered")

    def hide(self):
        self.desktop.hide_and_expect(self.rest)

    def reveal(self):
        self.desktop.reveal()
        self.desktop.expect_shown(self.all, what="revealed, the panel")

    def test_a_click_hides_the_marked_icons_alone_and_another_brings_them_back_in_order(self):
        for _ in range(CYCLES):
            self.hide()
            self.reveal()

    def test_the_arrows_menu_hides_and_shows(self):
        self.assertEqual(self.desktop.item_property("Title"), "Orvo menu bar manager")
        self.desktop.choose("Hide selected icons")
        self.desktop.expect_shown(self.rest)
        self.desktop.choose("Show all icons")
        self.desktop.expect_shown(self.all)

    def test_the_panel_offers_the_menu_of_the_arrow_at_a_right_click(self):
        self.desktop.click_arrow(button=3)
        wait(self.desktop.pop_ups, what="the menu")
        self.desktop.person.key("Down")
        self.desktop.person.key("Return")
        self.desktop.expect_shown(self.rest)

    def test_a_new_tray_program_reveals_so_that_its_icon_can_load(self):
        self.hide()
        self.desktop.start_item("org.flameshot.Flameshot")
        try:
            wait(lambda: not self.desktop.is_hidden(), what="the reveal")
            wait(lambda: set(self.desktop.shown()) == set(self.all) | {"org.flameshot.Flameshot"}, what="every icon")
            self.desktop.expect_told("A new app opened. Icons are shown so its menu bar item can load.")
            self.assertTrue(self.desktop.has_loaded("libQt6Quick"))
            self.assertFalse(self.loads_early, "before the window was first shown")
            self.desktop.close_window(self.desktop.settings_window())
        finally:
            self.desktop.end("org.flameshot.Flameshot")
        self.desktop.expect_shown(self.all)

    def test_a_program_that_ends_while_hidden_leaves_the_others_hidden(self):
        self.desktop.start_item("org.flameshot.Flameshot")
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.hide()
        self.desktop.end("org.flameshot.Flameshot")
        self.desktop.expect_shown(self.rest)
        stays(lambda: self.desktop.is_hidden() and COPYQ not in self.desktop.shown(), 1.0, "hidden")

    def test_a_hidden_program_that_ends_and_comes_back_is_shown(self):
        self.hide()
        self.desktop.end(COPYQ)
        stays(lambda: PASYSTRAY not in self.desktop.shown(), 0.5, "hidden")
        self.desktop.spawn(COPYQ, PROGRAMS[COPYQ])
        wait(lambda: set(self.desktop.shown()) == set(self.all), 20, "every icon")

    def test_the_icons_are_back_before_the_machine_sleeps(self):
        self.hide()
        self.desktop.sleep_announced(True)
        self.desktop.expect_shown(self.all, 2)
        self.desktop.sleep_announced(False)
        wait(self.desktop.can_hide, what="hiding being offered after the wake-up")

    def test_a_changed_screen_brings_the_icons_back(self):
        self.hide()
        try:
            self.desktop.resize_screen(1024, 768)
            wait(lambda: self.desktop.shown() == self.all, 5, "every icon")
            wait(self.desktop.can_hide, what="hiding being offered on the new screen")
        finally:
            self.desktop.resize_screen(*self.desktop.size)
        wait(self.desktop.can_hide, what="hiding being offered on the old screen")

    def test_switching_accessibility_off_brings_the_icons_back_within_the_poll(self):
        self.hide()
        self.desktop.set_accessibility(False)
        since = time.monotonic()
        try:
            self.desktop.expect_shown(self.all, 4)
            self.assertLess(time.monotonic() - since, 3.5)
        finally:
            self.desktop.set_accessibility(True)
        wait(self.desktop.can_hide, 8, "hiding being offered again")


if __name__ == "__main__":
    unittest.main(verbosity=2)

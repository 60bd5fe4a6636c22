"""Hiding and revealing on the real panel with real tray programs."""

import signal
import unittest

from Xlib import X, Xatom, display

from case import COPYQ, HidingCase, Peer, center
from probe import Probe
from waiting import stays, wait

FLAMESHOT = "org.flameshot.Flameshot"
CYCLES = 20


class Hiding(HidingCase):
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
        self.desktop.click_arrow(button=3)
        wait(self.desktop.pop_ups, what="the menu that the panel offers")
        self.desktop.person.key("Down")
        self.desktop.person.key("Return")
        self.desktop.expect_shown(self.rest)

    def test_what_another_program_hides_is_told_and_ended_by_the_arrow(self):
        self.hide()  # Learns what the arrow looks like then.
        stranger = Peer(self.desktop, "stranger")
        self.desktop.choose("Settings…")
        wait(self.desktop.settings_window, what="the window")
        stranger.activate()
        self.desktop.control("stranger hides icons. Click the arrow to show them.")
        self.desktop.expect_shown(["orvo-hidden"])
        self.assertIn("AccessDenied", stranger.agent("EndOthers"))
        self.desktop.click_arrow()
        self.desktop.expect_shown(self.all)
        self.desktop.close_window(self.desktop.settings_window())
        stranger.kill()

    def test_a_new_tray_program_reveals_so_that_its_icon_can_load(self):
        loads_early = self.desktop.has_loaded("libQt6Quick")
        self.hide()
        self.desktop.start_item(FLAMESHOT)
        try:
            wait(lambda: not self.desktop.is_hidden(), what="the reveal")
            wait(lambda: set(self.desktop.shown()) == {*self.all, FLAMESHOT}, what="every icon")
            self.desktop.expect_told("A new app opened. Icons are shown so its menu bar item can load.")
            self.assertTrue(self.desktop.has_loaded("libQt6Quick"))
            self.assertFalse(loads_early, "before the window was first shown")
            self.desktop.close_window(self.desktop.settings_window())
            with self.subTest("one that ends while hidden leaves the others hidden"):
                wait(self.desktop.can_hide, what="hiding being offered")
                self.desktop.hide()
                self.desktop.end(FLAMESHOT)
                self.desktop.expect_shown(self.rest)
                stays(lambda: self.desktop.is_hidden() and COPYQ not in self.desktop.shown(), 1.0, "hidden")
        finally:
            self.desktop.end(FLAMESHOT)

    def test_the_window_of_a_new_program_reveals_whatever_it_claims_but_a_dock_does_not(self):
        desktop = self.desktop
        self.hide()
        Probe(desktop, "dock", "dock")
        stays(desktop.is_hidden, 0.5, "hidden")
        Probe(desktop, "window", "newcomer")
        wait(lambda: not desktop.is_hidden(), what="the reveal")
        wait(desktop.can_hide, what="hiding being offered")
        self.hide()
        client = display.Display(desktop.display_name)
        window = client.screen().root.create_window(0, 300, 99, 99, 0, X.CopyFromParent)
        # The number that a sandboxed program has inside its sandbox.
        window.change_property(client.intern_atom("_NET_WM_PID"), Xatom.CARDINAL, 32, [4194305])
        window.map()
        client.sync()
        wait(lambda: not desktop.is_hidden(), what="the reveal")
        client.close()
        for name in ("dock", "newcomer"):
            desktop.end(name)

    def test_the_machine_sleeps_once_the_icons_are_back(self):
        for _ in range(2):
            wait(self.desktop.sleep_is_delayed, what="sleep waiting for Orvo")
            self.hide()
            self.desktop.sleep_announced(True)
            wait(lambda: not self.desktop.sleep_is_delayed(), 2, "the machine sleeping")
            self.assertEqual(len(self.desktop.told_items()), len(self.all))
            self.desktop.sleep_announced(False)
            wait(self.desktop.can_hide, what="hiding being offered after the wake-up")

    def test_a_panel_that_dies_while_icons_are_hidden_has_a_guarded_clock_again(self):
        desktop = self.desktop
        self.hide()
        trailing = desktop.tray_trailing()
        desktop.end("panel", signal.SIGKILL)
        desktop.start_panel()
        desktop.expect_shown(self.rest, 10)
        # Its controls come one by one and push the icons about.
        wait(lambda: desktop.tray_trailing() == trailing, what="the panel's layout of before")
        self.reveal()
        wait(desktop.can_hide, what="hiding being offered")
        self.hide()
        desktop.person.click(*center(desktop.clock()))
        wait(desktop.pop_ups, what="the clock's calendar")
        desktop.away()
        desktop.expect_shown(self.all)

    def test_a_changed_screen_brings_the_icons_back(self):
        self.hide()
        try:
            self.desktop.resize_screen(1024, 768)
            wait(lambda: self.desktop.shown() == self.all, 5, "every icon")
            wait(self.desktop.can_hide, what="hiding being offered on the new screen")
        finally:
            self.desktop.resize_screen(*self.desktop.size)


if __name__ == "__main__":
    unittest.main(verbosity=2)

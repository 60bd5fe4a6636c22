"""Clicks on the panel while icons are hidden, played on the server's own mouse device."""

import time
import unittest

from case import DesktopCase
from probed import Probe
from waiting import hold, stays, wait

MARKED = ["com.github.hluk.copyq", "pasystray"]
REPLAY_DELAY = 0.18


def center(frame):
    x, y, width, height = frame
    return x + width // 2, y + height // 2


class GuardedClicks(DesktopCase):
    @classmethod
    def prepare(cls):
        desktop = cls.desktop
        cls.window = Probe(desktop, "window", "neighbour")
        desktop.start_all(hidden=MARKED)
        cls.all = desktop.shown()
        cls.rest = ["orvo-hidden" if name == "orvo" else name for name in cls.all if name not in MARKED]
        cls.clock = center(desktop.clock())
        cls.layout = center(desktop.layout_control())
        cls.person = desktop.person
        cls.middle = center(desktop.frame_of(desktop.window_titled("neighbour")))

    def setUp(self):
        self.dismiss()
        if self.desktop.is_hidden():
            self.desktop.click_arrow()
        self.desktop.expect_shown(self.all)

    def tearDown(self):
        self.dismiss()
        wait(lambda: self.desktop.person.pointer()[1] == 0, 2, "every button being up")

    def dismiss(self):
        self.desktop.dismiss(self.clock)

    def hide(self):
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.hide_and_expect(self.rest)

    def expect_guarded(self, button, held, leave=None):
        """Plays one click on the clock while hidden and checks everything that is promised of it."""
        desktop = self.desktop
        self.hide()
        since = len(desktop.signals)
        desktop.person.move(*self.clock)
        desktop.person.button(button, True)
        pressed = time.monotonic()
        if leave:
            hold(0.02)
            desktop.person.move(*leave)
        hold(held)
        desktop.person.button(button, False)
        place = leave or self.clock
        wait(desktop.pop_ups, max(2.0, held + 1), "what the clock opens")
        opened = time.monotonic() - pressed
        back = [moment - pressed for moment, name, _ in desktop.signals[since:] if name.endswith("ItemRegistered")]
        self.assertEqual(len(back), len(MARKED))
        self.assertLess(max(back), opened)
        self.assertGreater(opened, REPLAY_DELAY - 0.01)
        self.assertFalse(desktop.is_hidden())
        stays(lambda: len(desktop.pop_ups()) == 1, 0.4, "open once")
        self.assertEqual(desktop.person.pointer(), (place, 0))
        desktop.away()
        desktop.expect_shown(self.all)

    def test_a_click_on_the_clock_brings_the_icons_back_and_then_opens_it_once(self):
        for button in (1, 3):
            for held in (0.0, 0.05, 0.3, 1.0):
                with self.subTest(button=button, held=held):
                    self.expect_guarded(button, held)
                self.dismiss()

    def test_a_pointer_that_moves_away_before_the_replay_is_left_where_the_person_put_it(self):
        for button, held in ((1, 0.0), (1, 0.3), (1, 1.0), (3, 0.05)):
            with self.subTest(button=button, held=held):
                self.expect_guarded(button, held, leave=self.middle)
            self.dismiss()

    def test_each_click_on_a_control_does_its_work_exactly_once(self):
        for held in (0.0, 0.05, 0.3):
            with self.subTest(held=held):
                self.hide()
                before = self.person.keyboard_layout()
                self.person.click(*self.layout, held=held)
                wait(lambda: self.person.keyboard_layout() != before, 3, "the other layout")
                stays(lambda: self.person.keyboard_layout() != before, 0.3, "one switch")
                self.assertFalse(self.desktop.is_hidden())

    def test_a_wheel_turn_over_a_guarded_control_reaches_it_and_reveals_nothing(self):
        self.hide()
        before = self.person.keyboard_layout()
        self.person.turn_wheel(*self.layout, 4)
        wait(lambda: self.person.keyboard_layout() != before, 3, "the other layout")
        stays(lambda: self.person.keyboard_layout() != before, 0.3, "one switch")
        self.assertTrue(self.desktop.is_hidden())

    def test_clicks_elsewhere_go_through_at_once_and_reveal_nothing(self):
        for hidden in (False, True):
            if hidden:
                self.hide()
            for button in (1, 3):
                with self.subTest(hidden=hidden, button=button):
                    since = time.monotonic()
                    self.desktop.person.click(*self.middle, button=button)
                    wait(lambda: len(self.window.kinds(since)) == 2, 1, "the click in the window")
                    self.assertLess(self.window.events()[-2][0] - since, REPLAY_DELAY)
            with self.subTest(hidden=hidden, place="the desktop"):
                self.desktop.person.click(self.desktop.size[0] - 100, self.desktop.size[1] - 100, button=3)
                wait(self.desktop.pop_ups, 1, "the desktop's own menu")
                self.desktop.person.key("Escape")
                wait(lambda: not self.desktop.pop_ups(), what="the menu being closed")
            self.assertEqual(self.desktop.is_hidden(), hidden)

    def test_the_menus_of_the_panel_the_programs_and_the_window_manager_still_open_while_hidden(self):
        self.hide()
        x, y, width, height = self.desktop.frame_of(self.desktop.panel_window())
        places = {"the applications menu": (x + 40, y + height // 2, 1),
                  "an icon's menu": (*self.desktop.icon_center("diodon"), 3),
                  "the panel's own menu": (x + width // 2, y + height // 2, 3)}
        for what, (place_x, place_y, button) in places.items():
            with self.subTest(what):
                self.desktop.click((place_x, place_y), button)
                wait(self.desktop.pop_ups, 3, what)
                self.dismiss()
                self.assertTrue(self.desktop.is_hidden())

    def test_the_window_managers_own_clicks_still_work_while_hidden(self):
        self.hide()
        window = self.desktop.window_titled("neighbour")
        before = self.desktop.frame_of(window)
        person = self.desktop.person
        person.move(before[0] + 100, before[1] - 10)
        person.button(1, True)
        for step in range(1, 11):
            hold(0.03)  # A busy window manager takes a drag that is over when it looks for a click.
            person.move(before[0] + 100 + step * 5, before[1] - 10)
        wait(lambda: self.desktop.frame_of(window)[0] == before[0] + 50, 2, "the window following")
        person.button(1, False)
        wait(lambda: self.desktop.frame_of(window)[0] == before[0] + 50, 2, "the window at its new place")
        type(self).middle = center(self.desktop.frame_of(window))
        self.assertTrue(self.desktop.is_hidden())


if __name__ == "__main__":
    unittest.main(verbosity=2)

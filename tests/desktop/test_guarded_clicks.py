"""Clicks while icons are hidden, on the panel that a session starts with."""

import unittest

from guard import REPLAY_DELAY, GuardCase, center
from probe import Probe
from waiting import stays, wait


class GuardedClicks(GuardCase):
    @classmethod
    def prepare(cls):
        cls.window = Probe(cls.desktop, "window", "neighbour")
        super().prepare()

    def neighbour(self):
        return self.desktop.frame_of(self.desktop.window_titled("neighbour"))

    def test_a_click_on_the_clock_brings_the_icons_back_and_then_opens_it_once_wherever_the_pointer_goes(self):
        for button, held, leaves in ((1, 0.0, True), (1, 0.3, True), (1, 1.0, True), (1, 1.0, False), (3, 0.05, True),
                                     (3, 1.0, False)):
            with self.subTest(button=button, held=held, leaves=leaves):
                self.hide_and_expect_guarded("clock", button, held, center(self.neighbour()) if leaves else None)

    def test_a_wheel_turn_over_a_guarded_control_reaches_it_and_reveals_nothing(self):
        self.hide()
        person = self.desktop.person
        before = person.keyboard_layout()
        person.turn_wheel(*center(self.at("xkb")), 4)
        wait(lambda: person.keyboard_layout() != before, 3, "the other layout")
        stays(lambda: person.keyboard_layout() != before and self.hidden(), 0.3, "one switch")

    def test_clicks_elsewhere_go_through_at_once_and_reveal_nothing(self):
        desktop = self.desktop
        places = {"the desktop's menu": (desktop.size[0] - 100, desktop.size[1] - 100, 3),
                  "the applications menu": (40, 14, 1),
                  "the panel's own menu": (desktop.size[0] // 2, 14, 3)}
        for hidden in (False, True):
            if hidden:
                self.hide()
            for button in (1, 3):
                with self.subTest(hidden=hidden, button=button):
                    since = desktop.person.click(*center(self.neighbour()), button=button)
                    wait(lambda: len(self.window.kinds(since)) == 2, 1, "the click in the window")
                    self.assertLess(self.window.events()[-2][0] - since, REPLAY_DELAY)
            x, y, _, height = self.at("systray")
            for what, (*place, button) in {**places, "an icon's menu": (x + 14, y + height // 2, 3)}.items():
                with self.subTest(what, hidden=hidden):
                    desktop.click(place, button)
                    wait(desktop.pop_ups, 3, what)
                    desktop.person.key("Escape")
                    wait(lambda: not desktop.pop_ups(), what="the menu being closed")
            self.assertEqual(desktop.is_hidden(), hidden)


if __name__ == "__main__":
    unittest.main(verbosity=2)

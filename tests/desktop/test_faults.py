"""What happens when parts of the session go for good, or never come."""

import contextlib
import os
import signal
import unittest

from case import MARKED, DesktopCase, HidingCase
from waiting import stays, wait


class LosingCase(HidingCase):
    """Icons are hidden when something goes."""

    def setUp(self):
        super().setUp()
        self.hide()

    def guardians(self):
        found = []
        for process in self.desktop.strays():
            with contextlib.suppress(OSError), open(f"/proc/{process}/comm", encoding="utf-8") as file:
                if file.read().strip() == "orvo-guardian":
                    found.append(process)
        return found

    def expect_clean_end(self, part):
        os.kill(self.desktop.processes[part].pid, signal.SIGKILL)
        self.assertGreaterEqual(self.desktop.orvo.wait(6), 0, "died of a signal")
        self.assertTrue(self.desktop.log("orvo").strip(), "no line on standard error")
        self.assertEqual(self.desktop.remembered(), dict.fromkeys(MARKED, "hidden"))


class WithoutAgent(LosingCase):
    def test_a_guardian_and_then_its_agent_killed_leave_every_icon_shown_once_and_orvo_alive(self):
        desktop = self.desktop
        first = self.guardians()
        os.kill(first[0], signal.SIGKILL)
        wait(lambda: len(self.guardians()) == 1 and self.guardians() != first, 2, "another guardian, and no zombie")
        desktop.end("agent", signal.SIGKILL)

        # Ayatana's programs may show an older kind of icon besides, made while they saw no watcher; its place may
        # show for a while what stood there before. So the panel's own list is what has to hold each just once.
        def all_once():
            return self.others < set(desktop.shown()) and len(desktop.told_items()) == len(self.all)
        wait(lambda: not self.guardians(), 5, "the end of the guardian")
        wait(all_once, 3, "every icon and the arrow")
        desktop.rest()  # The panel moves its icons about for a moment.
        self.assertTrue(all_once(), desktop.shown())
        wait(lambda: not desktop.is_hidden(), what="the arrow saying visible")
        desktop.expect_told("The menu bar agent ended. All icons are visible.")
        self.assertIsNone(desktop.orvo.poll())


class WithoutSessionBus(LosingCase):
    def test_orvo_and_the_agent_say_so_and_end_in_order(self):
        self.expect_clean_end("bus")
        self.desktop.processes["agent"].wait(5)
        for name in ("orvo", "agent"):
            self.assertIn("the session bus is gone", self.desktop.log(name))
        wait(lambda: not self.guardians(), 5, "the end of the guardian")


class WithoutServer(LosingCase):
    def test_orvo_ends_in_order(self):
        self.expect_clean_end("server")


class WithoutAccessibilityBus(DesktopCase):
    start = {"accessibility": False}

    def test_orvo_lives_and_every_icon_is_shown(self):
        desktop = self.desktop
        desktop.start_all(hidden=["org.rncbc.qmidinet"], programs=["org.rncbc.qmidinet"], ready=False)
        stays(lambda: desktop.orvo.poll() is None, 4.0, "Orvo running")
        self.assertIn("Orvo: the accessibility bus does not answer", desktop.log("orvo"))
        self.assertIn("org.rncbc.qmidinet", desktop.shown())
        self.assertFalse(desktop.can_hide())


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""What happens when parts of the session go for good, or never come."""

import os
import signal
import unittest

from case import MARKED, DesktopCase, HidingCase
from waiting import settled, stays, wait


class WithoutAgent(HidingCase):
    def guardians(self):
        agent = self.desktop.processes["agent"].pid
        with open(f"/proc/{agent}/task/{agent}/children", encoding="ascii") as file:
            return file.read().split()

    def test_a_guardian_and_then_its_agent_killed_while_icons_are_hidden_leave_every_icon_shown_once(self):
        desktop, first = self.desktop, self.guardians()
        self.hide()
        os.kill(int(first[0]), signal.SIGKILL)
        wait(lambda: len(self.guardians()) == 1 and self.guardians() != first, 2, "another guardian, and no zombie")
        desktop.end("agent", signal.SIGKILL)
        # Ayatana's programs may show an older kind of icon besides, made while they saw no watcher; its place may
        # show for a while what stood there before. So the panel's own list is what has to hold each just once.
        settled(lambda: self.others < set(desktop.shown()) and len(desktop.told_items()) == len(self.all), 0.25, 5,
                "every icon and the arrow")
        wait(lambda: not desktop.is_hidden(), what="the arrow saying visible")


class WithoutServer(HidingCase):
    part, line, programs = "server", r"\S", ["orvo"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        self.hide()
        os.kill(self.desktop.processes[self.part].pid, signal.SIGKILL)
        for name in self.programs:
            self.assertGreaterEqual(self.desktop.processes[name].wait(6), 0, "died of a signal")
            self.assertRegex(self.desktop.log(name), self.line)
        self.assertEqual(self.desktop.remembered(), dict.fromkeys(MARKED, "hidden"))


class WithoutSessionBus(WithoutServer):
    part, line, programs = "bus", "the session bus is gone", ["orvo", "agent"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        super().test_what_needs_it_ends_in_order_and_says_so()
        running = ["sh", "-c", "readlink /proc/[0-9]*/exe"]
        wait(lambda: self.desktop.bundle not in self.desktop.run(running).stdout, 5, "the end of the guardian")


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

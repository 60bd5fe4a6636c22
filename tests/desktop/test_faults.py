"""What happens when parts of the session go for good, or never come."""

import os
import signal
import unittest

from case import MARKED, DesktopCase, HidingCase
from waiting import stays, wait


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

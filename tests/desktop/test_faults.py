"""What happens when parts of the session go for good, or never come."""

import os
import signal
import socket
import time
import unittest

from case import QMIDINET, DesktopCase, HidingCase, Peer
from waiting import stays, wait


class WithoutServer(HidingCase):
    part, line, programs_to_end = "server", r"\S", ["orvo"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        self.hide()
        os.kill(self.desktop.processes[self.part].pid, signal.SIGKILL)
        for name in self.programs_to_end:
            self.assertGreaterEqual(self.desktop.processes[name].wait(6), 0, "died of a signal")
            self.assertRegex(self.desktop.log(name), self.line)
        self.assertEqual(self.desktop.remembered(), dict.fromkeys(self.marked, "hidden"))


class WithoutSessionBus(WithoutServer):
    part, line, programs_to_end = "bus", "the session bus is gone", ["orvo", "agent"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        super().test_what_needs_it_ends_in_order_and_says_so()
        running = ["sh", "-c", "readlink /proc/[0-9]*/exe"]
        wait(lambda: self.desktop.bundle not in self.desktop.run(running).stdout, 5, "the end of the guardian")


class WithoutAccessibilityBus(DesktopCase):
    start = {"accessibility": False}

    def test_orvo_lives_without_its_window_too_every_icon_is_shown_and_a_mute_bus_keeps_nobody_waiting(self):
        desktop = self.desktop
        os.remove(f"{desktop.bundle}/lib/liborvo-settings.so")
        desktop.start_all(hidden=[QMIDINET], programs=[QMIDINET], ready=False)
        stays(lambda: desktop.orvo.poll() is None, 4.0, "Orvo running")
        self.assertIn("Orvo: the accessibility bus does not answer", desktop.log("orvo"))
        self.assertIn(QMIDINET, desktop.shown())
        self.assertFalse(desktop.can_hide())
        desktop.choose("Settings…")
        wait(lambda: "could not be loaded" in desktop.log("orvo"), what="what became of the window")
        address = os.path.join(desktop.folder, "mute")
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(address)
            mute.listen()
            launcher = Peer(desktop, "launcher")
            launcher.own("org.a11y.Bus")
            launcher.ask(f"serve(GetAddress={str(('unix:path=' + address,))!r})")
            for _ in range(3):
                asked = time.monotonic()
                desktop.call_agent("Tree")
                self.assertLess(time.monotonic() - asked, 0.2)
            launcher.kill()


if __name__ == "__main__":
    unittest.main(verbosity=2)

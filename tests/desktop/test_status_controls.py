"""What the agent tells of the real panel: its status controls, at once, whatever state the panel is in."""

import signal
import time
import unittest

from case import DesktopCase
from waiting import stays, wait

PREFIX = "com.apple.menuextra."
LIMIT = 0.2  # seconds that a scan waits for the tree


class StatusControls(DesktopCase):
    def controls(self):
        started = time.monotonic()
        tree = self.desktop.call_agent("Tree")
        self.spent = time.monotonic() - started
        return {identifier[len(PREFIX):]: frame for _, _, identifier, framed, frame in tree if framed and identifier}

    def expect_the_clock(self):
        wait(lambda: set(self.controls()) == {"xkb-5", "pulseaudio-6", "clock-7"}, what="the controls beside the tray")
        self.assertEqual(tuple(self.controls()["clock-7"]), tuple(self.desktop.clock()))

    def test_the_controls_beside_the_tray_are_told_with_their_places(self):
        self.expect_the_clock()

    def test_controls_come_before_icons_for_whoever_looks_at_so_many_elements_only(self):
        self.desktop.start_item("pasystray")
        self.expect_the_clock()
        tree = self.desktop.call_agent("Tree")
        foreign = [process != tree[0][1] for _, process, *_ in tree]
        self.assertEqual(foreign, sorted(foreign))
        self.assertTrue(foreign[-1])

    def test_a_stopped_panel_keeps_nobody_waiting(self):
        self.expect_the_clock()
        known = self.controls()
        panel = self.desktop.processes["panel"]
        panel.send_signal(signal.SIGSTOP)
        try:
            for _ in range(3):
                self.assertEqual(self.controls(), known)
                self.assertLess(self.spent, LIMIT)
        finally:
            panel.send_signal(signal.SIGCONT)
        self.expect_the_clock()

    def test_a_panel_that_ends_takes_its_controls_along(self):
        self.expect_the_clock()
        self.desktop.end("panel")
        wait(lambda: self.controls() == {}, what="no controls")
        self.desktop.start_panel()
        self.expect_the_clock()

    def test_the_agent_sleeps_while_nothing_happens(self):
        self.expect_the_clock()
        wait(lambda: self.sleeps(0.5), what="the agent's rest")
        self.assertTrue(self.sleeps(5.0), "although the panel's clock goes on")

    def sleeps(self, span):
        process = self.desktop.processes["agent"].pid
        before = switches(process)
        try:
            stays(lambda: switches(process) == before, span)
        except AssertionError:
            return False
        return True


def switches(process):
    """How often the process' main thread has gone to sleep so far."""
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("voluntary_ctxt_switches"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

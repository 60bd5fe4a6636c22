"""What the agent tells of the real panel: its status controls, at once, whatever state the panel is in."""

import os
import socket
import time
import unittest

from gi.repository import GLib

from case import PASYSTRAY, DesktopCase, Peer, overheard, stopped
from desktop import PLUGINS
from waiting import settled, stays, wait

PREFIX = "com.apple.menuextra."
CONTROLS = {"xkb-5", "pulseaudio-6", "clock-7"}
LIMIT = 0.2  # seconds that a scan waits for the tree


class StatusControls(DesktopCase):
    @classmethod
    def prepare(cls):
        cls.desktop.start_item(PASYSTRAY)

    def setUp(self):
        self.expect(CONTROLS)
        self.known = self.controls()

    def controls(self):
        started = time.monotonic()
        tree = self.desktop.call_agent("Tree")
        self.assertLess(time.monotonic() - started, LIMIT)
        return {identifier[len(PREFIX):]: frame for _, _, identifier, framed, frame in tree if framed and identifier}

    def expect(self, names):
        wait(lambda: set(self.controls()) == names, what=f"the controls {names}")

    def test_the_controls_beside_the_tray_come_with_their_places_and_before_the_icons(self):
        """So that whoever looks at so many elements only sees them."""
        self.assertEqual(tuple(self.known["clock-7"]), tuple(self.desktop.clock()))
        tree = self.desktop.call_agent("Tree")
        foreign = [process != tree[0][1] for _, process, *_ in tree]
        self.assertEqual(foreign, sorted(foreign))
        self.assertTrue(foreign[-1])

    def test_what_the_panels_settings_change_is_told(self):
        store = lambda channel, name, value: self.desktop.store(channel, name, {"": value})
        store("xfce4-panel", "/plugins/plugin-7", "weather")
        self.expect({"xkb-5", "pulseaudio-6", "weather-7"})
        store("xfce4-panel", "/plugins/plugin-7", "clock")
        self.expect(CONTROLS)
        for scale in (2, 1):  # Nothing but the agent follows it here.
            store("xsettings", "/Gdk/WindowScalingFactor", GLib.Variant("i", scale))
            scaled = {name: tuple(value * scale for value in frame) for name, frame in self.known.items()}
            wait(lambda s=scaled: self.controls() == s, what=f"scale {scale}")

    def test_a_stopped_panel_keeps_nobody_waiting(self):
        with stopped(self.desktop.processes["panel"].pid):
            for _ in range(3):
                self.assertEqual(self.controls(), self.known)

    def test_a_panel_that_ends_takes_its_controls_along(self):
        self.desktop.end("panel")
        self.expect(set())
        self.desktop.start_panel()
        self.expect(CONTROLS)

    def test_an_unchanged_panel_is_asked_for_its_tree_and_places_alone(self):
        panel = self.desktop.accessibility("xfce4-panel")
        asked = overheard(self.desktop.accessibility_address(), f"destination='{panel.name_of_bus}'")
        self.controls()
        settled(lambda: len(asked), 0.3)
        asked = [name for name in asked if name.startswith("Get")]  # The monitor itself hears NameLost as well.
        # Children of panel, window and box; places of the window and its plug-ins.
        self.assertEqual(sorted(asked), ["GetChildren"] * 3 + ["GetExtents"] * (1 + len(PLUGINS)))

    def test_the_agent_sleeps_while_nothing_happens(self):
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


class MuteAccessibility(DesktopCase):
    start = {"accessibility": False}

    def test_an_accessibility_bus_that_takes_connections_and_says_nothing_keeps_nobody_waiting(self):
        address = os.path.join(self.desktop.folder, "mute")
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(address)
            mute.listen()
            launcher = Peer(self.desktop, "launcher")
            launcher.own("org.a11y.Bus")
            launcher.ask(f"serve(GetAddress={str(('unix:path=' + address,))!r})")
            for _ in range(3):
                StatusControls.controls(self)


def switches(process):
    """How often the process' main thread has gone to sleep so far."""
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("voluntary_ctxt_switches"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""What the agent tells the real panel, and of it. Icons keep their places, and none is lost, however fast things
change; the status controls are told at once, whatever state the panel is in.
With ROUNDS and SEED in the environment, the rounds of quick changes are played as often as you like."""

import os
import random
import time

from gi.repository import GLib

from case import DesktopCase, Peer, stopped
from desktop import CELL, FRAME
from waiting import hold, settled, stays, wait

CONTROLS = {"xkb-5", "pulseaudio-6", "clock-7"}
RED, GREEN, BLUE, WHITE = "d00000", "00c000", "0000e0", "f0f0f0"
NAMES = {RED: "kept", GREEN: "marked", BLUE: "kept2", WHITE: "marked2"}


class News(DesktopCase):
    options = {"with_logind": False}

    @classmethod
    def prepare(cls):
        """Two items have the same Id, of which one is kept."""
        cls.programs, cls.requester = {color: cls.begin(color) for color in NAMES}, Peer(cls.desktop, "requester")
        for count, (color, program) in enumerate(cls.programs.items(), 1):
            program.show(color, "SameId" if color in (RED, GREEN) else color)
            wait(lambda count=count: len(cls.colors()) == count, 10, "the icon")
        hold(2.5)  # The agent counts at rest, and believes a count only once it has been right.
        cls.every = cls.colors()

    @classmethod
    def begin(cls, color):
        return Peer(cls.desktop, NAMES[color], SLOW="0.02")

    @classmethod
    def colors(cls):
        middle = 3 * ((CELL - 2 * FRAME) ** 2 + CELL - 2 * FRAME) // 2  # Of a square with three bytes a pixel.
        return [cell[middle:middle + 3].hex() for cell in cls.desktop.cells()]

    def expect_every_icon(self):
        wait(lambda: self.colors() == self.every, 3, "every icon in its place")

    def test_an_icon_that_the_panel_lost_is_back_within_a_second_of_the_next_news(self):
        self.programs[BLUE].lie(BLUE)
        wait(lambda: len(self.colors()) == 3, 3, "the icon being lost")
        self.requester.invalidate(self.requester.activate("kept"))
        self.expect_every_icon()

    def test_no_icon_is_lost_by_news_in_quick_succession(self):
        chance, tray = random.Random(os.environ.get("SEED", "1")), self.desktop.plug_in("libsystray.so")
        for number in range(int(os.environ.get("ROUNDS", "40"))):
            with self.subTest(number):
                self.play(chance)
                self.expect_every_icon()
        self.assertEqual(self.desktop.plug_in("libsystray.so"), tray, "the tray's plug-in fell")

    def play(self, chance):
        """Hides and shows within milliseconds, then kills a program and starts it again."""
        victim = chance.choice((BLUE, WHITE))
        spare, requester, assertion = self.begin(victim), self.requester, None
        for _ in range(chance.randint(2, 6)):
            assertion = requester.activate("kept", "kept2") if assertion is None else requester.invalidate(assertion)
            hold(chance.choice((0.001, 0.005, 0.01, 0.02, 0.05)))
        hold(chance.choice((0, 0.01, 0.1)))
        self.programs[victim].kill()
        hold(chance.choice((0, 0.005, 0.05)))
        self.programs[victim] = spare
        spare.show(victim, victim)
        if assertion is not None:
            requester.invalidate(assertion)


class StatusControls(DesktopCase):
    @classmethod
    def prepare(cls):
        Peer(cls.desktop, "foreign").show(RED, "Foreign")

    def controls(self):
        started = time.monotonic()
        tree = self.desktop.call_agent("Tree")
        self.assertLess(time.monotonic() - started, 0.2, "seconds that a scan waits")
        foreign = [process != tree[0][1] for _, process, *_ in tree]
        self.assertEqual(foreign, sorted(foreign), "whoever looks at so many elements only sees the controls")
        return {name.rpartition(".")[2]: frame for _, _, name, framed, frame in tree if framed and name}

    def expect(self, names):
        wait(lambda: set(self.controls()) == names, what=f"the controls {names}")

    def test_they_follow_the_panel_and_its_settings_and_keep_nobody_waiting(self):
        desktop = self.desktop
        self.expect(CONTROLS)
        known = settled(self.controls, 0.5, every=0.05)  # The panel gives what comes onto it its room in steps.
        self.assertEqual(tuple(known["clock-7"]), tuple(desktop.clock()))
        for scale in (2, 1):  # Nothing but the agent follows it here.
            desktop.store("xsettings", "/Gdk/", {"WindowScalingFactor": GLib.Variant("i", scale)})
            scaled = {name: tuple(value * scale for value in frame) for name, frame in known.items()}
            wait(lambda s=scaled: self.controls() == s, what=f"scale {scale}")
        with stopped(desktop.processes["panel"].pid):
            for _ in range(3):
                self.assertEqual(self.controls(), known)
        with stopped(desktop.process_of("org.a11y.Bus")):  # Whoever is asked anew where Accessibility is.
            desktop.store("xfce4-panel", "/panels/", {"dark-mode": True})
            stays(lambda: self.controls() == known, 3, "the controls")
        desktop.end("panel")
        self.expect(set())
        desktop.start_panel()
        self.expect(CONTROLS)

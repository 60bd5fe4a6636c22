"""What the agent tells the panel, and when: icons keep their places, and none is lost, however fast things change.
With ROUNDS and SEED in the environment, the rounds of quick changes are played as often as you like."""

import os
import random
import signal
import unittest

from case import DesktopCase, Peer
from desktop import CELL
from picture import Picture
from waiting import hold, stays, wait

RED, GREEN, BLUE, WHITE = "d00000", "00c000", "0000e0", "f0f0f0"


class NewsCase(DesktopCase):
    options = {"with_logind": False}

    def colors(self):
        x, y, width, height = self.desktop.tray_frame() or (0, 0, 0, 0)
        count = width // CELL
        if count == 0:
            return []
        row = Picture(self.desktop.root, x, y + height // 2, width, 1).data
        margin = (width - count * CELL) // 2
        middles = [4 * (margin + index * CELL + CELL // 2) for index in range(count)]
        return [row[at:at + 3][::-1].hex() for at in middles]

    def show(self, program, color, identifier=None):
        count = len(self.colors())
        program.show(color, identifier or color)
        wait(lambda: len(self.colors()) == count + 1, 10, "the icon")

    def hide_all_but(self, *applications):
        return self.desktop.call_agent("Activate", "(aias)", [], applications)

    def reveal(self, assertion):
        self.desktop.call_agent("Invalidate", "(u)", assertion)


class News(NewsCase):
    def setUp(self):
        self.programs = [Peer(self.desktop, name) for name in ("kept", "marked", "marked2")]
        self.addCleanup(lambda: wait(lambda: not self.colors(), what="no icon"))
        self.addCleanup(lambda: [program.kill() for program in self.programs])

    def test_items_with_one_id_come_back_in_their_order_whichever_of_them_were_hidden(self):
        kept, marked, marked2 = self.programs
        for program, color in ((kept, RED), (marked, GREEN), (kept, BLUE), (marked2, WHITE)):
            self.show(program, color, "SameId")
        hold(0.3)
        before = self.colors()
        names = {GREEN: "marked", WHITE: "marked2", RED: "kept", BLUE: "kept"}
        for hidden in ({GREEN, WHITE}, {GREEN}, {WHITE}, {RED, BLUE}) * 3:
            with self.subTest(hidden=hidden):
                assertion = self.hide_all_but(*(names[color] for color in before if color not in hidden))
                wait(lambda h=hidden: set(self.colors()) == set(before) - h, 3, "hidden")
                self.reveal(assertion)
                wait(lambda: self.colors() == before, 3, "revealed in order")
                stays(lambda: self.colors() == before, 0.2, "the order")

    def test_an_icon_that_the_panel_lost_is_back_within_a_second_of_the_next_news(self):
        for program, color in ((0, RED), (0, BLUE), (1, GREEN)):
            self.show(self.programs[program], color)
        hold(2.5)  # The agent counts at rest, and believes a count only once it has been right.
        before = self.colors()
        self.programs[0].lie(BLUE)
        wait(lambda: len(self.colors()) == 2, 3, "the icon being lost")
        self.reveal(self.hide_all_but("kept"))
        wait(lambda: self.colors() == before, 3, "every icon")


class Rounds(NewsCase):
    """Hides and shows within milliseconds, then kills a program and starts it again."""

    names = {RED: "kept", BLUE: "kept2", GREEN: "marked", WHITE: "marked2"}

    def begin(self, color):
        return Peer(self.desktop, self.names[color], SLOW="0.02")

    def test_no_icon_is_lost_by_news_in_quick_succession(self):
        chance = random.Random(os.environ.get("SEED", "1"))
        programs = {color: self.begin(color) for color in self.names}
        for color, program in programs.items():
            self.show(program, color)
        hold(1)
        every, tray = self.colors(), self.desktop.plug_in("libsystray.so")
        for number in range(int(os.environ.get("ROUNDS", "40"))):
            with self.subTest(number):
                self.play(programs, chance)
                wait(lambda: self.colors() == every, 3, "every icon in its place")
        self.assertEqual(self.desktop.plug_in("libsystray.so"), tray, "the tray's plug-in fell")

    def play(self, programs, chance):
        victim = chance.choice(list(self.names))
        spare, assertion = self.begin(victim), None
        for _ in range(chance.randint(2, 6)):
            assertion = self.hide_all_but("kept", "kept2") if assertion is None else self.reveal(assertion)
            hold(chance.choice((0.001, 0.005, 0.01, 0.02, 0.05)))
        hold(chance.choice((0, 0.01, 0.1)))
        programs[victim].kill()
        hold(chance.choice((0, 0.005, 0.05)))
        programs[victim] = spare
        spare.show(victim, victim)
        if assertion is not None:
            self.reveal(assertion)


class Takeover(NewsCase):
    start = {"agent": False}

    def test_an_agent_that_waited_shows_every_icon_once_the_panel_is_started_anew(self):
        desktop = self.desktop
        program = Peer(desktop, "early")
        for color in (RED, BLUE, GREEN):
            program.show(color, color)
        desktop.start_agent()
        program.show(WHITE, WHITE)
        # What the panel lists: while it starts, it may miss to show what registers with itself.
        wait(lambda: len(desktop.told_items()) == 4, 5, "what came while the agent waited")
        desktop.end("panel", signal.SIGKILL)
        desktop.start_panel()
        wait(lambda: set(self.colors()) == {RED, BLUE, GREEN, WHITE}, 10, "every icon")
        self.assertEqual(desktop.process_of("org.kde.StatusNotifierWatcher"), desktop.processes["agent"].pid)


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""What the agent tells the panel, and when: icons keep their places, and none is lost, however fast things change.

As a program, `test_news.py rounds NUMBER [SEED]` plays the rounds of quick changes as often as you like."""

import os
import random
import shutil
import signal
import subprocess
import sys
import time
import unittest

from gi.repository import GLib

from case import DesktopCase
from desktop import CELL, REPOSITORY, Desktop
from picture import Picture
from waiting import Timeout, hold, stays, wait

RED, GREEN, BLUE, WHITE = "d00000", "00c000", "0000e0", "f0f0f0"


class Program:
    """One that the agent takes for the application of this name."""

    def __init__(self, desktop, name, **environment):
        script = os.path.join(desktop.folder, name)
        shutil.copy(f"{REPOSITORY}/desktop/item.py", script)
        self.process = desktop.processes[f"item-{name}"] = subprocess.Popen(
            ["/usr/bin/python3", script], env={**desktop.environment, **environment}, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, text=True)
        self.process.stdout.readline()

    def say(self, *words):
        self.process.stdin.write(" ".join(words) + "\n")
        self.process.stdin.flush()
        assert self.process.stdout.readline() == "done\n", words

    def kill(self):
        self.process.kill()
        self.process.communicate()


def colors(desktop):
    frame = desktop.tray_frame()
    count = frame[2] // CELL if frame else 0
    if count == 0:
        return []
    row = Picture(desktop.root, frame[0], frame[1] + frame[3] // 2, frame[2], 1).data
    margin = (frame[2] - count * CELL) // 2
    middles = [4 * (margin + index * CELL + CELL // 2) for index in range(count)]
    return [row[at:at + 3][::-1].hex() for at in middles]


def agent(desktop, method, arguments):
    return desktop.bus.call_sync("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1",
                                 method, arguments, None, 0, 5000, None).unpack()


def hide_all_but(desktop, *applications):
    return agent(desktop, "Activate", GLib.Variant("(aias)", ([], applications)))[0]


def reveal(desktop, assertion):
    agent(desktop, "Invalidate", GLib.Variant("(u)", (assertion,)))


class Rounds:
    """Hides and shows within milliseconds, then kills a program and starts it again."""

    PROGRAMS = {RED: "kept", BLUE: "kept2", GREEN: "marked", WHITE: "marked2"}

    def __init__(self, desktop, seed):
        self.desktop, self.random, self.programs = desktop, random.Random(seed), {}
        for color in self.PROGRAMS:
            self.programs[color] = self.start(color)
            self.programs[color].say("show", color, color)
            wait(lambda n=len(self.programs): len(colors(desktop)) == n, 10, "the icon")
        hold(1)
        self.all = colors(desktop)

    def start(self, color):
        return Program(self.desktop, self.PROGRAMS[color], SLOW="0.02")

    def play(self):
        victim = self.random.choice(list(self.PROGRAMS))
        spare, assertion = self.start(victim), None
        for _ in range(self.random.randint(2, 6)):
            if assertion is None:
                assertion = hide_all_but(self.desktop, "kept", "kept2")
            else:
                assertion = reveal(self.desktop, assertion)
            hold(self.random.choice((0.001, 0.005, 0.01, 0.02, 0.05)))
        hold(self.random.choice((0, 0.01, 0.1)))
        self.programs[victim].kill()
        hold(self.random.choice((0, 0.005, 0.05)))
        self.programs[victim] = spare
        spare.say("show", victim, victim)
        if assertion is not None:
            reveal(self.desktop, assertion)
        wait(lambda: colors(self.desktop) == self.all, 3, "every icon in its place")

    def tray(self):
        return self.desktop.run(["pgrep", "-P", str(self.desktop.processes["panel"].pid), "-f", "libsystray"]).stdout


class News(DesktopCase):
    options = {"with_logind": False}

    def setUp(self):
        self.programs = [Program(self.desktop, name) for name in ("kept", "marked", "marked2")]
        self.addCleanup(lambda: [program.kill() for program in self.programs])

    def test_items_with_one_id_come_back_in_their_order_whichever_of_them_were_hidden(self):
        kept, marked, marked2 = self.programs
        for count, (program, color) in enumerate(((kept, RED), (marked, GREEN), (kept, BLUE), (marked2, WHITE))):
            program.say("show", color, "SameId")
            wait(lambda n=count + 1: len(colors(self.desktop)) == n, 5, "the icon")
        hold(0.3)
        before = colors(self.desktop)
        for hidden in ({GREEN, WHITE}, {GREEN}, {WHITE}, {RED, BLUE}) * 3:
            with self.subTest(hidden=hidden):
                names = {GREEN: "marked", WHITE: "marked2", RED: "kept", BLUE: "kept"}
                assertion = hide_all_but(self.desktop, *(names[color] for color in before if color not in hidden))
                wait(lambda h=hidden: set(colors(self.desktop)) == set(before) - h, 3, "hidden")
                reveal(self.desktop, assertion)
                wait(lambda: colors(self.desktop) == before, 3, "revealed in order")
                stays(lambda: colors(self.desktop) == before, 0.2, "the order")

    def test_an_icon_that_the_panel_lost_is_back_within_a_second_of_the_next_news(self):
        for color in (RED, BLUE):
            self.programs[0].say("show", color, color)
        self.programs[1].say("show", GREEN, GREEN)
        wait(lambda: len(colors(self.desktop)) == 3, 5, "the icons")
        hold(2.5)  # The agent counts at rest, and believes a count only once it has been right.
        before = colors(self.desktop)
        self.programs[0].say("lie", BLUE)
        wait(lambda: len(colors(self.desktop)) == 2, 3, "the icon being lost")
        reveal(self.desktop, hide_all_but(self.desktop, "kept"))
        wait(lambda: colors(self.desktop) == before, 3, "every icon")

    def test_no_icon_is_lost_by_news_in_quick_succession(self):
        self.doCleanups()
        rounds = Rounds(self.desktop, 1)
        tray = rounds.tray()
        for number in range(40):
            with self.subTest(number):
                rounds.play()
        self.assertEqual(rounds.tray(), tray, "the tray's plug-in fell")


class Takeover(DesktopCase):
    options, start = {"with_logind": False}, {"agent": False}

    def test_an_agent_that_waited_shows_every_icon_once_the_panel_is_started_anew(self):
        desktop = self.desktop
        program = Program(desktop, "early")
        # What the panel lists: while it starts, it may miss to show what registers with itself.
        known = lambda: len(desktop.watcher_property("RegisteredStatusNotifierItems"))
        for color in (RED, BLUE, GREEN):
            program.say("show", color, color)
        desktop.start_agent()
        program.say("show", WHITE, WHITE)
        wait(lambda: known() == 4, 5, "one that came while the agent waited")
        desktop.end("panel", signal.SIGKILL)
        desktop.start_panel()
        wait(lambda: set(colors(desktop)) == {RED, BLUE, GREEN, WHITE}, 10, "every icon")
        self.assertEqual(desktop.process_of("org.kde.StatusNotifierWatcher"), desktop.processes["agent"].pid)


def play(number, seed):
    with Desktop(with_logind=False) as desktop:
        desktop.start()
        rounds, lost, falls, since = Rounds(desktop, seed), 0, 0, time.monotonic()
        tray = rounds.tray()
        for _ in range(number):
            try:
                rounds.play()
            except Timeout as timeout:
                lost += 1
                print(timeout, colors(desktop), flush=True)
            falls, tray = falls + (rounds.tray() != tray), rounds.tray()
        print(f"{number} rounds, {lost} with a loss, {falls} falls of the plug-in, {time.monotonic() - since:.0f} s")


if __name__ == "__main__":
    if sys.argv[1:2] == ["rounds"]:
        play(int(sys.argv[2]), int((sys.argv[3:] or [1])[0]))
    else:
        unittest.main(verbosity=2)

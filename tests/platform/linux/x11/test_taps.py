"""The event tap on an X server with a window manager: which clicks it sees, and that each of the others, and each that
is given back, arrives where it was meant to, once."""

import os
import subprocess
import time
import unittest

from Xlib import Xatom
from Xlib.protocol import event

from desktop import Desktop, stopped
from probe import Probe
from waiting import hold, wait

LEFT_DOWN, LEFT_UP, RIGHT_DOWN, RIGHT_UP, TIMED_OUT, ENDED = 1, 2, 3, 4, 0xFFFFFFFE, 0xFFFFFFFF
DOCK = (0, 560, 800, 40)
REGION = (600, 562, 100, 36)
ON_REGION, BESIDE_REGION, ON_DESKTOP = (650, 580), (300, 580), (200, 200)
CLICK_LIMIT, VERDICT_LIMIT = 2.0, 1.0


def click(button, place):
    return [("down", button, place), ("up", button, place)]


class TapProgram:
    def __init__(self, desktop):
        self.process = subprocess.Popen([os.environ["ORVO_TAP_PROGRAM"]], env=desktop.environment, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.events = []  # Type, place and mark of each.
        self.say("regions", *REGION)

    def say(self, *words):
        self.process.stdin.write(" ".join(map(str, words)) + "\n")
        self.process.stdin.flush()
        while (line := self.process.stdout.readline()) != "done\n":
            assert line, f"the program ended: {self.process.wait()}"
            kind, x, y, mark = map(int, line.split())
            self.events.append((kind, (x, y), mark))
        return self.events


class Taps(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desktop = Desktop(size=(800, 600))
        cls.addClassCleanup(cls.desktop.forget)
        cls.desktop.start_server()
        cls.desktop.start_window_manager()
        cls.person = cls.desktop.person

    def setUp(self):
        self.dock, self.tap = Probe(self.desktop, DOCK), TapProgram(self.desktop)
        self.addCleanup(lambda: self.dock.close())
        self.addCleanup(lambda: self.assertEqual(self.tap.process.wait(5), 0))
        self.addCleanup(lambda: self.tap.process.stdin.close())

    def covers(self, dock=None):
        return self.desktop.input_only_windows(self.desktop.window((dock or self.dock).window.id))

    def expect_covered(self, dock=None):
        wait(lambda: len(self.covers(dock)) == 1, 5, "the cover")

    def expect_seen(self, *types):
        """What the tap has seen since it was asked last."""
        wait(lambda: len(self.tap.say()) >= len(types), 5, f"{len(types)} events")
        seen, self.tap.events = self.tap.events, []
        self.assertEqual([kind for kind, _, _ in seen], list(types))
        return seen

    def expect_clicks(self, expected, dock=None):
        """What a dock has been given since it was asked last."""
        dock = dock or self.dock
        wait(lambda: len(dock.read()) >= len(expected), 5, f"{expected} after {dock.buttons}")
        given, dock.buttons = dock.buttons, []
        self.assertEqual(given, expected)

    def expect_no_more(self, dock=None):
        """A click of the person beside all regions comes behind everything that was given before it."""
        self.person.click(*BESIDE_REGION)
        self.expect_clicks(click(1, BESIDE_REGION), dock)

    def catch(self, dock=None):
        """A click of which the tap has the press."""
        self.expect_covered(dock)
        self.person.click(*ON_REGION)
        self.expect_seen(LEFT_DOWN, LEFT_UP)

    def press(self):
        self.expect_covered()
        self.person.move(*ON_REGION)
        self.person.button(1, True)
        self.expect_seen(LEFT_DOWN)

    def test_no_click_that_is_given_ends_on_a_cover_that_is_wanted_back_at_once(self):
        for turn in range(40):
            self.catch()
            self.tap.say("passes", 1)
            if turn % 8:
                self.tap.say("post")  # Covers are wanted all the while.
            else:  # A window manager sees each click first, and may be slow to hand it on.
                self.person.move(*ON_DESKTOP)
                with stopped(self.desktop.processes["openbox"].pid):
                    self.tap.say("post")
                    hold(0.06)
            self.expect_clicks(click(1, ON_REGION))
            self.tap.say("passes", 0)
            self.tap.events.clear()

    def test_only_the_two_buttons_over_the_region_concern_the_tap_and_what_is_posted_comes_by_it_with_its_mark(self):
        # A plug-in of another program inside the panel: what falls through must fall to it.
        plugin = Probe(self.desktop, (590, 0, 120, 40), self.dock)
        self.addCleanup(plugin.close)
        self.expect_covered(plugin)
        # One by one: of clicks without a pause the server may lose some while a window manager looks at them.
        for button, place in ((2, ON_REGION), (1, (599, 580)), (1, (700, 580)), (3, (650, 561)), (1, (650, 598))):
            self.person.click(*place, button)
            self.expect_clicks(click(button, place), plugin)
        self.tap.say("passes", 1)
        self.person.click(*ON_REGION, 3)
        self.expect_clicks(click(3, ON_REGION), plugin)
        self.assertEqual(self.expect_seen(RIGHT_DOWN, RIGHT_UP)[0][1], ON_REGION)
        self.tap.say("passes", 0)
        self.catch()
        self.tap.say("post")
        self.assertEqual(self.expect_seen(LEFT_DOWN)[0][2], 42)
        self.expect_no_more()  # It was dropped.
        for word in ("hangs 1", "post", "invalidate", "hangs 0"):  # Nobody is left to be asked.
            self.tap.say(word)
        self.expect_clicks(click(1, ON_REGION), plugin)

    def test_a_click_may_be_held_for_long_but_comes_out_of_nowhere_for_nobody(self):
        self.press()
        self.tap.say("passes", 1)
        self.tap.say("post")
        hold(CLICK_LIMIT + 0.1)
        self.assertEqual(self.dock.read(), [])
        self.person.button(1, False)
        self.expect_clicks(click(1, ON_REGION))
        hold(CLICK_LIMIT + 0.1)
        self.tap.say("post")  # As after a stop.
        self.expect_seen(LEFT_DOWN, LEFT_UP, LEFT_DOWN)
        self.expect_no_more()

    def test_a_click_that_nobody_has_decided_when_the_tap_ends_is_given(self):
        self.expect_covered()
        self.tap.say("hangs", 1)
        self.person.click(*ON_REGION)
        wait(lambda: self.tap.say("asked"), 5, "a task for the main thread")
        self.tap.say("end")
        self.expect_clicks(click(1, ON_REGION))

    def test_a_hung_main_thread_loses_no_click_and_hears_of_the_time_out(self):
        self.expect_covered()
        self.tap.say("hangs", 1)
        pressed = self.person.click(*ON_REGION)
        self.expect_clicks(click(1, ON_REGION))
        self.assertGreaterEqual(time.monotonic() - pressed, VERDICT_LIMIT)
        self.assertEqual(self.covers(), [])
        self.tap.say("hangs", 0)
        self.expect_seen(TIMED_OUT)
        self.person.click(*ON_REGION)  # Disabled: passes without asking.
        self.expect_clicks(click(1, ON_REGION))
        self.tap.say("enable")
        self.catch()
        self.expect_no_more()

    def test_covers_follow_the_panel(self):
        self.press()
        self.dock.close()  # With a button held on its cover, whose release nobody is told.
        self.person.button(1, False)
        self.expect_seen(LEFT_UP)
        self.dock = Probe(self.desktop, DOCK)
        self.catch()
        self.tap.say("invalidate")
        wait(lambda: not self.covers(), 5, "the covers leaving")

    def test_a_click_on_a_control_is_told_where_it_was_and_given_where_it_is_or_to_nobody(self):
        def clock(x, window=DOCK, name="clock"):
            return name, window[0] + x, window[1] + 2, 100, 36, *window
        was, moved = clock(600), (clock(300), click(1, (350, 580)))  # As wide and high as the region.
        cases = {  # What is found at first, and what has happened meanwhile; what is found then, and what is given.
            "moved": ((), None, *moved),
            "moved on since it was read": (was, lambda plugin: plugin.window.configure(x=290) or plugin.read(), *moved),
            "gone": ((), None, clock(600, name="another"), []),
            "behind another window": ((), self.cover_the_region, was, []),
            "in a window that is gone": ((), None, clock(600, (0, 0, 30, 400)), []),
        }
        for name, (at_first, happens, found, given) in cases.items():
            with self.subTest(name):
                self.doCleanups()
                self.setUp()
                control = self.dock
                if at_first:
                    control = Probe(self.desktop, (590, 0, 120, 40), self.dock)
                    self.addCleanup(control.close)
                self.expect_covered(control)
                self.tap.say("note", *was)
                self.tap.say("regions", 10, 10, 50, 50)  # Beside every dock: no former cover is taken for the new one.
                wait(lambda d=control: not self.covers(d), 5, "no cover")
                self.tap.say("regions", *REGION)
                self.catch(control)
                self.tap.say("find", *at_first)
                if happens:
                    happens(control)
                self.tap.say("passes", 1)
                self.tap.say("post")
                self.expect_seen(LEFT_DOWN)
                hold(0.05)
                self.assertEqual(control.read(), [])
                self.tap.say("find", *found)
                self.expect_clicks(given, control)
                hold(0.05)  # The tap puts the pointer back, and the next click brings the dock to the front again.
                self.expect_no_more(control)
                self.assertEqual(self.dock.read(), [])

    def cover_the_region(self, _plugin):
        def in_front():
            return self.desktop.root.translate_coords(self.desktop.root, *ON_REGION).child
        before, other = in_front(), Probe(self.desktop, (600, 560, 200, 40))
        self.addCleanup(lambda: self.assertEqual(other.read(), []) or other.close())
        wait(lambda: in_front() != before, 5, "another window in front")

    def test_nobody_else_presses_or_takes_the_cover_away(self):
        self.expect_covered()
        cover, root = self.covers()[0], self.desktop.root
        forged = event.ButtonPress(detail=1, time=0, root=root, window=cover, same_screen=1, child=0, root_x=650,
                                   root_y=580, event_x=1, event_y=1, state=0)
        for _ in range(5000):
            cover.send_event(forged)
        for take_away in (lambda cover: cover.configure(x=0, y=0), lambda cover: cover.unmap()):
            take_away(self.covers()[0])
            self.desktop.display.sync()

            def caught():
                self.person.click(*ON_REGION, 3)
                return self.tap.say()
            wait(caught, 5, "a click on the cover")
            self.assertNotIn(LEFT_DOWN, [kind for kind, _, _ in self.tap.events])
            self.tap.events = []

    def test_whatever_another_client_says_of_windows_the_panel_is_guarded_and_by_the_next_tap_if_it_ends_this_one(self):
        self.catch()
        root, window = self.desktop.root, self.desktop.window(self.dock.window.id)
        kind, listed = map(self.desktop.display.intern_atom, ("_NET_WM_WINDOW_TYPE", "_NET_CLIENT_LIST"))
        types = window.get_full_property(kind, Xatom.ATOM).value
        for windows, told in (([window.id], []), ([root.id] * 5000 + [window.id], []), ([0x7000000], types)):
            with self.subTest(length=len(windows), types=told):
                window.change_property(kind, Xatom.ATOM, 32, told)
                root.change_property(listed, Xatom.WINDOW, 32, windows)
                self.desktop.display.sync()
                hold(0.1)  # Covers that go would be gone by then.
                self.catch()
        wait(self.covers, 5, "the cover")[0].kill_client()
        self.desktop.display.sync()
        self.expect_seen(ENDED)
        self.tap.say("enable")  # In vain, so that it makes another, which nobody has told of the panel.
        self.tap.say("regions", *REGION)
        self.catch()

    def test_a_stopped_tap_holds_up_no_other_click_and_repeats_nothing_once_it_goes_on(self):
        self.catch()  # By then it has heard how late it is by the server's clock.
        with stopped(self.tap.process.pid):
            self.person.click(*ON_REGION)
            self.expect_no_more()
            hold(CLICK_LIMIT + 0.1)
        wait(lambda: not self.covers(), 5, "the covers leaving")
        self.person.click(*ON_REGION, 3)
        self.expect_clicks(click(3, ON_REGION))

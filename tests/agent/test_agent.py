"""The agent on a bus of its own: whose items it counts and hides, for whom, and who cannot trouble it."""

import os
import shutil
import time
import unittest
from pathlib import Path

from case import Peer, stopped
from desktop import WATCHER, Desktop
from waiting import wait

ITEM = "/StatusNotifierItem"


class AgentCase(unittest.TestCase):
    """A bus of its own with the agent on it, for each test."""

    def setUp(self):
        self.desktop = Desktop(with_logind=False)
        self.addCleanup(self.desktop.forget)
        self.desktop.start_buses(accessibility=False)
        self.desktop.start_agent()
        wait(lambda: self.desktop.owner(WATCHER), what="the tray")

    def programs(self, *names):
        return [Peer(self.desktop, name) for name in names]

    def with_item(self, name, *command):
        started = Peer(self.desktop, name, *command)
        started.register(started.bus)
        return started

    def expect_told(self, *items, what="the items"):
        wait(lambda: self.desktop.told_items() == list(items), 5, what)


class Agent(AgentCase):
    def test_an_item_counts_once_however_it_registers(self):
        first, second = self.programs("first", "second")
        a, b, own = first.bus + ITEM, second.bus + ITEM, second.bus + "/own"
        first.own("org.kde.StatusNotifierItem-1-1")
        second.own("org.example.Second")
        # Of another connection's items, the one at the usual path alone.
        for text in (first.bus, "org.kde.StatusNotifierItem-1-1", ITEM, a, "org.example.Second", second.bus + "/forged",
                     "org.nobody"):
            self.assertIsNone(first.register(text))
        second.register("/own")
        self.assertEqual(self.desktop.call_agent("Items"), [
            (a, first.process.pid, "first"), (b, second.process.pid, "second"), (own, second.process.pid, "second")])
        self.assertEqual(self.desktop.told_items(), [a, b, own])
        second.release("org.example.Second")
        self.expect_told(a, own, what="the item whose process lives")
        first.release("org.kde.StatusNotifierItem-1-1")
        second.kill()
        self.expect_told(a)

    def test_the_panel_is_told_before_the_requester_is_answered_and_never_to_hide_orvos_own_item(self):
        own, one, two = (self.with_item(name) for name in ("local.orvo.Orvo", "one", "two"))
        orvo, = self.programs("requester")
        with stopped(two.process.pid):
            self.assertEqual(orvo.activate("one"), 1)
            self.assertEqual(self.desktop.told_items(), [own.bus + ITEM, one.bus + ITEM])
            # Concealed ones too: the question of a scan may overtake the end of the concealment.
            tree = [row[1] for row in self.desktop.call_agent("Tree")]
            self.assertEqual(tree[1:], [program.process.pid for program in (own, one, two)])
            # Replaced by a request that also hides the second: it must not be seen in between.
            wait(lambda: True)  # What has been told by now is heard.
            self.desktop.signals.clear()
            self.assertEqual((orvo.activate(), orvo.invalidate(1)), (2, None))
            self.with_item("newcomer")
            self.assertEqual(self.desktop.told_items(), [own.bus + ITEM])
            wait(lambda: True)
            told = [name for _, name, _ in self.desktop.signals if "Item" in name]
            self.assertEqual(told, ["StatusNotifierItemUnregistered"])

    def test_a_concealment_ends_with_its_requester_only(self):
        tray, (stranger, orvo) = self.with_item("tray"), self.programs("stranger", "requester")
        self.assertEqual(orvo.activate(), 1)
        self.assertEqual(stranger.invalidate(1), "org.freedesktop.DBus.Error.AccessDenied")
        stranger.kill()
        self.assertEqual(self.desktop.told_items(), [])
        self.assertIsNone(orvo.invalidate(1))
        self.assertEqual(orvo.activate(), 2, "the agent knows it by now")
        orvo.kill()
        self.expect_told(tray.bus + ITEM)
        for _ in range(5):  # Gone before the agent could watch it: nobody would tell.
            hasty, = self.programs("hasty")
            hasty.order("activate_many(1) or os._exit(0)")
            hasty.process.communicate()
        self.expect_told(tray.bus + ITEM)


class Hostile(AgentCase):
    """Whatever one program or file is like, the agent answers, stays small, and hides and shows the icons of others."""

    def test_nobody_and_nothing_holds_the_agent_up(self):
        for act in (self.files_that_are_none, self.panel_without_end, self.mute_in_the_queue, self.items_of_one,
                    self.requests_of_one, self.request_again_and_again):
            with self.subTest(act.__name__):
                self.doCleanups()
                self.setUp()
                self.expect_untroubled(act)

    def setUp(self):
        super().setUp()
        self.entries = self.desktop.folder_for("home", ".local", "share", "applications")
        Path(self.entries, "org.example.Good.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Good\nExec=good\n", "ascii")
        self.tray, (self.orvo, self.hostile) = self.with_item("tray"), self.programs("requester", "hostile")

    def expect_untroubled(self, act):
        weight, began = self.most_memory(), time.monotonic()
        act()
        acted = time.monotonic()
        self.desktop.call_agent("Tree")
        self.assertLess(time.monotonic() - acted, 1, "seconds until an answer")
        self.assertLess(acted - began, 20, "seconds of attack")
        self.assertLess(self.most_memory(), 2 * weight, "kilobytes")
        self.hostile.kill()
        item = self.tray.bus + ITEM
        wait(lambda: item in self.desktop.told_items(), 5, "the icon of a program that is none of this")
        assertion = self.orvo.activate("hostile")
        self.assertNotIn(item, self.desktop.told_items())
        self.orvo.invalidate(assertion)
        self.assertIn(item, self.desktop.told_items())

    def most_memory(self):
        with open(f"/proc/{self.desktop.processes['agent'].pid}/status", encoding="ascii") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmHWM"))

    def files_that_are_none(self):
        """Programs have an icon each, and the information of their bundles and what stands beside entries is a trap."""
        os.mkfifo(f"{self.entries}/pipe.desktop")
        for loop in "ab":
            os.symlink(".", f"{self.entries}/{loop}")
        Path(self.entries, "0.desktop").write_text("[Desktop Entry]\nType=Application\nName=" + 200_000 * "n", "ascii")
        for number in range(2000):
            os.symlink("0.desktop", f"{self.entries}/link{number}.desktop")
        for number, arrange in enumerate((
                os.mkfifo, lambda path: os.symlink("/dev/zero", path),
                lambda path: (Path(path).write_text("{}", "ascii"), os.truncate(path, 300_000_000)),
                lambda path: Path(path).write_text("[" * 100_000 + "]" * 100_000, "ascii"))):
            programs = self.desktop.folder_for(f"{number}.app", "bin")
            arrange(os.path.join(self.desktop.folder, f"{number}.app", "Info.json"))
            self.with_item("script", shutil.copy("/usr/bin/python3", f"{programs}/good"))
            self.assertEqual(self.desktop.call_agent("Items")[-1][2], "org.example.Good")

    def panel_without_end(self):
        """Any program may write the panel's settings, or be the panel, with windows on the bus of its choice."""
        for name in ("org.xfce.Panel", "org.xfce.Xfconf", "org.a11y.Bus", "org.a11y.atspi.Registry"):
            self.hostile.own(name)
        numbers = {"/panels": "[7] * 6000", "/panels/panel-7/plugin-ids": "range(6000)"}
        values = ", ".join(f"{name!r}: GLib.Variant('ai', {value})" for name, value in numbers.items())
        self.hostile.ask(f"serve(GetAllProperties=GLib.Variant('(a{{sv}})', ({{{values}}},)), GetProperty='(<1>,)', "
                         "GetAddress=str((ADDRESS,)).replace(' ', ''), GetAttributes=\"({'window-type': 'dock'},)\", "
                         "GetExtents='((0, 0, 9, 9),)', "
                         "GetChildren=GLib.Variant('(a(so))', ([(bus.get_unique_name(), '/w')] * 100_000,)))")

    def mute_in_the_queue(self):
        self.hostile.own(WATCHER, 0)
        with stopped(self.hostile.process.pid):
            self.with_item("late")
            assertion = self.orvo.activate("tray")
            self.expect_told(self.tray.bus + ITEM)
            self.orvo.invalidate(assertion)

    def items_of_one(self):
        self.hostile.register_many(20_000)
        self.assertEqual(len(self.desktop.told_items()), 1 + 32)
        self.expect_told_once()

    def requests_of_one(self):
        for _ in range(16):
            self.hostile.ask("activate(*map(str, range(9_000)))")
        self.hostile.activate_many(20_000)
        self.assertEqual(self.hostile.activate(), "org.freedesktop.DBus.Error.LimitsExceeded")
        self.expect_told_once()

    def request_again_and_again(self):
        person = self.with_item("local.orvo.Orvo", shutil.copy("/usr/bin/python3", self.desktop.folder_for("own")))
        self.hostile.activate()
        person.agent("EndOthers")
        self.assertEqual(self.hostile.activate(), "org.freedesktop.DBus.Error.LimitsExceeded")

    def expect_told_once(self):
        lines = [line for line in self.desktop.log("agent").splitlines() if "too many" in line]
        self.assertTrue(lines)
        self.assertEqual(sorted(set(lines)), sorted(lines))

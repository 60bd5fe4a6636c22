"""The agent on a bus of its own: whose items it counts and hides, for whom, and who cannot trouble it."""

import os
import shutil
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "desktop"))
from case import Peer  # noqa: E402
from desktop import AGENT, WATCHER, Desktop  # noqa: E402
from waiting import wait  # noqa: E402

ITEM = "/StatusNotifierItem"
MOST_ITEMS = 32  # of one peer


class AgentCase(unittest.TestCase):
    """A bus of its own with the agent on it, for each test."""

    def setUp(self):
        self.desktop = Desktop(with_logind=False)
        self.addCleanup(self.desktop.forget)
        self.addCleanup(self.desktop.stop)
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

    def heard(self):
        """What the panel was told since the last time, up to the agent's answer to a question asked now."""
        self.desktop.call_agent("Items")
        wait(lambda: True)
        told = [("+" if name.endswith("emRegistered") else "-") + item
                for _, name, (item, *_) in self.desktop.signals if "Item" in name]
        self.desktop.signals.clear()
        return told


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

    def test_the_panel_is_told_the_difference_before_the_requester_is_answered(self):
        one, two, stopped = (self.with_item(name) for name in ("one", "two", "stopped"))
        orvo, = self.programs("requester")
        a, b, c = (program.bus + ITEM for program in (one, two, stopped))
        self.assertEqual(self.heard(), ["+" + a, "+" + b, "+" + c])
        with stopped.stopped():
            self.assertEqual(orvo.activate("two"), 1)
            self.assertEqual(self.heard(), ["-" + a, "-" + c])
            # Concealed ones too: the question of a scan may overtake the end of the concealment.
            tree = [row[1] for row in self.desktop.call_agent("Tree")]
            self.assertEqual(tree[1:], [program.process.pid for program in (one, two, stopped)])
            # Replaced by a request that also hides the first: it must not be seen in between.
            self.assertEqual((orvo.activate("stopped"), orvo.invalidate(1)), (2, None))
            self.assertEqual(self.heard(), ["-" + b, "+" + c])
            four = self.with_item("four")
            self.assertEqual(self.heard(), [], "a newcomer that is not allowed")
            orvo.invalidate(2)
            self.assertEqual(self.heard(), ["+" + a, "+" + b, "+" + four.bus + ITEM])

    def test_the_item_of_the_agents_own_bundle_is_never_hidden(self):
        orvo, other = self.with_item("local.orvo.Orvo"), self.with_item("other")
        self.assertEqual(other.activate(), 1)
        self.assertEqual(self.desktop.told_items(), [orvo.bus + ITEM])

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
        def is_empty_of(size):
            return lambda path: (write(path, "{}"), os.truncate(path, size))
        rows = {
            "information that is a pipe": self.identified(os.mkfifo),
            "information without an end": self.identified(lambda path: os.symlink("/dev/zero", path)),
            "information of 300 MB": self.identified(is_empty_of(300_000_000)),
            "nested information": self.identified(lambda path: write(path, "[" * 100_000 + "]" * 100_000)),
            "entries that are none": self.identified(lambda _path: self.arrange_entries()),
            "a folder of large entries": self.large_entries,
            "a mute program where panels queue": self.mute_in_the_queue,
            "a false agent": lambda: self.hostile.own(AGENT, 2),
            "an Id of a megabyte": lambda: self.hostile.ask("describe(Id=('s', 'x' * 1_000_000)) or register('/x')"),
            "descriptors": self.descriptors,
            "object paths that the bus forbids": self.forbidden_paths,
            "20,000 items of one peer": self.items_of_one,
            "20,000 requests of one peer": self.requests_of_one,
        }
        for name, act in rows.items():
            with self.subTest(name):
                self.doCleanups()
                self.setUp()
                self.expect_untroubled(act)

    def setUp(self):
        super().setUp()
        self.entries = self.desktop.folder_for("home", ".local", "share", "applications")
        write(f"{self.entries}/org.example.Good.desktop", "[Desktop Entry]\nType=Application\nName=Good\nExec=good\n")
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

    def identified(self, arrange):
        """A program has an icon, and the information of its bundle is so arranged."""
        def act():
            programs = self.desktop.folder_for("A.app", "bin")
            arrange(os.path.join(self.desktop.folder, "A.app", "Info.json"))
            self.with_item("script", shutil.copy("/usr/bin/python3", f"{programs}/good"))
            self.assertEqual(self.desktop.call_agent("Items")[-1][2], "org.example.Good")
        return act

    def arrange_entries(self):
        os.mkfifo(f"{self.entries}/pipe.desktop")
        os.symlink("/dev/zero", f"{self.entries}/endless.desktop")
        for loop in "abcd":
            os.symlink(".", f"{self.entries}/{loop}")

    def large_entries(self):
        """Meanwhile the agent answers, and once it knows whose the item is, hides that."""
        write(f"{self.entries}/0.desktop", "[Desktop Entry]\n" + "".join(f"X-{key}=1\n" for key in range(8000)))
        for number in range(1, 1000):
            os.symlink("0.desktop", f"{self.entries}/{number}.desktop")
        assertion, (slow,) = self.orvo.activate("tray"), self.programs("slow")
        slow.order("register(bus.get_unique_name())")
        wait(lambda: self.desktop.told_items() and self.desktop.call_agent("Items")[-1][2] == "slow", 25)
        self.expect_told(self.tray.bus + ITEM)
        self.orvo.invalidate(assertion)

    def mute_in_the_queue(self):
        self.hostile.own(WATCHER, 0)
        with self.hostile.stopped():
            self.with_item("late")
            assertion = self.orvo.activate("tray")
            self.expect_told(self.tray.bus + ITEM)
            self.orvo.invalidate(assertion)

    def descriptors(self):
        self.assertEqual(self.hostile.ask(
            "bus.call_with_unix_fd_list_sync(AGENT, AGENT_PATH, AGENT_INTERFACE, 'Items', None, None, 0, -1,"
            " Gio.UnixFDList.new_from_array([os.dup(0)]), None)"), "org.freedesktop.DBus.Error.NotSupported")

    def forbidden_paths(self):
        for text in ("/a//b", "/a/", "/a-b", "/a.b", "nobody", "org.example.X/\xC4"):
            self.assertIsNone(self.hostile.register(text))
        self.assertEqual(self.desktop.told_items(), [self.tray.bus + ITEM])

    def items_of_one(self):
        self.hostile.register_many(20_000)
        self.assertEqual(len(self.desktop.told_items()), 1 + MOST_ITEMS)
        self.expect_told_once()

    def requests_of_one(self):
        self.hostile.activate_many(20_000)
        self.assertEqual(self.hostile.activate(), "org.freedesktop.DBus.Error.LimitsExceeded")
        self.expect_told_once()

    def expect_told_once(self):
        lines = [line for line in self.desktop.log("agent").splitlines() if "too many" in line]
        self.assertTrue(lines)
        self.assertEqual(sorted(set(lines)), sorted(lines))


def write(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    unittest.main(verbosity=2)

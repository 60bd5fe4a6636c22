"""What happens when parts of the session die, hang or refuse."""

import contextlib
import os
import signal
import stat
import time
import unittest

from case import DesktopCase
from probed import Probe
from waiting import hold, stays, wait

COPYQ = "com.github.hluk.copyq"
MARKED = [COPYQ, "pasystray"]


def center(frame):
    x, y, width, height = frame
    return x + width // 2, y + height // 2


class Faults(DesktopCase):
    @classmethod
    def prepare(cls):
        cls.window = Probe(cls.desktop, "window", "window")
        cls.desktop.start_all(hidden=MARKED)
        cls.all = cls.desktop.shown()

    def setUp(self):
        desktop = self.desktop
        if "agent" not in desktop.processes or desktop.processes["agent"].poll() is not None:
            self.fail("the agent is gone")
        if "orvo" not in desktop.processes or desktop.processes["orvo"].poll() is not None:
            desktop.processes.pop("orvo", None)
            desktop.start_orvo()
        wait(desktop.can_hide, what="hiding being offered")
        if desktop.is_hidden():
            desktop.click_arrow()
        wait(lambda: set(desktop.shown()) == set(self.all), what="every icon")

    @contextlib.contextmanager
    def stopped(self, process):
        os.kill(process, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(process, signal.SIGCONT)

    def test_a_killed_orvo_leaves_no_icon_hidden(self):
        desktop = self.desktop
        desktop.hide()
        since = len(desktop.signals)
        os.kill(desktop.orvo.pid, signal.SIGKILL)
        killed = time.monotonic()
        others = {name for name in self.all if name != "orvo"}
        wait(lambda: set(desktop.shown()) == others, 2, "every icon of the others")
        back = [moment - killed for moment, name, _ in desktop.signals[since:] if name.endswith("ItemRegistered")]
        self.assertEqual(len(back), len(MARKED))
        self.assertLess(max(back), 0.1)

    def test_a_stopped_orvo_freezes_neither_pointer_nor_panel(self):
        desktop = self.desktop
        desktop.hide()
        with self.stopped(desktop.orvo.pid):
            desktop.person.click(*center(desktop.clock()))
            desktop.click((40, 14))
            wait(desktop.pop_ups, 2, "the applications menu")
            desktop.person.key("Escape")
            wait(lambda: not desktop.pop_ups(), 2, "the menu being closed")
            since = time.monotonic()
            desktop.person.click(*center(desktop.frame_of(desktop.window_titled("window"))))
            wait(lambda: len(self.window.kinds(since)) == 2, 2, "the click in another program's window")
            for place in ((200, 300), (640, 600)):
                desktop.person.move(*place)
                self.assertEqual(desktop.person.pointer(), (place, 0))
        wait(lambda: not desktop.is_hidden(), 3, "the reveal after Orvo goes on")
        # A click that was not too old by then opens the calendar, whose grabs would take the next test's keys.
        desktop.rest()
        if desktop.pop_ups():
            desktop.person.click(*center(desktop.clock()))
            wait(lambda: not desktop.pop_ups(), 2, "the calendar being closed")

    def test_a_stopped_tray_program_delays_nobody(self):
        desktop = self.desktop
        with self.stopped(desktop.processes[COPYQ].pid):
            since = time.monotonic()
            desktop.hide()
            self.assertLess(time.monotonic() - since, 2)
            since = time.monotonic()
            desktop.click_arrow()
            wait(lambda: not desktop.is_hidden(), 2, "the reveal")
        wait(lambda: set(desktop.shown()) == set(self.all), what="every icon")

    def test_a_stopped_panel_delays_nobody(self):
        desktop = self.desktop
        panel = desktop.processes["panel"].pid
        desktop.hide()
        with self.stopped(panel):
            desktop.person.key("Control_L", "Alt_L", "Super_L", "b")
            wait(lambda: not desktop.is_hidden(), 2, "the reveal")
            self.assertEqual(desktop.run([desktop.program, "--diagnose"], limit=2).returncode, 0)
        wait(lambda: set(desktop.shown()) == set(self.all), what="every icon")

    def test_a_panel_that_dies_comes_back_as_it_was_and_its_clock_is_guarded(self):
        desktop = self.desktop
        rest = ["orvo-hidden" if name == "orvo" else name for name in self.all if name not in MARKED]
        desktop.hide_and_expect(rest)
        trailing = desktop.tray_trailing()
        desktop.end("panel", signal.SIGKILL)
        desktop.start_panel()
        desktop.expect_shown(rest, 10)
        # Its controls come one by one and push the icons about.
        wait(lambda: desktop.tray_trailing() == trailing, what="the panel's layout of before")
        desktop.reveal()
        desktop.expect_shown(self.all)
        wait(desktop.can_hide, what="hiding being offered")
        desktop.hide_and_expect(rest)
        desktop.person.click(*center(desktop.clock()))
        wait(desktop.pop_ups, what="the clock's calendar")
        desktop.away()
        desktop.expect_shown(self.all)
        desktop.person.click(*center(desktop.clock()))
        wait(lambda: not desktop.pop_ups(), what="the calendar being closed")

    def test_a_settings_file_that_cannot_be_written_is_told_and_harms_nothing(self):
        desktop = self.desktop
        folder = os.path.dirname(desktop.settings_file)
        desktop.end("orvo")
        before = desktop.remembered()
        os.rename(folder, folder + ".kept")
        with open(folder, "w", encoding="utf-8"):
            pass  # A file where the folder should be: not even root can write below it.
        try:
            desktop.start_orvo(ready=False)
            wait(desktop.settings_window, what="the settings window of a first start")
            wait(lambda: "settings" in desktop.log("orvo"), what="a line about the settings")
            desktop.mark("CopyQ")
            desktop.control("Your choices could not be saved: Not a directory")
            self.assertIsNone(desktop.orvo.poll())
        finally:
            desktop.end("orvo")
            os.unlink(folder)
            os.rename(folder + ".kept", folder)
        self.assertEqual(desktop.remembered(), before)

    def test_a_damaged_settings_file_is_kept_aside(self):
        desktop = self.desktop
        desktop.end("orvo")
        with open(desktop.settings_file, "rb+") as file:
            whole = file.read()
            file.truncate(len(whole) // 2)
        try:
            desktop.start_orvo(ready=False)
            wait(lambda: "cannot be read" in desktop.log("orvo"), what="a line about the settings")
            names = os.listdir(os.path.dirname(desktop.settings_file))
            self.assertTrue(any("damaged" in name for name in names), names)
        finally:
            desktop.end("orvo")
            with open(desktop.settings_file, "wb") as file:
                file.write(whole)

    def test_quitting_by_the_menu_or_by_a_signal_brings_every_icon_back(self):
        desktop = self.desktop
        others = {name for name in self.all if name != "orvo"}
        for quit_now in (lambda: desktop.choose("Quit Orvo"), lambda: os.kill(desktop.orvo.pid, signal.SIGTERM)):
            desktop.hide()
            orvo = desktop.orvo
            quit_now()
            wait(lambda: orvo.poll() is not None, 5, "the end of Orvo")
            self.assertEqual(orvo.returncode, 0)
            wait(lambda: set(desktop.shown()) == others, 2, "every icon of the others")
            desktop.processes.pop("orvo")
            desktop.start_orvo()


class LostParts(DesktopCase):
    """Each test takes away something for good, so each has a desktop of its own."""

    @classmethod
    def setUpClass(cls):
        pass

    @classmethod
    def tearDownClass(cls):
        pass

    def setUp(self):
        DesktopCase.setUpClass.__func__(type(self))
        self.addCleanup(DesktopCase.tearDownClass.__func__, type(self))

    def start_hidden(self):
        self.desktop.start_all(hidden=[COPYQ], programs=["org.rncbc.qmidinet", COPYQ])
        self.all = self.desktop.shown()
        self.desktop.hide()

    def expect_clean_end(self, what):
        orvo = self.desktop.orvo
        wait(lambda: orvo.poll() is not None, 6, f"the end of Orvo after {what}")
        self.assertGreaterEqual(orvo.returncode, 0, f"died of signal {-orvo.returncode} after {what}")
        self.assertTrue(self.desktop.log("orvo").strip(), "no line on standard error")
        self.assertEqual(self.desktop.remembered(), {COPYQ: "hidden"})

    def test_a_guardian_and_then_its_agent_killed_leave_every_icon_shown_once_and_orvo_alive(self):
        desktop = self.desktop
        desktop.start_all(hidden=MARKED)
        others = set(desktop.shown()) - {"orvo"}
        desktop.hide()
        first = self.guardians()
        os.kill(first[0], signal.SIGKILL)
        wait(lambda: len(self.guardians()) == 1 and self.guardians() != first, 2, "another guardian, and no zombie")
        desktop.end("agent", signal.SIGKILL)

        # Ayatana's programs may show an older kind of icon besides, made while they saw no watcher; its place may
        # show for a while what stood there before. So the panel's own list is what has to hold each just once.
        def all_once():
            return others < set(desktop.shown()) and \
                len(desktop.watcher_property("RegisteredStatusNotifierItems")) == len(others) + 1
        wait(lambda: not self.guardians(), 5, "the end of the guardian")
        wait(all_once, 3, "every icon and the arrow")
        desktop.rest()  # The panel moves its icons about for a moment.
        self.assertTrue(all_once(), desktop.shown())
        wait(lambda: not desktop.is_hidden(), what="the arrow saying visible")
        desktop.expect_told("The menu bar agent ended. All icons are visible.")
        self.assertIsNone(desktop.orvo.poll())

    def guardians(self):
        found = []
        for process in self.desktop.strays():
            with contextlib.suppress(OSError), open(f"/proc/{process}/comm", encoding="utf-8") as file:
                if file.read().strip() == "orvo-guardian":
                    found.append(process)
        return found

    def test_orvo_and_the_agent_end_in_order_when_the_session_bus_goes(self):
        self.start_hidden()
        os.kill(self.desktop.processes["bus"].pid, signal.SIGKILL)
        self.expect_clean_end("the session bus")
        wait(lambda: self.desktop.processes["agent"].poll() is not None, 5, "the end of the agent")
        for name in ("orvo", "agent"):
            self.assertIn("the session bus is gone", self.desktop.log(name))
        wait(lambda: not self.guardians(), 5, "the end of the guardian")

    def test_orvo_ends_in_order_when_the_x_server_goes(self):
        self.start_hidden()
        os.kill(self.desktop.processes["server"].pid, signal.SIGKILL)
        self.expect_clean_end("the X server")


class WithoutAccessibilityBus(DesktopCase):
    start = {"accessibility": False}

    def test_a_missing_accessibility_bus_leaves_orvo_alive_and_every_icon_shown(self):
        desktop = self.desktop
        desktop.start_item("org.rncbc.qmidinet")
        desktop.remember(["org.rncbc.qmidinet"])
        desktop.start_orvo(ready=False)
        stays(lambda: desktop.orvo.poll() is None, 4.0, "Orvo running")
        self.assertIn("Orvo: the accessibility bus does not answer", desktop.log("orvo"))
        self.assertIn("org.rncbc.qmidinet", desktop.shown())
        self.assertFalse(desktop.can_hide())


if __name__ == "__main__":
    unittest.main(verbosity=2)

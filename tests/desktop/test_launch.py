"""The ways of starting Orvo."""

import os
import re
import shutil
import unittest

from case import DesktopCase
import bus
from desktop import AGENT, ORVO, WATCHER
from waiting import stays, wait

INSTALL = os.path.join(os.path.dirname(__file__), "..", "..", "packaging", "linux", "install")
MARKED = ["com.github.hluk.copyq"]


class Launch(DesktopCase):
    @classmethod
    def prepare(cls):
        cls.desktop.start_all(hidden=MARKED, programs=["org.rncbc.qmidinet", "com.github.hluk.copyq"])
        cls.all = cls.desktop.shown()

    def diagnose(self, program, *arguments):
        answer = self.desktop.run([program, *arguments])
        self.assertEqual(answer.returncode, 0, answer.stderr)
        return answer.stdout.splitlines()

    def test_the_report_of_a_bundle_has_seven_lines(self):
        for arguments in (["--diagnose"], ["--other", "--diagnose", "more"]):
            lines = self.diagnose(self.desktop.program, *arguments)
            self.assertEqual(len(lines), 7, lines)
            labels = ["Orvo ", "OS: ", "Backend: ", "Accessibility: ", "Bundle: ", "Application path: ", "Desktop entry path: "]
            for line, label in zip(lines, labels):
                self.assertTrue(line.startswith(label), line)
            self.assertRegex(lines[0], r"^Orvo \d+\.\d+\.\d+$")
            self.assertEqual(lines[3:6], ["Accessibility: enabled", "Bundle: local.orvo.Orvo",
                                          f"Application path: {self.desktop.bundle}"])

    def test_an_installed_copy_is_known_to_the_desktop(self):
        home = os.path.join(self.desktop.home, "installed")
        own = ["env", f"HOME={home}", f"XDG_DATA_HOME={home}/data", f"XDG_CONFIG_HOME={home}/config"]
        bundle = f"{home}/Applications/Orvo.app"
        for _ in range(2):  # over nothing, then over itself
            answer = self.desktop.run([*own, os.path.abspath(INSTALL), self.desktop.bundle])
            self.assertEqual(answer.returncode, 0, answer.stderr)
        report = self.desktop.run([*own, f"{bundle}/bin/orvo", "--diagnose"]).stdout
        self.assertIn(f"Desktop entry path: {bundle}\n", report)
        for file in ("data/dbus-1/services/local.orvo.MenuBarAgent.service", "config/systemd/user/orvo-agent.service"):
            with open(f"{home}/{file}", encoding="utf-8") as text:
                self.assertIn(f"{bundle}/bin/orvo-agent", text.read())
        self.assertEqual(os.listdir(f"{home}/Applications"), ["Orvo.app"])

    def test_the_report_of_a_bare_program_has_six_lines(self):
        folder = os.path.join(self.desktop.home, "bare", "bin")
        os.makedirs(folder, exist_ok=True)
        program = shutil.copy(self.desktop.program, folder)
        lines = self.diagnose(program, "--diagnose")
        self.assertEqual(len(lines), 6, lines)
        self.assertEqual(lines[0], "Orvo 0.2.0")
        self.assertEqual(lines[4], "Bundle: unbundled command line process")

    def test_the_report_tells_a_desktop_without_accessibility(self):
        self.desktop.set_accessibility(False)
        try:
            self.assertIn("Accessibility: switched off", self.diagnose(self.desktop.program, "--diagnose"))
        finally:
            self.desktop.set_accessibility(True)

    def test_without_a_display_orvo_says_so_and_ends_and_its_report_needs_none(self):
        own = ["env", "DISPLAY=:32001"]
        self.diagnose(*own, self.desktop.program, "--diagnose")
        self.desktop.end("orvo")
        try:
            answer = self.desktop.run([*own, self.desktop.program])
            self.assertEqual((answer.returncode, answer.stderr), (1, "Orvo: there is no X server to run on; Orvo ends.\n"))
            with self.subTest("another program holds Orvo's name"):
                holder = bus.connect(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
                bus.call(holder, bus.DBUS, "/org/freedesktop/DBus", bus.DBUS + ".RequestName", "(su)", ORVO, 0)
                answer = self.desktop.run([self.desktop.program])
                self.assertEqual((answer.returncode, answer.stderr),
                                 (1, "Orvo: another program holds Orvo's name on the session bus; Orvo ends.\n"))
                holder.close_sync(None)
        finally:
            self.desktop.start_orvo()

    def test_a_second_launch_reveals_and_shows_the_settings_of_the_first(self):
        desktop = self.desktop
        wait(desktop.can_hide, what="hiding being offered")
        desktop.hide()
        answer = desktop.run([desktop.program])
        self.assertEqual((answer.returncode, answer.stdout), (0, ""))
        wait(desktop.settings_window, what="the settings window")
        wait(lambda: not desktop.is_hidden(), 2, "the reveal")
        stays(lambda: len(desktop.cells()) == len(self.all), 0.5, "one arrow")

    def test_a_copy_outside_the_applications_folders_hides_nothing(self):
        desktop = self.desktop
        installed = desktop.bundle
        desktop.end("orvo")
        try:
            desktop.install(os.path.join(desktop.home, "Downloads"))
            desktop.start_orvo(ready=False)
            wait(desktop.settings_window, what="the settings window")
            stays(lambda: not desktop.can_hide(), 1.0, "hiding not being offered")
        finally:
            desktop.end("orvo")
            desktop.bundle = installed
            desktop.start_orvo()


class WithoutParts(DesktopCase):
    start = {"agent": False}

    def expect_harmless(self):
        """Orvo runs, says what is missing, and every icon stays."""
        desktop = self.desktop
        report = desktop.run([desktop.program, "--diagnose"]).stdout
        self.assertIn("\nBackend: This desktop does not expose the expected menu bar protocol. "
                      "Icons will remain visible.\n", report)
        desktop.start_orvo(ready=False)
        try:
            desktop.expect_told("Orvo’s agent does not manage the tray")
            self.assertFalse(desktop.can_hide())
            self.assertEqual(set(desktop.shown()), {"orvo", "org.rncbc.qmidinet"})
        finally:
            desktop.end("orvo")

    def test_without_the_agent_or_the_framework_orvo_starts_and_every_icon_stays(self):
        desktop = self.desktop
        desktop.start_item("org.rncbc.qmidinet")
        with self.subTest("no agent"):
            self.expect_harmless()
        with self.subTest("no framework"):
            shutil.rmtree(os.path.join(desktop.bundle, "System"))
            self.expect_harmless()


class AgentStart(DesktopCase):
    start = {"agent": False, "panel": False}

    def test_the_bus_starts_an_installed_agent_and_a_second_one_says_so_and_ends(self):
        desktop = self.desktop
        self.assertEqual(desktop.run([os.path.abspath(INSTALL), desktop.bundle]).returncode, 0)
        bus.call(desktop.bus, bus.DBUS, "/org/freedesktop/DBus", bus.DBUS + ".StartServiceByName", "(su)", AGENT, 0)
        self.assertTrue(desktop.owner(AGENT))
        self.assertEqual(desktop.owner(AGENT), desktop.owner(WATCHER))
        second = desktop.run([os.path.join(desktop.bundle, "bin", "orvo-agent")])
        self.assertEqual((second.returncode, second.stderr), (1, "orvo-agent: another agent is running\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

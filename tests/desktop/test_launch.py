"""The ways of starting Orvo."""

import os
import shutil
import signal
import unittest

from case import DesktopCase, HidingCase, Peer, stopped
from accessible import STATE_ENABLED
from bus import call_bus
from desktop import AGENT, ORVO, WATCHER
from waiting import stays, wait

INSTALL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "packaging", "linux", "install"))


class Launch(HidingCase):
    def setUp(self):
        if self.desktop.orvo.poll() is not None:
            self.desktop.start_orvo()

    def diagnose(self, *command):
        answer = self.desktop.run([*command, "--diagnose"])
        self.assertEqual(answer.returncode, 0, answer.stderr)
        return answer.stdout.splitlines()

    def test_the_report_tells_of_bundle_desktop_and_accessibility_and_needs_no_display(self):
        program, bundle = self.desktop.program, self.desktop.bundle
        lines = self.diagnose("env", "DISPLAY=:32001", program)
        labels = ["Orvo 0.2.0", "OS: ", "Backend: ", "Accessibility: enabled", "Bundle: local.orvo.Orvo",
                  f"Application path: {bundle}", "Desktop entry path: "]
        self.assertEqual([line[:len(label)] for line, label in zip(lines, labels)], labels)
        self.assertEqual(len(lines), len(labels))
        bare = shutil.copy(program, self.desktop.folder_for("home", "bare", "bin"))
        self.assertEqual(self.diagnose(bare)[4:], ["Bundle: unbundled command line process",
                                              f"Application path: {os.path.dirname(bare)}"])
        self.desktop.set_accessibility(False)
        try:
            self.assertIn("Accessibility: switched off", self.diagnose(program))
        finally:
            self.desktop.set_accessibility(True)

    def test_an_installed_copy_is_known_to_the_desktop(self):
        home = os.path.join(self.desktop.home, "installed")
        own = ["env", f"HOME={home}", f"XDG_DATA_HOME={home}/data", f"XDG_CONFIG_HOME={home}/config"]
        bundle = f"{home}/Applications/Orvo.app"
        for _ in range(2):  # over nothing, then over itself
            answer = self.desktop.run([*own, INSTALL, self.desktop.bundle])
            self.assertEqual(answer.returncode, 0, answer.stderr)
        self.assertIn(f"Desktop entry path: {bundle}", self.diagnose(*own, f"{bundle}/bin/orvo"))
        for file in ("data/dbus-1/services/local.orvo.MenuBarAgent.service", "config/systemd/user/orvo-agent.service"):
            with open(f"{home}/{file}", encoding="utf-8") as text:
                self.assertIn(f"{bundle}/bin/orvo-agent", text.read())
        self.assertEqual(os.listdir(f"{home}/Applications"), ["Orvo.app"])

    def test_where_orvo_cannot_run_it_says_so_and_ends(self):
        self.desktop.end("orvo")
        try:
            self.expect_refused("there is no X server to run on", "env", "DISPLAY=:32001")
            holder = Peer(self.desktop, "holder")
            holder.own(ORVO)
            self.expect_refused("another program holds Orvo's name on the session bus")
            holder.kill()
        finally:
            self.desktop.start_orvo()

    def expect_refused(self, reason, *prefix):
        answer = self.desktop.run([*prefix, self.desktop.program])
        self.assertEqual((answer.returncode, answer.stderr), (1, f"Orvo: {reason}; Orvo ends.\n"))

    def test_a_second_launch_reveals_and_shows_the_settings_of_the_first(self):
        desktop = self.desktop
        wait(desktop.can_hide, what="hiding being offered")
        desktop.hide()
        answer = desktop.run([desktop.program])
        self.assertEqual((answer.returncode, answer.stdout), (0, ""))
        wait(desktop.settings_window, what="the settings window")
        wait(lambda: not desktop.is_hidden(), 2, "the reveal")
        stays(lambda: len(desktop.cells()) == len(self.all), 0.5, "one arrow")


class WithoutAgent(DesktopCase):
    start = {"agent": False}

    def test_orvo_says_what_is_missing_and_takes_the_tray_over_when_asked(self):
        desktop = self.desktop
        desktop.start_item("org.rncbc.qmidinet")
        report = desktop.run([desktop.program, "--diagnose"]).stdout
        self.assertIn("\nBackend: This desktop does not expose the expected menu bar protocol. "
                      "Icons will remain visible.\n", report)
        bare = shutil.copytree(desktop.bundle, os.path.join(desktop.home, "Orvo.app"))
        shutil.rmtree(os.path.join(bare, "System"))
        self.assertIn(report.splitlines()[2], desktop.run([f"{bare}/bin/orvo", "--diagnose"]).stdout)
        desktop.remember(["org.rncbc.qmidinet"])
        desktop.start_orvo(ready=False)
        desktop.expect_told("Orvo’s agent does not manage the tray")
        self.assertFalse(desktop.can_hide())
        self.take_over()
        desktop.control("Orvo could not take over the tray. Orvo’s agent does not answer. "
                        "Install Orvo again, then log in.")
        self.assertEqual(set(desktop.shown()), {"orvo", "org.rncbc.qmidinet"})
        desktop.start_agent()
        with stopped(desktop.process_of(WATCHER)):
            self.take_over()
            desktop.control("Orvo could not take over the tray. The program that manages the tray does not answer.", 5)
        process = desktop.orvo.pid
        self.take_over()
        wait(desktop.can_hide, 20, "hiding being offered")
        wait(desktop.settings_window, what="the settings of the Orvo that started anew")
        self.assertEqual(desktop.process_of(ORVO), process)
        wait(lambda: set(desktop.shown()) == {"orvo", "org.rncbc.qmidinet"}, what="every icon, once")
        desktop.hide_and_expect(["orvo-hidden"])
        desktop.reveal()
        # A later agent finds the panel first as well; this time Orvo knows that icons can be hidden.
        desktop.end("agent", signal.SIGKILL)
        desktop.start_agent()
        self.take_over()
        wait(lambda: desktop.owner(WATCHER) == desktop.owner(AGENT), what="the tray being taken over")
        wait(lambda: not desktop.shown_control("Take Over"), what="the card leaving")

    def take_over(self):
        wait(lambda: self.desktop.control("Take Over").has(STATE_ENABLED), what="the button")
        self.desktop.click(self.desktop.control("Take Over").center())


class AgentStart(DesktopCase):
    start = {"agent": False, "panel": False}

    def test_the_bus_starts_an_installed_agent_and_a_second_one_says_so_and_ends(self):
        desktop = self.desktop
        self.assertEqual(desktop.run([INSTALL, desktop.bundle]).returncode, 0)
        call_bus(desktop.bus, "StartServiceByName", "(su)", AGENT, 0)
        wait(lambda: desktop.owner(AGENT) and desktop.owner(AGENT) == desktop.owner(WATCHER), 5, "both names")
        second = desktop.run([os.path.join(desktop.bundle, "bin", "orvo-agent")])
        self.assertEqual((second.returncode, second.stderr), (1, "orvo-agent: another agent is running\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

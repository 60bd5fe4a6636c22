"""The ways of starting Orvo, and what happens when parts of the session go for good, or never come."""

import os
import shutil
import signal
import socket
import time
from pathlib import Path

from case import QMIDINET, DesktopCase, HidingCase, Peer, stopped
from bus import call_bus
from desktop import AGENT, ORVO, REPOSITORY, WATCHER
from waiting import stays, wait


class Launch(HidingCase):
    def diagnose(self, *command):
        return self.desktop.told_by([*command, "--diagnose"]).splitlines()

    def test_the_report_tells_of_bundle_desktop_and_accessibility_and_needs_no_display(self):
        program, bundle = self.desktop.program, self.desktop.bundle
        lines = self.diagnose("env", "DISPLAY=:32001", program)
        labels = ["Orvo 0.2.0", "OS: Debian GNU/Linux", "Backend: ", "Accessibility: enabled",
                  "Bundle: local.orvo.Orvo", f"Application path: {bundle}", "Desktop entry path: "]
        self.assertEqual([line[:len(label)] for line, label in zip(lines, labels, strict=True)], labels)
        link = os.path.join(self.desktop.home, "link")
        os.symlink(program, link)
        for started in ([link], ["bash", "-c", f'exec -a /bin/sh {program} "$0"']):  # The name is of another program.
            self.assertEqual(self.diagnose(*started)[4:], lines[4:])
        bare = shutil.copy(program, self.desktop.folder_for("home", "bare.app", "bin"))
        for information in ("", "{", "[]", '{"CFBundleIdentifier": 7}'):
            Path(self.desktop.home, "bare.app", "Info.json").write_text(information, "ascii")
            self.assertEqual(self.diagnose(bare)[4], "Bundle: unbundled command line process")
        self.addCleanup(self.desktop.set_accessibility, True)
        self.desktop.set_accessibility(False)
        self.assertIn("Accessibility: switched off", self.diagnose(program))

    def test_where_orvo_cannot_run_it_says_so_and_ends(self):
        self.desktop.end("orvo")
        self.addCleanup(self.desktop.start_orvo)
        holder = Peer(self.desktop, "holder")
        self.addCleanup(holder.kill)
        holder.own(ORVO)
        holder.ask("serve(Activate='()')")  # As a copy of Orvo's does.
        for reason, display in (("there is no X server to run on", ":32001"),
                                ("another program holds Orvo's name on the session bus", self.desktop.display_name)):
            answer = self.desktop.run(["env", f"DISPLAY={display}", self.desktop.program])
            self.assertEqual((answer.returncode, answer.stderr), (1, f"Orvo: {reason}; Orvo ends.\n"))

    def test_a_second_launch_reveals_and_shows_the_settings_of_the_first(self):
        desktop = self.desktop
        desktop.hide()
        self.assertEqual(desktop.told_by([desktop.program]), "")
        wait(desktop.settings_window, what="the settings window")
        wait(lambda: not desktop.is_hidden(), 2, "the reveal")
        stays(lambda: len(desktop.cells()) == len(self.all), 0.5, "one arrow")

    def test_who_is_slow_while_orvo_starts_counts_once_it_answers_and_so_does_a_home_behind_a_link(self):
        os.symlink(self.desktop.home, home := f"{self.desktop.folder}/link")
        for name in ("org.a11y.Bus", AGENT):
            with self.subTest(name):
                self.desktop.end("orvo")
                with stopped(self.desktop.process_of(name)):
                    self.desktop.spawn("orvo", [self.desktop.program, "-platform", "none"], HOME=home)  # None is Qt's.
                    wait(lambda: self.desktop.owner(ORVO), what="Orvo's name")
                wait(self.desktop.can_hide, 20, "hiding being offered")

    def test_every_way_out_shows_the_icons(self):
        for number in (signal.SIGINT, signal.SIGHUP):
            self.hide()
            self.assertEqual(self.desktop.end("orvo", number), 0)
            self.desktop.expect_shown([name for name in self.all if name != "orvo"])
            self.desktop.start_orvo()


class WithoutAgent(DesktopCase):
    start = {"agent": False}

    def test_orvo_says_what_is_missing_and_takes_the_tray_over_when_asked(self):
        desktop = self.desktop
        desktop.start_item(QMIDINET)
        bare = shutil.copytree(desktop.bundle, os.path.join(desktop.home, "Orvo.app"))
        shutil.rmtree(os.path.join(bare, "System"))
        for bundle in (desktop.bundle, bare):
            self.assertIn("\nBackend: Orvo’s agent does not manage the tray. Icons will remain visible.\n",
                          desktop.run([f"{bundle}/bin/orvo", "--diagnose"]).stdout)
        desktop.remember([QMIDINET])
        desktop.start_orvo(ready=False)
        desktop.expect_told("Orvo’s agent does not manage the tray")
        self.assertFalse(desktop.can_hide())
        desktop.press("Take Over")
        desktop.control("Orvo could not take over the tray. Orvo’s agent does not answer. "
                        "Install Orvo again, then log in.")
        desktop.start_agent()
        with stopped(desktop.process_of(WATCHER)):
            desktop.press("Take Over")
            desktop.control("Orvo could not take over the tray. The program that manages the tray does not answer.", 5)
        process = desktop.orvo.pid
        desktop.press("Take Over")
        wait(desktop.can_hide, 20, "hiding being offered")
        wait(desktop.settings_window, what="the settings of the Orvo that started anew")
        self.assertEqual(desktop.process_of(ORVO), process)
        wait(lambda: set(desktop.shown()) == {"orvo", QMIDINET}, what="every icon, once")
        desktop.hide_and_expect(["orvo-hidden"])
        desktop.reveal()
        wait(lambda: not desktop.shown_control("Take Over"), what="the card leaving")
        desktop.end("agent")
        desktop.control("Take Over")


class AgentStart(DesktopCase):
    start = {"agent": False, "panel": False}

    def test_the_bus_starts_the_agent_of_an_installed_copy_and_a_second_one_says_so_and_ends(self):
        desktop, bundle = self.desktop, os.path.join(self.desktop.home, "Applications", "Orvo.app")
        desktop.bundle = shutil.move(desktop.bundle, os.path.join(desktop.home, "Orvo.app"))
        install = [os.path.join(REPOSITORY, "packaging", "linux", "install"), desktop.bundle, "Applications/"]
        session = Path(desktop.home, ".xsessionrc")
        session.write_text("export EDITOR=vi", "ascii")  # Without an end of its line.
        desktop.told_by(install)
        self.assertEqual(session.read_text("ascii").splitlines()[0], "export EDITOR=vi")
        shutil.copy("/bin/sleep", f"{bundle}/bin/orvo")
        copy = desktop.spawn("copy", [f"{bundle}/bin/orvo", "60"])
        desktop.told_by(install)  # Over itself, while it runs.
        self.assertEqual(copy.poll(), -signal.SIGTERM)
        self.assertEqual(os.listdir(os.path.dirname(bundle)), ["Orvo.app"])
        self.assertIn(f"Desktop entry path: {bundle}\n", desktop.run([f"{bundle}/bin/orvo", "--diagnose"]).stdout)
        call_bus(desktop.bus, "StartServiceByName", "(su)", AGENT, 0)
        wait(lambda: desktop.owner(AGENT) and desktop.owner(AGENT) == desktop.owner(WATCHER), 5, "both names")
        self.assertEqual(os.readlink(f"/proc/{desktop.process_of(AGENT)}/exe"), f"{bundle}/bin/orvo-agent")
        second = desktop.run([f"{bundle}/bin/orvo-agent"])
        self.assertEqual((second.returncode, second.stderr), (1, "orvo-agent: another agent is running\n"))


class WithoutServer(HidingCase):
    part, line, programs_to_end = "server", r"\S", ["orvo"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        self.hide()
        os.kill(self.desktop.processes[self.part].pid, signal.SIGKILL)
        for name in self.programs_to_end:
            self.assertGreaterEqual(self.desktop.processes[name].wait(6), 0, "died of a signal")
            self.assertRegex(self.desktop.log(name), self.line)
        self.assertEqual(self.desktop.remembered(), dict.fromkeys(self.marked, "hidden"))


class WithoutSessionBus(WithoutServer):
    part, line, programs_to_end = "bus", "the session bus is gone", ["orvo", "agent"]

    def test_what_needs_it_ends_in_order_and_says_so(self):
        super().test_what_needs_it_ends_in_order_and_says_so()
        wait(lambda: not self.desktop.running(self.desktop.bundle), 5, "the end of the guardian")


class WithoutAccessibilityBus(DesktopCase):
    start = {"accessibility": False}

    def test_orvo_lives_without_its_window_too_every_icon_is_shown_and_a_mute_bus_keeps_nobody_waiting(self):
        desktop = self.desktop
        os.remove(f"{desktop.bundle}/lib/liborvo-settings.so")
        desktop.start_all(hidden=[QMIDINET], programs=[QMIDINET], ready=False)
        stays(lambda: desktop.orvo.poll() is None, 4.0, "Orvo running")
        self.assertIn(QMIDINET, desktop.shown())
        self.assertFalse(desktop.can_hide())
        desktop.choose("Settings…")
        wait(lambda: "could not be loaded" in desktop.log("orvo"), what="what became of the window")
        address = os.path.join(desktop.folder, "mute")
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(address)
            mute.listen()
            launcher = Peer(desktop, "launcher")
            launcher.own("org.a11y.Bus")
            launcher.ask(f"serve(GetAddress={str(('unix:path=' + address,))!r})")
            for _ in range(3):
                asked = time.monotonic()
                desktop.call_agent("Tree")
                self.assertLess(time.monotonic() - asked, 0.2)
            launcher.kill()

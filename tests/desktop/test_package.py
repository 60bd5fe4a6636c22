"""The Debian package on a private root: logins as a display manager starts them, a session of Xfce from cold, an
upgrade and a removal; without a service manager of the person's and with one."""

import contextlib
import glob
import os
import sys
import time
import unittest
from pathlib import Path

import psutil
from Xlib import error

from case import QMIDINET, write_program
import private_root
from desktop import AGENT, REPOSITORY, WATCHER
from session import OrvoDesktop
from waiting import settled, wait

PACKAGES = glob.glob(f"{REPOSITORY}/build/package/orvo_*.deb")
BUNDLE = "/usr/lib/orvo/Orvo.app"


def outside():
    """Runs this file on the private root, once for each kind of session; gives the exit status."""
    if len(PACKAGES) != 1 or not private_root.allowed():
        print("skipped: it takes a package, which scripts/package builds, root, and namespaces")
        return 77  # As CMake knows a test that was skipped.
    command, groups = [sys.executable, os.path.abspath(__file__)], private_root.control_groups()
    status = private_root.run([*command, "plain"])
    if groups:
        return private_root.run([*command, "managed"], groups) or status
    print("skipped: a session with a service manager, for which nobody may make a control group here")
    return status


class XfceSession(OrvoDesktop):
    """A session whose parts start each other, as after a login."""

    def __init__(self, managed):
        super().__init__()
        self.environment.update(XDG_RUNTIME_DIR=f"/run/user/{os.getuid()}", PATH="/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin")
        os.makedirs(self.environment["XDG_RUNTIME_DIR"], mode=0o700)
        self.start_server()
        if managed:
            private_root.expect_own_groups()
            os.makedirs("/run/systemd/system")  # Stands for a machine that was started by the service manager.
            self.spawn("manager", ["/lib/systemd/systemd", "--user"])
            wait(lambda: os.path.exists(f"{self.environment['XDG_RUNTIME_DIR']}/bus"), what="the service manager's bus")

    def log_in(self):
        self.spawn("session", ["/etc/X11/Xsession", "startxfce4"])
        session = wait(lambda: self.process_called("xfce4-session"), 20, "the session")
        address = self.environment["DBUS_SESSION_BUS_ADDRESS"] = psutil.Process(session).environ()["DBUS_SESSION_BUS_ADDRESS"]
        self.bus = self._connect(address)
        self.processes["panel"] = psutil.Process(wait(lambda: self.process_called("xfce4-panel"), 20, "the panel"))
        wait(self.tray_frame, 30, "the panel's tray")
        self.set_accessibility(True)

    def process_called(self, name):
        return next(map(int, self.run(["pgrep", "--exact", name]).stdout.split()), None)

    def tray(self):
        """Its width and its picture, at rest and with room for an icon."""
        def now():
            with contextlib.suppress(error.BadMatch, TypeError):  # The panel moves it or hides it.
                _, _, width, height = frame = self.tray_frame()
                return width >= height and (width, self.picture(*frame))
        return settled(now, 0.5, 10, "the tray")


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desktop = XfceSession(sys.argv[1] == "managed")
        cls.dpkg("--install", *PACKAGES)

    @classmethod
    def dpkg(cls, *arguments):
        return cls.desktop.told_by(["dpkg", *arguments], 120)

    def log_in_to(self, name):
        """A login to a session that only asks for the agent: where its program is, or nothing, and how long it took."""
        program, answer = f"/usr/local/bin/{name}", f"{self.desktop.home}/answer"
        write_program(program, "dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / "
                      f"org.freedesktop.DBus.NameHasOwner string:{AGENT} >{answer}\n"
                      f"readlink /proc/$(pgrep --exact --newest orvo-agent)/exe >>{answer}")
        begin = time.monotonic()
        self.desktop.run(["env", "-u", "DBUS_SESSION_BUS_ADDRESS", "/etc/X11/Xsession", name])
        took = time.monotonic() - begin
        os.remove(program)
        has_name, *program = Path(answer).read_text("ascii").splitlines()
        return program[0] if "true" in has_name else "", took

    def test_only_a_session_of_xfce_waits_for_the_agent_and_for_two_seconds_at_most(self):
        agent = f"{BUNDLE}/bin/orvo-agent"
        here, usual = self.log_in_to("othersession")
        self.assertEqual(here, "")
        for _ in range(2):  # The second meets the first one's agent, where that outlives its session.
            self.assertEqual(self.log_in_to("startxfce4")[0], agent)
        os.rename(agent, agent + ".kept")
        for command in ("exec sleep 60", "exit 1"):
            with self.subTest(command):
                write_program(agent, command)
                here, took = self.log_in_to("startxfce4")
                self.assertEqual(here, "")
                self.assertLess(took, usual + 2.2)
        os.replace(agent + ".kept", agent)
        self.desktop.run(["systemctl", "--user", "reset-failed"])

    def test_the_way_from_a_login_to_the_removal(self):
        desktop = self.desktop
        desktop.log_in()
        self.assertTrue(desktop.owner(AGENT))
        self.assertEqual(desktop.owner(WATCHER), desktop.owner(AGENT), "the panel was first")
        desktop.spawn("item", ["qmidinet"])
        wait(desktop.told_items, what="the program's icon")
        with_item = desktop.tray()
        desktop.remember(hidden=[QMIDINET])
        visible = self.hide(with_item)
        desktop.choose(desktop.menu()[0][1])
        wait(lambda: desktop.tray() == visible, what="the icon in its place")
        self.hide(with_item)
        with self.subTest("upgrade"):
            self.dpkg("--install", *PACKAGES)
            wait(lambda: desktop.tray() == with_item, what="the icon without the arrow")
            self.assertEqual({os.path.basename(program) for program in desktop.running(BUNDLE)}, {"orvo-agent (deleted)"})
        self.hide(with_item)
        files = [file for file in self.dpkg("--listfiles", "orvo").split("\n") if os.path.isfile(file)]
        self.dpkg("--purge", "orvo")
        self.assertEqual(desktop.running(BUNDLE), [])
        wait(lambda: desktop.tray() == with_item, what="the icon, from the panel itself")
        self.assertEqual([file for file in files if os.path.exists(file)], [])

    def test_then_a_copy_of_ones_own_comes_before_the_package(self):
        self.dpkg("--install", *PACKAGES)
        self.desktop.told_by([f"{REPOSITORY}/packaging/linux/install", self.desktop.bundle])
        self.assertEqual(self.log_in_to("startxfce4")[0], f"{self.desktop.home}/Applications/Orvo.app/bin/orvo-agent")

    def hide(self, with_item):
        """Starts Orvo where it does not run, and hides; gives the tray's picture before."""
        desktop = self.desktop
        if "orvo" not in desktop.processes or desktop.orvo.poll() is not None:
            desktop.spawn("orvo", ["orvo"])
            wait(desktop.can_hide, 20, "hiding being offered")
        visible = wait(lambda: (now := desktop.tray()) != with_item and now, what="the arrow")
        desktop.choose(desktop.menu()[0][1])
        wait(desktop.is_hidden, what="the arrow saying hidden")
        wait(lambda: desktop.tray()[0] < visible[0], what="the icon leaving")
        return visible


if __name__ == "__main__":
    if len(sys.argv) == 1:
        sys.exit(outside())
    unittest.main(argv=sys.argv[:1], verbosity=2)

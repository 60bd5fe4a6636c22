"""What the whole-desktop tests share: one desktop a class, its logs kept when a test fails."""

import contextlib
import json
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from desktop import PROGRAMS, REPOSITORY, center, stopped  # noqa: F401
from session import OrvoDesktop
from waiting import wait

COPYQ, PASYSTRAY, QMIDINET = "com.github.hluk.copyq", "pasystray", "org.rncbc.qmidinet"


def write_program(path, commands):
    Path(path).write_text(f"#!/bin/sh\n{commands}\n", "ascii")
    os.chmod(path, 0o755)


class Peer:
    """A program on the session bus that the agent takes for the application of this name (see peer.py)."""

    def __init__(self, desktop, name, interpreter="/usr/bin/python3", **environment):
        script = shutil.copy(f"{REPOSITORY}/tests/desktop/peer.py", os.path.join(desktop.folder, name))
        self.process = desktop.processes[f"peer-{name}"] = subprocess.Popen(
            [interpreter, script], env={**desktop.environment, "PYTHONPATH": os.environ["PYTHONPATH"], **environment},
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.bus = self.ask("bus.get_unique_name()")

    def order(self, expression):
        self.process.stdin.write(expression + "\n")
        self.process.stdin.flush()

    def ask(self, expression):
        """The value of an expression in the program, or the name of the error that the bus answered it."""
        self.order(expression)
        return json.loads(self.process.stdout.readline())

    def __getattr__(self, command):
        return lambda *arguments: self.ask(f"{command}{arguments}")

    def kill(self):
        self.process.kill()
        self.process.communicate()


class DesktopCase(unittest.TestCase):
    """Each class starts one desktop; a class says in prepare() what runs on it."""

    options = {}
    start = {}
    failed = False

    @classmethod
    def setUpClass(cls):
        cls.desktop = OrvoDesktop(**cls.options)
        cls.addClassCleanup(lambda: os.path.exists(cls.desktop.logs) and print(f"logs are kept in {cls.desktop.logs}"))
        cls.addClassCleanup(cls.desktop.close)
        cls.desktop.start(**cls.start)
        cls.prepare()

    @classmethod
    def prepare(cls):
        pass

    @classmethod
    def tearDownClass(cls):
        if not cls.failed:
            cls.desktop.end_while_scanning()
            cls.desktop.forget()

    def run(self, result=None):
        before = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > before:
            type(self).failed = True
            with contextlib.suppress(Exception):  # The server may be what the test took away.
                self.desktop.screen().save(f"{self.desktop.logs}/{self.id()}.png")
        return result


class HidingCase(DesktopCase):
    """Programs with icons, some of them marked; each test begins with every icon shown and hiding offered."""

    programs = tuple(PROGRAMS)[:4]
    marked = [COPYQ, PASYSTRAY]

    @classmethod
    def prepare(cls):
        cls.desktop.start_all(cls.marked, cls.programs)
        cls.all = cls.desktop.shown()
        cls.rest = cls.desktop.without(cls.marked)

    def setUp(self):
        desktop = self.desktop
        if desktop.orvo.poll() is not None:
            desktop.start_orvo()
        desktop.dismiss()
        if desktop.is_hidden():
            desktop.choose("Show all icons")
        self.expect_every_icon()
        wait(desktop.can_hide, what="hiding being offered")

    def expect_every_icon(self):
        wait(lambda: set(self.desktop.shown()) == set(self.all), what="every icon")

    def hide(self):
        self.desktop.hide_and_expect(self.rest)

    def reveal(self):
        self.desktop.reveal()
        self.desktop.expect_shown(self.all, what="revealed, the panel")

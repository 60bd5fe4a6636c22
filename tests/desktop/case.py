"""What the whole-desktop tests share: one desktop a class, its logs kept when a test fails.

Imported first, it makes the modules of desktop/ known."""

import contextlib
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "desktop"))
from session import OrvoDesktop  # noqa: E402


class DesktopCase(unittest.TestCase):
    """Each class starts one desktop; a class says in prepare() what runs on it."""

    desktop = None
    options = {}
    start = {}
    failed = False

    @classmethod
    def setUpClass(cls):
        cls.desktop = OrvoDesktop(**cls.options)
        try:
            cls.desktop.start(**cls.start)
            cls.prepare()
        except BaseException:
            cls.failed = True
            cls.tearDownClass()
            raise

    @classmethod
    def prepare(cls):
        pass

    @classmethod
    def tearDownClass(cls):
        try:
            if not cls.failed:
                cls.failed = True
                cls.desktop.end_while_scanning()
                cls.failed = False
        finally:
            cls.desktop.stop()
            cls.keep_or_forget()

    @classmethod
    def keep_or_forget(cls):
        if cls.failed:
            print(f"logs are kept in {cls.desktop.logs}", file=sys.stderr)
        else:
            cls.desktop.forget()

    def run(self, result=None):
        before = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > before:
            type(self).failed = True
            with contextlib.suppress(Exception):  # The server may be what the test took away.
                self.desktop.screenshot(f"{self.desktop.logs}/{self.id()}.png")
        return result

"""The settings window worked by the pointer, read through the accessibility tree."""

import contextlib
import os
import unittest

from gi.repository import GLib

from case import DesktopCase
from accessible import STATE_SELECTED, STATE_SHOWING
from desktop import PROGRAMS
from waiting import wait


class Settings(DesktopCase):
    @classmethod
    def prepare(cls):
        for name in list(PROGRAMS)[:4]:
            cls.desktop.start_item(name)
        cls.desktop.start_orvo(ready=False)
        window = wait(cls.desktop.settings_window, what="the settings window of a first start")
        cls.first_size = cls.desktop.frame_of(window)[2:]

    def setUp(self):
        if not self.desktop.settings_window():
            self.desktop.choose("Settings…")
            wait(self.desktop.settings_window, what="the settings window")
        self.press("Menu bar")

    def press(self, name):
        """Clicks on the control with the pointer, once it stands still."""
        control = self.desktop.control(name)
        self.desktop.rest(0.1, 1)
        self.desktop.click(control.center())

    def test_the_window_opens_at_its_size_with_orvos_icon_and_tells_every_application_and_the_page(self):
        self.assertEqual(self.first_size, (880, 680))
        icon = self.desktop.property(self.desktop.window(self.desktop.settings_window()), "_NET_WM_ICON")
        self.assertGreater(len(icon), 64 * 64)
        names = {element.name for element in self.desktop.application().walk()}
        for name in ("Visibility for CopyQ", "Visibility for QmidiNet", "Visibility for Diodon", "Your menu bar"):
            self.assertIn(name, names)
        self.assertTrue(self.desktop.control("Menu bar").has(STATE_SELECTED))
        self.assertFalse(self.desktop.control("Behavior").has(STATE_SELECTED))

    def test_no_call_of_an_assistive_program_ends_orvo(self):
        field = self.desktop.control("Find an app")
        text, properties, greatest = "org.a11y.atspi.Text.", "org.freedesktop.DBus.Properties.", 2**31 - 1
        for method, kinds, *arguments in (
                (properties + "GetAll", "(s)", ""), (properties + "GetAll", "(s)", "org.a11y.atspi.Accessible"),
                (properties + "Get", "(ss)", text[:-1], "BoundedRanges"), (properties + "Get", "()"),
                (text + "GetText", "()"), (text + "GetRangeExtents", "(iiu)", 0, greatest, 0),
                (text + "GetRangeExtents", "(iis)", 0, 1, "x"),
                ("org.a11y.atspi.EditableText.InsertText", "(isi)", 0, "x", greatest)):
            with contextlib.suppress(GLib.Error):
                field.ask(method, kinds, *arguments)
            self.assertTrue(field.has(STATE_SHOWING), f"no answer after {method} {arguments}")

    def test_the_system_details_reach_another_program_by_the_clipboard(self):
        self.press("About Orvo")
        self.press("Copy system details")
        text = wait(lambda: self.desktop.run(["xclip", "-o", "-selection", "clipboard"], limit=5).stdout, what="a text")
        self.assertRegex(text, "^Orvo (?s:.*)\nAccessibility: enabled")

    def test_a_link_that_nothing_opens_says_so_and_is_heard(self):
        os.remove(os.path.join(self.desktop.bundle, "share", "doc", "linux.md"))
        self.press("About Orvo")
        shown = self.desktop.application().shown_from_now_on()
        self.press("Linux compatibility research")
        wait(lambda: any(element.role == "notification" and "linux.md" in element.name for element in shown), 5,
             "the announcement")


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""The settings window worked by the pointer, read through the accessibility tree."""

import contextlib
import os
import signal
import unittest

from gi.repository import GLib
from Xlib import X

from case import DesktopCase
from accessible import STATE_ENABLED, STATE_SELECTED, STATE_SHOWING
from desktop import PROGRAMS, WATCHER
from waiting import stays, wait

COPYQ, PASYSTRAY = "com.github.hluk.copyq", "pasystray"


class Settings(DesktopCase):
    @classmethod
    def prepare(cls):
        for name in list(PROGRAMS)[:4]:
            cls.desktop.start_item(name)
        cls.desktop.start_orvo(ready=False)
        window = wait(cls.desktop.settings_window, what="the settings window of a first start")
        cls.first_size = cls.desktop.frame_of(window)[2:]
        cls.all = cls.desktop.shown()

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

    def test_an_application_marked_hide_leaves_the_panel_at_the_press_of_the_button(self):
        self.desktop.mark("CopyQ")
        wait(lambda: self.desktop.remembered() == {COPYQ: "hidden"}, what="the stored choice")
        self.desktop.control("1 app selected to hide")
        self.press("Hide selected icons")
        wait(lambda: len(self.desktop.cells()) == len(self.all) - 1, what="one icon less")
        self.assertTrue(self.desktop.is_hidden())
        self.press("Reveal hidden icons")
        self.desktop.expect_shown(self.all)
        self.desktop.mark("CopyQ", "Keep")
        self.desktop.control("0 apps selected to hide")

    def test_the_tree_tells_every_application_and_its_choice(self):
        names = {element.name for element in self.desktop.application().walk()}
        for title in ("CopyQ", "QmidiNet", "Diodon"):
            self.assertIn(f"Visibility for {title}", names)
        self.assertIn("Your menu bar", names)
        self.assertTrue(self.desktop.control("Menu bar").has(STATE_SELECTED))
        self.assertFalse(self.desktop.control("Behavior").has(STATE_SELECTED))

    def test_choices_rest_while_an_agent_is_slow_to_answer(self):
        self.desktop.mark("CopyQ")
        self.desktop.control("1 app selected to hide")
        agent = self.desktop.process_of(WATCHER)
        os.kill(agent, signal.SIGSTOP)
        try:
            self.press("Hide selected icons")
            self.desktop.control("Updating")
            picker = self.desktop.control("Visibility for CopyQ")
            wait(lambda: not picker.has(STATE_ENABLED), what="the choice being disabled")
        finally:
            os.kill(agent, signal.SIGCONT)
        wait(lambda: picker.has(STATE_ENABLED), 10, "the choice being enabled again")
        self.desktop.choose("Settings…")
        self.desktop.expect_shown(self.all)
        self.desktop.mark("CopyQ", "Keep")

    def test_the_keys_of_the_main_menu_hold_in_the_window(self):
        self.desktop.mark("CopyQ")
        self.desktop.control("1 app selected to hide")
        self.press("Hide selected icons")
        wait(self.desktop.is_hidden, what="hidden icons")
        self.desktop.person.key("Control_L", "comma")
        self.desktop.expect_shown(self.all, what="after Control-comma, the panel")
        self.desktop.mark("CopyQ", "Keep")
        self.desktop.person.key("Control_L", "q")
        self.assertEqual(self.desktop.orvo.wait(5), 0)
        self.desktop.start_orvo(ready=False)

    def test_the_window_list_has_orvos_icon(self):
        window = self.desktop.display.create_resource_object("window", self.desktop.settings_window())
        icon = window.get_full_property(self.desktop.display.intern_atom("_NET_WM_ICON"), X.AnyPropertyType)
        self.assertGreater(len(icon.value), 64 * 64)

    def test_no_call_of_an_assistive_program_ends_orvo(self):
        field = self.desktop.control("Find an app")
        text, properties, greatest = "org.a11y.atspi.Text.", "org.freedesktop.DBus.Properties.", 2**31 - 1
        for method, kinds, *arguments in (
                (properties + "GetAll", "(s)", ""), (properties + "GetAll", "(s)", "org.a11y.atspi.Accessible"),
                (properties + "Get", "(ss)", text[:-1], "BoundedRanges"), (properties + "Get", "()"), (text + "GetText", "()"),
                (text + "GetRangeExtents", "(iiu)", 0, greatest, 0), (text + "GetRangeExtents", "(iis)", 0, 1, "x"),
                ("org.a11y.atspi.EditableText.InsertText", "(isi)", 0, "x", greatest)):
            with contextlib.suppress(GLib.Error):
                field.ask(method, kinds, *arguments)
            self.assertTrue(field.has(STATE_SHOWING), f"no answer after {method} {arguments}")

    def test_the_window_opens_at_its_size(self):
        self.assertEqual(self.first_size, (880, 680))

    def test_the_search_field_narrows_the_list(self):
        self.press("Find an app")
        self.desktop.person.type("diodon")
        wait(lambda: not self.desktop.shown_control("Visibility for CopyQ"), 5, "the narrowed list")
        self.assertTrue(self.desktop.shown_control("Visibility for Diodon"))
        self.press("Clear search")
        self.desktop.control("Visibility for CopyQ")

    def test_the_system_details_reach_another_program_by_the_clipboard(self):
        self.press("About Orvo")
        self.press("Copy system details")

        def pasted():
            answer = self.desktop.run(["xclip", "-o", "-selection", "clipboard"], limit=5)
            return answer.returncode == 0 and answer.stdout
        text = wait(pasted, what="text on the clipboard")
        self.assertTrue(text.startswith("Orvo "), text)
        self.assertIn("\nAccessibility: enabled", text)

    def test_a_link_that_nothing_opens_says_so_and_is_heard(self):
        os.remove(os.path.join(self.desktop.bundle, "share", "doc", "linux.md"))
        self.press("About Orvo")
        shown = self.desktop.application().shown_from_now_on()
        self.press("Linux compatibility research")
        wait(lambda: any(element.role == "notification" and "linux.md" in element.name for element in shown), 5,
             "the announcement")

    def test_the_window_closes_without_ending_orvo_and_comes_back_from_the_menu(self):
        self.desktop.close_window(self.desktop.settings_window())
        stays(lambda: self.desktop.orvo.poll() is None, 0.3, "Orvo running")
        self.desktop.click_arrow(button=3)
        wait(self.desktop.pop_ups, what="the arrow's menu")
        self.desktop.person.key("Up")
        self.desktop.person.key("Up")
        self.desktop.person.key("Return")
        wait(self.desktop.settings_window, what="the settings window")

    def test_switching_accessibility_off_asks_for_it_again(self):
        self.desktop.set_accessibility(False)
        try:
            wait(lambda: not self.desktop.can_hide(), 5, "hiding being withdrawn")
        finally:
            self.desktop.set_accessibility(True)
        self.desktop.control("Visibility for CopyQ", 10)


if __name__ == "__main__":
    unittest.main(verbosity=2)

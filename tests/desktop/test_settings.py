"""The settings window worked by pointer and keys, read through the accessibility tree."""

import contextlib
import os
from pathlib import Path
from struct import pack

from gi.repository import GLib
from Xlib import X
from Xlib.protocol import event

from case import DesktopCase, Peer, write_program
from accessible import STATE_SHOWING
from waiting import wait


class Settings(DesktopCase):
    @classmethod
    def prepare(cls):
        programs = cls.desktop.folder_for("home", "bin")
        write_program(f"{programs}/xfce4-accessibility-settings", f">{programs}/opened")
        cls.desktop.environment["PATH"] = programs + ":" + cls.desktop.environment["PATH"]
        cls.desktop.start_orvo(ready=False)
        wait(cls.desktop.settings_window, what="the settings window of a first start")

    def expect_copied(self, text):
        copied = ["xclip", "-o", "-selection", "clipboard"]
        wait(lambda: self.desktop.run(copied, limit=5).stdout.startswith(text), what=f"{text} in the clipboard")

    def test_no_call_of_an_assistive_program_ends_orvo(self):
        self.desktop.press("Menu bar")
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

    def test_the_window_follows_the_theme_and_survives_whatever_a_settings_manager_writes(self):
        client, root = self.desktop.display, self.desktop.root
        window = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self.addCleanup(window.destroy)
        selection, settings, manager = map(client.intern_atom, ("_XSETTINGS_S0", "_XSETTINGS_SETTINGS", "MANAGER"))
        window.set_selection_owner(selection, X.CurrentTime)
        news = event.ClientMessage(window=root, client_type=manager, data=(32, [0, selection, window.id, 0, 0]))
        root.send_event(news, X.StructureNotifyMask)
        light, dark = (pack("<BxH16sII8s", 1, 13, b"Net/ThemeName", 1, len(theme), theme)
                       for theme in (b"Arc-lite", b"Arc-dark"))
        for content, is_dark in ((pack("<4xII", 7, 1) + dark, True), (pack("<4xII", 7, 1) + light, False),
                                 (pack("<4xII", 7, 9) + dark + pack("<BxH", 1, 60), True),  # A name beyond the end.
                                 (pack("<4xII", 7, 2) + light + b"\x09" + dark, False)):  # No such kind.
            window.change_property(settings, settings, 8, content)
            client.sync()
            wait(lambda d=is_dark: self.is_dark() == d, 3, f"dark: {is_dark}")

    def test_the_portals_choice_counts_while_the_portal_runs(self):
        wait(lambda: not self.is_dark(), 3, "a light window")
        portal = Peer(self.desktop, "portal")
        portal.ask("serve(Read='(<<uint32 1>>,)')")
        portal.own("org.freedesktop.portal.Desktop")
        wait(self.is_dark, 5, "a dark window")
        portal.kill()
        wait(lambda: not self.is_dark(), 5, "a light window again")

    def is_dark(self):
        return self.picture().resize((1, 1)).getpixel((0, 0))[0] < 110

    def picture(self):
        return self.desktop.picture(*self.desktop.frame_of(self.desktop.settings_window()))

    def test_what_is_copied_reaches_other_programs_and_the_menus_keys_act_beside_the_fields(self):
        self.desktop.press("About Orvo")
        self.desktop.press("Copy system details")
        self.expect_copied("Orvo 0.2.0\n")
        self.desktop.press("Menu bar")
        self.desktop.press("Find an app")
        person = self.desktop.person
        person.type("quit")
        for key in "ac":
            person.key("Control_L", key)
        self.expect_copied("quit")
        self.desktop.run(["wmctrl", "-a", "Orvo Settings"])
        person.key("Control_L", "q")
        wait(lambda: self.desktop.orvo.poll() == 0, what="the end of Orvo")

    def test_accessibility_that_is_switched_off_is_asked_for_and_switched_on_by_the_window(self):
        self.desktop.press("Menu bar")
        self.desktop.set_accessibility(False)
        self.desktop.press("Open Settings…")
        wait(lambda: os.path.exists(f"{self.desktop.home}/bin/opened"), 5, "the desktop's own page")
        wait(lambda: not self.desktop.shown_control("Open Settings…"), what="the card leaving")

    def test_a_program_that_gives_no_reasonable_picture_holds_up_nobody(self):
        desktop, entries = self.desktop, self.desktop.folder_for("home", ".local", "share", "applications")
        os.mkfifo(f"{entries}/pipe.png")
        os.symlink("/dev/zero", f"{entries}/endless.png")
        for name in ("pipe", "endless"):
            Path(entries, f"{name}.desktop").write_text(
                f"[Desktop Entry]\nType=Application\nName={name}\nIcon={entries}/{name}.png\n"
                f"Exec={desktop.folder}/{name}\n", "ascii")
        programs = [Peer(desktop, name) for name in ("pipe", "endless", "absurd", "good")]
        for program in programs[:3]:
            picture = "('a(iiay)', [(513, 1, bytes(2052)), (-4, -4, bytes(64)), (8, 8, b'')])"
            program.ask(f"describe(Id=('s', 'Bad'), Status=('s', 'Active'), IconPixmap={picture})")
            program.register(program.bus)
        programs[3].show("d000d0", "Good")
        self.desktop.press("Menu bar")
        for program in ("pipe", "endless", "absurd", "good"):
            desktop.control(f"Visibility for {program}")
        wait(lambda: b"\xd0\x00\xd0" in self.picture().tobytes(), 5, "the picture")

    def test_what_a_link_opens_writes_into_no_pipe_of_orvos(self):
        opener, told = f"{self.desktop.home}/bin/xdg-open", Path(self.desktop.home, "told")
        write_program(opener, f"readlink /proc/$$/fd/2 >{told}")
        self.addCleanup(os.remove, opener)
        self.desktop.press("About Orvo")
        self.desktop.press("Linux compatibility research")
        wait(lambda: told.exists() and told.read_text("ascii"), 5, "the opener")
        self.assertNotIn("pipe", told.read_text("ascii"))

    def test_a_link_that_nothing_opens_says_so_and_is_heard(self):
        os.remove(os.path.join(self.desktop.bundle, "share", "doc", "linux.md"))
        self.desktop.press("About Orvo")
        shown = self.desktop.application().shown_from_now_on()
        self.desktop.press("Linux compatibility research")
        wait(lambda: any(element.role == "notification" and "linux.md" in element.name for element in shown), 5,
             "the announcement")

"""Hiding and revealing on the real panel with real tray programs. Some have an icon of the older kind: a window of the
program in a socket of the panel's tray."""

import signal
import time

import psutil
from Xlib import X, XK, Xatom, display
from Xlib.protocol import event

from case import COPYQ, PASYSTRAY, QMIDINET, HidingCase, Peer, center, stopped
from bus import owner
from desktop import AGENT, LOGIND, PROGRAMS, WATCHER
from person import Person
from session import SHORTCUT
from waiting import settled, stays, wait

FLAMESHOT = "org.flameshot.Flameshot"
# Of GTK 2, GTK 3, Tk, and Qt 5, which takes to this kind without a bus.
LEGACY = ["parcellite", "volumeicon", "square.tcl", "qlipper"]
SQUARE = """package require tktray
wm withdraw .
image create photo square -width 22 -height 22
square put red -to 0 0 22 22
tktray::icon .icon -image square
"""
PROGRAMS.update({name: [name] for name in ("parcellite", "volumeicon", "cbatticon")}, **{
    "square.tcl": ["sh", "-c", f"echo '{SQUARE}' >square.tcl; exec wish square.tcl"],
    "qlipper": ["env", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere", "qlipper"]})
MODIFIERS = X.ControlMask | X.Mod1Mask | X.Mod4Mask
IN_USE = "This shortcut is in use. Orvo’s menu bar arrow is still available."


class Hiding(HidingCase):
    programs = [COPYQ, PASYSTRAY, QMIDINET, *LEGACY, "cbatticon"]
    marked = [COPYQ, PASYSTRAY, *LEGACY, "cbatticon"]

    def test_a_click_hides_the_marked_icons_alone_and_another_brings_them_back_in_order(self):
        (hide, _, _), *others = self.desktop.menu()  # Which takes no choice that it does not offer.
        self.desktop.send_to_menu((hide, "hovered"), *((item, "clicked") for item, label, _ in others if not label),
                                  (0, "clicked"), (-1, "clicked"), (1000000, "clicked"))
        for _ in range(20):
            self.hide()
            self.reveal()
        self.hide()
        with stopped(self.desktop.processes["agent"].pid):
            stays(lambda: self.desktop.shown() == self.rest, 1, "hidden")
        self.reveal()

    def test_an_agent_that_is_silent_or_answers_what_was_overtaken_leaves_nothing_hidden(self):
        desktop = self.desktop
        for overtaken in (False, True):
            with self.subTest(overtaken=overtaken), stopped(desktop.processes["agent"].pid):
                desktop.choose("Hide selected icons")
                if overtaken:
                    desktop.choose("Show all icons")
                wait(lambda: not desktop.is_hidden(), 8, "Orvo giving up")
                self.assertNotIn("is available", desktop.told_by([desktop.program, "--diagnose"]))
            wait(lambda: not desktop.call_agent("Requesters"), 2, "the end of what was granted late")
            self.expect_every_icon()
            wait(desktop.can_hide, what="hiding being offered")

    def test_what_another_program_hides_is_told_and_ended_by_the_arrow(self):
        self.hide()  # Learns what the arrow looks like then.
        stranger = Peer(self.desktop, "stranger")
        self.desktop.choose("Settings…")
        wait(self.desktop.settings_window, what="the window")
        stranger.activate()
        self.desktop.control("stranger hides icons. Click the arrow to show them.")
        self.desktop.expect_shown(["orvo-hidden"])
        self.assertIn("AccessDenied", stranger.agent("EndOthers"))
        self.desktop.click_arrow()
        self.desktop.expect_shown(self.all)

    def test_a_new_tray_program_reveals_so_that_its_icon_can_load_and_its_end_leaves_the_others_hidden(self):
        self.addCleanup(self.desktop.end, FLAMESHOT)
        self.hide()
        self.desktop.start_item(FLAMESHOT)
        wait(lambda: set(self.desktop.shown()) == {*self.all, FLAMESHOT}, what="every icon")
        self.desktop.expect_told("A new app opened. Icons are shown so its menu bar item can load.")
        wait(self.desktop.can_hide, what="hiding being offered")
        self.desktop.hide()
        self.desktop.end(FLAMESHOT)
        self.desktop.expect_shown(self.rest)
        stays(lambda: self.desktop.is_hidden() and COPYQ not in self.desktop.shown(), 1.0, "hidden")

    def test_the_window_of_a_new_program_reveals_whatever_it_claims(self):
        self.hide()
        window = self.desktop.root.create_window(0, 300, 99, 99, 0, X.CopyFromParent)
        self.addCleanup(window.destroy)
        # The number that a sandboxed program has inside its sandbox.
        window.change_property(self.desktop.display.intern_atom("_NET_WM_PID"), Xatom.CARDINAL, 32, [4194305])
        window.map()
        self.desktop.display.sync()
        wait(lambda: not self.desktop.is_hidden(), what="the reveal")

    def test_a_program_that_fills_the_tray_and_the_list_of_windows_holds_nobody_up(self):
        icon = next(address for address, *_ in self.desktop.call_agent("Items") if address.startswith("x11:"))
        filler = Peer(self.desktop, "filler")
        self.addCleanup(filler.kill)
        filler.fill(int(icon[4:], 16))
        listed, length = self.desktop.display.intern_atom("_NET_CLIENT_LIST"), 4096
        for start in range(0, 500_000, length):
            self.desktop.root.change_property(
                listed, Xatom.WINDOW, 32, range(start, start + length), X.PropModeAppend)
        self.desktop.display.sync()
        started = time.monotonic()
        self.desktop.call_agent("Tree")
        self.desktop.menu()
        self.assertLess(time.monotonic() - started, 1, "seconds until an answer")
        self.hide()

    def test_the_machine_sleeps_once_the_icons_are_back(self):
        for _ in range(2):
            wait(self.desktop.sleep_is_delayed, what="sleep waiting for Orvo")
            self.hide()
            self.desktop.sleep_announced(True)
            wait(lambda: not self.desktop.sleep_is_delayed(), 2, "the machine sleeping")
            self.assertEqual(self.desktop.call_agent("Requesters"), [])
            self.desktop.sleep_announced(False)
            wait(self.desktop.can_hide, what="hiding being offered after the wake-up")
        wait(self.desktop.sleep_is_delayed, what="sleep waiting for Orvo")
        self.desktop.sleep_announced(True)
        wait(lambda: not self.desktop.sleep_is_delayed(), 2, "the machine sleeping")
        manager = self.desktop.processes["logind"].args
        self.desktop.end("logind")
        self.desktop.spawn("logind", manager)  # So that nobody tells of the wake-up.
        wait(lambda: owner(self.desktop.system_bus, LOGIND), what="another login manager")
        settled(self.desktop.sleep_is_delayed, 0.5, what="sleep waiting for Orvo again")

    def test_a_panel_that_dies_while_icons_are_hidden_shows_the_others_and_has_a_guarded_clock_again(self):
        desktop = self.desktop
        self.hide()
        trailing = desktop.tray_trailing()
        desktop.end("panel", signal.SIGKILL)
        desktop.start_panel()
        wait(lambda: set(desktop.shown()) == set(self.rest), 10, "the icons that are kept")
        # Its controls come one by one and push the icons about.
        wait(lambda: desktop.tray_trailing() == trailing, what="the panel's layout of before")
        stays(lambda: set(desktop.shown()) == set(self.rest), 1, "hidden")
        desktop.person.click(*center(desktop.clock()))
        wait(desktop.pop_ups, what="the clock's calendar")
        desktop.away()
        self.expect_every_icon()
        type(self).all, type(self).rest = desktop.shown(), desktop.without(self.marked)

    def test_a_changed_screen_brings_the_icons_back(self):
        self.addCleanup(self.desktop.resize_screen, *self.desktop.size)
        self.hide()
        self.desktop.resize_screen(1024, 768)
        self.expect_every_icon()
        wait(self.desktop.can_hide, what="hiding being offered on the new screen")

    def test_when_a_guardian_and_then_its_agent_are_killed_every_icon_comes_back_drawn_and_once(self):
        desktop, agent = self.desktop, psutil.Process(self.desktop.processes["agent"].pid)
        self.hide()
        first = agent.children()
        first[0].kill()
        wait(lambda: len(now := agent.children()) == 1 and now != first, 2, "another guardian, and no zombie")
        desktop.end("agent", signal.SIGKILL)
        # Ayatana's programs may show an icon of the older kind besides; the panel's list has each of the newer once.
        newer = ["orvo", COPYQ, PASYSTRAY, QMIDINET]
        def every():
            return {*self.programs, *newer} <= set(desktop.shown()) and len(desktop.told_items()) == len(newer)
        settled(every, 0.25, 5, "every icon and the arrow")
        desktop.start_agent()  # Behind the panel, whose end gives it the tray.
        self.assertTrue(desktop.told_items())  # Which the agent has asked for before.
        desktop.end("panel")
        desktop.start_panel()
        wait(lambda: desktop.owner(WATCHER) == desktop.owner(AGENT), what="the tray being the agent's")
        settled(every, 0.25, 10, "every icon and the arrow, again")


class Shortcut(HidingCase):
    """The global shortcut with real key grabs."""

    def expect_toggled(self, held=0.0):
        before = self.desktop.is_hidden()
        Person(self.desktop.display_name).key(*SHORTCUT, held=held)  # One who knows the keyboard as it is now.
        wait(lambda: self.desktop.is_hidden() != before, 2, "the shortcut toggling")
        if not before:
            wait(lambda: len(self.desktop.cells()) == len(self.rest), 2, "icons leaving the panel")

    def test_it_toggles_whatever_is_locked_once_a_press_and_with_other_modifiers_never(self):
        person = self.desktop.person
        for locks in ((), ("Caps_Lock",), ("Num_Lock",), ("Caps_Lock", "Num_Lock")):
            with self.subTest(locks=locks):
                for lock in locks:
                    person.key(lock)
                    self.addCleanup(person.key, lock)
                self.expect_toggled()
                self.expect_toggled()
                self.doCleanups()
        person.key("Control_L", "Super_L", "b")
        person.key("Shift_L", *SHORTCUT)
        root, key = self.desktop.root, self.desktop.display.keysym_to_keycode(XK.XK_b)
        root.send_event(event.KeyPress(detail=key, time=1, root=root, window=root, same_screen=1, child=0, root_x=1,
                                       root_y=1, event_x=1, event_y=1, state=MODIFIERS), X.PropertyChangeMask)
        self.desktop.display.sync()
        stays(lambda: not self.desktop.is_hidden(), 0.3, "visible")
        self.expect_toggled(held=0.9)  # Longer than until the server repeats it (0.66 s) several times.
        stays(self.desktop.is_hidden, 0.3, "hidden")

    def test_a_layout_with_two_keys_for_one_modifier_keeps_it(self):
        self.addCleanup(self.desktop.rest)
        self.addCleanup(self.desktop.told_by, ["setxkbmap", "us,de"])
        self.desktop.told_by(["setxkbmap", "us,mao"])
        self.desktop.rest()
        self.expect_toggled()
        self.expect_toggled()

    def test_a_layout_that_puts_it_on_a_key_of_another_program_is_told_until_that_lets_go(self):
        desktop, holder = self.desktop, display.Display(self.desktop.display_name)
        self.addCleanup(holder.close)
        root, refused = holder.screen().root, []
        holder.set_error_handler(lambda error, _request: refused.append(error))
        b, q = (holder.keysym_to_keycode(XK.string_to_keysym(name)) for name in "bq")

        def grab(locks=0):
            root.grab_key(q, MODIFIERS | locks, True, X.GrabModeAsync, X.GrabModeAsync)
            holder.sync()
        grab(X.LockMask)
        was = [holder.get_keyboard_mapping(key, 1)[0] for key in (b, q)]
        holder.change_keyboard_mapping(b, [was[1]])
        holder.change_keyboard_mapping(q, [was[0]])
        holder.sync()
        desktop.choose("Settings…")
        desktop.press("Behavior")
        desktop.control(IN_USE)
        self.hide()
        self.reveal()
        grab()
        self.assertEqual(refused, [], "the rest stayed taken")
        root.ungrab_key(q, X.AnyModifier)
        holder.sync()
        wait(lambda: not desktop.shown_control(IN_USE), 8, "the shortcut being had")
        self.expect_toggled()

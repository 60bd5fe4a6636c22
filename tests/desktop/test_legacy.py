"""Icons of the older kind: windows of their programs in sockets of the panel's tray."""

import os
import signal
import unittest

from Xlib import X
from Xlib.protocol.event import ClientMessage

from case import HidingCase, Peer, stopped
from desktop import PROGRAMS
from waiting import stays, wait

# Of GTK 2, GTK 3, Qt 5, which takes to this kind without a bus, and Tk.
MARKED = ["parcellite", "volumeicon", "qlipper", "square.tcl"]
PROGRAMS.update({name: [name] for name in [*MARKED[:2], "cbatticon"]})
PROGRAMS["qlipper"] = ["env", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere", "qlipper"]
PROGRAMS["square.tcl"] = ["wish", "square.tcl"]
SQUARE = """package require tktray
wm withdraw .
image create photo square -width 22 -height 22
square put red -to 0 0 22 22
tktray::icon .icon -image square
proc look {} {
  if [file exists blue] {square put blue -to 0 0 22 22; wm title .icon blue; file delete blue}
  after 50 look
}
look
"""
CYCLES = 20


class Legacy(HidingCase):
    @classmethod
    def prepare(cls):
        desktop = cls.desktop
        with open(os.path.join(desktop.home, "square.tcl"), "w", encoding="ascii") as file:
            file.write(SQUARE)
        desktop.start_all(hidden=MARKED, programs=[*MARKED, "cbatticon"])
        cls.all = desktop.shown()
        cls.others = {name for name in cls.all if name != "orvo"}
        cls.rest = desktop.without(MARKED)

    def test_icons_go_and_come_in_their_places(self):
        for _ in range(CYCLES):
            self.hide()
            self.desktop.reveal()
            self.desktop.expect_shown(self.all)

    def test_nothing_is_lost_behind_a_stopped_or_killed_orvo(self):
        self.hide()
        with stopped(self.desktop.orvo.pid):
            stays(lambda: self.desktop.shown() == self.rest, 0.5, "hidden")
        self.desktop.end("orvo", signal.SIGKILL)
        wait(lambda: set(self.desktop.shown()) == self.others, 2, "every icon of the others")
        self.desktop.start_orvo()

    def test_one_that_docks_anew_while_hidden_stays_hidden(self):
        self.hide()
        os.kill(self.desktop.plug_in("libsystray.so")[0], signal.SIGUSR1)  # Has the panel start its tray anew.
        wait(lambda: not self.desktop.shown(), 5, "the tray's end")
        wait(lambda: set(self.desktop.shown()) == set(self.rest), 10, "the icons that are kept")
        stays(lambda: set(self.desktop.shown()) == set(self.rest), 1, "hidden")

    def test_one_that_changes_while_hidden_comes_back_changed_in_its_place(self):
        self.hide()
        blue = os.path.join(self.desktop.home, "blue")
        with open(blue, "w", encoding="ascii"):
            pass
        wait(lambda: not os.path.exists(blue), 5, "the new picture")
        stays(lambda: self.desktop.shown() == self.rest, 0.5, "hidden")
        self.desktop.reveal()
        changed = self.all.index("square.tcl")
        wait(lambda: [name == "?" for name in self.desktop.shown()] == [at == changed for at in range(len(self.all))],
             3, "the new picture in the old one's place")
        self.desktop.icons["square.tcl"] = self.desktop.cells()[changed]

    def test_both_kinds_of_one_program_go_and_come_together(self):
        desktop = self.desktop
        before = desktop.cells()
        both = Peer(desktop, "both")
        both.show("d000d0", "Both")
        both.show_legacy("edit-undo")
        wait(lambda: len(desktop.cells()) == len(before) + 2, 5, "both icons")
        assertion = desktop.call_agent("Activate", "(aias)", [], [*MARKED, "cbatticon"])
        wait(lambda: len(desktop.cells()) == len(before), 5, "neither")
        desktop.call_agent("Invalidate", "(u)", assertion)
        wait(lambda: len(desktop.cells()) == len(before) + 2, 5, "both again")
        both.kill()
        desktop.expect_shown(self.all)

    def test_docking_windows_that_vanish_trouble_nobody(self):
        server, root = self.desktop.display, self.desktop.root
        tray = server.get_selection_owner(server.intern_atom("_NET_SYSTEM_TRAY_S0"))
        opcode = server.intern_atom("_NET_SYSTEM_TRAY_OPCODE")
        for _ in range(1000):
            window = root.create_window(0, 0, 22, 22, 0, X.CopyFromParent)
            dock = (32, [X.CurrentTime, 0, window.id, 0, 0])
            tray.send_event(ClientMessage(window=tray, client_type=opcode, data=dock))
            window.destroy()
        self.hide()
        self.reveal()

    def test_when_the_agent_is_killed_the_server_brings_them_back_and_the_guardian_has_them_drawn(self):
        self.hide()
        with stopped(self.desktop.processes["agent"].pid):
            stays(lambda: self.desktop.shown() == self.rest, 0.5, "hidden")
        self.desktop.end("agent", signal.SIGKILL)
        wait(lambda: set(self.desktop.shown()) - {"orvo-hidden", "orvo"} == self.others, 3, "every icon, drawn")


if __name__ == "__main__":
    unittest.main(verbosity=2)

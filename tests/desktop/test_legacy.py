"""Icons of the older kind: windows of their programs in sockets of the panel's tray."""

import os
import signal
import unittest

from case import HidingCase, stopped
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

    def test_when_the_agent_is_killed_the_server_brings_them_back_and_the_guardian_has_them_drawn(self):
        self.hide()
        with stopped(self.desktop.processes["agent"].pid):
            stays(lambda: self.desktop.shown() == self.rest, 0.5, "hidden")
        self.desktop.end("agent", signal.SIGKILL)
        wait(lambda: set(self.desktop.shown()) - {"orvo-hidden", "orvo"} == self.others, 3, "every icon, drawn")


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""Windows of our own that write down what arrives (see probe.py), and reading what they wrote."""

import struct

from Xlib import display
from Xlib.ext import ge, xinput

from desktop import REPOSITORY
from waiting import wait

PROBE = f"{REPOSITORY}/desktop/probe.py"


class Probe:
    """One such window, `kind` being "window" or "dock"."""

    def __init__(self, desktop, kind, title):
        self.desktop, self.name = desktop, title
        desktop.spawn(title, ["/usr/bin/python3", PROBE, kind, title])
        wait(lambda: "ready" in desktop.log(title), 20, title)

    def events(self):
        lines = [line.split() for line in self.desktop.log(self.name).splitlines()]
        return [(float(line[0]), line[1], int(line[2])) for line in lines if len(line) == 3 and line[0][0].isdigit()]

    def kinds(self, since=0.0):
        return [event[1:] for event in self.events() if event[0] >= since]


class RawPresses:
    """Sees each press of any device, whoever gets the event."""

    def __init__(self, name):
        self._display = display.Display(name)
        opcode = self._display.display.get_extension_major("XInputExtension")
        xinput.XIQueryVersion(display=self._display.display, opcode=opcode, major_version=2, minor_version=2)
        self._display.screen().root.xinput_select_events([(xinput.AllMasterDevices, xinput.RawButtonPressMask)])
        self._display.sync()

    def take(self):
        """Moments of the presses since the last call, in whole milliseconds of the server's own clock."""
        found = []
        while self._display.pending_events():
            event = self._display.next_event()
            if event.type == ge.GenericEventCode and event.evtype == xinput.RawButtonPress:
                found.append(struct.unpack_from("<I", event.data, 2)[0] / 1000)
        return found

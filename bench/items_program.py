"""Registers as many tray items as its argument says, writes a line, and stays until its input ends."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

WATCHER = "org.kde.StatusNotifierWatcher"
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
for number in range(int(sys.argv[1])):
    bus.call_sync(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisterStatusNotifierItem",
                  GLib.Variant("(s)", (f"/item/{number}",)), None, Gio.DBusCallFlags.NONE, -1)
print("registered", flush=True)
sys.stdin.read()

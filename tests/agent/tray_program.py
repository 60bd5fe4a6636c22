"""A program on the session bus that does what its standard input says, one command a line, and answers
each with one line. Started under several names, it stands for several applications."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

bus = Gio.bus_get_sync(Gio.BusType.SESSION)


def call(service, path, interface, method, arguments):
    return bus.call_sync(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 5000, None)


def agent(method, arguments):
    return call("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1", method, arguments)


def register(text):
    call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher",
         "RegisterStatusNotifierItem", GLib.Variant("(s)", (text,)))


def own(name):
    call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
         GLib.Variant("(su)", (name, 4)))


def release(name):
    call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
         GLib.Variant("(s)", (name,)))


def activate(*bundles):
    return agent("Activate", GLib.Variant("(aias)", (range(9), bundles))).unpack()[0]


def invalidate(assertion):
    agent("Invalidate", GLib.Variant("(u)", (int(assertion),)))


def activate_and_die():
    bus.call("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1", "Activate",
             GLib.Variant("(aias)", ([], [])), None, Gio.DBusCallFlags.NONE, 5000, None, None)
    bus.flush_sync(None)
    bus.close_sync(None)


COMMANDS = {each.__name__: each for each in (register, own, release, activate, invalidate, activate_and_die)}

print(bus.get_unique_name(), flush=True)
for line in sys.stdin:
    command, *arguments = line.split()
    try:
        print("ok", COMMANDS[command](*arguments), flush=True)
    except GLib.Error as error:
        print("error", Gio.DBusError.get_remote_error(error), flush=True)

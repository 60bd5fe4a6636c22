"""A program on the session bus that does what its standard input says, one command a line, and answers
each with one line. Started under several names, it stands for several applications, or for the panel."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

bus = Gio.bus_get_sync(Gio.BusType.SESSION)
announced = []


def call(service, path, interface, method, arguments):
    answer = bus.call_sync(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 5000, None)
    return (answer.unpack() or [""])[0]


def agent(method, arguments=None, interface="local.orvo.MenuBarAgent1"):
    return call("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent", interface, method, arguments)


def watcher(method, arguments=None, interface="org.kde.StatusNotifierWatcher"):
    return call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", interface, method, arguments)


def of_bus(method, arguments):
    return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments)


def register(text):
    return watcher("RegisterStatusNotifierItem", GLib.Variant("(s)", (text,)))


def flood(count):
    """Registers so many items of this one connection at once; returns how many of them the agent has."""
    for number in range(int(count)):
        bus.call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher",
                 "RegisterStatusNotifierItem", GLib.Variant("(s)", (f"/item{number}",)), None, Gio.DBusCallFlags.NONE,
                 5000, None, None)
    return str(sum(address.startswith(bus.get_unique_name() + "/") for address, _, _ in agent("Items")))


def own(name):
    of_bus("RequestName", GLib.Variant("(su)", (name, 4)))


def release(name):
    of_bus("ReleaseName", GLib.Variant("(s)", (name,)))


def activate(*bundles):
    return agent("Activate", GLib.Variant("(aias)", (range(9), bundles)))


def invalidate(assertion):
    return agent("Invalidate", GLib.Variant("(u)", (int(assertion),)))


def activate_and_die():
    bus.call("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1", "Activate",
             GLib.Variant("(aias)", ([], [])), None, Gio.DBusCallFlags.NONE, 5000, None, None)
    bus.flush_sync(None)
    bus.close_sync(None)


def registered():
    return " ".join(f"{address} {process} {bundle}" for address, process, bundle in agent("Items"))


def tree():
    return " ".join(f"{element[0]}:{element[1]}" for element in agent("Tree"))


def controls():
    return " ".join(f"{identifier.rsplit('.', 1)[-1]}@{frame[0]:g}+{frame[2]:g}"
                    for _, _, identifier, has_frame, frame in agent("Tree") if has_frame and identifier)


def held():
    return agent("Get", GLib.Variant("(ss)", ("local.orvo.MenuBarAgent1", "WatcherHeld")),
                 "org.freedesktop.DBus.Properties")


def prop(name):
    return watcher("Get", GLib.Variant("(ss)", ("org.kde.StatusNotifierWatcher", name)),
                   "org.freedesktop.DBus.Properties")


def items():
    return " ".join(prop("RegisteredStatusNotifierItems"))


def introspect():
    return watcher("Introspect", None, "org.freedesktop.DBus.Introspectable").replace("\n", " ")


def listen():
    def hear(_bus, _sender, _path, _interface, signal, arguments):
        signs = {"StatusNotifierItemRegistered": "+", "StatusNotifierItemUnregistered": "-"}
        if signal in signs:
            announced.append(signs[signal] + arguments[0])

    bus.signal_subscribe(None, "org.kde.StatusNotifierWatcher", None, None, None, Gio.DBusSignalFlags.NONE, hear)
    return heard()


def heard():
    """What was announced since the last time, up to the agent's answer to a question asked now."""
    agent("Items")
    while GLib.MainContext.default().iteration(False):
        pass
    told = " ".join(announced)
    announced.clear()
    return told


COMMANDS = {each.__name__: each for each in (register, flood, own, release, activate, invalidate, activate_and_die, registered,
                                             tree, controls, held, prop, items, introspect, listen, heard)}

print(bus.get_unique_name(), flush=True)
for line in sys.stdin:
    command, *arguments = line.split()
    try:
        print(COMMANDS[command](*arguments) or "", flush=True)
    except GLib.Error as error:
        print(Gio.DBusError.get_remote_error(error), flush=True)

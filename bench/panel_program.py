"""Stands for the panel, its settings and its accessible tree, all on the session bus, and does what its
standard input says: one command a line, each answered with one line."""

import os
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

ATSPI = "org.a11y.atspi."
ROOT, PANEL, FRAME, BOX = "/org/a11y/atspi/accessible/root", "/panel", "/frame", "/box"
INTERFACES = Gio.DBusNodeInfo.new_for_xml("""<node>
  <interface name="org.a11y.atspi.Accessible">
    <method name="GetChildren"><arg type="a(so)" direction="out"/></method>
    <method name="GetAttributes"><arg type="a{ss}" direction="out"/></method>
  </interface>
  <interface name="org.a11y.atspi.Component">
    <method name="GetExtents"><arg type="u" direction="in"/><arg type="(iiii)" direction="out"/></method>
  </interface>
  <interface name="org.a11y.Bus"><method name="GetAddress"><arg type="s" direction="out"/></method></interface>
  <interface name="org.xfce.Xfconf">
    <method name="GetProperty">
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
    </method>
    <method name="GetAllProperties">
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="a{sv}" direction="out"/>
    </method>
  </interface>
</node>""").interfaces
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
me = bus.get_unique_name()
state = {"calls": 0, "scale": 1, "address": os.environ["DBUS_SESSION_BUS_ADDRESS"]}
plugins = {}  # By path: type and place, in the order of the panel.


def settings():
    values = {"/panels": GLib.Variant("av", [GLib.Variant("i", 1)]),
              "/panels/panel-1/plugin-ids": GLib.Variant("av", [GLib.Variant("i", int(path[2:])) for path in plugins])}
    values.update((f"/plugins/plugin-{path[2:]}", GLib.Variant("s", kind)) for path, (kind, _) in plugins.items())
    return values


def children(path):
    below = {ROOT: [PANEL], PANEL: [FRAME], FRAME: [BOX], BOX: plugins}
    return GLib.Variant("(a(so))", ([(me, child) for child in below[path]],))


def answer(_bus, _sender, path, _interface, method, arguments, invocation):
    state["calls"] += 1
    if method == "GetExtents" and path not in (FRAME, *plugins):
        invocation.return_dbus_error("org.freedesktop.DBus.Error.UnknownMethod", "no such object")
        return
    answers = {
        "GetChildren": lambda: children(path),
        "GetAttributes": lambda: GLib.Variant("(a{ss})", ({"toolkit": "stand-in", "window-type": "dock"},)),
        "GetExtents": lambda: GLib.Variant("((iiii))", (plugins[path][1] if path in plugins else (0, 0, 1000, 26),)),
        "GetAddress": lambda: GLib.Variant("(s)", (state["address"],)),
        "GetProperty": lambda: GLib.Variant("(v)", (GLib.Variant("i", state["scale"]),)),
        "GetAllProperties": lambda: GLib.Variant("(a{sv})", (settings(),)),
    }
    invocation.return_value(answers[method]())


def changed(channel):
    bus.emit_signal(None, "/org/xfce/Xfconf", "org.xfce.Xfconf", "PropertyChanged",
                    GLib.Variant("(ssv)", (channel, "/", GLib.Variant("b", True))))
    # The signal is sent by another thread; once the bus has answered what follows it, it is on its way to the agent.
    bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", None, None,
                  Gio.DBusCallFlags.NONE, 5000, None)


def put(number, kind, x, width):
    """Adds a plug-in or moves one; the settings tell of new ones."""
    is_new = number not in (path[2:] for path in plugins)
    plugins["/p" + number] = (kind, (int(x), 0, int(width), 26))
    if is_new:
        bus.register_object("/p" + number, INTERFACES[1], answer, None, None)
        changed("xfce4-panel")


def remove(number):
    plugins.pop("/p" + number)
    changed("xfce4-panel")


def retype(number, kind):
    plugins["/p" + number] = (kind, plugins["/p" + number][1])
    changed("xfce4-panel")


def scale(factor):
    state["scale"] = int(factor)
    changed("xsettings")


def accessibility(address):
    state["address"] = address


def leave(name):
    bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
                  GLib.Variant("(s)", (name,)), None, Gio.DBusCallFlags.NONE, 5000, None)


def own(name):
    bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                  GLib.Variant("(su)", (name, 4)), None, Gio.DBusCallFlags.NONE, 5000, None)


def calls():
    """How many were received since the last time."""
    count, state["calls"] = state["calls"], 0
    return count


COMMANDS = {each.__name__: each for each in (put, remove, retype, scale, accessibility, leave, own, calls)}


def obey(channel, _condition):
    line = channel.readline()
    if not line:
        loop.quit()
        return False
    command, *arguments = line.split()
    result = COMMANDS[command](*arguments)
    print("" if result is None else result, flush=True)
    return True


for object_path, kinds in ((ROOT, (0,)), (PANEL, (0,)), (FRAME, (0, 1)), (BOX, (0,)), ("/org/a11y/bus", (2,)),
                           ("/org/xfce/Xfconf", (3,))):
    for each in kinds:
        bus.register_object(object_path, INTERFACES[each], answer, None, None)
for each in ("org.a11y.atspi.Registry", "org.a11y.Bus", "org.xfce.Xfconf", "org.xfce.Panel"):
    own(each)
loop = GLib.MainLoop()
GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, obey)
print(me, flush=True)
loop.run()

"""A program with tray items of one colour each, every one on a connection of its own: one command a line, each
answered with one line. Takes up to SLOW seconds to tell a panel an item's Id, as a busy program does."""

import os
import random
import sys
import time

from gi.repository import Gio, GLib

INTERFACE = Gio.DBusNodeInfo.new_for_xml("<node><interface name='org.kde.StatusNotifierItem'>" + "".join(
    f"<property name='{name}' type='{kind}' access='read'/>" for name, kind in (
        ("Id", "s"), ("Title", "s"), ("Status", "s"), ("IconPixmap", "a(iiay)"))) + "</interface></node>").interfaces[0]
ITEM = "/StatusNotifierItem"
items = {}


def show(color, identifier):
    bus = Gio.DBusConnection.new_for_address_sync(
        os.environ["DBUS_SESSION_BUS_ADDRESS"],
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    values = {"Id": ("s", identifier), "Title": ("s", color), "Status": ("s", "Active"),
              "IconPixmap": ("a(iiay)", [(22, 22, (b"\xff" + bytes.fromhex(color)) * 22 * 22)])}

    def tell(_bus, _sender, _path, _interface, name):
        time.sleep(random.random() * float(os.environ.get("SLOW", 0)) if name == "Id" else 0)
        return GLib.Variant(*values[name])
    bus.register_object(ITEM, INTERFACE, None, tell, None)
    items[color] = bus
    bus.call_sync("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher",
                  "RegisterStatusNotifierItem", GLib.Variant("(s)", (bus.get_unique_name(),)), None, 0, 5000, None)


def lie(color):
    """The panel believes the item's signal and takes its icon away, though the item calls itself active when asked."""
    items[color].emit_signal(None, ITEM, "org.kde.StatusNotifierItem", "NewStatus", GLib.Variant("(s)", ("Passive",)))


def obey(channel, _condition):
    command, *arguments = channel.readline().split() or [""]
    if not command:
        sys.exit()
    {"show": show, "lie": lie}[command](*arguments)
    print("done", flush=True)
    return True


GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, obey)
print("ready", flush=True)
GLib.MainLoop().run()

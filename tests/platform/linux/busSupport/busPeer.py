"""A program on the session bus: owns the names given, plays a running copy and a tray item, and prints
what is asked of it. With "--register" it is in the tray before it prints its name; with "--silent" it
answers nothing. It ends when its standard input does."""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib


def pixels(width, height, count=None):
    count = width * height if count is None else count
    return dbus.Struct((width, height, dbus.ByteArray(bytes([255, 10, 20, 30]) * count)), signature="iiay")


PIXMAPS = {
    "fitting": [pixels(16, 16), pixels(32, 24), pixels(128, 128)],
    "absurd": [pixels(513, 1), pixels(-4, -4, 16), pixels(8, 8, 63), pixels(0, 0)],
}


class Copy(dbus.service.Object):
    @dbus.service.method("org.freedesktop.Application", in_signature="a{sv}")
    def Activate(self, _data):
        print("Activate", flush=True)


class Item(dbus.service.Object):
    properties = {"Id": "peer"}

    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="s", out_signature="a{sv}")
    def GetAll(self, _interface):
        return self.properties


def main(arguments):
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    kept = [dbus.service.BusName(name, bus) for name in arguments if not name.startswith("--")]
    for argument in arguments:
        if argument.startswith("--pixmap="):
            list_ = PIXMAPS[argument.split("=")[1]]
            Item.properties["IconPixmap"] = dbus.Array(list_, signature="(iiay)")
        if argument.startswith("--icon="):
            folder, name = argument.split("=")[1].rsplit("/", 1)
            Item.properties.update({"IconThemePath": folder, "IconName": name})
    kept += [Copy(bus, "/local/orvo/Orvo"), Item(bus, "/StatusNotifierItem")]
    if "--register" in arguments:
        watcher = bus.get_object("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", introspect=False)
        watcher.RegisterStatusNotifierItem(bus.get_unique_name(), dbus_interface="org.kde.StatusNotifierWatcher")
    print(bus.get_unique_name(), flush=True)
    if "--silent" in arguments:
        sys.stdin.read()
        return
    loop = GLib.MainLoop()
    GLib.io_add_watch(sys.stdin, GLib.IO_HUP, lambda *_: loop.quit())
    loop.run()


main(sys.argv[1:])

"""Calls on a D-Bus bus, answered by plain values."""

from gi.repository import Gio, GLib

DBUS = "org.freedesktop.DBus"


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
    connection.set_exit_on_close(False)
    return connection


def call(bus, service, path, method, signature="()", *arguments, limit=5.0):
    """Values of the answer to a method, named with its interface; raises GLib.Error."""
    interface, name = method.rsplit(".", 1)
    return bus.call_sync(service, path, interface, name, GLib.Variant(signature, arguments), None,
                         Gio.DBusCallFlags.NONE, round(limit * 1000), None).unpack()


def call_bus(bus, method, signature, *arguments):
    """A method of the bus itself."""
    return call(bus, DBUS, "/org/freedesktop/DBus", f"{DBUS}.{method}", signature, *arguments)


def property_of(bus, service, path, interface, name):
    return call(bus, service, path, DBUS + ".Properties.Get", "(ss)", interface, name, limit=2)[0]


def owner(bus, name):
    """The unique name behind a well-known one, or None."""
    try:
        return call_bus(bus, "GetNameOwner", "(s)", name)[0]
    except GLib.Error:
        return None

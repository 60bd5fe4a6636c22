"""A program on the session bus that does what its standard input says: one Python expression a line, each answered by
one line of JSON, which is the error's name where the bus has one. Under several names it stands for several
applications. Takes up to SLOW seconds to tell a panel about an item, as a busy program does."""

import json
import os
import random
import sys
import time

from gi.repository import Gio, GLib
from Xlib import X, display

from bus import call, call_bus, connect

AGENT, WATCHER, ITEM = "local.orvo.MenuBarAgent", "org.kde.StatusNotifierWatcher", "org.kde.StatusNotifierItem"
AGENT_PATH, AGENT_INTERFACE, ITEM_PATH = "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1", "/StatusNotifierItem"
ADDRESS = os.environ["DBUS_SESSION_BUS_ADDRESS"]
bus = connect(ADDRESS)
items = {}  # The connections of what it shows.


def own(name, flags=4):
    call_bus(bus, "RequestName", "(su)", name, flags)


def release(name):
    call_bus(bus, "ReleaseName", "(s)", name)


def serve(connection=bus, **answers):
    """Answers methods from now on, whatever their object: each by a value in GLib's text form, or by a function that
    makes one."""
    def hear(_connection, message, incoming):
        is_call = incoming and message.get_message_type() == Gio.DBusMessageType.METHOD_CALL
        if not is_call or message.get_member() not in answers:
            return message
        answer = answers[message.get_member()]
        reply = message.new_method_reply()
        value = answer(*(message.get_body() or GLib.Variant("()", ())).unpack()) if callable(answer) else answer
        reply.set_body(value if isinstance(value, GLib.Variant) else GLib.Variant.parse(None, value, None, None))
        connection.send_message(reply, Gio.DBusSendMessageFlags.NONE)
        return None
    connection.add_filter(hear)


def register(text, connection=bus):
    call(connection, WATCHER, "/StatusNotifierWatcher", f"{WATCHER}.RegisterStatusNotifierItem", "(s)", text)


def describe(connection=bus, **properties):
    """Tells these of an item, each a signature and a value."""
    values = {name: GLib.Variant(*value) for name, value in properties.items()}

    def tell(*arguments):
        time.sleep(random.random() * float(os.environ.get("SLOW", 0)) if arguments[1:] in ((), ("Id",)) else 0)
        return GLib.Variant("(v)", (values[arguments[1]],)) if arguments[1:] else GLib.Variant("(a{sv})", (values,))
    serve(connection, GetAll=tell, Get=tell)


def show(color, identifier):
    """An item of one colour, on a connection of its own."""
    items[color] = connect(ADDRESS)
    describe(items[color], Id=("s", identifier), Title=("s", color), Status=("s", "Active"),
             IconPixmap=("a(iiay)", [(22, 22, bytes.fromhex("ff" + color) * 22 * 22)]))
    register(items[color].get_unique_name(), items[color])


def lie(color):
    """The panel believes the item's signal and takes its icon away, though the item calls itself active when asked."""
    items[color].emit_signal(None, ITEM_PATH, ITEM, "NewStatus", GLib.Variant("(s)", ("Passive",)))


def agent(method, *arguments):
    return next(iter(call(bus, AGENT, AGENT_PATH, f"{AGENT_INTERFACE}.{method}", *arguments)), None)


def activate(*bundles):
    return agent("Activate", "(aias)", range(9), bundles)


def invalidate(assertion):
    return agent("Invalidate", "(u)", assertion)


def send(service, path, interface, method, arguments):
    """A call for whose answer nobody waits."""
    bus.call(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, -1, None, None)


def register_many(count):
    for number in range(count):
        send(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisterStatusNotifierItem",
             GLib.Variant("(s)", (f"/item{number}",)))
    agent("Items")


def activate_many(count):
    for _ in range(count):
        send(AGENT, AGENT_PATH, AGENT_INTERFACE, "Activate", GLib.Variant("(aias)", ([], [])))
    bus.flush_sync(None)


def fill(icon):
    """Puts a window with very many others beside this icon of the older kind."""
    client = items[icon] = display.Display()
    tray = client.create_resource_object("window", icon).query_tree().parent.query_tree().parent
    client.grab_server()
    socket = tray.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
    for _ in range(20_000):
        socket.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
    client.ungrab_server()
    client.sync()


for line in sys.stdin:
    try:
        result = eval(line)
    except GLib.Error as error:
        result = Gio.DBusError.get_remote_error(error)
    print(json.dumps(result), flush=True)

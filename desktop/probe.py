"""A window that writes down every event it gets: probe.py window|dock TITLE. A dock stands at the bottom
of the screen with a toggle button at its trailing end and nothing else, as a panel of another maker would."""

import sys
import time

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

NAMES = {Gdk.EventType.BUTTON_PRESS: "press", Gdk.EventType.BUTTON_RELEASE: "release", Gdk.EventType.SCROLL: "scroll",
         Gdk.EventType.KEY_PRESS: "key"}


def note(_widget, event):
    if event.type in NAMES:
        detail = event.button.button if event.type in (Gdk.EventType.BUTTON_PRESS, Gdk.EventType.BUTTON_RELEASE) else 0
        print(f"{time.monotonic():.6f} {NAMES[event.type]} {detail}", flush=True)
    return False


def main(kind, title):
    GLib.set_prgname(title)
    window = Gtk.Window(title=title)
    widget = Gtk.ToggleButton(label=title) if kind == "dock" else Gtk.EventBox()
    widget.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK | Gdk.EventMask.SCROLL_MASK |
                      Gdk.EventMask.KEY_PRESS_MASK)
    widget.connect("event", note)
    if kind == "dock":
        geometry = Gdk.Display.get_default().get_monitor(0).get_geometry()
        window.set_type_hint(Gdk.WindowTypeHint.DOCK)
        window.set_default_size(geometry.width, 30)
        window.move(0, geometry.height - 30)
        box = Gtk.Box()
        empty = Gtk.EventBox()
        empty.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK)
        empty.connect("event", note)
        box.pack_start(empty, True, True, 0)
        box.pack_end(widget, False, False, 0)
        window.add(box)
    else:
        window.set_default_size(300, 200)
        window.connect("key-press-event", note)
        window.add(widget)
    window.connect("map-event", lambda *_: print("ready", flush=True))
    window.show_all()
    Gtk.main()


main(*sys.argv[1:])

"""A window of our own that writes down every press and release it gets."""

import sys
import time

from waiting import wait


class Probe:
    """A window of this title, or a dock at the bottom of the screen, as a panel of another maker would be."""

    def __init__(self, desktop, kind, title):
        self.desktop, self.name = desktop, title
        desktop.spawn(title, ["/usr/bin/python3", __file__, kind, title])
        wait(lambda: "ready" in desktop.log(title), 20, title)

    def events(self):
        """Moment, kind and button of each."""
        lines = [line.split() for line in self.desktop.log(self.name).splitlines()]
        return [(float(line[0]), line[1], int(line[2])) for line in lines if len(line) == 3 and line[0][0].isdigit()]

    def kinds(self, since=0.0):
        return [event[1:] for event in self.events() if event[0] >= since]


def main(kind, title):
    import gi
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gdk, GLib, Gtk
    names = {Gdk.EventType.BUTTON_PRESS: "press", Gdk.EventType.BUTTON_RELEASE: "release"}

    def note(_widget, event):
        if event.type in names:
            print(f"{time.monotonic():.6f} {names[event.type]} {event.button.button}", flush=True)
    GLib.set_prgname(title)
    window, content = Gtk.Window(title=title), Gtk.EventBox()
    content.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK)
    content.connect("event", note)
    window.add(content)
    window.set_default_size(300, 200)
    if kind == "dock":
        screen = Gdk.Display.get_default().get_monitor(0).get_geometry()
        window.set_type_hint(Gdk.WindowTypeHint.DOCK)
        window.set_default_size(screen.width, 30)
        window.move(0, screen.height - 30)
    window.connect("map-event", lambda *_: print("ready", flush=True))
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main(*sys.argv[1:])

"""A window of our own that notes every press and release it gets."""

from Xlib import X, Xatom, display

from waiting import wait


class Probe:
    """Of a program of its own: a dock, as a panel of another maker would be, or a plug-in inside one."""

    def __init__(self, desktop, frame, inside=None):
        self._display, self.buttons = display.Display(desktop.display_name), []
        types, of_this_kind = map(self._display.intern_atom, ("_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK"))
        parent = self._display.create_resource_object("window", (inside.window if inside else desktop.root).id)
        self.window = parent.create_window(
            *frame, 0, X.CopyFromParent, event_mask=X.ButtonPressMask | X.ButtonReleaseMask)
        self.window.change_property(types, Xatom.ATOM, 32, [of_this_kind])
        self.window.set_wm_normal_hints(flags=4 | 8)  # The program asks for this place and size.
        self.close = self._display.close

        def shown():
            self.window.map()  # A window manager that is only starting may miss the wish.
            return self.window.get_attributes().map_state == X.IsViewable
        wait(shown, what="the probe")

    def read(self):
        """Kind, button and place on the screen of each so far."""
        while self._display.pending_events():
            got = self._display.next_event()
            if got.type in (X.ButtonPress, X.ButtonRelease):
                kind = "down" if got.type == X.ButtonPress else "up"
                self.buttons.append((kind, got.detail, (got.root_x, got.root_y)))
        return self.buttons

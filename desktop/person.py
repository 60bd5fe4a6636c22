"""The person in front of the desktop."""

import ctypes
import time

from Xlib import X, XK, display
from Xlib.ext import xinput, xtest

from waiting import hold


class Person:
    """Moves the pointer and presses buttons and keys; buttons come from the server's own mouse."""

    def __init__(self, name):
        self._x11, self._xtst = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
        open_device = ctypes.CDLL("libXi.so.6").XOpenDevice
        self._x11.XOpenDisplay.restype = open_device.restype = ctypes.c_void_p
        self._connection = ctypes.c_void_p(self._x11.XOpenDisplay(name.encode()))
        self._display = display.Display(name)
        self._root = self._display.screen().root
        # The slave pointer that stands for the hardware: "Xvfb mouse", "Xephyr virtual mouse".
        mouse = next(device.deviceid for device in self._display.xinput_query_device(xinput.AllDevices).devices
                     if device.use == xinput.SlavePointer and "XTEST" not in device.name)
        self._mouse = ctypes.c_void_p(open_device(self._connection, ctypes.c_ulong(mouse)))

    def move(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=int(x), y=int(y))
        self._display.sync()

    def button(self, number, pressed):
        self._xtst.XTestFakeDeviceButtonEvent(self._connection, self._mouse, number, int(pressed), None, 0,
                                              ctypes.c_ulong(0))
        self._x11.XSync(self._connection, 0)

    def click(self, x, y, button=1, held=0.0):
        """Presses, holds for so many seconds and lets go; returns the moment before the press."""
        self.move(x, y)
        pressed = time.monotonic()
        self.button(button, True)
        hold(held)
        self.button(button, False)
        return pressed

    def key(self, *names, held=0.0):
        """Presses the keys in this order, holds them for so many seconds and lets them go in the other."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(name)) for name in names]
        for code in codes:
            xtest.fake_input(self._display, X.KeyPress, code)
        self._display.sync()
        hold(held)
        for code in reversed(codes):
            xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()

    def type(self, text):
        for character in text:
            self.key({" ": "space", ".": "period", "-": "minus"}.get(character, character))

    def pointer(self):
        """Position of the pointer and the mask of pressed buttons."""
        answer = self._root.query_pointer()
        return (answer.root_x, answer.root_y), answer.mask & 0x1F00

    def keyboard_layout(self):
        """Number of the active keyboard layout: what a click on the panel's layout control changes."""
        return self._root.query_pointer().mask >> 13 & 3

"""Pictures of the screen."""

import gi

gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GdkPixbuf, GLib  # noqa: E402
from Xlib import X  # noqa: E402


class Picture:
    """A part of the screen as it is now: 32 bits a pixel."""

    def __init__(self, root, x, y, width, height):
        image = root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF)
        self.width, self.height, self.data = width, height, bytes(image.data)

    def column(self, x, width):
        stride = self.width * 4
        return b"".join(self.data[y * stride + x * 4:y * stride + (x + width) * 4] for y in range(self.height))

    def save(self, path):
        """Writes a PNG."""
        rgb = bytearray(self.width * self.height * 3)
        rgb[0::3], rgb[1::3], rgb[2::3] = self.data[2::4], self.data[1::4], self.data[0::4]
        GdkPixbuf.Pixbuf.new_from_bytes(
            GLib.Bytes.new(bytes(rgb)), GdkPixbuf.Colorspace.RGB, False, 8, self.width, self.height,
            self.width * 3).savev(path, "png", [], [])

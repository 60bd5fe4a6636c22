"""A private desktop: X server, buses, window manager, the real panel, and the person in front of it.

Shared by the whole-desktop tests, scripts/run and bench/figures. Nothing here sleeps for a fixed
time: every wait is for a condition and has a limit.
"""

import contextlib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import uuid

import psutil
from gi.repository import Gio, GLib
from PIL import Image, ImageGrab
from Xlib import X, display, error

import bus
from accessible import Accessible
from person import Person
from waiting import Timeout, settled, wait

REPOSITORY = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUNDLE = os.environ.get("ORVO_BUNDLE", os.path.join(REPOSITORY, "build", "debug", "Orvo.app"))
WATCHER = "org.kde.StatusNotifierWatcher"
AGENT = "local.orvo.MenuBarAgent"
ORVO = "local.orvo.Orvo"
LOGIND = "org.freedesktop.login1"
BACKGROUND = "#40566b"
CELL = 28  # Width of a tray icon's place on a panel of this size, in pixels; the last ends where the tray does.
FRAME = 4  # Around an icon, where the panel shows that it has the focus, by a line with round corners.
SETTINGS_KEY = "Quillet.Preferences.v1"

# Real programs with a tray icon, one of each toolkit: the name by which tests call them, and how
# they are started. The bundle identifier is the desktop file's id.
PROGRAMS = {
    "org.rncbc.qmidinet": ["qmidinet"],
    "com.github.hluk.copyq": ["copyq"],
    "pasystray": ["pasystray"],
    "diodon": ["diodon"],
    "org.flameshot.Flameshot": ["flameshot"],
}

# From the leading to the trailing end, each with its settings.
PLUGINS = {
    "applicationsmenu": {},
    "tasklist": {},
    "separator": {"expand": True, "style": 0},
    "systray": {"square-icons": True},
    "xkb": {"group-policy": 0},
    "pulseaudio": {},
    "clock": {"digital-layout": 3, "digital-time-format": "%H:%M"},
}
PANEL = {"position": "p=6;x=0;y=0", "length": 100, "position-locked": True, "icon-size": 16, "size": 28}
# How Xfce stores most kinds of value.
KINDS = {bool: lambda value: GLib.Variant("b", value), int: lambda value: GLib.Variant("u", value),
         str: lambda value: GLib.Variant("s", value), GLib.Variant: lambda value: value,
         list: lambda value: GLib.Variant("av", [GLib.Variant("i", number) for number in value])}


@contextlib.contextmanager
def stopped(process):
    os.kill(process, signal.SIGSTOP)
    try:
        yield
    finally:
        os.kill(process, signal.SIGCONT)


def center(frame):
    x, y, width, height = frame
    return x + width // 2, y + height // 2


class Desktop:
    """Starts in the order that a session does; close() ends every process that stands below it."""

    def __init__(self, size=(1280, 800), dark=False, server="Xvfb", bundle=BUNDLE, with_logind=True,
                 panels=(({}, tuple(PLUGINS)),), scale=1):
        """Each panel: what is other than PANEL has it, and its plug-ins; `scale` is that of the panel's toolkit."""
        self.panels, self.scale = panels, scale
        self.folder = tempfile.mkdtemp(prefix="orvo-desktop-")
        self.size, self.dark, self.server, self.bundle, self.with_logind = size, dark, server, bundle, with_logind
        self.identity = uuid.uuid4().hex
        self.processes, self.icons, self.signals, self._connections = {}, {}, [], {}
        self.display_name = self._tray = None
        self.home = self.folder_for("home")
        self.logs = self.folder_for("logs")
        keep = ("PATH", "LANG", "USER", "LOGNAME", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS")
        self.environment = {name: os.environ[name] for name in keep if name in os.environ}
        self.data = self.folder_for("home", ".local", "share")
        self.environment.update(
            HOME=self.home, XDG_RUNTIME_DIR=self.folder_for("run", mode=0o700), XDG_DATA_HOME=self.data,
            XDG_CONFIG_HOME=self.folder_for("home", ".config"), XDG_CACHE_HOME=self.folder_for("home", ".cache"),
            XDG_STATE_HOME=self.folder_for("home", ".local", "state"), XDG_CURRENT_DESKTOP="XFCE",
            XDG_SESSION_TYPE="x11", TMPDIR=self.folder_for("tmp"), LC_ALL="C.UTF-8", TZ="UTC", NO_AT_BRIDGE="0",
            GTK_MODULES="", LIBGL_ALWAYS_SOFTWARE="1", ORVO_DESKTOP_MARK=self.identity)
        if scale > 1:
            self.environment["GDK_SCALE"] = str(scale)

    def folder_for(self, *parts, mode=0o755):
        path = os.path.join(self.folder, *parts)
        os.makedirs(path, mode=mode, exist_ok=True)
        return path

    # Life

    def start(self, agent=True, accessibility=True, panel=True):
        """Everything but Orvo and the tray programs. Whoever starts it closes it."""
        self.start_server()
        self.run(["xsetroot", "-solid", BACKGROUND])
        self.run(["setxkbmap", "us,de"])
        self.start_buses(accessibility)
        self.start_window_manager()
        if self.dark:
            self.start_settings("Adwaita-dark")
        if agent:
            self.start_agent()
        if panel:
            self._store_panel()
            self.start_panel()

    def spawn(self, name, command, **environment):
        """Starts a program on this desktop; its output goes to logs/<name>.log."""
        with open(os.path.join(self.logs, name + ".log"), "ab") as log:
            self.processes[name] = subprocess.Popen(
                command, env={**self.environment, **environment}, cwd=self.home, stdin=subprocess.DEVNULL,
                stdout=log, stderr=log, start_new_session=True)
        return self.processes[name]

    def run(self, command, limit=20):
        return subprocess.run(command, env=self.environment, cwd=self.home, capture_output=True, text=True,
                              timeout=limit, check=False)

    def told_by(self, command, limit=20):
        """What a command says that has to succeed."""
        answer = self.run(command, limit)
        assert answer.returncode == 0, answer.stderr
        return answer.stdout

    def running(self, folder):
        """The programs of this folder that run, each as often as it does."""
        answer = self.run(["sh", "-c", "readlink /proc/[0-9]*/exe"])  # Fails where a process ends meanwhile.
        return [line for line in answer.stdout.splitlines() if line.startswith(folder)]

    def log(self, name):
        with open(os.path.join(self.logs, name + ".log"), encoding="utf-8", errors="replace") as file:
            return file.read()

    def sanitizer_reports(self):
        """What sanitizers have written into the logs, where the bundle is built with them."""
        names = [file[:-4] for file in os.listdir(self.logs) if file.endswith(".log")]
        return [line for name in names for line in self.log(name).splitlines()
                if "Sanitizer:" in line or "runtime error:" in line]

    def end(self, name, number=signal.SIGTERM, limit=5.0):
        """Ends one program of this desktop and waits until it is gone."""
        process = self.processes.pop(name, None)
        if process is None:
            return None
        process.send_signal(number)
        process.send_signal(signal.SIGCONT)
        try:
            process.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
        return process.returncode

    def close(self):
        for connection in self._connections.values():
            with contextlib.suppress(GLib.Error):
                connection.close_sync(None)
        self._connections = {}
        for name in sorted(reversed(self.processes), key=lambda name: name in ("server", "bus", "system-bus")):
            self.end(name, limit=2)
        for process in psutil.process_iter():  # What those have started carries the desktop's mark.
            with contextlib.suppress(psutil.Error):
                if process.environ().get("ORVO_DESKTOP_MARK") == self.identity:
                    process.kill()

    def forget(self):
        """Ends the desktop and removes its folder: for one whose logs nobody needs."""
        self.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    # Parts of the session

    def start_server(self):
        """The server takes a free number, and tells it once it is ready."""
        width, height = self.size
        options = {"Xvfb": ["-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp"],
                   "Xephyr": ["-screen", f"{width}x{height}", "-title", "Orvo", "-resizeable"]}
        host = {name: os.environ[name] for name in ("DISPLAY", "XAUTHORITY") if name in os.environ}
        self.spawn("server", [self.server, "-displayfd", "1", "-noreset", *options[self.server]], **host)
        number = wait(lambda: re.search(r"^\d+$", self.log("server"), re.MULTILINE), 20, "the X server")
        self.display_name = self.environment["DISPLAY"] = ":" + number[0]
        self.display = display.Display(self.display_name)
        self.root = self.display.screen().root
        self.person = Person(self.display_name)

    def start_buses(self, accessibility):
        if self.with_logind:
            self.system_bus = self._start_bus("system-bus", "DBUS_SYSTEM_BUS_ADDRESS")
            self.spawn("logind", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"])
        if not accessibility:
            services = self.folder_for(self.data, "dbus-1", "services")
            with open(f"{services}/org.a11y.Bus.service", "w", encoding="ascii") as file:
                file.write("[D-BUS Service]\nName=org.a11y.Bus\nExec=/bin/false\n")
        self.bus = self._start_bus("bus", "DBUS_SESSION_BUS_ADDRESS")
        self.bus.signal_subscribe(
            None, WATCHER, None, None, None, Gio.DBusSignalFlags.NONE,
            lambda *signal: self.signals.append((time.monotonic(), signal[4], signal[5].unpack())))
        if accessibility:
            self.set_accessibility(True)
        if self.with_logind:
            wait(lambda: bus.owner(self.system_bus, LOGIND), what="logind")

    def _start_bus(self, name, variable):
        address = self.environment[variable] = f"unix:path={self.environment['XDG_RUNTIME_DIR']}/{name}"
        self.spawn(name, ["dbus-daemon", "--session", "--nofork", "--print-address", f"--address={address}"])
        wait(lambda: address in self.log(name), what=name)
        return self._connect(address)

    def _connect(self, address):
        if address not in self._connections:
            self._connections[address] = bus.connect(address)
        return self._connections[address]

    def set_accessibility(self, enabled):
        bus.call(self.bus, "org.a11y.Bus", "/org/a11y/bus", bus.DBUS + ".Properties.Set", "(ssv)", "org.a11y.Status",
                 "IsEnabled", GLib.Variant("b", enabled), limit=20)

    def start_window_manager(self):
        self.spawn("openbox", ["openbox", "--sm-disable"])
        wait(lambda: self.property(self.root, "_NET_SUPPORTING_WM_CHECK"), what="the window manager")

    def start_settings(self, theme):
        self.store("xsettings", "/Net/", {"ThemeName": theme})
        self.spawn("settings", ["xfsettingsd", "--disable-wm-check"])
        wait(lambda: self.owner("org.xfce.SettingsDaemon"), what="the desktop's settings")

    def store(self, channel, prefix, values):
        """Stores settings where Xfce's programs look for them; those that run follow at once."""
        for name, value in values.items():
            bus.call(self.bus, "org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf.SetProperty", "(ssv)", channel,
                     prefix + name, KINDS[type(value)](value), limit=20)

    def _store_panel(self):
        values = {"configver": GLib.Variant("i", 2), "panels": list(range(1, len(self.panels) + 1)),
                  "panels/dark-mode": self.dark}
        count = 0
        for number, (settings, plugins) in enumerate(self.panels, 1):
            values.update((f"panels/panel-{number}/{name}", value) for name, value in {**PANEL, **settings}.items())
            values[f"panels/panel-{number}/plugin-ids"] = list(range(count + 1, count + len(plugins) + 1))
            for count, name in enumerate(plugins, count + 1):
                values[f"plugins/plugin-{count}"] = name.partition(":")[0]
                values.update((f"plugins/plugin-{count}/{key}", value) for key, value in PLUGINS.get(name, {}).items())
        self.store("xfce4-panel", "/", values)

    def start_agent(self):
        self.spawn("agent", [os.path.join(self.bundle, "bin", "orvo-agent")])
        # By the second answer it has asked about the tray.
        wait(lambda: self.owner(AGENT) and [self.call_agent("Requesters") for _ in range(2)], what="the agent")

    def start_panel(self):
        self.spawn("panel", ["xfce4-panel", "--disable-wm-check"])
        wait(lambda: self.owner(WATCHER), 20, "a watcher")
        wait(self.tray_frame, 20, "the panel's tray")

    # Buses

    def owner(self, name):
        return bus.owner(self.bus, name)

    def process_of(self, name):
        return bus.call_bus(self.bus, "GetConnectionUnixProcessID", "(s)", name)[0]

    def call_agent(self, method, *arguments):
        """The first value of the answer; None where there is none."""
        path, interface = "/local/orvo/MenuBarAgent", "local.orvo.MenuBarAgent1."
        return next(iter(bus.call(self.bus, AGENT, path, interface + method, *arguments)), None)

    def told_items(self):
        """The items that the panel has been told of."""
        return bus.property_of(self.bus, WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")

    def sleep_is_delayed(self):
        return bool(bus.call(self.system_bus, LOGIND, "/org/freedesktop/login1", LOGIND + ".Manager.ListInhibitors")[0])

    def sleep_announced(self, starts):
        """What logind says before the machine sleeps (True) and after it woke (False)."""
        bus.call(self.system_bus, LOGIND, "/org/freedesktop/login1", "org.freedesktop.DBus.Mock.EmitSignal", "(sssav)",
                 LOGIND + ".Manager", "PrepareForSleep", "b", [GLib.Variant("b", starts)])

    def accessibility(self, program):
        """The accessible application of this name, or None."""
        address, = bus.call(self.bus, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress")
        root = Accessible(self._connect(address), "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        return next((application for application in root.children() if application.name == program), None)

    # Windows

    def property(self, window, name):
        """The value of a window's property; None where there is none."""
        with contextlib.suppress(error.XError):
            value = window.get_full_property(self.display.intern_atom(name), X.AnyPropertyType)
            return value and value.value
        return None

    def window(self, identifier):
        return self.display.create_resource_object("window", identifier)

    def _tree(self, window):
        yield window
        with contextlib.suppress(error.XError):
            for child in window.query_tree().children:
                yield from self._tree(child)

    def windows(self):
        """Every window that the window manager manages, by identifier."""
        return list(self.property(self.root, "_NET_CLIENT_LIST") or [])

    def title(self, window):
        names = [self.property(self.window(window), name) for name in ("_NET_WM_NAME", "WM_NAME")]
        return next((name.decode(errors="replace") for name in names if isinstance(name, bytes)), "")

    def window_titled(self, title):
        return next((window for window in self.windows() if self.title(window) == title), None)

    def frame_of(self, window):
        resource = window if hasattr(window, "id") else self.window(window)
        with contextlib.suppress(error.XError):
            geometry = resource.get_geometry()
            origin = self.root.translate_coords(resource, 0, 0)
            return origin.x, origin.y, geometry.width, geometry.height
        return None

    def _is_viewable(self, window, kind=X.InputOutput):
        with contextlib.suppress(error.XError):
            attributes = window.get_attributes()
            return attributes.map_state == X.IsViewable and attributes.win_class == kind
        return False

    def input_only_windows(self, below=None):
        return [window for window in self._tree(below or self.root) if self._is_viewable(window, X.InputOnly)]

    def pop_ups(self):
        """Windows of the kinds that a click opens: menus and calendars."""
        kinds, found = ("_MENU", "_UTILITY", "_DIALOG"), []
        for window in self._tree(self.root):
            told = [self.display.get_atom_name(atom) for atom in self.property(window, "_NET_WM_WINDOW_TYPE") or ()]
            if any(name.endswith(kinds) for name in told) and self._is_viewable(window):
                found.append(window)
        return found

    def close_window(self, window):
        self.run(["wmctrl", "-i", "-c", hex(window)])
        wait(lambda: window not in self.windows(), what="the window being closed")

    def rest(self, span=0.25, limit=3.0):
        """Lets the screen come to rest before a picture is taken; something that blinks only costs the limit."""
        with contextlib.suppress(Timeout):
            settled(self.screen, span, limit, every=0.03)

    def picture(self, x, y, width, height):
        """Of a part of the screen as it is now."""
        pixels = self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data
        return Image.frombytes("RGB", (width, height), pixels, "raw", "BGRX")

    def screen(self):
        """A picture of the whole screen."""
        return ImageGrab.grab(xdisplay=self.display_name)

    def resize_screen(self, width, height):
        """Up to the first size; the server is told of it and refuses what it knows. The panel follows later and in
        steps: until its tray stands as far from the trailing end as before, icons are not where they seem."""
        trailing = self.tray_trailing()
        mode = f"{width}x{height}"
        self.run(["xrandr", "--newmode", mode, "0", str(width), "0", "0", "0", str(height), "0", "0", "0"])
        self.run(["xrandr", "--addmode", "screen", mode])
        self.told_by(["xrandr", "--output", "screen", "--mode", mode])
        wait(lambda: self.tray_trailing() == trailing, what="the panel following the screen")

    def tray_trailing(self):
        """Distance of the tray's trailing end from the screen's."""
        x, _, width, _ = self.tray_frame()
        return self.root.get_geometry().width - x - width

    # The panel's tray

    def tray_frame(self):
        """Where the panel shows the tray's icons; None while it shows no tray."""
        frame = self._tray and self.frame_of(self._tray)
        if not frame:
            self._tray = self.plug_in("libsystray.so")[1]
            frame = self._tray and self.frame_of(self._tray)
        return frame if frame and self._is_viewable(self.window(self._tray)) else None

    def plug_in(self, library):
        """Process of a plug-in of the panel, and the window that it was told to sit in; (None, None) without one."""
        panel = self.processes.get("panel")
        for process in psutil.process_iter(["ppid", "cmdline"]) if panel else ():
            _, program, *arguments = [*(process.info["cmdline"] or ()), "", ""]
            if process.info["ppid"] == panel.pid and program.endswith(library):
                return process.pid, int(arguments[1])
        return None, None

    def cells(self):
        """The pictures of the tray's icons as the screen shows them now, from left to right."""
        with contextlib.suppress(TypeError, error.BadMatch):  # The panel has no tray, or changed in between.
            _, _, width, height = frame = self.tray_frame()
            picture = self.picture(*frame)
            return [picture.crop((x + FRAME, FRAME, x + CELL - FRAME, height - FRAME)).tobytes()
                    for x in range(width % CELL, width - CELL + 1, CELL)]
        return []

    def shown(self):
        """The names of the icons that the panel shows now, from left to right; "?" for one unknown."""
        by_picture = {picture: name for name, picture in self.icons.items()}
        return [by_picture.get(cell, "?") for cell in self.cells()]

    def start_item(self, name):
        """Starts a program with a tray icon and learns what its icon looks like."""
        known = {*self.cells(), *self.icons.values()} - {self.icons.get(name)}
        self.spawn_item(name, PROGRAMS[name], lambda: self.learn(name, known, 20))

    def spawn_item(self, name, command, arrive):
        """Starts a program and has its icon arrive. The library of diodon and pasystray comes up without its bus now
        and then, says so, and never has an icon: the program is started anew."""
        self.spawn(name, command)
        before = len(self.log(name))
        try:
            arrive()
        except Timeout:
            if "G_IS_DBUS_CONNECTION" not in self.log(name)[before:]:
                raise
            self.end(name)
            self.spawn(name, command)
            arrive()

    def learn(self, name, known, limit=5):
        """Takes the one icon that is not known for that of the program, once the panel is at rest."""
        def one_new():
            new = [cell for cell in self.cells() if cell not in known]
            return len(new) == 1 and new[0]
        self.icons[name] = settled(one_new, 0.5, limit, f"the picture of {name} alone being new")

    def clock(self):
        """Frame of the panel's clock, its last button."""
        elements = self.accessibility("xfce4-panel").walk()
        return [element for element in elements if element.role == "toggle button"][-1].frame

    def away(self):
        """Takes the pointer where it changes no picture."""
        self.person.move(self.size[0] // 2, self.size[1] * 3 // 4)

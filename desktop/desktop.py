"""A private desktop: X server, buses, window manager, the real panel, and the person in front of it.

Shared by the whole-desktop tests, scripts/run and bench/figures. Nothing here sleeps for a fixed
time: every wait is for a condition and has a limit.
"""

import contextlib
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import uuid

from gi.repository import Gio, GLib
from Xlib import X, display, error

from accessible import Accessible
from person import Person
from picture import Picture
from waiting import hold, wait

REPOSITORY = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUNDLE = os.environ.get("ORVO_BUNDLE", os.path.join(REPOSITORY, "build", "debug", "Orvo.app"))
FIRST_DISPLAY = 170  # Far above what people's own servers use.
WATCHER = "org.kde.StatusNotifierWatcher"
AGENT = "local.orvo.MenuBarAgent"
ORVO = "local.orvo.Orvo"
BACKGROUND = "#40566b"
CELL = 28  # Width of a tray icon's place on a panel of this size, in pixels.
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

PANEL_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="icon-size" type="uint" value="16"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array">
{numbers}
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
{plugins}
  </property>
</channel>
"""

# From the leading to the trailing end, each with its settings.
PLUGINS = {
    "applicationsmenu": "",
    "tasklist": "",
    "separator": '<property name="expand" type="bool" value="true"/><property name="style" type="uint" value="0"/>',
    "systray": '<property name="square-icons" type="bool" value="true"/>',
    "xkb": '<property name="group-policy" type="uint" value="0"/>',
    "pulseaudio": "",
    "clock": '<property name="digital-layout" type="uint" value="3"/>'
             '<property name="digital-time-format" type="string" value="%H:%M"/>',
}

DARK_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xsettings" version="1.0">
  <property name="Net" type="empty">
    <property name="ThemeName" type="string" value="Adwaita-dark"/>
  </property>
</channel>
"""

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={path}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
"""


class Desktop:
    """Starts in the order that a session does; stop() ends every process that stands below it."""

    def __init__(self, folder=None, size=(1280, 800), dark=False, server="Xvfb", bundle=BUNDLE, with_logind=True):
        self.folder = folder or tempfile.mkdtemp(prefix="orvo-desktop-")
        self.size, self.dark, self.server, self.bundle, self.with_logind = size, dark, server, bundle, with_logind
        self.identity = uuid.uuid4().hex
        self.processes = {}
        self.icons = {}
        self.signals = []
        self._connections = []
        self._tray = None
        self.display_name = None
        self.home = self._folder("home")
        self.logs = self._folder("logs")
        self.applications = os.path.join(self.home, "Applications")
        self.environment = self._environment()

    # Life

    def _folder(self, *parts, mode=0o755):
        path = os.path.join(self.folder, *parts)
        os.makedirs(path, mode=mode, exist_ok=True)
        return path

    def _environment(self):
        keep = ("PATH", "LANG", "USER", "LOGNAME", "ASAN_OPTIONS", "UBSAN_OPTIONS")
        environment = {name: os.environ[name] for name in keep if name in os.environ}
        environment.update(
            HOME=self.home, XDG_RUNTIME_DIR=self._folder("run", mode=0o700), XDG_CONFIG_HOME=self._folder("home", ".config"),
            XDG_DATA_HOME=self._folder("home", ".local", "share"), XDG_CACHE_HOME=self._folder("home", ".cache"),
            XDG_STATE_HOME=self._folder("home", ".local", "state"), XDG_CURRENT_DESKTOP="XFCE", XDG_SESSION_TYPE="x11",
            TMPDIR=self._folder("tmp"), LC_ALL="C.UTF-8", TZ="UTC", NO_AT_BRIDGE="0", GTK_MODULES="",
            LIBGL_ALWAYS_SOFTWARE="1", ORVO_DESKTOP_MARK=self.identity)
        return environment

    def start(self, agent=True, accessibility=True, panel=True):
        """Everything but Orvo and the tray programs."""
        try:
            self._write_settings()
            self._start_server()
            self.run(["xsetroot", "-solid", BACKGROUND])
            self.run(["setxkbmap", "us,de"])
            self._start_buses(accessibility)
            self.spawn("openbox", ["openbox", "--sm-disable"])
            wait(lambda: self._root_property("_NET_SUPPORTING_WM_CHECK"), what="the window manager")
            if self.dark:
                self.spawn("settings", ["xfsettingsd", "--disable-wm-check"])
                wait(lambda: self.owner("org.xfce.SettingsDaemon"), what="the desktop's settings")
            self._watch_signals()
            if agent:
                self.start_agent()
            if panel:
                self.start_panel()
        except BaseException:
            self.stop()
            raise
        return self

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def spawn(self, name, command, **environment):
        """Starts a program on this desktop; its output goes to logs/<name>.log."""
        log = open(os.path.join(self.logs, name + ".log"), "ab")
        self.processes[name] = subprocess.Popen(
            command, env={**self.environment, **environment}, cwd=self.home, stdin=subprocess.DEVNULL,
            stdout=log, stderr=log, start_new_session=True)
        log.close()
        return self.processes[name]

    def run(self, command, limit=20, **options):
        return subprocess.run(command, env=self.environment, cwd=self.home, capture_output=True, text=True,
                              timeout=limit, check=False, **options)

    def log(self, name):
        with open(os.path.join(self.logs, name + ".log"), encoding="utf-8", errors="replace") as file:
            return file.read()

    def end(self, name, number=signal.SIGTERM, limit=5.0):
        """Ends one program of this desktop and waits until it is gone."""
        process = self.processes.pop(name, None)
        if process is None:
            return None
        with contextlib.suppress(ProcessLookupError):
            os.kill(process.pid, number)
            os.kill(process.pid, signal.SIGCONT)
        try:
            return process.wait(limit)
        except subprocess.TimeoutExpired:
            process.kill()
            return process.wait()

    def stop(self):
        for connection in self._connections:
            with contextlib.suppress(GLib.Error):
                connection.close_sync(None)
        self._connections = []
        for name in [n for n in reversed(self.processes) if n not in ("server", "bus", "system-bus")]:
            self.end(name, limit=1.5)
        for name in ("system-bus", "bus", "server"):
            self.end(name, limit=3)
        for process in self.strays():
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        with contextlib.suppress(AttributeError):
            self.person.close()

    def strays(self):
        """Processes that the desktop's own programs started: they carry its mark."""
        mark = f"ORVO_DESKTOP_MARK={self.identity}".encode()
        found = []
        for entry in os.listdir("/proc"):
            with contextlib.suppress(OSError):
                if entry.isdigit() and int(entry) != os.getpid():
                    with open(f"/proc/{entry}/environ", "rb") as file:
                        if mark in file.read().split(b"\0"):
                            found.append(int(entry))
        return found

    def forget(self):
        """Removes the desktop's folder: for a desktop whose logs nobody needs."""
        shutil.rmtree(self.folder, ignore_errors=True)

    # Parts of the session

    def _write_settings(self):
        folder = self._folder("home", ".config", "xfce4", "xfconf", "xfce-perchannel-xml")
        numbers = "\n".join(f'<value type="int" value="{number}"/>' for number in range(1, len(PLUGINS) + 1))
        plugins = "\n".join(f'<property name="plugin-{number}" type="string" value="{name}">{settings}</property>'
                            for number, (name, settings) in enumerate(PLUGINS.items(), 1))
        panel = PANEL_SETTINGS.format(dark=str(self.dark).lower(), numbers=numbers, plugins=plugins)
        for name, text in (("xfce4-panel", panel), *([("xsettings", DARK_SETTINGS)] if self.dark else [])):
            with open(os.path.join(folder, name + ".xml"), "w", encoding="utf-8") as file:
                file.write(text)

    def _start_server(self):
        for number in range(FIRST_DISPLAY, FIRST_DISPLAY + 20):
            if _is_taken(number):
                continue
            self.display_name = f":{number}"
            width, height = self.size
            command = ["Xvfb", self.display_name, "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp", "-noreset"]
            environment = {}
            if self.server == "Xephyr":
                command = ["Xephyr", self.display_name, "-screen", f"{width}x{height}", "-title", "Orvo", "-noreset", "-resizeable"]
                environment = {name: os.environ[name] for name in ("DISPLAY", "XAUTHORITY") if name in os.environ}
            process = self.spawn("server", command, **environment)
            socket_path = f"/tmp/.X11-unix/X{number}"
            wait(lambda: process.poll() is not None or _accepts(socket_path), 20, "the X server")
            if process.poll() is None:
                break
        else:
            raise RuntimeError("no free display number")
        self.environment["DISPLAY"] = self.display_name
        self.display = wait(self._connect, 20, "a connection to the X server")
        self.root = self.display.screen().root
        self.person = Person(self.display_name)

    def _connect(self):
        with contextlib.suppress(error.DisplayConnectionError, OSError):
            return display.Display(self.display_name)
        return None

    def _start_buses(self, accessibility):
        run = self.environment["XDG_RUNTIME_DIR"]
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={run}/bus"
        if self.with_logind:
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={run}/system-bus"
            configuration = os.path.join(self.folder, "system-bus.conf")
            with open(configuration, "w", encoding="utf-8") as file:
                file.write(BUS_CONFIGURATION.format(path=f"{run}/system-bus"))
            self.spawn("system-bus", ["dbus-daemon", f"--config-file={configuration}", "--nofork"])
            wait(lambda: _accepts(f"{run}/system-bus"), what="the system bus")
            self.system_bus = self.connect_bus(self.environment["DBUS_SYSTEM_BUS_ADDRESS"])
            self.spawn("logind", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"])
        kind = ["--session"] if accessibility else [f"--config-file={self._bus_without_accessibility()}"]
        self.spawn("bus", ["dbus-daemon", *kind, "--nofork", f"--address=unix:path={run}/bus"])
        wait(lambda: _accepts(f"{run}/bus"), what="the session bus")
        self.bus = self.connect_bus()
        if accessibility:
            self.bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                               Gio.DBusCallFlags.NONE, 20000, None)
            self.set_accessibility(True)
        if self.with_logind:
            wait(lambda: self._owner(self.system_bus, "org.freedesktop.login1"), what="logind")

    def _bus_without_accessibility(self):
        """A session bus that can start what the panel needs and nothing else."""
        services = self._folder("services")
        shutil.copy("/usr/share/dbus-1/services/org.xfce.Xfconf.service", services)
        configuration = os.path.join(self.folder, "bus.conf")
        text = BUS_CONFIGURATION.format(path=f"{self.environment['XDG_RUNTIME_DIR']}/bus").replace(">system<", ">session<")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(text.replace("</busconfig>", f"  <servicedir>{services}</servicedir>\n</busconfig>"))
        return configuration

    def connect_bus(self, address=None):
        connection = Gio.DBusConnection.new_for_address_sync(
            address or self.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        connection.set_exit_on_close(False)
        self._connections.append(connection)
        return connection

    def set_accessibility(self, enabled):
        self.bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                           GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", enabled))), None,
                           Gio.DBusCallFlags.NONE, 5000, None)

    def start_agent(self):
        self.spawn("agent", [os.path.join(self.bundle, "bin", "orvo-agent")])
        wait(lambda: self.owner(AGENT), what="the agent's name")

    def start_panel(self):
        self._tray = None
        self.spawn("panel", ["xfce4-panel", "--disable-wm-check"])
        wait(lambda: self.owner(WATCHER), 20, "a watcher")
        wait(self.panel_window, 20, "the panel's window")
        wait(self.tray_frame, 20, "the panel's tray")

    # Buses

    @staticmethod
    def _owner(bus, name):
        try:
            return bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                 "GetNameOwner", GLib.Variant("(s)", (name,)), None, Gio.DBusCallFlags.NONE, 2000,
                                 None).unpack()[0]
        except GLib.Error:
            return None

    def owner(self, name):
        return self._owner(self.bus, name)

    def process_of(self, name):
        return self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                  "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)), None,
                                  Gio.DBusCallFlags.NONE, 2000, None).unpack()[0]

    def watcher_property(self, name):
        return self.bus.call_sync(WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                                  GLib.Variant("(ss)", (WATCHER, name)), None, Gio.DBusCallFlags.NONE, 2000,
                                  None).unpack()[0]

    def _watch_signals(self):
        def arrived(_bus, _sender, _path, _interface, name, parameters):
            self.signals.append((time.monotonic(), name, parameters.unpack()))
        self.bus.signal_subscribe(None, WATCHER, None, None, None, Gio.DBusSignalFlags.NONE, arrived)

    def sleep_announced(self, starts):
        """What logind says before the machine sleeps (True) and after it woke (False)."""
        self.system_bus.call_sync("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.DBus.Mock",
                                  "EmitSignal", GLib.Variant("(sssav)", (
                                      "org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                                      [GLib.Variant("b", starts)])), None, Gio.DBusCallFlags.NONE, 5000, None)

    def accessibility(self, program):
        """The accessible application of this name, or None."""
        if not hasattr(self, "_accessibility_bus"):
            address = self.bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                         Gio.DBusCallFlags.NONE, 5000, None).unpack()[0]
            self._accessibility_bus = self.connect_bus(address)
        root = Accessible(self._accessibility_bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        for application in root.children():
            if application.name == program:
                return application
        return None

    # Windows

    def _root_property(self, name):
        value = self.root.get_full_property(self.display.intern_atom(name), X.AnyPropertyType)
        return value.value if value else None

    def _tree(self, window):
        yield window
        with contextlib.suppress(error.XError):
            for child in window.query_tree().children:
                yield from self._tree(child)

    def windows(self):
        """Every window that the window manager manages, by identifier."""
        return list(self._root_property("_NET_CLIENT_LIST") or [])

    def title(self, window):
        with contextlib.suppress(error.XError):
            resource = self.display.create_resource_object("window", window)
            value = resource.get_full_property(self.display.intern_atom("_NET_WM_NAME"), X.AnyPropertyType)
            return value.value.decode() if value and isinstance(value.value, bytes) else (resource.get_wm_name() or "")
        return ""

    def window_titled(self, title):
        return next((window for window in self.windows() if self.title(window) == title), None)

    def frame_of(self, window):
        resource = window if hasattr(window, "id") else self.display.create_resource_object("window", window)
        with contextlib.suppress(error.XError):
            geometry = resource.get_geometry()
            origin = self.root.translate_coords(resource, 0, 0)
            return origin.x, origin.y, geometry.width, geometry.height
        return None

    def _is_viewable(self, window):
        with contextlib.suppress(error.XError):
            return window.get_attributes().map_state == X.IsViewable
        return False

    def pop_ups(self):
        """Mapped override-redirect windows and those of menus and calendars: what a click opens."""
        found = []
        for window in self._tree(self.root):
            with contextlib.suppress(error.XError):
                attributes = window.get_attributes()
                if attributes.map_state != X.IsViewable or attributes.win_class != X.InputOutput:
                    continue
                kind = window.get_full_property(self.display.intern_atom("_NET_WM_WINDOW_TYPE"), X.AnyPropertyType)
                names = [self.display.get_atom_name(atom) for atom in kind.value] if kind else []
                if any(name.endswith(("_MENU", "_POPUP_MENU", "_UTILITY", "_DIALOG", "_DROPDOWN_MENU")) for name in names):
                    found.append(window)
        return found

    def panel_window(self):
        for window in self._tree(self.root):
            with contextlib.suppress(error.XError):
                names = window.get_wm_class()
                kind = window.get_full_property(self.display.intern_atom("_NET_WM_WINDOW_TYPE"), X.AnyPropertyType)
                if names and names[0] == "xfce4-panel" and kind and self._is_viewable(window) and \
                        self.display.get_atom_name(kind.value[0]).endswith("_DOCK"):
                    return window
        return None

    def close_window(self, window):
        self.run(["wmctrl", "-i", "-c", hex(window)])
        wait(lambda: window not in self.windows(), what="the window being closed")

    def rest(self, span=0.25, limit=3.0):
        """Lets the screen come to rest before a picture is taken; something that blinks only costs the limit."""
        last, since, end = None, time.monotonic(), time.monotonic() + limit
        while time.monotonic() < end:
            hold(0.03)
            geometry = self.root.get_geometry()
            now = Picture(self.root, 0, 0, geometry.width, geometry.height).data
            if now != last:
                last, since = now, time.monotonic()
            elif time.monotonic() - since > span:
                return

    def resize_screen(self, width, height):
        """Up to the first size; a size that the server does not list is made known to it. The panel follows
        later and in steps: until its tray stands as far from the trailing end as before, icons are not where they seem."""
        trailing = self.tray_trailing()
        mode = f"{width}x{height}"
        if mode not in self.run(["xrandr"]).stdout.split():
            self.run(["xrandr", "--newmode", mode, "0", str(width), "0", "0", "0", str(height), "0", "0", "0"])
            self.run(["xrandr", "--addmode", "screen", mode])
        answer = self.run(["xrandr", "--output", "screen", "--mode", mode])
        assert answer.returncode == 0, answer.stderr
        wait(lambda: self.tray_trailing() == trailing, what="the panel following the screen")

    def tray_trailing(self):
        """Distance of the tray's trailing end from the screen's."""
        x, _, width, _ = self._tray_cached()
        return self.root.get_geometry().width - x - width

    def screenshot(self, path):
        geometry = self.root.get_geometry()
        Picture(self.root, 0, 0, geometry.width, geometry.height).save(path)

    # The panel's tray

    def tray_frame(self):
        """Where the panel shows the tray's icons; None while it shows no tray."""
        socket_id = self._plug_in_socket("libsystray.so")
        window = socket_id and self.display.create_resource_object("window", socket_id)
        return self.frame_of(window) if window and self._is_viewable(window) else None

    def _plug_in_socket(self, library):
        """The panel tells its plug-in process the window to sit in as the third argument."""
        if "panel" not in self.processes:
            return None
        children = subprocess.run(["pgrep", "-P", str(self.processes["panel"].pid)], capture_output=True, text=True,
                                  check=False).stdout.split()
        for child in children:
            with contextlib.suppress(OSError, IndexError, ValueError):
                with open(f"/proc/{child}/cmdline", "rb") as file:
                    arguments = file.read().split(b"\0")
                if arguments[1].endswith(library.encode()):
                    return int(arguments[3])
        return None

    def layout_control(self):
        """Frame of the panel's keyboard layout control: each click on it and each notch of the wheel switches."""
        def placed():
            frame = self.frame_of(self._plug_in_socket("libxkb.so"))
            return frame if frame and frame[2] > 1 else None
        return wait(placed, what="the panel's keyboard layout control")

    def cells(self):
        """The pictures of the tray's icons as the screen shows them now, from left to right."""
        frame = self._tray_cached()
        if frame is None:
            return []
        x, y, width, height = frame
        count = width // CELL
        if count == 0:
            return []
        try:
            picture = Picture(self.root, x, y, width, height)
        except error.BadMatch:  # The screen or the panel changed in between.
            return []
        margin = (width - count * CELL) // 2
        return [picture.column(margin + index * CELL, CELL) for index in range(count)]

    def _tray_cached(self):
        if not self._tray:
            self._tray = self._plug_in_socket("libsystray.so")
        if not self._tray:
            return None
        return self.frame_of(self._tray)

    def shown(self):
        """The names of the icons that the panel shows now, from left to right; "?" for one unknown."""
        by_picture = {picture: name for name, picture in self.icons.items()}
        return [by_picture.get(cell, "?") for cell in self.cells()]

    def start_item(self, name, command=None, limit=20):
        """Starts a program with a tray icon and learns what its icon looks like."""
        known = set(self.cells()) | set(self.icons.values())
        known.discard(self.icons.get(name))
        self.spawn(name, command or PROGRAMS[name])
        self.learn(name, known, limit)

    def learn(self, name, known=None, limit=5):
        """Takes the one icon that is not known for that of the program, once the panel is at rest."""
        known = set(self.icons.values()) if known is None else known
        last, since = None, time.monotonic()

        def at_rest():
            nonlocal last, since
            now = self.cells()
            if now != last:
                last, since = now, time.monotonic()
            new = [cell for cell in now if cell not in known]
            return new if len(new) == 1 and time.monotonic() - since > 0.5 else None

        self.icons[name] = wait(at_rest, limit, f"the picture of {name} alone being new")[0]

    def icon_center(self, *names):
        """Centre of the first icon with one of these names, once the panel shows one and has done moving it."""
        last, since = None, time.monotonic()

        def look():
            nonlocal last, since
            now = self._tray_cached(), self.shown()
            if now != last:
                last, since = now, time.monotonic()
            index = next((at for at, name in enumerate(now[1]) if name in names), None)
            if index is None or time.monotonic() - since < 0.1:
                return None
            x, y, width, height = now[0]
            count = width // CELL
            return x + (width - count * CELL) // 2 + index * CELL + CELL // 2, y + height // 2
        return wait(look, 5, f"an icon of {names}")

    def clock(self):
        """Frame of the panel's clock."""
        return self._clock().frame

    def _clock(self):
        """The last button of the panel: its name is the text it shows."""
        elements = self.accessibility("xfce4-panel").walk()
        return [element for element in elements if element.role == "toggle button"][-1]

    def away(self):
        """Takes the pointer where it changes no picture."""
        self.person.move(self.size[0] // 2, self.size[1] * 3 // 4)


def _is_taken(number):
    """Whether a server lives at this display; one that was killed leaves its lock, which the next one clears."""
    try:
        with open(f"/tmp/.X{number}-lock", encoding="ascii") as file:
            return os.path.exists(f"/proc/{int(file.read())}")
    except (OSError, ValueError):
        return os.path.exists(f"/tmp/.X{number}-lock")


def _accepts(path):
    with socket.socket(socket.AF_UNIX) as connection:
        try:
            connection.connect(path)
            return True
        except OSError:
            return False

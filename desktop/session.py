"""A desktop on which Orvo is installed in the person's Applications folder."""

import base64
import contextlib
import json
import os
import shutil
import signal

from gi.repository import GLib

import bus
from accessible import STATE_ENABLED, STATE_SHOWING
from desktop import AGENT, CELL, ORVO, PROGRAMS, SETTINGS_KEY, Desktop, center, stopped
from waiting import Timeout, hold, settled, wait

SHORTCUT = ("Control_L", "Alt_L", "Super_L", "b")
CLICK_PAUSE, CLICK_LENGTH = 0.15, 0.06  # Seconds.
ITEM = "org.kde.StatusNotifierItem"


class OrvoDesktop(Desktop):
    """The agent of the installed bundle serves the panel; Orvo itself starts on demand."""

    def start(self, **options):
        self.bundle = shutil.copytree(self.bundle, os.path.join(self.home, "Applications", "Orvo.app"))
        super().start(**options)

    # Installation and stored choices

    @property
    def program(self):
        return os.path.join(self.bundle, "bin", "orvo")

    @property
    def settings_file(self):
        return os.path.join(self.environment["XDG_CONFIG_HOME"], "orvo", "settings.json")

    def remember(self, hidden):
        """Stores choices as a former run would have left them."""
        record = {"rules": dict.fromkeys(hidden, "hidden"), "autoRehideSeconds": 0}
        data = base64.b64encode(json.dumps(record).encode()).decode()
        os.makedirs(os.path.dirname(self.settings_file), exist_ok=True)
        with open(self.settings_file, "w", encoding="utf-8") as file:
            json.dump({SETTINGS_KEY: {"base64": data}, "Orvo.HasOpenedSettings": True}, file)

    def remembered(self):
        """The rules that the settings file holds now."""
        with open(self.settings_file, encoding="utf-8") as file:
            record = json.load(file).get(SETTINGS_KEY)
        return json.loads(base64.b64decode(record["base64"]))["rules"] if record else {}

    # Orvo running

    def start_orvo(self, ready=True):
        """Starts Orvo and waits for its arrow; with `ready` also until hiding is offered."""
        wait(lambda: not {"orvo", "orvo-hidden"} & set(self.shown()), 20, "the former arrow leaving")
        self.spawn("orvo", [self.program])
        if "orvo" not in self.icons:
            self.learn("orvo", self.icons.values(), 20)
        wait(lambda: "orvo" in self.shown() or self.orvo.poll() is not None, 20, "the arrow")
        assert self.orvo.poll() is None, "Orvo ended at once: " + self.log("orvo")
        if ready:
            wait(self.can_hide, 20, "hiding being offered")

    def start_all(self, hidden, programs=tuple(PROGRAMS)[:4], ready=True):
        """The tray programs, then Orvo with these marked to be hidden."""
        for name in programs:
            self.start_item(name)
        self.remember(hidden)
        self.start_orvo(ready)

    def start_known(self, name):
        """A tray program whose picture does not matter: starts it and waits until the agent knows its item."""
        self.spawn_item(name, PROGRAMS[name], lambda: wait(
            lambda: name in [bundle for *_, bundle in self.call_agent("Items")], 20, name))

    @property
    def orvo(self):
        return self.processes["orvo"]

    @property
    def _item(self):
        return f"{ITEM}-{self.orvo.pid}-1"

    def end_while_scanning(self):
        """Ends Orvo in the middle of a scan: the agent, held back so long, answers when Orvo's parts are going."""
        if "orvo" not in self.processes or self.orvo.poll() is not None or not self.owner(AGENT):
            return
        orvo, item = self.orvo, self._item
        with stopped(self.process_of(AGENT)):
            for _ in range(2):  # The scan that the first one asks for has begun when the second is answered.
                bus.call(self.bus, ORVO, "/local/orvo/Orvo", "org.freedesktop.Application.Activate", "(a{sv})", {})
            os.kill(orvo.pid, signal.SIGTERM)
            wait(lambda: not self.owner(item), 5, "the arrow leaving")
        wait(lambda: orvo.poll() is not None, 10, "the end of Orvo")
        assert orvo.returncode == 0, f"Orvo ended with {orvo.returncode} while it scanned: {self.log('orvo')}"

    def tool_tip(self):
        return bus.property_of(self.bus, self._item, "/StatusNotifierItem", ITEM, "ToolTip")[2]

    def is_hidden(self):
        """What the arrow says; applying counts as hidden."""
        return self.tool_tip().startswith("Show")

    def _call_menu(self, method, *arguments):
        return bus.call(self.bus, self._item, "/StatusNotifierItem/Menu", f"com.canonical.dbusmenu.{method}",
                        *arguments)

    def menu(self):
        """The fresh menu of a right click: (identifier, label, enabled) of each item."""
        self._call_menu("AboutToShowGroup", "(ai)", [0])
        _, (_, _, children) = self._call_menu("GetLayout", "(iias)", 0, -1, [])
        return [(child[0], child[1].get("label", ""), child[1].get("enabled", True)) for child in children]

    def choose(self, label):
        """Chooses an item of the menu as the panel does."""
        self.send_to_menu((next(item[0] for item in self.menu() if item[1] == label), "clicked"))

    def send_to_menu(self, *events):
        """Each an item's identifier and what the panel says has happened to it."""
        self._call_menu("EventGroup", "(a(isvu))", [(*event, GLib.Variant("i", 0), 0) for event in events])

    def can_hide(self):
        with contextlib.suppress(GLib.Error, IndexError):
            return self.menu()[0][2]
        return False

    def settings_window(self):
        return self.window_titled("Orvo Settings")

    def application(self):
        """Orvo's accessible application, once it has shown a window."""
        return wait(lambda: self.accessibility("orvo") or self.accessibility("Orvo"), what="Orvo's accessible tree")

    def control(self, name, limit=5.0):
        """The control of the settings window with this accessible name or description, once it is on the screen."""
        return wait(lambda: self.shown_control(name), limit, f"a control named {name}")

    def shown_control(self, name):
        return next((element for element in self.application().walk()
                     if name in (element.name, element.description) and element.has(STATE_SHOWING)), None)

    def expect_told(self, text):
        """Opens the settings window from the arrow's menu and waits until it shows this line."""
        self.choose("Settings…")
        self.control(text, 10)

    # What a person does with it

    def press(self, name):
        """Clicks on the control with the pointer, once it can be used and stands still."""
        wait(lambda: self.control(name).has(STATE_ENABLED), what=f"{name} being enabled")
        self.rest(0.1, 1)
        self.click(center(self.control(name).frame))

    def mark(self, application, choice="Hide"):
        """Chooses Keep or Hide in the application's row with the pointer."""
        picker = self.control(f"Visibility for {application}")
        self.rest(0.1, 1)
        self.click(center(next(each for each in picker.walk() if each.name == choice).frame))

    def arrow(self):
        """Centre of the arrow, whose picture differs between the two states, once the panel has done moving it."""
        def place():
            frame, shown = self.tray_frame(), self.shown()
            index = next((at for at, name in enumerate(shown) if name in ("orvo", "orvo-hidden")), None)
            return frame and index is not None and (frame, index)
        (x, y, width, height), index = settled(place, 0.1, what="the arrow")
        return x + width % CELL + index * CELL + CELL // 2, y + height // 2

    def click(self, place, button=1):
        """As slowly as a person: the panel drops some clicks that take no time or follow its own layout at once."""
        self.person.move(*place)
        hold(CLICK_PAUSE)
        self.person.click(*place, button=button, held=CLICK_LENGTH)
        hold(CLICK_LENGTH)
        self.away()

    def dismiss(self, clock=None):
        """Closes what clicks have opened; only a click on the clock, whose place `clock` tells, closes the calendar."""
        clock = clock or (lambda: center(self.clock()))
        for close in (lambda: self.person.key("Escape"), lambda: self.person.click(*clock())) * 2:
            if not self.pop_ups():
                return
            close()
            self.away()
            with contextlib.suppress(Timeout):
                wait(lambda: not self.pop_ups(), 0.5)

    def without(self, hidden):
        """What the panel shows once these are hidden."""
        return ["orvo-hidden" if name == "orvo" else name for name in self.shown() if name not in hidden]

    def click_arrow(self, button=1):
        self.click(self.arrow(), button)

    def expect_shown(self, names, limit=5.0, what=""):
        """Waits until the panel shows exactly these icons in this order."""
        try:
            wait(lambda: self.shown() == list(names), limit)
        except Timeout:
            raise AssertionError(f"{what or 'the panel'} shows {self.shown()}, not {list(names)}") from None

    def hide(self):
        """Hides by a click on the arrow and waits for the panel; learns the turned arrow at first."""
        self.click_arrow()
        wait(self.is_hidden, 5, "the arrow saying hidden")
        if "orvo-hidden" not in self.icons:
            wait(lambda: len(self.cells()) < len(self.icons), 5, "icons leaving the panel")
            self.learn("orvo-hidden", self.icons.values())

    def reveal(self):
        """Reveals by a click on the arrow."""
        self.click_arrow()
        wait(lambda: not self.is_hidden(), 5, "the arrow saying visible")

    def hide_and_expect(self, names):
        self.hide()
        self.expect_shown(names, what="hidden, the panel")

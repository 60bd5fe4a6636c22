#!/usr/bin/python3
"""Random faults: kills, or stops for a while, parts of a private desktop in every state of the bar while somebody
clicks and types, and checks after each that Orvo has come through it. The same seed makes the same choices."""

import argparse
import contextlib
import os
import random
import signal
import sys
import time
from itertools import product
from pathlib import Path

import psutil
from gi.repository import GLib
from Xlib import X

from desktop import CELL, PROGRAMS, WATCHER
from session import SHORTCUT, OrvoDesktop
from waiting import Timeout, hold, settled, wait

ITEMS = [*list(PROGRAMS)[:4], "parcellite"]  # The last has an icon of the older kind.
PROGRAMS["parcellite"] = ["parcellite"]
HIDDEN = ["com.github.hluk.copyq", "pasystray", "parcellite"]
STATES = ("visible", "applying", "hidden")
PACE = 0.05  # Seconds between two things that the person does.
LIMIT = 4.0  # Seconds until everything has to be right again,
QUIET = 0.3  # and for how many it has to stay so.
STOPS = (0.1, 1.0, 6.0)  # Seconds; Orvo gives up waiting for the agent after five.
# What a process may have more than when it was first seen at rest.
DESCRIPTORS, MEGABYTES = 6, 6


def children(parent):
    """Name, status and identifier of each child."""
    return [(child.info["name"], child.info["status"], child.pid)
            for child in psutil.process_iter(["name", "status", "ppid"]) if child.info["ppid"] == parent]


def weight(process):
    """Open descriptors, and written memory in megabytes."""
    with open(f"/proc/{process}/smaps_rollup", encoding="ascii") as file:
        written = sum(int(line.split()[1]) for line in file if line.startswith("Private_Dirty"))
    return len(os.listdir(f"/proc/{process}/fd")), written / 1024


class Noise:
    """Somebody who clicks and types without rest, never inside a menu."""

    def __init__(self, desktop, chance):
        self.person, self.chance, self.pressed = desktop.person, chance, None
        width = desktop.size[0]
        tray = desktop.tray_frame()
        places = [(x, 14) for x in range(tray[0] + 14, width, 28)]
        self.places = [*places, (width // 2, 14), (300, 500)]

    def act(self):
        if self.pressed:
            self.release()
        elif self.chance.random() < 0.25:
            self.person.key(*self.chance.choice((SHORTCUT, SHORTCUT, ("Escape",), ("Shift_L",))))
        else:
            self.person.move(*self.chance.choice(self.places))
            self.pressed = self.chance.choice((1, 1, 1, 3))
            self.person.button(self.pressed, True)

    def release(self):
        if self.pressed:
            self.person.button(self.pressed, False)
        self.pressed = None


class Faults:
    def __init__(self, desktop, seed, spared):
        self.desktop, self.chance = desktop, random.Random(seed)
        self.first, self.clock = {}, (desktop.size[0] - 10, 14)
        # Each part: how its process is found, and what a session, or else the person, does when it has died.
        self.parts = {
            "Orvo": (lambda: desktop.orvo.pid, self.start_orvo),
            "the agent": (lambda: desktop.processes["agent"].pid, self.log_in_again),
            "the guardian": (lambda: self.guardians()[0], lambda: None),
            "the panel": (lambda: desktop.processes["panel"].pid, desktop.start_panel),
            "the tray": (lambda: desktop.plug_in("libsystray.so")[0], lambda: None),
            "the accessibility bus": (self.accessibility_bus, self.start_accessibility),
            "the settings": (lambda: desktop.processes["settings"].pid, lambda: desktop.start_settings("Adwaita")),
            "the window manager": (lambda: desktop.processes["openbox"].pid, desktop.start_window_manager),
            **{name: (lambda name=name: desktop.processes[name].pid, lambda name=name: desktop.start_known(name))
               for name in ITEMS}}
        for part in spared:
            del self.parts[part]
        self.deck = []  # What is still to come until everything has been killed once and stopped once.

    # Parts of the desktop

    def guardians(self):
        agent = self.desktop.processes["agent"].pid
        return [process for name, state, process in children(agent)
                if name == "orvo-guardian" and state != psutil.STATUS_ZOMBIE]

    def accessibility_bus(self):
        launcher = self.desktop.process_of("org.a11y.Bus")
        return next(process for name, _, process in children(launcher) if name == "dbus-daemon")

    def start_orvo(self):
        self.expect(lambda shown: shown == sorted(ITEMS))
        self.desktop.start_orvo(ready=False)

    def log_in_again(self):
        """What the agent's end leaves must be all icons; that the panel has them in hand, and some of them an icon of
        the older kind besides, ends with the session."""
        desktop = self.desktop
        self.expect(lambda shown: set(ITEMS) <= set(shown))
        for name in ("panel", *ITEMS):
            desktop.end(name)
        wait(lambda: not desktop.owner(WATCHER), what="the panel's end")
        desktop.start_agent()
        desktop.start_panel()
        for name in ITEMS:
            desktop.start_known(name)

    def start_accessibility(self):
        """The panel does not look for another bus."""
        self.desktop.set_accessibility(True)
        self.desktop.end("panel")
        self.desktop.start_panel()

    def expect(self, holds):
        """Icons while Orvo or the agent is gone."""
        def look():
            self.dismiss()
            return holds(sorted(self.desktop.shown()))
        with contextlib.suppress(Timeout):
            return wait(look, LIMIT, every=0.05)
        raise AssertionError(f"without it, the panel shows {self.desktop.shown()}")

    # One fault

    def bring_about(self, state):
        desktop = self.desktop
        if desktop.is_hidden():
            desktop.choose("Show all icons")
            wait(lambda: not desktop.is_hidden(), LIMIT, "the reveal")
        if state == "visible":
            return
        wait(desktop.can_hide, 25, "hiding being offered")
        if state == "applying":
            os.kill(desktop.processes["agent"].pid, signal.SIGSTOP)
        desktop.choose("Hide selected icons")
        wait(desktop.is_hidden, LIMIT, "the arrow saying hidden")

    def step(self):
        """One fault, and the check after it."""
        chance, desktop = self.chance, self.desktop
        self.deck = self.deck or chance.sample(pairs := [*product(self.parts, (True, False))], len(pairs))
        state, (part, fatal) = chance.choice(STATES), self.deck.pop()
        before, span, after = chance.randrange(10), chance.choice(STOPS), chance.randrange(10)
        print(f"{part} {'killed' if fatal else f'stopped for {span:g} s'}, {state}", end="", flush=True)
        find, mend = self.parts[part]
        self.bring_about(state)
        process, noise, tray = find(), Noise(desktop, chance), desktop.plug_in("libsystray.so")[0]
        self.play(noise, before)
        os.kill(process, signal.SIGKILL if fatal else signal.SIGSTOP)
        self.play(noise, 3 if fatal else int(span / PACE))
        if not fatal:
            os.kill(process, signal.SIGCONT)
        with contextlib.suppress(ProcessLookupError):
            os.kill(desktop.processes["agent"].pid, signal.SIGCONT)
        self.play(noise, after)
        noise.release()
        desktop.away()
        for started in desktop.processes.values():
            started.poll()  # Else what was killed stays as a zombie of ours.
        if not os.path.exists(f"/proc/{tray}") and not (fatal and part in ("the tray", "the panel")):
            print(", whereupon the tray died by itself", end="")
        if fatal:
            mend()
        self.check()

    def play(self, noise, count):
        for _ in range(count):
            noise.act()
            hold(PACE)

    # What has to hold

    def check(self):
        problem = None

        def right():
            nonlocal problem
            self.dismiss()
            problem = next(self.problems(), None)
            return problem is None
        try:
            settled(right, QUIET, LIMIT + QUIET, every=0.05)
        except Timeout:
            raise AssertionError(problem or "the desktop does not come to rest") from None

    def dismiss(self):
        """Closes what the clicks have opened. What was stopped while a menu was asked for may keep one that no key and
        no click reaches, so it is ended like anything that hangs."""
        desktop = self.desktop
        if window := desktop.settings_window():
            desktop.close_window(window)
        # Whether to start the tray again, where it died twice within a minute.
        if desktop.window_titled("Plugin Restart"):
            desktop.run(["wmctrl", "-a", "Plugin Restart"])
            desktop.person.key("Return")
            hold(0.5)
        desktop.dismiss(lambda: self.clock)
        if any(self.grabs()):
            desktop.person.key("Escape")
        owners = [owner for window in desktop.pop_ups() for owner in desktop.property(window, "_NET_WM_PID") or ()]
        for name in [name for name in ITEMS if desktop.processes[name].pid in owners]:
            desktop.end(name, signal.SIGKILL)
            desktop.start_known(name)
        if (tray := desktop.plug_in("libsystray.so")[0]) and tray in owners:
            print(", whereupon a menu of the tray stayed", end="")
            os.kill(tray, signal.SIGKILL)
        # The panel leaves an icon lit that has moved away from below the pointer.
        if "?" in desktop.shown():
            x, y, width, height = desktop.tray_frame()
            for step in range(x, x + width, CELL // 2):
                desktop.person.move(step, y + height // 2)
                hold(0.01)
            desktop.away()

    def problems(self):
        desktop = self.desktop
        if desktop.orvo.poll() is not None:
            yield f"Orvo has ended: {desktop.orvo.returncode}"
        if desktop.processes["agent"].poll() is not None:
            yield f"the agent has ended: {desktop.processes['agent'].returncode}"
        for name in ITEMS:
            if desktop.processes[name].poll() is not None:
                yield f"{name} has ended: {desktop.processes[name].returncode}"
        try:
            hidden = desktop.is_hidden()
        except GLib.Error as failure:
            yield f"Orvo does not answer: {failure.message}"
            return
        expected = sorted(name for name in [*ITEMS, "orvo-hidden" if hidden else "orvo"] if not (hidden and name in HIDDEN))
        shown = sorted(desktop.shown())
        if shown != expected:
            yield f"the arrow says {desktop.tool_tip()!r}, the panel shows {shown}"
        if desktop.person.pointer()[1]:
            yield "a button is stuck"
        if len(self.guardians()) != 1:
            yield f"guardians: {self.guardians()}"
        for parent in (desktop.orvo.pid, desktop.processes["agent"].pid, *self.guardians()):
            if dead := [name for name, state, _ in children(parent) if state == psutil.STATUS_ZOMBIE]:
                yield f"zombies: {dead}"
        yield from desktop.sanitizer_reports()
        yield from self.grabs()
        yield from self.growth()

    def grabs(self):
        root = self.desktop.root
        answers = (root.grab_pointer(False, 0, X.GrabModeAsync, X.GrabModeAsync, X.NONE, X.NONE, X.CurrentTime),
                   root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime))
        self.desktop.display.ungrab_pointer(X.CurrentTime)
        self.desktop.display.ungrab_keyboard(X.CurrentTime)
        self.desktop.display.sync()
        if any(answers):
            yield f"grabbed: pointer {answers[0]}, keyboard {answers[1]}"

    def growth(self):
        has_window = "libQt6Quick" in Path(f"/proc/{self.desktop.orvo.pid}/maps").read_text("utf-8")
        for process in (self.desktop.orvo.pid, self.desktop.processes["agent"].pid):
            now = weight(process)
            # The settings window brings a library along, which stays.
            first = self.first.setdefault((process, has_window), now)
            if now[0] > first[0] + DESCRIPTORS or now[1] > first[1] + MEGABYTES:
                yield f"process {process} grew from {first} to {now} (descriptors, megabytes)"


def run(desktop, seed, seconds, spared):
    desktop.start()
    desktop.start_settings("Adwaita")
    desktop.start_all(hidden=HIDDEN, programs=ITEMS)
    desktop.hide()
    desktop.reveal()
    faults, start, number = Faults(desktop, seed, spared), time.monotonic(), 0
    faults.check()
    while time.monotonic() < start + seconds:
        number += 1
        print(f"{time.monotonic() - start:.1f} s, {number}. ", end="")
        try:
            faults.step()
        except Exception as failure:
            desktop.screen().save(os.path.join(desktop.logs, "failure.png"))
            print(f"\nseed {seed}, fault {number}: {type(failure).__name__}: {failure}. Logs: {desktop.logs}", flush=True)
            return 1
        print(flush=True)
    print(f"{number} faults with seed {seed}: all icons, the arrow, input and resources were right after each.")
    desktop.forget()
    return 0


def main():
    choices = argparse.ArgumentParser(description=__doc__)
    choices.add_argument("--seed", type=int, default=random.randrange(10 ** 6))
    choices.add_argument("--seconds", type=float, default=60)
    choices.add_argument("--spare", action="append", default=[], help="a part to which nothing happens")
    options = choices.parse_args()
    print(f"seed {options.seed}", flush=True)
    with contextlib.closing(OrvoDesktop()) as desktop:
        return run(desktop, options.seed, options.seconds, options.spare)


sys.exit(main())

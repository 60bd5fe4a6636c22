"""Runs Orvo for somebody who wants to see it: on their own desktop, on a private one in a window, or, where
there is no screen at all, off screen with a tour that leaves a picture of every step. See scripts/run."""

import argparse
import contextlib
import os
import signal
import subprocess
import sys
import tempfile

from gi.repository import Gio, GLib
from Xlib import display, error

import bus
from desktop import PROGRAMS, REPOSITORY, WATCHER, center
from session import SHORTCUT, OrvoDesktop
from waiting import hold, wait

MARKED = {"com.github.hluk.copyq": "CopyQ", "pasystray": "PulseAudio System Tray"}


class Stopped(Exception):
    pass


def main():
    choices = argparse.ArgumentParser(prog="scripts/run", description=__doc__)
    where = choices.add_mutually_exclusive_group()
    where.add_argument("--window", action="store_true", help="a private desktop in a window, whatever runs here")
    where.add_argument("--off-screen", action="store_true", help="the tour, whatever runs here")
    choices.add_argument("--dark", action="store_true", help="dark panel and window")
    options = choices.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)
    with contextlib.suppress(Stopped):
        if options.off_screen or not has_screen():
            return tour(options.dark)
        # Under Wayland, an X server serves windows alone: neither the panel nor other windows can be reached.
        if options.window or "WAYLAND_DISPLAY" in os.environ or not watcher_is_free():
            return in_a_window(options.dark)
        return here()
    print("stopped")
    return 130


def stop(_number, _frame):
    raise Stopped


def has_screen():
    with contextlib.suppress(error.DisplayError, OSError):
        display.Display().close()
        return True
    return False


def watcher_is_free():
    """Whether this session has a bus on which nobody holds the name that the agent needs."""
    with contextlib.suppress(GLib.Error):
        return not bus.owner(Gio.bus_get_sync(Gio.BusType.SESSION), WATCHER)
    return False


def here():
    """Installs for this person and runs on their own desktop until they quit Orvo."""
    subprocess.run([os.path.join(REPOSITORY, "packaging", "linux", "install")], check=True)
    with running("orvo-agent"), running("orvo") as orvo:
        print("Orvo runs on this desktop. Quit it by its arrow's menu in the tray, or with Ctrl-C here.", flush=True)
        return orvo.wait()


@contextlib.contextmanager
def running(program):
    """Told to end with the block, which then waits for that."""
    with subprocess.Popen([os.path.expanduser("~/Applications/Orvo.app/bin/" + program)]) as process:
        try:
            yield process
        finally:
            process.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(5)
            process.kill()


@contextlib.contextmanager
def private(**options):
    """A desktop whose folder is left where something failed."""
    with contextlib.closing(OrvoDesktop(**options)) as desktop:
        try:
            yield desktop
        except Stopped:
            desktop.forget()
            raise
    desktop.forget()


def in_a_window(dark):
    with private(dark=dark, server="Xephyr", with_logind=False) as desktop:
        print("Opening a desktop in a window; it ends when you close it, or with Ctrl-C here.", flush=True)
        desktop.start()
        for name in PROGRAMS:
            desktop.start_item(name)
        desktop.start_orvo(ready=False)
        print("Mark applications Hide in Orvo's window, then click the arrow in the panel.", flush=True)
        while desktop.processes["server"].poll() is None:
            hold(0.2)


class Tour:
    """Says what happens, does it with the real pointer, checks it, and keeps a picture."""

    def __init__(self, desktop, pictures):
        self.desktop, self.pictures, self.number = desktop, pictures, 0

    def step(self, text, icons=False):
        self.number += 1
        name = f"{self.number:02}.png"
        self.desktop.rest()
        self.desktop.screen().save(os.path.join(self.pictures, name))
        print(f"{name}  {text}" + (": " + ", ".join(self.desktop.shown()) if icons else ""), flush=True)

    def run(self):
        desktop = self.desktop
        for name in list(PROGRAMS)[:4]:
            desktop.start_item(name)
        self.step("A panel with the icons of four programs", icons=True)
        desktop.start_orvo(ready=False)
        window = wait(desktop.settings_window, what="the settings window")
        desktop.control("Hide selected icons", 10)
        self.step("Orvo starts for the first time: its arrow is in the tray and its window is open")
        for title in MARKED.values():
            desktop.mark(title)
        wait(desktop.can_hide, what="hiding being offered")
        wait(lambda: desktop.remembered() == dict.fromkeys(MARKED, "hidden"), what="the stored choices")
        self.step("Two applications are marked Hide: " + ", ".join(MARKED.values()))
        for page in ("Behavior", "About Orvo"):
            desktop.press(page)
            self.step(f"The page {page}")
        desktop.press("Menu bar")
        desktop.close_window(window)
        everything, rest = desktop.shown(), desktop.without(MARKED)
        desktop.hide_and_expect(rest)
        self.step("A click on the arrow hides them", icons=True)
        desktop.click_arrow()
        desktop.expect_shown(everything)
        self.step("Another brings them back in their places", icons=True)
        desktop.hide_and_expect(rest)
        clock = center(desktop.clock())
        desktop.person.click(*clock)
        wait(desktop.pop_ups, what="the clock's calendar")
        desktop.away()
        desktop.expect_shown(everything)
        self.step("A click on the clock while they are hidden: first the icons are back, then the calendar opens")
        desktop.person.click(*clock)
        wait(lambda: not desktop.pop_ups(), what="the calendar being closed")
        desktop.away()
        desktop.person.key(*SHORTCUT)
        desktop.expect_shown(rest)
        self.step("Control-Alt-Super-B hides them from anywhere")
        desktop.click_arrow(button=3)
        wait(desktop.pop_ups, what="the arrow's menu")
        self.step("A right click on the arrow opens its menu")
        desktop.person.key("Down")
        desktop.person.key("Return")
        desktop.expect_shown(everything)
        self.step("Its first choice brings them back", icons=True)
        print(desktop.run([desktop.program, "--diagnose"]).stdout.rstrip())
        desktop.choose("Quit Orvo")
        wait(lambda: desktop.orvo.poll() is not None, what="the end of Orvo")
        desktop.expect_shown([name for name in everything if name != "orvo"])
        self.step("Orvo is quit: every icon is back", icons=True)


def tour(dark):
    pictures = tempfile.mkdtemp(prefix="orvo-pictures-")
    with private(dark=dark) as desktop:
        print(f"A desktop off screen; a picture of every step goes to {pictures}, logs to {desktop.logs}", flush=True)
        desktop.start()
        Tour(desktop, pictures).run()
        desktop.close()
        assert not desktop.sanitizer_reports(), desktop.sanitizer_reports()
    print(f"Done. Pictures: {pictures}")


sys.exit(main())

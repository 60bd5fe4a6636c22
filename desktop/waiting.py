"""Waiting for conditions while the main context (bus signals) runs on."""

import time

from gi.repository import GLib


class Timeout(AssertionError):
    """Something did not become true in time."""


def wait(condition, limit=10.0, what="the condition", every=0.002):
    """Runs the main context until condition() is true and returns its value; raises Timeout."""
    context = GLib.MainContext.default()
    end = time.monotonic() + limit
    while True:
        while context.iteration(False):
            pass
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Timeout(f"not within {limit:g} s: {what}")
        time.sleep(every)


def stays(condition, span, what="the condition"):
    """Checks that condition() is true for a whole span: for what must *not* happen."""
    end = time.monotonic() + span
    context = GLib.MainContext.default()
    while time.monotonic() < end:
        while context.iteration(False):
            pass
        if not condition():
            raise AssertionError(f"did not stay so for {span:g} s: {what}")
        time.sleep(0.005)


def hold(seconds):
    """The person does nothing for a while, as part of a gesture; the main context runs on."""
    end = time.monotonic() + seconds
    context = GLib.MainContext.default()
    while (left := end - time.monotonic()) > 0:
        while context.iteration(False):
            pass
        time.sleep(min(0.005, max(0.0, left)))

"""Waiting for conditions while the main context (bus signals) runs on."""

import time

from gi.repository import GLib


class Timeout(AssertionError):
    """Something did not become true in time."""


def wait(condition, limit=10.0, what="the condition", every=0.002):
    """Runs the main context until condition() is true and returns its value; raises Timeout."""
    end = time.monotonic() + limit
    while True:
        while GLib.MainContext.default().iteration(False):
            pass
        if value := condition():
            return value
        if time.monotonic() > end:
            raise Timeout(f"not within {limit:g} s: {what}")
        time.sleep(every)


def settled(read, span, limit=5.0, what="rest", every=0.002):
    """The value of read() once it has been true and the same for a whole span; raises Timeout."""
    last, since = None, time.monotonic()

    def same():
        nonlocal last, since
        now = read()
        if now != last:
            last, since = now, time.monotonic()
        return now if time.monotonic() - since >= span else None
    return wait(same, limit, what, every)


def stays(condition, span, what="the condition"):
    """Checks that condition() is true for a whole span: for what must *not* happen."""
    end = time.monotonic() + span

    def over():
        assert condition(), f"did not stay so for {span:g} s: {what}"
        return time.monotonic() > end
    wait(over, span + 60, every=0.005)


def hold(seconds):
    """The person does nothing for a while, as part of a gesture; the main context runs on."""
    end = time.monotonic() + seconds
    wait(lambda: time.monotonic() >= end, seconds + 1, every=min(0.002, seconds / 4))

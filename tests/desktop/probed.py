"""Windows of our own that write down what arrives (see probe.py), and reading what they wrote."""

from desktop import REPOSITORY
from waiting import wait

PROBE = f"{REPOSITORY}/tests/desktop/probe.py"


class Probe:
    """One such window, `kind` being "window" or "dock"."""

    def __init__(self, desktop, kind, title):
        self.desktop, self.name = desktop, title
        desktop.spawn(title, ["/usr/bin/python3", PROBE, kind, title])
        wait(lambda: "ready" in desktop.log(title), 20, title)

    def events(self):
        lines = [line.split() for line in self.desktop.log(self.name).splitlines()]
        return [(float(line[0]), line[1], int(line[2])) for line in lines if len(line) == 3 and line[0][0].isdigit()]

    def kinds(self, since=0.0):
        return [event[1:] for event in self.events() if event[0] >= since]

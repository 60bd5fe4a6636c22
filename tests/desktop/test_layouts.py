"""The guard on panels of every shape: wherever the panel puts its controls, and puts them while icons are hidden,
a click on one brings the icons back, opens that control, once, and clicks nothing else."""

import unittest

from guard import BOTTOM, PLUGINS, STILL, GuardCase, center, contains
from picture import Picture
from waiting import settled, stays, wait

PLUGINS["clock:full"] = {}  # As Xfce sets it up.
PLUGINS["separator:gap"] = {"style": 0}
SHORT = {"length": 1}
LEFT = {"position": "p=5;x=0;y=0", "mode": 1}
STRETCH, GAP = "separator", "separator:gap"

# Name: panels, scale.
LAYOUTS = {
    "the tray first": ([({}, ("systray", "xkb", "tasklist", STRETCH, "clock"))], 1),
    "the tray in the middle": ([({}, (STRETCH, "clock", "systray", "xkb", STRETCH))], 1),
    "the clock before the tray, which is last": ([({}, ("tasklist", STRETCH, "clock", "xkb", "systray"))], 1),
    "everything packed to the left": ([({}, ("applicationsmenu", "systray", "xkb", "clock", GAP))], 1),
    "a panel as short as what is on it": ([({**SHORT, "position": "p=11;x=0;y=0"}, ("systray", "clock", "xkb"))], 1),
    "standing at the left": ([({**LEFT, "size": 32}, ("systray", "xkb", "clock:full"))], 1),
    "64 pixels": ([({"size": 64}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 1),
    "three rows": ([({"size": 28, "nrows": 3}, ("tasklist", STRETCH, "systray", "xkb", "clock"))], 1),
    "twice the scale": ([({"size": 32}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 2),
    "out of sight": ([({"autohide-behavior": 2}, ("tasklist", STRETCH, "clock", "systray", "xkb"))], 1),
    "out of sight while in the way": ([({"autohide-behavior": 1, **BOTTOM}, ("systray", "clock", "xkb"))], 1),
    "two panels": ([({}, ("tasklist", STRETCH, "systray")), (BOTTOM, ("clock", STRETCH, "xkb"))], 1),
}

# Done to the panel while icons are hidden, and undone: setting, then and before.
CHANGES = {
    "position": ("/panels/panel-1/position", BOTTOM["position"], "p=6;x=0;y=0"),
    "length": ("/panels/panel-1/length", 60, 100),
    "mode": ("/panels/panel-1/mode", 1, 0),
    "size": ("/panels/panel-1/size", 44, 28),
    "icon size": ("/panels/panel-1/icon-size", 24, 16),
    "clock format": ("/plugins/plugin-4/digital-time-format", "12:00 and more", STILL),
}


class Layout(GuardCase):
    """The tests; each layout makes a class of it below."""

    def lights_up(self, name, unlit):
        """Goes to the control, which a panel that hides may take out of sight in between."""
        x, y = center(self.at(name))
        self.desktop.person.move(x, y - 2)
        self.desktop.person.move(x, y)
        return self.border(name) != unlit

    def test_every_control_is_guarded_and_opens(self):
        for name in ("clock", "xkb"):
            for button, held in ((1, 0.0), (1, 0.4), (3, 0.05)):
                with self.subTest(control=name, button=button, held=held):
                    self.hide_and_expect_guarded(name, button, held)

    def test_a_pointer_that_only_passes_is_not_held_and_leaves_nothing_lit(self):
        for name, other in (("clock", "xkb"), ("xkb", "clock")):
            self.desktop.away()
            unlit = settled(lambda: self.border(name), 0.3)
            self.hide()
            for out in ((self.desktop.size[0] // 2, self.desktop.size[1] // 2), None):
                with self.subTest(control=name, out=out):
                    wait(lambda: self.lights_up(name, unlit), 8, "the control being lit")
                    self.desktop.person.move(*(out or center(self.controls()[other])))
                    wait(lambda: self.border(name) == unlit, 2, "the control being no longer lit")
            self.press_shortcut()

    def test_icons_keep_their_order(self):
        def picture():
            return Picture(self.desktop.root, *self.at("systray")).data
        before = settled(picture, 0.5)
        for turn in range(10):
            with self.subTest(turn=turn):
                self.hide()
                self.press_shortcut()
                wait(lambda: picture() == before, 5, "the same picture")


class Changes(GuardCase):
    """The panel is changed while icons are hidden."""

    options = {"panels": [({}, ("tasklist", STRETCH, "systray", "clock", "xkb"))]}

    def change(self, setting, value):
        self.desktop.store("xfce4-panel", setting, {"": value})
        settled(lambda: self.at("clock"), 0.7)

    def test_controls_are_guarded_where_a_change_put_them_and_nothing_is_where_they_were(self):
        for name, (setting, then, before) in CHANGES.items():
            with self.subTest(change=name):
                self.hide()
                was = center(self.at("clock"))
                self.change(setting, then)
                if not any(contains(frame, was) for frame in self.controls().values()):
                    wait(lambda: not self.is_covered(was), 3, "nothing being guarded there")
                    self.desktop.person.click(*was, button=3)
                    stays(self.hidden, 0.4, "a click beside every control")
                    self.close_pop_ups()
                self.expect_guarded("clock")
                self.hide()
                self.expect_guarded("xkb")
                self.change(setting, before)


class Addition(GuardCase):
    """A panel with room for one more."""

    options = {"panels": [({}, ("systray", "xkb", "clock", GAP))]}

    def test_an_added_control_is_guarded(self):
        self.hide()
        box = self.desktop.accessibility("xfce4-panel").children()[0].children()[0]
        count = len(box.children())
        self.desktop.run(["xfce4-panel", "--add=clock"])
        added = wait(lambda: box.children()[count:], 10, "another control")[0]
        self.expect_guarded("another clock", place=settled(added.center, 0.7))


def load_tests(loader, _tests, _pattern):
    cases = [Changes, Addition] + [type(f"Layout: {name}", (Layout,), {"options": {"panels": panels, "scale": scale}})
                                   for name, (panels, scale) in LAYOUTS.items()]
    return unittest.TestSuite(map(loader.loadTestsFromTestCase, cases))


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""A person's mouse and keyboard."""

from Xlib import X, XK, display as xdisplay
from Xlib.ext import xtest

LEFT_BUTTON = 1
RIGHT_BUTTON = 3


class Person:
    def __init__(self, desktop):
        self._display = xdisplay.Display(desktop.environment["DISPLAY"])

    def leave(self):
        self._display.close()

    def click(self, node, button=LEFT_BUTTON):
        """In the middle of what is on screen there."""
        self.point(node)
        self._do(X.ButtonPress, button)
        self._do(X.ButtonRelease, button)
        self._display.sync()

    def point(self, node):
        """Moves the mouse there."""
        left, top, width, height = node.place
        self._do(X.MotionNotify, x=left + width // 2, y=top + height // 2)
        self._display.sync()

    def point_away(self):
        """Moves the mouse to a corner of the screen."""
        self._do(X.MotionNotify, x=0, y=0)
        self._display.sync()

    def key(self, name, *held):
        """`name` as in "Tab", "space", "Return", "Escape", "Right", pressed while those of `held`
        are, as in "Control_L"."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(n)) for n in (*held, name)]
        for code in codes:
            self._do(X.KeyPress, code)
        for code in reversed(codes):
            self._do(X.KeyRelease, code)
        self._display.sync()

    def _do(self, kind, detail=0, **position):
        xtest.fake_input(self._display, kind, detail, **position)

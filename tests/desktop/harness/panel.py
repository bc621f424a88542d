"""The tray of a real panel, as its user sees and uses it."""

import collections
import contextlib

from gi.repository import GLib

from .accessible import Appearances
from .names import OPEN
from .person import RIGHT_BUTTON
from .waiting import wait_for

Entry = collections.namedtuple("Entry", "title is_enabled")

MENU_ROLES = ("menu", "popup menu")


class Panel:
    """`start` starts the process of a panel with nothing but a tray and returns it; `tray` gives
    the id of the process that shows the tray; `item` gives the place of the only item, None
    without one."""

    def __init__(self, desktop, person, start, tray, item):
        self._desktop = desktop
        self._person = person
        self._start = start
        self._tray = tray
        self._item = item
        self._panel = None
        self._appearances = None
        self.start()

    def start(self):
        self._panel = self._start()
        pid = wait_for("the panel's tray", lambda: self._tray(self._panel))
        self._appearances = Appearances(pid)

    def stop(self):
        self._appearances.end()
        self._panel.stop()

    @property
    def err(self):
        """What the panel wrote to standard error."""
        return self._panel.err

    @property
    def place(self):
        """Left, top, width and height of the item on the screen, once its icon is there."""
        return wait_for("the tray item", self._shown_place)

    def _shown_place(self):
        place = self._item(self._panel)
        return place if place and not self._is_plain(self._desktop.windows.pixels(place)) else None

    @staticmethod
    def _is_plain(pixels):
        return pixels == pixels[:4] * (len(pixels) // 4)

    def pixels(self):
        return self._desktop.windows.pixels(self.place)

    def click(self):
        self._person.click(self)

    def tool_tip(self):
        """What the panel shows while the mouse rests on the item."""
        self._person.point_away()
        self._person.point(self)
        tip = wait_for("the tool tip", lambda: self._appearances.showing("tool tip"))
        return tip.name or " ".join(tip.reading("label"))

    def _open_menu(self):
        def opens():
            self._person.click(self, RIGHT_BUTTON)
            try:
                menu = wait_for("a menu", self._menu, 2)
            except AssertionError:
                return None
            if any(node.name == OPEN for node in self._entries(menu)):
                return menu
            self._close_menu()
            return None

        # A panel that has the item but not its menu yet ignores the click or opens a menu of its own.
        return wait_for("the item's menu", opens)

    def _menu(self):
        try:
            menu = self._appearances.showing(*MENU_ROLES)
            return menu if menu and self._entries(menu) else None
        except GLib.Error:
            return None  # it changes as we look

    @staticmethod
    def _entries(menu):
        return [node for node in menu.children() if node.role == "menu item" and node.name]

    def _close_menu(self):
        self._person.key("Escape")
        self._wait_until_closed()

    @contextlib.contextmanager
    def _menu_open(self):
        yield self._open_menu()
        self._close_menu()

    def _wait_until_closed(self):
        wait_for("the menu closed", lambda: not self._appearances.showing(*MENU_ROLES))

    def entries(self):
        """The entries of the menu, without separators, from top to bottom. An xfce4-panel keeps the
        names that it had for them at first, so this is certain only with a new panel."""
        with self._menu_open() as menu:
            return [Entry(node.name, node.has("sensitive")) for node in self._entries(menu)]

    def menu_pixels(self):
        with self._menu_open() as menu:
            return self._desktop.windows.pixels(menu.place)

    def choose(self, title):
        """Opens the menu and clicks on the entry."""
        menu = self._open_menu()
        self._person.click(next(node for node in self._entries(menu) if node.name == title))
        self._wait_until_closed()

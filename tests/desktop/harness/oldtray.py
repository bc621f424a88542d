"""The tray of an older desktop: a panel that embeds the windows of the items."""

from Xlib import X, display as xdisplay, error

from .process import Process
from .waiting import wait_for


class OldTray:
    def __init__(self, desktop):
        self._display = xdisplay.Display(desktop.environment["DISPLAY"])
        self._process = Process(
            ["trayer", "--edge", "bottom", "--align", "right", "--widthtype", "request",
             "--height", "32", "--SetDockType", "true"],
            desktop.environment, desktop.folder, "old-tray",
        )
        wait_for("the old tray", self.is_there)

    def is_there(self):
        selection = self._display.intern_atom("_NET_SYSTEM_TRAY_S0")
        return self._display.get_selection_owner(selection) != X.NONE

    def leave(self):
        """As when the desktop's panel ends."""
        if self._process.is_running():
            self._process.stop()
            self._display.close()

    def items(self):
        root = self._display.screen().root
        return [
            EmbeddedItem(root, window)
            for panel in self._below(root)
            if list(self._property(panel, "_NET_WM_PID") or []) == [self._process.pid]
            for window in self._below(panel)
            if self._property(window, "_XEMBED_INFO") and self._is_viewable(window)
        ]

    def item(self):
        """The only item, once it is on screen."""
        items = wait_for("an item in the old tray", self.items)
        if len(items) != 1:
            raise AssertionError(f"{len(items)} items in the old tray")
        return items[0]

    def _below(self, window):
        try:
            children = window.query_tree().children
        except error.BadWindow:
            return
        for child in children:
            yield child
            yield from self._below(child)

    def _property(self, window, name):
        try:
            found = window.get_full_property(self._display.intern_atom(name), X.AnyPropertyType)
        except error.BadWindow:
            return None
        return found and found.value

    def _is_viewable(self, window):
        try:
            return window.get_attributes().map_state == X.IsViewable
        except error.BadWindow:
            return False


class EmbeddedItem:
    def __init__(self, root, window):
        self._root = root
        self._window = window

    @property
    def place(self):
        """Left, top, width and height on the screen."""
        geometry = self._window.get_geometry()
        origin = self._window.translate_coords(self._root, 0, 0)
        return -origin.x, -origin.y, geometry.width, geometry.height

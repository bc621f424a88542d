"""Windows as the window manager and the person see them."""

from Xlib import X, Xatom, Xutil, display as xdisplay, error
from Xlib.protocol import event as xevent


class Windows:
    def __init__(self, name):
        self._display = xdisplay.Display(name)
        self._root = self._display.screen().root
        self._cover = None

    def close(self):
        self._display.close()

    def _atom(self, name):
        return self._display.intern_atom(name)

    def _property(self, window, name, kind=X.AnyPropertyType):
        try:
            found = window.get_full_property(self._atom(name), kind)
        except error.BadWindow:
            return None  # it goes as we look
        return found.value if found else None

    def publish(self, name, text):
        """Sets a property of the screen."""
        self._root.change_property(self._atom(name), Xatom.STRING, 8, text.encode())
        self._display.sync()

    def is_managed(self):
        return self._property(self._root, "_NET_SUPPORTING_WM_CHECK") is not None

    def of_process(self, pid):
        """The managed windows of a process, oldest first."""
        windows = []
        for number in self._property(self._root, "_NET_CLIENT_LIST") or []:
            window = self._display.create_resource_object("window", number)
            owner = self._property(window, "_NET_WM_PID")
            if owner is not None and owner[0] == pid:
                windows.append(window)
        return windows

    def menus(self, pid):
        """The open menus of a process, which the window manager leaves alone."""
        return [
            window
            for window in self._root.query_tree().children
            if list(self._property(window, "_NET_WM_PID") or []) == [pid]
            and self._is_open_menu(window)
        ]

    @staticmethod
    def _is_open_menu(window):
        try:
            attributes = window.get_attributes()
        except error.BadWindow:
            return False
        return attributes.override_redirect and attributes.map_state == X.IsViewable

    def title(self, window):
        name = self._property(window, "_NET_WM_NAME")
        return name.decode() if isinstance(name, bytes) else name

    def is_minimised(self, window):
        return self._atom("_NET_WM_STATE_HIDDEN") in (self._property(window, "_NET_WM_STATE") or [])

    def is_active(self, window):
        """A window manager may name a window as active before it has the input focus."""
        active = self._property(self._root, "_NET_ACTIVE_WINDOW")
        focused = self._display.get_input_focus().focus
        return active is not None and active[0] == window.id == getattr(focused, "id", None)

    def host(self, window):
        """The window that this one hangs on; None for one that stands alone."""
        return window.get_wm_transient_for()

    def place(self, window):
        """Left, top, width and height on the screen, without the frame."""
        geometry = window.get_geometry()
        origin = window.translate_coords(self._root, 0, 0)
        return -origin.x, -origin.y, geometry.width, geometry.height

    def smallest_size(self, window):
        hints = window.get_wm_normal_hints()
        return (hints.min_width, hints.min_height) if hints.flags & Xutil.PMinSize else None

    def allows(self, window, action):
        """Whether the window manager offers `action`, as in "MAXIMIZE_VERT"."""
        allowed = self._property(window, "_NET_WM_ALLOWED_ACTIONS")
        return self._atom("_NET_WM_ACTION_" + action) in allowed

    def _tell(self, window, kind, *values):
        data = list(values) + [0] * (5 - len(values))
        message = xevent.ClientMessage(
            window=window, client_type=self._atom(kind), data=(32, data)
        )
        mask = X.SubstructureRedirectMask | X.SubstructureNotifyMask
        self._root.send_event(message, event_mask=mask)
        self._display.flush()

    def press_close(self, window):
        """As a press on the title bar's close button."""
        self._tell(window, "_NET_CLOSE_WINDOW", X.CurrentTime, 2)

    def minimise(self, window):
        self._tell(window, "WM_CHANGE_STATE", Xutil.IconicState)

    def activate(self, window):
        """As a press on the window's entry in a task bar."""
        self._tell(window, "_NET_ACTIVE_WINDOW", 2, X.CurrentTime, 0)

    def is_in_sight(self, window):
        """Whether the window is what the screen shows in the window's middle."""
        try:
            left, top, width, height = self.place(window)
            x, y = left + width // 2, top + height // 2
            below = self._root
            while below not in (window, X.NONE):
                below = below.translate_coords(self._root, x, y).child
        except error.BadWindow:
            return False  # it goes as we look
        return below == window

    def workspace(self):
        """The number of the current one, from 0 on."""
        return self._property(self._root, "_NET_CURRENT_DESKTOP")[0]

    def go_to_workspace(self, number):
        self._tell(self._root, "_NET_CURRENT_DESKTOP", number, X.CurrentTime)

    def show_desktop(self):
        """As a press on a panel's button that minimises everything."""
        self._tell(self._root, "_NET_SHOWING_DESKTOP", 1)

    def give_keyboard(self, window):
        """As a window manager does that knows nothing of dialogs."""
        window.set_input_focus(X.RevertToParent, X.CurrentTime)
        self._display.sync()

    def has_keyboard(self, window):
        return self._display.get_input_focus().focus == window

    def pixels(self, place):
        """What is on the screen there."""
        left, top, width, height = place
        return self._root.get_image(left, top, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def cover(self, *states):
        """Puts a window in front of all others: a full-screen one, or one of the states given, as in
        "MAXIMIZED_VERT"."""
        size = self._root.get_geometry()
        cover = self._root.create_window(
            0, 0, size.width, size.height, 0, X.CopyFromParent, X.InputOutput, X.CopyFromParent,
            background_pixel=self._display.screen().white_pixel,
            event_mask=X.VisibilityChangeMask,
        )
        cover.set_wm_name("cover")
        cover.change_property(
            self._atom("_NET_WM_STATE"), Xatom.ATOM, 32,
            [self._atom("_NET_WM_STATE_" + state) for state in states or ("FULLSCREEN",)],
        )
        cover.map()
        self._display.sync()
        self._cover = cover

    def cover_beside_panel(self):
        """As a maximised window does."""
        self.cover("MAXIMIZED_VERT", "MAXIMIZED_HORZ")

    def is_covered(self):
        """Whether the covering window reached the front."""
        active = self._property(self._root, "_NET_ACTIVE_WINDOW")
        return self._cover is not None and active is not None and active[0] == self._cover.id

    def uncover(self):
        self._cover.destroy()
        self._display.sync()
        self._cover = None

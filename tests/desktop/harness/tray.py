"""The tray of a desktop: a host that shows items and lets a person use their menus."""

import os
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from . import watcher  # noqa: E402
from .process import Process  # noqa: E402
from .waiting import wait_for  # noqa: E402

ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
TIMEOUT_MS = 5000


def _connect(environment):
    return Gio.DBusConnection.new_for_address_sync(
        environment["DBUS_SESSION_BUS_ADDRESS"],
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        None,
        None,
    )


def _call(connection, service, path, interface, method, arguments):
    answer = connection.call_sync(
        service, path, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START,
        TIMEOUT_MS, None,
    )
    return answer.unpack()


class TrayWatcher:
    """The desktop's list of tray items; a desktop may have one without any host."""

    def __init__(self, desktop):
        self._process = Process(
            [sys.executable, "-B", watcher.__file__], desktop.environment, desktop.folder, "watcher"
        )
        self._connection = _connect(desktop.environment)
        wait_for("the tray's watcher", self.is_there)

    def is_there(self):
        (there,) = _call(
            self._connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus", "NameHasOwner", GLib.Variant("(s)", (watcher.NAME,)),
        )
        return there

    def end(self):
        self._process.stop()
        self._connection.close_sync(None)


class TrayHost:
    """Brings its watcher along unless it joins one that is there."""

    def __init__(self, desktop, joins=None):
        self._watcher = None if joins else TrayWatcher(desktop)
        self._connection = _connect(desktop.environment)
        _call(
            self._connection, watcher.NAME, watcher.PATH, watcher.NAME,
            "RegisterStatusNotifierHost",
            GLib.Variant("(s)", (f"org.kde.StatusNotifierHost-{os.getpid()}",)),
        )

    def leave(self):
        """As when the desktop's panel ends."""
        if not self._connection.is_closed():
            self._connection.close_sync(None)
            if self._watcher:
                self._watcher.end()

    def items(self):
        (names,) = _call(
            self._connection, watcher.NAME, watcher.PATH, "org.freedesktop.DBus.Properties",
            "Get", GLib.Variant("(ss)", (watcher.NAME, "RegisteredStatusNotifierItems")),
        )
        return [TrayItem(self._connection, *name.split("/", 1)) for name in names]

    def item(self, seconds=15.0):
        """The only item."""
        items = wait_for("a tray item", self.items, seconds)
        if len(items) != 1:
            raise AssertionError(f"{len(items)} tray items")
        return items[0]


class TrayItem:
    def __init__(self, connection, service, path):
        self._connection = connection
        self._service = service
        self._path = "/" + path

    def read(self, name):
        (value,) = _call(
            self._connection, self._service, self._path, "org.freedesktop.DBus.Properties", "Get",
            GLib.Variant("(ss)", (ITEM, name)),
        )
        return value

    @property
    def tool_tip(self):
        _icon, _pixmaps, title, text = self.read("ToolTip")
        return title or text

    @property
    def pictures(self):
        """The icon in its sizes: (width, height, bytes of alpha, red, green, blue)."""
        return [(width, height, bytes(data)) for width, height, data in self.read("IconPixmap")]

    def click(self):
        """With the left button."""
        _call(
            self._connection, self._service, self._path, ITEM, "Activate",
            GLib.Variant("(ii)", (10, 10)),
        )

    def listen(self):
        """What the program tells of the item and its menu from now on."""
        heard = Heard(self._connection, self._service)
        # It tells in order: what it still had to tell came before this answer.
        self.read("Id")
        heard.forget()
        return heard

    @property
    def menu(self):
        return TrayMenu(self._connection, self._service, self.read("Menu"))


class Heard:
    def __init__(self, connection, service):
        self._signals = []
        for interface in (ITEM, MENU):
            connection.signal_subscribe(
                service, interface, None, None, None, Gio.DBusSignalFlags.NONE,
                lambda *signal: self._signals.append(signal[4]),
            )
        # The bus serves a connection in order: after its answer the subscriptions hold.
        _call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
              "org.freedesktop.DBus", "GetId", None)

    def forget(self):
        self.names()
        self._signals.clear()

    def names(self):
        """The names of all signals so far."""
        while GLib.MainContext.default().iteration(False):
            pass
        return sorted(self._signals)


class MenuEntry:
    def __init__(self, number, properties):
        self.number = number
        self.is_separator = properties.get("type") == "separator"
        # The bus writes a shortcut's underscore once and a real one twice.
        self.title = properties.get("label", "").replace("__", "\0").replace("_", "")
        self.title = self.title.replace("\0", "_")
        self.is_enabled = properties.get("enabled", True)


class TrayMenu:
    def __init__(self, connection, service, path):
        self._connection = connection
        self._service = service
        self._path = path

    def _call(self, method, signature, *arguments):
        return _call(
            self._connection, self._service, self._path, MENU, method,
            GLib.Variant(signature, arguments),
        )

    def entries(self):
        _revision, (_number, _properties, children) = self._call(
            "GetLayout", "(iias)", 0, -1, []
        )
        return [MenuEntry(number, properties) for number, properties, _below in children]

    def titles(self):
        """A separator is "-"."""
        return ["-" if entry.is_separator else entry.title for entry in self.entries()]

    def entry(self, title):
        for entry in self.entries():
            if entry.title == title:
                return entry
        raise AssertionError(f"no entry {title!r} in {self.titles()}")

    def _event(self, number, kind):
        # A panel waits for no answer: the program may end on it.
        message = Gio.DBusMessage.new_method_call(self._service, self._path, MENU, "Event")
        message.set_body(GLib.Variant("(isvu)", (number, kind, GLib.Variant("s", ""), 0)))
        message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        self._connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
        self._connection.flush_sync(None)

    def prepare(self):
        """As a panel does before it shows the menu, and at other times."""
        self._call("AboutToShow", "(i)", 0)

    def open(self):
        self.prepare()
        self._event(0, "opened")

    def shut(self):
        self._event(0, "closed")

    def choose(self, title):
        """A person opens the menu, chooses an entry, and the menu closes."""
        self.open()
        self._event(self.entry(title).number, "clicked")
        self.shut()

"""The running copy as other programs of the desktop reach it."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME = "com.halvex.VeskWorkerControl"
PATH = "/com/halvex/VeskWorkerControl"
INTERFACE = "org.freedesktop.Application"


class Application:
    def __init__(self, desktop, address=None):
        """On another session bus than the desktop's if its `address` is given."""
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address or desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )

    def _tell(self, method, arguments):
        # Nobody waits for an answer: the program may end on it.
        message = Gio.DBusMessage.new_method_call(NAME, PATH, INTERFACE, method)
        message.set_body(arguments)
        message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        self._connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
        self._connection.flush_sync(None)

    def activate(self):
        self._tell("Activate", GLib.Variant("(a{sv})", ({},)))

    def act(self, action):
        self._tell("ActivateAction", GLib.Variant("(sava{sv})", (action, [], {})))

    def is_known(self):
        """Whether the bus knows the name."""
        return self._ask_bus("NameHasOwner")

    def pid(self):
        """Of the running copy."""
        return self._ask_bus("GetConnectionUnixProcessID")

    def _ask_bus(self, method):
        (answer,) = self._connection.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
            GLib.Variant("(s)", (NAME,)), None, Gio.DBusCallFlags.NONE, 5000, None,
        ).unpack()
        return answer

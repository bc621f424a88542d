"""What desktops with services of their own need: the environment of those that the bus starts."""

from gi.repository import Gio, GLib


def connect(desktop):
    return Gio.DBusConnection.new_for_address_sync(
        desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        None,
        None,
    )


def call(connection, service, path, interface, method, arguments=None, seconds=20):
    answer = connection.call_sync(
        service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
        1000 * seconds, None,
    )
    return answer.unpack()


BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")


def export_environment(desktop):
    """Services that the bus starts get the environment of the desktop; the bus finds the services
    that were installed after its start."""
    connection = connect(desktop)
    call(
        connection, *BUS, "UpdateActivationEnvironment",
        GLib.Variant("(a{ss})", (desktop.environment,)),
    )
    call(connection, *BUS, "ReloadConfig")
    connection.close_sync(None)

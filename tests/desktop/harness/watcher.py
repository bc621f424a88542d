"""A desktop's StatusNotifierWatcher as a program of its own: it keeps the list of the items and
knows whether a host shows them. It runs until it is ended."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME = "org.kde.StatusNotifierWatcher"
PATH = "/StatusNotifierWatcher"

INTERFACE = """
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg name="service" type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg name="service" type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
    <signal name="StatusNotifierHostUnregistered"/>
  </interface>
</node>
"""


class Watcher:
    def __init__(self, connection):
        self._connection = connection
        self._items = {}
        self._hosts = set()
        connection.register_object(
            PATH,
            Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0],
            self._called,
            self._property,
            None,
        )

    def _called(self, _connection, sender, _path, _interface, method, arguments, invocation):
        service = arguments.unpack()[0]
        owner = sender
        if method == "RegisterStatusNotifierHost":
            self._hosts.add(sender)
            self._tell("StatusNotifierHostRegistered")
        else:
            # An item names its service, or only the path of an object of its own.
            if service.startswith("/"):
                item = sender + service
            else:
                item = service + "/StatusNotifierItem"
                owner = service
            self._items[item] = owner
            self._tell("StatusNotifierItemRegistered", item)
        Gio.bus_watch_name_on_connection(
            self._connection, owner, Gio.BusNameWatcherFlags.NONE, None, self._vanished
        )
        invocation.return_value(None)

    def _vanished(self, _connection, name):
        if name in self._hosts:
            self._hosts.remove(name)
            self._tell("StatusNotifierHostUnregistered")
        for item in [item for item, owner in self._items.items() if owner == name]:
            del self._items[item]
            self._tell("StatusNotifierItemUnregistered", item)

    def _property(self, _connection, _sender, _path, _interface, name):
        if name == "RegisteredStatusNotifierItems":
            return GLib.Variant("as", list(self._items))
        if name == "IsStatusNotifierHostRegistered":
            return GLib.Variant("b", bool(self._hosts))
        return GLib.Variant("i", 0)

    def _tell(self, signal, *texts):
        arguments = GLib.Variant("(" + "s" * len(texts) + ")", texts) if texts else None
        self._connection.emit_signal(None, PATH, NAME, signal, arguments)


def main():
    connection = Gio.bus_get_sync(Gio.BusType.SESSION)
    watcher = Watcher(connection)
    Gio.bus_own_name_on_connection(connection, NAME, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.MainLoop().run()
    del watcher


if __name__ == "__main__":
    main()

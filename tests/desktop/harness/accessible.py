"""A program as assistive technology sees it.

The calls go to the accessibility bus directly: libatspi waits for itself for ever when a GTK program,
such as a panel, announces new nodes while it reads another program without its cache.
"""

import functools
import os

import gi

gi.require_version("Atspi", "2.0")
gi.require_version("Gio", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

from .waiting import wait_for  # noqa: E402

REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
NOWHERE = "/org/a11y/atspi/null"
TIMEOUT_MS = 2000

# at-spi2-core 2.53 renamed it.
NAMES_BEFORE_2_53 = {"button": "push button"}


def _connect(address):
    return Gio.DBusConnection.new_for_address_sync(
        address,
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        None,
        None,
    )


@functools.cache
def _address(session_address):
    session = _connect(session_address)
    answer = session.call_sync(
        "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
        Gio.DBusCallFlags.NONE, 10 * TIMEOUT_MS, None,
    )
    session.close_sync(None)
    return answer.unpack()[0]


def bus_address():
    """Of the accessibility bus of the desktop that was started last."""
    return _address(os.environ["DBUS_SESSION_BUS_ADDRESS"])


_connect_once = functools.cache(_connect)


def _bus():
    return _connect_once(bus_address())


def _call(service, path, interface, method, arguments=None):
    answer = _bus().call_sync(
        service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
        TIMEOUT_MS, None,
    )
    return answer.unpack()


class Node:
    def __init__(self, service, path):
        self.service = service
        self._path = path

    def _call(self, interface, method, signature="()", *arguments):
        return _call(
            self.service, self._path, "org.a11y.atspi." + interface, method,
            GLib.Variant(signature, arguments),
        )

    def _read(self, interface, name):
        (value,) = _call(
            self.service, self._path, "org.freedesktop.DBus.Properties", "Get",
            GLib.Variant("(ss)", ("org.a11y.atspi." + interface, name)),
        )
        return value

    @property
    def name(self):
        return self._read("Accessible", "Name")

    @property
    def description(self):
        return self._read("Accessible", "Description")

    @property
    def role(self):
        (role,) = self._call("Accessible", "GetRole")
        name = Atspi.role_get_name(Atspi.Role(role))
        return NAMES_BEFORE_2_53.get(name, name)

    @property
    def value(self):
        return self._read("Value", "CurrentValue")

    @property
    def range(self):
        """The least value, the current one and the greatest."""
        return (
            self._read("Value", "MinimumValue"), self.value, self._read("Value", "MaximumValue")
        )

    def labels(self):
        """What is said to be its label."""
        (relations,) = self._call("Accessible", "GetRelationSet")
        return [
            Node(*target)
            for kind, targets in relations
            if kind == Atspi.RelationType.LABELLED_BY
            for target in targets
        ]

    def has(self, state):
        """`state` as in "enabled", "checked", "indeterminate", "showing"."""
        (states,) = self._call("Accessible", "GetState")
        number = int(getattr(Atspi.StateType, state.upper()))
        return bool(states[number // 32] >> number % 32 & 1)

    @property
    def place(self):
        """Left, top, width and height on the screen."""
        (extents,) = self._call("Component", "GetExtents", "(u)", int(Atspi.CoordType.SCREEN))
        return extents

    def press(self):
        """Does the first action that the node offers."""
        self._act(0)

    def _act(self, index):
        self._call("Action", "DoAction", "(i)", index)

    def actions(self):
        """The names of what can be done with it."""
        count = self._read("Action", "NActions")
        return [self._call("Action", "GetName", "(i)", index)[0] for index in range(count)]

    def act(self, name):
        """Does the action of that name."""
        self._act(self.actions().index(name))

    def take_focus(self):
        self._call("Component", "GrabFocus")

    def children(self):
        (children,) = self._call("Accessible", "GetChildren")
        return [Node(*child) for child in children if child[1] != NOWHERE]

    def walk(self):
        yield self
        for child in self.children():
            yield from child.walk()

    def showing(self, role):
        """The nodes of that role that are on screen here."""
        try:
            return [node for node in self.walk() if node.role == role and node.has("showing")]
        except GLib.Error:
            return []  # it changes as we look

    def reading(self, role):
        """The names of the nodes of that role that are on screen here, from top to bottom."""
        try:
            nodes = sorted(self.showing(role), key=lambda node: node.place[1])
            return [node.name for node in nodes]
        except GLib.Error:
            return []  # it changes as we look

    def find(self, role, name):
        """The first of them with that name; None without one."""
        return next((node for node in self.showing(role) if node.name == name), None)


def register_event(method, signature, *arguments):
    """Programs send no event that is not registered."""
    _call(REGISTRY, "/org/a11y/atspi/registry", REGISTRY, method, GLib.Variant(signature, arguments))


class Announcements:
    """The names that assistive technology is told to have changed, from now on."""

    EVENT = "object:property-change:accessible-name"

    def __init__(self):
        self._names = []
        self._subscription = _bus().signal_subscribe(
            None, "org.a11y.atspi.Event.Object", "PropertyChange", None, "accessible-name",
            Gio.DBusSignalFlags.NONE, self._note,
        )
        register_event("RegisterEvent", "(sass)", self.EVENT, [], "")

    def end(self):
        register_event("DeregisterEvent", "(s)", self.EVENT)
        _bus().signal_unsubscribe(self._subscription)

    def _note(self, _connection, sender, path, *_signal):
        node = Node(sender, path)
        self._names.append((node.role, node.name))

    def names(self):
        """Role and name of each, in order."""
        while GLib.MainContext.default().iteration(False):
            pass
        return list(self._names)


class Accessible:
    """Everything is read afresh at each question."""

    def __init__(self, pid):
        self._pid = pid

    def _application(self):
        for application in Node(REGISTRY, ROOT).children():
            if self._is_own(application):
                return application
        return None

    def service(self):
        """Its name on the accessibility bus; None while it is not there."""
        application = self._application()
        return application and application.service

    def _is_own(self, application):
        try:
            (pid,) = _call(
                "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "GetConnectionUnixProcessID", GLib.Variant("(s)", (application.service,)),
            )
        except GLib.Error:
            return False  # it has gone
        return pid == self._pid

    def nodes(self):
        """All nodes; none while the program is not on the bus, or changes as we look."""
        try:
            application = self._application()
            return list(application.walk()) if application else []
        except GLib.Error:
            return []

    def find(self, role, name=None):
        """The first node of that role, and of that name when one is given; None without one."""
        for node in self.nodes():
            try:
                if node.role == role and name in (None, node.name):
                    return node
            except GLib.Error:
                continue
        return None

    def showing(self, role):
        """The nodes of that role that are on screen."""
        application = self._application()
        return application.showing(role) if application else []

    def sheets(self):
        """The sheets and alerts on screen; all are right below the program."""
        try:
            application = self._application()
            children = application.children() if application else []
            return [node for node in children if node.role == "dialog" and node.has("showing")]
        except GLib.Error:
            return []

    def focus(self):
        """Role and name of what has the keyboard; None while nothing has."""
        for node in self.nodes():
            try:
                if node.has("focused"):
                    return node.role, node.name
            except GLib.Error:
                continue
        return None

    def names(self, role="label"):
        """The names of all nodes of that role, in the order of the tree."""
        names = []
        for node in self.nodes():
            try:
                if node.role == role:
                    names.append(node.name)
            except GLib.Error:
                continue
        return names

    def tree(self):
        """For a person who looks into a failure."""
        lines = []
        for node in self.nodes():
            try:
                lines.append(f"{node.role}: {node.name!r} {node.description!r}")
            except GLib.Error:
                lines.append("(gone)")
        return "\n".join(lines)


class Appearances:
    """The nodes that a program reports to have appeared: its menus and tool tips, which need not be
    in its tree."""

    SIGNALS = {"StateChanged": "object:state-changed", "PropertyChange": "object:property-change"}

    def __init__(self, pid):
        self._nodes = {}
        wait_for("the program on the accessibility bus", lambda: Accessible(pid).service())
        self._service = Accessible(pid).service()
        self._subscriptions = [
            _bus().signal_subscribe(
                self._service, "org.a11y.atspi.Event.Object", signal, None, None,
                Gio.DBusSignalFlags.NONE, self._note,
            )
            for signal in self.SIGNALS
        ]
        for event in self.SIGNALS.values():
            register_event("RegisterEvent", "(sass)", event, [], "")

    def _note(self, _connection, sender, path, *_signal):
        self._nodes[path] = Node(sender, path)

    def showing(self, *roles):
        """The newest node of one of these roles that is on screen; None without one."""
        while GLib.MainContext.default().iteration(False):
            pass
        for node in reversed(self._nodes.values()):
            try:
                if node.role in roles and node.has("showing"):
                    return node
            except GLib.Error:
                continue  # it has gone
        return None

    def end(self):
        for subscription in self._subscriptions:
            _bus().signal_unsubscribe(subscription)

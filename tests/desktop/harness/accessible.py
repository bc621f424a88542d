"""The program as assistive technology sees it."""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


class Node:
    def __init__(self, accessible):
        self._accessible = accessible

    @property
    def name(self):
        return self._accessible.get_name()

    @property
    def description(self):
        return self._accessible.get_description()

    @property
    def role(self):
        return self._accessible.get_role_name()

    @property
    def value(self):
        return self._accessible.get_current_value()

    @property
    def range(self):
        """The least value, the current one and the greatest."""
        return (
            Atspi.Value.get_minimum_value(self._accessible),
            Atspi.Value.get_current_value(self._accessible),
            Atspi.Value.get_maximum_value(self._accessible),
        )

    def labels(self):
        """What is said to be its label."""
        return [
            Node(relation.get_target(index))
            for relation in self._accessible.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
            for index in range(relation.get_n_targets())
        ]

    def has(self, state):
        """`state` as in "enabled", "checked", "indeterminate", "showing"."""
        return self._accessible.get_state_set().contains(getattr(Atspi.StateType, state.upper()))

    @property
    def place(self):
        """Left, top, width and height on the screen."""
        extents = self._accessible.get_extents(Atspi.CoordType.SCREEN)
        return extents.x, extents.y, extents.width, extents.height

    def press(self):
        """Does the first action that the node offers."""
        self._accessible.do_action(0)

    def actions(self):
        """The names of what can be done with it."""
        return [
            Atspi.Action.get_action_name(self._accessible, index)
            for index in range(self._accessible.get_n_actions())
        ]

    def act(self, name):
        """Does the action of that name."""
        self._accessible.do_action(self.actions().index(name))

    def take_focus(self):
        self._accessible.grab_focus()

    def children(self):
        count = self._accessible.get_child_count()
        children = (self._accessible.get_child_at_index(index) for index in range(count))
        return [Node(child) for child in children if child]

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


class Announcements:
    """The names that assistive technology is told to have changed, from now on."""

    def __init__(self):
        self._names = []
        self._listener = Atspi.EventListener.new(self._note)
        self._listener.register("object:property-change:accessible-name")

    def end(self):
        self._listener.deregister("object:property-change:accessible-name")

    def _note(self, event):
        self._names.append((event.source.get_role_name(), event.source.get_name()))

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
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            try:
                if application and application.get_process_id() == self._pid:
                    application.set_cache_mask(Atspi.Cache.NONE)
                    application.clear_cache()
                    return application
            except GLib.Error:
                continue
        return None

    def nodes(self):
        """All nodes; none while the program is not on the bus, or changes as we look."""
        try:
            application = self._application()
            return list(Node(application).walk()) if application else []
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
        return Node(application).showing(role) if application else []

    def sheets(self):
        """The sheets and alerts on screen; all are right below the program."""
        try:
            application = self._application()
            children = Node(application).children() if application else []
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

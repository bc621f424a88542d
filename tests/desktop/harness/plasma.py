"""KDE Plasma on X11, rendered in software."""

import os

from gi.repository import GLib

from .accessible import Accessible
from .desktop import HEIGHT, WIDTH, X11Desktop
from .installed import Installation
from .names import MAIN, OPEN_SETUP, PROGRAM, QUIT
from .panel import MENU_ROLES, Panel
from .person import RIGHT_BUTTON, Person
from .session import BUS, call, connect, export_environment
from .waiting import wait_for
from .windows import Windows

START_SECONDS = 90

# As the entry names them.
ACTION_TITLES = {"settings": "Settings", "setup": OPEN_SETUP, "quit": QUIT}

RUNNER = "org.kde.krunner"


class PlasmaDesktop(X11Desktop):
    def _manage_windows(self):
        self.installation = Installation(self)
        self.environment |= {
            "PATH": self.installation.path,
            "XDG_CURRENT_DESKTOP": "KDE",
            "XDG_SESSION_TYPE": "x11",
            "XDG_MENU_PREFIX": "kf5-",
            "XDG_CONFIG_DIRS": "/etc/xdg",
            "KDE_FULL_SESSION": "true",
            "KDE_SESSION_VERSION": "5",
            "KWIN_COMPOSE": "N",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "QT_QUICK_BACKEND": "software",
        }
        self._write_configuration()
        export_environment(self)
        self.start_services()
        self._start(["kwin_x11"], "window-manager")
        self.windows = Windows(self.environment["DISPLAY"])
        wait_for("the window manager", self.windows.is_managed, START_SECONDS)

    def _write_configuration(self):
        folder = self.environment["XDG_CONFIG_HOME"]
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "kwinrc"), "w", encoding="utf-8") as file:
            file.write("[Desktops]\nNumber=2\nRows=1\n")

    def start_services(self):
        """Among them the list of tray items."""
        self.services = self._start(["kded5"], "services")

    def panel(self, person):
        return PlasmaTray(self, person)

    def launch(self):
        """Searches for the program in KRunner and presses Return."""
        runner = self._start(["krunner"], "runner")
        connection = connect(self)
        person = Person(self)
        try:
            name = GLib.Variant("(s)", (RUNNER,))
            wait_for("KRunner", lambda: call(connection, *BUS, "NameHasOwner", name)[0], START_SECONDS)
            call(
                connection, RUNNER, "/App", RUNNER + ".App", "querySingleRunner",
                GLib.Variant("(ss)", ("services", "Corvala")),
            )
            wait_for("the program in KRunner", lambda: PROGRAM in Accessible(runner.pid).names(), 30)
            person.key("Return")
            wait_for("KRunner closed", lambda: not self.windows.of_process(runner.pid))
        finally:
            person.leave()
            connection.close_sync(None)
            runner.stop()

    def launch_action(self, name):
        """Through the menu of the program's task."""
        self.tray.choose_of_task(ACTION_TITLES[name])


class PlasmaTray(Panel):
    """The tray of the panel that comes with Plasma."""

    def __init__(self, desktop, person):
        super().__init__(desktop, person, self._start_panel, lambda panel: panel.pid, self._item_place)
        desktop.tray = self

    def _start_panel(self):
        return self._desktop._start(["plasmashell", "--no-respawn"], "panel")

    @staticmethod
    def _showing(panel, role):
        try:
            return Accessible(panel.pid).showing(role)
        except GLib.Error:
            return []  # it changes as we look

    def _button(self, panel, name):
        buttons = self._showing(panel, "push button")
        return next((button for button in buttons if button.name == name), None)

    def _item_place(self, panel):
        button = self._button(panel, PROGRAM)
        if not button:
            return None
        left, top, width, height = button.place
        # The panel moves its items while it starts.
        is_on_screen = min(left, top) >= 0 and left + width <= WIDTH and top + height <= HEIGHT
        return (left, top, width, height) if is_on_screen else None

    def tool_tip(self):
        """The panel draws its tool tips itself."""
        self._person.point_away()
        self._person.point(self)
        tip = wait_for("the tool tip", lambda: next(
            (label for label in self._showing(self._panel, "label")
             if label.name.startswith(PROGRAM + " · ")), None,
        ))
        return tip.name

    def choose_of_task(self, title):
        """Opens the menu of the program's task and clicks on the entry."""

        def entry():
            # The panel moves its tasks while it starts.
            task = wait_for("the task", lambda: self._button(self._panel, MAIN))
            self._person.click(task, RIGHT_BUTTON)
            try:
                return wait_for(title, lambda: self._entry(title), 5)
            except AssertionError:
                self._person.key("Escape")
                return None

        self._person.click(wait_for(f"{title!r} of the task", entry))

    def _entry(self, title):
        menu = self._appearances.showing(*MENU_ROLES)
        entries = self._entries(menu) if menu else []
        return next((node for node in entries if node.name == title), None)

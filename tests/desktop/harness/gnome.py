"""GNOME Shell with the AppIndicator extension, rendered in software."""

import os

from gi.repository import GLib

from .desktop import HEIGHT, WIDTH, X11Desktop
from .installed import ENTRY, Installation
from .panel import Entry
from .session import call, connect, export_environment
from .shellwindows import Shell, ShellWindows
from .waiting import wait_for

START_SECONDS = 90

TRAY = "ubuntu-appindicators@ubuntu.com"
DRIVER = "driver@halvex.example"

SETTINGS = f"""\
[org/gnome/shell]
enabled-extensions=['{TRAY}', '{DRIVER}']
welcome-dialog-last-shown-version='99'

[org/gnome/desktop/interface]
enable-animations=false

[org/gnome/desktop/wm/keybindings]
show-desktop=['<Super>d']

[org/gnome/desktop/notifications]
show-banners=false
"""

DRIVER_FILES = {
    "metadata.json": f"""\
{{"uuid": "{DRIVER}", "name": "Driver", "description": "Lets tests drive the shell.",
  "session-modes": ["user", "unlock-dialog"], "shell-version": ["43"]}}
""",
    "extension.js": """\
const Main = imports.ui.main;
function init() {}
function enable() {
    global.context.unsafe_mode = true;
    if (Main.layoutManager._startingUp) {
        Main.layoutManager.connect('startup-complete', () => Main.overview.hide());
    }
}
function disable() {}
""",
}

# The indicator's button, and what its menu shows.
ITEM = (
    "Object.entries(Main.panel.statusArea)"
    ".filter(([name, button]) => name.startsWith('appindicator-') && button?.visible)"
    ".map(([_name, button]) => button)[0]"
)
PLACE = (
    "(actor => actor?.mapped && actor.has_allocation()"
    " ? [...actor.get_transformed_position(), ...actor.get_transformed_size()] : null)"
)
ENTRIES = f"({ITEM}.menu._getMenuItems().filter(item => item.visible && item.label?.text))"


LOCK_SCREEN = "unlock-dialog"
LOCKED = f"Main.sessionMode.currentMode === '{LOCK_SCREEN}'"


class GnomeDesktop(X11Desktop):
    """The shell as X11 window manager."""

    arguments = ("--x11",)
    session_type = "x11"

    def _manage_windows(self):
        _bus, self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = self.start_bus("system-bus")
        self.installation = Installation(self)
        self.environment |= {
            "PATH": self.installation.path,
            "XDG_CURRENT_DESKTOP": "GNOME",
            "XDG_SESSION_TYPE": self.session_type,
            "GSETTINGS_BACKEND": "keyfile",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "MUTTER_DEBUG_DUMMY_MODE_SPECS": f"{WIDTH}x{HEIGHT}",
        }
        self._write_configuration()
        export_environment(self)
        self._shell_process = self._start(["gnome-shell", *self.arguments], "shell")
        self._connection = connect(self)
        self.shell = Shell(self._evaluate)
        self.windows = ShellWindows(self.shell, self)
        wait_for("the shell", self._is_ready, START_SECONDS)

    def _write_configuration(self):
        files = {
            os.path.join(self.environment["XDG_CONFIG_HOME"], "glib-2.0/settings/keyfile"): SETTINGS
        }
        extension = os.path.join(
            self.environment["XDG_DATA_HOME"], "gnome-shell/extensions", DRIVER
        )
        for name, text in DRIVER_FILES.items():
            files[os.path.join(extension, name)] = text
        for path, text in files.items():
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)

    def _evaluate(self, script):
        return call(
            self._connection, "org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell", "Eval",
            GLib.Variant("(s)", (script,)),
        )

    def _is_ready(self):
        try:
            return self.shell.read("!Main.layoutManager._startingUp && !Main.overview.visible")
        except (GLib.Error, RuntimeError):
            return False

    @property
    def err(self):
        return self._shell_process.err

    def panel(self, person):
        return GnomeTray(self, person)

    def launch(self):
        """As a click in the overview."""
        self.shell.read(
            f"Shell.AppSystem.get_default().lookup_app('{ENTRY}')"
            ".activate_full(-1, now())"
        )

    def launch_action(self, name):
        """As a click in the context menu of the program in the overview."""
        self.shell.read(
            f"Shell.AppSystem.get_default().lookup_app('{ENTRY}')"
            f".launch_action('{name}', now(), -1)"
        )


class GnomeWaylandDesktop(GnomeDesktop):
    """The shell as Wayland compositor, whose screen is a window on an X11 screen."""

    arguments = ("--nested", "--wayland", "--wayland-display=wayland-vesk")
    session_type = "wayland"

    def _manage_windows(self):
        super()._manage_windows()
        self.environment["QT_QPA_PLATFORM"] = "wayland"
        self.environment["WAYLAND_DISPLAY"] = os.path.join(
            self.environment["XDG_RUNTIME_DIR"], "wayland-vesk"
        )
        export_environment(self)


class Place:
    def __init__(self, place):
        self.place = [round(number) for number in place]


class GnomeTray:
    """The interface of `Panel`. There are no tool tips in GNOME's top bar."""

    def __init__(self, desktop, person):
        self._desktop = desktop
        self._shell = desktop.shell
        self._person = person
        self._shell.read(f"{ITEM}?.menu.close()")
        self.start()
        self._logged = len(desktop.err)

    @property
    def err(self):
        """What the shell has logged since."""
        return self._desktop.err[self._logged:]

    def start(self):
        """As when the screen is unlocked."""
        self._shell.read(f"{LOCKED} && Main.sessionMode.popMode('{LOCK_SCREEN}')")

    def stop(self):
        """As when the screen is locked."""
        self._shell.read(f"{LOCKED} || Main.sessionMode.pushMode('{LOCK_SCREEN}')")

    @property
    def place(self):
        place = wait_for("the tray item", lambda: self._shell.read(f"{PLACE}({ITEM})"))
        return Place(place).place

    def pixels(self):
        return self._desktop.windows.pixels(self.place)

    def click(self):
        """A single click opens the menu."""
        self._click(ITEM, "hover")
        self._person.click(self)

    def _click(self, actor, noticed):
        """The shell takes a click for what it knew below the mouse before."""
        place = Place(wait_for("a place", lambda: self._shell.read(f"{PLACE}({actor})")))
        self._person.point(place)
        wait_for("the mouse noticed", lambda: self._shell.read(f"{actor}.{noticed}"))
        self._person.click(place)

    def _is_open(self):
        return self._shell.read(f"{ITEM}?.menu.isOpen ?? false")

    def _open_menu(self):
        def opens():
            # Two clicks in a row open the window instead.
            if not self._is_open():
                self._click(ITEM, "hover")
            try:
                return wait_for("the menu", self._has_entries, 2)
            except AssertionError:
                return False

        wait_for("the menu", opens)

    def _has_entries(self):
        return self._is_open() and self._shell.read(f"{ENTRIES}.length")

    def entries(self):
        self._open_menu()
        entries = self._shell.read(f"{ENTRIES}.map(item => [item.label.text, item.sensitive])")
        self._person.key("Escape")
        wait_for("the menu closed", lambda: not self._is_open())
        return [Entry(*entry) for entry in entries]

    def choose(self, title):
        found = f"{ENTRIES}.find(item => item.label.text === {title!r})"

        def chosen():
            # A menu that has just opened may ignore a click.
            self._open_menu()
            self._click(found, "active")
            try:
                return wait_for("the menu closed", lambda: not self._is_open(), 2)
            except AssertionError:
                return False

        wait_for(f"{title!r} chosen", chosen)

"""Windows as GNOME Shell has them, of Wayland and X11 programs alike."""

import json
import sys

from . import cover
from .desktop import HEIGHT, WIDTH
from .person import Person
from .process import Process
from .waiting import wait_for
from .windows import Windows

COVER = "cover"

# `find` gives a window; `sees` whether it is what the screen shows in the window's middle.
PRELUDE = """
const {Shell} = imports.gi;
const now = () => global.display.get_current_time_roundtrip();
const all = () => global.get_window_actors().map(actor => actor.meta_window);
const find = id => all().find(window => window.get_id() === id);
const has = (rect, x, y) =>
    x >= rect.x && y >= rect.y && x < rect.x + rect.width && y < rect.y + rect.height;
const shows = window => !window.minimized && window.showing_on_its_workspace()
    && window.located_on_workspace(global.workspace_manager.get_active_workspace());
const sees = window => {
    const rect = window.get_frame_rect();
    const [x, y] = [rect.x + rect.width / 2, rect.y + rect.height / 2];
    const there = all().filter(other => shows(other) && has(other.get_frame_rect(), x, y));
    return !Main.overview.visible
        && global.display.sort_windows_by_stacking(there).pop() === window;
};
"""


class Shell:
    """Evaluates JavaScript in the shell, which must be in its unsafe mode."""

    def __init__(self, call):
        self._call = call

    def read(self, expression):
        """The value of the expression, as JSON gives it."""
        script = f"(() => {{{PRELUDE} return JSON.stringify([{expression}]); }})()"
        succeeded, answer = self._call(script)
        if not succeeded:
            raise RuntimeError(f"{answer}: {expression}")
        # The shell writes the string that the expression gives as JSON once more.
        return json.loads(json.loads(answer))[0]


class Corner:
    """Of the screen, where no window of the program is."""

    place = (WIDTH - 100, HEIGHT - 100, 2, 2)


class ShellWindow:
    def __init__(self, number):
        self.id = number

    def __eq__(self, other):
        return isinstance(other, ShellWindow) and self.id == other.id

    def __hash__(self):
        return hash(self.id)


class ShellWindows:
    """The interface of `Windows`, as far as the flows on desktops use it."""

    def __init__(self, shell, desktop):
        self._shell = shell
        self._person = Person(desktop)
        self._desktop = desktop
        self._screen = Windows(desktop.environment["DISPLAY"])
        self._cover = None

    def close(self):
        self._person.leave()
        self._screen.close()
        if self._cover:
            self.uncover()

    def _of(self, window, expression):
        """Of a window that may have gone."""
        return self._shell.read(f"(window => window ? {expression} : null)(find({window.id}))")

    def is_managed(self):
        return self._shell.read("true")

    def of_process(self, pid):
        numbers = self._shell.read(
            f"all().filter(window => window.get_pid() === {pid}"
            " && !window.is_override_redirect()).map(window => window.get_id())"
        )
        return [ShellWindow(number) for number in sorted(numbers)]

    def title(self, window):
        return self._of(window, "window.get_title()")

    def is_minimised(self, window):
        return bool(self._of(window, "window.minimized"))

    def is_active(self, window):
        return bool(self._of(window, "window.has_focus()"))

    def is_in_sight(self, window):
        return bool(self._of(window, "sees(window)"))

    def host(self, window):
        number = self._of(window, "window.get_transient_for()?.get_id() ?? null")
        return number and ShellWindow(number)

    def place(self, window):
        rect = "(rect => [rect.x, rect.y, rect.width, rect.height])(window.get_frame_rect())"
        return tuple(self._of(window, rect))

    def pixels(self, place):
        return self._screen.pixels(place)

    def press_close(self, window):
        self._of(window, "window.delete(now())")

    def minimise(self, window):
        self._of(window, "window.minimize()")

    def activate(self, window):
        self._of(window, "Main.activateWindow(window, now())")

    def workspace(self):
        return self._shell.read("global.workspace_manager.get_active_workspace_index()")

    def go_to_workspace(self, number):
        self._shell.read(
            f"global.workspace_manager.get_workspace_by_index({number}).activate(now())"
        )

    def show_desktop(self):
        self._person.key("d", "Super_L")

    def cover(self):
        """Puts another program's maximised window in front of all others, and uses it."""
        self._cover = Process(
            [sys.executable, "-B", cover.__file__, COVER],
            {**self._desktop.environment, "GSK_RENDERER": "cairo"}, self._desktop.folder, "cover",
        )
        found = f"all().find(window => window.get_title() === '{COVER}')"
        wait_for("the covering window", lambda: self._shell.read(f"{found} ? true : false"))
        self._shell.read(f"Main.activateWindow({found}, now())")
        wait_for("the covering window in front", lambda: self._shell.read(
            f"(window => window.has_focus() && window.get_frame_rect().width === {WIDTH}"
            f" && sees(window))({found})"
        ))
        self._person.click(Corner)

    cover_beside_panel = cover

    def uncover(self):
        self._cover.stop()
        self._cover = None

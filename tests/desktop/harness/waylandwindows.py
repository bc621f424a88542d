"""Windows as the Wayland compositor has them on its screen."""

import collections
import re
import subprocess

Window = collections.namedtuple("Window", "title application place")

# A window's view in the compositor's own account of its scene; the place includes the frame, which
# the program draws.
_VIEW = re.compile(
    r"View \d+ \(role xdg_toplevel, PID (?P<pid>\d+), surface ID \d+,"
    r" top-level window '(?P<title>.*)' of (?P<application>.*), 0x[0-9a-f]+\):\n"
    r"\s*position: \((?P<left>-?\d+), (?P<top>-?\d+)\) -> \((?P<right>-?\d+), (?P<bottom>-?\d+)\)"
)


class WaylandWindows:
    def __init__(self, environment):
        self._environment = environment

    def close(self):
        pass

    def _scene(self):
        told = subprocess.run(
            ["weston-debug", "scene-graph"], env=self._environment, capture_output=True,
            timeout=10, check=False, text=True,
        )
        return told.stdout

    def is_managed(self):
        return "background for output" in self._scene()

    def of_process(self, pid):
        """The windows of a process that are not minimised, from the front to the back."""
        windows = []
        for view in _VIEW.finditer(self._scene()):
            if int(view["pid"]) == pid:
                left, top, right, bottom = (
                    int(view[side]) for side in ("left", "top", "right", "bottom")
                )
                place = (left, top, right - left, bottom - top)
                windows.append(Window(view["title"], view["application"], place))
        return windows

    def title(self, window):
        return window.title

"""A sway session without a screen, in its default configuration."""

import collections
import json
import os
import shutil
import subprocess
import tempfile

from .desktop import Desktop
from .waiting import wait_for

CONFIGURATION = "/etc/sway/config"

Window = collections.namedtuple("Window", "id title place has_focus")


class SwayWindows:
    """Windows as the compositor reports them."""

    def __init__(self, socket):
        self._socket = socket

    def close(self):
        pass

    def _message(self, *arguments):
        answer = subprocess.run(
            ["swaymsg", "--socket", self._socket, "--raw", *arguments],
            capture_output=True, timeout=10, check=True, text=True,
        )
        return json.loads(answer.stdout)

    def _command(self, text):
        """Runs a command of sway(5)."""
        for answer in self._message(text):
            if not answer["success"]:
                raise RuntimeError(f"{text}: {answer}")

    def is_managed(self):
        try:
            return bool(self._message("-t", "get_tree"))
        except subprocess.CalledProcessError:
            return False  # it is not listening yet

    def of_process(self, pid):
        """The windows of a process, from the back to the front."""
        return [
            Window(node["id"], node["name"], tuple(node["rect"].values()), node["focused"])
            for node in self._leaves(self._message("-t", "get_tree"))
            if node.get("pid") == pid
        ]

    @staticmethod
    def title(window):
        return window.title

    def is_active(self, window):
        return any(
            node["id"] == window.id and node["focused"]
            for node in self._leaves(self._message("-t", "get_tree"))
        )

    def _leaves(self, node):
        """Floating windows are in front of tiled ones."""
        children = node["nodes"] + node["floating_nodes"]
        if not children:
            yield node
        for child in children:
            yield from self._leaves(child)

    def float(self, window, left, top):
        self._command(f"[con_id={window.id}] floating enable, move position {left} {top}")

    def click(self, window, x, y):
        """With the mouse, at a point of the window."""
        x, y = window.place[0] + x, window.place[1] + y
        for event in (f"set {x} {y}", "press button1", "release button1"):
            self._command(f"seat - cursor {event}")


class SwayDesktop(Desktop):
    platform = "wayland"

    def _start_windows(self):
        # It refuses to run as root, and keeps its sockets in a folder of its own user.
        self._runtime = tempfile.mkdtemp(prefix="vesk-")
        as_user = []
        if os.geteuid() == 0:
            shutil.chown(self._runtime, "nobody", "nogroup")
            as_user = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
        socket = os.path.join(self._runtime, "sway")
        variables = {
            "HOME": self._runtime,
            "XDG_RUNTIME_DIR": self._runtime,
            "SWAYSOCK": socket,
            "WLR_BACKENDS": "headless",
            "WLR_RENDERER": "pixman",
            "WLR_LIBINPUT_NO_DEVICES": "1",
        }
        self._start(
            [*as_user, "env", *(f"{name}={value}" for name, value in variables.items()),
             "sway", "--config", CONFIGURATION],
            "compositor",
        )
        self.windows = SwayWindows(socket)
        wait_for("the compositor", self.windows.is_managed)
        name = next(
            name for name in os.listdir(self._runtime)
            if name.startswith("wayland-") and not name.endswith(".lock")
        )
        self.environment["WAYLAND_DISPLAY"] = os.path.join(self._runtime, name)

    def picture(self, name):
        """There is no Debian package at hand that takes one; the windows tell as much."""
        return "none"

    def stop(self):
        super().stop()
        shutil.rmtree(self._runtime, ignore_errors=True)

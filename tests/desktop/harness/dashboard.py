"""The dashboard as a process with its window and its texts."""

import itertools
import os

from .accessible import Accessible
from .desktop import DASHBOARD
from .process import Process
from .waiting import wait_for

_numbers = itertools.count(1)


def visited_home(desktop):
    """The environment of a person who has seen the setup sheet."""
    home = desktop.home_environment(f"home{next(_numbers)}")
    folder = os.path.join(home["XDG_CONFIG_HOME"], "Halvex")
    os.makedirs(folder)
    with open(os.path.join(folder, "VeskWorkerControl.conf"), "w", encoding="utf-8") as file:
        file.write("[General]\nsetupVisitedV2=true\n")
    return home


class Dashboard:
    """With a home of its own unless one is given in `home`, the environment of another."""

    def __init__(self, desktop, *arguments, home=None, token=None):
        number = next(_numbers)
        self.desktop = desktop
        self.home = home or visited_home(desktop)
        environment = {**desktop.environment, **self.home}
        if token is not None:
            environment["TESSALURE_WORKER_TOKEN"] = token
        self._process = Process(
            [DASHBOARD, *map(str, arguments)], environment, desktop.folder, f"dashboard{number}"
        )
        self.accessible = Accessible(self._process.pid)

    @property
    def pid(self):
        return self._process.pid

    @property
    def out(self):
        return self._process.out

    @property
    def err(self):
        return self._process.err

    def is_running(self):
        return self._process.is_running()

    def wait(self, seconds=15.0):
        return self._process.wait(seconds)

    def send(self, number):
        self._process.send(number)

    def stop(self):
        self._process.stop()

    def window(self):
        """The dashboard window, once it is managed."""
        windows = wait_for(
            "the dashboard's window", lambda: self.desktop.windows.of_process(self.pid)
        )
        return windows[0]

    def is_shown(self):
        return bool(self.desktop.windows.of_process(self.pid))

    def texts(self):
        return self.accessible.names("label")

    def wait_for_text(self, text, seconds=15.0):
        wait_for(f"the text {text!r}", lambda: text in self.texts(), seconds)

    def wait_until_live(self):
        self.wait_for_text("● CONNECTED")

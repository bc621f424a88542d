"""The dashboard as a process with its window and its texts."""

import itertools
import os
import re

from .accessible import Accessible
from .desktop import DASHBOARD
from .names import ALERT, CONNECTED
from .process import Process
from .waiting import wait_for

# All that the program may ever say on standard error.
DOCUMENTED = re.compile(
    r"Corvala for Mac is already open\.|Corvala worker listener recovery failed: .*"
    r"|Presentation test failed|VeskWorkerControl: the screen is gone"
    r'|VeskWorkerControl: no display could be opened: DISPLAY(=".*"| is not set), .*'
    r"|VeskWorkerControl: the running dashboard cannot be reached"
    r"|VeskWorkerControl: the first argument is no port number; port 45835 is used"
)

# Written by Qt 6.5 and later when assistive technology asks for an object that is gone by then; it gets an
# error for an answer.
GONE_OBJECT = re.compile(r'qt\.accessibility\.atspi: Could not find accessible on path: ".*"')

_WORD = r"[a-z-]+"
_TEXT = r'"(?:[^"\\\x00-\x1f]|\\["\\nt]|\\u[0-9a-f]{4})*"'
_VALUE = rf"(?:{_WORD}|-?\d+|{_TEXT}|\[(?:{_TEXT}(?:,{_TEXT})*)?\]|[A-Z]+)"

# A line of our own logging categories.
REASON = re.compile(
    r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} "
    rf"(?P<said>vesk\.(?:service|agent|ui): event={_WORD}(?: [a-z_]+={_VALUE})*)"
)

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
    """With a home of its own unless one is given in `home`, the environment of another; without
    the variables named in `without`; started by `command`; with all its reasons told if `told`."""

    def __init__(
        self, desktop, *arguments, home=None, token=None, without=(), command=(DASHBOARD,), told=False
    ):
        number = next(_numbers)
        self.desktop = desktop
        self.home = home or visited_home(desktop)
        environment = {**desktop.environment, **self.home}
        if token is not None:
            environment["TESSALURE_WORKER_TOKEN"] = token
        self._told = told
        if told:
            environment["QT_LOGGING_RULES"] += ";vesk.*=true"
        for name in without:
            del environment[name]
        self._process = Process(
            [*command, *map(str, arguments)], environment, desktop.folder, f"dashboard{number}"
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

    @property
    def complaints(self):
        """What standard error says besides the documented lines and the reasons asked for."""
        return [
            line for line in self.err.splitlines()
            if not DOCUMENTED.fullmatch(line) and not GONE_OBJECT.fullmatch(line)
            and not (self._told and REASON.fullmatch(line))
        ]

    def reasons(self, beginning=""):
        """What was told so far and begins so, without the time."""
        told = [REASON.fullmatch(line) for line in self.err.splitlines()]
        return [each["said"] for each in told if each and each["said"].startswith(beginning)]

    @property
    def cpu_seconds(self):
        return self._process.cpu_seconds

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

    def wait_until_in_front(self):
        """Gives the window once it is the one that the window manager calls active."""
        window = self.window()
        wait_for("the window in front", lambda: self.desktop.windows.is_active(window))
        return window

    def start_again(self, *arguments):
        """A second start, which leaves everything to this one."""
        again = Dashboard(self.desktop, *arguments, home=self.home)
        if again.wait() != 1:
            raise AssertionError(f"the second start ended with {again.wait()}: {again.err}")

    def control(self, role, name):
        """What is on screen under that name, in the window or on a sheet."""

        def shown():
            return next((n for n in self.accessible.showing(role) if n.name == name), None)

        return wait_for(f"{role} {name!r}", shown)

    def sheet(self, title, seconds=15.0):
        """The sheet of that title, once it has the keyboard."""

        def active():
            return next((n for n in self.accessible.sheets() if n.name == title and n.has("active")), None)

        return wait_for(f"the sheet {title!r}", active, seconds)

    def alert(self, message, seconds=15.0):
        """The alert with that message, once it has the keyboard."""
        alert = self.sheet(ALERT, seconds)
        texts = [label.name for label in alert.showing("label")]
        if (texts, alert.description) != ([ALERT, message], message):
            raise AssertionError(f"the alert says {texts}, {alert.description!r}, not {message!r}")
        return alert

    def sheets(self):
        """The names of all sheets and alerts on screen."""
        return [node.name for node in self.accessible.sheets()]

    def wait_until_gone(self, title):
        wait_for(f"the end of {title!r}", lambda: title not in self.sheets())

    def hosts(self):
        """Of each window the title, with the title of the one that it hangs on or None."""
        windows = self.desktop.windows
        titles = {window.id: windows.title(window) for window in windows.of_process(self.pid)}
        return {
            titles[window.id]: host and titles.get(host.id)
            for window in windows.of_process(self.pid)
            for host in [windows.host(window)]
        }

    def host_of(self, title):
        """The title of the window that the one with this title hangs on, or None."""
        hosts = {}

        def is_there():
            hosts.update(self.hosts())
            return title in hosts

        wait_for(f"the window {title!r}", is_there)
        return hosts[title]

    def is_shown(self):
        return bool(self.desktop.windows.of_process(self.pid))

    def texts(self):
        return self.accessible.names("label")

    def wait_for_text(self, text, seconds=15.0):
        wait_for(f"the text {text!r}", lambda: text in self.texts(), seconds)

    def wait_until_live(self):
        self.wait_for_text(CONNECTED)

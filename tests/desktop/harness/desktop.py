"""A private desktop: screen, window manager, session bus with the accessibility service."""

import os
import shutil
import subprocess
import tempfile

from .process import Process
from .waiting import wait_for
from .waylandwindows import WaylandWindows
from .windows import Windows

BUILD = os.environ["VESK_BUILD_DIR"]
DASHBOARD = os.path.join(BUILD, "VeskWorkerControl")
WORKER = os.path.join(BUILD, "vesk-worker-sim")
PICTURES = os.path.join(BUILD, "desktop-failures")

WIDTH, HEIGHT = 1280, 800


class Desktop:
    """One for each test process; `environment` is what programs on it are started with."""

    platform = None

    def __init__(self):
        # Short, because sockets live in it.
        self.folder = tempfile.mkdtemp(prefix="vesk-")
        self._processes = []
        self.environment = self._bare_environment()
        self.windows = None
        try:
            _bus, self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.start_bus()
            self._start_windows()
            # What reads the accessibility bus looks here.
            for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS"):
                os.environ.pop(name, None)
                if name in self.environment:
                    os.environ[name] = self.environment[name]
        except BaseException:
            self.stop()
            raise

    def _start_windows(self):
        """Starts what shows windows, and sets `windows`, which knows them."""
        raise NotImplementedError

    def _bare_environment(self):
        environment = {
            "PATH": "/usr/bin:/bin",
            "LC_ALL": "C.UTF-8",
            "GSETTINGS_BACKEND": "memory",
            "QT_QPA_PLATFORM": self.platform,
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "SYSTEMD_GENERATOR_PATH": BUILD,
            # What the toolkit complains of is to be seen.
            "QT_LOGGING_RULES": "*.warning=true",
            # A request that went to a proxy would be lost.
            "http_proxy": "http://127.0.0.1:9",
            "all_proxy": "http://127.0.0.1:9",
        }
        for name in ("ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"):
            if name in os.environ:
                environment[name] = os.environ[name]
        environment.update(self.home_environment("desktop"))
        return environment

    def home_environment(self, name):
        """A fresh home folder with all that programs keep in one."""
        home = os.path.join(self.folder, name)
        runtime = os.path.join(home, "runtime")
        os.makedirs(home)
        os.mkdir(runtime, 0o700)
        return {
            "HOME": home,
            "XDG_CONFIG_HOME": os.path.join(home, ".config"),
            "XDG_DATA_HOME": os.path.join(home, ".local/share"),
            "XDG_CACHE_HOME": os.path.join(home, ".cache"),
            "XDG_RUNTIME_DIR": runtime,
        }

    def _start(self, arguments, name, **options):
        process = Process(arguments, self.environment, self.folder, name, **options)
        self._processes.append(process)
        return process

    def start_screen(self, name="screen"):
        """A screen, and what DISPLAY is to be for it."""
        read_end, write_end = os.pipe()
        screen = self._start(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{WIDTH}x{HEIGHT}x24",
             "-nolisten", "tcp", "-noreset"],
            name,
            pass_fds=[write_end],
        )
        os.close(write_end)
        with os.fdopen(read_end) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("the screen did not start: " + screen.err)
        return screen, ":" + number

    def start_bus(self, name="bus"):
        """A session bus and its address."""
        bus = self._start(
            ["dbus-daemon", "--session", "--nofork", "--print-address",
             "--address=unix:tmpdir=" + self.folder],
            name,
        )
        return bus, wait_for("the session bus's address", lambda: bus.out.strip())

    def picture(self, name):
        """Keeps a picture of the screen beside the build."""
        os.makedirs(PICTURES, exist_ok=True)
        path = os.path.join(PICTURES, name + ".png")
        self._take_picture(path)
        return path

    def _take_picture(self, path):
        raise NotImplementedError

    def stop(self):
        if self.windows:
            self.windows.close()
        for process in reversed(self._processes):
            process.stop()
        shutil.rmtree(self.folder, ignore_errors=True)


class X11Desktop(Desktop):
    platform = "xcb"
    window_manager = ("openbox", "--sm-disable")

    def _start_windows(self):
        _screen, self.environment["DISPLAY"] = self.start_screen()
        self._manage_windows()

    def _manage_windows(self):
        self._start(self.window_manager, "window-manager")
        self.windows = Windows(self.environment["DISPLAY"])
        wait_for("the window manager", self.windows.is_managed)

    def go_to_workspace(self, number):
        """`number` from 0 on; the desktop starts with the first."""
        self.windows.go_to_workspace(number)

    def _take_picture(self, path):
        subprocess.run(["scrot", "--overwrite", path], env=self.environment, check=False)


class WaylandDesktop(Desktop):
    """Nobody sits at it: its screen has neither mouse nor keyboard."""

    platform = "wayland"

    def _start_windows(self):
        self._start_compositor("headless-backend.so")

    def _start_compositor(self, backend):
        self._start(
            ["weston", "--backend=" + backend, "--use-pixman", "--no-config", "--debug",
             "--idle-time=0", f"--width={WIDTH}", f"--height={HEIGHT}", "--socket=wayland"],
            "compositor",
        )
        # With its folder, because programs have runtime folders of their own.
        self.environment["WAYLAND_DISPLAY"] = os.path.join(
            self.environment["XDG_RUNTIME_DIR"], "wayland"
        )
        self.windows = WaylandWindows(self.environment)
        wait_for("the compositor's desktop", self.windows.is_managed)

    def _take_picture(self, path):
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            subprocess.run(
                ["weston-screenshooter"], cwd=folder, env=self.environment, timeout=10, check=False
            )
            for name in os.listdir(folder):
                shutil.move(os.path.join(folder, name), path)


class NestedWaylandDesktop(WaylandDesktop):
    """Its screen is a window on an X11 screen, whose mouse and keyboard it shares."""

    _take_picture = X11Desktop._take_picture

    def _start_windows(self):
        _screen, self.environment["DISPLAY"] = self.start_screen()
        self._start_compositor("x11-backend.so")

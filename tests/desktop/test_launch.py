"""What the program is started for: switches, actions of the desktop, the session bus at launch."""

import fcntl
import os
import socket
import subprocess
import time

from harness.application import NAME, Application
from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.desktop import DASHBOARD
from harness.names import SETTINGS, SETUP
from harness.process import Process
from harness.tool import Tool
from harness.waiting import wait_for
from harness.worker import BUSY

ALREADY_OPEN = b"Corvala for Mac is already open.\n"
NOT_REACHED = b"VeskWorkerControl: the running dashboard cannot be reached\n"
NO_PORT = "VeskWorkerControl: the first argument is no port number; port 45835 is used"
WITHOUT_ANSWER = 1.0  # seconds that a copy waits for the session bus or for the copy that runs
SLACK = 3.0  # on a busy machine
PAUSE = ("/v1/local/services", '{"deep_scan_enabled":false}')


class LaunchTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.home = visited_home(self.desktop)

    def run_to_end(self, *arguments, **changed):
        """Status, output and error of a copy that ends by itself."""
        ended = subprocess.run(
            [DASHBOARD, *arguments], env={**self.desktop.environment, **self.home, **changed},
            stdin=subprocess.DEVNULL, capture_output=True, timeout=15, check=False,
            preexec_fn=Process.without_core_files,
        )
        return ended.returncode, ended.stdout, ended.stderr

    def busy_worker(self, late=0):
        worker = self.worker()
        worker.arm(late=late, patch={"slots": [BUSY], "deep_scan_enabled": True})
        return worker

    def wait_for_fetches(self, worker, count):
        wait_for("the health requests", lambda: len(worker.requests()) >= count)

    def test_start_at_launch_leaves_a_running_service_as_it_is(self):
        tool = Tool(self.desktop)
        worker = self.busy_worker(late=0.5)
        dashboard = self.dashboard(worker.port, "--start", command=(tool.dashboard,))
        dashboard.wait_until_live()
        self.wait_for_fetches(worker, 2)
        self.assertEqual((worker.changes(), tool.calls()), ([], []))

    def test_start_at_launch_starts_a_stopped_service(self):
        tool = Tool(self.desktop)
        self.dashboard(self.kept_port(), "--start", command=(tool.dashboard,))
        wait_for("the start", lambda: tool.calls()[:2] == ["print", "bootstrap"])

    def test_first_argument_that_is_no_port_is_reported(self):
        dashboard = self.dashboard("80 ")
        dashboard.window()
        self.assertEqual(dashboard.err.splitlines(), [NO_PORT])

    def test_settings_at_launch_open(self):
        self.dashboard(self.kept_port(), "--settings").sheet(SETTINGS)

    def test_second_start_hands_its_switch_on(self):
        worker = self.busy_worker()
        first = self.live_dashboard(worker, home=self.home)
        self.assertEqual(self.run_to_end("--start"), (1, b"", ALREADY_OPEN))
        wait_for("the change at the worker", worker.changes)
        self.assertEqual(worker.changes(), [PAUSE])
        self.assertEqual(self.run_to_end("--settings"), (1, b"", ALREADY_OPEN))
        first.sheet(SETTINGS)
        self.assertEqual(self.run_to_end("--quit"), (0, b"", b""))
        self.assertEqual(first.wait(), 0)
        self.assertEqual(self.run_to_end("--quit"), (0, b"", b""))

    def test_what_other_programs_may_ask(self):
        self.tray_host()
        worker = self.busy_worker()
        first = self.live_dashboard(worker, home=self.home)
        application = Application(self.desktop)
        self.assertTrue(application.is_known())
        self.desktop.windows.press_close(first.window())
        wait_for("the window gone", lambda: not first.is_shown())
        application.act("nothing of ours")
        application.act("start")
        wait_for("the change at the worker", worker.changes)
        self.assertEqual(worker.changes(), [PAUSE])
        self.assertFalse(first.is_shown())
        application.activate()
        first.window()
        application.act("settings")
        first.sheet(SETTINGS)
        application.act("setup")
        # A window manager need not activate a window that the user did not click for.
        self.person.click(first.control("label", "A little more intelligence. Locally."))
        first.sheet(SETUP)
        application.act("quit")
        self.assertEqual(first.wait(), 0)
        wait_for("the name given back", lambda: not application.is_known())

    def is_locked(self):
        path = os.path.join(self.home["HOME"], ".corvala", "worker-control.lock")
        if not os.path.exists(path):
            return False
        with open(path, "rb") as file:
            try:
                fcntl.flock(file, fcntl.LOCK_SH | fcntl.LOCK_NB)
            except BlockingIOError:
                return True
        return False

    def test_second_start_before_the_first_is_known_on_the_bus(self):
        first = self.dashboard(self.kept_port(), home=self.home)
        wait_for("the lock", self.is_locked)
        self.assertEqual(self.run_to_end("--setup"), (1, b"", ALREADY_OPEN))
        first.sheet(SETUP)

    def silent_bus(self):
        """The address of a socket that accepts connections and never answers."""
        path = os.path.join(self.desktop.folder, "silent-bus")
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(os.remove, path)
        self.addCleanup(listener.close)
        listener.bind(path)
        listener.listen()
        return "unix:path=" + path

    def test_silent_session_bus_holds_nothing_up(self):
        self.home["DBUS_SESSION_BUS_ADDRESS"] = self.silent_bus()
        began = time.monotonic()
        first = self.dashboard(self.kept_port(), home=self.home, told=True)
        first.window()
        self.assertLess(time.monotonic() - began, WITHOUT_ANSWER + SLACK)
        self.assertEqual(len(first.reasons("vesk.ui: event=session-bus answers=false")), 1)
        for switch, expected in (
            ("--setup", (1, b"", ALREADY_OPEN)),
            ("--quit", (1, b"", NOT_REACHED)),
        ):
            with self.subTest(switch):
                began = time.monotonic()
                self.assertEqual(self.run_to_end(switch), expected)
                self.assertLess(time.monotonic() - began, WITHOUT_ANSWER + SLACK)
        self.assertTrue(first.is_running())

    def test_action_that_the_bus_starts_the_program_for(self):
        services = os.path.join(self.desktop.environment["XDG_DATA_HOME"], "dbus-1", "services")
        os.makedirs(services)
        for late in (0, 0.5):
            with self.subTest(late=late):
                worker = self.busy_worker(late)
                tool = Tool(self.desktop)
                home = visited_home(self.desktop)
                words = [f"{name}={value}" for name, value in home.items()]
                with open(os.path.join(services, NAME + ".service"), "w", encoding="ascii") as file:
                    command = " ".join(["/usr/bin/env", *words, tool.dashboard, str(worker.port)])
                    file.write(f"[D-BUS Service]\nName={NAME}\nExec={command}\n")
                _bus, address = self.desktop.start_bus(f"starting-bus-{late}")
                application = Application(self.desktop, address)
                application.act("start")
                self.wait_for_fetches(worker, 2)
                self.assertEqual((worker.changes(), tool.calls()), ([], []))
                # The same action of the running program pauses.
                application.act("start")
                wait_for("the change at the worker", worker.changes)
                self.assertEqual(worker.changes(), [PAUSE])
                application.act("quit")
                wait_for("the name given back", lambda: not application.is_known())

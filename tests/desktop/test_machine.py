"""The machine fails around the dashboard: it goes on or ends with a clear word, and never spins."""

import contextlib
import mmap
import os
import plistlib
import resource
import signal
import socket
import struct
import subprocess
import tempfile
import time

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT, visited_home
from harness.desktop import DASHBOARD
from harness.names import APPLY, LOGIN, SETUP
from harness.process import OWN_MOUNTS, needs_own_mounts
from harness.waiting import wait_for
from harness.worker import BUSY

LABEL = "com.halvex.corvala.integration.worker105"

INTERVAL = 1.5  # seconds, while a bay is busy
DEADLINE = 4.0  # for an exchange
SLACK = 2.0  # on a busy machine
DAY = 24 * 60 * 60
MEBIBYTE = 1024 * 1024

WALL_CLOCK_LIBRARY = os.environ["VESK_WALL_CLOCK_LIBRARY"]

# A small disk as the home, of which nobody else knows.
SMALL_DISK = """
mount -t tmpfs -o size=256k none "$HOME"
mkdir -p "$XDG_CONFIG_HOME/Halvex" "$HOME/Library/Application Support/Halvex/VeskWorker"
mkdir -m 700 "$XDG_RUNTIME_DIR"
printf '[General]\\nsetupVisitedV2=true\\n' >"$XDG_CONFIG_HOME/Halvex/VeskWorkerControl.conf"
exec "$0" "$@"
"""


def pass_time(seconds):
    """For what nothing shows but the time that passes."""
    end = time.monotonic() + seconds
    wait_for(f"{seconds} s to pass", lambda: time.monotonic() >= end, seconds + 1)


class WallClock:
    """What a program started in `environment` takes for the time of day."""

    def __init__(self, folder):
        descriptor, path = tempfile.mkstemp(dir=folder)
        os.truncate(descriptor, mmap.PAGESIZE)
        self._page = mmap.mmap(descriptor, mmap.PAGESIZE)
        os.close(descriptor)
        self.environment = {"LD_PRELOAD": WALL_CLOCK_LIBRARY, "VESK_WALL_CLOCK": path}

    def shift(self, seconds):
        self._page[:8] = struct.pack("q", seconds)


class MachineTest(DesktopCase):
    @contextlib.contextmanager
    def limit(self, dashboard, what, amount):
        """Until the end of the block, the running program gets no more than that."""
        _soft, hard = resource.prlimit(dashboard.pid, what)
        before = resource.prlimit(dashboard.pid, what, (amount, hard))
        yield
        resource.prlimit(dashboard.pid, what, before)

    def assert_rests(self, dashboard):
        """A program that spins uses all of a processor, or on a busy machine its share of one."""
        began, used = time.monotonic(), dashboard.cpu_seconds
        pass_time(1.5)
        share = (dashboard.cpu_seconds - used) / (time.monotonic() - began)
        self.assertTrue(dashboard.is_running())
        self.assertLess(share, 0.1)

    def busy_dashboard(self, **options):
        worker = self.worker()
        worker.show_slots(BUSY)
        return worker, self.live_dashboard(worker, **options)

    def unseen_dashboard(self, **surroundings):
        """On a screen or a bus of its own, where assistive technology does not see it."""
        worker = self.worker()
        worker.show_slots(BUSY)
        home = {**visited_home(self.desktop), **surroundings}
        # As it is for everybody: the toolkit says nothing.
        dashboard = self.dashboard(worker.port, home=home, without=("QT_LOGGING_RULES",))
        wait_for("two fetches", lambda: len(worker.arrivals()) >= 2)
        return worker, dashboard

    def first_free_descriptor(self, dashboard):
        used = {int(name) for name in os.listdir(f"/proc/{dashboard.pid}/fd")}
        return next(number for number in range(len(used) + 1) if number not in used)

    def test_descriptors_used_up(self):
        _worker, dashboard = self.busy_dashboard()
        with self.limit(dashboard, resource.RLIMIT_NOFILE, self.first_free_descriptor(dashboard)):
            dashboard.wait_for_text(names.RECONNECTING)
            self.assert_rests(dashboard)
            dashboard.wait_for_text(names.SERVICE_STOPPED)
        dashboard.wait_until_live()

    def test_memory_limited(self):
        worker, dashboard = self.busy_dashboard()
        with open(f"/proc/{dashboard.pid}/status", encoding="ascii") as file:
            data = next(line for line in file if line.startswith("VmData:"))
        most = int(data.split()[1]) * 1024 + 2 * MEBIBYTE
        with self.limit(dashboard, resource.RLIMIT_DATA, most):
            worker.fault(size=15 * MEBIBYTE)
            dashboard.wait_for_text(names.RECONNECTING)
            worker.show_slots(BUSY)
            dashboard.wait_until_live()

    @needs_own_mounts
    def test_disk_full(self):
        worker = self.worker(devices=0)
        home = visited_home(self.desktop)
        dashboard = self.live_dashboard(
            worker, "--setup", home=home,
            command=(*OWN_MOUNTS, "sh", "-ec", SMALL_DISK, DASHBOARD),
        )

        def seen(path):
            """Through the eyes of the program."""
            return f"/proc/{dashboard.pid}/root{path}"

        template = plistlib.dumps({"Label": LABEL, "ProgramArguments": ["/bin/true"]})
        folder = home["HOME"] + "/Library/Application Support/Halvex/VeskWorker"
        with open(seen(folder + "/localdev-worker.plist"), "wb") as file:
            file.write(template)
        filler = seen(home["HOME"] + "/filler")
        with self.assertRaises(OSError), open(filler, "wb", buffering=0) as file:
            while True:
                file.write(bytes(4096))

        dashboard.sheet(SETUP)
        self.go_to_last_setup_page(dashboard)
        self.person.click(dashboard.control("check box", LOGIN))
        self.person.click(dashboard.control("push button", APPLY))
        agent = f"{home['HOME']}/Library/LaunchAgents/{LABEL}.plist"
        dashboard.alert(f'The file "{agent}" could not be written: No space left on device')
        self.assert_rests(dashboard)
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)

        os.remove(filler)
        self.person.click(dashboard.control("push button", APPLY))
        dashboard.wait_until_gone(SETUP)
        with open(seen(agent), "rb") as file:
            self.assertEqual(file.read(), template)

    def test_wall_clock_set(self):
        clock = WallClock(self.desktop.folder)
        worker, dashboard = self.busy_dashboard(
            home={**visited_home(self.desktop), **clock.environment}
        )
        clock.shift(DAY)
        date = subprocess.run(
            ["date", "+%s"], env={**self.desktop.environment, **clock.environment},
            capture_output=True, check=True,
        ).stdout
        self.assertAlmostEqual(int(date), time.time() + DAY, delta=60)
        worker.clear_requests()
        wait_for("two fetches", lambda: len(worker.arrivals()) >= 2, 2 * INTERVAL + SLACK)
        first, second = worker.arrivals()[:2]
        self.assertGreater(second - first, 0.9 * INTERVAL)
        self.assertEqual(worker.requests("/v1/diagnostics"), [])
        # While an exchange is under way.
        worker.fault(late=60, count=1)
        worker.arm(patch={"slots": [BUSY]})
        worker.wait_for_fetch()
        clock.shift(-DAY)
        dashboard.wait_for_text(names.RECONNECTING, DEADLINE + SLACK)
        wait_for("the next fetch", lambda: len(worker.arrivals()) >= 4, INTERVAL + SLACK)
        dashboard.wait_until_live()

    def test_suspended(self):
        worker, dashboard = self.busy_dashboard()
        worker.fault(late=1, patch={"slots": [BUSY]})
        worker.wait_for_fetch()
        dashboard.send(signal.SIGSTOP)
        # The answer comes and waits, the deadline goes by.
        pass_time(DEADLINE + 0.5)
        worker.show_slots(BUSY)
        asleep = len(worker.arrivals())
        dashboard.send(signal.SIGCONT)
        wait_for(
            "a fetch", lambda: len(worker.arrivals()) > asleep, INTERVAL + DEADLINE + SLACK
        )
        self.assert_rests(dashboard)
        # What fell due meanwhile is not made up for.
        wait_for("the next", lambda: len(worker.arrivals()) >= asleep + 2, INTERVAL + SLACK)
        first, second = worker.arrivals()[asleep:asleep + 2]
        self.assertGreater(second - first, 0.9 * INTERVAL)
        dashboard.wait_until_live()

    def test_bus_gone(self):
        bus, address = self.desktop.start_bus("other-bus")
        worker, dashboard = self.unseen_dashboard(DBUS_SESSION_BUS_ADDRESS=address)
        bus.send(signal.SIGKILL)
        bus.wait()
        before = len(worker.arrivals())
        self.assert_rests(dashboard)
        wait_for("more fetches", lambda: len(worker.arrivals()) > before)
        windows = self.desktop.windows
        windows.activate(dashboard.window())
        dashboard.wait_until_in_front()
        self.person.key("q", "Control_L")
        self.assertEqual(dashboard.wait(SLACK), 0)
        self.assertEqual(dashboard.err, "")

    def test_screen_gone(self):
        screen, name = self.desktop.start_screen("other-screen")
        _worker, dashboard = self.unseen_dashboard(DISPLAY=name)
        screen.send(signal.SIGKILL)
        screen.wait()
        self.assertEqual(dashboard.wait(SLACK), 1)
        self.assertEqual(dashboard.err, "VeskWorkerControl: the screen is gone\n")

    def test_service_accepts_and_never_answers(self):
        connections = []
        with socket.create_server(("127.0.0.1", 0)) as service:
            service.setblocking(False)

            def accepted():
                with contextlib.suppress(BlockingIOError):
                    connection = service.accept()[0]
                    self.addCleanup(connection.close)
                    connections.append(connection)
                return connections

            dashboard = self.dashboard(service.getsockname()[1])
            wait_for("a connection", accepted)
            self.assert_rests(dashboard)
            self.assertEqual(len(accepted()), 1)
            dashboard.wait_for_text(names.SERVICE_STOPPED, DEADLINE + SLACK)
            # The next comes when this one was given up.
            request = connections[0].recv(65536)
            self.assertTrue(request.startswith(b"GET /v1/health "), request)
            self.assertEqual(connections[0].recv(1), b"")

"""What the desktop tests share: one desktop a test process, everything else a test."""

import contextlib
import socket
import unittest

from . import names
from .dashboard import Dashboard
from .desktop import X11Desktop
from .person import Person
from .tray import TrayHost
from .worker import Worker


class DesktopCase(unittest.TestCase):
    maxDiff = None
    desktop_kind = X11Desktop

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.desktop_kind()
        cls.addClassCleanup(cls.desktop.stop)
        if "DISPLAY" in cls.desktop.environment:
            cls.person = Person(cls.desktop)
            cls.addClassCleanup(cls.person.leave)

    def setUp(self):
        self._dashboards = []

    def tearDown(self):
        # Before the cleanups, so that everything can still be seen.
        if self._has_failed():
            print("picture:", self.desktop.picture(self.id()))
            for dashboard in self._dashboards:
                print(dashboard.err)
                print(dashboard.accessible.tree())

    def _has_failed(self):
        result = self._outcome.result
        return any(
            getattr(test, "test_case", test) is self
            for test, _report in result.failures + result.errors
        )

    @contextlib.contextmanager
    def step(self, name):
        """Names one of many that build on each other: unlike a subtest, the first failure ends."""
        try:
            yield
        except AssertionError as error:
            error.add_note(f"at {name!r}")
            raise

    def kept_port(self):
        """One that refuses connections unless a worker is started there: since a socket stays bound
        to it, the system gives it to nobody who asks for any free one."""
        keeper = socket.socket()
        self.addCleanup(keeper.close)
        keeper.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        keeper.bind(("127.0.0.1", 0))
        return keeper.getsockname()[1]

    def worker(self, port=None, **options):
        worker = Worker(self.desktop, port or self.kept_port(), **options)
        self.addCleanup(worker.stop)
        return worker

    def dashboard(self, *arguments, **options):
        dashboard = Dashboard(self.desktop, *arguments, **options)
        # Only at its end all is said.
        self.addCleanup(lambda: self.assertEqual(dashboard.complaints, []))
        self.addCleanup(dashboard.stop)
        self._dashboards.append(dashboard)
        return dashboard

    def live_dashboard(self, worker, *arguments, **options):
        dashboard = self.dashboard(worker.port, *arguments, **options)
        dashboard.wait_until_live()
        return dashboard

    def go_to_last_setup_page(self, dashboard):
        for number in (2, 3, 4):
            self.person.click(dashboard.control("push button", "Continue"))
            dashboard.wait_for_text(names.setup_step(number))

    def tray_host(self):
        host = TrayHost(self.desktop)
        self.addCleanup(host.leave)
        return host

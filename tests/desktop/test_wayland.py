"""The dashboard on a Wayland compositor."""

import time

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT, Dashboard
from harness.desktop import NestedWaylandDesktop, WaylandDesktop
from harness.names import MAIN, SETTINGS, SETUP
from harness.waiting import wait_for
from harness.worker import BUSY

VISIBLE_BUSY = 1.5
IDENTIFIER = "com.halvex.VeskWorkerControl"


class WaylandCase(DesktopCase):
    def titles(self, dashboard):
        return [window.title for window in self.desktop.windows.of_process(dashboard.pid)]

    def wait_for_windows(self, dashboard, *titles):
        """From the front to the back."""
        wait_for(f"the windows {titles}", lambda: self.titles(dashboard) == list(titles))

    def start_again(self, dashboard, worker):
        again = Dashboard(self.desktop, worker.port, home=dashboard.home)
        self.assertEqual(again.wait(), 1)


class UnattendedTest(WaylandCase):
    """By accessible actions and through the tray only."""

    desktop_kind = WaylandDesktop

    def test_every_screen(self):
        host = self.tray_host()
        worker = self.worker()
        worker.show_slots(BUSY)
        dashboard = self.live_dashboard(worker)
        self.wait_for_windows(dashboard, MAIN)
        (window,) = self.desktop.windows.of_process(dashboard.pid)
        self.assertEqual(window.application, IDENTIFIER)
        self.assertGreaterEqual(window.place[2:], (720, 390))
        self.assertIn(names.working(1), dashboard.texts())
        item = host.item()
        wait_for("the tool tip", lambda: item.tool_tip == names.tool_tip(names.working(1)))

        dashboard.control("push button", "Settings").press()
        self.wait_for_windows(dashboard, SETTINGS, MAIN)
        worker.arm(path="performance", count=1, status=500)
        dashboard.control("radio button", "Cool & quiet").press()
        self.wait_for_windows(dashboard, "Corvala for Mac", SETTINGS, MAIN)
        self.assertEqual(dashboard.sheets(), [SETTINGS, ALERT])
        dashboard.control("push button", "OK").press()
        self.wait_for_windows(dashboard, SETTINGS, MAIN)
        dashboard.control("push button", "Done").press()
        self.wait_for_windows(dashboard, MAIN)

        item.menu.choose("Setup…")
        self.wait_for_windows(dashboard, SETUP, MAIN)
        for step in (1, 2, 3):
            dashboard.control("label", names.setup_step(step))
            dashboard.control("push button", "Continue").press()
        dashboard.control("push button", names.APPLY)
        dashboard.control("push button", "Skip setup").press()
        self.wait_for_windows(dashboard, MAIN)

        item.menu.choose(names.QUIT)
        self.assertEqual(dashboard.wait(), 0)
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

    def test_setup_on_the_first_start(self):
        worker = self.worker()
        dashboard = self.dashboard(worker.port, home=self.desktop.home_environment("newcomer"))
        self.wait_for_windows(dashboard, SETUP, MAIN)


class AttendedTest(WaylandCase):
    desktop_kind = NestedWaylandDesktop

    def live(self, worker):
        """Once the keyboard is its own; nothing moves, so that only a window's own fate changes
        what is drawn."""
        worker.show_slots(BUSY)
        dashboard = self.live_dashboard(worker)
        self.wait_for_keyboard(dashboard)
        return dashboard

    @staticmethod
    def wait_for_keyboard(dashboard):
        """On the window itself."""
        wait_for("the keyboard", lambda: dashboard.accessible.focus() == ("frame", MAIN))

    def test_closing_hides_and_the_tray_opens_again(self):
        host = self.tray_host()
        worker = self.worker()
        dashboard = self.live(worker)
        item = host.item()
        for reopen in (
            item.click,
            lambda: item.menu.choose(names.OPEN),
            lambda: self.start_again(dashboard, worker),
        ):
            self.person.key("w", "Control_L")
            self.wait_for_windows(dashboard)
            reopen()
            self.wait_for_windows(dashboard, MAIN)
            self.wait_for_keyboard(dashboard)

    def test_minimised_window_comes_back(self):
        worker = self.worker()
        dashboard = self.live(worker)
        # Without a tray it must stay within reach.
        self.person.key("w", "Control_L")
        self.wait_for_windows(dashboard)
        # Only the compositor's silence tells the dashboard, which then asks less often.
        wait_for("a pause", lambda: time.monotonic() - worker.arrivals()[-1] > 2 * VISIBLE_BUSY)
        self.start_again(dashboard, worker)
        self.wait_for_windows(dashboard, MAIN)
        self.wait_for_keyboard(dashboard)

    def test_keyboard_on_a_sheet(self):
        worker = self.worker()
        dashboard = self.live(worker)
        self.person.key("comma", "Control_L")
        dashboard.sheet(SETTINGS)
        self.wait_for_windows(dashboard, SETTINGS, MAIN)
        wait_for(
            "the keyboard on the mode",
            lambda: dashboard.accessible.focus() == ("radio button", "Automatic"),
        )
        self.person.key("Tab")
        wait_for(
            "the keyboard on the button",
            lambda: dashboard.accessible.focus() == ("push button", "Done"),
        )
        self.person.key("Escape")
        self.wait_for_windows(dashboard, MAIN)
        self.wait_for_keyboard(dashboard)
        self.person.key("q", "Control_L")
        self.assertEqual(dashboard.wait(), 0)

"""How often the service is asked, as the service sees it. Timers may be late, never early."""

from harness.case import DesktopCase
from harness.waiting import wait_for
from harness.worker import BUSY, bay

# The clocks of timer and peer, and the way of a request, may differ by that much.
EARLY = 0.05
VISIBLE_BUSY, VISIBLE_IDLE, HIDDEN_BUSY, HIDDEN_IDLE = 1.5, 5.0, 10.0, 30.0


class CadenceTest(DesktopCase):
    def gaps(self, worker):
        arrivals = worker.arrivals()
        return [later - earlier for earlier, later in zip(arrivals, arrivals[1:])]

    def assert_gaps(self, worker, seconds, count):
        """The next `count` gaps are those of one interval: none is shorter, most are near it."""
        worker.clear_requests()
        wait_for(
            f"{count} gaps of {seconds} s",
            lambda: len(self.gaps(worker)) >= count,
            (count + 1) * (seconds + 1) + 10,
        )
        gaps = self.gaps(worker)
        self.assertGreaterEqual(min(gaps), seconds - EARLY, gaps)
        # The answer's way, a late timer and a machine with other things to do.
        self.assertLessEqual(min(gaps), seconds + min(1.0, seconds / 10) + 0.5, gaps)

    def assert_next_gap(self, worker, seconds):
        """After a fetch or a change of the window the next fetch keeps the interval."""
        self.assert_gaps(worker, seconds, 1)

    def dashboard_in_front(self, *slots):
        worker = self.worker()
        worker.show_slots(*slots)
        dashboard = self.live_dashboard(worker)
        window = dashboard.window()
        wait_for("the window in front", lambda: self.desktop.windows.is_active(window))
        return worker, dashboard, window

    def test_visible_and_busy(self):
        worker, _dashboard, _window = self.dashboard_in_front(BUSY)
        self.assert_gaps(worker, VISIBLE_BUSY, 4)

    def test_visible_and_waiting(self):
        worker, _dashboard, _window = self.dashboard_in_front(bay(2, state="waiting"))
        self.assert_gaps(worker, VISIBLE_BUSY, 2)

    def test_visible_and_idle(self):
        worker, _dashboard, _window = self.dashboard_in_front(bay(1, state="idle"))
        self.assert_gaps(worker, VISIBLE_IDLE, 2)

    def test_covered_and_uncovered(self):
        worker, _dashboard, _window = self.dashboard_in_front(BUSY)
        windows = self.desktop.windows
        windows.cover()
        wait_for("the cover in front", windows.is_covered)
        self.assert_next_gap(worker, HIDDEN_BUSY)
        worker.clear_requests()
        windows.uncover()
        wait_for("a fetch at once", worker.arrivals, 3)
        self.assert_gaps(worker, VISIBLE_BUSY, 2)

    def test_minimised_and_restored(self):
        worker, _dashboard, window = self.dashboard_in_front(BUSY)
        windows = self.desktop.windows
        windows.minimise(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        self.assert_next_gap(worker, HIDDEN_BUSY)
        worker.clear_requests()
        windows.activate(window)
        wait_for("a fetch at once", worker.arrivals, 3)
        self.assert_gaps(worker, VISIBLE_BUSY, 2)

    def test_hidden_with_its_menu_and_opened_again(self):
        host = self.tray_host()
        worker, dashboard, window = self.dashboard_in_front(BUSY)
        item = host.item()
        self.desktop.windows.press_close(window)
        wait_for("the window gone", lambda: not dashboard.is_shown())
        self.assert_next_gap(worker, HIDDEN_BUSY)

        # An open menu shows live state.
        worker.clear_requests()
        item.menu.open()
        wait_for("a fetch at once", worker.arrivals, 3)
        self.assert_gaps(worker, VISIBLE_BUSY, 2)
        item.menu.shut()
        self.assert_next_gap(worker, HIDDEN_BUSY)

        worker.clear_requests()
        item.menu.choose("Open Corvala for Mac")
        wait_for("a fetch at once", worker.arrivals, 3)
        wait_for("the window", dashboard.is_shown)
        self.assert_gaps(worker, VISIBLE_BUSY, 2)

    def test_hidden_and_idle(self):
        host = self.tray_host()
        worker, dashboard, window = self.dashboard_in_front(bay(1, state="idle"))
        host.item()
        self.desktop.windows.press_close(window)
        wait_for("the window gone", lambda: not dashboard.is_shown())
        self.assert_next_gap(worker, HIDDEN_IDLE)

    def test_offline_counts_as_idle(self):
        worker, dashboard, _window = self.dashboard_in_front(BUSY)
        worker.fault(status=503)
        dashboard.wait_for_text("● SERVICE STOPPED", 20)
        self.assert_gaps(worker, VISIBLE_IDLE, 1)

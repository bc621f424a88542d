"""How often the service is asked, as the service sees it, where it is the window system that tells
what is seen. Timers may be late, never early."""

from harness import names
from harness.case import DesktopCase
from harness.waiting import wait_for
from harness.worker import BUSY

# The clocks of timer and peer, and the way of a request, may differ by that much.
EARLY = 0.05
AT_ONCE = 3.0
VISIBLE_BUSY, HIDDEN_BUSY = 1.5, 10.0


class CadenceCase(DesktopCase):
    def assert_gaps(self, worker, seconds, count):
        """The gaps from here on are those of one interval: none is shorter, one is near it."""
        worker.wait_for_fetch()
        before = len(worker.arrivals()) - 1
        wait_for(
            f"{count} more fetches",
            lambda: len(worker.arrivals()) > before + count,
            count * (seconds + 1) + 10,
        )
        arrivals = worker.arrivals()[before:]
        gaps = [later - earlier for earlier, later in zip(arrivals, arrivals[1:])]
        self.assertGreaterEqual(min(gaps), seconds - EARLY, gaps)
        # The way of the answer, a late timer and a machine with other things to do.
        self.assertLessEqual(min(gaps), seconds + min(1.0, seconds / 10) + 0.5, gaps)

    def assert_slows_down(self, worker, seconds, change):
        """`change` is made just after a fetch; the next one is due an interval later."""
        worker.wait_for_fetch()
        last = worker.arrivals()[-1]
        worker.clear_requests()
        change()
        wait_for("the next fetch", worker.arrivals, seconds + 10)
        gap = worker.arrivals()[0] - last
        self.assertGreaterEqual(gap, seconds - EARLY)
        self.assertLessEqual(gap, seconds + 4)

    def dashboard_in_front(self, *slots):
        worker = self.worker()
        worker.show_slots(*slots)
        dashboard = self.live_dashboard(worker)
        window = dashboard.wait_until_in_front()
        return worker, dashboard, window


class CoveredTest(CadenceCase):

    def test_covered_and_uncovered(self):
        worker, _dashboard, _window = self.dashboard_in_front(BUSY)
        windows = self.desktop.windows
        self.assert_slows_down(worker, HIDDEN_BUSY, windows.cover)
        self.assertTrue(windows.is_covered())
        worker.clear_requests()
        windows.uncover()
        wait_for("a fetch at once", worker.arrivals, AT_ONCE)
        self.assert_gaps(worker, VISIBLE_BUSY, 1)

    def test_minimised_and_restored(self):
        worker, _dashboard, window = self.dashboard_in_front(BUSY)
        windows = self.desktop.windows
        self.assert_slows_down(worker, HIDDEN_BUSY, lambda: windows.minimise(window))
        self.assertTrue(windows.is_minimised(window))
        worker.clear_requests()
        windows.activate(window)
        wait_for("a fetch at once", worker.arrivals, AT_ONCE)
        self.assert_gaps(worker, VISIBLE_BUSY, 1)


class HiddenTest(CadenceCase):
    def test_hidden_with_its_menu_and_opened_again(self):
        host = self.tray_host()
        worker, dashboard, window = self.dashboard_in_front(BUSY)
        item = host.item()
        self.assert_slows_down(
            worker, HIDDEN_BUSY, lambda: self.desktop.windows.press_close(window)
        )
        self.assertFalse(dashboard.is_shown())

        # An open menu shows live state.
        worker.clear_requests()
        item.menu.open()
        wait_for("a fetch at once", worker.arrivals, AT_ONCE)
        self.assert_gaps(worker, VISIBLE_BUSY, 1)
        self.assert_slows_down(worker, HIDDEN_BUSY, item.menu.shut)

        worker.clear_requests()
        item.menu.choose(names.OPEN)
        wait_for("a fetch at once", worker.arrivals, AT_ONCE)
        wait_for("the window", dashboard.is_shown)
        self.assert_gaps(worker, VISIBLE_BUSY, 1)

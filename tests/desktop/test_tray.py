"""The tray item, and the window with and without a desktop that has a tray."""

from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.names import OPEN, OPEN_SETUP, PAUSE, PAUSED, QUIT, RESUME, tool_tip, working
from harness.tray import TrayHost, TrayWatcher
from harness.waiting import wait_for
from harness.worker import BUSY, bay


class TrayTest(DesktopCase):
    def test_item_follows_the_service(self):
        host = self.tray_host()
        worker = self.worker()
        worker.show_slots(BUSY, bay(2, state="waiting"))
        self.live_dashboard(worker)
        item = host.item()

        def wait_for_state(state, action):
            titles = [state, "-", OPEN, action, OPEN_SETUP, "-", QUIT]
            wait_for(state, lambda: (item.tool_tip, item.menu.titles()) == (tool_tip(state), titles))

        wait_for_state(working(2), PAUSE)
        self.assertFalse(item.menu.entry(working(2)).is_enabled)
        self.assertTrue(item.menu.entry(PAUSE).is_enabled)
        with_count = item.pictures

        worker.wait_for_fetch()
        worker.show_slots(bay(1), deep_scan_enabled=False)
        wait_for_state(PAUSED, RESUME)
        # Where the tray has no titles the count is part of the picture.
        without_count = item.pictures
        self.assertTrue(with_count and without_count)
        self.assertNotEqual(with_count, without_count)
        for width, height, data in with_count + without_count:
            self.assertEqual(len(data), width * height * 4)
            self.assertTrue(any(data), "blank")

    def test_without_a_session_bus(self):
        worker = self.worker()
        dashboard = self.dashboard(
            worker.port,
            home={**visited_home(self.desktop), "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"},
        )
        windows = self.desktop.windows
        window = dashboard.window()
        worker.wait_for_fetch()
        windows.press_close(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        self.assertTrue(dashboard.is_running())
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

    def test_quit_while_hidden(self):
        host = self.tray_host()
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        self.desktop.windows.press_close(dashboard.window())
        wait_for("the window gone", lambda: not dashboard.is_shown())
        host.item().menu.choose(QUIT)
        self.assertEqual(dashboard.wait(), 0)
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))
        self.assertTrue(worker.is_running())
        wait_for("the item gone", lambda: not host.items())

    def test_watcher_without_a_host_is_no_tray(self):
        watcher = TrayWatcher(self.desktop)
        self.addCleanup(watcher.end)
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        windows = self.desktop.windows
        window = dashboard.window()
        windows.press_close(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        windows.activate(window)
        wait_for("the window back", lambda: not windows.is_minimised(window))

        host = TrayHost(self.desktop, joins=watcher)
        host.item()
        windows.press_close(window)
        wait_for("the window gone", lambda: not dashboard.is_shown())

    def test_closed_window_without_a_host(self):
        worker = self.worker()
        host = self.tray_host()
        dashboard = self.live_dashboard(worker)
        windows = self.desktop.windows
        with self.step("closed while the host is gone for a moment"):
            host.item()
            host.leave()
            windows.press_close(dashboard.window())
            wait_for("the window gone", lambda: not dashboard.is_shown())
        with self.step("the host returns at once"):
            host = self.tray_host()
            host.item()
            self.assertFalse(dashboard.is_shown())
        with self.step("a second start while the host is gone"):
            host.leave()
            self.dashboard(worker.port, home=dashboard.home).wait()
            dashboard.wait_until_in_front()
            host = self.tray_host()
            host.item()
            self.assertTrue(dashboard.is_shown())
        with self.step("the host stays away"):
            windows.press_close(dashboard.window())
            wait_for("the window gone", lambda: not dashboard.is_shown())
            host.leave()
            wait_for("the window minimised", lambda: dashboard.is_shown()
                     and windows.is_minimised(dashboard.window()), 20)
        with self.step("the host returns"):
            host = self.tray_host()
            host.item()
            wait_for("the window gone", lambda: not dashboard.is_shown())
            host.item().click()
            dashboard.wait_until_in_front()

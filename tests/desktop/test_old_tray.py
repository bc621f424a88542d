"""The tray item on desktops whose tray embeds windows, alone and beside a tray of today's kind."""

from harness import names
from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.oldtray import OldTray
from harness.person import RIGHT_BUTTON
from harness.waiting import wait_for
from harness.worker import BUSY


class OldTrayTest(DesktopCase):
    def old_tray(self):
        tray = OldTray(self.desktop)
        self.addCleanup(tray.leave)
        return tray

    def close_window(self, dashboard):
        self.desktop.windows.press_close(dashboard.window())
        wait_for("the window gone", lambda: not dashboard.is_shown())

    def choose(self, dashboard, item, key):
        """Opens the item's menu, goes to the entry with the key and chooses it."""
        menus = self.desktop.windows.menus

        def opens():
            self.person.click(item, RIGHT_BUTTON)
            try:
                return wait_for("the menu", lambda: menus(dashboard.pid), 2)
            except AssertionError:
                return False

        # Within some hundredths of a second of the window's going the toolkit loses a click.
        wait_for("the menu", opens)
        self.person.key(key)
        self.person.key("Return")
        wait_for("the menu closed", lambda: not menus(dashboard.pid))

    def assert_silent(self, dashboard):
        self.assertTrue(dashboard.is_running())
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

    def test_left_button_opens_the_window(self):
        tray = self.old_tray()
        dashboard = self.live_dashboard(self.worker())
        item = tray.item()
        self.close_window(dashboard)
        self.person.click(item)
        dashboard.wait_until_in_front()
        self.assert_silent(dashboard)

    def test_without_a_session_bus(self):
        tray = self.old_tray()
        home = {**visited_home(self.desktop), "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
        dashboard = self.dashboard(self.worker().port, home=home)
        item = tray.item()
        self.close_window(dashboard)
        self.person.click(item)
        dashboard.wait_until_in_front()
        self.assert_silent(dashboard)

    def test_right_button_opens_the_menu(self):
        tray = self.old_tray()
        dashboard = self.live_dashboard(self.worker())
        item = tray.item()
        self.close_window(dashboard)
        self.choose(dashboard, item, "Down")
        dashboard.wait_until_in_front()
        self.assert_silent(dashboard)

    def test_quit_leaves_the_worker_running(self):
        tray = self.old_tray()
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        self.choose(dashboard, tray.item(), "Up")
        self.assertEqual(dashboard.wait(), 0)
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))
        self.assertTrue(worker.is_running())
        wait_for("the item gone", lambda: not tray.items())

    def test_tray_that_starts_late_and_again(self):
        dashboard = self.live_dashboard(self.worker())
        for _time in range(3):
            tray = self.old_tray()
            tray.item()
            self.close_window(dashboard)
            tray.leave()
            tray = self.old_tray()
            item = tray.item()
            self.assertFalse(dashboard.is_shown())
            # The menu proves that the new item takes clicks.
            self.choose(dashboard, item, "Down")
            dashboard.wait_until_in_front()
            tray.leave()
        self.assert_silent(dashboard)

    def test_item_moves_to_the_host_and_back(self):
        tray = self.old_tray()
        dashboard = self.live_dashboard(self.worker())
        tray.item()
        for _time in range(2):
            host = self.tray_host()
            item = host.item()
            wait_for("no item in the old tray", lambda: not tray.items())
            self.close_window(dashboard)
            item.click()
            dashboard.wait_until_in_front()

            host.leave()
            embedded = tray.item()
        self.close_window(dashboard)
        self.person.click(embedded)
        dashboard.wait_until_in_front()
        self.assert_silent(dashboard)

    def test_host_keeps_the_item_while_old_trays_come_and_go(self):
        host = self.tray_host()
        tray = self.old_tray()
        worker = self.worker()
        worker.show_slots(BUSY)
        dashboard = self.live_dashboard(worker)
        item = host.item()
        wait_for("the state in the tray", lambda: item.menu.titles()[0] == names.working(1))
        heard = item.listen()
        tray.leave()
        tray = self.old_tray()
        self.close_window(dashboard)
        item.menu.choose(names.OPEN)
        dashboard.wait_until_in_front()
        self.assertEqual(tray.items(), [])
        self.assertEqual(heard.names(), [])
        # The toolkit has not been asked before, and would now choose the kind that left.
        host.leave()
        tray.item()
        self.assert_silent(dashboard)

    def test_end_of_the_last_tray_is_noticed(self):
        tray = self.old_tray()
        host = self.tray_host()
        dashboard = self.live_dashboard(self.worker(), told=True)
        host.item()
        host.leave()
        tray.item()
        tray.leave()
        wait_for("the end of the last tray", lambda: dashboard.reasons("vesk.ui: event=tray")[-1:]
                 == ["vesk.ui: event=tray present=false"])

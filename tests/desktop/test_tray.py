"""The tray item, and the window with and without a desktop that has a tray."""

from harness import names
from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.tray import TrayHost, TrayWatcher
from harness.waiting import wait_for
from harness.worker import BUSY, bay

ENTRIES = ["-", names.OPEN, names.PAUSE, names.OPEN_SETUP, "-", names.QUIT]


class TrayTest(DesktopCase):
    def wait_for_titles(self, item, *titles):
        wait_for(f"the menu {titles}", lambda: item.menu.titles() == list(titles))

    def wait_for_tool_tip(self, item, tool_tip, seconds=15.0):
        wait_for(f"the tool tip {tool_tip!r}", lambda: item.tool_tip == tool_tip, seconds)

    def test_item_follows_the_service(self):
        host = self.tray_host()
        worker = self.worker()
        worker.show_slots(BUSY, bay(2, state="waiting"))
        self.live_dashboard(worker)
        item = host.item()
        self.wait_for_tool_tip(item, names.tool_tip(names.working(2)))
        self.wait_for_titles(item, names.working(2), *ENTRIES)
        menu = item.menu
        self.assertFalse(menu.entry(names.working(2)).is_enabled)
        for title in ENTRIES:
            if title != "-":
                self.assertTrue(menu.entry(title).is_enabled, title)
        self.assertIn(item.read("Status"), ("Active", "Passive", "NeedsAttention"))
        with_count = item.pictures

        worker.wait_for_fetch()
        worker.show_slots(bay(1), deep_scan_enabled=False)
        self.wait_for_tool_tip(item, names.tool_tip(names.PAUSED))
        self.wait_for_titles(
            item, names.PAUSED,
            *[names.RESUME if entry == names.PAUSE else entry for entry in ENTRIES]
        )
        without_count = item.pictures
        # Where the tray has no titles the count is part of the picture.
        self.assertTrue(with_count and without_count)
        self.assertNotEqual(with_count, without_count)
        for width, height, data in with_count + without_count:
            self.assertEqual(len(data), width * height * 4)
            self.assertTrue(any(data), "blank")

        worker.wait_for_fetch()
        worker.fault(status=503)
        late = names.shown(names.LIVE, "reconnecting")
        gone = names.shown(names.GONE)
        self.wait_for_tool_tip(item, late["tray tool tip"])
        self.assertEqual(item.menu.titles()[0], late["tray state"])
        self.wait_for_tool_tip(item, gone["tray tool tip"], 30)
        self.wait_for_titles(
            item, gone["tray state"],
            *[names.START if entry == names.PAUSE else entry for entry in ENTRIES]
        )
        self.assertEqual(item.pictures, without_count)

    def test_before_the_first_answer(self):
        host = self.tray_host()
        worker = self.worker()
        worker.fault(late=3.5, count=1)
        self.dashboard(worker.port)
        item = host.item()
        self.assertEqual(item.read("Title"), "Corvala for Mac")
        self.assertEqual(item.read("Id"), "VeskWorkerControl")
        self.assertEqual(item.tool_tip, "Corvala for Mac")
        titles = item.menu.titles()
        self.assertEqual(titles[0], names.shown(names.WAITING)["tray state"])
        self.assertEqual(titles[3], names.START)

    def test_tells_its_host_only_what_changed(self):
        host = self.tray_host()
        worker = self.worker()
        worker.show_slots(BUSY)
        self.live_dashboard(worker)
        item = host.item()
        self.wait_for_titles(item, names.working(1), *ENTRIES)
        heard = item.listen()
        for _fetch in range(3):
            worker.wait_for_fetch()
        self.assertEqual(heard.names(), [])
        # The next fetch shows that the last answer of those came in.
        worker.show_slots(BUSY, bay(2, state="waiting"))
        changes = ["ItemsPropertiesUpdated", "NewIcon", "NewToolTip"]
        wait_for("the changes told", lambda: len(heard.names()) >= len(changes))
        worker.wait_for_fetch()
        worker.wait_for_fetch()
        self.assertEqual(heard.names(), changes)

    def test_menu_without_a_person_at_it(self):
        host = self.tray_host()
        worker = self.worker()
        self.live_dashboard(worker)
        menu = host.item().menu
        worker.wait_for_fetch()
        fetches = len(worker.arrivals())
        menu.prepare()
        self.assertEqual(len(menu.titles()), 7)
        self.assertEqual(len(worker.arrivals()), fetches, "asked as if the menu were open")
        menu.open()
        wait_for("a fetch for the open menu", lambda: len(worker.arrivals()) > fetches, 1.0)
        menu.shut()

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

    def test_quit_leaves_the_worker_running(self):
        host = self.tray_host()
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        host.item().menu.choose(names.QUIT)
        self.assertEqual(dashboard.wait(), 0)
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))
        self.assertTrue(worker.is_running())
        self.assertEqual(worker.faults(), [])
        methods = {request["method"] for request in worker.requests()}
        self.assertEqual(methods, {"GET"})
        wait_for("the item gone", lambda: not host.items())

    def test_quit_while_hidden(self):
        host = self.tray_host()
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        self.desktop.windows.press_close(dashboard.window())
        wait_for("the window gone", lambda: not dashboard.is_shown())
        host.item().menu.choose(names.QUIT)
        self.assertEqual(dashboard.wait(), 0)

    def test_without_a_tray_closing_minimises(self):
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        windows = self.desktop.windows
        window = dashboard.window()
        windows.press_close(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        self.assertTrue(dashboard.is_running())
        windows.activate(window)
        wait_for("the window back", lambda: not windows.is_minimised(window))

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

    def test_late_host_gets_the_item(self):
        worker = self.worker()
        worker.show_slots(BUSY)
        dashboard = self.live_dashboard(worker)
        host = self.tray_host()
        self.wait_for_tool_tip(host.item(), names.tool_tip(names.working(1)))
        self.wait_for_titles(host.item(), names.working(1), *ENTRIES)
        self.assertTrue(dashboard.is_running())

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

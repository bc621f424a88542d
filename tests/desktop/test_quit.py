"""Every way to end the dashboard, and the keys and the menu of its window."""

import signal
import time

from harness import names
from harness.application import Application
from harness.case import DesktopCase
from harness.names import MAIN, QUIT, SETTINGS, SETUP
from harness.tool import Tool
from harness.waiting import wait_for
from harness.worker import bay

AT_ONCE = 1.0  # seconds, on a busy machine
ENTRIES = [names.READY, names.OPEN, names.PAUSE, "Setup…", QUIT]


class QuitTest(DesktopCase):
    def assert_ends_at_once(self, dashboard, way_out):
        began = time.monotonic()
        way_out()
        self.assertEqual(dashboard.wait(), 0)
        self.assertLess(time.monotonic() - began, AT_ONCE)

    def ways_out(self, dashboard, host):
        return {
            "tray": lambda: host.item().menu.choose(QUIT),
            "key": lambda: self.person.key("q", "Control_L"),
            "desktop": lambda: Application(self.desktop).act("quit"),
        }

    def test_quit_while_setup_applies(self):
        host = self.tray_host()
        for name in ("tray", "key", "desktop"):
            with self.step(name):
                worker = self.worker(devices=0)
                dashboard = self.live_dashboard(worker, "--setup")
                dashboard.sheet(SETUP)
                self.go_to_last_setup_page(dashboard)
                worker.arm(path="services", late=60)
                self.person.click(dashboard.control("push button", names.APPLY))
                wait_for("the change at the worker", worker.changes)
                self.assert_ends_at_once(dashboard, self.ways_out(dashboard, host)[name])
                self.assertTrue(worker.is_running())

    def test_quit_with_an_alert_over_a_sheet(self):
        host = self.tray_host()
        for name in ("tray", "key", "desktop"):
            with self.step(name):
                worker = self.worker(devices=0)
                worker.arm(path="performance", status=500)
                dashboard = self.live_dashboard(worker)
                self.person.click(dashboard.control("push button", "Settings"))
                dashboard.sheet(SETTINGS)
                self.person.click(dashboard.control("radio button", "Cool & quiet"))
                dashboard.alert("Could not save processing mode. Please try again.")
                self.assert_ends_at_once(dashboard, self.ways_out(dashboard, host)[name])

    def test_quit_while_the_service_does_not_answer(self):
        host = self.tray_host()
        worker = self.worker()
        worker.arm(late=60)
        dashboard = self.dashboard(worker.port)
        wait_for("a health request", worker.requests)
        self.assert_ends_at_once(dashboard, self.ways_out(dashboard, host)["tray"])

    def stopped_dashboard(self, *command):
        worker = self.worker()
        port = worker.port
        worker.stop()
        dashboard = self.dashboard(port, command=command)
        dashboard.wait_for_text(names.STOPPED)
        return dashboard

    def test_quit_while_a_start_is_under_way(self):
        host = self.tray_host()
        for name in ("key", "signal"):
            with self.step(name):
                tool = Tool(self.desktop)
                tool.hold()
                dashboard = self.stopped_dashboard(tool.dashboard)
                self.person.click(dashboard.control("push button", names.START))
                wait_for("the tool's first call", tool.calls)
                if name == "signal":
                    dashboard.send(signal.SIGKILL)
                    dashboard.wait()
                else:
                    self.assert_ends_at_once(dashboard, self.ways_out(dashboard, host)[name])
                self.assertEqual(tool.calls(), ["print"])
                tool.release()
                wait_for("the start's end", lambda: tool.calls() == ["print", "bootstrap"])

    def test_keys_of_the_window(self):
        self.tray_host()
        worker = self.worker()
        worker.show_slots(bay(1))
        dashboard = self.live_dashboard(worker)
        dashboard.wait_until_in_front()
        self.person.key("F1")
        self.person.key("comma", "Control_L")
        dashboard.sheet(SETTINGS)
        # On a sheet the key closes the sheet, and no second one opens below it.
        self.person.key("comma", "Control_L")
        self.person.key("w", "Control_L")
        dashboard.wait_until_gone(SETTINGS)
        dashboard.wait_until_in_front()
        self.person.key("w", "Control_L")
        wait_for("the window gone", lambda: not dashboard.is_shown())
        self.assertTrue(dashboard.is_running())
        self.assertEqual(worker.changes(), [])

    def menu_entries(self, dashboard):
        return [node.name for node in dashboard.accessible.showing("menu item")]

    def test_menu_of_the_window(self):
        # Without any tray: the only menu that there is.
        worker = self.worker()
        worker.show_slots(bay(1))
        dashboard = self.live_dashboard(worker)
        window = next(n for n in dashboard.accessible.nodes() if n.name == MAIN)
        headline = dashboard.control("label", names.READY)
        ways_in = {
            "menu key": lambda: self.person.key("Menu"),
            "shift and F10": lambda: self.person.key("F10", "Shift_L"),
            "accessible": lambda: window.act("ShowMenu"),
            "right button": lambda: self.person.click(headline, button=3),
        }
        for name, way_in in ways_in.items():
            with self.step(name):
                dashboard.wait_until_in_front()
                way_in()
                wait_for("the menu", lambda: self.menu_entries(dashboard) == ENTRIES)
                self.person.key("Escape")
                wait_for("the menu closed", lambda: not self.menu_entries(dashboard))
        dashboard.wait_until_in_front()
        self.person.key("Menu")
        wait_for("the menu", lambda: self.menu_entries(dashboard) == ENTRIES)
        entry = dashboard.control("menu item", QUIT)
        self.assert_ends_at_once(dashboard, lambda: self.person.click(entry))
        self.assertTrue(worker.is_running())
        self.assertEqual(worker.changes(), [])

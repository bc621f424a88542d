"""The setup sheet on a screen: applied, over the settings, under alerts."""

import os

from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.names import (
    ALERT, ALERT_WINDOW, APPLY, LOGIN, MAIN, OPEN_SETUP, SERVICE_STOPPED, SETTINGS, SETUP
)
from harness.waiting import wait_for

PATH = "/v1/local/services"
RESUME = '{"deep_scan_enabled":true}'
FAILED = "Could not change deep-job acceptance. The saved policy has not been confirmed."
LABEL = "com.halvex.corvala.integration.worker105"
TEMPLATE = f"""<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
\t<!-- kept as it is -->
\t<key>Label</key><string>{LABEL}</string>
\t<key>ProgramArguments</key><array><string>/bin/true</string></array>
</dict>
</plist>
""".encode()


class SetupTest(DesktopCase):
    def opened(self, worker, **options):
        dashboard = self.live_dashboard(worker, "--setup", **options)
        dashboard.sheet(SETUP)
        return dashboard

    def click(self, dashboard, title):
        self.person.click(dashboard.control("push button", title))

    def close_by_window_manager(self, dashboard):
        windows = self.desktop.windows
        sheets = windows.of_process(dashboard.pid)
        windows.press_close(next(w for w in sheets if windows.title(w) == SETUP))

    def wait_for_focus(self, dashboard, role, name):
        wait_for(f"the keyboard on {name!r}", lambda: dashboard.accessible.focus() == (role, name))

    def dismiss(self, dashboard):
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)
        dashboard.sheet(SETUP)

    def opened_without_a_service(self):
        """On the last page; gives the dashboard and the port that it looks at."""
        worker = self.worker()
        worker.stop()
        dashboard = self.dashboard(worker.port, "--setup")
        dashboard.wait_for_text(SERVICE_STOPPED)
        dashboard.sheet(SETUP)
        self.go_to_last_setup_page(dashboard)
        return dashboard, worker.port

    def test_over_the_settings(self):
        worker = self.worker()
        host = self.tray_host()
        dashboard = self.live_dashboard(worker)
        for way_out in (lambda: self.person.key("Escape"),
                        lambda: self.click(dashboard, "Skip setup"),
                        lambda: self.close_by_window_manager(dashboard)):
            self.click(dashboard, "Settings")
            dashboard.sheet(SETTINGS)
            host.item().menu.choose(OPEN_SETUP)
            dashboard.sheet(SETUP)
            self.wait_for_focus(dashboard, "radio button", "Basic")
            way_out()
            dashboard.wait_until_gone(SETUP)
            dashboard.sheet(SETTINGS)
            self.wait_for_focus(dashboard, "radio button", "Automatic")
            self.person.key("Escape")
            dashboard.wait_until_gone(SETTINGS)
            dashboard.wait_until_in_front()

    def test_applied_choices_outlive_the_program(self):
        worker = self.worker(devices=0)
        home = visited_home(self.desktop)
        support = home["HOME"] + "/Library/Application Support/Halvex/VeskWorker"
        os.makedirs(support)
        with open(support + "/localdev-worker.plist", "wb") as file:
            file.write(TEMPLATE)
        agent = f"{home['HOME']}/Library/LaunchAgents/{LABEL}.plist"
        dashboard = self.opened(worker, home=home)
        for start_at_login in (True, False):
            with self.step(start_at_login):
                self.go_to_last_setup_page(dashboard)
                box = dashboard.control("check box", LOGIN)
                self.assertEqual(box.has("checked"), not start_at_login)
                self.person.click(box)
                self.click(dashboard, APPLY)
                dashboard.wait_until_gone(SETUP)
                self.assertEqual(os.path.exists(agent), start_at_login)
                if start_at_login:
                    with open(agent, "rb") as file:
                        self.assertEqual(file.read(), TEMPLATE)
                    self.click(dashboard, OPEN_SETUP)
                    dashboard.sheet(SETUP)
        self.assertEqual(worker.changes(), [(PATH, RESUME)] * 2)
        path = os.path.join(home["XDG_CONFIG_HOME"], "Halvex", "VeskWorkerControl.conf")

        def preferences():
            with open(path, encoding="utf-8") as file:
                return sorted(file.read().split())

        expected = ["[General]", "setupCompleteV2=true", "setupVisitedV2=true"]
        wait_for("the preferences", lambda: preferences() == expected)

    def test_an_alert_outlives_the_sheet(self):
        dashboard, port = self.opened_without_a_service()
        self.click(dashboard, APPLY)
        message = dashboard.sheet(ALERT).description
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SETUP)
        worker = self.worker(port=port, devices=0)
        dashboard.wait_until_gone(SETUP)
        dashboard.alert(message)
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), MAIN)
        self.assertEqual(worker.changes(), [(PATH, RESUME)])
        worker.wait_for_fetch()
        self.wait_for_focus(dashboard, "push button", "OK")
        self.person.key("space")
        dashboard.wait_until_gone(ALERT)
        dashboard.wait_until_in_front()

    def test_two_alerts_are_dismissed_one_by_one(self):
        dashboard, port = self.opened_without_a_service()
        self.click(dashboard, APPLY)
        first = dashboard.sheet(ALERT).description
        self.worker(port=port, devices=0, faults=[{"path": "services", "count": 1, "status": 500}])
        wait_for("two alerts", lambda: dashboard.sheets().count(ALERT) == 2)
        for message in (FAILED, first):
            wait_for(
                f"the alert {message!r} with the keyboard",
                lambda: [sheet.description for sheet in dashboard.accessible.sheets()
                         if sheet.has("active")] == [message],
            )
            self.wait_for_focus(dashboard, "push button", "OK")
            self.person.key("space")
        dashboard.wait_until_gone(ALERT)
        dashboard.sheet(SETUP)
        self.wait_for_focus(dashboard, "push button", APPLY)

    def test_an_alert_brings_a_minimised_window_back(self):
        worker = self.worker(devices=0)
        dashboard = self.opened(worker)
        self.go_to_last_setup_page(dashboard)
        worker.arm(path="services", count=1, late=3, status=500)
        self.click(dashboard, APPLY)
        windows = self.desktop.windows
        window = dashboard.window()
        windows.minimise(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        dashboard.alert(FAILED)
        self.assertFalse(windows.is_minimised(window))
        self.assertCountEqual(dashboard.sheets(), [ALERT, SETUP])
        self.dismiss(dashboard)
        self.wait_for_focus(dashboard, "push button", APPLY)

    def test_an_alert_has_one_size(self):
        dashboard, _port = self.opened_without_a_service()
        self.click(dashboard, APPLY)
        dashboard.sheet(ALERT)
        windows = self.desktop.windows
        alert = wait_for("the alert's window", lambda: next(
            (w for w in windows.of_process(dashboard.pid) if windows.title(w) == ALERT_WINDOW),
            None))
        self.assertFalse(windows.allows(alert, "MAXIMIZE_VERT"))
        self.assertFalse(windows.allows(alert, "MAXIMIZE_HORZ"))
        self.assertFalse(windows.allows(alert, "RESIZE"))
        self.assertTrue(windows.allows(alert, "CLOSE"))
        windows.press_close(alert)
        dashboard.wait_until_gone(ALERT)

"""The setup sheet: walked through, left and applied in every way, the service failing."""

import configparser
import os

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT, first_home, visited_home
from harness.names import APPLY, LOGIN, MAIN, SETTINGS
from harness.waiting import wait_for
from harness.worker import bay

SHEET = names.SETUP
ALERT_WINDOW = "Corvala for Mac"
PATH = "/v1/local/services"
PAUSE = '{"deep_scan_enabled":false}'
RESUME = '{"deep_scan_enabled":true}'
DEEP = "Allow detailed photo, video and audio analysis"
FAILED = "Could not change deep-job acceptance. The saved policy has not been confirmed."
NOT_READY = (
    "The worker did not become ready. Check the existing Python runtime and launch configuration, "
    "then retry."
)
LABEL = "com.halvex.corvala.integration.worker105"


def property_list(label):
    return f"""<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
\t<!-- kept as it is -->
\t<key>Label</key><string>{label}</string>
\t<key>ProgramArguments</key><array><string>/bin/true</string></array>
</dict>
</plist>
""".encode()


class SetupCase(DesktopCase):
    def opened(self, worker, **options):
        dashboard = self.live_dashboard(worker, "--setup", **options)
        dashboard.sheet(SHEET)
        return dashboard

    def button(self, dashboard, title):
        return dashboard.control("push button", title)

    def click(self, dashboard, title):
        self.person.click(self.button(dashboard, title))

    def close_by_window_manager(self, dashboard):
        windows = self.desktop.windows
        sheets = windows.of_process(dashboard.pid)
        windows.press_close(next(w for w in sheets if windows.title(w) == SHEET))

    def texts(self, dashboard):
        return dashboard.sheet(SHEET).reading("label")

    def wait_for_page(self, dashboard, texts):
        seen = []

        def shown():
            seen[:] = self.texts(dashboard)
            return seen == texts

        try:
            wait_for(f"the page {texts[0]!r}", shown)
        except AssertionError:
            self.assertEqual(seen, texts)
            raise

    def go_to_last_page(self, dashboard):
        for number in (2, 3, 4):
            self.click(dashboard, "Continue")
            text = names.setup_step(number)
            wait_for(text, lambda: text in self.texts(dashboard))

    def wait_for_focus(self, dashboard, role, name):
        wait_for(f"the keyboard on {name!r}", lambda: dashboard.accessible.focus() == (role, name))

    def wait_for_apply(self, dashboard):
        """Until the last page can be applied again."""
        wait_for(
            "the button to apply",
            lambda: self.button(dashboard, APPLY).has("enabled")
            and self.button(dashboard, "Back").has("enabled"),
        )

    def dismiss(self, dashboard):
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)
        dashboard.sheet(SHEET)

    def preferences(self, home):
        path = os.path.join(home["XDG_CONFIG_HOME"], "Halvex", "VeskWorkerControl.conf")
        preferences = configparser.ConfigParser()
        preferences.optionxform = str
        preferences.read(path)
        return dict(preferences["General"]) if "General" in preferences else {}

    def wait_for_preferences(self, home, **expected):
        wait_for(f"the preferences {expected}", lambda: self.preferences(home) == expected)

    def write_template(self, home, content):
        folder = os.path.join(
            home["HOME"], "Library", "Application Support", "Halvex", "VeskWorker"
        )
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "localdev-worker.plist"), "wb") as file:
            file.write(content)

    def agent(self, home):
        """What the agent file holds; None without one."""
        path = os.path.join(home["HOME"], "Library", "LaunchAgents", LABEL + ".plist")
        if not os.path.exists(path):
            return None
        with open(path, "rb") as file:
            return file.read()

    def assert_applying(self, dashboard):
        """Nothing leaves the sheet while it applies."""
        self.assertFalse(self.button(dashboard, names.APPLYING).has("enabled"))
        self.assertFalse(self.button(dashboard, "Back").has("enabled"))
        self.person.key("Escape")
        self.person.key("Return")
        self.click(dashboard, "Skip setup")
        self.click(dashboard, names.APPLYING)
        self.click(dashboard, "Back")
        self.close_by_window_manager(dashboard)

    def opened_without_a_service(self):
        """On the last page; gives the dashboard and the port that it looks at."""
        worker = self.worker()
        worker.stop()
        dashboard = self.dashboard(worker.port, "--setup")
        dashboard.wait_for_text(names.SERVICE_STOPPED)
        dashboard.sheet(SHEET)
        self.go_to_last_page(dashboard)
        return dashboard, worker.port


class SetupPagesTest(SetupCase):
    def test_every_page_forwards_and_back(self):
        worker = self.worker()
        worker.show_slots(bay(1))
        dashboard = self.opened(worker)
        self.assertEqual(dashboard.host_of(SHEET), MAIN)
        forwards = (
            lambda: self.click(dashboard, "Continue"),
            lambda: self.person.key("Return"),
            lambda: self.button(dashboard, "Continue").press(),
        )
        self.wait_for_focus(dashboard, "radio button", "Basic")
        for mode in ("Basic", "Advanced"):
            pages = names.setup_pages(mode == "Advanced", worker.port)
            for step, page in enumerate(pages):
                with self.step((mode, step)):
                    self.wait_for_page(dashboard, page)
                    titles = {b.name for b in dashboard.sheet(SHEET).showing("push button")}
                    boxes = [b.name for b in dashboard.sheet(SHEET).showing("check box")]
                    self.assertEqual("Back" in titles, step > 0)
                    self.assertEqual(names.START_CHECK in titles, step == 1)
                    self.assertEqual(boxes, [DEEP, LOGIN] if step == 3 else [])
                    if step < 3:
                        forwards[step]()
            self.wait_for_focus(dashboard, "check box", DEEP)
            self.assertIsNotNone(self.button(dashboard, APPLY))
            for step, page in ((2, pages[2]), (1, pages[1]), (0, pages[0])):
                with self.step((mode, "back to", step)):
                    if step == 1:
                        self.person.tab_to(dashboard, "push button", "Back")
                        self.person.key("space")
                    else:
                        self.click(dashboard, "Back")
                    self.wait_for_page(dashboard, page)
            if mode == "Basic":
                self.wait_for_focus(dashboard, "radio button", "Basic")
                self.person.key("Right")
                self.wait_for_focus(dashboard, "radio button", "Advanced")
        self.person.click(dashboard.control("radio button", "Basic"))
        wait_for("Basic", lambda: dashboard.control("radio button", "Basic").has("checked"))
        dashboard.control("radio button", "Advanced").press()
        self.click(dashboard, "Continue")
        self.wait_for_page(dashboard, pages[1])
        # The page follows the service while it is open.
        worker.fault(path="diagnostics", status=500)
        worker.close_listener(3600)
        wait_for("the service's end", lambda: names.ENGINES_STOPPED in self.texts(dashboard), 30)
        port = worker.port
        worker.stop()
        worker = self.worker(port=port)
        worker.show_slots(
            bay(1), services={"ocr": False}, video_backend=None, audio_backend={"model_ready": 1}
        )
        worker.arm(path="diagnostics", status=500)
        wait_for("the service's return", lambda: names.ENGINES_MISSING in self.texts(dashboard), 30)
        self.assertEqual(worker.changes(), [])

    def test_every_way_to_open_and_leave(self):
        worker = self.worker()
        worker.show_slots(bay(1))
        host = self.tray_host()
        home = first_home(self.desktop)
        dashboard = self.live_dashboard(worker, home=home)
        dashboard.sheet(SHEET)
        self.wait_for_preferences(home, setupVisitedV2="true")

        def by_keyboard():
            self.person.tab_to(dashboard, "push button", "Setup…")
            self.person.key("space")

        def skip_by_keyboard():
            self.person.tab_to(dashboard, "push button", "Skip setup")
            self.person.key("Return")

        ways_in = (
            lambda: self.click(dashboard, "Setup…"),
            by_keyboard,
            lambda: self.button(dashboard, "Setup…").press(),
            lambda: host.item().menu.choose("Setup…"),
        )
        ways_out = (
            lambda: self.click(dashboard, "Skip setup"),
            lambda: self.person.key("Escape"),
            lambda: self.close_by_window_manager(dashboard),
            skip_by_keyboard,
            lambda: self.button(dashboard, "Skip setup").press(),
        )
        first = names.setup_pages(False, worker.port)[0]
        for turn, way_out in enumerate(ways_out):
            with self.step(turn):
                if turn > 0:
                    ways_in[turn - 1]()
                    dashboard.sheet(SHEET)
                self.wait_for_page(dashboard, first)
                self.wait_for_focus(dashboard, "radio button", "Basic")
                if turn % 2 == 0:
                    self.go_to_last_page(dashboard)
                way_out()
                dashboard.wait_until_gone(SHEET)
        self.assertEqual(self.preferences(home), {"setupVisitedV2": "true"})
        self.assertEqual(worker.changes(), [])
        self.assertEqual(dashboard.sheets(), [])

    def test_over_the_settings(self):
        worker = self.worker()
        host = self.tray_host()
        dashboard = self.live_dashboard(worker)
        for way_out in (lambda: self.person.key("Escape"),
                        lambda: self.click(dashboard, "Skip setup"),
                        lambda: self.close_by_window_manager(dashboard)):
            self.click(dashboard, "Settings")
            dashboard.sheet(SETTINGS)
            host.item().menu.choose("Setup…")
            dashboard.sheet(SHEET)
            self.wait_for_focus(dashboard, "radio button", "Basic")
            way_out()
            dashboard.wait_until_gone(SHEET)
            dashboard.sheet(SETTINGS)
            self.wait_for_focus(dashboard, "radio button", "Automatic")
            self.person.key("Escape")
            dashboard.wait_until_gone(SETTINGS)
            dashboard.wait_until_in_front()


class SetupApplyTest(SetupCase):
    def test_apply_while_connected(self):
        worker = self.worker(devices=0)
        home = visited_home(self.desktop)
        dashboard = self.opened(worker, home=home)
        turns = (
            (RESUME, names.READY, None),
            (PAUSE, names.PAUSED, self.person.click),
            (PAUSE, names.PAUSED, None),
            (RESUME, names.READY, lambda box: box.press()),
            (PAUSE, names.PAUSED, lambda _box: self.person.key("space")),
        )
        allowed = True
        for turn, (asked, headline, change) in enumerate(turns):
            with self.step(turn):
                if turn > 0:
                    self.click(dashboard, "Setup…")
                    dashboard.sheet(SHEET)
                self.go_to_last_page(dashboard)
                box = dashboard.control("check box", DEEP)
                self.assertEqual(box.has("checked"), allowed)
                if change:
                    self.wait_for_focus(dashboard, "check box", DEEP)
                    change(box)
                    wait_for("the choice", lambda: box.has("checked") != allowed)
                    allowed = not allowed
                worker.clear_requests()
                self.click(dashboard, APPLY)
                dashboard.wait_until_gone(SHEET)
                dashboard.wait_for_text(headline)
                self.assertEqual(worker.changes(), [(PATH, asked)])
                self.wait_for_preferences(home, setupVisitedV2="true", setupCompleteV2="true")
        worker.wait_for_fetch()
        self.assertEqual(dashboard.sheets(), [])

    def test_start_at_login(self):
        worker = self.worker(devices=0)
        home = visited_home(self.desktop)
        dashboard = self.opened(worker, home=home)
        self.go_to_last_page(dashboard)
        self.assertFalse(dashboard.control("check box", LOGIN).has("checked"))
        self.person.click(dashboard.control("check box", LOGIN))
        messages = []
        for template in (None, b"nonsense", property_list("com.example.other")):
            with self.step(template):
                if template is not None:
                    self.write_template(home, template)
                self.click(dashboard, APPLY)
                messages.append(dashboard.sheet(ALERT).description)
                self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
                self.dismiss(dashboard)
                self.wait_for_apply(dashboard)
                self.assertTrue(dashboard.control("check box", LOGIN).has("checked"))
                self.assertIsNone(self.agent(home))
        self.assertTrue(messages[0] and messages[1])
        self.assertEqual(
            messages[2], "The worker launch configuration is missing or invalid."
        )
        self.assertEqual(worker.changes(), [])

        good = property_list(LABEL)
        self.write_template(home, good)
        self.click(dashboard, APPLY)
        dashboard.wait_until_gone(SHEET)
        self.assertEqual(self.agent(home), good)
        self.assertEqual(worker.changes(), [(PATH, RESUME)])

        for untick in (False, True):
            self.click(dashboard, "Setup…")
            dashboard.sheet(SHEET)
            self.go_to_last_page(dashboard)
            box = dashboard.control("check box", LOGIN)
            self.assertTrue(box.has("checked"))
            if untick:
                self.person.tab_to(dashboard, "check box", LOGIN)
                self.person.key("space")
                wait_for("the choice", lambda: not box.has("checked"))
            self.click(dashboard, APPLY)
            dashboard.wait_until_gone(SHEET)
            self.assertEqual(self.agent(home), None if untick else good)

    def test_every_fault_while_applying(self):
        worker = self.worker()
        worker.show_slots(bay(1), deep_scan_enabled=True)
        home = visited_home(self.desktop)
        dashboard = self.opened(worker, home=home)
        self.go_to_last_page(dashboard)
        faults = ({"late": 4.5}, {"hang_up": True}, {"reset": True}, {"status": 500},
                  {"body": "[1]"}, {"patch": {"deep_scan_enabled": "true"}})
        for turn, fault in enumerate(faults):
            with self.step(fault):
                worker.arm(path="services", count=1, **fault)
                self.click(dashboard, APPLY)
                if turn == 0:
                    self.assert_applying(dashboard)
                dashboard.alert(FAILED)
                self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
                self.dismiss(dashboard)
                self.wait_for_apply(dashboard)
        # Another value than asked for keeps the sheet open, without an alert.
        worker.arm(path="services", count=1, opposite=True, late=2.5)
        self.click(dashboard, APPLY)
        self.button(dashboard, names.APPLYING)
        self.wait_for_apply(dashboard)
        self.assertCountEqual(dashboard.sheets(), [SHEET])
        self.assertEqual(self.preferences(home), {"setupVisitedV2": "true"})

        self.wait_for_focus(dashboard, "push button", APPLY)
        self.person.key("Return")
        dashboard.wait_until_gone(SHEET)
        self.assertEqual(worker.changes(), [(PATH, RESUME)] * (len(faults) + 2))
        self.wait_for_preferences(home, setupVisitedV2="true", setupCompleteV2="true")

    def test_service_that_cannot_be_started(self):
        worker = self.worker()
        port = worker.port
        worker.stop()
        home = visited_home(self.desktop)
        dashboard = self.dashboard(port, "--setup", home=home)
        dashboard.wait_for_text(names.SERVICE_STOPPED)
        dashboard.sheet(SHEET)
        self.click(dashboard, "Continue")
        wait_for("the report", lambda: names.ENGINES_STOPPED in self.texts(dashboard))
        self.click(dashboard, names.START_CHECK)
        self.assertTrue(dashboard.sheet(ALERT).description.strip())
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
        self.dismiss(dashboard)
        self.assertIn(names.ENGINES_STOPPED, self.texts(dashboard))
        self.click(dashboard, "Continue")
        self.click(dashboard, "Continue")
        box = dashboard.control("check box", DEEP)
        self.assertTrue(box.has("checked"))
        self.person.click(box)

        self.click(dashboard, APPLY)
        self.assertTrue(dashboard.sheet(ALERT).description.strip())
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
        self.dismiss(dashboard)
        self.assert_applying(dashboard)
        dashboard.alert(NOT_READY, 30)
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
        self.dismiss(dashboard)
        self.wait_for_apply(dashboard)
        self.assertFalse(box.has("checked"))

        # Started by other means while the sheet waits.
        self.click(dashboard, APPLY)
        dashboard.sheet(ALERT)
        self.dismiss(dashboard)
        worker = self.worker(port=port, devices=0)
        dashboard.wait_until_gone(SHEET)
        self.assertEqual(worker.changes(), [(PATH, PAUSE)])
        dashboard.wait_for_text(names.PAUSED)
        self.wait_for_preferences(home, setupVisitedV2="true", setupCompleteV2="true")


class SetupAlertsTest(SetupCase):
    def test_an_alert_outlives_the_sheet(self):
        dashboard, port = self.opened_without_a_service()
        self.click(dashboard, APPLY)
        message = dashboard.sheet(ALERT).description
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
        worker = self.worker(port=port, devices=0)
        dashboard.wait_until_gone(SHEET)
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
        dashboard.sheet(SHEET)
        self.wait_for_focus(dashboard, "push button", APPLY)

    def test_an_alert_brings_a_minimised_window_back(self):
        worker = self.worker(devices=0)
        dashboard = self.opened(worker)
        self.go_to_last_page(dashboard)
        worker.arm(path="services", count=1, late=3, status=500)
        self.click(dashboard, APPLY)
        windows = self.desktop.windows
        window = dashboard.window()
        windows.minimise(window)
        wait_for("the window minimised", lambda: windows.is_minimised(window))
        dashboard.alert(FAILED)
        self.assertFalse(windows.is_minimised(window))
        self.assertCountEqual(dashboard.sheets(), [ALERT, SHEET])
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

    def test_a_second_space_while_applying(self):
        worker = self.worker(devices=0)
        dashboard = self.opened(worker)
        self.go_to_last_page(dashboard)
        box = dashboard.control("check box", DEEP)
        worker.arm(path="services", count=1, late=3.5)
        self.person.tab_to(dashboard, "push button", APPLY)
        for _press in range(2):
            self.person.key("space")
        wait_for("the change at the worker", worker.changes)
        self.person.key("Tab")
        self.person.key("space")
        self.assertTrue(box.has("checked"))
        dashboard.wait_until_gone(SHEET)
        self.assertEqual(worker.changes(), [(PATH, RESUME)])

    def test_worker_goes_away_while_applying(self):
        worker = self.worker()
        home = visited_home(self.desktop)
        dashboard = self.opened(worker, home=home)
        self.go_to_last_page(dashboard)
        port = worker.port
        worker.arm(path="services", late=60)
        self.click(dashboard, APPLY)
        wait_for("the change at the worker", worker.changes)
        worker.stop()
        dashboard.alert(FAILED)
        self.assertEqual(dashboard.host_of(ALERT_WINDOW), SHEET)
        self.dismiss(dashboard)
        self.wait_for_apply(dashboard)

        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        worker = self.worker(port=port, devices=0)
        dashboard.wait_until_live()
        self.assertEqual(dashboard.sheets(), [SHEET])
        self.click(dashboard, APPLY)
        dashboard.wait_until_gone(SHEET)
        self.assertEqual(worker.changes(), [(PATH, RESUME)])
        self.wait_for_preferences(home, setupVisitedV2="true", setupCompleteV2="true")

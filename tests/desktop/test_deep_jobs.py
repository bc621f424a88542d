"""Deep jobs are paused and resumed, and the service fails just then."""

import time

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT
from harness.names import MAIN
from harness.waiting import wait_for
from harness.worker import BUSY, bay

PATH = "/v1/local/services"
PAUSE = '{"deep_scan_enabled":false}'
RESUME = '{"deep_scan_enabled":true}'
FAILED = "Could not change deep-job acceptance. The saved policy has not been confirmed."

FAULTS = {
    "hang-up": {"hang_up": True},
    "reset": {"reset": True},
    "late": {"late": 4.5},
    "no content": {"status": 204},
    "created": {"status": 201},
    "server error": {"status": 500},
    "redirect": {"redirect": "/v1/health"},
    "page": {"body": "<html>"},
    "list": {"body": "[]"},
    "nothing": {"body": ""},
    "truncated": {"truncate": True},
    "flag is a text": {"patch": {"deep_scan_enabled": "false"}},
    "flag is a number": {"patch": {"deep_scan_enabled": 0}},
    "flag is missing": {"patch": {"deep_scan_enabled": None}},
}


class DeepJobsTest(DesktopCase):
    def click_button(self, dashboard, title):
        self.person.click(dashboard.control("push button", title))

    def press_button(self, dashboard, title):
        dashboard.control("push button", title).press()

    def space_on_button(self, dashboard, title):
        self.person.tab_to(dashboard, "push button", title)
        self.person.key("space")

    def click_box(self, dashboard, _title):
        self.person.click(self.box(dashboard))

    def space_on_box(self, dashboard, _title):
        self.person.tab_to(dashboard, "check box", "Detailed analysis")
        self.person.key("space")

    def toggle_box(self, dashboard, _title):
        self.box(dashboard).press()

    def choose_in_tray(self, _dashboard, title):
        self.host.item().menu.choose(title)

    def box(self, dashboard):
        return dashboard.control("check box", "Detailed analysis")

    def wait_for_box(self, dashboard, **states):
        wait_for(
            f"the check box {states}",
            lambda: all(self.box(dashboard).has(state) == on for state, on in states.items()),
        )

    def live(self, worker):
        self.host = self.tray_host()
        dashboard = self.live_dashboard(worker)
        dashboard.wait_until_in_front()
        return dashboard

    def assert_confirmed(self, dashboard, worker, accepting):
        headline, title = (
            (names.READY, names.PAUSE)
            if accepting
            else (names.PAUSED, names.RESUME)
        )
        dashboard.wait_for_text(headline)
        shown = time.monotonic()
        # By the answer itself: the next fetch is five seconds away, and one may have crossed. A busy
        # machine may be past it.
        changed = worker.requests(PATH)[-1]["monotonic_seconds"]
        if shown < changed + 4.5:
            self.assertFalse([at for at in worker.arrivals() if changed + 3 < at < shown])
        self.assertTrue(dashboard.control("push button", title).has("enabled"))
        self.wait_for_box(dashboard, checked=accepting, enabled=True)
        menu = self.host.item().menu
        self.assertEqual(menu.titles()[0], headline)
        self.assertTrue(menu.entry(title).is_enabled)
        self.assertEqual(dashboard.sheets(), [])

    def test_every_way_to_pause_and_resume(self):
        worker = self.worker(devices=0)
        dashboard = self.live(worker)
        ways = (self.click_button, self.press_button, self.space_on_button, self.click_box,
                self.space_on_box, self.toggle_box, self.choose_in_tray)
        for way in ways:
            with self.step(way.__name__):
                worker.clear_requests()
                way(dashboard, names.PAUSE)
                self.assert_confirmed(dashboard, worker, False)
                self.assertEqual(worker.changes(), [(PATH, PAUSE)])
                worker.clear_requests()
                way(dashboard, names.RESUME)
                self.assert_confirmed(dashboard, worker, True)
                self.assertEqual(worker.changes(), [(PATH, RESUME)])
        change = worker.requests(PATH)[0]
        headers = {name.lower(): value for name, value in change["headers"]}
        self.assertEqual(change["method"], "POST")
        self.assertEqual(headers["content-type"], "application/json")
        self.assertEqual(headers["content-length"], str(len(RESUME)))
        self.assertNotIn("authorization", headers)

    def assert_alert(self, dashboard, host=MAIN, seconds=15.0):
        dashboard.alert(FAILED, seconds)
        self.assertEqual(dashboard.host_of("Corvala for Mac"), host)

    def dismiss(self, dashboard, key):
        self.person.key(key)
        dashboard.wait_until_gone(ALERT)

    def test_every_fault_on_the_way(self):
        worker = self.worker()
        # Whatever becomes of the change, deep jobs stay accepted for all who ask afterwards.
        worker.show_slots(bay(1), deep_scan_enabled=True)
        dashboard = self.live(worker)
        ways = (self.click_box, self.space_on_box, self.toggle_box, self.click_button)
        keys = ("Escape", "Return", "space")
        for turn, (name, fault) in enumerate(FAULTS.items()):
            with self.step(name):
                worker.arm(path="services", count=1, **fault)
                ways[turn % len(ways)](dashboard, names.PAUSE)
                self.assert_alert(dashboard)
                # By the failure itself: the next fetch is seconds away.
                box = self.box(dashboard)
                self.assertTrue(box.has("checked") and box.has("enabled"))
                self.dismiss(dashboard, keys[turn % len(keys)])
                # After a fetch that crossed the change the button waits for the next.
                button = dashboard.control("push button", names.PAUSE)
                wait_for("the button", lambda: button.has("enabled"))
        worker.wait_for_fetch()
        # One sent again would have met no fault.
        self.assertEqual(worker.changes(), [(PATH, PAUSE)] * len(FAULTS))
        self.assertEqual(dashboard.sheets(), [])

    def test_nothing_is_asked_while_the_change_is_under_way(self):
        worker = self.worker()
        worker.show_slots(BUSY, deep_scan_enabled=True)
        dashboard = self.live(worker)
        worker.wait_for_fetch()
        worker.arm(path="services", count=1, late=4.5)
        worker.clear_requests()
        self.click_box(dashboard, None)
        # As the person left it.
        self.wait_for_box(dashboard, checked=False, enabled=False)
        # Neither a second change nor a fetch, which would be due twice.
        self.choose_in_tray(dashboard, names.PAUSE)
        self.click_button(dashboard, names.PAUSE)
        self.click_box(dashboard, None)
        self.assert_alert(dashboard)
        log = worker.log()
        waited = [entry for entry in log
                  if entry["monotonic_seconds"] < log[0]["monotonic_seconds"] + 3.5]
        self.assertEqual([entry["path"] for entry in waited], [PATH])
        self.wait_for_box(dashboard, checked=True, enabled=True)
        self.dismiss(dashboard, "Escape")
        worker.wait_for_fetch()
        self.assertEqual(worker.changes(), [(PATH, PAUSE)])

    def test_the_opposite_is_shown_without_an_alert(self):
        worker = self.worker(devices=0)
        dashboard = self.live(worker)
        for asked, button in ((PAUSE, names.PAUSE), (RESUME, names.RESUME)):
            accepting = asked == PAUSE
            worker.fault(path="services", count=1, opposite=True, late=3)
            worker.clear_requests()
            self.click_box(dashboard, None)
            self.wait_for_box(dashboard, checked=not accepting, enabled=False)
            self.assert_after_opposite(dashboard, worker, accepting)
            self.assertEqual(worker.changes(), [(PATH, asked)])
            # For the next turn.
            self.click_button(dashboard, button)
            self.assert_confirmed(dashboard, worker, not accepting)

    def assert_after_opposite(self, dashboard, worker, accepting):
        self.wait_for_box(dashboard, checked=accepting, enabled=True)
        self.assert_confirmed(dashboard, worker, accepting)

    def test_worker_goes_away_during_the_change(self):
        worker = self.worker()
        worker.show_slots(BUSY)
        dashboard = self.live(worker)
        port = worker.port
        worker.arm(path="services", late=60)
        self.click_box(dashboard, None)
        wait_for("the change at the worker", worker.changes)
        worker.stop()
        self.assert_alert(dashboard)
        # The alert stays in front while the service is given up.
        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        self.wait_for_box(dashboard, indeterminate=True, enabled=False)
        self.assert_alert(dashboard)
        self.dismiss(dashboard, "Return")
        worker = self.worker(port=port, devices=0)
        dashboard.wait_until_live()
        self.wait_for_box(dashboard, checked=True, indeterminate=False, enabled=True)
        worker.clear_requests()
        self.space_on_box(dashboard, None)
        self.assert_confirmed(dashboard, worker, False)
        self.assertEqual(worker.changes(), [(PATH, PAUSE)])

    def test_failure_while_the_window_is_hidden(self):
        worker = self.worker()
        worker.show_slots(bay(1), deep_scan_enabled=True)
        dashboard = self.live(worker)
        self.desktop.windows.press_close(dashboard.window())
        wait_for("the window gone", lambda: not dashboard.is_shown())
        worker.arm(path="services", count=1, hang_up=True)
        worker.clear_requests()
        self.choose_in_tray(dashboard, names.PAUSE)
        self.assert_alert(dashboard)
        self.dismiss(dashboard, "Escape")
        self.assertTrue(dashboard.is_shown())
        self.assertEqual(worker.changes(), [(PATH, PAUSE)])

    def test_failure_while_the_settings_are_open(self):
        worker = self.worker()
        worker.show_slots(bay(1), deep_scan_enabled=True)
        dashboard = self.live(worker)
        self.click_button(dashboard, "Settings")
        dashboard.sheet(names.SETTINGS)
        worker.arm(path="services", count=1, reset=True)
        self.choose_in_tray(dashboard, names.PAUSE)
        self.assert_alert(dashboard, names.SETTINGS)
        self.dismiss(dashboard, "Escape")
        dashboard.sheet(names.SETTINGS)
        self.assertEqual(worker.changes(), [(PATH, PAUSE)])

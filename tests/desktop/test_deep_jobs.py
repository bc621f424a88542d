"""Deep jobs are paused and resumed by mouse, assistive technology and tray, and a change fails."""

from harness.case import DesktopCase
from harness.names import ALERT, ALERT_WINDOW, MAIN, PAUSE, PAUSED, READY, RESUME
from harness.waiting import wait_for

PATH = "/v1/local/services"
PAUSING = '{"deep_scan_enabled":false}'
RESUMING = '{"deep_scan_enabled":true}'
FAILED = "Could not change deep-job acceptance. The saved policy has not been confirmed."


class DeepJobsTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.host = self.tray_host()
        self.service = self.worker(devices=0)
        self.shown = self.live_dashboard(self.service)
        self.shown.wait_until_in_front()

    def choose_in_tray(self, title):
        self.host.item().menu.choose(title)

    def assert_confirmed(self, accepting):
        headline, title = (READY, PAUSE) if accepting else (PAUSED, RESUME)
        self.shown.wait_for_text(headline)
        self.assertTrue(self.shown.control("push button", title).has("enabled"))
        box = self.shown.control("check box", "Detailed analysis")
        wait_for("the check box", lambda: box.has("enabled") and box.has("checked") == accepting)
        menu = self.host.item().menu
        wait_for("the state in the tray", lambda: menu.titles()[0] == headline)
        self.assertTrue(menu.entry(title).is_enabled)
        self.assertEqual(self.shown.sheets(), [])

    def test_every_way_to_pause_and_resume(self):
        ways = {
            "button": lambda title: self.person.click(self.shown.control("push button", title)),
            "check box": lambda _title: self.shown.control("check box", "Detailed analysis").press(),
            "tray": self.choose_in_tray,
        }
        for name, way in ways.items():
            with self.step(name):
                self.service.clear_requests()
                way(PAUSE)
                self.assert_confirmed(accepting=False)
                way(RESUME)
                self.assert_confirmed(accepting=True)
                self.assertEqual(self.service.changes(), [(PATH, PAUSING), (PATH, RESUMING)])

    def test_failure_while_the_window_is_hidden(self):
        self.desktop.windows.press_close(self.shown.window())
        wait_for("the window gone", lambda: not self.shown.is_shown())
        self.service.arm(path="services", count=1, hang_up=True)
        self.choose_in_tray(PAUSE)
        self.shown.alert(FAILED)
        self.assertEqual(self.shown.host_of(ALERT_WINDOW), MAIN)
        self.person.key("Escape")
        self.shown.wait_until_gone(ALERT)
        self.assertTrue(self.shown.is_shown())
        self.assertEqual(self.service.changes(), [(PATH, PAUSING)])

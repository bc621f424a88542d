"""The settings sheet on a screen: opened, closed and used, with a change that fails meanwhile."""

from harness.case import DesktopCase
from harness.names import ALERT, ALERT_WINDOW, MAIN, SETTINGS
from harness.waiting import wait_for
from harness.worker import bay

PATH = "/v1/local/performance"
FAILED = "Could not save processing mode. Please try again."


class SettingsTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.service = self.worker(devices=0)
        self.shown = self.live_dashboard(self.service)
        self.shown.wait_until_in_front()

    def open(self):
        self.person.click(self.shown.control("push button", "Settings"))
        self.shown.sheet(SETTINGS)
        self.assertEqual(self.shown.host_of(SETTINGS), MAIN)

    def wait_for_mode(self, title, enabled=True):
        """The mode with this title alone is selected."""

        def states():
            modes = self.shown.sheet(SETTINGS).showing("radio button")
            return [mode.name for mode in modes if mode.has("checked")], [
                mode.has("enabled") for mode in modes
            ]

        wait_for(f"{title!r}, enabled: {enabled}", lambda: states() == ([title], [enabled] * 3))

    def wait_for_focus(self, title):
        wait_for(
            f"the focus on {title!r}",
            lambda: self.shown.accessible.focus() == ("radio button", title),
        )

    def test_opened_used_and_closed(self):
        windows = self.desktop.windows

        def press_close_button():
            sheets = windows.of_process(self.shown.pid)
            windows.press_close(next(w for w in sheets if windows.title(w) == SETTINGS))

        ways_out = (lambda: self.person.key("Escape"), press_close_button)
        changes = []
        before = "Automatic"
        for way_out, (mode, title) in zip(
            ways_out, (("quiet", "Cool & quiet"), ("faster", "Faster when idle"))
        ):
            with self.step(mode):
                self.open()
                self.wait_for_focus(before)
                self.person.click(self.shown.control("radio button", title))
                self.wait_for_mode(title)
                self.wait_for_focus(title)
                changes.append((PATH, f'{{"mode":"{mode}"}}'))
                self.assertEqual(self.service.changes(), changes)
                way_out()
                self.shown.wait_until_gone(SETTINGS)
                self.shown.wait_until_in_front()
                before = title

    def test_change_fails_after_the_sheet_was_closed(self):
        # The worker carries the change out although its answer is none.
        self.service.show_slots(bay(1), activity_policy={"performance_mode": "automatic"})
        self.open()
        self.service.arm(path="performance", count=1, late=3, body="")
        self.person.click(self.shown.control("radio button", "Faster when idle"))
        self.wait_for_mode("Faster when idle", enabled=False)
        self.person.key("Escape")
        self.shown.wait_until_gone(SETTINGS)
        self.shown.alert(FAILED)
        self.assertEqual(self.shown.host_of(ALERT_WINDOW), MAIN)
        self.person.key("Escape")
        self.shown.wait_until_gone(ALERT)
        self.open()
        self.wait_for_mode("Automatic")

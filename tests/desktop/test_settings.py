"""The settings sheet: opened and closed in every way, modes chosen, the service failing."""

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT
from harness.names import MAIN
from harness.waiting import wait_for
from harness.worker import bay

SHEET = names.SETTINGS
PATH = "/v1/local/performance"
FAILED = "Could not save processing mode. Please try again."
MODES = {"automatic": "Automatic", "quiet": "Cool & quiet", "faster": "Faster when idle"}
FAULTS = {
    "hang-up": {"hang_up": True},
    "reset": {"reset": True},
    "late": {"late": 4.5},
    "server error": {"status": 500},
    "created": {"status": 201},
    "page": {"body": "<html>"},
    "truncated": {"truncate": True},
    "flag is a text": {"patch": {"deep_scan_enabled": "true"}},
    "flag is missing": {"patch": {"deep_scan_enabled": None}},
}


def policy(mode="automatic", **more):
    return {
        "performance_mode": mode, "thermal_state": "nominal", "effective_duty_percent": 40,
        "effective_workers": 2, "configured_workers": 3, "reason": "Cool and idle", **more,
    }


class SettingsTest(DesktopCase):
    def live(self, worker):
        dashboard = self.live_dashboard(worker)
        dashboard.wait_until_in_front()
        return dashboard

    def open(self, dashboard):
        self.person.click(dashboard.control("push button", "Settings"))
        return dashboard.sheet(SHEET)

    def modes(self, dashboard):
        return dashboard.sheet(SHEET).showing("radio button")

    def wait_for_mode(self, dashboard, mode, enabled=True):
        """`mode` alone is selected."""

        def selected():
            modes = self.modes(dashboard)
            self.assertLessEqual({node.name for node in modes}, set(MODES.values()))
            return (
                [node.name for node in modes if node.has("checked")] == [MODES[mode]]
                and all(node.has("enabled") == enabled for node in modes)
            )

        wait_for(f"the mode {mode!r}, enabled: {enabled}", selected)

    def segment(self, dashboard, mode):
        return dashboard.control("radio button", MODES[mode])

    def wait_for_line(self, dashboard, text):
        wait_for(
            f"the line {text!r}",
            lambda: text in [label.name for label in dashboard.sheet(SHEET).showing("label")],
        )

    def test_every_way_to_open_and_close(self):
        worker = self.worker()
        worker.show_slots(bay(1), activity_policy=policy("quiet"))
        dashboard = self.live(worker)
        settings = ("push button", "Settings")
        windows = self.desktop.windows

        def by_keyboard():
            self.person.tab_to(dashboard, *settings)
            self.person.key("space")

        def by_close_button():
            sheets = windows.of_process(dashboard.pid)
            windows.press_close(next(w for w in sheets if windows.title(w) == SHEET))

        ways_in = (
            lambda: self.person.click(dashboard.control(*settings)),
            by_keyboard,
            lambda: dashboard.control(*settings).press(),
        )
        ways_out = (
            lambda: self.person.click(dashboard.control("push button", "Done")),
            lambda: self.person.key("Escape"),
            by_close_button,
            lambda: self.person.key("Return"),
            lambda: dashboard.control("push button", "Done").press(),
        )
        for turn, way_out in enumerate(ways_out):
            with self.step(turn):
                ways_in[turn % len(ways_in)]()
                sheet = dashboard.sheet(SHEET)
                self.assertEqual(dashboard.host_of(SHEET), MAIN)
                self.assertEqual(
                    [label.name for label in sheet.showing("label")],
                    ["Processing settings",
                     names.thermal("nominal"),
                     names.performance(40, "2/3", "Cool and idle"),
                     "Temperature protection stays active in every mode. Automatic adjusts to Mac "
                     "activity; quiet uses one gentle lane; faster uses more spare capacity only "
                     "while the Mac is cool and idle."],
                )
                self.wait_for_mode(dashboard, "quiet")
                wait_for(
                    "the keyboard on the mode",
                    lambda: dashboard.accessible.focus() == ("radio button", "Cool & quiet"),
                )
                way_out()
                dashboard.wait_until_gone(SHEET)
        self.assertEqual(worker.changes(), [])

    def test_every_way_to_choose_a_mode(self):
        worker = self.worker(devices=0)
        dashboard = self.live(worker)
        self.open(dashboard)
        self.wait_for_mode(dashboard, "automatic")

        def click(mode):
            self.person.click(self.segment(dashboard, mode))

        def act(mode):
            self.segment(dashboard, mode).press()

        def arrow(key):
            self.person.tab_to(dashboard, "radio button", self.selected(dashboard))
            self.person.key(key)

        turns = [
            ("quiet", click), ("faster", click), ("automatic", click),
            ("quiet", lambda _mode: arrow("Right")), ("faster", lambda _mode: arrow("Right")),
            ("quiet", lambda _mode: arrow("Left")), ("automatic", lambda _mode: arrow("Left")),
            ("faster", act), ("quiet", act), ("automatic", act),
        ]
        for duty, (mode, way) in enumerate(turns):
            with self.step((duty, mode)):
                report = {
                    "thermal_state": f"warm {duty}", "effective_duty_percent": duty,
                    "effective_workers": 1, "configured_workers": 4, "reason": f"Reason {duty}",
                }
                # No fetch succeeds: all that is shown comes with the answer.
                worker.fault(status=503)
                worker.arm(path="performance", patch={"activity_policy": report})
                worker.clear_requests()
                way(mode)
                self.wait_for_line(dashboard, names.performance(duty, "1/4", f"Reason {duty}"))
                self.wait_for_line(dashboard, names.thermal(f"warm {duty}"))
                self.wait_for_mode(dashboard, mode)
                self.assertEqual(worker.changes(), [(PATH, f'{{"mode":"{mode}"}}')])
        change = worker.requests(PATH)[0]
        headers = {name.lower(): value for name, value in change["headers"]}
        self.assertEqual(change["method"], "POST")
        self.assertEqual(headers["content-type"], "application/json")
        self.assertEqual(dashboard.sheets(), [SHEET])

    def selected(self, dashboard):
        return next(node.name for node in self.modes(dashboard) if node.has("checked"))

    def test_every_fault_on_the_way(self):
        worker = self.worker()
        worker.show_slots(bay(1), activity_policy=policy("automatic"))
        dashboard = self.live(worker)
        self.open(dashboard)
        self.wait_for_mode(dashboard, "automatic")
        keys = ("Escape", "Return", "space")
        asked = []
        for turn, (name, fault) in enumerate(FAULTS.items()):
            with self.step(name):
                worker.arm(path="performance", count=1, **fault)
                mode = ("quiet", "faster")[turn % 2]
                if turn % 3 == 0:
                    self.person.click(self.segment(dashboard, mode))
                else:
                    self.segment(dashboard, mode).press()
                asked.append((PATH, f'{{"mode":"{mode}"}}'))
                dashboard.alert(FAILED)
                self.assertEqual(dashboard.host_of("Corvala for Mac"), SHEET)
                # By the failure itself: the next fetch is seconds away.
                segment = self.segment(dashboard, "automatic")
                self.assertTrue(segment.has("checked") and segment.has("enabled"))
                self.person.key(keys[turn % len(keys)])
                dashboard.wait_until_gone(ALERT)
                self.wait_for_mode(dashboard, "automatic")
        worker.wait_for_fetch()
        # One sent again would have met no fault.
        self.assertEqual(worker.changes(), asked)
        self.assertEqual(dashboard.sheets(), [SHEET])

    def test_a_second_choice_waits_for_the_first(self):
        worker = self.worker()
        dashboard = self.live(worker)
        self.open(dashboard)
        worker.show_slots(bay(1, state="busy"), activity_policy=policy("automatic", reason="Old"))
        self.wait_for_line(dashboard, names.performance(40, "2/3", "Old"))
        worker.arm(path="performance", count=1, late=3.5)
        worker.clear_requests()
        self.person.click(self.segment(dashboard, "quiet"))
        self.wait_for_mode(dashboard, "quiet", enabled=False)
        # Neither impatience nor a fetch that is answered meanwhile changes the choice.
        self.person.click(self.segment(dashboard, "faster"))
        self.person.key("Right")
        worker.show_slots(bay(1, state="busy"),
                          activity_policy=policy("automatic", reason="Meanwhile"))
        self.wait_for_line(dashboard, names.performance(40, "2/3", "Meanwhile"))
        self.wait_for_mode(dashboard, "quiet", enabled=False)
        worker.clear_faults()
        self.wait_for_mode(dashboard, "quiet")
        worker.arm(path="performance", count=1, late=2.5)
        self.person.click(self.segment(dashboard, "faster"))
        self.wait_for_mode(dashboard, "faster", enabled=False)
        self.wait_for_mode(dashboard, "faster")
        self.assertEqual(
            worker.changes(), [(PATH, '{"mode":"quiet"}'), (PATH, '{"mode":"faster"}')]
        )
        self.assertEqual(dashboard.sheets(), [SHEET])

    def test_closed_while_a_choice_is_under_way(self):
        worker = self.worker()
        worker.show_slots(bay(1), activity_policy=policy("automatic"))
        dashboard = self.live(worker)
        self.open(dashboard)
        worker.arm(path="performance", count=1, late=3, body="")
        self.person.click(self.segment(dashboard, "faster"))
        self.wait_for_mode(dashboard, "faster", enabled=False)
        self.person.key("Escape")
        dashboard.wait_until_gone(SHEET)
        dashboard.alert(FAILED)
        self.assertEqual(dashboard.host_of("Corvala for Mac"), MAIN)
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)
        self.open(dashboard)
        self.wait_for_mode(dashboard, "automatic")

    def test_worker_goes_away_and_comes_back(self):
        worker = self.worker()
        worker.show_slots(bay(1, state="busy"), activity_policy=policy("faster"))
        dashboard = self.live(worker)
        port = worker.port
        self.open(dashboard)
        self.wait_for_mode(dashboard, "faster")
        # In the middle of a choice.
        worker.arm(path="performance", late=60)
        worker.clear_requests()
        self.person.click(self.segment(dashboard, "quiet"))
        wait_for("the change at the worker", worker.changes)
        worker.stop()
        dashboard.alert(FAILED)
        self.assertEqual(dashboard.host_of("Corvala for Mac"), SHEET)
        self.person.key("Return")
        dashboard.wait_until_gone(ALERT)
        self.wait_for_line(dashboard, names.thermal("nominal", online=False))
        self.wait_for_line(dashboard, "Cool and idle")
        self.wait_for_mode(dashboard, "faster", enabled=False)
        self.person.click(self.segment(dashboard, "quiet"))
        # Closed and opened again while there is no service.
        self.person.key("Escape")
        dashboard.wait_until_gone(SHEET)
        self.open(dashboard)
        self.wait_for_mode(dashboard, "faster", enabled=False)
        wait_for(
            "the keyboard on the button",
            lambda: dashboard.accessible.focus() == ("push button", "Done"),
        )

        worker = self.worker(port=port, devices=0)
        self.wait_for_mode(dashboard, "automatic")
        self.person.click(self.segment(dashboard, "quiet"))
        self.wait_for_mode(dashboard, "quiet")
        wait_for("the change at the worker", worker.changes)
        self.assertEqual(worker.changes(), [(PATH, '{"mode":"quiet"}')])
        self.assertEqual(dashboard.sheets(), [SHEET])

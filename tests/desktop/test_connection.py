"""The service gets late, goes away and comes back."""

from harness.case import DesktopCase
from harness.waiting import wait_for
from harness.worker import BUSY, bay

LATE = (
    "The last local status check was delayed. Processing may still be running; keeping the last "
    "confirmed state while reconnecting."
)
GONE = (
    "The dashboard is open, but the processing service is unavailable. Start it to reconnect your "
    "phone."
)


class ConnectionCase(DesktopCase):
    def busy_dashboard(self):
        worker = self.worker()
        worker.show_slots(BUSY, bay(2, completed=4, failed=2))
        return worker, self.live_dashboard(worker)

    def control(self, dashboard, role, name):
        node = dashboard.accessible.find(role, name)
        self.assertIsNotNone(node, f"{role} {name!r}\n{dashboard.accessible.tree()}")
        return node


class BadAnswersTest(ConnectionCase):
    def test_one_bad_answer_of_every_layer(self):
        worker, dashboard = self.busy_dashboard()
        good = {"slots": [BUSY]}
        faults = {
            "connection": {"hang_up": True},
            "time": {"late": 4.5},
            "status": {"status": 500},
            "body": {"truncate": True},
            "document": {"patch": {"deep_scan_enabled": "false"}},
        }
        for name, fault in faults.items():
            with self.subTest(name):
                worker.fault(**fault, count=1)
                worker.arm(patch=good)
                # A library that sent the request again by itself would hide the fault.
                dashboard.wait_for_text("● RECONNECTING")
                dashboard.wait_for_text("● CONNECTED")

    def test_hostile_documents_stop_nothing(self):
        worker, dashboard = self.busy_dashboard()
        keys = ("slots", "connected_devices", "services", "video_backend", "audio_backend",
                "activity_policy", "duty_percent", "model", "device_id", "device",
                "cooldown_cap_seconds", "cooldown_seconds")
        wrong = [None, True, -1, 2.5, "x" * 10_000, [], [1], [{}], {}, {"a": 1}]
        for turn in range(3):
            document = {key: wrong[(index + 3 * turn) % 10] for index, key in enumerate(keys)}
            if turn > 0:
                # Without bays nothing is asked for five seconds.
                document["slots"] = [{**BUSY, "phase": wrong[turn], "progress_total": wrong[-turn]}]
            worker.clear_requests()
            worker.fault(patch=document)
            # The second fetch is sent when the first answer has been shown.
            wait_for("two fetches", lambda: len(worker.arrivals()) >= 2)
        worker.show_slots(BUSY)
        dashboard.wait_for_text("1 processor working")
        self.assertIn("● CONNECTED", dashboard.texts())


class ConnectionTest(ConnectionCase):
    def test_reconnecting_keeps_what_was_confirmed(self):
        worker, dashboard = self.busy_dashboard()
        kept = [text for text in dashboard.texts() if text != "● CONNECTED"]
        worker.wait_for_fetch()
        # Late answers leave time to read everything before the service is back.
        worker.fault(status=503, late=3, count=2)
        dashboard.wait_for_text("● RECONNECTING")
        self.assertEqual(
            [text for text in dashboard.texts() if text != "● RECONNECTING"], kept
        )
        headline = self.control(dashboard, "label", "1 processor working")
        self.assertEqual(headline.description, LATE)
        self.assertFalse(self.control(dashboard, "push button", "Pause deep jobs").has("enabled"))
        self.assertFalse(self.control(dashboard, "check box", "Detailed analysis").has("enabled"))
        dashboard.wait_for_text("● CONNECTED")

    def test_two_misses_never_show_the_service_stopped(self):
        worker, dashboard = self.busy_dashboard()
        seen = []

        def back():
            lamps = [text for text in dashboard.texts() if text.startswith("● ")]
            if lamps and lamps[:1] != seen[-1:]:
                seen.append(lamps[0])
            return seen[-1:] == ["● CONNECTED"] and len(seen) > 1

        wait_for("the lamp", lambda: back() or seen)
        worker.fault(status=503, count=2)
        wait_for("the connection to be back", back)
        self.assertEqual(seen, ["● CONNECTED", "● RECONNECTING", "● CONNECTED"])

    def test_stopped_and_back(self):
        worker, dashboard = self.busy_dashboard()
        worker.close_listener(3600)
        dashboard.wait_for_text("● RECONNECTING")
        dashboard.wait_for_text("● SERVICE STOPPED", 30)
        texts = dashboard.texts()
        for text in (
            "Processing is stopped",
            "DEVICES  service offline",
            "Service unavailable · no live counts",
            "BAY 1  ○  Offline  ·  Start processing to help your connected devices",
            "BAY 2  ○  Offline  ·  Start processing to help your connected devices",
            "BAY 3  ○  Offline  ·  Start processing to help your connected devices",
        ):
            self.assertIn(text, texts)
        headline = self.control(dashboard, "label", "Processing is stopped")
        self.assertEqual(headline.description, GONE)
        self.assertTrue(self.control(dashboard, "push button", "Start processing").has("enabled"))
        toggle = self.control(dashboard, "check box", "Detailed analysis")
        self.assertTrue(toggle.has("indeterminate"))
        self.assertFalse(toggle.has("enabled"))

        port = worker.port
        worker.stop()
        self.worker(port=port)
        dashboard.wait_until_live()
        self.assertNotIn("Processing is stopped", dashboard.texts())

    def test_a_listener_that_dies_and_comes_back(self):
        worker = self.worker(scenario="listener-dies.json")
        dashboard = self.live_dashboard(worker)
        dashboard.wait_for_text("● RECONNECTING", 30)
        dashboard.wait_for_text("● SERVICE STOPPED", 30)
        dashboard.wait_for_text("● CONNECTED", 30)

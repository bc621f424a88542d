"""The service gets late, goes away and comes back."""

from harness import names
from harness.case import DesktopCase
from harness.waiting import wait_for
from harness.worker import BUSY, bay


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
                dashboard.wait_for_text(names.RECONNECTING)
                dashboard.wait_for_text(names.CONNECTED)

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
        dashboard.wait_for_text(names.working(1))
        self.assertIn(names.CONNECTED, dashboard.texts())


class ConnectionTest(ConnectionCase):
    def test_reconnecting_keeps_what_was_confirmed(self):
        worker, dashboard = self.busy_dashboard()
        kept = [text for text in dashboard.texts() if text != names.CONNECTED]
        worker.wait_for_fetch()
        # Late answers leave time to read everything before the service is back.
        worker.fault(status=503, late=3, count=2)
        dashboard.wait_for_text(names.RECONNECTING)
        self.assertEqual(
            [text for text in dashboard.texts() if text != names.RECONNECTING], kept
        )
        headline = self.control(dashboard, "label", names.working(1))
        self.assertEqual(headline.description, names.shown(names.LIVE, "reconnecting")["status detail"])
        self.assertFalse(self.control(dashboard, "push button", names.PAUSE).has("enabled"))
        self.assertFalse(self.control(dashboard, "check box", "Detailed analysis").has("enabled"))
        dashboard.wait_for_text(names.CONNECTED)

    def test_two_misses_never_show_the_service_stopped(self):
        worker, dashboard = self.busy_dashboard()
        seen = []

        def back():
            lamps = [text for text in dashboard.texts() if text.startswith("● ")]
            if lamps and lamps[:1] != seen[-1:]:
                seen.append(lamps[0])
            return seen[-1:] == [names.CONNECTED] and len(seen) > 1

        wait_for("the lamp", lambda: back() or seen)
        worker.fault(status=503, count=2)
        wait_for("the connection to be back", back)
        self.assertEqual(seen, [names.CONNECTED, names.RECONNECTING, names.CONNECTED])

    def test_stopped_and_back(self):
        worker, dashboard = self.busy_dashboard()
        worker.close_listener(3600)
        dashboard.wait_for_text(names.RECONNECTING)
        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        texts = dashboard.texts()
        stopped = names.shown(names.GONE)
        for name in ("status", "devices", "summary", "row 1", "row 2", "row 3"):
            self.assertIn(stopped[name], texts)
        headline = self.control(dashboard, "label", names.STOPPED)
        self.assertEqual(headline.description, stopped["status detail"])
        self.assertTrue(self.control(dashboard, "push button", names.START).has("enabled"))
        toggle = self.control(dashboard, "check box", "Detailed analysis")
        self.assertTrue(toggle.has("indeterminate"))
        self.assertFalse(toggle.has("enabled"))

        port = worker.port
        worker.stop()
        self.worker(port=port)
        dashboard.wait_until_live()
        self.assertNotIn(names.STOPPED, dashboard.texts())

    def test_a_listener_that_dies_and_comes_back(self):
        worker = self.worker(scenario="listener-dies.json")
        dashboard = self.live_dashboard(worker)
        dashboard.wait_for_text(names.RECONNECTING, 30)
        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        dashboard.wait_for_text(names.CONNECTED, 30)

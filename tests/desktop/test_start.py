"""From the start to the first live state, and what is shown around it."""

import os
import re
import time

from harness.accessible import Announcements
from harness.case import DesktopCase
from harness.desktop import DASHBOARD
from harness.process import OWN_MOUNTS, needs_own_mounts
from harness.waiting import wait_for
from harness.worker import BUSY, bay


# The user database names the folder in $HOME_OF_USER as the home of this user.
USER_DATABASE = """
printf 'user:x:%s:%s::%s:/bin/sh\\n' "$(id -u)" "$(id -g)" "$HOME_OF_USER" >"$HOME_OF_USER/passwd"
mount --bind "$HOME_OF_USER/passwd" /etc/passwd
exec "$0" "$@"
"""


class StartTest(DesktopCase):
    def test_first_live_state(self):
        worker = self.worker()
        began = time.monotonic()
        dashboard = self.live_dashboard(worker)
        print(f"live after {time.monotonic() - began:.1f} s")

        texts = dashboard.texts()
        self.assertIn("HALVEX / CORVALA INTELLIGENCE RACK", texts)
        self.assertIn(
            f"RACK     simulated-rack  ·  simulation  ·  3 bays  ·  LAN :{worker.port}", texts
        )
        for number in (1, 2, 3):
            rows = [text for text in texts if text.startswith(f"BAY {number}  ")]
            self.assertEqual(len(rows), 1, texts)
            self.assertRegex(rows[0], "^BAY . {2}[●○] {2}.+ {2}· {2}.+")
        self.assertTrue(any(text.startswith("DEVICES  ") for text in texts), texts)
        self.assertTrue(
            any(
                re.fullmatch(r"\d+% · \d/3 lanes · .+ · \d+ returned · \d+ failed", text)
                for text in texts
            ),
            texts,
        )
        self.assertEqual(dashboard.out, "")

    def test_rack_moves(self):
        worker = self.worker()
        dashboard = self.live_dashboard(worker)

        def rows():
            return [text for text in dashboard.texts() if text.startswith("BAY ")]

        seen = set()

        def three_states_seen():
            seen.add(tuple(rows()))
            return len(seen) >= 3

        wait_for("the rack to move twice", three_states_seen, 30)

    def test_every_text_of_a_known_document(self):
        worker = self.worker()
        worker.show_slots(
            bay(1, state="busy", stage="describe", media_kind="video", phase="processing",
                progress_current=2, progress_total=4, source_device="Pixel <b>8</b>",
                completed=5, failed=1),
            bay(2, state="waiting", stage="ocr", phase="cooling", completed=2),
            bay(3, state="idle", last_stage="audio", last_finished_seconds_ago=15),
            cooldown_seconds=14.2,
            cooldown_cap_seconds=60,
            device_id="studio.local",
            device="macOS 14",
            connected_devices=[
                {"device_id": "a", "name": "Anna & Co", "last_seen_seconds": 9},
                {"device_id": "b", "last_seen_seconds": 10},
            ],
            activity_policy={
                "effective_duty_percent": 40, "effective_workers": 2, "configured_workers": 3,
                "reason": "Warm",
            },
        )
        dashboard = self.live_dashboard(worker)
        for text in (
            "2 processors working",
            f"RACK     studio  ·  macOS 14  ·  3 bays  ·  LAN :{worker.port}",
            "DEVICES  Anna & Co · now   |   Android device · 10s ago",
            "BAY 1  ●  Video · Pass 1 · visual AI  ·  Working  ·  frame 2/4  ·  Pixel <b>8</b>",
            "BAY 2  ●  Photo · OCR · reading text  ·  Cooling  ·  cooling 15s",
            "BAY 3  ○  Ready  ·  Last: video sound · 15s ago",
            "40% · 2/3 lanes · Warm · cooling 15s · 7 returned · 1 failed",
        ):
            with self.subTest(text):
                self.assertIn(text, dashboard.texts())

        meters = [
            node.value for node in dashboard.accessible.nodes() if node.role == "progress bar"
        ]
        self.assertEqual(len(meters), 3)
        self.assertAlmostEqual(meters[0], 0.5)
        self.assertAlmostEqual(meters[1], 1 - 14.2 / 60)
        self.assertEqual(meters[2], 0)

        headline = dashboard.accessible.find("label", "2 processors working")
        self.assertEqual(
            headline.description,
            "Live passes below · results return to the phone as each job finishes.",
        )
        start = dashboard.accessible.find("push button", "Pause deep jobs")
        self.assertTrue(start.has("enabled"))
        toggle = dashboard.accessible.find("check box", "Detailed analysis")
        self.assertTrue(toggle.has("checked"))
        self.assertTrue(toggle.has("enabled"))
        for title in ("Settings", "Setup…"):
            self.assertIsNotNone(dashboard.accessible.find("push button", title), title)

    def test_a_text_that_changes_is_announced(self):
        worker = self.worker(devices=0)
        dashboard = self.live_dashboard(worker)
        announcements = Announcements()
        self.addCleanup(announcements.end)
        job = {"state": "busy", "stage": "describe", "media_kind": "video", "progress_total": 4}
        expected = ("label", "1 processor working")
        # The job goes on while the headline stays.
        for frame in (1, 2, 3):
            worker.show_slots(bay(1, progress_current=frame, **job), connected_devices=[])
            wait_for(
                f"the announcement of frame {frame}",
                lambda: any(f"frame {frame}/4" in name for _role, name in announcements.names()),
            )
        self.assertEqual(announcements.names().count(expected), 1)
        self.assertIn(expected[1], dashboard.texts())

    def test_before_the_first_answer(self):
        worker = self.worker()
        worker.fault(late=3.5, count=1)
        dashboard = self.dashboard(worker.port)
        dashboard.wait_for_text("Checking processing…")
        texts = dashboard.texts()
        self.assertIn("RACK  checking local processor", texts)
        self.assertIn("DEVICES  waiting for Corvala", texts)
        for number in (1, 2, 3):
            self.assertIn(f"BAY {number}  ·  checking", texts)
        self.assertIn("CONNECTING", texts)
        toggle = dashboard.accessible.find("check box", "Detailed analysis")
        self.assertTrue(toggle.has("indeterminate"))
        self.assertFalse(toggle.has("enabled"))
        dashboard.wait_until_live()

    def test_no_service_at_the_start(self):
        worker = self.worker()
        port = worker.port
        worker.stop()
        dashboard = self.dashboard(port)
        # Without a confirmed state a single miss is enough.
        dashboard.wait_for_text("● SERVICE STOPPED")
        self.assertIn("Processing is stopped", dashboard.texts())
        self.worker(port=port)
        dashboard.wait_until_live()

    def test_impossible_port_is_a_missing_service(self):
        for port in ("0", "-1", "65536", "9223372036854775807"):
            with self.subTest(port):
                dashboard = self.dashboard(port)
                dashboard.wait_for_text("● SERVICE STOPPED")
                self.assertTrue(
                    any(text.endswith(f"LAN :{port}") for text in dashboard.texts()),
                    dashboard.texts(),
                )
                dashboard.stop()

    def test_window(self):
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        windows = self.desktop.windows
        window = dashboard.window()
        self.assertEqual(windows.title(window), "Corvala for Mac · Halvex")
        left, top, width, height = windows.place(window)
        self.assertEqual((width, height), (720, 390))
        # Centred, a title bar aside.
        self.assertAlmostEqual(left + width / 2, 640, delta=15)
        self.assertAlmostEqual(top + height / 2, 400, delta=30)
        self.assertEqual(windows.smallest_size(window), (650, 365))
        wait_for("the window in front", lambda: windows.is_active(window))
        # Controls of the program's own style have room for a ring, whatever the desktop's.
        button = dashboard.accessible.find("push button", "Settings")
        self.assertEqual(button.place[3], 28)

    def test_token_goes_along_when_there_is_one(self):
        for token, expected in ((None, []), ("", []), ("s3cret token", ["Bearer s3cret token"])):
            with self.subTest(token=token):
                worker = self.worker(token=token)
                dashboard = self.live_dashboard(worker, token=token)
                headers = worker.requests()[0]["headers"]
                found = [value for name, value in headers if name.lower() == "authorization"]
                self.assertEqual(found, expected)
                dashboard.stop()

    def test_wrong_token_is_a_missing_service(self):
        worker = self.worker(token="right")
        dashboard = self.dashboard(worker.port, token="wrong")
        dashboard.wait_for_text("● SERVICE STOPPED")

    def test_health_is_asked_with_a_plain_get(self):
        worker = self.worker()
        worker.show_slots(BUSY)
        dashboard = self.live_dashboard(worker)
        wait_for("a second fetch", lambda: len(worker.arrivals()) >= 2)
        for request in worker.requests():
            self.assertEqual((request["method"], request["body"]), ("GET", ""))
            names = [name.lower() for name, _value in request["headers"]]
            for unwanted in ("cookie", "content-type", "content-length", "proxy-connection",
                             "if-modified-since", "if-none-match"):
                self.assertNotIn(unwanted, names)
        self.assertTrue(dashboard.is_running())

    def setup_is_shown(self, dashboard):
        windows = self.desktop.windows
        titles = [windows.title(window) for window in windows.of_process(dashboard.pid)]
        return "Corvala for Mac Setup · Halvex" in titles

    def test_setup_comes_by_itself_only_once(self):
        worker = self.worker()
        home = self.desktop.home_environment("newcomer")
        first = self.dashboard(worker.port, home=home)
        wait_for("the setup sheet", lambda: self.setup_is_shown(first))
        preferences = os.path.join(home["XDG_CONFIG_HOME"], "Halvex", "VeskWorkerControl.conf")
        wait_for("the visit in the preferences", lambda: os.path.exists(preferences))
        first.stop()
        worker.clear_requests()
        worker.show_slots(BUSY)
        second = self.live_dashboard(worker, home=home)
        # A fetch that the timer sent comes long after the sheet would have.
        wait_for(
            "a later fetch", lambda: worker.arrivals()[-1] - worker.arrivals()[0] > 1.4
        )
        self.assertFalse(self.setup_is_shown(second))
        second.stop()
        third = self.dashboard(worker.port, "--setup", home=home)
        wait_for("the setup sheet", lambda: self.setup_is_shown(third))

    @needs_own_mounts
    def test_without_home_everything_is_in_the_home_of_the_user_database(self):
        worker = self.worker()
        for given in ({"HOME": ""}, {}):
            with self.subTest(given):
                folder = self.desktop.home_environment(f"database{len(given)}")["HOME"]
                dashboard = self.dashboard(
                    worker.port, home={"HOME_OF_USER": folder, **given},
                    without=("XDG_CONFIG_HOME", *(() if given else ("HOME",))),
                    command=(*OWN_MOUNTS, "sh", "-ec", USER_DATABASE, DASHBOARD),
                )
                preferences = os.path.join(folder, ".config", "Halvex", "VeskWorkerControl.conf")
                wait_for("the visit in the preferences", lambda: os.path.exists(preferences))
                self.assertTrue(
                    os.path.exists(os.path.join(folder, ".corvala", "worker-control.lock"))
                )
                dashboard.stop()

    def test_arguments_of_the_toolkit_mean_nothing(self):
        worker = self.worker()
        dashboard = self.live_dashboard(
            worker, "-platform", "offscreen", "-qwindowgeometry", "300x300+0+0", "-style", "--setup"
        )
        wait_for("the setup sheet", lambda: self.setup_is_shown(dashboard))
        windows = self.desktop.windows
        sizes = {
            windows.title(window): windows.place(window)[2:]
            for window in windows.of_process(dashboard.pid)
        }
        self.assertEqual(sizes["Corvala for Mac · Halvex"], (720, 390))

    def test_nothing_is_said_where_the_surroundings_are_poor(self):
        worker = self.worker()
        dashboard = self.live_dashboard(
            worker, without=("XDG_RUNTIME_DIR", "LC_ALL", "QT_LOGGING_RULES")
        )
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

    def test_unknown_arguments_are_ignored(self):
        worker = self.worker()
        dashboard = self.live_dashboard(worker, "--nothing", "--setupp", "", "\udcff", "ü")
        self.assertFalse(self.setup_is_shown(dashboard))

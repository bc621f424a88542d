"""From the start to the first live state, and what is shown around it."""

import os
import time

from harness import names
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

        self.assertIn(names.rack("simulated-rack", "simulation", worker.port), dashboard.texts())
        self.assertEqual(dashboard.out, "")

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

    def test_listener_that_dies_and_comes_back(self):
        worker = self.worker(scenario="listener-dies.json")
        dashboard = self.live_dashboard(worker)
        dashboard.wait_for_text(names.RECONNECTING, 30)
        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        dashboard.wait_for_text(names.CONNECTED, 30)

    def test_window(self):
        worker = self.worker()
        dashboard = self.live_dashboard(worker)
        windows = self.desktop.windows
        window = dashboard.window()
        self.assertEqual(windows.title(window), names.MAIN)
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

    def setup_is_shown(self, dashboard):
        windows = self.desktop.windows
        titles = [windows.title(window) for window in windows.of_process(dashboard.pid)]
        return names.SETUP in titles

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
        self.assertEqual(sizes[names.MAIN], (720, 390))

    def test_nothing_is_said_where_the_surroundings_are_poor(self):
        worker = self.worker()
        dashboard = self.live_dashboard(
            worker, without=("XDG_RUNTIME_DIR", "LC_ALL", "QT_LOGGING_RULES")
        )
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

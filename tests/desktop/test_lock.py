"""One copy at a time, the files it leaves, and the self-test beside it."""

import os
import signal
import stat
import subprocess

from harness.application import Application
from harness.case import DesktopCase
from harness.dashboard import visited_home
from harness.desktop import DASHBOARD
from harness.process import Process
from harness.waiting import wait_for
from harness.worker import bay

MAIN = "Corvala for Mac · Halvex"
ALREADY_OPEN = b"Corvala for Mac is already open.\n"
SELF_TEST = (
    b"8 worker/rack presentation, 9 refresh policy and 8 listener recovery checks passed\n"
)


def mode(path):
    return stat.S_IMODE(os.stat(path).st_mode)


class LockTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.home = visited_home(self.desktop)
        self.folder = os.path.join(self.home["HOME"], ".corvala")
        self.lock = os.path.join(self.folder, "worker-control.lock")

    def run_to_end(self, *arguments, home=None, umask=-1, without=()):
        environment = {**self.desktop.environment, **(home or self.home)}
        for name in without:
            del environment[name]
        return subprocess.run(
            [DASHBOARD, *arguments], env=environment, stdin=subprocess.DEVNULL,
            capture_output=True, timeout=15, umask=umask, check=False,
            preexec_fn=Process.without_core_files,
        )

    def assert_refused(self, ended):
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (1, b"", ALREADY_OPEN))

    def assert_passed(self, ended):
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, SELF_TEST, b""))

    def test_second_copy_is_refused(self):
        worker = self.worker()
        first = self.live_dashboard(worker, home=self.home)
        self.assert_refused(self.run_to_end(str(worker.port)))
        self.assert_refused(self.run_to_end("--setup"))
        self.assertTrue(first.is_running())
        windows = self.desktop.windows
        titles = [windows.title(window) for window in windows.of_process(first.pid)]
        self.assertEqual(titles.count(MAIN), 1)
        self.assertIn("● CONNECTED", first.texts())

    def test_second_start_for_setup_opens_it(self):
        self.tray_host()
        worker = self.worker()
        first = self.live_dashboard(worker, home=self.home)
        self.desktop.windows.press_close(first.window())
        wait_for("the window gone", lambda: not first.is_shown())
        for _twice in range(2):
            self.assert_refused(self.run_to_end("--setup"))
            first.sheet("Corvala for Mac Setup · Halvex")

    def test_what_other_programs_may_ask(self):
        self.tray_host()
        worker = self.worker()
        worker.show_slots(bay(1), deep_scan_enabled=True)
        first = self.live_dashboard(worker, home=self.home)
        application = Application(self.desktop)
        self.assertTrue(application.is_known())
        self.desktop.windows.press_close(first.window())
        wait_for("the window gone", lambda: not first.is_shown())
        application.act("nothing of ours")
        application.act("start")
        wait_for("the change at the worker", worker.changes)
        self.assertEqual(
            worker.changes(), [("/v1/local/services", '{"deep_scan_enabled":false}')]
        )
        self.assertFalse(first.is_shown())
        application.activate()
        first.window()
        application.act("settings")
        first.sheet("Corvala processing settings")
        application.act("setup")
        # A window manager need not give the keyboard to what a person did not click for.
        self.person.click(first.control("label", "A little more intelligence. Locally."))
        first.sheet("Corvala for Mac Setup · Halvex")
        application.act("quit")
        self.assertEqual(first.wait(), 0)
        wait_for("the name given back", lambda: not application.is_known())

    def test_second_start_without_a_session_bus(self):
        worker = self.worker()
        first = self.live_dashboard(worker, home=self.home)
        self.assert_refused(self.run_to_end(without=("DBUS_SESSION_BUS_ADDRESS",)))
        nowhere = dict(self.home, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
        self.assert_refused(self.run_to_end(home=nowhere))
        self.assertTrue(first.is_running())

    def test_self_test_runs_beside_a_copy(self):
        worker = self.worker()
        first = self.live_dashboard(worker, home=self.home)
        self.assert_passed(self.run_to_end("--self-test"))
        self.assert_passed(self.run_to_end(str(worker.port), "--setup", "--self-test"))
        self.assertTrue(first.is_running())

    def test_self_test_needs_no_desktop(self):
        ended = self.run_to_end(
            "--self-test",
            without=("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "QT_QPA_PLATFORM", "XDG_RUNTIME_DIR",
                     "LC_ALL"),
        )
        self.assert_passed(ended)

    def test_self_test_is_found_where_the_toolkit_would_take_it(self):
        for before in (["-style"], ["-platform"], ["--"], ["-qwindowgeometry"], [""]):
            with self.subTest(before):
                self.assert_passed(self.run_to_end(*before, "--self-test"))

    def test_only_the_exact_argument_is_the_self_test(self):
        first = self.dashboard(self.kept_port(), home=self.home)
        first.window()
        for argument in ("--self-testing", "--SELF-TEST", "-self-test", "--self-test ",
                         "--self-test=1", "self-test"):
            with self.subTest(argument):
                self.assert_refused(self.run_to_end(argument))

    def test_modes(self):
        for umask in (0, 0o022, 0o077, 0o777):
            with self.subTest(umask=oct(umask)):
                home = visited_home(self.desktop)
                self.assert_passed(self.run_to_end("--self-test", home=home, umask=umask))
                folder = os.path.join(home["HOME"], ".corvala")
                self.assertEqual(mode(folder), 0o700)
                lock = os.path.join(folder, "worker-control.lock")
                # The file's mode is the one asked for as far as the umask lets it.
                self.assertEqual(mode(lock), 0o600 & ~umask)
                self.assertEqual(os.path.getsize(lock), 0)

    def test_missing_home_is_made(self):
        home = dict(self.home, HOME=os.path.join(self.home["HOME"], "not", "there"))
        self.assert_passed(self.run_to_end("--self-test", home=home))
        self.assertEqual(mode(os.path.join(home["HOME"], ".corvala")), 0o700)

    def test_what_an_earlier_run_left_is_no_hindrance(self):
        os.mkdir(self.folder, 0o755)
        os.chmod(self.folder, 0o755)
        with open(self.lock, "w", encoding="utf-8") as file:
            file.write("left behind")
        first = self.dashboard(self.kept_port(), home=self.home)
        first.window()
        self.assert_refused(self.run_to_end())
        with open(self.lock, encoding="utf-8") as file:
            self.assertEqual(file.read(), "left behind")
        self.assertEqual(mode(self.folder), 0o755)

    def test_lock_ends_with_the_process(self):
        for number in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number):
                copy = self.dashboard(self.kept_port(), home=self.home)
                copy.window()
                self.assert_refused(self.run_to_end())
                copy.send(number)
                self.assertEqual(copy.wait(), -number)
        self.dashboard(self.kept_port(), home=self.home).window()

    def test_lock_that_cannot_be_opened_counts_as_held(self):
        os.makedirs(self.lock)
        self.assert_refused(self.run_to_end())
        self.assert_passed(self.run_to_end("--self-test"))

    def test_home_that_cannot_hold_the_folder_ends_the_program(self):
        in_the_way = os.path.join(self.home["HOME"], "file")
        with open(in_the_way, "w", encoding="utf-8"):
            pass
        dangling = os.path.join(self.home["HOME"], "dangling")
        os.makedirs(dangling)
        os.symlink("nowhere", os.path.join(dangling, ".corvala"))
        taken = os.path.join(self.home["HOME"], "taken")
        os.makedirs(taken)
        with open(os.path.join(taken, ".corvala"), "w", encoding="utf-8"):
            pass
        for home in (in_the_way, os.path.join(in_the_way, "below"), dangling, taken, "/proc/none"):
            for arguments in ([], ["--self-test"]):
                with self.subTest(home=home, arguments=arguments):
                    ended = self.run_to_end(*arguments, home=dict(self.home, HOME=home))
                    self.assertEqual(ended.returncode, -signal.SIGABRT)
                    self.assertEqual((ended.stdout, ended.stderr), (b"", b""))

    def test_home_that_the_toolkit_cannot_name_ends_the_program(self):
        odd = os.fsencode(self.home["HOME"]) + b"/h\xf6me"
        os.mkdir(odd)
        for variable in ("HOME", "XDG_CONFIG_HOME"):
            for arguments in ([], ["--self-test"]):
                with self.subTest(variable=variable, arguments=arguments):
                    ended = self.run_to_end(
                        *arguments, home=dict(self.home, **{variable: os.fsdecode(odd)})
                    )
                    self.assertEqual(
                        (ended.returncode, ended.stdout, ended.stderr),
                        (1, b"", b"VeskWorkerControl: the home folder's path is not valid UTF-8\n"),
                    )
                    self.assertEqual(os.listdir(odd), [])
                    self.assertEqual(
                        [name for name in os.listdir(self.home["HOME"]) if name.startswith("h")],
                        [os.fsdecode(odd).rsplit("/", 1)[1]],
                    )

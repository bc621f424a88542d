"""The same flows on real desktops.

A flow is a test method of a mixin (TrayFlows, RaisingFlows, ...). It starts with the dashboard
`self.program` in front, connected to the worker `self.service`, and on a desktop with a tray the tray
`self.tray`. A desktop is a description in harness/desktops.py and a class below that combines it with
the mixins of the flows that it can show; CMakeLists.txt makes each class a test. To add a flow, add a
method to a mixin: it then runs on each desktop that has the mixin.
"""

from harness import names
from harness.case import DesktopCase
from harness.desktops import I3Desktop, LxqtDesktop, MarcoDesktop, XfceDesktop
from harness.names import (
    ALERT, ALERT_WINDOW, MAIN, OPEN, OPEN_SETUP, PAUSE, QUIT, RESUME, SETTINGS, SETUP
)
from harness.sway import SwayDesktop
from harness.waiting import wait_for
from harness.worker import BUSY, bay


class Flows(DesktopCase):
    def setUp(self):
        super().setUp()
        self.windows = self.desktop.windows
        self.service = self.worker()
        self.service.show_slots(BUSY)
        self.tray = self.make_tray()
        self.program = self.live_dashboard(self.service)
        self.window = self.program.wait_until_in_front()

    def make_tray(self):
        raise NotImplementedError

    def hide(self):
        """Closes the window to the tray."""
        self.windows.press_close(self.window)
        wait_for("the window gone", lambda: not self.program.is_shown())

    def minimise(self, title=MAIN):
        def is_minimised():
            # Ask at each attempt, with the window of that moment: the program may activate the window
            # after a request, and it re-creates a dialog that is refused focus.
            window = self.window_titled(title)
            self.windows.minimise(window)
            return self.windows.is_minimised(window)

        wait_for(f"{title!r} minimised", is_minimised)

    def wait_until_raised(self):
        """The window has focus and nothing covers it."""
        self.window = self.program.wait_until_in_front()
        wait_for("the window in sight", lambda: self.windows.is_in_sight(self.window))

    def window_titled(self, title):
        return wait_for(f"a window {title!r}", lambda: next(
            (window for window in self.windows.of_process(self.program.pid)
             if self.windows.title(window) == title),
            None,
        ))

    def open_settings(self):
        self.program.control("push button", "Settings").press()
        self.program.sheet(SETTINGS)

    def open_setup(self):
        self.program.control("push button", "Setup…").press()
        self.program.sheet(SETUP)

    def raise_alert(self):
        """Over the settings."""
        self.service.arm(path="performance", count=1, status=500)
        self.program.control("radio button", "Cool & quiet").press()
        self.program.sheet(ALERT)


class TrayFlows:
    """Through the desktop's own tray."""

    def make_tray(self):
        tray = self.desktop.panel(self.person)
        self.addCleanup(tray.stop)
        return tray

    def test_icon_shows_the_count(self):
        pictures = {self.tray.pixels()}
        for slots in ([BUSY, bay(2, state="waiting")], [bay(1)]):
            self.service.wait_for_fetch()
            self.service.show_slots(*slots)
            wait_for("another icon", lambda: self.tray.pixels() not in pictures)
            pictures.add(self.tray.pixels())
        self.assertNotIn("StatusNotifierItem", self.tray.err)

    def test_tool_tip_shows_the_state(self):
        self.assertEqual(self.tray.tool_tip(), names.tool_tip(names.working(1)))

    def assert_menu(self, *titles):
        """The first is the state."""
        self.assertEqual(
            self.tray.entries(), [(title, title != titles[0]) for title in titles]
        )

    def test_menu_follows_the_service(self):
        self.assert_menu(names.working(1), OPEN, PAUSE, OPEN_SETUP, QUIT)
        first = self.tray.menu_pixels()
        self.service.wait_for_fetch()
        self.service.show_slots(bay(1), deep_scan_enabled=False)
        self.program.wait_for_text(names.PAUSED)
        changed = wait_for("another menu", lambda: self.menu_unlike(first))
        self.restart_panel()
        self.assert_menu(names.PAUSED, OPEN, RESUME, OPEN_SETUP, QUIT)
        self.assertEqual(self.tray.menu_pixels(), changed)

    def menu_unlike(self, pixels):
        now = self.tray.menu_pixels()
        return now if now != pixels else None

    def restart_panel(self):
        self.tray.stop()
        self.tray.start()

    def test_hidden_window_stays_hidden_while_the_panel_restarts(self):
        self.hide()
        self.restart_panel()
        self.assertTrue(self.tray.place)
        self.assertFalse(self.program.is_shown())
        self.tray.choose(OPEN)
        self.wait_until_raised()

    def test_window_opens_from_the_tray(self):
        size = self.windows.place(self.window)[2:]
        for away in (self.hide, self.minimise):
            for opens in (self.tray.click, lambda: self.tray.choose(OPEN)):
                with self.step(away.__name__):
                    away()
                    opens()
                    self.wait_until_raised()
                    self.assertEqual(self.windows.place(self.window)[2:], size)


class RaisingFlows:
    """A second start brings the window to its user."""

    def test_second_start_while_hidden(self):
        self.hide()
        self.program.start_again()
        self.wait_until_raised()

    def test_second_start_while_covered(self):
        self.windows.cover()
        self.addCleanup(self.windows.uncover)
        wait_for("the window covered", lambda: not self.windows.is_in_sight(self.window))
        self.program.start_again()
        self.wait_until_raised()

    def go_to_empty_workspace(self):
        self.addCleanup(self.desktop.go_to_workspace, 0)
        self.desktop.go_to_workspace(1)
        wait_for("the window out of sight", lambda: not self.windows.is_in_sight(self.window))

    def test_second_start_on_another_workspace(self):
        self.go_to_empty_workspace()
        self.program.start_again()
        self.wait_until_raised()

    def test_second_start_for_setup_on_another_workspace(self):
        self.go_to_empty_workspace()
        self.program.start_again("--setup")
        self.program.sheet(SETUP)
        sheet = self.window_titled(SETUP)
        wait_for("the sheet in sight", lambda: self.windows.is_in_sight(sheet))


class MinimisingFlows:
    """As RaisingFlows, under a window manager that can minimise."""

    def test_second_start_while_minimised(self):
        self.minimise()
        self.program.start_again()
        self.wait_until_raised()

    def test_second_start_after_show_desktop(self):
        self.windows.show_desktop()
        wait_for("the window out of sight", lambda: not self.windows.is_in_sight(self.window))
        self.program.start_again()
        self.wait_until_raised()


class SheetFlows:
    """Sheets and alerts, under a window manager that can minimise them."""

    def wait_until_restored(self, *titles):
        """The last of them is active."""
        wait_for(
            f"{titles} restored",
            lambda: not any(
                self.windows.is_minimised(self.window_titled(title)) for title in titles
            ),
        )
        wait_for(
            f"{titles[-1]!r} active",
            lambda: self.windows.is_active(self.window_titled(titles[-1])),
        )

    def test_sheet_minimised_alone_is_restored(self):
        self.open_settings()
        self.minimise(SETTINGS)
        self.program.start_again()
        self.wait_until_restored(SETTINGS)
        self.program.sheet(SETTINGS)

    def test_sheet_is_restored_below_its_alert(self):
        self.open_settings()
        self.raise_alert()
        for minimised in ([ALERT_WINDOW], [SETTINGS], [ALERT_WINDOW, SETTINGS], [MAIN]):
            with self.step(minimised):
                for title in minimised:
                    self.minimise(title)
                self.program.start_again()
                self.wait_until_restored(SETTINGS, ALERT_WINDOW)
                self.program.sheet(ALERT)

    def test_alert_stays_in_front_of_its_sheet(self):
        self.open_settings()
        self.raise_alert()
        self.windows.cover()
        self.addCleanup(self.windows.uncover)
        self.program.start_again()
        alert = self.window_titled(ALERT_WINDOW)
        wait_for("the alert in sight", lambda: self.windows.is_in_sight(alert))
        wait_for("the alert active", lambda: self.windows.is_active(alert))


class HostFlows:
    """Where the tray is a host of the tests' own."""

    def make_tray(self):
        return self.tray_host()


class XfceTest(TrayFlows, RaisingFlows, MinimisingFlows, SheetFlows, Flows):
    desktop_kind = XfceDesktop


class LxqtTest(TrayFlows, RaisingFlows, MinimisingFlows, SheetFlows, Flows):
    desktop_kind = LxqtDesktop


class I3Test(HostFlows, RaisingFlows, Flows):
    desktop_kind = I3Desktop

    def test_window_that_cannot_be_minimised_is_polled_as_in_sight(self):
        self.tray.leave()
        self.program.stop()
        self.program = self.live_dashboard(self.service)
        window = self.program.wait_until_in_front()
        # Closed without a tray it asks to be minimised, which i3 ignores.
        self.windows.press_close(window)
        fetches = len(self.service.arrivals())
        # Four take 6 s for a window in sight, and 40 s for a minimised one.
        wait_for("four fetches", lambda: len(self.service.arrivals()) >= fetches + 4, 8)
        self.assertTrue(self.windows.is_in_sight(window))


class MarcoTest(HostFlows, RaisingFlows, MinimisingFlows, SheetFlows, Flows):
    desktop_kind = MarcoDesktop


class SwayTest(Flows):
    """Sway gives focus to what is clicked on, and to new windows only."""

    desktop_kind = SwayDesktop
    CORNER = (20, 20)

    def make_tray(self):
        return None

    def titles(self):
        return [window.title for window in self.windows.of_process(self.program.pid)]

    def wait_until_title_in_front(self, title):
        def is_in_front():
            windows = self.windows.of_process(self.program.pid)
            return windows[-1].title == title and windows[-1].has_focus

        wait_for(f"{title!r} in front", is_in_front)

    def click(self, title):
        """On a part of the window that no dialog covers; the window is then in front for a moment."""
        window = self.window_titled(title)
        front = self.windows.of_process(self.program.pid)[-1]
        self.windows.click(window, *self.CORNER)
        wait_for(
            f"{front.title!r} re-created",
            lambda: front.id not in [w.id for w in self.windows.of_process(self.program.pid)],
        )

    def float_main(self):
        window = self.window_titled(MAIN)
        self.windows.float(window, 100, 100)
        wait_for("a floating window", lambda: self.window_titled(MAIN).place != window.place)

    def test_alert_returns_in_front_of_its_sheet(self):
        self.open_settings()
        self.raise_alert()
        self.wait_until_title_in_front(ALERT_WINDOW)
        for blocked in (SETTINGS, MAIN, SETTINGS):
            self.click(blocked)
            self.wait_until_title_in_front(ALERT_WINDOW)
            self.program.sheet(ALERT)
        self.program.control("push button", "OK").press()
        self.program.sheet(SETTINGS)
        self.program.control("push button", "Done").press()
        wait_for("the window alone", lambda: self.titles() == [MAIN])

    def test_sheet_returns_in_front_of_a_floating_window(self):
        self.float_main()
        for title, opens, button in (
            (SETTINGS, self.open_settings, "Done"), (SETUP, self.open_setup, "Skip setup")
        ):
            with self.step(title):
                opens()
                for _ in range(2):
                    self.click(MAIN)
                    self.wait_until_title_in_front(title)
                    self.program.sheet(title)
                self.program.control("push button", button).press()
                wait_for("the window alone", lambda: self.titles() == [MAIN])

    def test_second_start_keeps_the_alert_in_front(self):
        self.open_settings()
        self.raise_alert()
        self.program.start_again()
        self.wait_until_title_in_front(ALERT_WINDOW)
        self.assertEqual(len(self.titles()), 3)

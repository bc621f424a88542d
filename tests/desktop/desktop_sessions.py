"""The flows of test_desktops.py on KDE Plasma and GNOME; check-desktops runs them."""

import dataclasses

import test_desktops as flows
from harness import names
from harness.application import Application
from harness.gnome import GnomeDesktop, GnomeWaylandDesktop
from harness.names import ALERT, OPEN, OPEN_SETUP, PAUSE, QUIT, RESUME, SETTINGS, SETUP
from harness.plasma import PlasmaDesktop
from harness.waiting import wait_for
from harness.worker import bay


@dataclasses.dataclass
class Spot:
    place: tuple


class SessionFlows(flows.Flows):
    """On a desktop that has a launcher, and knows the program as an installed one."""

    def shortDescription(self):
        return None

    def setUp(self):
        super().setUp()
        wait_for("the tray item", lambda: self.tray.place)
        self.desktop.installation.serve(self.service.port, self.program.home)
        # A window that was used is raised differently from one that never was.
        self.person.click(Spot(self.windows.place(self.window)))

    def tearDown(self):
        self.desktop.picture(self.id().split(".", 1)[1])
        super().tearDown()


class LaunchFlows:
    """Through the desktop's launcher, by the program's entry."""

    def assert_nothing_was_asked(self):
        self.service.wait_for_fetch()
        self.assertEqual(self.service.changes(), [])

    def test_launch_while_hidden(self):
        self.hide()
        self.desktop.launch()
        self.wait_until_raised()
        self.assert_nothing_was_asked()

    def test_launch_while_minimised(self):
        self.minimise()
        self.desktop.launch()
        self.wait_until_raised()
        self.assert_nothing_was_asked()

    def test_launch_while_covered(self):
        self.windows.cover()
        self.addCleanup(self.windows.uncover)
        wait_for("the window covered", lambda: not self.windows.is_in_sight(self.window))
        self.desktop.launch()
        self.wait_until_raised()
        self.assert_nothing_was_asked()

    @staticmethod
    def quit(application):
        application.act("quit")
        wait_for("the program ended", lambda: not application.is_known())

    def test_launch_while_not_running(self):
        self.program.stop()
        wait_for("the window gone", lambda: not self.program.is_shown())
        self.service.clear_requests()
        application = Application(self.desktop)
        self.desktop.launch()
        wait_for("the program", application.is_known, 30)
        self.addCleanup(self.quit, application)
        pid = application.pid()
        wait_for("its window", lambda: any(
            self.windows.is_in_sight(window) for window in self.windows.of_process(pid)
        ))
        self.assert_nothing_was_asked()
        self.assert_nothing_was_asked()

    def test_launch_action_settings(self):
        self.desktop.launch_action("settings")
        self.program.sheet(SETTINGS)
        self.assert_nothing_was_asked()

    def test_launch_action_setup(self):
        self.desktop.launch_action("setup")
        self.program.sheet(SETUP)
        self.assert_nothing_was_asked()

    def test_launch_action_quit(self):
        self.desktop.launch_action("quit")
        self.assertEqual(self.program.wait(), 0)
        self.assertEqual(self.service.changes(), [])


class ReachFlows:
    """Whatever happened to the window, a second start and the tray bring it to its user."""

    def go_away_to_another_workspace(self):
        self.desktop.go_to_workspace(1)
        self.addCleanup(self.windows.go_to_workspace, 0)

    def go_away_behind_the_desktop(self):
        self.windows.show_desktop()

    def go_away_minimised(self):
        """Another program is used after the window was minimised."""
        self.minimise()
        self.go_away_covered()

    def go_away_covered(self):
        self.windows.cover_beside_panel()
        self.addCleanup(self.windows.uncover)

    def comes_back(self, go_away, call):
        go_away()
        wait_for("the window out of sight", lambda: not self.windows.is_in_sight(self.window))
        call()
        self.wait_until_raised()

    def test_second_start_on_another_workspace(self):
        self.comes_back(self.go_away_to_another_workspace, self.program.start_again)

    def test_second_start_after_show_desktop(self):
        self.comes_back(self.go_away_behind_the_desktop, self.program.start_again)

    def test_second_start_while_minimised_and_another_used(self):
        self.comes_back(self.go_away_minimised, self.program.start_again)

    def open_from_tray(self):
        self.tray.choose(OPEN)

    def test_open_while_minimised(self):
        self.comes_back(self.go_away_minimised, self.open_from_tray)

    def test_open_while_covered(self):
        self.comes_back(self.go_away_covered, self.open_from_tray)

    def test_open_on_another_workspace(self):
        self.comes_back(self.go_away_to_another_workspace, self.open_from_tray)

    def test_open_after_show_desktop(self):
        self.comes_back(self.go_away_behind_the_desktop, self.open_from_tray)


class AbsentHostFlows:
    """The tray goes for long while the window is closed to it."""

    def test_host_away_for_long_while_hidden(self):
        self.hide()
        self.tray.stop()
        wait_for("the window within reach", self.program.is_shown, 40)
        self.tray.start()
        wait_for("the item", lambda: self.tray.place)
        wait_for("the window closed to the tray again", lambda: not self.program.is_shown())


class CoveredSheetFlows:
    def test_alert_over_sheet_returns_in_front(self):
        self.open_settings()
        self.raise_alert()
        self.go_away_covered()
        wait_for("another window in front", lambda: not any(
            map(self.windows.is_active, self.windows.of_process(self.program.pid))
        ))
        self.program.start_again()
        self.program.sheet(ALERT)
        self.program.control("push button", "OK").press()
        self.program.sheet(SETTINGS)


class PlasmaTest(
    flows.TrayFlows, flows.RaisingFlows, flows.MinimisingFlows, flows.SheetFlows, ReachFlows,
    AbsentHostFlows, CoveredSheetFlows, LaunchFlows, SessionFlows,
):
    desktop_kind = PlasmaDesktop

    def test_host_away_for_long_while_hidden(self):
        self.skipTest("kded5 reports a host after plasmashell has ended")

    def test_item_list_restarted_while_hidden(self):
        # The list of tray items is a service of its own.
        self.hide()
        self.desktop.services.stop()
        self.desktop.start_services()
        wait_for("the item", lambda: self.tray.place)
        self.assertFalse(self.program.is_shown())
        self.tray.choose(OPEN)
        self.wait_until_raised()


class GnomeWaylandTest(
    flows.TrayFlows, flows.RaisingFlows, flows.MinimisingFlows, ReachFlows, AbsentHostFlows,
    CoveredSheetFlows, LaunchFlows, SessionFlows,
):
    desktop_kind = GnomeWaylandDesktop

    def test_tool_tip_shows_the_state(self):
        self.skipTest("GNOME's top bar has no tool tips")

    def test_menu_follows_the_service(self):
        self.assert_menu(names.working(1), OPEN, PAUSE, OPEN_SETUP, QUIT)
        self.service.wait_for_fetch()
        self.service.show_slots(bay(1), deep_scan_enabled=False)
        self.program.wait_for_text(names.PAUSED)
        titles = [names.PAUSED, OPEN, RESUME, OPEN_SETUP, QUIT]
        wait_for(
            "the paused menu", lambda: [entry.title for entry in self.tray.entries()] == titles
        )
        self.assert_menu(*titles)


class GnomeX11Test(GnomeWaylandTest):
    desktop_kind = GnomeDesktop


del SessionFlows

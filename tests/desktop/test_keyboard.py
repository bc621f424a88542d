"""Every control by keyboard and by assistive technology, on every screen."""

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT
from harness.names import MAIN, SETTINGS, SETUP
from harness.waiting import wait_for
from harness.worker import bay

ALERT_WINDOW = "Corvala for Mac"

BUTTONS = {"push button", "check box", "radio button"}
# Whatever only holds others has nothing to say.
SILENT = {"filler", "scroll pane", "viewport", "separator", "scroll bar"}
WORKING = bay(1, state="busy", stage="describe", phase="processing", progress_current=1,
              progress_total=4)


def in_reading_order(nodes):
    """From top to bottom, side by side from left to right."""
    rows = []
    for node in sorted(nodes, key=lambda node: node.place[1]):
        _left, top, _width, height = node.place
        if rows and top + height / 2 < rows[-1]["bottom"]:
            rows[-1]["nodes"].append(node)
        else:
            rows.append({"bottom": top + height, "nodes": [node]})
    return [node for row in rows for node in sorted(row["nodes"], key=lambda node: node.place[0])]


class KeyboardTest(DesktopCase):
    def shown(self, root):
        return [node for node in root.walk() if node.has("showing")]

    def stops(self, root):
        """What the tab key is to come to, in order; of a group of radio buttons the chosen one."""
        return in_reading_order(
            node for node in self.shown(root)
            if node.has("focusable") and node.has("enabled") and node.role not in SILENT
            and node.role not in ("frame", "dialog", "panel")
            and (node.role != "radio button" or node.has("checked"))
        )

    def wait_for_focus(self, dashboard, node):
        name = node.role, node.name
        wait_for(f"the keyboard on {name}", lambda: dashboard.accessible.focus() == name)

    def walk(self, dashboard, root, steps):
        """The tab key comes to each, forwards and around, and back; each shows that it has the
        keyboard. Assistive technology can give it the keyboard too."""
        stops = self.stops(root)
        self.assertEqual([stop.name for stop in stops], steps)
        windows = self.desktop.windows
        stops[-1].take_focus()
        self.wait_for_focus(dashboard, stops[-1])
        for stop, previous in zip(stops, [stops[-1], *stops]):
            ringed = windows.pixels(previous.place)
            self.person.key("Tab")
            self.wait_for_focus(dashboard, stop)
            if len(stops) > 1:
                wait_for(
                    f"another look of {previous.name!r}",
                    lambda: windows.pixels(previous.place) != ringed,
                )
        for stop in reversed(stops[:-1]):
            self.person.key("Tab", "Shift_L")
            self.wait_for_focus(dashboard, stop)
        for stop in stops:
            stop.take_focus()
            self.wait_for_focus(dashboard, stop)

    def check_words(self, root):
        """Each node says what it is and how it stands."""
        names = set()
        for node in self.shown(root):
            if node.role in SILENT:
                continue
            what = (node.role, node.name)
            self.assertTrue(node.name, f"nameless: {what} at {node.place}")
            if node.role in BUTTONS:
                self.assertNotIn(node.name, names, f"a second {what}")
                names.add(node.name)
                self.assertTrue(node.actions() or not node.has("enabled"), f"no action: {what}")
            if node.role == "progress bar":
                least, value, most = node.range
                self.assertTrue(least <= value <= most and least < most, (what, node.range))
                # The line above tells in words what the bar shows.
                labels = [label.name for label in node.labels()]
                self.assertEqual(len(labels), 1, what)
                self.assertTrue(labels[0].startswith(node.name + "  "), (what, labels))
        self.assertTrue(names)

    def test_window(self):
        worker = self.worker()
        worker.show_slots(WORKING)
        dashboard = self.live_dashboard(worker)
        dashboard.wait_until_in_front()
        frame = dashboard.accessible.find("frame", MAIN)
        self.check_words(frame)
        self.walk(
            dashboard, frame, ["Settings", names.PAUSE, "Detailed analysis", "Setup…"]
        )
        texts = in_reading_order(frame.showing("label"))
        self.assertEqual(
            [text.name.split("  ")[0] for text in texts],
            ["HALVEX / CORVALA INTELLIGENCE RACK", names.CONNECTED, names.working(1), "RACK",
             "DEVICES", names.summary(40, "2/3", "Cool and idle"),
             "BAY 1", "BAY 2", "BAY 3"],
        )
        self.assertEqual(
            [text.name for text in texts], [text.name for text in frame.showing("label")],
            "read in another order than shown",
        )

    def test_settings_and_alert(self):
        worker = self.worker()
        worker.show_slots(WORKING)
        dashboard = self.live_dashboard(worker)
        dashboard.control("push button", "Settings").press()
        sheet = dashboard.sheet(SETTINGS)
        self.check_words(sheet)
        self.walk(dashboard, sheet, ["Automatic", "Done"])
        worker.arm(path="performance", count=1, status=500)
        dashboard.control("radio button", "Cool & quiet").press()
        message = "Could not save processing mode. Please try again."
        alert = dashboard.alert(message)
        self.check_words(alert)
        self.walk(dashboard, alert, [message, "OK"])
        windows = self.desktop.windows
        below = [w for w in windows.of_process(dashboard.pid) if windows.title(w) != ALERT_WINDOW]
        self.assertEqual(len(below), 2)
        for window in below:
            windows.give_keyboard(window)
            wait_for("the keyboard handed on", lambda: not windows.has_keyboard(window))
            dashboard.alert(message)
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)
        dashboard.sheet(SETTINGS)

    def test_an_alert_that_comes_while_a_menu_is_open(self):
        worker = self.worker()
        worker.show_slots(WORKING)
        dashboard = self.live_dashboard(worker)
        dashboard.wait_until_in_front()
        worker.arm(path="services", count=1, late=3, status=500)
        dashboard.control("push button", names.PAUSE).press()
        self.person.key("Menu")
        wait_for("the menu", lambda: dashboard.accessible.showing("menu item"))
        alert = dashboard.sheet(ALERT)
        self.assertEqual(dashboard.accessible.showing("menu item"), [])
        self.walk(dashboard, alert, [alert.description, "OK"])
        self.person.key("Escape")
        dashboard.wait_until_gone(ALERT)
        dashboard.wait_until_in_front()

    def test_setup(self):
        worker = self.worker()
        worker.show_slots(WORKING)
        dashboard = self.live_dashboard(worker)
        dashboard.control("push button", "Setup…").press()
        sheet = dashboard.sheet(SETUP)
        dashboard.control("radio button", "Advanced").press()
        pages = [
            ["Advanced", "Skip setup", "Continue"],
            [names.START_CHECK, "Skip setup", "Back", "Continue"],
            ["Skip setup", "Back", "Continue"],
            ["Allow detailed photo, video and audio analysis",
             names.LOGIN, "Skip setup", "Back",
             names.APPLY],
        ]
        for number, stops in enumerate(pages, 1):
            with self.step(number):
                dashboard.control("label", names.setup_step(number))
                self.check_words(sheet)
                self.walk(dashboard, sheet, stops)
                if number < len(pages):
                    dashboard.control("push button", "Continue").press()

    def test_without_a_service(self):
        worker = self.worker()
        port = worker.port
        worker.stop()
        dashboard = self.dashboard(port)
        dashboard.wait_for_text(names.SERVICE_STOPPED)
        frame = dashboard.accessible.find("frame", MAIN)
        self.check_words(frame)
        toggle = dashboard.accessible.find("check box", "Detailed analysis")
        self.assertTrue(toggle.has("indeterminate"))
        self.assertFalse(toggle.has("enabled"))
        self.walk(dashboard, frame, ["Settings", names.START, "Setup…"])

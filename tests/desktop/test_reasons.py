"""What the program tells to whoever asks for its reasons."""

import json
import re

from harness import names
from harness.case import DesktopCase
from harness.dashboard import ALERT
from harness.names import SETUP
from harness.tool import Tool
from harness.waiting import wait_for
from harness.worker import BUSY

TOKEN = "token-7f3a"
SHEET = names.SETTINGS
FAILED = "Could not save processing mode. Please try again."


class ReasonsTest(DesktopCase):
    def told_dashboard(self, *arguments, **options):
        self.tool = Tool(self.desktop)
        return self.dashboard(
            *arguments, token=TOKEN, command=(self.tool.dashboard,), told=True, **options
        )

    def wait_for_reason(self, dashboard, pattern, seconds=15.0):
        return wait_for(
            f"a line like {pattern!r}",
            lambda: next((line for line in dashboard.reasons() if re.search(pattern, line)), None),
            seconds,
        )

    def test_what_is_on_screen(self):
        worker = self.worker(token=TOKEN)
        worker.show_slots(BUSY)
        dashboard = self.told_dashboard(worker.port)
        dashboard.wait_until_live()
        self.wait_for_reason(dashboard, "^vesk.ui: event=window visible=true$")
        host = self.tray_host()
        self.wait_for_reason(dashboard, "^vesk.ui: event=tray present=true$")
        host.leave()
        self.wait_for_reason(dashboard, "^vesk.ui: event=tray present=false$")
        worker.clear_faults()
        worker.arm(path="performance", status=500, count=1)
        self.person.click(dashboard.control("push button", "Settings"))
        sheet = dashboard.sheet(SHEET)
        mode = next(n for n in sheet.showing("radio button") if n.name == "Cool & quiet")
        self.person.click(mode)
        dashboard.alert(FAILED)
        self.person.key("Return")
        dashboard.wait_until_gone(ALERT)
        self.person.click(dashboard.control("push button", "Done"))
        dashboard.wait_until_gone(SHEET)
        self.person.click(dashboard.control("push button", "Setup…"))
        dashboard.sheet(SETUP)
        self.person.click(dashboard.control("push button", "Skip setup"))
        dashboard.wait_until_gone(SETUP)
        self.assertEqual(
            dashboard.reasons("vesk.ui: event=dialog"),
            [
                f'vesk.ui: event=dialog open=true title="{SHEET}"',
                f'vesk.ui: event=dialog open=true title="Corvala for Mac" says="{FAILED}"',
                f'vesk.ui: event=dialog open=false title="Corvala for Mac" says="{FAILED}"',
                f'vesk.ui: event=dialog open=false title="{SHEET}"',
                f'vesk.ui: event=dialog open=true title="{SETUP}"',
                f'vesk.ui: event=dialog open=false title="{SETUP}"',
            ],
        )
        before = len(dashboard.reasons("vesk.ui: event=window-asked-for"))
        second = self.dashboard(worker.port, home=dashboard.home, command=(self.tool.dashboard,))
        second.wait()
        wait_for(
            "the second start in the first copy's reasons",
            lambda: len(dashboard.reasons("vesk.ui: event=window-asked-for")) > before,
        )

    def test_no_token_and_no_body_is_told(self):
        worker = self.worker(token=TOKEN)
        # Each text of the service in a document, and of a page that is none.
        document = {
            "slots": [{**BUSY, "model": "body-model", "job": "body-job", "source_device": "body-phone"}],
            "connected_devices": [{"device_id": "body-id", "name": "body-name"}],
            "activity_policy": {"reason": "body-reason", "performance_mode": "quiet"},
            "device": "body-device",
        }
        worker.fault(patch=document, count=2)
        worker.arm(body="<html>body-page</html>", count=1)
        worker.arm(status=500, body="body-failure", count=1)
        worker.arm(redirect="http://127.0.0.1/body-place", count=1)
        worker.arm(raw="body-bytes\r\n\r\n", count=1)
        worker.arm(patch=document)
        dashboard = self.told_dashboard(worker.port)
        dashboard.wait_until_live()
        for result in ("not-json", "bad-status status=500", "bad-status status=302", "not-http"):
            self.wait_for_reason(dashboard, f"event=exchange .*result={result}", 30)
        self.wait_for_reason(dashboard, "event=connection state=connected was=stopped", 30)
        dashboard.wait_until_live()
        self.person.click(dashboard.control("push button", names.PAUSE))
        self.person.click(dashboard.control("push button", "Settings"))
        sheet = dashboard.sheet(SHEET)
        self.person.click(next(n for n in sheet.showing("radio button") if n.name == "Faster when idle"))
        for path in ("services", "performance"):
            self.wait_for_reason(dashboard, f'method=POST port=\\d+ path="/v1/local/{path}" result=good')
        self.assertEqual(len(worker.changes()), 2)
        self.assertTrue(all(TOKEN in json.dumps(entry["headers"]) for entry in worker.log()))
        dashboard.stop()
        self.assertGreater(len(dashboard.reasons()), 10)
        for secret in (TOKEN, "Bearer", "body-", "deep_scan_enabled", "Faster", "faster", "quiet"):
            self.assertNotIn(secret, dashboard.err)

    def test_nothing_is_told_unasked(self):
        worker = self.worker(token=TOKEN)
        worker.fault(status=503, count=1)
        tool = Tool(self.desktop)
        dashboard = self.dashboard(
            worker.port, token=TOKEN, command=(tool.dashboard,), without=("QT_LOGGING_RULES",)
        )
        dashboard.wait_until_live()
        worker.close_listener(3600)
        dashboard.wait_for_text(names.SERVICE_STOPPED, 30)
        self.assertEqual((dashboard.out, dashboard.err), ("", ""))

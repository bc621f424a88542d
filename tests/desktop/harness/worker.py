"""The simulated worker with its fault switch and its request log."""

import json
import os
import urllib.request

from .desktop import WORKER
from .process import Process
from .waiting import wait_for

SCENARIOS = os.path.join(os.path.dirname(__file__), "../../../tools/scenarios")

_direct = urllib.request.build_opener(urllib.request.ProxyHandler({}))


def bay(number, **record):
    return {"slot": number, **record}


BUSY = bay(1, state="busy", stage="describe", media_kind="photo", phase="processing", model="m")

# The part of a document that would move by itself.
STILL = {
    "cooldown_seconds": 0,
    "connected_devices": [{"device_id": "a", "name": "Kitchen phone", "last_seen_seconds": 3}],
    "activity_policy": {
        "effective_duty_percent": 40, "effective_workers": 2, "configured_workers": 3,
        "reason": "Cool and idle",
    },
}


class Worker:
    def __init__(self, desktop, port, token=None, devices=2, scenario=None, faults=()):
        """The faults are armed before it listens; a scenario is one of those that come along."""
        environment = dict(desktop.environment)
        if token is not None:
            environment["TESSALURE_WORKER_TOKEN"] = token
        played = scenario and os.path.join(SCENARIOS, scenario)
        if faults:
            played = os.path.join(desktop.folder, "faults.json")
            with open(played, "w", encoding="ascii") as file:
                json.dump([{"at": 0, "fault": {"path": "health", **fault}} for fault in faults], file)
        self._process = Process(
            [WORKER, "--port", str(port), "--devices", str(devices),
             *(["--scenario", played] if played else [])],
            environment,
            desktop.folder,
            "worker",
        )
        line = wait_for("the worker's address", lambda: self._process.out.strip())
        self.port = int(line.rsplit(":", 1)[1])

    def is_running(self):
        return self._process.is_running()

    def stop(self):
        self._process.stop()

    def _ask(self, method, path, document=None):
        request = urllib.request.Request(
            f"http://127.0.0.1:{self.port}{path}",
            method=method,
            data=None if document is None else json.dumps(document).encode(),
            headers={"Content-Type": "application/json"},
        )
        with _direct.open(request, timeout=5) as answer:
            return json.load(answer)

    def arm(self, **fault):
        """Adds a fault for the health requests."""
        self._ask("POST", "/sim/fault", {"path": "health", **fault})

    def fault(self, **fault):
        """Arms one in place of those armed before."""
        self.clear_faults()
        self.arm(**fault)

    def clear_faults(self):
        self._ask("DELETE", "/sim/fault")

    def show_slots(self, *slots, **more):
        """From now on every health answer has these bays."""
        self.fault(patch={**STILL, "slots": list(slots), **more})

    def close_listener(self, seconds):
        self._ask("POST", "/sim/listener", {"closed_seconds": seconds})

    def log(self):
        """All requests of the dashboard, in the order in which they came."""
        return self._ask("GET", "/sim/requests")

    def requests(self, path="/v1/health"):
        return [entry for entry in self.log() if entry["path"] == path]

    def changes(self):
        """Path and body of all that asked for a change."""
        return [(entry["path"], entry["body"]) for entry in self.log() if entry["method"] != "GET"]

    def clear_requests(self):
        self._ask("DELETE", "/sim/requests")

    def wait_for_fetch(self, seconds=40.0):
        """Returns just after a health request, so that there is time until the next."""
        before = len(self.arrivals())
        wait_for("a health request", lambda: len(self.arrivals()) > before, seconds)

    def arrivals(self):
        """When the health requests came in, in seconds of a clock that never jumps."""
        return [entry["monotonic_seconds"] for entry in self.requests()]

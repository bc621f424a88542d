"""Waiting for a condition with a deadline."""

import threading
import time

POLL_SECONDS = 0.05


def wait_for(what, condition, seconds=15.0):
    """Returns the first true result of `condition`; fails when there is none in time."""
    deadline = time.monotonic() + seconds
    pause = threading.Event()
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() >= deadline:
            raise AssertionError(f"not within {seconds} s: {what}")
        pause.wait(POLL_SECONDS)

"""Waiting for a condition with a deadline."""

import threading
import time

from gi.repository import GLib

# To look costs the program looked at as much as the one that looks; a long wait looks less often.
FIRST_PAUSE_SECONDS = 0.02
LONGEST_PAUSE_SECONDS = 0.2


def wait_for(what, condition, seconds=15.0):
    """Returns the first true result of `condition`; fails when there is none in time. An object of
    another program that goes while the condition reads it makes it false."""
    deadline = time.monotonic() + seconds
    pause = threading.Event()
    pause_seconds = FIRST_PAUSE_SECONDS
    while True:
        failure = None
        try:
            result = condition()
            if result:
                return result
        except GLib.Error as error:
            failure = error
        if time.monotonic() >= deadline:
            raise AssertionError(f"not within {seconds} s: {what}") from failure
        pause.wait(pause_seconds)
        pause_seconds = min(1.25 * pause_seconds, LONGEST_PAUSE_SECONDS)

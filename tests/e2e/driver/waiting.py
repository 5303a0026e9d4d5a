"""Waiting by looking, never by sleeping for a guessed time."""
import os
import time

# A slow machine may stretch every wait.
PATIENCE = float(os.environ.get("WICKFIELD_E2E_PATIENCE", "1"))


class TookTooLong(Exception):
    """What was waited for did not come."""


def wait_until(what, look, seconds=15.0):
    """Returns the first true result of look(); raises TookTooLong, which names `what`, when none comes in time."""
    end = time.monotonic() + seconds * PATIENCE
    while True:
        result = look()
        if result:
            return result
        if time.monotonic() > end:
            raise TookTooLong(f"{what}: not seen within {seconds * PATIENCE:g} s")
        time.sleep(0.03)

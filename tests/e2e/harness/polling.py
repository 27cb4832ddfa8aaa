"""Waiting for a condition. The guard only ends what would hang; no test measures time."""

import time

GUARD_SECONDS = 120
POLL_SECONDS = 0.02


def wait_until(condition, what, guard_seconds=GUARD_SECONDS):
    """Returns the first true result of `condition`."""
    give_up = time.monotonic() + guard_seconds
    while True:
        result = condition()
        if result:
            return result
        assert time.monotonic() < give_up, f'waited in vain until {what}'
        time.sleep(POLL_SECONDS)

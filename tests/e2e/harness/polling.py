"""Waiting for a condition. The guard only ends what would hang; no test measures time."""

import time

GUARD_SECONDS = 120
# Most of what is waited for is there at once: looking often at first costs little, and later it costs less.
FIRST_POLL_SECONDS = 0.001
LAST_POLL_SECONDS = 0.032


def wait_until(condition, what, guard_seconds=GUARD_SECONDS):
    """Returns the first true result of `condition`."""
    give_up = time.monotonic() + guard_seconds
    pause = FIRST_POLL_SECONDS
    while True:
        result = condition()
        if result:
            return result
        assert time.monotonic() < give_up, f'waited in vain until {what}'
        time.sleep(pause)
        pause = min(2 * pause, LAST_POLL_SECONDS)

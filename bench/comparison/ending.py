"""The end by a signal, which must not fall into the start of a process: nobody would know of it, and it would go on. Nor
must it break off what cleans up."""

import signal
from contextlib import contextmanager

SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)


class Ended(BaseException):
    """By a signal. No Exception: nobody but main() catches it."""

    def __init__(self, number):
        super().__init__()
        self.number = number


class _Held:
    """How many blocks wait for their ends, and the signal that came meanwhile."""
    blocks = 0
    number = None


def _end(number, _frame):
    """What is cleaned up after the first signal, no second one interrupts."""
    for ending in SIGNALS:
        signal.signal(ending, signal.SIG_IGN)
    _Held.number = number
    if _Held.blocks == 0:
        raise Ended(number)


def end_on_signals():
    for number in SIGNALS:
        signal.signal(number, _end)


@contextmanager
def held():
    """A signal that comes in here takes effect at its end."""
    _Held.blocks += 1
    try:
        yield
    finally:
        _Held.blocks -= 1
    if _Held.number is not None and _Held.blocks == 0:
        raise Ended(_Held.number)

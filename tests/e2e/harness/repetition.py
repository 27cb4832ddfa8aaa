"""What goes on beside a test."""

import threading

from .polling import wait_until


class Repetition:
    """Does something again and again, until the test ends it. Where it fails, it stops, and the test fails with it."""

    def __init__(self, action):
        self._action = action
        self._thread = threading.Thread(target=self._run)
        self._ending = threading.Event()
        self._failure = None
        self.count = 0

    def _run(self):
        try:
            while not self._ending.is_set():
                self._action()
                self.count += 1
        except BaseException as failure:  # told by the test
            self._failure = failure

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, kind, *_):
        self._ending.set()
        self._thread.join()
        if self._failure and kind is None:
            raise self._failure

    def wait_for_more(self, count=1):
        target = self.count + count
        wait_until(lambda: self.count >= target or self._failure, 'it is done again')

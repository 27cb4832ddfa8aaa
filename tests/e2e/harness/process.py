"""A child process with a log file, that never outlives the tests."""

import ctypes
import signal
import subprocess

from .polling import GUARD_SECONDS

PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)


def die_with_parent():
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Process:
    def __init__(self, arguments, log, environment=None):
        self.log = log
        with open(log, 'ab') as output:
            self._child = subprocess.Popen(
                [str(argument) for argument in arguments],
                stdin=subprocess.DEVNULL, stdout=output, stderr=output, env=environment,
                preexec_fn=die_with_parent)

    @property
    def pid(self):
        return self._child.pid

    def is_alive(self):
        return self._child.poll() is None

    def signal(self, number):
        self._child.send_signal(number)

    def stop(self):
        """Asks the process to end, and returns its exit status."""
        self.signal(signal.SIGCONT)
        self.signal(signal.SIGTERM)
        return self.wait()

    def wait(self):
        try:
            return self._child.wait(timeout=GUARD_SECONDS)
        except subprocess.TimeoutExpired:
            self._child.kill()
            self._child.wait()
            raise AssertionError(f'process {self._child.args[0]} did not end') from None

    def kill(self):
        self._child.kill()
        self._child.wait()

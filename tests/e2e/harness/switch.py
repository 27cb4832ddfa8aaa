"""A private stp-switchd, and stp-switchctl for it."""

import signal
import subprocess

from .build import BUILD
from .control import ControlClient
from .polling import GUARD_SECONDS, wait_until
from .process import Process


def playing(file):
    """The source that plays it."""
    return ['--scenario', file]


class Switch:
    def __init__(self, directory, source, enter=()):
        """`source`: the arguments that tell where its state comes from; `enter`: what runs it somewhere else."""
        self.socket = directory / 'switch.sock'
        self.control_socket = directory / 'control.sock'
        self._source = source
        self._enter = enter
        self._log = directory / 'switch.log'
        self._process = None

    @property
    def pid(self):
        return self._process.pid

    def start(self):
        self._process = Process(
            [*self._enter, BUILD / 'bin/stp-switchd', *self._source, '--socket', self.socket,
             '--control', self.control_socket], self._log)
        wait_until(self._answers_or_ended, 'stp-switchd answers')
        assert self._process.is_alive(), f'stp-switchd did not start: {self._log.read_text()}'

    def _answers_or_ended(self):
        if not self._process.is_alive():
            return True
        try:
            with self.control_client() as control:
                control.ping()
        except (FileNotFoundError, ConnectionRefusedError):
            return False
        return True

    def control(self, *arguments):
        """Runs stp-switchctl, which must succeed."""
        result = subprocess.run([BUILD / 'bin/stp-switchctl', '--control', self.control_socket, *arguments],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
                                timeout=GUARD_SECONDS)
        assert result.returncode == 0, f'stp-switchctl {arguments}: {result.stderr}'
        return result.stdout

    def control_client(self):
        return ControlClient(self.control_socket)

    def set(self, key, value):
        with self.control_client() as control:
            control.set(key, value)

    def fault(self, kind, **details):
        with self.control_client() as control:
            control.fault(kind, **details)

    def has_died(self):
        """Ended, and nobody asked for it here."""
        return self._process is not None and not self._process.is_alive()

    def reset(self):
        """As it was started, running and without faults, also when it is hung or was ended."""
        if self._process:
            self.resume()
            with self.control_client() as control:
                control.reset()
        else:
            self.start()

    def stop(self):
        if self._process:
            status = self._process.stop()
            self._process = None
            assert status == 0, f'stp-switchd ended with status {status}'

    def kill(self):
        if self._process:
            self._process.kill()
            self._process = None

    def read_log(self):
        return self._log.read_text(errors='replace') if self._log.exists() else ''

    def hang(self):
        """Stops the process where it is: its sockets stay, nothing answers."""
        self._process.signal(signal.SIGSTOP)

    def resume(self):
        self._process.signal(signal.SIGCONT)

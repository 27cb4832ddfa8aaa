"""The switch's control socket, as stp-switchctl uses it, without a process for each change."""

import json
import socket

ANSWER_SECONDS = 60


class ControlClient:
    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(ANSWER_SECONDS)
        try:
            self._socket.connect(str(path))
        except OSError:
            self._socket.close()
            raise
        self._answers = self._socket.makefile('r', encoding='utf-8')

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._answers.close()
        self._socket.close()

    def _order(self, **request):
        self._socket.sendall(f'{json.dumps(request)}\n'.encode())
        answer = self._answers.readline()
        assert answer == '{"ok":true}\n', f'{request}: {answer or "no answer"}'

    def ping(self):
        self._order(op='ping')

    def set(self, key, value):
        self._order(op='set', key=key, value=value)

    def fault(self, kind, **details):
        """`details`: `count`, and of a delay `delay_ms`."""
        self._order(op='fault', fault=kind, **details)

    def reset(self):
        self._order(op='reset')

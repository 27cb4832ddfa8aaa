"""The switch's control socket, for changes in quick succession: stp-switchctl costs a process for each."""

import json
import socket

ANSWER_SECONDS = 60


class ControlClient:
    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(ANSWER_SECONDS)
        self._socket.connect(str(path))
        self._answers = self._socket.makefile('r', encoding='utf-8')

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._answers.close()
        self._socket.close()

    def set(self, key, value):
        request = json.dumps({'op': 'set', 'key': key, 'value': value})
        self._socket.sendall(f'{request}\n'.encode())
        answer = json.loads(self._answers.readline())
        assert answer == {'ok': True}, f'{key} = {value!r}: {answer}'

"""An agent whose questions to the switch are counted: they pass through a relay on their way."""

import os
import socket
import struct
import threading

from .agent import Agent

# Of a message (platform/wire/message.h): magic, version, type, length, sequence.
HEADER = struct.Struct('=IHHII')
REQUEST = 2
LARGEST_MESSAGE = 128 * 1024
MOST_DESCRIPTORS = 1


class Relay:
    """Listens in the switch's place, and passes every packet on."""

    def __init__(self, path, switch_socket):
        self.path = path
        self.count = 0
        self._switch_socket = str(switch_socket)
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self._listener.bind(str(path))
        self._listener.listen()
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                agent, _ = self._listener.accept()
            except OSError:
                return  # it was closed
            switch = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
            switch.connect(self._switch_socket)
            for ends in ((agent, switch), (switch, agent)):
                threading.Thread(target=self._pass_on, args=ends, daemon=True).start()

    def _pass_on(self, source, target):
        """Until one of them closes."""
        try:
            while True:
                packet, descriptors, _, _ = socket.recv_fds(source, LARGEST_MESSAGE, MOST_DESCRIPTORS)
                if not packet:
                    break
                self.count += HEADER.unpack_from(packet)[2] == REQUEST
                socket.send_fds(target, [packet], descriptors)
                for descriptor in descriptors:
                    os.close(descriptor)
            target.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def close(self):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()


class CountedAgent(Agent):
    def __init__(self, directory, switch_socket, **options):
        self._relay = Relay(directory / 'relay.sock', switch_socket)
        super().__init__(directory, self._relay.path, **options)

    def questions_of(self, action):
        """How many it asks during the action, and what that returns."""
        before = self._relay.count
        result = action()
        return self._relay.count - before, result

    def kill(self):
        super().kill()
        self._relay.close()

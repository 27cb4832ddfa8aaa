"""Who receives the agent's traps: the stock snmptrapd, or a thread that keeps up with thousands of them."""

import shutil
import socket
import tempfile
import threading
from pathlib import Path
from typing import NamedTuple

from .build import BRIDGE_ROOT, ROOT
from .oids import is_below
from .polling import wait_until
from .ports import PORT_ATTEMPTS, free_port
from .process import Process
from .raw_snmp import LARGEST_DATAGRAM, trap_bindings
from .snmp_tools import parse_binding, private_environment

TRAPS = ROOT + '.2.0'
BRIDGE_TRAPS = BRIDGE_ROOT + '.0'
SYS_UP_TIME, SNMP_TRAP_OID = '.1.3.6.1.2.1.1.3.0', '.1.3.6.1.6.3.1.1.4.1.0'
SEPARATOR = '|'


class Trap(NamedTuple):
    oid: str
    bindings: list

    def is_of(self, bridge_port):
        """As its first binding says."""
        return bool(self.bindings) and self.bindings[0].oid.endswith(f'.{bridge_port}')


def make_trap(bindings):
    """The modules' own: its OID, and what follows; None for one that the agent sent of its own accord."""
    up_time, trap_oid, *own = bindings
    assert (up_time.oid, up_time.kind) == (SYS_UP_TIME, 'Timeticks'), bindings
    assert (trap_oid.oid, trap_oid.kind) == (SNMP_TRAP_OID, 'OID'), bindings
    is_ours = is_below(trap_oid.value, TRAPS) or is_below(trap_oid.value, BRIDGE_TRAPS)
    return Trap(trap_oid.value, own) if is_ours else None


class TrapReceiver:
    """A private snmptrapd on a loopback port."""

    def __init__(self):
        self._directory = Path(tempfile.mkdtemp(prefix='stp-e2e-traps-'))
        self._log = self._directory / 'snmptrapd.log'
        self._port = self._process = None
        self._length_read = 0
        self._traps = []
        (self._directory / 'snmptrapd.conf').write_text('authCommunity log public\n', encoding='ascii')

    @property
    def endpoint(self):
        return f'127.0.0.1:{self._port}'

    def __enter__(self):
        environment = private_environment(self._directory, self._directory / 'persistent')
        for _ in range(PORT_ATTEMPTS):
            self._port = free_port()
            self._process = Process(
                ['/usr/sbin/snmptrapd', '-f', '-Lf', self._log,
                 '-C', '-c', self._directory / 'snmptrapd.conf',
                 '-On', '-Oe', '-Ox', '-F', f'%V{SEPARATOR}%v\n',
                 f'udp:{self.endpoint}'],
                self._directory / 'snmptrapd.output', environment)
            wait_until(lambda: not self._process.is_alive() or 'NET-SNMP version' in self._read_log(),
                       'snmptrapd listens or gives up')
            if self._process.is_alive():
                return self
            self._log.unlink(missing_ok=True)
        raise AssertionError(f'snmptrapd did not start:\n{self._read_log()}')

    def __exit__(self, *_):
        self._process.kill()
        print(f'--- log of snmptrapd\n{self._read_log()}')
        shutil.rmtree(self._directory)

    def _read_log(self):
        return self._log.read_text(errors='replace') if self._log.exists() else ''

    def received(self):
        """The modules' traps so far, in the order in which they came."""
        with open(self._log, 'rb') as log:
            log.seek(self._length_read)
            # The last line may be incomplete.
            whole_lines = log.read().rpartition(b'\n')
        self._length_read += len(whole_lines[0] + whole_lines[1])
        traps = [make_trap([parse_binding(binding) for binding in line.split(SEPARATOR)])
                 for line in whole_lines[0].decode().split('\n') if line.startswith(SYS_UP_TIME)]
        self._traps += [trap for trap in traps if trap]
        return list(self._traps)


class TrapCollector:
    """A socket with a large buffer and a thread that does nothing but empty it."""

    # More than any storm of these tests fills; who may not have so much gets what the kernel gives.
    WANTED_BUFFER = 1 << 26
    SO_RCVBUFFORCE = 33  # <asm-generic/socket.h>
    # What a datagram of this size takes of the buffer, generously: the kernel counts its own structures, too.
    BUFFER_OF_A_TRAP = 2048

    def __init__(self):
        self._datagrams = []
        self._decoded = []
        self._ending = False
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._enlarge_buffer()
        self._socket.bind(('127.0.0.1', 0))
        self._thread = threading.Thread(target=self._receive)

    def _enlarge_buffer(self):
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, self.WANTED_BUFFER)
        try:
            self._socket.setsockopt(socket.SOL_SOCKET, self.SO_RCVBUFFORCE, self.WANTED_BUFFER)
        except PermissionError:
            pass  # only root may exceed the machine's limit

    @property
    def endpoint(self):
        return f'127.0.0.1:{self._socket.getsockname()[1]}'

    @property
    def capacity(self):
        """How many traps may wait without one being lost."""
        return self._socket.getsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF) // self.BUFFER_OF_A_TRAP

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._ending = True
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as waker:
            waker.sendto(b'', self._socket.getsockname())
        self._thread.join()
        self._socket.close()

    def _receive(self):
        while not self._ending:
            datagram = self._socket.recv(LARGEST_DATAGRAM)
            if datagram:
                self._datagrams.append(datagram)

    def received(self):
        """The modules' traps so far, in the order in which they came."""
        for datagram in self._datagrams[len(self._decoded):]:
            self._decoded.append(make_trap(trap_bindings(datagram)))
        return [trap for trap in self._decoded if trap]

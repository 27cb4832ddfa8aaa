"""Ports on loopback for servers that are told where to listen."""

import random
import socket
from pathlib import Path

LOWEST, HIGHEST = 16384, 65535
# How often to try one when somebody who is no test takes it first.
PORT_ATTEMPTS = 10
FIRST_EPHEMERAL = int(Path('/proc/sys/net/ipv4/ip_local_port_range').read_text(encoding='ascii').split()[0])
# Without room below what the system gives to clients, they may come in between: whoever listens tries again.
CANDIDATES = range(LOWEST, FIRST_EPHEMERAL) or range(LOWEST, HIGHEST + 1)

# As long as this process lives, nobody else who asks here gets these.
_reservations = []


def free_port(kind=socket.SOCK_DGRAM, count=1):
    """One that no other test has or gets, whichever runs at the same time, and that the system gives to no
    client's socket. Who is no test may still take it before the server does. With `count`, the first of so many
    in a row."""
    for _ in CANDIDATES:
        first = random.choice(CANDIDATES[:1 - count or None])
        if all(_reserve(port) and _is_free(port, kind) for port in range(first, first + count)):
            return first
    raise AssertionError('found no free port')


def _reserve(port):
    """An abstract socket's name belongs to one process at a time, and goes with it."""
    reservation = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    try:
        reservation.bind(f'\0stp-e2e-port-{port}')
    except OSError:
        reservation.close()
        return False
    _reservations.append(reservation)
    return True


def _is_free(port, kind):
    with socket.socket(socket.AF_INET, kind) as probe:
        try:
            probe.bind(('127.0.0.1', port))
        except OSError:
            return False
    return True

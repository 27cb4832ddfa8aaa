"""The tests' own ports: two that run at the same time never get the same."""

import socket
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

import pytest
from harness.ports import LOWEST, free_port

CLIENTS = Path('/proc/sys/net/ipv4/ip_local_port_range')
FIRST_OF_CLIENTS = int(CLIENTS.read_text(encoding='ascii').split()[0])

TESTS = 4
PORTS_OF_A_TEST = 200


def some_ports(_):
    return [free_port() for _ in range(PORTS_OF_A_TEST)]


def test_processes_get_different_ports():
    """The processes stay until all have chosen."""
    with ProcessPoolExecutor(TESTS) as processes:
        ports = [port for some in processes.map(some_ports, range(TESTS)) for port in some]
    assert len(set(ports)) == len(ports) == TESTS * PORTS_OF_A_TEST


@pytest.mark.skipif(FIRST_OF_CLIENTS <= LOWEST, reason='the system gives clients all ports')
def test_no_client_is_given_a_port_of_the_tests():
    assert max(some_ports(None)) < FIRST_OF_CLIENTS


@pytest.mark.parametrize('kind', [socket.SOCK_DGRAM, socket.SOCK_STREAM], ids=['udp', 'tcp'])
def test_port_can_be_listened_at(kind):
    with socket.socket(socket.AF_INET, kind) as server:
        server.bind(('127.0.0.1', free_port(kind)))

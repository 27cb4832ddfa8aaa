"""The tests' own ports: two that run at the same time never get the same."""

import socket
from multiprocessing import Barrier, Process, Queue
from pathlib import Path

import pytest
from harness.polling import GUARD_SECONDS
from harness.ports import LOWEST, free_port

CLIENTS = Path('/proc/sys/net/ipv4/ip_local_port_range')
FIRST_OF_CLIENTS = int(CLIENTS.read_text(encoding='ascii').split()[0])

TESTS = 4
PORTS_OF_A_TEST = 200


def some_ports():
    return [free_port() for _ in range(PORTS_OF_A_TEST)]


def choose_beside_others(meeting, chosen):
    """Nobody chooses before all are there, and nobody's choice ends before all have chosen."""
    meeting.wait(GUARD_SECONDS)
    ports = some_ports()
    meeting.wait(GUARD_SECONDS)
    chosen.put(ports)


def test_processes_get_different_ports():
    meeting, chosen = Barrier(TESTS), Queue()
    processes = [Process(target=choose_beside_others, args=(meeting, chosen), daemon=True) for _ in range(TESTS)]
    for process in processes:
        process.start()
    ports = [port for _ in processes for port in chosen.get(timeout=GUARD_SECONDS)]
    for process in processes:
        process.join()
    assert len(set(ports)) == len(ports) == TESTS * PORTS_OF_A_TEST


@pytest.mark.skipif(FIRST_OF_CLIENTS <= LOWEST, reason='the system gives clients all ports')
def test_no_client_is_given_a_port_of_the_tests():
    assert max(some_ports()) < FIRST_OF_CLIENTS


@pytest.mark.parametrize('kind', [socket.SOCK_DGRAM, socket.SOCK_STREAM], ids=['udp', 'tcp'])
def test_port_can_be_listened_at(kind):
    with socket.socket(socket.AF_INET, kind) as server:
        server.bind(('127.0.0.1', free_port(kind)))

"""Trouble of every kind in random order, for as long as a soak lasts, and what the processes have used of the machine."""

import operator
import os
import random
import time
from contextlib import contextmanager
from pathlib import Path

from .build import PRELOAD, THOROUGH
from .polling import wait_until
from .repetition import Repetition
from .walking import walk_below

SOAK_SECONDS = 300 if THOROUGH else 10
# What an agent's heap moves by without a leak: buffers for as many requests as wait at once.
MEMORY_LIMIT_KIB = 4096
# What snmpd itself, with whatever modules, keeps of each SIGHUP: 14 KiB, measured over hundreds of them, and some more.
MEMORY_OF_A_RELOAD_KIB = 20
# Until what is kept once, such as the heap's own room, is there.
WARM_UP_ROUNDS = 5
# Of each trouble some lines tell at both ends; each change of the switch is one.
LOG_LIMIT_OF_A_TROUBLE = 1024
# A manager's patience is longer than the agent is ever held up by a reload.
IMPATIENT_SECONDS = 5
TRIES = 6
# Between its walks, so that managers leave the machine to what they ask.
PAUSE_SECONDS = 0.02
# As /proc has them.
INODE_FIELD, SOCKET = 9, 'socket:['


def soak(troubles, calm, seed):
    """Rounds in which each trouble comes once, and behind which `calm` brings everything to rest and checks it. Returns
    how many there were."""
    choice = random.Random(seed)
    end = time.monotonic() + SOAK_SECONDS
    rounds = 0
    while rounds == 0 or time.monotonic() < end:
        for trouble in choice.sample(troubles, len(troubles)):
            trouble(choice)
        calm()
        rounds += 1
    return rounds


@contextmanager
def manager(lab, root, repetitions=None):
    """Walks meanwhile by GETNEXT, or by GETBULK, and is always answered."""
    def walk(client):
        walk_below(client, root, repetitions, TRIES)
        time.sleep(PAUSE_SECONDS)

    with lab.raw_client(answer_seconds=IMPATIENT_SECONDS) as client, Repetition(lambda: walk(client)) as walks:
        yield walks


def count_descriptors(pid):
    """Without UDP sockets: snmpd leaves that of a trap sink open at each SIGHUP, with whatever modules."""
    process = Path(f'/proc/{pid}')
    udp = {line.split()[INODE_FIELD] for line in (process / 'net/udp').read_text(encoding='ascii').splitlines()}
    return sum(not is_socket_of(link, udp) for link in (process / 'fd').iterdir())


def is_socket_of(link, inodes):
    try:
        name = os.readlink(link)
    except FileNotFoundError:
        return False  # it has been closed meanwhile
    return name.startswith(SOCKET) and name[len(SOCKET):-1] in inodes


class Usage:
    """Of one agent, and of the switch that it asks, as it is when all is at rest. It begins where it is made."""

    def __init__(self, lab):
        self._lab = lab
        self._descriptors = self._descriptors_now()
        self._logged = self._log_size()
        self._memory = [self._memory_now()]

    def _descriptors_now(self):
        """Also of a switch process that has taken the place of another."""
        return [count_descriptors(process.pid) for process in (self._lab.agent, self._lab.switch)]

    def _memory_now(self):
        """Resident, and without what reloads may have cost."""
        resident = self._lab.agent.resident_kib()
        return resident, resident - MEMORY_OF_A_RELOAD_KIB * self._lab.agent.reloads()

    def _log_size(self):
        return len(self._lab.agent.read_logs()) + len(self._lab.switch.read_log())

    def check_at_rest(self):
        # The switch sees a moment later that somebody has hung up.
        wait_until(lambda: all(map(operator.le, self._descriptors_now(), self._descriptors)),
                   f'agent and switch have {self._descriptors} descriptors again')
        self._memory.append(self._memory_now())

    def check_growth(self, troubles):
        """After so many of them. Memory is not judged under the sanitizers, which keep records of their own."""
        assert self._log_size() - self._logged < LOG_LIMIT_OF_A_TROUBLE * troubles
        if not PRELOAD and len(self._memory) > WARM_UP_ROUNDS:
            (_, first), (_, last) = self._memory[WARM_UP_ROUNDS], self._memory[-1]
            assert last - first < MEMORY_LIMIT_KIB, self.figures()

    def figures(self):
        (first, _), (last, _) = self._memory[0], self._memory[-1]
        agent, switch = self._descriptors
        return (f'agent {first} to {last} KiB in {self._lab.agent.reloads()} reloads, {agent} descriptors, switch {switch}; '
                f'{self._log_size() - self._logged} octets of log')

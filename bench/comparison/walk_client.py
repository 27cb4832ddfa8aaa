"""The manager that walks, a program of its own."""

import re
import subprocess
from contextlib import ExitStack
from typing import NamedTuple

from harness.build import BUILD
from harness.process import die_with_parent
from harness.snmp_tools import private_environment

from .ending import held
from .failure import ComparisonError

PROGRAM = BUILD / 'bin/bench_walk_client'
TIMING = re.compile(r'walks (\d+) rows (\d+) nanoseconds (\d+) fastest (\d+)\n')
NANOSECONDS = 1e9
NANOSECONDS_IN_MICROSECOND = 1e3

BULK_REPETITIONS = 50
# How a subtree is walked: by GETBULK with so many repetitions, or by GETNEXT.
GETBULK, GETNEXT = f'GETBULK {BULK_REPETITIONS}', 'GETNEXT'
REPETITIONS = {GETBULK: BULK_REPETITIONS, GETNEXT: 0}


class Timing(NamedTuple):
    walks: int
    rows: int  # of one walk
    nanoseconds: int  # of all
    fastest_nanoseconds: int
    cpu_nanoseconds: int = 0  # of the agent and what is behind it

    @property
    def seconds(self):
        return self.nanoseconds / NANOSECONDS

    @property
    def units(self):
        """Rows; of a table without rows, walks."""
        return self.walks * (self.rows or 1)

    @property
    def rate(self):
        """In a second."""
        return self.units / self.seconds

    @property
    def fastest_rate(self):
        """Of the one walk that was disturbed least."""
        return (self.rows or 1) * NANOSECONDS / self.fastest_nanoseconds

    @property
    def cpu_microseconds(self):
        """For each of them."""
        return self.cpu_nanoseconds / NANOSECONDS_IN_MICROSECOND / self.units


class WalkClient:
    def __init__(self, directory):
        self._environment = private_environment(directory, directory)

    def _run(self, *arguments):
        with ExitStack() as end:
            with held():
                client = end.enter_context(subprocess.Popen(
                    [PROGRAM, *map(str, arguments)], text=True, env=self._environment, stdin=subprocess.DEVNULL,
                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, preexec_fn=die_with_parent))
                end.callback(client.kill)
            rows, errors = client.communicate()
        if client.returncode != 0:
            raise ComparisonError(errors.strip() or f'{PROGRAM.name} ended with status {client.returncode}')
        return rows

    def rows(self, endpoint, oid, how=GETBULK):
        """The rows of one walk: lines of OID, type and value."""
        return self._run('-p', '-r', REPETITIONS[how], endpoint, oid).splitlines()

    def measure(self, endpoint, oid, how, seconds=0):
        return Timing(*map(int, TIMING.fullmatch(
            self._run('-s', seconds, '-r', REPETITIONS[how], endpoint, oid)).groups()))

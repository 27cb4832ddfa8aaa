"""A switch and the agents that serve it: the module, and side by side with it the copies that it is compared with."""

import tempfile
from contextlib import ExitStack, contextmanager
from itertools import zip_longest
from pathlib import Path

from harness.agent import MODULE_CONFIGURATION, Agent
from harness.build import BUILD
from harness.polling import wait_until
from harness.process import Process
from harness.snmp_tools import private_environment
from harness.switch import Switch, playing

from .ending import held
from .failure import ComparisonError
from .walk_client import GETBULK, GETNEXT, WalkClient

AGENTS = MODULE, CEILING, AGENTX = 'module', 'ceiling', 'AgentX copy'
CEILING_PLUGIN = BUILD / 'lib/bench_ceiling.so'
AGENTX_COPY = BUILD / 'bin/bench_agentx_copy'


class Stand:
    def __init__(self, directory, scenario):
        self._directory = directory
        self._running = []  # what has to end, in the order of its start
        self.agents = {}
        self._behind = {}  # which process an agent asks
        self.client = WalkClient(directory)
        (directory / 'switch.toml').write_text(scenario, encoding='ascii')
        self.switch = Switch(directory, playing(directory / 'switch.toml'))

    def start_switch(self):
        self._running.append(self.switch)
        with held():
            self.switch.start()

    def start_module(self, **options):
        self._behind[MODULE] = self.switch
        return self._start_agent(MODULE, MODULE_CONFIGURATION, **options)

    def start_copies(self, rows):
        """The ceiling and the AgentX copy, with these rows."""
        file = self._directory / 'rows'
        file.write_text(''.join(f'{row}\n' for row in rows), encoding='ascii')
        self._start_agent(CEILING, f'dlmod bench_ceiling {CEILING_PLUGIN}\n', environment={'BENCH_ROWS': str(file)})
        socket = self._directory / 'agentx.sock'
        self._start_agent(AGENTX, f'master agentx\nagentXSocket {socket}\n')
        self._start_subagent(socket, file)

    def _start_agent(self, name, serves, **options):
        directory = self._directory / name.replace(' ', '-')
        directory.mkdir()
        agent = Agent(directory, self.switch.socket, with_probe=False, serves=serves, **options)
        self._running.append(agent)
        with held():
            agent.start()
        self.agents[name] = agent
        return agent

    def _start_subagent(self, socket, rows):
        log = self._directory / 'agentx_copy.log'
        with held():
            environment = private_environment(self._directory, self._directory)
            subagent = Process([AGENTX_COPY, socket, rows], log, environment)
            self._running.append(subagent)
        wait_until(lambda: not subagent.is_alive() or 'ready' in log.read_text(), 'the AgentX copy is ready')
        self._behind[AGENTX] = subagent
        if not subagent.is_alive():
            raise ComparisonError(f'the AgentX copy did not start: {log.read_text()}')

    def rows(self, name, oid, how=GETBULK):
        return self.client.rows(self.agents[name].endpoint, oid, how)

    def measure(self, name, oid, how, seconds):
        before = self._cpu_nanoseconds(name)
        timing = self.client.measure(self.agents[name].endpoint, oid, how, seconds)
        return timing._replace(cpu_nanoseconds=self._cpu_nanoseconds(name) - before)

    def _cpu_nanoseconds(self, name):
        processes = [self.agents[name], *([self._behind[name]] if name in self._behind else [])]
        return sum(cpu_nanoseconds(process.pid) for process in processes)

    def copy_module(self, oid, ways=(GETBULK, GETNEXT)):
        """Starts the copies with what the module serves below the OID, and makes sure that all serve the same."""
        rows = self.rows(MODULE, oid)
        if not rows:
            raise ComparisonError(f'the module serves nothing below {oid}')
        self.start_copies(rows)
        self.check_agreement(oid, ways)

    def check_agreement(self, oid, ways=(GETBULK, GETNEXT)):
        """Walked in each of these ways, every agent serves what the module serves by the first of them."""
        expected = self.rows(MODULE, oid, ways[0])
        for name in self.agents:
            for how in ways:
                check_same(name, how, self.rows(name, oid, how), expected)

    def kill(self):
        for process in reversed(self._running):
            process.kill()
        self._running.clear()

    def read_logs(self):
        return ''.join(log.read_text(errors='replace') for log in sorted(self._directory.rglob('*.log')))


def check_same(name, how, rows, expected):
    for number, (row, wanted) in enumerate(zip_longest(rows, expected), start=1):
        if row != wanted:
            raise ComparisonError(f'the agents do not serve the same: variable {number} of a walk by {how} is '
                                  f'{wanted or "none"} of the {MODULE} and {row or "none"} of the {name}')


def cpu_nanoseconds(pid):
    """How long its one thread has run."""
    return int(Path(f'/proc/{pid}/schedstat').read_text(encoding='ascii').split()[0])


@contextmanager
def stand_with(scenario):
    """Its switch runs. Whatever happens, nothing of it stays."""
    end = ExitStack()
    try:
        with held():
            directory = Path(end.enter_context(tempfile.TemporaryDirectory(prefix='stp-bench-')))
        stand = Stand(directory, scenario)
        end.callback(stand.kill)
        stand.start_switch()
        yield stand
    finally:
        with held():
            end.close()

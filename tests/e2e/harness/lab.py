"""A switch, an agent that serves it, and the tools to ask it: what a test works with."""

import shutil
import tempfile
from contextlib import contextmanager
from pathlib import Path

from .agent import SHORT_DEADLINE_MS, Agent
from .build import ROOT, SCENARIOS
from .polling import wait_until
from .raw_snmp import RawClient
from .snmp_tools import READER, Failure, SnmpTools
from .switch import Switch, playing
from .traps import SYS_UP_TIME


class Lab:
    def __init__(self, switch, agent, directory):
        self.switch = switch
        self.agent = agent
        self._directory = directory
        self.snmp = self._tools()

    def _tools(self):
        return SnmpTools(self.agent.endpoint, self._directory, self.agent.inside)

    def raw_client(self, community='public', **options):
        return RawClient(self.agent.endpoint, community, **options)

    def reset(self):
        """As it was started: the switch in its scenario, the agent with a module that remembers nothing."""
        assert self.agent.is_alive(), 'snmpd had died in an earlier test'
        assert not self.switch.has_died(), 'stp-switchd had died in an earlier test'
        self.switch.reset()
        self.agent.resume()
        self.agent.hang_up()

    def restart_agent(self):
        """Which may then have another port."""
        self.agent.stop()
        self.agent.start()
        self.snmp = self._tools()
        # Its log may still be that of the one before.
        self.wait_for_context(READER, SYS_UP_TIME)

    def check(self):
        """What went wrong since the last check is the fault of the test that ends here."""
        self.agent.check_logs()
        assert self.agent.is_alive(), f'snmpd has died:\n{self.agent.read_logs()}'
        assert not self.switch.has_died(), f'stp-switchd has died:\n{self.switch.read_log()}'

    def wait_for(self, oid, value):
        """Asks until the agent serves this value, as it must after an outage."""
        wait_until(lambda: self.snmp.get(oid)[0].value == value, f'{oid} is served as {value!r}')

    def wait_for_context(self, who, oid):
        """Until it is there, which is soon after the agent's start: what is asked in others is dropped, so nothing is
        waited for long."""
        impatient = [*who, '-t', '1']
        wait_until(lambda: not isinstance(self.snmp.get(oid, who=impatient), Failure), 'the context is there')

    def wait_for_walk(self, expected):
        """Walks until everything is there. An agent that gave up on a slow reply leaves objects out, no more."""
        def all_is_served():
            walked = self.snmp.walk(ROOT)
            assert walked == [binding for binding in expected if binding in walked]
            return walked == expected
        wait_until(all_is_served, 'a walk shows everything')


def run_lab(file, **options):
    return run_lab_of(playing(SCENARIOS / file), **options)


@contextmanager
def run_lab_of(source, enter=(), agent_class=Agent, **agent_options):
    # Not below pytest's own folders: the path of a local socket holds 107 bytes.
    directory = Path(tempfile.mkdtemp(prefix='stp-e2e-'))
    switch = Switch(directory, source, enter)
    try:
        agent = agent_class(directory, switch.socket, **agent_options)
    except BaseException:
        shutil.rmtree(directory)
        raise
    try:
        switch.start()
        agent.start()
        yield Lab(switch, agent, directory)
        agent.stop()
        switch.stop()
        agent.check_logs()
    finally:
        agent.kill()
        switch.kill()
        print(f'--- log of snmpd\n{agent.read_logs()}\n--- log of stp-switchd\n{switch.read_log()}')
        shutil.rmtree(directory)


def run_impatient_lab(file):
    """For switches that fall silent: the agent gives up on them soon."""
    return run_lab(file, deadline_ms=SHORT_DEADLINE_MS)

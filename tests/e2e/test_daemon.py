"""snmpd in the background, as an init system may start it: the module is loaded before the agent forks."""

import golden
import pytest
from harness.agent import DaemonAgent
from harness.build import ROOT
from harness.lab import run_lab


@pytest.fixture(name='lab')
def fixture_lab():
    with run_lab('mst.toml', agent_class=DaemonAgent) as lab:
        yield lab


def test_daemon_serves_every_object(lab):
    assert lab.snmp.walk(ROOT) == golden.MST


def test_daemon_serves_again_after_a_hang_up_and_after_a_restart_of_the_switch(lab):
    assert lab.snmp.walk(ROOT) == golden.MST
    lab.agent.hang_up()
    assert lab.snmp.walk(ROOT) == golden.MST
    lab.switch.stop()
    assert lab.snmp.walk(ROOT) == golden.CONSTANTS
    lab.switch.start()
    lab.wait_for(f'{ROOT}.1.14.8.0', 25)
    assert lab.snmp.walk(ROOT) == golden.MST

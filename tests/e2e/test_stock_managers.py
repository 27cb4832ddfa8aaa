"""What stock managers and independent SNMP stacks read of the two example switches."""

import pytest
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import PROJECT
from harness.lab import run_lab_of
from harness.librenms import PROTOCOL
from harness.managers import (CRITICAL, OK, install_net_snmp, need_centreon, need_snmp_info, read_with_centreon,
                              read_with_net_snmp, read_with_snmp_info, with_interfaces)
from harness.snmp_tools import v3
from harness.switch import playing

OF_MST = {2: 'Ethernet1/1', 130: 'Ethernet1/2', 131: 'Ethernet1/3', 132: 'Ethernet1/4', 138: 'Ethernet1/10',
          139: 'Ethernet1/11', 140: 'Ethernet1/12', 141: 'Ethernet1/13', 142: 'Ethernet1/14', 143: 'Ethernet1/15',
          4097: 'port-channel1', 4098: 'port-channel2'}
OF_RAPID_PVST = {129: 'Ethernet1', 130: 'Ethernet2', 131: 'Ethernet3', 135: 'Ethernet7', 136: 'Ethernet8',
                 137: 'Ethernet9', 138: 'Ethernet10', 139: 'Ethernet11', 4097: 'port-channel1', 4098: 'port-channel2'}


@pytest.fixture(name='mst', scope='module')
def fixture_mst():
    with run_lab_of(playing(PROJECT / 'scenarios/mst-small.toml'), with_probe=False,
                    serves=BRIDGE_CONFIGURATION + with_interfaces(OF_MST, down=['Ethernet1/4'])) as lab:
        yield lab


@pytest.fixture(name='rapid_pvst', scope='module')
def fixture_rapid_pvst():
    with run_lab_of(playing(PROJECT / 'scenarios/rapid-pvst-small.toml'), with_probe=False,
                    serves=BRIDGE_CONFIGURATION + with_interfaces(OF_RAPID_PVST, down=['Ethernet3'])) as lab:
        lab.wait_for_context(v3('alice', 'vlan-20'), PROTOCOL)
        yield lab


def test_snmp_info(mst):
    need_snmp_info()
    assert read_with_snmp_info(mst.agent) == [
        'bridge: 00:00:5e:00:53:10',
        'type: transparent-only',
        'ports: 12',
        'protocol: ieee8021d',
        'priority: 32768',
        'root: 60:00:00:00:5e:00:53:2a',
        'root port: Ethernet1/11',
        'changes: 3',
        'Ethernet1/1: forwarding, admin edge true, edge true',
        'Ethernet1/2: blocking, admin edge false, edge false',
        'Ethernet1/3: forwarding, admin edge false, edge false',
        'Ethernet1/4: disabled, admin edge false, edge true',
        'Ethernet1/10: forwarding, admin edge false, edge false',
        'Ethernet1/11: forwarding, admin edge false, edge false',
        'Ethernet1/12: listening, admin edge false, edge false',
        'Ethernet1/13: blocking, admin edge false, edge false',
        'Ethernet1/14: forwarding, admin edge false, edge false',
        'Ethernet1/15: forwarding, admin edge false, edge false',
        'port-channel1: blocking, admin edge false, edge false',
        'port-channel2: forwarding, admin edge false, edge false',
    ]


def test_snmp_info_tells_what_is_at_the_other_end(mst):
    need_snmp_info()
    ends = read_with_snmp_info(mst.agent, show='ends')
    assert [line for line in ends if line.startswith(('Ethernet1/1:', 'Ethernet1/11:', 'port-channel1:'))] == [
        'Ethernet1/1: bridge 80:00:00:00:5e:00:53:10, port 80:81',
        'Ethernet1/11: bridge 60:00:00:00:5e:00:53:2a, port 80:01',
        'port-channel1: bridge 60:00:00:00:5e:00:53:2a, port 80:01']


def test_snmp_info_in_a_context(rapid_pvst):
    need_snmp_info()
    assert read_with_snmp_info(rapid_pvst.agent, context='vlan-20') == [
        'bridge: 00:00:5e:00:53:00',
        'type: transparent-only',
        'ports: 8',
        'protocol: ieee8021d',
        'priority: 32788',
        'root: 60:14:00:00:5e:00:53:01',
        'root port: port-channel1',
        'changes: 0',
        'Ethernet2: blocking, admin edge false, edge false',
        'Ethernet3: disabled, admin edge false, edge false',
        'Ethernet7: blocking, admin edge false, edge false',
        'Ethernet9: blocking, admin edge false, edge false',
        'Ethernet10: forwarding, admin edge false, edge false',
        'Ethernet11: blocking, admin edge false, edge false',
        'port-channel1: blocking, admin edge false, edge false',
        'port-channel2: forwarding, admin edge false, edge false',
    ]


def checked_port(name, index, state, status='up'):
    return (f"Port '{name}' spanning tree state is '{state}' [op status: '{status}'] [admin status: '{status}'] "
            f"[index: '{index}']")


def test_centreon(mst):
    """It complains of ports that block, and leaves out that without a link."""
    need_centreon()
    assert read_with_centreon(mst.agent) == (CRITICAL, 'CRITICAL', [
        checked_port('Ethernet1/1', 2, 'forwarding'),
        checked_port('Ethernet1/10', 138, 'forwarding'),
        checked_port('Ethernet1/11', 139, 'forwarding'),
        checked_port('Ethernet1/12', 140, 'listening'),
        checked_port('Ethernet1/13', 141, 'blocking'),
        checked_port('Ethernet1/14', 142, 'forwarding'),
        checked_port('Ethernet1/15', 143, 'forwarding'),
        checked_port('Ethernet1/2', 130, 'blocking'),
        checked_port('Ethernet1/3', 131, 'forwarding'),
        checked_port('port-channel1', 4097, 'blocking'),
        checked_port('port-channel2', 4098, 'forwarding')])


def test_centreon_in_a_context(rapid_pvst):
    """It asks for interfaces in the same context, where there are none: what it complains of must not depend on them."""
    need_centreon()
    states = {130: 'blocking', 135: 'blocking', 137: 'blocking', 138: 'forwarding', 139: 'blocking', 4097: 'blocking',
              4098: 'forwarding'}
    ports = [checked_port(f'{index}.unknown', index, state, 'notfound') for index, state in states.items()]
    assert read_with_centreon(rapid_pvst.agent, context='vlan-20') == (OK, 'OK', ports)
    assert read_with_centreon(rapid_pvst.agent, '--critical-status', '%{state} =~ /blocking|broken/',
                              context='vlan-20') == (CRITICAL, 'CRITICAL', ports)


@pytest.fixture(name='net_snmp', scope='module')
def fixture_net_snmp(tmp_path_factory):
    folder = tmp_path_factory.mktemp('net-snmp')
    install_net_snmp(folder)
    return folder


def test_net_snmp_of_npm(mst, net_snmp):
    assert read_with_net_snmp(net_snmp, mst.agent) == [
        'bridge: 00005e005310',
        'root: 600000005e00532a, cost 2000, by Ethernet1/11',
        'Ethernet1/1: forwarding',
        'Ethernet1/2: blocking',
        'Ethernet1/3: forwarding',
        'Ethernet1/4: disabled',
        'Ethernet1/10: forwarding',
        'Ethernet1/11: forwarding',
        'Ethernet1/12: listening',
        'Ethernet1/13: blocking',
        'Ethernet1/14: forwarding',
        'Ethernet1/15: forwarding',
        'port-channel1: blocking',
        'port-channel2: forwarding',
    ]


def test_net_snmp_of_npm_in_a_context(rapid_pvst, net_snmp):
    assert read_with_net_snmp(net_snmp, rapid_pvst.agent, 'vlan-20') == [
        'bridge: 00005e005300',
        'root: 601400005e005301, cost 10000, by port-channel1',
        'Ethernet2: blocking',
        'Ethernet3: disabled',
        'Ethernet7: blocking',
        'Ethernet9: blocking',
        'Ethernet10: forwarding',
        'Ethernet11: blocking',
        'port-channel1: blocking',
        'port-channel2: forwarding',
    ]

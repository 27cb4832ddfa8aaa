"""Open vSwitch with a bridge for each of several trees: VLANs of one switch, and topologies of IEEE 802.1D clause 17
with the results that are known for them."""

from contextlib import contextmanager
from typing import NamedTuple

import pytest
from bridge_lab.namespaces import connect
from bridge_lab.openvswitch import OpenVSwitch, OpenVSwitchBridge
from golden import PVST_VLAN_STATE, TRUE, bridge_port
from harness.polling import wait_until
from live_lab import (PORTS_OF_BRIDGE, column, run_lab, run_vlan_lab, wait_until_agreed, wait_until_vlans_agreed,
                      walked_roles)

PRIORITY = 32768


@pytest.fixture(name='switch', scope='module')
def fixture_switch(open_vswitch, namespaces, folder):
    """One for all tests of this file: their bridges have names of their own."""
    del open_vswitch
    switch = OpenVSwitch(namespaces.make(), folder)
    try:
        switch.start()
        yield switch
    finally:
        switch.stop()


class Topology(NamedTuple):
    """By bridge, as "0x111": the segments of its ports 1, 2 and so on, and their roles. A segment that only one port
    has is a LAN without other bridges."""
    segments: dict
    roles: dict


# As its active topology is in figure 17.5.
FIGURE_17_4 = Topology(
    {'111': 'abec', '222': 'abdf', '333': 'cdljhg', '444': 'efnmki', '555': 'gi', '666': 'hk', '777': 'jm',
     '888': 'lnoo'},
    {'111': 'DDDD', '222': 'RADD', '333': 'RADDDD', '444': 'RADDDD', '555': 'RA', '666': 'RA', '777': 'RA',
     '888': 'RADB'})
FIGURE_17_6 = Topology(
    {'111': 'abl', '222': 'bcd', '333': 'def', '444': 'fgh', '555': 'jhi', '666': 'ljk'},
    {'111': 'DDD', '222': 'RDD', '333': 'RDD', '444': 'RDA', '555': 'RDD', '666': 'RDD'})
FIGURE_17_7 = Topology(
    {'0aa': 'b', '111': 'abdfhgec', '222': 'ghjlnmki'},
    {'0aa': 'D', '111': 'DRDDDDDD', '222': 'ARDDDDDD'})
ROLES = {'D': 'designated', 'R': 'root', 'A': 'alternate', 'B': 'backup'}


@contextmanager
def built(switch, topology, prefix):
    """Its bridges, each under the number of a VLAN."""
    bridges, ends = {}, {}
    for number, (name, segments) in enumerate(topology.segments.items(), 1):
        bridge = bridges[number] = OpenVSwitchBridge(switch, f'{prefix}{name}')
        bridge.create(PRIORITY, f'02:00:00:00:{name[0]:0>2}:{name[1:]}')
        for port, segment in enumerate(segments, 1):
            ends.setdefault(segment, []).append((bridge, f'{prefix}{name}-{port}', port))
    cables = []
    try:
        for segment, attached in ends.items():
            # Where nobody else is, somebody has to be for the link to be up.
            cables.append(([device for _, device, _ in attached] + [f'{prefix}lan-{segment}'])[:2])
            connect(switch.namespace, cables[-1][0], switch.namespace, cables[-1][1])
        switch.vsctl(*[word for attached in ends.values() for bridge, device, port in attached for word in (
            '--', 'add-port', bridge.device, device, '--', 'set', 'port', device,
            f'other_config:rstp-port-num={port}')][1:])
        yield bridges
    finally:
        for bridge in bridges.values():
            bridge.delete()
        for device, _ in cables:
            switch.namespace.ip('link', 'del', device)


@pytest.mark.parametrize('topology', [FIGURE_17_4, FIGURE_17_6, FIGURE_17_7], ids=['17.4', '17.6', '17.7'])
def test_topologies_of_the_standard_have_the_roles_that_it_shows(switch, topology):
    expected = {
        (number, bridge_port((number - 1) * PORTS_OF_BRIDGE + port)): ROLES[role]
        for number, roles in enumerate(topology.roles.values(), 1) for port, role in enumerate(roles, 1)}
    with built(switch, topology, 't') as bridges, run_vlan_lab(switch, bridges) as lab:
        wait_until(lambda: walked_roles(lab) == expected, 'the walk shows them')
        assert wait_until_vlans_agreed(lab, bridges) == expected
        lab.check()


def test_each_vlan_has_the_tree_of_its_bridge(switch):
    """Two switches, two VLANs, two links for each: the root of each VLAN is another one."""
    mine = {vlan: OpenVSwitchBridge(switch, f'm{vlan}') for vlan in (10, 20)}
    theirs = {vlan: OpenVSwitchBridge(switch, f'o{vlan}') for vlan in (10, 20)}
    priorities = {10: (4096, 8192), 20: (8192, 4096)}
    for vlan in mine:
        for bridge, priority in zip((mine[vlan], theirs[vlan]), priorities[vlan]):
            bridge.create(priority)
        for number in (1, 2):
            devices = f'm{vlan}-{number}', f'o{vlan}-{number}'
            connect(switch.namespace, devices[0], switch.namespace, devices[1])
            mine[vlan].add_port(devices[0], f'other_config:rstp-port-num={number}')
            theirs[vlan].add_port(devices[1], f'other_config:rstp-port-num={number}')
    first, second = bridge_port(0), bridge_port(PORTS_OF_BRIDGE)
    expected = {(10, first + 1): 'designated', (10, first + 2): 'designated',
                (20, second + 1): 'root', (20, second + 2): 'alternate'}
    with run_vlan_lab(switch, mine) as lab:
        wait_until(lambda: walked_roles(lab) == expected, 'the walk shows both trees')
        assert wait_until_vlans_agreed(lab, mine) == expected
        assert column(lab.snmp.walk(PVST_VLAN_STATE), PVST_VLAN_STATE) == {(10,): TRUE, (20,): TRUE}
        mine[20].delete()
        wait_until(lambda: set(walked_roles(lab)) == {(10, first + 1), (10, first + 2)}, 'the second tree is gone')
        lab.check()
    for bridge in (mine[10], *theirs.values()):
        bridge.delete()


def test_bond_on_which_no_tree_runs_is_no_row(switch):
    """Open vSwitch runs none on bonds."""
    bridge = OpenVSwitchBridge(switch, 'b0')
    bridge.create(PRIORITY)
    for number in (1, 2, 3):
        connect(switch.namespace, f'b0-{number}', switch.namespace, f'b0-other-{number}')
    bridge.add_port('b0-1')
    switch.vsctl('add-bond', bridge.device, 'bond0', 'b0-2', 'b0-3')
    with run_lab(bridge) as lab:
        assert set(wait_until_agreed(lab, bridge).values()) == {'designated'}
        assert len(walked_roles(lab)) == 1
        assert "port 'bond0' is left out: it is a bond" in lab.switch.read_log()
        lab.check()
    bridge.delete()

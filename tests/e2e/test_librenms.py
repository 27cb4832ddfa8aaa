"""What LibreNMS shows of the two example switches, by the requests that it sends."""

import json
import re

import pytest
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import PROJECT
from harness.lab import run_lab_of
from harness.librenms import FIFTEEN, PROTOCOL, Port, discover, get, poll
from harness.snmp_tools import v1, v2c, v3
from harness.switch import playing

CORE, OWN_ID = '6000.00005e00532a', '8000.00005e005310'  # of the switch in MST


def run_example(name, *contexts):
    """Each context has a community of its own."""
    communities = ''.join(f'com2sec -Cn {context} reader 127.0.0.1 public@{context}\n' for context in contexts)
    return run_lab_of(playing(PROJECT / 'scenarios' / name), serves=BRIDGE_CONFIGURATION + communities, with_probe=False)


@pytest.fixture(name='shared_mst', scope='module')
def fixture_shared_mst():
    with run_example('mst-small.toml', 'mst-2') as lab:
        yield lab


@pytest.fixture(name='shared_rapid_pvst', scope='module')
def fixture_shared_rapid_pvst():
    with run_example('rapid-pvst-small.toml', '20') as lab:
        yield lab


@pytest.fixture(name='mst')
def fixture_mst(shared_mst):
    yield shared_mst
    shared_mst.check()


@pytest.fixture(name='rapid_pvst')
def fixture_rapid_pvst(shared_rapid_pvst):
    yield shared_rapid_pvst
    shared_rapid_pvst.check()


def interfaces(lab):
    """As the switch names them: the ports of an example are none of this machine's, and in no IF-MIB."""
    shown = json.loads(lab.switch.control('show', '--flat', '--json'))
    return {index: shown[key.replace('if_mib_index', 'name')] for key, index in shown.items()
            if key.endswith('.if_mib_index')}


def in_context(lab, name):
    who = v3('alice', name)
    lab.wait_for_context(who, PROTOCOL)
    return who


def states(tree):
    return {name: port.state for name, port in tree.ports.items()}


def test_the_tree_of_mst(mst):
    tree = discover(mst.snmp, interfaces(mst))
    assert (tree.address, tree.root, tree.root_cost, tree.root_port) == ('00005e005310', CORE, 2000, 139)
    # One has no link, four are members of port-channels, and one is routed.
    assert states(tree) == {
        'Ethernet1/1': 'forwarding', 'Ethernet1/2': 'blocking', 'Ethernet1/3': 'forwarding',
        'Ethernet1/10': 'forwarding', 'Ethernet1/11': 'forwarding', 'Ethernet1/12': 'listening',
        'Ethernet1/13': 'blocking', 'Ethernet1/14': 'forwarding', 'Ethernet1/15': 'forwarding',
        'port-channel1': 'blocking', 'port-channel2': 'forwarding'}
    assert tree.ports['Ethernet1/11'] == Port('forwarding', CORE, 1)
    assert tree.ports['Ethernet1/1'] == Port('forwarding', OWN_ID, 129)
    assert tree.ports['port-channel1'] == Port('blocking', CORE, 1)


@pytest.mark.parametrize('who', [v1('public'), v2c('public'), v3('alice')], ids=['v1', 'v2c', 'v3'])
def test_fifteen_objects_in_one_request(mst, who):
    address, protocol, priority, time, *others = get(mst.snmp, FIFTEEN, who)
    assert (address.hex(), protocol, priority) == ('00005e005310', 3, 32768)
    assert re.fullmatch(r'\(\d+\) \d+:\d\d:\d\d\.\d\d', time)
    changes, root, *numbers = others
    assert (changes, root.hex()) == (3, '600000005e00532a')
    # Root cost and port; maximum age, hello and hold time, forward delay; three of these for a bridge that is the root.
    assert numbers == [2000, 139, 2000, 200, 100, 1500, 2000, 200, 1500]


def test_polls(mst):
    assert poll(mst.snmp, [129, 132, 139, 4097]) == (3, CORE, {
        129: ('forwarding', 1, CORE, OWN_ID), 132: ('disabled', 2, CORE, OWN_ID), 139: ('forwarding', 1, CORE, CORE),
        4097: ('blocking', 1, CORE, CORE)})


def test_polls_see_a_link_that_is_pulled(mst):
    mst.switch.set('port.11.link', 'down')
    try:
        _changes, _root, ports = poll(mst.snmp, [139])
        assert ports[139][:2] == ('disabled', 2)
        assert 'Ethernet1/11' not in discover(mst.snmp, interfaces(mst)).ports
    finally:
        mst.switch.set('port.11.link', 'up')


def test_an_instance_of_mst(mst):
    tree = discover(mst.snmp, interfaces(mst), in_context(mst, 'mst-2'))
    assert (tree.root, tree.root_cost, tree.root_port) == ('6002.00005e00532a', 10000, 4097)
    assert states(tree) == {
        'Ethernet1/3': 'blocking', 'Ethernet1/10': 'blocking', 'Ethernet1/12': 'learning', 'Ethernet1/13': 'blocking',
        'port-channel1': 'forwarding', 'port-channel2': 'blocking'}
    assert discover(mst.snmp, interfaces(mst), v2c('public@mst-2')) == tree


def test_no_interface_no_port(mst):
    """As where the agent's own IF-MIB has none of the switch's ports."""
    tree = discover(mst.snmp, {})
    assert (tree.root, tree.ports) == (CORE, {})


def test_the_default_tree_of_rapid_pvst(rapid_pvst):
    """Of VLAN 1."""
    tree = discover(rapid_pvst.snmp, interfaces(rapid_pvst))
    assert (tree.root, tree.root_cost, tree.root_port) == ('6001.00005e005301', 200000, 135)
    assert states(tree) == {
        'Ethernet1': 'blocking', 'Ethernet2': 'forwarding', 'Ethernet7': 'forwarding', 'Ethernet9': 'blocking',
        'Ethernet10': 'forwarding', 'Ethernet11': 'blocking', 'port-channel1': 'blocking'}
    assert discover(rapid_pvst.snmp, interfaces(rapid_pvst), in_context(rapid_pvst, 'vlan-1')) == tree


def test_trees_of_vlans(rapid_pvst):
    """VLAN 10 has another root and other ports: the switch itself, whose uplink hears nothing there."""
    tree = discover(rapid_pvst.snmp, interfaces(rapid_pvst), in_context(rapid_pvst, 'vlan-20'))
    assert (tree.root, tree.root_cost, tree.root_port) == ('6014.00005e005301', 10000, 4097)
    assert states(tree) == {
        'Ethernet2': 'blocking', 'Ethernet7': 'blocking', 'Ethernet9': 'blocking', 'Ethernet10': 'forwarding',
        'Ethernet11': 'blocking', 'port-channel1': 'blocking', 'port-channel2': 'forwarding'}
    assert discover(rapid_pvst.snmp, interfaces(rapid_pvst), v2c('public@20')) == tree
    tree = discover(rapid_pvst.snmp, interfaces(rapid_pvst), in_context(rapid_pvst, 'vlan-10'))
    assert (tree.root, tree.root_cost, tree.root_port) == ('800a.00005e005300', 0, 0)
    assert states(tree) == {'Ethernet1': 'blocking', 'Ethernet8': 'forwarding', 'port-channel1': 'blocking',
                            'port-channel2': 'blocking'}


def test_polls_of_a_vlan(rapid_pvst):
    core = '6014.00005e005301'
    assert poll(rapid_pvst.snmp, [138, 4097], in_context(rapid_pvst, 'vlan-20')) == (0, core, {
        138: ('forwarding', 1, core, '8014.00005e005300'), 4097: ('blocking', 1, core, core)})

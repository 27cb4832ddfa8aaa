"""Three Open vSwitches in a ring: the walk of each is what it says itself, while links, ports, bridges and its own
programs come and go."""

import re
import signal
from contextlib import ExitStack

import pytest
from golden import bridge_port
from harness.polling import wait_until
from live_lab import CIST, run_lab, seconds_behind, shown, told_roles, wait_until_agreed, walked_roles, walking

MANY_PORTS = 40


@pytest.fixture(name='shared_labs', scope='module')
def fixture_shared_labs(openvswitch_ring):
    with ExitStack() as stack:
        yield {name: stack.enter_context(run_lab(openvswitch_ring.bridge(name))) for name in openvswitch_ring.names}


@pytest.fixture(name='ring')
def fixture_ring(openvswitch_ring):
    """As it was made."""
    openvswitch_ring.wait_until_one_blocks()
    return openvswitch_ring


AS_MADE = {
    'a': {(CIST, bridge_port(1)): 'designated', (CIST, bridge_port(2)): 'designated'},
    'b': {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'designated'},
    'c': {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'alternate'},
}


def check_agreement(labs, ring):
    return {name: wait_until_agreed(labs[name], ring.bridge(name)) for name in ring.names}


def test_walks_are_the_switches_own_words(labs, ring):
    assert check_agreement(labs, ring) == AS_MADE


def status_of(switch, table, name):
    """The map rstp_status, as its own tool prints it."""
    printed = switch.vsctl('get', table, name, 'rstp_status')
    return {key: value or word for key, value, word in re.findall(r'(\w+)=(?:"([^"]*)"|(\w+))', printed)}


def with_one_dot(bridge_id):
    """Its own text sets the priority's first digit apart."""
    return bridge_id.replace('.', '', 1)


def test_other_values_are_the_databases(labs, ring):
    for name in ring.names:
        bridge = ring.bridge(name)
        status = status_of(bridge.switch, 'bridge', bridge.device)
        tree = shown(labs[name], 'tree.0')
        assert (tree['tree.0.bridge_id'], tree['tree.0.root'], tree['tree.0.root_cost']) == (
            with_one_dot(status['rstp_bridge_id']), with_one_dot(status['rstp_root_id']),
            int(status['rstp_root_path_cost']))
        root_port = int(status['rstp_bridge_port_id'][1:], 16)
        assert tree['tree.0.root_port'] == (bridge_port(root_port) if root_port else 0)
        ports = shown(labs[name], 'port')
        for port in bridge.status().ports.values():
            status = status_of(bridge.switch, 'port', port.name)
            key = f'port.{port.number}.'
            assert (ports[key + 'name'], ports[key + 'designated_bridge'], ports[key + 'designated_cost'],
                    ports[key + 'designated_port']) == (
                port.name, with_one_dot(status['rstp_designated_bridge_id']),
                int(status['rstp_designated_path_cost']), int(status['rstp_designated_port_id'], 16))


def test_the_port_that_takes_over_is_walked_as_soon_as_the_switch_has_it(labs, ring, record_property):
    lab, bridge = labs['c'], ring.bridge('c')
    ring.pull('a', 'c')
    behind = seconds_behind(lambda: bridge.status().root_port == 'to-b',
                            lambda: walked_roles(lab) == {(CIST, bridge_port(2)): 'root'})
    record_property('milliseconds_behind', round(behind * 1000))
    print(f'the new root port was walked {behind:.3f} s after the switch had it')
    check_agreement(labs, ring)
    ring.restore('a', 'c')
    ring.wait_until_one_blocks()
    assert check_agreement(labs, ring) == AS_MADE


def test_a_better_bridge_becomes_the_root(labs, ring):
    ring.bridge('c').set_priority(0)
    wait_until(lambda: set(walked_roles(labs['c']).values()) == {'designated'}, 'c is the root')
    check_agreement(labs, ring)
    ring.bridge('c').set_priority(12288)
    wait_until(lambda: told_roles(ring.bridge('c')) == AS_MADE['c'], 'a is the root again')
    assert check_agreement(labs, ring) == AS_MADE


def test_nobody_misses_an_answer_while_ports_come_and_go(labs, ring):
    """More of them than there were at first."""
    lab, bridge = labs['b'], ring.bridge('b')
    before = walked_roles(lab)
    with walking(lab) as walks:
        walks.wait_for_more()
        bridge.namespace.ip_batch(*(
            line for number in range(MANY_PORTS) for line in (
                f'link add x{number} type veth peer name y{number}', f'link set y{number} up', f'link set x{number} up')))
        bridge.switch.vsctl(*[word for number in range(MANY_PORTS)
                              for word in ('--', 'add-port', bridge.device, f'x{number}')][1:])
        walks.wait_for_more()
        wait_until_agreed(lab, bridge)
        assert len(walked_roles(lab)) == len(before) + MANY_PORTS
        bridge.switch.vsctl(*[word for number in range(MANY_PORTS)
                              for word in ('--', 'del-port', bridge.device, f'x{number}')][1:])
        wait_until_agreed(lab, bridge)
        walks.wait_for_more()
    assert walked_roles(lab) == before


def test_a_port_that_leaves_is_gone_and_one_that_joins_is_there(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.remove_port('to-b')
    wait_until(lambda: walked_roles(lab) == {(CIST, bridge_port(1)): 'root'}, 'the port is gone')
    bridge.add_port('to-b')
    ring.wait_until_one_blocks()
    wait_until_agreed(lab, bridge)


def test_a_switch_that_is_killed_leaves_no_row_and_is_served_when_it_is_back(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.switch.stop_switch(signal.SIGKILL)
    wait_until(lambda: walked_roles(lab) == {}, 'the roles are gone')
    bridge.switch.start_switch()
    ring.wait_until_one_blocks()
    assert sorted(wait_until_agreed(lab, bridge).values()) == ['alternate', 'root']


def test_a_database_that_is_started_anew_is_read_anew(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.switch.stop_database()
    wait_until(lambda: walked_roles(lab) == {}, 'the roles are gone')
    bridge.switch.start_database()
    ring.wait_until_one_blocks()
    assert sorted(wait_until_agreed(lab, bridge).values()) == ['alternate', 'root']


def test_open_vswitch_that_is_started_anew_is_served_again(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.switch.stop_switch()
    bridge.switch.stop_database()
    wait_until(lambda: walked_roles(lab) == {}, 'the roles are gone')
    bridge.switch.start()
    ring.wait_until_one_blocks()
    assert sorted(wait_until_agreed(lab, bridge).values()) == ['alternate', 'root']


def test_bridge_that_vanishes_leaves_no_row_and_is_served_when_it_is_back(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.delete()
    wait_until(lambda: walked_roles(lab) == {}, 'the roles are gone')
    bridge.create(priority=12288)
    for device in ('to-a', 'to-b'):
        bridge.add_port(device)
    ring.wait_until_one_blocks()
    assert wait_until_agreed(lab, bridge) == AS_MADE['c']


def test_spanning_tree_that_is_switched_off_leaves_no_row(labs, ring):
    """Not where there is a ring: c is cut off meanwhile."""
    lab, bridge = labs['c'], ring.bridge('c')
    for other in ('a', 'b'):
        ring.pull(other, 'c')
    bridge.switch.vsctl('set', 'bridge', bridge.device, 'rstp_enable=false')
    try:
        wait_until(lambda: walked_roles(lab) == {}, 'there is no tree any more')
    finally:
        bridge.switch.vsctl('set', 'bridge', bridge.device, 'rstp_enable=true')
        for other in ('a', 'b'):
            ring.restore(other, 'c')
    ring.wait_until_one_blocks()
    wait_until_agreed(lab, bridge)

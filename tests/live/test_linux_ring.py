"""Three bridges of the kernel in a ring: the walk of each is the kernel's word, while links, roots, ports and bridges
come and go."""

import json
from contextlib import ExitStack

import pytest
from bridge_lab.linux_bridge import FORWARD_DELAY, HELLO_TIME, MAX_AGE
from bridge_lab.ring import GUARDIAN, GUEST, port_to
from golden import LOOP_GUARD_SETTING, MST_BRIDGE_ID, MST_COST, MST_REMAINING_HOPS, bridge_port
from harness.build import ROOT
from harness.notifications import ALL_ENABLED, APPEARED, MST, ROOT_CLASS, VANISHED, guard_trap
from harness.oids import is_below
from harness.polling import wait_until
from harness.traps import TrapReceiver
from live_lab import (CIST, column, root_guards, root_inconsistencies, run_lab, seconds_behind, shown, told_roles,
                      wait_until_agreed, walked_roles, walking)

TO_GUEST = 1  # the number of a's port to the guest, which was the first
HELLOS = 5    # of a better root, in which root guard has to hold
MANY_PORTS = 150
PRIORITY_STEP = 4  # `ip` has the port's priority in the upper six of eight bits


@pytest.fixture(name='receiver', scope='module')
def fixture_receiver():
    with TrapReceiver() as receiver:
        yield receiver


@pytest.fixture(name='shared_labs', scope='module')
def fixture_shared_labs(linux_ring, receiver):
    with ExitStack() as stack:
        yield {name: stack.enter_context(run_lab(linux_ring.bridge(name), trap_endpoint=receiver.endpoint,
                                                 trap_word=ALL_ENABLED))
               for name in linux_ring.names}


def test_walks_are_the_kernels_word(labs, ring):
    walked = {name: wait_until_agreed(labs[name], ring.bridge(name)) for name in ring.names}
    assert walked == {
        'a': {(CIST, bridge_port(1)): 'designated', (CIST, bridge_port(2)): 'designated',
              (CIST, bridge_port(3)): 'designated'},
        'b': {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'designated'},
        'c': {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'alternate'},
    }


def without_colons(bridge_id):
    return bridge_id.replace(':', '')


def check_shown_values(lab, bridge):
    status = bridge.status()
    tree = {key: value for key, value in shown(lab, 'tree.0').items() if not key.endswith('topology_changes')}
    assert {key.removeprefix('tree.0.'): value for key, value in tree.items()} == {
        'priority': int(status.bridge_id[:4], 16), 'protocol_version': 'stp',
        'bridge_id': without_colons(status.bridge_id), 'root': without_colons(status.root_id),
        'root_cost': status.root_cost, 'root_port': bridge_port(status.root_port) if status.root_port else 0,
        # The root's timers are in force, and each bridge of the ring has the same ones of its own.
        'root_max_age': MAX_AGE, 'root_hello_time': HELLO_TIME, 'root_forward_delay': FORWARD_DELAY,
        'max_age': MAX_AGE, 'hello_time': HELLO_TIME, 'forward_delay': FORWARD_DELAY}
    ports = shown(lab, 'port')
    for port in status.ports.values():
        values = {key.removeprefix(f'port.{port.number}.'): value for key, value in ports.items()}
        assert {key: values.get(key) for key in (
            'name', 'link', 'path_cost', 'priority', 'if_mib_index', 'designated_bridge', 'designated_cost',
            'designated_port', 'forward_transitions')} == {
                'name': port.name, 'link': 'up', 'path_cost': port.cost, 'priority': port.priority * PRIORITY_STEP,
                'if_mib_index': port.if_index, 'designated_bridge': without_colons(port.designated_bridge),
                'designated_cost': port.designated_cost, 'designated_port': port.designated_port,
                'forward_transitions': bridge.forward_transitions(port.name)}


def test_other_values_are_the_kernels_word(labs, ring):
    for name in ring.names:
        check_shown_values(labs[name], ring.bridge(name))


def test_what_the_kernel_does_not_tell_is_not_served(labs, ring):
    """Nothing of an MST region, of which the bridge has none."""
    walked = labs['c'].snmp.walk(ROOT)
    for told_by_no_bridge in (MST_REMAINING_HOPS, MST_BRIDGE_ID, MST_COST, LOOP_GUARD_SETTING):
        assert column(walked, told_by_no_bridge) == {}
    assert not [binding for binding in walked if is_below(binding.oid, ROOT + '.1.11')]


def test_root_guard_is_the_kernels_root_block(labs, ring):
    for name in ring.names:
        told = {port.number: port.root_block for port in ring.bridge(name).status().ports.values()}
        assert root_guards(labs[name]) == told
    assert root_guards(labs['a']) == {TO_GUEST: True, 2: False, 3: False}


def test_root_guard_follows_the_setting(labs, ring):
    bridge = ring.bridge('b')
    for setting in ('on', 'off'):
        bridge.set_port('to-c', 'root_block', setting)
        wait_until(lambda: root_guards(labs['b']) == {1: False, 2: setting == 'on'}, f'root guard is {setting}')


def test_the_port_that_takes_over_is_walked_as_soon_as_the_kernel_has_it(labs, ring, record_property):
    lab, bridge = labs['c'], ring.bridge('c')
    ring.pull('a', 'c')
    behind = seconds_behind(lambda: bridge.status().root_port == 2,
                            lambda: walked_roles(lab) == {(CIST, bridge_port(2)): 'root'})
    record_property('milliseconds_behind', round(behind * 1000))
    print(f'the new root port was walked {behind:.3f} s after the kernel had it')
    for name in ring.names:
        wait_until_agreed(labs[name], ring.bridge(name))
    ring.restore('a', 'c')
    ring.wait_until_one_blocks()
    for name in ring.names:
        wait_until_agreed(labs[name], ring.bridge(name))


def test_ports_that_begin_to_forward_are_counted(labs, ring):
    """Both ends of a link that comes back, and the port that stood in for it, which blocks again."""
    before = all_forward_transitions(ring)
    ring.pull('a', 'c')
    wait_until(lambda: all(port.forwards for port in ring.bridge('c').status().ports.values() if port.has_link),
               'the other port of c forwards')
    ring.restore('a', 'c')
    ring.wait_until_one_blocks()
    after = all_forward_transitions(ring)
    more = {port: after[port] - before[port] for port in after if after[port] != before[port]}
    assert more == {('a', port_to('c')): 1, ('c', port_to('a')): 1, ('c', port_to('b')): 1}
    for name in ring.names:
        wait_until_agreed(labs[name], ring.bridge(name))
        check_shown_values(labs[name], ring.bridge(name))


def all_forward_transitions(ring):
    return {(name, device): ring.bridge(name).forward_transitions(device)
            for name in ring.names for device in ring.bridge(name).status().ports}


def root_traps(receiver):
    return [trap for trap in receiver.received() if trap.oid == ROOT_CLASS.trap]


def test_better_root_behind_root_guard_is_an_inconsistency_until_it_falls_silent(labs, ring, receiver):
    lab, guarded = labs['a'], bridge_port(TO_GUEST)
    assert root_inconsistencies(lab) == set()
    assert root_traps(receiver) == []
    ring.better_root()
    wait_until(lambda: root_traps(receiver), 'the trap of the inconsistency arrives')
    assert root_inconsistencies(lab) == {(CIST, guarded)}

    # The kernel takes the port back with each hello, which is no new inconsistency, and no end of it.
    enough = hellos_of_the_guest(ring) + HELLOS
    while hellos_of_the_guest(ring) < enough:
        assert root_inconsistencies(lab) == {(CIST, guarded)}
    assert told_state(ring) in ('listening', 'blocking')
    assert root_traps(receiver) == [guard_trap(ROOT_CLASS, CIST, guarded, APPEARED, MST)]

    ring.no_better_root()
    wait_until(lambda: len(root_traps(receiver)) > 1, 'the trap of the end arrives')
    assert root_inconsistencies(lab) == set()
    wait_until(lambda: told_state(ring) == 'forwarding', 'the port forwards again')
    wait_until_agreed(lab, ring.bridge('a'))
    assert root_traps(receiver) == [guard_trap(ROOT_CLASS, CIST, guarded, APPEARED, MST),
                                    guard_trap(ROOT_CLASS, CIST, guarded, VANISHED, MST)]


def hellos_of_the_guest(ring):
    """All that it sends."""
    [link] = json.loads(ring.bridge(GUEST).namespace.ip('-j', '-s', 'link', 'show', 'dev', port_to(GUARDIAN)))
    return link['stats64']['tx']['packets']


def told_state(ring):
    return ring.bridge('a').status().ports[port_to(GUEST)].state


def test_nobody_misses_an_answer_while_ports_come_and_go(labs, ring):
    """More of them than there were at first."""
    lab, bridge = labs['b'], ring.bridge('b')
    before = told_roles(bridge)
    with walking(lab) as walks:
        walks.wait_for_more()
        bridge.namespace.ip_batch(*(
            line for number in range(MANY_PORTS) for line in (
                f'link add x{number} type veth peer name y{number}', f'link set y{number} up',
                f'link set x{number} up master {bridge.device}')))
        walks.wait_for_more()
        wait_until_agreed(lab, bridge)
        assert len(walked_roles(lab)) == len(before) + MANY_PORTS
        for number in range(0, MANY_PORTS, 10):
            bridge.remove_port(f'x{number}')
            bridge.add_port(f'x{number}')
        walks.wait_for_more()
        bridge.namespace.ip_batch(*(f'link del x{number}' for number in range(MANY_PORTS)))
        wait_until_agreed(lab, bridge)
        walks.wait_for_more()
    assert walked_roles(lab) == before


def test_a_port_that_leaves_is_gone_and_one_that_joins_is_there(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.remove_port('to-b')
    wait_until(lambda: walked_roles(lab) == {(CIST, bridge_port(1)): 'root'}, 'the port is gone')
    assert set(root_guards(lab)) == {1}
    bridge.add_port('to-b')
    ring.wait_until_one_blocks()
    assert wait_until_agreed(lab, bridge) == {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'alternate'}


def test_bridge_that_vanishes_leaves_no_row_and_is_served_when_it_is_back(labs, ring):
    lab, bridge = labs['c'], ring.bridge('c')
    bridge.delete()
    wait_until(lambda: walked_roles(lab) == {}, 'the roles are gone')
    assert root_guards(lab) == {}
    bridge.create(priority=12288)
    for device in ('to-a', 'to-b'):
        bridge.add_port(device)
    ring.wait_until_one_blocks()
    assert wait_until_agreed(lab, bridge) == {(CIST, bridge_port(1)): 'root', (CIST, bridge_port(2)): 'alternate'}


def test_spanning_tree_that_is_switched_off_leaves_no_row(labs, ring):
    """Not where there is a ring: c is cut off meanwhile."""
    lab, bridge = labs['c'], ring.bridge('c')
    for other in ('a', 'b'):
        ring.pull(other, 'c')
    bridge.namespace.ip('link', 'set', bridge.device, 'type', 'bridge', 'stp_state', '0')
    try:
        wait_until(lambda: root_guards(lab) == {}, 'there is no tree any more')
        assert walked_roles(lab) == {}
    finally:
        bridge.namespace.ip('link', 'set', bridge.device, 'type', 'bridge', 'stp_state', '1')
        for other in ('a', 'b'):
            ring.restore(other, 'c')
    ring.wait_until_one_blocks()
    wait_until_agreed(lab, bridge)

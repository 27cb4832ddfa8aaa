"""BRIDGE-MIB and RSTP-MIB of three bridges of the kernel in a ring: each value is the kernel's word, none that it knows
is missing, and a link that is pulled is told of."""

from contextlib import ExitStack

import pytest
from bridge_lab.linux_bridge import FORWARD_DELAY, HELLO_TIME, MAX_AGE
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import BRIDGE_ROOT
from harness.polling import wait_until
from harness.snmp_tools import Binding, v3
from harness.traps import BRIDGE_TRAPS, Trap, TrapReceiver
from live_lab import run_lab

NEW_ROOT, TOPOLOGY_CHANGE = f'{BRIDGE_TRAPS}.1', f'{BRIDGE_TRAPS}.2'
BOTH_TRAPS = '18'

BASE, BASE_PORT, STP, STP_PORT, RSTP_PORT = (
    f'{BRIDGE_ROOT}.{place}' for place in ('1', '1.4.1', '2', '2.15.1', '2.19.1'))
# They go on, or depend on what has been done to the ring.
MOVING = (f'{STP}.3.0', f'{STP}.4.0')

TRANSPARENT_ONLY = 2
IEEE_8021D = 3
HOLD_TIME = 100
STP_COMPATIBLE = 0
STATES = {'disabled': 1, 'blocking': 2, 'listening': 3, 'learning': 4, 'forwarding': 5}
ENABLED, DISABLED = 1, 2
FALSE = 2
MOST_OF_16_BITS = 65535
PRIORITY_STEP = 4  # `ip` has the port's priority in the upper six of eight bits


@pytest.fixture(name='receivers', scope='module')
def fixture_receivers(linux_ring):
    with ExitStack() as stack:
        yield {name: stack.enter_context(TrapReceiver()) for name in linux_ring.names}


@pytest.fixture(name='shared_labs', scope='module')
def fixture_shared_labs(linux_ring, receivers):
    with ExitStack() as stack:
        yield {name: stack.enter_context(run_lab(
            linux_ring.bridge(name), serves=BRIDGE_CONFIGURATION, with_probe=False, trap_word=BOTH_TRAPS,
            trap_endpoint=receivers[name].endpoint)) for name in linux_ring.names}


def identifier(text):
    """8000.02:00:00:00:00:0a, as octets."""
    return bytes.fromhex(text.replace('.', '').replace(':', ''))


def told_scalars(status):
    # The root's timers are in force, and each bridge of the ring has the same ones of its own.
    timers = {8: MAX_AGE, 9: HELLO_TIME, 11: FORWARD_DELAY, 12: MAX_AGE, 13: HELLO_TIME, 14: FORWARD_DELAY}
    numbers = {1: IEEE_8021D, 2: int(status.bridge_id[:4], 16), 6: status.root_cost, 7: status.root_port, 10: HOLD_TIME,
               16: STP_COMPATIBLE, **timers}
    return [Binding(f'{BASE}.1.0', 'OCTET STRING', identifier(status.bridge_id)[2:]),
            Binding(f'{BASE}.2.0', 'INTEGER', len(status.ports)), Binding(f'{BASE}.3.0', 'INTEGER', TRANSPARENT_ONLY),
            Binding(f'{STP}.5.0', 'OCTET STRING', identifier(status.root_id)),
            *(Binding(f'{STP}.{number}.0', 'INTEGER', value) for number, value in numbers.items())]


def told_row(status, port, forward_transitions):
    state = port.state if port.has_link else 'disabled'
    # Of a port without a link the kernel keeps what it sent last; the walk has the root and the cost of now.
    root, cost = ((port.designated_root, port.designated_cost) if port.has_link else
                  (status.root_id, status.root_cost))
    rows = {
        BASE_PORT: {1: port.number, 2: port.if_index},
        STP_PORT: {1: port.number, 2: port.priority * PRIORITY_STEP, 3: STATES[state],
                   4: DISABLED if state == 'disabled' else ENABLED, 5: min(port.cost, MOST_OF_16_BITS),
                   6: identifier(root), 7: cost,
                   8: identifier(port.designated_bridge), 9: port.designated_port.to_bytes(2, 'big'), 11: port.cost},
        RSTP_PORT: {1: FALSE},
    }
    return [Binding(f'{BASE_PORT}.3.{port.number}', 'OID', '.0.0'),
            Binding(f'{STP_PORT}.10.{port.number}', 'Counter32', forward_transitions),
            *(Binding(f'{entry}.{column}.{port.number}', 'INTEGER' if isinstance(value, int) else 'OCTET STRING', value)
              for entry, row in rows.items() for column, value in row.items())]


def by_name(bindings):
    return sorted(bindings, key=lambda binding: binding.oid)


def told(bridge):
    status = bridge.status()
    return by_name([*told_scalars(status), *(
        binding for port in status.ports.values()
        for binding in told_row(status, port, bridge.forward_transitions(port.name)))])


def walked(lab, who):
    return by_name([binding for binding in lab.snmp.walk(BRIDGE_ROOT, who=who) if not binding.oid.startswith(MOVING)])


def wait_until_walk_is(lab, bridge, context=''):
    who = v3('alice', context)

    def agrees():
        expected = told(bridge)
        return walked(lab, who) == expected == told(bridge)

    try:
        wait_until(agrees, 'the walk agrees')
    except AssertionError:
        assert walked(lab, who) == told(bridge)
        raise


def test_walks_are_the_kernels_word(labs, ring):
    for name in ring.names:
        wait_until_walk_is(labs[name], ring.bridge(name))


def test_the_context_of_the_cist_is_the_same_tree(labs, ring):
    labs['c'].wait_for_context(v3('alice', 'mst-0'), f'{STP}.1.0')
    wait_until_walk_is(labs['c'], ring.bridge('c'), 'mst-0')


def test_blocked_port_is_one_of_another_bridge(labs, ring):
    """As a manager joins them: identifier and port of the designated bridge are those of a row of another agent."""
    walk = {binding.oid: binding.value for binding in labs['c'].snmp.walk(BRIDGE_ROOT)}
    assert [walk[f'{STP_PORT}.3.{port}'] for port in (1, 2)] == [STATES['forwarding'], STATES['blocking']]
    of_b = {binding.oid: binding.value for binding in labs['b'].snmp.walk(BRIDGE_ROOT)}
    assert walk[f'{STP_PORT}.8.2'][2:] == of_b[f'{BASE}.1.0']
    to_c = ring.bridge('b').status().ports['to-c']
    number = int.from_bytes(walk[f'{STP_PORT}.9.2'], 'big') & 0xFF
    assert of_b[f'{BASE_PORT}.2.{number}'] == to_c.if_index


def changes_of(ring, name, device):
    port = ring.bridge(name).status().ports[device]
    return Trap(TOPOLOGY_CHANGE, [Binding(f'{BASE_PORT}.1.{port.number}', 'INTEGER', port.number),
                                  Binding(f'{BASE_PORT}.2.{port.number}', 'INTEGER', port.if_index)])


def test_pulled_link_and_lost_root_are_told_of(labs, ring, receivers):
    """c loses its root port: another port takes over. Then that, too: c is the root of its own tree."""
    for name in ring.names:
        wait_until_walk_is(labs[name], ring.bridge(name))
    known = {name: len(receiver.received()) for name, receiver in receivers.items()}

    def told_by(name):
        return receivers[name].received()[known[name]:]

    took_over = changes_of(ring, 'c', 'to-b')
    try:
        ring.pull('a', 'c')
        wait_until(lambda: took_over in told_by('c'), 'the trap of the port that took over arrives')
        wait_until_walk_is(labs['c'], ring.bridge('c'))
        assert Trap(NEW_ROOT, []) not in told_by('c')
        ring.pull('b', 'c')
        wait_until(lambda: Trap(NEW_ROOT, []) in told_by('c'), 'the trap of the new root arrives')
        wait_until_walk_is(labs['c'], ring.bridge('c'))
    finally:
        for other in ('a', 'b'):
            ring.restore(other, 'c')
    ring.wait_until_one_blocks()
    for name in ring.names:
        wait_until_walk_is(labs[name], ring.bridge(name))
    assert {name: told_by(name).count(Trap(NEW_ROOT, [])) for name in ring.names} == {'a': 0, 'b': 0, 'c': 1}

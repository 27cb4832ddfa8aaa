"""What readers make of a ring of the kernel's bridges, with the names that each agent's IF-MIB has for the ports."""

from contextlib import ExitStack

import pytest
from bridge_lab.linux_bridge import FORWARD_DELAY, HELLO_TIME, MAX_AGE
from harness.agent import BRIDGE_CONFIGURATION
from harness.librenms import FIFTEEN, discover, get
from harness.managers import CRITICAL, OK, need_centreon, need_snmp_info, read_with_centreon, read_with_snmp_info
from harness.snmp_tools import READER, v1
from live_lab import column, run_lab

HOLD_TIME = 100
IF_NAME = '.1.3.6.1.2.1.31.1.1.1.1'


@pytest.fixture(name='shared_labs', scope='module')
def fixture_shared_labs(linux_ring):
    """The agents stand beside their bridges, whose interfaces they then see."""
    with ExitStack() as stack:
        for name in linux_ring.names:
            linux_ring.bridge(name).namespace.ip('link', 'set', 'lo', 'up')
        yield {name: stack.enter_context(run_lab(linux_ring.bridge(name), inside=linux_ring.bridge(name).enter,
                                                 serves=BRIDGE_CONFIGURATION, with_probe=False))
               for name in linux_ring.names}


def without_colons(bridge_id):
    return bridge_id.replace(':', '')


def interfaces(lab):
    return {index: name.decode() for (index,), name in column(lab.snmp.walk(IF_NAME), IF_NAME).items()}


def test_librenms_shows_root_and_blocked_port_by_name(labs, linux_ring):
    status = {name: linux_ring.bridge(name).status() for name in linux_ring.names}
    assert status['a'].bridge_id.startswith('1000.')
    trees = {name: discover(lab.snmp, interfaces(lab)) for name, lab in labs.items()}
    assert {tree.root for tree in trees.values()} == {without_colons(status['a'].bridge_id)}
    assert {name: (tree.root_cost, tree.root_port) for name, tree in trees.items()} == {
        name: (told.root_cost, told.root_port) for name, told in status.items()}
    assert {name: {port: shown.state for port, shown in tree.ports.items()} for name, tree in trees.items()} == {
        'a': {'to-guest': 'forwarding', 'to-b': 'forwarding', 'to-c': 'forwarding'},
        'b': {'to-a': 'forwarding', 'to-c': 'forwarding'},
        'c': {'to-a': 'forwarding', 'to-b': 'blocking'},
    }


def test_fifteen_objects_in_one_request(labs, linux_ring):
    for name, lab in labs.items():
        told = linux_ring.bridge(name).status()
        for who in (READER, v1('public')):
            address, protocol, priority, _time, _changes, root, *numbers = get(lab.snmp, FIFTEEN, who)
            assert (address.hex(':'), protocol, priority) == (told.bridge_id[5:], 3, int(told.bridge_id[:4], 16))
            assert root.hex() == without_colons(told.root_id).replace('.', '')
            assert numbers == [told.root_cost, told.root_port, MAX_AGE, HELLO_TIME, HOLD_TIME, FORWARD_DELAY,
                               MAX_AGE, HELLO_TIME, FORWARD_DELAY]


def test_snmp_info_names_the_blocked_port(labs, linux_ring):
    need_snmp_info()
    told = {name: linux_ring.bridge(name).status() for name in linux_ring.names}
    priority, address = told['a'].bridge_id.split('.')
    root = f'root: {priority[:2]}:{priority[2:]}:{address}'
    shown = {name: read_with_snmp_info(lab.agent) for name, lab in labs.items()}
    assert {name: lines[0] for name, lines in shown.items()} == {
        name: f'bridge: {status.bridge_id.split(".")[1]}' for name, status in told.items()}
    assert {name: lines[4:7] for name, lines in shown.items()} == {
        'a': ['priority: 4096', root, 'root port: 0'],
        'b': ['priority: 8192', root, 'root port: to-a'],
        'c': ['priority: 12288', root, 'root port: to-a'],
    }
    # The kernel tells nothing of edge ports.
    unknown = 'admin edge unknown, edge unknown'
    assert {name: lines[8:] for name, lines in shown.items()} == {
        'a': [f'to-guest: forwarding, {unknown}', f'to-b: forwarding, {unknown}', f'to-c: forwarding, {unknown}'],
        'b': [f'to-a: forwarding, {unknown}', f'to-c: forwarding, {unknown}'],
        'c': [f'to-a: forwarding, {unknown}', f'to-b: blocking, {unknown}'],
    }


def test_centreon_complains_of_the_blocked_port(labs):
    need_centreon()
    status, word, ports = read_with_centreon(labs['c'].agent)
    assert (status, word) == (CRITICAL, 'CRITICAL')
    assert [line.split("[")[0] for line in ports] == ["Port 'to-a' spanning tree state is 'forwarding' ",
                                                      "Port 'to-b' spanning tree state is 'blocking' "]
    assert read_with_centreon(labs['b'].agent)[:2] == (OK, 'OK')

"""newRoot and topologyChange from true events of a scenario's switch, as the stock snmptrapd receives them."""

from contextlib import contextmanager

import pytest
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION
from harness.build import BRIDGE_ROOT
from harness.notifications import run_trap_lab
from harness.snmp_tools import Binding
from harness.traps import BRIDGE_TRAPS, Trap, TrapReceiver

NEW_ROOT, TOPOLOGY_CHANGE = f'{BRIDGE_TRAPS}.1', f'{BRIDGE_TRAPS}.2'
BASE_PORT, BASE_PORT_IF_INDEX = f'{BRIDGE_ROOT}.1.4.1.1', f'{BRIDGE_ROOT}.1.4.1.2'

# Bits of the trap word. That of root inconsistencies is for the markers.
MARKERS, NEW_ROOTS, TOPOLOGY_CHANGES = 0x01, 0x08, 0x10


@contextmanager
def run_bridge_trap_lab(bits):
    """One for each test: what comes sooner than a second after another event of its tree comes later."""
    with TrapReceiver() as receiver, run_trap_lab(
            receiver, serves=MODULE_CONFIGURATION + BRIDGE_CONFIGURATION, trap_word=f'{MARKERS | bits:x}') as lab:
        lab.wait_until_connected()
        yield lab


@pytest.fixture(name='lab')
def fixture_lab():
    with run_bridge_trap_lab(NEW_ROOTS | TOPOLOGY_CHANGES) as lab:
        yield lab


def topology_change(port, if_mib_index):
    return Trap(TOPOLOGY_CHANGE, [Binding(f'{BASE_PORT}.{port}', 'INTEGER', port),
                                  Binding(f'{BASE_PORT_IF_INDEX}.{port}', 'INTEGER', if_mib_index)])


def test_port_that_ceases_to_forward(lab):
    lab.switch.set('port.1.if_mib_index', '7')
    assert lab.new_traps() == []
    lab.switch.set('port.1.alternate_port_of', '10')
    assert lab.new_traps() == [topology_change(129, 7)]


def test_port_channel_has_its_own_number(lab):
    lab.switch.set('port_channel.2.alternate_port_of', '12')
    assert lab.new_traps() == [topology_change(4098, 4098)]


def test_port_at_the_edge_changes_no_topology(lab):
    lab.switch.set('port.1.edge', 'true')
    lab.switch.set('port.1.alternate_port_of', '13')
    assert lab.new_traps() == []


def test_bridge_that_becomes_the_root(lab):
    lab.switch.set('port.1.root_port_of', '14')
    assert lab.new_traps() == []
    lab.switch.set('port.1.root_port_of', '')
    assert lab.new_traps() == [Trap(NEW_ROOT, [])]


@pytest.mark.parametrize('bits, traps', [
    (0, []),
    (NEW_ROOTS, [Trap(NEW_ROOT, [])]),
    (TOPOLOGY_CHANGES, [topology_change(129, 129)]),
])
def test_each_bit_of_the_trap_word_enables_its_trap_alone(bits, traps):
    with run_bridge_trap_lab(bits) as lab:
        lab.switch.set('port.1.root_port_of', '15')
        lab.switch.set('port.1.root_port_of', '')
        lab.switch.set('port.1.alternate_port_of', '16')
        assert lab.new_traps() == traps

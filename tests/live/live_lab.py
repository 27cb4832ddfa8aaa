"""A stp-switchd that reads a real bridge, an agent that serves it, and the walk beside the bridge's own words."""

import json
import os
import time
from contextlib import contextmanager
from pathlib import Path

import golden
from bridge_lab.namespaces import as_child
from harness.build import ROOT
from harness.lab import run_lab_of
from harness.oids import arcs, is_below
from harness.polling import wait_until
from harness.repetition import Repetition
from harness.snmp_tools import Failure
from harness.walking import walk_below

CIST = 0
ROLES = {golden.ROLE_DISABLED: 'disabled', golden.ROOT_PORT: 'root', golden.DESIGNATED: 'designated',
         golden.ALTERNATE: 'alternate', golden.BACKUP: 'backup'}
# The ports of each bridge of a VLAN have a block of numbers.
PORTS_OF_BRIDGE = 256
ROLE_COLUMN = ROOT + '.1.12.2.1.3'
ROOT_GUARD_COLUMN = ROOT + '.1.5.1.1.2'
ROOT_INCONSISTENCY_COLUMN = ROOT + '.1.5.2.1.3'


class Networks:
    """The network namespaces of some processes, without this one's. They are held: the kernel gives the number of one
    that is gone to the next that is made."""

    def __init__(self, pids):
        self._held = {}
        for pid in pids:
            try:
                held = os.open(f'/proc/{pid}/ns/net', os.O_RDONLY)
            except OSError:
                continue  # it has ended
            number = os.fstat(held).st_ino
            if number in self._held or number == os.stat('/proc/self/ns/net').st_ino:
                os.close(held)
            else:
                self._held[number] = held

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for held in self._held.values():
            os.close(held)

    def __len__(self):
        return len(self._held)

    def users(self):
        """Which processes are in them."""
        found = []
        for process in Path('/proc').glob('[0-9]*'):
            try:
                if os.stat(process / 'ns/net').st_ino in self._held:
                    found.append((process.name, (process / 'cmdline').read_bytes()))
            except OSError:
                pass  # it has ended, or is not ours to look at
        return found


def run_lab(bridge, **agent_options):
    return run_lab_of(bridge.source, [*bridge.enter, *as_child()], **agent_options)


def run_vlan_lab(switch, bridges, **agent_options):
    """One switch of an Open vSwitch: its bridges by the VLAN whose tree they have."""
    source = [word for vlan, bridge in bridges.items() for word in ('--openvswitch', f'{bridge.device}={vlan}')]
    return run_lab_of([*source, '--ovsdb', switch.database], **agent_options)


def column(bindings, prefix):
    """Values by index."""
    assert not isinstance(bindings, Failure), bindings.reason
    skipped = len(arcs(prefix))
    return {tuple(arcs(binding.oid)[skipped:]): binding.value for binding in bindings if is_below(binding.oid, prefix)}


def shown(lab, *what):
    """What stp-switchctl shows, by key."""
    return json.loads(lab.switch.control('show', *what, '--json'))


def walked_roles(lab):
    """By tree and bridge port number."""
    return {index: ROLES[value] for index, value in column(lab.snmp.walk(ROLE_COLUMN), ROLE_COLUMN).items()}


def root_guards(lab):
    """By the numbers of ports."""
    return {index - golden.port(0): value == golden.ENABLED for (index,), value in
            column(lab.snmp.walk(ROOT_GUARD_COLUMN), ROOT_GUARD_COLUMN).items()}


def root_inconsistencies(lab):
    walked = column(lab.snmp.walk(ROOT_INCONSISTENCY_COLUMN), ROOT_INCONSISTENCY_COLUMN)
    assert set(walked.values()) <= {golden.INCONSISTENT}
    return set(walked)


def told_roles(bridge, tree=CIST, first=0):
    """What the bridge's own status comes to: a walk does not show roles of ports without a link. `first`: what the
    numbers of the bridge's ports begin behind."""
    status = bridge.status()
    return {(tree, golden.bridge_port(first + port.number)): status.role_of(port) for port in status.ports.values()
            if status.role_of(port) != 'disabled'}


def told_vlan_roles(bridges):
    """Of bridges by VLAN, in the order in which the switch was told of them."""
    return {place: role for number, (vlan, bridge) in enumerate(bridges.items())
            for place, role in told_roles(bridge, vlan, number * PORTS_OF_BRIDGE).items()}


def wait_until_agreed(lab, bridge):
    """Until walk and bridge say the same."""
    return wait_until_equal(lab, lambda: told_roles(bridge))


def wait_until_vlans_agreed(lab, bridges):
    return wait_until_equal(lab, lambda: told_vlan_roles(bridges))


def wait_until_equal(lab, told):
    """And what is told does not change meanwhile."""
    seen = {}

    def agree():
        seen['told'] = told()
        seen['walked'] = walked_roles(lab)
        return seen['told'] == seen['walked'] == told()

    try:
        wait_until(agree, 'the walk agrees', guard_seconds=60)
    except AssertionError:
        raise AssertionError(f'the bridge says {seen["told"]}, the walk {seen["walked"]}') from None
    return seen['walked']


def seconds_behind(is_there, is_walked):
    """How long after the bridge itself the walk has it. Both are waited for."""
    wait_until(is_there, 'the bridge has it')
    there = time.monotonic()
    wait_until(is_walked, 'the walk has it')
    return time.monotonic() - there


@contextmanager
def walking(lab):
    """Walks the agent without a pause meanwhile, and every answer has to be there."""
    with lab.raw_client() as client, Repetition(lambda: walk_below(client, ROOT)) as walks:
        yield walks

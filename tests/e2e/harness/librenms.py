"""The requests by which LibreNMS reads a spanning tree, and what it shows: a tree where the protocol is one that it
knows, a port where the base port leads to an interface that it has found, and neither state nor Enable say disabled."""

from typing import NamedTuple

from .build import BRIDGE_ROOT as B
from .oids import arcs, below
from .snmp_tools import READER, Failure

PROTOCOL = f'{B}.2.1.0'
FIFTEEN = [f'{B}.1.1.0', *(f'{B}.2.{number}.0' for number in range(1, 15))]
BASE_PORT_IF_INDEX, PORT_TABLE = f'{B}.1.4.1.2', f'{B}.2.15'
STATE, ENABLE, DESIGNATED_ROOT, DESIGNATED_BRIDGE, DESIGNATED_PORT = (
    f'{PORT_TABLE}.1.{column}' for column in (3, 4, 6, 8, 9))
POLLED = [f'{B}.2.{number}.0' for number in (3, 4, 5)]
POLLED_OF_PORT = [STATE, ENABLE, DESIGNATED_ROOT, DESIGNATED_BRIDGE]

KNOWN_PROTOCOLS = (1, 3)
STATES = {1: 'disabled', 2: 'blocking', 3: 'listening', 4: 'learning', 5: 'forwarding', 6: 'broken'}
DISABLED_PORT = 2


class Port(NamedTuple):
    state: str
    designated_bridge: str
    designated_port: int


class Tree(NamedTuple):
    address: str
    root: str
    root_cost: int
    root_port: int
    ports: dict  # by the interface's name


def identifier(octets):
    """A bridge identifier: priority and address."""
    assert len(octets) == 8
    return f'{octets[:2].hex()}.{octets[2:].hex()}'


def get(snmp, names, who):
    """In one request, of which all must be answered, with a value or without."""
    answer = snmp.get(*names, who=who)
    assert not isinstance(answer, Failure), answer.reason
    assert [binding.oid for binding in answer] == names
    return [binding.value for binding in answer]


def walk(snmp, column, who):
    answer = snmp.bulk_walk(column, who=who)
    assert not isinstance(answer, Failure), answer.reason
    return answer


def rows(bindings, column):
    """By the last number of each name."""
    return {arcs(binding.oid)[-1]: binding.value for binding in below(bindings, column)}


def discover(snmp, interfaces, who=READER):
    """None where it shows nothing. `interfaces`: the names of those that it has found, by index."""
    if get(snmp, [PROTOCOL], who) not in [[number] for number in KNOWN_PROTOCOLS]:
        return None
    address, _, _, _, _, root, root_cost, root_port, *_ = get(snmp, FIFTEEN, who)
    base_ports = rows(walk(snmp, BASE_PORT_IF_INDEX, who), BASE_PORT_IF_INDEX)
    table = walk(snmp, PORT_TABLE, who)
    states, enabled, bridges, designated = (
        rows(table, column) for column in (STATE, ENABLE, DESIGNATED_BRIDGE, DESIGNATED_PORT))
    return Tree(address.hex(), identifier(root), root_cost, root_port, {
        # It takes the port's number from the low octet alone.
        interfaces[if_index]: Port(STATES[states[port]], identifier(bridges[port]), designated[port][1])
        for port, if_index in base_ports.items()
        if if_index in interfaces and STATES[states[port]] != 'disabled' and enabled[port] != DISABLED_PORT})


def poll(snmp, ports, who=READER):
    """What it asks again and again of the ports that it shows: topology changes, root, and of each base port state,
    Enable, root and bridge."""
    _time, changes, root = get(snmp, POLLED, who)
    polled = {port: get(snmp, [f'{column}.{port}' for column in POLLED_OF_PORT], who) for port in ports}
    return changes, identifier(root), {
        port: (STATES[state], enable, identifier(port_root), identifier(bridge))
        for port, (state, enable, port_root, bridge) in polled.items()}

"""What the module serves for each state of the switch in scenarios/parallel.toml, and which answers to a
request are right while the state changes."""

import hashlib
import hmac
from functools import lru_cache
from itertools import groupby
from typing import NamedTuple

import golden
from golden import bridge_channel, bridge_port, channel, half_bitmap, instance, port, vlans
from harness.build import ROOT
from harness.oids import arcs

CHANNELS_OF_PORTS = {1: 0, 2: 0, 3: 0, 4: 0, 5: 1, 6: 1}
CHANNELS = (1, 2)
ANCHOR = 'port.3'
NO_CHANNEL = 0
VLANS = frozenset(range(1, 7))
CIST = 0
ROLE_KEYS = {
    'root_port_of': golden.ROOT_PORT, 'alternate_port_of': golden.ALTERNATE, 'backup_port_of': golden.BACKUP}
FLAG_KEYS = {
    'edge': golden.EDGE, 'boundary': golden.BOUNDARY, 'peer': golden.PEER, 'dispute': golden.DISPUTE}
LOOP_GUARD = {'default': golden.AS_SWITCH, 'enabled': golden.GUARDED, 'disabled': golden.UNGUARDED}
LINK_TYPES = {
    'point-to-point': golden.FORCED_POINT_TO_POINT, 'shared': golden.FORCED_SHARED, 'auto': golden.AUTO}

# IEEE 802.1Q clause 13.8: the signature key of the Configuration Digest.
SIGNATURE_KEY = bytes.fromhex('13ac06a62e47fd51f95d2ba243cd0346')
VLAN_IDENTIFIERS = 4096

INTEGER, UNSIGNED, OCTETS = 'INTEGER', 'Gauge32', 'OCTET STRING'
END = 'the end'


class Interface(NamedTuple):
    key: str
    bridge_port: int
    index: int  # its interface index


PORTS = [Interface(f'port.{number}', bridge_port(number), port(number)) for number in CHANNELS_OF_PORTS]
PORT_CHANNELS = [Interface(f'port_channel.{number}', bridge_channel(number), channel(number))
                 for number in CHANNELS]
INTERFACES = PORTS + PORT_CHANNELS


class Row(NamedTuple):
    """An object in one state of the switch."""
    listed: bool      # the sets of ports by which the module steps have it
    active: bool      # its port is one that a walk may show
    served: tuple     # type and value; None when the switch has no such entry
    while_up: tuple   # the same for who has found the port to be up, and asks when it is no more
    is_up: bool


ABSENT = Row(False, False, None, None, False)


def initial_state(mode):
    """All keys that change, and their values."""
    state = {
        'switch.mode': mode, 'switch.loop_guard_default': False, 'rapid_pvst.disabled_vlans': frozenset(),
        'mst.instance.1.vlans': frozenset({2, 3}), 'mst.instance.2.vlans': frozenset({4})}
    members = {
        'port.1': {1, 2, 3}, 'port.2': VLANS, ANCHOR: VLANS, 'port.4': {1, 4}, 'port.5': {1}, 'port.6': {1},
        'port_channel.1': VLANS, 'port_channel.2': {1, 5}}
    for interface in INTERFACES:
        state.update({f'{interface.key}.{name}': value for name, value in {
            'vlans': frozenset(members[interface.key]), 'root_guard': False, 'loop_guard': 'default',
            'link_type': 'auto', 'pre_standard_mst': False, 'pre_standard_neighbor': False,
            **dict.fromkeys(FLAG_KEYS, False), **dict.fromkeys(ROLE_KEYS, frozenset())}.items()})
    for number, of_channel in CHANNELS_OF_PORTS.items():
        state.update({
            f'port.{number}.link': 'up', f'port.{number}.channel': of_channel,
            f'port.{number}.half_duplex': False})
    state.update({
        'port.1.loop_guard': 'enabled', 'port.1.alternate_port_of': frozenset({1}),
        f'{ANCHOR}.half_duplex': True, f'{ANCHOR}.edge': True, f'{ANCHOR}.peer': True,
        f'{ANCHOR}.root_port_of': frozenset({0, 1, 2}),
        'port_channel.1.backup_port_of': frozenset({0, 2})})
    return state


def as_text(value):
    """A value as the switch is told it."""
    if isinstance(value, frozenset):
        return ','.join(str(number) for number in sorted(value))
    return str(value).lower() if isinstance(value, bool) else str(value)


def is_bridge_port(state, interface):
    return state.get(f'{interface.key}.channel', NO_CHANNEL) == NO_CHANNEL


def is_up(state, interface):
    if interface in PORTS:
        return state[f'{interface.key}.link'] == 'up'
    number = CHANNELS[PORT_CHANNELS.index(interface)]
    return any(state[f'{member.key}.link'] == 'up' for member in PORTS
               if state[f'{member.key}.channel'] == number)


def mst_vlans(state):
    """Those of each instance."""
    of_instances = {number: state[f'mst.instance.{number}.vlans'] for number in (1, 2)}
    all_vlans = frozenset(vlans((1, 4094)))
    return {CIST: all_vlans.difference(*of_instances.values()), **of_instances}


def vlans_of_trees(state):
    """Of each tree that runs, the VLANs whose members its ports are."""
    if state['switch.mode'] == 'mst':
        return mst_vlans(state)
    return {vlan: {vlan} for vlan in VLANS - state['rapid_pvst.disabled_vlans']}


def role(state, interface, tree):
    if not is_up(state, interface):
        return golden.ROLE_DISABLED
    return next((value for key, value in ROLE_KEYS.items() if tree in state[f'{interface.key}.{key}']),
                golden.DESIGNATED)


def flags(state, interface, keys):
    return golden.flags(*(FLAG_KEYS[key] for key in keys if state[f'{interface.key}.{key}']))


def link_type_in_operation(state, interface):
    configured = state[f'{interface.key}.link_type']
    if configured == 'auto':
        configured = 'shared' if state.get(f'{interface.key}.half_duplex', False) else 'point-to-point'
    return {'shared': golden.SHARED, 'point-to-point': golden.POINT_TO_POINT}[configured]


def always(kind, value):
    """An object that needs no port to be up."""
    return Row(True, True, (kind, value), (kind, value), True)


def scalars(state):
    is_mst = state['switch.mode'] == 'mst'
    table = b''.join(
        next((number for number in (1, 2) if vlan in state[f'mst.instance.{number}.vlans']), CIST)
        .to_bytes(2, 'big') for vlan in range(VLAN_IDENTIFIERS))
    digest = hmac.new(SIGNATURE_KEY, table, hashlib.md5).digest()
    assert 0 not in digest, 'the digest would not be served whole: choose other VLANs'
    values = {
        '.1.6.1': (INTEGER, 4 if is_mst else 5), '.1.6.2': (INTEGER, 1),
        '.1.6.7': (INTEGER, 2 if is_mst else 1),
        '.1.8.3': (INTEGER, golden.ENABLED if state['switch.loop_guard_default'] else golden.DISABLED),
        '.1.11.2': (OCTETS, b''), '.1.14.1': (UNSIGNED, 65), '.1.14.2': (UNSIGNED, 4094),
        '.1.14.3': (UNSIGNED, 0), '.1.14.8': (UNSIGNED, 20), '.1.14.9': (OCTETS, digest),
        '.1.14.10': (OCTETS, bytes.fromhex('112233445566778899aabbccddeeff12'))}
    return {f'{ROOT}{suffix}.0': always(kind, value) for suffix, (kind, value) in values.items()}


def mst_instances(state):
    rows = {}
    for number, mapped in mst_vlans(state).items():
        for column, half in ((golden.MST_VLANS_LOW, 'low'), (golden.MST_VLANS_HIGH, 'high')):
            rows[instance(column, number)] = always(OCTETS, half_bitmap(half, mapped))
        if state['switch.mode'] == 'mst':
            rows[instance(golden.MST_REMAINING_HOPS, number)] = always(INTEGER, 20)
    if state['switch.mode'] == 'mst':
        rows[instance(golden.MST_BRIDGE_ID, CIST)] = always(OCTETS, bytes.fromhex('8000' '00005e005300'))
        rows[instance(golden.MST_COST, CIST)] = always(UNSIGNED, 0)
    return rows


def vlan_trees(state):
    if state['switch.mode'] == 'mst':
        return {}
    disabled = state['rapid_pvst.disabled_vlans']
    return {instance(golden.PVST_VLAN_STATE, vlan): always(
        INTEGER, golden.FALSE if vlan in disabled else golden.TRUE) for vlan in VLANS}


def root_guards(state):
    return {instance(golden.ROOT_GUARD_SETTING, interface.index): always(
        INTEGER, golden.ENABLED if state[f'{interface.key}.root_guard'] else golden.DISABLED)
        for interface in INTERFACES if is_bridge_port(state, interface)}


def inconsistencies(state):
    """Only the anchor has any."""
    rows = {}
    columns = {golden.ROOT_STATE: golden.INCONSISTENT, golden.LOOP_STATE: golden.INCONSISTENT}
    if state['switch.mode'] != 'mst':
        columns[golden.PORT_STATE] = golden.PVID
    for column, value in columns.items():
        for tree, mapped in vlans_of_trees(state).items():
            if mapped & VLANS:
                kind = OCTETS if isinstance(value, bytes) else INTEGER
                rows[instance(column, (tree, bridge_port(3)))] = always(kind, value)
    return rows


def ports(state):
    """The tables by bridge port."""
    rows = {}
    for interface in INTERFACES:
        key, up = interface.key, is_up(state, interface)
        in_bridge = is_bridge_port(state, interface)
        in_operation = link_type_in_operation(state, interface) if up else golden.OTHER
        # What the switch answers, and what is served without asking it while there is no link.
        values = {
            golden.LOOP_GUARD_SETTING: (INTEGER, LOOP_GUARD[state[f'{key}.loop_guard']]),
            golden.RSTP_SETTING: (INTEGER, LINK_TYPES[state[f'{key}.link_type']]),
            golden.RSTP_LINK_TYPE: (INTEGER, in_operation)}
        without_link = {golden.RSTP_LINK_TYPE: (INTEGER, golden.OTHER)}
        if state['switch.mode'] == 'mst':
            has_neighbor = state[f'{key}.pre_standard_neighbor']
            values.update({
                golden.SMST_FLAGS: (OCTETS, flags(state, interface, FLAG_KEYS)),
                golden.SMST_MODE: (INTEGER, golden.SEND_PRE_STANDARD if state[f'{key}.pre_standard_mst']
                                   else golden.SEND_AUTO),
                golden.SMST_STATUS: (INTEGER, golden.PRE_STANDARD if has_neighbor else golden.STANDARD)})
            without_link.update({
                golden.SMST_FLAGS: (OCTETS, golden.NO_FLAGS), golden.SMST_STATUS: (INTEGER, golden.UNKNOWN)})
        for column, value in values.items():
            served = value if up else without_link.get(column, value)
            rows[instance(column, interface.bridge_port)] = Row(
                in_bridge and bool(state[f'{key}.vlans']), in_bridge,
                served if in_bridge else None, value if in_bridge else None, up)
    return rows


def ports_of_trees(state):
    rows = {}
    for tree, mapped in vlans_of_trees(state).items():
        for interface in INTERFACES:
            if not is_bridge_port(state, interface):
                continue
            listed = bool(mapped & state[f'{interface.key}.vlans'])
            is_there = listed or tree == CIST
            values = {golden.PORT_ROLE: (INTEGER, role(state, interface, tree))}
            if state['switch.mode'] != 'mst':
                values[golden.RPVST_FLAGS] = (OCTETS, flags(state, interface, ('edge', 'peer')))
            for column, value in values.items():
                rows[instance(column, (tree, interface.bridge_port))] = Row(
                    listed, is_up(state, interface), value if is_there else None,
                    value if is_there else None, True)
    return rows


def rows_of(state):
    """Every object by its OID."""
    tables = (vlan_trees, inconsistencies, root_guards, ports, ports_of_trees, mst_instances)
    return {oid: row for table in (scalars, *tables) for oid, row in table(state).items()}


@lru_cache(maxsize=None)
def column_of(oid):
    return golden.column_and_index(oid)[0] or oid


@lru_cache(maxsize=None)
def place(oid):
    return tuple(arcs(oid))


def walk_of(state):
    """What a walk is while nothing changes: OIDs, types and values."""
    rows = rows_of(state)
    return [(oid, rows[oid].served) for oid in sorted(rows, key=place)
            if rows[oid].listed and rows[oid].active]


class Timespan:
    """The states in which a switch was during one request, and those in which it was when the module may have
    taken down which bridge ports are in VLANs."""

    def __init__(self, rows, rows_of_cache):
        self._rows = rows
        self._rows_of_cache = rows_of_cache
        self._oids = sorted(set().union(*rows), key=place)

    def _all(self, oid):
        return [rows.get(oid, ABSENT) for rows in self._rows]

    def _listed(self, oid, column):
        seen = self._rows_of_cache if column in golden.BASE_PORT_COLUMNS else self._rows
        return [rows.get(oid, ABSENT).listed for rows in seen]

    @staticmethod
    def _values(rows):
        values = {row.served for row in rows}
        if any(row.is_up for row in rows):
            values |= {row.while_up for row in rows}
        return values - {None}

    def right_answers(self, after):
        """To a GETNEXT from this OID: the values of each OID that may be answered.

        The module finds a row, then asks for it. One that has gone meanwhile ends its column."""
        answers = {}
        behind = (oid for oid in self._oids if place(oid) > place(after))
        for column, oids in groupby(behind, key=column_of):
            ended = certain = False
            for oid in oids:
                rows, listed = self._all(oid), self._listed(oid, column)
                may_be_found = any(listed) and any(row.active for row in rows)
                if may_be_found and self._values(rows):
                    answers[oid] = self._values(rows)
                ended |= may_be_found and any(row.served is None for row in rows)
                certain = all(listed) and all(row.active for row in rows)
                if certain:
                    break
            if certain and not ended:
                return answers
        answers[END] = {None}
        return answers

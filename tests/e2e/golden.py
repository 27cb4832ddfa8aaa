"""What the module serves for the tests' switches: every instance in the order of a walk, type and value."""

from itertools import chain

from harness.build import ROOT
from harness.oids import arcs, is_below
from harness.snmp_tools import Binding

ENABLED, DISABLED = 1, 2
TRUE, FALSE = 1, 2
INCONSISTENT = 1
# What is configured for loop guard, and of the type of a link.
GUARDED, UNGUARDED, AS_SWITCH = 1, 2, 3
FORCED_POINT_TO_POINT, FORCED_SHARED, AUTO = 1, 2, 3
# Of a link in operation; a port without a link has none of the two types.
POINT_TO_POINT, SHARED, OTHER = 1, 2, 3
ROLE_DISABLED, ROOT_PORT, DESIGNATED, ALTERNATE, BACKUP = 1, 2, 3, 4, 5
# Which kind of MST a port sends, and which its neighbour does.
SEND_PRE_STANDARD, SEND_AUTO = 1, 2
UNKNOWN, PRE_STANDARD, STANDARD = 1, 2, 3
# Of stpxInconsistentState, a string of one octet.
PVID, TYPE, PVID_AND_TYPE = b'\x80', b'\x40', b'\xc0'
# Of a port's flags, a string of one octet.
EDGE, BOUNDARY, PEER, DISPUTE = 0x80, 0x40, 0x10, 0x08
NO_FLAGS = b'\0'
HIGHEST_INDEX = 4294967295

# The halves of a bitmap of all VLANs: 256 octets each, VLAN 0 and VLAN 2048 in the highest bit of the first.
FIRST_OF_HALF = {'low': 0, 'high': 2048}
VLANS_IN_HALF = 2048


def port(number):
    return (26 << 24) + number


def channel(number):
    return (22 << 24) + number


def bridge_port(number):
    """The bridge port number of a physical port, by which tables name it within a tree."""
    return 128 + number


def bridge_channel(number):
    return 4096 + number


def flags(*those_set):
    return bytes([sum(those_set)])


def vlans(*ranges):
    return set(chain.from_iterable(range(first, last + 1) for first, last in ranges))


def half_bitmap(half, wanted):
    """One half of the bitmap of `wanted`, as it is served: without the zero octets at its end."""
    first = FIRST_OF_HALF[half]
    octets = bytearray(VLANS_IN_HALF // 8)
    for vlan in wanted & set(range(first, first + VLANS_IN_HALF)):
        position = vlan - first
        octets[position // 8] |= 0x80 >> position % 8
    return bytes(octets).rstrip(b'\0')


def scalar(suffix, kind, value):
    return [(f'{suffix}.0', kind, value)]


def instance(column_oid, index):
    """The OID of a row's object; `index` is a number, or a tuple of as many as the index has arcs."""
    numbers = index if isinstance(index, tuple) else (index,)
    return '.'.join([column_oid, *map(str, numbers)])


def column(suffix, kind, values):
    return [(instance(suffix, index), kind, value) for index, value in values.items()]


def below_root(*objects):
    return [Binding(ROOT + suffix, kind, value) for suffix, kind, value in chain(*objects)]


MST = below_root(
    column('.1.5.1.1.2', 'INTEGER', {
        channel(5): ENABLED,
        channel(9): DISABLED,
        port(1): ENABLED,
        port(3): DISABLED,
        port(300): ENABLED,
    }),
    column('.1.5.2.1.3', 'INTEGER', {
        (0, bridge_port(3)): INCONSISTENT,
        (0, bridge_port(300)): INCONSISTENT,
        (0, bridge_channel(5)): INCONSISTENT,
        (0, bridge_channel(9)): INCONSISTENT,
        (1, bridge_port(1)): INCONSISTENT,
        (2, bridge_port(1)): INCONSISTENT,
        (2, bridge_channel(5)): INCONSISTENT,
    }),
    scalar('.1.6.1', 'INTEGER', 4),
    scalar('.1.6.2', 'INTEGER', 1),
    scalar('.1.6.7', 'INTEGER', 2),
    column('.1.8.1.1.3', 'INTEGER', {
        bridge_port(1): GUARDED,
        bridge_port(3): UNGUARDED,
        bridge_port(300): AS_SWITCH,
        bridge_channel(5): UNGUARDED,
        bridge_channel(9): GUARDED,
    }),
    column('.1.8.2.1.3', 'INTEGER', {
        (0, bridge_port(1)): INCONSISTENT,
        (1, bridge_port(1)): INCONSISTENT,
        (2, bridge_port(1)): INCONSISTENT,
        (2, bridge_channel(5)): INCONSISTENT,
    }),
    scalar('.1.8.3', 'INTEGER', 1),
    scalar('.1.11.2', 'OCTET STRING', b'ops-lab'),
    column('.1.12.1.1.2', 'INTEGER', {
        bridge_port(1): AUTO,
        bridge_port(3): FORCED_SHARED,
        bridge_port(300): FORCED_POINT_TO_POINT,
        bridge_channel(5): AUTO,
        bridge_channel(9): FORCED_POINT_TO_POINT,
    }),
    column('.1.12.1.1.3', 'INTEGER', {
        bridge_port(1): SHARED,
        bridge_port(3): OTHER,
        bridge_port(300): POINT_TO_POINT,
        bridge_channel(5): POINT_TO_POINT,
        bridge_channel(9): OTHER,
    }),
    column('.1.12.2.1.3', 'INTEGER', {
        (0, bridge_port(1)): ROOT_PORT,
        (0, bridge_port(300)): DESIGNATED,
        (0, bridge_channel(5)): ALTERNATE,
        (1, bridge_port(1)): ALTERNATE,
        (1, bridge_channel(5)): ROOT_PORT,
        (2, bridge_port(1)): BACKUP,
        (2, bridge_channel(5)): DESIGNATED,
    }),
    scalar('.1.14.1', 'Gauge32', 65),
    scalar('.1.14.2', 'Gauge32', 4094),
    scalar('.1.14.3', 'Gauge32', 7),
    column('.1.14.5.1.2', 'OCTET STRING', {
        0: half_bitmap('low', vlans((1, 9), (21, 29), (33, 2046))),
        1: bytes.fromhex('003ff0'),
        2: half_bitmap('low', vlans((20, 20), (30, 32), (2047, 2047))),
        64: b'',
        4094: b'',
    }),
    column('.1.14.5.1.3', 'OCTET STRING', {
        0: half_bitmap('high', vlans((2056, 4093))),
        1: b'',
        2: bytes.fromhex('80'),
        64: half_bitmap('high', vlans((2049, 2055), (4094, 4094))),
        4094: b'',
    }),
    column('.1.14.5.1.4', 'INTEGER', {0: 17, 1: 18, 2: 40, 64: 1, 4094: 39}),
    column('.1.14.5.1.5', 'OCTET STRING', {0: bytes.fromhex('6007' '02a000ff7b00')}),
    column('.1.14.5.1.6', 'Gauge32', {0: 4000000001}),
    column('.1.14.7.1.2', 'OCTET STRING', {
        bridge_port(1): flags(EDGE, DISPUTE),
        bridge_port(3): NO_FLAGS,
        bridge_port(300): flags(BOUNDARY, PEER),
        bridge_channel(5): flags(EDGE, BOUNDARY, PEER, DISPUTE),
        bridge_channel(9): NO_FLAGS,
    }),
    column('.1.14.7.1.6', 'INTEGER', {
        bridge_port(1): SEND_AUTO,
        bridge_port(3): SEND_PRE_STANDARD,
        bridge_port(300): SEND_PRE_STANDARD,
        bridge_channel(5): SEND_AUTO,
        bridge_channel(9): SEND_AUTO,
    }),
    column('.1.14.7.1.7', 'INTEGER', {
        bridge_port(1): PRE_STANDARD,
        bridge_port(3): UNKNOWN,
        bridge_port(300): STANDARD,
        bridge_channel(5): PRE_STANDARD,
        bridge_channel(9): UNKNOWN,
    }),
    scalar('.1.14.8', 'Gauge32', 25),
    scalar('.1.14.9', 'OCTET STRING', bytes.fromhex('86c65f5ae18abd92890882b4bdf0aeb4')),
    scalar('.1.14.10', 'OCTET STRING', bytes.fromhex('0f1e2d3c4b5a69788796a5b4c3d2e1f1')),
)

RAPID_PVST = below_root(
    column('.1.2.2.1.2', 'INTEGER', {
        1: TRUE, 2: TRUE, 3: TRUE, 4: TRUE, 5: FALSE, 6: FALSE, 7: TRUE, 8: TRUE,
        20: FALSE, 33: TRUE, 2048: TRUE, 4094: FALSE,
    }),
    column('.1.3.1.1.3', 'OCTET STRING', {
        (1, bridge_port(1)): TYPE,
        (1, bridge_port(2)): PVID,
        (3, bridge_port(1)): PVID_AND_TYPE,
        (8, bridge_port(1)): PVID,
    }),
    column('.1.5.1.1.2', 'INTEGER', {
        channel(7): ENABLED,
        port(1): DISABLED,
        port(2): ENABLED,
        port(5): DISABLED,
    }),
    column('.1.5.2.1.3', 'INTEGER', {
        (1, bridge_port(2)): INCONSISTENT,
        (2, bridge_port(1)): INCONSISTENT,
        (7, bridge_port(1)): INCONSISTENT,
        (33, bridge_port(5)): INCONSISTENT,
    }),
    scalar('.1.6.1', 'INTEGER', 5),
    scalar('.1.6.2', 'INTEGER', 1),
    scalar('.1.6.7', 'INTEGER', 1),
    column('.1.8.1.1.3', 'INTEGER', {
        bridge_port(1): AS_SWITCH,
        bridge_port(2): GUARDED,
        bridge_port(5): UNGUARDED,
        bridge_channel(7): UNGUARDED,
    }),
    column('.1.8.2.1.3', 'INTEGER', {
        (1, bridge_port(1)): INCONSISTENT,
        (1, bridge_port(2)): INCONSISTENT,
        (1, bridge_channel(7)): INCONSISTENT,
    }),
    scalar('.1.8.3', 'INTEGER', 2),
    scalar('.1.11.2', 'OCTET STRING', b''),
    column('.1.12.1.1.2', 'INTEGER', {
        bridge_port(1): FORCED_SHARED,
        bridge_port(2): AUTO,
        bridge_port(5): FORCED_POINT_TO_POINT,
        bridge_channel(7): FORCED_SHARED,
    }),
    column('.1.12.1.1.3', 'INTEGER', {
        bridge_port(1): SHARED,
        bridge_port(2): POINT_TO_POINT,
        bridge_port(5): OTHER,
        bridge_channel(7): SHARED,
    }),
    column('.1.12.2.1.3', 'INTEGER', {
        (1, bridge_port(1)): ALTERNATE,
        (1, bridge_port(2)): ROOT_PORT,
        (1, bridge_channel(7)): DESIGNATED,
        (2, bridge_port(1)): ROOT_PORT,
        (3, bridge_port(1)): BACKUP,
        (4, bridge_port(1)): DESIGNATED,
        (7, bridge_port(1)): ROOT_PORT,
        (8, bridge_port(1)): ALTERNATE,
        (33, bridge_port(2)): DESIGNATED,
        (2048, bridge_channel(7)): BACKUP,
    }),
    column('.1.13.1.1.3', 'OCTET STRING', {
        (1, bridge_port(1)): NO_FLAGS,
        (1, bridge_port(2)): flags(EDGE, PEER),
        (1, bridge_channel(7)): flags(PEER),
        (2, bridge_port(1)): NO_FLAGS,
        (3, bridge_port(1)): NO_FLAGS,
        (4, bridge_port(1)): NO_FLAGS,
        (7, bridge_port(1)): NO_FLAGS,
        (8, bridge_port(1)): NO_FLAGS,
        (33, bridge_port(2)): flags(EDGE, PEER),
        (2048, bridge_channel(7)): flags(PEER),
    }),
    scalar('.1.14.1', 'Gauge32', 65),
    scalar('.1.14.2', 'Gauge32', 4094),
    scalar('.1.14.3', 'Gauge32', 0),
    column('.1.14.5.1.2', 'OCTET STRING', {0: half_bitmap('low', vlans((1, 4094)))}),
    column('.1.14.5.1.3', 'OCTET STRING', {0: half_bitmap('high', vlans((1, 4094)))}),
    scalar('.1.14.8', 'Gauge32', 20),
    scalar('.1.14.9', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
    scalar('.1.14.10', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
)

# Ports of trees that a walk passes over, because they have no link. A GET finds them.
MST_WITHOUT_LINK = below_root(
    column('.1.12.2.1.3', 'INTEGER', {
        (0, bridge_port(3)): ROLE_DISABLED,
        (0, bridge_channel(9)): ROLE_DISABLED,
    }),
)
RAPID_PVST_WITHOUT_LINK = below_root(
    column('.1.12.2.1.3', 'INTEGER', {(33, bridge_port(5)): ROLE_DISABLED}),
    column('.1.13.1.1.3', 'OCTET STRING', {(33, bridge_port(5)): flags(EDGE)}),
)

# What needs no switch.
CONSTANTS = below_root(
    scalar('.1.14.1', 'Gauge32', 65),
    scalar('.1.14.2', 'Gauge32', 4094),
)

# The columns of the module's tables, in the order of a walk.
TABLE_COLUMNS = [ROOT + suffix for suffix in (
    '.1.2.2.1.1', '.1.2.2.1.2',
    '.1.3.1.1.1', '.1.3.1.1.2', '.1.3.1.1.3',
    '.1.5.1.1.1', '.1.5.1.1.2',
    '.1.5.2.1.1', '.1.5.2.1.2', '.1.5.2.1.3',
    '.1.6.3.1.1',
    '.1.8.1.1.1', '.1.8.1.1.3',
    '.1.8.2.1.1', '.1.8.2.1.2', '.1.8.2.1.3',
    '.1.12.1.1.1', '.1.12.1.1.2', '.1.12.1.1.3',
    '.1.12.2.1.1', '.1.12.2.1.2', '.1.12.2.1.3',
    '.1.13.1.1.1', '.1.13.1.1.2', '.1.13.1.1.3',
    '.1.14.5.1.1', '.1.14.5.1.2', '.1.14.5.1.3', '.1.14.5.1.4', '.1.14.5.1.5', '.1.14.5.1.6',
    '.1.14.7.1.1', '.1.14.7.1.2', '.1.14.7.1.6', '.1.14.7.1.7',
)]

# The columns that number the rows: they answer nothing.
INDEX_COLUMNS = [ROOT + suffix for suffix in (
    '.1.2.2.1.1',
    '.1.3.1.1.1', '.1.3.1.1.2',
    '.1.5.1.1.1',
    '.1.5.2.1.1', '.1.5.2.1.2',
    '.1.8.1.1.1',
    '.1.8.2.1.1', '.1.8.2.1.2',
    '.1.12.1.1.1',
    '.1.12.2.1.1', '.1.12.2.1.2',
    '.1.13.1.1.1', '.1.13.1.1.2',
    '.1.14.5.1.1',
    '.1.14.7.1.1',
)]

PVST_VLAN_STATE = ROOT + '.1.2.2.1.2'
ROOT_GUARD_SETTING = ROOT + '.1.5.1.1.2'
# Of the MST instance table: the columns of VLANs, and those that MST mode only has.
MST_VLANS_LOW, MST_VLANS_HIGH, MST_REMAINING_HOPS, MST_BRIDGE_ID, MST_COST = MST_INSTANCE_COLUMNS = [
    f'{ROOT}.1.14.5.1.{number}' for number in range(2, 7)]
MST_VLAN_COLUMNS = [MST_VLANS_LOW, MST_VLANS_HIGH]
# The columns whose rows are numbered by bridge port, the last three of which MST mode only has.
LOOP_GUARD_SETTING, RSTP_SETTING, RSTP_LINK_TYPE, SMST_FLAGS, SMST_MODE, SMST_STATUS = BASE_PORT_COLUMNS = [
    ROOT + suffix for suffix in (
        '.1.8.1.1.3', '.1.12.1.1.2', '.1.12.1.1.3', '.1.14.7.1.2', '.1.14.7.1.6', '.1.14.7.1.7')]
SMST_PORT_COLUMNS = [SMST_FLAGS, SMST_MODE, SMST_STATUS]
# The columns whose rows are numbered by tree and bridge port: inconsistencies, and ports of trees.
PORT_STATE, ROOT_STATE, LOOP_STATE = INCONSISTENCY_COLUMNS = [
    ROOT + suffix for suffix in ('.1.3.1.1.3', '.1.5.2.1.3', '.1.8.2.1.3')]
PORT_ROLE, RPVST_FLAGS = PORT_OF_TREE_COLUMNS = [ROOT + suffix for suffix in ('.1.12.2.1.3', '.1.13.1.1.3')]
TREE_AND_PORT_COLUMNS = INCONSISTENCY_COLUMNS + PORT_OF_TREE_COLUMNS
VALUE_COLUMNS = [
    PVST_VLAN_STATE, ROOT_GUARD_SETTING, *MST_INSTANCE_COLUMNS, *BASE_PORT_COLUMNS, *TREE_AND_PORT_COLUMNS]


def column_and_index(oid):
    """The column that an object stands in, and the arcs of its index; without a table, None and no arcs."""
    column_oid = next((known for known in TABLE_COLUMNS if is_below(oid, known)), None)
    return column_oid, tuple(arcs(oid.removeprefix(column_oid))) if column_oid else ()


def scalars_of(expected):
    return [binding for binding in expected if column_and_index(binding.oid)[0] is None]


def rows_of(expected):
    return [binding for binding in expected if column_and_index(binding.oid)[0] is not None]


def column_of(expected, column_oid):
    return [binding for binding in expected if column_and_index(binding.oid)[0] == column_oid]


def fetched_of(expected):
    """What needs the switch."""
    return [binding for binding in expected if binding not in CONSTANTS]


def asked_of(expected):
    """What the spanning-tree process is asked for. That a port has no link is known without asking it, and
    tells what type of link it has in operation."""
    return [binding for binding in fetched_of(expected)
            if (column_and_index(binding.oid)[0], binding.value) != (RSTP_LINK_TYPE, OTHER)]

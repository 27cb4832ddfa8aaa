"""What the module serves for the tests' switches: every instance in the order of a walk, type and value."""

from itertools import chain

from harness.build import ROOT
from harness.oids import arcs, is_below
from harness.snmp_tools import Binding

ENABLED, DISABLED = 1, 2
TRUE, FALSE = 1, 2
INCONSISTENT = 1
# Of stpxInconsistentState, a string of one octet.
PVID, TYPE, PVID_AND_TYPE = b'\x80', b'\x40', b'\xc0'
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
    column('.1.8.2.1.3', 'INTEGER', {
        (0, bridge_port(1)): INCONSISTENT,
        (1, bridge_port(1)): INCONSISTENT,
        (2, bridge_port(1)): INCONSISTENT,
        (2, bridge_channel(5)): INCONSISTENT,
    }),
    scalar('.1.8.3', 'INTEGER', 1),
    scalar('.1.11.2', 'OCTET STRING', b'ops-lab'),
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
    column('.1.8.2.1.3', 'INTEGER', {
        (1, bridge_port(1)): INCONSISTENT,
        (1, bridge_port(2)): INCONSISTENT,
        (1, bridge_channel(7)): INCONSISTENT,
    }),
    scalar('.1.8.3', 'INTEGER', 2),
    scalar('.1.11.2', 'OCTET STRING', b''),
    scalar('.1.14.1', 'Gauge32', 65),
    scalar('.1.14.2', 'Gauge32', 4094),
    scalar('.1.14.3', 'Gauge32', 0),
    column('.1.14.5.1.2', 'OCTET STRING', {0: half_bitmap('low', vlans((1, 4094)))}),
    column('.1.14.5.1.3', 'OCTET STRING', {0: half_bitmap('high', vlans((1, 4094)))}),
    scalar('.1.14.8', 'Gauge32', 20),
    scalar('.1.14.9', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
    scalar('.1.14.10', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
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
    '.1.8.2.1.1', '.1.8.2.1.2',
    '.1.14.5.1.1',
)]

PVST_VLAN_STATE = ROOT + '.1.2.2.1.2'
ROOT_GUARD_SETTING = ROOT + '.1.5.1.1.2'
# Of the MST instance table: the columns of VLANs, and those that MST mode only has.
MST_VLANS_LOW, MST_VLANS_HIGH, MST_REMAINING_HOPS, MST_BRIDGE_ID, MST_COST = MST_INSTANCE_COLUMNS = [
    f'{ROOT}.1.14.5.1.{number}' for number in range(2, 7)]
MST_VLAN_COLUMNS = [MST_VLANS_LOW, MST_VLANS_HIGH]
# The columns whose rows are numbered by tree and bridge port.
PORT_STATE, ROOT_STATE, LOOP_STATE = TREE_AND_PORT_COLUMNS = [
    ROOT + suffix for suffix in ('.1.3.1.1.3', '.1.5.2.1.3', '.1.8.2.1.3')]
VALUE_COLUMNS = [PVST_VLAN_STATE, ROOT_GUARD_SETTING, *MST_INSTANCE_COLUMNS, *TREE_AND_PORT_COLUMNS]


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

"""What the module serves for the tests' switches: every instance in the order of a walk, type and value."""

from harness.build import ROOT
from harness.snmp_tools import Binding


def below_root(rows):
    return [Binding(ROOT + suffix, kind, value) for suffix, kind, value in rows]


MST = below_root([
    ('.1.6.1.0', 'INTEGER', 4),
    ('.1.6.2.0', 'INTEGER', 1),
    ('.1.6.7.0', 'INTEGER', 2),
    ('.1.8.3.0', 'INTEGER', 1),
    ('.1.11.2.0', 'OCTET STRING', b'ops-lab'),
    ('.1.14.1.0', 'Gauge32', 65),
    ('.1.14.2.0', 'Gauge32', 4094),
    ('.1.14.3.0', 'Gauge32', 7),
    ('.1.14.8.0', 'Gauge32', 25),
    ('.1.14.9.0', 'OCTET STRING', bytes.fromhex('d44afa2a199da8f5a95c3cad447fbfa2')),
    ('.1.14.10.0', 'OCTET STRING', bytes.fromhex('0f1e2d3c4b5a69788796a5b4c3d2e1f1')),
])

RAPID_PVST = below_root([
    ('.1.6.1.0', 'INTEGER', 5),
    ('.1.6.2.0', 'INTEGER', 1),
    ('.1.6.7.0', 'INTEGER', 1),
    ('.1.8.3.0', 'INTEGER', 2),
    ('.1.11.2.0', 'OCTET STRING', b''),
    ('.1.14.1.0', 'Gauge32', 65),
    ('.1.14.2.0', 'Gauge32', 4094),
    ('.1.14.3.0', 'Gauge32', 0),
    ('.1.14.8.0', 'Gauge32', 20),
    ('.1.14.9.0', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
    ('.1.14.10.0', 'OCTET STRING', bytes.fromhex('ac36177f50283cd4b83821d8ab26de62')),
])

# What needs no switch.
CONSTANTS = below_root([
    ('.1.14.1.0', 'Gauge32', 65),
    ('.1.14.2.0', 'Gauge32', 4094),
])

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

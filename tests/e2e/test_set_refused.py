"""The module is read-only, whatever access an object is registered with and whatever the manager may do."""

import pytest
from golden import TABLE_COLUMNS
from harness.build import ROOT
from harness.lab import run_lab
from harness.snmp_tools import Binding, Failure, v1, v2c, v3

READ_WRITE = [('.1.14.8.0', 'u', 30, 'Gauge32', 25), ('.1.6.1.0', 'i', 5, 'INTEGER', 4),
              ('.1.6.2.0', 'i', 2, 'INTEGER', 1), ('.1.8.3.0', 'i', 2, 'INTEGER', 1)]
READ_ONLY = [('.1.11.2.0', 's', 'other', 'OCTET STRING', b'ops-lab'), ('.1.14.3.0', 'u', 8, 'Gauge32', 7),
             ('.1.14.1.0', 'u', 1, 'Gauge32', 65), ('.1.14.2.0', 'u', 1, 'Gauge32', 4094),
             ('.1.6.7.0', 'i', 1, 'INTEGER', 2),
             ('.1.14.9.0', 's', 'other', 'OCTET STRING', bytes.fromhex('d44afa2a199da8f5a95c3cad447fbfa2')),
             ('.1.14.10.0', 's', 'other', 'OCTET STRING', bytes.fromhex('0f1e2d3c4b5a69788796a5b4c3d2e1f1'))]


@pytest.fixture(name='shared_lab', scope='module')
def fixture_shared_lab():
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.mark.parametrize('suffix, tool_type, value, kind, served', READ_WRITE + READ_ONLY)
@pytest.mark.parametrize('who, reason', [
    (v2c('private'), 'notWritable'), (v3('alice'), 'notWritable'), (v1('private'), 'noSuchName'),
], ids=['v2c', 'v3', 'v1'])
def test_set_is_refused_and_changes_nothing(shared_lab, suffix, tool_type, value, kind, served, who, reason):
    oid = ROOT + suffix
    answer = shared_lab.snmp.set(oid, tool_type, value, who)
    assert isinstance(answer, Failure) and reason in answer.reason
    assert shared_lab.snmp.get(oid) == [Binding(oid, kind, served)]


@pytest.mark.parametrize('column', TABLE_COLUMNS)
def test_set_of_a_column_is_refused(shared_lab, column):
    for who, reason in ((v2c('private'), 'notWritable'), (v1('private'), 'noSuchName')):
        answer = shared_lab.snmp.set(f'{column}.129', 'i', 1, who)
        assert isinstance(answer, Failure) and reason in answer.reason


def test_the_writer_may_write_elsewhere(shared_lab):
    """The refusals are the module's: the same manager can set what is writable."""
    sys_location = '.1.3.6.1.2.1.1.6.0'
    assert shared_lab.snmp.set(sys_location, 's', 'lab', v2c('private')) == [
        Binding(sys_location, 'OCTET STRING', b'lab')]

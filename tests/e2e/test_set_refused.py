"""The module is read-only, whatever access an object is registered with and whatever the manager may do."""

import golden
import pytest
from harness.snmp_tools import Binding, Failure, v1, v2c, v3

# Of each type, as the tools write it, a value that no object has.
OTHER_VALUES = {'INTEGER': ('i', 9), 'Gauge32': ('u', 9), 'OCTET STRING': ('s', 'other')}

WRITERS = pytest.mark.parametrize('who, reason', [
    (v2c('private'), 'notWritable'), (v3('alice'), 'notWritable'), (v1('private'), 'noSuchName'),
], ids=['v2c', 'v3', 'v1'])


def check_set_is_refused(lab, oid, kind, who, reason):
    tool_type, value = OTHER_VALUES[kind]
    answer = lab.snmp.set(oid, tool_type, value, who)
    assert isinstance(answer, Failure) and reason in answer.reason, f'{oid}: {answer}'


@WRITERS
def test_set_of_each_object_is_refused_and_changes_nothing(lab, who, reason):
    for oid, kind, _ in golden.MST:
        check_set_is_refused(lab, oid, kind, who, reason)
    assert lab.snmp.get(*(binding.oid for binding in golden.MST)) == golden.MST


@WRITERS
def test_set_of_each_row_in_the_other_mode_is_refused_and_changes_nothing(rapid_pvst_lab, who, reason):
    rows = golden.rows_of(golden.RAPID_PVST)
    for oid, kind, _ in rows:
        check_set_is_refused(rapid_pvst_lab, oid, kind, who, reason)
    assert rapid_pvst_lab.snmp.get(*(binding.oid for binding in rows)) == rows


@pytest.mark.parametrize('column', golden.TABLE_COLUMNS)
def test_set_of_a_row_that_no_table_has_is_refused(lab, column):
    for who, reason in ((v2c('private'), 'notWritable'), (v1('private'), 'noSuchName')):
        check_set_is_refused(lab, f'{column}.129', 'INTEGER', who, reason)


def test_the_writer_may_write_elsewhere(lab):
    """The refusals are the module's: the same manager can set what is writable."""
    sys_location = '.1.3.6.1.2.1.1.6.0'
    assert lab.snmp.set(sys_location, 's', 'lab', v2c('private')) == [
        Binding(sys_location, 'OCTET STRING', b'lab')]

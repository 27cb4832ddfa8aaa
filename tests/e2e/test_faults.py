"""Replies that are missing, late or malformed are never served, and spoil no later request."""

import time

import golden
import pytest
from harness.build import ROOT
from harness.snmp_tools import Binding

MAX_HOP_COUNT = ROOT + '.1.14.8.0'
# Beyond the short deadline: when nobody waits any more, and when the next request already does.
LATE_MS = 2000
A_LITTLE_LATE_MS = 1500

# Each order of malformed replies begins with the same kind; all kinds are sent where no count ends them.
ROUNDS = 3

MST_LAB, RAPID_PVST_LAB = 'impatient_lab', 'impatient_rapid_pvst_lab'

# One of each table whose answer is a single reply of the switch, and a scalar.
OBJECTS = {
    'max-hop-count': (MST_LAB, Binding(MAX_HOP_COUNT, 'Gauge32', 25)),
    'root-guard-setting': (MST_LAB, golden.column_of(golden.MST, golden.ROOT_GUARD_SETTING)[-1]),
    'loop-guard-setting': (MST_LAB, golden.column_of(golden.MST, golden.LOOP_GUARD_SETTING)[-1]),
    'pvst-vlan-state': (RAPID_PVST_LAB, golden.column_of(golden.RAPID_PVST, golden.PVST_VLAN_STATE)[4]),
}


def without(some, bindings):
    return [binding for binding in bindings if binding not in some]


def unasked_of(expected):
    """What may be served or not: it needs the connection, which faults interrupt, but no reply."""
    return without(golden.asked_of(expected), golden.fetched_of(expected))


def test_one_dropped_reply_costs_one_request(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('drop', count=1)
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.wait_for(MAX_HOP_COUNT, 25)


@pytest.mark.parametrize('lab_name, wanted', OBJECTS.values(), ids=OBJECTS)
@pytest.mark.parametrize('kind', ['garbage', 'disconnect'])
def test_malformed_reply_or_closed_connection_is_no_such_instance_then_right_again(
        kind, lab_name, wanted, request):
    lab = request.getfixturevalue(lab_name)
    for _ in range(ROUNDS):
        lab.switch.fault(kind, count=1)
        assert lab.snmp.get(wanted.oid) == [Binding(wanted.oid, 'noSuchInstance')]
        lab.wait_for(wanted.oid, wanted.value)


@pytest.mark.parametrize('lab_name, expected', [
    (MST_LAB, golden.MST), (RAPID_PVST_LAB, golden.RAPID_PVST)], ids=['mst', 'rapid-pvst'])
@pytest.mark.parametrize('fault, details', [
    ('drop', {}), ('garbage', {}), ('disconnect', {}), ('delay', {'delay_ms': LATE_MS})],
    ids=['drop', 'garbage', 'disconnect', 'delay'])
def test_no_table_has_a_row_during_a_fault_and_all_are_back_after_it(
        fault, details, lab_name, expected, request):
    asked = golden.asked_of(expected)
    lab = request.getfixturevalue(lab_name)
    lab.switch.fault(fault, **details)
    assert lab.snmp.get(*(binding.oid for binding in asked)) == [
        Binding(binding.oid, 'noSuchInstance') for binding in asked]
    for walked in (lab.snmp.walk(ROOT), lab.snmp.bulk_walk(ROOT)):
        assert without(unasked_of(expected), walked) == golden.CONSTANTS
    for column in golden.VALUE_COLUMNS:
        assert without(unasked_of(expected), lab.snmp.walk(column)) == []
    lab.switch.fault('none')
    lab.wait_for(MAX_HOP_COUNT, dict((oid, value) for oid, _, value in expected)[MAX_HOP_COUNT])
    lab.wait_for_walk(expected)


@pytest.mark.parametrize('kind', ['drop', 'garbage', 'disconnect'])
def test_fault_within_a_walk_leaves_objects_out_and_shows_no_wrong_one(impatient_rapid_pvst_lab, kind):
    lab = impatient_rapid_pvst_lab
    lab.switch.fault(kind, count=1)
    walked = lab.snmp.walk(ROOT)
    assert walked == [binding for binding in golden.RAPID_PVST if binding in walked]
    lab.wait_for(MAX_HOP_COUNT, 20)
    lab.wait_for_walk(golden.RAPID_PVST)


def test_reply_delayed_within_the_deadline_is_served(lab):
    lab.switch.fault('delay', delay_ms=300)
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 25)]


def test_reply_after_the_deadline_is_no_such_instance_and_answers_no_later_request(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('delay', delay_ms=LATE_MS, count=1)
    late = time.monotonic() + 2 * LATE_MS / 1000
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.switch.set('mst.max_hops', '31')
    lab.wait_for(MAX_HOP_COUNT, 31)
    while time.monotonic() < late:
        assert lab.snmp.get(MAX_HOP_COUNT)[0].value in (None, 31)
    lab.wait_for(MAX_HOP_COUNT, 31)


def test_reply_that_arrives_while_the_next_request_waits_does_not_answer_it(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('delay', delay_ms=A_LITTLE_LATE_MS)
    enough = time.monotonic() + 2 * A_LITTLE_LATE_MS / 1000
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.switch.set('mst.max_hops', '31')
    while time.monotonic() < enough:
        assert lab.snmp.get(MAX_HOP_COUNT)[0].value in (None, 31)
    lab.switch.fault('none')
    lab.wait_for(MAX_HOP_COUNT, 31)

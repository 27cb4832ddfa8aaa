"""Replies that are missing, late or malformed are never served, and spoil no later request."""

import time

import golden
import pytest
from harness.build import ROOT
from harness.snmp_tools import Binding

MAX_HOP_COUNT = ROOT + '.1.14.8.0'
# Beyond the short deadline: when nobody waits any more, and when the next request already does.
LATE_MS = 4000
A_LITTLE_LATE_MS = 1500

# At least one of each kind of malformed reply, which the switch sends in turn.
GARBAGE_KINDS = 12


def test_silent_switch_is_no_such_instance_then_right_again(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('drop')
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    assert lab.snmp.walk(ROOT) == golden.CONSTANTS
    lab.switch.fault('none')
    lab.wait_for(MAX_HOP_COUNT, 25)
    assert lab.snmp.walk(ROOT) == golden.MST


def test_one_dropped_reply_costs_one_request(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('drop', '--count', '1')
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.wait_for(MAX_HOP_COUNT, 25)


@pytest.mark.parametrize('kind, rounds', [('garbage', GARBAGE_KINDS), ('disconnect', 3)])
def test_malformed_reply_or_closed_connection_is_no_such_instance_then_right_again(
        impatient_lab, kind, rounds):
    lab = impatient_lab
    for _ in range(rounds):
        lab.switch.fault(kind, '--count', '1')
        assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
        lab.wait_for(MAX_HOP_COUNT, 25)
    assert lab.snmp.walk(ROOT) == golden.MST


def test_walk_during_malformed_replies_serves_what_needs_no_switch(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('garbage')
    assert lab.snmp.walk(ROOT) == golden.CONSTANTS
    lab.switch.fault('none')
    lab.wait_for(MAX_HOP_COUNT, 25)


def test_reply_delayed_within_the_deadline_is_served(lab):
    lab.switch.fault('delay', '300')
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 25)]


def test_reply_after_the_deadline_is_no_such_instance_and_answers_no_later_request(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('delay', str(LATE_MS), '--count', '1')
    late = time.monotonic() + 2 * LATE_MS / 1000
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.switch.set('mst.max_hops', '31')
    lab.wait_for(MAX_HOP_COUNT, 31)
    while time.monotonic() < late:
        assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 31)]


def test_reply_that_arrives_while_the_next_request_waits_does_not_answer_it(impatient_lab):
    lab = impatient_lab
    lab.switch.fault('delay', str(A_LITTLE_LATE_MS))
    enough = time.monotonic() + 4 * A_LITTLE_LATE_MS / 1000
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]
    lab.switch.set('mst.max_hops', '31')
    while time.monotonic() < enough:
        assert lab.snmp.get(MAX_HOP_COUNT)[0].value in (None, 31)
    lab.switch.fault('none')
    lab.wait_for(MAX_HOP_COUNT, 31)

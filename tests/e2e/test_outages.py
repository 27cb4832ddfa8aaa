"""A switch that is stopped, killed or hung costs its objects the answer, never the agent."""

import golden
import pytest
from harness.build import ROOT
from harness.polling import wait_until
from harness.snmp_tools import Binding

REGION_NAME = ROOT + '.1.11.2.0'
MAX_HOP_COUNT = ROOT + '.1.14.8.0'


def check_only_constants_are_served(lab, lost=golden.MST):
    asked = [binding.oid for binding in golden.fetched_of(lost)]
    assert lab.snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    assert lab.snmp.walk(ROOT) == golden.CONSTANTS
    assert lab.snmp.bulk_walk(ROOT) == golden.CONSTANTS
    assert lab.agent.is_alive()


def check_everything_is_served_again(lab, lost=golden.MST):
    for oid in (REGION_NAME, MAX_HOP_COUNT):
        [expected] = [binding.value for binding in lost if binding.oid == oid]
        lab.wait_for(oid, expected)
    assert lab.snmp.walk(ROOT) == lost


@pytest.mark.parametrize('end', ['stop', 'kill'])
def test_ended_switch_is_no_such_instance_and_its_values_return_with_it(lab, end):
    assert lab.snmp.walk(ROOT) == golden.MST
    getattr(lab.switch, end)()
    check_only_constants_are_served(lab)
    lab.switch.start()
    check_everything_is_served_again(lab)


def test_tables_of_a_rapid_pvst_switch_are_empty_without_it_and_return_with_it(rapid_pvst_lab):
    lab = rapid_pvst_lab
    assert lab.snmp.walk(ROOT) == golden.RAPID_PVST
    lab.switch.kill()
    check_only_constants_are_served(lab, golden.RAPID_PVST)
    lab.switch.start()
    check_everything_is_served_again(lab, golden.RAPID_PVST)


def test_switch_that_ended_before_the_first_request(lab):
    lab.switch.kill()
    check_only_constants_are_served(lab)
    lab.switch.start()
    check_everything_is_served_again(lab)


def test_hung_switch_is_no_such_instance_and_its_values_return_when_it_goes_on(impatient_lab):
    lab = impatient_lab
    lab.wait_for_walk(golden.MST)
    lab.switch.hang()
    # What it has vouched for is served until the lease is over.
    wait_until(lambda: lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')], 'the lease is over')
    check_only_constants_are_served(lab)
    lab.switch.resume()
    lab.wait_for_walk(golden.MST)


def test_switch_that_hung_before_the_first_request(impatient_lab):
    lab = impatient_lab
    lab.switch.hang()
    check_only_constants_are_served(lab)
    lab.switch.resume()
    lab.wait_for_walk(golden.MST)


def test_value_served_before_an_outage_is_not_served_during_it(lab):
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 25)]
    lab.switch.stop()
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')]


def test_switch_restarted_between_two_requests_is_served_by_the_second(lab):
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 25)]
    lab.switch.stop()
    lab.switch.start()
    assert lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'Gauge32', 25)]


def test_many_restarts_of_the_switch_under_one_agent(lab):
    for hops in range(6, 36):
        lab.switch.kill()
        lab.switch.start()
        lab.switch.set('mst.max_hops', str(hops))
        lab.wait_for(MAX_HOP_COUNT, hops)
    assert lab.agent.is_alive()

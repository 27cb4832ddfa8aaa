"""Every object by GET, GETNEXT, walk and bulk walk, against one list for each switch."""

import golden
import pytest
from harness.build import ROOT
from harness.lab import run_lab
from harness.oids import following, is_below
from harness.snmp_tools import Binding, v1, v3

NO_ROW = '.65535.65535'


@pytest.fixture(name='shared_lab_and_objects', scope='module', ids=['mst', 'rapid-pvst'],
                params=[('mst.toml', golden.MST), ('rapid-pvst.toml', golden.RAPID_PVST)])
def fixture_shared_lab_and_objects(request):
    """Nobody changes its switch."""
    scenario, expected = request.param
    with run_lab(scenario, with_probe=False) as lab:
        yield lab, expected


@pytest.fixture(name='served')
def fixture_served(shared_lab_and_objects):
    """The tools for an agent of this switch, and what it must serve."""
    lab, expected = shared_lab_and_objects
    yield lab.snmp, expected
    lab.check()


def test_get_answers_each_object(served):
    snmp, expected = served
    for binding in expected:
        assert snmp.get(binding.oid) == [binding]


def test_one_get_answers_all_objects(served):
    snmp, expected = served
    assert snmp.get(*(binding.oid for binding in expected)) == expected


def test_every_object_answers_in_some_mode():
    """But for those that number rows, and a table that is never served."""
    never = {*golden.INDEX_COLUMNS, ROOT + '.1.6.3.1.1'}
    answering = {golden.column_and_index(binding.oid)[0] for binding in golden.MST + golden.RAPID_PVST}
    assert answering - {None} == set(golden.TABLE_COLUMNS) - never == set(golden.VALUE_COLUMNS)


def test_walk_of_the_module_root_is_exactly_the_objects_in_oid_order(served):
    snmp, expected = served
    assert snmp.walk(ROOT) == expected


@pytest.mark.parametrize('who', [v1('public'), v3('alice')], ids=['v1', 'v3'])
def test_walk_is_the_same_for_every_version(served, who):
    snmp, expected = served
    assert snmp.walk(ROOT, who=who) == expected


@pytest.mark.parametrize('repetitions', [1, 2, 7, 50])
def test_bulk_walk_equals_the_walk(served, repetitions):
    snmp, expected = served
    assert snmp.bulk_walk(ROOT, repetitions=repetitions) == expected


def test_one_getbulk_answers_all_objects_and_goes_on_behind_them(served):
    snmp, expected = served
    bindings = snmp.get_bulk(ROOT, len(expected) + 1)
    assert bindings[:-1] == expected
    assert not is_below(bindings[-1].oid, ROOT)


def test_getnext_from_root_and_from_each_object_is_the_first_and_the_following_one(served):
    snmp, expected = served
    asked = [ROOT] + [binding.oid for binding in expected[:-1]]
    assert snmp.get_next(*asked) == expected


def test_getnext_from_a_scalar_without_its_instance_is_its_instance(served):
    snmp, expected = served
    scalars = golden.scalars_of(expected)
    assert snmp.get_next(*(binding.oid.removesuffix('.0') for binding in scalars)) == scalars


@pytest.mark.parametrize('before', [
    '.0', '.1.5.4294967295', '.1.6', '.1.6.1', '.1.6.1.0.0', '.1.6.1.4294967295', '.1.6.3', '.1.7',
    '.1.8.1.1.2', '.1.8.1.2', '.1.8.2.1.3', '.1.9', '.1.12', '.1.12.1.1.4', '.1.12.2.0', '.1.13', '.1.13.2',
    '.1.14.2.7', '.1.14.4', '.1.14.6', '.1.14.7.1.3', '.1.14.7.1.8', '.1.14.9.1',
])
def test_getnext_from_between_objects_is_the_following_object(served, before):
    snmp, expected = served
    assert snmp.get_next(ROOT + before) == [following(expected, ROOT + before)]


def test_getnext_after_the_last_object_leaves_the_module(served):
    snmp, expected = served
    [binding] = snmp.get_next(expected[-1].oid)
    assert not is_below(binding.oid, ROOT)


@pytest.mark.parametrize('instance', ['', '.1', '.0.0', '.4294967295'])
def test_get_of_a_wrong_instance_of_a_scalar_is_no_such_instance(served, instance):
    snmp, expected = served
    asked = [binding.oid.removesuffix('.0') + instance for binding in golden.scalars_of(expected)]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_get_of_a_row_that_no_table_has_is_no_such_instance(served):
    snmp, _ = served
    asked = [column + NO_ROW for column in golden.TABLE_COLUMNS]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_get_outside_every_object_is_no_such_object(served):
    snmp, _ = served
    asked = [ROOT + suffix for suffix in (
        '.1.14.20.0', '.1.6.4.0', '.1.8.1.1.2.129', '.1.12.1.1.4.129', '.1.14.7.1.3.129', '.2.1.0')]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchObject') for oid in asked]

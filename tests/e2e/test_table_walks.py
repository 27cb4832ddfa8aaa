"""The tables from every side: each prefix, each row, what lies before, between and behind the rows."""

import golden
import pytest
from harness.build import ROOT
from harness.lab import run_lab
from harness.oids import below, column_and_index, following
from harness.snmp_tools import Binding, v1, v2c

# The columns of the MST instances' VLANs see 16 bits of the index.
ROUND = 65536


@pytest.fixture(name='mst_snmp', scope='module')
def fixture_mst_snmp():
    with run_lab('mst.toml') as lab:
        yield lab.snmp


@pytest.fixture(name='rapid_pvst_snmp', scope='module')
def fixture_rapid_pvst_snmp():
    with run_lab('rapid-pvst.toml') as lab:
        yield lab.snmp


@pytest.fixture(name='served', params=['mst', 'rapid-pvst'])
def fixture_served(request, mst_snmp, rapid_pvst_snmp):
    """The tools for an agent of this switch, and what it must serve."""
    if request.param == 'mst':
        return mst_snmp, golden.MST
    return rapid_pvst_snmp, golden.RAPID_PVST


def nodes(expected):
    """Every node from the module root down to the rows, and the columns that have none."""
    found = {ROOT: None}
    for oid in [*golden.TABLE_COLUMNS, *(binding.oid for binding in expected)]:
        node = ROOT
        for arc in oid.removeprefix(f'{ROOT}.').split('.'):
            node = f'{node}.{arc}'
            found[node] = None
    return list(found)


def check_getnext(snmp, expected, asked):
    """Each answer is the first object behind what was asked; behind the last object, the module is left."""
    answers = snmp.get_next(*asked)
    assert len(answers) == len(asked)
    for oid, answer in zip(asked, answers):
        wanted = following(expected, oid)
        if wanted:
            assert (oid, answer) == (oid, wanted)
        else:
            assert below([answer], ROOT) == [], f'after {oid}'


def shifted(row, rounds):
    """The same row for who sees 16 bits of its index only."""
    column, index = column_and_index(row)
    return f'{column}.{int(index) + rounds * ROUND}'


def test_walk_of_each_node_is_what_lies_below_it(served):
    snmp, expected = served
    for node in nodes(expected):
        assert snmp.walk(node) == below(expected, node), f'walk of {node}'


def test_bulk_walk_of_each_column_is_what_lies_below_it(served):
    snmp, expected = served
    for column in golden.TABLE_COLUMNS:
        for repetitions in (1, 3, 50):
            assert snmp.bulk_walk(column, repetitions=repetitions) == below(expected, column)


def test_walk_by_single_getnexts_ascends_and_ends(served):
    """What a manager sees that trusts the agent: no tool's own check looks after it."""
    snmp, expected = served
    oid = ROOT
    for wanted in expected:
        [binding] = snmp.get_next(oid)
        assert binding == wanted
        oid = binding.oid
    assert below(snmp.get_next(oid), ROOT) == []


def test_getnext_from_each_node_is_the_object_after_it(served):
    snmp, expected = served
    check_getnext(snmp, expected, nodes(expected))


@pytest.mark.parametrize('arc', [0, golden.HIGHEST_INDEX])
def test_getnext_from_an_arc_below_each_node_is_the_object_after_it(served, arc):
    snmp, expected = served
    # For these columns, the highest index is none at all: it has a test of its own.
    special = golden.MST_INSTANCE_COLUMNS if arc == golden.HIGHEST_INDEX else []
    check_getnext(snmp, expected, [f'{node}.{arc}' for node in nodes(expected) if node not in special])


def test_getnext_from_beside_each_row_is_the_row_after_it(served):
    snmp, expected = served
    asked = []
    for row in golden.rows_of(expected):
        column, index = column_and_index(row.oid)
        asked += [f'{column}.{beside}' for beside in (int(index) - 1, int(index) + 1) if beside >= 0]
    check_getnext(snmp, expected, asked)


def test_getnext_ignores_arcs_behind_the_index(served):
    snmp, expected = served
    check_getnext(snmp, expected, [
        row.oid + more for row in golden.rows_of(expected) for more in ('.0', '.7', '.4294967295', '.1.2.3')])


def test_getnext_from_behind_the_last_row_is_the_next_column(served):
    snmp, expected = served
    behind = (ROUND - 1, ROUND, ROUND + 1, golden.HIGHEST_INDEX - 1)
    check_getnext(snmp, expected, [
        f'{column}.{index}' for column in golden.TABLE_COLUMNS for index in behind
        if index < ROUND or column not in golden.MST_VLAN_COLUMNS])


def test_getnext_from_an_index_column_is_the_first_row_of_the_following_one(served):
    snmp, expected = served
    indexes = {column_and_index(row.oid)[1] for row in golden.rows_of(expected)}
    check_getnext(snmp, expected, [
        f'{column}.{index}' for column in golden.INDEX_COLUMNS for index in sorted(indexes)])


def test_get_answers_each_row_whatever_was_asked_before(served):
    snmp, expected = served
    rows = golden.rows_of(expected)
    assert snmp.get(*(row.oid for row in reversed(rows))) == rows[::-1]


def test_get_of_an_index_column_is_no_such_instance(served):
    snmp, expected = served
    indexes = {column_and_index(row.oid)[1] for row in golden.rows_of(expected)}
    asked = [f'{column}.{index}' for column in golden.INDEX_COLUMNS for index in sorted(indexes)]
    asked += golden.INDEX_COLUMNS
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_get_of_two_index_arcs_is_no_such_instance(served):
    snmp, expected = served
    more_arcs = ('.0', '.1', '.4294967295', '.1.1')
    asked = [row.oid + more for row in golden.rows_of(expected) for more in more_arcs]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


@pytest.mark.parametrize('column, indexes', [
    (golden.ROOT_GUARD_SETTING, [
        0, 1, golden.channel(0), golden.channel(1), golden.channel(4095), golden.port(0), golden.port(3967),
        golden.HIGHEST_INDEX]),
    (golden.PVST_VLAN_STATE, [0, 9, 19, 21, 4093, 4095, ROUND + 1, golden.HIGHEST_INDEX]),
    *((column, [3, 63, 65, 4093, 4095, ROUND - 1, golden.HIGHEST_INDEX - 1])
      for column in golden.MST_INSTANCE_COLUMNS),
    *((column, [1, 2, ROUND, ROUND + 1]) for column in (golden.MST_BRIDGE_ID, golden.MST_COST)),
    (golden.MST_REMAINING_HOPS, [ROUND, ROUND + 1]),
])
def test_get_of_a_row_that_is_not_there_is_no_such_instance(served, column, indexes):
    snmp, _ = served
    asked = [f'{column}.{index}' for index in indexes]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_interfaces_that_are_no_bridge_ports_have_no_row(mst_snmp):
    """A member of a port-channel, and a port that takes no part in bridging."""
    asked = [f'{golden.ROOT_GUARD_SETTING}.{golden.port(number)}' for number in (2, 4)]
    assert mst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_vlans_that_no_bridge_port_has_have_no_row(rapid_pvst_snmp):
    """A member's, one of a port outside bridging, and one on which spanning tree is switched off."""
    asked = [f'{golden.PVST_VLAN_STATE}.{vlan}' for vlan in (777, 888, 100)]
    assert rapid_pvst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_per_vlan_tree_table_is_empty_in_mst_mode(mst_snmp):
    asked = [f'{golden.PVST_VLAN_STATE}.{vlan}' for vlan in (0, 1, 10, 4094)]
    assert mst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    check_getnext(mst_snmp, golden.MST, asked)


def test_mst_columns_but_those_of_vlans_are_empty_in_rapid_pvst_mode(rapid_pvst_snmp):
    columns = [golden.MST_REMAINING_HOPS, golden.MST_BRIDGE_ID, golden.MST_COST]
    asked = [*columns, *(f'{column}.{index}' for column in columns for index in (0, 1, golden.HIGHEST_INDEX))]
    assert rapid_pvst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    check_getnext(rapid_pvst_snmp, golden.RAPID_PVST, asked)


# What follows is deliberate: managers know these answers.

def test_get_of_a_bare_column_is_no_such_instance_where_no_row_has_index_0(served):
    snmp, _ = served
    asked = [golden.ROOT_GUARD_SETTING, golden.PVST_VLAN_STATE]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


@pytest.mark.parametrize('instance', ['', f'.{golden.HIGHEST_INDEX}'])
@pytest.mark.parametrize('who', [v1('public'), v2c('public')], ids=['v1', 'v2c'])
def test_get_of_an_mst_instance_column_without_index_is_answered_with_instance_0(mst_snmp, who, instance):
    """The agent answers with the OID of the row that was found, not with the one that was asked."""
    for column in golden.MST_INSTANCE_COLUMNS:
        assert mst_snmp.get(column + instance, who=who) == golden.column_of(golden.MST, column)[:1]


@pytest.mark.parametrize('more', ['', '.0', '.4294967295'])
def test_getnext_from_the_highest_mst_instance_goes_back_to_instance_0(mst_snmp, more):
    asked = [f'{column}.{golden.HIGHEST_INDEX}{more}' for column in golden.MST_INSTANCE_COLUMNS]
    assert mst_snmp.get_next(*asked) == [
        golden.column_of(golden.MST, column)[0] for column in golden.MST_INSTANCE_COLUMNS]


@pytest.mark.parametrize('rounds', [1, 2, 65535])
def test_get_of_mst_instances_vlans_counts_instances_modulo_65536(mst_snmp, rounds):
    for column in golden.MST_VLAN_COLUMNS:
        rows = golden.column_of(golden.MST, column)
        assert mst_snmp.get(*(shifted(row.oid, rounds) for row in rows)) == rows


@pytest.mark.parametrize('rounds', [1, 2, 65535])
def test_getnext_of_mst_instances_vlans_counts_instances_modulo_65536(mst_snmp, rounds):
    for column in golden.MST_VLAN_COLUMNS:
        rows = golden.column_of(golden.MST, column)
        assert mst_snmp.get_next(*(shifted(row.oid, rounds) for row in rows[:-1])) == rows[1:]
        behind_the_last = shifted(rows[-1].oid, rounds)
        check_getnext(mst_snmp, golden.MST, [behind_the_last])


def test_a_manager_that_checks_the_order_stops_a_walk_that_goes_backwards(mst_snmp):
    for column in golden.MST_INSTANCE_COLUMNS:
        assert 'OID not increasing' in mst_snmp.walk(f'{column}.{golden.HIGHEST_INDEX}').reason

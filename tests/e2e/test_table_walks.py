"""The tables from every side: each prefix, each row, what lies before, between and behind the rows."""

import golden
import pytest
from harness.build import ROOT
from harness.lab import run_lab
from harness.oids import below, following
from harness.snmp_tools import Binding, v1, v2c

# The columns of the MST instances' VLANs see 16 bits of the index; those by port, or by tree and port, of the
# port.
ROUND = 65536
# Trees and ports at the ends of their ranges, and beyond.
EDGE_TREES = [0, 4093, 4094, 4095, 2**31 - 1, 2**31, golden.HIGHEST_INDEX - 1, golden.HIGHEST_INDEX]
EDGE_PORTS = [0, 1, 127, 128, 4095, 4096, 8191, 8192, ROUND - 2, ROUND - 1]
COLUMNS_OF_16_BITS = golden.MST_VLAN_COLUMNS + golden.BASE_PORT_COLUMNS


# Nobody changes these two labs' switches.
@pytest.fixture(name='mst_walk_lab', scope='module')
def fixture_mst_walk_lab():
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='rapid_pvst_walk_lab', scope='module')
def fixture_rapid_pvst_walk_lab():
    with run_lab('rapid-pvst.toml') as lab:
        yield lab


@pytest.fixture(name='mst_snmp')
def fixture_mst_snmp(mst_walk_lab):
    yield mst_walk_lab.snmp
    mst_walk_lab.check()


@pytest.fixture(name='rapid_pvst_snmp')
def fixture_rapid_pvst_snmp(rapid_pvst_walk_lab):
    yield rapid_pvst_walk_lab.snmp
    rapid_pvst_walk_lab.check()


@pytest.fixture(name='served', params=['mst', 'rapid-pvst'])
def fixture_served(request, mst_snmp, rapid_pvst_snmp):
    """The tools for an agent of this switch, and what it must serve."""
    if request.param == 'mst':
        return mst_snmp, golden.MST
    return rapid_pvst_snmp, golden.RAPID_PVST


@pytest.fixture(name='raw_client')
def fixture_raw_client(served, mst_walk_lab, rapid_pvst_walk_lab):
    """For the agent that is served."""
    snmp, _ = served
    lab = mst_walk_lab if snmp is mst_walk_lab.snmp else rapid_pvst_walk_lab
    with lab.raw_client() as client:
        yield client


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
    """The same row for who sees 16 bits of its last arc only."""
    column, (*arcs, last) = golden.column_and_index(row)
    return golden.instance(column, (*arcs, last + rounds * ROUND))


def without_link(expected):
    return golden.MST_WITHOUT_LINK if expected is golden.MST else golden.RAPID_PVST_WITHOUT_LINK


def indexes_of(expected):
    return {golden.column_and_index(row.oid)[1] for row in golden.rows_of(expected)}


def is_served_out_of_order(expected, oid):
    """The tables of ports of trees take tree 0 for the first VLAN: that has a test of its own."""
    column, index = golden.column_and_index(oid)
    return (expected is golden.RAPID_PVST and column in golden.PORT_OF_TREE_COLUMNS and
            index[0] == 0 and index[1:] > (128,))


def beside(index):
    """The indexes that differ from this one by 1 in one arc."""
    return [(*index[:position], arc + step, *index[position + 1:])
            for position, arc in enumerate(index) for step in (-1, 1) if arc + step >= 0]


def trees_and_ports_around(expected):
    """Trees and ports of the rows, their neighbours and the ends of the ranges; each tree with each port."""
    rows = [golden.column_and_index(row.oid)[1]
            for column in golden.TREE_AND_PORT_COLUMNS for row in golden.column_of(expected, column)]
    near = rows + [neighbour for index in rows for neighbour in beside(index)]
    trees, ports = (sorted({*edges, *arcs}) for edges, arcs in zip((EDGE_TREES, EDGE_PORTS), zip(*near)))
    return [(tree, port) for tree in trees for port in ports]


def test_walk_of_each_node_is_what_lies_below_it(served):
    snmp, expected = served
    for node in nodes(expected):
        assert snmp.walk(node) == below(expected, node), f'walk of {node}'


def test_bulk_walk_of_each_column_is_what_lies_below_it(served):
    snmp, expected = served
    for column in golden.TABLE_COLUMNS:
        for repetitions in (1, 3, 50):
            assert snmp.bulk_walk(column, repetitions=repetitions) == below(expected, column)


def test_walk_by_single_getnexts_ascends_and_ends(served, raw_client):
    """What a manager sees that trusts the agent: no tool's own check looks after it."""
    _, expected = served
    oid = ROOT
    for wanted in expected:
        [binding] = raw_client.get_next(oid).bindings
        assert binding == wanted
        oid = binding.oid
    assert below(raw_client.get_next(oid).bindings, ROOT) == []


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
        column, index = golden.column_and_index(row.oid)
        asked += [golden.instance(column, neighbour) for neighbour in beside(index)]
    check_getnext(snmp, expected, [oid for oid in asked if not is_served_out_of_order(expected, oid)])


@pytest.mark.parametrize('column', golden.TREE_AND_PORT_COLUMNS)
def test_getnext_from_each_tree_and_port_is_the_row_after_it(served, column):
    snmp, expected = served
    asked = [golden.instance(column, index) for index in trees_and_ports_around(expected)]
    check_getnext(snmp, expected, [oid for oid in asked if not is_served_out_of_order(expected, oid)])


def test_getnext_ignores_arcs_behind_the_index(served):
    snmp, expected = served
    check_getnext(snmp, expected, [
        row.oid + more for row in golden.rows_of(expected) for more in ('.0', '.7', '.4294967295', '.1.2.3')])


def test_getnext_from_behind_the_last_row_is_the_next_column(served):
    snmp, expected = served
    behind = (ROUND - 1, ROUND, ROUND + 1, golden.HIGHEST_INDEX - 1)
    check_getnext(snmp, expected, [
        f'{column}.{index}' for column in golden.TABLE_COLUMNS for index in behind
        if index < ROUND or column not in COLUMNS_OF_16_BITS])


def test_getnext_from_an_index_column_is_the_first_row_of_the_following_one(served):
    snmp, expected = served
    check_getnext(snmp, expected, [
        golden.instance(column, index)
        for column in golden.INDEX_COLUMNS for index in sorted(indexes_of(expected))])


def test_get_answers_each_row_whatever_was_asked_before(served):
    snmp, expected = served
    rows = golden.rows_of(expected)
    assert snmp.get(*(row.oid for row in reversed(rows))) == rows[::-1]


def test_get_of_an_index_column_is_no_such_instance(served):
    snmp, expected = served
    asked = [golden.instance(column, index)
             for column in golden.INDEX_COLUMNS for index in sorted(indexes_of(expected))]
    asked += golden.INDEX_COLUMNS
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


@pytest.mark.parametrize('column', golden.TREE_AND_PORT_COLUMNS)
def test_get_of_each_tree_and_port_without_a_row_is_no_such_instance(served, column):
    snmp, expected = served
    rows = [row.oid for row in golden.column_of(expected + without_link(expected), column)]
    asked = [golden.instance(column, index) for index in trees_and_ports_around(expected)]
    asked = [oid for oid in asked if oid not in rows]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_get_of_a_tree_without_a_port_is_no_such_instance(served):
    snmp, _ = served
    asked = [f'{column}.{tree}' for column in golden.TREE_AND_PORT_COLUMNS
             for tree in (0, 1, 2, 33, golden.HIGHEST_INDEX)]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_ports_of_trees_without_a_link_are_found_by_get_only(served):
    snmp, expected = served
    rows = without_link(expected)
    assert snmp.get(*(row.oid for row in rows)) == rows
    assert [row for row in rows if row in snmp.walk(ROOT)] == []


def test_get_of_more_arcs_than_the_index_has_is_no_such_instance(served):
    snmp, expected = served
    more_arcs = ('.0', '.1', '.4294967295', '.1.1')
    asked = [row.oid + more for row in golden.rows_of(expected) for more in more_arcs]
    assert snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


@pytest.mark.parametrize('column, indexes', [
    (golden.ROOT_GUARD_SETTING, [
        0, 1, golden.channel(0), golden.channel(1), golden.channel(4095), golden.port(0), golden.port(3967),
        golden.HIGHEST_INDEX]),
    (golden.PVST_VLAN_STATE, [0, 9, 19, 21, 4093, 4095, ROUND + 1, golden.HIGHEST_INDEX]),
    *((column, [*EDGE_PORTS, 132, 4097, 4102, ROUND, ROUND + 1, golden.HIGHEST_INDEX])
      for column in golden.BASE_PORT_COLUMNS),
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
    asked += [f'{column}.{golden.bridge_port(number)}'
              for column in golden.BASE_PORT_COLUMNS for number in (2, 4)]
    asked += [f'{golden.PORT_ROLE}.{tree}.{golden.bridge_port(number)}'
              for tree in (0, 1, 2) for number in (2, 4)]
    assert mst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_vlans_that_no_bridge_port_has_have_no_row(rapid_pvst_snmp):
    """A member's, one of a port outside bridging, and one on which spanning tree is switched off."""
    asked = [f'{golden.PVST_VLAN_STATE}.{vlan}' for vlan in (777, 888, 100)]
    assert rapid_pvst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


@pytest.mark.parametrize('column, index', [
    (golden.ROOT_STATE, (0, golden.bridge_port(2))), (golden.LOOP_STATE, (0, golden.bridge_port(2))),
    (golden.ROOT_STATE, (0, golden.bridge_port(4))), (golden.LOOP_STATE, (0, golden.bridge_port(4))),
    (golden.ROOT_STATE, (1, golden.bridge_port(300))), (golden.ROOT_STATE, (64, golden.bridge_port(300))),
])
def test_port_is_inconsistent_in_its_own_trees_only(mst_snmp, column, index):
    oid = golden.instance(column, index)
    assert mst_snmp.get(oid) == [Binding(oid, 'noSuchInstance')]


@pytest.mark.parametrize('column', [golden.PORT_STATE, golden.RPVST_FLAGS])
@pytest.mark.parametrize('instance', ['', '.0', '.0.129', '.1', '.1.0', '.1.129', '.10.129', '.4294967295'])
def test_table_of_ports_of_vlans_is_empty_in_mst_mode(mst_snmp, column, instance):
    asked = column + instance
    assert mst_snmp.get(asked) == [Binding(asked, 'noSuchInstance')]
    check_getnext(mst_snmp, golden.MST, [asked])


def test_per_vlan_tree_table_is_empty_in_mst_mode(mst_snmp):
    asked = [f'{golden.PVST_VLAN_STATE}.{vlan}' for vlan in (0, 1, 10, 4094)]
    assert mst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    check_getnext(mst_snmp, golden.MST, asked)


def test_mst_columns_but_those_of_vlans_are_empty_in_rapid_pvst_mode(rapid_pvst_snmp):
    columns = [golden.MST_REMAINING_HOPS, golden.MST_BRIDGE_ID, golden.MST_COST, *golden.SMST_PORT_COLUMNS]
    asked = [*columns, *(f'{column}.{index}' for column in columns
                         for index in (0, 1, golden.bridge_port(1), golden.HIGHEST_INDEX))]
    assert rapid_pvst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    check_getnext(rapid_pvst_snmp, golden.RAPID_PVST, asked)


# What follows is deliberate: managers know these answers.

def test_get_of_a_bare_column_is_no_such_instance_where_no_row_has_index_0(served):
    snmp, _ = served
    asked = [golden.ROOT_GUARD_SETTING, golden.PVST_VLAN_STATE, *golden.BASE_PORT_COLUMNS,
             *golden.TREE_AND_PORT_COLUMNS]
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
    """With an end, since of itself the tool would end before the next arc, which is 0 where arcs have 32 bits."""
    for column in golden.MST_INSTANCE_COLUMNS:
        walked = mst_snmp.walk(f'{column}.{golden.HIGHEST_INDEX}', end=f'{ROOT}.2')
        assert 'OID not increasing' in walked.reason


@pytest.mark.parametrize('rounds', [1, 2, 65535])
def test_tables_by_tree_and_port_count_ports_modulo_65536(served, rounds):
    """The agent answers with the OID of the row that was found, not with the one that was asked."""
    snmp, expected = served
    for column in golden.TREE_AND_PORT_COLUMNS:
        rows = golden.column_of(expected, column)
        asked = [shifted(row.oid, rounds) for row in rows]
        if rows:
            assert snmp.get(*asked) == rows
            assert snmp.get_next(*asked[:-1]) == rows[1:]
            check_getnext(snmp, expected, asked[-1:])


@pytest.mark.parametrize('rounds', [1, 2, 65535])
def test_tables_by_port_count_ports_modulo_65536(served, rounds):
    """The agent answers with the OID of the row that was found, not with the one that was asked."""
    snmp, expected = served
    for column in golden.BASE_PORT_COLUMNS:
        rows = golden.column_of(expected, column)
        asked = [shifted(row.oid, rounds) for row in rows]
        if rows:
            assert snmp.get(*asked) == rows
            assert snmp.get_next(*asked[:-1]) == rows[1:]
            check_getnext(snmp, expected, asked[-1:])
            before_the_first = [f'{column}.{rounds * ROUND}', f'{column}.{rounds * ROUND + 128}']
            assert snmp.get_next(*before_the_first) == [rows[0], rows[0]]


def test_getnext_from_the_highest_port_number_is_the_next_column(served):
    snmp, expected = served
    check_getnext(snmp, expected, [
        f'{column}.{number}' for column in golden.BASE_PORT_COLUMNS
        for number in (golden.HIGHEST_INDEX - 1, golden.HIGHEST_INDEX)])


def test_a_manager_that_checks_the_order_stops_a_walk_from_beyond_16_bits(mst_snmp):
    for column in golden.BASE_PORT_COLUMNS:
        assert 'OID not increasing' in mst_snmp.walk(f'{column}.{ROUND}').reason


@pytest.mark.parametrize('column', golden.PORT_OF_TREE_COLUMNS)
def test_getnext_from_tree_0_counts_as_from_tree_1_in_rapid_pvst_mode(rapid_pvst_snmp, column):
    """The port counts, too: what lies before it in tree 1 is passed over."""
    for asked, found in (
            ('0', '1.129'), ('0.0', '1.129'), ('0.128', '1.129'), ('0.129', '1.130'), ('0.130', '1.4103'),
            ('0.4102', '1.4103'), ('0.4103', '2.129'), ('0.65535', '2.129'), ('0.65536', '1.129')):
        [answer] = rapid_pvst_snmp.get_next(f'{column}.{asked}')
        assert (asked, answer.oid) == (asked, f'{column}.{found}')


def test_get_of_a_port_of_tree_0_is_no_such_instance_in_rapid_pvst_mode(rapid_pvst_snmp):
    asked = [f'{column}.0.129' for column in golden.PORT_OF_TREE_COLUMNS]
    assert rapid_pvst_snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


# Which rows a walk of an inconsistency table does not reach. It asks for the next bridge port's row, and
# else goes on in the order of the switch, where a tree's port-channels come first. A GET always answers.


def remove_loops(lab, interfaces):
    set_loop_inconsistencies(lab, {key: '' for key in interfaces})
    assert lab.snmp.walk(golden.LOOP_STATE) == []
    return lab


@pytest.fixture(name='rapid_pvst_lab_without_loops')
def fixture_rapid_pvst_lab_without_loops(rapid_pvst_lab):
    return remove_loops(rapid_pvst_lab, ('port.1', 'port.2', 'port_channel.7'))


@pytest.fixture(name='mst_lab_without_loops')
def fixture_mst_lab_without_loops(lab):
    return remove_loops(lab, ('port.1', 'port.300', 'port_channel.5'))


def set_loop_inconsistencies(lab, trees_of_interface):
    for key, trees in trees_of_interface.items():
        lab.switch.set(f'{key}.loop_inconsistent', trees)


def loop_rows(*indexes):
    return [Binding(golden.instance(golden.LOOP_STATE, index), 'INTEGER', 1) for index in indexes]


def test_port_channel_before_further_physical_ports_and_a_later_tree_is_passed_over(rapid_pvst_lab_without_loops):
    lab = rapid_pvst_lab_without_loops
    set_loop_inconsistencies(lab, {'port.1': '1-2', 'port_channel.7': '1'})
    first, passed_over, last = loop_rows((1, 129), (1, 4103), (2, 129))
    assert lab.snmp.walk(golden.LOOP_STATE) == [first, last]
    assert lab.snmp.get_next(first.oid) == [last]
    assert lab.snmp.get(passed_over.oid) == [passed_over]
    lab.switch.set('port.1.loop_inconsistent', '1')
    assert lab.snmp.walk(golden.LOOP_STATE) == [first, passed_over]


def test_port_channel_behind_the_last_physical_port_is_not_passed_over(mst_lab_without_loops):
    lab = mst_lab_without_loops
    lab.switch.set('port.300.vlans', '1,10')
    set_loop_inconsistencies(lab, {'port.300': '1', 'port_channel.5': '1-2', 'port.1': '2'})
    rows = loop_rows((1, 428), (1, 4101), (2, 129), (2, 4101))
    assert lab.snmp.walk(golden.LOOP_STATE) == rows


def test_walk_ends_before_trees_in_which_only_port_channels_have_rows(rapid_pvst_lab_without_loops):
    lab = rapid_pvst_lab_without_loops
    set_loop_inconsistencies(lab, {'port.1': '1', 'port_channel.7': '2048'})
    first, not_reached = loop_rows((1, 129), (2048, 4103))
    assert lab.snmp.walk(golden.LOOP_STATE) == [first]
    assert lab.snmp.get(not_reached.oid) == [not_reached]


def test_only_row_of_a_table_is_not_reached_when_it_is_a_port_channels(rapid_pvst_lab_without_loops):
    lab = rapid_pvst_lab_without_loops
    set_loop_inconsistencies(lab, {'port_channel.7': '1'})
    [row] = loop_rows((1, 4103))
    assert lab.snmp.walk(golden.LOOP_STATE) == []
    assert lab.snmp.get(row.oid) == [row]
    assert lab.snmp.get_next(f'{golden.LOOP_STATE}.1') == [row]


def test_tree_in_which_only_a_port_channel_has_a_row_is_reached_from_before_the_tree(rapid_pvst_lab_without_loops):
    lab = rapid_pvst_lab_without_loops
    set_loop_inconsistencies(lab, {'port_channel.7': '1', 'port.1': '2'})
    rows = loop_rows((1, 4103), (2, 129))
    assert lab.snmp.walk(golden.LOOP_STATE) == rows
    assert lab.snmp.get_next(f'{golden.LOOP_STATE}.1') == rows[1:]


def test_port_channel_of_tree_0_is_reached_from_the_last_physical_port_only(mst_lab_without_loops):
    lab = mst_lab_without_loops
    set_loop_inconsistencies(lab, {'port.1': '0', 'port_channel.5': '0'})
    port_1, port_300, port_channel = loop_rows((0, 129), (0, 428), (0, 4101))
    assert lab.snmp.walk(golden.LOOP_STATE) == [port_1]
    assert lab.snmp.get(port_channel.oid) == [port_channel]
    lab.switch.set('port.300.loop_inconsistent', '0')
    assert lab.snmp.walk(golden.LOOP_STATE) == [port_1, port_300, port_channel]


# Which rows a walk of a table of ports of trees does not reach: it passes over ports without a link, and ends
# at a following tree in which no port has one. A GET always answers.

def indexes_walked(lab, column):
    """By single requests and by bulk, which agree."""
    walked = lab.snmp.walk(column)
    assert lab.snmp.bulk_walk(column) == walked
    return [golden.column_and_index(row.oid)[1] for row in walked]


def indexes_after(lab, column, *indexes):
    answers = lab.snmp.get_next(*(golden.instance(column, index) for index in indexes))
    return [golden.column_and_index(answer.oid)[1] for answer in answers]


TREES_1_TO_8 = [(1, 129), (1, 130), (1, 4103), (2, 129), (3, 129), (4, 129), (7, 129), (8, 129)]


@pytest.mark.parametrize('column, values', [
    (golden.PORT_ROLE, [golden.ROLE_DISABLED, golden.BACKUP]),
    (golden.RPVST_FLAGS, [golden.flags(golden.EDGE, golden.PEER), golden.flags(golden.PEER)])])
def test_walk_ends_at_a_vlan_in_which_no_port_has_a_link(rapid_pvst_lab_without_loops, column, values):
    lab = rapid_pvst_lab_without_loops
    lab.switch.set('port.2.link', 'down')
    reached = [index for index in TREES_1_TO_8 if index != (1, 130)]
    assert indexes_walked(lab, column) == reached
    assert [binding.value for binding in lab.snmp.get(f'{column}.33.130', f'{column}.2048.4103')] == values
    # Who starts behind the end reaches the rest.
    assert indexes_after(lab, column, (9,), (33,), (33, 130), (2047, 1)) == [(2048, 4103)] * 4
    lab.switch.set('port.5.link', 'up')
    assert indexes_walked(lab, column) == [*reached, (33, 133), (2048, 4103)]


@pytest.mark.parametrize('column', golden.PORT_OF_TREE_COLUMNS)
def test_first_vlan_is_passed_over_when_no_port_has_a_link_in_it(rapid_pvst_lab_without_loops, column):
    """Of two such VLANs in a row, the second one is the end."""
    lab = rapid_pvst_lab_without_loops
    for key in ('port.1', 'port.2', 'port.3'):
        lab.switch.set(f'{key}.link', 'down')
    lab.switch.set('port.5.link', 'up')
    lab.switch.set('port.5.vlans', '2,3')
    assert indexes_walked(lab, column) == [(2, 133), (3, 133)]
    lab.switch.set('port.5.vlans', '3')
    assert indexes_walked(lab, column) == []
    assert indexes_after(lab, column, (2,)) == [(3, 133)]


def test_walk_ends_at_an_mst_instance_in_which_no_port_has_a_link(mst_lab_without_loops):
    lab = mst_lab_without_loops
    lab.switch.set('port.1.vlans', '1,20')
    lab.switch.set('port.2.link', 'down')
    assert indexes_walked(lab, golden.PORT_ROLE) == [(0, 129), (0, 428)]
    behind_the_end = [Binding(f'{golden.PORT_ROLE}.1.4101', 'INTEGER', golden.ROLE_DISABLED),
                      Binding(f'{golden.PORT_ROLE}.2.129', 'INTEGER', golden.BACKUP)]
    assert lab.snmp.get(*(binding.oid for binding in behind_the_end)) == behind_the_end
    assert indexes_after(lab, golden.PORT_ROLE, (1,), (1, 4101)) == [(2, 129), (2, 129)]


def test_mst_instances_without_ports_do_not_end_a_walk(mst_lab_without_loops):
    """The switch knows of no row in them. Those with ports that have no link are the ones that do."""
    lab = mst_lab_without_loops
    lab.switch.set('port.300.vlans', '1,4094')
    lab.switch.set('mst.instance.64.vlans', '2049')
    lab.switch.set('mst.instance.4094.vlans', '4094')
    assert indexes_walked(lab, golden.PORT_ROLE)[-2:] == [(2, 4101), (4094, 428)]
    assert indexes_after(lab, golden.PORT_ROLE, (3,), (64,), (64, 428), (65, 8191)) == [(4094, 428)] * 4


def test_port_in_no_vlan_of_the_cist_is_found_there_by_get_only(mst_lab_without_loops):
    lab = mst_lab_without_loops
    lab.switch.set('port.300.vlans', '10')
    assert indexes_walked(lab, golden.PORT_ROLE) == [
        (0, 129), (0, 4101), (1, 129), (1, 428), (1, 4101), (2, 129), (2, 4101)]
    role = Binding(f'{golden.PORT_ROLE}.0.428', 'INTEGER', golden.DESIGNATED)
    assert lab.snmp.get(role.oid) == [role]

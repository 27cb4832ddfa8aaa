"""Rows follow the switch: each change is in the next request."""

from itertools import product

import golden
import pytest
from golden import (
    ALTERNATE, AS_SWITCH, AUTO, BACKUP, BOUNDARY, DESIGNATED, DISABLED, DISPUTE, EDGE, ENABLED, FALSE,
    FORCED_POINT_TO_POINT, FORCED_SHARED, GUARDED, INCONSISTENT, NO_FLAGS, OTHER, PEER, POINT_TO_POINT,
    PRE_STANDARD, PVID, PVID_AND_TYPE, ROLE_DISABLED, ROOT_PORT, SEND_AUTO, SEND_PRE_STANDARD, SHARED,
    STANDARD, TRUE, TYPE, UNGUARDED, UNKNOWN, channel, flags, half_bitmap, port, vlans)
from harness.build import ROOT
from harness.oids import below
from harness.polling import wait_until
from harness.snmp_tools import Binding

ALL_VLANS = vlans((1, 4094))
PVST_VLAN_TABLE, MST_INSTANCE_TABLE = ROOT + '.1.2.2', ROOT + '.1.14.5'


def index_of(oid):
    """A number, or a tuple where the index has more than one arc."""
    _, index = golden.column_and_index(oid)
    return index if len(index) > 1 else index[0]


def column(lab, oid):
    """The rows of a column by their indexes; a GET and a walk agree on them."""
    rows = lab.snmp.walk(oid)
    if rows:
        assert lab.snmp.get(*(row.oid for row in rows)) == rows
    return {index_of(row.oid): row.value for row in rows}


def value(lab, oid):
    [binding] = lab.snmp.get(oid)
    return binding.value


def root_guard(lab):
    return column(lab, golden.ROOT_GUARD_SETTING)


def pvst_vlan_states(lab):
    return column(lab, golden.PVST_VLAN_STATE)


ROOT_GUARD_OF_THE_SCENARIO = {
    channel(5): ENABLED, channel(9): DISABLED, port(1): ENABLED, port(3): DISABLED, port(300): ENABLED}


@pytest.mark.parametrize('key, interface', [('port.3', port(3)), ('port_channel.9', channel(9))])
def test_root_guard_is_1_when_enabled_and_2_when_disabled(lab, key, interface):
    for setting, served in (('true', ENABLED), ('false', DISABLED)):
        lab.switch.set(f'{key}.root_guard', setting)
        assert root_guard(lab) == {**ROOT_GUARD_OF_THE_SCENARIO, interface: served}


def test_root_guard_row_of_a_port_goes_when_it_joins_a_port_channel_and_returns_when_it_leaves(lab):
    lab.switch.set('port.1.channel', '9')
    without_port_1 = {
        index: setting for index, setting in ROOT_GUARD_OF_THE_SCENARIO.items() if index != port(1)}
    assert root_guard(lab) == without_port_1
    oid = f'{golden.ROOT_GUARD_SETTING}.{port(1)}'
    assert lab.snmp.get(oid) == [Binding(oid, 'noSuchInstance')]
    lab.switch.set('port.2.channel', '0')
    assert root_guard(lab) == {**without_port_1, port(2): ENABLED}
    lab.switch.set('port.1.channel', '0')
    assert root_guard(lab) == {**ROOT_GUARD_OF_THE_SCENARIO, port(2): ENABLED}


def test_root_guard_row_of_a_port_goes_when_it_leaves_bridging(lab):
    lab.switch.set('port.1.switchport', 'false')
    lab.switch.set('port.4.switchport', 'true')
    expected = {**ROOT_GUARD_OF_THE_SCENARIO, port(4): ENABLED}
    del expected[port(1)]
    assert root_guard(lab) == expected


def test_links_do_not_matter_for_root_guard_rows(lab):
    lab.switch.set('port.1.link', 'down')
    lab.switch.set('port.2.link', 'down')
    lab.switch.set('port.3.link', 'up')
    assert root_guard(lab) == ROOT_GUARD_OF_THE_SCENARIO


def test_vlan_state_is_1_where_spanning_tree_runs_and_2_where_it_is_switched_off(rapid_pvst_lab):
    lab = rapid_pvst_lab
    lab.switch.set('rapid_pvst.disabled_vlans', '2,2048')
    off = {vlan for vlan, state in pvst_vlan_states(lab).items() if state == FALSE}
    assert off == {2, 2048}
    lab.switch.set('rapid_pvst.disabled_vlans', '')
    assert set(pvst_vlan_states(lab).values()) == {TRUE}


def test_vlan_rows_are_those_of_bridge_ports_and_port_channels(rapid_pvst_lab):
    lab = rapid_pvst_lab
    lab.switch.set('rapid_pvst.disabled_vlans', '')
    lab.switch.set('port.1.vlans', '1000-1002')
    lab.switch.set('port_channel.7.vlans', '4093')
    assert list(pvst_vlan_states(lab)) == [1, 20, 33, 1000, 1001, 1002, 4093]
    lab.switch.set('port.2.channel', '7')
    assert list(pvst_vlan_states(lab)) == [33, 1000, 1001, 1002, 4093]
    lab.switch.set('port.3.channel', '0')
    assert list(pvst_vlan_states(lab)) == [33, 777, 1000, 1001, 1002, 4093]
    lab.switch.set('port.4.switchport', 'true')
    assert list(pvst_vlan_states(lab)) == [33, 777, 888, 1000, 1001, 1002, 4093]


def test_switch_with_every_vlan_has_a_row_for_each(rapid_pvst_lab):
    lab = rapid_pvst_lab
    lab.switch.set('port.1.vlans', '1-4094')
    lab.switch.set('rapid_pvst.disabled_vlans', '2-4094')
    assert pvst_vlan_states(lab) == {1: TRUE, **{vlan: FALSE for vlan in range(2, 4095)}}


def test_per_vlan_trees_come_and_mst_columns_go_with_the_mode(lab):
    vlan_rows = [row for vlan_column in golden.MST_VLAN_COLUMNS
                 for row in golden.column_of(golden.MST, vlan_column)]
    assert lab.snmp.walk(PVST_VLAN_TABLE) == []
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert pvst_vlan_states(lab) == {vlan: TRUE for vlan in range(1, 101)}
    assert root_guard(lab) == ROOT_GUARD_OF_THE_SCENARIO
    assert lab.snmp.walk(MST_INSTANCE_TABLE) == vlan_rows
    gone = [row.oid for row in below(golden.MST, MST_INSTANCE_TABLE) if row not in vlan_rows]
    assert lab.snmp.get(*gone) == [Binding(oid, 'noSuchInstance') for oid in gone]
    lab.switch.set('switch.mode', 'mst')
    assert lab.snmp.walk(ROOT) == golden.MST


def test_vlans_of_an_instance_are_taken_from_the_cist_and_given_back(lab):
    low, high = golden.MST_VLANS_LOW, golden.MST_VLANS_HIGH
    lab.switch.set('mst.instance.1.vlans', '7,8,3000')
    assert value(lab, f'{low}.1') == bytes.fromhex('0180')
    assert value(lab, f'{high}.1') == half_bitmap('high', {3000})
    others = vlans((20, 20), (30, 32), (2047, 2055), (4094, 4094))
    assert value(lab, f'{low}.0') == half_bitmap('low', ALL_VLANS - others - {7, 8})
    assert value(lab, f'{high}.0') == half_bitmap('high', ALL_VLANS - others - {3000})
    lab.switch.set('mst.instance.1.vlans', '')
    assert (value(lab, f'{low}.1'), value(lab, f'{high}.1')) == (b'', b'')
    assert value(lab, f'{low}.0') == half_bitmap('low', ALL_VLANS - others)
    assert value(lab, f'{high}.0') == half_bitmap('high', ALL_VLANS - others)


def test_vlan_bitmap_ends_behind_its_last_vlan(lab):
    for instance in (2, 64):
        lab.switch.set(f'mst.instance.{instance}.vlans', '')
    for ranges, low, high in (
            ('1', '40', ''),
            ('7', '01', ''),
            ('8', '0080', ''),
            ('2047', '00' * 255 + '01', ''),
            ('2048', '', '80'),
            ('2055', '', '01'),
            ('2056', '', '0080'),
            ('4094', '', '00' * 255 + '02'),
            ('1-4094', '7f' + 'ff' * 255, 'ff' * 255 + 'fe'),
            ('1-2047', '7f' + 'ff' * 255, '')):
        lab.switch.set('mst.instance.1.vlans', ranges)
        assert value(lab, f'{golden.MST_VLANS_LOW}.1') == bytes.fromhex(low), ranges
        assert value(lab, f'{golden.MST_VLANS_HIGH}.1') == bytes.fromhex(high), ranges


def test_cist_without_vlans_has_empty_bitmaps(lab):
    for instance in (2, 64):
        lab.switch.set(f'mst.instance.{instance}.vlans', '')
    lab.switch.set('mst.instance.1.vlans', '1-4094')
    assert (value(lab, f'{golden.MST_VLANS_LOW}.0'), value(lab, f'{golden.MST_VLANS_HIGH}.0')) == (b'', b'')


def test_shorter_bitmap_after_a_longer_one_keeps_nothing_of_it(lab):
    low = f'{golden.MST_VLANS_LOW}.1'
    lab.switch.set('mst.instance.1.vlans', '1-19')
    assert value(lab, low) == bytes.fromhex('7ffff0')
    lab.switch.set('mst.instance.1.vlans', '1')
    assert value(lab, low) == bytes.fromhex('40')


@pytest.mark.parametrize('key, instance', [
    ('mst.cist', 0), ('mst.instance.1', 1), ('mst.instance.4094', 4094)])
def test_remaining_hops_follow_each_instance(lab, key, instance):
    before = column(lab, golden.MST_REMAINING_HOPS)
    for hops in (1, 40):
        lab.switch.set(f'{key}.remaining_hops', str(hops))
        assert column(lab, golden.MST_REMAINING_HOPS) == {**before, instance: hops}


@pytest.mark.parametrize('priority, mac, served', [
    (0, '00:00:00:00:00:00', '0000000000000000'),
    (65535, 'ff:ff:ff:ff:ff:ff', 'ffffffffffffffff'),
    (258, '03:04:05:06:07:08', '0102030405060708'),
    (61440, 'A0:b0:C0:d0:E0:00', 'f000a0b0c0d0e000'),
])
def test_bridge_identifier_is_priority_and_address_of_the_regional_root(lab, priority, mac, served):
    lab.switch.set('mst.cist.regional_root_priority', str(priority))
    lab.switch.set('mst.cist.regional_root_mac', mac)
    assert column(lab, golden.MST_BRIDGE_ID) == {0: bytes.fromhex(served)}


@pytest.mark.parametrize('cost', [0, 2147483647, 2147483648, 4294967295])
def test_internal_root_path_cost_is_served_whole(lab, cost):
    lab.switch.set('mst.cist.internal_root_path_cost', str(cost))
    [binding] = lab.snmp.walk(golden.MST_COST)
    assert binding == Binding(f'{golden.MST_COST}.0', 'Gauge32', cost)


def states(lab):
    """The rows of the tables of port, root and loop inconsistencies."""
    return tuple(column(lab, oid) for oid in golden.INCONSISTENCY_COLUMNS)


@pytest.mark.parametrize('kind, oid', [
    ('root_inconsistent', golden.ROOT_STATE), ('loop_inconsistent', golden.LOOP_STATE)])
def test_inconsistency_row_comes_and_goes_with_the_inconsistency(rapid_pvst_lab, kind, oid):
    lab = rapid_pvst_lab
    for key in ('port.2', 'port.5', 'port_channel.7'):
        lab.switch.set(f'{key}.{kind}', '')
    for trees, rows in (
            ('', []), ('4', [(4, 129)]), ('4,7', [(4, 129), (7, 129)]), ('7', [(7, 129)]), ('', [])):
        lab.switch.set(f'port.1.{kind}', trees)
        assert column(lab, oid) == {index: INCONSISTENT for index in rows}


def test_port_inconsistency_row_has_a_bit_for_each_kind_and_goes_without_any(rapid_pvst_lab):
    lab = rapid_pvst_lab
    others = {(1, 130): PVID, (3, 129): PVID_AND_TYPE, (8, 129): PVID}
    for kind, trees, served in (
            ('pvid', '1,3,8', PVID_AND_TYPE), ('type', '3', PVID),
            ('pvid', '3,8', None), ('type', '1,3', TYPE)):
        lab.switch.set(f'port.1.{kind}_inconsistent', trees)
        assert column(lab, golden.PORT_STATE) == ({(1, 129): served} if served else {}) | others


def test_links_do_not_matter_for_inconsistency_rows(rapid_pvst_lab):
    lab = rapid_pvst_lab
    before = states(lab)
    lab.switch.set('port.1.link', 'down')
    lab.switch.set('port.5.link', 'up')
    assert states(lab) == before


PORT_ROWS_OF_PORT_2 = {(1, 130): PVID}
ROOT_ROWS_BUT_PORT_1 = {(1, 130): INCONSISTENT, (33, 133): INCONSISTENT}


@pytest.mark.parametrize('key, value_without, value_before', [
    ('port.1.channel', '7', '0'), ('port.1.switchport', 'false', 'true'), ('port.1.vlans', '4', '1-8')])
def test_inconsistency_rows_of_a_port_go_when_it_leaves_their_trees_and_return_with_it(
        rapid_pvst_lab, key, value_without, value_before):
    lab = rapid_pvst_lab
    lab.switch.set(key, value_without)
    assert states(lab) == (
        PORT_ROWS_OF_PORT_2, ROOT_ROWS_BUT_PORT_1, {(1, 130): INCONSISTENT, (1, 4103): INCONSISTENT})
    lab.switch.set(key, value_before)
    assert lab.snmp.walk(ROOT) == golden.RAPID_PVST


def test_inconsistency_rows_of_a_vlan_go_when_spanning_tree_is_switched_off_on_it(rapid_pvst_lab):
    lab = rapid_pvst_lab
    lab.switch.set('rapid_pvst.disabled_vlans', '1')
    assert states(lab) == (
        {(3, 129): PVID_AND_TYPE, (5, 129): PVID, (6, 129): TYPE, (8, 129): PVID},
        {index: INCONSISTENT for index in ((2, 129), (5, 129), (6, 129), (7, 129), (33, 133))},
        {(20, 130): INCONSISTENT})
    # The port-channel's row in the last tree is behind the end of a walk.
    last = Binding(f'{golden.LOOP_STATE}.4094.4103', 'INTEGER', INCONSISTENT)
    assert lab.snmp.get(last.oid) == [last]
    lab.switch.set('rapid_pvst.disabled_vlans', '5-6,20,4094,100')
    assert lab.snmp.walk(ROOT) == golden.RAPID_PVST


def test_inconsistency_rows_are_those_of_the_modes_trees(lab):
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert states(lab) == (
        {(1, 129): PVID, (10, 129): PVID_AND_TYPE},
        {index: INCONSISTENT for index in ((1, 129), (1, 428), (2, 4101))},
        {index: INCONSISTENT for index in ((1, 129), (1, 428), (2, 4101))})
    lab.switch.set('switch.mode', 'mst')
    assert lab.snmp.walk(ROOT) == golden.MST


def test_inconsistency_rows_follow_the_vlans_of_an_instance(lab):
    lab.switch.set('mst.instance.1.vlans', '5')
    assert column(lab, golden.ROOT_STATE) == {
        index: INCONSISTENT
        for index in ((0, 131), (0, 428), (0, 4101), (0, 4105), (2, 129), (2, 4101))}
    assert column(lab, golden.LOOP_STATE) == {
        index: INCONSISTENT for index in ((0, 129), (2, 129), (2, 4101))}
    lab.switch.set('mst.instance.1.vlans', '10-19')
    assert lab.snmp.walk(ROOT) == golden.MST


def test_port_in_no_instances_vlan_is_in_the_cist_all_the_same(lab):
    lab.switch.set('port.300.vlans', '10')
    root = column(lab, golden.ROOT_STATE)
    assert ((0, 428) in root, (1, 428) in root, (2, 428) in root) == (True, True, False)


# The tables by bridge port.

@pytest.mark.parametrize('key, bridge_port', [('port.1', 129), ('port.3', 131), ('port_channel.9', 4105)])
def test_loop_guard_is_1_when_enabled_2_when_disabled_and_3_when_the_switch_decides(lab, key, bridge_port):
    before = column(lab, golden.LOOP_GUARD_SETTING)
    for setting, served in (('default', AS_SWITCH), ('enabled', GUARDED), ('disabled', UNGUARDED)):
        lab.switch.set(f'{key}.loop_guard', setting)
        assert column(lab, golden.LOOP_GUARD_SETTING) == {**before, bridge_port: served}


def link_types(lab, bridge_port):
    """As configured, and in operation."""
    return tuple(column(lab, oid)[bridge_port] for oid in (golden.RSTP_SETTING, golden.RSTP_LINK_TYPE))


@pytest.mark.parametrize('half_duplex, type_of_auto', [('false', POINT_TO_POINT), ('true', SHARED)])
def test_link_type_of_a_port_is_as_forced_or_as_its_duplex_mode(lab, half_duplex, type_of_auto):
    lab.switch.set('port.1.half_duplex', half_duplex)
    for setting, served in (
            ('point-to-point', (FORCED_POINT_TO_POINT, POINT_TO_POINT)),
            ('shared', (FORCED_SHARED, SHARED)), ('auto', (AUTO, type_of_auto))):
        lab.switch.set('port.1.link_type', setting)
        assert link_types(lab, 129) == served


def test_link_type_of_a_port_channel_is_as_forced_or_point_to_point(lab):
    lab.switch.set('port.2.half_duplex', 'true')
    for setting, served in (
            ('shared', (FORCED_SHARED, SHARED)),
            ('point-to-point', (FORCED_POINT_TO_POINT, POINT_TO_POINT)),
            ('auto', (AUTO, POINT_TO_POINT))):
        lab.switch.set('port_channel.5.link_type', setting)
        assert link_types(lab, 4101) == served


FLAG_OF_KEY = {'edge': EDGE, 'boundary': BOUNDARY, 'peer': PEER, 'dispute': DISPUTE}


def set_flags(lab, interface, wanted):
    with lab.switch.control_client() as control:
        for key, flag in FLAG_OF_KEY.items():
            control.set(f'{interface}.{key}', 'true' if flag in wanted else 'false')


def subsets(*those):
    for chosen in product((False, True), repeat=len(those)):
        yield [flag for flag, is_set in zip(those, chosen) if is_set]


def test_each_flag_of_an_mst_port_has_a_bit_of_its_own(lab):
    before = column(lab, golden.SMST_FLAGS)
    for wanted in subsets(EDGE, BOUNDARY, PEER, DISPUTE):
        set_flags(lab, 'port.300', wanted)
        assert column(lab, golden.SMST_FLAGS) == {**before, 428: flags(*wanted)}


def test_edge_and_peer_of_a_port_of_a_vlan_have_a_bit_each_and_the_others_none(rapid_pvst_lab):
    lab = rapid_pvst_lab
    before = column(lab, golden.RPVST_FLAGS)
    for wanted in subsets(EDGE, PEER):
        set_flags(lab, 'port.2', [*wanted, BOUNDARY, DISPUTE])
        served = flags(*wanted)
        assert column(lab, golden.RPVST_FLAGS) == {**before, (1, 130): served, (33, 130): served}


def test_mst_mode_of_a_port_is_1_when_it_sends_pre_standard_and_2_otherwise(lab):
    before = column(lab, golden.SMST_MODE)
    for key, bridge_port in (('port.3', 131), ('port_channel.5', 4101)):
        for setting, served in (('false', SEND_AUTO), ('true', SEND_PRE_STANDARD)):
            lab.switch.set(f'{key}.pre_standard_mst', setting)
            before[bridge_port] = served
            assert column(lab, golden.SMST_MODE) == before


def test_pre_standard_status_of_a_port_is_2_with_such_a_neighbor_and_3_otherwise(lab):
    before = column(lab, golden.SMST_STATUS)
    for neighbor, served in (('false', STANDARD), ('true', PRE_STANDARD)):
        lab.switch.set('port.1.pre_standard_neighbor', neighbor)
        assert column(lab, golden.SMST_STATUS) == {**before, 129: served}


def test_port_without_link_has_no_flags_no_known_neighbor_and_no_type_of_link_in_operation(lab):
    columns = (golden.LOOP_GUARD_SETTING, golden.RSTP_SETTING, golden.RSTP_LINK_TYPE, golden.SMST_FLAGS,
               golden.SMST_MODE, golden.SMST_STATUS)
    up = (UNGUARDED, AUTO, POINT_TO_POINT, flags(EDGE, BOUNDARY, PEER, DISPUTE), SEND_AUTO, PRE_STANDARD)
    down = (UNGUARDED, AUTO, OTHER, NO_FLAGS, SEND_AUTO, UNKNOWN)
    for link, served in (('down', down), ('up', up)):
        lab.switch.set('port.2.link', link)  # the only member of the port-channel
        assert tuple(column(lab, oid)[4101] for oid in columns) == served


def bridge_ports_walked(lab):
    """Which ports the tables by bridge port show. They all show the same."""
    found = {tuple(column(lab, oid)) for oid in golden.BASE_PORT_COLUMNS}
    assert len(found) == 1
    return found.pop()


def test_bridge_port_that_joins_a_port_channel_or_leaves_bridging_is_gone_at_once(lab):
    assert bridge_ports_walked(lab) == (129, 131, 428, 4101, 4105)
    lab.switch.set('port.300.channel', '9')
    assert bridge_ports_walked(lab) == (129, 131, 4101, 4105)
    lab.switch.set('port.1.switchport', 'false')
    assert bridge_ports_walked(lab) == (131, 4101, 4105)
    asked = [f'{oid}.{gone}' for oid in golden.BASE_PORT_COLUMNS for gone in (129, 428)]
    assert lab.snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_walks_find_bridge_ports_that_come_and_miss_those_without_a_vlan_within_10_seconds(lab):
    """Which bridge ports there are in VLANs is kept for so long. A GET asks for the port itself, at once."""
    lab.switch.set('port.3.vlans', '')
    assert bridge_ports_walked(lab) == (129, 428, 4101, 4105)
    lab.switch.set('port.2.channel', '0')
    lab.switch.set('port.4.switchport', 'true')
    lab.switch.set('port.3.vlans', '5')
    lab.switch.set('port.300.vlans', '')
    come = [Binding(f'{golden.LOOP_GUARD_SETTING}.130', 'INTEGER', GUARDED),
            Binding(f'{golden.LOOP_GUARD_SETTING}.131', 'INTEGER', UNGUARDED),
            Binding(f'{golden.LOOP_GUARD_SETTING}.132', 'INTEGER', GUARDED)]
    assert lab.snmp.get(*(binding.oid for binding in come)) == come
    expected = (129, 130, 131, 132, 4101, 4105)
    rows = [f'{golden.LOOP_GUARD_SETTING}.{bridge_port}' for bridge_port in expected]
    with lab.raw_client() as client:
        wait_until(lambda: rows == [binding.oid for binding in client.get_bulk(
            golden.LOOP_GUARD_SETTING, len(rows)).bindings], 'walks find all bridge ports that are in VLANs')
    assert bridge_ports_walked(lab) == expected
    without_vlan = Binding(f'{golden.LOOP_GUARD_SETTING}.428', 'INTEGER', AS_SWITCH)
    assert lab.snmp.get(without_vlan.oid) == [without_vlan]


# The tables of ports of trees.

ROLE_KEYS = {'root_port_of': ROOT_PORT, 'alternate_port_of': ALTERNATE, 'backup_port_of': BACKUP}


@pytest.mark.parametrize('key, bridge_port', [('port.1', 129), ('port_channel.5', 4101)])
def test_role_is_that_of_the_list_that_has_the_tree_and_designated_without_any(lab, key, bridge_port):
    before = column(lab, golden.PORT_ROLE)
    for name in ROLE_KEYS:
        lab.switch.set(f'{key}.{name}', '')
    before.update({(tree, bridge_port): DESIGNATED for tree in (0, 1, 2)})
    assert column(lab, golden.PORT_ROLE) == before
    for name, role in ROLE_KEYS.items():
        for tree in (0, 1, 2):
            lab.switch.set(f'{key}.{name}', str(tree))
            assert column(lab, golden.PORT_ROLE) == {**before, (tree, bridge_port): role}
        lab.switch.set(f'{key}.{name}', '')


def test_role_of_a_port_of_a_vlan_follows_its_lists(rapid_pvst_lab):
    lab = rapid_pvst_lab
    before = column(lab, golden.PORT_ROLE)
    lab.switch.set('port.2.root_port_of', '2-32')
    assert column(lab, golden.PORT_ROLE) == {**before, (1, 130): DESIGNATED}
    for name, role in ROLE_KEYS.items():
        lab.switch.set(f'port.2.{name}', '1,33')
        assert column(lab, golden.PORT_ROLE) == {**before, (1, 130): role, (33, 130): role}
        lab.switch.set(f'port.2.{name}', '')


@pytest.mark.parametrize('key, port_without_link', [('port.1', 129), ('port.2', 4101)])
def test_ports_of_trees_go_with_their_link_and_return_with_it(lab, key, port_without_link):
    """The second one is the only member of a port-channel."""
    before = column(lab, golden.PORT_ROLE)
    lab.switch.set(f'{key}.link', 'down')
    gone = [(tree, port_without_link) for tree in (0, 1, 2)]
    assert column(lab, golden.PORT_ROLE) == {
        index: role for index, role in before.items() if index not in gone}
    assert [value(lab, golden.instance(golden.PORT_ROLE, index)) for index in gone] == [ROLE_DISABLED] * 3
    lab.switch.set(f'{key}.link', 'up')
    assert column(lab, golden.PORT_ROLE) == before


def test_ports_of_trees_follow_port_channels_and_bridging(lab):
    in_all = {(0, 4101): ALTERNATE, (1, 4101): ROOT_PORT, (2, 4101): DESIGNATED}
    port_1 = {(0, 129): ROOT_PORT, (1, 129): ALTERNATE, (2, 129): BACKUP}
    lab.switch.set('port.1.channel', '9')
    assert column(lab, golden.PORT_ROLE) == {(0, 428): DESIGNATED, (0, 4105): DESIGNATED, **in_all}
    asked = [golden.instance(golden.PORT_ROLE, index) for index in port_1]
    assert lab.snmp.get(*asked) == [Binding(oid, 'noSuchInstance') for oid in asked]
    lab.switch.set('port.2.channel', '0')
    assert column(lab, golden.PORT_ROLE) == {
        (0, 130): ROOT_PORT, (0, 428): DESIGNATED, (0, 4105): DESIGNATED}
    lab.switch.set('port.300.switchport', 'false')
    lab.switch.set('port.4.switchport', 'true')
    lab.switch.set('port.1.channel', '0')
    assert column(lab, golden.PORT_ROLE) == {**port_1, (0, 130): ROOT_PORT, (0, 132): ROOT_PORT}


def test_ports_of_trees_follow_vlans_of_ports_and_instances(lab):
    before = column(lab, golden.PORT_ROLE)
    lab.switch.set('port.300.vlans', '1,15')
    assert column(lab, golden.PORT_ROLE) == {**before, (1, 428): ROOT_PORT}
    lab.switch.set('mst.instance.1.vlans', '16')
    assert column(lab, golden.PORT_ROLE) == before
    lab.switch.set('mst.instance.64.vlans', '15')
    assert column(lab, golden.PORT_ROLE) == {
        **before, (64, 129): DESIGNATED, (64, 428): ROOT_PORT, (64, 4101): DESIGNATED}


def test_ports_of_vlans_follow_vlans_of_ports_and_those_switched_off(rapid_pvst_lab):
    lab = rapid_pvst_lab
    before = column(lab, golden.PORT_ROLE), column(lab, golden.RPVST_FLAGS)
    lab.switch.set('port.2.vlans', '1,4,33')
    assert (column(lab, golden.PORT_ROLE), column(lab, golden.RPVST_FLAGS)) == (
        {**before[0], (4, 130): DESIGNATED}, {**before[1], (4, 130): flags(EDGE, PEER)})
    lab.switch.set('rapid_pvst.disabled_vlans', '2-8')
    assert column(lab, golden.PORT_ROLE) == {
        (1, 129): ALTERNATE, (1, 130): ROOT_PORT, (1, 4103): DESIGNATED, (33, 130): DESIGNATED,
        (2048, 4103): BACKUP, (4094, 4103): BACKUP}
    assert column(lab, golden.RPVST_FLAGS) == {
        (1, 129): NO_FLAGS, (1, 130): flags(EDGE, PEER), (1, 4103): flags(PEER),
        (33, 130): flags(EDGE, PEER), (2048, 4103): flags(PEER), (4094, 4103): flags(PEER)}


def test_ports_of_trees_are_those_of_the_mode(lab):
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert column(lab, golden.RPVST_FLAGS) == {
        **{(1, number): served for number, served in (
            (129, flags(EDGE)), (428, flags(PEER)), (4101, flags(EDGE, PEER)))},
        **{(vlan, 4101): flags(EDGE, PEER) for vlan in range(2, 101)},
        **{(vlan, 129): flags(EDGE) for vlan in range(10, 33)}}
    roles = column(lab, golden.PORT_ROLE)
    assert roles == {
        **{(vlan, 4101): DESIGNATED for vlan in range(1, 101)}, (1, 4101): ROOT_PORT,
        **{(vlan, 129): DESIGNATED for vlan in range(10, 33)}, (1, 129): ALTERNATE, (1, 428): ROOT_PORT}
    for oid in golden.SMST_PORT_COLUMNS:
        assert lab.snmp.walk(oid) == []
        assert lab.snmp.get(f'{oid}.129') == [Binding(f'{oid}.129', 'noSuchInstance')]
    lab.switch.set('switch.mode', 'mst')
    assert column(lab, golden.RPVST_FLAGS) == {}
    assert lab.snmp.walk(ROOT) == golden.MST

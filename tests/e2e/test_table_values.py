"""Rows follow the switch: each change is in the next request."""

import golden
import pytest
from golden import (
    DISABLED, ENABLED, FALSE, INCONSISTENT, PVID, PVID_AND_TYPE, TRUE, TYPE, channel, half_bitmap, port,
    vlans)
from harness.build import ROOT
from harness.lab import run_lab
from harness.oids import below
from harness.snmp_tools import Binding

ALL_VLANS = vlans((1, 4094))
PVST_VLAN_TABLE, MST_INSTANCE_TABLE = ROOT + '.1.2.2', ROOT + '.1.14.5'


@pytest.fixture(name='rapid_pvst_lab')
def fixture_rapid_pvst_lab():
    with run_lab('rapid-pvst.toml') as lab:
        yield lab


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
    return tuple(column(lab, oid) for oid in golden.TREE_AND_PORT_COLUMNS)


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
    lab.switch.set('port.1.link', 'down')
    lab.switch.set('port.5.link', 'up')
    assert lab.snmp.walk(ROOT) == golden.RAPID_PVST


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

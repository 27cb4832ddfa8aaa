"""scripts/show-walk by itself: what it makes of walks that no agent of these tests answers."""

import subprocess
import tempfile

import pytest
from harness.build import PROJECT

ROOT = '.1.3.9'
SHOW_WALK, NAMES = PROJECT / 'scripts/show-walk', PROJECT / 'mibs/object-names.tsv'

SCALARS = {
    '.1.6.1.0': 'INTEGER: 4', '.1.6.2.0': 'INTEGER: 1', '.1.6.7.0': 'INTEGER: 2', '.1.8.3.0': 'INTEGER: 1',
    '.1.11.2.0': '""', '.1.14.1.0': 'Gauge32: 65', '.1.14.2.0': 'Gauge32: 4094', '.1.14.3.0': 'Gauge32: 3',
    '.1.14.8.0': 'Gauge32: 20', '.1.14.9.0': 'Hex-STRING: 61 62 ', '.1.14.10.0': 'Hex-STRING: 00 FF ',
}
CIST = {
    '.1.14.5.1.2.0': 'Hex-STRING: 41 80 01 ', '.1.14.5.1.3.0': '""', '.1.14.5.1.4.0': 'INTEGER: 19',
    '.1.14.5.1.5.0': 'Hex-STRING: 60 00 00 00 5E 00 53 2A ', '.1.14.5.1.6.0': 'Gauge32: 4294967295',
}
SERVED = {**SCALARS, **CIST}

SHOWN_SCALARS = '''\
Object                              Value
stpxSpanningTreeType.0              mst (4)
stpxSpanningTreePathCostMode.0      short (1)
stpxSpanningTreePathCostOperMode.0  long (2)
stpxLoopGuardGlobalDefaultMode.0    enabled (1)
stpxMSTRegionName.0                 ""
stpxSMSTMaxInstances.0              65
stpxSMSTMaxInstanceID.0             4094
stpxSMSTRegionRevision.0            3
stpxSMSTMaxHopCount.0               20
stpxSMSTConfigDigest.0              6162
stpxSMSTConfigPreStandardDigest.0   00ff
'''
SHOWN_CIST = '''
stpxSMSTInstanceTable (.1.3.9.1.14.5)
Index     VlansMappedLow  VlansMappedHigh  Value  BridgeId                   Counter
CIST (0)  1,7-8,23        none             19     24576 / 00:00:5e:00:53:2a  4294967295
'''
NO_ROWS_BEFORE_CIST = ''.join(f'\n{table}: no rows\n' for table in (
    'stpxPVSTVlanTable', 'stpxInconsistencyTable', 'stpxRootGuardConfigTable', 'stpxRootInconsistencyTable',
    'stpxLoopGuardConfigTable', 'stpxLoopInconsistencyTable', 'stpxRSTPPortTable', 'stpxRSTPPortRoleTable',
    'stpxRPVSTPortTable'))
NO_ROWS_BEHIND_CIST = '\nstpxSMSTPortTable: no rows\n'


def show(served, names=NAMES):
    walk = ''.join(f'{ROOT}{suffix} = {value}\n' for suffix, value in served.items())
    return subprocess.run([SHOW_WALK, names, ROOT], input=walk, capture_output=True, text=True, check=False,
                          timeout=60)


def show_complete(served):
    result = show(served)
    assert (result.returncode, result.stderr) == (0, '')
    return result.stdout


def test_tables_without_rows_are_named():
    assert show_complete(SERVED) == SHOWN_SCALARS + NO_ROWS_BEFORE_CIST + SHOWN_CIST + NO_ROWS_BEHIND_CIST


def test_rows_are_in_the_order_of_their_index_and_missing_cells_are_dashes():
    shown = show_complete({
        **SERVED, '.1.14.5.1.2.10': '""', '.1.14.5.1.2.9': 'Hex-STRING: 80 ',
        '.1.14.5.1.3.9': 'Hex-STRING: C0 01 ', '.1.14.5.1.4.4094': 'INTEGER: 1'})
    assert shown.endswith('''
Index     VlansMappedLow  VlansMappedHigh  Value  BridgeId                   Counter
CIST (0)  1,7-8,23        none             19     24576 / 00:00:5e:00:53:2a  4294967295
9         0               2048-2049,2063   -      -                          -
10        none            -                -      -                          -
4094      -               -                1      -                          -
''' + NO_ROWS_BEHIND_CIST)


PORTS_BY_INTERFACE = {
    '.1.5.1.1.2.436207619': 'INTEGER: 1', '.1.5.1.1.2.369102847': 'INTEGER: 2', '.1.5.1.1.2.7': 'INTEGER: 3'}
PORTS_IN_ANY_MODE = {
    **PORTS_BY_INTERFACE,
    '.1.8.1.1.3.131': 'INTEGER: 1', '.1.8.1.1.3.4097': 'INTEGER: 2', '.1.8.1.1.3.132': 'INTEGER: 3',
    '.1.12.1.1.2.131': 'INTEGER: 1', '.1.12.1.1.3.131': 'INTEGER: 3', '.1.12.1.1.2.4097': 'INTEGER: 3',
    '.1.12.1.1.3.132': 'INTEGER: 2',
}
PORTS = {
    **PORTS_IN_ANY_MODE,
    '.1.14.7.1.2.131': 'Hex-STRING: 00 ', '.1.14.7.1.2.132': 'Hex-STRING: D8 ',
    '.1.14.7.1.2.4097': 'Hex-STRING: 70 ', '.1.14.7.1.6.131': 'INTEGER: 1', '.1.14.7.1.6.132': 'INTEGER: 2',
    '.1.14.7.1.7.131': 'INTEGER: 1', '.1.14.7.1.7.132': 'INTEGER: 2', '.1.14.7.1.7.4097': 'INTEGER: 3',
}


def test_interfaces_are_named_where_their_type_is_known():
    assert '''
stpxRootGuardConfigTable (.1.3.9.1.5.1)
Port                      Setting
7                         3
channel 4095 (369102847)  disabled (2)
port 3 (436207619)        enabled (1)
''' in show_complete({**SERVED, **PORTS})


def test_bridge_ports_are_shown_with_guards_links_and_flags():
    shown = show_complete({**SERVED, **PORTS})
    assert '''
stpxLoopGuardConfigTable (.1.3.9.1.8.1)
Port              Setting
port 3 (131)      enabled (1)
port 4 (132)      default (3)
channel 1 (4097)  disabled (2)
''' in shown
    assert '''
stpxRSTPPortTable (.1.3.9.1.12.1)
Index             Setting           OperLinkType
port 3 (131)      pointToPoint (1)  other (3)
port 4 (132)      -                 shared (2)
channel 1 (4097)  auto (3)          -
''' in shown
    assert shown.endswith('''
stpxSMSTPortTable (.1.3.9.1.14.7)
Index             Flags                                AdminMSTMode     PreStandardStatus
port 3 (131)      none (00)                            preStandard (1)  unknown (1)
port 4 (132)      operEdge,boundary,peer,dispute (d8)  auto (2)         preStandard (2)
channel 1 (4097)  boundary,2,peer (70)                 -                standard (3)
''')


def test_ports_of_trees_are_shown_with_roles_and_flags():
    shown = show_complete({
        **SERVED, '.1.12.2.1.3.0.131': 'INTEGER: 2', '.1.12.2.1.3.0.4097': 'INTEGER: 4',
        '.1.12.2.1.3.2.131': 'INTEGER: 1', '.1.12.2.1.3.10.131': 'INTEGER: 3',
        '.1.12.2.1.3.10.132': 'INTEGER: 5', '.1.12.2.1.3.10.133': 'INTEGER: 6',
        '.1.13.1.1.3.10.131': 'Hex-STRING: 90 ', '.1.13.1.1.3.9.131': 'Hex-STRING: 80 ',
        '.1.13.1.1.3.10.4097': 'Hex-STRING: 18 '})
    assert '''
stpxRSTPPortRoleTable (.1.3.9.1.12.2)
Tree      Port              Role
CIST (0)  port 3 (131)      root (2)
CIST (0)  channel 1 (4097)  alternate (4)
2         port 3 (131)      disabled (1)
10        port 3 (131)      designated (3)
10        port 4 (132)      backup (5)
10        port 5 (133)      6

stpxRPVSTPortTable (.1.3.9.1.13.1)
Tree  Port              Flags
9     port 3 (131)      operEdge (80)
10    port 3 (131)      operEdge,peer (90)
10    channel 1 (4097)  peer,4 (18)
''' in shown


def test_inconsistencies_are_shown_by_tree_and_port_with_their_kinds():
    shown = show_complete({
        **SERVED, '.1.8.2.1.3.0.4097': 'INTEGER: 1', '.1.8.2.1.3.0.131': 'INTEGER: 1',
        '.1.5.2.1.3.10.4095': 'INTEGER: 7',
        '.1.5.2.1.3.2.8191': 'INTEGER: 1', '.1.5.2.1.3.2.4096': 'INTEGER: 1',
        '.1.3.1.1.3.1.129': 'Hex-STRING: 80 ', '.1.3.1.1.3.1.128': 'Hex-STRING: C0 ',
        '.1.3.1.1.3.4094.8192': 'Hex-STRING: 60 ', '.1.3.1.1.3.4094.130': 'Hex-STRING: 00 '})
    assert '''
stpxInconsistencyTable (.1.3.9.1.3.1)
Tree  Port          stpxInconsistentState
1     128           portVlanId,portType (c0)
1     port 1 (129)  portVlanId (80)
4094  port 2 (130)  none (00)
4094  8192          portType,2 (60)
''' in shown
    assert '''
stpxRootInconsistencyTable (.1.3.9.1.5.2)
Tree  Port                 State
2     4096                 inconsistent (1)
2     channel 4095 (8191)  inconsistent (1)
10    port 3967 (4095)     7

stpxLoopGuardConfigTable: no rows

stpxLoopInconsistencyTable (.1.3.9.1.8.2)
Tree      Port              State
CIST (0)  port 3 (131)      inconsistent (1)
CIST (0)  channel 1 (4097)  inconsistent (1)
''' in shown


def test_a_long_cell_moves_its_own_row_only():
    every_other_vlan = ' '.join(['55'] * 256)
    shown = show_complete({**SERVED, '.1.14.5.1.2.1': f'Hex-STRING: {every_other_vlan} ',
                           '.1.14.5.1.3.1': '""', '.1.14.5.1.4.1': 'INTEGER: 20'})
    vlans = ','.join(str(vlan) for vlan in range(1, 2048, 2))
    assert shown.endswith(
        SHOWN_CIST + f'1         {vlans}  none             20     -                          -\n' +
        NO_ROWS_BEHIND_CIST)


def test_objects_without_a_name_are_shown_by_their_suffix():
    shown = show_complete({**SERVED, '.1.5.1.1.9.12': 'INTEGER: 5', '.1.77.0': 'Hex-STRING: 61 62 '})
    lines = [line.split() for line in shown.splitlines()]
    assert ['.1.5.1.1.9.12', '5'] in lines
    assert ['.1.77.0', 'ab'] in lines


def test_lines_that_are_no_objects_of_the_module_are_passed_over():
    result = subprocess.run(
        [SHOW_WALK, NAMES, ROOT], capture_output=True, text=True, check=False, timeout=60,
        input=''.join(f'{ROOT}{suffix} = {value}\n' for suffix, value in SERVED.items()) +
        '.1.3.99.1.6.1.0 = INTEGER: 5\nTimeout: No Response\n'
        f'{ROOT}.2 = No more variables left in this MIB View (It is past the end of the MIB tree)\n')
    assert result.returncode == 0
    assert result.stdout == SHOWN_SCALARS + NO_ROWS_BEFORE_CIST + SHOWN_CIST + NO_ROWS_BEHIND_CIST


@pytest.mark.parametrize('lost, named', [
    ('.1.11.2.0', 'stpxMSTRegionName'),
    ('.1.14.5.1.3.0', 'stpxSMSTInstanceVlansMappedHigh'),
    ('.1.14.5.1.5.0', 'stpxSMSTInstanceBridgeId'),
])
def test_walk_that_lacks_what_must_be_there_is_shown_and_refused(lost, named):
    result = show({suffix: value for suffix, value in SERVED.items() if suffix != lost})
    assert result.returncode == 1
    assert result.stderr == f'show-walk: the walk lacks {named}\n'
    assert 'stpxSMSTMaxHopCount.0' in result.stdout


def test_columns_of_mst_mode_may_be_missing_in_the_other_mode():
    cist_vlans = {suffix: CIST[suffix] for suffix in ('.1.14.5.1.2.0', '.1.14.5.1.3.0')}
    shown = show_complete({**SCALARS, '.1.6.1.0': 'INTEGER: 5', **cist_vlans, '.1.2.2.1.2.30': 'INTEGER: 2'})
    assert '\nstpxPVSTVlanTable (.1.3.9.1.2.2)\nIndex  State\n30     false (2)\n' in shown
    assert shown.endswith('''
Index     VlansMappedLow  VlansMappedHigh  Value  BridgeId  Counter
CIST (0)  1,7-8,23        none             -      -         -
''' + NO_ROWS_BEHIND_CIST)


def without(served, *columns):
    return {suffix: value for suffix, value in served.items() if not suffix.startswith(columns)}


@pytest.mark.parametrize('column, named', [
    ('.1.8.1.1.3.', 'stpxLoopGuardConfigSetting'), ('.1.12.1.1.2.', 'stpxRSTPPortSetting'),
    ('.1.12.1.1.3.', 'stpxRSTPPortOperLinkType'), ('.1.14.7.1.2.', 'stpxSMSTPortFlags'),
    ('.1.14.7.1.6.', 'stpxSMSTPortAdminMSTMode'), ('.1.14.7.1.7.', 'stpxSMSTPortPreStandardStatus'),
])
def test_walk_with_bridge_ports_lacks_a_column_of_them_that_has_no_row(column, named):
    result = show(without({**SERVED, **PORTS}, column))
    assert (result.returncode, result.stderr) == (1, f'show-walk: the walk lacks {named}\n')


def test_columns_of_bridge_ports_that_mst_mode_has_may_be_missing_in_the_other_mode():
    result = show({**SERVED, **PORTS_IN_ANY_MODE, '.1.6.1.0': 'INTEGER: 5'})
    assert (result.returncode, result.stderr) == (0, '')


def test_walk_with_roles_lacks_flags_in_rapid_pvst_mode_only():
    roles = {**SERVED, '.1.12.2.1.3.1.131': 'INTEGER: 2'}
    assert show(roles).returncode == 0
    result = show({**roles, '.1.6.1.0': 'INTEGER: 5'})
    assert (result.returncode, result.stderr) == (1, 'show-walk: the walk lacks stpxRPVSTPortFlags\n')


def test_empty_walk_lacks_all_that_is_needed_in_any_mode():
    result = show({})
    assert result.returncode == 1
    assert result.stderr.startswith('show-walk: the walk lacks stpxSpanningTreeType, ')
    assert 'stpxSMSTInstanceVlansMappedLow' in result.stderr
    assert 'stpxSMSTInstanceBridgeId' not in result.stderr


def show_with_names(served, lines):
    with tempfile.NamedTemporaryFile('w', suffix='.tsv') as names:
        names.write(lines)
        names.flush()
        return show(served, names.name), names.name


def test_index_of_two_arcs_has_two_columns():
    result, _ = show_with_names(
        {'.8.1.3.2.7': 'INTEGER: 1', '.8.1.3.10.5': 'INTEGER: 2'},
        '.8\ttable\troleTable\t-\t-\n'
        '.8.1.1\tindex\troleTree\t2=two\t-\n'
        '.8.1.2\tindex\trolePort\t-\t-\n'
        '.8.1.3\tcolumn\troleSetting\t-\t-\n')
    assert result.stdout == '''\
Object  Value

roleTable (.1.3.9.8)
Tree     Port  Setting
two (2)  7     1
10       5     2
'''
    assert result.returncode == 0


def test_file_of_names_with_a_wrong_line_is_refused():
    result, path = show_with_names(SERVED, '.1.6.1\tscalar\tstpxSpanningTreeType\n')
    assert result.returncode == 1
    assert result.stderr == (f'show-walk: {path}: not 5 fields: '
                             "'.1.6.1\\tscalar\\tstpxSpanningTreeType\\n'\n")

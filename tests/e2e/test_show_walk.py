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
NO_OTHER_ROWS = '''
stpxPVSTVlanTable: no rows

stpxInconsistencyTable: no rows

stpxRootGuardConfigTable: no rows

stpxRootInconsistencyTable: no rows

stpxLoopInconsistencyTable: no rows
'''


def show(served, names=NAMES):
    walk = ''.join(f'{ROOT}{suffix} = {value}\n' for suffix, value in served.items())
    return subprocess.run([SHOW_WALK, names, ROOT], input=walk, capture_output=True, text=True, check=False,
                          timeout=60)


def show_complete(served):
    result = show(served)
    assert (result.returncode, result.stderr) == (0, '')
    return result.stdout


def test_tables_without_rows_are_named():
    assert show_complete(SERVED) == SHOWN_SCALARS + NO_OTHER_ROWS + SHOWN_CIST


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
''')


def test_interfaces_are_named_where_their_type_is_known():
    shown = show_complete({
        **SERVED, '.1.5.1.1.2.436207619': 'INTEGER: 1', '.1.5.1.1.2.369102847': 'INTEGER: 2',
        '.1.5.1.1.2.7': 'INTEGER: 3'})
    assert '''
stpxRootGuardConfigTable (.1.3.9.1.5.1)
Port                      Setting
7                         3
channel 4095 (369102847)  disabled (2)
port 3 (436207619)        enabled (1)
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
        SHOWN_CIST + f'1         {vlans}  none             20     -                          -\n')


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
    assert result.stdout == SHOWN_SCALARS + NO_OTHER_ROWS + SHOWN_CIST


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
''')


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

"""stp-show-walk by itself: what it makes of walks that no agent of these tests answers."""

import os
import pty
import re
import shutil
import signal
import subprocess

import pytest
from harness.build import BUILD, PROJECT, VERSION
from harness.polling import wait_until

ROOT = '.1.3.9'
SHOW_WALK = PROJECT / 'tools/show-walk/stp-show-walk'
ENVIRONMENT = os.environ | {'PATH': f'{BUILD}/bin:{os.environ["PATH"]}', 'COLUMNS': '80'}

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


def show(served, *options, **how):
    walk = ''.join(f'{ROOT}{suffix} = {value}\n' for suffix, value in served.items())
    return show_text(walk, *options, **how)


def show_text(walk, *options, root=ROOT, environment=None):
    return subprocess.run([SHOW_WALK, '--root', root, *options], input=walk, capture_output=True, text=True, check=False,
                          env=ENVIRONMENT | (environment or {}), timeout=60)


def parts(result):
    """The overview, and the tables."""
    overview, heading, tables = result.stdout.partition('Object ')
    return overview.removesuffix('\n'), heading + tables


def show_complete(served):
    result = show(served)
    assert (result.returncode, result.stderr) == (0, '')
    return parts(result)[1]


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
    result = show_text(
        ''.join(f'{ROOT}{suffix} = {value}\n' for suffix, value in SERVED.items()) +
        '.1.3.99.1.6.1.0 = INTEGER: 5\nTimeout: No Response\n'
        f'{ROOT}.2 = No more variables left in this MIB View (It is past the end of the MIB tree)\n')
    assert result.returncode == 0
    assert parts(result)[1] == SHOWN_SCALARS + NO_ROWS_BEFORE_CIST + SHOWN_CIST + NO_ROWS_BEHIND_CIST


@pytest.mark.parametrize('lost, named', [
    ('.1.11.2.0', 'stpxMSTRegionName'),
    ('.1.14.5.1.3.0', 'stpxSMSTInstanceVlansMappedHigh'),
    ('.1.14.5.1.5.0', 'stpxSMSTInstanceBridgeId'),
])
def test_walk_that_lacks_what_must_be_there_is_shown_and_refused(lost, named):
    result = show({suffix: value for suffix, value in SERVED.items() if suffix != lost})
    assert result.returncode == 1
    assert result.stderr == f'stp-show-walk: the walk lacks {named}\n'
    assert 'stpxSMSTMaxHopCount.0' in result.stdout


def test_walk_of_a_switch_that_does_not_know_everything_may_lack_objects():
    result = show({suffix: SERVED[suffix] for suffix in ('.1.6.1.0', '.1.14.8.0')}, '--partial')
    assert (result.returncode, result.stderr) == (0, '')
    assert 'stpxSMSTMaxHopCount.0' in result.stdout
    nothing = show({}, '--partial')
    assert nothing.returncode == 1
    assert 'shows nothing below' in nothing.stderr


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
    assert (result.returncode, result.stderr) == (1, f'stp-show-walk: the walk lacks {named}\n')


def test_columns_of_bridge_ports_that_mst_mode_has_may_be_missing_in_the_other_mode():
    result = show({**SERVED, **PORTS_IN_ANY_MODE, '.1.6.1.0': 'INTEGER: 5'})
    assert (result.returncode, result.stderr) == (0, '')


def test_walk_with_roles_lacks_flags_in_rapid_pvst_mode_only():
    roles = {**SERVED, '.1.12.2.1.3.1.131': 'INTEGER: 2'}
    assert show(roles).returncode == 0
    result = show({**roles, '.1.6.1.0': 'INTEGER: 5'})
    assert (result.returncode, result.stderr) == (1, 'stp-show-walk: the walk lacks stpxRPVSTPortFlags\n')


def test_walk_that_holds_little_lacks_all_that_is_needed_in_any_mode():
    result = show({'.1.14.2.0': SCALARS['.1.14.2.0']})
    assert result.returncode == 1
    assert result.stderr.startswith('stp-show-walk: the walk lacks stpxSpanningTreeType, ')
    assert 'stpxSMSTInstanceVlansMappedLow' in result.stderr
    assert 'stpxSMSTInstanceBridgeId' not in result.stderr


ROLES = {
    '.1.12.2.1.3.0.131': 'INTEGER: 2', '.1.12.2.1.3.10.131': 'INTEGER: 4', '.1.12.2.1.3.0.132': 'INTEGER: 3',
    '.1.12.2.1.3.0.4097': 'INTEGER: 5', '.1.12.2.1.3.0.200': 'INTEGER: 1', '.1.12.2.1.3.10.9000': 'INTEGER: 3'}
INCONSISTENT = {'.1.5.2.1.3.0.132': 'INTEGER: 1', '.1.5.2.1.3.10.132': 'INTEGER: 1', '.1.8.2.1.3.0.4097': 'INTEGER: 1'}


def test_the_overview_tells_what_the_walk_knows_in_mst_mode():
    result = show({**SERVED, **PORTS, **ROLES, **INCONSISTENT, '.1.14.5.1.2.10': 'Hex-STRING: 80 30 ',
                   '.1.14.5.1.3.10': 'Hex-STRING: C0 ', '.1.14.5.1.4.10': 'INTEGER: 7', '.1.14.5.1.4.11': 'INTEGER: 7'})
    assert parts(result)[0] == '''\
Mode           mst
Region         "", revision 3, digest 6162...
Regional root  24576 / 00:00:5e:00:53:2a, cost 4294967295

Tree  Root port  Hops  VLANs
0     port 3     19    1,7-8,23
10    -          7     10-11,2048-2049

Port              Link    Flags  Guards     0   10
channel 1         -       BP     -          b!  -
channel 4095      -       -      -          -   -
port 3            -       -      root,loop  R   a
port 4            shared  EBPXS  loop       D!  -!
port 72           -       -      -          -   -
bridge port 9000  -       -      -          -   D

Port       Blocked by  In trees
channel 1  loop guard  0
port 4     root guard  0,10

R root, D designated, a alternate, b backup, - none, ! inconsistent
E edge, B boundary, P peer, X dispute, S pre-standard
'''


def test_the_overview_tells_what_the_walk_knows_in_rapid_pvst_mode():
    overview, _ = parts(show({
        **SCALARS, **PORTS_IN_ANY_MODE, '.1.6.1.0': 'INTEGER: 5', '.1.8.3.0': 'INTEGER: 2', **CIST,
        '.1.2.2.1.2.5': 'INTEGER: 1', '.1.2.2.1.2.30': 'INTEGER: 2', '.1.2.2.1.2.100': 'INTEGER: 1',
        '.1.12.2.1.3.5.131': 'INTEGER: 2', '.1.12.2.1.3.100.131': 'INTEGER: 3',
        '.1.13.1.1.3.5.131': 'Hex-STRING: 80 ', '.1.13.1.1.3.100.131': 'Hex-STRING: 90 ',
        '.1.3.1.1.3.5.131': 'Hex-STRING: 80 ', '.1.3.1.1.3.100.131': 'Hex-STRING: C0 '}))
    assert overview == '''\
Mode          rapid-pvst
Without tree  30

Root port  Trees
port 3     5
-          100

Port          Link    Flags  Guards     5   100
channel 1     -       -      -          -   -
channel 4095  -       -      -          -   -
port 3        -       EP     root,loop  R!  D!
port 4        shared  -      -          -   -

Port    Blocked by            In trees
port 3  port VLAN identifier  5,100
port 3  port type             100

R root, D designated, a alternate, b backup, - none, ! inconsistent
E edge, P peer
'''


def test_the_overview_of_a_walk_that_knows_nothing_of_trees_is_empty():
    assert parts(show({'.1.77.0': 'INTEGER: 1'}))[0] == ''


@pytest.mark.parametrize('walk', [
    '', f'{ROOT} = No more variables left in this MIB View (It is past the end of the MIB tree)\n',
    f'{ROOT} = No Such Object available on this agent at this OID\n', '.1.3.99.1.6.1.0 = INTEGER: 5\n',
])
def test_a_walk_of_nothing_is_told_what_most_often_is_missing(walk):
    result = show_text(walk)
    assert (result.returncode, result.stdout) == (1, '')
    assert result.stderr == (
        f'stp-show-walk: the agent shows nothing below {ROOT}: either its view lacks it (snmpd.conf: "view systemonly '
        f'included {ROOT}"), or it has not loaded the module\n')


def test_an_agent_that_says_anything_does_no_harm():
    result = show({
        **SERVED, '.1.14.3.0': 'STRING: three', '.1.14.5.1.2.0.7': 'Hex-STRING: 80 ', '.1.14.5.1.4.0': 'Hex-STRING: 61 ',
        '.1.12.2.1.3.0': 'INTEGER: 2', '.1.12.2.1.3.1.2.3': 'INTEGER: 2', '.1.11.2.0': 'Hex-STRING: 1B 5B 32 4A FF '})
    overview, tables = parts(result)
    assert overview == '''\
Mode           mst
Regional root  24576 / 00:00:5e:00:53:2a, cost 4294967295

Tree  Root port  Hops  VLANs
0     -          -     1,7-8,23
'''
    assert '\033' not in tables
    result = show({**SERVED, '.1.14.9.0': 'STRING: x', '.1.14.5.1.2.0': 'STRING: x', '.1.14.5.1.5.0': 'INTEGER: 5',
                   '.1.14.7.1.2.131': 'INTEGER: 5', '.1.8.1.1.3.x': 'INTEGER: 5'})
    assert parts(result)[0] == '''\
Mode  mst

Tree  Root port  Hops  VLANs
0     -          19    none

Port    Link  Flags  Guards  0
port 3  -     -      -       -

R root, D designated, a alternate, b backup, - none, ! inconsistent
'''


@pytest.mark.parametrize('odd', [
    {'.1.12.2.1.3.5000.131': 'INTEGER: 2'}, {'.1.5.2.1.3.4095.131': 'INTEGER: 1'},
    {'.1.3.1.1.3.4294967295.131': 'Hex-STRING: 80 '}, {'.1.13.1.1.3.5000.131': 'Hex-STRING: 80 '},
    {'.1.14.5.1.2.5000': 'Hex-STRING: 80 ', '.1.14.5.1.3.5000': '""', '.1.14.5.1.4.5000': 'INTEGER: 1'},
])
def test_the_overview_passes_over_trees_that_there_cannot_be(odd):
    known = {**SERVED, **PORTS}
    result = show({**known, **odd})
    assert (result.returncode, result.stderr) == (0, '')
    assert parts(result)[0] == parts(show(known))[0]
    assert parts(result)[1] != parts(show(known))[1]


@pytest.mark.parametrize('vlan', [0, 4095, 5000])
@pytest.mark.parametrize('state', [1, 2])
def test_the_overview_passes_over_vlans_that_there_cannot_be(vlan, state):
    known = {**SCALARS, '.1.6.1.0': 'INTEGER: 5'}
    odd = parts(show({**known, f'.1.2.2.1.2.{vlan}': f'INTEGER: {state}'}))[0]
    assert odd == parts(show(known))[0]


@pytest.mark.parametrize('suffix', ['.1.14.3.0', '.1.14.5.1.4.0', '.1.14.5.1.6.0'])
def test_the_overview_passes_over_numbers_that_no_object_of_it_has(suffix):
    result = show({**SERVED, suffix: 'Counter64: 4294967296'})
    assert (result.returncode, result.stderr) == (0, '')
    assert parts(result)[0] == parts(show(without(SERVED, suffix)))[0] != parts(show(SERVED))[0]
    assert '4294967296' in parts(result)[1]


def put_program(directory, name, script):
    (directory / name).write_text(f'#!/bin/sh\n{script}\n', encoding='ascii')
    (directory / name).chmod(0o755)
    return {'PATH': f'{directory}:{ENVIRONMENT["PATH"]}'}


def run_program(*arguments, environment):
    return subprocess.run([SHOW_WALK, *arguments], input='', capture_output=True, text=True, check=False,
                          env=ENVIRONMENT | environment, timeout=60)


SHOWS_THE_MODE = f"echo '{ROOT}.1.6.1.0 = INTEGER: 4'"


@pytest.mark.parametrize('fails, told', [
    ('echo "not today" >&2; exit 1', 'not today'), ('kill -SEGV $$', 'stp-show-walk: stp-overview ended by signal 11'),
])
def test_the_tables_are_shown_where_the_overview_cannot_be(tmp_path, fails, told):
    environment = put_program(tmp_path, 'stp-overview', f'cat >/dev/null; {fails}')
    result = show(SERVED, environment=environment)
    assert (result.returncode, result.stderr) == (1, f'{told}\n')
    assert result.stdout == SHOWN_SCALARS + NO_ROWS_BEFORE_CIST + SHOWN_CIST + NO_ROWS_BEHIND_CIST


def test_an_agent_is_walked_by_snmpwalk_with_the_options_given(tmp_path):
    environment = put_program(tmp_path, 'snmpwalk', f'echo "$MIBS $@" >&2; {SHOWS_THE_MODE}')
    result = run_program('--root', ROOT, '-v2c', '-c', 'two words', 'agent', environment=environment)
    assert result.stderr.startswith(f' -On -Oe -Ox --hexOutputLength=0 -v2c -c two words agent {ROOT}\n')
    assert 'Mode  mst\n' in result.stdout
    result = run_program('agent', environment=environment)
    assert result.stderr.startswith(' -On -Oe -Ox --hexOutputLength=0 agent .1.3.6.1.4.1.32473.9.82\n')


@pytest.mark.parametrize('arguments', [
    ('-c', '--help', 'agent'), ('agent', '-Cr5', '-t', '3'), ('-dc', '--version', 'agent'), ('-A--root', 'agent'),
    ('--hexOutputLength=7', '--noTokenWarnings', '--PRINTNUMERICOIDS=1', 'agent'),
])
def test_what_is_no_option_of_its_own_is_left_to_snmpwalk(tmp_path, arguments):
    tokens = subprocess.run(['snmpwalk', '-H'], check=True, capture_output=True, text=True, timeout=60).stderr
    (tmp_path / 'tokens').write_text(tokens, encoding='utf-8')
    environment = put_program(tmp_path, 'snmpwalk', f"""
[ "$1" != -H ] || {{ cat {tmp_path}/tokens >&2; exit; }}
shift 4; echo "$@" >&2; {SHOWS_THE_MODE}""")
    result = run_program(*arguments, f'--root={ROOT}', environment=environment)
    assert result.stderr.startswith(f'{" ".join(arguments)} {ROOT}\n')


def test_every_short_option_of_snmpwalk_is_known(tmp_path):
    """But for those with which it does not walk."""
    environment = put_program(tmp_path, 'snmpwalk', SHOWS_THE_MODE)
    shown = subprocess.run(['snmpwalk', '-h'], check=False, capture_output=True, text=True, timeout=60).stderr
    options = re.findall(r'^  (-[a-zA-Z0-9])\b(?! --| *,)(.*)', shown, re.MULTILINE)
    assert len(options) > 20
    for option, rest in options:
        if option not in ('-h', '-H', '-V'):
            value = [] if rest.startswith('\t') else ['x']
            result = run_program('--root', ROOT, option, *value, 'agent', environment=environment)
            assert 'see --help' not in result.stderr, option


@pytest.mark.parametrize('root', ['1.3.9', '.1.3.9'])
def test_the_root_may_lack_its_first_dot(root):
    result = show(SERVED, root=root)
    assert (result.returncode, result.stderr) == (0, '')
    assert parts(result)[1] == SHOWN_SCALARS + NO_ROWS_BEFORE_CIST + SHOWN_CIST + NO_ROWS_BEHIND_CIST


def test_what_snmpwalk_complains_of_is_all_that_is_said(tmp_path):
    environment = put_program(tmp_path, 'snmpwalk', 'echo "Timeout: No Response from x" >&2; exit 1')
    result = run_program('x', environment=environment)
    assert (result.returncode, result.stdout, result.stderr) == (1, '', 'Timeout: No Response from x\n')


def test_a_walk_that_breaks_off_is_shown_as_far_as_it_came(tmp_path):
    environment = put_program(tmp_path, 'snmpwalk', f'{SHOWS_THE_MODE}; echo "Timeout: No Response" >&2; exit 1')
    result = run_program('--root', ROOT, 'x', environment=environment)
    assert result.returncode == 1
    assert result.stderr == 'Timeout: No Response\nstp-show-walk: the walk broke off: this is not all\n'
    assert result.stdout.startswith('Mode  mst\n') and '\nstpxSpanningTreeType.0  mst (4)\n' in result.stdout


def test_an_interrupted_walk_ends_without_a_word(tmp_path):
    environment = put_program(tmp_path, 'snmpwalk', f'touch {tmp_path}/walks; exec sleep 60')
    program = subprocess.Popen([SHOW_WALK, 'x'], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                               env=ENVIRONMENT | environment, start_new_session=True)
    try:
        wait_until((tmp_path / 'walks').exists, 'the walk runs')
    finally:
        os.killpg(program.pid, signal.SIGINT)
    assert program.communicate(timeout=60) == ('', '')
    assert program.returncode == -signal.SIGINT


def test_snmpwalk_that_is_missing_is_named(tmp_path):
    result = run_program('x', environment={'PATH': str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, '')
    assert result.stderr == 'stp-show-walk: snmpwalk is not installed (Debian package snmp)\n'


def test_stp_overview_that_is_missing_is_named_above_the_tables(tmp_path):
    put_program(tmp_path, 'snmpwalk', SHOWS_THE_MODE)
    result = run_program('--root', ROOT, 'x', environment={'PATH': str(tmp_path)})
    assert result.returncode == 1
    assert result.stderr.startswith('stp-show-walk: stp-overview is not in PATH\n')
    assert result.stdout.startswith('Object ')


@pytest.mark.parametrize('arguments, error', [
    (['--root'], '--root: expected an OID'), (['--root', 'x'], "--root: 'x' is no OID: expected numbers, as {}"),
    (['--root', '.1..3', 'a'], "--root: '.1..3' is no OID: expected numbers, as {}"),
    (['--rot', '.1.3'], "unknown option '--rot'; did you mean '--root'?"),
    (['--vresion'], "unknown option '--vresion'; did you mean '--version'?"),
    (['--hexOutputLenght=0', 'a'], "unknown option '--hexOutputLenght'; did you mean '--hexOutputLength'?"),
    (['--bogus', 'a'], "unknown option '--bogus'"), (['-q', 'a'], "unknown option '-q'"),
    (['-v2c', '-c', 'public'], 'expected an agent'), (['-v2c', '-c'], '-c: expected a value'),
    (['a', 'b'], "unexpected argument 'b'"),
])
def test_wrong_command_line_is_refused(arguments, error):
    result = run_program(*arguments, environment={})
    assert (result.returncode, result.stdout) == (2, '')
    assert result.stderr == f'stp-show-walk: {error.format(".1.3.6.1.4.1.32473.9.82")} (see --help)\n'


def test_nobody_is_asked_for_a_walk_on_a_terminal():
    outer, terminal = pty.openpty()
    try:
        result = subprocess.run([SHOW_WALK], stdin=terminal, capture_output=True, text=True, check=False,
                                env=ENVIRONMENT, timeout=60)
    finally:
        os.close(outer)
        os.close(terminal)
    assert (result.returncode, result.stdout) == (2, '')
    assert result.stderr == 'stp-show-walk: expected an agent, or a walk on standard input (see --help)\n'


@pytest.mark.parametrize('before', [[], ['-v2c'], ['--root', '.1.3']])
def test_version_is_that_of_the_project(before):
    result = run_program(*before, '--version', environment={})
    assert (result.returncode, result.stdout, result.stderr) == (0, f'stp-show-walk {VERSION}\n', '')


def test_nothing_is_written_beside_the_program(tmp_path):
    shutil.copytree(SHOW_WALK.parent, tmp_path / 'tools/show-walk', ignore=shutil.ignore_patterns('__pycache__'))
    folder = tmp_path / 'tools/show-walk'
    before = sorted(folder.rglob('*'))
    environment = {name: value for name, value in ENVIRONMENT.items() if name != 'PYTHONDONTWRITEBYTECODE'}
    subprocess.run([folder / SHOW_WALK.name, '--help'], check=True, capture_output=True, env=environment, timeout=60)
    assert sorted(folder.rglob('*')) == before


def test_help_starts_with_what_it_does():
    result = run_program('--help', environment={})
    assert (result.returncode, result.stderr) == (0, '')
    assert result.stdout.startswith('Shows a walk of the module: an overview')


def test_a_reader_that_has_seen_enough_is_no_error():
    many = ''.join(f'{ROOT}.1.2.2.1.2.{vlan} = INTEGER: 1\n' for vlan in range(1, 4095))
    result = subprocess.run(f'{SHOW_WALK} --root {ROOT} | head -n 1', shell=True, input=many, capture_output=True,
                            text=True, check=False, env=ENVIRONMENT, timeout=60)
    assert result.stderr == ''

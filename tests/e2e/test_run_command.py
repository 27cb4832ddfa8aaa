"""./run as a newcomer types it: from anywhere, until the walk or until Ctrl-C, and nothing of it stays."""

import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
from pathlib import Path

import golden
import pytest
from harness.build import BRIDGE_ROOT, PROJECT, SCENARIOS
from harness.polling import wait_until
from harness.ports import free_port
from harness.run_command import (FakeProject, fake_project_of, root_of_walk, second_terminal, shown_walk,
                                 starting_runs)

SERVICE_USER = 'Debian-snmp'

SHOWN_MST = '''\
Mode           mst
Region         ops-lab, revision 7, digest 86c65f5a...
Regional root  24583 / 02:a0:00:ff:7b:00, cost 4000000001

Tree  Root port  Hops  VLANs
0     port 1     17    1-9,21-29,33-2046,2056-4093
1     channel 5  18    10-19
2     -          40    20,30-32,2047-2048
64    -          1     2049-2055,4094
4094  -          39    none

Port       Link    Flags  Guards     0   1   2   64  4094
channel 5  p2p     EBPXS  root       a!  R   D!  -   -
channel 9  -       -      loop       -!  -   -   -   -
port 1     shared  EXS    root,loop  R!  a!  b!  -   -
port 3     -       -      -          -!  -   -   -   -
port 300   p2p     BP     root,loop  D!  -   -   -   -

Port       Blocked by  In trees
channel 5  root guard  0,2
channel 5  loop guard  2
channel 9  root guard  0
port 1     root guard  1-2
port 1     loop guard  0-2
port 3     root guard  0
port 300   root guard  0

R root, D designated, a alternate, b backup, - none, ! inconsistent
E edge, B boundary, P peer, X dispute, S pre-standard

Object                              Value
stpxSpanningTreeType.0              mst (4)
stpxSpanningTreePathCostMode.0      short (1)
stpxSpanningTreePathCostOperMode.0  long (2)
stpxLoopGuardGlobalDefaultMode.0    enabled (1)
stpxMSTRegionName.0                 ops-lab
stpxSMSTMaxInstances.0              65
stpxSMSTMaxInstanceID.0             4094
stpxSMSTRegionRevision.0            7
stpxSMSTMaxHopCount.0               25
stpxSMSTConfigDigest.0              86c65f5ae18abd92890882b4bdf0aeb4
stpxSMSTConfigPreStandardDigest.0   0f1e2d3c4b5a69788796a5b4c3d2e1f1

stpxPVSTVlanTable: no rows

stpxInconsistencyTable: no rows

stpxRootGuardConfigTable (ROOT.1.5.1)
Port                   Setting
channel 5 (369098757)  enabled (1)
channel 9 (369098761)  disabled (2)
port 1 (436207617)     enabled (1)
port 3 (436207619)     disabled (2)
port 300 (436207916)   enabled (1)

stpxRootInconsistencyTable (ROOT.1.5.2)
Tree      Port              State
CIST (0)  port 3 (131)      inconsistent (1)
CIST (0)  port 300 (428)    inconsistent (1)
CIST (0)  channel 5 (4101)  inconsistent (1)
CIST (0)  channel 9 (4105)  inconsistent (1)
1         port 1 (129)      inconsistent (1)
2         port 1 (129)      inconsistent (1)
2         channel 5 (4101)  inconsistent (1)

stpxLoopGuardConfigTable (ROOT.1.8.1)
Port              Setting
port 1 (129)      enabled (1)
port 3 (131)      disabled (2)
port 300 (428)    default (3)
channel 5 (4101)  disabled (2)
channel 9 (4105)  enabled (1)

stpxLoopInconsistencyTable (ROOT.1.8.2)
Tree      Port              State
CIST (0)  port 1 (129)      inconsistent (1)
1         port 1 (129)      inconsistent (1)
2         port 1 (129)      inconsistent (1)
2         channel 5 (4101)  inconsistent (1)

stpxRSTPPortTable (ROOT.1.12.1)
Index             Setting           OperLinkType
port 1 (129)      auto (3)          shared (2)
port 3 (131)      shared (2)        other (3)
port 300 (428)    pointToPoint (1)  pointToPoint (1)
channel 5 (4101)  auto (3)          pointToPoint (1)
channel 9 (4105)  pointToPoint (1)  other (3)

stpxRSTPPortRoleTable (ROOT.1.12.2)
Tree      Port              Role
CIST (0)  port 1 (129)      root (2)
CIST (0)  port 300 (428)    designated (3)
CIST (0)  channel 5 (4101)  alternate (4)
1         port 1 (129)      alternate (4)
1         channel 5 (4101)  root (2)
2         port 1 (129)      backup (5)
2         channel 5 (4101)  designated (3)

stpxRPVSTPortTable: no rows

stpxSMSTInstanceTable (ROOT.1.14.5)
Index     VlansMappedLow     VlansMappedHigh  Value  BridgeId                   Counter
CIST (0)  1-9,21-29,33-2046  2056-4093        17     24583 / 02:a0:00:ff:7b:00  4000000001
1         10-19              none             18     -                          -
2         20,30-32,2047      2048             40     -                          -
64        none               2049-2055,4094   1      -                          -
4094      none               none             39     -                          -

stpxSMSTPortTable (ROOT.1.14.7)
Index             Flags                                AdminMSTMode     PreStandardStatus
port 1 (129)      operEdge,dispute (88)                auto (2)         preStandard (2)
port 3 (131)      none (00)                            preStandard (1)  unknown (1)
port 300 (428)    boundary,peer (50)                   preStandard (1)  standard (3)
channel 5 (4101)  operEdge,boundary,peer,dispute (d8)  auto (2)         preStandard (2)
channel 9 (4105)  none (00)                            auto (2)         unknown (1)
'''

SHOWN_RAPID_PVST_TABLES = '''\
stpxPVSTVlanTable (ROOT.1.2.2)
Index  State
1      true (1)
2      true (1)
3      true (1)
4      true (1)
5      false (2)
6      false (2)
7      true (1)
8      true (1)
20     false (2)
33     true (1)
2048   true (1)
4094   false (2)

stpxInconsistencyTable (ROOT.1.3.1)
Tree  Port          stpxInconsistentState
1     port 1 (129)  portType (40)
1     port 2 (130)  portVlanId (80)
3     port 1 (129)  portVlanId,portType (c0)
8     port 1 (129)  portVlanId (80)

stpxRootGuardConfigTable (ROOT.1.5.1)
Port                   Setting
channel 7 (369098759)  enabled (1)
port 1 (436207617)     disabled (2)
port 2 (436207618)     enabled (1)
port 5 (436207621)     disabled (2)

stpxRootInconsistencyTable (ROOT.1.5.2)
Tree  Port          State
1     port 2 (130)  inconsistent (1)
2     port 1 (129)  inconsistent (1)
7     port 1 (129)  inconsistent (1)
33    port 5 (133)  inconsistent (1)

stpxLoopGuardConfigTable (ROOT.1.8.1)
Port              Setting
port 1 (129)      default (3)
port 2 (130)      enabled (1)
port 5 (133)      disabled (2)
channel 7 (4103)  disabled (2)

stpxLoopInconsistencyTable (ROOT.1.8.2)
Tree  Port              State
1     port 1 (129)      inconsistent (1)
1     port 2 (130)      inconsistent (1)
1     channel 7 (4103)  inconsistent (1)

stpxRSTPPortTable (ROOT.1.12.1)
Index             Setting           OperLinkType
port 1 (129)      shared (2)        shared (2)
port 2 (130)      auto (3)          pointToPoint (1)
port 5 (133)      pointToPoint (1)  other (3)
channel 7 (4103)  shared (2)        shared (2)

stpxRSTPPortRoleTable (ROOT.1.12.2)
Tree  Port              Role
1     port 1 (129)      alternate (4)
1     port 2 (130)      root (2)
1     channel 7 (4103)  designated (3)
2     port 1 (129)      root (2)
3     port 1 (129)      backup (5)
4     port 1 (129)      designated (3)
7     port 1 (129)      root (2)
8     port 1 (129)      alternate (4)
33    port 2 (130)      designated (3)
2048  channel 7 (4103)  backup (5)

stpxRPVSTPortTable (ROOT.1.13.1)
Tree  Port              Flags
1     port 1 (129)      none (00)
1     port 2 (130)      operEdge,peer (90)
1     channel 7 (4103)  peer (10)
2     port 1 (129)      none (00)
3     port 1 (129)      none (00)
4     port 1 (129)      none (00)
7     port 1 (129)      none (00)
8     port 1 (129)      none (00)
33    port 2 (130)      operEdge,peer (90)
2048  channel 7 (4103)  peer (10)

stpxSMSTInstanceTable (ROOT.1.14.5)
Index     VlansMappedLow  VlansMappedHigh  Value  BridgeId  Counter
CIST (0)  1-2047          2048-4094        -      -         -

stpxSMSTPortTable: no rows
'''


@pytest.fixture(name='start_run')
def fixture_start_run():
    with starting_runs() as start:
        yield start


@pytest.fixture(name='fake_project')
def fixture_fake_project(start_run):
    with fake_project_of(start_run) as project:
        yield project


def tables_without_rows(output):
    return re.findall('^(.*): no rows$', output, re.MULTILINE)


def test_once_shows_every_object_of_the_scenario_and_leaves_nothing_behind(start_run):
    run = start_run('--once', '--scenario', SCENARIOS / 'mst.toml', '--port', str(free_port()))
    assert run.wait() == 0, run.errors
    assert shown_walk(run.output) == SHOWN_MST
    assert run.errors == ''
    run.check_nothing_is_left()


def test_once_shows_the_tables_of_a_rapid_pvst_switch(start_run):
    run = start_run('--once', '--scenario', SCENARIOS / 'rapid-pvst.toml', '--port', str(free_port()))
    assert run.wait() == 0, run.errors
    assert shown_walk(run.output).endswith(f'\n\n{SHOWN_RAPID_PVST_TABLES}')
    assert run.errors == ''


def when_written():
    """Each file that a run uses of what was built."""
    built = PROJECT / 'build/run'
    files = [built / 'enterprise', *built.glob('mibs/*.txt'), *built.glob('bin/*'), *built.glob('lib/*')]
    return {file.name: file.stat().st_mtime_ns for file in files}


def test_once_shows_the_example_switch_and_can_be_repeated(start_run):
    """And leaves alone what another run uses that began before."""
    port = str(free_port())
    first = start_run('--once', '--port', port)
    assert first.wait() == 0, first.errors
    assert 'stpxMSTRegionName.0 campus' in re.sub(' +', ' ', first.output)
    assert tables_without_rows(first.output) == [
        'stpxPVSTVlanTable', 'stpxInconsistencyTable', 'stpxRPVSTPortTable']
    written = when_written()
    second = start_run('--once', '--port', port)
    assert second.wait() == 0, second.errors
    assert shown_walk(second.output) == shown_walk(first.output)
    assert when_written() == written


def test_once_shows_the_example_switch_of_the_other_mode(start_run):
    run = start_run('--once', '--scenario', PROJECT / 'scenarios/rapid-pvst-small.toml', '--port',
                    str(free_port()))
    assert run.wait() == 0, run.errors
    assert run.errors == ''
    assert tables_without_rows(run.output) == ['stpxSMSTPortTable']


def test_stays_up_for_the_commands_that_it_prints_until_ctrl_c(start_run):
    run = start_run('--scenario', SCENARIOS / 'mst.toml', '--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    type_in = second_terminal(run)

    walk, show_walk = 'snmpwalk -On', f'stp-show-walk --root {root_of_walk(run)} '
    assert len(re.findall(r'\.9\.82\.[0-9.]+ = (?!No more)', type_in(walk))) == len(golden.MST)
    assert type_in(show_walk) in run.output
    assert 'SpanningTreeType.0 = INTEGER: mst(4)' in type_in('snmpwalk $AGENT stpxObjects')
    assert '.17.2.1.0 = INTEGER: 3\n' in type_in(f'snmpwalk $AGENT {BRIDGE_ROOT}')
    assert re.search(r'^ *428 +1 +pointToPoint$', type_in('snmptable'), re.MULTILINE)
    assert 'DESCRIPTION' in type_in('snmptranslate')
    type_in('set mst.region')
    assert '.9.82.1.11.2.0 = STRING: "campus-north"' in type_in(walk)
    type_in('set port.1.root_inconsistent')
    assert '.9.82.1.5.2.1.3.0.129 = INTEGER: 1' in type_in(walk)
    type_in('set switch.mode')
    assert '\n10     true (1)\n' in type_in(show_walk)
    assert 'Mode    rapid-pvst\n' in type_in('stp-switchctl show')
    type_in('fault drop')
    type_in('fault none')
    type_in('reset')
    assert 'Mode           mst\n' in type_in('stp-switchctl show')

    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


def test_the_file_for_another_terminal_stands_at_the_same_place_and_goes_with_the_run(start_run):
    port = str(free_port())
    places = []
    for _ in range(2):
        run = start_run('--port', port)
        run.wait_for_output('Running until Ctrl-C.')
        [place] = re.findall(r'^  \. (.*)$', run.output, re.MULTILINE)
        assert Path(place).exists()
        assert run.interrupt(signal.SIGINT) == 0
        assert not Path(place).exists()
        places.append(place)
    assert places[0] == places[1]


@pytest.mark.skipif(os.geteuid() != 0, reason='only root can switch the traps on')
def test_traps_are_shown_as_they_come(start_run, private_mount):
    run = start_run('--traps', '--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C. Traps as they come:')
    second_terminal(run)('set port.1.root_inconsistent')
    run.wait_for_output('stpxRootInconsistencyState.0.129')
    [shown] = [line for line in run.output.splitlines() if 'stpxRootInconsistencyState.0.129' in line]
    assert re.fullmatch(r'trap at \d\d:\d\d:\d\d  stpxRootInconsistencyUpdate, '
                        r'stpxRootInconsistencyState\.0\.129 = INTEGER: 1, stpxSpanningTreeType = INTEGER: mst\(4\)', shown)
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


def test_a_reader_that_has_seen_enough_is_no_error(start_run):
    run = start_run('--once', '--port', str(free_port()), reader='head -n 1')
    run.wait()
    assert run.errors == ''
    run.check_nothing_is_left()


@pytest.mark.skipif(os.geteuid() != 0, reason='only root can hand the processes to another user')
def test_root_hands_its_processes_to_the_agents_user_where_that_user_can_reach_the_project(start_run):
    reached = subprocess.run(
        ['setpriv', f'--reuid={SERVICE_USER}', '--clear-groups', 'test', '-x', PROJECT / 'run'], check=False)
    expected = SERVICE_USER if reached.returncode == 0 else 'root'
    run = start_run('--scenario', SCENARIOS / 'mst.toml', '--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    users = {name: user for name, user, _ in run.processes() if name in ('snmpd', 'stp-switchd')}
    assert users == {'snmpd': expected, 'stp-switchd': expected}


@pytest.mark.skipif(os.geteuid() != 0, reason='only root can become another user')
def test_after_roots_run_another_user_walks_its_agent_and_only_root_changes_its_switch(start_run):
    become_nobody = ('setpriv', '--reuid=65534', '--regid=65534', '--clear-groups', 'env', 'HOME=/nonexistent')
    if subprocess.run([*become_nobody, 'test', '-r', PROJECT / 'run'], check=False).returncode != 0:
        pytest.skip('this project stands where other users cannot reach it')
    run = start_run('--scenario', SCENARIOS / 'mst.toml', '--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    assert '\nLook at the switch, and change it, as root:\n' in run.output
    type_in = second_terminal(run, *become_nobody, check=False)
    status, shown, errors = type_in('stp-show-walk')
    assert (status, errors) == (0, '')
    assert shown in run.output
    for words in ('snmpwalk -On', 'snmpwalk $AGENT stpxObjects', 'snmptable', 'snmptranslate'):
        status, shown, errors = type_in(words)
        assert (status, errors) == (0, '')
        assert shown == second_terminal(run)(words)
    status, _, errors = type_in('set mst.region')
    assert status == 2
    assert 'Permission denied' in errors


def test_sigterm_ends_everything(start_run):
    run = start_run('--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    assert run.interrupt(signal.SIGTERM) == 128 + signal.SIGTERM
    run.check_nothing_is_left()


@pytest.mark.parametrize('name', ['snmpd', 'stp-switchd'])
@pytest.mark.parametrize('number, how', [
    (signal.SIGTERM, 'with status 0: .+'), (signal.SIGKILL, 'by signal KILL')])
def test_process_that_ends_is_named_with_its_end_and_its_log(start_run, name, number, how):
    run = start_run('--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    [pid] = [pid for found, _, pid in run.processes() if found == name]
    os.kill(pid, number)
    assert run.wait() == 1
    [log] = re.fullmatch(f'run: {name} ended {how} \\(log: (.+)\\)\n', run.errors).groups()
    assert Path(log).read_text()
    run.check_nothing_is_left()


def test_processes_die_with_a_killed_run(start_run):
    run = start_run('--port', str(free_port()))
    run.wait_for_output('Running until Ctrl-C.')
    assert run.interrupt(signal.SIGKILL) == -signal.SIGKILL
    wait_until(lambda: run.processes() == [], 'snmpd and stp-switchd have ended')


def test_taken_port_is_named_in_one_line(start_run):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as occupant:
        occupant.bind(('127.0.0.1', 0))
        port = occupant.getsockname()[1]
        run = start_run('--once', '--port', str(port))
        assert run.wait() == 1
    assert run.errors == f'run: UDP port {port} of 127.0.0.1 is taken: choose another with --port\n'
    assert run.output == ''
    run.check_nothing_is_left()


@pytest.mark.skipif(not Path('/proc/net/if_inet6').exists(), reason='no IPv6 here')
def test_port_that_only_ipv6_uses_is_not_taken(start_run):
    port = free_port()
    with socket.socket(socket.AF_INET6, socket.SOCK_DGRAM) as occupant:
        occupant.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
        occupant.bind(('::', port))
        run = start_run('--once', '--port', str(port))
        assert run.wait() == 0, run.errors


@pytest.mark.skipif(not Path('/proc/net/if_inet6').exists(), reason='no IPv6 here')
def test_port_that_ipv6_takes_with_ipv4_is_named_in_one_line(start_run):
    with socket.socket(socket.AF_INET6, socket.SOCK_DGRAM) as occupant:
        occupant.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 0)
        occupant.bind(('::', 0))
        port = occupant.getsockname()[1]
        run = start_run('--once', '--port', str(port))
        assert run.wait() == 1
    assert run.errors == f'run: UDP port {port} of 127.0.0.1 is taken: choose another with --port\n'
    run.check_nothing_is_left()


def test_bad_scenario_is_named_in_one_line(start_run):
    with tempfile.NamedTemporaryFile(suffix='.toml') as scenario:
        scenario.write(b'[switch]\nmode = "none"\n')
        scenario.flush()
        run = start_run('--once', '--scenario', scenario.name, '--port', str(free_port()))
        assert run.wait() == 1
    assert run.errors == f"run: {scenario.name}:2: switch.mode: 'none' is not mst or rapid-pvst\n"
    assert 'Starting' not in run.output
    run.check_nothing_is_left()


@pytest.mark.parametrize('arguments, status, message', [
    (['--port', '0'], 2, "run: --port: '0' is not in 1..65535 (see --help)\n"),
    (['--port', '65536'], 2, "run: --port: '65536' is not in 1..65535 (see --help)\n"),
    (['--port', 'snmp'], 2, "run: --port: 'snmp' is not in 1..65535 (see --help)\n"),
    (['--port', '127.0.0.1:1161'], 2,
     "run: --port: '127.0.0.1:1161' is an address: snmpd listens on 127.0.0.1, expected the number of a UDP port "
     '(see --help)\n'),
    (['--port', '161'], 1,
     'run: UDP port 161 is below 1024, where only root may listen, which this snmpd shall not be: choose another '
     'with --port\n'),
    (['--port'], 2, 'run: --port needs a value (see --help)\n'),
    (['--once', '--traps'], 2, 'run: --traps shows what comes after the walk, where --once stops (see --help)\n'),
    (['--twice'], 2, "run: unknown argument '--twice' (see --help)\n"),
    (['--scenario', '/nowhere.toml'], 1, "run: there is no scenario '/nowhere.toml'\n"),
    (['--scenario', '/'], 1, "run: cannot read the scenario '/'\n"),
])
def test_wrong_command_line_is_named_in_one_line(start_run, arguments, status, message):
    # Somebody else may have the port that it takes by default.
    run = start_run(*([] if '--port' in arguments else ['--port', str(free_port())]), *arguments)
    assert run.wait() == status
    assert run.errors == message
    assert run.output == ''


@pytest.mark.parametrize('place, options', [
    ('', '--preset run'), ('/elsewhere', '--fresh --preset run'), (None, '--preset run'),
])
def test_a_build_folder_that_was_copied_or_moved_is_configured_anew(tmp_path, place, options):
    """`place`: where the folder was before this one; None where it was never configured."""
    build, programs = tmp_path / 'build/run', tmp_path / 'bin'
    (tmp_path / 'scripts').mkdir()
    shutil.copy(PROJECT / 'scripts/common.sh', tmp_path / 'scripts')
    build.mkdir(parents=True)
    if place is not None:
        (build / 'CMakeCache.txt').write_text(
            f'CMAKE_CACHEFILE_DIR:INTERNAL={place or build}\nCMAKE_COMMAND:INTERNAL=cmake\n', encoding='ascii')
    programs.mkdir()
    (programs / 'cmake').write_text('#!/bin/sh\necho "$PWD: $*"\n', encoding='ascii')
    (programs / 'cmake').chmod(0o755)
    printed = subprocess.run(['bash', '-euc', f'. {tmp_path}/scripts/common.sh; configure run'], check=True, cwd='/',
                             capture_output=True, text=True, timeout=60,
                             env=os.environ | {'PATH': f'{programs}:{os.environ["PATH"]}'}).stdout
    assert printed == f'{tmp_path}: {options}\n'


def test_a_run_of_stand_ins_stays_up(fake_project):
    run = fake_project.start()
    run.wait_for_output('Running until Ctrl-C.')
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


@pytest.mark.skipif(os.geteuid() != 0, reason='only root can switch the traps on')
@pytest.mark.usefixtures('private_mount')
def test_what_a_run_starts_in_the_moment_of_its_end_ends_with_it(fake_project):
    """It was started, and nothing has been noted of it yet."""
    part, noted = 'scripts/run/agent.sh', 'viewer_pid=$!'
    text = (fake_project.place / part).read_text(encoding='ascii')
    assert noted in text
    fake_project.write(part, text.replace(noted, f'kill $$; {noted}'))
    run = fake_project.start('--traps')
    assert run.wait() == 128 + signal.SIGTERM
    run.check_nothing_is_left()


@pytest.mark.parametrize('ends, how', [
    ('kill -SEGV $$', 'by signal SEGV'),
    ('kill -KILL $$', 'by signal KILL'),
    ('exit 7', 'with status 7'),
    ('exit 255', 'with status 255'),
    ('echo "no memory" >&2; echo >&2; exit 1', 'with status 1: no memory'),
])
@pytest.mark.parametrize('name', ['stp-switchd', 'snmpd'])
def test_process_that_ends_before_it_is_ready_is_named_with_its_end_and_its_log(fake_project, name, ends, how):
    if name == 'snmpd':
        fake_project.program('bin/snmpd', ends)
    else:
        fake_project.program(FakeProject.SWITCH, f'case "$*" in *--check) ;; *) {ends} ;; esac')
        fake_project.program('build/run/bin/stp-switchctl', 'exit 1')
    run = fake_project.start('--once')
    assert run.wait() == 1
    [log] = re.fullmatch(f'run: {name} did not start: it ended {how} \\(log: (.+)\\)\n', run.errors).groups()
    assert Path(log).name == f'{name}.log'
    assert Path(log).exists()
    run.check_nothing_is_left()


@pytest.mark.parametrize('fetch, timeout, why', [
    ('echo "stp-fetch-mibs: cannot unpack it" >&2; exit 1', None, 'stp-fetch-mibs: cannot unpack it'),
    ('echo "first" >&2; exit 1', 'exit 124', 'no answer within 60 s'),
    ('exit 1', None, ''),
])
def test_names_that_cannot_be_had_end_nothing(fake_project, fetch, timeout, why):
    fake_project.program(FakeProject.FETCH, fetch)
    if timeout:
        fake_project.program('bin/timeout', timeout)
    run = fake_project.start()
    run.wait_for_output('Running until Ctrl-C.')
    assert f'By name, the tools need what the MIB file imports, which cannot be had: {why}\n' in run.output
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''


def test_names_need_not_be_waited_for(fake_project):
    fake_project.program('bin/timeout', 'shift; exec "$@"')
    fake_project.program(FakeProject.FETCH, f'echo "$$" >{fake_project.place}/fetches; exec sleep 600')
    run = fake_project.start()
    wait_until((fake_project.place / 'fetches').exists, 'names are fetched')
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


REFUSES = 'echo "couldn\'t open $port" >&2; exit 1'


@pytest.mark.parametrize('port, refused, expected', [
    (1161, '', 1162), (1161, '1162', 1163), (65535, '', 65534), (65533, '65534|65535', 65530),
])
def test_the_receiver_of_traps_finds_a_free_port(fake_project, port, refused, expected):
    fake_project.program('bin/snmptrapd', f"""
        for port; do :; done
        port=${{port##*:}}
        case $port in {refused or 'none'}) {REFUSES} ;; esac
        if [ "$port" -gt 65535 ]; then {REFUSES}; fi
        {FakeProject.DAEMON_STAYS}""")
    assert fake_project.call(f'port={port}; start_trap_receiver; kill "$!"; echo "$trap_port"') == f'{expected}\n'


def test_a_receiver_of_traps_that_ends_is_named_with_its_end(fake_project):
    fake_project.program('bin/snmptrapd', 'kill -SEGV $$')
    printed = fake_project.call('port=1161; (start_trap_receiver) 2>&1 || true')
    assert printed == ('bash: snmptrapd did not start: it ended by signal SEGV '
                       f'(log: {fake_project.place}/snmptrapd.log)\n')


@pytest.mark.parametrize('scenario', ['missing.toml', '.'])
def test_scenario_file_is_checked_before_anything_is_installed_or_built(fake_project, scenario):
    for name in ('bin/dpkg-query', 'bin/cmake'):
        fake_project.program(name, f'touch {fake_project.place}/done')
    run = fake_project.start('--scenario', fake_project.place / scenario)
    assert run.wait() == 1
    assert run.output == ''
    assert not (fake_project.place / 'done').exists()


@pytest.mark.parametrize('failing', ['--preset', '--build'])
def test_a_configuration_or_build_that_fails_ends_the_run(fake_project, failing):
    fake_project.program('bin/cmake', f"""
        echo "$*" >>{fake_project.place}/called
        echo "cmake is told $1"
        [ "$1" != {failing} ]""")
    run = fake_project.start('--once')
    assert run.wait() == 1
    log = fake_project.place / 'build/run/run.log'
    assert run.errors == f'run: the build failed: see {log}\n'
    assert log.read_text(encoding='ascii').endswith(f'cmake is told {failing}\n')
    called = (fake_project.place / 'called').read_text(encoding='ascii').splitlines()
    assert [words.split()[0] for words in called] == ['--preset', '--build'][:1 + (failing == '--build')]
    run.check_nothing_is_left()


def test_what_a_scenario_says_is_checked_when_nothing_but_the_switch_is_built(fake_project):
    fake_project.program('bin/cmake', f'echo "$*" >>{fake_project.place}/built')
    fake_project.program(FakeProject.SWITCH, 'echo "stp-switchd: a.toml:1: no" >&2; exit 1')
    run = fake_project.start()
    assert run.wait() == 1
    assert run.errors == 'run: a.toml:1: no\n'
    assert re.findall('--target (.*)', (fake_project.place / 'built').read_text(encoding='ascii')) == ['stp-switchd']

"""bench/compare: it works, measures everything, refuses agents that do not serve the same, and leaves nothing behind.
How fast anything is, no test judges."""

import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
from contextlib import contextmanager
from pathlib import Path

import pytest
from harness.build import BUILD, PROJECT, ROOT
from harness.polling import GUARD_SECONDS, wait_until
from harness.process import die_with_parent
from harness.raw_snmp import (
    OCTETS, SEQUENCE, V2C, RawClient, encode, encode_integer, encode_oid, parse_message)

sys.path.append(str(PROJECT / 'bench'))

from comparison import report, switches  # noqa: E402
from comparison.failure import ComparisonError  # noqa: E402
from comparison.growth import Figure  # noqa: E402
from comparison.spread import Spread, ratios, spread  # noqa: E402
from comparison.stand import AGENTS, AGENTX, CEILING, MODULE, stand_with  # noqa: E402
from comparison.walk_client import GETBULK, GETNEXT, Timing, WalkClient  # noqa: E402
from comparison.walks import Goal, Measured, Walk  # noqa: E402

COMPARE = PROJECT / 'bench/compare'
AGENTX_COPY = BUILD / 'bin/bench_agentx_copy'
RESPONSE = 0xA2
SECOND = 1_000_000_000

# Of the short run: walk, mode and how many rows it has.
WALKS = [
    ('port roles', 'rapid-pvst', '24'),
    ('RPVST ports', 'rapid-pvst', '24'),
    ('root guard', 'rapid-pvst', '4'),
    ('loop guard', 'rapid-pvst', '4'),
    ('RSTP ports', 'rapid-pvst', '8'),
    ('PVST VLANs', 'rapid-pvst', '6'),
    ('long path costs', 'rapid-pvst', 'none: walks/s'),
    ('port roles', 'mst', '16'),
    ('root guard', 'mst', '4'),
    ('loop guard', 'mst', '4'),
    ('RSTP ports', 'mst', '8'),
    ('MST instances', 'mst', '14'),
    ('SMST ports', 'mst', '12'),
    ('long path costs', 'mst', 'none: walks/s'),
    ('port inconsistencies', 'rapid-pvst', '12'),
    ('root inconsistencies', 'rapid-pvst', '12'),
    ('loop inconsistencies', 'rapid-pvst', '12'),
    ('root inconsistencies', 'mst', '12'),
    ('loop inconsistencies', 'mst', '12'),
]
# And the other figures, with their goals.
FIGURES = [
    ('port roles of 12 VLANs x 5 ports, 60 rows: module', '≤ 1.5 s'),
    ('port roles of 12 VLANs x 5 ports, 60 rows: ceiling', ''),
    ('port roles of 12 VLANs x 5 ports, 60 rows: AgentX copy', ''),
    ('one set there, a setting of a port, until the agent serves it', '≤ 10 ms'),
    ('one set there, a link: a row of each tree, until the agent serves it', '≤ 10 ms'),
    ('memory of stp-switchd there', ''),
    ('memory of snmpd with the module there', ''),
    ('memory of both', '≤ 64 MiB'),
    ('inconsistency search, each interface from 6 to 12', '≤ 15 ns'),
    ('the longest GETBULK of 50 rows while the switch hangs, deadline 0.1 s', '≤ 0.11 s'),
    ('the longest GETBULK of 50 rows while the switch takes 15 ms for a reply, deadline 0.1 s', '≤ 0.11 s'),
    ('wake-ups of a switch that nobody is connected to, in 0.2 s', '≤ 0'),
]
NUMBER = re.compile(r'-?[0-9.]+( [kM])?')


def compare(*arguments, **how):
    return subprocess.run([COMPARE, *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False, timeout=600, **how)


def cells(line):
    return [cell.strip() for cell in line.strip('|').split('|')]


def tables(markdown):
    """Heads and rows of each table."""
    found = [block.splitlines() for block in markdown.split('\n\n') if block.startswith('|')]
    assert all(set(rule) == {'|', '-'} for _, rule, *_ in found)
    return [(cells(head), [cells(row) for row in rows]) for head, _, *rows in found]


@pytest.fixture(name='short_run', scope='module')
def fixture_short_run():
    """What a short run prints for a document."""
    result = compare('--short', '--markdown', BUILD)
    assert result.returncode == 0, result.stderr
    return result.stdout


def test_short_run_tells_where_it_was_measured_and_judges_nothing(short_run):
    machine, note, *_ = short_run.split('\n\n')
    assert [line.split(':')[0] for line in machine.splitlines()] == [
        '* CPU', '* kernel', '* load', '* build', '* net-snmp']
    assert note == 'No goal is judged: this is no release build, or the run was short.'


def test_short_run_measures_every_walk_of_every_agent_both_ways(short_run):
    (heads, rows), (undisturbed_heads, undisturbed_rows), _ = tables(short_run)
    assert heads == ['walk', 'mode', 'by', 'rows', 'rows/s', 'quartiles', 'of ceiling', 'goal', 'of AgentX', 'goal',
                     'reached']
    measured = [(walk, mode, rows_there, how) for walk, mode, how, rows_there, *_ in rows]
    assert sorted(measured) == sorted((*walk, how) for walk in WALKS for how in (GETBULK, GETNEXT))
    for row in rows:
        rate, of_ceiling, of_agentx = row[4], row[6], row[8]
        assert all(NUMBER.fullmatch(cell) for cell in (rate, of_ceiling, of_agentx)), row
        assert row[10] == ('not judged' if row[7] or row[9] else '')
    assert undisturbed_heads == [
        'walk', 'mode', 'by', 'module, rows/s', 'ceiling, rows/s', 'AgentX copy, rows/s', 'of ceiling', 'of AgentX',
        'module, CPU', 'ceiling, CPU', 'AgentX copy, CPU']
    assert [row[:3] for row in undisturbed_rows] == [row[:3] for row in rows]
    for row in undisturbed_rows:
        assert all(NUMBER.fullmatch(cell.removesuffix(' µs')) for cell in row[3:]), row


def test_short_run_has_every_other_figure(short_run):
    _, _, (heads, rows) = tables(short_run)
    assert heads == ['figure', 'median', 'quartiles', 'goal', 'reached']
    assert [(name, goal) for name, _, _, goal, _ in rows] == FIGURES
    for _, median, _, goal, reached in rows:
        assert NUMBER.match(median.removeprefix('> '))
        assert reached == ('not judged' if goal else '')


def test_text_form_stands_in_columns():
    figure = Figure('memory', 'MiB', [60, 62, 70], at_most=64)
    assert report.render([('CPU', 'one')], [], [figure], is_judged=True, as_markdown=False) == '''\
CPU: one

figure  median  quartiles  goal      reached
memory  62 MiB  61 to 66   ≤ 64 MiB  unclear'''


@pytest.mark.parametrize('arguments, status, message', [
    (['--rounds', '0'], 2, "compare: argument --rounds: '0' is no number of rounds (see --help)\n"),
    (['--fast'], 2, 'compare: unrecognized arguments: --fast (see --help)\n'),
    (['--short', '--only', 'no such walk', BUILD], 1, "compare: no walk's name holds 'no such walk'\n"),
])
def test_what_cannot_be_measured_is_named(arguments, status, message):
    result = compare(*arguments)
    assert (result.returncode, result.stdout, result.stderr) == (status, '', message)


def test_build_folder_without_the_programs_is_named(tmp_path):
    (tmp_path / 'enterprise').write_text('32473', encoding='ascii')
    result = compare(tmp_path)
    assert (result.returncode, result.stderr) == (1, f'compare: {tmp_path}/bin/stp-switchd is not built\n')


@contextmanager
def stand_of(rows_of):
    """One whose copies serve what the function makes of the module's rows."""
    with stand_with(switches.plain(switches.MST, vlans=4, ports=3, instance_count=2)) as stand:
        stand.start_module()
        stand.start_copies(rows_of(stand.rows(MODULE, ROOT)))
        yield stand


# The role of port 1 in the CIST: designated.
ROLE = f'{ROOT}.1.12.2.1.3.0.129 INTEGER 3'


def test_agents_that_serve_the_same_are_compared():
    with stand_of(lambda rows: rows) as stand:
        assert ROLE in stand.rows(MODULE, ROOT)
        stand.check_agreement(ROOT)
        for name in AGENTS:
            timing = stand.measure(name, f'{ROOT}.1.12.2', GETNEXT, 0)
            assert (timing.walks, timing.rows) == (1, 9)
            with RawClient(stand.agents[name].endpoint, 'public') as client:
                assert client.get(ROLE.split()[0]).number == 3
                assert client.get(f'{ROOT}.1.12.2.1.3.0.128').exception == 'noSuchInstance'


@pytest.mark.parametrize('served, told', [
    ([f'{ROOT}.1.12.2.1.3.0.129 INTEGER 4'], f'{ROOT}.1.12.2.1.3.0.129 INTEGER 4 of the ceiling'),
    ([], f'{ROOT}.1.12.2.1.3.0.130 INTEGER 3 of the ceiling'),
    ([f'{ROOT}.1.12.2.1.3.0.128 INTEGER 3', ROLE], f'{ROOT}.1.12.2.1.3.0.128 INTEGER 3 of the ceiling'),
])
def test_agents_that_differ_are_not_compared(served, told):
    def differing(rows):
        place = rows.index(ROLE)
        return [*rows[:place], *served, *rows[place + 1:]]
    with stand_of(differing) as stand:
        with pytest.raises(ComparisonError) as refused:
            stand.check_agreement(ROOT)
    assert re.search(r'variable \d+ of a walk by GETBULK 50', str(refused.value))
    assert f'is {ROLE} of the module and {told}' in str(refused.value)


def test_row_that_is_missing_at_the_end_is_a_difference():
    with stand_of(lambda rows: rows[:-1]) as stand:
        last = stand.rows(MODULE, ROOT)[-1]
        with pytest.raises(ComparisonError, match=f'is {re.escape(last)} of the module and none of the ceiling'):
            stand.check_agreement(ROOT)


@pytest.mark.parametrize('line, reason', [
    ('', 'expected OID, type and value'),
    (f'{ROOT}.1.6.1.0 INTEGER', 'expected OID, type and value'),
    (f'{ROOT}.1.6.1.0 INTEGER 4 5', 'expected OID, type and value'),
    ('1.3.6 INTEGER 4', 'expected OID, type and value'),
    (f'{ROOT}.1.6.4.0 INTEGER 4', 'no instance of an object of the module'),
    (f'{ROOT}.1.6.1 INTEGER 4', 'no instance of an object of the module'),
    ('.1.3.6.1.2.1.1.3.0 INTEGER 4', 'no instance of an object of the module'),
    (f'{ROOT}.1.6.1.0 UNSIGNED 4', 'the object is of another type'),
    (f'{ROOT}.1.6.1.0 INTEGER four', 'no number'),
    (f'{ROOT}.1.11.2.0 OCTETS 6162', 'no octets'),
    (f'{ROOT}.1.11.2.0 OCTETS 0x616', 'no octets'),
    (f'{ROOT}.1.11.2.0 OCTETS 0x6g', 'no octets'),
    (f'{ROOT}.1.12.2.1.3.1.2.3 INTEGER 4', 'the index is too long'),
    (f'{ROOT}.1.12.2.1.3.0.9 INTEGER 4', "it does not follow the object's last row, or there is no memory"),
])
def test_rows_that_nobody_can_serve_are_named(tmp_path, line, reason):
    file = tmp_path / 'rows'
    file.write_text(f'{ROOT}.1.12.2.1.3.0.9 INTEGER 3\n{line}\n', encoding='ascii')
    environment = {**os.environ, 'MIBS': '', 'SNMPCONFPATH': str(tmp_path), 'SNMP_PERSISTENT_DIR': str(tmp_path)}
    result = subprocess.run([AGENTX_COPY, tmp_path / 'agentx.sock', file], env=environment, capture_output=True,
                            text=True, check=False, timeout=120)
    assert result.returncode == 1
    assert f'{file}:2: {reason}\n' in result.stderr


class FakeAgent:
    """Answers each GETNEXT with the next of these OIDs."""

    def __init__(self, oids):
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind(('127.0.0.1', 0))
        self._socket.settimeout(GUARD_SECONDS)
        self.endpoint = f'127.0.0.1:{self._socket.getsockname()[1]}'
        self._thread = threading.Thread(target=self._answer, args=(oids,))
        self._thread.start()

    def _answer(self, oids):
        for oid in oids:
            request, manager = self._socket.recvfrom(65535)
            _, request_id, _, _ = parse_message(request)
            binding = encode(SEQUENCE, encode_oid(oid) + encode_integer(3))
            pdu = b''.join(map(encode_integer, (request_id, 0, 0))) + encode(SEQUENCE, binding)
            self._socket.sendto(encode(SEQUENCE, encode_integer(V2C) + encode(OCTETS, b'public') +
                                       encode(RESPONSE, pdu)), manager)

    def close(self):
        self._thread.join()
        self._socket.close()


def walk_fake_agent(tmp_path, oids):
    agent = FakeAgent(oids)
    try:
        return WalkClient(tmp_path).rows(agent.endpoint, '.1.3.9', GETNEXT)
    finally:
        agent.close()


def test_walk_ends_behind_the_subtree(tmp_path):
    assert walk_fake_agent(tmp_path, ['.1.3.9.1', '.1.3.9.1.0', '.1.3.9.2', '.1.3.10']) == [
        '.1.3.9.1 INTEGER 3', '.1.3.9.1.0 INTEGER 3', '.1.3.9.2 INTEGER 3']


@pytest.mark.parametrize('last', ['.1.3.9.2', '.1.3.9.1.7', '.1.3.9'])
def test_walk_that_does_not_ascend_is_an_error(tmp_path, last):
    with pytest.raises(ComparisonError, match=f'^bench_walk_client: {re.escape(last)} does not follow .1.3.9.2$'):
        walk_fake_agent(tmp_path, ['.1.3.9.1.7', '.1.3.9.2', last])


def users_of(folder):
    """Processes whose command line names it."""
    found = []
    for process in Path('/proc').glob('[0-9]*'):
        try:
            if str(folder).encode() in (process / 'cmdline').read_bytes():
                found.append(process.name)
        except OSError:
            pass  # it has ended
    return found


@pytest.mark.parametrize('ending', [signal.SIGINT, signal.SIGTERM])
def test_nothing_stays_behind_where_it_is_interrupted(ending):
    # Not below pytest's own folders: the path of a local socket holds 107 bytes.
    folder = Path(tempfile.mkdtemp(prefix='stp-e2e-'))
    try:
        with subprocess.Popen([COMPARE, '--short', '--rounds', '100000', BUILD], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, preexec_fn=die_with_parent,
                              env={**os.environ, 'TMPDIR': str(folder)}) as run:
            # The switch, two agents and a subagent with its master, at least.
            wait_until(lambda: len(users_of(folder)) >= 5 or run.poll() is not None, 'all agents run')
            assert run.poll() is None
            run.send_signal(ending)
            _, errors = run.communicate(timeout=120)
        assert run.returncode == 128 + ending
        assert b'Traceback' not in errors
        assert users_of(folder) == []
        assert list(folder.iterdir()) == []
    finally:
        shutil.rmtree(folder)


# Makes a stand, or walks, under this name for what makes the folder, or the client; a signal comes when it is made.
INTERRUPTED = '''
import os, signal, sys
sys.path[:0] = sys.argv[1:3]
from comparison import stand, walk_client
from comparison.ending import Ended, end_on_signals
module, name = {'folder': (stand.tempfile, 'mkdtemp'), 'client': (walk_client.subprocess, 'Popen')}[sys.argv[3]]
make, made = getattr(module, name), []
def interrupted(*arguments, **options):
    made.append(make(*arguments, **options))
    os.kill(os.getpid(), signal.SIGTERM)
    return made[0]
setattr(module, name, interrupted)
end_on_signals()
try:
    if sys.argv[3] == 'folder':
        with stand.stand_with(''):
            sys.exit('a switch runs')
    walk_client.WalkClient(stand.Path(sys.argv[4])).rows('127.0.0.1:9', '.1')
except Ended:
    if sys.argv[3] == 'folder':
        sys.exit(os.path.exists(made[0]) and 'the folder is still there')
    sys.exit(made[0].returncode is None and 'the client still runs')
'''


@pytest.mark.parametrize('making', ['folder', 'client'])
def test_what_was_made_when_a_signal_came_does_not_stay(tmp_path, making):
    result = subprocess.run([sys.executable, '-c', INTERRUPTED, PROJECT / 'bench', PROJECT / 'tests/e2e', making, tmp_path],
                            check=False, capture_output=True, text=True, timeout=GUARD_SECONDS,
                            env={**os.environ, 'TMPDIR': str(tmp_path), 'STPSNMP_BUILD_DIR': str(BUILD)})
    assert (result.returncode, result.stderr) == (0, '')


def timings(*rates):
    """Rounds of two walks, one of which took a quarter of the time."""
    return [Timing(walks=2, rows=rate // 2, nanoseconds=SECOND, fastest_nanoseconds=SECOND // 4,
                   cpu_nanoseconds=SECOND // 1000) for rate in rates]


@pytest.mark.parametrize('ours, reached', [
    ((60, 70, 80), 'yes'),
    ((30, 50, 60), 'unclear'),
    ((20, 30, 40), 'no'),
])
def test_walk_is_judged_by_the_quartiles_of_its_ratios(ours, reached):
    measured = Measured(Walk('w', '1', Goal()), 'mst', GETBULK, Goal(of_ceiling=0.5), {
        MODULE: timings(*ours), CEILING: timings(100, 100, 100), AGENTX: timings(10, 10, 10)})
    assert report.walk_cells(measured, is_judged=True)[-1] == reached
    assert report.walk_cells(measured, is_judged=False)[-1] == 'not judged'


def test_worst_of_two_goals_counts():
    measured = Measured(Walk('w', '1', Goal()), 'mst', GETBULK, Goal(0.5, 7), {
        MODULE: timings(60), CEILING: timings(100), AGENTX: timings(10)})
    assert report.walk_cells(measured, is_judged=True) == [
        'w', 'mst', 'GETBULK 50', '30', '60', '60 to 60', '0.6', '≥ 0.5', '6', '≥ 7', 'no']


def test_fastest_walk_of_all_rounds_counts_as_undisturbed():
    measured = Measured(Walk('w', '1', Goal()), 'mst', GETBULK, Goal(), {
        MODULE: timings(50, 60), CEILING: timings(100, 80), AGENTX: timings(10, 10)})
    assert report.undisturbed_cells(measured) == [
        'w', 'mst', 'GETBULK 50', '120', '200', '20', '0.6', '6', '18.3 µs', '11.2 µs', '100 µs']


def test_ratios_are_those_of_the_same_round():
    assert ratios([10, 40, 90], [100, 200, 300]) == pytest.approx(Spread(0.15, 0.2, 0.25))


def test_one_sample_has_no_spread():
    assert spread([3]) == Spread(3, 3, 3)


@pytest.mark.parametrize('number, shown', [
    (0, '0'), (0.03712, '0.0371'), (0.5, '0.5'), (7.123, '7.12'), (999.4, '999'), (1234.5, '1234'), (22_345, '22.3 k'),
    (595_000, '595 k'), (1_250_000, '1.25 M'), (-9333, '-9333'), (999.7, '1000'), (9998, '10 k'), (999_700, '1 M'),
])
def test_numbers_are_short(number, shown):
    assert report.short(number) == shown

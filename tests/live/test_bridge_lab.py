"""The lab itself: rings of both kinds are what they say, and nothing of them stays, however they end."""

import json
import os
import signal
import subprocess
import sys
from pathlib import Path

import pytest
from bridge_lab.namespaces import LabError, Namespaces, as_child
from bridge_lab.ring import NothingBlocks, OwnRing, Ring
from harness.build import PROJECT
from harness.polling import wait_until
from harness.process import die_with_parent
from live_lab import Networks

LAB = PROJECT / 'scripts/bridge-lab'
KINDS = ['linux', 'openvswitch']
ENDS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL]


@pytest.fixture(name='ring')
def fixture_ring(request):
    return request.getfixturevalue(f'{request.param}_ring')


@pytest.fixture(name='kind', params=KINDS)
def fixture_kind(request):
    if request.param == 'openvswitch':
        request.getfixturevalue('open_vswitch')
    return request.param


@pytest.mark.parametrize('ring', KINDS, indirect=True)
def test_the_ring_blocks_where_it_says(ring):
    blocking = [(name, port.name) for name, bridge in ring.bridges.items()
                for port in bridge.status().ports.values() if port.blocks]
    assert blocking == [('c', 'to-b')]


@pytest.mark.parametrize('ring', KINDS, indirect=True)
def test_who_reads_its_description_finds_the_same_bridges(ring):
    found = Ring.load(ring.describe())
    assert found.names == ['a', 'b', 'c']
    for name, bridge in ring.bridges.items():
        assert found.bridge(name).source == bridge.source
        assert found.bridge(name).status() == bridge.status()


@pytest.mark.parametrize('ring', KINDS, indirect=True)
def test_what_is_not_there_is_named(ring):
    with pytest.raises(LabError, match="^there is no bridge 'x': a, b, c"):
        ring.pull('a', 'x')
    with pytest.raises(LabError, match='^there is no link from a to a$'):
        ring.pull('a', 'a')


def test_a_link_that_was_pulled_is_down_at_both_ends(linux_ring):
    linux_ring.pull('a', 'c')
    try:
        assert not linux_ring.bridge('a').status().ports['to-c'].has_link
        assert not linux_ring.bridge('c').status().ports['to-a'].has_link
    finally:
        linux_ring.restore('a', 'c')
        linux_ring.wait_until_one_blocks()


def is_running(pid):
    try:
        return '\nState:\tZ' not in Path(f'/proc/{pid}/status').read_text(encoding='ascii')
    except (FileNotFoundError, ProcessLookupError):
        return False


def children_of(pid):
    listed = subprocess.run(['ps', '-o', 'pid=', '--ppid', str(pid)], check=False, capture_output=True, text=True)
    return [int(child) for child in listed.stdout.split()]


class Holder:
    """A bridge-lab that holds a ring."""

    def __init__(self, place, kind):
        self.file, self.folder = place / 'ring.json', place / 'f'
        self.process = subprocess.Popen([LAB, 'hold', kind, self.file, self.folder], stderr=subprocess.PIPE, text=True,
                                        preexec_fn=self._before_exec)

    @staticmethod
    def _before_exec():
        die_with_parent()
        signal.signal(signal.SIGINT, signal.SIG_DFL)  # whoever runs the tests in the background ignores it

    def wait_until_ready(self):
        wait_until(lambda: self.file.exists() or self.process.poll() is not None, 'the ring is there')
        assert self.file.exists(), self.process.stderr.read()

    def ask(self, *words):
        return subprocess.run([LAB, words[0], self.file, *words[1:]], check=False, capture_output=True, text=True,
                              timeout=60)


@pytest.fixture(name='hold')
def fixture_hold(tmp_path):
    holders = []

    def hold(kind):
        place = tmp_path / str(len(holders))
        place.mkdir()
        holders.append(Holder(place, kind))
        return holders[-1]

    yield hold
    for holder in holders:
        holder.process.kill()
        holder.process.communicate()


@pytest.mark.parametrize('number', ENDS)
@pytest.mark.usefixtures('namespaces')
def test_nothing_of_a_ring_stays_when_its_holder_ends(hold, kind, number):
    """Also while it is made: nobody waits for it here."""
    holder = hold(kind)
    with wait_until(lambda: Networks(children_of(holder.process.pid)), 'a part of the ring is there') as networks:
        children = children_of(holder.process.pid)
        holder.process.send_signal(number)
        assert holder.process.wait(60) == (-signal.SIGKILL if number == signal.SIGKILL else 0)
        wait_until(lambda: not any(is_running(child) for child in children), 'all processes have ended')
        wait_until(lambda: networks.users() == [], 'nobody is left in the namespaces')
    if number != signal.SIGKILL:
        assert not holder.file.exists()
        assert not holder.folder.exists()


# The lab, where the first process that would write into its folder does so without end, and the end comes before anything
# is noted of that process.
ENDED_IN_THE_MOMENT_OF_A_START = '''
import os, runpy, signal, subprocess, sys
lab = sys.argv[1]
sys.argv = sys.argv[1:]
sys.path.insert(0, os.path.dirname(lab))
from bridge_lab.namespaces import Namespace, as_child
def start(*_, **__):
    left = sys.argv[-1] + '/left'
    writing = 'import os, sys\\nwhile True: os.makedirs(sys.argv[1], exist_ok=True)'
    subprocess.Popen([*as_child(), sys.executable, '-c', writing, left])
    while not os.path.exists(left):
        pass
    os.kill(os.getpid(), signal.SIGTERM)
Namespace.start = start
runpy.run_path(lab, run_name='__main__')
'''


@pytest.mark.usefixtures('open_vswitch', 'namespaces')
def test_nothing_stays_of_what_a_holder_starts_in_the_moment_of_its_end(tmp_path):
    folder = tmp_path / 'f'
    ended = subprocess.run([sys.executable, '-c', ENDED_IN_THE_MOMENT_OF_A_START, LAB, 'hold', 'openvswitch',
                            tmp_path / 'ring.json', folder], check=False, capture_output=True, text=True, timeout=60)
    assert (ended.returncode, ended.stderr) == (0, '')
    assert not folder.exists()


def test_what_starts_without_its_maker_does_not_run(tmp_path):
    started, orphaned = tmp_path / 'started', tmp_path / 'orphaned'
    subprocess.run([*as_child(), 'touch', started], check=True)
    subprocess.run(['sh', '-c', '"$@"; true', 'sh', *as_child(), 'touch', orphaned], check=True)
    assert started.exists()
    assert not orphaned.exists(), 'its parent is another process than the one that wanted it'


@pytest.mark.usefixtures('linux_ring')
def test_commands_find_the_ring_by_its_file_until_it_ends(hold):
    holder = hold('linux')
    holder.wait_until_ready()
    assert holder.ask('names').stdout == 'a\nb\nc\n'
    assert holder.ask('source', 'b').stdout == '--linux-bridge\nbr0\n'
    devices = json.loads(holder.ask('inside', 'a', 'ip', '-j', 'link').stdout)
    assert [device['ifname'] for device in devices] == ['lo', 'br0', 'to-guest', 'to-b', 'to-c']
    assert 'to-b  2   blocking' in holder.ask('status', 'c').stdout
    assert holder.ask('status').stdout.count('Designated bridge') == 4
    assert holder.ask('pull', 'a', 'c').returncode == 0
    assert 'to-a  1   no link' in holder.ask('status', 'c').stdout
    assert holder.ask('better-root').returncode == 0
    assert holder.ask('status', 'guest').stdout.startswith('guest: bridge 0000.')
    assert holder.ask('no-better-root').returncode == 0
    assert holder.ask('status', 'guest').stdout.startswith('guest: bridge f000.')
    failed = holder.ask('status', 'x')
    assert (failed.returncode, failed.stderr) == (1, "bridge-lab: there is no bridge 'x': a, b, c, guest\n")
    ignored = holder.ask('inside', 'a', 'sed', '-n', 's/^SigIgn:\\t//p', '/proc/self/status').stdout
    assert not int(ignored, 16) & 1 << signal.SIGPIPE - 1, 'what runs inside ends when nobody reads on'
    unread = subprocess.Popen([LAB, 'status', holder.file], stdout=subprocess.PIPE)
    unread.stdout.close()
    assert unread.wait(60) == -signal.SIGPIPE
    failed = holder.ask('inside', 'a', '/nowhere')
    assert failed.returncode != 0
    holder.process.terminate()
    assert holder.process.wait(60) == 0
    gone = holder.ask('status')
    assert (gone.returncode, gone.stderr) == (1, 'bridge-lab: the ring is not there any more\n')


def test_where_namespaces_are_forbidden_one_line_says_so(tmp_path):
    refusing = tmp_path / 'unshare'
    refusing.write_text('#!/bin/sh\necho "unshare: unshare failed: Operation not permitted" >&2; exit 1\n',
                        encoding='ascii')
    refusing.chmod(0o755)
    ended = subprocess.run([LAB, 'hold', 'linux', tmp_path / 'file', tmp_path / 'folder'], check=False, text=True,
                           capture_output=True, timeout=60,
                           env=os.environ | {'PATH': f'{tmp_path}:{os.environ["PATH"]}'})
    assert (ended.returncode, ended.stderr) == (
        1, 'bridge-lab: no network namespace can be made here: unshare: unshare failed: Operation not permitted\n')
    assert sorted(path.name for path in tmp_path.iterdir()) == ['unshare']


@pytest.mark.parametrize('arguments, message', [
    ([], "unknown command ''"),
    (['frob'], "unknown command 'frob'"),
    (['hold', 'hub', 'f', 'd'], 'hold: expected linux or openvswitch, a file and a folder'),
    (['hold', 'linux'], 'hold: expected linux or openvswitch, a file and a folder'),
    (['pull', 'f', 'a'], 'pull: wrong number of arguments'),
    (['status'], 'status: wrong number of arguments'),
    (['inside', 'f', 'a'], 'inside: wrong number of arguments'),
])
def test_wrong_command_line_is_named(arguments, message):
    ended = subprocess.run([LAB, *arguments], check=False, capture_output=True, text=True, timeout=60)
    assert (ended.returncode, ended.stderr) == (2, f'bridge-lab: {message} (see --help)\n')


@pytest.mark.usefixtures('namespaces')
def test_ring_in_which_nothing_blocks_is_given_up(tmp_path, kind):
    """A chain, in which all forward at last, as bridges do that do not hear each other."""
    with Namespaces() as own, OwnRing(kind, own, tmp_path) as ring:
        ring.pull('a', 'b')
        for bridge, port in (('a', 'to-b'), ('b', 'to-a')):
            ring.bridge(bridge).remove_port(port)
        with pytest.raises(NothingBlocks):
            ring.wait_until_one_blocks()

"""./run --live as a newcomer types it, with real bridges: both kinds, the commands that it prints, and nothing of it
stays."""

import os
import re
import signal
from contextlib import ExitStack
from pathlib import Path

import pytest
from harness.build import BRIDGE_ROOT
from harness.polling import wait_until
from harness.ports import free_port
from harness.run_command import RING_SIZE, second_terminal, starting_runs
from live_lab import Networks

STATE_OF_PORT_2 = '2.15.1.3.2'  # dot1dStpPortState: 2 is blocking
CONVERGED = {'a': ['designated', 'designated'], 'b': ['root', 'designated'], 'c': ['root', 'alternate']}


@pytest.fixture(name='start_run')
def fixture_start_run():
    with starting_runs() as start:
        yield lambda *arguments: start('--port', str(free_port(count=RING_SIZE)), *arguments)


@pytest.fixture(name='networks_of')
def fixture_networks_of():
    with ExitStack() as stack:
        yield lambda run: stack.enter_context(Networks(pid for _, _, pid in run.processes()))


def roles_of(shown):
    """Of the one walk in it."""
    [table] = re.findall(r'^stpxRSTPPortRoleTable .*\n.*\n((?:CIST.*\n)+)', shown, re.MULTILINE)
    return re.findall(r'(\w+) \(\d\)$', table, re.MULTILINE)


def roles_by_bridge(output):
    walks = re.split(r'^== Walk of \S+ at bridge (.), .*\n', output, flags=re.MULTILINE)[1:]
    return {name: roles_of(walk) for name, walk in zip(walks[::2], walks[1::2])}


def mounts():
    return Path('/proc/self/mounts').read_text(encoding='utf-8')


@pytest.mark.usefixtures('linux_ring')
@pytest.mark.parametrize('ends', [signal.SIGINT, signal.SIGTERM])
def test_ring_of_linux_bridges_with_the_commands_that_it_prints(start_run, networks_of, ends):
    before = mounts()
    run = start_run('--live', *(['--traps'] if os.geteuid() == 0 else []))
    run.wait_for_output('Running until Ctrl-C.')
    made = networks_of(run)
    assert len(made) == 4
    roles = roles_by_bridge(run.output)
    assert {**roles, 'a': roles['a'][1:]} == CONVERGED
    if ends == signal.SIGINT:
        use_the_other_terminal(run)
    assert run.interrupt(ends) == (0 if ends == signal.SIGINT else 128 + signal.SIGTERM)
    assert run.errors == ''
    run.check_nothing_is_left()
    assert made.users() == []
    assert mounts() == before


def use_the_other_terminal(run):
    type_in = second_terminal(run)
    assert 'to-b  2   blocking' in type_in('status  ')
    assert f'.17.{STATE_OF_PORT_2} = INTEGER: 2\n' in type_in(f'snmpwalk $(agent_of c) {BRIDGE_ROOT}')
    type_in('pull a c')
    wait_until(lambda: roles_of(type_in('walk c')) == ['root'], 'the walk has one port')
    assert 'root port to-b' in type_in('status  ')
    if os.geteuid() == 0:
        run.wait_for_output('on c  topologyChange, ')
    type_in('restore a c')
    assert type_in('show c').startswith('Switch  br0\n')
    if os.geteuid() == 0:
        type_in('better_root  ')
        run.wait_for_output('on a  stpxRootInconsistencyUpdate, stpxRootInconsistencyState.0.129 = INTEGER: 1')
        type_in('no_better_root')
        run.wait_for_output('on a  stpxRootInconsistencyUpdate, stpxRootInconsistencyState.0.129 = INTEGER: 2')


@pytest.mark.usefixtures('openvswitch_ring')
def test_ring_of_open_vswitch(start_run, networks_of):
    run = start_run('--live', 'openvswitch')
    run.wait_for_output('Running until Ctrl-C.')
    made = networks_of(run)
    assert len(made) == 3
    assert roles_by_bridge(run.output) == CONVERGED
    type_in = second_terminal(run)
    type_in('pull a c')
    wait_until(lambda: roles_of(type_in('walk c')) == ['root'], 'the walk has one port')
    type_in('restore a c')
    wait_until(lambda: roles_of(type_in('walk c')) == ['root', 'alternate'], 'the walk has both ports')
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()
    assert made.users() == []


@pytest.mark.usefixtures('linux_ring')
def test_two_runs_do_not_disturb_each_other_and_what_is_killed_leaves_no_process(start_run, networks_of):
    first, second = start_run('--live'), start_run('--live', '--once')
    first.wait_for_output('Running until Ctrl-C.')
    made = networks_of(first)
    assert second.wait() == 0, second.errors
    roles = roles_by_bridge(second.output)
    assert {**roles, 'a': roles['a'][1:]} == CONVERGED
    second.check_nothing_is_left()
    assert first.interrupt(signal.SIGKILL) == -signal.SIGKILL
    wait_until(lambda: first.processes() == [], 'all processes have ended')
    wait_until(lambda: made.users() == [], 'nobody is left in the namespaces')

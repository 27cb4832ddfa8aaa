"""./run --live on machines of all kinds: bridges, programs and packages are stand-ins. tests/live has the real ones."""

import re
import signal
import socket

import pytest
from harness.polling import wait_until
from harness.ports import free_port
from harness.run_command import RING_SIZE, FakeProject, fake_project_of, second_terminal, starting_runs

LAB = 'scripts/bridge-lab'


@pytest.fixture(name='start_run')
def fixture_start_run():
    with starting_runs() as start:
        yield start


@pytest.fixture(name='project')
def fixture_project(start_run):
    with fake_project_of(start_run) as project:
        use_rings(project)
        project.program(FakeProject.SWITCH, f'echo "$*" >>{project.place}/switches; {FakeProject.STAYS}')
        # As the real one, it reaches a switch that has started, not one that is about to.
        project.program('build/run/bin/stp-switchctl', f'grep -qsF -e "--control $2" {project.place}/switches')
        project.program('bin/dpkg-query', 'echo installed')
        yield project


def use_rings(project, linux='', openvswitch=''):
    """`linux`, `openvswitch`: what happens instead when such a ring is made."""
    keeps = f'''
        mkdir -p "$folder"
        echo "ring of $kind" >"$file"
        trap 'rm -r "$file" "$folder"; exit 0' TERM
        while :; do sleep 0.05; done'''
    project.program(LAB, f'''
        command=$1 file=$2
        case $command in
          hold)
            kind=$2 file=$3 folder=$4
            echo "$kind" >>{project.place}/rings
            case $kind in
              linux) {linux or ':'} ;;
              openvswitch) {openvswitch or ':'} ;;
            esac
            {keeps}
            ;;
          source) echo "--reads"; echo "$3 of $(cat "$file")" ;;
          inside) shift 3; exec "$@" ;;
          status) echo "status of the $(cat "$file")" ;;
          *) echo "$command $3 $4" ;;
        esac''')


def rings_of(project):
    return (project.place / 'rings').read_text(encoding='ascii').split()


def test_each_bridge_has_a_switch_and_an_agent_until_ctrl_c(project):
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    assert rings_of(project) == ['linux']
    reads = re.findall('^--reads (. of ring of linux) ', (project.place / 'switches').read_text(encoding='ascii'),
                       re.MULTILINE)
    assert reads == [f'{name} of ring of linux' for name in 'abc']
    walks = re.findall(r'^== Walk of \S+ at bridge (.), 127\.0\.0\.1:\d+\nstatus of the ring of linux\n\nwalk$', run.output,
                       re.MULTILINE)
    assert walks == ['a', 'b', 'c']
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


def test_once_ends_behind_the_walks(project):
    run = project.start('--live', '--once')
    assert run.wait() == 0, run.errors
    assert 'For another terminal' not in run.output
    run.check_nothing_is_left()


def test_the_other_kind_is_made_where_it_is_asked_for(project):
    run = project.start('--live', 'openvswitch', '--once')
    assert run.wait() == 0, run.errors
    assert rings_of(project) == ['openvswitch']
    assert 'status of the ring of openvswitch' in run.output


def test_the_other_kind_is_made_where_nothing_blocks_and_one_line_says_so(project):
    use_rings(project, linux='echo "bridge-lab: nothing blocks" >&2; exit 3')
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    assert rings_of(project) == ['linux', 'openvswitch']
    assert len(re.findall('^Linux bridges do not hear each other .* their ring is removed, and one of Open vSwitch '
                          'made$', run.output, re.MULTILINE)) == 1
    assert 'better_root' not in run.output
    assert run.interrupt(signal.SIGINT) == 0
    assert run.errors == ''
    run.check_nothing_is_left()


@pytest.mark.parametrize('kind', ['linux', 'openvswitch'])
def test_ring_that_cannot_be_made_is_one_line(project, kind):
    use_rings(project, **{kind: 'echo "bridge-lab: no network namespace can be made here: EPERM" >&2; exit 1'})
    run = project.start('--live', kind)
    assert run.wait() == 1
    assert run.errors == 'run: no network namespace can be made here: EPERM\n'
    run.check_nothing_is_left()


def test_nothing_blocks_in_a_ring_of_the_other_kind_either(project):
    use_rings(project, openvswitch='echo "bridge-lab: no port of the ring blocks" >&2; exit 3')
    run = project.start('--live', 'openvswitch')
    assert run.wait() == 1
    assert run.errors == 'run: no port of the ring blocks\n'
    run.check_nothing_is_left()


def ring_of(run):
    """The process that holds the ring. One that it forks has its name for a moment."""
    def alone():
        rings = [pid for name, _, pid in run.processes() if name == 'bridge-lab']
        return rings if len(rings) == 1 else None
    [pid] = wait_until(alone, 'one process has the name')
    return pid


def test_ring_that_ends_ends_the_run(project):
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    pid = ring_of(run)
    run.signal_to(pid, signal.SIGKILL)
    assert run.wait() == 1
    assert re.fullmatch(r'run: bridge-lab ended by signal KILL \(log: .+/bridge-lab\.log\)\n', run.errors)


def test_switch_that_does_not_start_is_named_with_its_bridge(project):
    project.program(FakeProject.SWITCH, 'echo "stp-switchd: there is no such bridge" >&2; exit 1')
    project.program('build/run/bin/stp-switchctl', 'exit 1')
    run = project.start('--live')
    assert run.wait() == 1
    assert re.fullmatch(r'run: stp-switchd-a did not start: it ended with status 1: stp-switchd: there is no such bridge '
                        r'\(log: .+/stp-switchd-a\.log\)\n', run.errors)
    run.check_nothing_is_left()


def test_ctrl_c_that_ends_switches_and_agents_by_itself_ends_all_the_same(project):
    """They attend to the signal although a shell starts what runs in its background without it."""
    ends = ('#!/usr/bin/python3\nimport signal, sys\nsignal.signal(signal.SIGINT, lambda *_: sys.exit())\n{is_ready}\n'
            'signal.pause()\n')
    project.write('bin/snmpd', ends.format(is_ready='print("NET-SNMP version 0", file=sys.stderr, flush=True)')).chmod(0o755)
    project.write(FakeProject.SWITCH, ends.format(is_ready='open(sys.argv[-1], "w").close()')).chmod(0o755)
    project.program('build/run/bin/stp-switchctl', 'test -e "$2"')
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    run.press_ctrl_c()
    assert run.wait() == 0
    assert run.errors == ''
    run.check_nothing_is_left()


def test_whoever_is_impatient_breaks_nothing_off(project):
    use_rings(project, linux=f'''
        mkdir -p "$folder"; echo ring >"$file"
        trap 'touch {project.place}/ends; sleep 1; rm -r "$file" "$folder"; exit 0' TERM
        while :; do sleep 0.05; done''')
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    run.press_ctrl_c()
    wait_until((project.place / 'ends').exists, 'the ring is about to be removed')
    run.press_ctrl_c()
    assert run.wait() == 0
    assert run.errors == ''
    run.check_nothing_is_left()


@pytest.mark.parametrize('number', [signal.SIGTERM, signal.SIGHUP])
def test_signals_end_everything_also_while_the_ring_is_made(project, number):
    use_rings(project, linux='exec sleep 600')
    run = project.start('--live')
    wait_until((project.place / 'rings').exists, 'a ring is made')
    run.interrupt(number)
    run.check_nothing_is_left()


def test_the_next_run_removes_what_a_killed_one_has_left(project):
    first = project.start('--live')
    first.wait_for_output('Running until Ctrl-C.')
    living = project.start('--live')
    living.wait_for_output('Running until Ctrl-C.')
    first.interrupt(signal.SIGKILL)
    wait_until(lambda: first.processes() == [], 'the processes of the killed run have ended')
    [left] = first.temporary.iterdir()
    living.temporary.joinpath('stp-run-notareal').mkdir()
    third = project.start('--live', '--once', environment={'TMPDIR': str(first.temporary)})
    assert third.wait() == 0, third.errors
    assert not left.exists()
    fourth = project.start('--live', '--once', environment={'TMPDIR': str(living.temporary)})
    assert fourth.wait() == 0, fourth.errors
    assert len(list(living.temporary.iterdir())) == 2, 'what lives, and what is not ours'


def test_what_tells_of_an_earlier_ring_is_not_believed(project):
    """It is there when that ring and who held it went at once, as with the machine."""
    port = str(free_port(count=RING_SIZE))
    use_rings(project, linux='sleep 1')
    project.write(f'build/run/{port}/ring.json', 'ring of long ago')
    run = project.start('--live', '--once', '--port', port)
    assert run.wait() == 0, run.errors
    assert 'long ago' not in (project.place / 'switches').read_text(encoding='ascii')
    assert run.output.count('status of the ring of linux') == RING_SIZE


def test_another_run_for_the_same_port_is_refused_before_it_has_taken_it(project):
    port = str(free_port(count=RING_SIZE))
    use_rings(project, linux='while [ ! -e "$file.go" ]; do sleep 0.05; done')
    first = project.start('--live', '--once', '--port', port)
    wait_until((project.place / 'rings').exists, 'a ring is made')
    second = project.start('--live', '--once', '--port', port)
    assert second.wait() == 1
    assert second.errors == f'run: another ./run is about to take UDP port {port}: choose another with --port\n'
    second.check_nothing_is_left()
    project.write(f'build/run/{port}/ring.json.go', '')
    assert first.wait() == 0, first.errors


def test_the_other_terminal_has_short_commands(project):
    run = project.start('--live')
    run.wait_for_output('Running until Ctrl-C.')
    type_in = second_terminal(run)
    assert type_in('pull a c') == 'pull a c\n'
    assert type_in('restore a c') == 'restore a c\n'
    assert type_in('better_root  ') == 'better-root  \n'
    assert type_in('no_better_root') == 'no-better-root  \n'
    assert type_in('status  ') == 'status of the ring of linux\n'
    assert type_in('walk c') == 'walk\n'
    assert type_in('show c') == ''


@pytest.mark.parametrize('arguments, message', [
    (['--live', 'hub'], "run: --live: 'hub' is not linux or openvswitch (see --help)\n"),
    (['--live', '--scenario', 'a.toml'],
     'run: --live shows real bridges, --scenario a switch that is none (see --help)\n'),
    (['--live', '--port', '65534'], "run: --port: '65534' is not in 1..65533 (see --help)\n"),
])
def test_wrong_command_line_is_named_in_one_line(start_run, arguments, message):
    run = start_run(*arguments)
    assert run.wait() == 2
    assert run.errors == message
    assert run.output == ''


@pytest.mark.parametrize('place', range(3))
def test_any_taken_port_of_the_three_is_named(project, place):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as occupant:
        occupant.bind(('127.0.0.1', 0))
        port = occupant.getsockname()[1]
        run = project.start('--live', '--port', str(port - place))
        assert run.wait() == 1
    assert run.errors == f'run: UDP port {port} of 127.0.0.1 is taken: choose another with --port\n'
    assert run.output == ''

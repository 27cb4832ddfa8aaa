"""What bash completes for the programs, and that it knows all their words."""

import os
import pty
import re
import subprocess

import pytest
from harness.build import BUILD, PROJECT, SCENARIOS
from harness.switch import Switch, playing

COMPLETIONS = PROJECT / 'packaging/bash-completion'
PROGRAMS = BUILD / 'bin'
SCRIPTS = {name: PROJECT / f'tools/{name.removeprefix("stp-")}/{name}' for name in ('stp-fetch-mibs', 'stp-show-walk')}


def completed(*words):
    """What is offered for the last word."""
    program = words[0]
    script = f'''
source {COMPLETIONS}/{program}
PATH={PROGRAMS}:$PATH
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_{program.replace('-', '_')} "$1" "${{@: -1}}" "${{@: -2:1}}"
printf '%s\\n' "${{COMPREPLY[@]}}"
'''
    result = subprocess.run(['bash', '-c', script, 'bash', *words], check=True, capture_output=True, text=True,
                            timeout=60)
    assert result.stderr == ''
    return [word for word in result.stdout.splitlines() if word]


def help_words(*command):
    """Long options, and subcommands or faults."""
    program = SCRIPTS.get(command[0], PROGRAMS / command[0])
    shown = subprocess.run([program, *command[1:], '--help'], check=True, capture_output=True, text=True,
                           timeout=60).stdout
    options = re.findall(r'^  (?:-h,)?(--[a-z-]+)', shown, re.MULTILINE)
    _, _, commands = shown.partition('\nSubcommands:\n')
    return set(options) | set(re.findall(r'^  ([a-z]+)', commands.partition('\n\n')[0], re.MULTILINE))


@pytest.fixture(name='switch', scope='module')
def fixture_switch(tmp_path_factory):
    switch = Switch(tmp_path_factory.mktemp('s'), playing(SCENARIOS / 'mst.toml'))
    switch.start()
    yield switch
    switch.stop()


@pytest.mark.parametrize('command', [
    ('stp-switchd',), ('stp-switchctl',), ('stp-switchctl', 'fault'),
])
def test_every_word_of_the_help_is_offered(command):
    assert set(completed(*command, '')) == help_words(*command)


def test_words_are_offered_by_their_start():
    assert completed('stp-switchctl', 're') == ['reset']
    assert completed('stp-switchctl', 'fault', 'd') == ['delay', 'drop', 'disconnect']
    assert completed('stp-switchctl', 'fault', 'drop', '') == ['--count']
    assert completed('stp-switchctl', 'fault', 'delay', '300', '') == ['--count']
    assert completed('stp-switchd', '--k') == ['--keys']


@pytest.mark.parametrize('program', SCRIPTS)
def test_every_option_of_a_tools_help_is_offered(program):
    words = help_words(program)
    assert '--version' in words
    assert {word for word in completed(program, '-') if word.startswith('--')} == words
    assert completed(program, '--v') == ['--version']


def test_who_asks_is_offered_for_a_walk():
    assert completed('stp-show-walk', '-l', 'a') == ['authNoPriv', 'authPriv']
    assert completed('stp-show-walk', '-a', 'SHA-3') == ['SHA-384']
    assert completed('stp-show-walk', '--root', '') == completed('stp-show-walk', '-c', '') == []
    assert 'localhost' in completed('stp-show-walk', 'localh')


def test_folders_are_offered_for_the_modules(tmp_path):
    (tmp_path / 'some dir').mkdir()
    (tmp_path / 'some file').touch()
    assert completed('stp-fetch-mibs', f'{tmp_path}/so') == [f'{tmp_path}/some dir']


def test_keys_are_those_of_the_switch_that_answers(switch):
    control = ('stp-switchctl', '--control', str(switch.control_socket))
    assert completed(*control, 'set', 'mst.re') == ['mst.region', 'mst.revision']
    assert completed(*control, 'show', 'port.300.pa') == ['port.300.path_cost']
    assert completed(*control, 'show', '--f') == ['--flat']
    assert completed('stp-switchctl', '--control', '/nowhere', 'set', '') == []


def test_files_are_offered_where_one_is_wanted(tmp_path):
    (tmp_path / 'lab.toml').touch()
    assert completed('stp-switchd', '--scenario', f'{tmp_path}/l') == [f'{tmp_path}/lab.toml']
    assert completed('stp-switchctl', '--control', f'{tmp_path}/l') == [f'{tmp_path}/lab.toml']
    assert 'root' in completed('stp-switchd', '--socket-group', 'roo')


def typed(directory, words):
    """The words that bash reads when these are typed, by itself at a terminal, a tab among them."""
    marker = '-- end'
    outer, terminal = pty.openpty()
    shell = subprocess.Popen(['bash', '--noprofile', '--norc', '-i'], stdin=terminal, stdout=terminal, stderr=terminal,
                             cwd=directory, start_new_session=True,
                             env={**os.environ, 'TERM': 'dumb', 'PS1': '', 'INPUTRC': '/dev/null'})
    os.close(terminal)
    try:
        sources = '; '.join(f'. {file}' for file in COMPLETIONS.iterdir())
        # Ctrl-A takes the line, completed, to a command that prints its words.
        os.write(outer, f"{sources}\n{words}\x01printf '<%s>' \nprintf '\\n%s\\n' '{marker}'\n".encode())
        shown = ''
        while f'\r\n{marker}\r\n' not in shown:
            shown += os.read(outer, 4096).decode(errors='replace')
    finally:
        shell.kill()
        shell.wait()
        os.close(outer)
    return re.findall('<(.*?)>', re.findall('^<.*>', shown, re.MULTILINE)[-1])


@pytest.mark.parametrize('command', ['stp-switchd --scenario', 'stp-switchd --socket', 'stp-switchctl --control',
                                     'stp-fetch-mibs'])
def test_names_of_folders_are_quoted_and_go_on(tmp_path, command):
    (tmp_path / 'some dir/inner').mkdir(parents=True)
    assert typed(tmp_path, f'{command} so\tin\t') == [*command.split(), 'some dir/inner/']


def test_a_value_may_stand_behind_an_equals_sign(tmp_path, switch):
    (tmp_path / 'lab.toml').touch()
    assert typed(tmp_path, 'stp-switchd --scenario=la\t') == ['stp-switchd', '--scenario=lab.toml']
    assert typed(tmp_path, 'stp-switchctl --control=la\tshow') == ['stp-switchctl', '--control=lab.toml', 'show']
    assert completed('stp-switchctl', '--control', '=', str(switch.control_socket), 'show', 'mst.re') == [
        'mst.region', 'mst.revision']
    assert completed('stp-switchctl', '--control', '=', 'x', 're') == ['reset']
    assert 'lab.toml' in typed(tmp_path, 'stp-switchd --scenario=\t')[1]

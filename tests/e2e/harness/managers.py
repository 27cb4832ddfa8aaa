"""Stock managers, and the interfaces that they need: an IF-MIB which has the switch's ports."""

import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest

from . import build
from .polling import GUARD_SECONDS
from .snmp_tools import private_environment

MANAGERS = build.PROJECT / 'tests/e2e/managers'
# What a check of Centreon ends with.
OK, CRITICAL = 0, 2
CENTREON = Path('/usr/lib/nagios/plugins/centreon_plugins.pl')
IF_ENTRY, IF_NAME = '.1.3.6.1.2.1.2.2.1', '.1.3.6.1.2.1.31.1.1.1.1'
IF_DESCR, IF_ADMIN_STATUS, IF_OPER_STATUS = (f'{IF_ENTRY}.{number}' for number in (2, 7, 8))
UP, DOWN = 1, 2


def need(is_there, package):
    """Skips the test where what it runs is not installed; ./test --all has installed it."""
    if not is_there and not build.THOROUGH:
        pytest.skip(f'{package} is not installed: ./test --all installs it')


def run(*command, inside=(), **options):
    """What it prints."""
    done = subprocess.run([*inside, *map(str, command)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False, timeout=GUARD_SECONDS, **options)
    assert done.returncode == 0, f'{command} ended with status {done.returncode}:\n{done.stdout}{done.stderr}'
    return done.stdout


def with_interfaces(names, down=()):
    """Lines of the agent's configuration: its IF-MIB has these as well, by index, as that of a switch would."""
    return ''.join(
        f'override {IF_DESCR}.{index} octet_str "{name}"\n'
        f'override {IF_ADMIN_STATUS}.{index} integer {UP}\n'
        f'override {IF_OPER_STATUS}.{index} integer {DOWN if name in down else UP}\n'
        f'override {IF_NAME}.{index} octet_str "{name}"\n' for index, name in names.items())


def port_of(agent):
    return agent.endpoint.split(':')[1]


def need_snmp_info():
    perl = shutil.which('perl')
    need(perl and subprocess.run([perl, '-MSNMP::Info', '-e', '1'], check=False, capture_output=True).returncode == 0,
         'libsnmp-info-perl')


def read_with_snmp_info(agent, context='', show='tree'):
    """The lines that it makes of the tree."""
    with tempfile.TemporaryDirectory() as folder:
        environment = {**private_environment(folder, folder), 'PATH': '/usr/bin:/bin:/usr/sbin:/sbin'}
        return run('perl', MANAGERS / 'snmp_info.pl', show, context, port_of(agent), build.SMI_BASE,
                   MANAGERS / 'mibs', inside=agent.inside, env=environment).splitlines()


def need_centreon():
    need(CENTREON.exists(), 'centreon-plugins')


def read_with_centreon(agent, *options, context=''):
    """Its status, its first line and its ports, which have no order: it goes through a hash."""
    who = (['--snmp-version', '3', '--snmp-username', 'alice', '--authprotocol', 'SHA', '--authpassphrase',
            'alice-passphrase', '--privprotocol', 'AES', '--privpassphrase', 'alice-passphrase', '--contextname',
            context] if context else ['--snmp-version', '2', '--snmp-community', 'public'])
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            [*agent.inside, CENTREON, '--plugin', 'network::hp::standard::snmp::plugin', '--mode', 'spanning-tree',
             '--hostname', '127.0.0.1', '--snmp-port', port_of(agent), '--snmp-timeout', '60', *who, '--verbose',
             *options],
            stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=GUARD_SECONDS,
            env={**private_environment(folder, folder), 'HOME': folder})
    assert done.stdout, done.stderr
    first, *ports = done.stdout.splitlines()
    return done.returncode, first.split(':')[0], sorted(ports)


def install_net_snmp(folder):
    """Of npm, as the lock file has it. What npm keeps goes with the folder."""
    need(build.THOROUGH, 'net-snmp of npm')
    for file in (MANAGERS / 'net-snmp').iterdir():
        shutil.copy(file, folder)
    run('npm', 'ci', '--no-audit', '--no-fund', '--cache', folder / 'cache', cwd=folder)


def read_with_net_snmp(folder, agent, context=''):
    """The lines that its reader prints."""
    return run('node', folder / 'read.js', port_of(agent), *([context] if context else []),
               inside=agent.inside).splitlines()

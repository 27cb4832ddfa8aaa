"""The MIB file in the hands of the stock tools: without a complaint, by name, and readable."""

import os
import re
import shutil
import subprocess
from pathlib import Path
from tempfile import TemporaryDirectory

import golden
import pytest
from harness.build import BUILD, PROJECT, ROOT, SMI_BASE, VERSION
from harness.lab import run_lab

MODULE = 'VANTREL-STP-EXTENSIONS-MIB'
MIBS = BUILD / 'mibs'
FETCH_MIBS = PROJECT / 'tools/fetch-mibs/stp-fetch-mibs'
COMMUNITY = ('-v2c', '-c', 'public')


def run(*command, **environment):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=False,
                          env=os.environ | environment)


def run_snmp_tool(*command):
    """A tool with our module and what it imports, and nothing of the machine's."""
    with TemporaryDirectory() as persistent:
        Path(persistent, 'cert_indexes').mkdir()  # or each tool says that it makes it
        return run(*command, MIBS=MODULE, MIBDIRS=f'{SMI_BASE}:{MIBS}', SNMPCONFPATH='/nonexistent',
                   SNMP_PERSISTENT_DIR=persistent)


def snmp_tool(*command):
    result = run_snmp_tool(*command)
    assert (result.returncode, result.stderr) == (0, '')
    return result.stdout.splitlines()


@pytest.fixture(name='agent')
def fixture_agent(lab):
    """Where an MST switch is served."""
    return lab.agent.endpoint


def get(agent, *names):
    return snmp_tool('snmpget', *COMMUNITY, '-Os', agent, *names)


def test_smilint_has_no_remark():
    result = run('smilint', '-l', '6', '-s', str(MIBS / f'{MODULE}.txt'), SMIPATH=str(SMI_BASE))
    assert (result.returncode, result.stdout, result.stderr) == (0, '', '')


def test_the_tools_load_it_without_a_warning():
    result = run_snmp_tool('snmptranslate', '-Pw', '-On', f'{MODULE}::vantrelStpExtensionsMIB')
    assert (result.returncode, result.stdout) == (0, f'{ROOT}\n')
    # What they say of the macros in SMIv2's own modules.
    said = [line for line in result.stderr.splitlines() if not line.endswith('parsed and ignored).')]
    assert not said


@pytest.mark.parametrize('scenario,expected', [('mst.toml', golden.MST), ('rapid-pvst.toml', golden.RAPID_PVST)],
                         ids=['mst', 'rapid-pvst'])
def test_walk_by_name_is_the_walk_by_number(scenario, expected):
    with run_lab(scenario) as lab:
        lines = snmp_tool('snmpwalk', *COMMUNITY, '-Os', lab.agent.endpoint, 'stpxObjects')
    names = [line.partition(' = ')[0] for line in lines if ' = ' in line]
    assert all(name.startswith('stpx') for name in names)
    numbers = filter(None, snmp_tool('snmptranslate', '-IR', '-On', *names))
    assert list(numbers) == [binding.oid for binding in expected]


@pytest.mark.parametrize('name,shown', [
    ('stpxSpanningTreeType.0', 'INTEGER: mst(4)'),
    ('stpxLoopGuardGlobalDefaultMode.0', 'INTEGER: enabled(1)'),
    ('stpxMSTRegionName.0', 'STRING: "ops-lab"'),
    ('stpxSMSTMaxHopCount.0', 'Gauge32: 25 hops'),
    ('stpxSMSTConfigDigest.0', 'STRING: 86:c6:5f:5a:e1:8a:bd:92:89:8:82:b4:bd:f0:ae:b4'),
    ('stpxSMSTInstanceVlansMappedLow.1', 'STRING: 0 3f f0'),
    ('stpxSMSTInstanceBridgeId.0', 'STRING: 24583/2:a0:0:ff:7b:0'),
    ('stpxRSTPPortOperLinkType.129', 'INTEGER: shared(2)'),
    ('stpxSMSTPortFlags.129', 'BITS: 88 operEdge(0) dispute(4)'),
    ('stpxSMSTPortAdminMSTMode.428', 'INTEGER: preStandard(1)'),
    ('stpxSMSTPortPreStandardStatus.129', 'INTEGER: preStandard(2)'),
])
def test_values_are_readable(agent, name, shown):
    [line] = get(agent, name)
    assert line.rstrip() == f'{name} = {shown}'


def test_snmptable_shows_a_table_by_its_indexes(agent):
    table = snmp_tool('snmptable', *COMMUNITY, '-Ci', '-Cb', agent, 'stpxSMSTPortTable')
    cells = [line.split() for line in table if line]
    assert cells[1] == ['index', 'Flags', 'AdminMSTMode', 'PreStandardStatus']
    ports = golden.column_of(golden.MST, f'{ROOT}.1.14.7.1.6')
    assert [row[0] for row in cells[2:]] == [binding.oid.rpartition('.')[2] for binding in ports]


def test_snmptranslate_describes_an_object():
    text = '\n'.join(snmp_tool('snmptranslate', '-Td', f'{MODULE}::stpxRSTPPortOperLinkType'))
    assert 'pointToPoint(1), shared(2), other(3)' in text
    assert 'MAX-ACCESS\tread-only' in text
    assert 'DESCRIPTION' in text


@pytest.mark.parametrize('name,suffix,objects', [
    ('stpxInconsistencyUpdate', '.2.0.1', 'stpxInconsistentState'),
    ('stpxRootInconsistencyUpdate', '.2.0.2', 'stpxRootInconsistencyState, stpxSpanningTreeType'),
    ('stpxLoopInconsistencyUpdate', '.2.0.3', 'stpxLoopInconsistencyState, stpxSpanningTreeType'),
])
def test_notifications_are_those_that_are_sent(name, suffix, objects):
    number, *description = snmp_tool('snmptranslate', '-Td', '-On', f'{MODULE}::{name}')
    assert number == ROOT + suffix
    assert f'  OBJECTS\t{{ {objects} }}' in description


def read_own_names():
    """Suffix, name and form of each object in the project's own table."""
    lines = (PROJECT / 'tools/show-walk/object-names.tsv').read_text(encoding='ascii').splitlines()
    return [(suffix, name, form) for suffix, _, name, form, _ in (line.split('\t') for line in lines)]


def test_the_projects_own_table_has_the_same_names():
    numbers = snmp_tool('snmptranslate', '-On', *(f'{MODULE}::{name}' for _, name, _ in read_own_names()))
    assert [number for number in numbers if number] == [ROOT + suffix for suffix, _, _ in read_own_names()]


def test_the_projects_own_table_has_the_same_values():
    compared = 0
    for _, name, form in read_own_names():
        text = '\n'.join(snmp_tool('snmptranslate', '-Td', f'{MODULE}::{name}'))
        syntax = re.search(r'^  SYNTAX\t(?:INTEGER|BITS) *{(.*)}', text, re.MULTILINE)
        if syntax:
            values = dict(re.findall(r'(\w+)\((\d+)\)', syntax[1]))
            own = (pair.split('=') for pair in form.removeprefix('bits:').split(','))
            assert {value: number for number, value in own} == values, name
            compared += 1
    assert compared


def test_what_the_file_imports_is_not_half_there_when_it_cannot_be_fetched(tmp_path):
    programs, directory = tmp_path / 'bin', tmp_path / 'smi'
    programs.mkdir()
    for name in ('apt-get', 'sudo'):
        (programs / name).write_text('#!/bin/sh\necho "E: the archive is away" >&2\nexit 100\n', encoding='ascii')
        (programs / name).chmod(0o755)
    result = run(str(FETCH_MIBS), str(directory), PATH=f'{programs}:{os.environ["PATH"]}')
    assert (result.returncode, result.stdout) == (1, '')
    assert result.stderr == 'stp-fetch-mibs: cannot unpack erlang-snmp: E: the archive is away\n'
    assert not list(directory.iterdir())


@pytest.mark.parametrize('name', ["o'neil", "';touch touched;'", 'two words', '$HOME *'])
def test_what_the_file_imports_may_be_anywhere(tmp_path, name):
    """Of the archive, a package with it is made here."""
    programs, contents = tmp_path / 'bin', tmp_path / 'package'
    modules = contents / 'usr/lib/erlang/lib/snmp-5.13/mibs'
    for folder in (programs, modules, contents / 'DEBIAN'):
        folder.mkdir(parents=True)
    for module in SMI_BASE.glob('*.txt'):
        shutil.copy(module, modules / f'{module.stem}.mib')
    (contents / 'DEBIAN/control').write_text(
        'Package: erlang-snmp\nVersion: 1\nArchitecture: all\nMaintainer: nobody <nobody@example.org>\n'
        'Description: for a test\n', encoding='ascii')
    run('dpkg-deb', '--build', str(contents), str(tmp_path / 'archive.deb'))
    (programs / 'apt-get').write_text(f'#!/bin/sh\ncp {tmp_path}/archive.deb .\n', encoding='ascii')
    (programs / 'apt-get').chmod(0o755)
    directory = tmp_path / name
    result = subprocess.run([FETCH_MIBS, directory], check=False, capture_output=True, text=True, cwd=tmp_path,
                            timeout=60, env=os.environ | {'PATH': f'{programs}:{os.environ["PATH"]}'})
    assert (result.returncode, result.stdout, result.stderr) == (0, '', '')
    assert sorted(path.name for path in directory.iterdir()) == sorted(path.name for path in SMI_BASE.glob('*.txt'))
    assert not (tmp_path / 'touched').exists()


def test_the_settings_may_end_within_a_line(tmp_path):
    shutil.copytree(SMI_BASE, tmp_path / '.snmp/mibs')
    settings = tmp_path / '.snmp/snmp.conf'
    settings.write_text('defVersion 2c', encoding='ascii')
    for _ in range(2):
        assert run(str(FETCH_MIBS), HOME=str(tmp_path)).returncode == 0
        assert settings.read_text(encoding='ascii') == 'defVersion 2c\nmibs +VANTREL-STP-EXTENSIONS-MIB\n'


def test_version_is_that_of_the_project():
    result = run(str(FETCH_MIBS), '--version')
    assert (result.returncode, result.stdout, result.stderr) == (0, f'stp-fetch-mibs {VERSION}\n', '')


def test_one_command_makes_the_tools_take_names(tmp_path):
    """In spite of the line with which Debian keeps them from it."""
    system, home = tmp_path / 'etc', tmp_path / 'home'
    system.mkdir()
    (system / 'snmp.conf').write_text('mibs :\n', encoding='ascii')
    shutil.copytree(SMI_BASE, home / '.snmp/mibs')
    environment = {'HOME': str(home), 'PATH': '/usr/bin:/bin', 'SNMPCONFPATH': f'{system}:{home}/.snmp',
                   'MIBDIRS': f'{home}/.snmp/mibs:{MIBS}'}

    def run_there(*command):
        return subprocess.run([str(word) for word in command], check=False, capture_output=True, text=True,
                              env=environment, timeout=60)

    assert run_there('snmptranslate', '-IR', '-On', 'stpxObjects').returncode != 0
    for _ in range(2):
        fetched = run_there(FETCH_MIBS)
        assert (fetched.returncode, fetched.stdout, fetched.stderr) == (0, '', '')
    assert (home / '.snmp/snmp.conf').read_text(encoding='ascii') == 'mibs +VANTREL-STP-EXTENSIONS-MIB\n'
    assert run_there('snmptranslate', '-IR', '-On', 'stpxObjects').stdout == f'{ROOT}.1\n'


@pytest.mark.parametrize('arguments, error', [
    (['--force'], "unknown option '--force': expected --version or --help"), (['a', 'b'], "unexpected argument 'b'"),
    (['a', '-x'], "unknown option '-x': expected --version or --help"),
])
def test_wrong_command_line_is_refused(arguments, error):
    result = run(str(FETCH_MIBS), *arguments)
    assert (result.returncode, result.stdout, result.stderr) == (2, '', f'stp-fetch-mibs: {error} (see --help)\n')

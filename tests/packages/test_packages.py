"""What is in the packages: nothing that lintian, the manual page formatter or systemd's own checks object to."""

import gzip
import re
import subprocess

import pytest
from expected import ENTERPRISE, NAMES
from harness.build import PROJECT, VERSION

PAGES = ['man1/stp-fetch-mibs.1', 'man1/stp-overview.1', 'man1/stp-show-walk.1', 'man1/stp-switchctl.1',
         'man5/stp-scenario.5', 'man7/libstpbridge.7', 'man7/libstpsnmp.7', 'man8/stp-switchd.8']


def run(*command):
    """Standard output and error of a command that must succeed."""
    result = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False, timeout=300)
    assert result.returncode == 0, f'{command}: {result.returncode}\n{result.stdout}'
    return result.stdout


def field(package, name):
    return run('dpkg-deb', '--field', package, name).strip()


def page_text(unpacked, page):
    """The source of a manual page, without its escapes."""
    return gzip.decompress((unpacked / f'usr/share/man/{page}.gz').read_bytes()).decode().replace('\\', '')


def scenario_keys():
    text = (PROJECT / 'scenarios/mst-small.toml').read_text(encoding='utf-8')
    return set(re.findall(r'^(\w+) = ', text, re.MULTILINE))


def page_options(text):
    return {'--' + option for option in re.findall(r'Fl (?:h , )?-([a-z-]+)', text)}


def help_options(*command):
    return set(re.findall(r'--[a-z][a-z-]*', run(*command, '--help').partition('Options:')[2].partition('\n\n')[0]))


def test_packages_are_of_the_projects_version(packages):
    assert {field(package, 'Package'): field(package, 'Version') for package in packages} == {
        name: VERSION for name in NAMES}


@pytest.mark.parametrize('command', ['bin/stp-fetch-mibs', 'bin/stp-overview', 'bin/stp-show-walk', 'bin/stp-switchctl',
                                     'sbin/stp-switchd'])
def test_commands_are_of_the_projects_version(unpacked, command):
    assert run(unpacked / 'usr' / command, '--version') == f'{command.partition("/")[2]} {VERSION}\n'


@pytest.mark.parametrize('name', ['stp-fetch-mibs', 'stp-show-walk'])
def test_pages_of_scripts_tell_every_option(unpacked, name):
    options = set(re.findall(r'^ *(?:-h,)?(--[a-z]+)', run(unpacked / 'usr/bin' / name, '--help')
                             .partition('\n\n')[2], re.MULTILINE))
    page = page_text(unpacked, f'man1/{name}.1')
    assert {'--version', '--help'} <= options <= {f'--{word}' for word in re.findall(r'-([a-z]{3,})\b', page)}


def test_each_package_has_the_license(unpacked):
    license_text = (PROJECT / 'LICENSE').read_text(encoding='ascii').partition('\n\n')[2].partition('\n\n')[2]
    for name in NAMES:
        text = (unpacked / f'usr/share/doc/{name}/copyright').read_text(encoding='ascii')
        assert re.sub(r'^ \.?', '', text, flags=re.MULTILINE).endswith(license_text), name


def test_lintian_has_no_remark(built):
    assert run('lintian', '--allow-root', '--fail-on', 'error,warning', *built.glob('*.changes')) == ''


@pytest.mark.parametrize('page', PAGES)
def test_the_formatter_has_no_remark(unpacked, page):
    result = subprocess.run(['man', '--warnings', '-l', unpacked / f'usr/share/man/{page}.gz'],
                            capture_output=True, text=True, check=False, timeout=60,
                            env={'PATH': '/usr/bin:/bin', 'LC_ALL': 'C.UTF-8', 'MANWIDTH': '80'})
    assert (result.returncode, result.stderr) == (0, '')
    assert 'SEE ALSO' in result.stdout
    assert 'OpenBSD' not in result.stdout  # what the formatter makes of snmpwalk's -Ox


def test_pages_tell_every_option(unpacked):
    switchctl, switchd = unpacked / 'usr/bin/stp-switchctl', unpacked / 'usr/sbin/stp-switchd'
    assert page_options(page_text(unpacked, 'man8/stp-switchd.8')) == help_options(switchd)
    options = set()
    for command in ['', 'show', 'set', 'reset', 'ping', 'fault', 'fault delay', 'fault drop', 'fault garbage',
                    'fault disconnect', 'fault none']:
        options |= help_options(switchctl, *command.split())
    assert page_options(page_text(unpacked, 'man1/stp-switchctl.1')) == options


def test_the_page_of_scenarios_tells_every_key(unpacked):
    keys = re.findall(r'^\.It Ic (\w+)', page_text(unpacked, 'man5/stp-scenario.5'), re.MULTILINE)
    assert set(keys) == scenario_keys()


def test_the_page_of_the_module_tells_every_variable(unpacked):
    settings = (PROJECT / 'platform/client/settings.cpp').read_text(encoding='utf-8')
    assert set(re.findall(r'^\.It Ev (\w+)', page_text(unpacked, 'man7/libstpsnmp.7'), re.MULTILINE)) == set(
        re.findall(r'"(STPPLATFORM_\w+)"', settings))


def test_the_enterprise_number_is_the_configured_one_everywhere(unpacked):
    assert f'.{ENTERPRISE}.9.82' in page_text(unpacked, 'man7/libstpsnmp.7')
    assert f'.{ENTERPRISE}.9.82' in (unpacked / 'etc/snmp/snmpd.conf.d/stp-extensions.conf').read_text()
    mib = (unpacked / 'usr/share/snmp/mibs/VANTREL-STP-EXTENSIONS-MIB.txt').read_text(encoding='utf-8')
    assert f'enterprises {ENTERPRISE} ' in mib

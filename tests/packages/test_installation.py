"""The packages on a machine: snmpd has the module once they are installed, the switch starts as its unit says, and
nothing is left when they are purged."""

import configparser
import re
import shlex
import shutil

import pytest
from expected import ENTERPRISE
from harness.build import SMI_BASE
from harness.polling import wait_until

BRIDGE_OID = '.1.3.6.1.2.1.17'
ROOT_OID = f'.1.3.6.1.4.1.{ENTERPRISE}.9.82'
MIB = 'VANTREL-STP-EXTENSIONS-MIB'
UNIT = 'stp-switchd.service'
DROP_IN = '/etc/snmp/snmpd.conf.d/stp-extensions.conf'
AGENT_LOG = '/run/snmpd.log'
SMI_IN_ROOT, PERSISTENT = '/run/smi', '/run/persistent'

# The agent's own script starts it: Debian's options, but for the log. Only the root's own loopback may read.
AGENT_OPTIONS = f"SNMPDOPTS='-A -Lf {AGENT_LOG} -u Debian-snmp -g Debian-snmp -I -smux,mteTrigger,mteTriggerConf'\n"
AGENT_ACCESS = (f'view stp included {ROOT_OID}\nview stp included {BRIDGE_OID}\n'
                'rocommunity readers 127.0.0.1 -V stp\ndontLogTCPWrappersConnects yes\n')

# Some user whom nobody is, as systemd takes one.
DYNAMIC_USER = '61184'

# Out of 100, as `systemd-analyze security` counts; it calls up to 20 safe.
MOST_EXPOSURE = 10

# From the default scenario, one value at least for each way in which the module asks the switch.
SERVED = {
    'stpxSpanningTreeType.0 mst',
    'stpxMSTRegionName.0 "campus"',
    'stpxSMSTRegionRevision.0 3',
    'stpxRootGuardConfigSetting.436207617 1',
    'stpxRootInconsistencyState.2.4098 1',
    'stpxLoopInconsistencyState.1.4097 1',
    'stpxRSTPPortRole.0.139 2',
    'stpxSMSTPortAdminMSTMode.142 preStandard',
    'stpxSMSTInstanceValue.2 18',
}

# Of its CIST, by BRIDGE-MIB: dot1dStpRootPort.
ROOT_PORT = f'{BRIDGE_OID}.2.7.0'
DEFAULT_ROOT_PORT = f'{ROOT_PORT} = INTEGER: 139\n'


def read_service(root):
    # Keys that stand several times are none of those that are read here.
    unit = configparser.ConfigParser(strict=False, interpolation=None, delimiters='=')
    unit.optionxform = str
    unit.read_string(root.path(f'/lib/systemd/system/{UNIT}').read_text(encoding='utf-8'))
    return unit['Service']


def command_of(service, root):
    """What starts it. Of a variable, systemd makes the words in it; what stands in the file takes the place of what
    stands in the unit."""
    variables = dict(word.split('=', 1) for word in shlex.split(service['Environment']))
    for line in root.path(service['EnvironmentFile'].removeprefix('-')).read_text(encoding='utf-8').splitlines():
        if line and not line.startswith('#'):
            name, value = line.split('=', 1)
            variables[name] = ' '.join(shlex.split(value))
    return [part for word in shlex.split(service['ExecStart'])
            for part in (variables[word[1:]].split() if word.startswith('$') else [word])]


def start_switch(root, log):
    """As the unit says, as far as that can be had without systemd."""
    service = read_service(root)
    assert (service['DynamicUser'], service['CapabilityBoundingSet']) == ('yes', '')
    root.run('install', '--directory', f'/run/{service["RuntimeDirectory"]}', f'--group={service["Group"]}',
             f'--mode={service["RuntimeDirectoryMode"]}', f'--owner={DYNAMIC_USER}')
    switch = root.start(
        log, 'setpriv', f'--reuid={DYNAMIC_USER}', f'--regid={service["Group"]}', '--clear-groups', '--no-new-privs',
        '--bounding-set=-all', '--inh-caps=-all',
        'sh', '-c', f'umask {service["UMask"]}; exec "$@"', 'sh', *command_of(service, root))
    wait_until(lambda: not switch.is_alive() or 'ready' in log.read_text(), 'stp-switchd is ready')
    assert switch.is_alive(), log.read_text()


def start_agent(root):
    # A machine may have a policy that starts nothing.
    root.run('rm', '-f', '/usr/sbin/policy-rc.d')
    root.path('/etc/default/snmpd').write_text(AGENT_OPTIONS, encoding='ascii')
    root.path('/etc/snmp/snmpd.conf.d/access.conf').write_text(AGENT_ACCESS, encoding='ascii')
    shutil.copytree(SMI_BASE, root.path(SMI_IN_ROOT))
    root.path(PERSISTENT).mkdir()
    root.run('/etc/init.d/snmpd', 'start')
    wait_for_no_module(root)


def walk(root, *what):
    """What snmpwalk says, also when nobody answers."""
    return root.run('sh', '-c', 'snmpwalk "$@" || :', 'snmpwalk', '-v2c', '-c', 'readers', '-t', '5', '-r', '0',
                    '-Oqs', '127.0.0.1', *what, MIBDIRS=f'{SMI_IN_ROOT}:/usr/share/snmp/mibs',
                    SNMPCONFPATH='/nonexistent', SNMP_PERSISTENT_DIR=PERSISTENT)


def walk_by_name(root):
    return set(walk(root, '-m', MIB, f'{MIB}::stpxObjects').splitlines())


def wait_for_module(root):
    wait_until(lambda: SERVED <= walk_by_name(root), 'snmpd serves the module')


def wait_for_no_module(root):
    # The tool says so as well behind the last of many values: it is the root that must have none.
    wait_until(lambda: f'{ROOT_OID} No more variables left' in walk(root, '-On', ROOT_OID),
               'snmpd answers, without the module')


def wait_for_bridge_module(root):
    wait_until(lambda: f'{ROOT_PORT} 139' in walk(root, '-On', ROOT_PORT), 'snmpd serves the bridge module')


@pytest.fixture(name='machine')
def fixture_machine(root, tmp_path):
    """A root with a running agent."""
    start_agent(root)
    yield root
    print(f'--- log of snmpd\n{root.path(AGENT_LOG).read_text(errors="replace")}')
    for log in tmp_path.glob('*.log'):
        print(f'--- {log.name}\n{log.read_text(errors="replace")}')


def test_an_agent_that_runs_serves_what_is_installed_and_drops_what_is_removed(machine, packages, tmp_path):
    machine.install(packages)
    start_switch(machine, tmp_path / 'switch.log')
    wait_for_module(machine)
    assert machine.run('stp-switchctl', 'show', 'mst.region') == 'mst.region = campus\n'
    assert machine.run('stat', '--format=%A %u %G', '/run/stp-switchd', '/run/stp-switchd/switch.sock',
                       '/run/stp-switchd/control.sock').splitlines() == [
        f'drwxr-x--- {DYNAMIC_USER} Debian-snmp', f'srw-rw---- {DYNAMIC_USER} Debian-snmp',
        f'srw------- {DYNAMIC_USER} Debian-snmp']

    machine.install(packages)
    wait_for_module(machine)

    machine.run('dpkg', '--remove', 'libstpsnmp')
    wait_for_no_module(machine)
    assert 'dlopen' not in machine.path(AGENT_LOG).read_text(errors='replace')


def test_each_module_serves_without_the_other(machine, packages, tmp_path):
    machine.install(packages)
    start_switch(machine, tmp_path / 'switch.log')
    wait_for_module(machine)
    wait_for_bridge_module(machine)

    machine.run('dpkg', '--remove', 'libstpsnmp')
    wait_for_no_module(machine)
    wait_for_bridge_module(machine)

    machine.install(packages)
    machine.run('dpkg', '--remove', 'libstpbridge')
    wait_until(lambda: f'{ROOT_PORT} No ' in walk(machine, '-On', ROOT_PORT), 'snmpd has dropped the bridge module')
    wait_for_module(machine)
    assert 'dlopen' not in machine.path(AGENT_LOG).read_text(errors='replace')


def test_the_first_walk_takes_the_commands_that_the_installation_prints(machine, packages, tmp_path):
    machine.path('/etc/snmp/snmpd.conf.d/access.conf').unlink()
    printed = machine.install(packages)
    start_switch(machine, tmp_path / 'switch.log')
    add_views = re.findall(r"^  (echo 'view .*)$", printed, re.MULTILINE)
    [show] = re.findall(r': (stp-show-walk .*)$', printed, re.MULTILINE)
    [walk_bridge] = re.findall(r': (snmpwalk .*)$', printed, re.MULTILINE)
    before = machine.changes()
    for add_view in add_views:
        machine.run('sh', '-c', add_view)
    assert set(machine.changes()) - set(before) == {
        'etc/snmp/snmpd.conf.d/stp-bridge-view.conf', 'etc/snmp/snmpd.conf.d/stp-view.conf'}
    wait_until(lambda: 'Mode           mst\n' in machine.run('sh', '-c', f'{show} 2>/dev/null || :'),
               'the tables are shown')
    shown = machine.run('sh', '-c', show)
    assert 'channel 1  p2p     P      loop       a   D!  R   D\n' in shown
    assert f'\nstpxRootInconsistencyTable ({ROOT_OID}.1.5.2)\n' in shown
    assert DEFAULT_ROOT_PORT in machine.run('sh', '-c', f'{walk_bridge} -On')
    assert 'view' not in machine.install(packages)


def test_the_shell_completes_what_is_installed(machine, packages):
    machine.install(packages)
    for name in ('stp-fetch-mibs', 'stp-show-walk', 'stp-switchctl', 'stp-switchd'):
        assert machine.run('bash', '-c', f'. /usr/share/bash-completion/completions/{name} && complete -p {name}')


def test_an_agent_that_does_not_run_is_not_started(machine, packages):
    machine.run('/etc/init.d/snmpd', 'stop')
    machine.install(packages)
    machine.run('dpkg', '--remove', 'libstpsnmp')
    assert not machine.path('/run/snmpd.pid').exists()


def test_what_the_administrator_changed_outlives_a_removal(machine, packages):
    machine.install(packages)
    drop_in = machine.path(DROP_IN)
    drop_in.write_text('# not now\n', encoding='ascii')
    machine.run('dpkg', '--remove', 'libstpsnmp')
    assert not drop_in.exists()
    machine.install(packages)
    assert drop_in.read_text(encoding='ascii') == '# not now\n'


def test_a_removal_that_does_not_come_off_leaves_the_module_loaded(machine, packages):
    machine.install(packages)
    machine.run('/var/lib/dpkg/info/libstpsnmp.prerm', 'remove')
    wait_for_no_module(machine)
    machine.run('/var/lib/dpkg/info/libstpsnmp.postinst', 'abort-remove')
    wait_until(lambda: 'stpxSMSTMaxInstances.0' in walk(machine, '-m', MIB, f'{MIB}::stpxObjects'),
               'snmpd has the module again')


@pytest.mark.parametrize('removed_first', [False, True])
def test_nothing_is_left_of_purged_packages(machine, packages, removed_first):
    before = machine.changes()
    machine.install(packages)
    assert machine.changes() != before
    # Without the module's switch, the walk lacks most.
    assert 'stpxSMSTMaxInstances.0 ' in machine.run('sh', '-c', 'stp-show-walk -v2c -c readers localhost || :')
    names = [package.name.partition('_')[0] for package in packages]
    if removed_first:
        machine.run('dpkg', '--remove', *names)
    machine.run('dpkg', '--purge', *names)
    assert machine.changes() == before
    assert not [name for name in names if list(machine.path('/var/lib/dpkg/info').glob(f'{name}[.:]*'))]


def test_systemd_has_no_remark_on_the_unit(root, packages):
    root.install(packages)
    assert root.run('systemd-analyze', 'verify', UNIT) == ''
    root.run('systemd-analyze', 'security', '--offline=true', f'--threshold={MOST_EXPOSURE}', '--no-pager', UNIT)

"""A private snmpd on a loopback port, with the module and, as a rule, the request probe loaded; or with something else
in the module's place."""

import os
import re
import signal
import subprocess
import unittest
from pathlib import Path

from . import build
from .polling import wait_until
from .ports import PORT_ATTEMPTS, free_port
from .process import Process
from .snmp_tools import key_of, private_environment

# Long enough that no busy machine makes a request fail that should not; tests of silent switches shorten it.
PATIENT_DEADLINE_MS = 20000
SHORT_DEADLINE_MS = 1000


def create_user(name):
    return f'createUser {name} SHA -m {key_of(name)} AES -m {key_of(name)}'


# Security names: reader, guest and writer for communities; alice, bob and guest for SNMPv3.
CONFIGURATION = f'''
dontLogTCPWrappersConnects yes
com2sec reader 127.0.0.1 public
com2sec guest 127.0.0.1 guest-community
com2sec writer 127.0.0.1 private
com2sec -Cn vlan-10 reader 127.0.0.1 public-vlan-10
com2sec -Cn mst-5 reader 127.0.0.1 public-mst-5
group all v1 reader
group all v2c reader
group all v1 guest
group all v2c guest
group all v1 writer
group all v2c writer
group all usm alice
group all usm bob
group all usm guest
view everything included .1
access all "" any noauth prefix everything everything none
{create_user('alice')}
{create_user('bob')}
{create_user('guest')}
'''
MODULE_CONFIGURATION = f'dlmod stp_extensions_mib {build.MODULE}\n'
BRIDGE_CONFIGURATION = f'dlmod stp_bridge_mib {build.BRIDGE_MODULE}\n'
PROBE_CONFIGURATION = f'dlmod agent_probe {build.PROBE}\n'

# The file whose word says which traps start enabled. The agent sees one of its own, under a private mount.
TRAP_WORD_FILE = '/mnt/pss/stp_trap_value'
PREPARE_TRAP_WORD = f'''
mount -t tmpfs tmpfs /mnt
mkdir /mnt/pss
printf %s "$0" >{TRAP_WORD_FILE}
exec setpriv --pdeathsig KILL "$@"
'''

# What no log may hold, unless the test has asked for the trouble.
TROUBLE = re.compile(r'Sanitizer|runtime error:|undefined symbol|Segmentation|dlopen|[Ee]rror')


UNSHARE_MOUNTS = ['unshare', '--mount'] if os.geteuid() == 0 else ['unshare', '--mount', '--map-root-user']


def need_private_mount():
    """Skips the test where there can be none."""
    tried = subprocess.run([*UNSHARE_MOUNTS, 'true'], check=False, capture_output=True, text=True)
    if tried.returncode != 0:
        raise unittest.SkipTest(
            f'no private mount can be made: {tried.stderr.strip()} (in a plain chroot, / is no mount point)')


class Agent:
    def __init__(self, directory, switch_socket, deadline_ms=PATIENT_DEADLINE_MS, with_probe=True,
                 trap_endpoint=None, trap_word=None, enabled_classes=(), serves=MODULE_CONFIGURATION, environment=(),
                 inside=()):
        """`trap_word` is the text of the trap word file, if there is to be one; the probe enables
        `enabled_classes` on top of what it says. `serves` and `environment` are for what takes the module's place:
        lines of the configuration, and variables. `inside`: what runs it somewhere else, where it is then asked."""
        self.log = directory / 'snmpd.log'
        self.inside = inside
        self._directory = directory
        self._expected_trouble = []
        self._checked = {}
        if trap_word is not None:
            need_private_mount()
        self._trap_word = trap_word
        self._process = None
        self._port = None
        self._environment = {
            **private_environment(directory, directory / 'persistent'),
            'STPPLATFORM_SOCKET': str(switch_socket),
            'STPPLATFORM_DEADLINE_MS': str(deadline_ms),
            'AGENT_PROBE_ENABLE': ' '.join(str(number) for number in enabled_classes),
            **dict(environment),
        }
        if build.PRELOAD:
            reports = f'log_path={directory}/sanitizer:print_stacktrace=1'
            self._environment.update(LD_PRELOAD=build.PRELOAD, UBSAN_OPTIONS=reports,
                                     ASAN_OPTIONS=f'{reports}:detect_leaks=0:quarantine_size_mb=4')
        (directory / 'persistent').mkdir()
        configuration = CONFIGURATION + serves + (PROBE_CONFIGURATION if with_probe else '')
        if trap_endpoint:
            configuration += f'trap2sink {trap_endpoint} public\n'
        (directory / 'snmpd.conf').write_text(configuration, encoding='ascii')

    @property
    def endpoint(self):
        return f'127.0.0.1:{self._port}'

    @property
    def pid(self):
        return self._process.pid

    def start(self):
        for _ in range(PORT_ATTEMPTS):
            self._port = free_port()
            self._process = self._run('-f')
            wait_until(lambda: not self._process.is_alive() or self._log_holds('NET-SNMP version'),
                       'snmpd listens or gives up')
            if self._process.is_alive():
                return
            assert self._log_holds('Error opening'), f'snmpd did not start:\n{self.read_logs()}'
            self.log.unlink()
        raise AssertionError('found no free port')

    def _run(self, *mode):
        command = ['/usr/sbin/snmpd', *mode, '-Lf', self.log, '-C', '-c', self._directory / 'snmpd.conf',
                   '-I', '-smux', f'udp:127.0.0.1:{self._port}']
        return Process([*self.inside, *self._private_mount(), *command], self._directory / 'snmpd.output',
                       self._environment)

    def _private_mount(self):
        if self._trap_word is None:
            return []
        return [*UNSHARE_MOUNTS, 'sh', '-ec', PREPARE_TRAP_WORD, self._trap_word]

    def write_trap_word(self, word):
        """The agent reads it when it loads the module anew."""
        Path(f'/proc/{self.pid}/root{TRAP_WORD_FILE}').write_text(word, encoding='ascii')

    def _log_holds(self, text):
        return self.count_in_log(text) > 0

    def count_in_log(self, text):
        return self.log.read_text(errors='replace').count(text) if self.log.exists() else 0

    def is_alive(self):
        return self._process.is_alive()

    def reloads(self):
        return self.count_in_log('restarted')

    def hang_up(self):
        """Sends SIGHUP and waits until the agent has read its configuration, and so the module, anew."""
        seen = self.reloads()
        self._process.signal(signal.SIGHUP)
        wait_until(lambda: not self.is_alive() or self.reloads() > seen, 'snmpd has reconfigured')
        assert self.is_alive(), f'snmpd died of SIGHUP:\n{self.read_logs()}'

    def pause(self):
        """Stops the process where it is: its sockets stay, and nobody reads from them."""
        self._process.signal(signal.SIGSTOP)

    def resume(self):
        self._process.signal(signal.SIGCONT)

    def has_mapped(self, library):
        return str(library) in Path(f'/proc/{self.pid}/maps').read_text(encoding='utf-8')

    def resident_kib(self):
        status = Path(f'/proc/{self.pid}/status').read_text(encoding='ascii')
        return int(re.search(r'^VmRSS:\s+(\d+) kB', status, re.MULTILINE)[1])

    def stop(self):
        if self._process:
            status = self._process.stop()
            self._process = None
            assert status == 0, f'snmpd ended with status {status}:\n{self.read_logs()}'

    def kill(self):
        if self._process:
            self._process.kill()
            self._process = None

    def expect_in_log(self, pattern):
        """Lines of this kind are what the test provokes, no trouble."""
        self._expected_trouble.append(re.compile(pattern))

    def _log_texts(self):
        files = [self.log, self._directory / 'snmpd.output', *sorted(self._directory.glob('sanitizer*'))]
        return {file: file.read_text(errors='replace') for file in files if file.exists()}

    def read_logs(self):
        return ''.join(self._log_texts().values())

    def check_logs(self):
        """Of what was logged since the last check, so that each trouble is told once."""
        texts = self._log_texts()
        new = ''.join(text[self._checked.get(file, 0):] for file, text in texts.items())
        # The last line may not be whole yet.
        self._checked = {file: text.rfind('\n') + 1 for file, text in texts.items()}
        for line in new.splitlines():
            expected = any(pattern.search(line) for pattern in self._expected_trouble)
            assert expected or not TROUBLE.search(line), f'trouble in the log of snmpd: {line}\nin\n{new}'


class DaemonAgent(Agent):
    """An snmpd that went into the background."""

    def start(self):
        pid_file = self._directory / 'snmpd.pid'
        for _ in range(PORT_ATTEMPTS):
            self._port = free_port()
            started = self._run('-p', pid_file).wait() == 0
            wait_until(lambda: self._log_holds('NET-SNMP version') or self._log_holds('Error opening'),
                       'snmpd listens or gives up')
            if started and self._log_holds('NET-SNMP version'):
                wait_until(lambda: pid_file.exists() and pid_file.read_text(), 'snmpd has written its pid')
                self._process = _Daemon(int(pid_file.read_text()))
                return
            self.log.unlink()
        raise AssertionError('found no free port')


class _Daemon:
    """As much of Process as holds for a process that is no child."""

    def __init__(self, pid):
        self.pid = pid

    def is_alive(self):
        """Whether it runs; who adopted it may be slow to collect its exit status."""
        status = Path(f'/proc/{self.pid}/status')
        try:
            return '\nState:\tZ' not in status.read_text(encoding='ascii')
        except (FileNotFoundError, ProcessLookupError):
            return False

    def signal(self, number):
        os.kill(self.pid, number)

    def stop(self):
        self.signal(signal.SIGTERM)
        wait_until(lambda: not self.is_alive(), 'the daemon has ended')
        return 0

    def kill(self):
        try:
            self.signal(signal.SIGKILL)
        except ProcessLookupError:
            pass  # it has ended, and nobody waits for a process that is no child

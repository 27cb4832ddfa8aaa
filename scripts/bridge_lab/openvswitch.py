"""Bridges of an Open vSwitch in userspace: an instance of its own in a namespace, reached by local sockets only."""

import os
import re
import signal
import subprocess
import time
from pathlib import Path
from typing import NamedTuple

from .namespaces import GUARD_SECONDS, LabError, run

SCHEMA = '/usr/share/openvswitch/vswitch.ovsschema'
# The shortest that it takes, in seconds.
FORWARD_DELAY, MAX_AGE = 4, 6
POLL_SECONDS = 0.01


class Port(NamedTuple):
    """Its own words, as `rstp/show` has them."""
    name: str
    role: str
    state: str
    cost: int
    priority: int
    number: int

    @property
    def blocks(self):
        return self.state == 'Discarding' and self.role in ('Alternate', 'Backup')

    @property
    def forwards(self):
        return self.state == 'Forwarding'


class Status(NamedTuple):
    root_port: str  # its name; empty at the root
    root_cost: int
    ports: dict     # by name

    @staticmethod
    def role_of(port):
        return port.role.lower()


class OpenVSwitch:
    """The instance. Its programs die with this process."""

    def __init__(self, namespace, folder):
        self.namespace = namespace
        self.folder = Path(folder)
        self.database = self.folder / 'db.sock'
        self._control = self.folder / 'vswitchd.ctl'
        self._server = self._switch = None

    @property
    def _environment(self):
        return {**os.environ, 'OVS_RUNDIR': str(self.folder), 'OVS_LOGDIR': str(self.folder),
                'OVS_DBDIR': str(self.folder)}

    def start(self):
        self.folder.mkdir(mode=0o755, parents=True, exist_ok=True)
        if not Path(SCHEMA).exists():
            raise LabError('Open vSwitch is not installed: apt install openvswitch-switch')
        if not (self.folder / 'conf.db').exists():
            run('ovsdb-tool', 'create', self.folder / 'conf.db', SCHEMA, environment=self._environment)
        self.start_database()
        self.start_switch()

    def start_database(self):
        self.database.unlink(missing_ok=True)
        self._server = self._start('ovsdb-server', self.folder / 'conf.db', f'--remote=punix:{self.database}',
                                   f'--unixctl={self.folder}/ovsdb.ctl')
        self._wait_for(self._server, 'ovsdb-server', self.database)
        # Readers need not be of our user: the folder says who may come this far.
        self.database.chmod(0o666)

    def start_switch(self):
        self._control.unlink(missing_ok=True)
        self._switch = self._start('ovs-vswitchd', f'unix:{self.database}', f'--unixctl={self._control}')
        self._wait_for(self._switch, 'ovs-vswitchd', self._control)

    def _start(self, program, *arguments):
        return self.namespace.start(program, *arguments, '-vconsole:emer', '-vsyslog:off',
                                    f'--log-file={self.folder}/{program}.log', f'--pidfile={self.folder}/{program}.pid',
                                    log=self.folder / f'{program}.output', environment=self._environment)

    def _wait_for(self, process, program, socket):
        give_up = time.monotonic() + GUARD_SECONDS
        while not socket.exists():
            if process.poll() is not None or time.monotonic() > give_up:
                raise LabError(f'{program} does not start: see {self.folder}')
            time.sleep(POLL_SECONDS)

    @staticmethod
    def _end(process, number):
        if process is None:
            return
        process.send_signal(number)
        try:
            process.wait(GUARD_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def stop_switch(self, number=signal.SIGTERM):
        self._end(self._switch, number)
        self._switch = None

    def stop_database(self, number=signal.SIGTERM):
        self._end(self._server, number)
        self._server = None

    def stop(self):
        self.stop_switch(signal.SIGKILL)
        self.stop_database(signal.SIGKILL)

    def vsctl(self, *words):
        return run('ovs-vsctl', f'--db=unix:{self.database}', f'--timeout={GUARD_SECONDS // 2}', *words,
                   environment=self._environment)

    def appctl(self, *words):
        return run('ovs-appctl', f'--timeout={GUARD_SECONDS // 2}', f'--target={self._control}', *words,
                   environment=self._environment)


class OpenVSwitchBridge:
    kind = 'openvswitch'

    def __init__(self, switch, device='br0'):
        self.switch = switch
        self.namespace = switch.namespace
        self.device = device

    @property
    def source(self):
        """What makes stp-switchd read it."""
        return ['--openvswitch', self.device, '--ovsdb', str(self.switch.database)]

    @property
    def enter(self):
        """Its database is a socket, which can be reached from anywhere."""
        return []

    def create(self, priority, address=None):
        own_address = [f'other_config:hwaddr="{address}"'] if address else []
        self.switch.vsctl(
            'add-br', self.device, '--', 'set', 'bridge', self.device, 'datapath_type=netdev', 'rstp_enable=true',
            f'other_config:rstp-priority={priority}', f'other_config:rstp-forward-delay={FORWARD_DELAY}',
            f'other_config:rstp-max-age={MAX_AGE}', *own_address)

    def delete(self):
        self.switch.vsctl('del-br', self.device)

    def add_port(self, device, *settings):
        """`settings`: of the Port, as other_config:rstp-port-num=7."""
        self.switch.vsctl('add-port', self.device, device, *(['--', 'set', 'port', device, *settings] if settings
                                                             else []))

    def remove_port(self, device):
        self.switch.vsctl('del-port', self.device, device)

    def set_priority(self, priority):
        self.switch.vsctl('set', 'bridge', self.device, f'other_config:rstp-priority={priority}')

    def status(self):
        try:
            shown = self.switch.appctl('rstp/show', self.device)
        except LabError as failure:
            if 'No such RSTP object' not in str(failure):
                raise
            shown = ''  # it does not run, or not yet
        ports = [Port(name, role, state, int(cost), int(priority), int(number)) for name, role, state, cost, priority,
                 number in re.findall(r'^ +(\S+) +(\w+) +(Disabled|Discarding|Learning|Forwarding) +(\d+) +(\d+)\.(\d+)',
                                      shown, re.MULTILINE)]
        root_port = re.search(r'root-port +(\S+)', shown)
        cost = re.search(r'root-path-cost +(\d+)', shown)
        return Status(root_port[1] if root_port else '', int(cost[1]) if cost else 0,
                      {port.name: port for port in sorted(ports, key=lambda port: port.number)})

    def shown_status(self):
        status = self.status()
        heading = (f'bridge {self.device}: root port {status.root_port}, cost {status.root_cost}' if status.root_port
                   else f'bridge {self.device}: the root itself')
        return heading, ['Port', 'No', 'Role', 'State', 'Cost'], [
            [port.name, port.number, port.role, port.state, port.cost] for port in status.ports.values()]

"""Bridges of the kernel, and what it says of them."""

import re
from typing import NamedTuple

from .namespaces import LabError

# The shortest that IEEE 802.1D allows, in hundredths of a second.
FORWARD_DELAY, HELLO_TIME, MAX_AGE = 200, 100, 600

STATES = ('disabled', 'listening', 'learning', 'forwarding', 'blocking')


class Port(NamedTuple):
    """The kernel's words, as `ip -d link` has them."""
    name: str
    if_index: int
    has_link: bool
    number: int
    state: str
    priority: int
    cost: int
    designated_root: str
    designated_bridge: str
    designated_port: int
    designated_cost: int
    root_block: bool

    @property
    def blocks(self):
        return self.state == 'blocking'

    @property
    def forwards(self):
        return self.state == 'forwarding'


class Status(NamedTuple):
    bridge_id: str
    root_id: str
    root_port: int  # 0 at the root
    root_cost: int
    ports: dict     # by name

    def role_of(self, port):
        """What follows for the port; None where there is no spanning tree for it."""
        if not port.has_link or port.state == 'disabled':
            return 'disabled'
        if port.number == self.root_port:
            return 'root'
        if port.designated_bridge != self.bridge_id:
            return 'alternate'
        return 'designated' if port.designated_port & 0x3FF == port.number else 'backup'


def value_of(word, text):
    """What stands behind a word."""
    found = re.search(rf'(?<![\w-]){re.escape(word)} +(\S+)', text)
    if not found:
        raise LabError(f'ip says nothing of {word}')
    return found[1]


def bridge_id(text):
    """`ip` leaves out the zeros at the front of an octet."""
    priority, address = text.split('.')
    return f'{priority}.{":".join(octet.zfill(2) for octet in address.split(":"))}'


def devices(printed):
    """Of what `ip -d link` prints, one text for each device."""
    return re.split(r'^(?=\d+: )', printed, flags=re.MULTILINE)[1:]


def parse_port(text):
    state = value_of('bridge_slave state', text)
    if_index, name, flags = re.match(r'(\d+): ([^:@]+)[^<]*<([^>]*)>', text).groups()
    return Port(
        name, int(if_index), {'UP', 'LOWER_UP'} <= set(flags.split(',')), int(value_of('port_no', text), 16),
        state, int(value_of(f'{state} priority', text)), int(value_of('cost', text)),
        bridge_id(value_of('designated_root', text)), bridge_id(value_of('designated_bridge', text)),
        int(value_of('designated_port', text)), int(value_of('designated_cost', text)),
        value_of('root_block', text) == 'on')


class LinuxBridge:
    kind = 'linux'

    def __init__(self, namespace, device='br0'):
        self.namespace = namespace
        self.device = device

    @property
    def source(self):
        """What makes stp-switchd read it."""
        return ['--linux-bridge', self.device]

    @property
    def enter(self):
        """What brings stp-switchd to where it can read it."""
        return self.namespace.enter

    def create(self, priority, address=None):
        own_address = f'address {address} ' if address else ''
        self.namespace.ip_batch(
            f'link add {self.device} {own_address}type bridge stp_state 1 forward_delay {FORWARD_DELAY} '
            f'hello_time {HELLO_TIME} max_age {MAX_AGE} priority {priority} mcast_snooping 0',
            f'link set {self.device} up')

    def delete(self):
        self.namespace.ip('link', 'del', self.device)

    def add_port(self, device):
        self.namespace.ip('link', 'set', device, 'master', self.device)

    def remove_port(self, device):
        self.namespace.ip('link', 'set', device, 'nomaster')

    def set_priority(self, priority):
        self.namespace.ip('link', 'set', self.device, 'type', 'bridge', 'priority', priority)

    def set_port(self, device, *words):
        """As root_block on."""
        self.namespace.run('bridge', 'link', 'set', 'dev', device, *words)

    def status(self):
        own, *others = devices(self.namespace.ip('-d', 'link', 'show', 'dev', self.device)
                               + self.namespace.ip('-d', 'link', 'show', 'master', self.device))
        ports = sorted(map(parse_port, others), key=lambda port: port.number)
        own_id, root_port = bridge_id(value_of('bridge_id', own)), int(value_of('root_port', own), 0)
        # Of the bridge itself, `ip` prints its own identifier as that of the root.
        root_id = next((port.designated_root for port in ports if port.number == root_port), own_id)
        return Status(own_id, root_id, root_port, int(value_of('root_path_cost', own)),
                      {port.name: port for port in ports})

    def forward_transitions(self, device):
        """How often a port began to forward."""
        printed = self.namespace.ip('link', 'xstats', 'type', 'bridge_slave', 'dev', device)
        return int(value_of('Forwarding:', printed))

    def shown_status(self):
        status = self.status()
        names = {port.number: port.name for port in status.ports.values()}
        root = f'root port {names[status.root_port]}, cost {status.root_cost}' if status.root_port else 'the root itself'
        heading = f'bridge {status.bridge_id}, root {status.root_id}: {root}'
        return heading, ['Port', 'No', 'State', 'Cost', 'Designated bridge', 'Port id', 'root_block'], [
            [port.name, port.number, port.state if port.has_link else 'no link', port.cost, port.designated_bridge,
             f'{port.designated_port:04x}', 'on' if port.root_block else 'off'] for port in status.ports.values()]

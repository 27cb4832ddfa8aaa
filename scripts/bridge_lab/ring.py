"""A ring of three bridges, a, b and c, each in a namespace of its own. Their ports have the names of who is at the
other end. Bridge a is the root, and c blocks its port to b. Bridges of the kernel have a guest as well, a fourth bridge
behind a port of a that has root guard."""

import json
import time
from pathlib import Path

from .linux_bridge import LinuxBridge
from .namespaces import LabError, Namespace, connect
from .openvswitch import OpenVSwitch, OpenVSwitchBridge

PRIORITIES = {'a': 4096, 'b': 8192, 'c': 12288}
LINKS = [('a', 'b'), ('a', 'c'), ('b', 'c')]
GUEST, GUARDIAN = 'guest', 'a'
GUEST_PRIORITY, BETTER_PRIORITY = 61440, 0
# A ring has converged within 9 s on a machine at ease.
CONVERGENCE_SECONDS = 30
# How long all ports may forward.
LOOP_SECONDS = 1
POLL_SECONDS = 0.1


class NothingBlocks(LabError):
    """The bridges do not hear each other: the ring is a loop, or about to become one."""


def port_to(name):
    return f'to-{name}'


class Ring:
    """One that exists, as anybody finds it who knows how to enter its namespaces."""

    def __init__(self, kind, bridges):
        self.kind = kind
        self.bridges = bridges  # by name, the guest among them

    @property
    def names(self):
        """Of the bridges that make the ring."""
        return list(PRIORITIES)

    def bridge(self, name):
        if name not in self.bridges:
            raise LabError(f"there is no bridge '{name}': {', '.join(self.bridges)}")
        return self.bridges[name]

    def _set_link(self, one, other, state):
        end = self.bridge(one)
        self.bridge(other)
        try:
            end.namespace.ip('link', 'set', port_to(other), state)
        except LabError:
            raise LabError(f'there is no link from {one} to {other}') from None

    def pull(self, one, other):
        """Both ends lose the link."""
        self._set_link(one, other, 'down')

    def restore(self, one, other):
        self._set_link(one, other, 'up')

    def _guest(self):
        if GUEST not in self.bridges:
            raise LabError('only bridges of the kernel have root guard')
        return self.bridges[GUEST]

    def better_root(self):
        """Behind the port with root guard."""
        self._guest().set_priority(BETTER_PRIORITY)

    def no_better_root(self):
        self._guest().set_priority(GUEST_PRIORITY)

    def all_ports(self):
        return [port for bridge in self.bridges.values() for port in bridge.status().ports.values()]

    def wait_until_one_blocks(self, seconds=CONVERGENCE_SECONDS):
        """And all others forward. A ring where all keep forwarding is a loop: there is nothing more to wait for."""
        give_up = time.monotonic() + seconds
        loop_since = None
        while True:
            ports = self.all_ports()
            blocking = sum(port.blocks for port in ports)
            forwarding = sum(port.forwards for port in ports)
            if (blocking, forwarding) == (1, len(ports) - 1):
                return
            now = time.monotonic()
            is_loop = forwarding == len(ports) >= 2 * len(LINKS)
            loop_since = (loop_since or now) if is_loop else None
            if now > give_up or (is_loop and now > loop_since + LOOP_SECONDS):
                raise NothingBlocks('no port of the ring blocks: the bridges do not hear each other here')
            time.sleep(POLL_SECONDS)

    def describe(self):
        """For load()."""
        return json.dumps({'kind': self.kind, 'bridges': {name: {
            'holder': bridge.namespace.holder_pid, 'enter': bridge.namespace.enter,
            'folder': str(bridge.switch.folder) if self.kind == 'openvswitch' else None}
            for name, bridge in self.bridges.items()}})

    @staticmethod
    def load(description):
        known = json.loads(description)
        bridges = {}
        for name, how in known['bridges'].items():
            namespace = Namespace(how['holder'], how['enter'])
            bridges[name] = (OpenVSwitchBridge(OpenVSwitch(namespace, how['folder'])) if how['folder']
                             else LinuxBridge(namespace))
        return Ring(known['kind'], bridges)


class OwnRing(Ring):
    """The same for who makes it: everything is gone on exit."""

    def __init__(self, kind, namespaces, folder):
        """`folder`: for the files of Open vSwitch."""
        super().__init__(kind, {})
        self._namespaces = namespaces
        self._switches = []
        self._folder = Path(folder)

    def __enter__(self):
        try:
            for name in PRIORITIES:
                self.bridges[name] = self._make_bridge(name, PRIORITIES[name])
            if self.kind == 'linux':
                self._make_guest()
            for one, other in LINKS:
                self._link(one, other)
        except BaseException:
            self.remove()
            raise
        return self

    def __exit__(self, *_):
        self.remove()

    def _make_bridge(self, name, priority):
        namespace = self._namespaces.make()
        if self.kind == 'linux':
            bridge = LinuxBridge(namespace)
        else:
            switch = OpenVSwitch(namespace, self._folder / name)
            self._switches.append(switch)
            switch.start()
            bridge = OpenVSwitchBridge(switch)
        bridge.create(priority)
        return bridge

    def _link(self, one, other):
        ends = self.bridges[one], self.bridges[other]
        connect(ends[0].namespace, port_to(other), ends[1].namespace, port_to(one))
        ends[0].add_port(port_to(other))
        ends[1].add_port(port_to(one))

    def _make_guest(self):
        self.bridges[GUEST] = self._make_bridge(GUEST, GUEST_PRIORITY)
        self._link(GUARDIAN, GUEST)
        self.bridges[GUARDIAN].set_port(port_to(GUEST), 'root_block', 'on')

    def remove(self):
        """The links first, so that there is no ring any more, whatever else takes its time."""
        for one, other in LINKS:
            try:
                self.pull(one, other)
            except LabError:
                pass  # it was not there yet
        for switch in self._switches:
            switch.stop()
        self._namespaces.close()

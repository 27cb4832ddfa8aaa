"""The module's three notification classes, and a lab whose agent sends them to a receiver."""

from contextlib import contextmanager
from typing import NamedTuple

from .build import ROOT
from .lab import run_lab
from .polling import wait_until
from .snmp_tools import Binding
from .traps import TRAPS, Trap

SPANNING_TREE_TYPE = ROOT + '.1.6.1'
MST, RAPID_PVST = 4, 5
APPEARED, VANISHED = 1, 2

# Where scenarios/traps.toml has the port that only markers use: its key, its bridge port number, its VLANs.
MARKER_PORT = 'port.3'
MARKER_BRIDGE_PORT = 131
FIRST_MARKER_TREE, LAST_MARKER_TREE = 3001, 4000
SOON_SECONDS = 0.1


class NotificationClass(NamedTuple):
    number: int
    key: str   # of an interface in a scenario: the trees in which it is inconsistent so
    trap: str
    column: str
    word: str  # that enables this class alone

    def state(self, tree, bridge_port):
        """The OID of the first binding."""
        return f'{self.column}.{tree}.{bridge_port}'


ROOT_CLASS = NotificationClass(17423, 'root_inconsistent', f'{TRAPS}.2', ROOT + '.1.5.2.1.3', '1')
LOOP_CLASS = NotificationClass(17422, 'loop_inconsistent', f'{TRAPS}.3', ROOT + '.1.8.2.1.3', '2')
PORT_CLASS = NotificationClass(17421, 'pvid_inconsistent', f'{TRAPS}.1', ROOT + '.1.3.1.1.3', '4')
CLASSES = {'root': ROOT_CLASS, 'loop': LOOP_CLASS, 'port': PORT_CLASS}
ALL_ENABLED = '7'


def guard_trap(noti, tree, bridge_port, state, tree_type=RAPID_PVST):
    """Of the root or the loop class."""
    return Trap(noti.trap, [Binding(noti.state(tree, bridge_port), 'INTEGER', state),
                            Binding(SPANNING_TREE_TYPE, 'INTEGER', tree_type)])


def port_trap(tree, bridge_port, bits):
    return Trap(PORT_CLASS.trap, [Binding(PORT_CLASS.state(tree, bridge_port), 'OCTET STRING', bits)])


class Markers:
    """Inconsistencies of a port of their own, each in another tree. The switch tells of one thing after
    another: when a marker's trap is there, everything that was to be sent before it is there, too."""

    def __init__(self, lab, receiver):
        self._lab = lab
        self._receiver = receiver
        self._noti = ROOT_CLASS
        self._tree = FIRST_MARKER_TREE

    def use(self, noti):
        self._noti = noti

    def _set_next(self):
        """Another tree than those of the markers before, and after the last one the first again. Returns its OID."""
        self._tree = self._tree + 1 if self._tree < LAST_MARKER_TREE else FIRST_MARKER_TREE
        self._lab.switch.set(f'{MARKER_PORT}.{self._noti.key}', str(self._tree))
        return self._noti.state(self._tree, MARKER_BRIDGE_PORT)

    def _has_arrived(self, oids, known):
        """Whether a marker is among the traps behind those that were known before it was set."""
        return any(trap.bindings[0].oid in oids for trap in self._receiver.received()[known:] if trap.bindings)

    def wait_until_connected(self):
        """The agent subscribes at a time of its own: until then, nobody hears of a marker."""
        known = len(self._receiver.received())
        oids = []

        def one_arrives():
            oids.append(self._set_next())
            try:
                return wait_until(lambda: self._has_arrived(oids, known), 'a marker has arrived', SOON_SECONDS)
            except AssertionError:
                return False

        wait_until(one_arrives, 'traps arrive')
        wait_until(lambda: self._has_arrived(oids[-1:], known), 'the newest marker has arrived')

    def set_and_wait(self):
        known = len(self._receiver.received())
        oid = self._set_next()
        wait_until(lambda: self._has_arrived([oid], known), 'the marker has arrived')


class TrapLab:
    """A lab, who receives its traps, and what has been received since the last look."""

    def __init__(self, lab, receiver):
        self._lab = lab
        self.switch = lab.switch
        self.agent = lab.agent
        self.snmp = lab.snmp
        self.check = lab.check
        self.raw_client = lab.raw_client
        self._receiver = receiver
        self._markers = Markers(lab, receiver)
        self._seen = 0

    def reset(self, noti=ROOT_CLASS, trap_word=None):
        """As it was started: the switch in its scenario, the module loaded anew with this trap word, if any, and no
        trap on its way. `noti` is an enabled class: the markers are of this one."""
        if trap_word is not None:
            self.agent.write_trap_word(trap_word)
        self._lab.reset()
        self._markers.use(noti)
        self.wait_until_connected()

    def wait_until_connected(self):
        """After this, no trap is on its way. Returns those that came meanwhile."""
        self._markers.wait_until_connected()
        return self._take()

    def new_traps(self):
        """All that the switch has caused since the last look."""
        self._markers.set_and_wait()
        return self._take()

    def _take(self):
        received = self._receiver.received()
        new, self._seen = received[self._seen:], len(received)
        return [trap for trap in new if not trap.is_of(MARKER_BRIDGE_PORT)]


@contextmanager
def run_trap_lab(receiver, **agent_options):
    with run_lab('traps.toml', trap_endpoint=receiver.endpoint, **agent_options) as lab:
        yield TrapLab(lab, receiver)

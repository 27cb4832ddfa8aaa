"""Everything at once, again and again: managers walk while the switch changes, fails, hangs and comes back, modules go
and come, traps storm, and strangers send what they like. Each round ends in a state that has to be right."""

import socket
from contextlib import ExitStack, contextmanager

import golden
import pytest
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION, SHORT_DEADLINE_MS
from harness.build import BRIDGE_ROOT, ROOT
from harness.dlmod import load, loaded, unload
from harness.lab import run_lab
from harness.notifications import ALL_ENABLED, APPEARED, MST, ROOT_CLASS, VANISHED, guard_trap
from harness.polling import wait_until
from harness.raw_snmp import GET_BULK, encode_oid, encode_request
from harness.repetition import Repetition
from harness.snmp_tools import Binding, Failure, v3
from harness.soak import Usage, manager, soak
from harness.traps import TrapCollector

MAX_HOP_COUNT = ROOT + '.1.14.8.0'
INSTANCE = 'mst-1'  # whose tree has a context
# Of a walk by BRIDGE-MIB, what is not the same each time: time since the latest topology change, number of these.
TOPOLOGY_CHANGES = (f'{BRIDGE_ROOT}.2.3.0', f'{BRIDGE_ROOT}.2.4.0', f'{BRIDGE_ROOT}.2.15.1.10')

# The agent would keep the latest thousand traps (NOTIFICATION-LOG-MIB), some 12 KiB each: that it does not grow would not
# show before.
CONFIGURATION = f'{MODULE_CONFIGURATION}{BRIDGE_CONFIGURATION}doNotRetainNotificationLogs yes\n'

REPETITIONS = 20

STORM_CHANGES = 40
STRANGE_CLIENTS = 80  # more than may be connected
STRANGE_PACKETS = 200
LARGEST_PACKET = 300


def drop_changing(bindings):
    return [binding for binding in bindings if not binding.oid.startswith(TOPOLOGY_CHANGES)]


class SoakedLab:
    def __init__(self, lab, collector):
        self._lab = lab
        self._switch, self._agent = lab.switch, lab.agent
        self._collector = collector
        self.usage = None
        lab.wait_for_context(v3('alice', INSTANCE), f'{BRIDGE_ROOT}.2.1.0')
        self._bridge_walk = drop_changing(lab.snmp.bulk_walk(BRIDGE_ROOT))
        self._tree_walk = drop_changing(lab.snmp.bulk_walk(BRIDGE_ROOT, who=v3('alice', INSTANCE)))
        self._warm_up()
        self.come_to_rest()
        self.usage = Usage(lab)

    def _warm_up(self):
        """The agent opens some files of its own at the first walk that comes to what is behind ours, and keeps them."""
        with self.managers() as walks:
            for walk in walks.values():
                walk.wait_for_more()

    def troubles(self):
        return [self.change, self.storm, self.spoil_replies, self.delay_replies, self.hang_switch, self.end_switch,
                self.kill_switch, self.reload_agent, self.reload_a_module, self.crowd_the_switch, self.talk_nonsense,
                self.send_strange_packets]

    @contextmanager
    def managers(self):
        """One by GETNEXT, one by GETBULK, one in the context of a tree. Names how many walks each has done."""
        with ExitStack() as stack:
            yield {ROOT: stack.enter_context(manager(self._lab, ROOT)),
                   BRIDGE_ROOT: stack.enter_context(manager(self._lab, BRIDGE_ROOT, REPETITIONS)),
                   INSTANCE: stack.enter_context(Repetition(self._walk_tree))}

    def _walk_tree(self):
        walked = self._lab.snmp.bulk_walk(BRIDGE_ROOT, who=[*v3('alice', INSTANCE), '-t', '1', '-r', '3'])
        # A request in a context that is not there, as after a reload, is not answered.
        assert not isinstance(walked, Failure) or 'Timeout' in walked.reason, walked

    def change(self, choice):
        settings = [('mst.max_hops', choice.randint(6, 40)), ('mst.region', choice.choice(['a', 'ops-lab', 'x' * 32])),
                    ('port.1.link', choice.choice(['up', 'down'])), ('port.2.channel', choice.choice([0, 5, 9])),
                    ('port.300.switchport', choice.choice(['true', 'false'])),
                    ('mst.instance.64.vlans', choice.choice(['', '5', '3000-3100'])),
                    ('switch.mode', choice.choice(['mst', 'rapid-pvst']))]
        for key, value in choice.sample(settings, len(settings)):
            self._switch.set(key, str(value))

    def storm(self, choice):
        for _ in range(STORM_CHANGES):
            self._switch.set(f'port.{choice.choice([1, 300])}.root_inconsistent',
                             choice.choice(['', '0', '0-2', '1-2']))

    def spoil_replies(self, choice):
        self._switch.fault(choice.choice(['drop', 'garbage', 'disconnect']), count=choice.randint(1, 3))
        self._lab.snmp.walk(ROOT)
        self._switch.fault('none')

    def delay_replies(self, choice):
        self._switch.fault('delay', delay_ms=choice.choice([50, 300, 2 * SHORT_DEADLINE_MS]), count=2)
        self._lab.snmp.walk(f'{ROOT}.1.11')
        self._switch.fault('none')

    def hang_switch(self, _choice):
        self._switch.hang()
        wait_until(lambda: self._is_gone(MAX_HOP_COUNT), 'the lease is over')
        self._switch.resume()

    def _is_gone(self, oid):
        [answered] = self._lab.snmp.get(oid)
        return answered == Binding(oid, 'noSuchInstance')

    def end_switch(self, _choice):
        self._switch.stop()
        assert self._is_gone(MAX_HOP_COUNT)
        self._switch.start()

    def kill_switch(self, _choice):
        self._switch.kill()
        self._switch.start()

    def reload_agent(self, _choice):
        self._agent.hang_up()

    def reload_a_module(self, choice):
        module = choice.choice(loaded(self._lab.snmp))
        with self._lab.raw_client('private') as client:
            unload(client, module)
            load(client, module)

    def crowd_the_switch(self, choice):
        """With clients that say nothing, or something that is no message, and hang up."""
        for path in (self._switch.socket, self._switch.control_socket):
            kind = socket.SOCK_SEQPACKET if path == self._switch.socket else socket.SOCK_STREAM
            with ExitStack() as stack:
                for _ in range(STRANGE_CLIENTS):
                    client = stack.enter_context(socket.socket(socket.AF_UNIX, kind))
                    client.setblocking(False)
                    try:
                        client.connect(str(path))
                        client.send(choice.randbytes(choice.randint(1, LARGEST_PACKET)))
                    except OSError:
                        pass  # there are too many, or the switch has closed it
        wait_until(self._switch_has_room, 'the switch serves its control program again')

    def _switch_has_room(self):
        try:
            with self._switch.control_client() as control:
                control.ping()
        except (BlockingIOError, BrokenPipeError, ConnectionResetError, AssertionError):
            return False  # it has yet to see that others have gone
        return True

    def talk_nonsense(self, choice):
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
            client.connect(str(self._switch.control_socket))
            client.sendall(b'{"op":"set","key":"mst.max_hops","value":"99999"}\n' + choice.randbytes(20) + b'\n[]\n')
            assert client.recv(1)

    def send_strange_packets(self, choice):
        host, port = self._agent.endpoint.split(':')
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            for _ in range(STRANGE_PACKETS):
                name = encode_oid(choice.choice([ROOT, BRIDGE_ROOT]))
                packet = bytearray(encode_request(GET_BULK, name, numbers=(0, REPETITIONS)))
                for _ in range(choice.randint(1, 3)):
                    packet[choice.randrange(len(packet))] = choice.randrange(256)
                client.sendto(packet, (host, int(port)))

    def come_to_rest(self):
        """As it was in the beginning. Traps arrive before the agent gets a module that remembers nothing."""
        self._switch.reset()
        self._wait_for_a_trap()
        self._lab.reset()
        self._lab.wait_for_walk(golden.MST)
        wait_until(self._walks_are_back, 'walks by the standard objects are as in the beginning')
        if self.usage:
            self.usage.check_at_rest()

    def _walks_are_back(self):
        tree = self._lab.snmp.bulk_walk(BRIDGE_ROOT, who=[*v3('alice', INSTANCE), '-t', '1'])
        return (not isinstance(tree, Failure) and drop_changing(tree) == self._tree_walk
                and drop_changing(self._lab.snmp.bulk_walk(BRIDGE_ROOT)) == self._bridge_walk)

    def _wait_for_a_trap(self):
        """The agent subscribes at a time of its own: the inconsistency comes and goes until it is told of."""
        traps = [guard_trap(ROOT_CLASS, 2, golden.bridge_port(1), state, MST) for state in (APPEARED, VANISHED)]
        known = len(self._collector.received())

        def is_told():
            self._switch.set('port.1.root_inconsistent', '1')
            self._switch.set('port.1.root_inconsistent', '1-2')
            return [trap for trap in self._collector.received()[known:] if trap in traps]

        wait_until(is_told, 'traps arrive')


@pytest.mark.usefixtures('private_mount')
def test_everything_is_right_and_nothing_grows_after_all_kinds_of_trouble(capsys):
    with TrapCollector() as collector, \
            run_lab('mst.toml', serves=CONFIGURATION, with_probe=False, deadline_ms=SHORT_DEADLINE_MS,
                    trap_endpoint=collector.endpoint, trap_word=ALL_ENABLED) as lab:
        soaked = SoakedLab(lab, collector)
        troubles = soaked.troubles()
        with soaked.managers() as walks:
            rounds = soak(troubles, soaked.come_to_rest, seed=17)
        assert all(walk.count for walk in walks.values())
        soaked.usage.check_growth(rounds * len(troubles))
        done = ', '.join(f'{walk.count} of {what}' for what, walk in walks.items())
        with capsys.disabled():
            print(f'\n{rounds} rounds of {len(troubles)} troubles; walks: {done}; '
                  f'{len(collector.received())} traps; {soaked.usage.figures()}')

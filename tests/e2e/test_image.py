"""Answers from the switch's image in the agent's process: none that the switch does not vouch for any more, none of an
earlier switch, none that a fault should have spoilt, and none missing while the image grows."""

import fcntl
import os
import re
import socket
import struct
import subprocess
import threading
from contextlib import ExitStack, contextmanager
from pathlib import Path

import golden
import pytest
from harness.agent import SHORT_DEADLINE_MS
from harness.build import PROJECT, ROOT, SCENARIOS
from harness.lab import run_lab
from harness.oids import arcs, is_below
from harness.polling import GUARD_SECONDS, wait_until
from harness.questions import CountedAgent
from harness.raw_snmp import make_binding
from harness.repetition import Repetition
from harness.switch import Switch, playing

MAX_HOP_COUNT = ROOT + '.1.14.8.0'
ROWS_OF_A_REQUEST = 50


@contextmanager
def generated_lab(directory, *arguments, **options):
    scenario = directory / 'generated.toml'
    scenario.write_bytes(subprocess.run([PROJECT / 'scenarios/generate', '--mode', 'rapid-pvst', *arguments],
                                        check=True, capture_output=True, timeout=GUARD_SECONDS).stdout)
    with run_lab(scenario, **options) as lab:
        yield lab
        lab.check()


def rows_of(exchange, column):
    """The bindings of a GETBULK that are rows of the column."""
    assert exchange.error_status == 0
    return [make_binding(*variable) for variable in exchange.variables if is_below(variable[0], column)]


def walk(client, column):
    """By GETBULK, as far as rows come. Also checks that they ascend."""
    rows = []
    oid = column
    while True:
        found = rows_of(client.get_bulk(oid, ROWS_OF_A_REQUEST), column)
        for binding in found:
            assert arcs(binding.oid) > arcs(oid), f'{binding.oid} follows {oid}'
            oid = binding.oid
        rows += found
        if len(found) < ROWS_OF_A_REQUEST:
            return rows


def test_switch_that_is_stopped_in_the_middle_of_a_walk_is_not_served_until_it_goes_on(tmp_path):
    with generated_lab(tmp_path, '--ports', '24', '--vlans', '20', deadline_ms=SHORT_DEADLINE_MS) as lab, \
            lab.raw_client() as client:
        everything = walk(client, golden.PORT_ROLE)
        middle = everything[len(everything) // 2].oid
        assert len(rows_of(client.get_bulk(middle, ROWS_OF_A_REQUEST), golden.PORT_ROLE)) == ROWS_OF_A_REQUEST
        lab.switch.hang()
        # For what is left of its lease, the image counts.
        wait_until(lambda: client.get(MAX_HOP_COUNT).exception, 'the lease is over')
        for _ in range(3):
            assert rows_of(client.get_bulk(middle, ROWS_OF_A_REQUEST), golden.PORT_ROLE) == []
            assert client.get(MAX_HOP_COUNT).exception == 'noSuchInstance'
        lab.switch.resume()
        lab.switch.set('mst.max_hops', '33')
        wait_until(lambda: client.get(MAX_HOP_COUNT).number == 33, 'the switch is served again, as it is now')
        wait_until(lambda: walk(client, golden.PORT_ROLE) == everything, 'the whole walk is served again')


def test_slow_switch_is_asked_no_more_of_a_request_than_one_deadline_has_time_for(tmp_path):
    delay_ms = 300
    most_questions = SHORT_DEADLINE_MS // delay_ms + 1
    with generated_lab(tmp_path, '--ports', '24', '--vlans', '20', deadline_ms=SHORT_DEADLINE_MS,
                       agent_class=CountedAgent, with_probe=False) as lab, lab.raw_client() as client:
        everything = walk(client, golden.PORT_ROLE)
        middle = everything[len(everything) // 2].oid
        lab.switch.fault('delay', delay_ms=delay_ms)
        for _ in range(3):
            # The switch is left alone for a while where it was too slow for the request before.
            wait_until(lambda: not client.get(MAX_HOP_COUNT).exception, 'the switch is asked again')
            questions, exchange = lab.agent.questions_of(lambda: client.get_bulk(middle, ROWS_OF_A_REQUEST))
            assert 0 < questions <= most_questions
            assert len(rows_of(exchange, golden.PORT_ROLE)) < most_questions
        lab.switch.fault('none')
        wait_until(lambda: walk(client, golden.PORT_ROLE) == everything, 'the whole walk is served again')


@pytest.mark.parametrize('end', ['stop', 'kill'])
def test_restarted_switch_is_served_as_it_is_now_from_the_moment_it_is_ready(end):
    values = {'mst.toml': 25, 'rapid-pvst.toml': 20}
    with run_lab('mst.toml') as lab, lab.raw_client() as client:
        directory = lab.switch.socket.parent
        for file in 5 * ['rapid-pvst.toml', 'mst.toml']:
            [other] = values.keys() - {file}
            assert client.get(MAX_HOP_COUNT).number == values[other]
            getattr(lab.switch, end)()
            lab.switch = Switch(directory, playing(SCENARIOS / file))
            lab.switch.start()
            try:
                answers = []
                wait_until(lambda: answers.append(client.get(MAX_HOP_COUNT)) or not answers[-1].exception,
                           'the new switch is served')
                assert answers[-1].number == values[file]
            except BaseException:
                lab.switch.kill()
                raise
        lab.check()
        # The lab ends the switch that it knows.
        lab.switch.stop()


# Of a message (platform/wire/message.h): magic, version, type, length, sequence; and of a hello, the image's size.
HELLO = struct.Struct('=IHHIII')
# Where in the image its version stands (platform/wire/image.h).
VERSION = struct.Struct('=I')
VERSION_OFFSET = 4


class SwitchOfAnotherVersion:
    """Greets as a switch does whose image has been laid out otherwise, and says nothing else."""

    def __init__(self, path, hello, image):
        self._hello = hello
        self._image = os.memfd_create('other-image', os.MFD_ALLOW_SEALING)
        with open(self._image, 'wb', closefd=False) as file:
            file.write(image)
        fcntl.fcntl(self._image, fcntl.F_ADD_SEALS, fcntl.F_SEAL_SHRINK | fcntl.F_SEAL_GROW | fcntl.F_SEAL_WRITE)
        path.unlink(missing_ok=True)
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self._listener.bind(str(path))
        self._listener.listen()
        self.greeted = 0
        self._connections = []
        self._thread = threading.Thread(target=self._greet)
        self._thread.start()

    def _greet(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return  # it was shut down
            self._connections.append(connection)
            self.greeted += 1
            try:
                socket.send_fds(connection, [self._hello], [self._image])
            except OSError:
                pass  # the agent did not wait so long

    def close(self):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        for each in (*self._connections, self._listener):
            each.close()
        os.close(self._image)


def record_greeting(path):
    """What the real switch sends, and its image."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as client:
        client.connect(str(path))
        hello, [image], _, _ = socket.recv_fds(client, HELLO.size, 1)
    try:
        return hello, os.pread(image, HELLO.unpack(hello)[-1], 0)
    finally:
        os.close(image)


@pytest.mark.parametrize('difference, older', [(1, 'agent'), (-1, 'switch')])
def test_switch_of_another_version_is_told_of_once_and_never_served(difference, older):
    with run_lab('mst.toml', deadline_ms=SHORT_DEADLINE_MS) as lab:
        assert lab.snmp.walk(ROOT) == golden.MST
        hello, image = record_greeting(lab.switch.socket)
        [version] = VERSION.unpack_from(image, VERSION_OFFSET)
        image = bytearray(image)
        VERSION.pack_into(image, VERSION_OFFSET, version + difference)
        lab.switch.stop()
        other = SwitchOfAnotherVersion(lab.switch.socket, hello, image)
        try:
            wait_until(lambda: lab.snmp.walk(ROOT) == golden.CONSTANTS and other.greeted > 3,
                       'the agent has asked several times')
        finally:
            other.close()
        lab.switch.socket.unlink()
        line = (f'stpplatform: {lab.switch.socket}: the image has version {version + difference}, and the agent reads '
                f'version {version}: restart the {older}, which is older\n')
        assert lab.agent.count_in_log(line) == 1
        assert lab.agent.count_in_log('the image has version') == 1
        lab.switch.start()
        lab.wait_for_walk(golden.MST)
        assert lab.agent.count_in_log('the switch answers again') == 1
        lab.check()


def mapped_images(agent):
    """The inodes of the images that the agent has mapped."""
    maps = Path(f'/proc/{agent.pid}/maps').read_text(encoding='utf-8')
    return {int(inode) for inode in re.findall(r' (\d+) +/memfd:stp-switch-image', maps)}


@contextmanager
def walking_roles(lab):
    """Walks the ports' roles again and again meanwhile: the names that each walk found."""
    walks = []
    with lab.raw_client() as client, Repetition(lambda: walks.append([row.oid for row in walk(client, golden.PORT_ROLE)])):
        yield walks


def test_image_that_grows_beyond_its_room_under_many_walks_loses_and_doubles_no_row(tmp_path):
    ports, trees, more_trees, clients = 24, 5, 720, 4
    with generated_lab(tmp_path, '--ports', str(ports), '--channels', '0', '--vlans', str(trees)) as lab, \
            lab.raw_client() as client, lab.switch.control_client() as control:
        for port in range(1, ports + 1):
            control.set(f'port.{port}.link', 'up')
            control.set(f'port.{port}.vlans', f'1-{trees}')
            for kind in ('root', 'loop', 'pvid'):
                control.set(f'port.{port}.{kind}_inconsistent', '1-4094')
        # Reading its configuration anew, the agent forgets which bridge ports there were.
        lab.agent.hang_up()
        before = [row.oid for row in walk(client, golden.PORT_ROLE)]
        assert len(before) == ports * trees
        [first_image] = mapped_images(lab.agent)
        with ExitStack() as stack:
            walked = [stack.enter_context(walking_roles(lab)) for _ in range(clients)]
            for port in range(1, ports + 1):
                control.set(f'port.{port}.vlans', f'1-{trees},101-{100 + more_trees}')
        control.set('mst.max_hops', '33')
        assert client.get(MAX_HOP_COUNT).number == 33
        [last_image] = mapped_images(lab.agent)
        assert last_image != first_image
        lab.agent.hang_up()
        assert len(walk(client, golden.PORT_ROLE)) == ports * (trees + more_trees)
        for walks in walked:
            assert walks
            for oids in walks:
                assert oids[:len(before)] == before


def test_what_an_operator_sets_is_what_the_next_request_shows(lab):
    with lab.raw_client() as client, lab.switch.control_client() as control:
        for hops in range(200):
            value = 6 + hops % 35
            control.set('mst.max_hops', str(value))
            assert client.get(MAX_HOP_COUNT).number == value


def test_fault_takes_effect_with_the_next_request_and_ends_when_it_ends():
    """One that spoils nothing, so that the agent does not leave the switch alone: that the switch is asked shows it."""
    with run_lab('mst.toml', agent_class=CountedAgent, with_probe=False) as lab, \
            lab.raw_client() as client, lab.switch.control_client() as control:
        for value in range(6, 26):
            control.fault('delay', delay_ms=1)
            questions, answer = lab.agent.questions_of(lambda: client.get(MAX_HOP_COUNT))
            assert (questions, answer.exception) == (1, None)
            control.fault('none')
            control.set('mst.max_hops', str(value))
            assert client.get(MAX_HOP_COUNT).number == value
        lab.check()


@pytest.mark.parametrize('kind', ['drop', 'garbage', 'disconnect'])
def test_fault_of_one_reply_spoils_the_next_request_alone(impatient_lab, kind):
    lab = impatient_lab
    with lab.raw_client() as client:
        for value in range(6, 10):
            lab.switch.fault(kind, count=1)
            assert client.get(MAX_HOP_COUNT).exception == 'noSuchInstance'
            lab.switch.set('mst.max_hops', str(value))
            answers = []
            wait_until(lambda: answers.append(client.get(MAX_HOP_COUNT)) or not answers[-1].exception,
                       'the switch is asked again')
            assert answers[-1].number == value

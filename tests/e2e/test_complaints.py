"""What users of other agents and of subagents complain of, one test for each complaint: none of it happens here."""

import random
import socket

import golden
import pytest
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION, SHORT_DEADLINE_MS
from harness.build import BRIDGE_ROOT, ROOT
from harness.lab import run_lab
from harness.oids import arcs, is_below
from harness.polling import wait_until
from harness.raw_snmp import EXCEPTIONS, GET, GET_BULK, GET_NEXT, OCTETS, OID, encode, encode_oid, encode_request
from harness.repetition import Repetition
from harness.snmp_tools import Binding
from harness.traps import SYS_UP_TIME

MAX_HOP_COUNT = ROOT + '.1.14.8.0'
PORT_STATE = f'{BRIDGE_ROOT}.2.15.1.3'
TOPOLOGY_CHANGES = f'{BRIDGE_ROOT}.2.4.0'
ROOTS = (ROOT, BRIDGE_ROOT)

END_OF_MIB_VIEW = {kind: tag for tag, kind in EXCEPTIONS.items()}['endOfMibView']
FIRST_CHANNEL = 4097  # as a bridge port number
SHORTEST_NAME, LONGEST_NAME = 2, 128      # of a name's numbers (RFC 3416 clause 4.1)
# Of an index of the extension module the low 16 bits count.
LARGER_NUMBERS = [65536, 65537, 2**31, 2**32 - 2, 2**32 - 1]
RANDOM_NAMES = 3000
REQUESTS_MEANWHILE = 200


@pytest.fixture(name='shared_lab', scope='module')
def fixture_shared_lab():
    with run_lab('mst.toml', serves=MODULE_CONFIGURATION + BRIDGE_CONFIGURATION, with_probe=False,
                 deadline_ms=SHORT_DEADLINE_MS) as lab:
        yield lab


@pytest.fixture(name='lab')
def fixture_lab(shared_lab):
    shared_lab.reset()
    yield shared_lab
    shared_lab.check()


def test_agent_answers_others_while_what_it_asks_hangs(lab):
    lab.wait_for_walk(golden.MST)
    lab.switch.hang()
    wait_until(lambda: lab.snmp.get(MAX_HOP_COUNT) == [Binding(MAX_HOP_COUNT, 'noSuchInstance')], 'the lease is over')
    walked = []
    with Repetition(lambda: walked.append(lab.snmp.bulk_walk(ROOT))) as walks, lab.raw_client() as client:
        times = [client.get(SYS_UP_TIME).number for _ in range(REQUESTS_MEANWHILE)]
        walks.wait_for_more(2)
    assert times == sorted(times)
    assert all(walk == golden.CONSTANTS for walk in walked)
    lab.switch.resume()
    lab.wait_for_walk(golden.MST)


def named(numbers):
    return ''.join(f'.{number}' for number in numbers)


def changed_name(name, numbers):
    """Cut, lengthened, or with another number somewhere."""
    name = name[:numbers.randint(SHORTEST_NAME, len(name))] if numbers.random() < 0.3 else list(name)
    likely = [0, 1, 127, 128, 129, 255, 256, 4095, 4096, 4097, 65535]
    if is_below(named(name), BRIDGE_ROOT):
        likely += LARGER_NUMBERS
    for _ in range(numbers.randint(0, 3)):
        place = numbers.randint(min(len(arcs(BRIDGE_ROOT)), len(name)), len(name))
        name[place:place + numbers.randint(0, 1)] = [numbers.choice(likely)]
    if numbers.random() < 0.02:
        name += [numbers.choice(likely)] * (LONGEST_NAME - len(name))
    return name


def test_getnext_goes_on_from_any_name(lab):
    numbers = random.Random(207)
    served = [arcs(binding.oid) for root in ROOTS for binding in lab.snmp.bulk_walk(root)]
    ends = 0
    with lab.raw_client() as client:
        for _ in range(RANDOM_NAMES):
            asked = changed_name(numbers.choice(served), numbers)
            exchange = client.get_next(named(asked))
            [(answered, tag, _value)] = exchange.variables
            assert exchange.error_status == 0
            assert arcs(answered) > asked or tag == END_OF_MIB_VIEW, f'{answered} behind {named(asked)}'
            ends += tag == END_OF_MIB_VIEW
    assert ends < RANDOM_NAMES


def malformed_names():
    for root in ROOTS:
        content = encode_oid(root)[2:]
        yield encode(OID, b'')
        yield encode(OID, content + b'\x81')                      # a number that does not end
        yield encode(OID, content + b'\x8f\xff\xff\xff\x7f')      # the largest
        yield encode(OID, content + b'\x90\x80\x80\x80\x00')      # one more
        yield encode(OID, content + b'\xff' * 40 + b'\x7f')
        yield encode(OID, content + b'\x80\x80\x01')              # zeros in front
        yield encode(OID, content + b'\x01' * (LONGEST_NAME - len(arcs(root))))
        yield encode(OID, content + b'\x01' * (LONGEST_NAME - len(arcs(root)) + 1))
        yield encode(OID, content + b'\x01' * 1200)
        yield encode(OCTETS, content)
        for length in (b'\x00', b'\x7f', b'\x80', b'\x81', b'\x84\xff\xff\xff\xff', b'\x84\x7f\xff\xff\xff',
                       b'\x88' + b'\xff' * 8):
            yield bytes([OID]) + length + content


def test_agent_survives_malformed_names(lab):
    host, port = lab.agent.endpoint.split(':')
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender, lab.raw_client() as client:
        for name in malformed_names():
            for kind in (GET, GET_NEXT, GET_BULK):
                sender.sendto(encode_request(kind, name, numbers=(0, 10 if kind == GET_BULK else 0)), (host, int(port)))
                assert client.get(SYS_UP_TIME).exception is None, (hex(kind), name.hex())
        assert client.get(MAX_HOP_COUNT).number == 25


def test_table_goes_on_behind_a_row_that_is_missing(lab):
    rows = lab.snmp.walk(PORT_STATE)
    single = [port for port in (arcs(row.oid)[-1] for row in rows) if port < FIRST_CHANNEL]
    assert len(single) > 2
    for bridge_port in single:
        number = bridge_port - golden.bridge_port(0)
        lab.switch.set(f'port.{number}.switchport', 'false')
        assert lab.snmp.walk(PORT_STATE) == [row for row in rows if row.oid != f'{PORT_STATE}.{bridge_port}']
        lab.switch.reset()
    assert lab.snmp.walk(PORT_STATE) == rows


def test_counters_are_the_same_after_a_restart_of_the_agent(lab):
    def count():
        [binding] = lab.snmp.get(TOPOLOGY_CHANGES)
        assert binding.kind == 'Counter32'
        return binding.value

    lab.switch.set('port.300.root_inconsistent', '')
    before = count()
    for _ in range(3):
        lab.switch.set('port.300.learning_in', '0')
        lab.switch.set('port.300.learning_in', '')
    assert count() == before + 3
    counted = before + 3
    lab.agent.hang_up()
    assert count() == counted
    lab.restart_agent()
    assert count() == counted
    lab.switch.set('port.300.learning_in', '0')
    lab.switch.set('port.300.learning_in', '')
    assert count() == counted + 1

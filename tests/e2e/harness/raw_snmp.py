"""SNMPv2c in Python, for thousands of messages without a process each: a client on one socket that stays
open, and the contents of traps. Only as much BER (ITU-T X.690) as requests of one variable and traps need."""

import itertools
import socket
import time
from typing import NamedTuple

from .snmp_tools import Binding

INTEGER, OCTETS, NULL, OID, SEQUENCE = 0x02, 0x04, 0x05, 0x06, 0x30
UNSIGNED, TIME_TICKS = 0x42, 0x43
GET, GET_NEXT, SET, GET_BULK, TRAP = 0xA0, 0xA1, 0xA3, 0xA5, 0xA7
EXCEPTIONS = {0x80: 'noSuchObject', 0x81: 'noSuchInstance', 0x82: 'endOfMibView'}
V2C = 1
ANSWER_SECONDS = 60
LARGEST_DATAGRAM = 65535


class Answer(NamedTuple):
    error_status: int
    tag: int
    value: bytes

    @property
    def exception(self):
        return EXCEPTIONS.get(self.tag)

    @property
    def number(self):
        return int.from_bytes(self.value, 'big')


class Exchange(NamedTuple):
    """An answer of several variables, and when it was asked for and came, by the monotonic clock."""
    sent: float
    received: float
    error_status: int
    variables: list  # name, tag and content of each

    @property
    def bindings(self):
        """As the tools give them."""
        assert self.error_status == 0
        return [make_binding(*variable) for variable in self.variables]


def encode(tag, content):
    if len(content) < 0x80:
        return bytes([tag, len(content)]) + content
    length = len(content).to_bytes(2, 'big')
    return bytes([tag, 0x82]) + length + content


def encode_integer(number):
    return encode(INTEGER, number.to_bytes(number.bit_length() // 8 + 1, 'big', signed=True))


def encode_oid(text):
    first, second, *arcs = (int(arc) for arc in text.strip('.').split('.'))
    content = bytearray([first * 40 + second])
    for arc in arcs:
        septets = [arc & 0x7F]
        while arc := arc >> 7:
            septets.append(arc & 0x7F | 0x80)
        content += bytes(reversed(septets))
    return encode(OID, bytes(content))


def decode(data):
    """Splits the first element off: its tag, its content, and what follows."""
    tag, length, start = data[0], data[1], 2
    if length & 0x80:
        start += length & 0x7F
        length = int.from_bytes(data[2:start], 'big')
    return tag, data[start:start + length], data[start + length:]


def elements(data):
    """The tag and the content of each element."""
    while data:
        tag, content, data = decode(data)
        yield tag, content


def decode_oid(content):
    arcs, arc = [content[0] // 40, content[0] % 40], 0
    for octet in content[1:]:
        arc = arc << 7 | octet & 0x7F
        if not octet & 0x80:
            arcs.append(arc)
            arc = 0
    return ''.join(f'.{arc}' for arc in arcs)


def parse_message(datagram):
    """The kind of an SNMPv2 message, its number, its error status; of each binding name, tag and content."""
    [(_, message)] = elements(datagram)
    (_, version), _community, (kind, pdu) = elements(message)
    assert version == bytes([V2C]), f'not an SNMPv2 message: {datagram.hex()}'
    (_, request_id), (_, error_status), _error_index, (_, bindings) = elements(pdu)
    return kind, int.from_bytes(request_id, 'big'), int.from_bytes(error_status, 'big'), [
        (decode_oid(name), tag, value)
        for _, binding in elements(bindings) for (_, name), (tag, value) in [elements(binding)]]


def decode_number(content):
    return int.from_bytes(content, 'big', signed=True)


# How the tools name a type, and its value.
TYPES = {INTEGER: ('INTEGER', decode_number), UNSIGNED: ('Gauge32', decode_number),
         TIME_TICKS: ('Timeticks', decode_number), OCTETS: ('OCTET STRING', bytes), OID: ('OID', decode_oid)}


def make_binding(name, tag, content):
    """As the tools' output becomes one."""
    if tag in EXCEPTIONS:
        return Binding(name, EXCEPTIONS[tag])
    kind, decode = TYPES[tag]
    return Binding(name, kind, decode(content))


def trap_bindings(datagram):
    kind, _request_id, _error_status, bindings = parse_message(datagram)
    assert kind == TRAP, f'not a trap: {datagram.hex()}'
    return [make_binding(*binding) for binding in bindings]


def encode_request(kind, name, value=encode(NULL, b''), request_id=1, community=b'public', numbers=(0, 0)):
    """Of one variable, whose name is an element. The two numbers are error status and index or, in a GETBULK, how often
    what is repeated."""
    binding = encode(SEQUENCE, name + value)
    pdu = encode(kind, b''.join(map(encode_integer, (request_id, *numbers))) + encode(SEQUENCE, binding))
    return encode(SEQUENCE, encode_integer(V2C) + encode(OCTETS, community) + pdu)


class RawClient:
    def __init__(self, endpoint, community, answer_seconds=ANSWER_SECONDS):
        host, port = endpoint.split(':')
        self._community = community.encode()
        self._request_ids = itertools.count(1)
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.connect((host, int(port)))
        self._socket.settimeout(answer_seconds)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def get(self, oid, community=None):
        return self._answer(self._request(GET, oid, community=community))

    def set_integer(self, oid, number):
        return self._answer(self._request(SET, oid, encode_integer(number)))

    def get_next(self, oid):
        return self._request(GET_NEXT, oid)

    def get_bulk(self, oid, repetitions):
        return self._request(GET_BULK, oid, numbers=(0, repetitions))

    @staticmethod
    def _answer(exchange):
        [(_name, tag, value)] = exchange.variables
        return Answer(exchange.error_status, tag, value)

    def _request(self, kind, oid, value=encode(NULL, b''), community=None, numbers=(0, 0)):
        request_id = next(self._request_ids)
        who = community.encode() if community else self._community
        request = encode_request(kind, encode_oid(oid), value, request_id, who, numbers)
        sent = time.monotonic()
        self._socket.send(request)
        while True:
            datagram = self._socket.recv(LARGEST_DATAGRAM)
            received = time.monotonic()
            _kind, answered_id, error_status, bindings = parse_message(datagram)
            if answered_id == request_id:
                return Exchange(sent, received, error_status, bindings)

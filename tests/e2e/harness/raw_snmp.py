"""SNMPv2c in Python, for thousands of messages without a process each: a client on one socket that stays
open, and the contents of traps. Only as much BER (ITU-T X.690) as requests of one variable and traps need."""

import itertools
import socket
from typing import NamedTuple

INTEGER, OCTETS, NULL, OID, SEQUENCE = 0x02, 0x04, 0x05, 0x06, 0x30
GET, SET, TRAP = 0xA0, 0xA3, 0xA7
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


def trap_bindings(datagram):
    """Name, tag and content of each variable binding in a trap."""
    [(_, message)] = elements(datagram)
    (_, version), _community, (kind, pdu) = elements(message)
    assert (version, kind) == (bytes([V2C]), TRAP), f'not an SNMPv2 trap: {datagram.hex()}'
    _request_id, _error_status, _error_index, (_, bindings) = elements(pdu)
    return [(decode_oid(name), tag, value)
            for _, binding in elements(bindings) for (_, name), (tag, value) in [elements(binding)]]


class RawClient:
    def __init__(self, endpoint, community):
        host, port = endpoint.split(':')
        self._community = community.encode()
        self._request_ids = itertools.count(1)
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.connect((host, int(port)))
        self._socket.settimeout(ANSWER_SECONDS)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def get(self, oid, community=None):
        return self._request(GET, oid, encode(NULL, b''), community)

    def set_integer(self, oid, number):
        return self._request(SET, oid, encode_integer(number), None)

    def _request(self, kind, oid, value, community):
        request_id = next(self._request_ids)
        binding = encode(SEQUENCE, encode_oid(oid) + value)
        pdu = encode(kind, encode_integer(request_id) + encode_integer(0) + encode_integer(0) +
                     encode(SEQUENCE, binding))
        who = community.encode() if community else self._community
        self._socket.send(encode(SEQUENCE, encode_integer(V2C) + encode(OCTETS, who) + pdu))
        while True:
            answered_id, answer = self._parse(self._socket.recv(LARGEST_DATAGRAM))
            if answered_id == request_id:
                return answer

    @staticmethod
    def _parse(datagram):
        _, message, _ = decode(datagram)
        _, _, rest = decode(message)  # version
        _, _, rest = decode(rest)  # community
        _, pdu, _ = decode(rest)
        _, request_id, rest = decode(pdu)
        _, error_status, rest = decode(rest)
        _, _, rest = decode(rest)  # error index
        _, bindings, _ = decode(rest)
        _, binding, _ = decode(bindings)
        _, _, rest = decode(binding)  # name
        tag, value, _ = decode(rest)
        return int.from_bytes(request_id, 'big'), Answer(int.from_bytes(error_status, 'big'), tag, value)

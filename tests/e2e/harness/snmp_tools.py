"""The stock SNMP tools, and their output as values."""

import hashlib
import os
import re
import subprocess
from functools import cache
from typing import NamedTuple

LINE = re.compile(r'(\.[0-9.]+) = (.*)')

# The tools take 128 in one request; fewer, so that the answer never exceeds what a datagram holds.
OIDS_IN_A_REQUEST = 100
# What a passphrase is repeated to before it is hashed (RFC 3414, A.2.2).
EXPANDED_LENGTH = 1 << 20

EXCEPTIONS = {
    'No Such Instance currently exists at this OID': 'noSuchInstance',
    'No Such Object available on this agent at this OID': 'noSuchObject',
    'No more variables left in this MIB View (It is past the end of the MIB tree)': 'endOfMibView',
}


class Binding(NamedTuple):
    oid: str
    kind: str  # an ASN.1 type as the tools name it, or an exception's name
    value: object = None  # int, or bytes for an OCTET STRING


class Failure(NamedTuple):
    """An answer with an error status, or none at all."""
    reason: str


def v1(community):
    return ['-v1', '-c', community]


def v2c(community):
    return ['-v2c', '-c', community]


@cache
def key_of(user):
    """From a passphrase, which agents and tools would hash anew each time."""
    passphrase = f'{user}-passphrase'.encode()
    expanded = (passphrase * (EXPANDED_LENGTH // len(passphrase) + 1))[:EXPANDED_LENGTH]
    return f'0x{hashlib.sha1(expanded).hexdigest()}'


def v3(user, context=''):
    return ['-v3', '-l', 'authPriv', '-u', user, '-n', context, '-a', 'SHA', '-3m', key_of(user),
            '-x', 'AES', '-3M', key_of(user)]


READER = v2c('public')


def parse_binding(line):
    match = LINE.fullmatch(line)
    assert match, f'not a binding: {line!r}'
    oid, text = match.groups()
    if text in EXCEPTIONS:
        return Binding(oid, EXCEPTIONS[text])
    if text == '""':
        return Binding(oid, 'OCTET STRING', b'')
    kind, value = text.split(': ', 1)
    if kind == 'Hex-STRING':
        return Binding(oid, 'OCTET STRING', bytes.fromhex(value))
    return Binding(oid, kind, int(value) if value.isdecimal() else value)


def private_environment(configuration, persistent):
    """For net-snmp's programs: nothing of the machine's, and no MIB files, which each of them would look through even
    if it is to load none."""
    return {**os.environ, 'MIBS': '', 'MIBDIRS': '/nonexistent', 'SNMPCONFPATH': str(configuration),
            'SNMP_PERSISTENT_DIR': str(persistent)}


class SnmpTools:
    def __init__(self, endpoint, directory, inside=()):
        """`inside`: what runs the tools where the agent is."""
        self._endpoint = endpoint
        self._inside = inside
        self._environment = private_environment(directory, directory)

    def _run(self, tool, who, options, operands):
        result = subprocess.run(
            [*self._inside, tool, '-On', '-Oe', '-Ox', '--hexOutputLength=0', '-t', '60', '-r', '0', *who, *options,
             self._endpoint, *operands],
            stdin=subprocess.DEVNULL, capture_output=True, text=True, env=self._environment, check=False,
            timeout=600)
        if result.returncode != 0:
            return Failure(result.stderr + result.stdout)
        return [parse_binding(line) for line in result.stdout.splitlines()]

    def _ask(self, tool, who, oids):
        """One request, or as many as there must be."""
        answered = []
        for start in range(0, len(oids), OIDS_IN_A_REQUEST):
            answer = self._run(tool, who, [], oids[start:start + OIDS_IN_A_REQUEST])
            if isinstance(answer, Failure):
                return answer
            answered += answer
        return answered

    def get(self, *oids, who=READER):
        return self._ask('snmpget', who, oids)

    def get_next(self, *oids, who=READER):
        return self._ask('snmpgetnext', who, oids)

    def get_bulk(self, oid, repetitions, who=READER):
        return self._run('snmpbulkget', who, ['-Cn0', f'-Cr{repetitions}'], [oid])

    def walk(self, oid, who=READER, end=None):
        """Every object below `oid`, or from there to `end`. The tool's own check is on: a walk that does not advance is a
        failure."""
        return self._existing(self._run('snmpwalk', who, ['-CI', *(['-CE', end] if end else [])], [oid]))

    def bulk_walk(self, oid, who=READER, repetitions=10):
        return self._existing(self._run('snmpbulkwalk', who, [f'-Cr{repetitions}'], [oid]))

    @staticmethod
    def _existing(bindings):
        if isinstance(bindings, Failure):
            return bindings
        return [binding for binding in bindings if binding.kind not in EXCEPTIONS.values()]

    def set(self, oid, kind, value, who):
        return self._run('snmpset', who, [], [oid, kind, str(value)])

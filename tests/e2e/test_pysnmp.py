"""The bridge objects as the Python stack pysnmp reads them: GET, GETNEXT, GETBULK and contexts."""

import pytest
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import BRIDGE_ROOT as B, PROJECT
from harness.lab import run_lab_of
from harness.librenms import PROTOCOL, STATE, STATES
from harness.oids import arcs
from harness.snmp_tools import v3
from harness.switch import playing
from pyasn1.type.univ import ObjectIdentifier
from pysnmp.hlapi import (CommunityData, ContextData, ObjectIdentity, ObjectType, SnmpEngine, UdpTransportTarget,
                          UsmUserData, bulkCmd, getCmd, nextCmd, usmAesCfb128Protocol, usmHMACSHAAuthProtocol)
from pysnmp.proto.rfc1902 import Counter32, Integer, OctetString, TimeTicks
from pysnmp.proto.rfc1905 import NoSuchInstance

PUBLIC = CommunityData('public', mpModel=1)
ALICE = UsmUserData('alice', 'alice-passphrase', 'alice-passphrase', authProtocol=usmHMACSHAAuthProtocol,
                    privProtocol=usmAesCfb128Protocol)
DEFAULT_CONTEXT, VLAN_20 = ContextData(), ContextData(contextName=b'vlan-20')


class Pysnmp:
    def __init__(self, agent):
        host, port = agent.endpoint.split(':')
        self._engine = SnmpEngine()
        self._target = UdpTransportTarget((host, int(port)), timeout=60, retries=0)

    @staticmethod
    def _values(answer):
        indication, status, _index, bindings = answer
        assert not indication and not status, (indication, status.prettyPrint())
        return [(str(name), value) for name, value in bindings]

    @staticmethod
    def _objects(names):
        return [ObjectType(ObjectIdentity(name.strip('.'))) for name in names]

    def get(self, *names, who=PUBLIC, context=DEFAULT_CONTEXT):
        [answer] = getCmd(self._engine, who, self._target, context, *self._objects(names), lookupMib=False)
        return [value for _name, value in self._values(answer)]

    def walk(self, name, who=PUBLIC, context=DEFAULT_CONTEXT, repetitions=None):
        """By the last number of each name; with GETBULK where there are repetitions."""
        command, numbers = (bulkCmd, (0, repetitions)) if repetitions else (nextCmd, ())
        answers = command(self._engine, who, self._target, context, *numbers, *self._objects([name]), lookupMib=False,
                          lexicographicMode=False)
        return {arcs(found)[-1]: value for answer in answers for found, value in self._values(answer)}


def run_example(name):
    return run_lab_of(playing(PROJECT / 'scenarios' / name), serves=BRIDGE_CONFIGURATION, with_probe=False)


@pytest.fixture(name='mst', scope='module')
def fixture_mst():
    with run_example('mst-small.toml') as lab:
        yield Pysnmp(lab.agent)


@pytest.fixture(name='rapid_pvst', scope='module')
def fixture_rapid_pvst():
    with run_example('rapid-pvst-small.toml') as lab:
        lab.wait_for_context(v3('alice', 'vlan-20'), PROTOCOL)
        yield Pysnmp(lab.agent)


def test_each_type(mst):
    address, changes, time, root, circuit, absent = mst.get(
        *(f'{B}.{name}' for name in ('1.1.0', '2.4.0', '2.3.0', '2.5.0', '1.4.1.3.129', '2.7.1')))
    assert (type(address), bytes(address)) == (OctetString, bytes.fromhex('00005e005310'))
    assert (type(changes), int(changes)) == (Counter32, 3)
    assert type(time) is TimeTicks
    assert (type(root), bytes(root)) == (OctetString, bytes.fromhex('600000005e00532a'))
    assert (type(circuit), tuple(circuit)) == (ObjectIdentifier, (0, 0))
    assert type(absent) is NoSuchInstance


MST_STATES = {129: 'forwarding', 130: 'blocking', 131: 'forwarding', 132: 'disabled', 138: 'forwarding',
              139: 'forwarding', 140: 'listening', 141: 'blocking', 142: 'forwarding', 143: 'forwarding',
              4097: 'blocking', 4098: 'forwarding'}


@pytest.mark.parametrize('repetitions', [None, 5, 50], ids=['GETNEXT', 'GETBULK', 'one GETBULK'])
def test_walk_of_the_states(mst, repetitions):
    walked = mst.walk(STATE, repetitions=repetitions)
    assert {type(value) for value in walked.values()} == {Integer}
    assert {port: STATES[int(value)] for port, value in walked.items()} == MST_STATES


def test_context(rapid_pvst):
    [root] = rapid_pvst.get(f'{B}.2.5.0', who=ALICE, context=VLAN_20)
    assert bytes(root).hex() == '601400005e005301'
    walked = rapid_pvst.walk(STATE, who=ALICE, context=VLAN_20)
    assert {port: STATES[int(value)] for port, value in walked.items()} == {
        130: 'blocking', 131: 'disabled', 135: 'blocking', 137: 'blocking', 138: 'forwarding', 139: 'blocking',
        4097: 'blocking', 4098: 'forwarding'}
    [root] = rapid_pvst.get(f'{B}.2.5.0', who=ALICE)
    assert bytes(root).hex() == '600100005e005301'

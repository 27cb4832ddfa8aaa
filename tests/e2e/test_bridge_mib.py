"""BRIDGE-MIB and RSTP-MIB from the switch of a scenario: its default tree and its contexts."""

import pytest
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import BRIDGE_ROOT as B
from harness.lab import run_lab
from harness.oids import still
from harness.polling import wait_until
from harness.snmp_tools import Binding, Failure, v2c, v3

UNKNOWN_CONTEXTS = '.1.3.6.1.6.3.12.1.5.0'  # snmpUnknownContexts (SNMP-TARGET-MIB)


@pytest.fixture(name='shared_lab', scope='module')
def fixture_shared_lab():
    with run_lab('rapid-pvst.toml', serves=BRIDGE_CONFIGURATION, with_probe=False) as lab:
        yield lab


@pytest.fixture(name='lab')
def fixture_lab(shared_lab):
    shared_lab.reset()
    yield shared_lab
    shared_lab.check()


def in_context(name):
    return v3('alice', name)


def has_context(lab, name):
    """Nobody answers in a context that was never registered: the agent counts it. Of one that was withdrawn all that is
    left is a name."""
    [unknown] = lab.snmp.get(UNKNOWN_CONTEXTS)

    def answer_or_count():
        answer = lab.snmp.get(f'{B}.2.1.0', who=[*in_context(name), '-t', '1'])
        return answer if not isinstance(answer, Failure) or lab.snmp.get(UNKNOWN_CONTEXTS) != [unknown] else None

    answer = wait_until(answer_or_count, 'the agent answers, or counts the request')
    return not isinstance(answer, Failure) and answer[0].kind == 'INTEGER'


def test_scalars_of_one_request(lab):
    names = [f'{B}.1.1.0', *(f'{B}.2.{number}.0' for number in range(1, 15))]
    answers = lab.snmp.get(*names)
    assert [answer.oid for answer in answers] == names
    assert answers[1] == Binding(f'{B}.2.1.0', 'INTEGER', 3)
    assert answers[10] == Binding(f'{B}.2.10.0', 'INTEGER', 100)


def test_walks_agree(lab):
    walked = lab.snmp.walk(B)
    assert still(walked) == still(lab.snmp.bulk_walk(B)) == still(lab.snmp.bulk_walk(B, repetitions=50))
    assert [binding for binding in walked if binding.oid.startswith(f'{B}.2.15.1.1.')] == [
        Binding(f'{B}.2.15.1.1.129', 'INTEGER', 129), Binding(f'{B}.2.15.1.1.130', 'INTEGER', 130),
        Binding(f'{B}.2.15.1.1.4103', 'INTEGER', 4103)]
    assert still(lab.snmp.get(*(binding.oid for binding in walked))) == still(walked)


def test_set_is_refused(lab):
    answer = lab.snmp.set(f'{B}.2.2.0', 'i', 4096, who=v2c('private'))
    assert isinstance(answer, Failure)
    assert 'notWritable' in answer.reason


def test_contexts_of_vlans(lab):
    wait_until(lambda: has_context(lab, 'vlan-2048'), 'the last VLAN has its context')
    ports = {context: [binding.value for binding in lab.snmp.walk(f'{B}.2.15.1.1', who=in_context(context))]
             for context in ['', '1', 'vlan-1', '2', 'vlan-2', 'vlan-2048', '33']}
    assert ports == {'': [129, 130, 4103], '1': [129, 130, 4103], 'vlan-1': [129, 130, 4103], '2': [129],
                     'vlan-2': [129], 'vlan-2048': [4103], '33': [130, 133]}
    assert not has_context(lab, 'vlan-5')
    assert not has_context(lab, 'mst-0')


def test_contexts_follow_the_mode(lab):
    wait_until(lambda: has_context(lab, 'vlan-2048'), 'VLANs have contexts')
    lab.switch.set('switch.mode', 'mst')
    wait_until(lambda: has_context(lab, 'mst-0'), 'the CIST has its context')
    wait_until(lambda: not has_context(lab, 'vlan-2048'), 'VLANs have none any more')


def test_a_community_has_a_context(lab):
    """Of vlan-10, by com2sec -Cn."""
    lab.switch.set('port.2.vlans', '10')
    wait_until(lambda: has_context(lab, 'vlan-10'), 'the VLAN has its context')
    assert lab.snmp.walk(f'{B}.2.15.1.1', who=v2c('public-vlan-10')) == [
        Binding(f'{B}.2.15.1.1.130', 'INTEGER', 130)]


def test_contexts_are_there_after_a_reload(lab):
    wait_until(lambda: has_context(lab, 'vlan-2'), 'VLANs have contexts')
    lab.agent.hang_up()
    assert lab.snmp.get(f'{B}.2.1.0') == [Binding(f'{B}.2.1.0', 'INTEGER', 3)]
    wait_until(lambda: has_context(lab, 'vlan-2'), 'VLANs have contexts again')

"""Who asks, in which context: passed on to the switch, which may refuse, for every version and operation."""

import golden
import pytest
from harness.build import PROBE_ROOT, ROOT
from harness.snmp_tools import Binding, v1, v2c, v3

MODE = ROOT + '.1.6.1.0'
CONTEXT, USER, SESSION = (f'{PROBE_ROOT}.{number}.0' for number in (1, 2, 3))

REQUESTERS = [
    (v1('public'), b'', b'reader'),
    (v1('public-vlan-10'), b'vlan-10', b'reader'),
    (v1('public-mst-5'), b'mst-5', b'reader'),
    (v1('private'), b'', b'writer'),
    (v2c('public'), b'', b'reader'),
    (v2c('public-vlan-10'), b'vlan-10', b'reader'),
    (v2c('public-mst-5'), b'mst-5', b'reader'),
    (v2c('private'), b'', b'writer'),
    (v3('alice'), b'', b'alice'),
    (v3('alice', 'vlan-10'), b'vlan-10', b'alice'),
    (v3('bob', 'mst-5'), b'mst-5', b'bob'),
]
NAMES = ['v1', 'v1-vlan-10', 'v1-mst-5', 'v1-writer', 'v2c', 'v2c-vlan-10', 'v2c-mst-5', 'v2c-writer',
         'v3-alice', 'v3-alice-vlan-10', 'v3-bob-mst-5']
FIRST_AFTER_V1 = 4
REQUESTERS_WITH_BULK, NAMES_WITH_BULK = REQUESTERS[FIRST_AFTER_V1:], NAMES[FIRST_AFTER_V1:]


def check_identity(bindings, context, user):
    assert bindings[:2] == [Binding(CONTEXT, 'OCTET STRING', context), Binding(USER, 'OCTET STRING', user)]
    assert (bindings[2].oid, bindings[2].kind) == (SESSION, 'Gauge32')
    assert bindings[2].value != 0


@pytest.mark.parametrize('who, context, user', REQUESTERS, ids=NAMES)
def test_get_passes_context_user_and_session_on(lab, who, context, user):
    check_identity(lab.snmp.get(CONTEXT, USER, SESSION, who=who), context, user)


@pytest.mark.parametrize('who, context, user', REQUESTERS, ids=NAMES)
def test_getnext_passes_context_user_and_session_on(lab, who, context, user):
    asked = [f'{PROBE_ROOT}.{number}' for number in (1, 2, 3)]
    check_identity(lab.snmp.get_next(*asked, who=who), context, user)


@pytest.mark.parametrize('who, context, user', REQUESTERS_WITH_BULK, ids=NAMES_WITH_BULK)
def test_getbulk_passes_context_user_and_session_on(lab, who, context, user):
    check_identity(lab.snmp.get_bulk(PROBE_ROOT, 3, who=who), context, user)


def test_requests_of_one_address_and_user_have_one_session(lab):
    with lab.raw_client('public') as client:
        first = client.get(SESSION).number
        assert client.get(SESSION).number == first


def test_two_users_of_one_address_have_different_sessions(lab):
    with lab.raw_client() as client:
        reader, writer = (client.get(SESSION, community=community) for community in ('public', 'private'))
        assert reader.number != writer.number


def test_same_request_number_of_two_users_is_no_mix_up(lab):
    with lab.raw_client('public') as reader, lab.raw_client('private') as writer:
        # Both clients count their requests from 1.
        assert [reader.get(USER).value, writer.get(USER).value] == [b'reader', b'writer']


def test_two_addresses_of_one_user_have_different_sessions(lab):
    with lab.raw_client() as one, lab.raw_client() as other:
        assert one.get(SESSION).number != other.get(SESSION).number


@pytest.mark.parametrize('who, context, user', [
    (v3('alice'), b'', b'alice'), (v2c('public-vlan-10'), b'vlan-10', b'reader'),
], ids=['v3', 'v2c'])
def test_a_request_between_two_others_does_not_take_their_identity(lab, who, context, user):
    check_identity(lab.snmp.get(CONTEXT, USER, SESSION, who=v3('bob', 'mst-5')), b'mst-5', b'bob')
    check_identity(lab.snmp.get(CONTEXT, USER, SESSION, who=who), context, user)
    check_identity(lab.snmp.get(CONTEXT, USER, SESSION, who=v1('private')), b'', b'writer')


@pytest.mark.parametrize('who', [v3('guest'), v2c('guest-community')], ids=['v3', 'v2c'])
def test_a_refused_user_is_answered_no_such_instance(lab, who):
    asked = [binding.oid for binding in golden.asked_of(golden.MST)]
    assert lab.snmp.get(*asked, who=who) == [Binding(oid, 'noSuchInstance') for oid in asked]


def test_a_refused_user_is_told_that_a_port_without_link_has_no_type_of_link(lab):
    """Nobody is asked for it who could refuse."""
    wanted = [Binding(f'{golden.RSTP_LINK_TYPE}.{port}', 'INTEGER', golden.OTHER) for port in (131, 4105)]
    assert lab.snmp.get(*(binding.oid for binding in wanted), who=v3('guest')) == wanted


def test_a_refused_user_walks_only_what_needs_no_switch(lab):
    assert lab.snmp.walk(ROOT, who=v3('guest')) == golden.CONSTANTS


@pytest.mark.parametrize('who', [v3('alice'), v3('bob'), v2c('public'), v1('private')],
                         ids=['alice', 'bob', 'reader', 'writer'])
def test_another_user_is_answered_after_a_refused_one(lab, who):
    assert lab.snmp.get(MODE, who=v3('guest')) == [Binding(MODE, 'noSuchInstance')]
    assert lab.snmp.get(MODE, who=who) == [Binding(MODE, 'INTEGER', 4)]


def test_a_user_can_be_refused_and_admitted_while_the_switch_runs(lab):
    lab.switch.set('access.refused_users', 'guest,bob')
    assert lab.snmp.get(MODE, who=v3('bob')) == [Binding(MODE, 'noSuchInstance')]
    lab.switch.set('access.refused_users', 'guest')
    assert lab.snmp.get(MODE, who=v3('bob')) == [Binding(MODE, 'INTEGER', 4)]

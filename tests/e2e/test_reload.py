"""The modules unloaded, loaded and reloaded in a running agent: by UCD-DLMOD-MIB and by SIGHUP."""

from contextlib import contextmanager

import golden
import pytest
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION
from harness.build import BRIDGE_MODULE, BRIDGE_ROOT, MODULE, PLATFORM_LIBRARY, PRELOAD, PROBE_ROOT, ROOT, THOROUGH
from harness.dlmod import FIRST, SECOND, load, unload
from harness.lab import run_lab
from harness.oids import still
from harness.polling import wait_until
from harness.repetition import Repetition
from harness.snmp_tools import Binding, Failure, v3

SYS_UP_TIME = '.1.3.6.1.2.1.1.3.0'
REGION_NAME = ROOT + '.1.11.2.0'
PROTOCOL = BRIDGE_ROOT + '.2.1.0'
REGISTERED = [binding.oid for binding in golden.MST] + [column + '.1' for column in golden.TABLE_COLUMNS]

# What the memory needs to grow shows after so many cycles only. It is not measured under the sanitizers, whose own
# records grow with every library that they have ever seen.
UNLOAD_CYCLES = 1000 if THOROUGH or not PRELOAD else 150
WARM_UP_CYCLES = 100
HANG_UPS = 1000 if THOROUGH else 100
# Far below one leaked page a cycle, far above what the agent's own heap moves.
GROWTH_LIMIT_KIB = 3000


@pytest.fixture(name='lab')
def fixture_lab():
    """An agent for each test: a hang-up gives the module another number."""
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='lone_lab')
def fixture_lone_lab():
    """Without the probe, which would keep the platform library loaded when the module goes."""
    with run_lab('mst.toml', with_probe=False) as lab:
        yield lab


def check_nothing_is_registered(lab):
    assert lab.snmp.get(*REGISTERED) == [Binding(oid, 'noSuchObject') for oid in REGISTERED]
    assert lab.snmp.walk(ROOT) == []
    [following] = lab.snmp.get_next(ROOT)
    assert not following.oid.startswith(f'{ROOT}.')


def test_unloaded_module_leaves_no_object_and_the_agent_alive(lab):
    assert lab.snmp.walk(ROOT) == golden.MST
    with lab.raw_client('private') as client:
        unload(client)
    check_nothing_is_registered(lab)
    assert lab.snmp.get(SYS_UP_TIME)[0].kind == 'Timeticks'
    assert lab.agent.is_alive()


def test_unloaded_library_is_out_of_the_agents_memory(lone_lab):
    assert lone_lab.agent.has_mapped(MODULE) and lone_lab.agent.has_mapped(PLATFORM_LIBRARY)
    with lone_lab.raw_client('private') as client:
        unload(client)
    assert not lone_lab.agent.has_mapped(MODULE) and not lone_lab.agent.has_mapped(PLATFORM_LIBRARY)


def test_unloading_leaves_other_modules_alone(lab):
    with lab.raw_client('private') as client:
        unload(client)
    assert lab.snmp.get(f'{PROBE_ROOT}.2.0') == [Binding(f'{PROBE_ROOT}.2.0', 'OCTET STRING', b'reader')]


def test_module_loaded_again_serves_everything(lab):
    with lab.raw_client('private') as client:
        unload(client)
        load(client)
    assert lab.snmp.walk(ROOT) == golden.MST
    assert lab.snmp.get(*(binding.oid for binding in golden.MST)) == golden.MST


def test_module_loaded_again_remembers_nothing(lab):
    """No octet of a name that was served before is left: the library really went."""
    lab.switch.set('mst.region', 'ABCDEFGH')
    assert lab.snmp.get(REGION_NAME)[0].value == b'ABCDEFGH'
    with lab.raw_client('private') as client:
        unload(client)
        load(client)
    lab.switch.set('mst.region', 'xy')
    assert lab.snmp.get(REGION_NAME)[0].value == b'xy'


def test_hang_up_reloads_the_module_and_the_values_are_back(lab):
    lab.switch.set('mst.region', 'ABCDEFGH')
    assert lab.snmp.get(REGION_NAME)[0].value == b'ABCDEFGH'
    lab.agent.hang_up()
    lab.switch.set('mst.region', 'xy')
    assert lab.snmp.get(REGION_NAME)[0].value == b'xy'
    lab.switch.set('mst.region', 'ops-lab')
    assert lab.snmp.walk(ROOT) == golden.MST


def test_many_hang_ups_with_requests_in_between(lab):
    for _ in range(HANG_UPS):
        lab.agent.hang_up()
        assert lab.snmp.get(REGION_NAME) == [Binding(REGION_NAME, 'OCTET STRING', b'ops-lab')]
    assert lab.snmp.walk(ROOT) == golden.MST


@contextmanager
def walking(walk, expected):
    """Walks again and again beside the test. `walk` returns the bindings of one, `expected` are those while the module is
    there."""
    def check_walk():
        bindings = walk()
        # The module may go and come while a walk is under way, which then shows a part of the objects.
        assert bindings == [binding for binding in expected if binding in bindings]

    with Repetition(check_walk) as walks:
        yield
    assert walks.count > 0


def cycle_many_times(lab, oid):
    """Unloads and loads the first module, which has that object."""
    with lab.raw_client('private') as client:
        served = client.get(oid)
        for cycle in range(UNLOAD_CYCLES):
            unload(client)
            assert client.get(oid).exception == 'noSuchObject'
            load(client)
            assert client.get(oid).value == served.value
            if cycle == WARM_UP_CYCLES:
                resident_before = lab.agent.resident_kib()
        resident_after = lab.agent.resident_kib()
    assert lab.agent.is_alive()
    if not PRELOAD:
        assert resident_after - resident_before < GROWTH_LIMIT_KIB


@pytest.mark.parametrize('lab_name', ['lab', 'lone_lab'])
def test_many_unloads_and_loads_under_a_running_walk(lab_name, request):
    lab = request.getfixturevalue(lab_name)
    with walking(lambda: lab.snmp.bulk_walk(ROOT, repetitions=3), golden.MST):
        cycle_many_times(lab, REGION_NAME)
    assert lab.snmp.walk(ROOT) == golden.MST
    with lab.raw_client('private') as client:
        unload(client)
    check_nothing_is_registered(lab)


def bridge_walk(snmp, context=''):
    """Without the time since the latest topology change, which goes on; nothing where there is no such context."""
    bindings = snmp.bulk_walk(BRIDGE_ROOT, repetitions=3, who=v3('alice', context))
    return [] if isinstance(bindings, Failure) else still(bindings)


@pytest.fixture(name='bridge_lab')
def fixture_bridge_lab():
    """The bridge module without the extension module, and VLAN 2 with a context."""
    with run_lab('rapid-pvst.toml', serves=BRIDGE_CONFIGURATION, with_probe=False) as lab:
        lab.wait_for_context(v3('alice', 'vlan-2'), PROTOCOL)
        yield lab


@pytest.mark.parametrize('context', ['', 'vlan-2'])
def test_many_unloads_and_loads_of_the_bridge_module_under_a_running_walk(bridge_lab, context):
    lab = bridge_lab
    expected = bridge_walk(lab.snmp, context)
    assert Binding(PROTOCOL, 'INTEGER', 3) in expected
    with walking(lambda: bridge_walk(lab.snmp, context), expected):
        cycle_many_times(lab, PROTOCOL)
    wait_until(lambda: bridge_walk(lab.snmp, context) == expected, 'all is served again')
    assert lab.agent.has_mapped(BRIDGE_MODULE)
    with lab.raw_client('private') as client:
        unload(client)
    assert bridge_walk(lab.snmp) == bridge_walk(lab.snmp, 'vlan-2') == []
    assert not lab.agent.has_mapped(BRIDGE_MODULE)


def test_many_hang_ups_with_requests_to_the_bridge_module_in_between(bridge_lab):
    lab = bridge_lab
    expected = bridge_walk(lab.snmp, 'vlan-2')
    for _ in range(HANG_UPS):
        lab.agent.hang_up()
        assert lab.snmp.get(PROTOCOL) == [Binding(PROTOCOL, 'INTEGER', 3)]
    wait_until(lambda: bridge_walk(lab.snmp, 'vlan-2') == expected, 'the context is served again')


@pytest.fixture(name='lab_of_both')
def fixture_lab_of_both():
    with run_lab('mst.toml', serves=MODULE_CONFIGURATION + BRIDGE_CONFIGURATION, with_probe=False) as lab:
        yield lab


@pytest.mark.parametrize('goes', [FIRST, SECOND])
def test_each_module_serves_without_the_other(lab_of_both, goes):
    lab = lab_of_both
    assert lab.snmp.get(REGION_NAME, PROTOCOL) == [
        Binding(REGION_NAME, 'OCTET STRING', b'ops-lab'), Binding(PROTOCOL, 'INTEGER', 3)]
    gone, stays = (REGION_NAME, PROTOCOL) if goes == FIRST else (PROTOCOL, REGION_NAME)
    [served] = lab.snmp.get(stays)
    with lab.raw_client('private') as client:
        unload(client, goes)
        assert lab.snmp.get(gone, stays) == [Binding(gone, 'noSuchObject'), served]
        load(client, goes)
    assert lab.snmp.get(REGION_NAME, PROTOCOL) == [
        Binding(REGION_NAME, 'OCTET STRING', b'ops-lab'), Binding(PROTOCOL, 'INTEGER', 3)]

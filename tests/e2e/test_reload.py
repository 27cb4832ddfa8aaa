"""The module unloaded, loaded and reloaded in a running agent: by UCD-DLMOD-MIB and by SIGHUP."""

import threading

import golden
import pytest
from harness.build import MODULE, PLATFORM_LIBRARY, PRELOAD, PROBE_ROOT, ROOT, THOROUGH
from harness.lab import run_lab
from harness.snmp_tools import Binding

# dlmodStatus of the first module in the configuration (UCD-DLMOD-MIB), and its values.
DLMOD_STATUS = '.1.3.6.1.4.1.2021.13.14.2.1.5.1'
LOADED, UNLOADED, LOAD, UNLOAD = 1, 2, 4, 5
NO_ERROR = 0

SYS_UP_TIME = '.1.3.6.1.2.1.1.3.0'
REGION_NAME = ROOT + '.1.11.2.0'
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


def set_status(client, wanted, reached):
    assert client.set_integer(DLMOD_STATUS, wanted).error_status == NO_ERROR
    assert client.get(DLMOD_STATUS).number == reached


def unload(client):
    set_status(client, UNLOAD, UNLOADED)


def load(client):
    set_status(client, LOAD, LOADED)


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


class Walker(threading.Thread):
    """Walks again and again beside the test, and keeps what a walk must never be."""

    def __init__(self, snmp):
        super().__init__()
        self._snmp = snmp
        self._ending = threading.Event()
        self.walks = 0
        self.surprises = []

    def run(self):
        while not self._ending.is_set():
            bindings = self._snmp.bulk_walk(ROOT, repetitions=3)
            self.walks += 1
            # The module may go and come while a walk is under way, which then shows a part of the objects.
            if bindings != [binding for binding in golden.MST if binding in bindings]:
                self.surprises.append(bindings)

    def end(self):
        self._ending.set()
        self.join()


@pytest.mark.parametrize('lab_name', ['lab', 'lone_lab'])
def test_many_unloads_and_loads_under_a_running_walk(lab_name, request):
    lab = request.getfixturevalue(lab_name)
    walker = Walker(lab.snmp)
    walker.start()
    try:
        with lab.raw_client('private') as client:
            for cycle in range(UNLOAD_CYCLES):
                unload(client)
                assert client.get(REGION_NAME).exception == 'noSuchObject'
                load(client)
                assert client.get(REGION_NAME).value == b'ops-lab'
                if cycle == WARM_UP_CYCLES:
                    resident_before = lab.agent.resident_kib()
            resident_after = lab.agent.resident_kib()
    finally:
        walker.end()
    assert walker.surprises == []
    assert walker.walks > 0
    assert lab.agent.is_alive()
    assert lab.snmp.walk(ROOT) == golden.MST
    if not PRELOAD:
        assert resident_after - resident_before < GROWTH_LIMIT_KIB
    with lab.raw_client('private') as client:
        unload(client)
    check_nothing_is_registered(lab)

"""Traps of inconsistencies that appear and vanish, as the stock snmptrapd receives them."""

from contextlib import contextmanager

import pytest
from harness.agent import DaemonAgent
from harness.build import ROOT
from harness.notifications import (
    ALL_ENABLED, APPEARED, CLASSES, LOOP_CLASS, MST, PORT_CLASS, RAPID_PVST, ROOT_CLASS, VANISHED, guard_trap,
    port_trap, run_trap_lab)
from harness.snmp_tools import Binding
from harness.traps import Trap, TrapReceiver

PVID, TYPE, PVID_AND_TYPE, NEITHER = b'\x80', b'\x40', b'\xc0', b'\x00'

# dlmodStatus of the module under test (UCD-DLMOD-MIB), and its values.
DLMOD_STATUS = '.1.3.6.1.4.1.2021.13.14.2.1.5.1'
LOAD, UNLOAD = 4, 5

BY_CLASS = pytest.mark.parametrize('noti', CLASSES.values(), ids=CLASSES)
BY_GUARD = pytest.mark.parametrize('noti', [ROOT_CLASS, LOOP_CLASS], ids=['root', 'loop'])


@contextmanager
def run_snmptrapd_lab(**agent_options):
    with TrapReceiver() as receiver, run_trap_lab(receiver, **agent_options) as lab:
        yield lab


@pytest.fixture(name='shared_trap_lab', scope='module')
def fixture_shared_trap_lab():
    """Its trap word is what each test writes."""
    with run_snmptrapd_lab(trap_word=ALL_ENABLED) as lab:
        yield lab


@pytest.fixture(name='lab')
def fixture_lab(shared_trap_lab):
    shared_trap_lab.reset(trap_word=ALL_ENABLED)
    yield shared_trap_lab
    shared_trap_lab.check()


@pytest.fixture(name='lab_to_reset')
def fixture_lab_to_reset(shared_trap_lab):
    """For a test that begins by resetting it, with a trap word of its own."""
    yield shared_trap_lab
    shared_trap_lab.check()


@pytest.fixture(name='shared_lab_with_loop_class', scope='module')
def fixture_shared_lab_with_loop_class():
    """Something else than the word enables that class."""
    with run_snmptrapd_lab(trap_word=ALL_ENABLED, enabled_classes=[LOOP_CLASS.number]) as lab:
        yield lab


@pytest.fixture(name='lab_with_loop_class_to_reset')
def fixture_lab_with_loop_class_to_reset(shared_lab_with_loop_class):
    yield shared_lab_with_loop_class
    shared_lab_with_loop_class.check()


def raised_trap(noti, tree, bridge_port):
    """What the class's own key causes where nothing was wrong before."""
    if noti == PORT_CLASS:
        return port_trap(tree, bridge_port, PVID)
    return guard_trap(noti, tree, bridge_port, APPEARED)


def vanished_trap(noti, tree, bridge_port):
    if noti == PORT_CLASS:
        return port_trap(tree, bridge_port, NEITHER)
    return guard_trap(noti, tree, bridge_port, VANISHED)


def set_inconsistency(lab, noti, trees, interface='port.1'):
    lab.switch.set(f'{interface}.{noti.key}', trees)


def test_root_inconsistency_that_appears_and_vanishes(lab):
    lab.switch.set('port.1.root_inconsistent', '10')
    assert lab.new_traps() == [Trap(ROOT + '.2.0.2', [
        Binding(ROOT + '.1.5.2.1.3.10.129', 'INTEGER', 1), Binding(ROOT + '.1.6.1', 'INTEGER', 5)])]
    lab.switch.set('port.1.root_inconsistent', '')
    assert lab.new_traps() == [Trap(ROOT + '.2.0.2', [
        Binding(ROOT + '.1.5.2.1.3.10.129', 'INTEGER', 2), Binding(ROOT + '.1.6.1', 'INTEGER', 5)])]


def test_loop_inconsistency_that_appears_and_vanishes(lab):
    lab.switch.set('port_channel.2.loop_inconsistent', '2000')
    assert lab.new_traps() == [Trap(ROOT + '.2.0.3', [
        Binding(ROOT + '.1.8.2.1.3.2000.4098', 'INTEGER', 1), Binding(ROOT + '.1.6.1', 'INTEGER', 5)])]
    lab.switch.set('port_channel.2.loop_inconsistent', '')
    assert lab.new_traps() == [Trap(ROOT + '.2.0.3', [
        Binding(ROOT + '.1.8.2.1.3.2000.4098', 'INTEGER', 2), Binding(ROOT + '.1.6.1', 'INTEGER', 5)])]


def test_port_inconsistency_that_appears_changes_and_vanishes(lab):
    for key, trees, bits in (('pvid', '10', b'\x80'), ('type', '10', b'\xc0'), ('pvid', '', b'\x40'),
                             ('type', '', b'\x00')):
        lab.switch.set(f'port.1.{key}_inconsistent', trees)
        assert lab.new_traps() == [Trap(ROOT + '.2.0.1', [
            Binding(ROOT + '.1.3.1.1.3.10.129', 'OCTET STRING', bits)])]


@BY_CLASS
def test_each_row_of_a_change_has_its_own_trap_in_the_order_of_trees(lab, noti):
    set_inconsistency(lab, noti, '5,9-10')
    assert lab.new_traps() == [raised_trap(noti, tree, 129) for tree in (5, 9, 10)]
    set_inconsistency(lab, noti, '1,9,2000')
    assert lab.new_traps() == [raised_trap(noti, 1, 129), vanished_trap(noti, 5, 129),
                               vanished_trap(noti, 10, 129), raised_trap(noti, 2000, 129)]


def test_what_changes_no_row_has_no_trap(lab):
    lab.switch.set('port.1.root_inconsistent', '10')
    assert len(lab.new_traps()) == 1
    for key, value in (
            ('port.1.root_inconsistent', '10'), ('port.1.link', 'down'), ('port.1.link', 'up'),
            ('port.2.root_inconsistent', '10'), ('port.1.loop_inconsistent', '0,2001-4094'),
            ('switch.loop_guard_default', 'true'), ('mst.region', 'other')):
        lab.switch.set(key, value)
    assert lab.new_traps() == []


@pytest.mark.parametrize('key, value_without, value_before', [
    ('port.1.channel', '2', '0'), ('port.1.switchport', 'false', 'true'), ('port.1.vlans', '11-12', '1-2000'),
    ('rapid_pvst.disabled_vlans', '10', '')])
def test_rows_that_go_and_return_with_their_tree_or_port_have_traps(lab, key, value_without, value_before):
    for noti in CLASSES.values():
        set_inconsistency(lab, noti, '10')
    assert lab.new_traps() == [raised_trap(noti, 10, 129) for noti in CLASSES.values()]
    by_number = sorted(CLASSES.values())
    lab.switch.set(key, value_without)
    assert lab.new_traps() == [vanished_trap(noti, 10, 129) for noti in by_number]
    lab.switch.set(key, value_before)
    assert lab.new_traps() == [raised_trap(noti, 10, 129) for noti in by_number]


@BY_GUARD
def test_traps_tell_the_spanning_tree_type_after_the_change(lab, noti):
    set_inconsistency(lab, noti, '1,2000')
    assert lab.new_traps() == [guard_trap(noti, tree, 129, APPEARED, RAPID_PVST) for tree in (1, 2000)]
    lab.switch.set('switch.mode', 'mst')
    set_inconsistency(lab, noti, '0')
    lab.switch.set('switch.mode', 'rapid-pvst')
    # Port 1 is in tree 1 of both modes: nothing changed there before the set.
    assert lab.new_traps() == [
        guard_trap(noti, 2000, 129, VANISHED, MST), guard_trap(noti, 0, 129, APPEARED, MST),
        guard_trap(noti, 1, 129, VANISHED, MST), guard_trap(noti, 0, 129, VANISHED, RAPID_PVST)]


def test_port_inconsistencies_vanish_with_rapid_pvst_mode(lab):
    set_inconsistency(lab, PORT_CLASS, '1')
    lab.switch.set('switch.mode', 'mst')
    lab.switch.set('port.1.type_inconsistent', '1')
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert lab.new_traps() == [
        port_trap(1, 129, PVID), port_trap(1, 129, NEITHER), port_trap(1, 129, PVID_AND_TYPE)]


# Which classes are sent. The markers' traps prove that the others would have come before them.

def raise_each_class(lab):
    for noti in CLASSES.values():
        set_inconsistency(lab, noti, '10')


@BY_CLASS
def test_each_bit_of_the_trap_word_enables_its_class_alone(lab_to_reset, noti):
    lab = lab_to_reset
    lab.reset(noti, trap_word=noti.word)
    raise_each_class(lab)
    assert lab.new_traps() == [raised_trap(noti, 10, 129)]


@pytest.mark.parametrize('word, noti', [
    ('0x2', LOOP_CLASS), ('fffffff9\n', ROOT_CLASS), (' 00000004 and more', PORT_CLASS)])
def test_trap_word_is_hexadecimal_and_other_bits_do_not_matter(lab_to_reset, word, noti):
    lab = lab_to_reset
    lab.reset(noti, trap_word=word)
    raise_each_class(lab)
    assert lab.new_traps() == [raised_trap(noti, 10, 129)]


@BY_CLASS
def test_without_a_trap_word_a_class_is_sent_only_when_something_else_enables_it(noti):
    with run_snmptrapd_lab(enabled_classes=[noti.number]) as lab:
        lab.reset(noti)
        raise_each_class(lab)
        assert lab.new_traps() == [raised_trap(noti, 10, 129)]


@pytest.mark.parametrize('word', ['0', 'fffffff8', 'yes', ''])
def test_trap_word_without_the_bits_enables_nothing(lab_with_loop_class_to_reset, word):
    lab = lab_with_loop_class_to_reset
    lab.reset(LOOP_CLASS, trap_word=word)
    raise_each_class(lab)
    assert lab.new_traps() == [raised_trap(LOOP_CLASS, 10, 129)]


def test_classes_that_the_word_and_that_something_else_enables_are_all_sent():
    with run_snmptrapd_lab(trap_word=ROOT_CLASS.word, enabled_classes=[PORT_CLASS.number]) as lab:
        assert lab.wait_until_connected() == []
        raise_each_class(lab)
        assert lab.new_traps() == [raised_trap(ROOT_CLASS, 10, 129), raised_trap(PORT_CLASS, 10, 129)]


def test_trap_word_is_read_anew_after_a_hang_up(lab_to_reset):
    lab = lab_to_reset
    lab.reset(trap_word='5')
    raise_each_class(lab)
    assert lab.new_traps() == [raised_trap(ROOT_CLASS, 10, 129), raised_trap(PORT_CLASS, 10, 129)]
    lab.agent.write_trap_word('3')
    lab.agent.hang_up()
    assert lab.wait_until_connected() == []
    for noti in CLASSES.values():
        set_inconsistency(lab, noti, '')
    assert lab.new_traps() == [vanished_trap(ROOT_CLASS, 10, 129), vanished_trap(LOOP_CLASS, 10, 129)]


# Traps go on, each once, whatever happens to the switch or to the agent.

def check_each_class_is_sent_once(lab):
    raise_each_class(lab)
    assert lab.new_traps() == [raised_trap(noti, 10, 129) for noti in CLASSES.values()]
    for noti in CLASSES.values():
        set_inconsistency(lab, noti, '')
    assert lab.new_traps() == [vanished_trap(noti, 10, 129) for noti in CLASSES.values()]


@pytest.mark.parametrize('end', ['stop', 'kill'])
def test_traps_come_after_restarts_of_the_switch(lab, end):
    for _ in range(3):
        getattr(lab.switch, end)()
        lab.switch.start()
        assert lab.wait_until_connected() == []
        check_each_class_is_sent_once(lab)


def test_traps_come_after_hang_ups(lab):
    for _ in range(20):
        lab.agent.hang_up()
    assert lab.wait_until_connected() == []
    check_each_class_is_sent_once(lab)


def test_traps_come_when_the_switch_starts_after_the_module(lab):
    lab.switch.stop()
    lab.agent.hang_up()
    assert lab.snmp.get(f'{ROOT}.1.6.1.0') == [Binding(f'{ROOT}.1.6.1.0', 'noSuchInstance')]
    lab.switch.start()
    assert lab.wait_until_connected() == []
    check_each_class_is_sent_once(lab)


def test_traps_come_without_any_request():
    """The probe asks nothing, and neither does anybody else here: the module waits for no manager."""
    with run_snmptrapd_lab(trap_word=ALL_ENABLED, with_probe=False) as lab:
        assert lab.wait_until_connected() == []
        check_each_class_is_sent_once(lab)


def test_daemon_sends_traps():
    with run_snmptrapd_lab(trap_word=ALL_ENABLED, agent_class=DaemonAgent) as lab:
        assert lab.wait_until_connected() == []
        check_each_class_is_sent_once(lab)
        lab.agent.hang_up()
        assert lab.wait_until_connected() == []
        check_each_class_is_sent_once(lab)
        lab.switch.kill()
        lab.switch.start()
        assert lab.wait_until_connected() == []
        check_each_class_is_sent_once(lab)


def test_unloaded_module_sends_nothing_and_loaded_again_it_does():
    """An agent of its own: each hang-up gives the module another number."""
    with run_snmptrapd_lab(trap_word=ALL_ENABLED) as lab:
        assert lab.wait_until_connected() == []
        with lab.raw_client('private') as client:
            assert client.set_integer(DLMOD_STATUS, UNLOAD).error_status == 0
            raise_each_class(lab)
            assert client.set_integer(DLMOD_STATUS, LOAD).error_status == 0
        assert lab.wait_until_connected() == []
        for noti in CLASSES.values():
            set_inconsistency(lab, noti, '')
        assert lab.new_traps() == [vanished_trap(noti, 10, 129) for noti in CLASSES.values()]

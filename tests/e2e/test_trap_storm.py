"""Thousands of changes at once: requests are answered meanwhile, and of everything the last state arrives."""

import itertools

import pytest
from harness.build import ROOT
from harness.notifications import (
    ALL_ENABLED, APPEARED, CLASSES, PORT_CLASS, RAPID_PVST, VANISHED, guard_trap, port_trap, run_trap_lab)
from harness.polling import wait_until
from harness.repetition import Repetition
from harness.traps import TrapCollector

INTERFACES = {'port.1': 129, 'port_channel.2': 4098}
ROWS_OF_A_TREE = len(CLASSES) * len(INTERFACES)
MOST_TREES = 1000
PVID, NEITHER = b'\x80', b'\x00'
MODE = ROOT + '.1.6.1.0'


def trap_of(noti, tree, bridge_port, is_raised):
    if noti == PORT_CLASS:
        return port_trap(tree, bridge_port, PVID if is_raised else NEITHER)
    return guard_trap(noti, tree, bridge_port, APPEARED if is_raised else VANISHED)


class Storm:
    """All rows of many trees appear, all vanish, and those of every other tree appear again."""

    def __init__(self, lab, collector):
        self._lab = lab
        self._collector = collector
        # Where the kernel grants little room for traps that wait, as to other users than root, the storm is smaller.
        # A quarter of the room for each of the phases, and one to spare.
        trees = range(1, 1 + min(MOST_TREES, collector.capacity // (4 * ROWS_OF_A_TREE)))
        self._phases = [set(trees), set(), set(trees[::2])]
        self.rows = ROWS_OF_A_TREE * len(trees)
        self.changes = ROWS_OF_A_TREE * sum(
            len(before ^ after) for before, after in itertools.pairwise([set(), *self._phases]))
        last_traps = [trap_of(noti, tree, bridge_port, tree in self._phases[-1])
                      for noti in CLASSES.values() for bridge_port in INTERFACES.values() for tree in trees]
        self._last = {trap.bindings[0].oid: trap for trap in last_traps}

    def run(self):
        for trees in self._phases:
            for noti, interface in itertools.product(CLASSES.values(), INTERFACES):
                self._lab.switch.set(f'{interface}.{noti.key}', ','.join(map(str, sorted(trees))))

    def has_told_all(self):
        """Whether each row's last trap tells its state."""
        return self._last == {trap.bindings[0].oid: trap for trap in self._collector.received()
                              if trap.bindings[0].oid in self._last}

    def wait(self):
        wait_until(self.has_told_all, "each row's last trap tells its state")

    def raised_rows(self):
        return [trap.bindings[0] for trap in self._last.values()
                if trap.bindings[0].value in (APPEARED, PVID)]


@pytest.fixture(name='collector')
def fixture_collector():
    with TrapCollector() as collector:
        yield collector


@pytest.fixture(name='lab')
def fixture_lab(collector):
    with run_trap_lab(collector, trap_word=ALL_ENABLED) as lab:
        assert lab.wait_until_connected() == []
        yield lab


def check_mode(client):
    assert client.get(MODE).number == RAPID_PVST


def check_end(lab, storm):
    """Nothing that is older comes later, nothing came twice, and the rows are what the traps told."""
    assert storm.rows <= len(lab.new_traps()) <= storm.changes
    assert storm.has_told_all()
    rows = storm.raised_rows()
    assert lab.snmp.get(*(row.oid for row in rows)) == rows


def test_requests_are_answered_during_a_storm_of_traps(lab, collector):
    storm = Storm(lab, collector)
    with lab.raw_client() as client, Repetition(lambda: check_mode(client)) as requests:
        storm.run()
        answers_until_all_was_caused = requests.count
        storm.wait()
    assert answers_until_all_was_caused > 0
    check_end(lab, storm)


def test_agent_that_takes_nothing_during_a_storm_gets_the_last_states_and_holds_up_nobody(lab, collector):
    storm = Storm(lab, collector)
    lab.agent.pause()
    storm.run()
    lab.agent.resume()
    storm.wait()
    check_end(lab, storm)


def test_switch_that_ends_in_the_middle_of_a_storm_leaves_the_agent_ready_for_the_next(lab, collector):
    storm = Storm(lab, collector)
    lab.agent.pause()
    storm.run()
    lab.switch.kill()
    lab.agent.resume()
    lab.switch.start()
    lab.wait_until_connected()
    storm = Storm(lab, collector)
    storm.run()
    storm.wait()
    check_end(lab, storm)

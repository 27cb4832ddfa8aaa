"""Two managers walk everything at the same time, by GETNEXT and by GETBULK, while the switch changes: every
answer is right for the switch as it was at some moment of the request."""

import random
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

import port_model
import pytest
from harness.build import ROOT, THOROUGH
from harness.lab import run_lab
from harness.oids import is_below
from harness.raw_snmp import INTEGER, OCTETS, UNSIGNED
from port_model import END, VLANS, Timespan, place

CHANGES = 150 if THOROUGH else 60
ROUNDS_AT_LEAST = 3
REPETITIONS = 20
GUARD_SECONDS = 300
# How many answers there are between two changes: none or a few, so that some requests see several changes and
# some see none.
ANSWERS_BETWEEN = (0, 1, 2, 4, 9, 16)

# The module keeps for 10 s, in whole seconds, which bridge ports are in VLANs.
CACHE_SECONDS = 11

# Of the changes, those that are no interface's.
SHARE_OF_SWITCH = 0.1
# Of the answers: so many at least could be nothing else, for all that happened meanwhile.
SHARE_DETERMINED = 1 / 3

KINDS = {INTEGER: 'INTEGER', UNSIGNED: 'Gauge32', OCTETS: 'OCTET STRING'}
SMALL_SETS = [frozenset(), frozenset({1}), frozenset({2}), frozenset({3, 5}), frozenset({2, 4}), VLANS]


class Change(NamedTuple):
    """The state from this change on. The switch got into it at some moment between the two times."""
    sent: float
    answered: float
    rows: dict


class Answers:
    """How many the walkers have received, for who waits for some more; and whether it is over, as planned or
    because of a failure."""

    def __init__(self):
        self._count = 0
        self._changed = threading.Condition()
        self.is_over = threading.Event()

    def received(self):
        with self._changed:
            self._count += 1
            self._changed.notify_all()

    def end(self):
        self.is_over.set()
        with self._changed:
            self._changed.notify_all()

    def wait_for_more(self, how_many):
        with self._changed:
            enough = self._count + how_many
            assert self._changed.wait_for(lambda: self._count >= enough or self.is_over.is_set(),
                                          GUARD_SECONDS), 'the walkers do not go on'


def walk(client, ask, answers):
    """Walks again and again until the changes are over. Returns each OID asked for, and its exchange."""
    log = []
    rounds = 0
    try:
        while rounds < ROUNDS_AT_LEAST or not answers.is_over.is_set():
            oid = ROOT
            while oid == ROOT or is_below(oid, ROOT):
                exchange = ask(client, oid)
                answers.received()
                log.append((oid, exchange))
                oid = check_ascending(oid, exchange)
            rounds += 1
    finally:
        answers.end()
    return log


def check_ascending(after, exchange):
    """Returns the last OID."""
    assert exchange.error_status == 0
    for name, _tag, _content in exchange.variables:
        assert place(name) > place(after)
        after = name
    return after


def choose_role(choice, state, interface):
    """A list of trees, and what it may be: a tree that stands in another role's list has a role already."""
    name = choice.choice(list(port_model.ROLE_KEYS))
    taken = frozenset().union(
        *(state[f'{interface}.{other}'] for other in port_model.ROLE_KEYS if other != name))
    return name, [trees - taken for trees in (frozenset({0, 1}), *SMALL_SETS)]


def choose_of_switch(choice):
    return choice.choice([
        ('switch.loop_guard_default', [False, True]),
        ('rapid_pvst.disabled_vlans', [frozenset(), frozenset({2}), frozenset({1, 4, 5})]),
        ('mst.instance.1.vlans', [frozenset(), frozenset({2}), frozenset({2, 3})]),
        ('mst.instance.2.vlans', [frozenset(), frozenset({4}), frozenset({5})])])


def choose_of_interface(choice, state, interface):
    """The anchor keeps its link, its VLANs and its channel: in each tree that runs a port is up, because one
    without would end a walk."""
    is_port, moves = interface.startswith('port.'), interface != port_model.ANCHOR
    flags = (*port_model.FLAG_KEYS, 'root_guard', 'pre_standard_mst', 'pre_standard_neighbor')
    choices = [
        (choice.choice(flags), [False, True]),
        ('loop_guard', list(port_model.LOOP_GUARD)),
        ('link_type', list(port_model.LINK_TYPES)),
        choose_role(choice, state, interface),
    ]
    if moves:
        choices.append(('vlans', SMALL_SETS))
    if is_port:
        choices.append(('half_duplex', [False, True]))
    if is_port and moves:
        choices += 3 * [('link', ['up', 'down'])] + 2 * [('channel', [0, *port_model.CHANNELS])]
    name, values = choice.choice(choices)
    return f'{interface}.{name}', values


def choose_change(choice, state):
    """A key, and another value than it has."""
    while True:
        key, values = choose_of_switch(choice) if choice.random() < SHARE_OF_SWITCH else choose_of_interface(
            choice, state, choice.choice(port_model.INTERFACES).key)
        others = [value for value in values if value != state[key]]
        if others:
            return key, choice.choice(others)


def change(control, state, answers, seed):
    """Changes the switch again and again, unless a walker has failed. Returns its states, beginning with the
    one as it was."""
    choice = random.Random(seed)
    changes = [Change(0, 0, port_model.rows_of(state))]
    try:
        for _ in range(CHANGES):
            key, value = choose_change(choice, state)
            if answers.is_over.is_set():
                break
            state[key] = value
            rows = port_model.rows_of(state)
            sent = time.monotonic()
            control.set(key, port_model.as_text(value))
            changes.append(Change(sent, time.monotonic(), rows))
            answers.wait_for_more(choice.choice(ANSWERS_BETWEEN))
    finally:
        answers.end()
    return changes


def states_between(changes, first, last):
    """What the switch was at some moment between the two times."""
    ends = [following.answered for following in changes[1:]] + [last]
    return [each.rows for each, end in zip(changes, ends) if each.sent <= last and end >= first]


def decoded(tag, content):
    assert tag in KINDS, f'tag {tag:#x}'
    return KINDS[tag], content if tag == OCTETS else int.from_bytes(content, 'big', signed=tag == INTEGER)


def check_answers(log, changes):
    """And that they could not have been much else, or the check would mean little."""
    determined = checked = 0
    for oid, exchange in log:
        span = Timespan(states_between(changes, exchange.sent, exchange.received),
                        states_between(changes, exchange.sent - CACHE_SECONDS, exchange.received))
        after = oid
        for name, tag, content in exchange.variables:
            right = span.right_answers(after)
            checked += 1
            determined += len(right) == 1 and len(*right.values()) == 1
            if not is_below(name, ROOT):
                assert END in right, f'the walk ended after {after}, not with one of {right}'
                break
            assert decoded(tag, content) in right.get(name, ()), (
                f'{name} = {decoded(tag, content)} after {after}, not one of {right}')
            after = name
    assert determined > SHARE_DETERMINED * checked


def walk_once(lab):
    return [(binding.oid, (binding.kind, binding.value)) for binding in lab.snmp.walk(ROOT)]


@pytest.mark.parametrize('mode', ['mst', 'rapid-pvst'])
def test_answers_of_parallel_walks_are_right_for_a_moment_of_each_request(mode):
    with run_lab('parallel.toml') as lab:
        lab.switch.set('switch.mode', mode)
        state = port_model.initial_state(mode)
        assert walk_once(lab) == port_model.walk_of(state)
        answers = Answers()
        with ThreadPoolExecutor() as pool, lab.switch.control_client() as control, \
                lab.raw_client() as one, lab.raw_client() as other:
            walkers = [
                pool.submit(walk, one, lambda client, oid: client.get_next(oid), answers),
                pool.submit(walk, other, lambda client, oid: client.get_bulk(oid, REPETITIONS), answers)]
            changes = change(control, state, answers, seed=mode)
            logs = [walker.result(GUARD_SECONDS) for walker in walkers]
        assert lab.agent.is_alive()
        for log in logs:
            check_answers(log, changes)
        # Reading its configuration anew, the agent also forgets which bridge ports there were.
        lab.agent.hang_up()
        assert walk_once(lab) == port_model.walk_of(state)

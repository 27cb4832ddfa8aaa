"""What happens as the switch grows, changes, hangs or is left alone."""

import re
import time
from contextlib import ExitStack
from pathlib import Path
from typing import NamedTuple, Optional

from harness.build import ROOT
from harness.polling import GUARD_SECONDS
from harness.raw_snmp import RawClient

from . import switches
from .stand import AGENTS, MODULE, stand_with
from .walk_client import BULK_REPETITIONS, GETBULK
from .walks import ROLES, ROOT_INCONSISTENCIES, agents_side_by_side, rotated, table_oid

MILLISECONDS, NANOSECONDS = 1e3, 1e9
KIB_IN_MIB = 1024
COMMUNITY = 'public'

ROLE_COLUMN = f'{ROOT}.1.12.2.1.3'
FIRST_BASE_PORT = 129
ROOT_GUARD_COLUMN = f'{ROOT}.1.5.1.1.2'
FIRST_IF_INDEX = 0x1A000001

GOAL_LARGE_WALK_SECONDS = 1.5
GOAL_SEARCH_NANOSECONDS = 15
GOAL_SET_MILLISECONDS = 10
GOAL_MEMORY_MIB = 64
# What a request may take beyond the deadline, which is the platform's alone.
DEADLINE_TOLERANCE = 1.1
# Longer than this, nobody waits for an agent whose switch is in trouble.
PATIENCE_DEADLINES = 30
# How long requests go on then, and how far apart they are.
TROUBLE_SECONDS, PAUSE_SECONDS = 2, 0.05
# How long a slow switch takes for a reply.
DELAY_OF_DEADLINE = 0.15
# Until what a start leaves behind is done.
SETTLE_SECONDS = 0.5


class Figure(NamedTuple):
    name: str
    unit: str
    samples: list
    at_most: Optional[float] = None  # the goal
    is_beyond: bool = False  # it was given up at this value


def large_walk(stand, sizes, progress):
    seconds = {name: [] for name in AGENTS}
    rows = sizes.large_vlans * sizes.large_ports
    for number in range(sizes.large_rounds):
        progress(f'the largest switch: round {number + 1} of {sizes.large_rounds}')
        for name in rotated(AGENTS, number):
            timing = stand.measure(name, table_oid(ROLES), GETBULK, 0)
            assert timing.rows == rows, f'{name} has {timing.rows} rows'
            seconds[name].append(timing.seconds)
    title = f'port roles of {sizes.large_vlans} VLANs x {sizes.large_ports} ports, {rows} rows'
    return [Figure(f'{title}: {name}', 's', seconds[name], GOAL_LARGE_WALK_SECONDS if name == MODULE else None)
            for name in AGENTS]


class Change(NamedTuple):
    """A key, the values that it takes by turns, and an object that shows them."""
    name: str
    key: str
    values: tuple
    oid: str


def set_until_served(stand, sizes):
    """From the order until the agent serves it."""
    changes = [Change('a setting of a port', 'port.1.root_guard', ('true', 'false'),
                      f'{ROOT_GUARD_COLUMN}.{FIRST_IF_INDEX}'),
               Change('a link: a row of each tree', 'port.1.link', ('down', 'up'),
                      f'{ROLE_COLUMN}.{sizes.large_vlans}.{FIRST_BASE_PORT}')]
    with RawClient(stand.agents[MODULE].endpoint, COMMUNITY) as client, stand.switch.control_client() as control:
        return [Figure(f'one set there, {change.name}, until the agent serves it', 'ms',
                       [time_change(client, control, change, number) for number in range(sizes.sets)],
                       GOAL_SET_MILLISECONDS) for change in changes]


def time_change(client, control, change, number):
    # One change by itself: changes that follow each other at once may be published together.
    time.sleep(SETTLE_SECONDS)
    before = client.get(change.oid)
    start = time.monotonic()
    control.set(change.key, change.values[number % len(change.values)])
    while (answer := client.get(change.oid)) == before:
        assert time.monotonic() - start < GUARD_SECONDS, f'{change.oid} does not show that {change.key} has changed'
    elapsed = time.monotonic() - start
    assert answer.exception is None, f'{change.oid} is {answer.exception}'
    return elapsed * MILLISECONDS


def proportional_set_kib(pid):
    return int(re.search(r'^Pss:\s+(\d+) kB', Path(f'/proc/{pid}/smaps_rollup').read_text(encoding='ascii'),
                         re.MULTILINE)[1])


def memory(stand):
    sizes = {name: proportional_set_kib(pid) / KIB_IN_MIB
             for name, pid in (('stp-switchd', stand.switch.pid), ('snmpd with the module', stand.agents[MODULE].pid))}
    return [*(Figure(f'memory of {name} there', 'MiB', [size]) for name, size in sizes.items()),
            Figure('memory of both', 'MiB', [sum(sizes.values())], GOAL_MEMORY_MIB)]


def largest_switch(sizes, progress):
    progress('the largest switch: starting')
    with agents_side_by_side(switches.plain(switches.RAPID_PVST, sizes.large_vlans, sizes.large_ports),
                             table_oid(ROLES), [GETBULK]) as stand:
        return [*large_walk(stand, sizes, progress), *set_until_served(stand, sizes), *memory(stand)]


def search_cost(sizes, progress):
    """What a row costs where there are more interfaces, and else the same."""
    counts = (sizes.few_interfaces, sizes.many_interfaces)
    oid = table_oid(ROOT_INCONSISTENCIES)
    with ExitStack() as stands:
        pair = []
        for count in counts:
            stand = stands.enter_context(stand_with(switches.inconsistent(
                switches.RAPID_PVST, sizes.inconsistent_trees, sizes.few_interfaces // 2, count)))
            stand.start_module()
            pair.append(stand)
        samples = []
        for number in range(sizes.rounds):
            progress(f'inconsistency search: round {number + 1} of {sizes.rounds}')
            few, many = (NANOSECONDS / stand.measure(MODULE, oid, GETBULK, sizes.seconds).rate for stand in pair)
            samples.append((many - few) / (counts[1] - counts[0]))
    return [Figure(f'inconsistency search, each interface from {counts[0]} to {counts[1]}', 'ns', samples,
                   GOAL_SEARCH_NANOSECONDS)]


def longest_request(sizes, trouble, spoil):
    """Of GETBULKs one after the other, to an agent whose switch is in trouble: it need not notice at once."""
    deadline = sizes.deadline_ms / MILLISECONDS
    longest, is_answered = 0, True
    with stand_with(switches.plain(switches.RAPID_PVST, sizes.vlans, sizes.ports)) as stand:
        agent = stand.start_module(deadline_ms=sizes.deadline_ms)
        with RawClient(agent.endpoint, COMMUNITY, PATIENCE_DEADLINES * deadline) as client:
            client.get_bulk(table_oid(ROLES), BULK_REPETITIONS)
            spoil(stand.switch)
            end = time.monotonic() + TROUBLE_SECONDS + deadline
            while is_answered and time.monotonic() < end:
                start = time.monotonic()
                try:
                    client.get_bulk(table_oid(ROLES), BULK_REPETITIONS)
                except TimeoutError:
                    is_answered = False
                longest = max(longest, time.monotonic() - start)
                time.sleep(PAUSE_SECONDS)
    return Figure(f'the longest GETBULK of {BULK_REPETITIONS} rows {trouble}, deadline {deadline:g} s', 's', [longest],
                  deadline * DEADLINE_TOLERANCE, is_beyond=not is_answered)


def troubled_switches(sizes, progress):
    progress('a switch that hangs, and one that is slow')
    delay_ms = round(sizes.deadline_ms * DELAY_OF_DEADLINE)
    return [longest_request(sizes, 'while the switch hangs', lambda switch: switch.hang()),
            longest_request(sizes, f'while the switch takes {delay_ms} ms for a reply',
                         lambda switch: switch.fault('delay', delay_ms=delay_ms))]


def voluntary_switches(pid):
    return sum(int(re.search(r'^voluntary_ctxt_switches:\s+(\d+)', status.read_text(encoding='ascii'),
                             re.MULTILINE)[1]) for status in Path(f'/proc/{pid}/task').glob('*/status'))


def idle_switch(sizes, progress):
    progress('a switch that nobody is connected to')
    with stand_with(switches.plain(switches.RAPID_PVST, sizes.vlans, sizes.ports)) as stand:
        time.sleep(SETTLE_SECONDS)
        before = voluntary_switches(stand.switch.pid)
        time.sleep(sizes.idle_seconds)
        count = voluntary_switches(stand.switch.pid) - before
    return [Figure(f'wake-ups of a switch that nobody is connected to, in {sizes.idle_seconds:g} s', '', [count], 0)]


def measure_growth(sizes, progress):
    return [figure for measure in (largest_switch, search_cost, troubled_switches, idle_switch)
            for figure in measure(sizes, progress)]

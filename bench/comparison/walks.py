"""Which walks are measured, and what each has to reach."""

from contextlib import contextmanager
from typing import NamedTuple, Optional

from harness.build import ROOT

from . import switches
from .stand import AGENTS, stand_with
from .walk_client import GETBULK, GETNEXT


class Goal(NamedTuple):
    """Of a walk's speed: shares of the others' speeds, None where nothing is asked."""
    of_ceiling: Optional[float] = None
    of_agentx: Optional[float] = None


class Walk(NamedTuple):
    name: str
    suffix: str  # of the table's OID, below the module's
    goal: Goal  # by GETBULK


class Kind(NamedTuple):
    """A kind of switch and the walks that are measured there."""
    mode: str
    about: str
    scenario: str
    walks: list


class Measured(NamedTuple):
    """One walk, and the agents' timings round by round."""
    walk: Walk
    mode: str
    how: str
    goal: Goal
    timings: dict


PORTS_OF_TREES = Goal(0.5, 7)
ONE_QUESTION = Goal(0.7, 8)
INCONSISTENCIES = Goal(0.4, 5)
MST_INSTANCES = Goal(0.4, 5)
NO_GOAL = Goal()
BY_GETNEXT = Goal(0.9)

ROLES = Walk('port roles', '1.12.2', PORTS_OF_TREES)
RPVST_PORTS = Walk('RPVST ports', '1.13.1', PORTS_OF_TREES)
ROOT_GUARD = Walk('root guard', '1.5.1', ONE_QUESTION)
LOOP_GUARD = Walk('loop guard', '1.8.1', ONE_QUESTION)
RSTP_PORTS = Walk('RSTP ports', '1.12.1', ONE_QUESTION)
PVST_VLANS = Walk('PVST VLANs', '1.2.2', ONE_QUESTION)
MST_INSTANCE = Walk('MST instances', '1.14.5', MST_INSTANCES)
SMST_PORTS = Walk('SMST ports', '1.14.7', NO_GOAL)
LONG_PATH_COSTS = Walk('long path costs', '1.6.3', NO_GOAL)
PORT_INCONSISTENCIES = Walk('port inconsistencies', '1.3.1', INCONSISTENCIES)
ROOT_INCONSISTENCIES = Walk('root inconsistencies', '1.5.2', INCONSISTENCIES)
LOOP_INCONSISTENCIES = Walk('loop inconsistencies', '1.8.2', INCONSISTENCIES)


def table_oid(walk):
    return f'{ROOT}.{walk.suffix}'


def kinds(sizes):
    usual = f'{sizes.vlans} VLANs x {sizes.ports} ports'
    inconsistent = f'{sizes.inconsistent_ports} ports inconsistent in {sizes.inconsistent_trees} trees'

    def inconsistent_switch(mode):
        return switches.inconsistent(mode, sizes.inconsistent_trees, sizes.inconsistent_ports,
                                     sizes.inconsistent_ports)

    return [
        Kind(switches.RAPID_PVST, usual, switches.plain(switches.RAPID_PVST, sizes.vlans, sizes.ports),
             [ROLES, RPVST_PORTS, ROOT_GUARD, LOOP_GUARD, RSTP_PORTS, PVST_VLANS, LONG_PATH_COSTS]),
        Kind(switches.MST, f'{usual}, {sizes.instances} instances',
             switches.plain(switches.MST, sizes.vlans, sizes.ports, sizes.instances),
             [ROLES, ROOT_GUARD, LOOP_GUARD, RSTP_PORTS, MST_INSTANCE, SMST_PORTS, LONG_PATH_COSTS]),
        Kind(switches.RAPID_PVST, inconsistent, inconsistent_switch(switches.RAPID_PVST),
             [PORT_INCONSISTENCIES, ROOT_INCONSISTENCIES, LOOP_INCONSISTENCIES]),
        Kind(switches.MST, inconsistent, inconsistent_switch(switches.MST),
             [ROOT_INCONSISTENCIES, LOOP_INCONSISTENCIES]),
    ]


@contextmanager
def agents_side_by_side(scenario, root=ROOT, ways=(GETBULK, GETNEXT)):
    """A stand whose three agents serve the same below the root."""
    with stand_with(scenario) as stand:
        stand.start_module()
        stand.copy_module(root, ways)
        yield stand


def rotated(items, by):
    by %= len(items)
    return [*items[by:], *items[:by]]


def measure_kind(kind, sizes, progress):
    """In each round each walk, in each walk each agent once; who is first changes from round to round."""
    measured = [Measured(walk, kind.mode, how, walk.goal if how == GETBULK else BY_GETNEXT,
                         {name: [] for name in AGENTS})
                for how in (GETBULK, GETNEXT) for walk in kind.walks]
    if not measured:
        return []
    with agents_side_by_side(kind.scenario) as stand:
        for number in range(sizes.rounds):
            progress(f'{kind.mode}, {kind.about}: round {number + 1} of {sizes.rounds}')
            for one in measured:
                for name in rotated(AGENTS, number):
                    one.timings[name].append(stand.measure(name, table_oid(one.walk), one.how, sizes.seconds))
    return measured

#!/usr/bin/python3
"""Writes what both modules of a build serve of every scenario, in the default context and in those of trees.

Usage: STPSNMP_BUILD_DIR=BUILD_FOLDER tests/e2e/write_walks.py FOLDER

FOLDER gets a file for each scenario, with an object a line, for comparison with those of another build. Each switch
must end well when it is told to.
"""

import json
import sys
from pathlib import Path

from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION
from harness.build import BRIDGE_ROOT, PROJECT, ROOT, SCENARIOS
from harness.lab import run_lab_of
from harness.oids import still
from harness.snmp_tools import Failure, v3
from harness.switch import playing

# Of a switch with thousands of trees, the contexts of so many.
MOST_CONTEXTS = 10
CONTEXT_OF_TREE = {'mst': 'mst-{}', 'rapid-pvst': 'vlan-{}'}
PROTOCOL = f'{BRIDGE_ROOT}.2.1.0'


def contexts_of(switch):
    overview = json.loads(switch.control('show', '--json'))
    context = CONTEXT_OF_TREE[overview['mode']]
    return [context.format(tree['tree']) for tree in overview['trees'][:MOST_CONTEXTS]]


def lines_of(lab, root, context=''):
    who = v3('alice', context)
    if context:
        lab.wait_for_context(who, PROTOCOL)
    walked = lab.snmp.bulk_walk(root, who=who)
    assert walked and not isinstance(walked, Failure), f'walk of {root} in the context {context!r}: {walked}'
    return [f'{context}{binding.oid} = {binding.kind}: {binding.value!r}\n' for binding in still(walked)]


def walk(scenario):
    with run_lab_of(playing(scenario), serves=MODULE_CONFIGURATION + BRIDGE_CONFIGURATION, with_probe=False) as lab:
        lines = lines_of(lab, ROOT) + lines_of(lab, BRIDGE_ROOT)
        for context in contexts_of(lab.switch):
            lines += lines_of(lab, BRIDGE_ROOT, context)
        lab.check()
    return lines


def main(arguments):
    if len(arguments) != 1 or arguments[0].startswith('-'):
        print(__doc__.strip())
        sys.exit(0 if arguments[:1] in (['-h'], ['--help']) else 2)
    folder = Path(arguments[0])
    for scenario in [*sorted(PROJECT.glob('scenarios/*.toml')), *sorted(SCENARIOS.glob('*.toml'))]:
        lines = walk(scenario)
        (folder / f'{scenario.stem}.walk').write_text(''.join(lines), encoding='utf-8')


main(sys.argv[1:])

"""The overview of a switch, as the switch tells it and as a walk of its agent does."""

import json
import subprocess
import sys

import pytest
from harness.build import PROJECT, ROOT
from harness.lab import run_lab

sys.path.insert(0, str(PROJECT / 'tools/show-walk'))
from overview import overview_of  # noqa: E402
from walk import read_names, read_walk  # noqa: E402

NAMES = read_names(PROJECT / 'tools/show-walk/object-names.tsv')
SEEDS = 3


def numbers(text):
    ranges = (part.partition('-') for part in text.split(',') if part)
    return {number for first, _, last in ranges for number in range(int(first), int(last or first) + 1)}


def by_tree(lists):
    return {(kind, tree) for kind, trees in lists.items() for tree in numbers(trees)}


def told_by_walk(lab):
    walk = subprocess.run(
        ['snmpwalk', '-v2c', '-c', 'public', '-On', '-Oe', '-Ox', '--hexOutputLength=0', lab.agent.endpoint, ROOT],
        check=True, capture_output=True, text=True, timeout=60).stdout
    return overview_of(NAMES, read_walk(walk.splitlines(), NAMES, ROOT))


def as_a_walk_can_tell(overview, keys):
    """Ports go by their numbers. A port without a link has neither link type nor flags, and the CIST has the members
    of its own VLANs only."""
    names = {value: (key.replace('port_channel', 'channel').removesuffix('.name').replace('.', ' '),
                     numbers(keys[key.removesuffix('name') + 'vlans']))
             for key, value in keys.items() if key.startswith('port') and key.endswith('.name')}
    cist_vlans = next((numbers(tree['vlans']) for tree in overview['trees'] if tree['tree'] == 0), set())
    told = {**overview, 'name': '', 'ports': []}
    for port in overview['ports']:
        name, vlans = names[port['name']]
        roles = {(role, tree) for role, tree in by_tree(port['roles']) if tree != 0 or vlans & cist_vlans}
        is_up = port['link'] != 'down'
        told['ports'].append({**port, 'name': name, 'roles': roles, 'inconsistent': by_tree(port['inconsistent']),
                              'flags': set(port['flags']) if is_up else set(), 'guards': set(port['guards']),
                              'link': port['link'] if is_up else None})
    return told


@pytest.mark.parametrize('mode', ['mst', 'rapid-pvst'])
@pytest.mark.parametrize('seed', range(SEEDS))
def test_a_walk_tells_what_the_switch_does(tmp_path, mode, seed):
    scenario = tmp_path / 'generated.toml'
    scenario.write_text(subprocess.run(
        [PROJECT / 'scenarios/generate', '--ports', '24', '--channels', '5', '--vlans', '40', '--instances', '3',
         '--mode', mode, '--seed', str(seed)], check=True, capture_output=True, text=True, timeout=60).stdout,
        encoding='utf-8')
    with run_lab(scenario, with_probe=False) as lab:
        walked = told_by_walk(lab)
        keys = json.loads(lab.switch.control('show', '--flat', '--json'))
        told = json.loads(lab.switch.control('show', '--json'))
    for port in walked['ports']:
        port.update(roles=by_tree(port['roles']), inconsistent=by_tree(port['inconsistent']),
                    flags=set(port['flags']), guards=set(port['guards']), link=port.get('link'))
    assert len(walked['ports']) > 10
    assert walked == as_a_walk_can_tell(told, keys)

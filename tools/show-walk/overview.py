"""What the overview tells of a switch, as far as a walk of its agent knows: the document that stp-overview reads."""

from collections import Counter, defaultdict

from readable import (BRIDGE_PORTS, bridge_identifier, bridge_port_name, bridge_port_of, ranges, set_bits,
                      value_names)
from walk import parent

MODES = {'mst': 'mst', 'rapidPvst': 'rapid-pvst'}
LINKS = {'pointToPoint': 'point-to-point', 'shared': 'shared'}
ROLES = ('root', 'designated', 'alternate', 'backup')
FLAGS = {'operEdge': 'edge', 'boundary': 'boundary', 'peer': 'peer', 'dispute': 'dispute'}
PORT_INCONSISTENCIES = {'portVlanId': 'pvid', 'portType': 'type'}
FIRST_OF_HIGH_VLANS = 2048
VLANS = range(1, 4095)  # without the reserved ones
TREES = range(4095)  # instances, or VLANs
LARGEST_NUMBER = 2**32 - 1
CIST = '0'


class Walk:
    """The values of a walk by their objects' names and by instance."""

    def __init__(self, names, values):
        self.forms = {known.name: known.form for known in names.values()}
        self.columns = defaultdict(dict)
        arcs = Counter(parent(suffix) for suffix, known in names.items() if known.kind == 'index')
        for value in values:
            # An agent may say anything.
            if value.suffix in names and value.instance.count('.') + 1 == arcs.get(parent(value.suffix), 1):
                self.columns[names[value.suffix].name][value.instance] = value

    def rows(self, name):
        return self.columns[name].items()

    def rows_of_trees(self, name):
        """Those whose index begins with a tree that there can be."""
        return [(instance, value) for instance, value in self.rows(name) if int(instance.partition('.')[0]) in TREES]

    def value(self, name, instance='0'):
        return self.columns[name].get(instance)

    def named(self, name, instance='0'):
        """An enumeration's value by its name; None where there is none."""
        value = self.value(name, instance)
        return value and value_names(self.forms[name]).get(value.text)

    def number(self, name, instance='0'):
        value = self.value(name, instance)
        number = int(value.text) if value and value.text and value.text.isdecimal() else None
        return number if number is None or number <= LARGEST_NUMBER else None

    def bits(self, name, value):
        """The names of the bits that are set."""
        known = value_names(self.forms[name].partition(':')[2])
        return [known[bit] for bit in map(str, set_bits(value.octets())) if bit in known]


def tree_and_port(instance):
    tree, _, port = instance.partition('.')
    return int(tree), int(port)


def text_of(value):
    return value.octets().decode('utf-8', 'replace') if value.is_octets() else value.text


def region(walk):
    name, revision = walk.value('stpxMSTRegionName'), walk.number('stpxSMSTRegionRevision')
    digest = walk.value('stpxSMSTConfigDigest')
    if name is None or revision is None or not digest or not digest.octets():
        return None
    return {'name': text_of(name), 'revision': revision, 'digest': digest.octets().hex()}


def regional_root(walk):
    bridge, cost = walk.value('stpxSMSTInstanceBridgeId', CIST), walk.number('stpxSMSTInstanceCounter', CIST)
    if not bridge or not bridge.octets() or cost is None:
        return None
    return {'bridge': bridge_identifier(bridge.octets()), 'cost': cost}


def tree_of_instance(walk, instance):
    low, high = (walk.value(f'stpxSMSTInstanceVlansMapped{half}', instance) for half in ('Low', 'High'))
    tree = {'tree': int(instance)}
    if low and high:
        mapped = set_bits(low.octets()) + set_bits(high.octets(), FIRST_OF_HIGH_VLANS)
        tree['vlans'] = ranges(vlan for vlan in mapped if vlan in VLANS)
    hops = walk.number('stpxSMSTInstanceValue', instance)
    return tree if hops is None else {**tree, 'hops': hops}


def vlans_in_state(walk, state):
    return sorted(int(vlan) for vlan, _ in walk.rows('stpxPVSTVlanState')
                  if int(vlan) in VLANS and walk.named('stpxPVSTVlanState', vlan) == state)


def tree_lists(trees_of):
    return {kind: ranges(sorted(trees)) for kind, trees in trees_of.items()}


class Ports(dict):
    """The bridge ports by their numbers."""

    def __missing__(self, number):
        self[number] = {'name': bridge_port_name(number) or f'bridge port {number}', 'flags': [], 'guards': [],
                        'roles': defaultdict(list), 'inconsistent': defaultdict(list)}
        return self[number]

    def add_guards(self, walk):
        by_default = walk.named('stpxLoopGuardGlobalDefaultMode')
        for number, _ in walk.rows('stpxLoopGuardConfigSetting'):
            port, setting = self[int(number)], walk.named('stpxLoopGuardConfigSetting', number)
            if 'enabled' == (by_default if setting == 'default' else setting):
                port['guards'].append('loop')
        for if_index, _ in walk.rows('stpxRootGuardConfigSetting'):
            number = bridge_port_of(int(if_index))
            if number is None:
                continue
            port, setting = self[number], walk.named('stpxRootGuardConfigSetting', if_index)
            if setting == 'enabled':
                port['guards'].append('root')

    def add_links(self, walk):
        for number, _ in walk.rows('stpxRSTPPortOperLinkType'):
            port, kind = self[int(number)], walk.named('stpxRSTPPortOperLinkType', number)
            if kind in LINKS:
                port['link'] = LINKS[kind]

    def add_flags(self, walk):
        for number, value in walk.rows('stpxSMSTPortFlags'):
            self[int(number)]['flags'] = [FLAGS[bit] for bit in walk.bits('stpxSMSTPortFlags', value)]
        for number, _ in walk.rows('stpxSMSTPortPreStandardStatus'):
            if walk.named('stpxSMSTPortPreStandardStatus', number) == 'preStandard':
                self[int(number)]['flags'].append('pre-standard')
        for instance, value in walk.rows_of_trees('stpxRPVSTPortFlags'):
            flags = self[tree_and_port(instance)[1]]['flags']
            flags += [FLAGS[bit] for bit in walk.bits('stpxRPVSTPortFlags', value) if FLAGS[bit] not in flags]

    def add_roles(self, walk):
        for instance, _ in walk.rows_of_trees('stpxRSTPPortRole'):
            tree, number = tree_and_port(instance)
            port, role = self[number], walk.named('stpxRSTPPortRole', instance)
            if role in ROLES:
                port['roles'][role].append(tree)

    def add_inconsistencies(self, walk):
        for kind, name in (('root', 'stpxRootInconsistencyState'), ('loop', 'stpxLoopInconsistencyState')):
            for instance, _ in walk.rows_of_trees(name):
                tree, number = tree_and_port(instance)
                self[number]['inconsistent'][kind].append(tree)
        for instance, value in walk.rows_of_trees('stpxInconsistentState'):
            tree, number = tree_and_port(instance)
            for bit in walk.bits('stpxInconsistentState', value):
                self[number]['inconsistent'][PORT_INCONSISTENCIES[bit]].append(tree)

    def in_order(self):
        """Of interface indexes: port-channels first. Trees are lists as text."""
        order = sorted(self, key=lambda number: (number not in BRIDGE_PORTS['channel'], number))
        return [{**self[number], 'roles': tree_lists(self[number]['roles']),
                 'inconsistent': tree_lists(self[number]['inconsistent'])} for number in order]


def overview_of(names, values):
    walk, ports = Walk(names, values), Ports()
    for add in (ports.add_links, ports.add_flags, ports.add_roles, ports.add_inconsistencies, ports.add_guards):
        add(walk)
    overview = {'name': '', 'ports': ports.in_order()}
    mode = MODES.get(walk.named('stpxSpanningTreeType'))
    if mode == 'mst':
        overview['trees'] = [tree_of_instance(walk, instance)
                             for instance, _ in walk.rows_of_trees('stpxSMSTInstanceVlansMappedLow')]
        known = {'region': region(walk), 'regional_root': regional_root(walk)}
    else:
        overview['trees'] = [{'tree': vlan} for vlan in vlans_in_state(walk, 'true')]
        known = {'disabled_vlans': ranges(vlans_in_state(walk, 'false'))}
    known['mode'] = mode
    return overview | {key: value for key, value in known.items() if value}

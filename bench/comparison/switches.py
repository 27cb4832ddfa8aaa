"""The scenarios that are measured: every port is a member of every VLAN, so that the number of rows is known."""

MST, RAPID_PVST = 'mst', 'rapid-pvst'


def id_range(first, last):
    return str(first) if first == last else f'{first}-{last}'


def instances(count, vlans):
    """VLAN 1 stays with the CIST; the others are shared in ranges of nearly equal size."""
    for number in range(1, count + 1):
        first, behind = (2 + (vlans - 1) * edge // count for edge in (number - 1, number))
        carried = id_range(first, behind - 1) if first < behind else ''
        yield f'[[mst.instance]]\nid = {number}\nvlans = "{carried}"\n'


def port(number, vlans, inconsistent_in=''):
    edge = 'true' if number % 2 else 'false'
    lines = ['[[port]]', f'number = {number}', f'vlans = "{vlans}"', 'peer = true', f'edge = {edge}']
    if inconsistent_in:
        lines += [f'{kind}_inconsistent = "{inconsistent_in}"' for kind in ('root', 'loop', 'pvid')]
    return '\n'.join(lines) + '\n'


def scenario(mode, parts):
    return '\n'.join([f'[switch]\nmode = "{mode}"\npath_cost_method = "long"\n', '[mst]\nregion = "bench"\n', *parts])


def plain(mode, vlans, ports, instance_count=0):
    members = id_range(1, vlans)
    return scenario(mode, [*instances(instance_count, vlans), *(port(number + 1, members) for number in range(ports))])


def inconsistent(mode, trees, ports, interfaces):
    """The first `ports` of the interfaces are members of as many VLANs as there are trees, each in a tree of its own,
    and inconsistent in all; the others are in no VLAN."""
    if mode == MST:
        shared = instances(trees - 1, trees)
        inconsistent_in = id_range(0, trees - 1)
    else:
        shared, inconsistent_in = (), id_range(1, trees)
    members = id_range(1, trees)
    return scenario(mode, [*shared, *(port(number, members, inconsistent_in) if number <= ports else port(number, '')
                                      for number in range(1, interfaces + 1))])

"""Bridges of the kernel with links of all kinds: doubled ones, chords, one that leads back, bonds."""

import pytest
from bridge_lab.linux_bridge import LinuxBridge
from bridge_lab.namespaces import LabError, connect
from golden import bridge_channel, bridge_port
from harness.polling import wait_until
from live_lab import CIST, root_guards, run_lab, wait_until_agreed, walked_roles

PRIORITIES = [4096, 8192, 12288, 16384]

# Where bridges do not hear each other in namespaces, links as these would be loops.
pytestmark = pytest.mark.usefixtures('linux_ring')


@pytest.fixture(name='bridges', scope='module')
def fixture_bridges(namespaces):
    """Four, all connected with each other, the first two by two links: six links close a loop each."""
    made = []
    for priority in PRIORITIES:
        made.append(LinuxBridge(namespaces.make()))
        made[-1].create(priority)
    for one, other in ((0, 1), (0, 1), (0, 2), (0, 3), (1, 2), (1, 3), (2, 3)):
        link(made[one], made[other])
    return made


def link(one, other):
    number = link.made = getattr(link, 'made', 0) + 1
    names = (f'one{number}', f'other{number}')
    connect(one.namespace, names[0], other.namespace, names[1])
    one.add_port(names[0])
    other.add_port(names[1])
    return names



def wait_until_settled(*bridges):
    """No port is on its way to forwarding any more."""
    wait_until(lambda: all(port.forwards or port.blocks for bridge in bridges
                           for port in bridge.status().ports.values()), 'all ports forward or block')


@pytest.mark.parametrize('place, expected', [
    (0, ['designated'] * 4),
    (1, ['root', 'alternate', 'designated', 'designated']),
    (2, ['root', 'alternate', 'designated']),
    (3, ['root', 'alternate', 'alternate']),
])
def test_doubled_links_and_chords(bridges, place, expected):
    wait_until_settled(*bridges)
    with run_lab(bridges[place]) as lab:
        assert wait_until_agreed(lab, bridges[place]) == {
            (CIST, bridge_port(number)): role for number, role in enumerate(expected, 1)}
        lab.check()


def test_link_that_leads_back_to_the_same_bridge_is_a_backup(namespaces):
    bridge = LinuxBridge(namespaces.make())
    bridge.create(4096)
    link(bridge, bridge)
    wait_until_settled(bridge)
    with run_lab(bridge) as lab:
        assert wait_until_agreed(lab, bridge) == {
            (CIST, bridge_port(1)): 'designated', (CIST, bridge_port(2)): 'backup'}
        lab.check()


def test_bridge_may_come_after_the_switch(namespaces):
    bridge = LinuxBridge(namespaces.make(), 'late0')
    with run_lab(bridge) as lab:
        assert walked_roles(lab) == {}
        bridge.create(4096)
        link(bridge, bridge)
        wait_until_settled(bridge)
        wait_until_agreed(lab, bridge)
        lab.check()


def test_bridge_that_is_renamed_is_gone_until_it_has_its_name_again(namespaces):
    bridge = LinuxBridge(namespaces.make(), 'name0')
    bridge.create(4096)
    link(bridge, bridge)
    with run_lab(bridge) as lab:
        wait_until_settled(bridge)
        before = wait_until_agreed(lab, bridge)
        rename(bridge.namespace, 'name0', 'name1')
        wait_until(lambda: root_guards(lab) == {}, 'the bridge is gone')
        assert walked_roles(lab) == {}
        rename(bridge.namespace, 'name1', 'name0')
        wait_until_settled(bridge)
        assert wait_until_agreed(lab, bridge) == before
        lab.check()


def rename(namespace, before, after):
    namespace.ip_batch(f'link set {before} down', f'link set {before} name {after}', f'link set {after} up')


def test_bond_is_a_port_channel_with_its_members(namespaces):
    bridge = LinuxBridge(namespaces.make())
    bridge.create(4096)
    try:
        bridge.namespace.ip('link', 'add', 'bond0', 'type', 'bond', 'miimon', '10')
    except LabError as failure:
        pytest.skip(f'this kernel has no bonds: {failure}')
    others = namespaces.make()
    for number in (1, 2):
        connect(bridge.namespace, f'member{number}', others, f'peer{number}')
        bridge.namespace.ip_batch(f'link set member{number} down', f'link set member{number} master bond0')
    bridge.namespace.ip('link', 'set', 'bond0', 'up')
    bridge.add_port('bond0')
    with run_lab(bridge) as lab:
        wait_until(lambda: walked_roles(lab) == {(CIST, bridge_channel(1)): 'designated'}, 'the channel is there')
        others.ip('link', 'set', 'peer1', 'down')
        wait_until(lambda: lab.switch.control('show').count('link = up') == 1, 'one member has lost its link')
        assert walked_roles(lab) == {(CIST, bridge_channel(1)): 'designated'}
        others.ip('link', 'set', 'peer2', 'down')
        wait_until(lambda: walked_roles(lab) == {}, 'the channel has lost its link')
        bridge.namespace.ip('link', 'set', 'member2', 'nomaster')
        others.ip('link', 'set', 'peer1', 'up')
        wait_until(lambda: walked_roles(lab) == {(CIST, bridge_channel(1)): 'designated'}, 'the channel is back')
        lab.check()

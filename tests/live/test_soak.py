"""A ring of the kernel's bridges where links, ports, bridges, roots, switch processes and agents come and go under walks.
Behind each round all walks have to be the kernel's word again."""

from contextlib import ExitStack

import pytest
from bridge_lab.ring import LINKS, PRIORITIES, NothingBlocks, port_to
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION
from harness.build import BRIDGE_ROOT, ROOT
from harness.polling import wait_until
from harness.soak import Usage, manager, soak
from live_lab import root_inconsistencies, run_lab, wait_until_agreed, walked_roles

REPETITIONS = 20
LEAF = 'c'  # the bridge that comes and goes
SHORT_LIVED_PORTS = 20


@pytest.fixture(name='shared_labs', scope='module')
def fixture_shared_labs(linux_ring):
    with ExitStack() as stack:
        yield {name: stack.enter_context(run_lab(linux_ring.bridge(name), with_probe=False,
                                                 serves=MODULE_CONFIGURATION + BRIDGE_CONFIGURATION))
               for name in linux_ring.names}


class SoakedRing:
    def __init__(self, ring, labs):
        self._ring = ring
        self._labs = labs

    def troubles(self):
        return [self.pull_a_link, self.take_a_port_out, self.add_and_remove_ports, self.delete_a_bridge,
                self.bring_a_better_root, self.change_a_priority, self.restart_a_switch, self.hang_a_switch,
                self.reload_an_agent]

    def pull_a_link(self, choice):
        link = choice.choice(LINKS)
        self._ring.pull(*link)
        self._ring.restore(*link)

    def take_a_port_out(self, choice):
        one, other = choice.choice(LINKS)
        bridge = self._ring.bridge(one)
        bridge.remove_port(port_to(other))
        bridge.add_port(port_to(other))

    def add_and_remove_ports(self, choice):
        bridge = self._ring.bridge(choice.choice(self._ring.names))
        bridge.namespace.ip_batch(*(
            line for number in range(SHORT_LIVED_PORTS) for line in (
                f'link add x{number} type veth peer name y{number}', f'link set y{number} up',
                f'link set x{number} up master {bridge.device}')))
        bridge.namespace.ip_batch(*(f'link del x{number}' for number in range(SHORT_LIVED_PORTS)))

    def delete_a_bridge(self, _choice):
        bridge = self._ring.bridge(LEAF)
        bridge.delete()
        wait_until(lambda: walked_roles(self._labs[LEAF]) == {}, 'the roles are gone')
        bridge.create(PRIORITIES[LEAF])
        for other in ('a', 'b'):
            bridge.add_port(port_to(other))

    def bring_a_better_root(self, _choice):
        self._ring.better_root()
        wait_until(lambda: root_inconsistencies(self._labs['a']), 'the inconsistency is there')
        self._ring.no_better_root()

    def change_a_priority(self, choice):
        name = choice.choice(self._ring.names)
        self._ring.bridge(name).set_priority(0)
        self._ring.bridge(name).set_priority(PRIORITIES[name])

    def restart_a_switch(self, choice):
        switch = self._labs[choice.choice(self._ring.names)].switch
        getattr(switch, choice.choice(['kill', 'stop']))()
        switch.start()

    def hang_a_switch(self, choice):
        name = choice.choice(self._ring.names)
        self._labs[name].switch.hang()
        wait_until(lambda: walked_roles(self._labs[name]) == {}, 'the lease is over')
        self._labs[name].switch.resume()

    def reload_an_agent(self, choice):
        self._labs[choice.choice(self._ring.names)].agent.hang_up()

    def come_to_rest(self):
        wait_until(self._one_blocks, 'one port of the ring blocks')
        for name, lab in self._labs.items():
            wait_until_agreed(lab, self._ring.bridge(name))
        wait_until(lambda: not root_inconsistencies(self._labs['a']), 'nothing is inconsistent')

    def _one_blocks(self):
        """The word of a root that is none any more goes round until it is too old, and all ports may forward meanwhile."""
        try:
            self._ring.wait_until_one_blocks()
        except NothingBlocks:
            return False
        return True


def test_every_walk_is_the_kernels_word_after_all_kinds_of_trouble(labs, ring, capsys):
    soaked = SoakedRing(ring, labs)
    troubles = soaked.troubles()
    with ExitStack() as stack:
        walks = [stack.enter_context(manager(lab, root, repetitions)) for lab in labs.values()
                 for root, repetitions in ((ROOT, None), (BRIDGE_ROOT, REPETITIONS))]
        for walk in walks:
            walk.wait_for_more()
        soaked.come_to_rest()
        usages = {name: Usage(lab) for name, lab in labs.items()}

        def come_to_rest():
            soaked.come_to_rest()
            for usage in usages.values():
                usage.check_at_rest()

        rounds = soak(troubles, come_to_rest, seed=18)
    for usage in usages.values():
        usage.check_growth(rounds * len(troubles))
    with capsys.disabled():
        print(f'\n{rounds} rounds of {len(troubles)} troubles; {sum(walk.count for walk in walks)} walks')
        for name, usage in usages.items():
            print(f'{name}: {usage.figures()}')

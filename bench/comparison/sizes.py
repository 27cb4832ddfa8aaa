"""How large the switches are and how long is measured."""

from typing import NamedTuple


class Sizes(NamedTuple):
    # The usual switch.
    vlans: int
    ports: int
    instances: int
    # One whose every port is inconsistent in every tree.
    inconsistent_ports: int
    inconsistent_trees: int
    # Two that differ in the number of their interfaces alone.
    few_interfaces: int
    many_interfaces: int
    # The largest one.
    large_vlans: int
    large_ports: int

    rounds: int
    seconds: float  # at least, for each walk of a round
    large_rounds: int
    sets: int
    idle_seconds: float
    deadline_ms: int  # of the agent whose switch hangs


FULL = Sizes(vlans=200, ports=48, instances=64, inconsistent_ports=64, inconsistent_trees=32, few_interfaces=128,
             many_interfaces=2048, large_vlans=4094, large_ports=64, rounds=9, seconds=0.2, large_rounds=3, sets=10,
             idle_seconds=10, deadline_ms=2000)
# One tiny round of everything.
SHORT = Sizes(vlans=6, ports=4, instances=3, inconsistent_ports=4, inconsistent_trees=3, few_interfaces=6,
              many_interfaces=12, large_vlans=12, large_ports=5, rounds=1, seconds=0, large_rounds=1, sets=2,
              idle_seconds=0.2, deadline_ms=100)

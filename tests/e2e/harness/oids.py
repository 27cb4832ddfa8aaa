"""Object identifiers as the tools write them: parts, order, and looking up in lists that have that order."""

from .build import BRIDGE_ROOT

TIME_SINCE_TOPOLOGY_CHANGE = f'{BRIDGE_ROOT}.2.3.0'


def arcs(oid):
    return [int(arc) for arc in oid.strip('.').split('.')]


def is_below(oid, prefix):
    return oid.startswith(f'{prefix}.')


def below(bindings, prefix):
    return [binding for binding in bindings if is_below(binding.oid, prefix)]


def following(bindings, oid):
    """The first binding behind `oid`; none behind the last."""
    return next((binding for binding in bindings if arcs(binding.oid) > arcs(oid)), None)


def still(bindings):
    """All but the time since the latest topology change, which goes on."""
    return [binding for binding in bindings if binding.oid != TIME_SINCE_TOPOLOGY_CHANGE]

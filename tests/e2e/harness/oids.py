"""Object identifiers as the tools write them: parts, order, and looking up in lists that have that order."""


def arcs(oid):
    return [int(arc) for arc in oid.strip('.').split('.')]


def is_below(oid, prefix):
    return oid.startswith(f'{prefix}.')


def below(bindings, prefix):
    return [binding for binding in bindings if is_below(binding.oid, prefix)]


def following(bindings, oid):
    """The first binding behind `oid`; none behind the last."""
    return next((binding for binding in bindings if arcs(binding.oid) > arcs(oid)), None)

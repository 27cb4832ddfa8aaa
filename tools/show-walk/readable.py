"""Values as people read them."""

# The example switch's numbers: an interface index is its type in the highest octet, and its number below;
# bridge port numbers count each type in a range of its own.
INTERFACE_TYPES = {22: 'channel', 26: 'port'}
INTERFACE_TYPE_SHIFT = 24
BRIDGE_PORTS = {'port': range(129, 4096), 'channel': range(4097, 8192)}

BRIDGE_IDENTIFIER_OCTETS, PRIORITY_OCTETS = 8, 2


def value_names(form):
    """Names by number, both as text."""
    return dict(pair.split('=') for pair in form.split(',')) if '=' in form else {}


def ranges(numbers):
    """Ascending numbers as text: "1-9,33"."""
    runs = []
    for number in numbers:
        if runs and runs[-1][1] == number - 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return ','.join(str(first) if first == last else f'{first}-{last}' for first, last in runs)


def set_bits(octets, first=0):
    """Their numbers; the highest bit of the first octet is number `first`."""
    return [first + 8 * position + bit for position, octet in enumerate(octets)
            for bit in range(8) if octet & 0x80 >> bit]


def bit_names(octets, names):
    """A bit without a name is called by its number."""
    shown = ','.join(names.get(number, number) for number in map(str, set_bits(octets)))
    return f'{shown or "none"} ({octets.hex()})'


def bridge_identifier(octets):
    if len(octets) != BRIDGE_IDENTIFIER_OCTETS:
        return octets.hex()
    priority = int.from_bytes(octets[:PRIORITY_OCTETS], 'big')
    return f'{priority} / {octets[PRIORITY_OCTETS:].hex(":")}'


def readable_octets(octets, form):
    if form.startswith('vlans:'):
        return ranges(set_bits(octets, int(form.partition(':')[2]))) or 'none'
    if form.startswith('bits:'):
        return bit_names(octets, value_names(form.partition(':')[2]))
    if form == 'bridge':
        return bridge_identifier(octets)
    text = octets.decode('latin-1')
    if form == 'hex' or not text.isprintable():
        return octets.hex()
    return text or '""'


def interface_name(if_index):
    kind = INTERFACE_TYPES.get(if_index >> INTERFACE_TYPE_SHIFT)
    return kind and f'{kind} {if_index & (1 << INTERFACE_TYPE_SHIFT) - 1}'


def bridge_port_name(number):
    return next((f'{kind} {numbers.index(number) + 1}' for kind, numbers in BRIDGE_PORTS.items()
                 if number in numbers), None)


def bridge_port_of(if_index):
    """The number of the bridge port that an interface is; None where that is not known."""
    numbers = BRIDGE_PORTS.get(INTERFACE_TYPES.get(if_index >> INTERFACE_TYPE_SHIFT), ())
    place = (if_index & (1 << INTERFACE_TYPE_SHIFT) - 1) - 1
    return numbers[place] if place in range(len(numbers)) else None


def readable_number(text, form):
    name = value_names(form).get(text)
    if form == 'interface':
        name = interface_name(int(text))
    if form == 'bridge-port':
        name = bridge_port_name(int(text))
    return f'{name} ({text})' if name else text


def readable(value, form):
    if value.is_octets():
        return readable_octets(value.octets(), form)
    return readable_number(value.text, form)

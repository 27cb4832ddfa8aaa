"""What a walk holds: its lines as values of objects, and the objects' descriptions."""

import re
from typing import NamedTuple

# An object and its value: type and text, or the tools' way to show an empty string.
LINE = re.compile(r'(\.[0-9.]+) = (?:([A-Za-z0-9-]+): (.*)|"")')
EMPTY_FIELD = '-'


class Object(NamedTuple):
    kind: str
    name: str
    form: str
    needed: str


class Value(NamedTuple):
    suffix: str    # of the object
    instance: str  # the arcs behind it
    type: str      # as the tools write it; None for an empty string
    text: str

    def is_octets(self):
        return self.type in (None, 'Hex-STRING')

    def octets(self):
        return bytes.fromhex(self.text or '') if self.is_octets() else b''


def read_names(path):
    """Each line of the file describes an object, in five fields between tabs; "-" stands for an empty one:

      suffix  its OID below the module's root
      kind    scalar, table, index (a column that numbers the rows; one for each arc of the index) or column
      name    its descriptor
      form    how its values are shown: "hex" for octets; "vlans:FIRST" for a bitmap of VLANs whose first is
              FIRST; "bits:" and names of bits, as in "bits:0=operEdge,3=peer", for a bit string whose highest
              bit is number 0; "bridge" for a bridge identifier; "interface" for an interface index;
              "bridge-port" for a bridge port number; or names of values, as in "4=mst,5=rapidPvst". Empty: a
              number as it is, octets as text where they are text.
      needed  when the walk must hold it: "always"; in one spanning-tree mode, as the form of
              stpxSpanningTreeType names it; when it holds another object, whose descriptor stands here; or,
              with a comma between them, when several of these are so. Empty: it may be missing, as a table may
              have no rows.

    Tables are shown in the order of the file; a column's heading is its name without the table's."""
    names = {}
    with open(path, encoding='utf-8') as file:
        for line in file:
            suffix, *fields = ('' if field == EMPTY_FIELD else field for field in line.rstrip('\n').split('\t'))
            names[suffix] = Object(*fields)
    return names


def parent(suffix, levels=1):
    return suffix.rsplit('.', levels)[0]


def object_suffix(names, suffix):
    """Of the object that an instance belongs to. What has no name is taken for a scalar."""
    found = parent(suffix)
    while found and (found not in names or names[found].kind == 'table'):
        found = parent(found)
    return found or parent(suffix)


def read_walk(lines, names, root):
    values = []
    for line in lines:
        match = LINE.fullmatch(line.rstrip('\n'))
        if match and match[1].startswith(root + '.'):
            instance_suffix = match[1][len(root):]
            suffix = object_suffix(names, instance_suffix)
            values.append(Value(suffix, instance_suffix[len(suffix) + 1:], match[2], match[3]))
    return values

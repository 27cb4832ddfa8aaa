"""A walk as tables: first the scalars, then each table of the MIB."""

import re
from collections import defaultdict

from readable import readable, readable_number
from walk import Object, parent

# A longer cell moves only its own row's other cells.
WIDEST_ALIGNED = 40


def print_aligned(rows):
    widths = [max((len(cell) for cell in column if len(cell) <= WIDEST_ALIGNED), default=0)
              for column in zip(*rows)]
    for row in rows:
        print('  '.join(f'{cell:{width}}' for cell, width in zip(row, widths)).rstrip())


def print_scalars(names, values):
    """And what else is in no table's columns."""
    rows = [('Object', 'Value')]
    for value in values:
        known = names.get(value.suffix, Object('scalar', value.suffix, '', ''))
        if known.kind != 'column':
            rows.append((f'{known.name}.{value.instance}', readable(value, known.form)))
    print_aligned(rows)


def rows_of(columns, values):
    """The cells of a table by their rows, in the order of the index."""
    rows = defaultdict(dict)
    for value in values:
        if value.suffix in columns:
            rows[tuple(int(arc) for arc in value.instance.split('.'))][value.suffix] = value
    return sorted(rows.items())


def cells_of(index, indexes, cells, columns):
    """One line of a table; `indexes` and `columns` describe its columns."""
    return ([readable_number(str(arc), known.form) for arc, known in zip(index, indexes)] +
            [readable(cells[suffix], known.form) if suffix in cells else '-'
             for suffix, known in columns.items()])


def heading_of(name, table):
    """What an object's name adds to its table's; its last word where it adds nothing."""
    return name.removeprefix(table.removesuffix('Table')) or re.search('[A-Z][a-z]*$', name)[0]


def print_table(names, suffix, values, root):
    table = names[suffix].name
    members = {member: known for member, known in names.items() if parent(member, 2) == suffix}
    indexes = [known for known in members.values() if known.kind == 'index']
    columns = {member: known for member, known in members.items() if known.kind == 'column'}
    rows = rows_of(columns, values)
    if not rows:
        print(f'\n{table}: no rows')
        return
    print(f'\n{table} ({root}{suffix})')
    headings = [heading_of(known.name, table) for known in (*indexes, *columns.values())]
    print_aligned([headings] + [cells_of(index, indexes, cells, columns) for index, cells in rows])


def print_tables(names, values, root):
    print_scalars(names, values)
    for suffix, known in names.items():
        if known.kind == 'table':
            print_table(names, suffix, values, root)

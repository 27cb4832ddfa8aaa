"""The tables: as a text, or for a document."""

from .spread import ratios, spread
from .stand import AGENTS, AGENTX, CEILING, MODULE

YES, NO, UNCLEAR, NONE = 'yes', 'no', 'unclear', ''
NOT_JUDGED = 'not judged'

WALK_HEADS = ['walk', 'mode', 'by', 'rows', 'rows/s', 'quartiles', 'of ceiling', 'goal', 'of AgentX', 'goal', 'reached']
UNDISTURBED_HEADS = ['walk', 'mode', 'by', *(f'{name}, rows/s' for name in AGENTS), 'of ceiling', 'of AgentX',
                     *(f'{name}, CPU' for name in AGENTS)]
ABOUT_UNDISTURBED = ('What a busy machine disturbs less: the fastest walk of all rounds, and the CPU time for a row, '
                     'of the agent and of the process behind it.')
FIGURE_HEADS = ['figure', 'median', 'quartiles', 'goal', 'reached']


def short(number):
    """Three digits that count."""
    if number == 0:
        return '0'
    size = float(f'{abs(number):.3g}')  # as it will be shown: 999.7 are as many digits as 1000
    for limit, divisor, unit in ((1e6, 1e6, ' M'), (1e4, 1e3, ' k')):
        if size >= limit:
            return f'{number / divisor:.3g}{unit}'
    return f'{number:.3g}' if size < 1e3 else f'{number:.0f}'


def quartiles(values):
    return f'{short(values.low)} to {short(values.high)}'


def verdict_at_least(goal, values):
    """Unclear where the goal lies between the quartiles."""
    if values.low >= goal:
        return YES
    return NO if values.high < goal else UNCLEAR


def verdict_at_most(goal, values):
    if values.high <= goal:
        return YES
    return NO if values.low > goal else UNCLEAR


def worst(verdicts):
    return next((verdict for verdict in (NO, UNCLEAR, YES) if verdict in verdicts), NONE)


def at_least(goal):
    return '' if goal is None else f'≥ {goal:g}'


def walk_cells(measured, is_judged):
    rates = {name: [timing.rate for timing in timings] for name, timings in measured.timings.items()}
    ours, rows = spread(rates[MODULE]), measured.timings[MODULE][0].rows
    compared = [(ratios(rates[MODULE], rates[CEILING]), measured.goal.of_ceiling),
                (ratios(rates[MODULE], rates[AGENTX]), measured.goal.of_agentx)]
    verdicts = [verdict_at_least(goal, values) for values, goal in compared if goal is not None]
    reached = worst(verdicts) if is_judged or not verdicts else NOT_JUDGED
    return [measured.walk.name, measured.mode, measured.how, str(rows) if rows else 'none: walks/s', short(ours.median),
            quartiles(ours), *(cell for values, goal in compared for cell in (short(values.median), at_least(goal))),
            reached]


def undisturbed_cells(measured):
    fastest = {name: max(timing.fastest_rate for timing in timings) for name, timings in measured.timings.items()}
    cpu = {name: spread([timing.cpu_microseconds for timing in timings]).median
           for name, timings in measured.timings.items()}
    return [measured.walk.name, measured.mode, measured.how, *(short(fastest[name]) for name in AGENTS),
            short(fastest[MODULE] / fastest[CEILING]), short(fastest[MODULE] / fastest[AGENTX]),
            *(f'{short(cpu[name])} µs' for name in AGENTS)]


def figure_cells(figure, is_judged):
    values = spread(figure.samples)
    unit = f' {figure.unit}' if figure.unit else ''
    reached = NONE
    if figure.at_most is not None:
        reached = verdict_at_most(figure.at_most, values) if is_judged else NOT_JUDGED
    return [figure.name, f'{"> " if figure.is_beyond else ""}{short(values.median)}{unit}',
            quartiles(values) if len(figure.samples) > 1 else '',
            '' if figure.at_most is None else f'≤ {figure.at_most:g}{unit}', reached]


def text_table(heads, rows):
    widths = [max(len(row[column]) for row in [heads, *rows]) for column in range(len(heads))]
    return [''.join(f'{cell:{width}}  ' for cell, width in zip(row, widths)).rstrip() for row in [heads, *rows]]


def markdown_table(heads, rows):
    return [f'| {" | ".join(row)} |' for row in [heads]] + [f'|{"---|" * len(heads)}'] + [
        f'| {" | ".join(row)} |' for row in rows]


def render(machine, measured, figures, is_judged, as_markdown):
    table = markdown_table if as_markdown else text_table
    parts = [[f'{"* " if as_markdown else ""}{name}: {value}' for name, value in machine]]
    if not is_judged:
        parts.append(['No goal is judged: this is no release build, or the run was short.'])
    if measured:
        parts.append(table(WALK_HEADS, [walk_cells(one, is_judged) for one in measured]))
        parts.append([ABOUT_UNDISTURBED])
        parts.append(table(UNDISTURBED_HEADS, [undisturbed_cells(one) for one in measured]))
    if figures:
        parts.append(table(FIGURE_HEADS, [figure_cells(figure, is_judged) for figure in figures]))
    return '\n\n'.join('\n'.join(lines) for lines in parts)

"""A whole comparison."""

from harness.build import BUILD

from .failure import ComparisonError
from .growth import measure_growth
from .machine import describe, is_release_build
from .report import render
from .sizes import FULL, SHORT
from .stand import AGENTX_COPY, CEILING_PLUGIN
from .walk_client import PROGRAM
from .walks import kinds, measure_kind

GROWTH = 'growth'


def check_build():
    for file in (BUILD / 'bin/stp-switchd', CEILING_PLUGIN, AGENTX_COPY, PROGRAM):
        if not file.exists():
            raise ComparisonError(f'{file} is not built')


def run(options, progress):
    """The report."""
    check_build()
    sizes = SHORT if options.short else FULL
    if options.rounds:
        sizes = sizes._replace(rounds=options.rounds)
    machine = describe()
    measured = [one for kind in kinds(sizes)
                for one in measure_kind(kind._replace(walks=[walk for walk in kind.walks if options.only in walk.name]),
                                        sizes, progress)]
    figures = measure_growth(sizes, progress) if options.only in ('', GROWTH) else []
    if not measured and not figures:
        raise ComparisonError(f"no walk's name holds '{options.only}'")
    return render(machine, measured, figures, is_release_build() and not options.short, options.markdown)

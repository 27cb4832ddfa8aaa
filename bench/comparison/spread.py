"""Medians, and how far measurements lie apart."""

import statistics
from typing import NamedTuple


class Spread(NamedTuple):
    low: float  # the lower quartile
    median: float
    high: float


def spread(samples):
    if len(samples) == 1:
        return Spread(samples[0], samples[0], samples[0])
    low, median, high = statistics.quantiles(samples, n=4, method='inclusive')
    return Spread(low, median, high)


def ratios(ours, theirs):
    """Round by round: what disturbs a round disturbs both."""
    return spread([one / other for one, other in zip(ours, theirs)])

"""A walk of which each answer is looked at, and none is kept."""

import time

from .oids import arcs, is_below
from .raw_snmp import EXCEPTIONS

NO_ERROR = 0
# Until an agent that was not there, or lost a request, is asked again.
PAUSE_SECONDS = 0.05


def walk_below(client, root, repetitions=None, tries=1):
    """By GETNEXT, or by GETBULK with so many `repetitions`. Every request has to be answered in `tries`, without an
    error, and every answer has to lead on."""
    after = root
    while True:
        for oid, tag, _value in ask_behind(client, after, repetitions, tries):
            if tag in EXCEPTIONS or not is_below(oid, root):
                return
            assert arcs(oid) > arcs(after), f'{oid} behind {after}'
            after = oid


def ask_behind(client, oid, repetitions, tries):
    silence = None
    for _ in range(tries):
        try:
            exchange = client.get_bulk(oid, repetitions) if repetitions else client.get_next(oid)
        except OSError as error:
            silence = error
            time.sleep(PAUSE_SECONDS)
            continue
        assert exchange.error_status == NO_ERROR, f'error {exchange.error_status} behind {oid}'
        return exchange.variables
    raise AssertionError(f'no answer behind {oid}: {silence}')

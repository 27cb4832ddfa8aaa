"""Fixtures of the end-to-end tests."""

import pytest

from harness.agent import SHORT_DEADLINE_MS
from harness.lab import run_lab


@pytest.fixture(name='lab')
def fixture_lab():
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='impatient_lab')
def fixture_impatient_lab():
    """For switches that fall silent: the agent gives up on them soon."""
    with run_lab('mst.toml', deadline_ms=SHORT_DEADLINE_MS) as lab:
        yield lab

"""Fixtures of the end-to-end tests."""

import pytest

from harness.lab import run_impatient_lab, run_lab


@pytest.fixture(name='lab')
def fixture_lab():
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='impatient_lab')
def fixture_impatient_lab():
    with run_impatient_lab('mst.toml') as lab:
        yield lab

"""Fixtures of the end-to-end tests. The tests of a file share labs: each finds its own as it was started, and
answers for what went wrong in it meanwhile."""

import pytest

from harness.agent import need_private_mount
from harness.lab import run_impatient_lab, run_lab


@pytest.fixture(name='shared_mst_lab', scope='module')
def fixture_shared_mst_lab():
    with run_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='lab')
def fixture_lab(shared_mst_lab):
    shared_mst_lab.reset()
    yield shared_mst_lab
    shared_mst_lab.check()


@pytest.fixture(name='shared_rapid_pvst_lab', scope='module')
def fixture_shared_rapid_pvst_lab():
    with run_lab('rapid-pvst.toml') as lab:
        yield lab


@pytest.fixture(name='rapid_pvst_lab')
def fixture_rapid_pvst_lab(shared_rapid_pvst_lab):
    shared_rapid_pvst_lab.reset()
    yield shared_rapid_pvst_lab
    shared_rapid_pvst_lab.check()


@pytest.fixture(name='shared_impatient_lab', scope='module')
def fixture_shared_impatient_lab():
    with run_impatient_lab('mst.toml') as lab:
        yield lab


@pytest.fixture(name='impatient_lab')
def fixture_impatient_lab(shared_impatient_lab):
    shared_impatient_lab.reset()
    yield shared_impatient_lab
    shared_impatient_lab.check()


@pytest.fixture(name='shared_impatient_rapid_pvst_lab', scope='module')
def fixture_shared_impatient_rapid_pvst_lab():
    with run_impatient_lab('rapid-pvst.toml') as lab:
        yield lab


@pytest.fixture(name='impatient_rapid_pvst_lab')
def fixture_impatient_rapid_pvst_lab(shared_impatient_rapid_pvst_lab):
    shared_impatient_rapid_pvst_lab.reset()
    yield shared_impatient_rapid_pvst_lab
    shared_impatient_rapid_pvst_lab.check()


@pytest.fixture(name='private_mount')
def fixture_private_mount():
    need_private_mount()

"""Fixtures of the tests of real bridges. Where no namespaces can be made, or Linux bridges do not hear each other in
them, tests are skipped and say so."""

from pathlib import Path

import pytest
from bridge_lab.namespaces import Forbidden, Namespaces
from bridge_lab.openvswitch import SCHEMA
from bridge_lab.ring import NothingBlocks, OwnRing


@pytest.fixture(name='namespaces', scope='module')
def fixture_namespaces():
    with Namespaces() as namespaces:
        try:
            namespaces.make()
        except Forbidden as forbidden:
            pytest.skip(str(forbidden))
        yield namespaces


@pytest.fixture(name='folder', scope='module')
def fixture_folder(tmp_path_factory):
    """For the files of Open vSwitch, whose sockets need short paths."""
    return tmp_path_factory.mktemp('ovs')


@pytest.fixture(name='linux_ring', scope='module')
def fixture_linux_ring(namespaces, folder):
    with OwnRing('linux', namespaces, folder) as ring:
        try:
            ring.wait_until_one_blocks()
        except NothingBlocks as nothing:
            pytest.skip(f'{nothing}, as with older kernels')
        yield ring


@pytest.fixture(name='ring')
def fixture_ring(linux_ring):
    """As it was made."""
    linux_ring.wait_until_one_blocks()
    return linux_ring


@pytest.fixture(name='open_vswitch', scope='module')
def fixture_open_vswitch():
    if not Path(SCHEMA).exists():
        pytest.skip('Open vSwitch is not installed')


@pytest.fixture(name='openvswitch_ring', scope='module')
def fixture_openvswitch_ring(open_vswitch, namespaces, folder):
    del open_vswitch
    with OwnRing('openvswitch', namespaces, folder) as ring:
        ring.wait_until_one_blocks()
        yield ring


@pytest.fixture(name='labs')
def fixture_labs(shared_labs):
    """A file's own agents, by bridge. They have to be well after each test."""
    yield shared_labs
    for lab in shared_labs.values():
        lab.check()

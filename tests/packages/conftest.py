"""The packages, built once, and a root to install them in."""

import os
import subprocess

import pytest
from expected import ENTERPRISE
from harness.agent import need_private_mount
from harness.build import BUILD, PROJECT
from throwaway_root import ThrowawayRoot

# What the tests do not look at costs time.
BUILD_ENVIRONMENT = {'DEB_BUILD_OPTIONS': 'noautodbgsym', 'DEB_CFLAGS_STRIP': '-g', 'DEB_CXXFLAGS_STRIP': '-g'}


def pytest_collection_modifyitems(items):
    if os.geteuid() != 0:
        for item in items:
            item.add_marker(pytest.mark.skip(reason='needs root: installs packages'))


@pytest.fixture(name='built', scope='session')
def fixture_built():
    """The folder with the packages."""
    folder = BUILD / 'packages'
    log = folder / 'build.log'
    log.unlink(missing_ok=True)
    result = subprocess.run(
        [PROJECT / 'scripts/build-packages', '--enterprise', str(ENTERPRISE), '--output', folder],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
        env=os.environ | BUILD_ENVIRONMENT)
    tail = log.read_text(errors='replace')[-5000:] if log.exists() else ''
    assert result.returncode == 0, result.stdout + tail
    return folder


@pytest.fixture(name='packages', scope='session')
def fixture_packages(built):
    return sorted(built.glob('*.deb'))


@pytest.fixture(name='root')
def fixture_root():
    need_private_mount()
    root = ThrowawayRoot()
    yield root
    root.close()


@pytest.fixture(name='unpacked', scope='session')
def fixture_unpacked(packages, tmp_path_factory):
    """The files of all packages, in one folder."""
    folder = tmp_path_factory.mktemp('unpacked')
    for package in packages:
        subprocess.run(['dpkg-deb', '--extract', package, folder], check=True, timeout=60)
    return folder

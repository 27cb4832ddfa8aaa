"""Where and with what it was measured."""

import os
import platform
import re
import subprocess
from pathlib import Path

from harness.build import BUILD, VERSION

CPU_MODEL = re.compile(r'^model name\s*: (.*)', re.MULTILINE)
RELEASE = 'Release'


def cached(variable):
    """What the build folder was configured with."""
    found = re.search(rf'^{variable}:\w+=(.*)$', (BUILD / 'CMakeCache.txt').read_text(encoding='utf-8'), re.MULTILINE)
    return found[1] if found else ''


def is_release_build():
    """Built as it is installed, and with nothing added that costs time."""
    return cached('CMAKE_BUILD_TYPE') == RELEASE and not cached('CMAKE_CXX_FLAGS') and not cached('CMAKE_C_FLAGS')


def build_name():
    flags = f' {cached("CMAKE_CXX_FLAGS")}'.rstrip()
    return f'{cached("CMAKE_BUILD_TYPE") or "no build type"}{flags}'


def cpu_model():
    found = CPU_MODEL.search(Path('/proc/cpuinfo').read_text(encoding='utf-8'))
    return found[1] if found else platform.machine()


def net_snmp_version():
    shown = subprocess.run(['/usr/sbin/snmpd', '--version'], check=True, capture_output=True, text=True).stdout
    return re.search(r'version:\s*(\S+)', shown)[1]


def describe():
    """What it is called, and what it is."""
    return [
        ('CPU', f'{cpu_model()}, {len(os.sched_getaffinity(0))} cores'),
        ('kernel', f'{platform.system()} {platform.release()}'),
        ('load', f'{os.getloadavg()[0]:.1f} before the start'),
        ('build', f'{VERSION}, {build_name()}'),
        ('net-snmp', net_snmp_version()),
    ]

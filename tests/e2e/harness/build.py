"""Where the build under test stands."""

import os
import re
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
VERSION = re.search(r'^project\(.* VERSION (\S+)', (PROJECT / 'CMakeLists.txt').read_text(), re.MULTILINE)[1]
SCENARIOS = PROJECT / 'tests/e2e/scenarios'
BUILD = Path(os.environ.get('STPSNMP_BUILD_DIR', PROJECT / 'build/dev')).resolve()
# The sanitizers' runtime, where the build has one: snmpd itself is not built with it.
PRELOAD = os.environ.get('STPSNMP_PRELOAD', '')

# Whether a test that does something many times shall do it as often as it ever does.
THOROUGH = os.environ.get('STPSNMP_TEST_ALL') == '1'

# What the MIB file imports; the same for all builds.
SMI_BASE = PROJECT / 'build/smi'

MODULE = BUILD / 'lib/libstpsnmp.so'
BRIDGE_MODULE = BUILD / 'lib/libstpbridge.so'
PLATFORM_LIBRARY = BUILD / 'lib/libstpplatform.so'
PROBE = BUILD / 'lib/agent_probe.so'
ENTERPRISE = '.1.3.6.1.4.1.' + (BUILD / 'enterprise').read_text(encoding='ascii').strip()
ROOT = ENTERPRISE + '.9.82'
BRIDGE_ROOT = '.1.3.6.1.2.1.17'
PROBE_ROOT = ENTERPRISE + '.9.9999'

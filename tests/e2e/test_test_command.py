"""./test and its test of 32 bits refuse what they do not know, and a run that fails names the tests."""

import os
import subprocess

import pytest
from harness.build import PROJECT

RESULTS = '''\
<testsuite>
<testcase name="good_tests" status="run"><system-out>[ RUN      ] Good.one
[  FAILED  ] Good.that_only_talks_of_a_failure
</system-out></testcase>
<testcase name="module_tests.2" status="fail"><system-out>[ RUN      ] Table.first
[       OK ] Table.first (0 ms)
[ RUN      ] All/Table.second/1
[  FAILED  ] All/Table.second/1, where GetParam() = 3 (1 ms)
[ RUN      ] Table.third
[       OK ] Table.third (0 ms)
[  FAILED  ] 1 test, listed below:
[  FAILED  ] All/Table.second/1, where GetParam() = 3
</system-out></testcase>
<testcase name="switch_tests" status="fail"><system-out>[ RUN      ] Servers.one
[       OK ] Servers.one (0 ms)
[ RUN      ] Servers.two
==1==ERROR: AddressSanitizer: heap-use-after-free
</system-out></testcase>
<testcase name="e2e.traps" status="fail"><system-out>
FAILED tests/e2e/test_traps.py::test_one - assert 1 == 2
ERROR tests/e2e/test_traps.py::test_two
</system-out></testcase>
<testcase name="platform.unload" status="fail"><system-out/></testcase>
<testcase classname="test_walks" name="test_walk"><failure message="assert 1 == 2">x</failure></testcase>
<testcase classname="test_walks" name="test_other_walk"><error message="cannot start">x</error></testcase>
<testcase classname="test_walks" name="test_good_walk"/>
</testsuite>
'''


@pytest.mark.parametrize(('arguments', 'unknown'), [
    (['--fast'], '--fast'), (['quick'], 'quick'), (['--quick', '--all'], '--all'), (['--all', 'x'], 'x'),
])
def test_wrong_command_line_is_refused(tmp_path, arguments, unknown):
    result = subprocess.run([PROJECT / 'test', *arguments], cwd=tmp_path, check=False, text=True, capture_output=True)
    assert result.returncode == 2
    assert result.stdout == ''
    assert result.stderr == f"test: unknown argument '{unknown}' (see --help)\n"


def test_help_starts_with_the_usage(tmp_path):
    shown = subprocess.run([PROJECT / 'test', '--help'], cwd=tmp_path, check=True, text=True, capture_output=True).stdout
    assert shown.startswith('Usage: ./test [--quick | --all]\n')


@pytest.mark.parametrize(('arguments', 'unknown'), [(['--all'], '--all'), (['clean'], 'clean'), (['--clean', 'x'], 'x')])
def test_wrong_command_line_of_the_test_of_32_bits_is_refused(tmp_path, arguments, unknown):
    result = subprocess.run([PROJECT / 'scripts/test-32-bit', *arguments], cwd=tmp_path, check=False, text=True,
                            capture_output=True)
    assert result.returncode == 2
    assert result.stdout == ''
    assert result.stderr == f"test-32-bit: unknown argument '{unknown}' (see --help)\n"


def test_the_test_of_32_bits_says_why_it_cannot_run(tmp_path):
    refused = tmp_path / 'unshare'
    refused.write_text('#!/bin/sh\nexit 1\n', encoding='ascii')
    refused.chmod(0o755)
    result = subprocess.run([PROJECT / 'scripts/test-32-bit'], cwd=tmp_path, check=False, text=True, capture_output=True,
                            env={**os.environ, 'PATH': f'{tmp_path}:{os.environ["PATH"]}'})
    reason = 'no namespaces can be made' if os.geteuid() == 0 else 'needs root, to make mounts and a root'
    assert result.returncode == 77
    assert result.stdout == ''
    assert result.stderr == f'test-32-bit: cannot run here: {reason}\n'


def test_failed_tests_are_named_with_what_failed_within_them(tmp_path):
    (tmp_path / 'results.xml').write_text(RESULTS, encoding='utf-8')
    shown = subprocess.run([PROJECT / 'scripts/failed-tests', tmp_path / 'results.xml'],
                           check=True, text=True, capture_output=True).stdout
    assert shown == ('module_tests.2 (All/Table.second/1); switch_tests (Servers.two); '
                     'e2e.traps (tests/e2e/test_traps.py::test_one, tests/e2e/test_traps.py::test_two); platform.unload; '
                     'test_walk; test_other_walk\n')


def test_results_that_cannot_be_read_are_refused(tmp_path):
    result = subprocess.run([PROJECT / 'scripts/failed-tests', tmp_path / 'none.xml'],
                            check=False, text=True, capture_output=True)
    assert result.returncode == 1
    assert result.stderr == f'failed-tests: cannot read {tmp_path}/none.xml\n'

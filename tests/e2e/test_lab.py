"""A lab that several tests share: what goes wrong in it is told by the test in which it did, once."""

import os
import signal

import pytest
from harness.lab import run_lab
from harness.polling import wait_until


@pytest.fixture(name='own_lab')
def fixture_own_lab():
    """These tests spoil it."""
    with run_lab('mst.toml') as lab:
        yield lab


def write_sanitizer_report(lab, text):
    with open(lab.agent.log.parent / 'sanitizer.1', 'a', encoding='ascii') as report:
        report.write(text)


def test_report_of_a_sanitizer_is_told_once(own_lab):
    own_lab.check()
    write_sanitizer_report(own_lab, 'a.cpp:1:2: runtime error: one\n')
    with pytest.raises(AssertionError, match='trouble in the log of snmpd: a.cpp:1:2: runtime error: one'):
        own_lab.check()
    own_lab.check()
    own_lab.reset()
    write_sanitizer_report(own_lab, 'a.cpp:3:4: runtime error: two\n')
    with pytest.raises(AssertionError, match='trouble in the log of snmpd: a.cpp:3:4: runtime error: two'):
        own_lab.check()


def test_line_that_was_not_whole_at_a_check_is_seen_by_the_next(own_lab):
    write_sanitizer_report(own_lab, 'a.cpp:1:2: runtime')
    own_lab.check()
    write_sanitizer_report(own_lab, ' error: one\n')
    with pytest.raises(AssertionError, match='trouble in the log of snmpd: a.cpp:1:2: runtime error: one'):
        own_lab.check()


def test_agent_that_died_fails_its_test_and_is_no_hang_up_of_the_next(own_lab):
    os.kill(own_lab.agent.pid, signal.SIGKILL)
    wait_until(lambda: not own_lab.agent.is_alive(), 'snmpd has ended')
    with pytest.raises(AssertionError, match='snmpd has died'):
        own_lab.check()
    with pytest.raises(AssertionError, match='snmpd had died in an earlier test'):
        own_lab.reset()
    own_lab.agent.kill()


def test_switch_that_died_fails_its_test_and_the_next(own_lab):
    os.kill(own_lab.switch.pid, signal.SIGKILL)
    wait_until(own_lab.switch.has_died, 'stp-switchd has ended')
    with pytest.raises(AssertionError, match='stp-switchd has died'):
        own_lab.check()
    with pytest.raises(AssertionError, match='stp-switchd had died in an earlier test'):
        own_lab.reset()
    own_lab.switch.kill()


@pytest.mark.parametrize('end', ['stop', 'kill'])
def test_switch_that_the_test_ended_is_started_by_the_reset(own_lab, end):
    getattr(own_lab.switch, end)()
    own_lab.check()
    own_lab.reset()
    own_lab.switch.set('mst.region', 'xy')

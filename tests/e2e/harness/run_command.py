"""./run as a test starts it, in a session of its own; and a project of stand-ins in which it runs."""

import os
import pwd
import re
import shutil
import signal
import subprocess
import tempfile
from contextlib import contextmanager
from itertools import pairwise
from pathlib import Path

from .build import PROJECT
from .polling import wait_until
from .ports import free_port
from .process import die_with_parent

# The first run of a checkout builds.
GUARD_SECONDS = 1200
# With --live, it takes as many ports.
RING_SIZE = 3


class Run:
    """One ./run in a session of its own, so that whatever it leaves behind can be found."""

    def __init__(self, place, *arguments, reader=None, project=PROJECT, environment=None):
        self._output, self._errors = place / 'output', place / 'errors'
        self._project, self._arguments = project, arguments
        self.temporary = place / 'temporary'
        self.temporary.mkdir()
        self.temporary.chmod(0o711)
        with open(self._output, 'wb') as output, open(self._errors, 'wb') as errors:
            self._child = subprocess.Popen(
                [project / 'run', *arguments] if reader is None else
                ['bash', '-c', f'"$@" | {reader}', 'bash', project / 'run', *arguments], cwd=place,
                stdin=subprocess.DEVNULL, stdout=output, stderr=errors,
                env={**os.environ, 'TMPDIR': str(self.temporary), **(environment or {})},
                start_new_session=True, preexec_fn=self._before_exec)

    @staticmethod
    def _before_exec():
        die_with_parent()
        signal.signal(signal.SIGINT, signal.SIG_DFL)  # bash cannot trap what it finds ignored

    @property
    def output(self):
        return self._output.read_text()

    @property
    def errors(self):
        return self._errors.read_text()

    def wait(self):
        return self._child.wait(timeout=GUARD_SECONDS)

    def wait_for_output(self, text):
        wait_until(lambda: text in self.output or self._child.poll() is not None,
                   f'./run shows {text!r}', GUARD_SECONDS)
        assert self._child.poll() is None, self.errors

    def interrupt(self, number):
        self._child.send_signal(number)
        return self.wait()

    def press_ctrl_c(self):
        """As a terminal does: all processes in front of it get the signal."""
        os.killpg(self._child.pid, signal.SIGINT)

    def processes(self):
        """Names, users and ids of the session's processes, but for those that only wait to be collected."""
        found = []
        for stat in Path('/proc').glob('[0-9]*/stat'):
            try:
                name, rest = re.fullmatch(r'\d+ \((.*)\) (.*)\n', stat.read_text()).groups()
                user = stat.stat().st_uid
            except (FileNotFoundError, ProcessLookupError):
                continue
            state, _parent, _group, session = rest.split()[:4]
            if int(session) == self._child.pid and state != 'Z':
                found.append((name, pwd.getpwuid(user).pw_name, int(stat.parent.name)))
        return sorted(found)

    @staticmethod
    def signal_to(pid, number):
        os.kill(pid, number)

    def check_nothing_is_left(self):
        running = self.processes()
        assert running == [], running
        left = list(self.temporary.iterdir())
        assert left == [], left

    def kill(self):
        try:
            os.killpg(self._child.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self._child.wait()

    def remove_logs(self):
        for option, value in pairwise(self._arguments):
            if option == '--port' and value.isdecimal():
                shutil.rmtree(self._project / 'build/run' / value, ignore_errors=True)


@contextmanager
def starting_runs():
    # Not below pytest's own folders, which no other user may enter.
    place = Path(tempfile.mkdtemp(prefix='stp-e2e-run-'))
    place.chmod(0o711)
    runs = []

    def start(*arguments, **options):
        folder = place / str(len(runs))
        folder.mkdir(mode=0o711)
        runs.append(Run(folder, *arguments, **options))
        return runs[-1]

    yield start
    for run in runs:
        run.kill()
        print(f'--- ./run\n{run.output}\n{run.errors}')
        run.remove_logs()
    shutil.rmtree(place)


def shown_walk(output):
    """What is below the heading of the walk, without the root's own numbers."""
    heading, root = re.search(r'^(== Walk of (\.[0-9.]+))\n', output, re.MULTILINE).groups()
    walk = output[output.index(heading) + len(heading) + 1:]
    return walk.partition('\nFor another terminal')[0].replace(root, 'ROOT')


def root_of_walk(run):
    return re.search(r'^== Walk of (\.[0-9.]+)$', run.output, re.MULTILINE).group(1)


def second_terminal(run, *prefix, check=True):
    """The printed commands, each typed into a shell that has read the printed file, by whom the prefix makes of it."""
    commands = re.findall(r'^  (.*)$', run.output.partition('For another terminal')[2], re.MULTILINE)
    read, typed = commands[0], commands[1:]

    def type_in(words):
        [command] = [command for command in typed if words in command]
        result = subprocess.run([*prefix, 'bash', '-ec', f'{read}\n{command}'], check=False, capture_output=True,
                                text=True, cwd='/', timeout=GUARD_SECONDS)
        assert result.returncode == 0 or not check, result.stderr
        return result.stdout if check else (result.returncode, result.stdout, result.stderr)
    return type_in


class FakeProject:
    """./run with stand-ins for all that it builds and starts, each of which does nothing wrong at first."""

    SWITCH = 'build/run/bin/stp-switchd'
    FETCH = 'tools/fetch-mibs/stp-fetch-mibs'
    STAYS = 'exec sleep 600'
    DAEMON_STAYS = f'echo "NET-SNMP version 0" >&2; {STAYS}'

    def __init__(self, place):
        self.place = place
        place.mkdir(mode=0o755)
        shutil.copy(PROJECT / 'run', place)
        shutil.copytree(PROJECT / 'scripts', place / 'scripts')
        self.write('build/run/enterprise', '32473')
        (place / 'build/run/lib').mkdir()
        self.program(self.SWITCH, f'case "$*" in *--check) ;; *) {self.STAYS} ;; esac')
        self.program('build/run/bin/stp-switchctl', '')
        self.program(self.FETCH, '')
        self.program('tools/show-walk/stp-show-walk', 'echo walk')
        self.program('bin/cmake', '')
        self.program('bin/snmpd', self.DAEMON_STAYS)
        self.program('bin/snmptrapd', self.DAEMON_STAYS)
        self.write('scenarios/mst-small.toml', '')

    def write(self, name, text):
        file = self.place / name
        file.parent.mkdir(mode=0o755, parents=True, exist_ok=True)
        file.write_text(text, encoding='ascii')
        return file

    def program(self, name, commands):
        self.write(name, f'#!/bin/sh\n{commands}\n').chmod(0o755)

    @property
    def environment(self):
        return {'PATH': f'{self.place}/bin:{os.environ["PATH"]}'}

    def call(self, commands):
        """The parts of ./run, without what it does with them."""
        shared = (f'. {self.place}/scripts/common.sh; BUILD={self.place}/build/run; has_smi_base=; as_service=(); '
                  f'work={self.place}; place={self.place}; live=; switches=(\'\'); daemons=(); declare -A daemon_names; '
                  f'for part in {self.place}/scripts/run/*.sh; do . "$part"; done; ')
        return subprocess.run(['bash', '-euo', 'pipefail', '-c', shared + commands], check=True, capture_output=True,
                              text=True, timeout=60, env=os.environ | self.environment).stdout


@contextmanager
def fake_project_of(start_run):
    place = Path(tempfile.mkdtemp(prefix='stp-e2e-project-'))
    place.chmod(0o755)
    project = FakeProject(place / 'project')

    def start(*arguments, environment=None):
        return start_run('--port', str(free_port(count=RING_SIZE)), *arguments, project=project.place,
                         environment=project.environment | (environment or {}))
    project.start = start
    yield project
    shutil.rmtree(place)

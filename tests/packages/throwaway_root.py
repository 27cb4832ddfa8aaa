"""The machine's root with a layer of its own on top, in namespaces of its own: what is installed, started or listens
there is gone with it, and the machine never has it."""

import hashlib
import os
import shutil
import stat
import subprocess
import tempfile
from pathlib import Path

from harness.polling import wait_until
from harness.process import Process, die_with_parent

# Mounts are seen by the processes in here only. The layer lies in memory: not every file system can hold one. The shell
# stays, as the process that takes leave of all others.
SET_UP = '''
mount -t tmpfs -o mode=755 tmpfs "$0"
mkdir "$0/changes" "$0/work" "$0/root"
mount -t overlay -o "lowerdir=/,upperdir=$0/changes,workdir=$0/work" overlay "$0/root"
mount -t proc proc "$0/root/proc"
mount -t tmpfs -o mode=755 tmpfs "$0/root/run"
mount -t tmpfs -o mode=1777 tmpfs "$0/root/tmp"
mount --rbind /dev "$0/root/dev"
ip link set lo up
touch "$0/ready"
sleep infinity &
wait
'''
ENVIRONMENT = {'PATH': '/usr/sbin:/usr/bin:/sbin:/bin', 'LC_ALL': 'C.UTF-8', 'HOME': '/root',
               'DEBIAN_FRONTEND': 'noninteractive', 'MIBS': ''}

# What the package tools, the loader and the agent keep for themselves: logs, caches, state.
NOT_COMPARED = ('var/lib/dpkg/', 'var/lib/snmp/', 'var/cache/', 'var/log/', 'etc/ld.so.cache')


def describe(path):
    """What must not change of a file."""
    status = path.lstat()
    content = ''
    if path.is_symlink():
        content = os.readlink(path)
    elif path.is_file():
        content = hashlib.sha256(path.read_bytes()).hexdigest()
    return status.st_mode, status.st_uid, status.st_gid, status.st_rdev, content


class ThrowawayRoot:
    def __init__(self):
        self._directory = Path(tempfile.mkdtemp(prefix='stp-packages-'))
        self._started = []
        self._unshare = subprocess.Popen(
            ['unshare', '--mount', '--net', '--pid', '--fork', '--kill-child', 'sh', '-ec', SET_UP, self._directory],
            stdin=subprocess.DEVNULL, preexec_fn=die_with_parent)
        try:
            wait_until(lambda: self._unshare.poll() is not None or self._is_ready(), 'the root is mounted')
            assert self._unshare.poll() is None, 'the root cannot be mounted'
        except BaseException:
            self.close()
            raise

    def _init(self):
        """The process that holds the namespaces, as this side knows it; 0 before there is one."""
        unshare = self._unshare.pid
        children = Path(f'/proc/{unshare}/task/{unshare}/children').read_text(encoding='ascii').split()
        return int(children[0]) if children else 0

    def _seen_from_outside(self, path):
        return Path(f'/proc/{self._init()}/root{self._directory}/{path}')

    def _is_ready(self):
        return self._init() != 0 and self._seen_from_outside('ready').exists()

    def path(self, path):
        """Where the tests find a file of the root."""
        return self._seen_from_outside('root') / path.lstrip('/')

    def _in_root(self, *command):
        return ['nsenter', f'--target={self._init()}', '--mount', '--net', '--pid',
                'chroot', self._directory / 'root', *command]

    def run(self, *command, **environment):
        """Runs a command in the root, which must succeed, and returns what it says."""
        arguments = [str(word) for word in self._in_root(*command)]
        result = subprocess.run(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, check=False,
                                stderr=subprocess.STDOUT, env=ENVIRONMENT | environment, timeout=300)
        assert result.returncode == 0, f'{command}: {result.returncode}\n{result.stdout}'
        return result.stdout

    def start(self, log, *command):
        process = Process(self._in_root(*command), log, ENVIRONMENT)
        self._started.append(process)
        return process

    def install(self, packages):
        """`packages` are files of the machine's."""
        folder = self.path('/run/packages')
        folder.mkdir(exist_ok=True)
        for package in packages:
            shutil.copy(package, folder)
        return self.run('dpkg', '--install', *(f'/run/packages/{package.name}' for package in packages))

    def changes(self):
        """What differs from the machine: descriptions by path, without what NOT_COMPARED names."""
        layer = self._seen_from_outside('changes')
        found = {}
        for folder, names, files in os.walk(layer):
            for name in names + files:
                changed = Path(folder, name)
                path = str(changed.relative_to(layer))
                if not path.startswith(NOT_COMPARED):
                    found[path] = describe(changed)
        return {path: description for path, description in found.items()
                if not self._is_same(Path('/', path), description)}

    @staticmethod
    def _is_same(original, description):
        # dpkg also removes a folder without a file that was there before a package had it: the layer notes a device.
        if stat.S_ISCHR(description[0]) and original.is_dir():
            return not any(files for _, _, files in os.walk(original))
        return os.path.lexists(original) and describe(original) == description

    def close(self):
        for process in self._started:
            process.kill()
        # Everything in the namespaces ends with the first process.
        self._unshare.kill()
        self._unshare.wait()
        shutil.rmtree(self._directory)

"""Network namespaces without names. Each lives as long as the process that holds it, takes along what is inside, and
is gone with its maker, however that one ends."""

import os
import subprocess
from pathlib import Path

GUARD_SECONDS = 60


def as_child():
    """What to put before a command that this process starts itself: it ends with this one, also where this one is gone
    before the command could ask for the signal."""
    return ['setpriv', '--pdeathsig', 'KILL', 'sh', '-c', '[ "$PPID" = "$0" ] && exec "$@"', str(os.getpid())]


class LabError(Exception):
    """What could not be done, in one line."""


class Forbidden(LabError):
    """Nobody may make namespaces here."""


def first_line(text):
    return next((line for line in text.splitlines() if line.strip()), '').strip()


def run(*command, text=None, environment=None):
    """What the command prints. `text`: its input."""
    words = [str(word) for word in command]
    try:
        done = subprocess.run(words, check=False, capture_output=True, text=True, input=text or '', env=environment,
                              timeout=GUARD_SECONDS)
    except FileNotFoundError as missing:
        raise LabError(f'{missing.filename} is missing') from None
    except subprocess.TimeoutExpired:
        raise LabError(f'no end of: {" ".join(words)}') from None
    # ovs-vsctl ends well where the switch could not do what the database says.
    if done.returncode != 0 or 'Error detected' in done.stderr:
        raise LabError(f'{" ".join(words)}: {first_line(done.stderr + done.stdout)}')
    return done.stdout


class Namespace:
    """One that exists, as anybody finds it who knows how to enter it."""

    def __init__(self, holder_pid, enter):
        self.holder_pid = holder_pid
        self.enter = enter  # what to put before a command

    def run(self, *command, **options):
        return run(*self.enter, *command, **options)

    def ip(self, *words):
        return self.run('ip', *words)

    def ip_batch(self, *lines):
        """One `ip` for all of them, which stops at the first that fails."""
        return self.run('ip', '-batch', '-', text='\n'.join(lines))

    def start(self, *command, log, environment=None):
        """A process inside that dies with this one."""
        with open(log, 'ab') as output:
            return subprocess.Popen([*self.enter, *as_child(), *map(str, command)],
                                    stdin=subprocess.DEVNULL, stdout=output, stderr=output, env=environment)


class Namespaces:
    """Those that this process makes. Who is not root gets them inside a user namespace."""

    def __init__(self):
        self._holders = []
        self._user_namespace = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def make(self):
        """The holder ends when its input does: when this process closes it, or has ended."""
        if os.geteuid() == 0:
            command = ['unshare', '--net']
        elif self._user_namespace is None:
            command = ['unshare', '--user', '--map-root-user', '--net']
        else:
            command = ['nsenter', f'--user={self._user_namespace}', '--preserve-credentials', 'unshare', '--net']
        holder = subprocess.Popen([*command, 'cat'], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, bufsize=0)
        self._holders.append(holder)
        try:
            holder.stdin.write(b'ready\n')
            is_ready = holder.stdout.readline() == b'ready\n'
        except BrokenPipeError:
            is_ready = False
        if not is_ready:
            raise Forbidden(f'no network namespace can be made here: {first_line(holder.stderr.read().decode())}')
        place = f'/proc/{holder.pid}/ns'
        enter = ['nsenter', f'--net={place}/net']
        if os.geteuid() != 0:
            self._user_namespace = self._user_namespace or f'{place}/user'
            enter = ['nsenter', f'--user={place}/user', '--preserve-credentials', f'--net={place}/net']
        namespace = Namespace(holder.pid, enter)
        self._silence(namespace)
        return namespace

    @staticmethod
    def _silence(namespace):
        """Nothing but the bridges' own packets shall be on the links: no IPv6, which speaks unasked."""
        if Path('/proc/sys/net/ipv6').exists():
            namespace.run('sh', '-c', 'echo 1 >/proc/sys/net/ipv6/conf/all/disable_ipv6; '
                                      'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6')

    def close(self):
        for holder in self._holders:
            holder.stdin.close()
        for holder in self._holders:
            holder.wait()
            holder.stdout.close()
            holder.stderr.close()
        self._holders.clear()


def connect(one, one_device, other, other_device):
    """A link between two namespaces, or within one. Both ends are up."""
    peer = '' if other is one else f' netns {other.holder_pid}'
    one.ip('link', 'add', one_device, 'type', 'veth', 'peer', 'name', other_device, *peer.split())
    one.ip('link', 'set', one_device, 'up')
    other.ip('link', 'set', other_device, 'up')

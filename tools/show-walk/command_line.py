"""The command line of stp-show-walk: options of its own, and those of snmpwalk."""

import re
import subprocess
from difflib import get_close_matches
from typing import NamedTuple, Optional

OWN_OPTIONS = ('--root', '--partial', '--version', '--help')
CLOSE = 0.75  # two letters of an option as long as --version may be wrong
EXAMPLE_ROOT = '.1.3.6.1.4.1.32473.9.82'

# snmpwalk's. Those with a value take it from the next argument where nothing stands behind the letter.
FLAGS, WITH_VALUE = 'd', 'aAcCDeEIlLmMnOPprStTuvxXYZ3'


class WrongCommandLine(Exception):
    pass


class CommandLine(NamedTuple):
    asked: Optional[str]  # "help" or "version", which is all that is done then
    root: Optional[str]
    walk: list            # snmpwalk's options and the agent. Empty: the walk comes on standard input
    partial: bool = False  # objects may be missing


def tokens_of_snmpwalk():
    """Any token of its configuration may stand behind two dashes."""
    try:
        listed = subprocess.run(['snmpwalk', '-H'], check=False, text=True, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
    except FileNotFoundError:
        return []
    return re.findall(r'^    (\w+) ', listed, re.MULTILINE)


def check_long_option(name):
    known = [f'--{token}' for token in tokens_of_snmpwalk()]
    if name.lower() not in (option.lower() for option in known):
        meant = get_close_matches(name, (*OWN_OPTIONS, *known), n=1, cutoff=CLOSE)
        raise WrongCommandLine(f"unknown option '{name}'" + (f"; did you mean '{meant[0]}'?" if meant else ''))


def wants_next(option):
    """Whether the value of snmpwalk's short option is the next argument."""
    for place, letter in enumerate(option[1:], 2):
        if letter in WITH_VALUE:
            return place == len(option)
        if letter not in FLAGS:
            raise WrongCommandLine(f"unknown option '-{letter}'")
    return False


def root_of(text):
    if not re.fullmatch(r'\.?[0-9]+(\.[0-9]+)*', text):
        raise WrongCommandLine(f"--root: '{text}' is no OID: expected numbers, as {EXAMPLE_ROOT}")
    return text if text.startswith('.') else f'.{text}'


def parse(arguments):
    root, partial, walk, agents, left = None, False, [], [], list(arguments)

    def next_argument(option, wanted):
        if not left:
            raise WrongCommandLine(f'{option}: expected {wanted}')
        return left.pop(0)

    while left:
        argument = left.pop(0)
        name, equals, value = argument.partition('=')
        if argument in ('-h', '--help', '--version'):
            return CommandLine('version' if argument == '--version' else 'help', None, [])
        if name == '--root':
            root = root_of(value if equals else next_argument(name, 'an OID'))
            continue
        if argument == '--partial':
            partial = True
            continue
        walk.append(argument)
        if argument.startswith('--'):
            check_long_option(name)
        elif argument.startswith('-'):
            if wants_next(argument):
                walk.append(next_argument(argument, 'a value'))
        else:
            agents.append(argument)
    if walk and not agents:
        raise WrongCommandLine('expected an agent')
    if len(agents) > 1:
        raise WrongCommandLine(f"unexpected argument '{agents[1]}'")
    return CommandLine(None, root, walk, partial)

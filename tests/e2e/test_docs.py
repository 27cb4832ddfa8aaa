"""What README.md and docs/ say, held against the programs: keys, examples, names, paths, commands, what requests cost."""

import json
import os
import re
import shlex
import shutil
import subprocess
import tempfile
from contextlib import contextmanager
from pathlib import Path

import golden
import pytest
from harness.agent import BRIDGE_CONFIGURATION, MODULE_CONFIGURATION
from harness.build import BRIDGE_ROOT, BUILD, ENTERPRISE, PROJECT, ROOT, SMI_BASE
from harness.lab import run_lab
from harness.oids import below, is_below
from harness.polling import wait_until
from harness.ports import PORT_ATTEMPTS, free_port
from harness.process import Process
from harness.questions import CountedAgent
from harness.raw_snmp import make_binding
from harness.snmp_tools import v2c
from harness.switch import Switch, playing

DOCUMENTS = [PROJECT / 'README.md', *sorted((PROJECT / 'docs').glob('*.md'))]
MODULE = 'VANTREL-STP-EXTENSIONS-MIB'
MIB = (PROJECT / f'mibs/{MODULE}.txt').read_text(encoding='ascii')
DOCUMENTED_ENTERPRISE = '.1.3.6.1.4.1.32473'

SCENARIOS = {mode: PROJECT / f'scenarios/{mode}-small.toml' for mode in ('mst', 'rapid-pvst')}

# A switch with one entry in each list: the one with the highest number.
ENTRIES = {'tree': ('number', 4094), 'mst.instance': ('id', 4094), 'port': ('number', 3967),
           'port_channel': ('number', 4095)}
MODE = '[switch]\nmode = "mst"\n'
DEFAULTS = MODE + ''.join(f'[[{path}]]\n{key} = {number}\n' for path, (key, number) in ENTRIES.items())


def read(name):
    return (PROJECT / 'docs' / name).read_text(encoding='utf-8')


def blocks(text, language):
    """The fenced blocks whose opening line is exactly this."""
    return re.findall(rf'^```{language}\n(.*?)^```$', text, re.MULTILINE | re.DOTALL)


def table(text, *headings):
    """The rows of the one table that has these headings, as lists of cells."""
    found = [lines.splitlines() for lines in re.findall(r'(?:^\|.*\|\n)+', text, re.MULTILINE)]
    rows = [[[cell.strip() for cell in line.strip('|').split('|')] for line in lines] for lines in found]
    [wanted] = [body for head, _, *body in rows if tuple(head) == headings]
    return wanted


def described_keys():
    """What each key may be and its default; and, by their sections, the names and limits of entries' numbers."""
    listed = subprocess.run([BUILD / 'bin/stp-switchd', '--keys'], check=True, capture_output=True, text=True,
                            timeout=60).stdout
    keys, numbers = {}, {}
    for title, name, domain, default, _ in (line.split('\t') for line in listed.splitlines()):
        path = title.strip('[]')
        if name and path in ENTRIES and name == ENTRIES[path][0]:
            numbers[title] = (name, domain)
        elif name:
            keys[f'{path}.N.{name}' if path in ENTRIES else f'{path}.{name}'] = (domain, default)
    return keys, numbers


KEYS, ENTRY_NUMBERS = described_keys()


def check(directory, scenario):
    file = directory / 'scenario.toml'
    file.write_text(scenario, encoding='utf-8')
    return subprocess.run([BUILD / 'bin/stp-switchd', '--scenario', file, '--check'], check=False,
                          capture_output=True, text=True, timeout=60)


class Shown:
    """A switch, and what `stp-switchctl show` tells of it by the keys of the documentation."""

    def __init__(self, switch):
        self.switch = switch
        self.values = json.loads(switch.control('show', '--flat', '--json'))

    def keys(self):
        return {self.documented(key): key for key in self.values}

    def domains(self):
        """What each key takes, as it is described."""
        return {key: KEYS[described][0] for described, key in self.keys().items()}

    @staticmethod
    def documented(key):
        path, _, number, name = re.fullmatch(r'([a-z_.]+?)(\.(\d+))?\.([a-z_]+)', key).groups()
        return f'{path}.N.{name}' if number else key

    def takes(self, key, value):
        """Whether the switch takes the value for the key; it is as before afterwards."""
        before = self.values[key]
        try:
            self.switch.set(key, value)
        except AssertionError:
            return False
        self.switch.set(key, before if isinstance(before, str) else json.dumps(before).strip('[]'))
        return True


@contextmanager
def run_switch(scenario):
    # Not below pytest's own folders: the path of a local socket holds 107 bytes.
    with tempfile.TemporaryDirectory(prefix='stp-e2e-docs-') as directory:
        file = Path(directory) / 'scenario.toml'
        file.write_text(scenario, encoding='ascii')
        switch = Switch(Path(directory), playing(file))
        try:
            switch.start()
            yield switch
            switch.stop()
        finally:
            switch.kill()


@pytest.fixture(name='shown', scope='module')
def fixture_shown():
    with run_switch(DEFAULTS) as switch:
        yield Shown(switch)


# The scenario format.

def write_keys(program, folder=PROJECT):
    result = subprocess.run([folder / 'scripts/write-keys', '--check', program], check=False, capture_output=True,
                            text=True, timeout=60)
    return result.returncode, result.stdout, result.stderr


def test_the_documents_tell_what_the_program_does():
    assert write_keys(BUILD / 'bin/stp-switchd') == (0, '', '')


def test_keys_of_a_program_that_does_not_run_are_an_error(tmp_path):
    program = tmp_path / 'stp-switchd'
    assert write_keys(program) == (1, '', f'write-keys: {program} cannot be run: No such file or directory\n')
    program.write_text('#!/bin/sh\necho "no such option" >&2\nexit 3\n', encoding='ascii')
    program.chmod(0o755)
    assert write_keys(program) == (1, '', f'write-keys: {program} --keys failed with status 3: no such option\n')


@pytest.mark.parametrize('printed', ['', 'switch\\tmode\\n'])
def test_what_is_no_list_of_keys_is_an_error(tmp_path, printed):
    program = tmp_path / 'stp-switchd'
    program.write_text(f"#!/bin/sh\nprintf '{printed}'\n", encoding='ascii')
    program.chmod(0o755)
    assert write_keys(program) == (1, '', f'write-keys: {program} --keys does not print 5 columns\n')


@pytest.mark.parametrize('lost', ['<!-- scripts/write-keys writes this: -->', '<!-- end of that -->'])
def test_a_page_that_has_lost_a_marker_of_the_keys_is_an_error(tmp_path, lost):
    for name in ('scripts/write-keys', 'docs/scenario.md'):
        copy = tmp_path / name
        copy.parent.mkdir()
        shutil.copy(PROJECT / name, copy)
    page = tmp_path / 'docs/scenario.md'
    page.write_text(page.read_text(encoding='utf-8').replace(lost, ''), encoding='utf-8')
    assert write_keys(BUILD / 'bin/stp-switchd', tmp_path) == (
        1, '', f"write-keys: {page}: the line '{lost}' stands there 0 times, not once\n")


def test_every_key_is_described_and_no_other(shown):
    assert [key for key, (_, default) in KEYS.items() if default != 'none'] == list(shown.keys())


def test_every_default_is_the_described_one(shown):
    for described, key in shown.keys().items():
        default = KEYS[described][1]
        if default != 'required':
            number = key.split('.')[-2]
            offset = re.fullmatch(r'(\d+) \+ N', default)
            assert shown.values[key] == (int(offset[1]) + int(number) if offset else
                                         json.loads(re.sub('N"$', f'{number}"', default)))


def test_required_keys_are_the_described_ones(tmp_path):
    assert [key for key, (_, default) in KEYS.items() if default == 'required'] == ['switch.mode']
    assert 'switch.mode: the key is missing' in check(tmp_path, '').stderr


def test_numbers_are_taken_within_the_described_ranges(shown):
    ranges = {key: re.fullmatch(r'(\d+) to (\d+)', domain) for key, domain in shown.domains().items()}
    ranges = {key: found.groups() for key, found in ranges.items() if found}
    assert len(ranges) > 5
    for key, limits in ranges.items():
        first, last = map(int, limits)
        taken = [shown.takes(key, str(number)) for number in (first, last)]
        refused = [shown.takes(key, str(number)) for number in (last + 1, *([first - 1] if first else []))]
        assert (key, all(taken), any(refused)) == (key, True, False)


def test_texts_are_taken_up_to_the_described_lengths(shown):
    lengths = {key: re.search(r'(\d+) octets', domain) for key, domain in shown.domains().items()}
    lengths = {key: int(length[1]) for key, length in lengths.items() if length}
    assert len(lengths) > 2
    for key, length in lengths.items():
        taken = [shown.takes(key, 'x' * octets) for octets in (length, length + 1)]
        assert (key, taken) == (key, [True, False])


def test_choices_are_the_described_ones(shown):
    choices = {key: re.findall('"(.*?)"', domain) for key, domain in shown.domains().items()}
    choices = {key: words for key, words in choices.items() if words}
    assert len(choices) > 3
    for key, words in choices.items():
        assert (key, [shown.takes(key, word) for word in words]) == (key, [True] * len(words))
        assert (key, shown.takes(key, 'other')) == (key, False)


@pytest.mark.parametrize('section', ENTRY_NUMBERS)
def test_entries_have_the_described_numbers(tmp_path, section):
    key, domain = ENTRY_NUMBERS[section]
    first, last, most = re.fullmatch(r'(\d+) to (\d+)(?:, at most (\d+) entries)?', domain).groups()
    first, last = int(first), int(last)
    most = int(most or last - first + 1)
    def entries(numbers):
        return MODE + ''.join(f'{section}\n{key} = {number}\n' for number in numbers)
    assert check(tmp_path, entries([first, last])).returncode == 0
    assert [check(tmp_path, entries([number])).returncode for number in (first - 1, last + 1)] == [78, 78]
    numbers = range(first, first + most)
    assert check(tmp_path, entries(numbers)).returncode == 0
    assert check(tmp_path, entries([*numbers, numbers[-1] + 1])).returncode == 78
    assert check(tmp_path, MODE + f'{section}\n').returncode == 78


@pytest.mark.parametrize('example', blocks(read('scenario.md'), 'toml'))
def test_examples_pass_the_check(tmp_path, example):
    result = check(tmp_path, example)
    assert (result.returncode, result.stdout, result.stderr) == (0, '', '')


def test_the_documented_complaint_is_made(tmp_path):
    """Its line number is that of this scenario."""
    complaint = check(tmp_path, f'{MODE}\n\n[[port]]\nnumber = 1\n[[port]]\nnumber = 3\nchannel = 1\n').stderr
    assert complaint.replace(f'{tmp_path}/scenario.toml', 'lab.toml') in blocks(read('scenario.md'), 'text')


def test_documented_changes_are_taken():
    commands = table(read('scenario.md'), 'in the file', 'on the command line')
    assert len(commands) > 3
    with run_switch(f'{MODE}[[mst.instance]]\nid = 2\n[[port]]\nnumber = 3\n') as switch:
        for _, command in commands:
            switch.control(*shlex.split(command.strip('`')))


def test_documented_commands_are_taken():
    commands = [line.split()[1:] for block in blocks(read('scenario.md'), 'sh') for line in block.splitlines()
                if line.startswith('stp-switchctl ')]
    assert len(commands) > 2
    with run_switch(SCENARIOS['mst'].read_text(encoding='ascii')) as switch:
        for command in commands:
            switch.control(*command)


# Names.

@pytest.mark.parametrize('document', DOCUMENTS, ids=lambda path: path.name)
def test_every_object_is_one_of_the_mib_file(document):
    known = set(re.findall(r'^(stpx\w+) ', MIB, re.MULTILINE))
    named = set(re.findall(r'\bstpx\w*', document.read_text(encoding='utf-8')))
    assert named - known == set()


def test_every_object_with_a_value_and_every_trap_is_mapped():
    types = re.findall(r'^(stpx\w+) (?:OBJECT|NOTIFICATION)-TYPE\n(.*?)::=', MIB, re.MULTILINE | re.DOTALL)
    names = [name for name, definition in types if 'not-accessible' not in definition]
    assert len(names) > 30
    text = read('mib-mapping.md')
    assert [name for name in names if not re.search(rf'\b{name}\b', text)] == []


@pytest.mark.parametrize('document', DOCUMENTS, ids=lambda path: path.name)
def test_every_path_leads_somewhere(document):
    words = {word.rstrip('.').removeprefix('./')
             for word in re.findall(r'(?<![\w/~:.-])[\w./-]+', document.read_text(encoding='utf-8'))}
    folders = {path.name for path in PROJECT.iterdir() if path.is_dir()} - {'build'}
    paths = [word for word in words
             if word.endswith('.md') or ('/' in word and Path(word).parts[0] in folders)]
    assert [path for path in paths if not (PROJECT / path).exists()] == []


# Commands.

def tool_environment(directory):
    """As the documentation sets it up: names from the module and what it imports."""
    return {**os.environ, 'PATH': f'{os.environ["PATH"]}:/usr/sbin', 'MIBS': f'{MODULE}:SNMPv2-MIB',
            'MIBDIRS': f'{SMI_BASE}:{BUILD}/mibs', 'SNMPCONFPATH': str(directory),
            'SNMP_PERSISTENT_DIR': str(directory)}


def objects_of(names, directory):
    """The OID of each name."""
    result = subprocess.run(['snmptranslate', '-On', *(f'{MODULE}::{name}' for name in names)], check=True,
                            capture_output=True, text=True, env=tool_environment(directory), timeout=60)
    return dict(zip(names, result.stdout.split(), strict=True))


def typed(text, mode):
    """Commands and what they print, of the blocks that are about this switch."""
    lines = ''.join(blocks(text, f'console {mode}'))
    return re.findall(r'^\$ (.*)\n((?:(?!\$ ).*\n)*)', lines, re.MULTILINE)


BOTH_MODULES = MODULE_CONFIGURATION + BRIDGE_CONFIGURATION


def documented_contexts():
    """The lines that let a user and a community read other trees, and the view that they name."""
    text = read('operations.md')
    [lines] = [block for block in blocks(text, 'conf') if 'com2sec -Cn vlan-20' in block]
    [community] = re.findall(r'^com2sec -Cn .* (\S+)$', lines, re.MULTILINE)
    return ''.join(re.findall(r'^view bridge .*\n', text, re.MULTILINE)) + lines, community


@pytest.mark.parametrize('mode', SCENARIOS)
def test_commands_print_what_is_documented(tmp_path, mode):
    commands = typed(read('operations.md').replace(DOCUMENTED_ENTERPRISE, ENTERPRISE), mode)
    assert len(commands) > 2
    contexts, community = documented_contexts()
    with run_lab(SCENARIOS[mode], with_probe=False, serves=BOTH_MODULES + contexts) as lab:
        if mode == 'rapid-pvst':
            lab.wait_for_context(v2c(community), f'{BRIDGE_ROOT}.2.1.0')
        environment = tool_environment(tmp_path) | {'AGENT': lab.agent.endpoint}
        for command, output in commands:
            result = subprocess.run(command, shell=True, check=False, capture_output=True, text=True,
                                    env=environment, timeout=60)
            printed = ''.join(f'{line.rstrip()}\n' for line in result.stdout.splitlines())
            assert (command, printed) == (command, output)


def test_the_walk_of_the_readme_is_what_is_shown():
    """Some of its lines, in their order: each `...` stands for those between."""
    text = (PROJECT / 'README.md').read_text(encoding='utf-8').replace(DOCUMENTED_ENTERPRISE, ENTERPRISE)
    [walk] = [block for block in blocks(text, '') if block.startswith('Mode')]
    with run_lab(SCENARIOS['mst'], with_probe=False) as lab:
        shown = subprocess.run(
            [PROJECT / 'tools/show-walk/stp-show-walk', '--root', ROOT, '-v2c', '-c', 'public', lab.agent.endpoint],
            check=True, capture_output=True, text=True, timeout=60,
            env=os.environ | {'PATH': f'{BUILD}/bin:{os.environ["PATH"]}', 'COLUMNS': '80'}).stdout
    parts = walk.removesuffix('...\n').split('...\n')
    assert len(parts) > 2
    for part in parts:
        assert part in shown
        shown = shown.partition(part)[2]


@contextmanager
def run_documented_receiver(directory):
    """The commands of the documentation, on a free port. Yields where it listens, and what it prints to."""
    [commands] = [block for block in blocks(read('operations.md'), 'sh') if 'snmptrapd' in block]
    for _ in range(PORT_ATTEMPTS):
        endpoint = f'127.0.0.1:{free_port()}'
        typed_in = commands.replace('udp:162', f'udp:{endpoint}').replace('snmptrapd', 'exec snmptrapd')
        printed = directory / endpoint
        receiver = Process(['sh', '-ec', f'cd {directory}\n{typed_in}'], printed, tool_environment(directory))
        try:
            wait_until(lambda: not receiver.is_alive() or 'NET-SNMP version' in printed.read_text(),
                       'snmptrapd listens or gives up')
            if receiver.is_alive():
                yield endpoint, printed
                return
        finally:
            receiver.kill()
    raise AssertionError('snmptrapd did not start')


def test_the_documented_receiver_prints_the_documented_traps(tmp_path):
    text = read('operations.md')
    [traps] = [block.splitlines() for block in blocks(text, 'text') if 'snmpTrapOID' in block]
    [word] = re.findall(r'^echo (\w+) >/mnt/pss/stp_trap_value$', text, re.MULTILINE)
    assert len(traps) == 2
    key, value = re.search(r'`stp-switchctl set (\S+) (\S+)` makes the receiver', text).groups()
    with run_documented_receiver(tmp_path) as (endpoint, printed), \
            run_lab(SCENARIOS['mst'], with_probe=False, serves=BOTH_MODULES, trap_endpoint=endpoint,
                    trap_word=word) as lab:

        def are_printed():
            """The agent subscribes at a time of its own: until then, nobody hears of a change."""
            lab.switch.set(key, '')
            lab.switch.set(key, value)
            return all(trap in printed.read_text() for trap in traps)

        wait_until(are_printed, 'the traps are printed')


# Tables and costs.

MODE_NAMES = {'mst': 'MST', 'rapid-pvst': 'Rapid PVST'}
EXAMPLES = [(example.strip('`'), mode) for *_, mode, example in
            table(read('operations.md'), 'table', 'a row for', 'index', 'columns', 'mode', 'example')
            if example != 'none']
COSTS = [(re.findall('`(.*?)`', objects), get, get if get_next == 'the same' else get_next)
         for objects, get, get_next in table(read('operations.md'), 'object', 'GET', 'GETNEXT')]


def is_documented(cost, counts):
    """Whether these numbers of questions, of several rows, are what the cell says."""
    between = re.match(r'(\d+) to (\d+)', cost)
    if between:
        return counts <= set(range(int(between[1]), int(between[2]) + 1))
    return counts == set(map(int, re.findall(r'\d+', cost)))


@pytest.fixture(name='shared_counted_lab', scope='module', params=SCENARIOS)
def fixture_shared_counted_lab(request):
    with run_lab(SCENARIOS[request.param], agent_class=CountedAgent, with_probe=False) as lab:
        lab.mode = request.param
        lab.served = lab.snmp.walk(ROOT)
        # A fault that spoils nothing sends each question to the switch, where it can be counted.
        lab.switch.fault('delay', delay_ms=1)
        yield lab


@pytest.fixture(name='counted_lab')
def fixture_counted_lab(shared_counted_lab):
    yield shared_counted_lab
    shared_counted_lab.check()


def test_examples_exist_in_their_mode_and_not_in_the_other(counted_lab, tmp_path):
    """Those of both modes are rows of the MST switch."""
    instances = objects_of([example for example, _ in EXAMPLES], tmp_path)
    assert len(instances) > 10
    for example, mode in EXAMPLES:
        if counted_lab.mode == 'mst' or mode != 'both':
            [answer] = counted_lab.snmp.get(instances[example])
            exists = answer.kind != 'noSuchInstance'
            assert (example, exists) == (example, mode in ('both', MODE_NAMES[counted_lab.mode]))


def columns_of(oid):
    """Of a table; of a column or a scalar, itself."""
    return [column for column in golden.TABLE_COLUMNS if is_below(column, oid)] or [oid]


def questions_of_rows(lab, oid):
    """Of the GETs of all rows below the object, and of the GETNEXTs that lead to them."""
    gets, steps, asked = set(), set(), oid
    with lab.raw_client() as client:
        for row in below(lab.served, oid):
            count, answer = lab.agent.questions_of(lambda row=row: client.get(row.oid))
            assert make_binding(row.oid, answer.tag, answer.value) == row
            gets.add(count)
            count, exchange = lab.agent.questions_of(lambda asked=asked: client.get_next(asked))
            assert exchange.bindings == [row]
            steps.add(count)
            asked = row.oid
    return gets, steps


def test_values_cost_what_is_documented(counted_lab, tmp_path):
    named = objects_of([name for names, *_ in COSTS for name in names], tmp_path)
    others = [scalar.oid.removesuffix('.0') for scalar in golden.scalars_of(counted_lab.served)
              if scalar.oid.removesuffix('.0') not in named.values()]
    for names, get, get_next in COSTS:
        for oid in [column for name in names for column in columns_of(named[name])] or others:
            gets, steps = questions_of_rows(counted_lab, oid)
            assert not gets or is_documented(get, gets), f'GET of {oid}, {names}: {gets}'
            assert not steps or is_documented(get_next, steps), f'GETNEXT of {oid}, {names}: {steps}'


def test_a_walk_costs_what_is_documented(counted_lab):
    name = SCENARIOS[counted_lab.mode].name
    questions, values = re.search(rf'(\d+)(?: questions)? for (\d+) values of\n?\s?`scenarios/{name}`',
                                  read('operations.md')).groups()
    count, walk = counted_lab.agent.questions_of(lambda: counted_lab.snmp.walk(ROOT))
    assert (count, len(walk)) == (int(questions), int(values))

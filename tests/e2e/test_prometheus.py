"""monitoring/ in the hands of the stock tools: what Debian's SNMP exporter makes of the agents' values, series by
series, when alerts fire, and that rules and dashboard ask for series that there are."""

import json
import re
import socket
import subprocess
import urllib.request

import golden
import pytest
from harness.agent import BRIDGE_CONFIGURATION
from harness.build import PROJECT, ROOT, SMI_BASE
from harness.lab import run_lab
from harness.polling import wait_until
from harness.ports import PORT_ATTEMPTS, free_port
from harness.process import Process

PROMETHEUS = PROJECT / 'monitoring/prometheus'
MODULE, ALERTS = PROMETHEUS / 'snmp.yml', PROMETHEUS / 'alerts.yml'
ALERTS_TEST, CONFIGURATION = PROMETHEUS / 'alerts_test.yml', PROMETHEUS / 'prometheus.yml'
DASHBOARD = PROJECT / 'monitoring/grafana/stp.json'
DOCUMENTED_ROOT = '1.3.6.1.4.1.32473.9.82'

# What each object becomes. Of numbers: the value.
NUMBERS = {
    '.1.5.2.1.3': 'stpxRootInconsistencyState',
    '.1.8.2.1.3': 'stpxLoopInconsistencyState',
    '.1.14.1': 'stpxSMSTMaxInstances',
    '.1.14.2': 'stpxSMSTMaxInstanceID',
    '.1.14.3': 'stpxSMSTRegionRevision',
    '.1.14.5.1.4': 'stpxSMSTInstanceValue',
    '.1.14.5.1.6': 'stpxSMSTInstanceCounter',
    '.1.14.8': 'stpxSMSTMaxHopCount',
}
# Of numbers with names: a series for each name, of which one is 1.
STATES = {
    '.1.2.2.1.2': ('stpxPVSTVlanState', {1: 'true', 2: 'false'}),
    '.1.5.1.1.2': ('stpxRootGuardConfigSetting', {1: 'enabled', 2: 'disabled'}),
    '.1.6.1': ('stpxSpanningTreeType', {4: 'mst', 5: 'rapidPvst'}),
    '.1.6.2': ('stpxSpanningTreePathCostMode', {1: 'short', 2: 'long'}),
    '.1.6.7': ('stpxSpanningTreePathCostOperMode', {1: 'short', 2: 'long'}),
    '.1.8.1.1.3': ('stpxLoopGuardConfigSetting', {1: 'enabled', 2: 'disabled', 3: 'default'}),
    '.1.8.3': ('stpxLoopGuardGlobalDefaultMode', {1: 'enabled', 2: 'disabled'}),
    '.1.12.1.1.2': ('stpxRSTPPortSetting', {1: 'pointToPoint', 2: 'shared', 3: 'auto'}),
    '.1.12.1.1.3': ('stpxRSTPPortOperLinkType', {1: 'pointToPoint', 2: 'shared', 3: 'other'}),
    '.1.12.2.1.3': ('stpxRSTPPortRole', {
        1: 'disabled', 2: 'root', 3: 'designated', 4: 'alternate', 5: 'backup'}),
    '.1.14.7.1.6': ('stpxSMSTPortAdminMSTMode', {1: 'preStandard', 2: 'auto'}),
    '.1.14.7.1.7': ('stpxSMSTPortPreStandardStatus', {1: 'unknown', 2: 'preStandard', 3: 'standard'}),
}
# Of bit strings of one octet: a series for each bit.
BITS = {
    '.1.3.1.1.3': ('stpxInconsistentState', {0x80: 'portVlanId', 0x40: 'portType'}),
    '.1.13.1.1.3': ('stpxRPVSTPortFlags', {0x80: 'operEdge', 0x10: 'peer'}),
    '.1.14.7.1.2': ('stpxSMSTPortFlags', {0x80: 'operEdge', 0x40: 'boundary', 0x10: 'peer', 0x08: 'dispute'}),
}
# Of octets: a series that is 1 and has them for a label, as text or in hexadecimal.
TEXTS = {'.1.11.2': 'stpxMSTRegionName'}
OCTETS = {
    '.1.14.5.1.5': 'stpxSMSTInstanceBridgeId',
    '.1.14.9': 'stpxSMSTConfigDigest',
    '.1.14.10': 'stpxSMSTConfigPreStandardDigest',
}
WITHOUT_SERIES = {'.1.14.5.1.2', '.1.14.5.1.3'}

TREE_AND_PORT = ('tree', 'port')
INDEX_LABELS = {
    '.1.2.2': ('vlan',), '.1.3.1': TREE_AND_PORT, '.1.5.1': ('interface',), '.1.5.2': TREE_AND_PORT,
    '.1.8.1': ('port',), '.1.8.2': TREE_AND_PORT, '.1.12.1': ('port',), '.1.12.2': TREE_AND_PORT,
    '.1.13.1': TREE_AND_PORT, '.1.14.5': ('tree',), '.1.14.7': ('port',),
}

# The standards' objects, of a switch with three ports in VLAN 1.
BRIDGE_NUMBERS = {
    'dot1dBaseNumPorts': 3, 'dot1dStpPriority': 0x8001, 'dot1dStpTopChanges': 1, 'dot1dStpRootCost': 20000,
    'dot1dStpRootPort': 130, 'dot1dStpMaxAge': 2000, 'dot1dStpHelloTime': 200, 'dot1dStpForwardDelay': 1500,
}
BRIDGES_ROOT = 'dot1dStpDesignatedRoot', '0x600100005E005301'
BRIDGE_VERSION = 'dot1dStpVersion', ('stpCompatible', 'rstp'), 'rstp'
TRUTH = ('true', 'false')
BRIDGE_PORT_STATES = {
    'dot1dStpPortState': ('disabled', 'blocking', 'listening', 'learning', 'forwarding', 'broken'),
    'dot1dStpPortOperEdgePort': TRUTH,
    'dot1dStpPortOperPointToPoint': TRUTH,
}
# By their labels, of which IF-MIB knows the name of one: what they are, and what their numbers are.
BRIDGE_PORTS = [
    ({'port': '129', 'ifIndex': '1', 'ifName': 'lo'}, ('blocking', 'false', 'false'),
     {'dot1dStpPortForwardTransitions': 1, 'dot1dStpPortPathCost32': 200000000}),
    ({'port': '130', 'ifIndex': '130'}, ('blocking', 'true', 'true'),
     {'dot1dStpPortForwardTransitions': 1, 'dot1dStpPortPathCost32': 20000}),
    ({'port': '4103', 'ifIndex': '4103'}, ('forwarding', 'false', 'false'),
     {'dot1dStpPortForwardTransitions': 1, 'dot1dStpPortPathCost32': 20000}),
]
BRIDGE_AGE = 'dot1dStpTimeSinceTopologyChange'

SAMPLE = re.compile(r'(\w+)(?:\{(.*)\})? (\S+)')
LABEL = re.compile(r'(\w+)="((?:[^"\\]|\\.)*)",?')
EXPORTERS_OWN = 'snmp_scrape_'
METRIC = re.compile(r'\b(?:stpx|dot1d)[A-Za-z0-9]+')


def values_of(suffix, value):
    """The names, the labels of their own and the values of an object's series."""
    if suffix in NUMBERS:
        return [(NUMBERS[suffix], {}, value)]
    if suffix in TEXTS:
        return [(TEXTS[suffix], {TEXTS[suffix]: value.decode()}, 1)]
    if suffix in OCTETS:
        return [(OCTETS[suffix], {OCTETS[suffix]: '0x' + value.hex().upper()}, 1)]
    if suffix in STATES:
        name, states = STATES[suffix]
        assert value in states, f'{name} {value}'
        return [(name, {name: state}, int(value == number)) for number, state in states.items()]
    name, bits = BITS[suffix]
    [octet] = value
    return [(name, {name: bit}, int(octet & mask != 0)) for mask, bit in bits.items()]


def key(name, labels):
    """Prometheus takes a label without a value for none."""
    return name, frozenset((label, value) for label, value in labels.items() if value)


def expected_series(bindings):
    series = {}
    for binding in bindings:
        column, index = golden.column_and_index(binding.oid)
        suffix = (column or binding.oid.removesuffix('.0')).removeprefix(ROOT)
        if suffix in WITHOUT_SERIES:
            continue
        names = INDEX_LABELS[suffix.rsplit('.', 2)[0]] if column else ()
        assert len(names) == len(index), binding
        rows = dict(zip(names, map(str, index)))
        for name, labels, value in values_of(suffix, binding.value):
            series[key(name, rows | labels)] = value
    return series


def states(name, labels, all_states, state):
    return {key(name, labels | {name: each}): int(each == state) for each in all_states}


def expected_series_of_the_bridge():
    """All but the time since the latest topology change, which goes on."""
    series = {key(name, {}): value for name, value in BRIDGE_NUMBERS.items()}
    name, root = BRIDGES_ROOT
    series[key(name, {name: root})] = 1
    name, versions, version = BRIDGE_VERSION
    series |= states(name, {}, versions, version)
    for labels, shown, numbers in BRIDGE_PORTS:
        series |= {key(name, labels): value for name, value in numbers.items()}
        for (name, all_states), state in zip(BRIDGE_PORT_STATES.items(), shown, strict=True):
            series |= states(name, labels, all_states, state)
    return series


def parse_series(text):
    series = {}
    for line in text.splitlines():
        if line.startswith('#') or line.startswith(EXPORTERS_OWN):
            continue
        match = SAMPLE.fullmatch(line)
        assert match, f'not a sample: {line!r}'
        name, labels, value = match.groups()
        series[key(name, dict(LABEL.findall(labels or '')))] = float(value)
    return series


class Exporter:
    """A private SNMP exporter on a loopback port, with the modules for this build's enterprise number."""

    def __init__(self, directory):
        self._log = directory / 'exporter.log'
        self._configuration = directory / 'snmp.yml'
        self._process = self._address = None
        text = MODULE.read_text(encoding='utf-8').replace(DOCUMENTED_ROOT, ROOT.removeprefix('.'))
        self._configuration.write_text(text, encoding='utf-8')

    def __enter__(self):
        for _ in range(PORT_ATTEMPTS):
            self._address = f'127.0.0.1:{free_port(socket.SOCK_STREAM)}'
            self._process = Process(
                ['prometheus-snmp-exporter', f'--config.file={self._configuration}',
                 f'--web.listen-address={self._address}'], self._log)
            wait_until(lambda: not self._process.is_alive() or self._is_listening(),
                       'the exporter listens or gives up')
            if self._process.is_alive():
                return self
            assert 'address already in use' in self._log.read_text(), self._log.read_text()
        raise AssertionError('found no free port')

    def __exit__(self, *_):
        self._process.kill()
        print(f'--- log of the exporter\n{self._log.read_text()}')

    def _is_listening(self):
        try:
            with self._fetch('/') as answer:
                return answer.status == 200
        except OSError:
            return False

    def _fetch(self, path):
        # No proxy has a part in what stays on loopback.
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        return opener.open(f'http://{self._address}{path}', timeout=60)

    def scrape(self, target, module='vantrel_stp'):
        with self._fetch(f'/snmp?module={module}&target={target}') as answer:
            return parse_series(answer.read().decode())


@pytest.fixture(name='exporter', scope='module')
def fixture_exporter(tmp_path_factory):
    with Exporter(tmp_path_factory.mktemp('exporter')) as exporter:
        yield exporter


@pytest.mark.parametrize('scenario, served', [
    ('mst.toml', golden.MST), ('rapid-pvst.toml', golden.RAPID_PVST)], ids=['mst', 'rapid-pvst'])
def test_series_are_what_the_agent_serves(exporter, scenario, served):
    with run_lab(scenario) as lab:
        assert exporter.scrape(lab.agent.endpoint) == expected_series(served)


def test_switch_that_is_gone_leaves_what_the_agent_knows_by_itself(exporter, lab):
    lab.switch.kill()
    assert exporter.scrape(lab.agent.endpoint) == expected_series(golden.CONSTANTS)


def test_series_of_the_standards_objects(exporter):
    with run_lab('rapid-pvst.toml', serves=BRIDGE_CONFIGURATION, with_probe=False) as lab:
        lab.switch.set('port.1.if_mib_index', '1')
        lab.switch.set('port.1.path_cost', '200000000')
        lab.switch.set('port_channel.7.forwarding_in', '1')  # a topology change
        series = exporter.scrape(lab.agent.endpoint, 'bridge_stp')
        assert series.pop(key(BRIDGE_AGE, {})) >= 0
        assert series == expected_series_of_the_bridge()


def test_bridge_of_which_nobody_tells_has_no_series(exporter):
    with run_lab('rapid-pvst.toml', serves=BRIDGE_CONFIGURATION, with_probe=False) as lab:
        lab.switch.kill()
        assert exporter.scrape(lab.agent.endpoint, 'bridge_stp') == {}


def run_tool(*command):
    result = subprocess.run(command, capture_output=True, text=True, timeout=120, check=False)
    assert result.returncode == 0, f'{command}: {result.stdout}{result.stderr}'


def test_module_is_what_the_generator_makes_of_the_mib_file(tmp_path):
    generated = tmp_path / 'snmp.yml'
    run_tool(PROMETHEUS / 'generate', SMI_BASE, generated)
    assert generated.read_text(encoding='utf-8') == MODULE.read_text(encoding='utf-8')


def test_configuration_and_rules_are_valid():
    run_tool('promtool', 'check', 'config', CONFIGURATION)


def test_alerts_fire_when_they_should_and_only_then():
    run_tool('promtool', 'test', 'rules', ALERTS_TEST)


def test_each_alert_has_a_test_of_firing():
    alerts = re.findall(r'- alert: (\w+)', ALERTS.read_text(encoding='utf-8'))
    fired = re.findall(r'alertname: (\w+)\n.*eval_time: .*\n +exp_alerts:',
                       ALERTS_TEST.read_text(encoding='utf-8'))
    assert alerts and set(alerts) == set(fired)


def metrics_of_module():
    return set(re.findall(r'^  - name: (\w+)$', MODULE.read_text(encoding='utf-8'), re.MULTILINE))


def test_alerts_name_metrics_that_there_are():
    named = set(METRIC.findall(ALERTS.read_text(encoding='utf-8')))
    assert named and named <= metrics_of_module()


def dashboard_queries():
    panels = json.loads(DASHBOARD.read_text(encoding='utf-8'))['panels']
    assert len({panel['id'] for panel in panels}) == len(panels)
    assert all(panel['targets'] for panel in panels)
    return [target['expr'] for panel in panels for target in panel['targets']]


def test_dashboard_names_metrics_that_there_are():
    named = set(METRIC.findall(DASHBOARD.read_text(encoding='utf-8')))
    assert named and named <= metrics_of_module()


def test_queries_of_the_dashboard_are_valid(tmp_path):
    # Rules of this form are YAML, too.
    rules = [{'record': 'query', 'labels': {'number': str(number)}, 'expr': query}
             for number, query in enumerate(dashboard_queries())]
    file = tmp_path / 'queries.yml'
    file.write_text(json.dumps({'groups': [{'name': 'queries', 'rules': rules}]}), encoding='utf-8')
    run_tool('promtool', 'check', 'rules', file)


def panel_query(title):
    [panel] = [panel for panel in json.loads(DASHBOARD.read_text(encoding='utf-8'))['panels'] if panel['title'] == title]
    [target] = panel['targets']
    return target['expr'].replace('$instance', '.*')


def test_panels_show_roots_topology_changes_and_ports_by_name(tmp_path):
    bridge = 'job="stp-bridge", instance="core"'
    series = {
        f'dot1dStpDesignatedRoot{{{bridge}, dot1dStpDesignatedRoot="0x600000005E00532A"}}': '1x10',
        f'dot1dStpRootCost{{{bridge}}}': '2000x10',
        f'dot1dStpTopChanges{{{bridge}}}': '0+2x10',
        f'dot1dStpPortState{{{bridge}, port="1", ifIndex="3", ifName="to-a", dot1dStpPortState="forwarding"}}': '1x10',
        f'dot1dStpPortState{{{bridge}, port="1", ifIndex="3", ifName="to-a", dot1dStpPortState="blocking"}}': '0x10',
        f'dot1dStpPortState{{{bridge}, port="2", ifIndex="4", ifName="to-c", dot1dStpPortState="blocking"}}': '1x10',
    }
    shown = {
        'Roots': {f'{{{bridge}, dot1dStpDesignatedRoot="0x600000005E00532A"}}': 2000},
        'Root path cost': {f'dot1dStpRootCost{{{bridge}}}': 2000},
        'Topology changes': {f'{{{bridge}}}': 20},
        'States of ports': {'{instance="core", dot1dStpPortState="forwarding"}': 1,
                            '{instance="core", dot1dStpPortState="blocking"}': 1},
        'Ports': {name: 1 for name, values in series.items() if 'ifName' in name and values == '1x10'},
    }
    test = {
        'interval': '1m',
        'input_series': [{'series': name, 'values': values} for name, values in series.items()],
        'promql_expr_test': [
            {'expr': panel_query(title), 'eval_time': '10m',
             'exp_samples': [{'labels': labels, 'value': value} for labels, value in samples.items()]}
            for title, samples in shown.items()],
    }
    file = tmp_path / 'panels.yml'
    file.write_text(json.dumps({'evaluation_interval': '1m', 'tests': [test]}), encoding='utf-8')
    run_tool('promtool', 'test', 'rules', file)

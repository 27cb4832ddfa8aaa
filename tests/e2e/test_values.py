"""Values follow the switch, with the conversions and the particularities that managers know."""

from harness.build import ROOT


def value(lab, suffix):
    [binding] = lab.snmp.get(ROOT + suffix)
    return binding.value


def test_region_name_of_32_octets_is_served_whole(lab):
    lab.switch.set('mst.region', 'ABCDEFGHIJKLMNOPQRSTUVWXYZ012345')
    assert value(lab, '.1.11.2.0') == b'ABCDEFGHIJKLMNOPQRSTUVWXYZ012345'


def test_region_name_of_4_octets_after_one_of_32_is_served_with_one_octet_of_the_old_name(lab):
    lab.switch.set('mst.region', 'ABCDEFGHIJKLMNOPQRSTUVWXYZ012345')
    assert value(lab, '.1.11.2.0') == b'ABCDEFGHIJKLMNOPQRSTUVWXYZ012345'
    lab.switch.set('mst.region', 'wxyz')
    assert value(lab, '.1.11.2.0') == b'wxyzE'


def test_region_name_shorter_twice_keeps_one_octet_of_the_name_served_before(lab):
    lab.switch.set('mst.region', 'ABCDEF')
    assert value(lab, '.1.11.2.0') == b'ABCDEF'
    lab.switch.set('mst.region', 'XY')
    assert value(lab, '.1.11.2.0') == b'XYC'
    lab.switch.set('mst.region', 'q')
    assert value(lab, '.1.11.2.0') == b'qY'


def test_region_name_of_the_same_length_keeps_nothing(lab):
    lab.switch.set('mst.region', 'ABCD')
    assert value(lab, '.1.11.2.0') == b'ABCD'
    lab.switch.set('mst.region', 'efgh')
    assert value(lab, '.1.11.2.0') == b'efgh'


def test_digest_is_served_up_to_its_first_zero_octet(lab):
    lab.switch.set('mst.pre_standard_digest', '1122003344556677889900aabbccddee')
    assert value(lab, '.1.14.10.0') == bytes.fromhex('1122')


def test_loop_guard_default_is_1_when_enabled_and_2_when_disabled(lab):
    lab.switch.set('switch.loop_guard_default', 'false')
    assert value(lab, '.1.8.3.0') == 2
    lab.switch.set('switch.loop_guard_default', 'true')
    assert value(lab, '.1.8.3.0') == 1


def test_each_change_of_the_switch_is_served_in_the_next_request(lab):
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert value(lab, '.1.6.1.0') == 5
    lab.switch.set('switch.path_cost_method', 'long')
    assert value(lab, '.1.6.2.0') == 2
    assert value(lab, '.1.6.7.0') == 2
    lab.switch.set('mst.revision', '65535')
    assert value(lab, '.1.14.3.0') == 65535
    lab.switch.set('mst.max_hops', '40')
    assert value(lab, '.1.14.8.0') == 40


def test_path_cost_oper_mode_is_long_in_mst_mode_and_as_configured_otherwise(lab):
    assert (value(lab, '.1.6.2.0'), value(lab, '.1.6.7.0')) == (1, 2)
    lab.switch.set('switch.mode', 'rapid-pvst')
    assert (value(lab, '.1.6.2.0'), value(lab, '.1.6.7.0')) == (1, 1)
